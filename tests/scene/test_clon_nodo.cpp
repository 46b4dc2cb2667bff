// Copies of subtrees: every node copied with its own state, geometry shared,
// and nothing of the copy reaching back into the original's scene.
#include "scene/ClonNodo.h"

#include <gtest/gtest.h>

using namespace teskal;

TEST(ClonNodo, copiaElSubarbolYComparteLaGeometria) {
    Scene escena;
    auto padre = Node::crear("grupo");
    auto hijo = Node::crear("hijo");
    auto nieto = Node::crear();
    escena.rootNode()->addChildNode(padre);
    padre->addChildNode(hijo);
    hijo->addChildNode(nieto);
    auto g = std::make_shared<Geometry>();
    g->vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    hijo->setGeometry(g);
    padre->setPosition({1, 2, 3});
    padre->setEulerAngles({0.1f, 0.2f, 0.3f});
    padre->setScale({2, 2, 2});
    hijo->setHidden(true);
    hijo->setOpacity(0.4f);
    Light luz;
    luz.tipo = TipoLuz::Ambiental;
    luz.intensidad = 250.0f;
    nieto->setLight(luz);
    nieto->setCamera(Camera{35.0f, 0.2f, 80.0f});
    const auto estructura = escena.contadores().estructura;

    auto copia = clonarNodo(*padre);
    EXPECT_EQ(copia->parent(), nullptr);
    EXPECT_EQ(copia->name(), std::optional<std::string>("grupo"));
    EXPECT_EQ(copia->position(), glm::vec3(1, 2, 3));
    EXPECT_EQ(copia->eulerAngles(), glm::vec3(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(copia->scale(), glm::vec3(2, 2, 2));
    ASSERT_EQ(copia->childNodes().size(), 1u);
    const auto& h = copia->childNodes()[0];
    EXPECT_NE(h, hijo);
    EXPECT_EQ(h->parent(), copia);
    EXPECT_EQ(h->geometry(), g);
    EXPECT_TRUE(h->isHidden());
    EXPECT_FLOAT_EQ(h->opacity(), 0.4f);
    ASSERT_EQ(h->childNodes().size(), 1u);
    const auto& n = h->childNodes()[0];
    EXPECT_NE(n, nieto);
    EXPECT_EQ(n->name(), std::nullopt);
    ASSERT_TRUE(n->light() && n->camera());
    EXPECT_EQ(n->light()->tipo, TipoLuz::Ambiental);
    EXPECT_FLOAT_EQ(n->light()->intensidad, 250.0f);
    EXPECT_FLOAT_EQ(n->camera()->fieldOfView, 35.0f);
    EXPECT_FLOAT_EQ(n->camera()->zFar, 80.0f);

    // Changing the copy leaves the original and its scene alone.
    copia->setPosition({0, 0, 0});
    h->addChildNode(Node::crear("nuevo"));
    EXPECT_EQ(padre->position(), glm::vec3(1, 2, 3));
    EXPECT_EQ(hijo->childNodes().size(), 1u);
    EXPECT_EQ(escena.contadores().estructura, estructura);
    EXPECT_EQ(padre->childNodes()[0], hijo);
}
