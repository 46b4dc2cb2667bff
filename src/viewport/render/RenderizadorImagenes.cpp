#include "viewport/render/RenderizadorImagenes.h"

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QSurfaceFormat>

namespace teskal {

namespace {

QSurfaceFormat formatoGL() {
    QSurfaceFormat f;
    f.setVersion(3, 3);
    f.setProfile(QSurfaceFormat::CoreProfile);
    f.setDepthBufferSize(24);
    return f;
}

} // namespace

RenderizadorImagenes::RenderizadorImagenes() : RenderizadorImagenes(nullptr) {}

RenderizadorImagenes::RenderizadorImagenes(std::unique_ptr<QOpenGLContext> contexto) {
    contexto_ = std::move(contexto);
    if (!contexto_) {
        contexto_ = std::make_unique<QOpenGLContext>();
        contexto_->setFormat(formatoGL());
        if (!contexto_->create()) return;
    }
    superficie_ = std::make_unique<QOffscreenSurface>();
    superficie_->setFormat(contexto_->format());
    superficie_->create();
    valido_ = superficie_->isValid() && contexto_->makeCurrent(superficie_.get());
    if (valido_) renderizador_.inicializar();
}

RenderizadorImagenes::~RenderizadorImagenes() {
    if (valido_ && contexto_->makeCurrent(superficie_.get())) {
        renderizador_.liberar();
        contexto_->doneCurrent();
    }
}

QImage RenderizadorImagenes::renderizar(Scene& escena, const Node& camara, QSize tamano, int muestras,
                                        std::optional<Color> fondo) {
    if (!valido_ || tamano.isEmpty() || !contexto_->makeCurrent(superficie_.get())) return {};
    QOpenGLFramebufferObjectFormat formato;
    formato.setAttachment(QOpenGLFramebufferObject::Depth);
    formato.setSamples(std::max(muestras, 0));
    QOpenGLFramebufferObject multimuestra(tamano, formato);
    QOpenGLFramebufferObject resuelto(tamano);
    renderizador_.fondoLiso = fondo;
    const auto cam = CamaraRender::desdeNodo(camara, static_cast<float>(tamano.width()) / tamano.height());
    renderizador_.dibujar(escena, cam, tamano.width(), tamano.height(), multimuestra.handle());
    QOpenGLFramebufferObject::blitFramebuffer(&resuelto, &multimuestra);
    QImage imagen = resuelto.toImage(false);
    renderizador_.fondoLiso.reset();
    return imagen.convertToFormat(QImage::Format_RGB32);
}

std::optional<ResultadoPick> RenderizadorImagenes::elegir(Scene& escena, const Node& camara, QSize tamano,
                                                          QPoint pixel, bool incluirPiso) {
    if (!valido_ || tamano.isEmpty() || !contexto_->makeCurrent(superficie_.get())) return std::nullopt;
    const auto cam = CamaraRender::desdeNodo(camara, static_cast<float>(tamano.width()) / tamano.height());
    return renderizador_.elegir(escena, cam, tamano.width(), tamano.height(), pixel.x(), pixel.y(), incluirPiso,
                                contexto_->defaultFramebufferObject());
}

QImage renderizarImagen(Scene& escena, const Node& camara, QSize tamano, int muestras, std::optional<Color> fondo) {
    RenderizadorImagenes r;
    return r.renderizar(escena, camara, tamano, muestras, fondo);
}

} // namespace teskal
