#include "federation/TextoUTF8.h"

#include <QString>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace teskal {

bool esUTF8Valido(std::string_view texto) {
    const auto* p = reinterpret_cast<const unsigned char*>(texto.data());
    const auto* fin = p + texto.size();
    while (p < fin) {
        // Plain ASCII runs, thirty-two and then eight bytes at a time.
        while (fin - p >= 32) {
            std::uint64_t b[4];
            std::memcpy(b, p, 32);
            if ((b[0] | b[1] | b[2] | b[3]) & 0x8080808080808080ull) break;
            p += 32;
        }
        while (fin - p >= 8) {
            std::uint64_t bloque;
            std::memcpy(&bloque, p, 8);
            if (bloque & 0x8080808080808080ull) break;
            p += 8;
        }
        if (p >= fin) break;
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int n;
        unsigned minimo;
        std::uint32_t cp;
        if (c >= 0xC2 && c <= 0xDF) {
            n = 1;
            cp = c & 0x1F;
            minimo = 0x80;
        } else if (c >= 0xE0 && c <= 0xEF) {
            n = 2;
            cp = c & 0x0F;
            minimo = 0x800;
        } else if (c >= 0xF0 && c <= 0xF4) {
            n = 3;
            cp = c & 0x07;
            minimo = 0x10000;
        } else {
            return false;
        }
        if (fin - p <= n) return false;
        for (int i = 1; i <= n; ++i) {
            if ((p[i] & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (p[i] & 0x3F);
        }
        if (cp < minimo || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        p += n + 1;
    }
    return true;
}

namespace {

// Length of the blank (tab or Unicode space separator) that starts s, or 0.
std::size_t blancoAlInicio(std::string_view s) {
    const auto* u = reinterpret_cast<const unsigned char*>(s.data());
    const std::size_t n = s.size();
    if (n == 0) return 0;
    if (u[0] == ' ' || u[0] == '\t') return 1;
    if (u[0] < 0xC2) return 0;
    if (n >= 2 && u[0] == 0xC2 && u[1] == 0xA0) return 2;
    if (n < 3) return 0;
    if (u[0] == 0xE1 && u[1] == 0x9A && u[2] == 0x80) return 3;
    if (u[0] == 0xE2 && u[1] == 0x80 && (u[2] <= 0x8A || u[2] == 0xAF) && u[2] >= 0x80) return 3;
    if (u[0] == 0xE2 && u[1] == 0x81 && u[2] == 0x9F) return 3;
    if (u[0] == 0xE3 && u[1] == 0x80 && u[2] == 0x80) return 3;
    return 0;
}

// Length of the blank that ends s, or 0.
std::size_t blancoAlFinal(std::string_view s) {
    const std::size_t n = s.size();
    if (n == 0) return 0;
    const auto* u = reinterpret_cast<const unsigned char*>(s.data());
    const unsigned char ult = u[n - 1];
    if (ult == ' ' || ult == '\t') return 1;
    if (ult < 0x80) return 0;
    if (n >= 2 && ult == 0xA0 && u[n - 2] == 0xC2) return 2;
    if (n >= 3 && blancoAlInicio(s.substr(n - 3)) == 3) return 3;
    return 0;
}

} // namespace

std::size_t largoBlanco(std::string_view s) { return blancoAlInicio(s); }

std::string_view recortarBlancos(std::string_view s) {
    while (std::size_t k = blancoAlInicio(s)) s.remove_prefix(k);
    while (std::size_t k = blancoAlFinal(s)) s.remove_suffix(k);
    return s;
}

std::optional<std::int64_t> leerEntero(std::string_view s) {
    // Up to 18 plain digits can't overflow: read them directly.
    if (!s.empty() && s.size() <= 18) {
        std::int64_t v = 0;
        std::size_t i = 0;
        for (; i < s.size(); ++i) {
            const unsigned d = static_cast<unsigned char>(s[i]) - '0';
            if (d > 9) break;
            v = v * 10 + d;
        }
        if (i == s.size()) return v;
    }
    if (!s.empty() && s[0] == '+') {
        s.remove_prefix(1);
        if (!s.empty() && s[0] == '-') return std::nullopt;
    }
    if (s.empty()) return std::nullopt;
    std::int64_t v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size()) return std::nullopt;
    return v;
}

namespace {

template <class Real> std::optional<Real> leerReal(std::string_view s) {
    bool negativo = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        negativo = s[0] == '-';
        s.remove_prefix(1);
    }
    if (s.empty() || s[0] == '+' || s[0] == '-') return std::nullopt;
    auto formato = std::chars_format::general;
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
        s.remove_prefix(2);
        formato = std::chars_format::hex;
        if (s.empty() || s[0] == '+' || s[0] == '-') return std::nullopt;
    }
    Real v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v, formato);
    if (r.ptr != s.data() + s.size()) return std::nullopt;
    if (r.ec == std::errc::result_out_of_range) {
        // Decide between overflow and underflow with the C library.
        std::string copia(formato == std::chars_format::hex ? "0x" : "");
        copia.append(s);
        if constexpr (std::is_same_v<Real, float>)
            v = std::strtof(copia.c_str(), nullptr);
        else
            v = std::strtod(copia.c_str(), nullptr);
    } else if (r.ec != std::errc()) {
        return std::nullopt;
    }
    return negativo ? -v : v;
}

} // namespace

std::optional<float> leerFloat(std::string_view s) { return leerReal<float>(s); }

std::optional<double> leerDouble(std::string_view s) { return leerReal<double>(s); }

void anadirUTF8(std::string& d, char32_t c) {
    if (c < 0x80) {
        d.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        d.push_back(static_cast<char>(0xC0 | (c >> 6)));
        d.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        d.push_back(static_cast<char>(0xE0 | (c >> 12)));
        d.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        d.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        d.push_back(static_cast<char>(0xF0 | (c >> 18)));
        d.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        d.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        d.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::string aMayusculas(std::string_view s) {
    std::string r(s);
    bool ascii = true;
    for (char& c : r) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    if (ascii) return r;
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())).toUpper().toStdString();
}

} // namespace teskal
