// The editor's rules and save, the numeric field, the Gantt's geometry, and
// the timeline's commands on the workspace: scrubber steps, the selection
// that lights a package's elements, and the reset when the window closes.
#include "federation/ContentView.h"
#include "scene/ColoresSistema.h"
#include "timeline/EditorPaquete.h"
#include "timeline/GeometriaGantt.h"

#include <gtest/gtest.h>

using namespace teskal;

namespace {

const QDateTime t0(QDate(2025, 1, 1), QTime(8, 0), Qt::LocalTime);

PaqueteAWP paquete(const char* codigo, NivelAWP nivel, std::optional<std::string> padre = {}, int inicio = 0,
                   int fin = 10, double progreso = 0) {
    PaqueteAWP p;
    p.id = std::string("ID-") + codigo;
    p.codigo = codigo;
    p.nivel = nivel;
    p.parentCodigo = std::move(padre);
    p.fechaInicio = t0.addDays(inicio).toUTC();
    p.fechaFin = t0.addDays(fin).toUTC();
    p.progreso = progreso;
    return p;
}

TimeLinerConfig configDe(std::vector<PaqueteAWP> paquetes, int dias = 100) {
    TimeLinerConfig c = TimeLinerConfig::porDefecto(t0);
    c.fechaFin = t0.addDays(dias).toUTC();
    c.paquetes = std::move(paquetes);
    return c;
}

std::shared_ptr<Node> elemento(const char* nombre) {
    auto g = std::make_shared<Geometry>();
    g->materiales.push_back(std::make_shared<Material>());
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

} // namespace

TEST(EditorAWP, reglasDelFormulario) {
    using N = NivelAWP;
    const TimeLinerConfig vacio = configDe({});
    const TimeLinerConfig conCWA = configDe({paquete("A1", N::cwa)});
    const struct {
        const char* caso;
        const TimeLinerConfig& config;
        PaqueteAWP p;
        std::optional<std::string> error;
    } casos[] = {
        {"CWP sin CWA", vacio, paquete("P1", N::cwp), "Crea primero un CWA para asignarlo como padre"},
        {"IWP sin padres", vacio, paquete("I1", N::iwp), "Crea primero un CWP (o CWA) para asignarlo como padre"},
        {"PWP sin IWP", conCWA, paquete("X1", N::pwp), "Crea primero un IWP para asignarlo como padre"},
        {"CWP sin elegir", conCWA, paquete("P1", N::cwp), "Selecciona un paquete padre"},
        {"sin código", conCWA, paquete("", N::cwa), "El código es obligatorio"},
        {"CWA", vacio, paquete("A2", N::cwa), std::nullopt},
        {"código repetido", conCWA, paquete("A1", N::iwp, "A1"), std::nullopt},
        {"CWA con padre", conCWA, paquete("A3", N::cwa, "A1"), std::nullopt},
    };
    for (const auto& k : casos) {
        SCOPED_TRACE(k.caso);
        EXPECT_EQ(errorValidacion(k.p, k.config), k.error);
        TimeLinerConfig c = k.config;
        PaqueteAWP p = k.p;
        p.id = "NUEVO";
        EXPECT_EQ(guardarPaquete(c, p), !k.error);
        EXPECT_EQ(c.paquetes.size(), k.config.paquetes.size() + (k.error ? 0 : 1));
        if (!k.error) {
            EXPECT_EQ(c.paquetes.back().parentCodigo.has_value(), p.nivel != N::cwa);
        }
    }
    const TimeLinerConfig arbol = configDe({paquete("A1", N::cwa), paquete("P1", N::cwp, "A1"),
                                            paquete("I1", N::iwp, "P1"), paquete("X1", N::pwp, "I1")});
    std::string padres; // the possible parents of each level, in order
    for (NivelAWP n : {N::cwa, N::cwp, N::iwp, N::pwp}) {
        for (const PaqueteAWP* p : padresPosibles(arbol, n)) padres += p->codigo + " ";
        padres += "| ";
    }
    EXPECT_EQ(padres, "| A1 | A1 P1 | I1 | ");
}

TEST(EditorAWP, guardarFechasYCampoNumerico) {
    using N = NivelAWP;
    TimeLinerConfig c = configDe({paquete("A1", N::cwa, {}, 5, 20), paquete("I1", N::iwp, "P1", 10, 30),
                                  paquete("P1", N::cwp, "A1", 10, 30)});
    // Beyond the range: a warning that does not block, and the range follows.
    PaqueteAWP largo = paquete("I2", N::iwp, "A1", -3, 200);
    EXPECT_TRUE(avisoFechas(largo, c).value_or("").starts_with("Las fechas quedan fuera del rango del proyecto ("));
    ASSERT_TRUE(guardarPaquete(c, largo));
    EXPECT_EQ(std::pair(c.fechaInicio, c.fechaFin), std::pair(largo.fechaInicio, largo.fechaFin));
    // Editing it back narrows the range to the packages again: replaced by id.
    largo.fechaInicio = t0.addDays(12).toUTC();
    largo.fechaFin = t0.addDays(25).toUTC();
    ASSERT_TRUE(guardarPaquete(c, largo));
    EXPECT_EQ(c.paquetes.size(), 4u);
    EXPECT_EQ(std::pair(c.fechaInicio, c.fechaFin), std::pair(t0.addDays(5).toUTC(), t0.addDays(30).toUTC()));
    EXPECT_FALSE(avisoFechas(largo, c));
    largo.fechaInicioReal = t0.addDays(14).toUTC();
    largo.fechaFinReal = t0.addDays(13).toUTC();
    EXPECT_EQ(avisoFechas(largo, c), "La fecha de fin real no puede ser anterior al inicio real.");

    // Deleting the area leaves its CWP without a row; the IWPs below
    // become orphans.
    ASSERT_TRUE(eliminarPaquete(c, "ID-A1"));
    EXPECT_EQ(c.paquetes.size(), 3u);
    for (const FilaAWP& f : ArbolAWP(c).filas({})) EXPECT_EQ(f.pkg->nivel, N::iwp) << f.pkg->codigo;
    EXPECT_FALSE(eliminarPaquete(c, "ID-A1"));

    const struct {
        const char* texto;
        double actual;
        std::optional<double> escrito;
    } campos[] = {{"1,5", 0, 1.5}, {"2.0004", 2, std::nullopt}, {"abc", 3, -1}, {"abc", -1, std::nullopt},
                  {" 1200 ", 0, 1200}};
    for (const auto& k : campos) EXPECT_EQ(valorCampoNumerico(k.texto, k.actual), k.escrito) << k.texto;
    EXPECT_EQ(textoCampoNumerico(1234.56, 0) + " " + textoCampoNumerico(0.5, 2), "1235 0.50");
    EXPECT_EQ(textoDesviacionEditor(-3) + " " + textoDesviacionEditor(2), "3d retraso 2d adelanto");

    PaqueteAWP p = paquete("I9", N::iwp);
    alternarElemento(p, "Muro 1");
    alternarElemento(p, "Losa");
    alternarElemento(p, "Muro 1");
    EXPECT_EQ(p.elementosNombre, std::vector<std::string>{"Losa"});
    PropiedadesPorEspecialidad props;
    for (const auto& [especialidad, nombre] : {std::pair{"EST", "Viga V-1"}, {"ARQ", "Muro 1"}, {"ARQ", "muro 2"}, {"ARQ", "Losa"}})
        props[especialidad][nombre];
    const auto grupos = elementosDisponibles(props, {"ARQ", "EST", "MEP"}, "MURO");
    ASSERT_EQ(grupos.size(), 1u);
    EXPECT_EQ(grupos[0].nombres, (std::vector<std::string>{"Muro 1", "muro 2"}));
    EXPECT_EQ(elementosDisponibles(props, {"ARQ", "EST"}, "").size(), 2u);
}

TEST(Gantt, geometriaDePantallaYPagina) {
    using N = NivelAWP;
    // A 100-day axis over 930 points of chart: 9.3 points a day.
    TimeLinerConfig c = configDe({paquete("A1", N::cwa, {}, 50, 60), paquete("P1", N::cwp, "A1", 0, 0),
                                  paquete("I1", N::iwp, "P1", 10, 20, 0.5), paquete("I2", N::iwp, "A1", 30, 30),
                                  paquete("I9", N::iwp, {}, 40, 50, 1)});
    c.paquetes[2].presupuesto = 100;
    c.paquetes[2].fechaFinReal = t0.addDays(22).toUTC();
    c.paquetes[3].presupuesto = 100;
    const ArbolAWP a(c);
    const auto filas = filasCompletas(a);
    ASSERT_EQ(filas.size(), 5u); // A1, P1, I1, I2, then the orphan I9
    const GeometriaGantt g = geometriaGantt(a, filas, {}, {false, t0.addDays(25)}, t0.addDays(-1), medidasPDF());
    EXPECT_EQ(g.alto, 5 * 22 + 60 + 28);
    EXPECT_EQ(std::pair(g.paquetes, g.iwps), std::pair(std::size_t(5), std::size_t(3)));
    const double dia = 930.0 / 100;
    const struct {
        std::size_t fila;
        double x0, x1, avance, y;
        bool resumen;
    } barras[] = {
        {0, 270 + 10 * dia, 270 + 30 * dia, 0.25, 60, true}, // the area spans its IWPs, not its own dates
        {1, 270 + 10 * dia, 270 + 20 * dia, 0.5, 82, true},
        {2, 270 + 10 * dia, 270 + 20 * dia, 0.5, 104, false},
        {3, 270 + 30 * dia, 270 + 30 * dia + 4, 0, 126, false}, // one day: 4 points wide
        {4, 270 + 40 * dia, 270 + 50 * dia, 1, 148, false},
    };
    for (const auto& k : barras) {
        SCOPED_TRACE(k.fila);
        const FilaGantt& f = g.filas[k.fila];
        EXPECT_DOUBLE_EQ(f.barra.x0, k.x0);
        EXPECT_DOUBLE_EQ(f.barra.x1, k.x1);
        EXPECT_DOUBLE_EQ(f.barra.avance, k.avance);
        EXPECT_EQ(f.y, k.y);
        EXPECT_EQ(f.barra.resumen, k.resumen);
    }
    EXPECT_DOUBLE_EQ(*g.filas[2].barra.xFinReal, 270 + 22 * dia);
    EXPECT_TRUE(g.filas[0].expandible);
    for (const auto& [y, fila] : {std::pair<double, std::optional<std::size_t>>{59, {}}, {104, 2u}, {170, {}}})
        EXPECT_EQ(filaEn(g, y), fila) << y;
    EXPECT_DOUBLE_EQ(g.xScrubber.value_or(-1), 270 + 25 * dia);
    EXPECT_FALSE(g.xHoy); // before the axis: no line
    // January's tick, at midnight before the 08:00 start, is no whole day
    // away; February's is 30 whole days on.
    ASSERT_EQ(g.meses.size(), 4u);
    EXPECT_EQ(g.meses[0].x, 270);
    EXPECT_EQ(g.meses[1].fecha.date(), QDate(2025, 2, 1));
    EXPECT_DOUBLE_EQ(g.meses[1].x, 270 + 30 * dia);
    EXPECT_EQ(textoFechaGantt(g.meses[1].fecha, "MMM yy"), "feb 25");

    // In "Auto %" the bars follow the scrubber; a scrubber past the axis
    // draws no line.
    const GeometriaGantt auto_ = geometriaGantt(a, filas, {}, {true, t0.addDays(15)}, t0.addDays(60), medidasPDF());
    EXPECT_DOUBLE_EQ(auto_.filas[2].barra.avance, 0.5);
    EXPECT_DOUBLE_EQ(auto_.filas[4].barra.avance, 0);
    EXPECT_DOUBLE_EQ(*auto_.xHoy, 270 + 60 * dia);
    EXPECT_FALSE(geometriaGantt(a, filas, {}, {false, t0.addDays(300)}, t0, medidasPDF()).xScrubber);
    // On screen: no title band, collapsed areas show one row.
    const GeometriaGantt pantalla = geometriaGantt(a, a.filas({}), {}, {}, t0, medidasPantalla(800));
    EXPECT_EQ(pantalla.filas.size(), 2u);
    EXPECT_EQ(pantalla.filas[0].y, 20);
    EXPECT_FALSE(pantalla.filas[0].expandida);
    EXPECT_EQ(colorPaquete(9), colores::purpura);
    EXPECT_EQ(nombreGanttPDF(c), "Gantt_202501");
}

TEST(TimeLiner, scrubberSeleccionYCierre) {
    ContentView cv("/no/hay");
    cv.timeLiner = configDe({paquete("A1", NivelAWP::cwa), paquete("I1", NivelAWP::iwp, "A1"),
                             paquete("I2", NivelAWP::iwp, "A1")});
    cv.timeLiner.paquetes[1].elementosNombre = {"Muro"};
    cv.timeLiner.paquetes[2].elementosNombre = {"Losa"};
    auto modelo = Node::crear();
    cv.scene.rootNode()->addChildNode(modelo);
    const auto muro = elemento("Muro"), losa = elemento("Losa"), otro = elemento("Otro");
    for (const auto& n : {muro, losa, otro}) modelo->addChildNode(n);

    cv.iniciarTimeLiner();
    EXPECT_EQ(cv.timeline.fechaScrubber, cv.timeLiner.fechaInicio);
    cv.retrocederScrubber(); // not before the start, then one step on
    cv.avanzarScrubber();
    EXPECT_EQ(cv.timeline.fechaScrubber, cv.timeLiner.fechaInicio.addSecs(2592000));
    for (int i = 0; i < 5; ++i) cv.avanzarScrubber(); // not past the end
    EXPECT_EQ(cv.timeline.fechaScrubber, cv.timeLiner.fechaFin);
    cv.arrastrarScrubber(0.5);
    EXPECT_EQ(cv.timeline.fechaScrubber, cv.timeLiner.fechaInicio.addDays(50));

    const auto emision = [](const std::shared_ptr<Node>& n) { return n->geometry()->firstMaterial()->emission(); };
    const Color brillo{0.1f, 0.8f, 1.0f, 1.0f};
    cv.seleccionarPaquete("ID-I1");
    EXPECT_EQ(emision(muro), brillo);
    EXPECT_EQ(emision(losa), colores::negro);
    cv.seleccionarPaquete("ID-A1"); // an area lights its IWPs' elements
    EXPECT_EQ(cv.timeline.nodosDestacados.size(), 2u);
    EXPECT_EQ(emision(losa), brillo);
    EXPECT_EQ(emision(otro), colores::negro);
    cv.cerrarTimeLiner();
    EXPECT_TRUE(cv.timeline.nodosDestacados.empty());
    for (const auto& n : {muro, losa}) EXPECT_EQ(emision(n), colores::negro);

    // The editor's save counts a change; an invalid copy saves nothing.
    const auto cambios = cv.cambios;
    cv.nuevoPaqueteAWP();
    ASSERT_TRUE(cv.timeline.paqueteEditando);
    PaqueteAWP nuevo = *cv.timeline.paqueteEditando;
    nuevo.codigo = "I3";
    EXPECT_FALSE(cv.guardarPaqueteAWP(nuevo));
    nuevo.parentCodigo = "A1";
    EXPECT_TRUE(cv.guardarPaqueteAWP(nuevo));
    EXPECT_FALSE(cv.timeline.paqueteEditando);
    EXPECT_EQ(cv.cambios, cambios + 1);
    EXPECT_EQ(cv.timeLiner.paquetes.size(), 4u);
}
