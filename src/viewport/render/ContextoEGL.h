#pragma once

#include <memory>

class QOpenGLContext;

namespace teskal {

// Where there is no display, Qt's platforms give no OpenGL context here: the
// batch command then runs on the "eglfs" platform with no screen device and
// asks EGL itself for a context on Mesa's surfaceless platform, which draws
// into framebuffers alone (llvmpipe when there is no GPU).

// Points Qt at that platform before the application object is made, when
// neither DISPLAY nor WAYLAND_DISPLAY is set and no platform was chosen.
// True when it did.
bool prepararPlataformaSinPantalla();

// An OpenGL 3.3 core context made through EGL on the surfaceless platform and
// adopted by Qt, for RenderizadorImagenes; null when EGL can't give one. The
// QGuiApplication must exist, on the "eglfs" platform.
std::unique_ptr<QOpenGLContext> crearContextoEGLSinSuperficie();

} // namespace teskal
