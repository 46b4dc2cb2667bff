#include "federation/ConversionIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/CargaOBJ.h"
#include "federation/ErroresSistema.h"
#include "federation/Formato.h"
#include "federation/TextoUTF8.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSettings>
#include <QFileInfo>
#include <QProcess>
#include <QUuid>
#include <csignal>
#include <filesystem>
#include <unistd.h>
#include <optional>

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

double limiteMinutosConversion() {
    bool ok = false;
    const double minutos = QSettings().value(QStringLiteral("conversion/limiteMinutos"), 30).toDouble(&ok);
    return ok && minutos > 0 ? minutos : 30;
}

std::string textoLimiteConversion(double minutos) {
    return "La conversión superó el límite de " + formato("%g", minutos) + " minutos y se canceló.";
}

void eliminarSalidasConversion(const std::string& rutaOBJ) {
    std::error_code ec;
    std::filesystem::remove(rutaOBJ, ec);
    std::filesystem::remove(rutaIdentidadesOBJ(rutaOBJ), ec);
    if (rutaOBJ.size() > 4 && rutaOBJ.ends_with(".obj"))
        std::filesystem::remove(rutaOBJ.substr(0, rutaOBJ.size() - 4) + ".mtl", ec);
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

bool cancelada(const TrabajoConversion& t) { return t.cancelar && t.cancelar->load(); }

// Waits for a child, checking every tenth of a second whether the work was
// cancelled or ran out of time; in that case the child is ended. Gives the
// cause that ended it, or none when it finished on its own.
std::optional<FalloConversion::Causa> esperar(QProcess& proceso, const TrabajoConversion& t,
                                              const QElapsedTimer& reloj) {
    const double limiteMs = t.limiteMinutos * 60000.0;
    while (!proceso.waitForFinished(100)) {
        if (proceso.state() == QProcess::NotRunning) break;
        std::optional<FalloConversion::Causa> causa;
        if (cancelada(t))
            causa = FalloConversion::Causa::Cancelada;
        else if (t.limiteMinutos > 0 && static_cast<double>(reloj.elapsed()) > limiteMs)
            causa = FalloConversion::Causa::TiempoAgotado;
        if (causa) {
            // The child leads a process group of its own: the whole group
            // goes, so no process the converter started outlives it.
            if (const qint64 pid = proceso.processId(); pid > 0) ::kill(-static_cast<pid_t>(pid), SIGKILL);
            proceso.kill();
            proceso.waitForFinished(-1);
            return causa;
        }
    }
    return std::nullopt;
}

// Starts a child as the leader of a new process group, so that ending the
// work ends everything it started.
void iniciarEnGrupoPropio(QProcess& proceso, const QString& programa, const QStringList& argumentos) {
    proceso.setChildProcessModifier([] { ::setpgid(0, 0); });
    proceso.start(programa, argumentos);
}

bool esIfcZip(const std::string& ruta) {
    return QFileInfo(QString::fromStdString(ruta)).suffix().compare(QStringLiteral("ifczip"), Qt::CaseInsensitive) ==
           0;
}

// Takes the first IFC file out of a .ifczip into `destino`, through
// /usr/bin/unzip. Gives the reason when it can't.
std::optional<std::string> extraerIfcZip(const std::string& archivo, const std::string& destino,
                                         const TrabajoConversion& t, const QElapsedTimer& reloj) {
    QProcess lista;
    iniciarEnGrupoPropio(lista, QStringLiteral("/usr/bin/unzip"), {QStringLiteral("-Z1"), QString::fromStdString(archivo)});
    if (!lista.waitForStarted(-1)) return describirFalloProceso(lista);
    if (esperar(lista, t, reloj)) return std::string("Cancelada");
    if (lista.exitStatus() != QProcess::NormalExit || lista.exitCode() != 0)
        return std::string("El archivo .ifczip no es un archivo zip válido.");
    QString entrada;
    for (const QByteArray& linea : lista.readAllStandardOutput().split('\n')) {
        const QString nombre = QString::fromUtf8(linea).trimmed();
        if (nombre.endsWith(QStringLiteral(".ifc"), Qt::CaseInsensitive)) {
            entrada = nombre;
            break;
        }
    }
    if (entrada.isEmpty()) return std::string("El archivo .ifczip no contiene ningún archivo .ifc.");
    // unzip reads the entry as a pattern: its wildcard characters are escaped.
    QString patron;
    for (const QChar c : entrada) {
        if (c == u'[' || c == u']' || c == u'*' || c == u'?' || c == u'\\') patron += u'\\';
        patron += c;
    }
    QProcess extraccion;
    extraccion.setStandardOutputFile(QString::fromStdString(destino));
    iniciarEnGrupoPropio(extraccion, QStringLiteral("/usr/bin/unzip"),
                         {QStringLiteral("-p"), QString::fromStdString(archivo), patron});
    if (!extraccion.waitForStarted(-1)) return describirFalloProceso(extraccion);
    if (esperar(extraccion, t, reloj)) return std::string("Cancelada");
    if (extraccion.exitStatus() != QProcess::NormalExit || extraccion.exitCode() != 0)
        return std::string("No se pudo extraer el archivo IFC del .ifczip.");
    return std::nullopt;
}

// The input copy: the file itself, or the IFC inside a .ifczip.
std::optional<FalloConversion> copiarEntrada(const TrabajoConversion& t, const std::string& copia,
                                             const QElapsedTimer& reloj) {
    namespace fs = std::filesystem;
    std::error_code ec;
    if (esIfcZip(t.rutaOrigen)) {
        if (const auto fallo = extraerIfcZip(t.rutaOrigen, copia, t, reloj)) {
            fs::remove(copia, ec);
            if (cancelada(t)) return FalloConversion{FalloConversion::Causa::Cancelada, {}, 0};
            return FalloConversion{FalloConversion::Causa::Copia, *fallo, 0};
        }
        return std::nullopt;
    }
    if (!fs::copy_file(fs::path(t.rutaOrigen), fs::path(copia), ec) || ec) {
        const std::string descripcion = describirErrorSistema(ec.value());
        fs::remove(copia, ec);
        return FalloConversion{FalloConversion::Causa::Copia, descripcion, 0};
    }
    return std::nullopt;
}

} // namespace

ResultadoConversion convertirIFC(const TrabajoConversion& t) {
    namespace fs = std::filesystem;
    QElapsedTimer reloj;
    reloj.start();
    std::string clave;
    if (!t.carpetaCache.empty()) {
        clave = claveCache(t.rutaOrigen, versionConversorCache(t.rutaConversor),
                           {t.leerPropiedades, t.leerGrillas, t.leerGlobalIds});
        if (auto entrada = leerEntradaCache(t.carpetaCache, clave)) {
            ModeloConvertido convertido;
            try {
                convertido.modelo = cargarOBJTexto(entrada->obj, entrada->identidades);
            } catch (const std::bad_alloc&) {
                convertido.modelo.reset();
            }
            if (cancelada(t)) return FalloConversion{FalloConversion::Causa::Cancelada, {}, 0};
            // An entry whose OBJ gives no model is converted anew like a miss.
            if (convertido.modelo) {
                normalizarMateriales(*convertido.modelo);
                convertido.propiedades = std::move(entrada->propiedades);
                convertido.propiedadesPorGlobalId = std::move(entrada->propiedadesPorGlobalId);
                convertido.grillas = std::move(entrada->grillas);
                convertido.globalIds = std::move(entrada->globalIds);
                return convertido;
            }
        }
    }
    const std::string copia = rutaTemporalNueva(".ifc");
    std::error_code ec;
    if (auto fallo = copiarEntrada(t, copia, reloj)) return *fallo;

    // The child sees only the UUID-named copy, so blanks and accents of the
    // user's path never reach it. No shell, separate arguments.
    QProcess proceso;
    proceso.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    iniciarEnGrupoPropio(proceso, QString::fromStdString(t.rutaConversor),
                         {QString::fromStdString(copia), QString::fromStdString(t.rutaSalida),
                          QStringLiteral("--use-world-coords"), QStringLiteral("--use-element-names")});
    if (!proceso.waitForStarted(-1)) {
        fs::remove(copia, ec);
        return FalloConversion{FalloConversion::Causa::Lanzamiento, describirFalloProceso(proceso), 0};
    }
    if (const auto causa = esperar(proceso, t, reloj)) {
        fs::remove(copia, ec);
        eliminarSalidasConversion(t.rutaSalida);
        return FalloConversion{*causa, {}, 0};
    }
    const bool exito = proceso.exitStatus() == QProcess::NormalExit && proceso.exitCode() == 0;
    const int codigo = proceso.exitCode() != 0 ? proceso.exitCode() : (exito ? 0 : -1);

    // The text index does not depend on the converter: it runs on every exit.
    // A file too large for memory yields less, as any unreadable file does.
    ModeloConvertido convertido;
    bool indiceCompleto = true;
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
        indiceCompleto = false;
    }
    fs::remove(copia, ec);

    if (!exito) {
        eliminarSalidasConversion(t.rutaSalida);
        const QByteArray salida = proceso.readAllStandardError();
        const std::string_view bytes(salida.constData(), static_cast<std::size_t>(salida.size()));
        return FalloConversion{FalloConversion::Causa::Salida,
                               esUTF8Valido(bytes) ? std::string(bytes) : std::string("Sin detalle"), codigo};
    }

    // An OBJ that is there but holds no faces means the model has nothing to
    // draw; a missing one is a broken output.
    const bool escrito = fs::is_regular_file(t.rutaSalida, ec);
    {
        // Read once: the same mapped texts feed the model and the cache entry.
        const ArchivoMapeado obj(t.rutaSalida);
        const ArchivoMapeado identidades(rutaIdentidadesOBJ(t.rutaSalida));
        try {
            if (!cancelada(t) && obj.abierto()) convertido.modelo = cargarOBJTexto(obj.texto(), identidades.texto());
        } catch (const std::bad_alloc&) {
            convertido.modelo.reset(); // geometry too large for memory: no geometry
        }
        // Only a whole result is kept: a model with its complete index.
        if (convertido.modelo && indiceCompleto && !clave.empty() && !cancelada(t))
            escribirEntradaCache(t.carpetaCache, clave, obj.texto(), identidades.texto(), convertido.propiedades,
                                 convertido.propiedadesPorGlobalId, convertido.grillas, convertido.globalIds,
                                 t.limiteCache);
    }
    eliminarSalidasConversion(t.rutaSalida);
    if (cancelada(t)) return FalloConversion{FalloConversion::Causa::Cancelada, {}, 0};
    if (!convertido.modelo)
        return FalloConversion{escrito ? FalloConversion::Causa::SinGeometria : FalloConversion::Causa::Geometria,
                               {},
                               0};
    normalizarMateriales(*convertido.modelo);
    return convertido;
}

} // namespace teskal
