#pragma once

#include "viewport/medicion/EstadoMedicion.h"

#include <memory>

namespace teskal {

// Paints a measurement label: bold text in its colour with a dark outline,
// sized to fit, or a rounded card of the given pixels with its lines. The
// painter of EstadoMedicion in the window.
std::shared_ptr<const ImagenRGBA> pintarEtiquetaMedicion(const DibujoEtiqueta& dibujo);

} // namespace teskal
