#include "analyses/bcf/BCFComentarios.h"

#include "analyses/bcf/BCFExporter.h"
#include "persistence/JsonRegistros.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

namespace teskal {

namespace {

constexpr std::string_view xsins = "http://www.w3.org/2001/XMLSchema-instance";

QString uuidNuevo() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(); }

bool escribirTexto(const QDir& carpeta, const QString& nombre, const std::string& texto) {
    return escribirArchivoAtomico(carpeta.filePath(nombre),
                                  QByteArray(texto.data(), static_cast<qsizetype>(texto.size())));
}

} // namespace

std::string textoVersionComentariosBCF(FormaBCF forma) {
    if (forma == FormaBCF::estandar) return textoVersionBCF();
    std::string t = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Version VersionId=\"2.1\" xmlns:xsi=\"";
    t += xsins;
    t += "\">\n  <DetailedVersion>2.1</DetailedVersion>\n</Version>";
    return t;
}

std::string textoProyectoComentariosBCF(std::string_view projectId, FormaBCF forma) {
    if (forma == FormaBCF::estandar) return textoProyectoBCF(projectId, "VORNEL Comentarios", forma);
    std::string t = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ProjectExtension>\n  <Project ProjectId=\"";
    t += projectId;
    t += "\">\n    <Name>VORNEL Comentarios</Name>\n  </Project>\n</ProjectExtension>";
    return t;
}

std::string textoMarkupComentarioBCF(const ComentarioMarkup& c, std::string_view viewpointGuid, FormaBCF forma,
                                     bool conSnapshot) {
    const bool estandar = forma == FormaBCF::estandar;
    const auto valor = [estandar](std::string_view v) { return estandar ? textoXML(v) : std::string(v); };
    const std::string titulo = c.descripcion.empty() ? c.tag : c.tag + ": " + c.descripcion;
    const std::string fecha = textoFechaJson(c.fecha).toStdString();
    std::string t = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Markup xmlns:xsi=\"";
    t += xsins;
    if (estandar) {
        // The schema's order: title, dates and author, then the description.
        t += "\" xsi:noNamespaceSchemaLocation=\"markup.xsd\">\n    <Topic Guid=\"";
        t += guidBCF(c.id);
        t += "\" TopicType=\"Comment\" TopicStatus=\"Open\">\n        <Title>";
        t += valor(titulo);
        t += "</Title>\n        <CreationDate>";
        t += fecha;
        t += "</CreationDate>\n        <CreationAuthor>";
        t += valor(c.autor);
        t += "</CreationAuthor>\n        <Description>";
        t += valor(c.descripcion);
        t += "</Description>\n    </Topic>\n";
        if (conSnapshot) {
            t += "    <Viewpoints Guid=\"";
            t += viewpointGuid;
            t += "\">\n        <Snapshot>snapshot.png</Snapshot>\n    </Viewpoints>\n";
        }
        t += "</Markup>";
        return t;
    }
    t += "\">\n  <Topic Guid=\"";
    t += c.id;
    t += "\" TopicType=\"Comment\" TopicStatus=\"Open\">\n    <Title>";
    t += titulo;
    t += "</Title>\n    <CreationDate>";
    t += fecha;
    t += "</CreationDate>\n    <CreationAuthor>";
    t += c.autor;
    t += "</CreationAuthor>\n    <Description>";
    t += c.descripcion;
    t += "</Description>\n  </Topic>\n  <Viewpoints Guid=\"";
    t += viewpointGuid;
    t += "\">\n    <Snapshot>snapshot.png</Snapshot>\n  </Viewpoints>\n</Markup>";
    return t;
}

QString destinoBCFComentarios(const QString& ruta) {
    return QFileInfo(ruta).suffix() == QStringLiteral("bcf") ? ruta : ruta + QStringLiteral(".bcf");
}

bool BCFComentarios::escribir(const QString& destino) const {
    const QString temporal = QDir::tempPath();
    const QString rutaCarpeta = QDir(temporal).filePath(uuidNuevo());
    if (temporal.isEmpty() || !QDir().mkpath(rutaCarpeta)) return false;
    QDir carpeta(rutaCarpeta);
    const auto escribirTodo = [&]() -> bool {
        if (!escribirTexto(carpeta, QStringLiteral("bcf.version"), textoVersionComentariosBCF(forma)) ||
            !escribirTexto(carpeta, QStringLiteral("project.bcfp"),
                           textoProyectoComentariosBCF(uuidNuevo().toStdString(), forma)))
            return false;
        if (forma == FormaBCF::estandar &&
            !escribirTexto(carpeta, QStringLiteral("extensions.xsd"),
                           textoExtensionesBCF({"Comment"}, {"Open"}, {})))
            return false;
        for (const ComentarioMarkup& c : comentarios) {
            const QString id = QString::fromStdString(forma == FormaBCF::estandar ? guidBCF(c.id) : c.id);
            if (id.isEmpty() || !carpeta.mkpath(id)) return false;
            const QDir tema(carpeta.filePath(id));
            // The standard form's snapshot is the picture as PNG; the literal
            // form keeps the JPEG bytes under the PNG name.
            QByteArray snapshot;
            if (forma == FormaBCF::estandar) {
                const auto png = snapshotsPNG.find(c.id);
                if (png != snapshotsPNG.end() && esImagenPNG(png->second)) snapshot = png->second;
            } else if (c.imagenJPEG) {
                snapshot = *c.imagenJPEG;
            }
            const bool conSnapshot = !snapshot.isEmpty() &&
                                     escribirArchivoAtomico(tema.filePath(QStringLiteral("snapshot.png")), snapshot);
            if (!escribirTexto(tema, QStringLiteral("markup.bcf"),
                               textoMarkupComentarioBCF(c, uuidNuevo().toStdString(), forma, conSnapshot)))
                return false;
        }
        QFile::remove(destino);
        return comprimirZip(rutaCarpeta, destino);
    };
    const bool hecho = escribirTodo();
    carpeta.removeRecursively();
    return hecho;
}

} // namespace teskal
