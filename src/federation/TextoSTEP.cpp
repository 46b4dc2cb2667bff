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
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TESKAL_AVX2 1
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

// One pass, eight bytes at a time, tells whether the text holds a backslash
// or an apostrophe (anything to decode) and whether it is plain ASCII: the
// common case for both is a name or value to copy as it stands.
void examinar(std::string_view s, bool& especial, bool& ascii) {
    constexpr std::uint64_t unos = 0x0101010101010101ull;
    constexpr std::uint64_t altos = 0x8080808080808080ull;
    // Nonzero when a byte of w is the byte of patron (repeated).
    const auto hay = [](std::uint64_t w, std::uint64_t patron) {
        const std::uint64_t x = w ^ patron;
        return (x - unos) & ~x & altos;
    };
    std::uint64_t marcas = 0;
    std::uint64_t bytes = 0;
    const auto tomar = [&](std::size_t i) {
        std::uint64_t w;
        std::memcpy(&w, s.data() + i, 8);
        bytes |= w;
        marcas |= hay(w, unos * '\\') | hay(w, unos * '\'');
    };
    if (s.size() >= 8) {
        // Whole words, the last one overlapping the one before.
        for (std::size_t i = 0; i + 8 < s.size(); i += 8) tomar(i);
        tomar(s.size() - 8);
    } else {
        for (const char c : s) {
            bytes |= static_cast<unsigned char>(c);
            marcas |= c == '\\' || c == '\'';
        }
    }
    especial = marcas != 0;
    ascii = (bytes & altos) == 0;
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
    bool especial = false;
    bool ascii = true;
    examinar(s, especial, ascii);
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
// comentario tells whether a comment was among them.
const char* saltarSeparadores(const char* p, const char* fin, bool& comentario) {
    while (p < fin) {
        const auto c = static_cast<unsigned char>(*p);
        if (c <= ' ' || c == 0x7F) {
            ++p;
        } else if (c == '/' && esComentario(p, fin)) {
            p = finComentario(p + 2, fin);
            comentario = true;
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

// The significant bytes of one block of the text, a bit each.
struct MascarasBloque {
    std::uint32_t comillas; // apostrophes
    std::uint32_t puntos;   // ";"
    std::uint32_t raros;    // line ends and "/"
};

// What one block tells of the statement's end.
enum class PasoBloque { Sigue, Fin, Salto };

// Takes a block of `Ancho` bytes at p. Fin: the end is at `donde`; Salto: a
// comment ended at `donde`, where the search goes on; Sigue: the next block.
template <int Ancho>
inline PasoBloque tomarBloque(const char* p, MascarasBloque m, EstadoSentencia& estado, const char*& donde) {
    constexpr std::uint32_t todo = Ancho == 32 ? 0xFFFFFFFFu : (1u << Ancho) - 1u;
    // The bytes inside a string: the running parity of the apostrophes (a
    // prefix xor), flipped when the block begins inside one.
    std::uint32_t dentro = m.comillas;
    dentro ^= dentro << 1;
    dentro ^= dentro << 2;
    dentro ^= dentro << 4;
    dentro ^= dentro << 8;
    if constexpr (Ancho == 32) dentro ^= dentro << 16;
    if (estado.enTexto) dentro = ~dentro;
    dentro &= todo;
    const std::uint32_t fuera = m.puntos & ~dentro;
    const std::uint32_t antes = fuera ? (1u << std::countr_zero(fuera)) - 1u : todo;
    if (!(m.raros & antes)) {
        // No line end nor "/" before the end: the common case.
        if (fuera) {
            donde = p + std::countr_zero(fuera);
            return PasoBloque::Fin;
        }
        estado.enTexto = (dentro >> (Ancho - 1)) & 1u;
        return PasoBloque::Sigue;
    }
    // Line ends or a possible comment: the block's significant bytes one by one.
    std::uint32_t enTexto = m.comillas | m.raros;
    std::uint32_t todos = enTexto | m.puntos;
    while (const std::uint32_t bits = estado.enTexto ? enTexto : todos) {
        const int bit = std::countr_zero(bits);
        const std::uint32_t siguientes = ~((2u << bit) - 1u);
        enTexto &= siguientes;
        todos &= siguientes;
        const char* const q = p + bit;
        if (const char* r = estado.tomar(q)) {
            donde = r;
            return r == q ? PasoBloque::Fin : PasoBloque::Salto;
        }
    }
    return PasoBloque::Sigue;
}

#if defined(__SSE2__)
inline MascarasBloque mascaras16(const char* p) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const auto bits = [&](char c) {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(c))));
    };
    return {bits('\''), bits(';'), bits('/') | bits('\n') | bits('\r')};
}
#endif

#if defined(TESKAL_AVX2)
__attribute__((target("avx2"))) inline std::uint32_t bitsDe(__m256i v, char c) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(v, _mm256_set1_epi8(c))));
}

__attribute__((target("avx2"))) inline MascarasBloque mascaras32(const char* p) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    return {bitsDe(v, '\''), bitsDe(v, ';'), bitsDe(v, '/') | bitsDe(v, '\n') | bitsDe(v, '\r')};
}

// The blocks of 32 bytes, on processors with AVX2. False when the search is
// over (salida holds where); true with p at the rest, less than 32 bytes.
__attribute__((target("avx2"))) bool buscarFinAVX2(const char*& p, const char* fin, EstadoSentencia& estado,
                                                  const char*& salida) {
    while (fin - p >= 32) {
        const char* donde = nullptr;
        switch (tomarBloque<32>(p, mascaras32(p), estado, donde)) {
        case PasoBloque::Fin:
            salida = donde;
            return false;
        case PasoBloque::Salto:
            p = donde;
            break;
        case PasoBloque::Sigue:
            p += 32;
            break;
        }
    }
    return true;
}
#endif

// The significant bytes of 64 bytes of text, a bit each.
struct Mascaras64 {
    std::uint64_t comillas;
    std::uint64_t puntos;
    std::uint64_t lineas; // line ends
    std::uint64_t barras; // "/"
};

#if defined(__SSE2__)
inline Mascaras64 mascaras64(const char* p) {
    Mascaras64 m{};
    for (int k = 0; k < 4; ++k) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 16 * k));
        const auto bits = [&](char c) {
            return static_cast<std::uint64_t>(static_cast<std::uint32_t>(
                       _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(c)))))
                   << (16 * k);
        };
        m.comillas |= bits('\'');
        m.puntos |= bits(';');
        m.lineas |= bits('\n') | bits('\r');
        m.barras |= bits('/');
    }
    return m;
}
#endif

#if defined(TESKAL_AVX2)
__attribute__((target("avx2"))) Mascaras64 mascaras64AVX2(const char* p) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 32));
    const auto dos = [](std::uint32_t bajo, std::uint32_t alto) {
        return static_cast<std::uint64_t>(bajo) | (static_cast<std::uint64_t>(alto) << 32);
    };
    return {dos(bitsDe(a, '\''), bitsDe(b, '\'')), dos(bitsDe(a, ';'), bitsDe(b, ';')),
            dos(bitsDe(a, '\n') | bitsDe(a, '\r'), bitsDe(b, '\n') | bitsDe(b, '\r')),
            dos(bitsDe(a, '/'), bitsDe(b, '/'))};
}
#endif

// Bit i of the result is the parity of bits 0 to i of x.
inline std::uint64_t paridad(std::uint64_t x) {
    for (int k = 1; k < 64; k *= 2) x ^= x << k;
    return x;
}

#if defined(TESKAL_AVX2)
// The same as one carry-less product by all ones, on the processors with
// AVX2 (all of which carry PCLMULQDQ).
__attribute__((target("pclmul"))) inline std::uint64_t paridadCLMUL(std::uint64_t x) {
    const __m128i producto = _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<long long>(x)),
                                                  _mm_set1_epi8(static_cast<char>(0xFF)), 0);
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(producto));
}
#endif

FinSentencia buscarFin(const char* p, const char* const fin, bool avx2) {
    EstadoSentencia estado{fin};
#if defined(TESKAL_AVX2)
    const char* salida = nullptr;
    if (avx2 && !buscarFinAVX2(p, fin, estado, salida)) return {salida, estado.unir};
#else
    (void)avx2;
#endif
#if defined(__SSE2__)
    while (fin - p >= 16) {
        const char* donde = nullptr;
        switch (tomarBloque<16>(p, mascaras16(p), estado, donde)) {
        case PasoBloque::Fin:
            return {donde, estado.unir};
        case PasoBloque::Salto:
            p = donde;
            break;
        case PasoBloque::Sigue:
            p += 16;
            break;
        }
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

LectorSentenciasSTEP::LectorSentenciasSTEP(std::string_view texto)
    : p_(texto.data()), fin_(texto.data() + texto.size()) {
#if defined(TESKAL_AVX2)
    avx2_ = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("pclmul");
#else
    avx2_ = false;
#endif
}

void LectorSentenciasSTEP::cargarBloque(const char* base, bool enTexto) {
    // The bytes inside a string: the running parity of the apostrophes (a
    // prefix xor), flipped when the block begins inside one.
#if defined(TESKAL_AVX2)
    Mascaras64 m;
    std::uint64_t dentro;
    if (avx2_) {
        m = mascaras64AVX2(base);
        dentro = paridadCLMUL(m.comillas);
    } else {
        m = mascaras64(base);
        dentro = paridad(m.comillas);
    }
#else
    const Mascaras64 m = mascaras64(base);
    std::uint64_t dentro = paridad(m.comillas);
#endif
    if (enTexto) dentro = ~dentro;
    base_ = base;
    finales_ = m.puntos & ~dentro;
    raros_ = m.lineas | (m.barras & ~dentro);
    enTextoAlFinal_ = dentro >> 63;
}

bool LectorSentenciasSTEP::buscarEnBloques(const char* inicio, bool comentario, const char*& final) {
    // The block must tell the bytes from inicio on, from outside a string: a
    // statement that begins in it after the ";" of the one before does, unless
    // a comment between them held apostrophes.
    if (comentario || !base_ || inicio < base_ || inicio >= base_ + 64) {
        if (fin_ - inicio < 64) return false;
        cargarBloque(inicio, false);
    }
    for (;;) {
        const auto desde = static_cast<unsigned>(inicio - base_);
        const std::uint64_t mascara = ~std::uint64_t(0) << desde;
        const std::uint64_t finales = finales_ & mascara;
        const std::uint64_t raros = raros_ & mascara;
        if (finales) {
            const int e = std::countr_zero(finales);
            // A line end or a comment before the end: the statement is rejoined.
            if (raros & ((std::uint64_t(1) << e) - 1)) return false;
            final = base_ + e;
            return true;
        }
        if (raros || fin_ - (base_ + 64) < 64) return false;
        cargarBloque(base_ + 64, enTextoAlFinal_);
        inicio = base_;
    }
}

bool LectorSentenciasSTEP::siguiente(std::string_view& sentencia, bool& estable) {
    for (;;) {
        if (p_ >= alto_) return false;
        bool comentario = false;
        const char* const inicio = saltarSeparadores(p_, fin_, comentario);
        if (inicio >= fin_) {
            p_ = fin_;
            return false;
        }
        // Most statements end in the blocks already read, with nothing to
        // rejoin; the others are read byte by byte where they need it.
        FinSentencia f{nullptr, false};
        if (!buscarEnBloques(inicio, comentario, f.fin)) {
            f = buscarFin(inicio, fin_, avx2_);
            base_ = nullptr;
        }
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

std::size_t puntoDeCorteSTEP(std::string_view texto) {
    constexpr std::size_t alcance = 1 << 20; // how far past the middle to look
    const std::size_t hasta = std::min(texto.size(), texto.size() / 2 + alcance);
    for (std::size_t i = texto.size() / 2; i < hasta; ++i) {
        if (texto[i] != ';') continue;
        std::size_t j = i + 1;
        while (j < texto.size() && (texto[j] == ' ' || texto[j] == '\t' || texto[j] == '\r' || texto[j] == '\n')) ++j;
        if (j < texto.size() && texto[j] == '#') return i + 1;
    }
    return std::string_view::npos;
}

} // namespace teskal
