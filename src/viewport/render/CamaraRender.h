#pragma once

#include "scene/Node.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

namespace teskal {

// What one frame needs of the camera: matrices, place and clipping planes.
struct CamaraRender {
    glm::mat4 vista{1.0f};
    glm::mat4 proyeccion{1.0f};
    glm::vec3 posicion{0.0f};
    float cercano = 0.01f;
    float lejano = 1000.0f;

    // From a node with a camera (its world transform) and the view's aspect.
    static CamaraRender desdeNodo(const Node& nodo, float aspecto);
    // The world point under normalised device coordinates (x, y in -1..1) at
    // window depth z (0..1).
    glm::vec3 desproyectar(float x, float y, float z) const;
};

} // namespace teskal
