#pragma once

#include "scene/Color.h"

// The named system colours the workbench uses, as fixed sRGB values.
namespace teskal::colores {

inline constexpr Color azul{0.0f, 0.478f, 1.0f, 1.0f};
inline constexpr Color purpura{0.686f, 0.322f, 0.871f, 1.0f};
inline constexpr Color teal{0.188f, 0.690f, 0.780f, 1.0f};
inline constexpr Color indigo{0.345f, 0.337f, 0.839f, 1.0f};
inline constexpr Color cian{0.196f, 0.678f, 0.902f, 1.0f};
inline constexpr Color menta{0.0f, 0.780f, 0.745f, 1.0f};
inline constexpr Color naranja{1.0f, 0.584f, 0.0f, 1.0f};
inline constexpr Color rosa{1.0f, 0.176f, 0.333f, 1.0f};
inline constexpr Color verde{0.204f, 0.780f, 0.349f, 1.0f};
inline constexpr Color rojo{1.0f, 0.231f, 0.188f, 1.0f};
inline constexpr Color amarillo{1.0f, 0.800f, 0.0f, 1.0f};
inline constexpr Color gris{0.557f, 0.557f, 0.576f, 1.0f};
inline constexpr Color negro{0.0f, 0.0f, 0.0f, 1.0f};
inline constexpr Color blanco{1.0f, 1.0f, 1.0f, 1.0f};
// Plain orange, the glow of the elements of the latest clash run: redder
// than the system orange of the review state "En revisión".
inline constexpr Color naranjaPuro{1.0f, 0.5f, 0.0f, 1.0f};

} // namespace teskal::colores
