#include "scene/Geometry.h"

namespace teskal {

Box Geometry::boundingBox() const {
    Box caja;
    const auto n = static_cast<std::int64_t>(vertices.size());
    for (const auto& e : elementos)
        for (std::int32_t i : e.indices)
            if (i >= 0 && i < n) caja.incluir(vertices[static_cast<std::size_t>(i)]);
    return caja;
}

} // namespace teskal
