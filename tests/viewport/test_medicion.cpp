// Measuring on the scene model, headless: the values and their labels, vertex
// snapping and its bound, the ray-cast index, and the points a tool collects
// with the figures it leaves in the scene.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "viewport/medicion/IndiceRayos.h"
#include "viewport/medicion/Medicion.h"

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

// A 2 x 1 x 1 m box from (0, 0, 0) to (2, 1, 1), one OBJ group.
const char* caja = "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 1\nv 2 0 1\nv 2 1 1\nv 0 1 1\n"
                   "g IFCWALL/Caja\nf 1 2 3 4\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";

// Straight down from 10 m over (1, 0.5), 800 x 800 pixels.
VistaRaton vistaDesdeArriba(glm::vec2 raton) {
    const glm::mat4 vista = glm::lookAt(glm::vec3(1, 0.5f, 10), glm::vec3(1, 0.5f, 0), glm::vec3(0, 1, 0));
    const glm::mat4 proy = glm::perspective(glm::radians(45.0f), 1.0f, 0.1f, 100.0f);
    return {proy * vista, {1, 0.5f, 10}, {800, 800}, raton};
}

glm::vec2 pixel(const VistaRaton& v, glm::vec3 p) {
    const glm::vec4 c = v.vistaProyeccion * glm::vec4(p, 1);
    return {(c.x / c.w * 0.5f + 0.5f) * v.tamano.x, (0.5f - c.y / c.w * 0.5f) * v.tamano.y};
}

struct Banco {
    ContentView cv{"/no/hay"};
    Banco() {
        ContentView::configurarLuces(cv.scene);
        cv.fileName = "caja.ifc";
        ModeloConvertido m;
        m.modelo = cargarOBJTexto(caja);
        cv.integrarModelo(std::move(m), "/x.ifc", "/no/existe.obj", std::string("ARQ"));
        cv.viewport.terminarAnimacion();
    }
    std::size_t figurasEnEscena(const char* prefijo = "_TESKAL_Medicion") const {
        std::size_t n = 0;
        for (const auto& h : cv.scene.rootNode()->childNodes()) n += h->nombreEmpiezaCon(prefijo);
        return n;
    }
    void clic(glm::vec3 donde) {
        const VistaRaton v = vistaDesdeArriba({});
        cv.clicMedicion(vistaDesdeArriba(pixel(v, donde)));
    }
};

} // namespace

TEST(Medicion, AreaDePoligonos) {
    const struct {
        const char* caso;
        std::vector<glm::vec3> puntos;
        double area;
    } casos[] = {
        {"triángulo unidad", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5},
        {"esquina repetida", {{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {0, 1, 0}}, 0.5},
        {"L no convexa", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, 3.0},
        {"cuadrado vertical lejos del origen", {{5, 5, 0}, {5, 7, 0}, {5, 7, 2}, {5, 5, 2}}, 4.0},
        {"dos puntos", {{0, 0, 0}, {3, 0, 0}}, 0.0},
    };
    for (const auto& c : casos) EXPECT_NEAR(areaPoligono(c.puntos), c.area, 1e-9) << c.caso;
    EXPECT_EQ(textoArea(areaPoligono(casos[0].puntos)), "0.500 m\u00B2");
}

TEST(Medicion, AngulosYTextos) {
    EXPECT_NEAR(*anguloGrados({0, 0, 0}, {1, 0, 0}, {0, 3, 0}), 90.0, 1e-9);
    EXPECT_NEAR(*anguloGrados({1, 1, 1}, {2, 1, 1}, {2, 2, 1}), 45.0, 1e-9);
    EXPECT_NEAR(*anguloGrados({0, 0, 0}, {1, 0, 0}, {-2, 0, 0}), 180.0, 1e-9);
    // A click on the vertex itself: an arm without length has no direction.
    EXPECT_FALSE(anguloGrados({1, 2, 3}, {1, 2, 3}, {4, 2, 3}));
    EXPECT_EQ(textoAngulo(90), "90.00\u00B0");
    EXPECT_EQ(textoDistancia(2.0), "2.000 m");
    EXPECT_EQ(lineasPunto({1.5f, -2, 0}), (std::vector<std::string>{"X  +1.5000 m", "Y  -2.0000 m", "Z  +0.0000 m"}));
    // The ring never falls below 0.05 m, and grows with the distance.
    for (const auto [distancia, radio] : {std::pair{0.0f, 0.05f}, {1.0f, 0.05f}, {100.0f, 1.2f}})
        EXPECT_FLOAT_EQ(radioAnillo(distancia), radio) << distancia;
}

TEST(Medicion, AjusteAVerticeSoloEnLosPrimeros8000) {
    // 9000 vertices on a line along X at y = 0.5; the mouse over vertex i
    // snaps to it only while i is among the first 8000.
    auto n = Node::crear("malla");
    auto g = std::make_shared<Geometry>();
    for (int i = 0; i < 9000; ++i) g->vertices.push_back({i * 0.001f, 0.5f, 0});
    n->setGeometry(g);
    const VistaRaton base = vistaDesdeArriba({});
    for (const auto& [i, ajusta] : {std::pair{10, true}, std::pair{7999, true}, std::pair{8500, false}}) {
        const glm::vec3 v = g->vertices[static_cast<std::size_t>(i)];
        // 8.5 m along x is far from every one of the first 8000 (they end at 8 m).
        const auto p = ajustarVertice(*n, vistaDesdeArriba(pixel(base, v) + glm::vec2(0.4f, 0)));
        ASSERT_EQ(p.has_value(), ajusta) << i;
        if (p) EXPECT_NEAR(p->x, v.x, 0.01f) << i;
    }
    // More than 20 pixels from every vertex: no snap.
    EXPECT_FALSE(ajustarVertice(*n, vistaDesdeArriba(pixel(base, {1, 0.5f, 0}) + glm::vec2(0, 25))));
}

TEST(Medicion, IndiceDeRayos) {
    Banco b;
    IndiceRayos indice;
    indice.actualizar(b.cv.scene);
    auto muro = b.cv.scene.rootNode()->childNodeWithName("IFCWALL/Caja", true);
    ASSERT_TRUE(muro);
    // Down onto the top face.
    auto h = indice.lanzar({1.5f, 0.5f, 10}, {0, 0, -1});
    ASSERT_TRUE(h);
    EXPECT_EQ(h->nodo, muro);
    EXPECT_NEAR(h->punto.z, 1.0f, 1e-5f);
    // Past the box the floor is met; a ray upward meets nothing.
    h = indice.lanzar({5, 5, 10}, {0, 0, -1});
    ASSERT_TRUE(h);
    EXPECT_EQ(h->nodo->name().value_or(""), "_TESKAL_Piso");
    EXPECT_FALSE(indice.lanzar({1, 0.5f, 10}, {0, 0, 1}));
    // A moved model is met where it stands, with nothing rebuilt.
    muro->parent()->setPosition({0, 0, 3});
    indice.actualizar(b.cv.scene);
    EXPECT_EQ(indice.gruposReconstruidos(), 0u);
    EXPECT_NEAR(indice.lanzar({1.5f, 0.5f, 10}, {0, 0, -1})->punto.z, 4.0f, 1e-5f);
    // A hidden element is passed over.
    muro->setHidden(true);
    EXPECT_NE(indice.lanzar({1.5f, 0.5f, 10}, {0, 0, -1})->nodo, muro);
    muro->setHidden(false);
    // The measurement's own figures leave the index as it is; another change rebuilds.
    const auto antes = b.cv.scene.contadores().estructura;
    b.cv.scene.rootNode()->addChildNode(figuraMarcador({0, 0, 0}, "A", {}));
    indice.cambioPropio(antes, b.cv.scene.contadores().estructura);
    indice.actualizar(b.cv.scene);
    EXPECT_EQ(indice.gruposReconstruidos(), 0u);
    muro->parent()->addChildNode(cargarOBJTexto(caja)->childNodes().front());
    indice.actualizar(b.cv.scene);
    EXPECT_EQ(indice.gruposReconstruidos(), 1u);
    EXPECT_EQ(indice.elementos(), 3u); // two boxes and the floor
}

TEST(Medicion, HerramientasFigurasYHover) {
    Banco b;
    auto& m = b.cv.medicion;
    const glm::vec3 esquinas[] = {{0, 0, 1}, {2, 0, 1}, {2, 1, 1}};
    // Outside the model and the floor nothing is hit: the state does not advance.
    b.cv.pulsarModoMedicion(ModoMedicion3D::distancia);
    const glm::mat4 alCielo = glm::perspective(glm::radians(45.0f), 1.0f, 0.1f, 100.0f) *
                              glm::lookAt(glm::vec3(1, -50, 20), glm::vec3(1, 0, 60), glm::vec3(0, 0, 1));
    b.cv.clicMedicion({alCielo, {1, -50, 20}, {800, 800}, {400, 400}});
    EXPECT_FALSE(m.medicionPuntoA);
    EXPECT_EQ(b.figurasEnEscena(), 0u);

    // Near a corner the click snaps to it; a third click starts again.
    b.clic({0.02f, 0.01f, 1});
    ASSERT_TRUE(m.medicionPuntoA);
    EXPECT_EQ(*m.medicionPuntoA, glm::vec3(0, 0, 1));
    b.clic({1.99f, 0.02f, 1});
    EXPECT_EQ(*m.medicionPuntoB, glm::vec3(2, 0, 1));
    EXPECT_EQ(b.figurasEnEscena(), 3u); // A, B and the line
    b.clic({1.0f, 0.5f, 1});
    EXPECT_FALSE(m.medicionPuntoB);
    EXPECT_EQ(b.figurasEnEscena(), 1u);
    EXPECT_NEAR(m.medicionPuntoA->z, 1.0f, 1e-5f); // no vertex near: the hit point

    // Area: three corners, then closing clears the list and keeps the figure.
    b.cv.pulsarModoMedicion(ModoMedicion3D::area);
    EXPECT_EQ(b.figurasEnEscena(), 0u);
    for (const glm::vec3 p : esquinas) b.clic(p);
    EXPECT_EQ(m.medicionPuntosArea.size(), 3u);
    b.cv.cerrarPoligono();
    EXPECT_TRUE(m.medicionPuntosArea.empty());
    EXPECT_EQ(b.figurasEnEscena(), 4u);
    b.cv.cerrarPoligono(); // no points: nothing
    EXPECT_EQ(b.figurasEnEscena(), 4u);

    // Angle: A, vertex, B, then the figure; a click on the vertex itself gives no arc.
    b.cv.pulsarModoMedicion(ModoMedicion3D::angulo);
    for (const glm::vec3 p : esquinas) b.clic(p);
    ASSERT_TRUE(m.medicionPuntoC);
    const auto brazosYArco = m.nodosMedicion.back()->childNodes().size();
    EXPECT_EQ(brazosYArco, 2u + 28u + 1u); // two arms, 28 arc steps, the label
    b.cv.limpiarMedicion();
    for (const glm::vec3 p : {esquinas[0], esquinas[1], esquinas[1]}) b.cv.registrarPunto(p);
    EXPECT_EQ(m.nodosMedicion.back()->childNodes().size(), 1u); // one arm; no arc, no label

    // Point: each click replaces the last.
    b.cv.pulsarModoMedicion(ModoMedicion3D::punto);
    b.clic({1, 0.5f, 1});
    b.clic({0, 0, 1});
    EXPECT_EQ(b.figurasEnEscena(), 1u);
    // The same button again turns measuring off and clears.
    b.cv.pulsarModoMedicion(ModoMedicion3D::punto);
    EXPECT_EQ(m.modoMedicion3D, ModoMedicion3D::inactivo);
    EXPECT_EQ(b.figurasEnEscena(), 0u);
    EXPECT_FALSE(m.medicionPuntoA);

    // Hovering with the distance tool.
    const VistaRaton base = vistaDesdeArriba({});
    b.cv.pulsarModoMedicion(ModoMedicion3D::distancia);
    // Over a corner: the ring, at least 0.05 m, and no band before A.
    b.cv.moverRatonMedicion(vistaDesdeArriba(pixel(base, {1.98f, 0.98f, 1})));
    ASSERT_TRUE(m.nodoSnapIndicador);
    EXPECT_EQ(m.nodoSnapIndicador->position(), glm::vec3(2, 1, 1));
    EXPECT_GE(m.nodoSnapIndicador->boundingBox().tamano().x, 2 * 0.05f);
    EXPECT_FALSE(m.nodoLineaPreview);
    // After A, away from any vertex: no ring, the band from A.
    b.clic({0, 0, 1});
    b.cv.moverRatonMedicion(vistaDesdeArriba(pixel(base, {1, 0.5f, 1})));
    EXPECT_FALSE(m.nodoSnapIndicador);
    ASSERT_TRUE(m.nodoLineaPreview);
    EXPECT_EQ(m.nodoLineaPreview->parent(), b.cv.scene.rootNode());
    // One hover node of each kind at a time; leaving the tool removes them.
    b.cv.moverRatonMedicion(vistaDesdeArriba(pixel(base, {1, 0.6f, 1})));
    EXPECT_EQ(b.figurasEnEscena("_TESKAL_MedicionPreview"), 1u);
    b.cv.pulsarModoMedicion(ModoMedicion3D::distancia);
    EXPECT_FALSE(m.nodoLineaPreview);
    EXPECT_EQ(b.figurasEnEscena("_TESKAL_MedicionPreview"), 0u);
}
