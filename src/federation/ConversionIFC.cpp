#include "federation/ConversionIFC.h"

#include "federation/CargaOBJ.h"
#include "federation/ErroresSistema.h"
#include "federation/TextoUTF8.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUuid>
#include <filesystem>

namespace teskal {

std::string rutaTemporalNueva(const char* extension) {
    return QDir(QDir::tempPath())
        .filePath(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + QString::fromUtf8(extension))
        .toStdString();
}

std::string buscarConversor(const std::string& carpetaPrograma) {
    const QFileInfo conversor(QDir(QString::fromStdString(carpetaPrograma)).filePath(QStringLiteral("IfcConvert")));
    if (!conversor.isFile() || !conversor.isExecutable()) return {};
    return conversor.absoluteFilePath().toStdString();
}

namespace {

std::string describirFalloProceso(const QProcess& proceso) {
    switch (proceso.error()) {
    case QProcess::FailedToStart:
        return "El programa no existe o no tiene permiso de ejecución.";
    case QProcess::Crashed:
        return "El programa terminó de forma anormal.";
    default:
        return "No se pudo iniciar el programa.";
    }
}

} // namespace

ResultadoConversion convertirIFC(const TrabajoConversion& t) {
    namespace fs = std::filesystem;
    const std::string copia = rutaTemporalNueva(".ifc");
    std::error_code ec;
    if (!fs::copy_file(fs::path(t.rutaOrigen), fs::path(copia), ec) || ec) {
        const std::string descripcion = describirErrorSistema(ec.value());
        fs::remove(copia, ec);
        return FalloConversion{FalloConversion::Causa::Copia, descripcion, 0};
    }

    // The child sees only the UUID-named copy, so blanks and accents of the
    // user's path never reach it. No shell, separate arguments.
    QProcess proceso;
    proceso.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    proceso.start(QString::fromStdString(t.rutaConversor),
                  {QString::fromStdString(copia), QString::fromStdString(t.rutaSalida),
                   QStringLiteral("--use-world-coords"), QStringLiteral("--use-element-names")});
    if (!proceso.waitForStarted(-1)) {
        fs::remove(copia, ec);
        return FalloConversion{FalloConversion::Causa::Lanzamiento, describirFalloProceso(proceso), 0};
    }
    proceso.waitForFinished(-1);
    const bool exito = proceso.exitStatus() == QProcess::NormalExit && proceso.exitCode() == 0;
    const int codigo = proceso.exitCode() != 0 ? proceso.exitCode() : (exito ? 0 : -1);

    // The text index does not depend on the converter: it runs on every exit.
    // A file too large for memory yields less, as any unreadable file does.
    ModeloConvertido convertido;
    try {
        if (t.leerPropiedades) {
            // One scan gives both the entries by Name and each element's own.
            IndiceIFC indice = leerIndiceIFC(copia);
            convertido.propiedades = std::move(indice.porNombre);
            convertido.propiedadesPorGlobalId = std::move(indice.porGlobalId);
        }
        if (t.leerGrillas) convertido.grillas = leerGrillasIFC(copia);
        if (t.leerGlobalIds) convertido.globalIds = leerGlobalIds(copia);
    } catch (const std::bad_alloc&) {
        convertido.propiedades.clear();
        convertido.propiedadesPorGlobalId.clear();
        convertido.grillas.clear();
        convertido.globalIds.clear();
    }
    fs::remove(copia, ec);

    if (!exito) {
        const QByteArray salida = proceso.readAllStandardError();
        const std::string_view bytes(salida.constData(), static_cast<std::size_t>(salida.size()));
        return FalloConversion{FalloConversion::Causa::Salida,
                               esUTF8Valido(bytes) ? std::string(bytes) : std::string("Sin detalle"), codigo};
    }

    try {
        convertido.modelo = cargarOBJ(t.rutaSalida);
    } catch (const std::bad_alloc&) {
        convertido.modelo.reset(); // geometry too large for memory: no geometry
    }
    if (!convertido.modelo) return FalloConversion{FalloConversion::Causa::Geometria, {}, 0};
    normalizarMateriales(*convertido.modelo);
    return convertido;
}

} // namespace teskal
