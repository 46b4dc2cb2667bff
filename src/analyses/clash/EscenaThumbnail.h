#pragma once

#include "analyses/clash/Interferencias.h"
#include "scene/Color.h"
#include "scene/Node.h"

#include <memory>
#include <string_view>

namespace teskal {

// The small scene a clash's thumbnail is rendered from: the two elements
// alone, in red (A) and blue (B), lit by their own two lights, and a camera
// placed closer to the clash than its stored viewpoint.
struct EscenaThumbnail {
    std::unique_ptr<Scene> escena;
    // Not in the tree: the renderer is handed it as the point of view.
    std::shared_ptr<Node> camara;
};

// Intensities of the two lights of a thumbnail scene.
inline constexpr float intensidadLuzDireccionalThumbnail = 900.0f;
inline constexpr float intensidadLuzAmbientalThumbnail = 380.0f;

// Adds the two lights of a thumbnail scene under `raiz`: a directional light
// from the upper diagonal and an ambient light.
void agregarLucesThumbnail(Node& raiz);

// The first node under `raiz` (depth first, `raiz` excluded) with a geometry
// and this GlobalId, or with exactly this name when no GlobalId is given;
// none when there is no such node. Same-named elements are told apart by
// their GlobalIds.
std::shared_ptr<Node> buscarElementoConGeometria(Node& raiz, std::string_view nombre,
                                                 std::string_view globalId = {});

// A clone of `original` whose geometry is a copy with one new material of
// its own: diffuse `color`, emission black, Phong, double-sided. A node
// without geometry is cloned as it is.
std::shared_ptr<Node> copiaColoreada(const Node& original, const Color& color);

// The thumbnail scene of a clash. When `nodoA` has no geometry (a clash
// restored from a project holds empty placeholders) and a live scene is
// given, the elements are looked up there by name; if either name is missing
// the placeholders are used, and the scene shows only its lights.
EscenaThumbnail escenaThumbnail(const Interferencia& interferencia, Scene* escenaViva);

} // namespace teskal
