// The matching of two versions on models built in memory: name parts, keys
// and GlobalIds, the thresholds, the painting and the rows of the result.
#include "analyses/xor/ComparacionXOR.h"

#include <gtest/gtest.h>
#include <set>

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
    glm::vec3 min, max;
};

std::shared_ptr<Node> modelo(const std::vector<Elemento>& elementos) {
    auto raiz = Node::crear();
    for (const auto& e : elementos) raiz->addChildNode(caja(e.nombre, e.min, e.max));
    return raiz;
}

const Material& material(const Node& modelo, std::size_t i) {
    return *modelo.childNodes().at(i)->geometry()->firstMaterial();
}

std::set<std::string> claves(const std::vector<std::string_view>& v) {
    return {v.begin(), v.end()};
}

} // namespace

TEST(PartesNombre, CortaEnLaPrimeraBarraYConservaElNombreEnteroSiQuedaUnaPieza) {
    const auto p = partesNombre("Pared/Muro 1");
    EXPECT_EQ(p.tipoIFC, "Pared");
    EXPECT_EQ(p.nombre, "Muro 1");
    EXPECT_EQ(partesNombre("Muro 1").tipoIFC, "");
    EXPECT_EQ(partesNombre("Muro 1").nombre, "Muro 1");
    EXPECT_EQ(partesNombre("a/b/c").tipoIFC, "a");
    EXPECT_EQ(partesNombre("a/b/c").nombre, "b/c");
    // An empty piece is dropped: a single piece remains, the name stays whole.
    EXPECT_EQ(partesNombre("/x").tipoIFC, "");
    EXPECT_EQ(partesNombre("/x").nombre, "/x");
    EXPECT_EQ(partesNombre("x/").nombre, "x/");
    EXPECT_EQ(partesNombre("").nombre, "");
}

TEST(DeltasXOR, DistanciaDeCentrosYMayorCambioDeExtension) {
    const Box a{{0, 0, 0}, {2, 1, 3}, false};
    const Box b{
        {0.3f, 0.4f, 0}, {2.3f, 1.4f, 3.5f}, false}; // centre moves (0.3, 0.4, 0.25), z grows 0.5
    const DeltasXOR d = deltasXOR(a, b);
    EXPECT_NEAR(d.posicion, std::sqrt(0.09 + 0.16 + 0.0625), 1e-6);
    EXPECT_NEAR(d.tamano, 0.5, 1e-6);
    EXPECT_TRUE(d.modificado());
    // Under the threshold on both counts, and the strict comparison just above it.
    EXPECT_FALSE(deltasXOR(a, {{0.04f, 0, 0}, {2.04f, 1, 3.03f}, false}).modificado());
    EXPECT_FALSE(deltasXOR(a, {{0, 0, 0}, {2.0499f, 1, 3}, false})
                     .modificado()); // grows 0.0499, moves 0.025
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
    EXPECT_EQ(claves(c.agregados), std::set<std::string>{"Muro E"});
    EXPECT_EQ(claves(c.eliminados), std::set<std::string>{"Muro C"});
    ASSERT_EQ(c.modificados.size(), 1u);
    EXPECT_EQ(c.modificados[0].clave, "Muro B");
    EXPECT_EQ(c.estadisticas(), (EstadisticasXOR{1, 1, 1, 2}));

    const auto filas = elementosCambioXOR(c);
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_EQ(filas[0].nombre, "Muro B");
    EXPECT_EQ(filas[0].tipoCambio, TipoCambioXOR::modificado);
    EXPECT_NEAR(filas[0].deltaPosicion, 0.06f, 1e-5);
    EXPECT_NEAR(filas[0].deltaTamano, 0.0f, 1e-6);
    EXPECT_EQ(filas[1].nombre, "Muro C");
    EXPECT_EQ(filas[1].tipoCambio, TipoCambioXOR::eliminado);
    EXPECT_EQ(filas[2].nombre, "Muro E");
    EXPECT_EQ(filas[2].tipoCambio, TipoCambioXOR::agregado);
    EXPECT_EQ(filas[2].deltaPosicion, 0.0f);
    EXPECT_NE(filas[0].id, filas[1].id);
    EXPECT_EQ(filas[0].id.size(), 36u);
}

TEST(ClasificarXOR, LasFilasGuardanElTipoDelNodoQueCorresponde) {
    // The modified and added rows take the new model's node, the eliminated the base's.
    auto base =
        modelo({{"IfcWall/M1", {0, 0, 0}, {1, 1, 1}}, {"IfcSlab/L1", {0, 0, 0}, {1, 1, 1}}});
    auto nuevo =
        modelo({{"IfcColumn/M1", {0, 0, 0}, {1, 1, 2}}, {"IfcBeam/V1", {0, 0, 0}, {1, 1, 1}}});
    const auto filas = elementosCambioXOR(clasificarXOR(*base, *nuevo, {}, {}));
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_EQ(filas[0].nombre, "L1");
    EXPECT_EQ(filas[0].tipoIFC, "IfcSlab");
    EXPECT_EQ(filas[1].nombre, "M1");
    EXPECT_EQ(filas[1].tipoIFC, "IfcColumn");
    EXPECT_NEAR(filas[1].deltaTamano, 1.0f, 1e-6);
    EXPECT_NEAR(filas[1].deltaPosicion, 0.5f, 1e-6);
    EXPECT_EQ(filas[2].nombre, "V1");
    EXPECT_EQ(filas[2].tipoIFC, "IfcBeam");
}

TEST(ClasificarXOR, LasFilasSeOrdenanPorNombreEnOrdenDeCodigo) {
    auto base = modelo({});
    auto nuevo = modelo({{"b", {0, 0, 0}, {1, 1, 1}},
                         {"Á", {0, 0, 0}, {1, 1, 1}},
                         {"B", {0, 0, 0}, {1, 1, 1}},
                         {"a", {0, 0, 0}, {1, 1, 1}}});
    std::vector<std::string> nombres;
    for (const auto& f : elementosCambioXOR(clasificarXOR(*base, *nuevo, {}, {})))
        nombres.push_back(f.nombre);
    EXPECT_EQ(nombres, (std::vector<std::string>{"B", "a", "b", "Á"}));
}

TEST(ClasificarXOR, GlobalIdsSoloSiAmbosMapasTienenEntradas) {
    auto base = modelo({{"Muro viejo", {0, 0, 0}, {1, 1, 1}}, {"Losa", {0, 0, 0}, {5, 5, 0.2f}}});
    auto nuevo =
        modelo({{"Muro renombrado", {0, 0, 0}, {1, 1, 1}}, {"Losa", {0, 0, 0}, {5, 5, 0.2f}}});
    const GlobalIdsPorNombre idsBase{{"Muro viejo", "2XQ$n5SLP5MBLyL442paFx"}};
    const GlobalIdsPorNombre idsNuevo{{"Muro renombrado", "2XQ$n5SLP5MBLyL442paFx"}};

    const auto conIds = clasificarXOR(*base, *nuevo, idsBase, idsNuevo);
    EXPECT_TRUE(conIds.agregados.empty());
    EXPECT_TRUE(conIds.eliminados.empty());
    EXPECT_EQ(conIds.estadisticas().iguales,
              2); // the slab has no id: its name keys it on both sides

    for (const auto& vacio :
         {std::pair{idsBase, GlobalIdsPorNombre{}}, std::pair{GlobalIdsPorNombre{}, idsNuevo}}) {
        const auto sinIds = clasificarXOR(*base, *nuevo, vacio.first, vacio.second);
        EXPECT_EQ(claves(sinIds.agregados), std::set<std::string>{"Muro renombrado"});
        EXPECT_EQ(claves(sinIds.eliminados), std::set<std::string>{"Muro viejo"});
        EXPECT_EQ(sinIds.estadisticas().iguales, 1);
    }
}

TEST(ClasificarXOR, NombresRepetidosCuentanComoUnaClaveYQuedaElUltimo) {
    auto base = modelo({{"Muro", {0, 0, 0}, {1, 1, 1}}, {"Muro", {10, 0, 0}, {11, 1, 1}}});
    auto nuevo = modelo({{"Muro", {10, 0, 0}, {11, 1, 1}}, {"Muro", {0, 0, 0}, {1, 1, 1}}});
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
}

TEST(ClasificarXOR, UnModeloVacioHaceTodoAgregadoOEliminado) {
    auto vacio = modelo({});
    auto lleno = modelo(
        {{"A", {0, 0, 0}, {1, 1, 1}}, {"B", {0, 0, 0}, {1, 1, 1}}, {"A", {0, 0, 0}, {1, 1, 1}}});
    EXPECT_EQ(clasificarXOR(*vacio, *lleno, {}, {}).estadisticas(), (EstadisticasXOR{2, 0, 0, 0}));
    EXPECT_EQ(clasificarXOR(*lleno, *vacio, {}, {}).estadisticas(), (EstadisticasXOR{0, 2, 0, 0}));
    const auto iguales = clasificarXOR(*lleno, *lleno, {}, {});
    EXPECT_EQ(iguales.estadisticas(), (EstadisticasXOR{0, 0, 0, 2}));
    EXPECT_TRUE(elementosCambioXOR(iguales).empty());
}

TEST(ClasificarXOR, NodosSinGeometriaNoSonElementos) {
    auto base = modelo({{"A", {0, 0, 0}, {1, 1, 1}}});
    auto grupo = Node::crear("Grupo");
    grupo->addChildNode(caja("B", {0, 0, 0}, {1, 1, 1})); // nested elements count too
    base->addChildNode(grupo);
    auto nuevo = modelo({{"A", {0, 0, 0}, {1, 1, 1}}, {"B", {0, 0, 0}, {1, 1, 1}}});
    nuevo->addChildNode(Node::crear("Grupo"));
    EXPECT_EQ(clasificarXOR(*base, *nuevo, {}, {}).estadisticas(), (EstadisticasXOR{0, 0, 0, 2}));
}

TEST(PintarXOR, ColoresYOpacidadesDeCadaVersion) {
    auto base = modelo({{"Igual", {0, 0, 0}, {1, 1, 1}},
                        {"Quitado", {2, 0, 0}, {3, 1, 1}},
                        {"Movido", {4, 0, 0}, {5, 1, 1}}});
    auto nuevo = modelo({{"Igual", {0, 0, 0}, {1, 1, 1}},
                         {"Puesto", {6, 0, 0}, {7, 1, 1}},
                         {"Movido", {4, 1, 0}, {5, 2, 1}}});
    // A node without a material is skipped, not a failure.
    auto sinMaterial = caja("Sin material", {0, 0, 0}, {1, 1, 1});
    sinMaterial->geometry()->materiales.clear();
    nuevo->addChildNode(sinMaterial);
    pintarXOR(clasificarXOR(*base, *nuevo, {}, {}));

    EXPECT_EQ(material(*base, 0).diffuse(), coloresXOR::sinCambios);
    EXPECT_FLOAT_EQ(material(*base, 0).transparency(), 0.75f);
    EXPECT_EQ(material(*base, 1).diffuse(), coloresXOR::eliminado);
    EXPECT_FLOAT_EQ(material(*base, 1).transparency(), 1.0f);
    EXPECT_EQ(material(*base, 2).diffuse(), coloresXOR::modificadoAnterior);
    EXPECT_FLOAT_EQ(material(*base, 2).transparency(), 1.0f);

    EXPECT_EQ(material(*nuevo, 0).diffuse(), coloresXOR::sinCambios);
    EXPECT_FLOAT_EQ(material(*nuevo, 0).transparency(), 0.0f);
    EXPECT_EQ(material(*nuevo, 1).diffuse(), coloresXOR::agregado);
    EXPECT_FLOAT_EQ(material(*nuevo, 1).transparency(), 1.0f);
    EXPECT_EQ(material(*nuevo, 2).diffuse(), coloresXOR::modificadoNuevo);
    EXPECT_FLOAT_EQ(material(*nuevo, 2).transparency(), 1.0f);
}
