// The AWP detector: the scan of the property index for the four levels, the
// parents inferred from shared elements, and the import of the chosen
// packages into the timeline.
#include "timeline/DetectorAWP.h"

#include <algorithm>
#include <unordered_set>

namespace teskal {

std::optional<NivelAWP> nivelDePropiedad(std::string_view clave) {
    // Most keys end in a longer ASCII name ("Pset_WallCommon › IsExternal"):
    // when the fourth byte from the end is neither a blank nor part of one,
    // the last part is longer than three letters and can't name a level.
    if (clave.size() > 4) {
        const auto ultimo = static_cast<unsigned char>(clave.back());
        const auto cuarto = static_cast<unsigned char>(clave[clave.size() - 4]);
        if (ultimo > ' ' && ultimo < 0x80 && cuarto > ' ' && cuarto < 0x80) return std::nullopt;
    }
    const auto corte = clave.rfind(separadorPropiedad);
    return nivelEscrito(corte == std::string_view::npos ? clave : clave.substr(corte + separadorPropiedad.size()));
}

std::vector<ResultadoAWP> detectarAWP(const PropiedadesPorEspecialidad& propiedades) {
    // Views into the index, which outlives the scan: each hit is a code's
    // number and an element's name in one list per level, laid out by code
    // at the end; no list of its own per code while scanning.
    struct Acierto {
        std::uint32_t codigo;
        std::string_view nombre;
    };
    std::array<std::vector<std::string_view>, 4> codigos;
    std::array<std::unordered_map<std::string_view, std::uint32_t>, 4> numeroCodigo;
    std::array<std::vector<Acierto>, 4> aciertos;
    for (const auto& [clave, modelo] : propiedades)
        for (const auto& [nombre, propiedadesElemento] : modelo)
            for (const auto& [propiedad, valor] : propiedadesElemento) {
                if (valor.empty()) continue;
                const auto nivel = nivelDePropiedad(propiedad);
                if (!nivel) continue;
                const auto n = static_cast<std::size_t>(*nivel);
                const auto [it, nuevo] =
                    numeroCodigo[n].try_emplace(valor, static_cast<std::uint32_t>(codigos[n].size()));
                if (nuevo) codigos[n].push_back(valor);
                aciertos[n].push_back({it->second, nombre});
            }

    std::vector<ResultadoAWP> resultados;
    std::vector<std::uint32_t> desde, orden;
    std::vector<std::string_view> nombres;
    for (NivelAWP nivel : nivelesAWP) {
        const auto n = static_cast<std::size_t>(nivel);
        const std::size_t cuantos = codigos[n].size();
        // The names by code: counted, then placed.
        desde.assign(cuantos + 1, 0);
        for (const Acierto& a : aciertos[n]) ++desde[a.codigo + 1];
        for (std::size_t i = 0; i < cuantos; ++i) desde[i + 1] += desde[i];
        nombres.resize(aciertos[n].size());
        {
            std::vector<std::uint32_t> cursor(desde.begin(), desde.end() - 1);
            for (const Acierto& a : aciertos[n]) nombres[cursor[a.codigo]++] = a.nombre;
        }
        orden.resize(cuantos);
        for (std::uint32_t i = 0; i < cuantos; ++i) orden[i] = i;
        std::sort(orden.begin(), orden.end(),
                  [&](std::uint32_t a, std::uint32_t b) { return codigos[n][a] < codigos[n][b]; });
        for (const std::uint32_t c : orden) {
            const auto inicio = nombres.begin() + desde[c], fin = nombres.begin() + desde[c + 1];
            std::sort(inicio, fin);
            ResultadoAWP& r = resultados.emplace_back();
            r.nivel = nivel;
            r.codigo = codigos[n][c];
            r.elementos.assign(inicio, std::unique(inicio, fin));
        }
    }
    return resultados;
}

InferenciaPadres::InferenciaPadres(const std::vector<const ResultadoAWP*>& candidatos) {
    // Numbers the names, then lays out each level's lists of candidates by
    // name in one buffer: no list of its own per name.
    std::size_t total = 0;
    for (const ResultadoAWP* c : candidatos) total += c->elementos.size();
    idNombre_.reserve(total);
    std::vector<std::uint32_t> ids;
    ids.reserve(total);
    for (const ResultadoAWP* c : candidatos)
        for (const std::string& nombre : c->elementos)
            ids.push_back(idNombre_.try_emplace(nombre, static_cast<std::uint32_t>(idNombre_.size())).first->second);
    const std::size_t nombres = idNombre_.size();
    // Counts per level and name, then the lists filled in candidate order;
    // a name twice in one candidate counts once (marca: the last candidate
    // that took the name, plus one).
    std::vector<std::uint32_t> marca(nombres, 0);
    for (auto& d : desde_) d.assign(nombres + 1, 0);
    std::size_t k = 0;
    for (std::size_t ci = 0; ci < candidatos.size(); ++ci) {
        const auto n = static_cast<std::size_t>(candidatos[ci]->nivel);
        for (std::size_t i = 0; i < candidatos[ci]->elementos.size(); ++i, ++k)
            if (marca[ids[k]] != ci + 1) {
                marca[ids[k]] = static_cast<std::uint32_t>(ci + 1);
                ++desde_[n][ids[k] + 1];
            }
    }
    std::array<std::vector<std::uint32_t>, 4> cursor;
    for (std::size_t n = 0; n < 4; ++n) {
        for (std::size_t i = 0; i < nombres; ++i) desde_[n][i + 1] += desde_[n][i];
        posiciones_[n].assign(desde_[n][nombres], 0);
        cursor[n].assign(desde_[n].begin(), desde_[n].end() - 1);
    }
    std::fill(marca.begin(), marca.end(), 0);
    k = 0;
    for (std::size_t ci = 0; ci < candidatos.size(); ++ci) {
        const auto n = static_cast<std::size_t>(candidatos[ci]->nivel);
        const auto posicion = static_cast<std::uint32_t>(porNivel_[n].size());
        porNivel_[n].push_back(candidatos[ci]);
        for (std::size_t i = 0; i < candidatos[ci]->elementos.size(); ++i, ++k)
            if (marca[ids[k]] != ci + 1) {
                marca[ids[k]] = static_cast<std::uint32_t>(ci + 1);
                posiciones_[n][cursor[n][ids[k]]++] = posicion;
            }
    }
    vistoEn_.assign(nombres, 0);
    std::size_t mayor = 0;
    for (std::size_t n = 0; n < 4; ++n) mayor = std::max(mayor, porNivel_[n].size());
    comunes_.assign(mayor, 0);
}

std::optional<std::string> InferenciaPadres::inferirPadre(NivelAWP nivelPadre,
                                                          const std::vector<std::string>& elementos) const {
    const auto n = static_cast<std::size_t>(nivelPadre);
    if (porNivel_[n].empty()) return std::nullopt;
    // Each of the child's names once (vistoEn_: the question that last
    // took the name).
    ++pregunta_;
    for (const std::string& nombre : elementos) {
        const auto it = idNombre_.find(nombre);
        if (it == idNombre_.end() || vistoEn_[it->second] == pregunta_) continue;
        vistoEn_[it->second] = pregunta_;
        for (std::uint32_t i = desde_[n][it->second]; i < desde_[n][it->second + 1]; ++i) {
            const std::uint32_t posicion = posiciones_[n][i];
            if (comunes_[posicion]++ == 0) tocados_.push_back(posicion);
        }
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
    FabricaPaquetes fabrica(ahora);
    for (const ResultadoAWP* r : elegidos) {
        if (!tomados.insert(r->codigo).second) continue;
        PaqueteAWP p = fabrica.nuevo();
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
