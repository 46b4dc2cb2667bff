#include "analyses/clash/ui/ThumbnailInterferencia.h"

#include "analyses/clash/EscenaThumbnail.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QBuffer>

namespace teskal {

QImage renderThumbnail(const Interferencia& interferencia, Scene* escena,
                       RenderizadorImagenes& renderizador) {
    EscenaThumbnail t = escenaThumbnail(interferencia, escena);
    return renderizador.renderizar(*t.escena, *t.camara, tamanoThumbnail, muestrasThumbnail,
                                   fondoThumbnail);
}

std::map<std::string, QImage> renderThumbnails(const AnalisisInterferencias& analisis,
                                               Scene* escena, RenderizadorImagenes& renderizador) {
    std::map<std::string, QImage> imagenes;
    for (const Interferencia& i : analisis.interferencias) {
        QImage imagen = renderThumbnail(i, escena, renderizador);
        if (!imagen.isNull()) imagenes[i.id] = std::move(imagen);
    }
    return imagenes;
}

std::map<std::string, QByteArray> thumbnailsPNG(const std::map<std::string, QImage>& thumbnails) {
    std::map<std::string, QByteArray> png;
    for (const auto& [id, imagen] : thumbnails) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        if (buffer.open(QIODevice::WriteOnly) && imagen.save(&buffer, "PNG")) png[id] = bytes;
    }
    return png;
}

} // namespace teskal
