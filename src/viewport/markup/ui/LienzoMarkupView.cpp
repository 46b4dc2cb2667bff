#include "viewport/markup/ui/LienzoMarkupView.h"

#include "federation/ContentView.h"

#include <QBuffer>
#include <QImage>
#include <QMouseEvent>
#include <QOpenGLWidget>
#include <QPainter>
#include <QPainterPath>

namespace teskal {

namespace {

QColor colorDe(double r, double g, double b) { return QColor::fromRgbF(r, g, b, 1.0); }

void pintarTrazado(QPainter& p, const TrazadoMarkup& t) {
    if (!trazadoDibujable(t)) return;
    QPainterPath camino(QPointF(t.puntos[0].x, t.puntos[0].y));
    for (std::size_t i = 1; i < t.puntos.size(); ++i) camino.lineTo(t.puntos[i].x, t.puntos[i].y);
    p.setPen(QPen(colorDe(t.r, t.g, t.b), t.grosor, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(camino);
}

} // namespace

void pintarMarkup(QPainter& p, const std::vector<TrazadoMarkup>& trazados, const std::vector<TextoMarkup>& textos,
                  const TrazadoMarkup* actual) {
    p.setRenderHint(QPainter::Antialiasing);
    for (const auto& t : trazados) pintarTrazado(p, t);
    if (actual) pintarTrazado(p, *actual);
    for (const auto& t : textos) {
        QFont fuente(QStringLiteral("Liberation Sans"));
        fuente.setBold(true);
        fuente.setPixelSize(std::max(1, static_cast<int>(std::lround(t.tamano))));
        QPainterPath camino;
        camino.addText(QPointF(t.x, t.y), fuente, QString::fromStdString(t.texto));
        // Fill and a black outline together: 2 % of the font size outside
        // the glyphs (the pen straddles the path).
        p.setPen(QPen(Qt::black, std::max(1.0, t.tamano * 0.04)));
        p.setBrush(colorDe(t.r, t.g, t.b));
        p.drawPath(camino);
    }
}

LienzoMarkupView::LienzoMarkupView(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("lienzoMarkup"));
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
    setCursor(Qt::CrossCursor);
    modelo_.onNuevoTrazado = [this](TrazadoMarkup t) { cv_.agregarTrazado(std::move(t)); };
    modelo_.onNuevoTexto = [this](TextoMarkup t) { cv_.agregarTexto(std::move(t)); };
    connect(&cv_, &ContentView::changed, this, &LienzoMarkupView::sincronizar);
    sincronizar();
}

void LienzoMarkupView::sincronizar() {
    const EstadoMarkup& m = cv_.markup;
    modelo_.trazados = m.trazadosActivos;
    modelo_.textos = m.textosActivos;
    const ColorMarkup& c = markupPaleta[static_cast<std::size_t>(
        std::clamp(m.markupColorIdx, 0, static_cast<int>(markupPaleta.size()) - 1))];
    modelo_.colorR = c.r;
    modelo_.colorG = c.g;
    modelo_.colorB = c.b;
    modelo_.grosor = m.markupGrosor;
    modelo_.modoTexto = m.markupModoTexto;
    modelo_.textoPendiente = m.markupTextoPend;
    setVisible(m.modoMarkup);
    if (m.modoMarkup) raise();
    update();
}

QImage LienzoMarkupView::imagen() const {
    QImage imagen(size(), QImage::Format_ARGB32_Premultiplied);
    imagen.fill(Qt::transparent);
    QPainter p(&imagen);
    pintarMarkup(p, modelo_.trazados, modelo_.textos, modelo_.trazadoActual ? &*modelo_.trazadoActual : nullptr);
    return imagen;
}

void LienzoMarkupView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    pintarMarkup(p, modelo_.trazados, modelo_.textos, modelo_.trazadoActual ? &*modelo_.trazadoActual : nullptr);
}

void LienzoMarkupView::mousePressEvent(QMouseEvent* e) {
    modelo_.pulsar({e->position().x(), e->position().y()});
    update();
}

void LienzoMarkupView::mouseMoveEvent(QMouseEvent* e) {
    if (!modelo_.trazadoActual) return;
    modelo_.arrastrar({e->position().x(), e->position().y()});
    update();
}

void LienzoMarkupView::mouseReleaseEvent(QMouseEvent*) {
    modelo_.soltar();
    update();
}

std::optional<QByteArray> capturarVistaMarkup(QOpenGLWidget* vista, const LienzoMarkupView* lienzo) {
    if (!vista || !lienzo) return std::nullopt;
    const QImage foto = vista->grabFramebuffer();
    if (foto.isNull()) return std::nullopt;
    QImage compuesta(foto.size(), QImage::Format_RGB32);
    QPainter p(&compuesta);
    p.drawImage(compuesta.rect(), foto);
    // The drawing is stretched to the picture, whatever its scale.
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
    p.drawImage(compuesta.rect(), lienzo->imagen());
    p.end();
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    if (!compuesta.save(&buffer, "JPEG", 85) || jpeg.isEmpty()) return std::nullopt;
    return jpeg;
}

} // namespace teskal
