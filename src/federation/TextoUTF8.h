#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Small text primitives shared by the IFC and OBJ readers: UTF-8 checks,
// trimming of blanks and tabs, and number parsing that accepts exactly the
// whole text or nothing.
namespace teskal {

// True when the bytes are well-formed UTF-8 (no overlongs, no surrogates,
// nothing past U+10FFFF).
bool esUTF8Valido(std::string_view texto);

// Length in bytes of the blank (tab or Unicode space separator, as below)
// that starts s, or 0.
std::size_t largoBlanco(std::string_view s);

// Removes, at both ends, tabs and the Unicode space separators (U+0020,
// U+00A0, U+1680, U+2000 to U+200A, U+202F, U+205F, U+3000). Line ends and
// carriage returns stay.
std::string_view recortarBlancos(std::string_view s);

// The same, inline for the common case: a text that begins and ends with an
// ASCII byte other than blank and tab has no blank to remove at either end.
inline std::string_view recortar(std::string_view s) {
    if (s.empty()) return s;
    const auto primero = static_cast<unsigned char>(s.front());
    const auto ultimo = static_cast<unsigned char>(s.back());
    if (primero < 0x80 && primero != ' ' && primero != '\t' && ultimo < 0x80 && ultimo != ' ' &&
        ultimo != '\t')
        return s;
    return recortarBlancos(s);
}

// A decimal integer with an optional sign and nothing else; none on overflow.
std::optional<std::int64_t> leerEntero(std::string_view s);

// A single-precision number with an optional sign, in decimal (with optional
// fraction and exponent) or hexadecimal ("0x") notation, or inf, infinity,
// nan. The whole text must be the number. Out of range gives infinity or zero.
std::optional<float> leerFloat(std::string_view s);
// The same in double precision.
std::optional<double> leerDouble(std::string_view s);

// Appends the code point in UTF-8. The caller passes only scalar values.
void anadirUTF8(std::string& destino, char32_t c);

// Upper-cases the text: ASCII directly, anything else by Unicode rules.
std::string aMayusculas(std::string_view s);

} // namespace teskal
