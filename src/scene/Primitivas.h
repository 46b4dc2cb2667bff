#pragma once

#include "scene/Geometry.h"
#include "scene/Material.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <utility>
#include <vector>

// Geometry makers for the helpers the workbench adds to a scene (measurement
// figures, labels): spheres, cylinders, a torus ring, flat quads and line
// segments, each as one Geometry with its material. Sizes are scene metres.
namespace teskal {

// A material drawn with constant lighting: diffuse and emission as given.
// `profundidad` false neither reads nor writes the depth buffer, so the
// figure shows through walls; `orden` is its rendering order.
std::shared_ptr<Material> materialConstante(const Color& difuso, const Color& emision, bool profundidad = true,
                                            int orden = 0);

// A UV sphere about the origin.
std::shared_ptr<Geometry> geometriaEsfera(float radio, std::shared_ptr<Material> material, int segmentos = 20,
                                          int anillos = 12);
// A closed cylinder from `a` to `b`; nothing (null) when they are nearer
// than a tenth of a millimetre.
std::shared_ptr<Geometry> geometriaCilindro(const glm::vec3& a, const glm::vec3& b, float radio,
                                            std::shared_ptr<Material> material, int lados = 12);
// A torus about the origin in the XY plane (its axis along Z): the ring's
// radius and the pipe's.
std::shared_ptr<Geometry> geometriaToro(float radioAnillo, float radioTubo, std::shared_ptr<Material> material,
                                        int segmentos = 40, int lados = 10);
// A quad in the XY plane from `desde` to `desde` + (ancho, alto), facing +Z,
// with texture coordinates from (0, 0) at its bottom left to (1, 1).
std::shared_ptr<Geometry> geometriaPlano(float ancho, float alto, const glm::vec2& desde,
                                         std::shared_ptr<Material> material);
// Line segments, each one an element (a line primitive) of its own.
std::shared_ptr<Geometry> geometriaLineas(const std::vector<std::pair<glm::vec3, glm::vec3>>& segmentos,
                                          std::shared_ptr<Material> material);

} // namespace teskal
