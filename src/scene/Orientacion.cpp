#include "scene/Orientacion.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/mat3x3.hpp>

namespace teskal {

namespace {

// Euler angles of the rotation matrix (column-major, m[columna][fila]).
glm::vec3 eulerDeMatriz(const glm::mat3& m) {
    // R = Rx(a) Ry(b) Rz(c): R(0,2) = sin b, R(1,2) = -sin a cos b,
    // R(2,2) = cos a cos b, R(0,0) = cos b cos c, R(0,1) = -cos b sin c.
    const float r02 = m[2][0], r12 = m[2][1], r22 = m[2][2], r00 = m[0][0], r01 = m[1][0];
    const float b = std::asin(std::clamp(r02, -1.0f, 1.0f));
    if (std::fabs(r02) > 0.99999f) {
        // Looking along X: pitch and roll turn about the same axis; all of
        // the turn goes to the roll, read from R(1,0) = sin c, R(1,1) = cos c.
        return {0.0f, b, std::atan2(m[0][1], m[1][1])};
    }
    return {std::atan2(-r12, r22), b, std::atan2(-r01, r00)};
}

} // namespace

glm::vec3 eulerMirandoA(const glm::vec3& direccion, const glm::vec3& arriba) {
    const glm::vec3 frente = glm::normalize(direccion);
    glm::vec3 derecha = glm::cross(frente, arriba);
    if (glm::length(derecha) < 1e-6f) derecha = glm::cross(frente, glm::vec3(0, 1, 0)); // looking along up
    if (glm::length(derecha) < 1e-6f) derecha = glm::cross(frente, glm::vec3(1, 0, 0));
    derecha = glm::normalize(derecha);
    const glm::vec3 arribaReal = glm::cross(derecha, frente);
    return eulerDeMatriz(glm::mat3(derecha, arribaReal, -frente));
}

glm::vec3 arribaVertical(const glm::vec3& direccion) {
    const float l = glm::length(direccion);
    if (!(l > 0.0f)) return {0.0f, 1.0f, 0.0f};
    const glm::vec3 d = direccion / l;
    // Z projected off the view; near the vertical it comes to (almost)
    // nothing. For a unit d, 1 - d.z² is d.x² + d.y², which keeps its digits
    // where the view is almost vertical.
    glm::vec3 u(0.0f - d.x * d.z, 0.0f - d.y * d.z, d.x * d.x + d.y * d.y);
    float m = glm::length(u);
    if (m > 0.001f) return u / m;
    // Looking up or down: Y projected off the view, never short there.
    u = glm::vec3(0.0f - d.x * d.y, d.x * d.x + d.z * d.z, 0.0f - d.z * d.y);
    m = glm::length(u);
    return u / m;
}

glm::vec3 eulerMirandoHacia(const glm::vec3& direccion) {
    const glm::vec3 d = glm::length(direccion) > 0.001f ? direccion : glm::vec3(0.0f, 0.0f, -1.0f);
    return eulerMirandoA(d, arribaVertical(d));
}

glm::quat cuaternionDeEuler(const glm::vec3& e) {
    return glm::angleAxis(e.x, glm::vec3(1, 0, 0)) * glm::angleAxis(e.y, glm::vec3(0, 1, 0)) *
           glm::angleAxis(e.z, glm::vec3(0, 0, 1));
}

glm::vec3 eulerDeCuaternion(const glm::quat& q) { return eulerDeMatriz(glm::mat3_cast(glm::normalize(q))); }

} // namespace teskal
