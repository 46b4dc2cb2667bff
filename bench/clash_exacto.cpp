// clash-exact: the exact clash analysis, ARQ against EST, over the render
// benchmark's generated federation (108,000 elements, 2.1 million triangles):
// first the box search alone and the whole exact analysis over it (the box
// search, the meshes of the elements it pairs and their trees, every pair's
// contact), then the same analysis meeting every triangle of one element with
// every triangle of the other, without trees (identical results required).
#include "FederacionGenerada.h"
#include "Medicion.h"
#include "analyses/clash/AnalisisExacto.h"
#include "analyses/clash/BusquedaInterferencias.h"

#include <QCoreApplication>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace teskal;
using namespace teskal::bench;

namespace {

bool iguales(const std::vector<Interferencia>& a, const std::vector<Interferencia>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t k = 0; k < a.size(); ++k)
        if (a[k].nodoA != b[k].nodoA || a[k].nodoB != b[k].nodoB ||
            std::abs(*a[k].distancia - *b[k].distancia) > 1e-9)
            return false;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000;
    int repeticiones = 5;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--elementos" && i + 1 < argc)
            elementosPorModelo = std::max(1, std::atoi(argv[++i]));
        else if (a == "--repeticiones" && i + 1 < argc)
            repeticiones = std::max(1, std::atoi(argv[++i]));
        else {
            std::fprintf(stderr, "uso: bench_clash_exacto [--elementos N] [--repeticiones N]\n");
            return 2;
        }
    }
    QCoreApplication app(argc, argv);
    imprimirCargaMaquina();

    ContentView cv("/no/existe");
    Conteo conteo;
    construirFederacion(cv, elementosPorModelo, conteo);
    const std::vector<NodoBB> candidatos = cv.candidatosInterferencia();
    const std::set<std::string> activos{clavePar("ARQ", "EST")};
    const std::unordered_set<std::string> excluidos;
    std::printf("clash-exact: %zu element nodes, %zu triangles; ARQ against EST, tolerance 0.02, %u threads\n",
                conteo.nodos, conteo.triangulos, std::max(1u, std::thread::hardware_concurrency()));

    Tiempos cajas;
    std::size_t paresCaja = 0;
    for (int r = 0; r < repeticiones; ++r)
        cajas.anadir(cronometrar([&] { paresCaja = buscarInterferencias(candidatos, activos, excluidos, 0.02).size(); }));
    std::printf("box search: %zu pairs, median %.1f ms (best %.1f)\n", paresCaja, cajas.mediana() * 1e3,
                cajas.mejor() * 1e3);

    const ConfigAnalisis config{"Exacto", 0.02, MetodoAnalisis::geometriaExacta, 0.05};
    Tiempos exacto;
    std::vector<Interferencia> resultado;
    for (int r = 0; r < repeticiones; ++r)
        exacto.anadir(cronometrar([&] { resultado = analizarInterferencias(candidatos, activos, excluidos, config); }));
    std::printf("exact analysis: %zu clashes of the %zu box pairs, median %.1f ms (best %.1f, CPU %.1f ms), "
                "%.2f times the box search\n",
                resultado.size(), paresCaja, exacto.mediana() * 1e3, exacto.mejor() * 1e3,
                exacto.medianaCPU() * 1e3, exacto.mediana() / cajas.mediana());

    std::vector<Interferencia> directa;
    const Medida d =
        cronometrar([&] { directa = analizarInterferenciasDirecta(candidatos, activos, excluidos, config); });
    std::printf("triangle pairs without trees: %.1f ms (CPU %.1f ms)\n", d.pared * 1e3, d.cpu * 1e3);
    if (!iguales(resultado, directa)) {
        std::printf("clash-exact: the two forms disagree (%zu against %zu clashes)\n", resultado.size(),
                    directa.size());
        return 1;
    }
    std::printf("clash-exact: identical results, clash by clash\n");
    imprimirFigura("clash-exact", exacto.mediana() * 1e3, "ms", d.pared / exacto.mediana(),
                   "triangle-pairs-no-tree");
    return 0;
}
