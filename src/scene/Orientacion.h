#pragma once

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

// Orientations of nodes: our Euler angles apply roll about Z first, then yaw
// about Y, then pitch about X (rotation = Rx * Ry * Rz).
namespace teskal {

// The Euler angles that turn the local front (0, 0, -1) toward `direccion`,
// with the local up (0, 1, 0) leaning toward `arriba`.
glm::vec3 eulerMirandoA(const glm::vec3& direccion, const glm::vec3& arriba);

// The up vector of a camera looking along `direccion` in the Z-up world: the
// world's vertical Z made perpendicular to the view, so that what stands
// upright in the scene stands upright in the picture. A view that runs along
// Z (within a thousandth of a radian or so) takes Y, made perpendicular to
// it, as up instead; so does a null direction. Unit length; `direccion` need
// not be.
glm::vec3 arribaVertical(const glm::vec3& direccion);

// The Euler angles of a camera that looks along `direccion` (target minus
// position), with the up vector of arribaVertical. A direction of a
// millimetre or less gives a view straight down.
glm::vec3 eulerMirandoHacia(const glm::vec3& direccion);

glm::quat cuaternionDeEuler(const glm::vec3& euler);
glm::vec3 eulerDeCuaternion(const glm::quat& q);

} // namespace teskal
