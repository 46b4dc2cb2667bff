#include "federation/TiposIFC.h"

#include "federation/TextoUTF8.h"

#include <bit>
#include <cstring>
#include <type_traits>

namespace teskal {

namespace {

// The types with a role of their own, in the order of TipoIFC from
// RelDefinesByType on.
constexpr std::array<std::string_view, 26> otrosTipos = {
    "IFCRELDEFINESBYTYPE", "IFCELEMENTQUANTITY", "IFCQUANTITYLENGTH",   "IFCQUANTITYAREA",
    "IFCQUANTITYVOLUME",   "IFCQUANTITYCOUNT",   "IFCQUANTITYWEIGHT",   "IFCQUANTITYTIME",
    "IFCQUANTITYNUMBER",   "IFCRELDEFINESBYPROPERTIES", "IFCPROPERTYSET", "IFCPROPERTYSINGLEVALUE",
    "IFCCARTESIANPOINT",   "IFCPOLYLINE",        "IFCGRIDAXIS",         "IFCGRID",
    "IFCPROJECT",          "IFCUNITASSIGNMENT",  "IFCSIUNIT",           "IFCCONVERSIONBASEDUNIT",
    "IFCCONVERSIONBASEDUNITWITHOFFSET", "IFCMEASUREWITHUNIT", "IFCLOCALPLACEMENT", "IFCAXIS2PLACEMENT2D",
    "IFCAXIS2PLACEMENT3D", "IFCDIRECTION"};
constexpr std::uint8_t primerOtroTipo = static_cast<std::uint8_t>(TipoIFC::RelDefinesByType);
static_assert(otrosTipos[static_cast<std::uint8_t>(TipoIFC::Grid) - primerOtroTipo] == "IFCGRID");
static_assert(otrosTipos.size() == static_cast<std::uint8_t>(TipoIFC::Direction) - primerOtroTipo + 1);

// Every recognised name, once: the products, the type objects, and the other
// types that are not products.
struct Reconocido {
    std::string_view nombre;
    ClaseIFC clase;
};

constexpr std::size_t numeroReconocidos = [] {
    std::size_t n = nombresProductoIFC.size() + nombresObjetoTipoIFC.size();
    for (const std::string_view o : otrosTipos) {
        bool esProducto = false;
        for (const std::string_view p : nombresProductoIFC) esProducto = esProducto || p == o;
        if (!esProducto) ++n;
    }
    return n;
}();

constexpr std::array<Reconocido, numeroReconocidos> reconocidos = [] {
    std::array<Reconocido, numeroReconocidos> r{};
    std::size_t n = 0;
    for (std::size_t i = 0; i < nombresProductoIFC.size(); ++i) {
        ClaseIFC c{TipoIFC::Producto, static_cast<std::uint16_t>(i)};
        for (std::size_t k = 0; k < otrosTipos.size(); ++k)
            if (otrosTipos[k] == nombresProductoIFC[i])
                c.tipo = static_cast<TipoIFC>(primerOtroTipo + k);
        r[n++] = {nombresProductoIFC[i], c};
    }
    for (const std::string_view t : nombresObjetoTipoIFC)
        r[n++] = {t, {TipoIFC::ObjetoTipo, sinProductoIFC}};
    for (std::size_t k = 0; k < otrosTipos.size(); ++k) {
        bool esProducto = false;
        for (const std::string_view p : nombresProductoIFC) esProducto = esProducto || p == otrosTipos[k];
        if (!esProducto)
            r[n++] = {otrosTipos[k], {static_cast<TipoIFC>(primerOtroTipo + k), sinProductoIFC}};
    }
    return r;
}();

constexpr std::size_t largoMinimo = [] {
    std::size_t m = SIZE_MAX;
    for (const auto& r : reconocidos) m = r.nombre.size() < m ? r.nombre.size() : m;
    return m;
}();
constexpr std::size_t largoMaximo = [] {
    std::size_t m = 0;
    for (const auto& r : reconocidos) m = r.nombre.size() > m ? r.nombre.size() : m;
    return m;
}();

// The comparison in any case below relies on every name being upper-case
// ASCII letters and digits, and the hash on reading at least four bytes.
constexpr bool nombresValidos = [] {
    if (largoMinimo < 4) return false;
    for (const auto& r : reconocidos)
        for (char c : r.nombre)
            if ((c < 'A' || c > 'Z') && (c < '0' || c > '9')) return false;
    return true;
}();
static_assert(nombresValidos);
static_assert(numeroReconocidos < 0xFFFF && largoMaximo < 0x100);

// The word with its ASCII lower-case letters upper-cased and every other byte
// as it is, eight bytes at once: a name written in any case is compared with
// the upper-case names without a copy.
constexpr std::uint64_t aMayusculas8(std::uint64_t w) {
    constexpr std::uint64_t unos = 0x0101010101010101ull;
    const std::uint64_t siete = w & (0x7F * unos);
    const std::uint64_t desdeA = siete + (0x80 - 'a') * unos;   // bit 7: at least 'a'
    const std::uint64_t trasZ = siete + (0x80 - 'z' - 1) * unos; // bit 7: past 'z'
    const std::uint64_t minuscula = desdeA & ~trasZ & ~w & (0x80 * unos);
    return w ^ (minuscula >> 2);
}

// Little-endian words of the text, the same at compile time and at run time.
constexpr std::uint64_t cargar(const char* p, std::size_t n) {
    if (std::is_constant_evaluated()) {
        std::uint64_t w = 0;
        for (std::size_t i = 0; i < n; ++i) w |= std::uint64_t(static_cast<unsigned char>(p[i])) << (8 * i);
        return w;
    }
    if (n == 8) {
        std::uint64_t w;
        std::memcpy(&w, p, 8);
        return w;
    }
    std::uint32_t w;
    std::memcpy(&w, p, 4);
    return w;
}
static_assert(std::endian::native == std::endian::little);

// A 64-bit hash of the name from its first and last word (four bytes each
// below eight bytes) and its length, the same in any case: setting bit 5
// makes a letter lower-case and leaves digits as they are (other bytes may
// meet there, which only costs a comparison). All names begin "IFC", so the
// first word tells little by itself; with the last one and the length it
// spreads them well.
constexpr std::uint64_t dispersar(const char* t, std::size_t largo) {
    constexpr std::uint64_t bit5 = 0x2020202020202020ull;
    const std::size_t ancho = largo >= 8 ? 8 : 4;
    const std::uint64_t a = cargar(t, ancho) | bit5;
    const std::uint64_t b = cargar(t + largo - ancho, ancho) | bit5;
    std::uint64_t x = (a ^ (b * 0x9E3779B97F4A7C15ull) ^ largo) * 0xBF58476D1CE4E5B9ull;
    return x ^ (x >> 31);
}

constexpr std::size_t bitsCasilla = 11;
constexpr std::size_t casillas = std::size_t(1) << bitsCasilla; // at most a quarter full
static_assert(numeroReconocidos * 4 <= casillas);

// A slot of the table: the name's position in reconocidos plus one (0 when
// free), its length and eight more bits of its hash, so that a probe that
// meets another name rarely reads that name.
struct Casilla {
    std::uint16_t posicion = 0;
    std::uint8_t largo = 0;
    std::uint8_t huella = 0;
};

constexpr std::size_t casillaDe(std::uint64_t h) { return static_cast<std::size_t>(h >> (64 - bitsCasilla)); }
constexpr std::uint8_t huellaDe(std::uint64_t h) { return static_cast<std::uint8_t>(h >> 8); }

// Open addressing with linear probing.
constexpr std::array<Casilla, casillas> tablaHash = [] {
    std::array<Casilla, casillas> t{};
    for (std::size_t i = 0; i < reconocidos.size(); ++i) {
        const std::string_view n = reconocidos[i].nombre;
        const std::uint64_t h = dispersar(n.data(), n.size());
        std::size_t c = casillaDe(h);
        while (t[c].posicion != 0) c = (c + 1) % casillas;
        t[c] = {static_cast<std::uint16_t>(i + 1), static_cast<std::uint8_t>(n.size()), huellaDe(h)};
    }
    return t;
}();

// True when t, of the length of the name, is the name in any case. Eight
// bytes at a time, the last word overlapping the one before.
bool igualSinMayusculas(const char* t, std::string_view nombre) {
    const std::size_t largo = nombre.size();
    const char* n = nombre.data();
    if (largo < 8)
        return aMayusculas8(cargar(t, 4)) == cargar(n, 4) &&
               aMayusculas8(cargar(t + largo - 4, 4)) == cargar(n + largo - 4, 4);
    for (std::size_t i = 0; i + 8 < largo; i += 8)
        if (aMayusculas8(cargar(t + i, 8)) != cargar(n + i, 8)) return false;
    return aMayusculas8(cargar(t + largo - 8, 8)) == cargar(n + largo - 8, 8);
}

// The class of a name whose bytes may be in any case.
ClaseIFC buscarSinMayusculas(std::string_view t) {
    const std::size_t largo = t.size();
    if (largo < largoMinimo || largo > largoMaximo) return {};
    const std::uint64_t h = dispersar(t.data(), largo);
    const std::uint8_t huella = huellaDe(h);
    for (std::size_t c = casillaDe(h);; c = (c + 1) % casillas) {
        const Casilla casilla = tablaHash[c];
        if (casilla.posicion == 0) return {};
        if (casilla.largo != largo || casilla.huella != huella) continue;
        const Reconocido& r = reconocidos[casilla.posicion - 1];
        if (igualSinMayusculas(t.data(), r.nombre)) return r.clase;
    }
}

bool tieneNoASCII(std::string_view t) {
    std::size_t i = 0;
    for (; i + 8 <= t.size(); i += 8)
        if (cargar(t.data() + i, 8) & 0x8080808080808080ull) return true;
    for (; i < t.size(); ++i)
        if (static_cast<unsigned char>(t[i]) >= 0x80) return true;
    return false;
}

} // namespace

std::string_view nombreTipoIFC(TipoIFC t) {
    const auto i = static_cast<std::size_t>(t);
    if (i < primerOtroTipo || i - primerOtroTipo >= otrosTipos.size()) return {};
    return otrosTipos[i - primerOtroTipo];
}

std::string_view nombreProductoIFC(std::uint16_t producto) {
    return producto < nombresProductoIFC.size() ? nombresProductoIFC[producto] : std::string_view();
}

ClaseIFC clasificarTipoIFC(std::string_view tipoEscrito) {
    const std::string_view t = recortar(tipoEscrito);
    // A match is all ASCII letters; only a name that matches nothing may
    // hold other bytes.
    const ClaseIFC clase = buscarSinMayusculas(t);
    if (clase.tipo != TipoIFC::Otro || !tieneNoASCII(t)) return clase;
    // Unicode upper-casing can map other characters to ASCII letters
    // (U+0131 to "I", U+017F to "S") and change the length: such names are
    // upper-cased whole first.
    return buscarSinMayusculas(aMayusculas(t));
}

} // namespace teskal
