// The matching of two versions on models built in memory: name parts, keys
// and GlobalIds, the thresholds, the painting and the rows of the result.
#include "analyses/xor/ComparacionXOR.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace teskal;

namespace {

// An element whose geometry is the two corners of its box.
std::shared_ptr<Node> caja(const std::string& nombre, glm::vec3 min, glm::vec3 max) {
    auto g = std::make_shared<Geometry>();
    g->vertices = {min, max, {min.x, max.y, min.z}};
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2}});
    auto m = std::make_shared<Material>();
    m->setDiffuse(Color::gris(0.75f));
    g->materiales.push_back(m);
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

struct Elemento {
    std::string nombre;
    glm::vec3 min{0, 0, 0}, max{1, 1, 1};
};

std::shared_ptr<Node> modelo(const std::vector<Elemento>& elementos) {
    auto raiz = Node::crear();
    for (const auto& e : elementos) raiz->addChildNode(caja(e.nombre, e.min, e.max));
    return raiz;
}

const Material& material(const Node& modelo, std::size_t i) {
    return *modelo.childNodes().at(i)->geometry()->firstMaterial();
}

// The rows as (name, IFC type, kind), in their order.
using Fila = std::tuple<std::string, std::string, TipoCambioXOR>;
std::vector<Fila> resumen(const std::vector<ElementoCambioXOR>& filas) {
    std::vector<Fila> r;
    for (const auto& f : filas) r.emplace_back(f.nombre, f.tipoIFC, f.tipoCambio);
    return r;
}

} // namespace

TEST(PartesNombre, CortaEnLaPrimeraBarraYConservaElNombreEnteroSiQuedaUnaPieza) {
    // An empty piece is dropped: a single piece remains, the name stays whole.
    const auto partes = [](std::string_view s) { // "type|name part"
        const auto p = partesNombre(s);
        return std::string(p.tipoIFC) + "|" + std::string(p.nombre);
    };
    EXPECT_EQ(partes("Pared/Muro 1"), "Pared|Muro 1");
    EXPECT_EQ(partes("Muro 1"), "|Muro 1");
    EXPECT_EQ(partes("a/b/c"), "a|b/c");
    EXPECT_EQ(partes("/x"), "|/x");
    EXPECT_EQ(partes("x/"), "|x/");
    EXPECT_EQ(partes(""), "|");
}

TEST(DeltasXOR, DistanciaDeCentrosYMayorCambioDeExtension) {
    const Box a{{0, 0, 0}, {2, 1, 3}, false};
    // The centre moves (0.3, 0.4, 0.25), z grows 0.5.
    const DeltasXOR d = deltasXOR(a, {{0.3f, 0.4f, 0}, {2.3f, 1.4f, 3.5f}, false});
    EXPECT_NEAR(d.posicion, std::sqrt(0.09 + 0.16 + 0.0625), 1e-6);
    EXPECT_NEAR(d.tamano, 0.5, 1e-6);
    EXPECT_TRUE(d.modificado());
    // Under the threshold on both counts, and the strict comparison just above it.
    EXPECT_FALSE(deltasXOR(a, {{0.04f, 0, 0}, {2.04f, 1, 3.03f}, false}).modificado());
    EXPECT_FALSE(deltasXOR(a, {{0, 0, 0}, {2.0499f, 1, 3}, false}).modificado());
    EXPECT_TRUE(deltasXOR(a, {{0, 0, 0}, {2.0501f, 1, 3}, false}).modificado());
    EXPECT_TRUE(deltasXOR(a, {{0.0501f, 0, 0}, {2.0501f, 1, 3}, false}).modificado());
    EXPECT_FALSE(deltasXOR(a, {{0.0499f, 0, 0}, {2.0499f, 1, 3}, false}).modificado());
}

TEST(ClasificarXOR, AgregadosEliminadosModificadosEIguales) {
    auto base = modelo({{"Muro A", {0, 0, 0}, {1, 1, 1}},
                        {"Muro B", {2, 0, 0}, {3, 1, 1}},
                        {"Muro C", {4, 0, 0}, {5, 1, 1}},
                        {"Pared/Muro D", {6, 0, 0}, {7, 1, 1}}});
    auto nuevo = modelo({{"Muro A", {0.04f, 0, 0}, {1.04f, 1, 1.03f}}, // equal
                         {"Muro B", {2.06f, 0, 0}, {3.06f, 1, 1}},     // moved 0.06
                         {"Muro E", {8, 0, 0}, {9, 1, 1}},
                         {"Muro D", {6, 0, 0}, {7, 1, 1}}}); // the same name part, no type
    const ClasificacionXOR c = clasificarXOR(*base, *nuevo, {}, {});
    EXPECT_EQ(c.estadisticas(), (EstadisticasXOR{1, 1, 1, 2}));
    const auto filas = elementosCambioXOR(c);
    EXPECT_EQ(resumen(filas), (std::vector<Fila>{{"Muro B", "", TipoCambioXOR::modificado},
                                                 {"Muro C", "", TipoCambioXOR::eliminado},
                                                 {"Muro E", "", TipoCambioXOR::agregado}}));
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_NEAR(filas[0].deltaPosicion, 0.06f, 1e-5);
    EXPECT_NEAR(filas[0].deltaTamano, 0.0f, 1e-6);
    EXPECT_EQ(filas[2].deltaPosicion, 0.0f);
    EXPECT_NE(filas[0].id, filas[1].id);
    EXPECT_EQ(filas[0].id.size(), 36u);
}

TEST(ClasificarXOR, FilasConElTipoDelNodoQueCorrespondeEnOrdenDeCodigo) {
    // The modified and added rows take the new model's node, the eliminated the base's.
    auto base = modelo({{"IfcWall/M1"}, {"IfcSlab/L1"}});
    auto nuevo = modelo({{"IfcColumn/M1", {0, 0, 0}, {1, 1, 2}}, {"IfcBeam/V1"}});
    const auto filas = elementosCambioXOR(clasificarXOR(*base, *nuevo, {}, {}));
    EXPECT_EQ(resumen(filas), (std::vector<Fila>{{"L1", "IfcSlab", TipoCambioXOR::eliminado},
                                                 {"M1", "IfcColumn", TipoCambioXOR::modificado},
                                                 {"V1", "IfcBeam", TipoCambioXOR::agregado}}));
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_NEAR(filas[1].deltaTamano, 1.0f, 1e-6);
    EXPECT_NEAR(filas[1].deltaPosicion, 0.5f, 1e-6);

    // Names sort by their bytes: capitals first, accented letters last.
    std::vector<std::string> nombres;
    auto vacio = modelo({});
    auto nuevos = modelo({{"b"}, {"Á"}, {"B"}, {"a"}});
    for (const auto& f : elementosCambioXOR(clasificarXOR(*vacio, *nuevos, {}, {})))
        nombres.push_back(f.nombre);
    EXPECT_EQ(nombres, (std::vector<std::string>{"B", "a", "b", "Á"}));
}

TEST(ClasificarXOR, GlobalIdsSoloSiAmbosMapasTienenEntradas) {
    auto base = modelo({{"Muro viejo"}, {"Losa", {0, 0, 0}, {5, 5, 0.2f}}});
    auto nuevo = modelo({{"Muro renombrado"}, {"Losa", {0, 0, 0}, {5, 5, 0.2f}}});
    const GlobalIdsPorNombre idsBase{{"Muro viejo", "2XQ$n5SLP5MBLyL442paFx"}};
    const GlobalIdsPorNombre idsNuevo{{"Muro renombrado", "2XQ$n5SLP5MBLyL442paFx"}};

    // The slab has no id: its name keys it on both sides.
    EXPECT_EQ(clasificarXOR(*base, *nuevo, idsBase, idsNuevo).estadisticas(),
              (EstadisticasXOR{0, 0, 0, 2}));
    for (const auto& [ib, in] :
         {std::pair{idsBase, GlobalIdsPorNombre{}}, std::pair{GlobalIdsPorNombre{}, idsNuevo}}) {
        const auto sinIds = clasificarXOR(*base, *nuevo, ib, in);
        EXPECT_EQ(resumen(elementosCambioXOR(sinIds)),
                  (std::vector<Fila>{{"Muro renombrado", "", TipoCambioXOR::agregado},
                                     {"Muro viejo", "", TipoCambioXOR::eliminado}}));
        EXPECT_EQ(sinIds.estadisticas().iguales, 1);
    }
}

TEST(ClasificarXOR, ClavesRepetidasModelosVaciosYGrupos) {
    auto base = modelo({{"Muro"}, {"Muro", {10, 0, 0}, {11, 1, 1}}});
    auto nuevo = modelo({{"Muro", {10, 0, 0}, {11, 1, 1}}, {"Muro"}});
    const auto c = clasificarXOR(*base, *nuevo, {}, {});
    // The last node of each model stands for the key: the boxes differ by 10 m.
    EXPECT_EQ(c.estadisticas(), (EstadisticasXOR{0, 0, 1, 0}));
    EXPECT_EQ(c.base.buscar("Muro"), base->childNodes()[1].get());
    EXPECT_EQ(c.nuevo.buscar("Muro"), nuevo->childNodes()[1].get());

    // Only the kept nodes are painted; the first of each model keeps its grey.
    pintarXOR(c);
    EXPECT_EQ(material(*base, 0).diffuse(), Color::gris(0.75f));
    EXPECT_EQ(material(*base, 1).diffuse(), coloresXOR::modificadoAnterior);
    EXPECT_EQ(material(*nuevo, 1).diffuse(), coloresXOR::modificadoNuevo);

    // An empty model makes every key added or eliminated.
    auto vacio = modelo({});
    auto lleno = modelo({{"A"}, {"B"}, {"A"}});
    EXPECT_EQ(clasificarXOR(*vacio, *lleno, {}, {}).estadisticas(), (EstadisticasXOR{2, 0, 0, 0}));
    EXPECT_EQ(clasificarXOR(*lleno, *vacio, {}, {}).estadisticas(), (EstadisticasXOR{0, 2, 0, 0}));
    const auto iguales = clasificarXOR(*lleno, *lleno, {}, {});
    EXPECT_EQ(iguales.estadisticas(), (EstadisticasXOR{0, 0, 0, 2}));
    EXPECT_TRUE(elementosCambioXOR(iguales).empty());

    // Groups are not elements; the elements nested in them are.
    auto grupo = Node::crear("Grupo");
    grupo->addChildNode(caja("B", {0, 0, 0}, {1, 1, 1}));
    auto anidado = modelo({{"A"}});
    anidado->addChildNode(grupo);
    auto plano = modelo({{"A"}, {"B"}});
    plano->addChildNode(Node::crear("Grupo"));
    EXPECT_EQ(clasificarXOR(*anidado, *plano, {}, {}).estadisticas(),
              (EstadisticasXOR{0, 0, 0, 2}));
}

TEST(PintarXOR, ColoresYOpacidadesDeCadaVersion) {
    auto base =
        modelo({{"Igual"}, {"Quitado", {2, 0, 0}, {3, 1, 1}}, {"Movido", {4, 0, 0}, {5, 1, 1}}});
    auto nuevo =
        modelo({{"Igual"}, {"Puesto", {6, 0, 0}, {7, 1, 1}}, {"Movido", {4, 1, 0}, {5, 2, 1}}});
    // A node without a material is skipped, not a failure.
    auto sinMaterial = caja("Sin material", {0, 0, 0}, {1, 1, 1});
    sinMaterial->geometry()->materiales.clear();
    nuevo->addChildNode(sinMaterial);
    pintarXOR(clasificarXOR(*base, *nuevo, {}, {}));

    const std::tuple<const Node*, std::size_t, Color, float> esperados[] = {
        {base.get(), 0, coloresXOR::sinCambios, 0.75f},
        {base.get(), 1, coloresXOR::eliminado, 1.0f},
        {base.get(), 2, coloresXOR::modificadoAnterior, 1.0f},
        {nuevo.get(), 0, coloresXOR::sinCambios, 0.0f},
        {nuevo.get(), 1, coloresXOR::agregado, 1.0f},
        {nuevo.get(), 2, coloresXOR::modificadoNuevo, 1.0f}};
    for (const auto& [m, i, color, opacidad] : esperados) {
        SCOPED_TRACE(*m->childNodes()[i]->name());
        EXPECT_EQ(material(*m, i).diffuse(), color);
        EXPECT_FLOAT_EQ(material(*m, i).transparency(), opacidad);
    }
}
