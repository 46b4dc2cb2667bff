// The scene a clash thumbnail is rendered from: coloured copies that leave
// the workspace untouched, elements of a restored clash found by name in the
// live scene, the two lights, and the camera's place and clipping planes.
#include "analyses/clash/EscenaThumbnail.h"
#include "scene/ColoresSistema.h"
#include "scene/Orientacion.h"

#include <glm/gtc/constants.hpp>
#include <glm/gtc/quaternion.hpp>
#include <gtest/gtest.h>
#include <map>
#include <tuple>

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

// The nodes of a thumbnail scene's root that carry geometry.
std::vector<std::shared_ptr<Node>> conGeometria(const Scene& s) {
    std::vector<std::shared_ptr<Node>> r;
    for (const auto& n : s.rootNode()->childNodes())
        if (n->geometry()) r.push_back(n);
    return r;
}

// A workspace tree: root, esp_ARQ / esp_MEP, model roots, elements.
struct EscenaViva {
    Scene scene;
    std::shared_ptr<Node> muro, tubo, muroVacio, muroProfundo;

    EscenaViva() {
        auto arq = Node::crear("esp_ARQ"), mep = Node::crear("esp_MEP");
        auto modeloA = Node::crear(), modeloM = Node::crear();
        for (const auto& e : {arq, mep}) scene.rootNode()->addChildNode(e);
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
    i.viewpointTarget = {2, 0.2, 1.1};
    i.radio = 6;
    return i;
}

// The thumbnail holds a red copy of a and a blue copy of b, in that order:
// flat Phong, two-sided, without the workspace's glow.
void copiasDe(const EscenaThumbnail& t, const Node& a, const Node& b) {
    const auto objetos = conGeometria(*t.escena);
    ASSERT_EQ(objetos.size(), 2u);
    EXPECT_EQ(objetos[0]->name(), a.name());
    EXPECT_EQ(objetos[0]->position(), a.position());
    const std::tuple<const Node*, const Node*, Color> pares[] = {
        {objetos[0].get(), &a, colores::rojo}, {objetos[1].get(), &b, colores::azul}};
    for (const auto& [copia, original, color] : pares) {
        EXPECT_EQ(copia->geometry()->vertices, original->geometry()->vertices);
        ASSERT_EQ(copia->geometry()->materiales.size(), 1u);
        const Material& m = *copia->geometry()->firstMaterial();
        EXPECT_EQ(m.diffuse(), color);
        EXPECT_EQ(m.emission(), colores::negro);
        EXPECT_EQ(m.lightingModel(), ModeloIluminacion::Phong);
        EXPECT_TRUE(m.isDoubleSided());
    }
}

} // namespace

TEST(EscenaThumbnail, copiasColoreadasDejanIntactoElOriginal) {
    EscenaViva v;
    const auto contadores = v.scene.contadores();
    auto copia = copiaColoreada(*v.muro, colores::rojo);
    EXPECT_NE(copia, v.muro);
    EXPECT_EQ(copia->parent(), nullptr);
    EXPECT_NE(copia->geometry(), v.muro->geometry());
    ASSERT_EQ(copia->geometry()->elementos.size(), 1u);
    EXPECT_EQ(copia->geometry()->elementos[0].indices, v.muro->geometry()->elementos[0].indices);
    // The workspace keeps its colour, its glow and its counters.
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->diffuse(), (Color{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->emission(), colores::naranja);
    EXPECT_EQ(v.muro->parent()->childNodes().size(), 2u);
    EXPECT_EQ(v.scene.contadores().estructura, contadores.estructura);
    EXPECT_EQ(v.scene.contadores().apariencia, contadores.apariencia);

    // A child comes along, its geometry shared; a node without geometry is copied as it is.
    auto conHijo = copiaColoreada(*v.tubo, colores::azul);
    ASSERT_EQ(conHijo->childNodes().size(), 1u);
    EXPECT_NE(conHijo->childNodes()[0], v.muroProfundo);
    EXPECT_EQ(conHijo->childNodes()[0]->geometry(), v.muroProfundo->geometry());
    EXPECT_EQ(v.tubo->childNodes()[0], v.muroProfundo);
    auto vacio = copiaColoreada(*v.muroVacio, colores::rojo);
    EXPECT_EQ(vacio->geometry(), nullptr);
    EXPECT_EQ(vacio->name(), std::optional<std::string>("Muro 1"));
}

TEST(EscenaThumbnail, elementosDelClashVivoOHalladosPorNombreConGeometria) {
    EscenaViva v;
    const Interferencia i = restaurada("Muro 1", "Tubo 7");
    copiasDe(escenaThumbnail(i, &v.scene), *v.muro, *v.tubo);
    EXPECT_EQ(v.muro->parent()->childNodes().size(), 2u); // the live scene is not touched
    EXPECT_EQ(v.muro->geometry()->firstMaterial()->emission(), colores::naranja);
    // Without the live scene, or with either name missing, the placeholders stay.
    EXPECT_TRUE(conGeometria(*escenaThumbnail(i, nullptr).escena).empty());
    for (const auto& [a, b] : {std::pair{"Muro 1", "Tubo 99"}, std::pair{"Muro 99", "Tubo 7"}})
        EXPECT_TRUE(conGeometria(*escenaThumbnail(restaurada(a, b), &v.scene).escena).empty()) << a;

    // A live clash's nodes have geometry: they are drawn whatever the names say.
    Interferencia viva = restaurada("Otro nombre", "Y otro");
    viva.nodoA = v.muroProfundo;
    viva.nodoB = v.tubo;
    copiasDe(escenaThumbnail(viva, &v.scene), *v.muroProfundo, *v.tubo);

    // The group of the same name without geometry is skipped; the first wall
    // with one wins over the deeper one found later.
    Node& raiz = *v.scene.rootNode();
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Muro 1"), v.muro);
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Tubo 7"), v.tubo);
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Tubo"), nullptr);
    EXPECT_EQ(buscarElementoConGeometria(raiz, "esp_ARQ"), nullptr);
    // By GlobalId, a same-named element is found as itself.
    v.muroProfundo->setIdentidadIFC("3XYZ", "IfcWall");
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Muro 1", "3XYZ"), v.muroProfundo);
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Muro 1", "otro"), nullptr);
    v.muro->removeFromParentNode();
    EXPECT_EQ(buscarElementoConGeometria(raiz, "Muro 1"), v.muroProfundo);
}

TEST(EscenaThumbnail, lucesYCamara) {
    Interferencia i = restaurada("a", "b");
    const glm::vec3 objetivo(10, -4, 2.5);
    i.viewpointTarget = objetivo;
    i.viewpointPos = {100, 100, 100}; // the stored viewpoint plays no part
    i.radio = 2.0;
    EscenaThumbnail t = escenaThumbnail(i, nullptr);
    std::map<TipoLuz, const Node*> luces; // one light of each kind
    for (const auto& n : t.escena->rootNode()->childNodes()) {
        if (n->light()) {
            EXPECT_TRUE(luces.emplace(n->light()->tipo, n.get()).second);
        }
    }
    ASSERT_EQ(luces.size(), 2u);
    const Node* dir = luces.at(TipoLuz::Direccional);
    EXPECT_FLOAT_EQ(dir->light()->intensidad, 900.0f);
    EXPECT_FLOAT_EQ(luces.at(TipoLuz::Ambiental)->light()->intensidad, 380.0f);
    EXPECT_FALSE(dir->light()->proyectaSombras);
    EXPECT_FLOAT_EQ(dir->eulerAngles().x, -glm::quarter_pi<float>());
    EXPECT_FLOAT_EQ(dir->eulerAngles().y, glm::quarter_pi<float>());
    EXPECT_FLOAT_EQ(dir->eulerAngles().z, 0.0f);

    // The camera stands at (d, 0.6 d, d) from the target, d = max(0.45 r, 0.15);
    // zFar = 50 r, zNear = max(0.001 r, 0.005).
    struct Caso {
        double radio;
        float d, zFar, zNear;
    };
    for (const Caso c :
         {Caso{2.0, 0.9f, 100, 0.005f}, Caso{0.1, 0.15f, 5, 0.005f}, Caso{40.0, 18, 2000, 0.04f}}) {
        SCOPED_TRACE(c.radio);
        i.radio = c.radio;
        t = escenaThumbnail(i, nullptr);
        ASSERT_TRUE(t.camara && t.camara->camera());
        const glm::vec3 p = t.camara->position();
        EXPECT_NEAR(p.x - objetivo.x, c.d, 1e-4f);
        EXPECT_NEAR(p.y - objetivo.y, 0.6f * c.d, 1e-4f);
        EXPECT_NEAR(p.z - objetivo.z, c.d, 1e-4f);
        EXPECT_FLOAT_EQ(t.camara->camera()->zFar, c.zFar);
        EXPECT_FLOAT_EQ(t.camara->camera()->zNear, c.zNear);
        // It looks at the target, upright in the Z-up world: its right vector
        // stays level and its up leans to Z.
        const glm::mat4 m = t.camara->worldTransform();
        EXPECT_GT(glm::dot(glm::normalize(-glm::vec3(m[2])), glm::normalize(objetivo - p)),
                  0.99999f);
        EXPECT_NEAR(glm::vec3(m[0]).z, 0.0f, 1e-5f);
        EXPECT_GT(glm::vec3(m[1]).z, 0.0f);
    }
}
