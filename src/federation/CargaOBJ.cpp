#include "federation/CargaOBJ.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TextoUTF8.h"

#include <cstring>
#include <limits>
#include <vector>

namespace teskal {

namespace {

// One group of the file: its name and its faces, as a range of the face list.
struct GrupoOBJ {
    std::string nombre;
    std::size_t primeraCara = 0;
    std::size_t finCaras = 0;
    std::size_t primeraEsquina = 0;
};

// Everything read from the text before any geometry is built: indices are
// resolved only once the whole file is read.
struct LecturaOBJ {
    std::vector<glm::vec3> vertices;
    std::vector<glm::vec3> normales;
    std::vector<std::int32_t> esquinaVertice; // zero-based; -1 when out of any range
    std::vector<std::int32_t> esquinaNormal;  // zero-based; -1 when absent
    std::vector<std::uint32_t> esquinasPorCara;
    std::vector<GrupoOBJ> grupos;
};

// The next token separated by blanks, or an empty view at the end.
std::string_view siguienteToken(std::string_view& resto) {
    std::size_t i = 0;
    while (i < resto.size() && resto[i] == ' ') ++i;
    std::size_t j = i;
    while (j < resto.size() && resto[j] != ' ') ++j;
    const std::string_view token = resto.substr(i, j - i);
    resto.remove_prefix(j);
    return token;
}

// A one-based OBJ index to zero-based, -1 when it can't address anything.
std::int32_t indiceBaseCero(std::int64_t v) {
    // Compared before subtracting: v - 1 overflows for the smallest int64.
    if (v < 1 || v > std::numeric_limits<std::int32_t>::max()) return -1;
    return static_cast<std::int32_t>(v - 1);
}

bool leerTresFloats(std::string_view resto, glm::vec3& v) {
    for (int k = 0; k < 3; ++k) {
        const std::string_view t = siguienteToken(resto);
        if (t.empty()) return false; // fewer than four tokens
        const auto f = leerFloat(t);
        if (!f) return false;
        v[k] = *f;
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

void leer(std::string_view texto, LecturaOBJ& l) {
    GrupoOBJ actual{"default", 0, 0, 0};
    auto cerrarGrupo = [&] {
        actual.finCaras = l.esquinasPorCara.size();
        if (actual.finCaras > actual.primeraCara) l.grupos.push_back(actual);
    };

    const char* p = texto.data();
    const char* const fin = p + texto.size();
    while (p < fin) {
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(fin - p)));
        // A carriage return before the line end belongs to the line end (CRLF files).
        const char* finLinea = nl ? nl : fin;
        if (finLinea > p && finLinea[-1] == '\r') --finLinea;
        const std::string_view linea = recortar(std::string_view(p, static_cast<std::size_t>(finLinea - p)));
        p = nl ? nl + 1 : fin;
        if (linea.empty() || linea.front() == '#') continue;

        std::string_view resto = linea;
        const std::string_view orden = siguienteToken(resto);
        if (orden == "v" || orden == "vn") {
            glm::vec3 v;
            if (leerTresFloats(resto, v)) (orden.size() == 1 ? l.vertices : l.normales).push_back(v);
        } else if (orden == "f") {
            const std::size_t antes = l.esquinaVertice.size();
            for (std::string_view t = siguienteToken(resto); !t.empty(); t = siguienteToken(resto)) {
                std::int32_t v, n;
                leerEsquina(t, v, n);
                l.esquinaVertice.push_back(v);
                l.esquinaNormal.push_back(n);
            }
            const std::size_t esquinas = l.esquinaVertice.size() - antes;
            // A face with more corners than its count can hold (a line over
            // 8 GB) is dropped like one with too few.
            if (esquinas < 3 || esquinas > std::numeric_limits<std::uint32_t>::max()) {
                l.esquinaVertice.resize(antes);
                l.esquinaNormal.resize(antes);
            } else {
                l.esquinasPorCara.push_back(static_cast<std::uint32_t>(esquinas));
            }
        } else if (orden == "g" || orden == "o") {
            const std::size_t blanco = linea.find(' ');
            std::string nombre =
                blanco == std::string_view::npos ? "default" : std::string(recortar(linea.substr(blanco + 1)));
            if (l.esquinasPorCara.size() > actual.primeraCara) {
                cerrarGrupo();
                actual.primeraCara = l.esquinasPorCara.size();
                actual.primeraEsquina = l.esquinaVertice.size();
            }
            actual.nombre = std::move(nombre);
        }
    }
    cerrarGrupo();
}

std::shared_ptr<Node> construirGrupo(const LecturaOBJ& l, const GrupoOBJ& g) {
    // Indices are 32-bit and number the unrolled corners: the group ends at
    // the last face whose triangles still fit (only files over 1 GB reach it).
    constexpr std::size_t maxEsquinas = std::numeric_limits<std::int32_t>::max();
    std::size_t triangulos = 0;
    std::size_t finCaras = g.primeraCara;
    for (; finCaras < g.finCaras; ++finCaras) {
        const std::size_t t = l.esquinasPorCara[finCaras] - 2;
        if ((triangulos + t) * 3 > maxEsquinas) break;
        triangulos += t;
    }

    auto geo = std::make_shared<Geometry>();
    geo->name = g.nombre;
    geo->vertices.reserve(triangulos * 3);
    ElementoGeometria elemento;
    elemento.primitiva = Primitiva::Triangulos;
    elemento.indices.resize(triangulos * 3);

    const auto nv = static_cast<std::int32_t>(std::min<std::size_t>(l.vertices.size(), INT32_MAX));
    const auto nn = static_cast<std::int32_t>(std::min<std::size_t>(l.normales.size(), INT32_MAX));
    auto anadirEsquina = [&](std::size_t e) {
        const std::int32_t v = l.esquinaVertice[e];
        geo->vertices.push_back(v >= 0 && v < nv ? l.vertices[static_cast<std::size_t>(v)] : glm::vec3(0.0f));
        const std::int32_t n = l.esquinaNormal[e];
        if (n >= 0 && n < nn) geo->normales.push_back(l.normales[static_cast<std::size_t>(n)]);
    };

    std::size_t esquina = g.primeraEsquina;
    for (std::size_t c = g.primeraCara; c < finCaras; ++c) {
        const std::uint32_t n = l.esquinasPorCara[c];
        for (std::uint32_t i = 1; i + 1 < n; ++i) {
            anadirEsquina(esquina);
            anadirEsquina(esquina + i);
            anadirEsquina(esquina + i + 1);
        }
        esquina += n;
    }
    for (std::size_t i = 0; i < elemento.indices.size(); ++i)
        elemento.indices[i] = static_cast<std::int32_t>(i);
    if (geo->normales.size() != geo->vertices.size()) {
        geo->normales.clear();
        geo->normales.shrink_to_fit();
    }
    geo->elementos.push_back(std::move(elemento));
    geo->materiales.push_back(materialPorDefectoOBJ(true));

    auto nodo = Node::crear(g.nombre);
    nodo->setGeometry(std::move(geo));
    return nodo;
}

} // namespace

std::shared_ptr<Material> materialPorDefectoOBJ(bool dobleCara) {
    auto m = std::make_shared<Material>();
    m->setDiffuse(Color::gris(0.75f));
    m->setLightingModel(ModeloIluminacion::Phong);
    m->setDoubleSided(dobleCara);
    return m;
}

std::shared_ptr<Node> cargarOBJTexto(std::string_view texto) {
    if (texto.empty() || !esUTF8Valido(texto)) return nullptr;
    LecturaOBJ lectura;
    leer(texto, lectura);
    if (lectura.grupos.empty()) return nullptr;
    auto raiz = Node::crear();
    for (const GrupoOBJ& g : lectura.grupos) raiz->addChildNode(construirGrupo(lectura, g));
    return raiz;
}

std::shared_ptr<Node> cargarOBJ(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    if (!archivo.abierto()) return nullptr;
    return cargarOBJTexto(archivo.texto());
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
