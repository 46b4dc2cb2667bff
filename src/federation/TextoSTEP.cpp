#include "federation/TextoSTEP.h"

#include <array>
#include <limits>

namespace teskal {

namespace {

// The bytes that the argument split acts on: quote, parentheses and comma.
constexpr std::array<bool, 256> especialesArgumentos = [] {
    std::array<bool, 256> t{};
    t['\''] = t['('] = t[')'] = t[','] = true;
    return t;
}();

} // namespace

void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino,
                           std::size_t maximo) {
    destino.clear();
    if (maximo == 0) return;
    const char* p = args.data();
    const char* const fin = p + args.size();
    const char* inicio = p;
    std::int64_t profundidad = 0; // a text over 2 GB can hold more than INT_MAX "("
    while (true) {
        while (p < fin && !especialesArgumentos[static_cast<unsigned char>(*p)]) ++p;
        if (p == fin) break;
        const char c = *p++;
        if (c == '\'') {
            // Inside a string only the closing quote counts.
            const void* cierre = std::memchr(p, '\'', static_cast<std::size_t>(fin - p));
            if (!cierre) break;
            p = static_cast<const char*>(cierre) + 1;
        } else if (c == '(') {
            ++profundidad;
        } else if (c == ')') {
            --profundidad;
        } else if (profundidad == 0) { // a comma
            destino.push_back(recortar(std::string_view(inicio, static_cast<std::size_t>(p - 1 - inicio))));
            if (destino.size() == maximo) return;
            inicio = p;
        }
    }
    const std::string_view resto = recortar(std::string_view(inicio, static_cast<std::size_t>(fin - inicio)));
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
    if (!s.empty() && s.front() == '(') s = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string_view();
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
    const char* p = inicio;
    while (p < fin && *p != '=' && *p != '(') ++p;
    if (p == fin || *p == '(') return false;
    const char* const igual = p;
    while (p < fin && *p != '(') ++p;
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
