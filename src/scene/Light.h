#pragma once

#include "scene/Color.h"

#include <optional>

namespace teskal {

enum class TipoLuz { Direccional, Ambiental, Omni };

struct Light {
    TipoLuz tipo = TipoLuz::Omni;
    float intensidad = 1000.0f;
    std::optional<Color> color; // none: the renderer's default white
    bool proyectaSombras = false;
    bool sombrasDiferidas = false;
    float radioSombra = 3.0f;
    int muestrasSombra = 1;
    float sesgoSombra = 1.0f;
    Color colorSombra{0, 0, 0, 0.5f};
    float orthographicScale = 1.0f;
};

} // namespace teskal
