#pragma once

#include "analyses/clash/EscenaThumbnail.h"
#include "analyses/xor/ComparacionXOR.h"
#include "scene/Color.h"
#include "scene/Node.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace teskal {

// The fixed look of one kind of change in the change report: heading, icon,
// the colour of its text and the colour its thumbnails are painted in.
struct AspectoCambioXOR {
    TipoCambioXOR tipo;
    const char* titulo;
    const char* icono;
    Color colorTexto;
    Color colorThumbnail;
};
// Added, eliminated, modified: the order of the report's sections.
const std::array<AspectoCambioXOR, 3>& aspectosCambioXOR();
const AspectoCambioXOR& aspectoCambioXOR(TipoCambioXOR tipo);

// The four cards of the report: the first three filtered from the elements.
struct CuentasInformeXOR {
    int agregados = 0;
    int eliminados = 0;
    int modificados = 0;
    int iguales = 0;
    int deTipo(TipoCambioXOR tipo) const;
    int total() const { return agregados + eliminados + modificados + iguales; }
};
CuentasInformeXOR cuentasInformeXOR(const ResultadoXOR& resultado);

// The key of an element's image: its GlobalId when it has one, so that
// same-named elements get their own images; its name otherwise.
const std::string& claveThumbnailXOR(const ElementoCambioXOR& elemento);

// "%.3f m" above a millimetre, "—" at a millimetre or below.
std::string textoDeltaXOR(float delta);
bool deltaVisibleXOR(float delta);
// "3 elementos", "1 elemento".
std::string textoElementosXOR(int cantidad);
// The window's title: "Informe XOR · ", the base file, " → ", the new file.
std::string tituloInformeXOR(const ResultadoXOR& resultado);

// One image to render: a clone of the element, detached from the live scene,
// and the colour of its kind of change.
struct TrabajoThumbnailXOR {
    std::string clave;
    std::shared_ptr<Node> clon;
    Color color;
};

// Finds each element's node in the model its kind is read from (the new
// model for added and modified ones, the base for eliminated ones; the base
// for a modified one when the new model is absent), by GlobalId when the
// element has one and by exact name otherwise, and clones it. An element
// whose node is not found has no image: names cut at a "/" are not found.
// Reads the live scene: main thread only.
std::vector<TrabajoThumbnailXOR>
trabajosThumbnailXOR(const std::vector<ElementoCambioXOR>& elementos, Node* modeloBase,
                     Node* modeloNuevo);

// The scene one element's image is rendered from: the clone alone, itself
// and every descendant painted `color` (emission black, Phong, double-sided),
// the thumbnail lights, and a camera on the diagonal at a distance that
// follows the element's size, looking at its centre with Z upright.
EscenaThumbnail escenaThumbnailXOR(const Node& clon, const Color& color);

} // namespace teskal
