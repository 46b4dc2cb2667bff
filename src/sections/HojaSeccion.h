#pragma once

#include "sections/Seccion.h"

#include <glm/vec2.hpp>
#include <optional>
#include <string>
#include <vector>

// The state of one open sheet and what the mouse and keys do to it: pan and
// zoom, fit, snapping, picking, label placement and dragging, the dimension
// tool, selection and deletion. View points are pixels with the origin at the
// top left and y downward; sheet points are metres with y upward.
namespace teskal {

// The sizes that depend on fonts, measured by the window: the text block of
// a label (width, height) and the text of a dimension at a given size.
class MedidasTexto {
public:
    virtual ~MedidasTexto() = default;
    virtual glm::dvec2 bloqueEtiqueta(const Etiqueta2D& etiqueta) const = 0;
    virtual glm::dvec2 textoCota(const std::string& texto, double tamano) const = 0;
};

// A rectangle in view pixels.
struct RectVista {
    double x = 0, y = 0, ancho = 0, alto = 0;
    bool contiene(const glm::dvec2& p) const { return p.x >= x && p.x <= x + ancho && p.y >= y && p.y <= y + alto; }
    double derecha() const { return x + ancho; }
};

// Where a visible label stands on the screen.
struct GeometriaEtiqueta {
    glm::dvec2 texto{0.0};  // ancla + offsetTexto
    glm::dvec2 bloque{0.0}; // text block size
    RectVista caja;         // the white box around the text
    glm::dvec2 inicioGuia{0.0}, codo{0.0}, ancla{0.0};
    glm::dvec2 centroOcultar{0.0}; // the × circle of a selected label
};

// Where a dimension stands on the screen.
struct GeometriaCota {
    glm::dvec2 a{0.0}, b{0.0};       // the measured points
    glm::dvec2 n{0.0};               // unit normal on the screen
    glm::dvec2 linea1{0.0}, linea2{0.0}; // the dimension line
    double o = 0;                    // the line's distance from the points, pixels
    std::string texto;               // "%.2f m"
    double tamanoTexto = 7;
    RectVista rectTexto;             // the white rectangle behind the text
    glm::dvec2 centroBorrar{0.0};    // the delete circle of a selected dimension
    bool dibujable = false;          // long enough on the sheet and on the screen
};

struct EstadoHoja {
    std::vector<Segmento2D> segmentos;
    std::vector<Etiqueta2D> etiquetas;
    std::vector<Cota2D> cotas;
    bool mostrarEtiquetas = true;
    bool modoCota = false;
    bool modoEtiquetar = false;
    double grosorCorte = 1.0;
    double grosorProyeccion = 0.5;
    std::vector<Segmento2D> segmentosGrilla;
    double escala = 100.0; // pixels per sheet metre
    glm::dvec2 panOffset{0.0};
    std::optional<glm::dvec2> lastMouse;
    std::optional<std::string> draggedLabelId;
    std::optional<glm::dvec2> dragMouseStart;
    bool dragHasMoved = false;
    std::optional<std::string> etiquetaSeleccionadaId;
    std::optional<glm::vec2> cotaP1Preview;
    glm::dvec2 mousePos{0.0};
    std::optional<glm::vec2> snapPoint;
    std::optional<std::string> cotaDragId;
    std::optional<glm::dvec2> cotaDragMouseStart;
    float cotaDragOffsetStart = 0;
    bool cotaDragHasMoved = false;
    std::optional<std::string> cotaSeleccionadaId;
    // The view's size in pixels.
    double ancho = 0, alto = 0;

    glm::dvec2 centro() const { return {ancho * 0.5 + panOffset.x, alto * 0.5 + panOffset.y}; }
    glm::dvec2 aVista(const glm::vec2& p) const {
        const glm::dvec2 c = centro();
        return {c.x + escala * p.x, c.y - escala * p.y};
    }
    glm::dvec2 aHoja(const glm::dvec2& v) const {
        const glm::dvec2 c = centro();
        return {(v.x - c.x) / escala, (c.y - v.y) / escala};
    }

    // Fit: the box of the lines (grid and labels left out) fills the view
    // less 100 pixels; nothing without lines, width or height.
    void encuadrar();
    // One wheel step: by 1.15 either way within 4 to 4000, the point under
    // the mouse kept in place.
    void zoom(double deltaVertical, const glm::dvec2& raton);
    // The snap target near a view point: cut line ends within 7.5 pixels,
    // cut lines within 15.
    std::optional<glm::vec2> ajustarAPunto(const glm::dvec2& m) const;
    // The nearest named cut line within the tolerance, by index.
    std::optional<std::size_t> elegirSegmento(const glm::dvec2& m, double tolerancia) const;

    // Mouse and keys; each returns true when the view must be redrawn.
    bool pulsar(const glm::dvec2& m, int clics, const MedidasTexto& medidas);
    bool arrastrar(const glm::dvec2& m);
    bool soltar();
    bool mover(const glm::dvec2& m);
    bool escape();
    // "Borrar todas las cotas".
    void borrarCotas() { cotas.clear(); }

    // The weights of the drawing: f grows as the sheet is zoomed out.
    double factorGrosor() const;

    GeometriaEtiqueta geometriaEtiqueta(const Etiqueta2D& e, const MedidasTexto& medidas) const;
    GeometriaCota geometriaCota(const Cota2D& c, const MedidasTexto& medidas) const;
    Etiqueta2D* etiqueta(const std::optional<std::string>& id);
    Cota2D* cota(const std::optional<std::string>& id);
};

// The text lines of a label: the name (cut at 33 characters), the type,
// the dimensions, "Mat: …" and "Nivel: …", the optional ones left out when
// empty. Each line says which of the five it is.
struct LineaEtiqueta {
    int tipo = 0; // 0 name, 1 type, 2 dimensions, 3 material, 4 level
    std::string texto;
};
std::vector<LineaEtiqueta> lineasEtiqueta(const Etiqueta2D& e);

// The radius of the hide and delete circles, and the side of their hit square.
inline constexpr double radioCirculoCerrar = 7.0;

} // namespace teskal
