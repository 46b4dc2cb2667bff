// The scene a clash thumbnail is rendered from: coloured copies that leave
// the workspace untouched, elements of a restored clash found by name in the
// live scene, the two lights, and the camera's place and clipping planes.
#include "analyses/clash/EscenaThumbnail.h"
#include "scene/ColoresSistema.h"
#include "scene/Orientacion.h"

#include <glm/gtc/constants.hpp>
#include <glm/gtc/quaternion.hpp>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

std::shared_ptr<Node> elemento(const std::string& nombre, glm::vec3 min, glm::vec3 max,
                               Color color) {
    auto g = std::make_shared<Geometry>();
    g->vertices = {min, max, {min.x, max.y, min.z}};
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2}});
    auto m = std::make_shared<Material>();
    m->setDiffuse(color);
    m->setEmission(colores::naranja);
    g->materiales.push_back(m);
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

// The nodes of a thumbnail scene's root that carry geometry, and its lights.
std::vector<std::shared_ptr<Node>> conGeometria(const Scene& s) {
    std::vector<std::shared_ptr<Node>> r;
    for (const auto& n : s.rootNode()->childNodes())
        if (n->geometry()) r.push_back(n);
    return r;
}

const Node* luz(const Scene& s, TipoLuz tipo) {
    const Node* hallada = nullptr;
    for (const auto& n : s.rootNode()->childNodes())
        if (n->light() && n->light()->tipo == tipo) {
            EXPECT_EQ(hallada, nullptr) << "more than one light of a kind";
            hallada = n.get();
        }
    return hallada;
}

// A workspace tree: root, esp_ARQ / esp_MEP, model roots, elements.
struct EscenaViva {
    Scene scene;
    std::shared_ptr<Node> muro, tubo, muroVacio, muroProfundo;

    EscenaViva() {
        auto arq = Node::crear("esp_ARQ"), mep = Node::crear("esp_MEP");
        auto modeloA = Node::crear(), modeloM = Node::crear();
        scene.rootNode()->addChildNode(arq);
        scene.rootNode()->addChildNode(mep);
        arq->addChildNode(modeloA);
        mep->addChildNode(modeloM);
        // A group named like the wall but without geometry comes first, and a
        // second wall of that name sits deeper in the second model.
        muroVacio = Node::crear("Muro 1");
        modeloA->addChildNode(muroVacio);
        muro = elemento("Muro 1", {0, 0, 0}, {4, 0.2f, 3}, {0.5f, 0.5f, 0.5f, 1});
        muro->setPosition({1, 2, 0});
        modeloA->addChildNode(muro);
        tubo = elemento("Tubo 7", {-1, 0.1f, 1}, {5, 0.3f, 1.2f}, {0.1f, 0.2f, 0.9f, 1});
        modeloM->addChildNode(tubo);
        muroProfundo = elemento("Muro 1", {9, 9, 9}, {10, 10, 10}, {0, 1, 0, 1});
        tubo->addChildNode(muroProfundo);
    }
};

Interferencia restaurada(const std::string& a, const std::string& b) {
    Interferencia i;
    i.id = "F0000000-0000-0000-0000-000000000001";
    i.nodoA = Node::crear(); // empty placeholders, as a project restore leaves them
    i.nodoB = Node::crear();
    i.nombreA = a;
    i.nombreB = b;
    i.especialidadA = "ARQ";
    i.especialidadB = "MEP";
    i.viewpointTarget = {2, 0.2, 1.1};
    i.radio = 6;
    return i;
}

void materialDeCopia(const Node& copia, const Color& color) {
    ASSERT_TRUE(copia.geometry());
    ASSERT_EQ(copia.geometry()->materiales.size(), 1u);
    const Material& m = *copia.geometry()->firstMaterial();
    EXPECT_EQ(m.diffuse(), color);
    EXPECT_EQ(m.emission(), colores::negro);
    EXPECT_EQ(m.lightingModel(), ModeloIluminacion::Phong);
    EXPECT_TRUE(m.isDoubleSided());
}

} // namespace

TEST(EscenaThumbnail, copiasColoreadasDejanIntactoElOriginal) {
    EscenaViva v;
    const auto estructura = v.scene.contadores().estructura;
    const auto apariencia = v.scene.contadores().apariencia;
    auto copia = copiaColoreada(*v.muro, colores::rojo);

    EXPECT_NE(copia, v.muro);
    EXPECT_EQ(copia->name(), v.muro->name());
    EXPECT_EQ(copia->position(), glm::vec3(1, 2, 0));
    EXPECT_EQ(copia->parent(), nullptr);
    materialDeCopia(*copia, colores::rojo);
    EXPECT_NE(copia->geometry(), v.muro->geometry());
    EXPECT_EQ(copia->geometry()->vertices, v.muro->geometry()->vertices);
    EXPECT_EQ(copia->geometry()->elementos.size(), 1u);
    EXPECT_EQ(copia->geometry()->elementos[0].indices, v.muro->geometry()->elementos[0].indices);

    // The workspace keeps its colour, its glow and its counters.
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->diffuse(), (Color{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->emission(), colores::naranja);
    EXPECT_EQ(v.muro->parent()->childNodes().size(), 2u);
    EXPECT_EQ(v.scene.contadores().estructura, estructura);
    EXPECT_EQ(v.scene.contadores().apariencia, apariencia);

    // A child comes along, its geometry shared, its transform kept.
    auto conHijo = copiaColoreada(*v.tubo, colores::azul);
    ASSERT_EQ(conHijo->childNodes().size(), 1u);
    EXPECT_NE(conHijo->childNodes()[0], v.muroProfundo);
    EXPECT_EQ(conHijo->childNodes()[0]->geometry(), v.muroProfundo->geometry());
    EXPECT_EQ(v.tubo->childNodes()[0], v.muroProfundo);

    // A node without geometry is copied as it is.
    auto vacio = copiaColoreada(*v.muroVacio, colores::rojo);
    EXPECT_EQ(vacio->geometry(), nullptr);
    EXPECT_EQ(vacio->name(), std::optional<std::string>("Muro 1"));
}

TEST(EscenaThumbnail, busquedaPorNombrePrimeroEnProfundidadConGeometria) {
    EscenaViva v;
    // The group of the same name without geometry is skipped; the first wall
    // with one wins over the deeper one found later.
    EXPECT_EQ(buscarElementoConGeometria(*v.scene.rootNode(), "Muro 1"), v.muro);
    EXPECT_EQ(buscarElementoConGeometria(*v.scene.rootNode(), "Tubo 7"), v.tubo);
    EXPECT_EQ(buscarElementoConGeometria(*v.scene.rootNode(), "Tubo"), nullptr);
    EXPECT_EQ(buscarElementoConGeometria(*v.scene.rootNode(), "esp_ARQ"), nullptr);
    v.muro->removeFromParentNode();
    EXPECT_EQ(buscarElementoConGeometria(*v.scene.rootNode(), "Muro 1"), v.muroProfundo);
}

TEST(EscenaThumbnail, clashRestauradoEncuentraSusElementosEnLaEscenaViva) {
    EscenaViva v;
    const Interferencia i = restaurada("Muro 1", "Tubo 7");
    const EscenaThumbnail t = escenaThumbnail(i, &v.scene);
    const auto objetos = conGeometria(*t.escena);
    ASSERT_EQ(objetos.size(), 2u);
    EXPECT_EQ(objetos[0]->name(), std::optional<std::string>("Muro 1"));
    EXPECT_EQ(objetos[0]->position(), glm::vec3(1, 2, 0)); // the live wall's own transform
    EXPECT_EQ(objetos[0]->geometry()->vertices, v.muro->geometry()->vertices);
    materialDeCopia(*objetos[0], colores::rojo);
    EXPECT_EQ(objetos[1]->name(), std::optional<std::string>("Tubo 7"));
    EXPECT_EQ(objetos[1]->geometry()->vertices, v.tubo->geometry()->vertices);
    materialDeCopia(*objetos[1], colores::azul);
    // The live scene is not touched.
    EXPECT_EQ(v.muro->parent()->childNodes().size(), 2u);
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->emission(), colores::naranja);

    // Without the live scene the placeholders stay: no objects.
    EXPECT_TRUE(conGeometria(*escenaThumbnail(i, nullptr).escena).empty());
}

TEST(EscenaThumbnail, nombresQueFaltanDejanSoloLasLuces) {
    EscenaViva v;
    for (const auto& [a, b] : {std::pair{"Muro 1", "Tubo 99"}, std::pair{"Muro 99", "Tubo 7"}}) {
        SCOPED_TRACE(a);
        const EscenaThumbnail t = escenaThumbnail(restaurada(a, b), &v.scene);
        EXPECT_TRUE(conGeometria(*t.escena).empty());
        int luces = 0;
        for (const auto& n : t.escena->rootNode()->childNodes()) luces += n->light().has_value();
        EXPECT_EQ(luces, 2);
    }
}

TEST(EscenaThumbnail, clashVivoUsaSusPropiosNodos) {
    EscenaViva v;
    Interferencia i = restaurada("Otro nombre", "Y otro");
    i.nodoA = v.muroProfundo; // a live clash: its nodes have geometry
    i.nodoB = v.tubo;
    const auto objetos = conGeometria(*escenaThumbnail(i, &v.scene).escena);
    ASSERT_EQ(objetos.size(), 2u);
    EXPECT_EQ(objetos[0]->geometry()->vertices, v.muroProfundo->geometry()->vertices);
    materialDeCopia(*objetos[0], colores::rojo);
    EXPECT_EQ(objetos[1]->geometry()->vertices, v.tubo->geometry()->vertices);
    materialDeCopia(*objetos[1], colores::azul);
}

TEST(EscenaThumbnail, lucesYCamara) {
    Interferencia i = restaurada("a", "b");
    i.viewpointTarget = {10, -4, 2.5};
    i.viewpointPos = {100, 100, 100}; // the stored viewpoint plays no part
    i.radio = 2.0;
    EscenaThumbnail t = escenaThumbnail(i, nullptr);

    const Node* dir = luz(*t.escena, TipoLuz::Direccional);
    const Node* amb = luz(*t.escena, TipoLuz::Ambiental);
    ASSERT_TRUE(dir && amb);
    EXPECT_FLOAT_EQ(dir->light()->intensidad, 900.0f);
    EXPECT_FLOAT_EQ(amb->light()->intensidad, 380.0f);
    EXPECT_FALSE(dir->light()->proyectaSombras);
    EXPECT_FLOAT_EQ(dir->eulerAngles().x, -glm::quarter_pi<float>());
    EXPECT_FLOAT_EQ(dir->eulerAngles().y, glm::quarter_pi<float>());
    EXPECT_FLOAT_EQ(dir->eulerAngles().z, 0.0f);

    // d = max(2 × 0.45, 0.15) = 0.9.
    ASSERT_TRUE(t.camara && t.camara->camera());
    EXPECT_NEAR(t.camara->position().x, 10.9f, 1e-5f);
    EXPECT_NEAR(t.camara->position().y, -4 + 0.54f, 1e-5f);
    EXPECT_NEAR(t.camara->position().z, 3.4f, 1e-5f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zFar, 100.0f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zNear, 0.005f); // 2 × 0.001 is below the floor
    // It looks at the target, upright (its right vector stays level).
    const glm::mat4 m = t.camara->worldTransform();
    const glm::vec3 frente = glm::normalize(-glm::vec3(m[2]));
    const glm::vec3 haciaObjetivo = glm::normalize(glm::vec3(10, -4, 2.5) - t.camara->position());
    EXPECT_GT(glm::dot(frente, haciaObjetivo), 0.99999f);
    EXPECT_NEAR(glm::vec3(m[0]).y, 0.0f, 1e-5f);
    EXPECT_GT(glm::vec3(m[1]).y, 0.0f);

    // A small clash: the distance has a floor of 0.15 m; a large one sets zNear.
    i.radio = 0.1;
    t = escenaThumbnail(i, nullptr);
    EXPECT_NEAR(t.camara->position().x - 10.0f, 0.15f, 1e-5f);
    EXPECT_NEAR(t.camara->position().y + 4.0f, 0.09f, 1e-5f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zFar, 5.0f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zNear, 0.005f);
    i.radio = 40.0;
    t = escenaThumbnail(i, nullptr);
    EXPECT_NEAR(t.camara->position().z - 2.5f, 18.0f, 1e-4f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zFar, 2000.0f);
    EXPECT_FLOAT_EQ(t.camara->camera()->zNear, 0.04f);
}
