#pragma once

namespace teskal {

// An sRGB colour with alpha, each component from 0 to 1.
struct Color {
    float r = 0, g = 0, b = 0, a = 1;

    static constexpr Color gris(float blanco, float alfa = 1) { return {blanco, blanco, blanco, alfa}; }
    friend bool operator==(const Color&, const Color&) = default;
};

} // namespace teskal
