#include "federation/TextoSTEP.h"

namespace teskal {

void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino) {
    destino.clear();
    bool enTexto = false;
    std::int64_t profundidad = 0; // a text over 2 GB can hold more than INT_MAX "("
    std::size_t inicio = 0;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const char c = args[i];
        if (c == '\'') {
            enTexto = !enTexto;
        } else if (enTexto) {
            continue;
        } else if (c == '(') {
            ++profundidad;
        } else if (c == ')') {
            --profundidad;
        } else if (c == ',' && profundidad == 0) {
            destino.push_back(recortar(args.substr(inicio, i - inicio)));
            inicio = i + 1;
        }
    }
    const std::string_view resto = recortar(args.substr(inicio));
    if (!resto.empty()) destino.push_back(resto);
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

std::vector<std::int64_t> leerListaReferencias(std::string_view s) {
    std::vector<std::int64_t> r;
    s = recortar(s);
    if (!s.empty() && s.front() == '(') s = s.size() >= 2 ? s.substr(1, s.size() - 2) : std::string_view();
    std::size_t inicio = 0;
    while (inicio <= s.size()) {
        std::size_t coma = s.find(',', inicio);
        if (coma == std::string_view::npos) coma = s.size();
        const std::string_view pieza = recortar(s.substr(inicio, coma - inicio));
        if (!pieza.empty() && pieza.front() == '#')
            if (const auto n = leerEntero(pieza.substr(1))) r.push_back(*n);
        inicio = coma + 1;
    }
    return r;
}

std::optional<std::int64_t> leerReferencia(std::string_view s) {
    s = recortar(s);
    if (s.empty() || s.front() != '#') return std::nullopt;
    return leerEntero(s.substr(1));
}

bool partirEntidadSTEP(std::string_view sentencia, PartesEntidad& partes) {
    const std::size_t igual = sentencia.find('=');
    const std::size_t parentesis = sentencia.find('(');
    if (igual == std::string_view::npos || parentesis == std::string_view::npos || parentesis < igual)
        return false;
    partes.numero = sentencia.substr(1, igual - 1);
    partes.tipo = sentencia.substr(igual + 1, parentesis - igual - 1);
    std::string_view args = sentencia.substr(parentesis + 1);
    if (!args.empty() && args.back() == ';') args.remove_suffix(1);
    if (!args.empty() && args.back() == ')') args.remove_suffix(1);
    partes.args = args;
    return true;
}

} // namespace teskal
