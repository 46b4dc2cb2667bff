// Clash search and review: the tree search against the direct double loop on
// random boxes, the numeric rules of a clash, and the workspace's workflow.
#include "analyses/clash/BusquedaInterferencias.h"
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include "espera_eventos.h"

using namespace teskal;

using teskal::pruebas::esperarHasta;

namespace {

NodoBB caja(const std::string& key, const std::string& nombre, glm::dvec3 min, glm::dvec3 max) {
    return {Node::crear(nombre), key, nombre, {}, min, max};
}

void mismoResultado(const std::vector<Interferencia>& a, const std::vector<Interferencia>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t k = 0; k < a.size(); ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(a[k].nodoA, b[k].nodoA);
        EXPECT_EQ(a[k].nodoB, b[k].nodoB);
        EXPECT_EQ(a[k].especialidadA, b[k].especialidadA);
        EXPECT_EQ(a[k].especialidadB, b[k].especialidadB);
        EXPECT_EQ(a[k].nombreA, b[k].nombreA);
        EXPECT_EQ(a[k].nombreB, b[k].nombreB);
        EXPECT_EQ(a[k].viewpointPos, b[k].viewpointPos);
        EXPECT_EQ(a[k].viewpointTarget, b[k].viewpointTarget);
        EXPECT_EQ(a[k].radio, b[k].radio);
        EXPECT_EQ(a[k].estado, EstadoClash::abierto);
        EXPECT_NE(a[k].id, b[k].id);
    }
}

TEST(BusquedaInterferencias, arbolIgualQueDobleBucleEnCajasAlAzar) {
    std::mt19937 azar(1234);
    std::uniform_real_distribution<double> lugar(0, 30), tam(0, 4);
    std::uniform_int_distribution<int> especie(0, 3), nombre(0, 40), raro(0, 9);
    const std::string claves[] = {"ARQ", "EST", "MEP", "TOP"};
    for (int ronda = 0; ronda < 40; ++ronda) {
        SCOPED_TRACE(ronda);
        std::vector<NodoBB> c;
        const int n = 50 + ronda * 10;
        for (int i = 0; i < n; ++i) {
            glm::dvec3 min(lugar(azar), lugar(azar), lugar(azar) / 3);
            glm::dvec3 ext(tam(azar), tam(azar), tam(azar));
            switch (raro(azar)) {
            case 0: ext.z = 0; break;                       // flat
            case 1: ext = glm::dvec3(0); break;             // no extent
            case 2: if (!c.empty()) { min = c.back().bbMin; ext = c.back().bbMax - min; } break; // the same box
            case 3: if (!c.empty()) min.x = c.back().bbMax.x; break; // touching on x
            default: break;
            }
            c.push_back(caja(claves[especie(azar)], "E" + std::to_string(nombre(azar)), min, min + ext));
        }
        if (ronda % 5 == 0) c[3].bbMax.y = NAN;
        std::set<std::string> activos = {clavePar("ARQ", "EST"), clavePar("MEP", "ARQ"), clavePar("TOP", "EST")};
        if (ronda % 3 == 0) activos.insert(clavePar("MEP", "TOP"));
        std::unordered_set<std::string> excluidos;
        if (ronda % 2) excluidos = {clavePar("E1", "E2"), clavePar("E7", "E7")};
        for (double tol : {0.02, 0.0, 0.5, -0.3}) {
            const auto directa = buscarInterferenciasDirecta(c, activos, excluidos, tol);
            const auto rapida = buscarInterferencias(c, activos, excluidos, tol);
            mismoResultado(rapida, directa);
            if (ronda == 39 && tol == 0.02) {
                EXPECT_GT(directa.size(), 50u); // the sets do clash
            }
        }
    }
}

TEST(BusquedaInterferencias, reglasNumericas) {
    const std::set<std::string> activos = {"A|B"};
    auto una = [&](glm::dvec3 minB, glm::dvec3 maxB, double tol = 0.02) {
        const std::vector<NodoBB> c = {caja("A", "a", {0, 0, 0}, {1, 1, 1}), caja("B", "b", minB, maxB)};
        const auto r = buscarInterferencias(c, activos, {}, tol);
        EXPECT_EQ(r.size(), buscarInterferenciasDirecta(c, activos, {}, tol).size());
        return r;
    };
    // Overlap equal to the tolerance is no clash; 0.03 is one, centred on the
    // overlap. Boxes come from the single-precision vertices of the scene.
    EXPECT_TRUE(una(glm::dvec3(0.98f), glm::dvec3(2)).empty());
    const auto r = una(glm::dvec3(0.97f), glm::dvec3(2));
    ASSERT_EQ(r.size(), 1u);
    EXPECT_NEAR(r[0].viewpointTarget.x, 0.985, 1e-7);
    EXPECT_NEAR(r[0].viewpointTarget.z, 0.985, 1e-7);
    EXPECT_EQ(r[0].especialidadA, "A");
    EXPECT_EQ(r[0].nombreB, "b");
    // Deep on x and y, touching on z: no clash. A flat element never clashes.
    EXPECT_TRUE(una({0.2, 0.2, 1.0}, {0.8, 0.8, 3}).empty());
    EXPECT_TRUE(una({0.2, 0.2, 0.5}, {0.8, 0.8, 0.5}, 0.001).empty());

    // Tiny elements: radio 0.5, d 0.9. Elements of 10 m: radio 10, d 18.
    const std::vector<NodoBB> chicos = {caja("A", "a", {0, 0, 0}, {0.1, 0.1, 0.1}),
                                        caja("B", "b", {0.05, 0.05, 0.05}, {0.2, 0.2, 0.2})};
    const auto rc = buscarInterferencias(chicos, activos, {}, 0.02);
    ASSERT_EQ(rc.size(), 1u);
    EXPECT_DOUBLE_EQ(rc[0].radio, 0.5);
    EXPECT_NEAR(rc[0].viewpointPos.x - rc[0].viewpointTarget.x, 0.9, 1e-12);
    const std::vector<NodoBB> grandes = {caja("A", "a", {0, 0, 0}, {10, 2, 3}), caja("B", "b", {5, 1, 1}, {6, 4, 2})};
    const auto rg = buscarInterferencias(grandes, activos, {}, 0.02);
    ASSERT_EQ(rg.size(), 1u);
    EXPECT_DOUBLE_EQ(rg[0].radio, 10);
    const glm::dvec3 d = rg[0].viewpointPos - rg[0].viewpointTarget;
    EXPECT_NEAR(d.x, 18, 1e-9);
    EXPECT_NEAR(d.y, 10.8, 1e-9);
    EXPECT_NEAR(d.z, 18, 1e-9);

    // Pair keys: sorted and joined; two unnamed elements give "sin nombre|sin nombre".
    EXPECT_EQ(clavePar("Viga 2", "Muro 1"), "Muro 1|Viga 2");
    EXPECT_EQ(clavePar("sin nombre", "sin nombre"), "sin nombre|sin nombre");
    // An inactive pair is not searched; elements of one discipline never meet.
    EXPECT_TRUE(buscarInterferencias(grandes, {"A|C"}, {}, 0.02).empty());
    const std::vector<NodoBB> mismos = {caja("A", "a", {0, 0, 0}, {1, 1, 1}), caja("A", "b", {0, 0, 0}, {1, 1, 1})};
    EXPECT_TRUE(buscarInterferencias(mismos, {"A|A"}, {}, 0.02).empty());
}

// A workspace with a wall in ARQ, a beam and a column in EST; the beam goes
// through the wall, the column stands apart.
struct Obra {
    ContentView cv{"/no/hay"};
    std::shared_ptr<Node> camara = Node::crear();
    Obra() {
        camara->setCamera(Camera{});
        cv.viewport.vincularPuntoDeVista(camara);
        // Single triangles: the box method's workflow.
        cv.metodoAnalisis = MetodoAnalisis::cajasEnvolventes;
        vincular("ARQ", "v 0 0 0\nv 10 0.3 3\nv 0 0.3 0\ng Muro 1\nf 1 2 3\n");
        vincular("EST", "v 4 -1 2\nv 5 1 2.5\nv 4 1 2\nv 20 20 0\nv 21 21 3\nv 20 21 0\n"
                        "g Viga 2\nf 1 2 3\ng Pilar\nf 4 5 6\n");
    }
    void vincular(const std::string& clave, const std::string& obj) {
        cv.seleccionActual = clave;
        cv.fileName = clave + ".ifc";
        ModeloConvertido m;
        m.modelo = cargarOBJTexto(obj);
        cv.integrarModelo(std::move(m), "/x.ifc", "/no/existe.obj");
    }
    std::shared_ptr<Node> nodo(const std::string& n) { return cv.scene.rootNode()->childNodeWithName(n, true); }
    Color emision(const std::string& n) { return nodo(n)->geometry()->firstMaterial()->emission(); }
    void analizar(const std::string& nombre) {
        cv.abrirConfigAnalisis();
        cv.mostrarConfigAnalisis = false;
        const std::size_t antes = cv.historialAnalisis.size();
        cv.iniciarDeteccion(nombre, cv.toleranciaAnalisis);
        cv.iniciarDeteccion("ignorado", 0.02); // a second start while one runs does nothing
        ASSERT_TRUE(esperarHasta([&] { return !cv.detectando; }));
        ASSERT_EQ(cv.historialAnalisis.size(), antes + 1);
    }
};

TEST(AnalisisInterferencias, hojaDeConfiguracion) {
    Obra o;
    EXPECT_TRUE(o.cv.puedeDetectar());
    o.cv.abrirConfigAnalisis();
    EXPECT_TRUE(o.cv.mostrarConfigAnalisis);
    EXPECT_EQ(o.cv.nombreAnalisis.rfind("Análisis ", 0), 0u);
    EXPECT_EQ(o.cv.nombreAnalisis.size(), std::string("Análisis dd/MM/yy HH:mm").size());
    ASSERT_EQ(o.cv.paresDisponibles.size(), 1u);
    EXPECT_EQ(o.cv.paresDisponibles[0], std::make_pair(std::string("ARQ"), std::string("EST")));
    EXPECT_EQ(o.cv.paresActivos, (std::set<std::string>{"ARQ|EST"}));
    // A hidden discipline is not offered, but still counts for the button.
    o.vincular("MEP", "v 0 0 0\nv 1 1 1\nv 0 1 0\ng Tubo\nf 1 2 3\n");
    o.cv.alternarEspecialidad("EST");
    o.cv.abrirConfigAnalisis();
    EXPECT_EQ(o.cv.paresActivos, (std::set<std::string>{"ARQ|MEP"}));
    EXPECT_TRUE(o.cv.puedeDetectar());
    ContentView soloUna("/no/hay");
    EXPECT_FALSE(soloUna.puedeDetectar());
}

TEST(AnalisisInterferencias, deteccionMarcasYRevision) {
    // The marks are plain orange, not the system orange of "En revisión".
    const Color naranja{1, 0.5f, 0, 1};
    Obra o;
    o.analizar("Primera");
    const AnalisisInterferencias& a = o.cv.historialAnalisis[0];
    EXPECT_EQ(a.nombre, "Primera");
    EXPECT_DOUBLE_EQ(a.tolerancia, 0.02);
    ASSERT_EQ(a.interferencias.size(), 1u);
    EXPECT_EQ(a.interferencias[0].nombreA, "Muro 1");
    EXPECT_EQ(a.interferencias[0].nombreB, "Viga 2");
    EXPECT_TRUE(o.cv.analisisExpandidos.contains(a.id));
    EXPECT_EQ(o.emision("Muro 1"), naranja);
    EXPECT_EQ(o.emision("Viga 2"), naranja);
    EXPECT_EQ(o.emision("Pilar"), colores::negro);
    EXPECT_EQ(a.cuenta(EstadoClash::abierto), 1);

    // Selection returns a clashing element to orange, not black.
    o.cv.seleccionarNodo(o.nodo("Muro 1"));
    o.cv.seleccionarNodo(nullptr);
    EXPECT_EQ(o.emision("Muro 1"), naranja);

    // Focus: deep orange and a flight to the stored viewpoint.
    o.cv.enfocarInterferencia(o.cv.interferencias[0]);
    EXPECT_EQ(o.emision("Viga 2"), (Color{1, 0.45f, 0, 1}));
    o.cv.viewport.terminarAnimacion();
    EXPECT_EQ(o.camara->position(), glm::vec3(o.cv.interferencias[0].viewpointPos));
    EXPECT_FLOAT_EQ(o.camara->camera()->zFar, float(o.cv.interferencias[0].radio) * 200.0f);

    // A resolved pair is left out of the next run, in both orders of the names.
    o.cv.cambiarEstado(0, 0, EstadoClash::resuelto);
    EXPECT_EQ(o.cv.historialAnalisis[0].cuenta(EstadoClash::abierto), 0);
    EXPECT_EQ(o.cv.historialAnalisis[0].cuenta(EstadoClash::resuelto), 1);
    EXPECT_EQ(o.cv.interferencias[0].estado, EstadoClash::abierto); // the live list is a separate copy
    o.analizar("Segunda");
    EXPECT_TRUE(o.cv.historialAnalisis[1].interferencias.empty());
    EXPECT_TRUE(o.cv.interferencias.empty());
    // The deep orange of the focus went back to black: no clash of the new run.
    o.cv.restaurarDestacados();
    EXPECT_EQ(o.emision("Viga 2"), colores::negro);
    // In review, the pair is searched again; without exclusion too.
    o.cv.cambiarEstado(0, 0, EstadoClash::enRevision);
    o.analizar("Tercera");
    EXPECT_EQ(o.cv.historialAnalisis[2].interferencias.size(), 1u);
    o.cv.cambiarEstado(0, 0, EstadoClash::aprobado);
    o.cv.excluirResueltos = false;
    o.analizar("Cuarta");
    EXPECT_EQ(o.cv.historialAnalisis[3].interferencias.size(), 1u);

    // Deleting the latest analysis leaves its marks in orange.
    o.cv.enfocarInterferencia(o.cv.interferencias[0]);
    o.cv.pedirEliminarAnalisis(3);
    o.cv.eliminarAnalisis();
    EXPECT_EQ(o.cv.historialAnalisis.size(), 3u);
    EXPECT_FALSE(o.cv.analisisPendienteEliminar);
    EXPECT_EQ(o.emision("Muro 1"), naranja);
    EXPECT_EQ(o.cv.interferencias.size(), 1u);

    // A restored clash holds empty placeholders: the camera flies, nothing lights.
    Interferencia restaurada = o.cv.historialAnalisis[0].interferencias[0];
    restaurada.nodoA = Node::crear();
    restaurada.nodoB = Node::crear();
    restaurada.viewpointPos = {50, 60, 70};
    o.cv.enfocarInterferencia(restaurada);
    o.cv.viewport.terminarAnimacion();
    EXPECT_EQ(o.camara->position(), glm::vec3(50, 60, 70));
    EXPECT_EQ(o.emision("Muro 1"), naranja);

    // Unlinking a model clears the clash marks.
    o.cv.pedirEliminarModelo("EST", o.cv.especialidades.at("EST").modelos[0].id);
    o.cv.confirmarEliminarModelo();
    EXPECT_TRUE(o.cv.interferencias.empty());
    EXPECT_EQ(o.emision("Muro 1"), colores::negro);
}

TEST(AnalisisInterferencias, sinCandidatosElAnalisisSeGuardaVacio) {
    Obra o;
    // Both sides lose their elements: one pair active, nothing to find.
    o.cv.abrirConfigAnalisis();
    for (auto* clave : {"ARQ", "EST"})
        for (auto& m : o.cv.especialidades.at(clave).modelos)
            for (auto& n : m.nodo->childNodes()) n->geometry()->vertices.assign(n->geometry()->vertices.size(), glm::vec3(0));
    o.cv.iniciarDeteccion("Vacío", 0.02);
    ASSERT_TRUE(esperarHasta([&] { return !o.cv.detectando; }));
    ASSERT_EQ(o.cv.historialAnalisis.size(), 1u);
    EXPECT_TRUE(o.cv.historialAnalisis[0].interferencias.empty());
    EXPECT_EQ(estadoDesdeTexto("Cerrado"), EstadoClash::abierto);
    EXPECT_EQ(estadoDesdeTexto("En revisión"), EstadoClash::enRevision);
    EXPECT_EQ(estadoBCF(EstadoClash::aprobado), "Resolved");
}

} // namespace
