#include "timeline/ArbolAWP.h"

#include <algorithm>
#include <unordered_set>

namespace teskal {

namespace {

std::size_t indice(NivelAWP n) { return static_cast<std::size_t>(n); }

const ArbolAWP::Lista& vacia() {
    static const ArbolAWP::Lista lista;
    return lista;
}

} // namespace

std::optional<int> diasEnteros(const QDateTime& desde, const QDateTime& hasta) {
    return diasEnteros(desde, hasta, QTimeZone::systemTimeZone());
}

std::optional<int> diasEnteros(const QDateTime& desde, const QDateTime& hasta, const QTimeZone& zona) {
    if (!desde.isValid() || !hasta.isValid()) return std::nullopt;
    const QDateTime a = desde.toTimeZone(zona);
    const QDateTime b = hasta.toTimeZone(zona);
    auto dias = a.date().daysTo(b.date());
    // A day counts only when it is whole, by the wall clock: from 10:00 to
    // 09:00 of the next day is none.
    if (dias > 0 && b.time() < a.time()) --dias;
    if (dias < 0 && b.time() > a.time()) ++dias;
    return static_cast<int>(dias);
}

ContadorDias::ContadorDias(const QDateTime& desde, const QDateTime& limiteA, const QDateTime& limiteB,
                           const QTimeZone& zona)
    : desde_(desde), zona_(zona) {
    if (!desde.isValid()) return;
    qint64 a = desde.toMSecsSinceEpoch(), b = a;
    for (const QDateTime& l : {limiteA, limiteB})
        if (l.isValid()) {
            a = std::min(a, l.toMSecsSinceEpoch());
            b = std::max(b, l.toMSecsSinceEpoch());
        }
    primero_ = a;
    ultimo_ = b;
    const QDateTime inicio = QDateTime::fromMSecsSinceEpoch(a, Qt::UTC);
    offsetInicial_ = zona.offsetFromUtc(inicio);
    for (const QTimeZone::OffsetData& t :
         zona.transitions(inicio, QDateTime::fromMSecsSinceEpoch(b, Qt::UTC)))
        transiciones_.emplace_back(t.atUtc.toMSecsSinceEpoch(), t.offsetFromUtc);
    desdeLocal_ = local(desde.toMSecsSinceEpoch());
}

qint64 ContadorDias::local(qint64 utc) const {
    const auto it = std::upper_bound(transiciones_.begin(), transiciones_.end(), utc,
                                     [](qint64 v, const auto& t) { return v < t.first; });
    const int offset = it == transiciones_.begin() ? offsetInicial_ : std::prev(it)->second;
    return utc + qint64(offset) * 1000;
}

std::optional<int> ContadorDias::hasta(const QDateTime& fecha) const { return hasta(msDe(fecha)); }

std::optional<int> ContadorDias::hasta(qint64 utc) const {
    if (!desde_.isValid() || utc == std::numeric_limits<qint64>::min()) return std::nullopt;
    if (utc < primero_ || utc > ultimo_)
        return diasEnteros(desde_, QDateTime::fromMSecsSinceEpoch(utc, Qt::UTC), zona_);
    constexpr qint64 dia = 86400000;
    const auto diaDe = [](qint64 ms) { return ms >= 0 ? ms / dia : -((-ms - 1) / dia) - 1; };
    const qint64 a = desdeLocal_, b = local(utc);
    auto dias = diaDe(b) - diaDe(a);
    const qint64 horaA = a - diaDe(a) * dia, horaB = b - diaDe(b) * dia;
    if (dias > 0 && horaB < horaA) --dias;
    if (dias < 0 && horaB > horaA) ++dias;
    return static_cast<int>(dias);
}

namespace {
int duracion(const QDateTime& inicio, const QDateTime& fin) {
    const auto d = diasEnteros(inicio, fin);
    return d && *d >= 2 ? *d : 1;
}
} // namespace

int duracionDias(const PaqueteAWP& p) { return duracion(p.fechaInicio, p.fechaFin); }
int duracionDias(const TimeLinerConfig& c) { return duracion(c.fechaInicio, c.fechaFin); }

std::optional<int> desviacionInicioDias(const PaqueteAWP& p) {
    if (!p.fechaInicioReal) return std::nullopt;
    return diasEnteros(*p.fechaInicioReal, p.fechaInicio);
}

std::optional<int> desviacionFinDias(const PaqueteAWP& p) {
    if (!p.fechaFinReal) return std::nullopt;
    return diasEnteros(*p.fechaFinReal, p.fechaFin);
}

ArbolAWP::ArbolAWP(const TimeLinerConfig& config) : config_(config) {
    inicioMs_.reserve(config.paquetes.size());
    finMs_.reserve(config.paquetes.size());
    const std::size_t n = config.paquetes.size();
    for (const PaqueteAWP& p : config.paquetes) {
        inicioMs_.push_back(msDe(p.fechaInicio));
        finMs_.push_back(msDe(p.fechaFin));
        if (p.nivel == NivelAWP::cwa) cwas_.push_back(&p);
    }
    std::stable_sort(cwas_.begin(), cwas_.end(),
                     [](const PaqueteAWP* a, const PaqueteAWP* b) { return a->codigo < b->codigo; });
    // Every package once by start, equal starts in the config's order: the
    // lists filled in that order come out sorted, with no sort of their own.
    std::vector<std::pair<qint64, std::uint32_t>> orden;
    orden.reserve(n);
    for (std::size_t i = 0; i < n; ++i) orden.emplace_back(inicioMs_[i], static_cast<std::uint32_t>(i));
    std::sort(orden.begin(), orden.end());
    rango_.resize(n);
    for (std::size_t k = 0; k < n; ++k) {
        const std::uint32_t i = orden[k].second;
        rango_[i] = static_cast<std::uint32_t>(k);
        const PaqueteAWP& p = config.paquetes[i];
        if (p.nivel == NivelAWP::iwp) iwps_.push_back(&p);
        auto& listas = p.parentCodigo ? porPadre_[*p.parentCodigo] : sinPadre_;
        listas[indice(p.nivel)].push_back(&p);
    }
    for (const PaqueteAWP* cwa : cwas_)
        if (!iwpsPorCWA_.contains(cwa->codigo)) iwpsPorCWA_.emplace(cwa->codigo, reunirIWPs(cwa->codigo));
}

std::optional<std::size_t> ArbolAWP::posicion(const PaqueteAWP& p) const {
    const PaqueteAWP* base = config_.paquetes.data();
    if (&p < base || &p >= base + config_.paquetes.size()) return std::nullopt;
    return static_cast<std::size_t>(&p - base);
}

qint64 ArbolAWP::inicioMs(const PaqueteAWP& p) const {
    const auto i = posicion(p);
    return i ? inicioMs_[*i] : msDe(p.fechaInicio);
}

qint64 ArbolAWP::finMs(const PaqueteAWP& p) const {
    const auto i = posicion(p);
    return i ? finMs_[*i] : msDe(p.fechaFin);
}

void ArbolAWP::porInicio(Lista& l) const {
    // By each package's place in the order by start, whose ties are in the
    // config's order, as a stable sort would leave them.
    const PaqueteAWP* base = config_.paquetes.data();
    std::sort(l.begin(), l.end(), [&](const PaqueteAWP* a, const PaqueteAWP* b) {
        return rango_[static_cast<std::size_t>(a - base)] < rango_[static_cast<std::size_t>(b - base)];
    });
}

const ArbolAWP::Lista& ArbolAWP::hijos(std::string_view codigo, NivelAWP nivel) const {
    const auto it = porPadre_.find(codigo);
    return it == porPadre_.end() ? vacia() : it->second[indice(nivel)];
}

const ArbolAWP::Lista& ArbolAWP::hijosSinPadre(NivelAWP nivel) const {
    return sinPadre_[indice(nivel)];
}

ArbolAWP::Lista ArbolAWP::iwpsDeCWA(std::string_view codigo) const {
    const auto it = iwpsPorCWA_.find(codigo);
    return it != iwpsPorCWA_.end() ? it->second : reunirIWPs(codigo);
}

ArbolAWP::Lista ArbolAWP::reunirIWPs(std::string_view codigo) const {
    // The parent codes that reach the area, each once: an IWP whose parent is
    // both the area's code and a CWP's is still one IWP.
    std::vector<std::string_view> codigos{codigo};
    for (const PaqueteAWP* cwp : hijos(codigo, NivelAWP::cwp))
        if (std::find(codigos.begin(), codigos.end(), cwp->codigo) == codigos.end())
            codigos.push_back(cwp->codigo);
    Lista r;
    for (const std::string_view c : codigos) {
        const Lista& directos = hijos(c, NivelAWP::iwp);
        r.insert(r.end(), directos.begin(), directos.end());
        if (c.empty()) {
            const Lista& sinPadre = hijosSinPadre(NivelAWP::iwp);
            r.insert(r.end(), sinPadre.begin(), sinPadre.end());
        }
    }
    if (codigos.size() > 1 || codigo.empty()) porInicio(r);
    return r;
}

ArbolAWP::Lista ArbolAWP::paquetesHoja(const PaqueteAWP& p) const {
    switch (p.nivel) {
    case NivelAWP::cwa:
        return iwpsDeCWA(p.codigo);
    case NivelAWP::cwp:
        return hijos(p.codigo, NivelAWP::iwp);
    case NivelAWP::iwp:
    case NivelAWP::pwp:
        break;
    }
    return {&p};
}

template <class F> double ArbolAWP::suma(const PaqueteAWP& p, F valor) const {
    double s = 0;
    for (const PaqueteAWP* h : paquetesHoja(p)) s += valor(*h);
    return s;
}

double ArbolAWP::presupuestoTotal(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.presupuesto; });
}
double ArbolAWP::costoRealTotal(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.costoReal; });
}
double ArbolAWP::hhTotal(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.hh; });
}
double ArbolAWP::hhRealTotal(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.hhReal; });
}
double ArbolAWP::hhGanadas(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.hh * h.progreso; });
}
double ArbolAWP::valorGanado(const PaqueteAWP& p) const {
    return suma(p, [](const PaqueteAWP& h) { return h.presupuesto * h.progreso; });
}

double ArbolAWP::avance(const PaqueteAWP& p) const {
    const Lista hojas = paquetesHoja(p);
    if (hojas.empty()) return p.progreso;
    double presupuesto = 0, ponderado = 0, progreso = 0;
    for (const PaqueteAWP* h : hojas) {
        presupuesto += h->presupuesto;
        ponderado += h->progreso * h->presupuesto;
        progreso += h->progreso;
    }
    return presupuesto > 0 ? ponderado / presupuesto : progreso / static_cast<double>(hojas.size());
}

std::vector<FilaAWP> ArbolAWP::filas(const std::set<std::string>& expandidosCWA) const {
    std::vector<FilaAWP> r;
    std::vector<char> alcanzada(config_.paquetes.size(), 0); // by position: some area reaches it
    for (const PaqueteAWP* cwa : cwas_) {
        r.push_back({cwa, 0});
        for (const PaqueteAWP* iwp : iwpsPorCWA_.at(cwa->codigo)) alcanzada[*posicion(*iwp)] = 1;
        if (!expandidosCWA.contains(cwa->codigo)) continue;
        for (const PaqueteAWP* cwp : hijos(cwa->codigo, NivelAWP::cwp)) {
            r.push_back({cwp, 1});
            for (const PaqueteAWP* iwp : hijos(cwp->codigo, NivelAWP::iwp)) r.push_back({iwp, 2});
        }
        for (const PaqueteAWP* iwp : hijos(cwa->codigo, NivelAWP::iwp)) r.push_back({iwp, 1});
    }
    // The orphans are the IWPs no area reaches, compared by id: one that
    // bears the id of a reached IWP is not an orphan.
    std::unordered_set<std::string_view> candidatas;
    for (const PaqueteAWP* iwp : iwps_)
        if (!alcanzada[*posicion(*iwp)]) candidatas.insert(iwp->id);
    if (candidatas.empty()) return r;
    for (const PaqueteAWP* iwp : iwps_)
        if (alcanzada[*posicion(*iwp)]) candidatas.erase(iwp->id);
    for (const PaqueteAWP* iwp : iwps_)
        if (candidatas.contains(iwp->id)) r.push_back({iwp, 0});
    return r;
}

std::size_t agregarPaquetes(TimeLinerConfig& config, const std::vector<PaqueteAWP>& lista) {
    std::unordered_set<std::string> codigos;
    for (const PaqueteAWP& p : config.paquetes) codigos.insert(p.codigo);
    std::size_t agregados = 0;
    for (const PaqueteAWP& p : lista) {
        if (!codigos.insert(p.codigo).second) continue;
        config.paquetes.push_back(p);
        ++agregados;
    }
    return agregados;
}

} // namespace teskal
