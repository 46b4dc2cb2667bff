#pragma once

#include "scene/Node.h"
#include "viewport/render/RenderizadorEscena.h"

#include <QImage>
#include <QPoint>
#include <QSize>
#include <memory>
#include <optional>

class QOffscreenSurface;
class QOpenGLContext;

namespace teskal {

// Renders scenes into images without a window, on a context of its own, with
// multisampling. Keeping one of these alive lets a series of images (report
// thumbnails, snapshots) reuse what was uploaded. Needs a QGuiApplication and
// the thread that made it.
class RenderizadorImagenes {
public:
    RenderizadorImagenes();
    // On a context made elsewhere (an adopted EGL context where there is no
    // display); a null one is made here as above.
    explicit RenderizadorImagenes(std::unique_ptr<QOpenGLContext> contexto);
    ~RenderizadorImagenes();

    // False when no OpenGL 3.3 context could be made; images are then null.
    bool valido() const { return valido_; }

    // The scene seen from the camera node, at this size, with `muestras`
    // samples per pixel. A plain background colour replaces the gradient.
    QImage renderizar(Scene& escena, const Node& camara, QSize tamano, int muestras = 4,
                      std::optional<Color> fondo = std::nullopt);
    // The element under a pixel, as the view's click sees it.
    std::optional<ResultadoPick> elegir(Scene& escena, const Node& camara, QSize tamano, QPoint pixel,
                                        bool incluirPiso);
    const EstadisticasRender& estadisticas() const { return renderizador_.estadisticas(); }
    std::size_t estadosReescritos() const { return renderizador_.estadosReescritos(); }

private:
    std::unique_ptr<QOpenGLContext> contexto_;
    std::unique_ptr<QOffscreenSurface> superficie_;
    RenderizadorEscena renderizador_;
    bool valido_ = false;
};

// One image of a scene from a camera: the offscreen rendering other parts of
// the workbench use for thumbnails and snapshots.
QImage renderizarImagen(Scene& escena, const Node& camara, QSize tamano, int muestras = 4,
                        std::optional<Color> fondo = std::nullopt);

} // namespace teskal
