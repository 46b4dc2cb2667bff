#include "analyses/bcf/CamaraBCF.h"

#include "scene/Orientacion.h"

#include <cmath>

namespace teskal {

namespace {

// Summed in a fixed order, so that the printed digits don't hang on how a
// library happens to add the squares.
float longitud(const glm::vec3& v) {
    return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
}

// Position and direction, shared by both forms.
CamaraBCF camaraSinArriba(const glm::dvec3& posicion, const glm::dvec3& objetivo) {
    CamaraBCF c;
    c.posicion = glm::vec3(posicion);
    const glm::vec3 v(static_cast<float>(objetivo.x - posicion.x),
                      static_cast<float>(objetivo.y - posicion.y),
                      static_cast<float>(objetivo.z - posicion.z));
    const float l = longitud(v);
    c.direccion = l > 0.001f ? glm::vec3(v.x / l, v.y / l, v.z / l) : glm::vec3(0.0f, 0.0f, -1.0f);
    return c;
}

} // namespace

CamaraBCF camaraBCF(const glm::dvec3& posicion, const glm::dvec3& objetivo) {
    CamaraBCF c = camaraSinArriba(posicion, objetivo);
    c.arriba = arribaVertical(c.direccion);
    return c;
}

CamaraBCF camaraBCFLiteral(const glm::dvec3& posicion, const glm::dvec3& objetivo) {
    CamaraBCF c = camaraSinArriba(posicion, objetivo);
    // Y projected off the direction. The zeros are written out so that a
    // component that comes to nothing is +0, never -0, in the printed text.
    const glm::vec3& d = c.direccion;
    const float k = d.x * 0.0f + d.y + d.z * 0.0f;
    const glm::vec3 u(0.0f - d.x * k, 1.0f - d.y * k, 0.0f - d.z * k);
    const float m = longitud(u);
    c.arriba = m > 0.001f ? glm::vec3(u.x / m, u.y / m, u.z / m) : glm::vec3(0.0f, 1.0f, 0.0f);
    return c;
}

} // namespace teskal
