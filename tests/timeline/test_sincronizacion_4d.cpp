// The schedule on the scene, driven through the workspace as the timeline
// window drives it: the state of each element by the exact planned dates,
// the first package winning, the status texts, playback, restoration on
// closing, and the step that touches only what changed giving the same scene
// as a full pass.
#include "sections/escena_prueba.h"
#include "timeline/Sincronizacion4D.h"

#include <gtest/gtest.h>
#include <random>

using namespace teskal;
using pruebas::elementoCaja;
using pruebas::modeloEn;

namespace {

const QDateTime t0 = QDateTime(QDate(2025, 3, 3), QTime(8, 0), Qt::LocalTime).toUTC();

PaqueteAWP paquete(const char* codigo, int inicio, int fin, std::vector<std::string> nombres) {
    PaqueteAWP p;
    p.id = std::string("ID-") + codigo;
    p.codigo = codigo;
    p.fechaInicio = t0.addDays(inicio);
    p.fechaFin = t0.addDays(fin);
    p.elementosNombre = std::move(nombres);
    return p;
}

// A workspace with elements of these names under one ARQ model, each in a
// colour of its own, a point of view bound (the 3D view is at hand), and
// the timeline open on a plan over days 0 to 100.
struct Obra {
    ContentView cv{"/no/hay"};
    std::shared_ptr<Node> modelo;
    std::shared_ptr<Node> camara = Node::crear("_TESKAL_Camara");
    std::vector<std::shared_ptr<Node>> nodos;

    explicit Obra(std::vector<PaqueteAWP> paquetes, std::vector<std::string> nombres = {"Muro", "Losa", "Viga"},
                  bool conVista = true) {
        modelo = modeloEn(cv, "ARQ");
        for (std::size_t i = 0; i < nombres.size(); ++i) agregar(nombres[i]);
        if (conVista) cv.viewport.vincularPuntoDeVista(camara);
        cv.timeLiner.fechaInicio = t0;
        cv.timeLiner.fechaFin = t0.addDays(100);
        cv.timeLiner.paquetes = std::move(paquetes);
        cv.iniciarTimeLiner();
    }
    std::shared_ptr<Node> agregar(const std::string& nombre) {
        nodos.push_back(elementoCaja(nombre, {0, 0, 0}, {1, 1, 1}));
        nodos.back()->geometry()->firstMaterial()->setDiffuse(propio(nodos.size() - 1));
        modelo->addChildNode(nodos.back());
        return nodos.back();
    }
    static Color propio(std::size_t i) { return {0.1f * static_cast<float>(i + 1), 0.2f, 0.9f, 1}; }
    const std::shared_ptr<Node>& nodo(std::string_view nombre) const {
        return *std::find_if(nodos.begin(), nodos.end(), [&](const auto& n) { return *n->name() == nombre; });
    }
    void irA(const QDateTime& fecha) { cv.fijarFechaScrubber(fecha); }
};

// The look a node must have in a state, given its own colour.
void esperarAspecto(const Node& n, Estado4D e, const Color& propio, const std::string& donde) {
    const Material& m = *n.geometry()->firstMaterial();
    const float opacidad[] = {0.0f, opacidadEnCurso, 1.0f};
    EXPECT_EQ(n.opacity(), opacidad[static_cast<int>(e)]) << donde;
    if (e != Estado4D::pendiente) {
        EXPECT_EQ(m.diffuse(), e == Estado4D::enCurso ? verdeEnCurso : propio) << donde;
    }
}

} // namespace

TEST(Sincronizacion4D, estadoPorLasFechasExactasYElPrimerPaquete) {
    // "Muro" is in A (days 10 to 20) and in B (days 0 to 50): A wins.
    const std::vector<PaqueteAWP> plan = {paquete("A", 10, 20, {"Muro"}), paquete("B", 0, 50, {"Losa", "Muro"})};
    const struct {
        const char* caso;
        QDateTime fecha;
        Estado4D muro, losa;
    } casos[] = {
        {"un instante antes del inicio", t0.addDays(10).addMSecs(-1), Estado4D::pendiente, Estado4D::enCurso},
        {"el inicio exacto", t0.addDays(10), Estado4D::enCurso, Estado4D::enCurso},
        {"el fin exacto", t0.addDays(20), Estado4D::enCurso, Estado4D::enCurso},
        {"un instante tras el fin", t0.addDays(20).addMSecs(1), Estado4D::terminado, Estado4D::enCurso},
        {"el fin exacto del segundo", t0.addDays(50), Estado4D::terminado, Estado4D::enCurso},
        {"tras todo", t0.addDays(51), Estado4D::terminado, Estado4D::terminado},
        {"de vuelta antes de todo", t0.addDays(-1), Estado4D::pendiente, Estado4D::pendiente},
    };
    Obra o(plan);
    for (const auto& k : casos) {
        EXPECT_EQ(estadoElemento("Muro", plan, k.fecha), k.muro) << k.caso;
        EXPECT_EQ(estadoElemento("Losa", plan, k.fecha), k.losa) << k.caso;
        EXPECT_EQ(estadoElemento("Viga", plan, k.fecha), Estado4D::terminado) << k.caso; // in no package
        o.irA(k.fecha);
        esperarAspecto(*o.nodo("Muro"), k.muro, Obra::propio(0), k.caso);
        esperarAspecto(*o.nodo("Losa"), k.losa, Obra::propio(1), k.caso);
        // An element in no package keeps its look whatever the date.
        esperarAspecto(*o.nodo("Viga"), Estado4D::terminado, Obra::propio(2), k.caso);
    }
}

TEST(Sincronizacion4D, textosDeEstado) {
    const struct {
        const char* caso;
        std::vector<PaqueteAWP> plan;
        bool conVista;
        int dia;
        std::string texto;
        int ocultos; // assigned elements hidden
    } casos[] = {
        {"sin elementos asignados", {paquete("A", 0, 10, {}), paquete("B", 5, 9, {})}, true, 3,
         "⚠ Sin elementos asignados", 0},
        {"nombres que no coinciden", {paquete("A", 0, 10, {"X1", "X2"}), paquete("B", 0, 10, {"X3", "X1"})}, true, 3,
         "⚠ Nombres no coinciden (3 buscados)", 0},
        {"sin vista ni coincidencias", {paquete("A", 0, 10, {"X1"})}, false, 3, "⚠ Vista 3D no disponible", 0},
        // Without the view the disciplines' roots are walked.
        {"sin vista, por las raíces", {paquete("A", 0, 10, {"Muro", "X1"})}, false, 20, "🔵2 ✅0 ⬜0", 0},
        // Counts are of names, matched or not.
        {"antes de todo inicio", {paquete("A", 10, 20, {"Muro", "X1"}), paquete("B", 30, 40, {"Losa"})}, true, 5,
         "🔵0 ✅0 ⬜3", 2},
        {"uno de cada", {paquete("A", 0, 5, {"Muro"}), paquete("B", 5, 40, {"Losa"}), paquete("C", 30, 40, {"Viga"})},
         true, 10, "🔵1 ✅1 ⬜1", 1},
    };
    for (const auto& k : casos) {
        Obra o(k.plan, {"Muro", "Losa", "Viga"}, k.conVista);
        const auto apariencia = o.cv.scene.contadores().apariencia;
        o.irA(t0.addDays(k.dia));
        EXPECT_EQ(o.cv.timeline.estadoSync4D, k.texto) << k.caso;
        int ocultos = 0;
        for (const auto& n : o.nodos) ocultos += n->opacity() == 0.0f;
        EXPECT_EQ(ocultos, k.ocultos) << k.caso;
        if (k.texto.rfind("⚠", 0) == 0) { // nothing was applied
            EXPECT_EQ(o.cv.scene.contadores().apariencia, apariencia) << k.caso;
        }
    }
}

TEST(Sincronizacion4D, enCursoLuegoTerminadoYRestauracion) {
    Obra o({paquete("A", 10, 20, {"Muro", "Losa"})});
    const Node* muro = o.nodo("Muro").get();
    o.irA(t0.addDays(15));
    esperarAspecto(*muro, Estado4D::enCurso, Obra::propio(0), "en curso");
    o.irA(t0.addDays(25));
    esperarAspecto(*muro, Estado4D::terminado, Obra::propio(0), "terminado");
    // The original stays stored until the scene is restored.
    ASSERT_TRUE(o.cv.timeline.sincronia.coloresOriginales().contains(muro));
    EXPECT_EQ(o.cv.timeline.sincronia.coloresOriginales().at(muro).diffuse.color, Obra::propio(0));
    o.irA(t0.addDays(5));
    o.cv.cerrarTimeLiner();
    for (std::size_t i = 0; i < o.nodos.size(); ++i)
        esperarAspecto(*o.nodos[i], Estado4D::terminado, Obra::propio(i), "restaurado");
    EXPECT_TRUE(o.cv.timeline.sincronia.coloresOriginales().empty());
    EXPECT_TRUE(o.cv.timeline.estadoSync4D.empty());
    // Closed, the scrubber no longer drives the scene.
    o.irA(t0.addDays(5));
    EXPECT_EQ(o.nodo("Muro")->opacity(), 1.0f);
}

TEST(Sincronizacion4D, reproduccionDesdeElFinalYCierreDuranteElla) {
    Obra o({paquete("A", 10, 20, {"Muro"}), paquete("B", 0, 99, {"Losa"})});
    o.irA(o.cv.timeLiner.fechaFin);
    o.cv.fijarVelocidad(15); // "1×": half a day a tick
    o.cv.alternarReproduccion();
    EXPECT_TRUE(o.cv.timeline.reproduciendo);
    EXPECT_EQ(o.cv.timeline.fechaScrubber, o.cv.timeLiner.fechaInicio); // from the end, back to the start
    for (int i = 0; i < 4; ++i) o.cv.pasoReproduccion();
    EXPECT_EQ(o.cv.timeline.fechaScrubber, t0.addDays(2));
    EXPECT_EQ(o.nodo("Muro")->opacity(), 0.0f);
    o.cv.alternarReproduccion(); // pause
    o.cv.pasoReproduccion();     // a stale tick does nothing
    EXPECT_EQ(o.cv.timeline.fechaScrubber, t0.addDays(2));

    // Playing to the end stops there, at most one tick past it.
    o.cv.fijarVelocidad(120);
    o.cv.alternarReproduccion();
    int ticks = 0;
    while (o.cv.timeline.reproduciendo && ticks < 100) {
        o.cv.pasoReproduccion();
        ++ticks;
    }
    EXPECT_EQ(ticks, 25); // 98 days at 4 a tick
    EXPECT_EQ(o.cv.timeline.fechaScrubber, t0.addDays(102));

    // Closing while playing: everything back, and a tick that comes later
    // hides nothing again.
    o.cv.fijarVelocidad(60);
    o.cv.alternarReproduccion();
    for (int i = 0; i < 3; ++i) o.cv.pasoReproduccion();
    EXPECT_EQ(o.nodo("Muro")->opacity(), 0.0f);
    EXPECT_EQ(o.nodo("Losa")->opacity(), opacidadEnCurso);
    o.cv.cerrarTimeLiner();
    EXPECT_FALSE(o.cv.timeline.reproduciendo);
    o.cv.pasoReproduccion();
    o.cv.sincronizar4D(); // the delayed first synchronisation, late
    for (std::size_t i = 0; i < o.nodos.size(); ++i)
        esperarAspecto(*o.nodos[i], Estado4D::terminado, Obra::propio(i), "cerrado");
}

// The step touches only the names whose state changes; the scene it leaves
// must be the one a full pass over every node gives, through dates back and
// forth, an element linked during playback, a recolour by someone else and
// an edited plan.
TEST(Sincronizacion4D, pasoIncrementalIgualAPasadaCompleta) {
    std::mt19937 azar(7);
    std::vector<std::string> nombres;
    for (int i = 0; i < 60; ++i) nombres.push_back("E" + std::to_string(i % 50)); // some names twice
    std::vector<PaqueteAWP> plan;
    for (int p = 0; p < 12; ++p) {
        std::vector<std::string> suyos;
        for (int k = 0; k < 6; ++k) suyos.push_back("E" + std::to_string(azar() % 55)); // some match nothing
        const int inicio = static_cast<int>(azar() % 80);
        plan.push_back(paquete(("P" + std::to_string(p)).c_str(), inicio, inicio + static_cast<int>(azar() % 25),
                               suyos));
    }
    Obra o(plan, nombres);
    std::vector<Color> propios;
    for (std::size_t i = 0; i < o.nodos.size(); ++i) propios.push_back(Obra::propio(i));
    const auto comprobar = [&](const std::string& donde) {
        for (std::size_t i = 0; i < o.nodos.size(); ++i)
            esperarAspecto(*o.nodos[i], estadoElemento(*o.nodos[i]->name(), o.cv.timeLiner.paquetes,
                                                       o.cv.timeline.fechaScrubber),
                           propios[i], donde + " " + *o.nodos[i]->name());
    };
    for (int dia : {0, 3, 17, 40, 22, 60, 61, 95, 12, -1, 101, 50}) {
        o.irA(t0.addDays(dia));
        comprobar("día " + std::to_string(dia));
        if (dia == 40) { // a new element of a listed name comes into the scene
            o.agregar(plan[1].elementosNombre[0]);
            propios.push_back(Obra::propio(o.nodos.size() - 1));
        }
        if (dia == 60) // someone else changes the opacity of every listed element
            for (const auto& n : o.nodos)
                for (const PaqueteAWP& p : o.cv.timeLiner.paquetes)
                    if (std::find(p.elementosNombre.begin(), p.elementosNombre.end(), *n->name()) !=
                        p.elementosNombre.end())
                        n->setOpacity(0.3f);
        if (dia == 12) { // the plan is edited, as the editor's save does
            o.cv.timeLiner.paquetes[0].fechaInicio = t0.addDays(90);
            o.cv.timeLiner.paquetes[0].fechaFin = t0.addDays(99);
            o.cv.marcarCambio();
        }
    }
}
