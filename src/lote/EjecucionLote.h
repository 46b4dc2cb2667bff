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

// Maps the clash method of the command line onto the workspace's analysis
// configuration before the search starts. "cajas" is the workbench's box
// search and needs nothing; the exact search and its clearance are set here
// once the workspace has them. Gives the Spanish sentence of a method that
// can't run.
std::optional<std::string> aplicarMetodoInterferencias(ContentView& cv, MetodoInterferencias metodo,
                                                       double holgura);

// One run: opens, converts, analyses and writes what the options ask for,
// with progress lines on standard error and the summary as JSON. Needs a
// QGuiApplication on the calling thread; `sinPantalla` says that its platform
// is the display-less one, where the renderer's context comes from EGL.
int ejecutarLote(const OpcionesLote& opciones, const std::string& carpetaPrograma, bool sinPantalla);

} // namespace teskal
