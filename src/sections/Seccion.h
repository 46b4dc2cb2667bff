#pragma once

#include "federation/Especialidades.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"
#include "scene/Color.h"
#include "scene/Geometry.h"
#include "sections/SeccionGuardada.h"

#include <array>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The flat linework of a section: what an axis-aligned plane cuts, the box
// outlines seen behind it, one label per element it crosses and the IFC grid
// axes, all on the sheet (metres, y upward). Geometry is cut in its own
// coordinates: no node transform is applied, so a model moved at a parent
// node is cut at its unmoved place.
namespace teskal {

// One straight line of a sheet.
struct Segmento2D {
    glm::vec2 p1{0.0f};
    glm::vec2 p2{0.0f};
    std::string key; // the discipline's key; "GRILLA" for grid lines
    Color color;
    bool esCorte = true;        // a cut line; false for seen and grid lines
    std::string nombreElemento; // the element's name, the axis tag, or empty for box outlines
    friend bool operator==(const Segmento2D&, const Segmento2D&) = default;
};

using ParHoja = std::pair<glm::vec2, glm::vec2>;

// Everything a sheet is opened with: its title (its whole identity), the
// lines, the labels, the dimensions kept under the title and the grid.
struct Plano2D {
    std::string titulo;
    std::vector<Segmento2D> segmentos;
    std::vector<Etiqueta2D> etiquetas;
    std::vector<Cota2D> cotas;
    std::vector<Segmento2D> segmentosGrilla;
};

// The two sheet coordinates of a point: (y, z) for axis 0, (x, z) for axis 1,
// (x, y) for any other code.
inline glm::vec2 proyectarEnHoja(int eje, const glm::vec3& p) {
    if (eje == 0) return {p.y, p.z};
    if (eje == 1) return {p.x, p.z};
    return {p.x, p.y};
}
// The component along the axis (z for any code other than 0 and 1).
inline float componenteEje(int eje, const glm::vec3& p) { return eje == 0 ? p.x : eje == 1 ? p.y : p.z; }

// The cut of one triangle: the points where its edges cross from not above
// the plane to above it, in the order ab, bc, ca; a pair when there are two.
// A vertex exactly on the plane counts as not above; no tolerance.
inline std::optional<ParHoja> intersectarTriangulo(int eje, const glm::vec3& a, const glm::vec3& b,
                                                   const glm::vec3& c, float posicion) {
    const float da = componenteEje(eje, a) - posicion;
    const float db = componenteEje(eje, b) - posicion;
    const float dc = componenteEje(eje, c) - posicion;
    const bool sa = da > 0.0f, sb = db > 0.0f, sc = dc > 0.0f;
    if (sa == sb && sb == sc) return std::nullopt;
    glm::vec2 puntos[3];
    int n = 0;
    if (sa != sb) puntos[n++] = proyectarEnHoja(eje, a + (b - a) * (da / (da - db)));
    if (sb != sc) puntos[n++] = proyectarEnHoja(eje, b + (c - b) * (db / (db - dc)));
    if (sc != sa) puntos[n++] = proyectarEnHoja(eje, c + (a - c) * (dc / (dc - da)));
    if (n < 2) return std::nullopt;
    return ParHoja{puntos[0], puntos[1]};
}

// The range along the axis of the vertices that a geometry's index lists
// reach (its triangle lists alone, or all), compared as its box is; whether
// any of them is not a number, and whether there was any.
struct RangoEje {
    float minimo = 0, maximo = 0;
    bool conNaN = false;
    bool alguno = false;
};
RangoEje rangoEje(const Geometry& g, int eje, bool soloTriangulos);

// The ranges along the axis (all index lists) of the geometry nodes that one
// extraction walked, in the walk's order: the labels of the same cut read
// them instead of the vertices again.
struct RangosCorte {
    int eje = -1;
    std::vector<RangoEje> porNodo;
};

// The cut lines of a geometry's triangle lists, appended to `salida`; line
// lists and triangles with an index out of range give nothing.
void cortarGeometria(const Geometry& g, int eje, float posicion, std::vector<ParHoja>& salida);
// The same with the range of its triangle lists already read.
void cortarGeometria(const Geometry& g, int eje, float posicion, const RangoEje& triangulos,
                     std::vector<ParHoja>& salida);
std::vector<ParHoja> cortarGeometria(const Geometry& g, int eje, float posicion);

// The outline of a box on the sheet: c0 c1, c1 c2, c2 c3, c3 c0, seen lines.
std::array<Segmento2D, 4> contornoCaja(int eje, const std::string& key, const Color& color, const glm::vec3& minimo,
                                       const glm::vec3& maximo);

// The cut lines of every visible discipline and, with a depth above 0, the
// box outlines of the nodes whose box centre lies between the limit
// (position - depth; no limit for an infinite depth) and the plane.
std::vector<Segmento2D> extraerSegmentos(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                                         double posicion, double profundidad, RangosCorte* rangos = nullptr);

// The element's name for a geometry node: the nearest node, going up from the
// node itself, with a non-empty name that is not the discipline's root.
std::string_view nombreElementoDe(const Node& nodo, const Node* nodoRaiz);
const Node* nodoElementoDe(const Node& nodo, const Node* nodoRaiz);

// The readable type of an IFC class in upper case ("IFCWALL" gives "Muro");
// other classes lose "IFC" and are capitalised word by word.
std::string tipoIFCLegible(const std::string& tipo);

// One label per element (per discipline and name) whose box the plane
// crosses, edges included, with its text placed in two columns. Properties
// come by the element node's GlobalId when it has one, else by its name.
std::vector<Etiqueta2D> construirEtiquetas(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                                           const PropiedadesPorEspecialidad& propiedadesIFC,
                                           const PropiedadesPorEspecialidad& propiedadesPorGlobalId,
                                           double posicion, const RangosCorte* rangos = nullptr);
// The text columns: 4 m to the left and 1.5 m to the right of each anchor,
// split at the mean anchor x, stepped by 1.5 m from the highest anchor.
void colocarTextosEtiquetas(std::vector<Etiqueta2D>& etiquetas);

// Fresh labels take `visible` and `offsetTexto` from the saved label of the
// same name and discipline; saved labels with no fresh match are dropped.
std::vector<Etiqueta2D> fusionarEtiquetas(std::vector<Etiqueta2D> frescas, const std::vector<Etiqueta2D>& guardadas);

// Every grid axis as seen lines of key "GRILLA", named by its tag.
std::vector<Segmento2D> proyectarGrilla(const std::vector<EjeGrilla>& grillas, int eje);

// "Plano 2D — Eje Z = 1.20 m", with " · 3.0 m prof." (mode 1) or " · ilimitado" (mode 2).
std::string tituloPlano(int eje, double posicion, int modoProfundidad, double profundidad);
// The depth a mode stands for: 0, the given depth, or positive infinity.
double profundidadDeModo(int modoProfundidad, double profundidad);

} // namespace teskal
