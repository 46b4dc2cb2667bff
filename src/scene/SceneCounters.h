#pragma once

#include <cstdint>

namespace teskal {

// The two change counters of a scene. Structure moves when nodes come or go,
// when geometry changes or a node moves; appearance moves when a colour,
// an opacity, a hidden flag or a material setting changes. The renderer
// re-uploads only what a counter says changed.
struct SceneCounters {
    std::uint64_t estructura = 0;
    std::uint64_t apariencia = 0;
};

} // namespace teskal
