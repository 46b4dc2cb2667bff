#include "timeline/ui/VistaGantt.h"

#include "federation/ContentView.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ui/DibujoGantt.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

namespace teskal {

namespace {

GeometriaGantt geometria(const ContentView& cv, const ArbolAWP& arbol, double ancho) {
    return geometriaGantt(arbol, arbol.filas(cv.timeline.expandidosCWA), cv.timeline.expandidosCWA,
                          cv.timeline.modoAvance(), QDateTime::currentDateTimeUtc(),
                          medidasPantalla(std::max(ancho, 400.0)));
}

} // namespace

VistaGantt::VistaGantt(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("vistaGantt"));
    connect(&cv_, &ContentView::changed, this, [this] {
        setMinimumHeight(altoNecesario());
        update();
    });
    setMinimumHeight(altoNecesario());
}

int VistaGantt::altoNecesario() const {
    const ArbolAWP arbol(cv_.timeLiner);
    const MedidasGantt m = medidasPantalla(width());
    return static_cast<int>(m.origenFilas() + m.rH * static_cast<double>(arbol.filas(cv_.timeline.expandidosCWA).size()) + 4);
}

QSize VistaGantt::sizeHint() const { return {700, altoNecesario()}; }

void VistaGantt::paintEvent(QPaintEvent* evento) {
    const ArbolAWP arbol(cv_.timeLiner);
    const GeometriaGantt g = geometria(cv_, arbol, width());
    QPainter p(this);
    p.fillRect(rect(), QColor::fromRgbF(0.09, 0.09, 0.09));
    OpcionesGantt o;
    o.pagina = false;
    o.seleccionado = cv_.timeline.seleccionado;
    o.visible = QRectF(evento->rect());
    dibujarGantt(p, g, o);
}

void VistaGantt::mousePressEvent(QMouseEvent* evento) {
    const ArbolAWP arbol(cv_.timeLiner);
    const GeometriaGantt g = geometria(cv_, arbol, width());
    const auto i = filaEn(g, evento->position().y());
    if (!i) {
        cv_.seleccionarPaquete(std::nullopt);
        return;
    }
    const FilaGantt& f = g.filas[*i];
    // The disclosure mark stands before the level's mark.
    const double xMarca = 8 + 14.0 * f.sangria;
    if (f.expandible && evento->position().x() < xMarca + 12) {
        cv_.alternarCWA(f.pkg->codigo);
        return;
    }
    cv_.seleccionarPaquete(f.pkg->id);
}

void VistaGantt::mouseDoubleClickEvent(QMouseEvent* evento) {
    const ArbolAWP arbol(cv_.timeLiner);
    const GeometriaGantt g = geometria(cv_, arbol, width());
    if (const auto i = filaEn(g, evento->position().y())) cv_.editarPaqueteAWP(g.filas[*i].pkg->id);
}

} // namespace teskal
