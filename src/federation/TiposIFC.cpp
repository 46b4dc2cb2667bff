#include "federation/TiposIFC.h"

#include "federation/TextoUTF8.h"

#include <cstring>

namespace teskal {

namespace {

constexpr std::array<std::string_view, 17> otrosTipos = {
    "IFCRELDEFINESBYPROPERTIES", "IFCPROPERTYSET", "IFCPROPERTYSINGLEVALUE", "IFCCARTESIANPOINT",
    "IFCPOLYLINE",               "IFCGRIDAXIS",    "IFCGRID",
    "IFCPROJECT",                "IFCUNITASSIGNMENT", "IFCSIUNIT",           "IFCCONVERSIONBASEDUNIT",
    "IFCCONVERSIONBASEDUNITWITHOFFSET", "IFCMEASUREWITHUNIT", "IFCLOCALPLACEMENT", "IFCAXIS2PLACEMENT2D",
    "IFCAXIS2PLACEMENT3D",       "IFCDIRECTION"};

constexpr std::size_t numeroTipos = tiposProductoIFC.size() + otrosTipos.size();
constexpr std::size_t largoMinimo = 7;  // "IFCWALL"
constexpr std::size_t largoMaximo = 32; // "IFCCONVERSIONBASEDUNITWITHOFFSET"

constexpr std::string_view nombreDe(std::size_t i) {
    return i < tiposProductoIFC.size() ? tiposProductoIFC[i]
                                       : otrosTipos[i - tiposProductoIFC.size()];
}

// The recognised names grouped by length, so that a type name is compared
// only with the few names of its own length.
struct TablaPorLargo {
    std::array<std::array<std::uint8_t, numeroTipos>, largoMaximo + 1> codigos{};
    std::array<std::uint8_t, largoMaximo + 1> cuantos{};
};

constexpr TablaPorLargo tablaPorLargo = [] {
    TablaPorLargo t;
    for (std::size_t i = 0; i < numeroTipos; ++i) {
        const std::size_t largo = nombreDe(i).size();
        t.codigos[largo][t.cuantos[largo]++] = static_cast<std::uint8_t>(i);
    }
    return t;
}();

// The comparison in any case below relies on every name being upper-case
// ASCII letters and digits.
constexpr bool nombresValidos = [] {
    for (std::size_t i = 0; i < numeroTipos; ++i) {
        const std::string_view n = nombreDe(i);
        if (n.size() < largoMinimo || n.size() > largoMaximo) return false;
        for (char c : n)
            if ((c < 'A' || c > 'Z') && (c < '0' || c > '9')) return false;
    }
    return true;
}();
static_assert(nombresValidos);

// Per name, the mask of the comparison in any case: bit 5 is cleared under a
// letter only, so that a digit ("IFCAXIS2PLACEMENT3D") is compared exactly.
constexpr auto mascaras = [] {
    std::array<std::array<char, largoMaximo>, numeroTipos> m{};
    for (std::size_t i = 0; i < numeroTipos; ++i) {
        const std::string_view n = nombreDe(i);
        for (std::size_t k = 0; k < n.size(); ++k)
            m[i][k] = static_cast<char>(n[k] >= 'A' && n[k] <= 'Z' ? 0xDF : 0xFF);
    }
    return m;
}();

std::uint64_t palabra(const char* p) {
    std::uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}

std::uint32_t media(const char* p) {
    std::uint32_t w;
    std::memcpy(&w, p, 4);
    return w;
}

// Clearing bit 5 of a byte gives an upper-case letter only from that letter
// in either case, so a name written in any case is compared with the
// upper-case names without upper-casing it first; the name's mask keeps bit 5
// under its digits.

// True when t, of the length of the name, is the name in any case. Eight
// bytes at a time, the last word overlapping the one before.
bool igualSinMayusculas(const char* t, std::string_view nombre, const char* mascara) {
    const std::size_t largo = nombre.size();
    const char* n = nombre.data();
    if (largo < 8)
        return ((media(t) & media(mascara)) == media(n)) &&
               ((media(t + largo - 4) & media(mascara + largo - 4)) == media(n + largo - 4));
    for (std::size_t i = 0; i + 8 < largo; i += 8)
        if ((palabra(t + i) & palabra(mascara + i)) != palabra(n + i)) return false;
    return (palabra(t + largo - 8) & palabra(mascara + largo - 8)) == palabra(n + largo - 8);
}

// The type of a name whose bytes may be in any case.
TipoIFC buscarSinMayusculas(std::string_view t) {
    const std::size_t largo = t.size();
    if (largo < largoMinimo || largo > largoMaximo) return TipoIFC::Otro;
    for (std::size_t k = 0; k < tablaPorLargo.cuantos[largo]; ++k) {
        const std::uint8_t codigo = tablaPorLargo.codigos[largo][k];
        if (igualSinMayusculas(t.data(), nombreDe(codigo), mascaras[codigo].data()))
            return static_cast<TipoIFC>(codigo);
    }
    return TipoIFC::Otro;
}

// The type of an upper-cased name, compared exactly.
TipoIFC buscarExacto(std::string_view mayus) {
    const std::size_t largo = mayus.size();
    if (largo < largoMinimo || largo > largoMaximo) return TipoIFC::Otro;
    for (std::size_t k = 0; k < tablaPorLargo.cuantos[largo]; ++k) {
        const std::uint8_t codigo = tablaPorLargo.codigos[largo][k];
        if (mayus == nombreDe(codigo)) return static_cast<TipoIFC>(codigo);
    }
    return TipoIFC::Otro;
}

bool tieneNoASCII(std::string_view t) {
    std::size_t i = 0;
    for (; i + 8 <= t.size(); i += 8)
        if (palabra(t.data() + i) & 0x8080808080808080ull) return true;
    for (; i < t.size(); ++i)
        if (static_cast<unsigned char>(t[i]) >= 0x80) return true;
    return false;
}

} // namespace

std::string_view nombreTipoIFC(TipoIFC t) {
    const auto i = static_cast<std::size_t>(t);
    return i < numeroTipos ? nombreDe(i) : std::string_view();
}

TipoIFC clasificarTipoIFC(std::string_view tipoEscrito) {
    const std::string_view t = recortar(tipoEscrito);
    // A match is all ASCII letters; only a name that matches nothing may
    // hold other bytes.
    const TipoIFC tipo = buscarSinMayusculas(t);
    if (tipo != TipoIFC::Otro || !tieneNoASCII(t)) return tipo;
    // Unicode upper-casing can map other characters to ASCII letters
    // (U+0131 to "I", U+017F to "S") and change the length: such names are
    // upper-cased whole first.
    return buscarExacto(aMayusculas(t));
}

} // namespace teskal
