// The quantity engine: the federated scene measured by the local box of every
// named element node, grouped by IFC class and discipline.
#include "qto/CuantificacionQTO.h"

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

// The local box of every descendant of a root, each computed once from its
// geometry and its children's boxes (the children's own transforms applied),
// with the nodes in depth-first order: what `Node::boundingBox` gives, without
// walking each subtree again for every ancestor.
class RecorridoCajas {
public:
    void medirDescendientes(const Node& raiz) {
        nodos.clear();
        cajas.clear();
        for (const auto& h : raiz.childNodes()) medir(*h);
    }

    std::vector<const Node*> nodos;
    std::vector<Box> cajas;

private:
    Box medir(const Node& n) {
        const std::size_t i = nodos.size();
        nodos.push_back(&n);
        cajas.emplace_back();
        Box caja;
        if (n.geometry()) caja.incluir(n.geometry()->boundingBox());
        // A model root holds thousands of elements, each a node, a geometry
        // and its arrays in memory of their own: ask for the next ones while
        // this one is measured.
        const auto& hijos = n.childNodes();
        for (std::size_t k = 0; k < hijos.size(); ++k) {
            if (k + 4 < hijos.size()) __builtin_prefetch(hijos[k + 4].get());
            if (k + 2 < hijos.size())
                if (const Geometry* g = hijos[k + 2]->geometry().get()) __builtin_prefetch(g);
            if (k + 1 < hijos.size())
                if (const Geometry* g = hijos[k + 1]->geometry().get()) {
                    __builtin_prefetch(g->vertices.data());
                    if (!g->elementos.empty()) __builtin_prefetch(g->elementos.front().indices.data());
                }
            incluirEnPadre(caja, medir(*hijos[k]), *hijos[k]);
        }
        cajas[i] = caja;
        return caja;
    }

    static void incluirEnPadre(Box& caja, const Box& b, const Node& hijo) {
        if (b.vacia) return;
        if (hijo.position() == glm::vec3(0.0f) && hijo.eulerAngles() == glm::vec3(0.0f) &&
            hijo.scale() == glm::vec3(1.0f)) {
            caja.incluir(b);
            return;
        }
        const glm::mat4 t = hijo.transform();
        for (int k = 0; k < 8; ++k) {
            const glm::vec3 esquina((k & 1) ? b.max.x : b.min.x, (k & 2) ? b.max.y : b.min.y,
                                    (k & 4) ? b.max.z : b.min.z);
            caja.incluir(glm::vec3(t * glm::vec4(esquina, 1.0f)));
        }
    }
};

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
    GeneradorIds ids;
    std::vector<GrupoQTO> grupos;
    // Group by discipline name, then class: two disciplines of one name share
    // their groups. The class texts the inner maps are keyed by stay in
    // `clases`, whose elements never move.
    std::map<std::string, std::unordered_map<std::string_view, std::size_t>> indiceGrupos;
    std::deque<std::string> clases;
    RecorridoCajas recorrido;
    // What the walk found, before the items are made.
    struct Medido {
        const Node* nodo;
        const PropiedadesElemento* propiedades;
        std::size_t grupo;
        float dx, dy, dz;
    };
    std::vector<Medido> medidos;
    std::vector<std::size_t> cuentas; // items per group

    for (const std::string& clave : ordenEspecialidades) {
        const auto esp = especialidades.find(clave);
        if (esp == especialidades.end() || !esp->second.nodoRaiz) continue;
        const std::string& especialidad = esp->second.nombre;
        const auto n = porNombre.find(clave);
        const PropiedadesModelo& indiceNombre = n == porNombre.end() ? sinPropiedades : n->second;
        const auto g = porGlobalId.find(clave);
        const PropiedadesModelo& indiceGlobalId = g == porGlobalId.end() ? sinPropiedades : g->second;
        auto& gruposEsp = indiceGrupos[especialidad];

        recorrido.medirDescendientes(*esp->second.nodoRaiz);
        for (std::size_t k = 0; k < recorrido.nodos.size(); ++k) {
            const Node& nodo = *recorrido.nodos[k];
            if (!nodo.name() || nodo.name()->empty()) continue;
            const Box& caja = recorrido.cajas[k];
            // Extents in double, then as the 32-bit floats the vertices are:
            // a model's 0.001 m reads back as 0.001f, and the floor compares
            // at that precision so that it is skipped as meant.
            const float ex = std::fabs(static_cast<float>(double(caja.max.x) - double(caja.min.x)));
            const float ey = std::fabs(static_cast<float>(double(caja.max.y) - double(caja.min.y)));
            const float ez = std::fabs(static_cast<float>(double(caja.max.z) - double(caja.min.z)));
            if (!(ex > 0.001f) && !(ey > 0.001f) && !(ez > 0.001f)) continue;

            // An element with a GlobalId has its own entry; one without is
            // known by its name.
            const PropiedadesElemento* propiedades = nullptr;
            if (!nodo.globalId().empty()) {
                const auto it = indiceGlobalId.find(nodo.globalId());
                if (it != indiceGlobalId.end()) propiedades = &it->second;
            } else {
                const auto it = indiceNombre.find(*nodo.name());
                if (it != indiceNombre.end()) propiedades = &it->second;
            }
            std::string_view tipo = tipoPorDefecto;
            if (propiedades && !propiedades->empty()) {
                // "__tipoIFC" sorts after the property sets' names, which
                // begin with a capital: it is almost always the last key,
                // one step away instead of a search.
                const auto ultima = std::prev(propiedades->end());
                if (ultima->first == claveTipoIFC) {
                    tipo = ultima->second;
                } else if (const auto t = propiedades->find(claveTipo); t != propiedades->end()) {
                    tipo = t->second;
                }
            }

            auto lugar = gruposEsp.find(tipo);
            if (lugar == gruposEsp.end()) {
                GrupoQTO nuevo;
                nuevo.id = ids.siguiente();
                nuevo.tipoIFC = std::string(tipo);
                nuevo.tipoNombre = nombreTipoQTO(tipo);
                nuevo.especialidad = especialidad;
                nuevo.densidad = densidadTipoQTO(tipo);
                clases.push_back(nuevo.tipoIFC);
                lugar = gruposEsp.emplace(clases.back(), grupos.size()).first;
                grupos.push_back(std::move(nuevo));
                cuentas.push_back(0);
            }
            ++cuentas[lugar->second];
            medidos.push_back({&nodo, propiedades, lugar->second, ex, ey, ez});
        }
    }

    // Every group's list made to its size once, then filled in traversal order.
    for (std::size_t k = 0; k < grupos.size(); ++k) grupos[k].items.reserve(cuentas[k]);
    for (const Medido& m : medidos) {
        GrupoQTO& grupo = grupos[m.grupo];
        ItemQTO& item = grupo.items.emplace_back();
        item.id = ids.siguiente();
        item.nombre = *m.nodo->name();
        item.dx = m.dx;
        item.dy = m.dy;
        item.dz = m.dz;
        item.densidad = grupo.densidad;
        if (m.propiedades) item.propiedades = *m.propiedades;
    }

    // By discipline, then readable name, in plain text order (code points,
    // upper case before lower case).
    std::stable_sort(grupos.begin(), grupos.end(), [](const GrupoQTO& a, const GrupoQTO& b) {
        if (a.especialidad != b.especialidad) return a.especialidad < b.especialidad;
        return a.tipoNombre < b.tipoNombre;
    });
    return grupos;
}

} // namespace teskal
