#pragma once

#include <array>
#include <string_view>

namespace teskal {

// The seven preset views of the camera, in menu order.
enum class VistaPreset { arriba, frontal, posterior, izquierda, derecha, isoIzquierda, isoDerecha };

inline constexpr std::array<VistaPreset, 7> vistasPreset = {
    VistaPreset::arriba,    VistaPreset::frontal,      VistaPreset::posterior, VistaPreset::izquierda,
    VistaPreset::derecha,   VistaPreset::isoIzquierda, VistaPreset::isoDerecha};

inline std::string_view nombreVistaPreset(VistaPreset v) {
    switch (v) {
    case VistaPreset::arriba: return "Arriba";
    case VistaPreset::frontal: return "Frontal";
    case VistaPreset::posterior: return "Posterior";
    case VistaPreset::izquierda: return "Izquierda";
    case VistaPreset::derecha: return "Derecha";
    case VistaPreset::isoIzquierda: return "Isométrica izquierda";
    case VistaPreset::isoDerecha: return "Isométrica derecha";
    }
    return {};
}

} // namespace teskal
