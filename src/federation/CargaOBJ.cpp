#include "federation/CargaOBJ.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TextoUTF8.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>
#include <limits>
#include <system_error>
#include <thread>
#include <vector>

namespace teskal {

namespace {

// One group of the file: its name and its faces, as a range of the face list.
struct GrupoOBJ {
    std::string nombre;
    std::int64_t linea = -1; // which "g" or "o" line of the reading opened it; -1 before any
    std::size_t primeraCara = 0;
    std::size_t finCaras = 0;
    std::size_t primeraEsquina = 0;
};

// Everything read from the text, or from one piece of it, before any
// geometry is built: indices are resolved only once the whole file is read.
struct LecturaOBJ {
    std::vector<glm::vec3> vertices;
    std::vector<glm::vec3> normales;
    std::vector<std::int32_t> esquinaVertice; // zero-based; -1 when out of any range
    // Zero-based, -1 when absent; empty until a corner names a normal, and
    // from then on one per corner.
    std::vector<std::int32_t> esquinaNormal;
    bool hayNormales = false;
    std::vector<std::uint32_t> esquinasPorCara;
    std::vector<GrupoOBJ> grupos; // closed, with faces
    std::int64_t lineasGrupo = 0; // "g" and "o" lines read
    GrupoOBJ abierto;             // the group still open at the end of the text
    // A piece that continues the text before it begins inside that text's
    // open group: its faces before its first "g" or "o" line (all of them
    // when it has none) belong to that group, and its own open group exists
    // only once such a line has come.
    std::size_t carasIniciales = 0;
    bool abiertoPropio = true;

    std::int32_t normalDeEsquina(std::size_t e) const {
        return hayNormales ? esquinaNormal[e] : -1;
    }
};

// A one-based OBJ index to zero-based, -1 when it can't address anything.
std::int32_t indiceBaseCero(std::int64_t v) {
    // Compared before subtracting: v - 1 overflows for the smallest int64.
    if (v < 1 || v > std::numeric_limits<std::int32_t>::max()) return -1;
    return static_cast<std::int32_t>(v - 1);
}

// The end of the token that starts at p: the next blank or the line's end.
const char* finToken(const char* p, const char* fin) {
    while (p < fin && *p != ' ') ++p;
    return p;
}

bool esDigito(char c) {
    return static_cast<unsigned char>(c - '0') <= 9;
}

constexpr std::uint64_t potenciasDiez[] = {1,       10,        100,        1'000,      10'000,
                                           100'000, 1'000'000, 10'000'000, 100'000'000};

// The digits that begin at p, at most eight and none at or past fin, read
// from one 8-byte load: gives how many there are and puts their value in
// `valor`. Eight bytes must be readable at p, even past fin.
int ochoCifras(const char* p, const char* fin, std::uint64_t& valor) {
    std::uint64_t w;
    std::memcpy(&w, p, 8);
    // Digits become 0 to 9; any other byte gets its top bit set, by the sum
    // (10 to 0x7F) or by itself (0x80 and up). A carry out of a byte only
    // reaches later bytes, past the first that is not a digit.
    const std::uint64_t a = w ^ 0x3030303030303030u;
    const std::uint64_t otros = ((a + 0x7676767676767676u) | a) & 0x8080808080808080u;
    std::ptrdiff_t n = otros ? std::countr_zero(otros) / 8 : 8;
    n = std::min(n, fin - p);
    if (n <= 0) {
        valor = 0;
        return 0;
    }
    // The first digit is the lowest byte: moved up so that the n digits end
    // at the top byte, the bytes below read as leading zeros. Then pairs,
    // fours and eights are summed in place.
    std::uint64_t x = a << (8 * (8 - n));
    x = (x * 10 + (x >> 8)) & 0x00FF00FF00FF00FFu;
    x = (x * 100 + (x >> 16)) & 0x0000FFFF0000FFFFu;
    x = (x * 10000 + (x >> 32)) & 0xFFFFFFFFu;
    valor = x;
    return static_cast<int>(n);
}

// Adds to m the digits from p up to the first other byte or fin; gives where
// they end, or nullptr when m would overflow (the caller then reads the
// number the slow way). Eight at a time while eight bytes are readable
// before finTexto, which may lie past fin.
const char* anadirCifras(const char* p, const char* fin, const char* finTexto, std::uint64_t& m) {
    constexpr std::uint64_t maximo = std::numeric_limits<std::uint64_t>::max();
    while (finTexto - p >= 8) {
        std::uint64_t valor;
        const int n = ochoCifras(p, fin, valor);
        if (n == 0) return p;
        if (m > (maximo - valor) / potenciasDiez[n]) return nullptr;
        m = m * potenciasDiez[n] + valor;
        p += n;
        if (n < 8) return p;
    }
    for (; p < fin && esDigito(*p); ++p) {
        if (m > (maximo - 9) / 10) return nullptr;
        m = m * 10 + static_cast<unsigned>(*p - '0');
    }
    return p;
}

// Reads the plain decimal number (sign, digits, point, digits, exponent)
// that starts at p and ends at a blank or at fin, rounded exactly as
// leerFloat rounds it. Gives nullptr when the token is anything else or
// needs more care (many digits, large exponents, a result that lies exactly
// between two floats): the caller then reads it with leerFloat.
const char* leerFloatSencillo(const char* p, const char* fin, const char* finTexto,
                              float& resultado) {
    bool negativo = false;
    if (p < fin && (*p == '-' || *p == '+')) negativo = *p++ == '-';
    std::uint64_t mantisa = 0;
    std::int64_t exponente = 0; // of ten
    const char* inicio = p;
    p = anadirCifras(p, fin, finTexto, mantisa);
    if (!p) return nullptr;
    bool hayCifras = p > inicio;
    if (p < fin && *p == '.') {
        inicio = ++p;
        p = anadirCifras(p, fin, finTexto, mantisa);
        if (!p) return nullptr;
        exponente = -(p - inicio);
        hayCifras = hayCifras || p > inicio;
    }
    if (!hayCifras) return nullptr;
    if (p < fin && (*p == 'e' || *p == 'E')) {
        ++p;
        bool exponenteNegativo = false;
        if (p < fin && (*p == '-' || *p == '+')) exponenteNegativo = *p++ == '-';
        std::int64_t e = 0;
        inicio = p;
        for (; p < fin && esDigito(*p) && p - inicio < 4; ++p) e = e * 10 + (*p - '0');
        if (p == inicio || (p < fin && esDigito(*p))) return nullptr;
        exponente += exponenteNegativo ? -e : e;
    }
    if (p < fin && *p != ' ') return nullptr;
    if (mantisa == 0) {
        resultado = negativo ? -0.0f : 0.0f;
        return p;
    }
    // A mantissa below 2^53 and a power of ten up to 10^22 are exact doubles,
    // so one multiplication or division rounds the number once, correctly,
    // to a double d; the result stays between 1e-22 and 1e38. Rounding d to
    // float then gives the correctly rounded float unless d lies exactly
    // halfway between two floats, which the low 29 bits of d tell.
    constexpr double potencias[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                    1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                    1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    if (mantisa >= (std::uint64_t{1} << 53) || exponente < -22 || exponente > 22) return nullptr;
    const auto m = static_cast<double>(mantisa);
    const double d = exponente >= 0 ? m * potencias[exponente] : m / potencias[-exponente];
    if ((std::bit_cast<std::uint64_t>(d) & 0x1FFFFFFFu) == 0x10000000u) return nullptr;
    const auto f = static_cast<float>(d);
    resultado = negativo ? -f : f;
    return p;
}

// The three numbers of a "v" or "vn" line after its keyword; false when the
// line has fewer than three or one of them is not a number. More are ignored.
bool leerTresFloats(const char* p, const char* fin, const char* finTexto, glm::vec3& v) {
    for (int k = 0; k < 3; ++k) {
        while (p < fin && *p == ' ') ++p;
        if (p == fin) return false;
        if (const char* tras = leerFloatSencillo(p, fin, finTexto, v[k])) {
            p = tras;
            continue;
        }
        const char* tras = finToken(p, fin);
        const auto f = leerFloat(std::string_view(p, static_cast<std::size_t>(tras - p)));
        if (!f) return false;
        v[k] = *f;
        p = tras;
    }
    return true;
}

// One face corner "v", "v/vt", "v/vt/vn" or "v//vn": the corner is split at
// "/" with empty pieces dropped, so "v//vn" has two pieces and no normal.
void leerEsquina(std::string_view t, std::int32_t& vertice, std::int32_t& normal) {
    std::string_view piezas[3];
    int n = 0;
    std::size_t inicio = 0;
    while (inicio <= t.size() && n < 3) {
        std::size_t barra = t.find('/', inicio);
        if (barra == std::string_view::npos) barra = t.size();
        if (barra > inicio) piezas[n++] = t.substr(inicio, barra - inicio);
        inicio = barra + 1;
    }
    const auto v = n > 0 ? leerEntero(piezas[0]) : std::nullopt;
    vertice = indiceBaseCero(v ? *v : 1);
    const auto vn = n > 2 ? leerEntero(piezas[2]) : std::nullopt;
    normal = vn ? indiceBaseCero(*vn) : -1;
}

// The corners of an "f" line after its keyword.
void leerCara(const char* p, const char* fin, const char* finTexto, LecturaOBJ& l) {
    const std::size_t antes = l.esquinaVertice.size();
    while (true) {
        while (p < fin && *p == ' ') ++p;
        if (p == fin) break;
        std::int32_t vertice;
        std::int32_t normal = -1;
        // A plain vertex number, the converter's usual corner, is read at
        // once: up to seven digits in one load, or up to 18 one by one.
        std::uint64_t v = 0;
        const char* q = p;
        int n = 0;
        if (finTexto - p >= 8) n = ochoCifras(p, fin, v);
        if (n > 0 && n < 8) {
            q = p + n;
        } else {
            v = 0;
            for (; q < fin && esDigito(*q) && q - p < 18; ++q)
                v = v * 10 + static_cast<unsigned>(*q - '0');
        }
        if (q > p && (q == fin || *q == ' ')) {
            vertice = indiceBaseCero(static_cast<std::int64_t>(v));
        } else {
            q = finToken(p, fin);
            leerEsquina(std::string_view(p, static_cast<std::size_t>(q - p)), vertice, normal);
        }
        p = q;
        if (normal >= 0 && !l.hayNormales) {
            l.hayNormales = true;
            l.esquinaNormal.assign(l.esquinaVertice.size(), -1);
        }
        l.esquinaVertice.push_back(vertice);
        if (l.hayNormales) l.esquinaNormal.push_back(normal);
    }
    const std::size_t esquinas = l.esquinaVertice.size() - antes;
    // A face with more corners than its count can hold (a line over 8 GB) is
    // dropped like one with too few.
    if (esquinas < 3 || esquinas > std::numeric_limits<std::uint32_t>::max()) {
        l.esquinaVertice.resize(antes);
        if (l.hayNormales) l.esquinaNormal.resize(antes);
    } else {
        l.esquinasPorCara.push_back(static_cast<std::uint32_t>(esquinas));
    }
}

// The part of a large text read before its lists are sized for the rest.
constexpr std::size_t tamanoMuestra = 256u << 10;

// Sizes the lists for `factor` times what they hold, plus an eighth.
void reservar(LecturaOBJ& l, double factor) {
    auto ajustar = [factor](auto& v) {
        v.reserve(static_cast<std::size_t>(v.size() * factor * 1.125) + 16);
    };
    ajustar(l.vertices);
    ajustar(l.normales);
    ajustar(l.esquinaVertice);
    if (l.hayNormales) ajustar(l.esquinaNormal);
    ajustar(l.esquinasPorCara);
}

// Reads the text into l, leaving its last group open. A "g" or "o" line
// closes the open group, which is kept if it has faces, and opens one with
// the new name (a group without faces is thus renamed). With `continua`, the
// text is a piece that continues another and begins inside its open group.
void leer(std::string_view texto, LecturaOBJ& l, bool continua) {
    GrupoOBJ actual{"default", -1, 0, 0, 0};
    l.abiertoPropio = !continua;

    const char* p = texto.data();
    const char* const fin = p + texto.size();
    // Once the first part of a large text is read, the lists are sized for
    // the whole text at the same rate (and a margin), so that they need not
    // grow step by step, each step a copy into fresh memory.
    const char* const muestra = texto.size() >= 8 * tamanoMuestra ? p + tamanoMuestra : fin;
    bool reservado = false;
    while (p < fin) {
        if (!reservado && p >= muestra) {
            reservar(l, static_cast<double>(texto.size()) / static_cast<double>(p - texto.data()));
            reservado = true;
        }
        const char* nl =
            static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(fin - p)));
        // A carriage return before the line end belongs to the line end (CRLF files).
        const char* finLinea = nl ? nl : fin;
        if (finLinea > p && finLinea[-1] == '\r') --finLinea;
        const std::string_view linea =
            recortar(std::string_view(p, static_cast<std::size_t>(finLinea - p)));
        p = nl ? nl + 1 : fin;
        if (linea.empty()) continue;

        // The keyword is the line's first token, up to the first blank; the
        // trimmed line begins with it.
        const char* a = linea.data();
        const char* const z = a + linea.size();
        const bool unaLetra = linea.size() == 1 || a[1] == ' ';
        if (a[0] == 'v') {
            glm::vec3 v;
            if (unaLetra) {
                if (leerTresFloats(a + 1, z, fin, v)) l.vertices.push_back(v);
            } else if (a[1] == 'n' && (linea.size() == 2 || a[2] == ' ')) {
                if (leerTresFloats(a + 2, z, fin, v)) l.normales.push_back(v);
            }
        } else if (a[0] == 'f' && unaLetra) {
            leerCara(a + 1, z, fin, l);
        } else if ((a[0] == 'g' || a[0] == 'o') && unaLetra) {
            std::string nombre =
                linea.size() == 1 ? "default" : std::string(recortar(linea.substr(2)));
            if (!l.abiertoPropio) {
                l.carasIniciales = l.esquinasPorCara.size();
                l.abiertoPropio = true;
            } else if (l.esquinasPorCara.size() > actual.primeraCara) {
                actual.finCaras = l.esquinasPorCara.size();
                l.grupos.push_back(std::move(actual));
            }
            actual.nombre = std::move(nombre);
            actual.linea = l.lineasGrupo++;
            actual.primeraCara = l.esquinasPorCara.size();
            actual.primeraEsquina = l.esquinaVertice.size();
        }
    }
    if (!l.abiertoPropio) l.carasIniciales = l.esquinasPorCara.size();
    actual.finCaras = l.esquinasPorCara.size();
    l.abierto = std::move(actual);
}

// A stretch of one group's faces within one reading.
struct TramoOBJ {
    const LecturaOBJ* lectura = nullptr;
    std::size_t primeraCara = 0;
    std::size_t finCaras = 0;
    std::size_t primeraEsquina = 0;
};

// A group of the whole file: one stretch, or two when the group runs on
// from the first piece of the text into the second.
struct GrupoFinal {
    const std::string* nombre = nullptr;
    std::int64_t linea = -1; // its "g" or "o" line in the whole file
    TramoOBJ tramos[2];
    int numeroTramos = 0;
    std::size_t caras = 0; // its work, to share it out
};

// The vertices or normals of the whole file: those of the first piece, then
// those of the second.
struct ListaPuntos {
    const std::vector<glm::vec3>* primera;
    const std::vector<glm::vec3>* segunda;

    std::size_t size() const { return primera->size() + segunda->size(); }
    const glm::vec3& operator[](std::size_t i) const {
        return i < primera->size() ? (*primera)[i] : (*segunda)[i - primera->size()];
    }
};

// The groups of the file, in order, from one reading or from the two
// readings of its pieces.
std::vector<GrupoFinal> gruposFinales(const LecturaOBJ& a, const LecturaOBJ* b) {
    std::vector<GrupoFinal> r;
    auto anadir = [&](const LecturaOBJ& l, const GrupoOBJ& g) {
        GrupoFinal f;
        f.nombre = &g.nombre;
        // The second piece counts its group lines from its own start.
        f.linea = g.linea < 0 || &l == &a ? g.linea : g.linea + a.lineasGrupo;
        f.tramos[0] = {&l, g.primeraCara, g.finCaras, g.primeraEsquina};
        f.numeroTramos = 1;
        f.caras = g.finCaras - g.primeraCara;
        r.push_back(f);
    };
    r.reserve(a.grupos.size() + 1 + (b ? b->grupos.size() + 1 : 0));
    for (const GrupoOBJ& g : a.grupos) anadir(a, g);
    GrupoFinal unido;
    unido.nombre = &a.abierto.nombre;
    unido.linea = a.abierto.linea;
    if (a.abierto.finCaras > a.abierto.primeraCara) {
        unido.tramos[unido.numeroTramos++] = {&a, a.abierto.primeraCara, a.abierto.finCaras,
                                              a.abierto.primeraEsquina};
        unido.caras += a.abierto.finCaras - a.abierto.primeraCara;
    }
    if (!b) {
        if (unido.numeroTramos) r.push_back(unido);
        return r;
    }
    if (b->carasIniciales > 0) {
        unido.tramos[unido.numeroTramos++] = {b, 0, b->carasIniciales, 0};
        unido.caras += b->carasIniciales;
    }
    if (unido.numeroTramos) r.push_back(unido);
    for (const GrupoOBJ& g : b->grupos) anadir(*b, g);
    if (b->abiertoPropio && b->abierto.finCaras > b->abierto.primeraCara) anadir(*b, b->abierto);
    return r;
}

std::shared_ptr<Node> construirGrupo(const GrupoFinal& g, const ListaPuntos& vertices,
                                     const ListaPuntos& normales) {
    // Indices are 32-bit and number the unrolled corners: the group ends at
    // the last face whose triangles still fit (only files over 1 GB reach it).
    constexpr std::size_t maxEsquinas = std::numeric_limits<std::int32_t>::max();
    std::size_t triangulos = 0;
    TramoOBJ tramos[2];
    std::size_t finEsquinas[2] = {0, 0};
    int numeroTramos = 0;
    bool lleno = false;
    for (int k = 0; k < g.numeroTramos && !lleno; ++k) {
        TramoOBJ t = g.tramos[k];
        const auto& porCara = t.lectura->esquinasPorCara;
        std::size_t fin = t.primeraCara;
        std::size_t esquinas = t.primeraEsquina;
        for (; fin < t.finCaras; ++fin) {
            const std::size_t n = porCara[fin] - 2;
            if ((triangulos + n) * 3 > maxEsquinas) {
                lleno = true;
                break;
            }
            triangulos += n;
            esquinas += porCara[fin];
        }
        t.finCaras = fin;
        finEsquinas[numeroTramos] = esquinas;
        tramos[numeroTramos++] = t;
    }

    auto geo = std::make_shared<Geometry>();
    geo->name = *g.nombre;
    ElementoGeometria elemento;
    elemento.primitiva = Primitiva::Triangulos;
    elemento.indices.resize(triangulos * 3);
    for (std::size_t i = 0; i < elemento.indices.size(); ++i)
        elemento.indices[i] = static_cast<std::int32_t>(i);

    // Faces become fans from their first corner: (0, i, i+1) for each i.
    auto desplegar = [&](auto&& anadirEsquina) {
        for (int k = 0; k < numeroTramos; ++k) {
            const TramoOBJ& t = tramos[k];
            const LecturaOBJ& l = *t.lectura;
            std::size_t esquina = t.primeraEsquina;
            for (std::size_t c = t.primeraCara; c < t.finCaras; ++c) {
                const std::uint32_t n = l.esquinasPorCara[c];
                for (std::uint32_t i = 1; i + 1 < n; ++i) {
                    anadirEsquina(l, esquina);
                    anadirEsquina(l, esquina + i);
                    anadirEsquina(l, esquina + i + 1);
                }
                esquina += n;
            }
        }
    };

    const auto nv = static_cast<std::int32_t>(std::min<std::size_t>(vertices.size(), INT32_MAX));
    geo->vertices.reserve(triangulos * 3);
    desplegar([&](const LecturaOBJ& l, std::size_t e) {
        const std::int32_t v = l.esquinaVertice[e];
        geo->vertices.push_back(v >= 0 && v < nv ? vertices[static_cast<std::size_t>(v)]
                                                 : glm::vec3(0.0f));
    });

    // Normals only when every corner drawn names one that exists.
    const auto nn = static_cast<std::int32_t>(std::min<std::size_t>(normales.size(), INT32_MAX));
    bool conNormales = triangulos > 0;
    for (int k = 0; k < numeroTramos && conNormales; ++k) {
        const TramoOBJ& t = tramos[k];
        for (std::size_t e = t.primeraEsquina; conNormales && e < finEsquinas[k]; ++e) {
            const std::int32_t n = t.lectura->normalDeEsquina(e);
            conNormales = n >= 0 && n < nn;
        }
    }
    if (conNormales) {
        geo->normales.reserve(triangulos * 3);
        desplegar([&](const LecturaOBJ& l, std::size_t e) {
            geo->normales.push_back(normales[static_cast<std::size_t>(l.esquinaNormal[e])]);
        });
    }

    geo->elementos.push_back(std::move(elemento));
    geo->materiales.push_back(materialPorDefectoOBJ(true));

    auto nodo = Node::crear(*g.nombre);
    nodo->setGeometry(std::move(geo));
    return nodo;
}

// Runs trabajo() on a second thread while the caller's thread runs
// propio(); an exception thrown on the second thread reaches the caller.
// Without a second thread (none can be started) both run here in turn.
template <class A, class B> void enParalelo(A&& trabajo, B&& propio) {
    std::exception_ptr error;
    std::thread hilo;
    try {
        hilo = std::thread([&] {
            try {
                trabajo();
            } catch (...) {
                error = std::current_exception();
            }
        });
    } catch (const std::system_error&) {
        trabajo();
        propio();
        return;
    }
    try {
        propio();
    } catch (...) {
        hilo.join();
        throw;
    }
    hilo.join();
    if (error) std::rethrow_exception(error);
}

// The model root with one node per group, the nodes built on two threads
// when there are enough groups to share.
std::shared_ptr<Node> construirModelo(const std::vector<GrupoFinal>& grupos,
                                      const ListaPuntos& vertices, const ListaPuntos& normales,
                                      bool dosHilos) {
    std::vector<std::shared_ptr<Node>> nodos(grupos.size());
    auto construir = [&](std::size_t desde, std::size_t hasta) {
        for (std::size_t i = desde; i < hasta; ++i)
            nodos[i] = construirGrupo(grupos[i], vertices, normales);
    };
    if (dosHilos && grupos.size() >= 2) {
        // Cut where about half the faces are done.
        std::size_t total = 0;
        for (const GrupoFinal& g : grupos) total += g.caras;
        std::size_t corte = 0;
        for (std::size_t hechas = 0; corte + 1 < grupos.size() && hechas < total / 2; ++corte)
            hechas += grupos[corte].caras;
        enParalelo([&] { construir(corte, grupos.size()); }, [&] { construir(0, corte); });
    } else {
        construir(0, grupos.size());
    }
    auto raiz = Node::crear();
    for (auto& n : nodos) raiz->addChildNode(std::move(n));
    return raiz;
}

// One line of the converter's identities: the GlobalId, IFC class and name
// of the element of one group line, in the order of the group lines.
struct IdentidadGrupo {
    std::string_view globalId, clase, nombre;
};

std::vector<IdentidadGrupo> leerIdentidades(std::string_view texto) {
    std::vector<IdentidadGrupo> r;
    while (!texto.empty()) {
        const std::size_t nl = texto.find('\n');
        std::string_view linea = texto.substr(0, nl);
        texto.remove_prefix(nl == std::string_view::npos ? texto.size() : nl + 1);
        if (!linea.empty() && linea.back() == '\r') linea.remove_suffix(1);
        IdentidadGrupo id;
        const std::size_t t1 = linea.find('\t');
        const std::size_t t2 = t1 == std::string_view::npos ? t1 : linea.find('\t', t1 + 1);
        if (t2 != std::string_view::npos) // a line without its three fields names nobody
            id = {linea.substr(0, t1), linea.substr(t1 + 1, t2 - t1 - 1), linea.substr(t2 + 1)};
        r.push_back(id);
    }
    return r;
}

// Gives each element node the identity of its group line. A group whose
// name is not the name on that line (a file that does not match its
// identities, or a name that broke the OBJ line) gets none and is known by
// its name alone: an element never takes another's identity.
void asignarIdentidades(Node& raiz, const std::vector<GrupoFinal>& grupos, std::string_view texto) {
    if (texto.empty() || !esUTF8Valido(texto)) return;
    const std::vector<IdentidadGrupo> ids = leerIdentidades(texto);
    const auto& nodos = raiz.childNodes();
    for (std::size_t i = 0; i < grupos.size() && i < nodos.size(); ++i) {
        const std::int64_t linea = grupos[i].linea;
        if (linea < 0 || static_cast<std::uint64_t>(linea) >= ids.size()) continue;
        const IdentidadGrupo& id = ids[static_cast<std::size_t>(linea)];
        const std::string_view nombre = recortar(id.nombre);
        const bool mismo = nombre == *grupos[i].nombre || (nombre.empty() && *grupos[i].nombre == "default");
        if (!mismo || id.globalId.empty()) continue;
        nodos[i]->setIdentidadIFC(std::string(id.globalId), std::string(id.clase));
    }
}

// Texts from this size up are read in two pieces at once.
constexpr std::size_t tamanoParaDosHilos = 4u << 20;

std::shared_ptr<Node> cargarEnUnaParte(std::string_view texto, std::string_view identidades) {
    LecturaOBJ lectura;
    leer(texto, lectura, false);
    const std::vector<GrupoFinal> grupos = gruposFinales(lectura, nullptr);
    if (grupos.empty()) return nullptr;
    const std::vector<glm::vec3> ninguno;
    auto raiz = construirModelo(grupos, {&lectura.vertices, &ninguno}, {&lectura.normales, &ninguno},
                                false);
    asignarIdentidades(*raiz, grupos, identidades);
    return raiz;
}

std::shared_ptr<Node> cargarEnDosPartes(std::string_view texto, std::size_t corte,
                                        std::string_view identidades) {
    // The second piece begins after the first line end at or after the cut.
    const std::size_t nl = corte < texto.size() ? texto.find('\n', corte) : std::string_view::npos;
    if (nl == std::string_view::npos || nl + 1 == texto.size()) return cargarEnUnaParte(texto, identidades);
    LecturaOBJ primera;
    LecturaOBJ segunda;
    enParalelo([&] { leer(texto.substr(nl + 1), segunda, true); },
               [&] { leer(texto.substr(0, nl + 1), primera, false); });
    const std::vector<GrupoFinal> grupos = gruposFinales(primera, &segunda);
    if (grupos.empty()) return nullptr;
    auto raiz = construirModelo(grupos, {&primera.vertices, &segunda.vertices},
                                {&primera.normales, &segunda.normales}, true);
    asignarIdentidades(*raiz, grupos, identidades);
    return raiz;
}

} // namespace

std::shared_ptr<Material> materialPorDefectoOBJ(bool dobleCara) {
    auto m = std::make_shared<Material>();
    m->setDiffuse(Color::gris(0.75f));
    m->setLightingModel(ModeloIluminacion::Phong);
    m->setDoubleSided(dobleCara);
    return m;
}

std::string rutaIdentidadesOBJ(const std::string& rutaOBJ) {
    const std::size_t punto = rutaOBJ.rfind('.');
    const std::size_t barra = rutaOBJ.rfind('/');
    const bool conExtension = punto != std::string::npos && (barra == std::string::npos || punto > barra);
    return (conExtension ? rutaOBJ.substr(0, punto) : rutaOBJ) + ".ids";
}

std::shared_ptr<Node> cargarOBJTexto(std::string_view texto, std::string_view identidades) {
    if (texto.empty() || !esUTF8Valido(texto)) return nullptr;
    if (texto.size() >= tamanoParaDosHilos && std::thread::hardware_concurrency() >= 2)
        return cargarEnDosPartes(texto, texto.size() / 2, identidades);
    return cargarEnUnaParte(texto, identidades);
}

std::shared_ptr<Node> cargarOBJTextoEnDosPartes(std::string_view texto, std::size_t corte,
                                                std::string_view identidades) {
    if (texto.empty() || !esUTF8Valido(texto)) return nullptr;
    return cargarEnDosPartes(texto, corte, identidades);
}

std::shared_ptr<Node> cargarOBJ(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    if (!archivo.abierto()) return nullptr;
    const ArchivoMapeado identidades(rutaIdentidadesOBJ(ruta));
    return cargarOBJTexto(archivo.texto(), identidades.texto());
}

void normalizarMateriales(Node& modelo) {
    modelo.enumerateChildNodes([](Node& n, bool&) {
        Geometry* g = n.geometry().get();
        if (!g) return;
        if (g->materiales.empty()) {
            g->materiales.push_back(materialPorDefectoOBJ(false));
            return;
        }
        for (auto& m : g->materiales) {
            if (!m) continue;
            if (m->diffuseVacio()) m->setDiffuse(Color::gris(0.75f));
            m->setLightingModel(ModeloIluminacion::Phong);
        }
    });
}

} // namespace teskal
