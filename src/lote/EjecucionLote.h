#pragma once

#include "lote/OpcionesLote.h"

#include <optional>
#include <string>

namespace teskal {

class ContentView;

// Exit statuses of the batch command.
inline constexpr int salidaCorrecta = 0;
inline constexpr int salidaExcedida = 1; // more clashes than --max-interferencias
inline constexpr int salidaError = 2;

// The batch method onto the workspace's analysis settings: the method, and
// the clearance for the clearance check.
void aplicarMetodoInterferencias(ContentView& cv, MetodoInterferencias metodo, double holgura);

// One run: opens, converts, analyses and writes what the options ask for,
// with progress lines on standard error and the summary as JSON. Needs a
// QGuiApplication on the calling thread; `sinPantalla` says that its platform
// is the display-less one, where the renderer's context comes from EGL.
int ejecutarLote(const OpcionesLote& opciones, const std::string& carpetaPrograma, bool sinPantalla);

} // namespace teskal
