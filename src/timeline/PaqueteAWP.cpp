#include "timeline/PaqueteAWP.h"

#include "federation/TextoUTF8.h"

#include <QUuid>
#include <algorithm>

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

std::optional<NivelAWP> nivelEscrito(std::string_view texto) {
    texto = recortar(texto);
    // Three ASCII letters, the common case, are upper-cased in place. Other
    // short texts go by Unicode rules, where a dotless i or a long s becomes
    // an ASCII letter; a long text can't come down to three letters.
    if (texto.size() == 3) {
        char mayusculas[3];
        bool ascii = true;
        for (std::size_t i = 0; i < 3; ++i) {
            const char c = texto[i];
            ascii = ascii && static_cast<unsigned char>(c) < 0x80;
            mayusculas[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        if (ascii) return nivelDesdeTexto(std::string_view(mayusculas, 3));
    }
    if (texto.size() < 3 || texto.size() > 12 ||
        std::all_of(texto.begin(), texto.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return std::nullopt;
    return nivelDesdeTexto(aMayusculas(texto));
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
