#include "timeline/CurvaS.h"

#include "scene/ColoresSistema.h"
#include "timeline/ValorGanado.h"

#include <algorithm>

namespace teskal {

namespace {

// A family of curves: budget or man-hours.
struct Familia {
    const char* plan;
    const char* ganado;
    Color colorPlan;
    Color colorGanado;
    double (*valor)(const PaqueteAWP&);
    double total = 0;
};

// What the chart and its hover box share: the active families, the IWPs by
// finish and the time axis.
struct EjeCurvaS {
    std::vector<Familia> familias;
    ArbolAWP::Lista porFin;
    QDateTime inicio, fin;
    double dias = 1;
    QTimeZone zona = QTimeZone::systemTimeZone();
    std::optional<ContadorDias> contador;

    EjeCurvaS(const ArbolAWP& arbol, ModoCurvas modo) {
        double bac = 0, hh = 0;
        for (const PaqueteAWP* p : arbol.iwps()) {
            bac += p->presupuesto;
            hh += p->hh;
        }
        const bool costo = modo != ModoCurvas::hh && bac > 0;
        const bool horas = modo != ModoCurvas::costo && hh > 0;
        const bool ambas = modo == ModoCurvas::ambas;
        Familia familiaCosto{"$ Planificado", "Valor Ganado", colores::azul, colores::verde,
                             [](const PaqueteAWP& p) { return p.presupuesto; }, bac};
        Familia familiaHH{"HH Planificadas", "HH Valor Ganado", ambas ? colores::cian : colores::azul,
                          ambas ? colores::menta : colores::verde,
                          [](const PaqueteAWP& p) { return p.hh; }, hh};
        if (costo) familias.push_back(familiaCosto);
        if (horas) familias.push_back(familiaHH);

        // By finish, equal finishes in the config's order (the order of
        // the packages' addresses).
        std::vector<std::pair<qint64, const PaqueteAWP*>> claves;
        claves.reserve(arbol.iwps().size());
        for (const PaqueteAWP* p : arbol.iwps()) claves.emplace_back(arbol.finMs(*p), p);
        std::sort(claves.begin(), claves.end());
        porFin.reserve(claves.size());
        for (const auto& [fin, p] : claves) porFin.push_back(p);
        if (porFin.empty()) {
            inicio = arbol.config().fechaInicio;
            fin = arbol.config().fechaFin;
        } else {
            // The earliest start, compared by the instants the tree keeps.
            const PaqueteAWP* primero = porFin.front();
            for (const PaqueteAWP* p : porFin)
                if (arbol.inicioMs(*p) < arbol.inicioMs(*primero)) primero = p;
            inicio = primero->fechaInicio;
            fin = porFin.back()->fechaFin;
        }
        // A span the calendar can't measure, or of no whole day, counts one
        // day, so that no position divides by zero.
        const auto d = diasEnteros(inicio, fin, zona);
        dias = d && *d > 0 ? *d : 1;
        contador.emplace(inicio, inicio, fin, zona);
    }

    // The position on the axis of each IWP's finish and of its earned value,
    // in the order of porFin.
    std::vector<double> tFin, tAvance;
    void posiciones(const ArbolAWP& arbol) {
        tFin.reserve(porFin.size());
        tAvance.reserve(porFin.size());
        for (const PaqueteAWP* p : porFin) {
            tFin.push_back(t(arbol.finMs(*p)));
            tAvance.push_back(p->progreso > 0 ? t(msDe(fechaAvance(*p))) : 0.0);
        }
    }

    // The fraction of the axis at a date, unlimited; 0 for a date the
    // calendar can't measure.
    double fraccion(qint64 ms) const {
        const auto d = contador->hasta(ms);
        return d ? *d / dias : 0.0;
    }
    double t(qint64 ms) const { return std::clamp(fraccion(ms), 0.0, 1.0); }
};

QPointF punto(double t, double p, double ancho, double alto) {
    return {margenIzquierdoCurvaS + ancho * t,
            margenSuperiorCurvaS + alto - alto * std::min(p, 1.0)};
}

} // namespace

CurvasS calcularCurvasS(const ArbolAWP& arbol, ModoCurvas modo, double ancho, double alto,
                        const QDateTime& fechaScrubber) {
    EjeCurvaS eje(arbol, modo);
    CurvasS c;
    c.hayDatos = !eje.familias.empty();
    c.inicio = eje.inicio;
    c.fin = eje.fin;
    c.dias = eje.dias;
    if (!c.hayDatos) return c;
    eje.posiciones(arbol);

    const QPointF origen = punto(0, 0, ancho, alto);
    std::vector<SerieCurvaS> series;
    for (const Familia& f : eje.familias) {
        SerieCurvaS plan{f.plan, f.colorPlan, {origen}};
        SerieCurvaS ganado{f.ganado, f.colorGanado, {origen}};
        double sumaPlan = 0, sumaGanado = 0;
        plan.puntos.reserve(eje.porFin.size() + 1);
        for (std::size_t i = 0; i < eje.porFin.size(); ++i) {
            const PaqueteAWP& p = *eje.porFin[i];
            sumaPlan += f.valor(p);
            plan.puntos.push_back(punto(eje.tFin[i], sumaPlan / f.total, ancho, alto));
            // The earned curve follows the typed progress in both modes.
            if (p.progreso <= 0) continue;
            sumaGanado += f.valor(p) * p.progreso;
            ganado.puntos.push_back(punto(eje.tAvance[i], sumaGanado / f.total, ancho, alto));
        }
        series.push_back(std::move(plan));
        series.push_back(std::move(ganado));
    }
    c.series = std::move(series);

    // A tick on the first day of every month from the axis start's month
    // until past its end.
    const QDate inicioLocal = eje.inicio.toTimeZone(eje.zona).date();
    QDateTime mes(QDate(inicioLocal.year(), inicioLocal.month(), 1), QTime(0, 0), eje.zona);
    for (; mes.isValid() && mes <= eje.fin; mes = mes.addMonths(1))
        c.meses.push_back({mes, margenIzquierdoCurvaS + ancho * eje.t(msDe(mes))});

    const double x = margenIzquierdoCurvaS + ancho * eje.fraccion(msDe(fechaScrubber));
    if (fechaScrubber.isValid() && x >= margenIzquierdoCurvaS && x <= margenIzquierdoCurvaS + ancho)
        c.xScrubber = x;
    return c;
}

std::vector<TramoCurva> suavizarCurva(const std::vector<QPointF>& p) {
    std::vector<TramoCurva> tramos;
    const auto n = static_cast<std::ptrdiff_t>(p.size());
    const auto en = [&](std::ptrdiff_t i) { return p[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(i, 0, n - 1))]; };
    for (std::ptrdiff_t i = 0; i + 1 < n; ++i) {
        TramoCurva t{en(i), {}, {}, en(i + 1)};
        const QPointF d = t.p1 - t.p0;
        if (std::abs(d.y()) < 0.5 || std::abs(d.x()) < 2) {
            t.recto = true;
            t.c1 = t.p0;
            t.c2 = t.p1;
        } else {
            t.c1 = t.p0 + 0.3 * (en(i + 1) - en(i - 1));
            t.c2 = t.p1 - 0.3 * (en(i + 2) - en(i));
            const double xMin = std::min(t.p0.x(), t.p1.x()), xMax = std::max(t.p0.x(), t.p1.x());
            t.c1.setX(std::clamp(t.c1.x(), xMin, xMax));
            t.c2.setX(std::clamp(t.c2.x(), xMin, xMax));
        }
        tramos.push_back(t);
    }
    return tramos;
}

std::optional<TooltipCurvaS> tooltipCurvaS(const ArbolAWP& arbol, ModoCurvas modo, double ancho,
                                           double alto, double x) {
    if (x < margenIzquierdoCurvaS || x > margenIzquierdoCurvaS + ancho || ancho <= 0)
        return std::nullopt;
    const EjeCurvaS eje(arbol, modo);
    if (eje.familias.empty()) return std::nullopt;
    TooltipCurvaS tt;
    const double segundos = (x - margenIzquierdoCurvaS) / ancho * eje.dias * 86400.0;
    tt.fecha = eje.inicio.addSecs(static_cast<qint64>(segundos));
    for (const Familia& f : eje.familias) {
        double plan = 0, ganado = 0;
        for (const PaqueteAWP* p : eje.porFin) {
            if (p->fechaFin <= tt.fecha) plan += f.valor(*p);
            if (p->progreso > 0 && fechaAvance(*p) <= tt.fecha) ganado += f.valor(*p) * p->progreso;
        }
        for (const auto& [nombre, color, suma] :
             {std::tuple{f.plan, f.colorPlan, plan}, std::tuple{f.ganado, f.colorGanado, ganado}}) {
            const double pct = std::min(suma / f.total, 1.0);
            tt.lineas.push_back({nombre, color, pct, margenSuperiorCurvaS + alto - alto * pct});
        }
    }
    return tt;
}

} // namespace teskal
