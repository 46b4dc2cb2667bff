#include "viewport/markup/ui/PdfComentarios.h"

#include <QFile>
#include <QFileInfo>
#include <QFont>
#include <QLocale>
#include <QPageSize>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>

namespace teskal {

namespace {

constexpr double anchoPagina = 595, altoPagina = 842;

QFont helvetica(double puntos, bool negrita) {
    // Liberation Sans has Helvetica's metrics; Debian ships it (fonts-liberation).
    QFont f(QStringLiteral("Liberation Sans"));
    f.setStyleHint(QFont::Helvetica);
    f.setPointSizeF(puntos);
    f.setBold(negrita);
    return f;
}

// The page's own coordinates: origin at the bottom left, y upward.
struct Pagina {
    QPainter& p;
    void rellenar(double x, double y, double w, double h, const QColor& c) const {
        p.fillRect(QRectF(x, altoPagina - y - h, w, h), c);
    }
    void texto(const QString& t, double x, double linea, const QFont& f, const QColor& c) const {
        p.setFont(f);
        p.setPen(c);
        p.drawText(QPointF(x, altoPagina - linea), t);
    }
    void imagen(const QImage& i, double x, double y, double w, double h) const {
        p.drawImage(QRectF(x, altoPagina - y - h, w, h), i);
    }
};

QColor gris(double nivel, double alfa = 1) { return QColor::fromRgbF(nivel, nivel, nivel, alfa); }

} // namespace

QImage logoVORNEL() {
    QImage logo(160, 128, QImage::Format_ARGB32_Premultiplied);
    logo.fill(Qt::transparent);
    QPainter p(&logo);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor::fromRgbF(0.35, 0.34, 0.84));
    p.setPen(Qt::NoPen);
    p.drawRoundedRect(QRectF(4, 4, 152, 120), 24, 24);
    QPainterPath v;
    v.moveTo(36, 30);
    v.lineTo(80, 100);
    v.lineTo(124, 30);
    p.setPen(QPen(Qt::white, 16, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(v);
    return logo;
}

QString textoConteosComentario(const ComentarioMarkup& c) {
    QStringList partes;
    if (!c.trazados.empty()) partes << QStringLiteral("%1 trazo(s)").arg(c.trazados.size());
    if (!c.textos.empty()) partes << QStringLiteral("%1 texto(s)").arg(c.textos.size());
    return partes.join(QStringLiteral("   ·   "));
}

bool exportarPDFComentarios(const std::vector<ComentarioMarkup>& comentarios, const QString& ruta,
                            const QDateTime& ahora, QString* error) {
    // QPdfWriter says nothing of a file it cannot open: ask first.
    {
        QFile prueba(ruta);
        if (!prueba.open(QIODevice::WriteOnly)) {
            if (error) *error = prueba.errorString();
            return false;
        }
    }
    QPdfWriter pdf(ruta);
    pdf.setPageSize(QPageSize(QSizeF(anchoPagina, altoPagina), QPageSize::Point, QString(), QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
    pdf.setResolution(72); // one unit is one point
    pdf.setTitle(QStringLiteral("Reporte de Comentarios"));
    pdf.setCreator(QStringLiteral("VORNEL"));
    QPainter p;
    if (!p.begin(&pdf)) {
        if (error) *error = QStringLiteral("no se pudo abrir el documento PDF");
        return false;
    }
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    const Pagina pg{p};
    const QLocale chile(QStringLiteral("es_CL"));
    const QDateTime local = ahora.toLocalTime();
    const QImage logo = logoVORNEL();
    const double proporcionLogo = static_cast<double>(logo.width()) / std::max(logo.height(), 1);

    // Cover.
    pg.rellenar(0, 0, anchoPagina, altoPagina, QColor::fromRgbF(0.1, 0.1, 0.12));
    pg.imagen(logo, 36, 471, 64 * proporcionLogo, 64);
    pg.texto(QStringLiteral("Reporte de Comentarios"), 36, 445, helvetica(22, true), gris(0.92));
    pg.texto(QStringLiteral("%1 comentario(s)  ·  %2")
                 .arg(comentarios.size())
                 .arg(chile.toString(local.date(), QStringLiteral("d 'de' MMMM 'de' yyyy"))),
             36, 421, helvetica(12, false), gris(0.52));

    const QString pie = QStringLiteral("Generado por VORNEL  ·  ") + chile.toString(local, QLocale::ShortFormat);
    for (const ComentarioMarkup& c : comentarios) {
        pdf.newPage();
        pg.rellenar(0, 0, anchoPagina, altoPagina, QColor::fromRgbF(0.12, 0.12, 0.13));
        pg.rellenar(0, 784, anchoPagina, 58, QColor::fromRgbF(0.18, 0.18, 0.2));
        pg.texto(QString::fromStdString(c.tag), 36, 802, helvetica(18, true), Qt::white);
        if (!c.descripcion.empty())
            pg.texto(QString::fromStdString(c.descripcion), 144, 806, helvetica(13, true), gris(0.92));
        const QDateTime fecha = c.fecha.toLocalTime();
        pg.texto(QString::fromStdString(c.autor) + QStringLiteral("   ·   ") +
                     chile.toString(fecha.date(), QStringLiteral("d MMM yyyy")) + QStringLiteral(", ") +
                     chile.toString(fecha.time(), QStringLiteral("HH:mm")),
                 144, 791, helvetica(9, false), gris(0.55));
        pg.imagen(logo, 559 - 32 * proporcionLogo, 797, 32 * proporcionLogo, 32);

        double cursor = 768;
        QImage foto;
        if (c.imagenJPEG) foto.loadFromData(*c.imagenJPEG);
        if (!foto.isNull() && foto.width() > 0) {
            const double alto = std::min(523.0 * foto.height() / foto.width(), 340.0);
            pg.imagen(foto, 36, cursor - alto, 523, alto);
            p.setPen(QPen(gris(1, 0.1), 0.5));
            p.setBrush(Qt::NoBrush);
            p.drawRect(QRectF(36, altoPagina - cursor, 523, alto));
            cursor = cursor - alto - 14;
        }
        const QString conteos = textoConteosComentario(c);
        if (!conteos.isEmpty()) {
            pg.texto(conteos, 36, cursor - 12, helvetica(9, false), gris(0.45));
            cursor -= 26;
        }
        p.setPen(QPen(gris(1, 0.08), 0.5));
        p.drawLine(QPointF(36, altoPagina - (cursor - 8)), QPointF(559, altoPagina - (cursor - 8)));
        pg.texto(pie, 36, 14, helvetica(7, false), gris(0.4));
    }
    if (!p.end()) {
        if (error) *error = QStringLiteral("no se pudo terminar el documento PDF");
        return false;
    }
    if (QFileInfo(ruta).size() <= 0) {
        if (error) *error = QStringLiteral("el archivo quedó vacío");
        return false;
    }
    return true;
}

} // namespace teskal
