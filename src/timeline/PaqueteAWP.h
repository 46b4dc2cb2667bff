#pragma once

#include <QDateTime>
#include <QRandomGenerator>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The work-package tree of the timeline: one flat list of packages tied by the
// code of their parent. Budget, cost, man-hours and progress belong to the
// installation packages (IWP); areas and construction packages roll them up.
namespace teskal {

enum class NivelAWP { cwa, cwp, iwp, pwp };

inline constexpr std::array<NivelAWP, 4> nivelesAWP = {NivelAWP::cwa, NivelAWP::cwp, NivelAWP::iwp,
                                                       NivelAWP::pwp};

// The stored text of a level: "CWA", "CWP", "IWP", "PWP".
std::string_view textoNivel(NivelAWP nivel);
// The level of a stored text, compared exactly; no level for any other text.
std::optional<NivelAWP> nivelDesdeTexto(std::string_view texto);
// The level a user's text names: trimmed of blanks and upper-cased by
// Unicode rules, one of the four stored texts ("cwa " names CWA).
std::optional<NivelAWP> nivelEscrito(std::string_view texto);

// One package. The hierarchy and the merges go by codigo, not by id.
struct PaqueteAWP {
    std::string id; // UUID, upper case
    std::string codigo;
    std::string nombre;
    NivelAWP nivel = NivelAWP::iwp;
    std::optional<std::string> parentCodigo;
    QDateTime fechaInicio; // planned, UTC
    QDateTime fechaFin;
    std::optional<QDateTime> fechaInicioReal; // actual
    std::optional<QDateTime> fechaFinReal;
    double progreso = 0; // fraction from 0 to 1
    double presupuesto = 0;
    double costoReal = 0;
    double hh = 0; // planned man-hours
    double hhReal = 0;
    std::vector<std::string> elementosNombre; // names of the assigned scene elements
    int colorIdx = 0;                         // index into the package palette, modulo 8
    friend bool operator==(const PaqueteAWP&, const PaqueteAWP&) = default;

    // A new package: a fresh id, level IWP, planned from `ahora` to 30 days
    // later by the calendar in local time.
    static PaqueteAWP nuevo(const QDateTime& ahora = QDateTime::currentDateTimeUtc());
};

// New packages of one moment in bulk, as an import makes them: the defaults
// of PaqueteAWP::nuevo computed once, and each package with a fresh id (a
// random UUID) from a generator that the system's seeds once; asking the
// system for every id costs more than the rest of an imported row.
class FabricaPaquetes {
public:
    explicit FabricaPaquetes(const QDateTime& ahora = QDateTime::currentDateTimeUtc());
    PaqueteAWP nuevo();

private:
    PaqueteAWP base_;
    QRandomGenerator64 azar_;
};

// The timeline of a project.
struct TimeLinerConfig {
    std::vector<PaqueteAWP> paquetes; // all levels in one flat list
    QDateTime fechaInicio;            // the project's time axis, UTC
    QDateTime fechaFin;
    std::string moneda = "USD";
    friend bool operator==(const TimeLinerConfig&, const TimeLinerConfig&) = default;

    // The timeline of a project that has none: no packages, from `ahora` to
    // 12 months later by the calendar in local time, in "USD".
    static TimeLinerConfig porDefecto(const QDateTime& ahora = QDateTime::currentDateTimeUtc());
};

} // namespace teskal
