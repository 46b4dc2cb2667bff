// reopen: opening the demo package in the workspace, from the command to the
// last model placed in the scene, with an empty conversion cache (cold) and
// with the cache the cold opening filled (warm, median of several). First it
// prints the cold time and how a cold link of each model divides into the
// converter's own time and ours (reading, index, scene assembly): the
// converter run alone on the same file against the whole conversion.
//
// Usage: bench_reabrir PAQUETE.teskalpkg CARPETA_DEL_CONVERSOR [--repeticiones N]
#include "Medicion.h"
#include "federation/CacheConversion.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "persistence/GestorProyecto.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <cstring>
#include <filesystem>

using namespace teskal;
using namespace teskal::bench;

namespace {

int modelosEnEscena(const ContentView& cv) {
    int n = 0;
    for (const auto& [clave, e] : cv.especialidades) n += static_cast<int>(e.modelos.size());
    return n;
}

// Opens the package in a new workspace and waits until its models are there.
double abrir(const std::string& paquete, const std::string& carpetaConversor, const std::string& cache,
             int esperados) {
    ContentView cv(carpetaConversor);
    cv.carpetaCache = cache;
    const Medida m = cronometrar([&] {
        cv.abrirPaqueteDe(paquete);
        while (modelosEnEscena(cv) < esperados || cv.isProcessing)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    });
    return m.pared;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "uso: bench_reabrir PAQUETE.teskalpkg CARPETA_DEL_CONVERSOR [--repeticiones N]\n");
        return 2;
    }
    const std::string paquete = argv[1];
    const std::string carpeta = argv[2];
    int repeticiones = 5;
    for (int i = 3; i + 1 < argc; ++i)
        if (std::strcmp(argv[i], "--repeticiones") == 0) repeticiones = std::max(1, std::atoi(argv[i + 1]));
    const std::string conversor = buscarConversor(carpeta);
    auto abierto = abrirPaquete(paquete);
    if (conversor.empty() || std::holds_alternative<std::string>(abierto)) {
        std::fprintf(stderr, "bench: no se pudo abrir %s o no hay IfcConvert en %s\n", paquete.c_str(),
                     carpeta.c_str());
        return 2;
    }
    const auto& [proyecto, desempaquetado] = std::get<0>(abierto);
    std::vector<std::string> ifcs;
    for (const auto& e : proyecto.especialidades)
        for (const auto& m : e.modelos)
            if (m.rutaRelativa) ifcs.push_back((std::filesystem::path(desempaquetado) / *m.rutaRelativa).string());
    const int esperados = static_cast<int>(ifcs.size());
    imprimirCargaMaquina();

    // The split of a cold link, model by model: the converter alone, then the
    // whole conversion (copy, converter, index, OBJ reading) without cache.
    double conversorSolo = 0, conversionEntera = 0;
    for (const std::string& ifc : ifcs) {
        const std::string obj = rutaTemporalNueva(".obj");
        conversorSolo += cronometrar([&] {
                             QProcess p;
                             p.start(QString::fromStdString(conversor),
                                     {QString::fromStdString(ifc), QString::fromStdString(obj),
                                      QStringLiteral("--use-world-coords"), QStringLiteral("--use-element-names")});
                             p.waitForFinished(-1);
                         }).pared;
        eliminarSalidasConversion(obj);
        TrabajoConversion t;
        t.rutaOrigen = ifc;
        t.rutaConversor = conversor;
        t.rutaSalida = rutaTemporalNueva(".obj");
        conversionEntera += cronometrar([&] { convertirIFC(t); }).pared;
    }

    QTemporaryDir cache;
    const double frio = abrir(paquete, carpeta, cache.path().toStdString(), esperados);
    std::printf("cold: %.0f ms to open %s (%d models, empty cache, %s)\n", frio * 1000,
                std::filesystem::path(paquete).filename().c_str(), esperados,
                tamanoCache(cache.path().toStdString()).entradas == static_cast<std::size_t>(esperados)
                    ? "one entry per model after it"
                    : "entries missing after it");
    const double nuestro = std::max(0.0, conversionEntera - conversorSolo);
    std::printf("cold link: converter %.0f ms (%.0f%%), ours %.0f ms (%.0f%%: copy, reading, index, scene "
                "assembly), summed over the models\n",
                conversorSolo * 1000, 100 * conversorSolo / conversionEntera, nuestro * 1000,
                100 * nuestro / conversionEntera);

    Tiempos calientes;
    for (int i = 0; i < repeticiones; ++i)
        calientes.anadir({abrir(paquete, carpeta, cache.path().toStdString(), esperados), 0});
    std::printf("warm: best %.1f ms, median %.1f ms over %d openings\n", calientes.mejor() * 1000,
                calientes.mediana() * 1000, repeticiones);
    std::error_code ec;
    std::filesystem::remove_all(desempaquetado, ec);
    imprimirFigura("reopen", calientes.mediana() * 1000, "ms", frio / calientes.mediana(), "cold");
    return 0;
}
