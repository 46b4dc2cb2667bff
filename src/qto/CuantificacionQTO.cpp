// The quantity engine: the federated scene measured by the local box of every
// named element node, grouped by IFC class and discipline.
#include "qto/CuantificacionQTO.h"

#include "scene/Paralelo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <unordered_map>

namespace teskal {

namespace {

struct TipoQTO {
    std::string_view tipoIFC;
    std::string_view nombre;
    float densidad;
};

constexpr std::array<TipoQTO, 26> tiposQTO{{
    {"IFCWALL", "Muro", 1800},
    {"IFCWALLSTANDARDCASE", "Muro estándar", 1800},
    {"IFCSLAB", "Losa", 2400},
    {"IFCBEAM", "Viga", 2400},
    {"IFCCOLUMN", "Columna", 2400},
    {"IFCDOOR", "Puerta", 700},
    {"IFCWINDOW", "Ventana", 100},
    {"IFCSTAIR", "Escalera", 2400},
    {"IFCSTAIRFLIGHT", "Tramo escalera", 2400},
    {"IFCROOF", "Techo", 1200},
    {"IFCSPACE", "Espacio", 0}, // spaces are counted and measured but weigh nothing
    {"IFCFURNISHINGELEMENT", "Mobiliario", 500},
    {"IFCMEMBER", "Elemento estructural", 7850},
    {"IFCPLATE", "Placa", 7850},
    {"IFCFLOWSEGMENT", "Segmento hidráulico", 2000},
    {"IFCFLOWTERMINAL", "Terminal hidráulico", 2000},
    {"IFCFLOWFITTING", "Accesorio hidráulico", 2000},
    {"IFCPIPESEGMENT", "Tubería", 7850},
    {"IFCPIPEFITTING", "Accesorio tubería", 7850},
    {"IFCDUCTSEGMENT", "Ducto", 7000},
    {"IFCDUCTFITTING", "Accesorio ducto", 7000},
    {"IFCBUILDINGELEMENTPROXY", "Elemento genérico", 1000},
    {"IFCCOVERING", "Revestimiento", 1200},
    {"IFCFOOTING", "Cimiento", 2400},
    {"IFCPILE", "Pilote", 2400},
    {"IFCRAILING", "Barandal", 7850},
}};

constexpr std::string_view tipoPorDefecto = "IFCBUILDINGELEMENTPROXY";

const TipoQTO* buscarTipo(std::string_view tipoIFC) {
    for (const TipoQTO& t : tiposQTO)
        if (t.tipoIFC == tipoIFC) return &t;
    return nullptr;
}

const std::string& vacio() {
    static const std::string v;
    return v;
}

// Ids of one computation: one random UUID, varied by a counter, so that ids
// are fresh at every computation and distinct within it without asking the
// system for randomness once per element.
class GeneradorIds {
public:
    QUuid siguiente() {
        QUuid id = base_;
        id.data1 ^= static_cast<uint>(n_);
        id.data2 ^= static_cast<ushort>(n_ >> 32);
        ++n_;
        return id;
    }

private:
    QUuid base_ = QUuid::createUuid();
    std::uint64_t n_ = 0;
};

// The scene below the discipline roots as one flat list in depth-first
// order (a node before its descendants), each node with its parent's place,
// so that the costly part of measuring, every geometry's box, can be shared
// among the cores and the boxes then combined in one backward pass: what
// `Node::boundingBox` gives for every node, without walking each subtree
// again for every ancestor.
struct ArbolPlano {
    static constexpr std::size_t sinPadre = std::size_t(-1);
    std::vector<const Node*> nodos;
    std::vector<std::size_t> padres;
    std::vector<std::uint32_t> especialidades; // the place of the node's discipline in the walk

    void anadirDescendientes(const Node& raiz, std::uint32_t especialidad) {
        for (const auto& h : raiz.childNodes()) anadir(*h, sinPadre, especialidad);
    }

private:
    void anadir(const Node& n, std::size_t padre, std::uint32_t especialidad) {
        const std::size_t i = nodos.size();
        nodos.push_back(&n);
        padres.push_back(padre);
        especialidades.push_back(especialidad);
        for (const auto& h : n.childNodes()) anadir(*h, i, especialidad);
    }
};

// `b` (the local box of a child that moves its subtree) in its parent's
// coordinates, added to `caja`.
void incluirEnPadre(Box& caja, const Box& b, const Node& hijo) {
    if (b.vacia) return;
    const glm::mat4 t = hijo.transform();
    for (int k = 0; k < 8; ++k) {
        const glm::vec3 esquina((k & 1) ? b.max.x : b.min.x, (k & 2) ? b.max.y : b.min.y,
                                (k & 4) ? b.max.z : b.min.z);
        caja.incluir(glm::vec3(t * glm::vec4(esquina, 1.0f)));
    }
}

} // namespace

std::string nombreTipoQTO(std::string_view tipoIFC) {
    const TipoQTO* t = buscarTipo(tipoIFC);
    return std::string(t ? t->nombre : tipoIFC);
}

float densidadTipoQTO(std::string_view tipoIFC) {
    const TipoQTO* t = buscarTipo(tipoIFC);
    return t ? t->densidad : 1000.0f;
}

const std::string& ItemQTO::valor(const std::string& clave) const {
    const auto it = propiedades.find(clave);
    return it == propiedades.end() ? vacio() : it->second;
}

float GrupoQTO::volumen() const {
    float s = 0;
    for (const ItemQTO& i : items) s += i.volumen();
    return s;
}

float GrupoQTO::areaPlanta() const {
    float s = 0;
    for (const ItemQTO& i : items) s += i.areaPlanta();
    return s;
}

float GrupoQTO::areaCara() const {
    float s = 0;
    for (const ItemQTO& i : items) s += i.areaCara();
    return s;
}

float GrupoQTO::peso() const {
    float s = 0;
    for (const ItemQTO& i : items) s += i.peso();
    return s;
}

std::string GrupoQTO::valorParametro(const std::string& clave) const {
    const std::string* primero = nullptr;
    for (const ItemQTO& i : items) {
        const auto it = i.propiedades.find(clave);
        if (it == i.propiedades.end() || valorVacioQTO(it->second)) continue;
        if (!primero)
            primero = &it->second;
        else if (it->second != *primero)
            return "varios";
    }
    return primero ? *primero : "—";
}

std::vector<GrupoQTO> calcularGruposQTO(const std::map<std::string, EspecialidadBIM>& especialidades,
                                        const std::vector<std::string>& ordenEspecialidades,
                                        const PropiedadesPorEspecialidad& porNombre,
                                        const PropiedadesPorEspecialidad& porGlobalId) {
    static const PropiedadesModelo sinPropiedades;
    static const std::string claveTipo(claveTipoIFC);
    constexpr std::size_t porcion = 2048; // nodes per slice of the shared work

    // The disciplines in walk order, with their indexes.
    struct Recorrida {
        const std::string* nombre;
        const PropiedadesModelo* porNombre;
        const PropiedadesModelo* porGlobalId;
    };
    std::vector<Recorrida> recorridas;
    ArbolPlano arbol;
    for (const std::string& clave : ordenEspecialidades) {
        const auto esp = especialidades.find(clave);
        if (esp == especialidades.end() || !esp->second.nodoRaiz) continue;
        const auto n = porNombre.find(clave);
        const auto g = porGlobalId.find(clave);
        recorridas.push_back({&esp->second.nombre, n == porNombre.end() ? &sinPropiedades : &n->second,
                              g == porGlobalId.end() ? &sinPropiedades : &g->second});
        arbol.anadirDescendientes(*esp->second.nodoRaiz, std::uint32_t(recorridas.size() - 1));
    }
    const std::size_t total = arbol.nodos.size();

    // On every core: each node's own geometry box, and for a named node its
    // entry in the index and its class. An element with a GlobalId has its
    // own entry; one without is known by its name.
    std::vector<Box> cajas(total);
    std::vector<const PropiedadesElemento*> propiedades(total, nullptr);
    std::vector<std::string_view> tipos(total);
    // What the later passes read of a node, so that they need not touch it
    // again: its name (null when it has none) and whether it moves its
    // subtree (a transform other than the identity).
    std::vector<const std::string*> nombres(total, nullptr);
    std::vector<std::uint8_t> movidos(total, 0);
    enParalelo(total, porcion, [&](std::size_t inicio, std::size_t fin) {
        for (std::size_t k = inicio; k < fin; ++k) {
            // Each node, its geometry and its arrays lie in memory of their
            // own: ask for the next ones while this one is measured.
            if (k + 4 < fin) __builtin_prefetch(arbol.nodos[k + 4]);
            if (k + 2 < fin)
                if (const Geometry* g = arbol.nodos[k + 2]->geometry().get()) __builtin_prefetch(g);
            if (k + 1 < fin) {
                const Node& proximo = *arbol.nodos[k + 1];
                if (const Geometry* g = proximo.geometry().get()) {
                    __builtin_prefetch(g->vertices.data());
                    if (!g->elementos.empty()) __builtin_prefetch(g->elementos.front().indices.data());
                }
                if (proximo.name()) __builtin_prefetch(proximo.name()->data());
            }
            const Node& nodo = *arbol.nodos[k];
            if (const Geometry* g = nodo.geometry().get()) cajas[k] = g->boundingBox();
            movidos[k] = !(nodo.position() == glm::vec3(0.0f) && nodo.eulerAngles() == glm::vec3(0.0f) &&
                           nodo.scale() == glm::vec3(1.0f));
            if (!nodo.name() || nodo.name()->empty()) continue;
            nombres[k] = &*nodo.name();
            const Recorrida& r = recorridas[arbol.especialidades[k]];
            const PropiedadesElemento* p = nullptr;
            if (!nodo.globalId().empty()) {
                const auto it = r.porGlobalId->find(nodo.globalId());
                if (it != r.porGlobalId->end()) p = &it->second;
            } else {
                const auto it = r.porNombre->find(*nodo.name());
                if (it != r.porNombre->end()) p = &it->second;
            }
            std::string_view tipo = tipoPorDefecto;
            if (p && !p->empty()) {
                // "__tipoIFC" sorts after the property sets' names, which
                // begin with a capital: it is almost always the last key,
                // one step away instead of a search.
                const auto ultima = std::prev(p->end());
                if (ultima->first == claveTipoIFC) {
                    tipo = ultima->second;
                } else if (const auto t = p->find(claveTipo); t != p->end()) {
                    tipo = t->second;
                }
            }
            propiedades[k] = p;
            tipos[k] = tipo;
        }
    });

    // Children after their parents: walked backwards, every node's box is
    // whole when it is added to its parent's.
    for (std::size_t k = total; k-- > 0;) {
        if (arbol.padres[k] == ArbolPlano::sinPadre) continue;
        if (movidos[k])
            incluirEnPadre(cajas[arbol.padres[k]], cajas[k], *arbol.nodos[k]);
        else
            cajas[arbol.padres[k]].incluir(cajas[k]);
    }

    // The groups, in the order the walk meets them. Group by discipline name,
    // then class: two disciplines of one name share their groups. The class
    // texts the inner maps are keyed by stay in `clases`, whose elements
    // never move.
    GeneradorIds ids;
    std::vector<GrupoQTO> grupos;
    std::map<std::string, std::unordered_map<std::string_view, std::size_t>> indiceGrupos;
    std::deque<std::string> clases;
    struct Medido {
        std::size_t nodo;
        std::size_t grupo;
        float dx, dy, dz;
    };
    std::vector<Medido> medidos;
    medidos.reserve(total);
    std::vector<std::size_t> cuentas; // items per group
    std::uint32_t especialidadActual = std::uint32_t(-1);
    std::unordered_map<std::string_view, std::size_t>* gruposEsp = nullptr;
    for (std::size_t k = 0; k < total; ++k) {
        if (!nombres[k]) continue;
        const Box& caja = cajas[k];
        // Extents in double, then as the 32-bit floats the vertices are: a
        // model's 0.001 m reads back as 0.001f, and the floor compares at that
        // precision so that it is skipped as meant.
        const float ex = std::fabs(static_cast<float>(double(caja.max.x) - double(caja.min.x)));
        const float ey = std::fabs(static_cast<float>(double(caja.max.y) - double(caja.min.y)));
        const float ez = std::fabs(static_cast<float>(double(caja.max.z) - double(caja.min.z)));
        if (!(ex > 0.001f) && !(ey > 0.001f) && !(ez > 0.001f)) continue;

        if (arbol.especialidades[k] != especialidadActual) {
            especialidadActual = arbol.especialidades[k];
            gruposEsp = &indiceGrupos[*recorridas[especialidadActual].nombre];
        }
        const std::string_view tipo = tipos[k];
        auto lugar = gruposEsp->find(tipo);
        if (lugar == gruposEsp->end()) {
            GrupoQTO nuevo;
            nuevo.id = ids.siguiente();
            nuevo.tipoIFC = std::string(tipo);
            nuevo.tipoNombre = nombreTipoQTO(tipo);
            nuevo.especialidad = *recorridas[especialidadActual].nombre;
            nuevo.densidad = densidadTipoQTO(tipo);
            clases.push_back(nuevo.tipoIFC);
            lugar = gruposEsp->emplace(clases.back(), grupos.size()).first;
            grupos.push_back(std::move(nuevo));
            cuentas.push_back(0);
        }
        ++cuentas[lugar->second];
        medidos.push_back({k, lugar->second, ex, ey, ez});
    }

    // Every item's place in its group, in traversal order; then the items
    // made on every core, each writing only its own place.
    std::vector<std::size_t> lugares(medidos.size());
    {
        std::vector<std::size_t> llenos(grupos.size(), 0);
        for (std::size_t m = 0; m < medidos.size(); ++m) lugares[m] = llenos[medidos[m].grupo]++;
    }
    for (std::size_t k = 0; k < grupos.size(); ++k) grupos[k].items.resize(cuentas[k]);
    std::vector<QUuid> idsItems(medidos.size());
    for (QUuid& id : idsItems) id = ids.siguiente();
    enParalelo(medidos.size(), porcion, [&](std::size_t inicio, std::size_t fin) {
        for (std::size_t m = inicio; m < fin; ++m) {
            const Medido& medido = medidos[m];
            GrupoQTO& grupo = grupos[medido.grupo];
            ItemQTO& item = grupo.items[lugares[m]];
            item.id = idsItems[m];
            item.nombre = *nombres[medido.nodo];
            item.dx = medido.dx;
            item.dy = medido.dy;
            item.dz = medido.dz;
            item.densidad = grupo.densidad;
            if (const PropiedadesElemento* p = propiedades[medido.nodo]) item.propiedades = *p;
        }
    });

    // By discipline, then readable name, in plain text order (code points,
    // upper case before lower case).
    std::stable_sort(grupos.begin(), grupos.end(), [](const GrupoQTO& a, const GrupoQTO& b) {
        if (a.especialidad != b.especialidad) return a.especialidad < b.especialidad;
        return a.tipoNombre < b.tipoNombre;
    });
    return grupos;
}

} // namespace teskal
