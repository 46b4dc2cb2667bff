#pragma once

// An offscreen OpenGL 3.3 core context made current, for the benchmarks that
// draw or upload to the GPU (under Xvfb, or a display).

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QSurfaceFormat>
#include <cstdio>

namespace teskal::bench {

struct ContextoGL {
    QOpenGLContext contexto;
    QOffscreenSurface superficie;

    // Creates the context and makes it current; prints why under the
    // benchmark's name and gives false when it can't.
    bool crear(const char* benchmark) {
        QSurfaceFormat formato;
        formato.setVersion(3, 3);
        formato.setProfile(QSurfaceFormat::CoreProfile);
        formato.setDepthBufferSize(24);
        contexto.setFormat(formato);
        if (!contexto.create()) {
            std::fprintf(stderr, "%s: no OpenGL 3.3 core context\n", benchmark);
            return false;
        }
        superficie.setFormat(contexto.format());
        superficie.create();
        if (!superficie.isValid() || !contexto.makeCurrent(&superficie)) {
            std::fprintf(stderr, "%s: the offscreen surface can't be made current\n", benchmark);
            return false;
        }
        return true;
    }
};

} // namespace teskal::bench
