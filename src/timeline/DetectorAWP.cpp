// The AWP detector: the scan of the property index for the four levels, the
// parents inferred from shared elements, and the import of the chosen
// packages into the timeline.
#include "timeline/DetectorAWP.h"

#include <algorithm>
#include <unordered_set>

namespace teskal {

std::optional<NivelAWP> nivelDePropiedad(std::string_view clave) {
    const auto corte = clave.rfind(separadorPropiedad);
    return nivelEscrito(corte == std::string_view::npos ? clave : clave.substr(corte + separadorPropiedad.size()));
}

std::vector<ResultadoAWP> detectarAWP(const PropiedadesPorEspecialidad& propiedades) {
    // Views into the index, which outlives the scan: a code's elements are
    // gathered as they come and sorted once at the end.
    struct Grupo {
        std::string_view codigo;
        std::vector<std::string_view> nombres;
    };
    std::array<std::vector<Grupo>, 4> grupos;
    std::array<std::unordered_map<std::string_view, std::size_t>, 4> porCodigo;
    for (const auto& [clave, modelo] : propiedades)
        for (const auto& [nombre, propiedadesElemento] : modelo)
            for (const auto& [propiedad, valor] : propiedadesElemento) {
                if (valor.empty()) continue;
                const auto nivel = nivelDePropiedad(propiedad);
                if (!nivel) continue;
                const auto n = static_cast<std::size_t>(*nivel);
                const auto [it, nuevo] = porCodigo[n].try_emplace(valor, grupos[n].size());
                if (nuevo) grupos[n].push_back({valor, {}});
                grupos[n][it->second].nombres.push_back(nombre);
            }

    std::vector<ResultadoAWP> resultados;
    for (NivelAWP nivel : nivelesAWP) {
        auto& lista = grupos[static_cast<std::size_t>(nivel)];
        std::sort(lista.begin(), lista.end(), [](const Grupo& a, const Grupo& b) { return a.codigo < b.codigo; });
        for (Grupo& g : lista) {
            std::sort(g.nombres.begin(), g.nombres.end());
            g.nombres.erase(std::unique(g.nombres.begin(), g.nombres.end()), g.nombres.end());
            ResultadoAWP& r = resultados.emplace_back();
            r.nivel = nivel;
            r.codigo = g.codigo;
            r.elementos.assign(g.nombres.begin(), g.nombres.end());
        }
    }
    return resultados;
}

InferenciaPadres::InferenciaPadres(const std::vector<const ResultadoAWP*>& candidatos) {
    std::size_t mayor = 0;
    for (const ResultadoAWP* c : candidatos) {
        const auto n = static_cast<std::size_t>(c->nivel);
        const auto posicion = static_cast<std::uint32_t>(porNivel_[n].size());
        porNivel_[n].push_back(c);
        mayor = std::max(mayor, porNivel_[n].size());
        for (const std::string& nombre : c->elementos) {
            auto& lista = porElemento_[n][nombre];
            if (lista.empty() || lista.back() != posicion) lista.push_back(posicion);
        }
    }
    comunes_.assign(mayor, 0);
}

std::optional<std::string> InferenciaPadres::inferirPadre(NivelAWP nivelPadre,
                                                          const std::vector<std::string>& elementos) const {
    const auto n = static_cast<std::size_t>(nivelPadre);
    const auto& indice = porElemento_[n];
    if (indice.empty()) return std::nullopt;
    for (const std::string& nombre : elementos) {
        const auto it = indice.find(nombre);
        if (it == indice.end()) continue;
        for (const std::uint32_t posicion : it->second)
            if (comunes_[posicion]++ == 0) tocados_.push_back(posicion);
    }
    if (tocados_.empty()) return std::nullopt;
    // The most names in common; of equals, the first candidate.
    std::uint32_t mejor = tocados_.front();
    for (const std::uint32_t posicion : tocados_)
        if (comunes_[posicion] > comunes_[mejor] || (comunes_[posicion] == comunes_[mejor] && posicion < mejor))
            mejor = posicion;
    for (const std::uint32_t posicion : tocados_) comunes_[posicion] = 0;
    tocados_.clear();
    return porNivel_[n][mejor]->codigo;
}

std::optional<std::string> inferirPadre(NivelAWP nivelPadre, const std::vector<std::string>& elementos,
                                        const std::vector<ResultadoAWP>& candidatos) {
    std::vector<const ResultadoAWP*> punteros;
    punteros.reserve(candidatos.size());
    for (const ResultadoAWP& c : candidatos) punteros.push_back(&c);
    return InferenciaPadres(punteros).inferirPadre(nivelPadre, elementos);
}

std::size_t importarDetectados(TimeLinerConfig& config, const std::vector<ResultadoAWP>& resultados,
                               const std::set<std::string>& seleccionados, const QDateTime& ahora) {
    std::vector<const ResultadoAWP*> elegidos;
    for (const ResultadoAWP& r : resultados)
        if (seleccionados.contains(r.codigo)) elegidos.push_back(&r);
    const InferenciaPadres padres(elegidos);

    // The codes taken: those of the config and of the results appended
    // before; views into the config's own texts, which stay in place since
    // the list grows no further than reserved.
    config.paquetes.reserve(config.paquetes.size() + elegidos.size());
    std::unordered_set<std::string_view> tomados;
    for (const PaqueteAWP& p : config.paquetes) tomados.insert(p.codigo);
    std::size_t agregados = 0;
    for (const ResultadoAWP* r : elegidos) {
        if (!tomados.insert(r->codigo).second) continue;
        PaqueteAWP p = PaqueteAWP::nuevo(ahora);
        p.codigo = r->codigo;
        p.nombre = r->codigo;
        p.nivel = r->nivel;
        p.elementosNombre = r->elementos;
        switch (r->nivel) {
        case NivelAWP::cwa:
            break;
        case NivelAWP::cwp:
            p.parentCodigo = padres.inferirPadre(NivelAWP::cwa, r->elementos);
            break;
        case NivelAWP::iwp:
            p.parentCodigo = padres.inferirPadre(NivelAWP::cwp, r->elementos);
            if (!p.parentCodigo) p.parentCodigo = padres.inferirPadre(NivelAWP::cwa, r->elementos);
            break;
        case NivelAWP::pwp:
            p.parentCodigo = padres.inferirPadre(NivelAWP::iwp, r->elementos);
            break;
        }
        config.paquetes.push_back(std::move(p));
        ++agregados;
    }

    // The axis spans every package's plan.
    std::optional<QDateTime> inicio, fin;
    for (const PaqueteAWP& p : config.paquetes) {
        if (p.fechaInicio.isValid() && (!inicio || p.fechaInicio < *inicio)) inicio = p.fechaInicio;
        if (p.fechaFin.isValid() && (!fin || p.fechaFin > *fin)) fin = p.fechaFin;
    }
    if (inicio) config.fechaInicio = *inicio;
    if (fin) config.fechaFin = *fin;
    return agregados;
}

} // namespace teskal
