// clash: the clash search over two generated disciplines of 50,000 elements
// each in a building of 100 x 100 x 60 m, tolerance 0.02, against the direct
// double loop on the same candidates (identical results required). With
// --muestras DIR it also times a whole analysis from "Iniciar análisis" to the
// marks, on the duplex sample linked to two disciplines through the converter.
#include "Medicion.h"
#include "analyses/clash/BusquedaInterferencias.h"
#include "federation/ContentView.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <cstring>
#include <random>

using namespace teskal;
using namespace teskal::bench;

namespace {

// A building of 20 storeys of 3 m over 100 x 100 m. "ARQ": walls of 1 to 4 m
// (2.4 m high) and slab panels of 2 to 6 m under each storey; "EST": beams of
// 3 to 8 m just under the slab above, clear of walls and slabs, and columns
// of 0.4 x 0.4 standing where they fall, so that a column inside a wall is
// the clash the search finds: a few thousand of them, as in a real federation.
std::vector<NodoBB> generar(std::size_t porEspecialidad, unsigned semilla) {
    std::mt19937 azar(semilla);
    std::uniform_real_distribution<double> x(0, 100), y(0, 100), u(0, 1);
    std::uniform_int_distribution<int> piso(0, 19);
    std::vector<NodoBB> c;
    c.reserve(porEspecialidad * 2);
    auto anadir = [&](const std::string& key, std::size_t i, glm::dvec3 min, glm::dvec3 tam) {
        // Boxes as the scene gives them: single-precision vertices.
        c.push_back({nullptr, key, key + "-" + std::to_string(i), {}, glm::dvec3(glm::vec3(min)),
                     glm::dvec3(glm::vec3(min + tam))});
    };
    for (std::size_t i = 0; i < porEspecialidad; ++i) {
        const double z0 = piso(azar) * 3.0;
        if (u(azar) < 0.7) {
            const double largo = 1 + 3 * u(azar);
            const glm::dvec3 tam = u(azar) < 0.5 ? glm::dvec3(largo, 0.2, 2.4) : glm::dvec3(0.2, largo, 2.4);
            anadir("ARQ", i, {x(azar), y(azar), z0}, tam);
        } else {
            anadir("ARQ", i, {x(azar), y(azar), z0 - 0.25}, {2 + 4 * u(azar), 2 + 4 * u(azar), 0.25});
        }
    }
    for (std::size_t i = 0; i < porEspecialidad; ++i) {
        const double z0 = piso(azar) * 3.0;
        if (u(azar) < 0.8) {
            const double largo = 3 + 5 * u(azar);
            const glm::dvec3 tam = u(azar) < 0.5 ? glm::dvec3(largo, 0.3, 0.29) : glm::dvec3(0.3, largo, 0.29);
            anadir("EST", i, {x(azar), y(azar), z0 + 2.45}, tam);
        } else {
            anadir("EST", i, {x(azar), y(azar), z0}, {0.4, 0.4, 2.74});
        }
    }
    return c;
}

bool iguales(const std::vector<Interferencia>& a, const std::vector<Interferencia>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t k = 0; k < a.size(); ++k)
        if (a[k].nombreA != b[k].nombreA || a[k].nombreB != b[k].nombreB || a[k].viewpointPos != b[k].viewpointPos ||
            a[k].radio != b[k].radio || a[k].especialidadA != b[k].especialidadA)
            return false;
    return true;
}

bool esperar(const std::function<bool()>& hecho, int ms) {
    QElapsedTimer reloj;
    reloj.start();
    while (!hecho()) {
        if (reloj.elapsed() > ms) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::usleep(200);
    }
    return true;
}

// A whole analysis on the linked samples: conversion first (not timed), then
// from the start of the search to the orange marks.
void analisisDeMuestras(const std::string& carpetaMuestras, const std::string& carpetaPrograma) {
    ContentView cv(carpetaPrograma);
    for (const char* clave : {"ARQ", "EST"}) {
        cv.vincularIFC(clave);
        cv.archivosElegidos({carpetaMuestras + "/duplex.ifc"});
        if (!esperar([&] { return !cv.isProcessing; }, 600000) || cv.showError) {
            std::printf("clash: the sample could not be linked: %s\n", cv.errorMessage.value_or("").c_str());
            return;
        }
    }
    Tiempos t;
    std::size_t choques = 0;
    for (int r = 0; r < 5; ++r) {
        cv.abrirConfigAnalisis();
        cv.mostrarConfigAnalisis = false;
        t.anadir(cronometrar([&] {
            cv.iniciarDeteccion("Muestras", 0.02);
            esperar([&] { return !cv.detectando; }, 600000);
        }));
        choques = cv.interferencias.size();
    }
    std::printf("clash: duplex linked to ARQ and EST: %zu clashes, start to marks best %.1f ms, median %.1f ms\n",
                choques, t.mejor() * 1e3, t.mediana() * 1e3);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    std::size_t n = 50000;
    std::string muestras, programa;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--elementos") && i + 1 < argc) n = std::stoul(argv[++i]);
        else if (!std::strcmp(argv[i], "--muestras") && i + 2 < argc) {
            muestras = argv[++i];
            programa = argv[++i];
        }
    }
    const auto candidatos = generar(n, 7);
    const std::set<std::string> activos = {clavePar("ARQ", "EST")};
    const std::unordered_set<std::string> excluidos;

    Tiempos rapida;
    std::vector<Interferencia> resultado;
    for (int r = 0; r < 5; ++r)
        rapida.anadir(cronometrar([&] { resultado = buscarInterferencias(candidatos, activos, excluidos, 0.02); }));
    std::printf("clash: %zu + %zu elements, %zu clashes; tree search best %.1f ms, median %.1f ms (CPU %.1f ms)\n",
                n, n, resultado.size(), rapida.mejor() * 1e3, rapida.mediana() * 1e3, rapida.mejorCPU() * 1e3);

    std::vector<Interferencia> directa;
    const Medida d = cronometrar([&] { directa = buscarInterferenciasDirecta(candidatos, activos, excluidos, 0.02); });
    std::printf("clash: direct double loop %.1f ms (CPU %.1f ms)\n", d.pared * 1e3, d.cpu * 1e3);
    if (!iguales(resultado, directa)) {
        std::printf("clash: the two searches disagree (%zu against %zu clashes)\n", resultado.size(), directa.size());
        return 1;
    }
    std::printf("clash: identical results, clash by clash\n");
    if (!muestras.empty()) analisisDeMuestras(muestras, programa);
    imprimirFigura("clash", rapida.mediana() * 1e3, "ms", d.pared / rapida.mediana(), "brute-force");
    return 0;
}
