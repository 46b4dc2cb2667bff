#pragma once

#include "scene/Color.h"
#include "scene/Material.h"
#include "scene/Node.h"

#include <functional>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace teskal {

class IndiceRayos;

// The measuring tool of the 3D view, in toolbar order.
enum class ModoMedicion3D { inactivo, distancia, area, angulo, punto };

// What a label image shows. The core describes it; the window's painter
// (PintorEtiquetas) turns it into pixels.
struct DibujoEtiqueta {
    enum class Estilo {
        texto,   // bold text in its colour with a dark outline, sized to fit
        recuadro // a rounded card of `ancho` x `alto` pixels, fill white 0.08, border `borde`
    };
    Estilo estilo = Estilo::texto;
    std::vector<std::string> lineas;
    std::vector<Color> colores; // one per line
    Color borde{1, 1, 1, 1};
    int ancho = 0, alto = 0;    // pixels of a card
    int tamanoFuente = 48;      // pixels
    bool monoespaciada = false; // the point figure's coordinates
    bool centrada = true;       // lines centred; else at x = 16
};

using PintorEtiquetas = std::function<std::shared_ptr<const ImagenRGBA>(const DibujoEtiqueta&)>;

// Where the mouse is over the 3D view: the camera's matrices and place, the
// view's size in pixels and the mouse in pixels from the top left.
struct VistaRaton {
    glm::mat4 vistaProyeccion{1.0f};
    glm::vec3 posicionCamara{0.0f};
    glm::vec2 tamano{1.0f};
    glm::vec2 raton{0.0f};
};

// A point under the mouse: snapped to a vertex, or where the ray met a surface.
struct PuntoMedido {
    glm::vec3 punto{0.0f};
    bool ajustado = false;
};

// The workspace state of measuring: the tool, its points and the nodes it has
// added to the scene. Measurements are never stored in the project.
struct EstadoMedicion {
    ModoMedicion3D modoMedicion3D = ModoMedicion3D::inactivo;
    std::optional<glm::vec3> medicionPuntoA, medicionPuntoB, medicionPuntoC;
    std::vector<glm::vec3> medicionPuntosArea;
    std::vector<std::shared_ptr<Node>> nodosMedicion; // every figure a measurement added
    std::shared_ptr<Node> nodoSnapIndicador;          // the ring at the snap point
    std::shared_ptr<Node> nodoLineaPreview;           // the rubber band
    // Paints the label images; none (in headless use) leaves labels as
    // blank quads of the text's estimated size.
    PintorEtiquetas pintorEtiquetas;
    // The ray-cast index over the elements, rebuilt when the scene changes.
    std::shared_ptr<IndiceRayos> indice;
};

} // namespace teskal
