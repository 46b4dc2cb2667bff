#include "federation/TextoSTEP.h"

#include <bit>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace teskal {

namespace {

// The state of an argument split, fed one significant byte at a time: the
// quote, the parentheses and the comma are all it acts on.
struct EstadoSeparacion {
    std::vector<std::string_view>& destino;
    std::size_t maximo;
    const char* inicio;           // where the current piece begins
    std::int64_t profundidad = 0; // a text over 2 GB can hold more than INT_MAX "("
    bool enTexto = false;

    // Takes the byte at p; true when the split is complete (maximo pieces).
    bool tomar(const char* p) {
        const char c = *p;
        if (c == '\'') {
            enTexto = !enTexto;
        } else if (enTexto) {
            return false;
        } else if (c == '(') {
            ++profundidad;
        } else if (c == ')') {
            --profundidad;
        } else if (c == ',' && profundidad == 0) {
            destino.push_back(
                recortar(std::string_view(inicio, static_cast<std::size_t>(p - inicio))));
            inicio = p + 1;
            return destino.size() == maximo;
        }
        return false;
    }
};

// The first byte between p and fin that is a or b, or fin.
const char* primeroDe(const char* p, const char* fin, char a, char b) {
#if defined(__SSE2__)
    const __m128i va = _mm_set1_epi8(a);
    const __m128i vb = _mm_set1_epi8(b);
    for (; fin - p >= 16; p += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const auto m = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(v, va), _mm_cmpeq_epi8(v, vb))));
        if (m) return p + std::countr_zero(m);
    }
#endif
    while (p < fin && *p != a && *p != b) ++p;
    return p;
}

} // namespace

void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino,
                           std::size_t maximo) {
    destino.clear();
    if (maximo == 0) return;
    const char* p = args.data();
    const char* const fin = p + args.size();
    EstadoSeparacion estado{destino, maximo, p};
#if defined(__SSE2__)
    // Sixteen bytes at a time: a mask of the quotes and one of every
    // significant byte; inside a string only the quotes are looked at.
    const __m128i comilla = _mm_set1_epi8('\'');
    const __m128i abre = _mm_set1_epi8('(');
    const __m128i cierra = _mm_set1_epi8(')');
    const __m128i coma = _mm_set1_epi8(',');
    for (; fin - p >= 16; p += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        auto comillas = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, comilla)));
        const __m128i otros =
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, abre), _mm_cmpeq_epi8(v, cierra)),
                         _mm_cmpeq_epi8(v, coma));
        auto todos = comillas | static_cast<unsigned>(_mm_movemask_epi8(otros));
        while (const unsigned m = estado.enTexto ? comillas : todos) {
            const int bit = std::countr_zero(m);
            const unsigned siguientes = ~((2u << bit) - 1u);
            comillas &= siguientes;
            todos &= siguientes;
            if (estado.tomar(p + bit)) return;
        }
    }
#endif
    for (; p < fin; ++p)
        if (estado.tomar(p)) return;
    const std::string_view resto =
        recortar(std::string_view(estado.inicio, static_cast<std::size_t>(fin - estado.inicio)));
    if (!resto.empty()) destino.push_back(resto);
}

void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino) {
    separarArgumentosSTEP(args, destino, std::numeric_limits<std::size_t>::max());
}

std::vector<std::string_view> separarArgumentosSTEP(std::string_view args) {
    std::vector<std::string_view> r;
    separarArgumentosSTEP(args, r);
    return r;
}

std::string limpiarTextoSTEP(std::string_view s) {
    s = recortar(s);
    if (s == "$" || s == "*") return {};
    if (!s.empty() && s.front() == '\'' && s.back() == '\'')
        s = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string_view();
    return decodificarTextoSTEP(s);
}

namespace {

int valorHex(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads hexadecimal digits (an optional leading "+" allowed, as integer
// parsing allows) into a code point; none if a digit is bad or it is empty.
std::optional<std::uint32_t> leerHex(std::string_view s) {
    if (!s.empty() && s[0] == '+') s.remove_prefix(1);
    if (s.empty()) return std::nullopt;
    std::uint32_t v = 0;
    for (char c : s) {
        const int d = valorHex(c);
        if (d < 0) return std::nullopt;
        v = v * 16 + static_cast<std::uint32_t>(d);
    }
    return v;
}

// Length in bytes of the UTF-8 character that starts with this byte.
std::size_t largoCaracter(unsigned char c) {
    if (c < 0x80) return 1;
    if (c >= 0xF0) return 4;
    if (c >= 0xE0) return 3;
    if (c >= 0xC0) return 2;
    return 1;
}

// Byte length of the first `n` characters of s (or all of s).
std::size_t bytesDeCaracteres(std::string_view s, std::size_t n) {
    std::size_t i = 0;
    while (n > 0 && i < s.size()) {
        i += largoCaracter(static_cast<unsigned char>(s[i]));
        --n;
    }
    return i < s.size() ? i : s.size();
}

bool esEscalar(std::uint32_t v) { return v <= 0x10FFFF && (v < 0xD800 || v > 0xDFFF); }

} // namespace

std::string decodificarTextoSTEP(std::string_view s) {
    if (s.find('\\') == std::string_view::npos) return std::string(s);
    std::string r;
    r.reserve(s.size());
    std::size_t i = 0;
    // Once no "\X0\" is left, later "\X2\" need not look for one again:
    // searching from each of them would take time quadratic in the text.
    bool sinCierre = false;
    while (i < s.size()) {
        if (s[i] != '\\') {
            r.push_back(s[i++]);
            continue;
        }
        const std::string_view resto = s.substr(i);
        if (resto.starts_with("\\X2\\")) {
            const std::size_t cierre = sinCierre ? std::string_view::npos : s.find("\\X0\\", i + 4);
            sinCierre = cierre == std::string_view::npos;
            if (cierre != std::string_view::npos) {
                // Groups of four characters, each a code point in hexadecimal.
                std::string_view hex = s.substr(i + 4, cierre - (i + 4));
                while (!hex.empty()) {
                    const std::size_t largo = bytesDeCaracteres(hex, 4);
                    const auto v = leerHex(hex.substr(0, largo));
                    if (v && esEscalar(*v)) anadirUTF8(r, *v);
                    hex.remove_prefix(largo);
                }
                i = cierre + 4;
                continue;
            }
        } else if (resto.starts_with("\\X\\")) {
            const std::string_view tras = resto.substr(3);
            const std::size_t largo = bytesDeCaracteres(tras, 2);
            if (const auto v = leerHex(tras.substr(0, largo)); v && esEscalar(*v)) {
                anadirUTF8(r, *v);
                i += 3 + largo;
                continue;
            }
        }
        r.push_back('\\');
        ++i;
    }
    return r;
}

std::string leerValorNominal(std::string_view s) {
    s = recortar(s);
    if (s == "$") return {};
    if (s.size() >= 2 && s.front() == '.' && s.back() == '.')
        return std::string(s.substr(1, s.size() - 2));
    if (s.size() == 1 && s.front() == '.') return {};
    const std::size_t abre = s.find('(');
    const std::size_t cierra = s.rfind(')');
    if (abre != std::string_view::npos && cierra != std::string_view::npos) {
        if (cierra > abre) return limpiarTextoSTEP(s.substr(abre + 1, cierra - abre - 1));
        return limpiarTextoSTEP({});
    }
    return limpiarTextoSTEP(s);
}

void leerListaReferencias(std::string_view s, std::vector<std::int64_t>& destino) {
    destino.clear();
    s = recortar(s);
    if (!s.empty() && s.front() == '(')
        s = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string_view();
    std::size_t inicio = 0;
    while (inicio <= s.size()) {
        std::size_t coma = s.find(',', inicio);
        if (coma == std::string_view::npos) coma = s.size();
        const std::string_view pieza = recortar(s.substr(inicio, coma - inicio));
        if (!pieza.empty() && pieza.front() == '#')
            if (const auto n = leerEntero(pieza.substr(1))) destino.push_back(*n);
        inicio = coma + 1;
    }
}

std::vector<std::int64_t> leerListaReferencias(std::string_view s) {
    std::vector<std::int64_t> r;
    leerListaReferencias(s, r);
    return r;
}

std::optional<std::int64_t> leerReferencia(std::string_view s) {
    s = recortar(s);
    if (s.empty() || s.front() != '#') return std::nullopt;
    return leerEntero(s.substr(1));
}

bool partirEntidadSTEP(std::string_view sentencia, PartesEntidad& partes) {
    // The first "=" must come before the first "(": one scan finds both.
    const char* const inicio = sentencia.data();
    const char* const fin = inicio + sentencia.size();
    const char* const igual = primeroDe(inicio, fin, '=', '(');
    if (igual == fin || *igual == '(') return false;
    const char* const p = primeroDe(igual + 1, fin, '(', '(');
    if (p == fin) return false;
    const std::size_t posIgual = static_cast<std::size_t>(igual - inicio);
    const std::size_t parentesis = static_cast<std::size_t>(p - inicio);
    partes.numero = sentencia.substr(1, posIgual - 1);
    partes.tipo = sentencia.substr(posIgual + 1, parentesis - posIgual - 1);
    std::string_view args = sentencia.substr(parentesis + 1);
    if (!args.empty() && args.back() == ';') args.remove_suffix(1);
    if (!args.empty() && args.back() == ')') args.remove_suffix(1);
    partes.args = args;
    return true;
}

} // namespace teskal
