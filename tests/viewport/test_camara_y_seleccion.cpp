// Camera moves, the near plane, selection and the element panel, on the scene
// model, headless.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "scene/Orientacion.h"
#include "viewport/PanelDetalle.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cmath>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

void esperarCerca(glm::vec3 a, glm::vec3 b, float tol = 1e-3f) {
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

glm::vec3 frente(const Node& camara) { return cuaternionDeEuler(camara.eulerAngles()) * glm::vec3(0, 0, -1); }
glm::vec3 arriba(const Node& camara) { return cuaternionDeEuler(camara.eulerAngles()) * glm::vec3(0, 1, 0); }

struct Banco {
    ContentView cv{"/no/hay"};
    std::shared_ptr<Node> camara = Node::crear();
    Banco() {
        camara->setCamera(Camera{});
        cv.viewport.vincularPuntoDeVista(camara);
        ContentView::configurarLuces(cv.scene);
    }
    // A model with one element per OBJ text group, linked to the discipline.
    void vincular(const std::string& clave, const std::string& obj) {
        cv.seleccionActual = clave;
        cv.fileName = clave + ".ifc";
        ModeloConvertido m;
        m.modelo = cargarOBJTexto(obj);
        m.propiedades["IFCWALL/Muro 1"] = {{"__tipoIFC", "IFCWALL"}, {"Pset_WallCommon \u203A IsExternal", "T"},
                                           {"Pset_WallCommon \u203A Acoustic", "A"}};
        cv.integrarModelo(std::move(m), "/x.ifc", "/no/existe.obj");
        cv.viewport.terminarAnimacion();
    }
    std::shared_ptr<Node> elemento(const std::string& nombre) {
        return cv.scene.rootNode()->childNodeWithName(nombre, true);
    }
};

// Box from (0,0,0) to (4,2,3) in one group, another from (10,0,0) to (11,1,1).
const std::string dosCajas = "v 0 0 0\nv 4 2 3\nv 0 2 0\nv 10 0 0\nv 11 1 1\nv 10 1 0\n"
                             "g IFCWALL/Muro 1\nf 1 2 3\ng Pilar\nf 4 5 6\n";

TEST(Camara, enfocarCajaYVistasPreset) {
    Banco b;
    b.cv.viewport.enfocarCaja({1, 2, 3}, 4.0f);
    EXPECT_TRUE(b.cv.viewport.animando());
    EXPECT_FLOAT_EQ(b.camara->camera()->zFar, 400.0f);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.01f); // 4 * 0.001 is below the floor of 0.01
    b.cv.viewport.terminarAnimacion();
    esperarCerca(b.camara->position(), {5, -2, 7});
    esperarCerca(frente(*b.camara), glm::normalize(glm::vec3(-1, 1, -1)));
    EXPECT_GT(arriba(*b.camara).z, 0.0f);

    b.cv.viewport.enfocarCaja({0, 0, 0}, 50.0f);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.05f);

    struct Caso {
        VistaPreset vista;
        glm::vec3 desde;
        glm::vec3 arriba;
    };
    const float d = 10 * 2.5f;
    const Caso casos[] = {
        {VistaPreset::arriba, {0, 0, d}, {0, 1, 0}},     {VistaPreset::frontal, {0, -d, 0}, {0, 0, 1}},
        {VistaPreset::posterior, {0, d, 0}, {0, 0, 1}},  {VistaPreset::izquierda, {-d, 0, 0}, {0, 0, 1}},
        {VistaPreset::derecha, {d, 0, 0}, {0, 0, 1}},    {VistaPreset::isoIzquierda, {-d, -d, 0.7f * d}, {0, 0, 1}},
        {VistaPreset::isoDerecha, {d, -d, 0.7f * d}, {0, 0, 1}},
    };
    const glm::vec3 c(5, 5, 1);
    for (const Caso& k : casos) {
        SCOPED_TRACE(std::string(nombreVistaPreset(k.vista)));
        b.cv.viewport.aplicarVista(k.vista, c, 10.0f);
        EXPECT_FLOAT_EQ(b.camara->camera()->zFar, 2000.0f);
        b.cv.viewport.terminarAnimacion();
        esperarCerca(b.camara->position(), c + k.desde);
        esperarCerca(frente(*b.camara), glm::normalize(-k.desde));
        // The image's up leans toward the preset's up.
        EXPECT_GT(glm::dot(arriba(*b.camara), k.arriba), 0.5f);
    }
}

TEST(Camara, vueloAUnClashConZVertical) {
    // The flight to a stored viewpoint looks at its target with Z as the
    // world's vertical: the picture's up is Z made perpendicular to the view,
    // so its right vector stays level; looking along Z (within the threshold)
    // up is Y; a target on the camera looks down.
    struct Caso {
        glm::vec3 desde, hacia, frente, arriba;
    };
    const float s = std::sqrt(0.5f);
    const Caso casos[] = {
        {{3, 2, 3}, {0, 0, 0}, glm::normalize(glm::vec3(-3, -2, -3)), {}},
        {{0, -5, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {{1, 1, 9}, {1, 1, 1}, {0, 0, -1}, {0, 1, 0}},
        {{1, 1, -9}, {1, 1, 1}, {0, 0, 1}, {0, 1, 0}},
        {{0.00001f, 0, 5}, {0, 0, 0}, {0, 0, -1}, {0, 1, 0}},
        {{2, 0, 2}, {0, 0, 0}, {-s, 0, -s}, {-s, 0, s}},
        {{4, 4, 4}, {4, 4, 4}, {0, 0, -1}, {0, 1, 0}},
    };
    for (const Caso& k : casos) {
        Banco b;
        b.cv.viewport.volarA(k.desde, k.hacia, 0.02f, 500.0f, 800);
        b.cv.viewport.terminarAnimacion();
        const glm::vec3 f = frente(*b.camara), u = arriba(*b.camara);
        const glm::vec3 derecha = glm::cross(f, u);
        SCOPED_TRACE(testing::Message() << u.x << " " << u.y << " " << u.z);
        esperarCerca(b.camara->position(), k.desde);
        esperarCerca(f, k.frente);
        EXPECT_NEAR(glm::dot(f, u), 0.0f, 1e-5f);
        if (k.arriba == glm::vec3(0)) {
            EXPECT_NEAR(derecha.z, 0.0f, 1e-5f); // level
            EXPECT_GT(u.z, 0.0f);
        } else {
            esperarCerca(u, k.arriba);
        }
    }
}

TEST(Camara, animacionDeOchoDecimasYRelevo) {
    Banco b;
    b.cv.viewport.enfocarCaja({0, 0, 0}, 10.0f);
    QElapsedTimer reloj;
    reloj.start();
    while (b.cv.viewport.animando() && reloj.elapsed() < 5000) QCoreApplication::processEvents();
    EXPECT_FALSE(b.cv.viewport.animando());
    esperarCerca(b.camara->position(), {10, -10, 10});
    // A second move during an animation takes over from where the camera is.
    b.cv.viewport.enfocarCaja({100, 0, 0}, 10.0f);
    b.cv.viewport.aplicarVista(VistaPreset::arriba, {0, 0, 0}, 1.0f);
    b.cv.viewport.terminarAnimacion();
    esperarCerca(b.camara->position(), {0, 0, 2.5f});
    // With the view gone, moves do nothing.
    const glm::vec3 antes = b.camara->position();
    auto sola = b.camara;
    b.camara.reset();
    ViewportController huerfano;
    huerfano.vincularPuntoDeVista(Node::crear()); // the node dies here: held weakly
    huerfano.enfocarCaja({0, 0, 0}, 1.0f);
    EXPECT_FALSE(huerfano.animando());
    EXPECT_EQ(sola->position(), antes);
}

TEST(Camara, zoomExtentsSinElPisoYEscenasVacias) {
    Banco b;
    // Only lights (and no floor): nothing to frame.
    b.cv.zoomExtents();
    EXPECT_FALSE(b.cv.viewport.animando());
    b.vincular("ARQ", dosCajas);
    ASSERT_TRUE(b.cv.scene.rootNode()->childNodeWithName("_TESKAL_Piso", false));
    b.cv.grillasIFC = {{"1", "A", true, {{-900, 1, -50}, {900, 1, -50}}}};
    b.cv.reconstruirGrillas();
    const auto hijos = b.cv.scene.rootNode()->childNodes();
    b.cv.zoomExtents();
    b.cv.viewport.terminarAnimacion();
    // Box (0,0,0)-(11,2,3): centre (5.5, 1, 1.5), size 11; the 5 km floor and
    // the grid lines, 5 m past the box and 50 m below it, are left out.
    esperarCerca(b.camara->position(), {16.5f, -10, 12.5f});
    EXPECT_FLOAT_EQ(b.camara->camera()->zFar, 1100.0f);
    // The measuring leaves the scene's tree as it was.
    EXPECT_EQ(b.cv.scene.rootNode()->childNodes(), hijos);

    // A scene whose only element is a point has a box of no extent: like an
    // empty scene, nothing is framed.
    Banco punto;
    punto.vincular("EST", "v 1 1 0\nv 1 1 0\nv 1 1 0\ng Punto\nf 1 2 3\n");
    const glm::vec3 antes = punto.camara->position();
    punto.cv.aplicarVistaPreset(VistaPreset::derecha);
    punto.cv.zoomExtents();
    EXPECT_FALSE(punto.cv.viewport.animando());
    EXPECT_EQ(punto.camara->position(), antes);
}

TEST(Camara, planoCercanoDelCorte) {
    Banco b;
    b.vincular("ARQ", dosCajas);
    ViewportController& v = b.cv.viewport;
    const Node& raiz = *b.cv.scene.rootNode();
    b.camara->setCamera(Camera{60, 0.7f, 100, false, 1});
    // No override before or now: a camera the user moved is left alone.
    v.actualizarCercano(std::nullopt, std::nullopt, raiz);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.7f);
    b.cv.pulsarCorte();
    EXPECT_TRUE(b.cv.modoCorteCamara);
    EXPECT_TRUE(b.cv.mostrarPopoverCorte);
    b.cv.fijarDistanciaCorte(0.0);
    EXPECT_DOUBLE_EQ(b.cv.distanciaCorte, 0.05); // the lowest cut
    v.actualizarCercano(std::nullopt, b.cv.nearClipOverride(), raiz);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.05f);
    b.cv.pulsarCorte(); // while on: closes the popover, keeps the cut
    EXPECT_TRUE(b.cv.modoCorteCamara);
    EXPECT_FALSE(b.cv.mostrarPopoverCorte);
    b.cv.fijarModoCorte(false);
    // The override has just gone: the near plane comes from the elements'
    // size (11 m here), not from the 5000 m floor nor from the value before.
    ASSERT_TRUE(raiz.childNodeWithName(std::string(nombrePisoEscena), false));
    v.actualizarCercano(0.05, b.cv.nearClipOverride(), raiz);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.011f);
    // With no elements a grid is drawn whole: 20 km that the size leaves out
    // too, and the near plane falls to its least.
    b.cv.grillasIFC = {{"1", "A", true, {{-10000, 0, 0}, {10000, 0, 0}}}};
    b.cv.desvincularTodos("ARQ");
    ASSERT_TRUE(b.cv.nodoGrillasIFC);
    v.actualizarCercano(0.05, b.cv.nearClipOverride(), raiz);
    EXPECT_FLOAT_EQ(b.camara->camera()->zNear, 0.01f);
}

TEST(Seleccion, resaltadoYRestauracion) {
    Banco b;
    b.vincular("ARQ", dosCajas);
    auto muro = b.elemento("IFCWALL/Muro 1");
    auto pilar = b.elemento("Pilar");
    Material* mm = muro->geometry()->firstMaterial();
    const Color colorArq = *mm->diffuse();

    b.cv.seleccionarNodo(muro);
    EXPECT_EQ(b.cv.nombreSeleccionado, "IFCWALL/Muro 1");
    EXPECT_EQ(mm->emission(), (Color{1, 0.85f, 0, 1}));
    EXPECT_EQ(*mm->diffuse(), (Color{1, 0.95f, 0.4f, 1}));
    EXPECT_EQ(b.cv.diffuseOriginalSeleccionado, colorArq);
    // Another node: the first gets its colour back before the second lights up.
    b.cv.seleccionarNodo(pilar);
    EXPECT_EQ(*mm->diffuse(), colorArq);
    EXPECT_EQ(mm->emission(), colores::negro);
    EXPECT_EQ(pilar->geometry()->firstMaterial()->emission(), (Color{1, 0.85f, 0, 1}));
    b.cv.seleccionarNodo(nullptr);
    EXPECT_EQ(*pilar->geometry()->firstMaterial()->diffuse(), colorArq);
    EXPECT_EQ(b.cv.nombreSeleccionado, "");
    EXPECT_FALSE(b.cv.nodoSeleccionado);

    // Names: the node's, else the geometry's, else a fixed text; a node with
    // no material is selected but not described.
    auto sinNombre = Node::crear();
    sinNombre->setGeometry(muro->geometry());
    b.cv.seleccionarNodo(sinNombre);
    EXPECT_EQ(b.cv.nombreSeleccionado, "IFCWALL/Muro 1");
    muro->geometry()->name.clear();
    b.cv.seleccionarNodo(sinNombre);
    EXPECT_EQ(b.cv.nombreSeleccionado, "Elemento sin nombre");
    b.cv.seleccionarNodo(Node::crear("vacío"));
    EXPECT_EQ(b.cv.nombreSeleccionado, "");

    // A textured material: only a colour is remembered, the texture is not put back.
    auto texturado = Node::crear("Piso");
    auto g = std::make_shared<Geometry>();
    auto m = std::make_shared<Material>();
    m->setDiffuseImagen(std::make_shared<ImagenRGBA>());
    g->materiales.push_back(m);
    texturado->setGeometry(g);
    b.cv.seleccionarNodo(texturado);
    EXPECT_FALSE(b.cv.diffuseOriginalSeleccionado);
    b.cv.seleccionarNodo(nullptr);
    EXPECT_FALSE(m->diffuseImagen());
}

TEST(PanelDetalle, filasDelElemento) {
    Banco b;
    b.vincular("ARQ", dosCajas);
    // The wall as the converter reports it: its GlobalId keys its properties.
    b.elemento("IFCWALL/Muro 1")->setIdentidadIFC("2O2Fr$t4X7Zf8NOew3FLOH", "IfcWallStandardCase");
    b.cv.propiedadesPorGlobalId["ARQ"]["2O2Fr$t4X7Zf8NOew3FLOH"] = b.cv.propiedadesIFC["ARQ"]["IFCWALL/Muro 1"];
    const auto filas = filasDetalle(b.cv, *b.elemento("IFCWALL/Muro 1"));
    const std::vector<FilaDetalle> esperadas = {
        {"Clase IFC", "IfcWallStandardCase"},
        {"GlobalId", "2O2Fr$t4X7Zf8NOew3FLOH"},
        {"Tipo IFC", "IFCWALL"},
        {"Nombre", "Muro 1"},
        {"Especialidad", "Arquitectura"},
        {"Dimensiones (m)", "W:4.00 H:2.00 D:3.00"},
        {"Posición", "X:2.00 Y:1.00 Z:1.50"},
        {"Vol. aprox. (m³)", "24.0000"},
        {"Interferencia", "Sin conflictos"},
        {"── Propiedades IFC ──", ""},
        {"Pset_WallCommon \u203A Acoustic", "A"},
        {"Pset_WallCommon \u203A IsExternal", "T"},
        {"__tipoIFC", "IFCWALL"},
    };
    EXPECT_EQ(filas, esperadas);

    // No identity: a dash in both rows. One part: "Elemento"; no entry: no
    // heading and nothing after.
    const auto pilar = filasDetalle(b.cv, *b.elemento("Pilar"));
    ASSERT_EQ(pilar.size(), 8u);
    EXPECT_EQ(pilar[0], (FilaDetalle{"Clase IFC", "—"}));
    EXPECT_EQ(pilar[1], (FilaDetalle{"GlobalId", "—"}));
    EXPECT_EQ(pilar[2], (FilaDetalle{"Elemento", "Pilar"}));
    EXPECT_EQ(pilar.back().etiqueta, "Interferencia");

    // "a/b/c" takes the first two parts; "/x" has one part.
    auto nodo = Node::crear("a/b/c");
    EXPECT_EQ(filasDetalle(b.cv, *nodo)[2], (FilaDetalle{"Tipo IFC", "a"}));
    EXPECT_EQ(filasDetalle(b.cv, *nodo)[3], (FilaDetalle{"Nombre", "b"}));
    EXPECT_EQ(filasDetalle(b.cv, *Node::crear("/x"))[2], (FilaDetalle{"Elemento", "/x"}));
    EXPECT_EQ(filasDetalle(b.cv, *Node::crear())[2], (FilaDetalle{"Elemento", "Sin nombre"}));
}

} // namespace
