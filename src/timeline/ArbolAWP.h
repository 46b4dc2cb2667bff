#pragma once

#include "timeline/PaqueteAWP.h"

#include <QTimeZone>
#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The work-package tree read from the flat list of a timeline: the searches
// by level and parent, the roll-ups of the installation packages (IWP) into
// their areas and construction packages, and the rows that the tables and
// the Gantt show.
namespace teskal {

// The whole days from `desde` to `hasta` by the calendar in the zone
// (negative when `hasta` comes first); none when a date is invalid. Callers
// that count many spans take the system zone once: each plain local-time
// conversion asks the system for its zone again.
std::optional<int> diasEnteros(const QDateTime& desde, const QDateTime& hasta, const QTimeZone& zona);
// The same in the system's zone.
std::optional<int> diasEnteros(const QDateTime& desde, const QDateTime& hasta);

// Whole days from one date to many others, in a zone: the zone's offsets
// between the two limits are read once, so each count is arithmetic. Gives
// what diasEnteros gives.
class ContadorDias {
public:
    ContadorDias(const QDateTime& desde, const QDateTime& limiteA, const QDateTime& limiteB,
                 const QTimeZone& zona = QTimeZone::systemTimeZone());
    std::optional<int> hasta(const QDateTime& fecha) const;
    // The same for an instant in milliseconds since the epoch (msDe).
    std::optional<int> hasta(qint64 ms) const;

private:
    // The local wall-clock milliseconds of an instant.
    qint64 local(qint64 utc) const;

    QDateTime desde_;
    QTimeZone zona_;
    qint64 desdeLocal_ = 0;
    qint64 primero_ = 0, ultimo_ = 0; // the span whose offsets are known
    int offsetInicial_ = 0;             // seconds, before the first transition
    std::vector<std::pair<qint64, int>> transiciones_; // instant, offset from then on
};

// The whole days of a planned span; under 2, or none, gives 1.
int duracionDias(const PaqueteAWP& p);
int duracionDias(const TimeLinerConfig& c);
// The days from the actual date to the planned one: positive when the actual
// date came earlier than planned. None without the actual date.
std::optional<int> desviacionInicioDias(const PaqueteAWP& p);
std::optional<int> desviacionFinDias(const PaqueteAWP& p);

// A row of the package tree.
struct FilaAWP {
    const PaqueteAWP* pkg = nullptr;
    int sangria = 0;
};

// An index over one config's packages, built once and read by every
// search: the packages are neither copied nor filtered again per question.
// It points into the config, so it lives no longer than the config is left
// unchanged.
class ArbolAWP {
public:
    using Lista = std::vector<const PaqueteAWP*>;

    explicit ArbolAWP(const TimeLinerConfig& config);

    const TimeLinerConfig& config() const { return config_; }
    // The areas by codigo; the installation packages by planned start.
    const Lista& cwas() const { return cwas_; }
    const Lista& iwps() const { return iwps_; }
    // The packages of the level whose parent is the code, by planned start.
    const Lista& hijos(std::string_view codigo, NivelAWP nivel) const;
    // The IWPs of an area: hanging from it or from one of its CWPs, by
    // planned start; an IWP without parent counts as the child of "".
    Lista iwpsDeCWA(std::string_view codigo) const;
    // The packages that carry a package's figures: the IWPs of an area or of
    // a CWP, the package itself for an IWP or a PWP.
    Lista paquetesHoja(const PaqueteAWP& p) const;

    // Roll-ups over paquetesHoja; 0 for an empty list.
    double presupuestoTotal(const PaqueteAWP& p) const;
    double costoRealTotal(const PaqueteAWP& p) const;
    double hhTotal(const PaqueteAWP& p) const;
    double hhRealTotal(const PaqueteAWP& p) const;
    double hhGanadas(const PaqueteAWP& p) const;
    double valorGanado(const PaqueteAWP& p) const;
    // Progress weighted by budget (the plain mean when every budget is 0);
    // a package with no leaves keeps its own typed progress.
    double avance(const PaqueteAWP& p) const;

    // The rows: every area, the children of the expanded ones, and the IWPs
    // that no area reaches at the end.
    std::vector<FilaAWP> filas(const std::set<std::string>& expandidosCWA) const;

    // A package's planned dates in milliseconds since the epoch, read once
    // when the index is built (the minimum for an invalid date).
    qint64 inicioMs(const PaqueteAWP& p) const;
    qint64 finMs(const PaqueteAWP& p) const;

private:
    template <class F> double suma(const PaqueteAWP& p, F valor) const;
    const Lista& hijosSinPadre(NivelAWP nivel) const;

    // The position of a package of the config, or none for another one.
    std::optional<std::size_t> posicion(const PaqueteAWP& p) const;
    // Sorts by planned start, equal starts in the order of the config.
    void porInicio(Lista& l) const;
    Lista reunirIWPs(std::string_view codigo) const;

    const TimeLinerConfig& config_;
    std::vector<qint64> inicioMs_, finMs_; // by position in the config
    std::vector<std::uint32_t> rango_;      // place in the order by start, by position in the config
    Lista cwas_;
    Lista iwps_;
    // By parent code, one list per level; packages without a parent apart.
    std::unordered_map<std::string_view, std::array<Lista, 4>> porPadre_;
    std::array<Lista, 4> sinPadre_;
    std::unordered_map<std::string_view, Lista> iwpsPorCWA_; // of every area's code
};

// Milliseconds since the epoch, the minimum for an invalid date.
inline qint64 msDe(const QDateTime& f) {
    return f.isValid() ? f.toMSecsSinceEpoch() : std::numeric_limits<qint64>::min();
}

// Appends each package whose codigo no package of the config (nor one
// appended before it) bears; the others are dropped. Existing packages are
// never updated. Gives how many were appended.
std::size_t agregarPaquetes(TimeLinerConfig& config, const std::vector<PaqueteAWP>& lista);

} // namespace teskal
