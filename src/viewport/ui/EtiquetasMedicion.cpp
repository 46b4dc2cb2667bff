#include "viewport/ui/EtiquetasMedicion.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cstring>

namespace teskal {

namespace {

QColor qcolor(const Color& c) { return QColor::fromRgbF(c.r, c.g, c.b, c.a); }

std::shared_ptr<const ImagenRGBA> aRGBA(const QImage& imagen) {
    const QImage rgba = imagen.convertToFormat(QImage::Format_RGBA8888);
    auto r = std::make_shared<ImagenRGBA>();
    r->ancho = rgba.width();
    r->alto = rgba.height();
    r->pixeles.resize(static_cast<std::size_t>(r->ancho) * static_cast<std::size_t>(r->alto) * 4);
    for (int y = 0; y < r->alto; ++y)
        std::memcpy(r->pixeles.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(r->ancho) * 4,
                    rgba.constScanLine(y), static_cast<std::size_t>(r->ancho) * 4);
    return r;
}

} // namespace

std::shared_ptr<const ImagenRGBA> pintarEtiquetaMedicion(const DibujoEtiqueta& d) {
    QFont fuente(d.monoespaciada ? QStringLiteral("Liberation Mono") : QStringLiteral("Liberation Sans"));
    if (d.monoespaciada) fuente.setStyleHint(QFont::Monospace);
    fuente.setBold(true);
    fuente.setPixelSize(std::max(d.tamanoFuente, 4));
    const QFontMetricsF medidas(fuente);

    if (d.estilo == DibujoEtiqueta::Estilo::texto) {
        const QString texto = d.lineas.empty() ? QString() : QString::fromStdString(d.lineas.front());
        const double borde = d.tamanoFuente * 0.08;
        const int ancho = static_cast<int>(std::ceil(medidas.horizontalAdvance(texto) + 4 * borde)) + 2;
        const int alto = static_cast<int>(std::ceil(d.tamanoFuente * 1.3));
        QImage imagen(std::max(ancho, 1), std::max(alto, 1), QImage::Format_ARGB32_Premultiplied);
        imagen.fill(Qt::transparent);
        QPainter p(&imagen);
        p.setRenderHint(QPainter::Antialiasing);
        QPainterPath camino;
        const double base = (alto + medidas.ascent() - medidas.descent()) / 2.0;
        camino.addText(QPointF(2 * borde, base), fuente, texto);
        p.setPen(QPen(QColor(0, 0, 0, 220), borde * 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawPath(camino);
        p.setPen(Qt::NoPen);
        p.setBrush(qcolor(d.colores.empty() ? Color{1, 1, 1, 1} : d.colores.front()));
        p.drawPath(camino);
        p.end();
        return aRGBA(imagen);
    }

    QImage imagen(std::max(d.ancho, 1), std::max(d.alto, 1), QImage::Format_ARGB32_Premultiplied);
    imagen.fill(Qt::transparent);
    QPainter p(&imagen);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(qcolor(d.borde), 3));
    p.setBrush(QColor::fromRgbF(0.08, 0.08, 0.08, 0.92));
    p.drawRoundedRect(QRectF(1.5, 1.5, d.ancho - 3, d.alto - 3), 12, 12);
    p.setFont(fuente);
    const double paso = medidas.height() * 1.1;
    double y = (d.alto - paso * static_cast<double>(d.lineas.size())) / 2.0 + medidas.ascent();
    for (std::size_t i = 0; i < d.lineas.size(); ++i) {
        const QString linea = QString::fromStdString(d.lineas[i]);
        p.setPen(qcolor(i < d.colores.size() ? d.colores[i] : Color{1, 1, 1, 1}));
        const double x = d.centrada ? (d.ancho - medidas.horizontalAdvance(linea)) / 2.0 : 16.0;
        p.drawText(QPointF(x, y), linea);
        y += paso;
    }
    p.end();
    return aRGBA(imagen);
}

} // namespace teskal
