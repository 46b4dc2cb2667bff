#include "analyses/clash/AnalisisExacto.h"

#include "analyses/clash/BusquedaInterferencias.h"
#include "analyses/clash/GeometriaChoque.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <unordered_map>

namespace teskal {

std::string_view textoMetodo(MetodoAnalisis m) {
    switch (m) {
    case MetodoAnalisis::geometriaExacta:
        return "Geometría exacta";
    case MetodoAnalisis::holgura:
        return "Holgura";
    case MetodoAnalisis::cajasEnvolventes:
        break;
    }
    return "Cajas envolventes";
}

MetodoAnalisis metodoDesdeTexto(std::string_view texto) {
    for (MetodoAnalisis m : metodosAnalisis)
        if (textoMetodo(m) == texto) return m;
    return MetodoAnalisis::cajasEnvolventes;
}

namespace {

// Runs f(i) for every i below n on `hilos` threads (the caller's among them),
// each taking the next index as it finishes one.
template <class F> void enParalelo(std::size_t n, unsigned hilos, F f) {
    if (hilos == 0) hilos = std::max(1u, std::thread::hardware_concurrency());
    hilos = static_cast<unsigned>(std::min<std::size_t>(hilos, std::max<std::size_t>(n, 1)));
    std::atomic<std::size_t> siguiente{0};
    auto trabajar = [&] {
        for (std::size_t i; (i = siguiente.fetch_add(1, std::memory_order_relaxed)) < n;) f(i);
    };
    std::vector<std::thread> otros;
    for (unsigned h = 1; h < hilos; ++h) otros.emplace_back(trabajar);
    trabajar();
    for (auto& t : otros) t.join();
}

// What the mesh test found for one pair of the box search.
struct Hallazgo {
    bool conservar = false;
    double distancia = 0;
    glm::dvec3 min{0.0}, max{0.0};
};

std::vector<Interferencia> analizar(const std::vector<NodoBB>& candidatos, const std::set<std::string>& paresActivos,
                                    const std::unordered_set<std::string>& excluidos, const ConfigAnalisis& config,
                                    unsigned hilos, bool conArboles) {
    if (config.metodo == MetodoAnalisis::cajasEnvolventes)
        return buscarInterferencias(candidatos, paresActivos, excluidos, config.tolerancia);
    const bool holgura = config.metodo == MetodoAnalisis::holgura;
    // "Holgura": a gap below the clearance on every axis is what boxes grown
    // by it show as an overlap above nothing.
    std::vector<Interferencia> cajas =
        buscarInterferencias(candidatos, paresActivos, excluidos, holgura ? -config.holgura : config.tolerancia);

    // The elements of the pairs found, each meshed once.
    std::unordered_map<const Node*, std::size_t> indice;
    for (std::size_t k = 0; k < candidatos.size(); ++k)
        if (candidatos[k].node && candidatos[k].geometria) indice.emplace(candidatos[k].node.get(), k);
    std::unordered_map<std::size_t, std::size_t> malla; // candidate to mesh
    std::vector<std::size_t> usados;
    std::vector<std::pair<std::size_t, std::size_t>> pares(cajas.size(), {SIZE_MAX, SIZE_MAX});
    auto mallaDe = [&](const std::shared_ptr<Node>& n) -> std::size_t {
        const auto it = n ? indice.find(n.get()) : indice.end();
        if (it == indice.end()) return SIZE_MAX;
        const auto [m, nueva] = malla.emplace(it->second, usados.size());
        if (nueva) usados.push_back(it->second);
        return m->second;
    };
    for (std::size_t k = 0; k < cajas.size(); ++k) pares[k] = {mallaDe(cajas[k].nodoA), mallaDe(cajas[k].nodoB)};
    std::vector<MallaElemento> mallas(usados.size());
    enParalelo(usados.size(), hilos, [&](std::size_t m) {
        const NodoBB& c = candidatos[usados[m]];
        mallas[m] = MallaElemento(*c.geometria, c.mundo);
    });

    std::vector<Hallazgo> hallazgos(cajas.size());
    enParalelo(cajas.size(), hilos, [&](std::size_t k) {
        const auto [ia, ib] = pares[k];
        if (ia == SIZE_MAX || ib == SIZE_MAX) return;
        const MallaElemento& a = mallas[ia];
        const MallaElemento& b = mallas[ib];
        Hallazgo& h = hallazgos[k];
        if (holgura) {
            const auto s = conArboles ? separacionMallas(a, b, config.holgura)
                                      : separacionMallasDirecta(a, b, config.holgura);
            if (!s || !(s->distancia > 0)) return;
            h = {true, s->distancia, glm::min(s->enA, s->enB), glm::max(s->enA, s->enB)};
            return;
        }
        const ContactoMallas c = conArboles ? contactoMallas(a, b) : contactoMallasDirecto(a, b);
        if (c.chocan && c.profundidad > config.tolerancia) h = {true, c.profundidad, c.min, c.max};
    });

    std::vector<Interferencia> resultado;
    for (std::size_t k = 0; k < cajas.size(); ++k) {
        const Hallazgo& h = hallazgos[k];
        if (!h.conservar) continue;
        Interferencia i = std::move(cajas[k]);
        i.metodo = config.metodo;
        i.distancia = h.distancia;
        const glm::dvec3 c = (h.min + h.max) * 0.5;
        i.centroContacto = c;
        // The view frames the contact region, as the box method frames the
        // overlap of the boxes.
        const glm::dvec3 ext = h.max - h.min;
        i.radio = std::max({0.5, ext.x, ext.y, ext.z});
        const double d = std::max(i.radio * 1.8, 0.5);
        i.viewpointPos = {c.x + d, c.y + 0.6 * d, c.z + d};
        i.viewpointTarget = c;
        resultado.push_back(std::move(i));
    }
    return resultado;
}

} // namespace

std::vector<Interferencia> analizarInterferencias(const std::vector<NodoBB>& candidatos,
                                                  const std::set<std::string>& paresActivos,
                                                  const std::unordered_set<std::string>& excluidos,
                                                  const ConfigAnalisis& config, unsigned hilos) {
    return analizar(candidatos, paresActivos, excluidos, config, hilos, true);
}

std::vector<Interferencia> analizarInterferenciasDirecta(const std::vector<NodoBB>& candidatos,
                                                         const std::set<std::string>& paresActivos,
                                                         const std::unordered_set<std::string>& excluidos,
                                                         const ConfigAnalisis& config, unsigned hilos) {
    return analizar(candidatos, paresActivos, excluidos, config, hilos, false);
}

} // namespace teskal
