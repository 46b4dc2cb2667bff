#include "analyses/clash/BusquedaInterferencias.h"

#include <QUuid>
#include <algorithm>
#include <cmath>

namespace teskal {

std::string clavePar(std::string_view a, std::string_view b) {
    if (b < a) std::swap(a, b);
    std::string r;
    r.reserve(a.size() + b.size() + 1);
    r.append(a).append("|").append(b);
    return r;
}

namespace {

struct Grupo {
    std::string key;
    std::vector<std::size_t> indices; // into the candidates, in their order
};

std::vector<Grupo> agrupar(const std::vector<NodoBB>& candidatos) {
    std::vector<Grupo> grupos;
    for (std::size_t i = 0; i < candidatos.size(); ++i) {
        auto it = std::find_if(grupos.begin(), grupos.end(), [&](const Grupo& g) { return g.key == candidatos[i].key; });
        if (it == grupos.end()) {
            grupos.push_back({candidatos[i].key, {}});
            it = grupos.end() - 1;
        }
        it->indices.push_back(i);
    }
    return grupos;
}

bool tieneNaN(const NodoBB& n) {
    for (int k = 0; k < 3; ++k)
        if (std::isnan(n.bbMin[k]) || std::isnan(n.bbMax[k])) return true;
    return false;
}

// The box test: overlap above the tolerance on x, then y, then z. Boxes with a
// not-a-number never clash.
bool chocan(const NodoBB& a, const NodoBB& b, double tol, glm::dvec3& lo, glm::dvec3& hi) {
    if (tieneNaN(a) || tieneNaN(b)) return false;
    for (int k = 0; k < 3; ++k) {
        lo[k] = std::max(a.bbMin[k], b.bbMin[k]);
        hi[k] = std::min(a.bbMax[k], b.bbMax[k]);
        if (!(hi[k] - lo[k] > tol)) return false;
    }
    return true;
}

Interferencia construir(const NodoBB& a, const NodoBB& b, const std::string& keyA, const std::string& keyB,
                        const glm::dvec3& lo, const glm::dvec3& hi) {
    Interferencia i;
    i.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    const glm::dvec3 c = (lo + hi) * 0.5;
    double radio = 0.5;
    for (int k = 0; k < 3; ++k) radio = std::max({radio, a.bbMax[k] - a.bbMin[k], b.bbMax[k] - b.bbMin[k]});
    const double d = std::max(radio * 1.8, 0.5);
    i.viewpointPos = {c.x + d, c.y + 0.6 * d, c.z + d};
    i.viewpointTarget = c;
    i.radio = radio;
    i.nodoA = a.node;
    i.nodoB = b.node;
    i.especialidadA = keyA;
    i.especialidadB = keyB;
    i.nombreA = a.nombre;
    i.nombreB = b.nombre;
    i.globalIdA = a.globalId;
    i.globalIdB = b.globalId;
    i.estado = EstadoClash::abierto;
    return i;
}

bool excluido(const std::unordered_set<std::string>& excluidos, const NodoBB& a, const NodoBB& b) {
    return !excluidos.empty() && excluidos.contains(clavePar(a.nombre, b.nombre));
}

// A bounding volume tree over the boxes of one group.
class ArbolCajas {
public:
    ArbolCajas(const std::vector<NodoBB>& candidatos, const std::vector<std::size_t>& indices) : c_(candidatos) {
        for (std::size_t pos = 0; pos < indices.size(); ++pos)
            if (!tieneNaN(c_[indices[pos]])) items_.push_back({indices[pos], pos});
        if (!items_.empty()) construir(0, items_.size());
    }

    // Every box b with fl(a.max - b.min) > tol and fl(b.max - a.min) > tol on
    // all axes: a superset of the clashes of a, as those differences are never
    // smaller than the overlap. Positions within the group are appended.
    void consultar(const NodoBB& a, double tol, std::vector<std::size_t>& salida) const {
        if (nodos_.empty()) return;
        std::size_t pila[64];
        int tope = 0;
        pila[tope++] = 0;
        while (tope > 0) {
            const Nodo& n = nodos_[pila[--tope]];
            if (!puede(a, n.min, n.max, tol)) continue;
            if (n.cuenta > 0) {
                for (std::size_t k = n.primero; k < n.primero + n.cuenta; ++k) {
                    const NodoBB& b = c_[items_[k].candidato];
                    if (puede(a, b.bbMin, b.bbMax, tol)) salida.push_back(items_[k].posicion);
                }
                continue;
            }
            if (tope + 2 > 64) { // a degenerate tree: scan the subtree's items
                for (std::size_t k = n.primero; k < n.primero + n.total; ++k) {
                    const NodoBB& b = c_[items_[k].candidato];
                    if (puede(a, b.bbMin, b.bbMax, tol)) salida.push_back(items_[k].posicion);
                }
                continue;
            }
            pila[tope++] = n.izquierdo;
            pila[tope++] = n.izquierdo + 1;
        }
    }

private:
    struct Item {
        std::size_t candidato;
        std::size_t posicion;
    };
    struct Nodo {
        glm::dvec3 min, max;
        std::size_t izquierdo = 0; // the right child follows it
        std::size_t primero = 0, cuenta = 0, total = 0;
    };

    static bool puede(const NodoBB& a, const glm::dvec3& min, const glm::dvec3& max, double tol) {
        for (int k = 0; k < 3; ++k)
            if (!(a.bbMax[k] - min[k] > tol) || !(max[k] - a.bbMin[k] > tol)) return false;
        return true;
    }

    std::size_t construir(std::size_t desde, std::size_t hasta) {
        const std::size_t yo = nodos_.size();
        nodos_.push_back({});
        glm::dvec3 mn(INFINITY), mx(-INFINITY), cmn(INFINITY), cmx(-INFINITY);
        for (std::size_t k = desde; k < hasta; ++k) {
            const NodoBB& b = c_[items_[k].candidato];
            mn = glm::min(mn, b.bbMin);
            mx = glm::max(mx, b.bbMax);
            const glm::dvec3 centro = (b.bbMin + b.bbMax) * 0.5;
            cmn = glm::min(cmn, centro);
            cmx = glm::max(cmx, centro);
        }
        nodos_[yo].min = mn;
        nodos_[yo].max = mx;
        nodos_[yo].primero = desde;
        nodos_[yo].total = hasta - desde;
        const glm::dvec3 ext = cmx - cmn;
        const int eje = ext.x >= ext.y && ext.x >= ext.z ? 0 : (ext.y >= ext.z ? 1 : 2);
        if (hasta - desde <= 4 || !(ext[eje] > 0)) {
            nodos_[yo].cuenta = hasta - desde;
            return yo;
        }
        const std::size_t medio = desde + (hasta - desde) / 2;
        std::nth_element(items_.begin() + static_cast<std::ptrdiff_t>(desde),
                         items_.begin() + static_cast<std::ptrdiff_t>(medio),
                         items_.begin() + static_cast<std::ptrdiff_t>(hasta), [&](const Item& x, const Item& y) {
                             const NodoBB& bx = c_[x.candidato];
                             const NodoBB& by = c_[y.candidato];
                             return bx.bbMin[eje] + bx.bbMax[eje] < by.bbMin[eje] + by.bbMax[eje];
                         });
        // Children sit side by side: the left one first, then the right.
        const std::size_t izq = nodos_.size();
        nodos_[yo].izquierdo = izq;
        nodos_.push_back({});
        nodos_.push_back({});
        construirEn(izq, desde, medio);
        construirEn(izq + 1, medio, hasta);
        return yo;
    }

    void construirEn(std::size_t lugar, std::size_t desde, std::size_t hasta) {
        // Build the subtree at the end, then move its root into its slot.
        const std::size_t raiz = construir(desde, hasta);
        nodos_[lugar] = nodos_[raiz];
    }

    const std::vector<NodoBB>& c_;
    std::vector<Item> items_;
    std::vector<Nodo> nodos_;
};

} // namespace

std::vector<Interferencia> buscarInterferenciasDirecta(const std::vector<NodoBB>& candidatos,
                                                       const std::set<std::string>& paresActivos,
                                                       const std::unordered_set<std::string>& excluidos,
                                                       double tolerancia) {
    std::vector<Interferencia> resultado;
    const auto grupos = agrupar(candidatos);
    glm::dvec3 lo, hi;
    for (std::size_t i = 0; i < grupos.size(); ++i)
        for (std::size_t j = i + 1; j < grupos.size(); ++j) {
            if (!paresActivos.contains(clavePar(grupos[i].key, grupos[j].key))) continue;
            for (std::size_t ia : grupos[i].indices)
                for (std::size_t ib : grupos[j].indices) {
                    const NodoBB& a = candidatos[ia];
                    const NodoBB& b = candidatos[ib];
                    if (excluido(excluidos, a, b)) continue;
                    if (chocan(a, b, tolerancia, lo, hi))
                        resultado.push_back(construir(a, b, grupos[i].key, grupos[j].key, lo, hi));
                }
        }
    return resultado;
}

std::vector<Interferencia> buscarInterferencias(const std::vector<NodoBB>& candidatos,
                                                const std::set<std::string>& paresActivos,
                                                const std::unordered_set<std::string>& excluidos,
                                                double tolerancia) {
    std::vector<Interferencia> resultado;
    const auto grupos = agrupar(candidatos);
    glm::dvec3 lo, hi;
    std::vector<std::size_t> encontrados;
    for (std::size_t i = 0; i < grupos.size(); ++i)
        for (std::size_t j = i + 1; j < grupos.size(); ++j) {
            if (!paresActivos.contains(clavePar(grupos[i].key, grupos[j].key))) continue;
            const ArbolCajas arbol(candidatos, grupos[j].indices);
            for (std::size_t ia : grupos[i].indices) {
                const NodoBB& a = candidatos[ia];
                if (tieneNaN(a)) continue;
                encontrados.clear();
                arbol.consultar(a, tolerancia, encontrados);
                std::sort(encontrados.begin(), encontrados.end()); // B in candidate order
                for (std::size_t pos : encontrados) {
                    const NodoBB& b = candidatos[grupos[j].indices[pos]];
                    if (excluido(excluidos, a, b)) continue;
                    if (chocan(a, b, tolerancia, lo, hi))
                        resultado.push_back(construir(a, b, grupos[i].key, grupos[j].key, lo, hi));
                }
            }
        }
    return resultado;
}

} // namespace teskal
