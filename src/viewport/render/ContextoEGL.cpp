#include "viewport/render/ContextoEGL.h"

#include <QOpenGLContext>
#include <cstdlib>

#include <EGL/egl.h>
#include <EGL/eglext.h>

namespace teskal {

bool prepararPlataformaSinPantalla() {
    auto definida = [](const char* nombre) {
        const char* v = std::getenv(nombre);
        return v && *v;
    };
    if (definida("DISPLAY") || definida("WAYLAND_DISPLAY") || definida("QT_QPA_PLATFORM")) return false;
    // eglfs with no device integration opens its "framebuffer" only to ask
    // for the screen's size, which a null device doesn't answer: the defaults
    // stand, and no window is ever made.
    setenv("QT_QPA_PLATFORM", "eglfs", 1);
    setenv("QT_QPA_EGLFS_INTEGRATION", "none", 1);
    setenv("QT_QPA_EGLFS_FB", "/dev/null", 1);
    setenv("EGL_PLATFORM", "surfaceless", 1);
    return true;
}

std::unique_ptr<QOpenGLContext> crearContextoEGLSinSuperficie() {
    const auto plataforma =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!plataforma) return nullptr;
    EGLDisplay pantalla = plataforma(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    EGLint mayor = 0, menor = 0;
    if (pantalla == EGL_NO_DISPLAY || !eglInitialize(pantalla, &mayor, &menor)) return nullptr;
    const EGLint atributos[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                EGL_RED_SIZE,     8,               EGL_GREEN_SIZE,      8,
                                EGL_BLUE_SIZE,    8,               EGL_DEPTH_SIZE,      24,
                                EGL_NONE};
    EGLConfig configuracion = nullptr;
    EGLint cuantas = 0;
    if (!eglChooseConfig(pantalla, atributos, &configuracion, 1, &cuantas) || cuantas < 1) return nullptr;
    if (!eglBindAPI(EGL_OPENGL_API)) return nullptr;
    const EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 3,
                              EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    EGLContext contexto = eglCreateContext(pantalla, configuracion, EGL_NO_CONTEXT, version);
    if (contexto == EGL_NO_CONTEXT) return nullptr;
    // Qt adopts the context without owning it: it lives as long as the process.
    return std::unique_ptr<QOpenGLContext>(QNativeInterface::QEGLContext::fromNative(contexto, pantalla));
}

} // namespace teskal
