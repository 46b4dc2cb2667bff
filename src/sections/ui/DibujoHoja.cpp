#include "sections/ui/DibujoHoja.h"

#include "scene/ColoresSistema.h"
#include "ui/TextoQt.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <glm/geometric.hpp>

namespace teskal {

namespace {

QColor colorQt(const Color& c, double alfa) { return QColor::fromRgbF(c.r, c.g, c.b, static_cast<float>(alfa)); }
QColor mezcla(const Color& a, const Color& b, double alfa) {
    return QColor::fromRgbF((a.r + b.r) * 0.5f, (a.g + b.g) * 0.5f, (a.b + b.b) * 0.5f, static_cast<float>(alfa));
}
QPointF qp(const glm::dvec2& v) { return {v.x, v.y}; }
QRectF qr(const RectVista& r) { return {r.x, r.y, r.ancho, r.alto}; }

QPen pluma(const QColor& color, double ancho) {
    QPen pen(color, ancho);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    return pen;
}

// A solid arrowhead with its tip at `punta`, pointing along `dir` (unit).
void punta(QPainter& p, const glm::dvec2& tip, const glm::dvec2& dir, double largo, double mitad, const QColor& c) {
    const glm::dvec2 base = tip - dir * largo;
    const glm::dvec2 normal{-dir.y, dir.x};
    QPainterPath path;
    path.moveTo(qp(tip));
    path.lineTo(qp(base + normal * mitad));
    path.lineTo(qp(base - normal * mitad));
    path.closeSubpath();
    p.fillPath(path, c);
}

// The red circle with a white "×" that hides a label or deletes a dimension.
void circuloCerrar(QPainter& p, const glm::dvec2& centro) {
    p.setPen(Qt::NoPen);
    p.setBrush(colorQt(colores::rojo, 0.85));
    p.drawEllipse(qp(centro), radioCirculoCerrar, radioCirculoCerrar);
    p.setBrush(Qt::NoBrush);
    p.setPen(Qt::white);
    p.setFont(fuenteHoja(FuenteHoja::cerrar, 10, p.device()));
    const QRectF r(centro.x - radioCirculoCerrar, centro.y - radioCirculoCerrar, 2 * radioCirculoCerrar,
                   2 * radioCirculoCerrar);
    p.drawText(r, Qt::AlignCenter, QStringLiteral("×"));
}

void dibujarEtiqueta(QPainter& p, const EstadoHoja& h, const Etiqueta2D& e, const MedidasTexto& medidas) {
    const GeometriaEtiqueta g = h.geometriaEtiqueta(e, medidas);
    const bool seleccionada = h.etiquetaSeleccionadaId && *h.etiquetaSeleccionadaId == e.id;
    const QColor guia = seleccionada ? mezcla(e.color, colores::azul, 0.8) : colorQt(e.color, 0.8);
    p.setPen(pluma(guia, seleccionada ? 1.2 : 0.75));
    p.drawLine(qp(g.inicioGuia), qp(g.codo));
    p.drawLine(qp(g.codo), qp(g.ancla));
    const glm::dvec2 d = g.ancla - g.codo;
    if (glm::length(d) > 8.0) punta(p, g.ancla, d / glm::length(d), 7.0, 3.5, guia);

    // The box: a soft shadow, then white.
    const QRectF caja = qr(g.caja);
    p.setPen(Qt::NoPen);
    for (int i = 2; i >= 1; --i) {
        p.setBrush(QColor::fromRgbF(0, 0, 0, 0.05f));
        p.drawRoundedRect(caja.translated(0.5, 0.5).adjusted(-i * 0.5, -i * 0.5, i * 0.5, i * 0.5), i, i);
    }
    p.setBrush(QColor::fromRgbF(1, 1, 1, 0.88f));
    p.drawRect(caja);
    p.setBrush(Qt::NoBrush);
    if (seleccionada) {
        p.setPen(pluma(colorQt(colores::azul, 0.5), 0.8));
        p.drawRect(caja);
        circuloCerrar(p, g.centroOcultar);
    }
    const double x = g.caja.x + 4, y = g.caja.y + 3;
    int i = 0;
    for (const LineaEtiqueta& l : lineasEtiqueta(e)) {
        static const double tamanos[] = {9, 8, 7.5, 7.5, 7.5};
        static const FuenteHoja fuentes[] = {FuenteHoja::nombre, FuenteHoja::tipo, FuenteHoja::dimensiones,
                                             FuenteHoja::detalle, FuenteHoja::detalle};
        p.setFont(fuenteHoja(fuentes[l.tipo], tamanos[l.tipo], p.device()));
        p.setPen(l.tipo == 0 ? QColor(Qt::black) : l.tipo == 1 ? colorQt(e.color, 0.85) : QColor::fromRgbF(1.0f / 3, 1.0f / 3, 1.0f / 3));
        p.drawText(QRectF(x, y + 13.0 * i, g.bloque.x + 20, 13.0), Qt::AlignLeft | Qt::AlignTop, q(l.texto));
        ++i;
    }
}

void dibujarCota(QPainter& p, const EstadoHoja& h, const Cota2D& c, const MedidasTexto& medidas) {
    const GeometriaCota g = h.geometriaCota(c, medidas);
    if (!g.dibujable) return;
    const Color base{0.05f, 0.35f, 0.8f, 1.0f};
    const bool seleccionada = h.cotaSeleccionadaId && *h.cotaSeleccionadaId == c.id;
    const QColor color = seleccionada ? mezcla(base, colores::naranja, 0.85) : colorQt(base, 0.85);
    p.setPen(pluma(color, seleccionada ? 1.1 : 0.7));
    p.drawLine(qp(g.a + g.n * 4.0), qp(g.a + g.n * (g.o + 6)));
    p.drawLine(qp(g.b + g.n * 4.0), qp(g.b + g.n * (g.o + 6)));
    p.drawLine(qp(g.linea1), qp(g.linea2));
    const glm::dvec2 dir = glm::normalize(g.linea2 - g.linea1);
    punta(p, g.linea1, -dir, 7.0, 2.5, color);
    punta(p, g.linea2, dir, 7.0, 2.5, color);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor::fromRgbF(1, 1, 1, 0.92f));
    p.drawRect(qr(g.rectTexto));
    p.setBrush(Qt::NoBrush);
    p.setPen(color);
    p.setFont(fuenteHoja(FuenteHoja::cota, g.tamanoTexto, p.device()));
    p.drawText(qr(g.rectTexto), Qt::AlignCenter, q(g.texto));
    if (seleccionada) circuloCerrar(p, g.centroBorrar);
}

} // namespace

QFont fuenteHoja(FuenteHoja cual, double tamano, const QPaintDevice* dispositivo) {
    const bool mono = cual == FuenteHoja::dimensiones || cual == FuenteHoja::cota;
    QFont f = mono ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : QFont();
    const double dpi = dispositivo && dispositivo->logicalDpiY() > 0 ? dispositivo->logicalDpiY() : 72.0;
    f.setPointSizeF(tamano * 72.0 / dpi);
    if (cual == FuenteHoja::nombre) f.setWeight(QFont::DemiBold);
    if (cual == FuenteHoja::cota) f.setWeight(QFont::Medium);
    if (cual == FuenteHoja::cerrar) f.setWeight(QFont::Bold);
    return f;
}

glm::dvec2 MedidasQt::bloqueEtiqueta(const Etiqueta2D& etiqueta) const {
    const auto lineas = lineasEtiqueta(etiqueta);
    if (lineas.empty()) return {52.0, 0.0};
    static const double tamanos[] = {9, 8, 7.5, 7.5, 7.5};
    static const FuenteHoja fuentes[] = {FuenteHoja::nombre, FuenteHoja::tipo, FuenteHoja::dimensiones,
                                         FuenteHoja::detalle, FuenteHoja::detalle};
    double ancho = 0;
    for (const auto& l : lineas) {
        const QFontMetricsF fm(fuenteHoja(fuentes[l.tipo], tamanos[l.tipo], dispositivo_),
                               const_cast<QPaintDevice*>(dispositivo_));
        ancho = std::max(ancho, fm.horizontalAdvance(q(l.texto)));
    }
    return {ancho + 2.0, 13.0 * static_cast<double>(lineas.size())};
}

glm::dvec2 MedidasQt::textoCota(const std::string& texto, double tamano) const {
    const QFontMetricsF fm(fuenteHoja(FuenteHoja::cota, tamano, dispositivo_), const_cast<QPaintDevice*>(dispositivo_));
    return {fm.horizontalAdvance(q(texto)), fm.height()};
}

void dibujarHoja(QPainter& p, const EstadoHoja& h) {
    const MedidasQt medidas(p.device());
    p.save();
    p.setRenderHint(QPainter::Antialiasing, true);
    p.setRenderHint(QPainter::TextAntialiasing, true);
    const double w = h.ancho, alto = h.alto;
    p.fillRect(QRectF(0, 0, w, alto), Qt::white);
    const glm::dvec2 c = h.centro();

    // The mesh: one line per sheet metre once a metre is more than 8 pixels.
    if (h.escala > 8.0) {
        QPainterPath malla;
        double x0 = std::fmod(c.x, h.escala);
        if (x0 < 0) x0 += h.escala;
        for (double x = x0; x <= w; x += h.escala) {
            malla.moveTo(x, 0);
            malla.lineTo(x, alto);
        }
        double y0 = std::fmod(c.y, h.escala);
        if (y0 < 0) y0 += h.escala;
        for (double y = y0; y <= alto; y += h.escala) {
            malla.moveTo(0, y);
            malla.lineTo(w, y);
        }
        p.strokePath(malla, pluma(QColor::fromRgbF(0.88f, 0.88f, 0.88f), 0.3));
    }

    const double f = h.factorGrosor();
    if (!h.segmentosGrilla.empty()) {
        const double largo = std::max(8.0 / h.escala * 60.0, 4.0);
        const double ancho = std::max(0.6 / h.escala * 60.0, 0.3);
        for (const auto& s : h.segmentosGrilla) {
            QPen pen = pluma(colorQt(s.color, s.color.a), ancho);
            pen.setDashPattern({largo / ancho, 0.6 * largo / ancho}); // in pen widths
            pen.setDashOffset(0);
            p.setPen(pen);
            p.drawLine(qp(h.aVista(s.p1)), qp(h.aVista(s.p2)));
        }
    }
    const double anchoVisto = std::max(f * h.grosorProyeccion * 0.55, 0.3);
    for (const auto& s : h.segmentos) {
        if (s.esCorte) continue;
        p.setPen(pluma(colorQt(s.color, 0.28), anchoVisto));
        p.drawLine(qp(h.aVista(s.p1)), qp(h.aVista(s.p2)));
    }
    const double anchoCorte = f * h.grosorCorte;
    for (const auto& s : h.segmentos) {
        if (!s.esCorte) continue;
        p.setPen(pluma(colorQt(s.color, 1.0), anchoCorte));
        p.drawLine(qp(h.aVista(s.p1)), qp(h.aVista(s.p2)));
    }

    // The origin cross.
    p.setPen(pluma(QColor::fromRgbF(1, 0, 0, 0.35f), 0.5));
    p.drawLine(QPointF(c.x, 0), QPointF(c.x, alto));
    p.drawLine(QPointF(0, c.y), QPointF(w, c.y));

    if (h.mostrarEtiquetas)
        for (const auto& e : h.etiquetas)
            if (e.visible) dibujarEtiqueta(p, h, e, medidas);
    for (const auto& cota : h.cotas) dibujarCota(p, h, cota, medidas);

    if (h.modoCota) {
        if (h.snapPoint) {
            const glm::dvec2 s = h.aVista(*h.snapPoint);
            p.setPen(pluma(colorQt(colores::amarillo, 1.0), 1.5));
            p.setBrush(Qt::NoBrush);
            p.drawRect(QRectF(s.x - 4.5, s.y - 4.5, 9, 9));
            p.setPen(Qt::NoPen);
            p.setBrush(colorQt(colores::amarillo, 0.5));
            p.drawEllipse(qp(s), 2.0, 2.0);
            p.setBrush(Qt::NoBrush);
        }
        if (h.cotaP1Preview) {
            const glm::dvec2 a = h.aVista(*h.cotaP1Preview);
            p.setPen(Qt::NoPen);
            p.setBrush(colorQt(colores::azul, 0.9));
            p.drawEllipse(qp(a), 4.0, 4.0);
            p.setBrush(Qt::NoBrush);
            QPen pen = pluma(colorQt(colores::azul, 0.45), 1.0);
            pen.setDashPattern({4, 3});
            p.setPen(pen);
            p.drawLine(qp(a), qp(h.snapPoint ? h.aVista(*h.snapPoint) : h.mousePos));
        }
        if (!h.snapPoint) {
            p.setPen(pluma(colorQt(colores::azul, 0.6), 1.0));
            p.drawEllipse(qp(h.mousePos), 10.0, 10.0);
            p.drawLine(qp(h.mousePos - glm::dvec2(14, 0)), qp(h.mousePos + glm::dvec2(14, 0)));
            p.drawLine(qp(h.mousePos - glm::dvec2(0, 14)), qp(h.mousePos + glm::dvec2(0, 14)));
        }
    }
    if (h.modoEtiquetar) {
        p.setPen(pluma(colorQt(colores::verde, 0.7), 2.5));
        if (const auto i = h.elegirSegmento(h.mousePos, 12.0))
            p.drawLine(qp(h.aVista(h.segmentos[*i].p1)), qp(h.aVista(h.segmentos[*i].p2)));
        p.setPen(pluma(colorQt(colores::verde, 0.7), 1.0));
        p.drawEllipse(qp(h.mousePos), 8.0, 8.0);
    }
    p.restore();
}

} // namespace teskal
