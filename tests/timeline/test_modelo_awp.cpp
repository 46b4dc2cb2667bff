// The work-package tree and its figures: whole days by the calendar, the
// searches, roll-ups and rows, the merge, earned value in both progress
// modes, and the S-curve's points and hover box.
#include "scene/ColoresSistema.h"
#include "timeline/CurvaS.h"
#include "timeline/ValorGanado.h"

#include <gtest/gtest.h>

using namespace teskal;

namespace {

const QDateTime t0(QDate(2025, 1, 1), QTime(8, 0), Qt::LocalTime);

PaqueteAWP paquete(const char* codigo, NivelAWP nivel, std::optional<std::string> padre = {},
                   double presupuesto = 0, double progreso = 0, int inicio = 0, int fin = 10) {
    PaqueteAWP p;
    p.id = std::string("ID-") + codigo;
    p.codigo = codigo;
    p.nivel = nivel;
    p.parentCodigo = std::move(padre);
    p.presupuesto = presupuesto;
    p.progreso = progreso;
    p.fechaInicio = t0.addDays(inicio).toUTC();
    p.fechaFin = t0.addDays(fin).toUTC();
    return p;
}

// A01 with two CWPs of one IWP each (budgets 100 and 300, progress 1 and 0)
// and an IWP straight under it; a CWP under no area with its IWP; an IWP
// without parent; a PWP under the first IWP.
TimeLinerConfig plan() {
    TimeLinerConfig c = TimeLinerConfig::porDefecto(t0);
    using N = NivelAWP;
    c.paquetes = {paquete("A01", N::cwa, {}, 9999, 0.9),
                  paquete("P2", N::cwp, "A01", 0, 0, 1),
                  paquete("P1", N::cwp, "A01", 0, 0, 0),
                  paquete("I1", N::iwp, "P1", 100, 1, 0, 5),
                  paquete("I2", N::iwp, "P2", 300, 0, 2, 9),
                  paquete("I3", N::iwp, "A01", 0, 0.5, 1, 3),
                  paquete("X1", N::pwp, "I1", 5000, 1),
                  paquete("PX", N::cwp, "Z99", 0, 0.4),
                  paquete("I4", N::iwp, "PX", 50, 0.2, 3, 4),
                  paquete("I5", N::iwp, {}, 0, 0, 4, 6)};
    return c;
}

const PaqueteAWP& de(const TimeLinerConfig& c, std::string_view codigo) {
    for (const PaqueteAWP& p : c.paquetes)
        if (p.codigo == codigo) return p;
    throw std::runtime_error("sin paquete");
}

std::vector<std::string> codigos(const ArbolAWP::Lista& l) {
    std::vector<std::string> r;
    for (const PaqueteAWP* p : l) r.push_back(p->codigo);
    return r;
}

} // namespace

TEST(ModeloAWP, diasEnterosPorElCalendario) {
    const struct {
        QDateTime desde, hasta;
        int dias, duracion;
    } casos[] = {
        {t0, t0, 0, 1},
        {t0, t0.addDays(1), 1, 1},
        {t0, t0.addDays(1).addSecs(-60), 0, 1}, // not a whole day
        {t0, t0.addDays(2), 2, 2},
        {t0, t0.addDays(-5), -5, 1}, // reversed
        {t0, t0.addDays(-5).addSecs(60), -4, 1},
        {t0, t0.addMonths(1), 31, 31},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.hasta.toString(Qt::ISODate).toStdString());
        EXPECT_EQ(diasEnteros(c.desde, c.hasta), c.dias);
        PaqueteAWP p;
        p.fechaInicio = c.desde;
        p.fechaFin = c.hasta;
        EXPECT_EQ(duracionDias(p), c.duracion);
    }
    EXPECT_FALSE(diasEnteros(QDateTime(), t0));

    // The counter over many dates gives what the calendar gives, across the
    // changes of daylight saving time of a zone that has them and beyond the
    // span it was made for.
    const QTimeZone madrid("Europe/Madrid");
    ASSERT_TRUE(madrid.isValid());
    const QDateTime desde(QDate(2025, 3, 20), QTime(2, 30), madrid);
    const ContadorDias contador(desde, desde.addDays(-3), desde.addDays(230), madrid);
    for (int h = -24 * 10; h < 24 * 250; h += 7) {
        const QDateTime fecha = desde.addSecs(h * 3600LL + 1800);
        ASSERT_EQ(contador.hasta(fecha), diasEnteros(desde, fecha, madrid)) << fecha.toString(Qt::ISODate).toStdString();
    }
    PaqueteAWP p = paquete("I", NivelAWP::iwp);
    EXPECT_FALSE(desviacionInicioDias(p));
    p.fechaInicioReal = p.fechaInicio.addDays(-2); // started two days early
    p.fechaFinReal = p.fechaFin.addDays(3);
    EXPECT_EQ(desviacionInicioDias(p), 2);
    EXPECT_EQ(desviacionFinDias(p), -3);
    EXPECT_EQ(textoDesviacion("Inicio", 2), "Inicio +2d");
    EXPECT_EQ(textoDesviacion("Fin", -3), "Fin -3d");
    EXPECT_EQ(textoDesviacion("Fin", 0), "Fin en plazo");
}

TEST(ModeloAWP, busquedasYAgregados) {
    const TimeLinerConfig c = plan();
    const ArbolAWP a(c);
    EXPECT_EQ(codigos(a.cwas()), (std::vector<std::string>{"A01"}));
    EXPECT_EQ(codigos(a.iwps()), (std::vector<std::string>{"I1", "I3", "I2", "I4", "I5"}));
    EXPECT_EQ(codigos(a.hijos("A01", NivelAWP::cwp)), (std::vector<std::string>{"P1", "P2"}));
    EXPECT_EQ(codigos(a.iwpsDeCWA("A01")), (std::vector<std::string>{"I1", "I3", "I2"}));
    // An IWP without parent belongs to an area coded "".
    EXPECT_EQ(codigos(a.iwpsDeCWA("")), (std::vector<std::string>{"I5"}));

    const struct {
        const char* codigo;
        double presupuesto, ganado, avance;
    } casos[] = {
        {"A01", 400, 100, 0.25}, // weighted by budget: a mean would give 0.5; its own 9999 ignored
        {"P1", 100, 100, 1},
        {"PX", 50, 10, 0.2},
        {"I1", 100, 100, 1}, // its PWP adds nothing
        {"X1", 5000, 5000, 1},
    };
    for (const auto& k : casos) {
        SCOPED_TRACE(k.codigo);
        const PaqueteAWP& p = de(c, k.codigo);
        EXPECT_EQ(a.presupuestoTotal(p), k.presupuesto);
        EXPECT_EQ(a.valorGanado(p), k.ganado);
        EXPECT_DOUBLE_EQ(a.avance(p), k.avance);
    }

    // All budgets at 0: the plain mean. A CWP without IWPs keeps its own
    // progress and every sum is 0.
    TimeLinerConfig sinPresupuesto = c;
    for (PaqueteAWP& p : sinPresupuesto.paquetes) p.presupuesto = 0;
    const ArbolAWP b(sinPresupuesto);
    EXPECT_DOUBLE_EQ(b.avance(de(sinPresupuesto, "A01")), 0.5);
    TimeLinerConfig vacio = c;
    vacio.paquetes = {paquete("P9", NivelAWP::cwp, "A01", 70, 0.4)};
    const ArbolAWP v(vacio);
    EXPECT_DOUBLE_EQ(v.avance(vacio.paquetes[0]), 0.4);
    EXPECT_EQ(v.presupuestoTotal(vacio.paquetes[0]) + v.hhTotal(vacio.paquetes[0]), 0);
}

TEST(ModeloAWP, filasYHuerfanos) {
    const TimeLinerConfig c = plan();
    const ArbolAWP a(c);
    const auto texto = [](const std::vector<FilaAWP>& filas) {
        std::string r;
        for (const FilaAWP& f : filas) r += std::to_string(f.sangria) + f.pkg->codigo + " ";
        return r;
    };
    // PX hangs from no area: it has no row, and its IWP is an orphan, like I5.
    EXPECT_EQ(texto(a.filas({})), "0A01 0I4 0I5 ");
    EXPECT_EQ(texto(a.filas({"A01"})), "0A01 1P1 2I1 1P2 2I2 1I3 0I4 0I5 ");
}

TEST(ModeloAWP, agregarPaquetesNoRepiteCodigos) {
    TimeLinerConfig c = plan();
    const std::size_t antes = c.paquetes.size();
    PaqueteAWP nuevo = paquete("N1", NivelAWP::iwp, {}, 1);
    PaqueteAWP repetido = nuevo;
    repetido.presupuesto = 2;
    PaqueteAWP existente = paquete("I1", NivelAWP::iwp, {}, 777);
    EXPECT_EQ(agregarPaquetes(c, {nuevo, repetido, existente}), 1u);
    ASSERT_EQ(c.paquetes.size(), antes + 1);
    EXPECT_EQ(c.paquetes.back().presupuesto, 1);
    EXPECT_EQ(de(c, "I1").presupuesto, 100);
}

TEST(ValorGanado, totalesEnAmbosModos) {
    TimeLinerConfig c = plan();
    for (PaqueteAWP& p : c.paquetes) {
        p.costoReal = p.presupuesto / 2;
        p.hh = p.presupuesto * 10;
    }
    const ArbolAWP a(c);
    const TotalesEVM t = totalesEVM(a, {});
    EXPECT_EQ(t.bac, 450);
    EXPECT_EQ(t.ac, 225);
    EXPECT_EQ(t.ev, 110);
    EXPECT_DOUBLE_EQ(t.spi, 110.0 / 450);
    EXPECT_DOUBLE_EQ(t.cpi, 110.0 / 225);
    EXPECT_DOUBLE_EQ(t.avanceGlobal, (1 + 0 + 0.5 + 0.2 + 0) / 5);
    EXPECT_TRUE(t.mostrarHH);
    EXPECT_DOUBLE_EQ(t.hhDia, 4500.0 / duracionDias(c));

    // The scrubber past every finish: everything earned.
    const TotalesEVM fin = totalesEVM(a, {true, t0.addYears(1)});
    EXPECT_EQ(fin.ev, fin.bac);
    EXPECT_EQ(fin.spi, 1);
    EXPECT_EQ(fin.avanceGlobal, t.avanceGlobal); // follows the typed progress
    // Halfway through I2 (days 2 to 9): 0.5 of its 300, I1 and I4 done.
    const TotalesEVM medio = totalesEVM(a, {true, t0.addDays(2).addSecs(3 * 86400 + 43200)});
    EXPECT_DOUBLE_EQ(medio.ev, 100 + 150 + 50);

    // No IWP: zeros and indices of 1; AC 0 with EV above 0 gives CPI 1.
    TimeLinerConfig vacio = c;
    vacio.paquetes.clear();
    const TotalesEVM nada = totalesEVM(ArbolAWP(vacio), {});
    EXPECT_EQ(nada.bac + nada.ac + nada.ev, 0);
    EXPECT_EQ(nada.spi, 1);
    EXPECT_EQ(nada.cpi, 1);
    EXPECT_FALSE(nada.mostrarHH);
    for (PaqueteAWP& p : c.paquetes) p.costoReal = 0;
    EXPECT_EQ(totalesEVM(ArbolAWP(c), {}).cpi, 1);
}

TEST(ValorGanado, avanceAutoFichasYTextos) {
    PaqueteAWP p = paquete("I", NivelAWP::iwp, {}, 100, 0.3, 0, 0); // both dates on one day
    const struct {
        QDateTime scrubber;
        double avance;
    } casos[] = {{t0.addSecs(-1), 0}, {t0, 1}, {t0.addDays(3), 1}};
    for (const auto& k : casos) EXPECT_EQ(avanceAuto(p, {true, k.scrubber}), k.avance);
    EXPECT_EQ(avanceAuto(p, {false, t0.addDays(3)}), 0.3);
    p.fechaFin = t0.addDays(4).toUTC();
    EXPECT_EQ(avanceAuto(p, {true, t0.addDays(1)}), 0.25);
    EXPECT_EQ(avanceAuto(p, {true, t0.addDays(9)}), 1);
    EXPECT_EQ(fechaAvance(p), p.fechaInicio.addSecs(static_cast<qint64>(0.3 * 4 * 86400)));
    p.fechaInicioReal = p.fechaInicio.addDays(2);
    EXPECT_EQ(fechaAvance(p), p.fechaInicio.addDays(2).addSecs(static_cast<qint64>(0.3 * 2 * 86400)));
    p.fechaFinReal = p.fechaFin.addDays(1);
    EXPECT_EQ(fechaAvance(p), *p.fechaFinReal);

    const TimeLinerConfig c = plan();
    const ArbolAWP a(c);
    const FichaEVM area = fichaEVM(a, de(c, "A01"), {});
    EXPECT_EQ(area.iwpsIncluidos, 3u);
    EXPECT_EQ(area.cpi, 1); // no actual cost
    EXPECT_DOUBLE_EQ(area.avance, 0.25);
    // In "Auto %" a CWP without IWPs reads its own dates, not its typed value.
    TimeLinerConfig soloCWP = c;
    soloCWP.paquetes = {paquete("P9", NivelAWP::cwp, "A01", 70, 0.4)};
    EXPECT_EQ(avanceEfectivo(ArbolAWP(soloCWP), soloCWP.paquetes[0], {true, t0.addDays(5)}), 0.5);
    EXPECT_EQ(codigos(paquetesDelPanel(a, nullptr)), (std::vector<std::string>{"A01"}));

    for (const auto& [valor, tono] : {std::pair{1.0, TonoIndice::verde}, {0.85, TonoIndice::naranja},
                                      {0.8499, TonoIndice::rojo}})
        EXPECT_EQ(tonoIndice(valor), tono) << valor;
    EXPECT_EQ(textoHH(999), "999 HH");
    EXPECT_EQ(textoHH(1000), "1.0 k HH");
    EXPECT_EQ(textoHHFicha(2500), "2.5k HH");
    EXPECT_EQ(textoPorcentaje(0.256), "26%");
    const std::string moneda = textoMoneda(1234567.6, "CLP", QLocale(QLocale::Spanish, QLocale::Chile));
    EXPECT_NE(moneda.find("CLP"), std::string::npos) << moneda;
    EXPECT_NE(moneda.find("1.234.568"), std::string::npos) << moneda;
}

TEST(CurvaS, puntosEjeYTooltip) {
    TimeLinerConfig c = plan();
    for (PaqueteAWP& p : c.paquetes) p.hh = p.presupuesto;
    const ArbolAWP a(c);
    const double W = 90, H = 50; // I3 has budget 0: a point with no rise
    const CurvasS s = calcularCurvasS(a, ModoCurvas::costo, W, H, t0.addDays(3));
    ASSERT_TRUE(s.hayDatos);
    ASSERT_EQ(s.series.size(), 2u);
    EXPECT_EQ(s.dias, 9); // from I1's start to I2's finish
    // Planned: by finish I3 (0), I4 (50), I1 (100), I5 (0), I2 (300) of 450.
    const std::vector<QPointF> plan = s.series[0].puntos;
    ASSERT_EQ(plan.size(), 6u);
    EXPECT_EQ(plan[0], QPointF(34, 60));
    EXPECT_EQ(plan[1], QPointF(34 + W * 3 / 9, 60));
    EXPECT_DOUBLE_EQ(plan[2].y(), 60 - H * 50 / 450);
    EXPECT_EQ(plan[5], QPointF(124, 10));
    EXPECT_EQ(s.series[0].nombre, "$ Planificado");
    EXPECT_EQ(s.series[1].puntos.size(), 4u); // I1, I3 and I4 have progress
    ASSERT_TRUE(s.xScrubber);
    EXPECT_DOUBLE_EQ(*s.xScrubber, 64);
    EXPECT_FALSE(calcularCurvasS(a, ModoCurvas::costo, W, H, t0.addDays(30)).xScrubber);
    ASSERT_FALSE(s.meses.empty());
    EXPECT_EQ(s.meses[0].x, 34); // the month began before the axis

    const CurvasS ambas = calcularCurvasS(a, ModoCurvas::ambas, W, H, t0);
    ASSERT_EQ(ambas.series.size(), 4u);
    EXPECT_EQ(ambas.series[2].nombre, "HH Planificadas");
    EXPECT_EQ(ambas.series[2].color, colores::cian);
    EXPECT_EQ(calcularCurvasS(a, ModoCurvas::hh, W, H, t0).series[0].color, colores::azul);

    const auto tt = tooltipCurvaS(a, ModoCurvas::costo, W, H, 34 + W * 5 / 9);
    ASSERT_TRUE(tt);
    EXPECT_EQ(tt->fecha, a.iwps().front()->fechaInicio.addDays(5));
    ASSERT_EQ(tt->lineas.size(), 2u);
    EXPECT_DOUBLE_EQ(tt->lineas[0].pct, 150.0 / 450); // I3, I4, I1 finished
    EXPECT_DOUBLE_EQ(tt->lineas[0].yPt, 60 - H * 150.0 / 450);
    EXPECT_FALSE(tooltipCurvaS(a, ModoCurvas::costo, W, H, 33));

    TimeLinerConfig sinDatos = c;
    for (PaqueteAWP& p : sinDatos.paquetes) p.presupuesto = 0;
    EXPECT_FALSE(calcularCurvasS(ArbolAWP(sinDatos), ModoCurvas::costo, W, H, t0).hayDatos);
    EXPECT_TRUE(calcularCurvasS(ArbolAWP(sinDatos), ModoCurvas::ambas, W, H, t0).hayDatos);
    for (PaqueteAWP& p : sinDatos.paquetes) p.hh = 0;
    EXPECT_FALSE(calcularCurvasS(ArbolAWP(sinDatos), ModoCurvas::ambas, W, H, t0).hayDatos);
}

TEST(CurvaS, suavizadoSinRetroceso) {
    const std::vector<QPointF> p{{0, 100}, {10, 100.3}, {20, 50}, {21, 10}, {60, 0}};
    const auto tramos = suavizarCurva(p);
    ASSERT_EQ(tramos.size(), 4u);
    EXPECT_TRUE(tramos[0].recto);  // under 0.5 high
    EXPECT_FALSE(tramos[1].recto);
    EXPECT_TRUE(tramos[2].recto); // under 2 wide
    // A short stretch between far neighbours: its control points would
    // reach beyond it.
    const auto corto = suavizarCurva({{0, 0}, {10, 10}, {13, 20}, {100, 30}});
    for (const auto& lista : {tramos, corto})
        for (const TramoCurva& t : lista)
            for (const QPointF& c : {t.c1, t.c2}) {
                EXPECT_GE(c.x(), t.p0.x());
                EXPECT_LE(c.x(), t.p1.x());
            }
    EXPECT_EQ(corto[1].c1, QPointF(13, 10 + 0.3 * 20));
    // c1 = p1 + 0.3 (p2 - p0), its x kept within the stretch.
    EXPECT_DOUBLE_EQ(tramos[1].c1.y(), 100.3 + 0.3 * (50 - 100));
    EXPECT_EQ(tramos[1].c1.x(), 16);
    EXPECT_EQ(tramos[3].c2, QPointF(60, 0) - 0.3 * (QPointF(60, 0) - QPointF(21, 10)));
    EXPECT_TRUE(suavizarCurva({{1, 1}}).empty());
}
