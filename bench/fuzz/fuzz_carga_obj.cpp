// Feeds arbitrary bytes to the OBJ reader, gives the result its materials as
// the federation does after a load, and checks every element node: a geometry
// whose indices all address its vertices, normals absent or one per vertex,
// and a usable Phong material. A broken invariant traps.
#include "federation/CargaOBJ.h"
#include "federation/TextoUTF8.h"
#include "scene/Node.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace teskal;

namespace {

void comprobar(bool condicion) {
    if (!condicion) __builtin_trap();
}

void comprobarElemento(Node& nodo) {
    const Geometry* g = nodo.geometry().get();
    comprobar(g != nullptr);
    comprobar(!g->elementos.empty());
    const std::size_t nv = g->vertices.size();
    for (const ElementoGeometria& e : g->elementos) {
        comprobar(e.primitiva == Primitiva::Triangulos);
        comprobar(!e.indices.empty() && e.indices.size() % 3 == 0);
        for (const std::int32_t i : e.indices)
            comprobar(i >= 0 && static_cast<std::size_t>(i) < nv);
    }
    comprobar(g->normales.empty() || g->normales.size() == nv);
    comprobar(nodo.name().has_value() && *nodo.name() == g->name);
    comprobar(!g->materiales.empty());
    for (const auto& m : g->materiales) {
        comprobar(m != nullptr);
        comprobar(!m->diffuseVacio());
        comprobar(m->lightingModel() == ModeloIluminacion::Phong);
    }
    comprobar(nodo.childNodes().empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t tamano) {
    const std::string_view texto(reinterpret_cast<const char*>(datos), tamano);
    const std::shared_ptr<Node> raiz = cargarOBJTexto(texto);
    if (!raiz) return 0;
    // Only UTF-8 text with at least one face gives a model.
    comprobar(esUTF8Valido(texto) && texto.find('f') != std::string_view::npos);
    comprobar(!raiz->name().has_value() && !raiz->geometry());
    comprobar(!raiz->childNodes().empty());
    normalizarMateriales(*raiz);
    for (const auto& hijo : raiz->childNodes())
        comprobar(hijo != nullptr && hijo->parent() == raiz);
    // The tree is flat: every descendant is an element node.
    std::size_t visitados = 0;
    raiz->enumerateChildNodes([&](Node& nodo, bool&) {
        comprobarElemento(nodo);
        ++visitados;
    });
    comprobar(visitados == raiz->childNodes().size());
    return 0;
}
