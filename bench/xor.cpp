// The version comparison over two generated versions of a model of 100,000
// elements: the matching and the rows without the painting, then with it,
// against a form that follows the comparison step by step with sets of keys
// and reads the boxes again at every step that uses them.
#include "Medicion.h"

#include "analyses/xor/ComparacionXOR.h"

#include <cstdio>
#include <random>
#include <unordered_set>

using namespace teskal;
using namespace teskal::bench;

namespace {

constexpr int elementos = 100000;

// A box element as the OBJ reader makes it: 12 triangles, corners unrolled.
std::shared_ptr<Node> caja(std::string nombre, glm::vec3 min, glm::vec3 tam) {
    static const int caras[12][3] = {{0, 1, 2}, {0, 2, 3}, {4, 6, 5}, {4, 7, 6},
                                     {0, 4, 5}, {0, 5, 1}, {1, 5, 6}, {1, 6, 2},
                                     {2, 6, 7}, {2, 7, 3}, {3, 7, 4}, {3, 4, 0}};
    glm::vec3 v[8];
    for (int i = 0; i < 8; ++i)
        v[i] = min + tam * glm::vec3((i == 1 || i == 2 || i == 5 || i == 6),
                                     (i == 2 || i == 3 || i == 6 || i == 7), i >= 4);
    auto g = std::make_shared<Geometry>();
    ElementoGeometria e{Primitiva::Triangulos, {}};
    for (const auto& c : caras)
        for (int k : c) {
            e.indices.push_back(static_cast<std::int32_t>(g->vertices.size()));
            g->vertices.push_back(v[k]);
        }
    g->elementos.push_back(std::move(e));
    g->materiales.push_back(std::make_shared<Material>());
    auto n = Node::crear(std::move(nombre));
    n->setGeometry(std::move(g));
    return n;
}

std::string globalId(int i) {
    char b[23];
    std::snprintf(b, sizeof b, "2X%020d", i);
    return b;
}

struct Version {
    std::shared_ptr<Node> raiz = Node::crear();
    GlobalIdsPorNombre ids;
};

// The base, and the new version with 3,000 moved, 1,000 grown, 1,000 removed,
// 1,000 added and 1,000 renamed under the same GlobalId.
std::pair<Version, Version> versiones() {
    Version base, nueva;
    std::mt19937 azar(7);
    std::uniform_int_distribution<int> tipo(0, 99);
    for (int i = 0; i < elementos; ++i) {
        const glm::vec3 min(float(i % 100) * 3.0f, float(i / 100 % 100) * 3.0f,
                            float(i / 10000) * 3.5f);
        const glm::vec3 tam(2.5f, 0.25f, 3.0f);
        const std::string nombre = "IfcWall/Muro " + std::to_string(i);
        base.raiz->addChildNode(caja(nombre, min, tam));
        base.ids["Muro " + std::to_string(i)] = globalId(i);
        const int t = tipo(azar);
        if (t == 0) continue; // removed
        std::string nombreNuevo = t == 1 ? "IfcWall/Muro renombrado " + std::to_string(i) : nombre;
        glm::vec3 minNuevo = min, tamNuevo = tam;
        if (t >= 2 && t < 5) minNuevo.x += 0.2f;
        if (t == 5) tamNuevo.z += 0.5f;
        nueva.raiz->addChildNode(caja(nombreNuevo, minNuevo, tamNuevo));
        nueva.ids[std::string(partesNombre(nombreNuevo).nombre)] = globalId(i);
    }
    for (int i = 0; i < elementos / 100; ++i) {
        const std::string nombre = "IfcColumn/Pilar " + std::to_string(i);
        nueva.raiz->addChildNode(
            caja(nombre, glm::vec3(float(i) * 3.0f, -5.0f, 0.0f), glm::vec3(0.5f, 0.5f, 3)));
        nueva.ids["Pilar " + std::to_string(i)] = globalId(elementos + i);
    }
    return {std::move(base), std::move(nueva)};
}

// The comparison as a literal reading: key maps, then the key sets B and N,
// their differences and intersection as sets of text, the boxes read for
// every common key, and read again for every modified one when its row is
// made.
struct ResultadoLiteral {
    EstadisticasXOR stats;
    std::vector<ElementoCambioXOR> filas;
};
ResultadoLiteral compararLiteral(Node& base, Node& nuevo, const GlobalIdsPorNombre& idsB,
                                 const GlobalIdsPorNombre& idsN) {
    const bool usar = !idsB.empty() && !idsN.empty();
    const auto mapa = [&](Node& m, const GlobalIdsPorNombre& ids) {
        std::unordered_map<std::string, Node*> r;
        m.enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            std::string clave(partesNombre(n.name() ? *n.name() : std::string()).nombre);
            if (usar)
                if (const auto it = ids.find(clave); it != ids.end()) clave = it->second;
            r[clave] = &n;
        });
        return r;
    };
    const auto mb = mapa(base, idsB);
    const auto mn = mapa(nuevo, idsN);
    std::unordered_set<std::string> b, n, eliminados, agregados, comunes, modificados;
    for (const auto& [k, v] : mb) b.insert(k);
    for (const auto& [k, v] : mn) n.insert(k);
    for (const auto& k : b) (n.contains(k) ? comunes : eliminados).insert(k);
    for (const auto& k : n)
        if (!b.contains(k)) agregados.insert(k);
    for (const auto& k : comunes)
        if (deltasXOR(mb.at(k)->boundingBox(), mn.at(k)->boundingBox()).modificado())
            modificados.insert(k);
    ResultadoLiteral r;
    r.stats = {int(agregados.size()), int(eliminados.size()), int(modificados.size()),
               int(comunes.size() - modificados.size())};
    const auto fila = [&](const Node& nodo, TipoCambioXOR t, DeltasXOR d) {
        const auto p = partesNombre(nodo.name() ? *nodo.name() : std::string());
        r.filas.push_back({"", std::string(p.nombre), std::string(p.tipoIFC), t, float(d.posicion),
                           float(d.tamano), nodo.globalId()});
    };
    for (const auto& k : agregados) fila(*mn.at(k), TipoCambioXOR::agregado, {});
    for (const auto& k : eliminados) fila(*mb.at(k), TipoCambioXOR::eliminado, {});
    for (const auto& k : modificados)
        fila(*mn.at(k), TipoCambioXOR::modificado,
             deltasXOR(mb.at(k)->boundingBox(), mn.at(k)->boundingBox()));
    std::stable_sort(r.filas.begin(), r.filas.end(),
                     [](const auto& a, const auto& c) { return a.nombre < c.nombre; });
    return r;
}

} // namespace

int main() {
    std::printf("bench: generating two versions of %d elements\n", elementos);
    auto [base, nueva] = versiones();
    constexpr int repeticiones = 7;

    Tiempos sinPintar, conPintar, literal, cajas;
    EstadisticasXOR stats;
    std::size_t filas = 0;
    for (int r = 0; r < repeticiones; ++r) {
        sinPintar.anadir(cronometrar([&] {
            const auto c = clasificarXOR(*base.raiz, *nueva.raiz, base.ids, nueva.ids);
            stats = c.estadisticas();
            filas = elementosCambioXOR(c).size();
        }));
        conPintar.anadir(cronometrar([&] {
            const auto c = clasificarXOR(*base.raiz, *nueva.raiz, base.ids, nueva.ids);
            pintarXOR(c);
            filas = elementosCambioXOR(c).size();
        }));
        ResultadoLiteral l;
        literal.anadir(cronometrar(
            [&] { l = compararLiteral(*base.raiz, *nueva.raiz, base.ids, nueva.ids); }));
        if (!(l.stats == stats) || l.filas.size() != filas) {
            std::fprintf(stderr, "bench: the two forms disagree\n");
            return 1;
        }
        // What reading every box once costs, for scale.
        cajas.anadir(cronometrar([&] {
            float s = 0;
            for (Node* m : {base.raiz.get(), nueva.raiz.get()})
                m->enumerateChildNodes([&](Node& n, bool&) { s += n.boundingBox().max.x; });
            if (s < 0) std::puts("");
        }));
    }
    std::printf("bench: %d agregados, %d eliminados, %d modificados, %d iguales; %zu rows\n",
                stats.agregados, stats.eliminados, stats.modificados, stats.iguales, filas);
    std::printf("bench: compararXOR without painting  median %8.1f ms  best %8.1f ms  (cpu median "
                "%.1f ms)\n",
                sinPintar.mediana() * 1e3, sinPintar.mejor() * 1e3, sinPintar.medianaCPU() * 1e3);
    std::printf("bench: compararXOR with painting     median %8.1f ms  best %8.1f ms  (cpu median "
                "%.1f ms)\n",
                conPintar.mediana() * 1e3, conPintar.mejor() * 1e3, conPintar.medianaCPU() * 1e3);
    std::printf("bench: literal sets, boxes re-read   median %8.1f ms  best %8.1f ms  (cpu median "
                "%.1f ms)\n",
                literal.mediana() * 1e3, literal.mejor() * 1e3, literal.medianaCPU() * 1e3);
    std::printf("bench: reading all %d boxes once     median %8.1f ms\n", 2 * elementos,
                cajas.mediana() * 1e3);
    imprimirFigura("xor", sinPintar.mediana() * 1e3, "ms", literal.mediana() / sinPintar.mediana(),
                   "literal-sets-reread-boxes");
    return 0;
}
