#include "scene/Geometry.h"

#include <limits>

namespace teskal {

Box Geometry::boundingBox() const {
    // Plain min/max over the indexed vertices; the box stays empty when no
    // index reaches a vertex.
    constexpr float inf = std::numeric_limits<float>::infinity();
    glm::vec3 mn(inf), mx(-inf);
    bool alguno = false;
    const auto n = static_cast<std::int64_t>(vertices.size());
    const glm::vec3* v = vertices.data();
    for (const auto& e : elementos)
        for (std::int32_t i : e.indices) {
            if (i < 0 || i >= n) continue;
            const glm::vec3& p = v[i];
            mn.x = p.x < mn.x ? p.x : mn.x;
            mn.y = p.y < mn.y ? p.y : mn.y;
            mn.z = p.z < mn.z ? p.z : mn.z;
            mx.x = p.x > mx.x ? p.x : mx.x;
            mx.y = p.y > mx.y ? p.y : mx.y;
            mx.z = p.z > mx.z ? p.z : mx.z;
            alguno = true;
        }
    Box caja;
    // Vertices that are all NaN compare false everywhere and leave it empty.
    if (alguno && mn.x <= mx.x && mn.y <= mx.y && mn.z <= mx.z) {
        caja.min = mn;
        caja.max = mx;
        caja.vacia = false;
    }
    return caja;
}

} // namespace teskal
