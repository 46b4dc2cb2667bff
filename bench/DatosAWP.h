#pragma once

// Work packages from other sources, timed: the AWP CSV import of 20,000 rows
// written in memory by the export, and the AWP detector's scan of the
// property index of the large generated IFC with its work packages
// (bench/generar_ifc_grande.py --awp). Prints one line for each; the 4D
// benchmark prints them before its own figure.

#include "Medicion.h"
#include "federation/PropiedadesIFC.h"
#include "timeline/CSVAWP.h"
#include "timeline/DetectorAWP.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace teskal::bench {

// The file the detector scans: TESKAL_BENCH_AWP_IFC, or the one in the
// folder of generated inputs (bench/data/).
inline std::string rutaIFCConAWP() {
    if (const char* ruta = std::getenv("TESKAL_BENCH_AWP_IFC")) return ruta;
#ifdef TESKAL_BENCH_DATA
    return std::string(TESKAL_BENCH_DATA) + "/ifc_grande_210MB_awp.ifc";
#else
    return "bench/data/ifc_grande_210MB_awp.ifc";
#endif
}

inline void imprimirImportacionYDetector() {
    // A plan of 20,000 packages as a planner's sheet holds it: 20 areas, 400
    // construction packages and the rest installation packages, with names,
    // parents, dates and figures, written by the export.
    constexpr int filas = 20000;
    TimeLinerConfig plan = TimeLinerConfig::porDefecto(QDateTime(QDate(2025, 1, 1), QTime(0, 0), Qt::UTC));
    plan.paquetes.reserve(filas);
    const QDateTime inicio = plan.fechaInicio;
    for (int i = 0; i < filas; ++i) {
        PaqueteAWP p;
        char codigo[32];
        if (i < 20) {
            std::snprintf(codigo, sizeof codigo, "CWA-%03d", i);
            p.nivel = NivelAWP::cwa;
        } else if (i < 420) {
            std::snprintf(codigo, sizeof codigo, "CWP-%04d", i - 20);
            p.nivel = NivelAWP::cwp;
            p.parentCodigo = "CWA-" + std::to_string(1000 + (i - 20) % 20).substr(1);
        } else {
            std::snprintf(codigo, sizeof codigo, "IWP-%05d", i - 420);
            p.nivel = NivelAWP::iwp;
            p.parentCodigo = "CWP-" + std::to_string(10000 + (i - 420) % 400).substr(1);
        }
        p.codigo = codigo;
        p.nombre = std::string("Montaje de ") + codigo + ", sector " + std::to_string(i % 37);
        p.fechaInicio = inicio.addDays(i % 330);
        p.fechaFin = p.fechaInicio.addDays(7 + i % 21);
        p.progreso = (i % 101) / 100.0;
        p.presupuesto = 1000 + (i * 37) % 90000;
        p.costoReal = p.presupuesto * p.progreso * 1.07;
        p.hh = 40 + i % 400;
        p.hhReal = p.hh * p.progreso * 0.93;
        plan.paquetes.push_back(std::move(p));
    }
    std::string texto;
    const double exportacion = cronometrar([&] { texto = textoCSVAWP(plan); }).pared;
    Tiempos lectura;
    std::size_t leidos = 0;
    for (int r = 0; r < 7; ++r) {
        std::vector<PaqueteAWP> paquetes;
        lectura.anadir(cronometrar([&] { paquetes = parsearCSV(texto); }));
        leidos = paquetes.size();
    }
    const double mb = static_cast<double>(texto.size()) / 1e6;
    std::printf("awp-csv: import of %d rows (%.2f MB, %zu packages) median %.1f ms, %.1f MB/s (CPU %.1f ms); "
                "the export that wrote them %.1f ms\n",
                filas, mb, leidos, lectura.mediana() * 1e3, mb / lectura.mediana(), lectura.medianaCPU() * 1e3,
                exportacion * 1e3);

    const std::string ruta = rutaIFCConAWP();
    if (tamanoArchivo(ruta) < 0) {
        std::printf("awp-detector: %s is missing; generate it with "
                    "python3 bench/generar_ifc_grande.py %s --mb 210 --awp\n",
                    ruta.c_str(), ruta.c_str());
        return;
    }
    // The index as the workspace holds it after linking the file to one
    // discipline; reading it is the ifc-index benchmark's matter.
    PropiedadesPorEspecialidad indice;
    indice["ARQ"] = leerIndiceIFC(ruta).porNombre;
    long long propiedades = 0;
    for (const auto& [nombre, p] : indice["ARQ"]) propiedades += static_cast<long long>(p.size());
    Tiempos escaneo;
    std::vector<ResultadoAWP> resultados;
    for (int r = 0; r < 5; ++r) escaneo.anadir(cronometrar([&] { resultados = detectarAWP(indice); }));
    std::size_t asignaciones = 0;
    for (const ResultadoAWP& r : resultados) asignaciones += r.elementos.size();
    // The import of every package found, with its parent inferred.
    std::set<std::string> todos;
    for (const ResultadoAWP& r : resultados) todos.insert(r.codigo);
    TimeLinerConfig destino = TimeLinerConfig::porDefecto();
    const double importacion = cronometrar([&] { importarDetectados(destino, resultados, todos); }).pared;
    std::printf("awp-detector: scan of %zu elements and %lld properties (%.0f MB file) median %.1f ms, "
                "%.1f M properties/s (CPU %.1f ms): %zu packages, %zu assignments; importing them all with "
                "their parents %.1f ms\n",
                indice["ARQ"].size(), propiedades, static_cast<double>(tamanoArchivo(ruta)) / 1e6,
                escaneo.mediana() * 1e3, static_cast<double>(propiedades) / escaneo.mediana() / 1e6,
                escaneo.medianaCPU() * 1e3,
                resultados.size(), asignaciones, importacion * 1e3);
}

} // namespace teskal::bench
