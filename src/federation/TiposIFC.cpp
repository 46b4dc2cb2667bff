#include "federation/TiposIFC.h"

#include "federation/TextoUTF8.h"

namespace teskal {

namespace {

constexpr std::array<std::string_view, 7> otrosTipos = {
    "IFCRELDEFINESBYPROPERTIES", "IFCPROPERTYSET", "IFCPROPERTYSINGLEVALUE", "IFCCARTESIANPOINT",
    "IFCPOLYLINE",               "IFCGRIDAXIS",    "IFCGRID"};

constexpr std::size_t numeroTipos = tiposProductoIFC.size() + otrosTipos.size();
constexpr std::size_t largoMinimo = 7;  // "IFCWALL"
constexpr std::size_t largoMaximo = 25; // "IFCRELDEFINESBYPROPERTIES"

constexpr std::string_view nombreDe(std::size_t i) {
    return i < tiposProductoIFC.size() ? tiposProductoIFC[i] : otrosTipos[i - tiposProductoIFC.size()];
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

// The comparison below relies on every name being "IFC" and upper-case
// letters within the lengths of the table.
constexpr bool nombresValidos = [] {
    for (std::size_t i = 0; i < numeroTipos; ++i) {
        const std::string_view n = nombreDe(i);
        if (n.size() < largoMinimo || n.size() > largoMaximo || n.substr(0, 3) != "IFC") return false;
        for (char c : n)
            if (c < 'A' || c > 'Z') return false;
    }
    return true;
}();
static_assert(nombresValidos);

// The type of an ASCII name written in any case. Clearing bit 5 of a byte
// gives an upper-case letter only for that letter in either case, so the
// comparison with the upper-case names needs no upper-casing of the text.
TipoIFC buscarSinMayusculas(std::string_view t) {
    if (t.size() < largoMinimo || t.size() > largoMaximo) return TipoIFC::Otro;
    const auto* u = reinterpret_cast<const unsigned char*>(t.data());
    if ((u[0] & 0xDF) != 'I' || (u[1] & 0xDF) != 'F' || (u[2] & 0xDF) != 'C') return TipoIFC::Otro;
    const std::size_t largo = t.size();
    for (std::size_t k = 0; k < tablaPorLargo.cuantos[largo]; ++k) {
        const std::uint8_t codigo = tablaPorLargo.codigos[largo][k];
        const std::string_view nombre = nombreDe(codigo);
        std::size_t i = 3;
        while (i < largo && (u[i] & 0xDF) == static_cast<unsigned char>(nombre[i])) ++i;
        if (i == largo) return static_cast<TipoIFC>(codigo);
    }
    return TipoIFC::Otro;
}

} // namespace

std::string_view nombreTipoIFC(TipoIFC t) {
    const auto i = static_cast<std::size_t>(t);
    return i < numeroTipos ? nombreDe(i) : std::string_view();
}

TipoIFC clasificarTipoIFC(std::string_view tipoEscrito) {
    const std::string_view t = recortar(tipoEscrito);
    for (char c : t) {
        // Unicode upper-casing can map other characters to ASCII letters
        // (U+0131 to "I", U+017F to "S") and change the length: such names
        // are upper-cased whole first.
        if (static_cast<unsigned char>(c) >= 0x80) return buscarSinMayusculas(aMayusculas(t));
    }
    return buscarSinMayusculas(t);
}

} // namespace teskal
