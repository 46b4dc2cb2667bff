#include "viewport/medicion/IndiceRayos.h"

#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/matrix.hpp>
#include <string_view>
#include <unordered_map>

namespace teskal {

namespace {

constexpr std::string_view prefijoAyudante = "_TESKAL_";
constexpr std::string_view nombrePiso = "_TESKAL_Piso";
constexpr int hojaMaxima = 4;

bool conTriangulos(const Geometry& g) {
    if (g.vertices.empty()) return false;
    for (const auto& e : g.elementos)
        if (e.primitiva == Primitiva::Triangulos && e.indices.size() >= 3) return true;
    return false;
}

bool esIdentidad(const glm::mat4& m) { return m == glm::mat4(1.0f); }

// Hidden or fully transparent anywhere up the tree.
bool invisible(const Node& n) {
    for (const Node* p = &n; p;) {
        if (p->isHidden() || p->opacity() <= 0.0f) return true;
        const auto padre = p->parent();
        p = padre.get();
    }
    return false;
}

// The parameter where the ray enters the box, or none when it misses it or
// the box lies beyond `limite`.
inline bool cortaCaja(const glm::vec3& o, const glm::vec3& inv, const glm::vec3& mn, const glm::vec3& mx,
                      float limite, float& entrada) {
    float t0 = 0.0f, t1 = limite;
    for (int k = 0; k < 3; ++k) {
        float a = (mn[k] - o[k]) * inv[k], b = (mx[k] - o[k]) * inv[k];
        if (a > b) std::swap(a, b);
        // NaN (a ray in the box's plane along an axis it doesn't move on) keeps the bound.
        t0 = a > t0 ? a : t0;
        t1 = b < t1 ? b : t1;
        if (t0 > t1) return false;
    }
    entrada = t0;
    return true;
}

// Moller-Trumbore, both faces.
inline bool cortaTriangulo(const glm::vec3& o, const glm::vec3& d, const glm::vec3& a, const glm::vec3& b,
                           const glm::vec3& c, float& t) {
    const glm::vec3 e1 = b - a, e2 = c - a;
    const glm::vec3 p = glm::cross(d, e2);
    const float det = glm::dot(e1, p);
    if (std::fabs(det) < 1e-12f) return false;
    const float inv = 1.0f / det;
    const glm::vec3 s = o - a;
    const float u = glm::dot(s, p) * inv;
    if (u < 0.0f || u > 1.0f) return false;
    const glm::vec3 q = glm::cross(s, e1);
    const float v = glm::dot(d, q) * inv;
    if (v < 0.0f || u + v > 1.0f) return false;
    t = glm::dot(e2, q) * inv;
    return t > 1e-6f;
}

} // namespace

struct IndiceRayos::Grupo {
    struct Elemento {
        std::shared_ptr<Node> nodo;
        glm::vec3 min, max; // in the group's coordinates
        bool propio;        // the element's own transform is the identity
    };
    struct NodoArbol {
        glm::vec3 min, max;
        int primero = 0; // first element (leaf) or left child (inner)
        int cuenta = 0;  // elements of a leaf; 0 for an inner node
    };
    std::shared_ptr<Node> raiz; // the node whose children are the elements
    std::size_t firma = 0;
    std::vector<Elemento> elementos;
    std::vector<NodoArbol> arbol;

    void construir() {
        arbol.clear();
        if (elementos.empty()) return;
        arbol.reserve(elementos.size() * 2 / hojaMaxima + 2);
        dividir(0, static_cast<int>(elementos.size()));
    }

    int dividir(int desde, int hasta) {
        const int indice = static_cast<int>(arbol.size());
        arbol.push_back({});
        glm::vec3 mn = elementos[static_cast<std::size_t>(desde)].min, mx = elementos[static_cast<std::size_t>(desde)].max;
        glm::vec3 cmin(INFINITY), cmax(-INFINITY);
        for (int i = desde; i < hasta; ++i) {
            const Elemento& e = elementos[static_cast<std::size_t>(i)];
            mn = glm::min(mn, e.min);
            mx = glm::max(mx, e.max);
            const glm::vec3 c = (e.min + e.max) * 0.5f;
            cmin = glm::min(cmin, c);
            cmax = glm::max(cmax, c);
        }
        arbol[static_cast<std::size_t>(indice)].min = mn;
        arbol[static_cast<std::size_t>(indice)].max = mx;
        if (hasta - desde <= hojaMaxima) {
            arbol[static_cast<std::size_t>(indice)].primero = desde;
            arbol[static_cast<std::size_t>(indice)].cuenta = hasta - desde;
            return indice;
        }
        const glm::vec3 ext = cmax - cmin;
        const int eje = ext.x >= ext.y && ext.x >= ext.z ? 0 : (ext.y >= ext.z ? 1 : 2);
        const int medio = (desde + hasta) / 2;
        std::nth_element(elementos.begin() + desde, elementos.begin() + medio, elementos.begin() + hasta,
                         [eje](const Elemento& a, const Elemento& b) {
                             return a.min[eje] + a.max[eje] < b.min[eje] + b.max[eje];
                         });
        dividir(desde, medio); // the left child follows its parent
        const int derecho = dividir(medio, hasta);
        arbol[static_cast<std::size_t>(indice)].primero = derecho;
        return indice;
    }

    // The nearest hit of the ray (in world coordinates) closer than `mejor`.
    void lanzar(const glm::vec3& origenMundo, const glm::vec3& dirMundo, float& mejor,
                std::shared_ptr<Node>& nodo) const {
        if (arbol.empty()) return;
        const glm::mat4 aGrupo = glm::inverse(raiz->worldTransform());
        const glm::vec3 o = glm::vec3(aGrupo * glm::vec4(origenMundo, 1.0f));
        const glm::vec3 d = glm::vec3(aGrupo * glm::vec4(dirMundo, 0.0f));
        const glm::vec3 inv = 1.0f / d;
        int pila[64];
        int cima = 0;
        pila[cima++] = 0;
        while (cima > 0) {
            const NodoArbol& n = arbol[static_cast<std::size_t>(pila[--cima])];
            float entrada;
            if (!cortaCaja(o, inv, n.min, n.max, mejor, entrada)) continue;
            if (n.cuenta == 0) {
                const int izquierdo = static_cast<int>(&n - arbol.data()) + 1;
                if (cima + 2 > 64) continue; // deeper than any balanced tree of this index
                pila[cima++] = n.primero;
                pila[cima++] = izquierdo;
                continue;
            }
            for (int i = n.primero; i < n.primero + n.cuenta; ++i) {
                const Elemento& e = elementos[static_cast<std::size_t>(i)];
                if (!cortaCaja(o, inv, e.min, e.max, mejor, entrada) || invisible(*e.nodo)) continue;
                glm::vec3 oe = o, de = d;
                if (!e.propio) {
                    const glm::mat4 aLocal = glm::inverse(e.nodo->transform());
                    oe = glm::vec3(aLocal * glm::vec4(o, 1.0f));
                    de = glm::vec3(aLocal * glm::vec4(d, 0.0f));
                }
                const Geometry& g = *e.nodo->geometry();
                const auto& v = g.vertices;
                const auto nv = static_cast<std::int32_t>(v.size());
                for (const auto& el : g.elementos) {
                    if (el.primitiva != Primitiva::Triangulos) continue;
                    const auto& ix = el.indices;
                    for (std::size_t k = 0; k + 2 < ix.size(); k += 3) {
                        const std::int32_t a = ix[k], b = ix[k + 1], c = ix[k + 2];
                        if (a < 0 || b < 0 || c < 0 || a >= nv || b >= nv || c >= nv) continue;
                        float t;
                        if (cortaTriangulo(oe, de, v[static_cast<std::size_t>(a)], v[static_cast<std::size_t>(b)],
                                           v[static_cast<std::size_t>(c)], t) &&
                            t < mejor) {
                            mejor = t;
                            nodo = e.nodo;
                        }
                    }
                }
            }
        }
    }
};

IndiceRayos::IndiceRayos() = default;
IndiceRayos::~IndiceRayos() = default;

std::size_t IndiceRayos::elementos() const {
    std::size_t n = 0;
    for (const auto& g : grupos_) n += g->elementos.size();
    return n;
}

void IndiceRayos::actualizar(const Scene& escena) {
    const auto raiz = escena.rootNode();
    if (visto_ == escena.contadores().estructura && raiz_.lock() == raiz) return;
    visto_ = escena.contadores().estructura;
    raiz_ = raiz;

    // The groups as the tree has them now, each with the signature of its
    // elements: which nodes, which geometries, their own transforms.
    std::vector<std::pair<std::shared_ptr<Node>, std::vector<std::shared_ptr<Node>>>> ahora;
    std::unordered_map<const Node*, std::size_t> lugar;
    auto visitar = [&](auto&& self, const std::shared_ptr<Node>& n) -> void {
        for (const auto& h : n->childNodes()) {
            if (h->nombreEmpiezaCon(prefijoAyudante) && !(h->name() && *h->name() == nombrePiso)) continue;
            if (h->geometry() && conTriangulos(*h->geometry())) {
                auto [it, nuevo] = lugar.try_emplace(n.get(), ahora.size());
                if (nuevo) ahora.push_back({n, {}});
                ahora[it->second].second.push_back(h);
            }
            self(self, h);
        }
    };
    visitar(visitar, raiz);

    std::unordered_map<const Node*, std::unique_ptr<Grupo>> viejos;
    for (auto& g : grupos_) viejos[g->raiz.get()] = std::move(g);
    grupos_.clear();
    reconstruidos_ = 0;
    for (auto& [padre, hijos] : ahora) {
        std::size_t firma = hijos.size();
        const auto mezclar = [&firma](std::size_t v) { firma ^= v + 0x9e3779b97f4a7c15ull + (firma << 6) + (firma >> 2); };
        for (const auto& h : hijos) {
            mezclar(reinterpret_cast<std::size_t>(h.get()));
            mezclar(reinterpret_cast<std::size_t>(h->geometry().get()));
            mezclar(h->geometry()->vertices.size());
            for (const glm::vec3* v : {&h->position(), &h->eulerAngles(), &h->scale()})
                for (int k = 0; k < 3; ++k) mezclar(std::hash<float>()((*v)[k]));
        }
        const auto viejo = viejos.find(padre.get());
        if (viejo != viejos.end() && viejo->second->firma == firma) {
            grupos_.push_back(std::move(viejo->second));
            continue;
        }
        auto g = std::make_unique<Grupo>();
        g->raiz = padre;
        g->firma = firma;
        g->elementos.reserve(hijos.size());
        for (const auto& h : hijos) {
            const glm::mat4 t = h->transform();
            const bool propio = esIdentidad(t);
            glm::vec3 mn(INFINITY), mx(-INFINITY);
            for (const glm::vec3& v : h->geometry()->vertices) {
                const glm::vec3 p = propio ? v : glm::vec3(t * glm::vec4(v, 1.0f));
                mn = glm::min(mn, p);
                mx = glm::max(mx, p);
            }
            g->elementos.push_back({h, mn, mx, propio});
        }
        g->construir();
        grupos_.push_back(std::move(g));
        ++reconstruidos_;
    }
}

std::optional<ImpactoRayo> IndiceRayos::lanzar(const glm::vec3& origen, const glm::vec3& direccion) const {
    float mejor = INFINITY;
    std::shared_ptr<Node> nodo;
    for (const auto& g : grupos_) g->lanzar(origen, direccion, mejor, nodo);
    if (!nodo) return std::nullopt;
    return ImpactoRayo{nodo, origen + direccion * mejor, mejor};
}

} // namespace teskal
