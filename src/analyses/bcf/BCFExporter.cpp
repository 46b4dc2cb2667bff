#include "analyses/bcf/BCFExporter.h"


#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSaveFile>
#include <QThreadPool>
#include <QUuid>
#include <exception>

namespace teskal {

namespace {

QString uuidNuevo() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

// Writes the bytes to `ruta` all at once: the file appears whole or not at all.
bool escribirAtomico(const QString& ruta, const char* datos, qsizetype tamano) {
    QSaveFile archivo(ruta);
    if (!archivo.open(QIODevice::WriteOnly)) return false;
    // An unfinished write is discarded when `archivo` goes out of scope.
    return archivo.write(datos, tamano) == tamano && archivo.commit();
}

bool escribirTexto(const QDir& carpeta, const QString& nombre, const std::string& texto) {
    return escribirAtomico(carpeta.filePath(nombre), texto.data(),
                           static_cast<qsizetype>(texto.size()));
}

// Thumbnails arrive as encoded images; only PNG bytes become a snapshot.
bool esPNG(const QByteArray& datos) {
    static const QByteArray firma("\x89PNG\r\n\x1a\n", 8);
    return datos.size() > firma.size() && datos.startsWith(firma);
}

// /usr/bin/zip -r <archivo> . run in `carpeta`, so that the archive's paths
// start at the folder's content. True on a normal exit with status 0.
bool comprimir(const QString& carpeta, const QString& archivo) {
    QProcess zip;
    zip.setProcessChannelMode(QProcess::MergedChannels);
    zip.setWorkingDirectory(carpeta);
    zip.start(QStringLiteral("/usr/bin/zip"), {QStringLiteral("-r"), archivo, QStringLiteral(".")});
    if (!zip.waitForStarted(-1)) return false;
    zip.waitForFinished(-1);
    zip.readAll(); // the listing of what was added, not needed
    return zip.exitStatus() == QProcess::NormalExit && zip.exitCode() == 0;
}

std::optional<BCFExporter::Archivo> escribir(const BCFExporter& e) {
    const QString temporal = QDir::tempPath();
    if (temporal.isEmpty()) return std::nullopt; // no usable temporary directory
    const QString rutaCarpeta =
        QDir(temporal).filePath(QStringLiteral("TESKAL_BCF_") + uuidNuevo());
    if (!QDir().mkpath(rutaCarpeta)) return std::nullopt;
    const QDir carpeta(rutaCarpeta);

    if (!escribirTexto(carpeta, QStringLiteral("bcf.version"), textoVersionBCF()))
        return std::nullopt;
    const std::string projectId = uuidNuevo().toStdString();
    if (!escribirTexto(carpeta, QStringLiteral("project.bcfp"),
                       textoProyectoBCF(projectId, e.nombreProyecto, e.forma)))
        return std::nullopt;
    // The schema project.bcfp points to, shipped beside it.
    if (e.forma == FormaBCF::estandar &&
        !escribirTexto(carpeta, QStringLiteral("extensions.xsd"), textoExtensionesBCF(e.analisis)))
        return std::nullopt;

    for (const Interferencia& i : e.analisis.interferencias) {
        const QString id = QString::fromStdString(guidBCF(i.id));
        if (!carpeta.mkpath(id)) return std::nullopt;
        const QDir tema(carpeta.filePath(id));
        const std::string viewpointGuid = uuidNuevo().toStdString();
        if (!escribirTexto(tema, QStringLiteral("markup.bcf"),
                           textoMarkupBCF(e.analisis, i, viewpointGuid, e.forma)) ||
            !escribirTexto(tema, QStringLiteral("viewpoint.bcfv"),
                           textoViewpointBCF(i, viewpointGuid, e.forma)))
            return std::nullopt;
        // The markup names the snapshot either way; a thumbnail that is
        // missing, not a PNG or can't be written just leaves it out.
        const auto miniatura = e.thumbnails.find(i.id);
        if (miniatura != e.thumbnails.end() && esPNG(miniatura->second))
            escribirAtomico(tema.filePath(QStringLiteral("snapshot.png")),
                            miniatura->second.constData(), miniatura->second.size());
    }

    BCFExporter::Archivo archivo;
    archivo.nombre = nombreArchivoBCF(e.analisis.nombre);
    QDir destino(temporal);
    // The literal form's archive keeps the same name in a folder of its own.
    if (e.forma == FormaBCF::literalTESKAL) {
        const QString literal = QStringLiteral("BCF literal TESKAL");
        if (!destino.mkpath(literal)) return std::nullopt;
        destino.setPath(destino.filePath(literal));
    }
    archivo.ruta = destino.filePath(QString::fromStdString(archivo.nombre));
    QFile::remove(archivo.ruta); // zip would add to an old archive; a failure shows in zip
    if (!comprimir(rutaCarpeta, archivo.ruta)) return std::nullopt;
    return archivo;
}

} // namespace

std::optional<BCFExporter::Archivo> BCFExporter::escribirArchivo() const {
    try {
        return escribir(*this);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void BCFExporter::exportar(Guardar guardar, Completion completion) const {
    // The job works on names and numbers only: the copy lets go of the scene's
    // nodes here, on the main thread, so that none is ever released elsewhere.
    BCFExporter copia = *this;
    for (Interferencia& i : copia.analisis.interferencias) {
        i.nodoA.reset();
        i.nodoB.reset();
    }
    QThreadPool::globalInstance()->start([copia = std::move(copia), guardar = std::move(guardar),
                                          completion = std::move(completion)]() mutable {
        // Both forms, so that the save panel can offer either.
        std::optional<ArchivosBCF> archivos;
        copia.forma = FormaBCF::estandar;
        if (const auto estandar = copia.escribirArchivo()) {
            copia.forma = FormaBCF::literalTESKAL;
            if (const auto literal = copia.escribirArchivo())
                archivos = ArchivosBCF{estandar->nombre, estandar->ruta, literal->ruta};
        }
        // The closures travel on to the main thread, where they end.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [archivos = std::move(archivos), guardar = std::move(guardar),
             completion = std::move(completion)] {
                if (archivos)
                    guardar(*archivos, completion);
                else
                    completion(false);
            },
            Qt::QueuedConnection);
    });
}

bool comprimirZip(const QString& carpeta, const QString& archivo) { return comprimir(carpeta, archivo); }

bool escribirArchivoAtomico(const QString& ruta, const QByteArray& datos) {
    return escribirAtomico(ruta, datos.constData(), datos.size());
}

bool esImagenPNG(const QByteArray& datos) { return esPNG(datos); }

bool copiarArchivoBCF(const QString& ruta, const QString& destino) {
    QFile::remove(destino);
    return QFile::copy(ruta, destino);
}

} // namespace teskal
