#include "timeline/ui/DibujoGantt.h"

#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "ui/TextoQt.h"

#include <QFile>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>

namespace teskal {

namespace {

QColor gris(double nivel, double alfa = 1) { return QColor::fromRgbF(nivel, nivel, nivel, alfa); }
QColor qcolor(const Color& c, double alfa = 1) { return QColor::fromRgbF(c.r, c.g, c.b, alfa); }

QFont fuente(double puntos, bool negrita = false) {
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(static_cast<int>(std::lround(puntos))); // one unit is one point on the page
    f.setBold(negrita);
    return f;
}

void texto(QPainter& p, double x, double yCentro, const QString& t, const QFont& f, const QColor& c) {
    p.setFont(f);
    p.setPen(c);
    const QFontMetricsF m(f);
    p.drawText(QPointF(x, yCentro + (m.ascent() - m.descent()) / 2), t);
}

// The colour of an IWP's progress on screen: green when done, orange under
// way, faint white when not begun.
QColor colorAvance(double avance) {
    if (avance >= 1) return qcolor(colores::verde);
    if (avance > 0) return qcolor(colores::naranja);
    return gris(1, 0.45);
}

void barra(QPainter& p, const QRectF& r, const QColor& fondo, double avance, const QColor& relleno) {
    p.setPen(Qt::NoPen);
    p.setBrush(fondo);
    p.drawRoundedRect(r, 3, 3);
    if (avance > 0) {
        p.setBrush(relleno);
        p.drawRoundedRect(QRectF(r.left(), r.top(), r.width() * avance, r.height()), 3, 3);
    }
}

void lineaVertical(QPainter& p, double x, double y0, double y1, const QColor& c, double ancho, const QString& rotulo,
                   double yRotulo) {
    p.setPen(QPen(c, ancho));
    p.drawLine(QPointF(x, y0), QPointF(x, y1));
    texto(p, x + 3, yRotulo, rotulo, fuente(7, true), c);
}

} // namespace

void dibujarGantt(QPainter& p, const GeometriaGantt& g, const OpcionesGantt& o) {
    const MedidasGantt& m = g.medidas;
    const double finFilas = g.alto - m.fH;
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF todo = o.visible ? *o.visible : QRectF(0, 0, m.ancho, g.alto);
    p.fillRect(todo, gris(0.09));
    const QString hoy = q(textoFechaGantt(g.hoy, "dd-MM-yyyy"));
    const QString cuenta = QString::number(static_cast<qulonglong>(g.paquetes)) + QStringLiteral(" paquetes");

    if (m.tH > 0) {
        p.fillRect(QRectF(0, 0, m.ancho, m.tH), gris(0.07));
        texto(p, 16, m.tH * 0.38, QStringLiteral("Diagrama Gantt AWP — TESKAL"), fuente(14, true), Qt::white);
        texto(p, 16, m.tH * 0.78,
              QStringLiteral("Generado: ") + hoy + QStringLiteral("  ·  ") + cuenta + QStringLiteral("  ·  ") +
                  QString::number(static_cast<qulonglong>(g.iwps)) + QStringLiteral(" IWP"),
              fuente(8), gris(0.45));
    }

    // The month header, then the month lines down the chart.
    const double yCab = m.tH;
    p.fillRect(QRectF(0, yCab, m.lW, m.hH), gris(0.13));
    p.fillRect(QRectF(m.lW, yCab, m.ancho - m.lW, m.hH), gris(0.22));
    texto(p, 8, yCab + m.hH / 2, QStringLiteral("Paquete / Descripción"), fuente(9), gris(0.45));
    for (const LineaMes& mes : g.meses) {
        p.setPen(QPen(gris(0.15), 0.5));
        p.drawLine(QPointF(mes.x + 1, yCab), QPointF(mes.x + 1, yCab + m.hH));
        texto(p, mes.x + 3, yCab + m.hH / 2, q(textoFechaGantt(mes.fecha, "MMM yy")), fuente(8), gris(0.55));
        p.setPen(QPen(gris(1, 0.05), 0.5));
        p.drawLine(QPointF(mes.x + 1, m.origenFilas()), QPointF(mes.x + 1, finFilas));
    }

    const QFont fCodigo = fuente(9, true), fNombre = fuente(9), fPct = fuente(7);
    for (std::size_t i = 0; i < g.filas.size(); ++i) {
        const FilaGantt& f = g.filas[i];
        if (f.y + m.rH < todo.top() || f.y > todo.bottom()) continue;
        const PaqueteAWP& pkg = *f.pkg;
        const QRectF fila(0, f.y, m.ancho, m.rH);
        if (!o.pagina && o.seleccionado == pkg.id)
            p.fillRect(fila, qcolor(colores::azul, 0.28));
        else if (i % 2 == 1)
            p.fillRect(fila, gris(1, 0.03));
        p.setPen(QPen(gris(1, 0.06), 0.5));
        p.drawLine(QPointF(0, f.y + m.rH), QPointF(m.ancho, f.y + m.rH));

        // The label: the disclosure of an area on screen, the level's mark,
        // the code and the name.
        double x = 8 + 14.0 * f.sangria;
        const double yc = f.y + m.rH / 2;
        if (!o.pagina && f.expandible)
            texto(p, x, yc, f.expandida ? QStringLiteral("▾") : QStringLiteral("▸"), fuente(11), gris(0.7));
        x += 12;
        p.setPen(Qt::NoPen);
        p.setBrush(qcolor(colorNivel(pkg.nivel)));
        p.drawRoundedRect(QRectF(x, yc - 4, 8, 8), 2, 2);
        x += 13;
        const QString codigo = q(pkg.codigo);
        texto(p, x, yc, codigo, fCodigo, Qt::white);
        x += QFontMetricsF(fCodigo).horizontalAdvance(codigo) + 6;
        const QString nombre = QFontMetricsF(fNombre).elidedText(q(pkg.nombre), Qt::ElideRight, m.lW - x - 6);
        texto(p, x, yc, nombre, fNombre, gris(0.6));

        const BarraGantt& b = f.barra;
        const Color propio = colorPaquete(pkg.colorIdx);
        if (b.resumen) {
            // A span over the leaves: a slim bar in the level's colour, and
            // on screen a thin line in its lower half.
            const QColor nivel = qcolor(colorNivel(pkg.nivel));
            barra(p, QRectF(b.x0, yc - 5, b.x1 - b.x0, 8), qcolor(colorNivel(pkg.nivel), 0.3), b.avance,
                  qcolor(colorNivel(pkg.nivel), 0.85));
            if (!o.pagina) {
                p.setPen(QPen(nivel, 1.5));
                p.drawLine(QPointF(b.x0, yc + 6), QPointF(b.x1, yc + 6));
            }
        } else {
            const QColor relleno = o.pagina ? qcolor(propio, 0.85) : colorAvance(b.avance);
            barra(p, QRectF(b.x0, yc - 8, b.x1 - b.x0, 16), qcolor(propio, o.pagina ? 0.15 : 0.3), b.avance, relleno);
        }
        texto(p, b.x1 + 4, yc, q(textoPorcentaje(b.avance)), fPct, gris(0.75));
        // The actual dates' marks.
        if (b.xInicioReal) {
            p.setPen(QPen(Qt::white, 1.5));
            p.drawLine(QPointF(*b.xInicioReal, yc - 5), QPointF(*b.xInicioReal, yc + 5));
        }
        if (b.xFinReal) {
            p.setPen(QPen(Qt::white, 1.2));
            p.drawLine(QPointF(*b.xFinReal - 4, yc - 4), QPointF(*b.xFinReal + 4, yc + 4));
            p.drawLine(QPointF(*b.xFinReal - 4, yc + 4), QPointF(*b.xFinReal + 4, yc - 4));
        }
    }

    const double yLineas = m.origenFilas();
    if (g.xHoy)
        lineaVertical(p, *g.xHoy, yLineas, finFilas, qcolor(colores::rojo, 0.55), 1.5, QStringLiteral("HOY"),
                      yLineas + 6);
    if (g.xScrubber)
        lineaVertical(p, *g.xScrubber, yLineas, finFilas, qcolor(colores::amarillo, 0.85), 2,
                      q(textoFechaGantt(g.scrubber, "dd-MM-yy")), yLineas + 16);

    if (m.fH > 0) {
        p.fillRect(QRectF(0, finFilas, m.ancho, m.fH), gris(0.07));
        texto(p, 16, finFilas + m.fH / 2, QStringLiteral("Generado con TESKAL  ·  ") + hoy, fuente(8), gris(0.4));
        const double ancho = QFontMetricsF(fuente(8)).horizontalAdvance(cuenta);
        texto(p, m.ancho - 16 - ancho, finFilas + m.fH / 2, cuenta, fuente(8), gris(0.4));
    }
}

bool escribirGanttPDF(const ArbolAWP& arbol, const ModoAvance& modo, const QDateTime& hoy, const std::string& ruta,
                      std::string& error) {
    error.clear();
    const std::vector<FilaAWP> filas = filasCompletas(arbol);
    if (filas.empty()) return false;
    std::set<std::string> todas;
    for (const PaqueteAWP* cwa : arbol.cwas()) todas.insert(cwa->codigo);
    const GeometriaGantt g = geometriaGantt(arbol, filas, todas, modo, hoy, medidasPDF());

    QFile archivo(q(ruta));
    if (!archivo.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        error = "No se pudo escribir el PDF del Gantt: " + archivo.errorString().toStdString();
        return false;
    }
    {
        QPdfWriter pdf(&archivo);
        pdf.setResolution(72); // one unit a point
        pdf.setCreator(QStringLiteral("VORNEL"));
        pdf.setTitle(QStringLiteral("Diagrama Gantt AWP"));
        pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
        pdf.setPageSize(QPageSize(QSizeF(g.medidas.ancho, g.alto), QPageSize::Point, QString(),
                                  QPageSize::ExactMatch));
        QPainter p;
        if (!p.begin(&pdf)) {
            error = "No se pudo escribir el PDF del Gantt: " + archivo.errorString().toStdString();
            return false;
        }
        dibujarGantt(p, g, {});
        p.end();
    }
    if (archivo.error() != QFileDevice::NoError || !archivo.flush()) {
        error = "No se pudo escribir el PDF del Gantt: " + archivo.errorString().toStdString();
        return false;
    }
    return true;
}

} // namespace teskal
