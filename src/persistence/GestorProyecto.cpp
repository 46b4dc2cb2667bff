#include "persistence/GestorProyecto.h"

#include "federation/ErroresSistema.h"
#include "federation/TextoUTF8.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUuid>
#include <algorithm>
#include <filesystem>

namespace teskal {

namespace fs = std::filesystem;

void GestorProyecto::fijarProyecto(const std::string& ruta) {
    urlActual = ruta;
    nombreProyecto = QFileInfo(QString::fromStdString(ruta)).completeBaseName().toStdString();
}

std::string nombreUnicoEnPaquete(const std::string& nombre, std::vector<std::string>& usados) {
    auto usado = [&](const std::string& n) { return std::find(usados.begin(), usados.end(), n) != usados.end(); };
    std::string elegido = nombre;
    if (usado(nombre)) {
        const std::size_t punto = nombre.rfind('.');
        const bool conExtension = punto != std::string::npos && punto > 0;
        const std::string base = conExtension ? nombre.substr(0, punto) : nombre;
        const std::string ext = conExtension ? nombre.substr(punto + 1) : std::string();
        for (int n = 1;; ++n) {
            elegido = base + "_" + std::to_string(n) + "." + ext;
            if (!usado(elegido)) break;
        }
    }
    usados.push_back(elegido);
    return elegido;
}

namespace {

// Runs a tool with its output and error in one pipe; gives the exit status
// (none when it did not start) and the output as UTF-8 (empty if it isn't).
std::optional<int> ejecutar(const QString& programa, const QStringList& argumentos, const QString& carpeta,
                            std::string& salida) {
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    if (!carpeta.isEmpty()) p.setWorkingDirectory(carpeta);
    p.start(programa, argumentos);
    if (!p.waitForStarted(-1)) {
        salida = "No se pudo ejecutar " + programa.toStdString() + ".";
        return std::nullopt;
    }
    p.waitForFinished(-1);
    const QByteArray bytes = p.readAll();
    const std::string_view v(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    salida = esUTF8Valido(v) ? std::string(v) : std::string();
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

std::string describir(const std::error_code& ec) { return describirErrorSistema(ec.value()); }

// A new folder name in the temporary directory: the prefix and an upper-case
// UUID, as every temporary name of the workbench.
fs::path carpetaTemporal(const std::string& prefijo) {
    return fs::path(QDir::tempPath().toStdString()) /
           (prefijo + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString());
}

} // namespace

std::string exportarPaquete(const std::string& destino, ProyectoTESKAL proyecto,
                            const std::vector<std::vector<std::string>>& rutasPorEspecialidad) {
    const fs::path carpeta = carpetaTemporal("teskalpkg_");
    std::error_code ec;
    fs::create_directories(carpeta / "modelos", ec);
    if (ec) return "No se pudo crear la carpeta temporal: " + describir(ec);
    auto fallar = [&](std::string mensaje) {
        std::error_code e;
        fs::remove_all(carpeta, e);
        return mensaje;
    };

    std::vector<std::string> usados; // shared by all disciplines
    for (std::size_t i = 0; i < proyecto.especialidades.size(); ++i) {
        auto& modelos = proyecto.especialidades[i].modelos;
        for (std::size_t m = 0; m < modelos.size(); ++m) {
            const std::string ruta = i < rutasPorEspecialidad.size() && m < rutasPorEspecialidad[i].size()
                                         ? rutasPorEspecialidad[i][m]
                                         : std::string();
            if (ruta.empty()) {
                modelos[m].rutaAbsoluta.clear();
                modelos[m].rutaRelativa.reset();
                continue;
            }
            const std::string nombre = nombreUnicoEnPaquete(fs::path(ruta).filename().string(), usados);
            fs::copy_file(ruta, carpeta / "modelos" / nombre, ec);
            if (ec) return fallar("No se pudo copiar \"" + ruta + "\": " + describir(ec));
            modelos[m].rutaAbsoluta = ruta;
            modelos[m].rutaRelativa = "modelos/" + nombre;
        }
    }

    QFile json(QString::fromStdString((carpeta / "proyecto.json").string()));
    if (!json.open(QIODevice::WriteOnly) || json.write(codificarProyecto(proyecto)) < 0 || !json.flush())
        return fallar("No se pudo escribir proyecto.json: " + json.errorString().toStdString());
    json.close();

    if (fs::exists(fs::symlink_status(destino))) {
        fs::remove(destino, ec);
        if (ec) return fallar("No se pudo reemplazar \"" + destino + "\": " + describir(ec));
    }
    std::string salida;
    const auto estado = ejecutar(QStringLiteral("/usr/bin/zip"),
                                 {QStringLiteral("-r"), QString::fromStdString(destino), QStringLiteral(".")},
                                 QString::fromStdString(carpeta.string()), salida);
    if (!estado) return fallar(salida);
    if (*estado != 0) return fallar("Error al comprimir el paquete: " + salida);
    fs::remove_all(carpeta, ec);
    return {};
}

std::variant<std::pair<ProyectoTESKAL, std::string>, std::string> abrirPaquete(const std::string& ruta) {
    const QString unzip = QStringLiteral("/usr/bin/unzip");
    const QString archivo = QString::fromStdString(ruta);
    // The entries, and their kinds, before anything is written.
    std::string nombres, detalle;
    auto estado = ejecutar(unzip, {QStringLiteral("-Z1"), archivo}, {}, nombres);
    if (!estado) return nombres;
    if (*estado == 0) estado = ejecutar(unzip, {QStringLiteral("-Z"), archivo}, {}, detalle);
    if (!estado || *estado != 0) return "Error al abrir el paquete: " + (estado ? nombres + detalle : detalle);
    for (const QString& n : QString::fromStdString(nombres).split('\n', Qt::SkipEmptyParts)) {
        const QStringList partes = QString(n).replace('\\', '/').split('/');
        if (n.startsWith('/') || n.startsWith('\\') || partes.contains(QStringLiteral("..")) ||
            (n.size() > 1 && n[1] == ':'))
            return "El paquete contiene una ruta que sale de su carpeta: " + n.toStdString();
    }
    for (const QString& linea : QString::fromStdString(detalle).split('\n', Qt::SkipEmptyParts))
        if (linea.startsWith('l') && linea.size() > 10 && linea[1] != ' ')
            return "El paquete contiene un enlace simbólico: " + linea.section(' ', -1).toStdString();

    const fs::path carpeta = carpetaTemporal("teskalpkg_open_");
    std::error_code ec;
    fs::create_directories(carpeta, ec);
    if (ec) return "No se pudo crear la carpeta temporal: " + describir(ec);
    std::string salida;
    estado = ejecutar(unzip, {QStringLiteral("-o"), archivo, QStringLiteral("-d"), QString::fromStdString(carpeta.string())},
                      {}, salida);
    if (!estado) return salida;
    if (*estado != 0) return "Error al abrir el paquete: " + salida;
    QFile json(QString::fromStdString((carpeta / "proyecto.json").string()));
    if (!json.exists()) return std::string("El paquete no contiene un proyecto válido.");
    if (!json.open(QIODevice::ReadOnly)) return "No se pudo leer proyecto.json: " + json.errorString().toStdString();
    auto decodificado = decodificarProyecto(json.readAll());
    if (auto* error = std::get_if<std::string>(&decodificado)) return *error;
    return std::make_pair(std::move(std::get<ProyectoTESKAL>(decodificado)), carpeta.string());
}

} // namespace teskal
