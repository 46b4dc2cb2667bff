#include "federation/TextoSTEP.h"

#include "federation/PaginasISO8859.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
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

// Hexadecimal digits into a number; none if one is not a digit or there are
// none. At most eight digits reach here, so the value fits.
std::optional<std::uint32_t> leerHex(std::string_view s) {
    if (s.empty()) return std::nullopt;
    std::uint32_t v = 0;
    for (char c : s) {
        const int d = valorHex(c);
        if (d < 0) return std::nullopt;
        v = v * 16 + static_cast<std::uint32_t>(d);
    }
    return v;
}

bool esEscalar(std::uint32_t v) { return v <= 0x10FFFF && (v < 0xD800 || v > 0xDFFF); }

// The code points of the text of a \X2\ (four digits each) or \X4\ (eight)
// escape. A group that is not hexadecimal, a lone surrogate or a value past
// U+10FFFF is dropped; a high surrogate followed by a low one gives their
// character. A short last group is read as it stands.
void decodificarGrupos(std::string_view hex, std::size_t ancho, std::string& r) {
    std::uint32_t alto = 0; // a high surrogate waiting for its low half
    while (!hex.empty()) {
        const std::size_t largo = std::min(ancho, hex.size());
        const auto v = leerHex(hex.substr(0, largo));
        hex.remove_prefix(largo);
        if (v && ancho == 4 && *v >= 0xDC00 && *v <= 0xDFFF && alto) {
            anadirUTF8(r, 0x10000 + ((alto - 0xD800) << 10) + (*v - 0xDC00));
            alto = 0;
            continue;
        }
        alto = 0;
        if (v && ancho == 4 && *v >= 0xD800 && *v <= 0xDBFF)
            alto = *v;
        else if (v && esEscalar(*v))
            anadirUTF8(r, *v);
    }
}

// Appends bytes of the text as they stand, or read as ISO 8859-1 when the
// text is not valid UTF-8.
void anadirBytes(std::string& r, std::string_view bytes, bool utf8) {
    if (utf8) {
        r.append(bytes);
        return;
    }
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x80)
            r.push_back(c);
        else
            anadirUTF8(r, u);
    }
}

} // namespace

std::string comoUTF8(std::string_view s) {
    std::string r;
    if (esUTF8Valido(s)) return std::string(s);
    r.reserve(s.size() * 2);
    anadirBytes(r, s, false);
    return r;
}

std::string decodificarTextoSTEP(std::string_view s) {
    // One pass tells whether anything is to be decoded and whether the text
    // is plain ASCII, the common case for both.
    bool especial = false;
    bool ascii = true;
    for (const char c : s) {
        especial |= c == '\\' || c == '\'';
        ascii &= static_cast<unsigned char>(c) < 0x80;
    }
    const bool utf8 = ascii || esUTF8Valido(s);
    std::string r;
    if (!especial) {
        if (utf8) return std::string(s);
        r.reserve(s.size() * 2);
        anadirBytes(r, s, false);
        return r;
    }
    r.reserve(s.size());
    const std::array<std::uint16_t, 96>* pagina = &paginasISO8859[0];
    // Once no "\X0\" is left, later "\X2\" and "\X4\" need not look for one
    // again: searching from each of them would take time quadratic in the text.
    bool sinCierre = false;
    std::size_t i = 0;
    while (i < s.size()) {
        // The run of plain bytes up to the next apostrophe or backslash.
        std::size_t j = i;
        while (j < s.size() && s[j] != '\\' && s[j] != '\'') ++j;
        anadirBytes(r, s.substr(i, j - i), utf8);
        i = j;
        if (i >= s.size()) break;
        if (s[i] == '\'') {
            r.push_back('\'');
            i += i + 1 < s.size() && s[i + 1] == '\'' ? 2 : 1;
            continue;
        }
        const std::string_view resto = s.substr(i);
        if (resto.starts_with("\\\\")) {
            r.push_back('\\');
            i += 2;
            continue;
        }
        if (resto.size() >= 4 && resto[1] == 'S' && resto[2] == '\\') {
            // One character, 0x20 to 0x7E, shifted into the upper half of the
            // page; an apostrophe there is written doubled, as anywhere in a string.
            const auto c = static_cast<unsigned char>(resto[3]);
            if (c >= 0x20 && c <= 0x7E) {
                const std::uint16_t cp = (*pagina)[c - 0x20];
                anadirUTF8(r, cp ? cp : 0xFFFD);
                i += 4;
                if (c == '\'' && i < s.size() && s[i] == '\'') ++i;
                continue;
            }
        }
        if (resto.size() >= 4 && resto[1] == 'P' && resto[3] == '\\' && resto[2] >= 'A' &&
            resto[2] <= 'I') {
            pagina = &paginasISO8859[static_cast<std::size_t>(resto[2] - 'A')];
            i += 4;
            continue;
        }
        if (resto.size() >= 5 && resto.starts_with("\\X\\")) {
            const int alto = valorHex(resto[3]);
            const int bajo = valorHex(resto[4]);
            if (alto >= 0 && bajo >= 0) {
                anadirUTF8(r, static_cast<char32_t>(alto * 16 + bajo));
                i += 5;
                continue;
            }
        }
        if (resto.starts_with("\\X2\\") || resto.starts_with("\\X4\\")) {
            const std::size_t cierre = sinCierre ? std::string_view::npos : s.find("\\X0\\", i + 4);
            sinCierre = cierre == std::string_view::npos;
            if (cierre != std::string_view::npos) {
                decodificarGrupos(s.substr(i + 4, cierre - (i + 4)), resto[2] == '2' ? 4 : 8, r);
                i = cierre + 4;
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
        return comoUTF8(s.substr(1, s.size() - 2));
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
    std::string_view args = recortar(sentencia.substr(parentesis + 1));
    if (!args.empty() && args.back() == ';') args = recortar(args.substr(0, args.size() - 1));
    if (!args.empty() && args.back() == ')') args.remove_suffix(1);
    partes.args = args;
    return true;
}

namespace {

// After the "*/" that closes a comment whose text begins at p, or fin.
const char* finComentario(const char* p, const char* fin) {
    while (p < fin) {
        const auto* estrella = static_cast<const char*>(std::memchr(p, '*', static_cast<std::size_t>(fin - p)));
        if (!estrella || estrella + 1 >= fin) return fin;
        if (estrella[1] == '/') return estrella + 2;
        p = estrella + 1;
    }
    return fin;
}

bool esComentario(const char* p, const char* fin) { return p + 1 < fin && p[0] == '/' && p[1] == '*'; }

// Past the blanks, line ends, control bytes and comments between statements.
const char* saltarSeparadores(const char* p, const char* fin) {
    while (p < fin) {
        const auto c = static_cast<unsigned char>(*p);
        if (c <= ' ' || c == 0x7F) {
            ++p;
        } else if (c == '/' && esComentario(p, fin)) {
            p = finComentario(p + 2, fin);
        } else if (const std::size_t k =
                       c >= 0xC2 ? largoBlanco(std::string_view(p, static_cast<std::size_t>(fin - p))) : 0) {
            p += k;
        } else {
            break;
        }
    }
    return p;
}

// Where a statement that begins at p ends: at its ";" outside a string, or at
// fin. unir tells whether it holds line ends or comments to remove.
struct FinSentencia {
    const char* fin;
    bool unir;
};

// The state of the search for a statement's end, fed one significant byte at
// a time: apostrophes, ";", "/" and line ends.
struct EstadoSentencia {
    const char* fin;
    bool enTexto = false;
    bool unir = false;

    // Takes the byte at p. Returns p when it ends the statement, the place to
    // go on from when it opens a comment, or nullptr to go on after it.
    const char* tomar(const char* p) {
        const char c = *p;
        if (c == '\'') {
            enTexto = !enTexto;
        } else if (c == '\n' || c == '\r') {
            unir = true;
        } else if (!enTexto) {
            if (c == ';') return p;
            if (c == '/' && esComentario(p, fin)) {
                unir = true;
                return finComentario(p + 2, fin);
            }
        }
        return nullptr;
    }
};

FinSentencia buscarFin(const char* p, const char* const fin) {
    EstadoSentencia estado{fin};
#if defined(__SSE2__)
    const __m128i comilla = _mm_set1_epi8('\'');
    const __m128i puntoYComa = _mm_set1_epi8(';');
    const __m128i barra = _mm_set1_epi8('/');
    const __m128i nl = _mm_set1_epi8('\n');
    const __m128i cr = _mm_set1_epi8('\r');
    while (fin - p >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        // Inside a string only apostrophes and line ends count.
        auto enTexto = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(
            _mm_cmpeq_epi8(v, comilla), _mm_or_si128(_mm_cmpeq_epi8(v, nl), _mm_cmpeq_epi8(v, cr)))));
        auto todos = enTexto | static_cast<unsigned>(_mm_movemask_epi8(
                                   _mm_or_si128(_mm_cmpeq_epi8(v, puntoYComa), _mm_cmpeq_epi8(v, barra))));
        const char* sigue = p + 16;
        while (const unsigned m = estado.enTexto ? enTexto : todos) {
            const int bit = std::countr_zero(m);
            const unsigned siguientes = ~((2u << bit) - 1u);
            enTexto &= siguientes;
            todos &= siguientes;
            const char* const q = p + bit;
            if (const char* r = estado.tomar(q)) {
                if (r == q) return {q, estado.unir};
                sigue = r; // past a comment
                break;
            }
        }
        p = sigue;
    }
#endif
    while (p < fin) {
        const char* const r = estado.tomar(p);
        if (r == p) return {p, estado.unir};
        p = r ? r : p + 1;
    }
    return {fin, estado.unir};
}

} // namespace

bool LectorSentenciasSTEP::siguiente(std::string_view& sentencia, bool& estable) {
    for (;;) {
        const char* const inicio = saltarSeparadores(p_, fin_);
        if (inicio >= fin_) {
            p_ = fin_;
            return false;
        }
        const FinSentencia f = buscarFin(inicio, fin_);
        // The statement with its ";", if it has one.
        const char* const finSentencia = f.fin < fin_ ? f.fin + 1 : fin_;
        p_ = finSentencia;
        if (*inicio != '#') continue;
        if (!f.unir) {
            sentencia = std::string_view(inicio, static_cast<std::size_t>(finSentencia - inicio));
            estable = true;
            return true;
        }
        // Line ends go with the blanks around them, comments outside strings
        // go whole.
        unida_.clear();
        bool enTexto = false;
        for (const char* p = inicio; p < finSentencia;) {
            const char c = *p;
            if (c == '\n' || c == '\r') {
                // The text so far begins with "#": only its end is trimmed.
                unida_.resize(recortar(unida_).size());
                ++p;
                while (p < finSentencia) {
                    if (*p == '\n' || *p == '\r') {
                        ++p;
                    } else if (const std::size_t k = largoBlanco(
                                   std::string_view(p, static_cast<std::size_t>(finSentencia - p)))) {
                        p += k;
                    } else {
                        break;
                    }
                }
                continue;
            }
            if (c == '\'') {
                enTexto = !enTexto;
            } else if (!enTexto && c == '/' && esComentario(p, finSentencia)) {
                p = finComentario(p + 2, finSentencia);
                continue;
            }
            unida_.push_back(c);
            ++p;
        }
        sentencia = unida_;
        estable = false;
        return true;
    }
}

} // namespace teskal
