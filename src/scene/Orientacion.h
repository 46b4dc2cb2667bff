#pragma once

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

// Orientations of nodes: our Euler angles apply roll about Z first, then yaw
// about Y, then pitch about X (rotation = Rx * Ry * Rz).
namespace teskal {

// The Euler angles that turn the local front (0, 0, -1) toward `direccion`,
// with the local up (0, 1, 0) leaning toward `arriba`.
glm::vec3 eulerMirandoA(const glm::vec3& direccion, const glm::vec3& arriba);

glm::quat cuaternionDeEuler(const glm::vec3& euler);
glm::vec3 eulerDeCuaternion(const glm::quat& q);

} // namespace teskal
