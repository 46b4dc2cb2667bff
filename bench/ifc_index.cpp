// Benchmark ifc-index: the throughput of teskal::leerIndiceIFC, the property
// index by Name and by GlobalId built in one scan when an IFC file joins the
// workspace, over a large generated file (bench/generar_ifc_grande.py).
//
// Usage: bench_ifc_index FILE.ifc [--repeticiones N] [--referencia NAME MBS
//                        [--referencia-cpu MBS] [--referencia-archivo FILE.ifc]]
//
// One warm-up read (the file lands in the page cache, as it would after the
// converter's pass), then N timed reads; each read's result is destroyed
// outside the timed call. The figure is the best wall-clock run; CPU times
// are printed beside it, as they vary less on a shared machine. The result
// is checked against the generator's summary (FILE.ifc.resumen) so that a
// reader that skips work can't look fast. The heap that the index holds is
// printed per element. With --referencia, the baseline's
// throughput in MB/s (measured by bench/ifc_index_ifcopenshell.py, on FILE or
// on the file given by --referencia-archivo) gives the ratio of the last line;
// its throughput by CPU time (--referencia-cpu) gives a steadier ratio, printed
// before it.

#include "Medicion.h"
#include "federation/PropiedadesIFC.h"

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <fstream>
#include <map>
#include <string>

using namespace teskal;
using namespace teskal::bench;

namespace {

struct Conteo {
    long long elementos = 0;
    long long propiedades = 0; // single values, the type pseudo-property left out
    long long sinTipo = 0;     // elements without their type pseudo-property
};

Conteo contar(const PropiedadesModelo& modelo) {
    Conteo c;
    for (const auto& [nombre, propiedades] : modelo) {
        ++c.elementos;
        const bool tieneTipo = propiedades.count(std::string(claveTipoIFC)) > 0;
        if (!tieneTipo) ++c.sinTipo;
        c.propiedades += static_cast<long long>(propiedades.size()) - (tieneTipo ? 1 : 0);
    }
    return c;
}

// The "clave valor" lines the generator writes beside its file.
std::map<std::string, long long> leerResumen(const std::string& ruta) {
    std::map<std::string, long long> r;
    std::ifstream f(ruta);
    std::string clave;
    long long valor;
    while (f >> clave >> valor) r[clave] = valor;
    return r;
}

[[noreturn]] void uso() {
    std::fprintf(
        stderr,
        "Uso: bench_ifc_index ARCHIVO.ifc [--repeticiones N] "
        "[--referencia NOMBRE MBS [--referencia-cpu MBS] [--referencia-archivo ARCHIVO.ifc]]\n");
    std::exit(2);
}

} // namespace

int main(int argc, char** argv) {
    std::string ruta;
    int repeticiones = 5;
    std::string referencia;
    double referenciaMBs = 0;
    double referenciaMBsCPU = 0;
    std::string referenciaArchivo;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--repeticiones" && i + 1 < argc) {
            repeticiones = std::max(1, std::atoi(argv[++i]));
        } else if (a == "--referencia" && i + 2 < argc) {
            referencia = argv[++i];
            referenciaMBs = std::atof(argv[++i]);
        } else if (a == "--referencia-cpu" && i + 1 < argc) {
            referenciaMBsCPU = std::atof(argv[++i]);
        } else if (a == "--referencia-archivo" && i + 1 < argc) {
            referenciaArchivo = argv[++i];
        } else if (!a.starts_with("--") && ruta.empty()) {
            ruta = a;
        } else {
            uso();
        }
    }
    if (ruta.empty()) uso();
    const long long bytes = tamanoArchivo(ruta);
    if (bytes <= 0) {
        std::fprintf(stderr, "ifc-index: no se puede leer %s\n", ruta.c_str());
        return 1;
    }
    std::printf("ifc-index: %s, %.1f MB (%.1f MiB)\n", ruta.c_str(), megabytes(bytes),
                mebibytes(bytes));

    // Warm-up, and the check of what the reader found. The heap in use
    // before and after the read, with the index held, gives its bytes per
    // element.
    Conteo conteo;
    Conteo conteoGlobalId;
    {
        const std::size_t heapAntes = mallinfo2().uordblks;
        IndiceIFC indice;
        const double s = cronometrar([&] { indice = leerIndiceIFC(ruta); }).pared;
        const std::size_t heapDespues = mallinfo2().uordblks;
        conteo = contar(indice.porNombre);
        conteoGlobalId = contar(indice.porGlobalId);
        std::printf("warm-up: %.3f s, %lld elements by Name and %lld by GlobalId, %lld properties, "
                    "RSS %.0f MiB with the index held\n",
                    s, conteo.elementos, conteoGlobalId.elementos, conteo.propiedades,
                    mebibytes(memoriaProceso("VmRSS")));
        std::printf("index memory: %.0f bytes per element (heap %.0f MiB)\n",
                    static_cast<double>(heapDespues - heapAntes) /
                        static_cast<double>(conteoGlobalId.elementos),
                    mebibytes(static_cast<long long>(heapDespues - heapAntes)));
    }
    const auto resumen = leerResumen(ruta + ".resumen");
    if (resumen.count("productos") && resumen.count("propiedades")) {
        // Every product has its own GlobalId and Name; the spatial elements
        // are products without properties.
        const long long productos =
            resumen.at("productos") + (resumen.count("espaciales") ? resumen.at("espaciales") : 0);
        for (const Conteo& c : {conteo, conteoGlobalId}) {
            if (c.elementos != productos || c.propiedades != resumen.at("propiedades") ||
                c.sinTipo != 0) {
                std::fprintf(stderr,
                             "ifc-index: the index does not match the file: %lld elements "
                             "(expected %lld), %lld properties (expected %lld), %lld without "
                             "type\n",
                             c.elementos, productos, c.propiedades, resumen.at("propiedades"),
                             c.sinTipo);
                return 1;
            }
        }
        std::printf("check: elements and properties, by Name and by GlobalId, match the "
                    "generator's summary\n");
    } else {
        std::printf("check: no summary beside the file, counts not checked\n");
    }

    Tiempos tiempos;
    Tiempos liberar;
    for (int i = 0; i < repeticiones; ++i) {
        auto* indice = new IndiceIFC;
        const Medida m = cronometrar([&] { *indice = leerIndiceIFC(ruta); });
        if (static_cast<long long>(indice->porNombre.size()) != conteo.elementos ||
            static_cast<long long>(indice->porGlobalId.size()) != conteoGlobalId.elementos) {
            std::fprintf(stderr, "ifc-index: run %d found %zu and %zu elements, not %lld and %lld\n",
                         i + 1, indice->porNombre.size(), indice->porGlobalId.size(),
                         conteo.elementos, conteoGlobalId.elementos);
            return 1;
        }
        liberar.anadir(cronometrar([&] { delete indice; }));
        tiempos.anadir(m);
        std::printf("run %d: %.3f s (CPU %.3f s), %.1f MB/s\n", i + 1, m.pared, m.cpu,
                    megabytes(bytes) / m.pared);
    }
    const double mb = megabytes(bytes);
    const double mejor = mb / tiempos.mejor();
    std::printf("leerIndiceIFC: best %.3f s (%.1f MB/s), median %.3f s (%.1f MB/s) over %d "
                "runs\n",
                tiempos.mejor(), mejor, tiempos.mediana(), mb / tiempos.mediana(), repeticiones);
    std::printf("by CPU time: best %.3f s (%.1f MB/s), median %.3f s (%.1f MB/s)\n",
                tiempos.mejorCPU(), mb / tiempos.mejorCPU(), tiempos.medianaCPU(),
                mb / tiempos.medianaCPU());
    std::printf("destroying the index (not timed above): median %.3f s\n", liberar.mediana());
    std::printf("peak RSS %.0f MiB\n", mebibytes(memoriaProceso("VmHWM")));
    std::printf("target: >= 400 MB/s: %s\n", mejor >= 400 ? "met" : "NOT met");

    if (referencia.empty()) return 0;
    if (referenciaMBs <= 0) {
        std::fprintf(stderr, "ifc-index: the baseline's throughput must be positive\n");
        return 1;
    }
    const std::string sobre = referenciaArchivo.empty() ? ruta : referenciaArchivo;
    std::printf("baseline %s: %.2f MB/s on %s (%.1f MB)\n", referencia.c_str(), referenciaMBs,
                sobre.c_str(), megabytes(tamanoArchivo(sobre)));
    if (referenciaMBsCPU > 0)
        std::printf("by CPU time: %.1f MB/s against %.2f MB/s, ratio %.1f\n",
                    mb / tiempos.mejorCPU(), referenciaMBsCPU,
                    mb / tiempos.mejorCPU() / referenciaMBsCPU);
    imprimirFigura("ifc-index", mejor, "MB/s", mejor / referenciaMBs, referencia.c_str());
    return 0;
}
