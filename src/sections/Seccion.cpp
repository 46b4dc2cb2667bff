#include "sections/Seccion.h"

#include "federation/Formato.h"

#include <QUuid>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

namespace teskal {

namespace {

std::string nuevoId() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(); }

bool tieneNombre(const Node& n) { return n.name() && !n.name()->empty(); }

// Calls `visitar(nodo, elemento)` for every descendant of the discipline's
// root that has a geometry, depth first as enumerateChildNodes walks, with
// the node that names its element (null when none does). The element is
// passed down the walk instead of being looked for above every node.
template <class F> void recorrerGeometrias(const Node& raiz, F&& visitar) {
    const Node* sobreRaiz = nodoElementoDe(raiz, &raiz);
    auto bajar = [&](auto& self, const Node& n, const Node* elemento) -> void {
        for (const auto& h : n.childNodes()) {
            const Node* e = tieneNombre(*h) ? h.get() : elemento;
            if (h->geometry()) visitar(*h, e);
            self(self, *h, e);
        }
    };
    bajar(bajar, raiz, sobreRaiz);
}

// The names seen in one discipline: open addressing over views of the nodes
// own names, so that marking 100,000 elements allocates a table, not a node
// per name. Names are never empty; an empty view marks a free slot.
class NombresVistos {
public:
    // True when the name was not there yet.
    bool insertar(std::string_view nombre) {
        if ((cuenta_ + 1) * 2 > tabla_.size()) crecer();
        std::size_t i = std::hash<std::string_view>{}(nombre) & (tabla_.size() - 1);
        while (!tabla_[i].empty()) {
            if (tabla_[i] == nombre) return false;
            i = (i + 1) & (tabla_.size() - 1);
        }
        tabla_[i] = nombre;
        ++cuenta_;
        return true;
    }

private:
    void crecer() {
        std::vector<std::string_view> vieja(std::max<std::size_t>(tabla_.size() * 2, 1024));
        vieja.swap(tabla_);
        for (std::string_view n : vieja) {
            if (n.empty()) continue;
            std::size_t i = std::hash<std::string_view>{}(n) & (tabla_.size() - 1);
            while (!tabla_[i].empty()) i = (i + 1) & (tabla_.size() - 1);
            tabla_[i] = n;
        }
    }
    std::vector<std::string_view> tabla_;
    std::size_t cuenta_ = 0;
};

std::string minusculas(std::string s) {
    for (char& c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

bool empiezaConDosGuiones(const std::string& s) { return s.size() >= 2 && s[0] == '_' && s[1] == '_'; }

std::string primeraPropiedad(const PropiedadesElemento& props, std::initializer_list<std::string_view> palabras) {
    for (const auto& [nombre, valor] : props) {
        if (empiezaConDosGuiones(nombre)) continue;
        const std::string bajo = minusculas(nombre);
        for (std::string_view p : palabras)
            if (bajo.find(p) != std::string::npos) return valor;
    }
    return {};
}

} // namespace

namespace {

// One component of the vertices an index list reaches: its least and
// greatest value (a NaN never wins, as in Geometry::boundingBox) and whether
// any was a NaN. Indices out of range are passed over.
template <int C>
void rangoIndices(const glm::vec3* v, std::uint32_t n, const std::int32_t* idx, std::size_t cuenta, float& mn,
                  float& mx, bool& nan, bool& alguno) {
    float a = mn, b = mx;
    bool hayNaN = false, hay = false;
    for (std::size_t k = 0; k < cuenta; ++k) {
        const auto i = static_cast<std::uint32_t>(idx[k]);
        if (i >= n) continue; // negative indices wrap above n
        const float x = v[i][C];
        a = x < a ? x : a;
        b = x > b ? x : b;
        hayNaN |= x != x;
        hay = true;
    }
    mn = a;
    mx = b;
    nan |= hayNaN;
    alguno |= hay;
}

} // namespace

RangoEje rangoEje(const Geometry& g, int eje, bool soloTriangulos) {
    RangoEje r;
    const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(g.vertices.size(), 0x7fffffffu));
    const glm::vec3* v = g.vertices.data();
    float mn = std::numeric_limits<float>::infinity(), mx = -std::numeric_limits<float>::infinity();
    bool nan = false, alguno = false;
    for (const ElementoGeometria& e : g.elementos) {
        if (soloTriangulos && e.primitiva != Primitiva::Triangulos) continue;
        const std::size_t cuenta = soloTriangulos ? e.indices.size() / 3 * 3 : e.indices.size();
        const std::int32_t* idx = e.indices.data();
        if (eje == 0)
            rangoIndices<0>(v, n, idx, cuenta, mn, mx, nan, alguno);
        else if (eje == 1)
            rangoIndices<1>(v, n, idx, cuenta, mn, mx, nan, alguno);
        else
            rangoIndices<2>(v, n, idx, cuenta, mn, mx, nan, alguno);
    }
    r.minimo = mn;
    r.maximo = mx;
    r.conNaN = nan;
    r.alguno = alguno;
    return r;
}

void cortarGeometria(const Geometry& g, int eje, float posicion, std::vector<ParHoja>& salida) {
    if (g.vertices.empty()) return;
    cortarGeometria(g, eje, posicion, rangoEje(g, eje, true), salida);
}

void cortarGeometria(const Geometry& g, int eje, float posicion, const RangoEje& r, std::vector<ParHoja>& salida) {
    const auto n = static_cast<std::int64_t>(g.vertices.size());
    if (n == 0) return;
    // A geometry whose triangles lie wholly on one side of the plane gives no
    // line: its range along the axis is read first, and its triangles only
    // when the plane crosses it. A vertex that is not a number counts as not
    // above the plane, so it keeps the triangles in play.
    if (!r.alguno || r.maximo <= posicion || (r.minimo > posicion && !r.conNaN)) return;
    const glm::vec3* v = g.vertices.data();
    for (const ElementoGeometria& e : g.elementos) {
        if (e.primitiva != Primitiva::Triangulos) continue;
        const std::int32_t* idx = e.indices.data();
        const std::size_t triangulos = e.indices.size() / 3;
        for (std::size_t t = 0; t < triangulos; ++t, idx += 3) {
            const std::int32_t i0 = idx[0], i1 = idx[1], i2 = idx[2];
            if (i0 < 0 || i1 < 0 || i2 < 0 || i0 >= n || i1 >= n || i2 >= n) continue;
            if (auto par = intersectarTriangulo(eje, v[i0], v[i1], v[i2], posicion)) salida.push_back(*par);
        }
    }
}

std::vector<ParHoja> cortarGeometria(const Geometry& g, int eje, float posicion) {
    std::vector<ParHoja> salida;
    cortarGeometria(g, eje, posicion, salida);
    return salida;
}

std::array<Segmento2D, 4> contornoCaja(int eje, const std::string& key, const Color& color, const glm::vec3& minimo,
                                       const glm::vec3& maximo) {
    const glm::vec2 a = proyectarEnHoja(eje, minimo), b = proyectarEnHoja(eje, maximo);
    const glm::vec2 c0{a.x, a.y}, c1{b.x, a.y}, c2{b.x, b.y}, c3{a.x, b.y};
    return {Segmento2D{c0, c1, key, color, false, {}}, Segmento2D{c1, c2, key, color, false, {}},
            Segmento2D{c2, c3, key, color, false, {}}, Segmento2D{c3, c0, key, color, false, {}}};
}

const Node* nodoElementoDe(const Node& nodo, const Node* nodoRaiz) {
    // The walk goes on above the discipline's root: the first named node
    // above it is taken (the root itself never is).
    const Node* n = &nodo;
    std::shared_ptr<Node> sostener;
    while (n) {
        if (n != nodoRaiz && tieneNombre(*n)) return n;
        sostener = n->parent();
        n = sostener.get();
    }
    return nullptr;
}

std::string_view nombreElementoDe(const Node& nodo, const Node* nodoRaiz) {
    const Node* e = nodoElementoDe(nodo, nodoRaiz);
    return e ? std::string_view(*e->name()) : std::string_view();
}

std::vector<Segmento2D> extraerSegmentos(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                                         double posicion, double profundidad, RangosCorte* rangos) {
    std::vector<Segmento2D> resultado;
    if (rangos) {
        rangos->eje = eje;
        rangos->porNodo.clear();
    }
    const float p = static_cast<float>(posicion);
    float limite;
    if (profundidad == 0.0)
        limite = p;
    else if (std::isinf(profundidad))
        limite = std::numeric_limits<float>::lowest();
    else
        limite = static_cast<float>(posicion - profundidad);
    std::vector<ParHoja> pares;
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.isVisible || !esp.nodoRaiz) continue;
        const Color color = esp.colorOriginal;
        // What lies behind the plane, down to the limit, by its box's centre.
        auto contorno = [&](const Node&, const std::optional<Box>& caja) {
            if (!caja) return;
            const float centro = static_cast<float>(static_cast<double>(componenteEje(eje, caja->min)) +
                                                    static_cast<double>(componenteEje(eje, caja->max))) *
                                 0.5f;
            if (centro >= limite && p > centro)
                for (auto& s : contornoCaja(eje, clave, color, caja->min, caja->max)) resultado.push_back(std::move(s));
        };
        recorrerGeometrias(*esp.nodoRaiz, [&](const Node& n, const Node* elemento) {
            const Geometry& g = *n.geometry();
            std::optional<Box> caja;
            if (profundidad > 0.0) caja = n.boundingBox();
            // A box wholly on one side of the plane holds no triangle that
            // crosses it: the triangles are not read (the lines are the same).
            const bool cruza = !caja || caja->vacia ||
                               (componenteEje(eje, caja->min) <= p && componenteEje(eje, caja->max) > p);
            // One read of the vertices gives the range of all index lists
            // (kept for the labels) and, as a rule, that of the triangles.
            if (!cruza && !rangos) return contorno(n, caja);
            const RangoEje todos = rangoEje(g, eje, false);
            if (rangos) rangos->porNodo.push_back(todos);
            if (cruza) {
                pares.clear();
                const bool soloTriangulos = std::all_of(g.elementos.begin(), g.elementos.end(), [](const auto& e) {
                    return e.primitiva == Primitiva::Triangulos && e.indices.size() % 3 == 0;
                });
                cortarGeometria(g, eje, p, soloTriangulos ? todos : rangoEje(g, eje, true), pares);
                if (!pares.empty()) {
                    static const std::string sinNombre;
                    const std::string& nombre = elemento ? *elemento->name() : sinNombre;
                    for (const auto& [a, b] : pares) resultado.push_back(Segmento2D{a, b, clave, color, true, nombre});
                }
            }
            contorno(n, caja);
        });
    }
    return resultado;
}

std::string tipoIFCLegible(const std::string& tipo) {
    static const std::unordered_map<std::string, std::string> tabla = {
        {"IFCWALL", "Muro"},
        {"IFCWALLSTANDARDCASE", "Muro"},
        {"IFCSLAB", "Losa"},
        {"IFCBEAM", "Viga"},
        {"IFCCOLUMN", "Columna"},
        {"IFCDOOR", "Puerta"},
        {"IFCWINDOW", "Ventana"},
        {"IFCSTAIR", "Escalera"},
        {"IFCSTAIRFLIGHT", "Tramo de escalera"},
        {"IFCROOF", "Cubierta"},
        {"IFCSPACE", "Espacio"},
        {"IFCFURNISHINGELEMENT", "Mobiliario"},
        {"IFCPILE", "Pilote"},
        {"IFCMEMBER", "Miembro estructural"},
        {"IFCPLATE", "Placa"},
        {"IFCFLOWSEGMENT", "Conducto"},
        {"IFCFLOWTERMINAL", "Terminal"},
        {"IFCFLOWFITTING", "Accesorio"},
        {"IFCPIPESEGMENT", "Tubería"},
        {"IFCPIPEFITTING", "Accs. tubería"},
        {"IFCDUCTSEGMENT", "Conducto aire"},
        {"IFCDUCTFITTING", "Accs. conducto"},
        {"IFCBUILDINGELEMENTPROXY", "Elemento genérico"},
        {"IFCCOVERING", "Revestimiento"},
        {"IFCFOOTING", "Fundación"},
        {"IFCRAILING", "Baranda"},
    };
    if (tipo.empty()) return {};
    if (const auto it = tabla.find(tipo); it != tabla.end()) return it->second;
    std::string resto;
    resto.reserve(tipo.size());
    for (std::size_t i = 0; i < tipo.size();) {
        if (tipo.compare(i, 3, "IFC") == 0) {
            i += 3;
            continue;
        }
        resto += tipo[i++];
    }
    // Word by word: the first letter up, the others down (ASCII letters; the
    // class names are ASCII).
    bool inicio = true;
    for (char& c : resto) {
        const bool blanco = c == ' ' || c == '\t' || c == '\n' || c == '_' || c == '-';
        if (blanco) {
            inicio = true;
            continue;
        }
        if (inicio && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (!inicio && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        inicio = false;
    }
    return resto;
}

void colocarTextosEtiquetas(std::vector<Etiqueta2D>& etiquetas) {
    if (etiquetas.empty()) return;
    float suma = 0.0f;
    for (const auto& e : etiquetas) suma += e.ancla.x;
    const float media = suma / static_cast<float>(etiquetas.size());
    std::vector<std::size_t> izquierda, derecha;
    for (std::size_t i = 0; i < etiquetas.size(); ++i)
        (etiquetas[i].ancla.x < media ? izquierda : derecha).push_back(i);
    auto colocar = [&](std::vector<std::size_t>& grupo, float x) {
        std::stable_sort(grupo.begin(), grupo.end(),
                         [&](std::size_t a, std::size_t b) { return etiquetas[a].ancla.y > etiquetas[b].ancla.y; });
        const int n = static_cast<int>(grupo.size());
        for (int i = 0; i < n; ++i) {
            const float y = n == 1 ? 0.0f : static_cast<float>(i - n / 2) * 1.5f;
            etiquetas[grupo[static_cast<std::size_t>(i)]].offsetTexto = {x, y};
        }
    };
    colocar(izquierda, -4.0f);
    colocar(derecha, 1.5f);
}

std::vector<Etiqueta2D> construirEtiquetas(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                                           const PropiedadesPorEspecialidad& propiedadesIFC,
                                           const PropiedadesPorEspecialidad& propiedadesPorGlobalId,
                                           double posicion, const RangosCorte* rangos) {
    std::vector<Etiqueta2D> resultado;
    const float p = static_cast<float>(posicion);
    static const PropiedadesModelo sinPropiedades;
    static const PropiedadesElemento vacias;
    std::size_t visitados = 0; // geometry nodes, in the order of the extraction's walk
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.isVisible || !esp.nodoRaiz) continue;
        const auto itNombre = propiedadesIFC.find(clave);
        const PropiedadesModelo& porNombre = itNombre != propiedadesIFC.end() ? itNombre->second : sinPropiedades;
        const auto itId = propiedadesPorGlobalId.find(clave);
        const PropiedadesModelo& porId = itId != propiedadesPorGlobalId.end() ? itId->second : sinPropiedades;
        NombresVistos vistos; // per discipline
        recorrerGeometrias(*esp.nodoRaiz, [&](const Node& n, const Node* elemento) {
            const std::size_t k = visitados++;
            if (!elemento) return;
            const std::string& nombre = *elemento->name();
            if (!vistos.insertar(nombre)) return;
            // Most elements lie off the plane: for an element node without
            // children its range along the axis is enough to leave it out.
            // Its box would read (0, 0, 0) if empty, so 0 is never left out here.
            if (elemento->childNodes().empty() && elemento->geometry() && p != 0.0f) {
                const bool leido = rangos && rangos->eje == eje && elemento == &n && k < rangos->porNodo.size();
                const RangoEje r = leido ? rangos->porNodo[k] : rangoEje(*elemento->geometry(), eje, false);
                if (!(r.alguno && p >= r.minimo && p <= r.maximo)) return;
            }
            const Box caja = elemento->boundingBox();
            if (!(p >= componenteEje(eje, caja.min) && p <= componenteEje(eje, caja.max))) return;
            Etiqueta2D e;
            e.id = nuevoId();
            const glm::vec2 a = proyectarEnHoja(eje, caja.min), b = proyectarEnHoja(eje, caja.max);
            e.ancla = {static_cast<float>(static_cast<double>(a.x) + static_cast<double>(b.x)) * 0.5f,
                       static_cast<float>(static_cast<double>(a.y) + static_cast<double>(b.y)) * 0.5f};
            e.dimensiones = formato("%.2f × %.2f m", static_cast<double>(b.x - a.x), static_cast<double>(b.y - a.y));
            const PropiedadesElemento* props = &vacias;
            if (!elemento->globalId().empty()) {
                if (const auto it = porId.find(elemento->globalId()); it != porId.end()) props = &it->second;
            } else if (const auto it = porNombre.find(nombre); it != porNombre.end()) {
                props = &it->second;
            }
            const auto tipo = props->find(std::string(claveTipoIFC));
            e.tipoIFC = tipoIFCLegible(tipo != props->end() ? tipo->second : std::string());
            e.material = primeraPropiedad(*props, {"material"});
            e.nivel = primeraPropiedad(*props, {"storey", "nivel", "level", "floor", "piso"});
            e.nombre = nombre;
            e.visible = false;
            e.key = clave;
            e.color = esp.colorOriginal;
            resultado.push_back(std::move(e));
        });
    }
    colocarTextosEtiquetas(resultado);
    return resultado;
}

std::vector<Etiqueta2D> fusionarEtiquetas(std::vector<Etiqueta2D> frescas, const std::vector<Etiqueta2D>& guardadas) {
    std::unordered_map<std::string, const Etiqueta2D*> porClave;
    for (const auto& g : guardadas) porClave[g.nombre + "|" + g.key] = &g;
    for (auto& f : frescas) {
        const auto it = porClave.find(f.nombre + "|" + f.key);
        if (it == porClave.end()) continue;
        f.visible = it->second->visible;
        f.offsetTexto = it->second->offsetTexto;
    }
    return frescas;
}

std::vector<Segmento2D> proyectarGrilla(const std::vector<EjeGrilla>& grillas, int eje) {
    std::vector<Segmento2D> resultado;
    const Color color = Color::gris(0.5f, 0.55f);
    for (const auto& g : grillas) {
        if (g.puntos.size() < 2) continue;
        for (std::size_t i = 0; i + 1 < g.puntos.size(); ++i)
            resultado.push_back(Segmento2D{proyectarEnHoja(eje, g.puntos[i]), proyectarEnHoja(eje, g.puntos[i + 1]),
                                           "GRILLA", color, false, g.tag});
    }
    return resultado;
}

double profundidadDeModo(int modoProfundidad, double profundidad) {
    if (modoProfundidad == 0) return 0.0;
    if (modoProfundidad == 1) return profundidad;
    return std::numeric_limits<double>::infinity();
}

std::string tituloPlano(int eje, double posicion, int modoProfundidad, double profundidad) {
    const char* letra = eje == 0 ? "X" : eje == 1 ? "Y" : "Z";
    std::string sufijo;
    if (modoProfundidad == 1)
        sufijo = " · " + formato("%.1f m", profundidad) + " prof.";
    else if (modoProfundidad != 0)
        sufijo = " · ilimitado";
    return std::string("Plano 2D — Eje ") + letra + " = " + formato("%.2f m", posicion) + sufijo;
}

} // namespace teskal
