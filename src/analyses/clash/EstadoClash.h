#pragma once

#include "scene/Color.h"

#include <array>
#include <string_view>

namespace teskal {

// The review state of a clash: a label the reviewer moves freely.
enum class EstadoClash { abierto, enRevision, aprobado, resuelto };

inline constexpr std::array<EstadoClash, 4> estadosClash = {EstadoClash::abierto, EstadoClash::enRevision,
                                                            EstadoClash::aprobado, EstadoClash::resuelto};

// "Abierto", "En revisión", "Aprobado", "Resuelto".
std::string_view textoEstado(EstadoClash e);
// The state of a saved text; any other text is "abierto".
EstadoClash estadoDesdeTexto(std::string_view texto);
Color colorEstado(EstadoClash e);
std::string_view iconoEstado(EstadoClash e);
// The topic status a BCF archive carries for the state.
std::string_view estadoBCF(EstadoClash e);

} // namespace teskal
