#include "timeline/PaqueteAWP.h"

#include <QUuid>

namespace teskal {

std::string_view textoNivel(NivelAWP nivel) {
    switch (nivel) {
    case NivelAWP::cwa:
        return "CWA";
    case NivelAWP::cwp:
        return "CWP";
    case NivelAWP::iwp:
        return "IWP";
    case NivelAWP::pwp:
        return "PWP";
    }
    return "IWP";
}

std::optional<NivelAWP> nivelDesdeTexto(std::string_view texto) {
    for (NivelAWP n : nivelesAWP)
        if (textoNivel(n) == texto) return n;
    return std::nullopt;
}

PaqueteAWP PaqueteAWP::nuevo(const QDateTime& ahora) {
    PaqueteAWP p;
    p.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    p.fechaInicio = ahora.toUTC();
    // Calendar days in local time: a change of daylight saving time on the way
    // keeps the wall-clock time, as the planner expects.
    const QDateTime fin = ahora.toLocalTime().addDays(30);
    p.fechaFin = fin.isValid() ? fin.toUTC() : p.fechaInicio;
    return p;
}

TimeLinerConfig TimeLinerConfig::porDefecto(const QDateTime& ahora) {
    TimeLinerConfig c;
    c.fechaInicio = ahora.toUTC();
    const QDateTime fin = ahora.toLocalTime().addMonths(12);
    c.fechaFin = fin.isValid() ? fin.toUTC() : c.fechaInicio;
    return c;
}

} // namespace teskal
