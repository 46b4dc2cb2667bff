#pragma once

#include <glm/vec3.hpp>

namespace teskal {

// The camera a BCF viewpoint carries for a clash, in 32-bit floats: where it
// stands, the unit direction it looks in and its unit up vector.
struct CamaraBCF {
    glm::vec3 posicion{0.0f};
    glm::vec3 direccion{0.0f, 0.0f, -1.0f};
    glm::vec3 arriba{0.0f, 1.0f, 0.0f};
};

// The camera of a clash seen from `posicion` towards `objetivo`. The view
// vector is the difference taken in doubles and then narrowed; at 1 mm or
// less it points down (0, 0, -1). The up vector has Z as the world's
// vertical, as the scene and IFC do: Z made perpendicular to the view, or Y
// when the view runs along Z (arribaVertical).
CamaraBCF camaraBCF(const glm::dvec3& posicion, const glm::dvec3& objetivo);

// The same camera with the up vector of the literal TESKAL form: the world's
// Y axis made perpendicular to the view, or Y itself when the view runs along
// Y.
CamaraBCF camaraBCFLiteral(const glm::dvec3& posicion, const glm::dvec3& objetivo);

} // namespace teskal
