// The scene tree: ownership and parents, walks, boxes through transforms, and
// the change counters that tell the renderer what to upload again.
#include "scene/Node.h"

#include <glm/gtc/constants.hpp>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

std::shared_ptr<Node> nodoCaja(const std::string& nombre, glm::vec3 min, glm::vec3 max) {
    auto g = std::make_shared<Geometry>();
    g->vertices = {min, max, {min.x, max.y, min.z}};
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2}});
    g->materiales.push_back(std::make_shared<Material>());
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

void esperarCerca(glm::vec3 a, glm::vec3 b) {
    EXPECT_NEAR(a.x, b.x, 1e-5f);
    EXPECT_NEAR(a.y, b.y, 1e-5f);
    EXPECT_NEAR(a.z, b.z, 1e-5f);
}

TEST(Nodo, padresHijosYRecorrido) {
    auto raiz = Node::crear();
    auto a = Node::crear("a"), b = Node::crear("b"), a1 = Node::crear("a1"), a2 = Node::crear("a2");
    raiz->addChildNode(a);
    raiz->addChildNode(b);
    a->addChildNode(a1);
    a1->addChildNode(a2);
    EXPECT_EQ(a2->parent(), a1);
    EXPECT_EQ(raiz->childNodeWithName("a2", false), nullptr);
    EXPECT_EQ(raiz->childNodeWithName("a2", true), a2);

    // Depth first, the node itself excluded.
    std::vector<std::string> orden;
    raiz->enumerateChildNodes([&](Node& n, bool&) { orden.push_back(*n.name()); });
    EXPECT_EQ(orden, (std::vector<std::string>{"a", "a1", "a2", "b"}));
    orden.clear();
    raiz->enumerateChildNodes([&](Node& n, bool& parar) {
        orden.push_back(*n.name());
        parar = *n.name() == "a1";
    });
    EXPECT_EQ(orden, (std::vector<std::string>{"a", "a1"}));

    // Moving a node takes it from its old parent; removing it keeps it alive
    // for whoever holds it.
    b->addChildNode(a1);
    EXPECT_TRUE(a->childNodes().empty());
    EXPECT_EQ(a1->parent(), b);
    a1->removeFromParentNode();
    EXPECT_TRUE(b->childNodes().empty());
    EXPECT_EQ(a1->parent(), nullptr);
    EXPECT_EQ(a1->childNodes().front(), a2);

    // A visitor may detach the node it is visiting.
    raiz->enumerateChildNodes([](Node& n, bool&) {
        if (n.name() == std::optional<std::string>("b")) n.removeFromParentNode();
    });
    EXPECT_EQ(raiz->childNodes().size(), 1u);
}

TEST(Nodo, cajaEnCoordenadasPropias) {
    auto vacio = Node::crear();
    const Box cero = vacio->boundingBox();
    EXPECT_TRUE(cero.vacia);
    EXPECT_EQ(cero.min, glm::vec3(0.0f));
    EXPECT_EQ(cero.max, glm::vec3(0.0f));

    auto raiz = Node::crear();
    auto modelo = Node::crear();
    raiz->addChildNode(modelo);
    modelo->addChildNode(nodoCaja("m", {0, 0, 0}, {1, 2, 3}));
    modelo->setPosition({10, 0, -1});
    modelo->setScale({2, 2, 2});
    raiz->addChildNode(Node::crear("vacio")); // adds nothing to the box
    const Box b = raiz->boundingBox();
    esperarCerca(b.min, {10, 0, -1});
    esperarCerca(b.max, {12, 4, 5});

    // A quarter turn about Z sends +X to +Y.
    modelo->setScale({1, 1, 1});
    modelo->setPosition({0, 0, 0});
    modelo->setEulerAngles({0, 0, glm::half_pi<float>()});
    const Box girada = raiz->boundingBox();
    esperarCerca(girada.min, {-2, 0, 0});
    esperarCerca(girada.max, {0, 1, 3});
}

TEST(Nodo, ordenDeLosAngulosDeEuler) {
    // Roll about Z applies first, then yaw about Y, then pitch about X.
    auto n = Node::crear();
    n->setEulerAngles({glm::half_pi<float>(), 0, glm::half_pi<float>()});
    esperarCerca(glm::vec3(n->transform() * glm::vec4(1, 0, 0, 1)), {0, 0, 1});

    auto padre = Node::crear();
    padre->setPosition({5, 0, 0});
    padre->addChildNode(n);
    n->setPosition({0, 1, 0});
    n->setEulerAngles({0, 0, 0});
    esperarCerca(glm::vec3(n->worldTransform() * glm::vec4(0, 0, 0, 1)), {5, 1, 0});
}

TEST(Escena, contadoresDeEstructuraYApariencia) {
    Scene escena;
    const auto inicio = escena.contadores();

    // A subtree built off the scene (as a loader does on its worker) gets the
    // scene's counters when it is attached, materials included.
    auto modelo = Node::crear();
    auto elemento = nodoCaja("e", {0, 0, 0}, {1, 1, 1});
    modelo->addChildNode(elemento);
    elemento->geometry()->firstMaterial()->setDiffuse(Color{1, 0, 0, 1});
    EXPECT_EQ(escena.contadores().estructura, inicio.estructura);
    EXPECT_EQ(escena.contadores().apariencia, inicio.apariencia);

    escena.rootNode()->addChildNode(modelo);
    const auto trasUnir = escena.contadores();
    EXPECT_GT(trasUnir.estructura, inicio.estructura);

    elemento->geometry()->firstMaterial()->setDiffuse(Color{0, 1, 0, 1});
    elemento->geometry()->firstMaterial()->setEmission(Color{1, 1, 1, 1});
    EXPECT_EQ(escena.contadores().apariencia, trasUnir.apariencia + 2);
    elemento->setHidden(true);
    elemento->setOpacity(0.5f);
    EXPECT_EQ(escena.contadores().apariencia, trasUnir.apariencia + 4);
    EXPECT_EQ(escena.contadores().estructura, trasUnir.estructura); // colour is not structure

    // A geometry set later also brings its materials under the counters.
    auto otra = nodoCaja("o", {0, 0, 0}, {1, 1, 1});
    auto geo = otra->geometry();
    elemento->setGeometry(geo);
    const auto tras = escena.contadores();
    EXPECT_GT(tras.estructura, trasUnir.estructura);
    geo->firstMaterial()->setTransparency(0.2f);
    EXPECT_EQ(escena.contadores().apariencia, tras.apariencia + 1);

    modelo->removeFromParentNode();
    EXPECT_GT(escena.contadores().estructura, tras.estructura);
}

TEST(Geometria, cajaSoloDeLosVerticesIndexados) {
    Geometry g;
    g.vertices = {{0, 0, 0}, {1, 1, 1}, {100, 100, 100}};
    g.elementos.push_back({Primitiva::Lineas, {0, 1, 7, -1}}); // out-of-range indices ignored
    const Box b = g.boundingBox();
    EXPECT_EQ(b.max, glm::vec3(1, 1, 1));
    EXPECT_FALSE(g.tieneNormales());
    EXPECT_EQ(g.firstMaterial(), nullptr);
}

} // namespace
