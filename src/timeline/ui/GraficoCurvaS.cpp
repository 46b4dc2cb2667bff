#include "timeline/ui/GraficoCurvaS.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "timeline/GeometriaGantt.h"
#include "ui/TextoQt.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace teskal {

namespace {

QColor qcolor(const Color& c, double alfa = 1) { return QColor::fromRgbF(c.r, c.g, c.b, alfa); }
constexpr double altoLeyenda = 44; // the month labels and the legend below the plot

} // namespace

GraficoCurvaS::GraficoCurvaS(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("curvaS"));
    setMouseTracking(true);
    setMinimumSize(320, 240);
    connect(&cv_, &ContentView::changed, this, qOverload<>(&QWidget::update));
}

double GraficoCurvaS::anchoPlot() const { return std::max(10.0, width() - margenIzquierdoCurvaS - 12); }
double GraficoCurvaS::altoPlot() const { return std::max(10.0, height() - margenSuperiorCurvaS - altoLeyenda); }

void GraficoCurvaS::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(rect(), QColor::fromRgbF(0.11, 0.11, 0.12));
    const ArbolAWP arbol(cv_.timeLiner);
    const double W = anchoPlot(), H = altoPlot();
    const double x0 = margenIzquierdoCurvaS, y0 = margenSuperiorCurvaS;
    const CurvasS c = calcularCurvasS(arbol, curvasModo, W, H, cv_.timeline.fechaScrubber);
    QFont f = font();
    f.setPixelSize(10);
    p.setFont(f);
    if (!c.hayDatos) {
        p.setPen(QColor::fromRgbF(1, 1, 1, 0.5));
        p.drawText(rect(), Qt::AlignCenter, QString::fromUtf8(textoSinDatosCurvaS));
        return;
    }
    // The grid: a line every quarter, labelled in percent.
    for (int i = 0; i <= 4; ++i) {
        const double y = y0 + H - H * i / 4.0;
        p.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.08), 0.5));
        p.drawLine(QPointF(x0, y), QPointF(x0 + W, y));
        p.setPen(QColor::fromRgbF(1, 1, 1, 0.5));
        p.drawText(QRectF(0, y - 7, x0 - 4, 14), Qt::AlignRight | Qt::AlignVCenter, q(formato("%.0f%%", i * 25.0)));
    }
    for (const MarcaMes& m : c.meses) {
        p.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.2), 0.5));
        p.drawLine(QPointF(m.x, y0 + H), QPointF(m.x, y0 + H + 4));
        p.setPen(QColor::fromRgbF(1, 1, 1, 0.5));
        p.drawText(QPointF(m.x + 2, y0 + H + 14), q(textoFechaGantt(m.fecha, "MMM yy")));
    }
    // Each curve: the faint area below it, the smoothed line, a dot at its end.
    for (const SerieCurvaS& s : c.series) {
        if (s.puntos.size() < 2) continue;
        QPainterPath linea(s.puntos.front());
        for (const TramoCurva& t : suavizarCurva(s.puntos)) {
            if (t.recto)
                linea.lineTo(t.p1);
            else
                linea.cubicTo(t.c1, t.c2, t.p1);
        }
        QPainterPath area = linea;
        area.lineTo(QPointF(s.puntos.back().x(), y0 + H));
        area.lineTo(QPointF(s.puntos.front().x(), y0 + H));
        area.closeSubpath();
        p.fillPath(area, qcolor(s.color, 0.08));
        p.strokePath(linea, QPen(qcolor(s.color), 2));
        p.setPen(Qt::NoPen);
        p.setBrush(qcolor(s.color));
        p.drawEllipse(s.puntos.back(), 3, 3);
    }
    if (c.xScrubber) {
        QPen pen(qcolor(colores::amarillo, 0.7), 1.2, Qt::DashLine);
        p.setPen(pen);
        p.drawLine(QPointF(*c.xScrubber, y0), QPointF(*c.xScrubber, y0 + H));
    }
    // The legend, in the curves' order, and the scrubber's.
    double x = x0;
    const double yLeyenda = y0 + H + 32;
    auto entrada = [&](const QString& nombre, const QColor& color) {
        p.setPen(Qt::NoPen);
        p.setBrush(color);
        p.drawRoundedRect(QRectF(x, yLeyenda - 4, 10, 8), 2, 2);
        p.setPen(QColor::fromRgbF(1, 1, 1, 0.75));
        p.drawText(QPointF(x + 14, yLeyenda + 4), nombre);
        x += 20 + p.fontMetrics().horizontalAdvance(nombre);
    };
    for (const SerieCurvaS& s : c.series) entrada(q(s.nombre), qcolor(s.color));
    entrada(QString::fromUtf8(textoFechaScrubberCurvaS), qcolor(colores::amarillo));

    if (!sCurveHoverX) return;
    const auto tt = tooltipCurvaS(arbol, curvasModo, W, H, *sCurveHoverX);
    if (!tt) return;
    p.setPen(QPen(QColor::fromRgbF(1, 1, 1, 0.4), 0.8, Qt::DashLine));
    p.drawLine(QPointF(*sCurveHoverX, y0), QPointF(*sCurveHoverX, y0 + H));
    QStringList lineas{q(textoFechaGantt(tt->fecha, "MMM yyyy"))};
    for (const LineaTT& l : tt->lineas) {
        p.setPen(Qt::NoPen);
        p.setBrush(qcolor(l.color));
        p.drawEllipse(QPointF(*sCurveHoverX, l.yPt), 3.5, 3.5);
        lineas << q(formato("%.0f%%  %s", l.pct * 100, l.nombre.c_str()));
    }
    const double anchoCaja = 170, altoCaja = 16.0 * lineas.size() + 8;
    const double xc = *sCurveHoverX + anchoCaja + 12 > width() ? *sCurveHoverX - anchoCaja - 8 : *sCurveHoverX + 8;
    p.setPen(QColor::fromRgbF(1, 1, 1, 0.2));
    p.setBrush(QColor::fromRgbF(0.05, 0.05, 0.06, 0.92));
    p.drawRoundedRect(QRectF(xc, y0 + 4, anchoCaja, altoCaja), 5, 5);
    p.setPen(Qt::white);
    for (int i = 0; i < lineas.size(); ++i) p.drawText(QPointF(xc + 8, y0 + 20 + 16.0 * i), lineas[i]);
}

void GraficoCurvaS::mouseMoveEvent(QMouseEvent* evento) {
    const double x = evento->position().x();
    if (x >= margenIzquierdoCurvaS && x <= margenIzquierdoCurvaS + anchoPlot())
        sCurveHoverX = x;
    else
        sCurveHoverX.reset();
    update();
}

void GraficoCurvaS::leaveEvent(QEvent*) {
    sCurveHoverX.reset();
    update();
}

} // namespace teskal
