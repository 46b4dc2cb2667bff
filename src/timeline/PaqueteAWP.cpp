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

FabricaPaquetes::FabricaPaquetes(const QDateTime& ahora) : base_(PaqueteAWP::nuevo(ahora)) {
    std::array<quint32, 8> semilla;
    QRandomGenerator::system()->fillRange(semilla.data(), semilla.size());
    azar_ = QRandomGenerator64(semilla.data(), semilla.data() + semilla.size());
}

PaqueteAWP FabricaPaquetes::nuevo() {
    // A version 4 UUID of the RFC's variant, in upper case without braces.
    std::array<quint64, 2> bits{azar_.generate64(), azar_.generate64()};
    bits[0] = (bits[0] & ~0xF000ull) | 0x4000ull;
    bits[1] = (bits[1] & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;
    static constexpr char hex[] = "0123456789ABCDEF";
    PaqueteAWP p = base_;
    p.id.assign(36, '-');
    std::size_t j = 0;
    for (int i = 0; i < 32; ++i) {
        if (i == 8 || i == 12 || i == 16 || i == 20) ++j;
        const quint64 palabra = bits[static_cast<std::size_t>(i / 16)];
        p.id[j++] = hex[(palabra >> (60 - 4 * (i % 16))) & 0xF];
    }
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
