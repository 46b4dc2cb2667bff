#include "timeline/ValorGanado.h"

#include "federation/Formato.h"
#include "scene/ColoresSistema.h"

#include <algorithm>
#include <cmath>

namespace teskal {

namespace {

// avanceAuto over dates already in milliseconds: the panels ask it of every
// IWP at every redraw.
double avanceAutoMs(const PaqueteAWP& p, bool automatico, qint64 inicio, qint64 fin, qint64 scrubber) {
    if (!automatico) return p.progreso;
    constexpr qint64 invalida = std::numeric_limits<qint64>::min();
    if (inicio == invalida || fin == invalida || scrubber == invalida) return 0;
    // Whole seconds, as the span is measured.
    const qint64 d = (fin - inicio) / 1000;
    if (d > 0) {
        const double r = static_cast<double>((scrubber - inicio) / 1000) / static_cast<double>(d);
        return std::clamp(r, 0.0, 1.0);
    }
    return scrubber >= fin ? 1.0 : 0.0;
}

double avanceAuto(const ArbolAWP& arbol, const PaqueteAWP& p, const ModoAvance& modo, qint64 scrubber) {
    return avanceAutoMs(p, modo.automatico, arbol.inicioMs(p), arbol.finMs(p), scrubber);
}

} // namespace

double avanceAuto(const PaqueteAWP& p, const ModoAvance& modo) {
    return avanceAutoMs(p, modo.automatico, msDe(p.fechaInicio), msDe(p.fechaFin), msDe(modo.fechaScrubber));
}

double avanceEfectivo(const ArbolAWP& arbol, const PaqueteAWP& p, const ModoAvance& modo) {
    return fichaEVM(arbol, p, modo).avance;
}

QDateTime fechaAvance(const PaqueteAWP& p) {
    if (p.fechaFinReal) return *p.fechaFinReal;
    const QDateTime base = p.fechaInicioReal ? *p.fechaInicioReal : p.fechaInicio;
    const double segundos = p.progreso * static_cast<double>(base.secsTo(p.fechaFin));
    return base.addSecs(static_cast<qint64>(std::llround(segundos)));
}

TonoIndice tonoIndice(double valor) {
    if (valor >= 1.0) return TonoIndice::verde;
    if (valor >= 0.85) return TonoIndice::naranja;
    return TonoIndice::rojo;
}

Color colorIndice(double valor) {
    switch (tonoIndice(valor)) {
    case TonoIndice::verde:
        return colores::verde;
    case TonoIndice::naranja:
        return colores::naranja;
    case TonoIndice::rojo:
        break;
    }
    return colores::rojo;
}

TotalesEVM totalesEVM(const ArbolAWP& arbol, const ModoAvance& modo) {
    TotalesEVM t;
    double progreso = 0;
    const qint64 scrubber = msDe(modo.fechaScrubber);
    for (const PaqueteAWP* p : arbol.iwps()) {
        const double a = avanceAuto(arbol, *p, modo, scrubber);
        t.bac += p->presupuesto;
        t.ac += p->costoReal;
        t.ev += p->presupuesto * a;
        t.hhPlanificadas += p->hh;
        t.hhReales += p->hhReal;
        t.hhGanadas += p->hh * a;
        progreso += p->progreso;
    }
    t.spi = t.bac > 0 ? t.ev / t.bac : 1.0;
    t.cpi = t.ac > 0 ? t.ev / t.ac : 1.0;
    t.factorProd = t.hhReales > 0 ? t.hhGanadas / t.hhReales : 1.0;
    t.hhDia = t.hhPlanificadas / duracionDias(arbol.config());
    const std::size_t n = arbol.iwps().size();
    t.avanceGlobal = n ? progreso / static_cast<double>(n) : 0.0;
    t.mostrarHH = n > 0 && t.hhPlanificadas > 0;
    return t;
}

FichaEVM fichaEVM(const ArbolAWP& arbol, const PaqueteAWP& p, const ModoAvance& modo) {
    FichaEVM f;
    f.paquete = &p;
    const ArbolAWP::Lista hojas = arbol.paquetesHoja(p);
    const qint64 scrubber = msDe(modo.fechaScrubber);
    double sumaAvance = 0;
    for (const PaqueteAWP* h : hojas) {
        const double a = avanceAuto(arbol, *h, modo, scrubber);
        f.presupuesto += h->presupuesto;
        f.costoReal += h->costoReal;
        f.hh += h->hh;
        f.hhReal += h->hhReal;
        f.ev += h->presupuesto * a;
        f.hhGanadas += h->hh * a;
        sumaAvance += a;
    }
    // avanceEfectivo from the same sums; outside "Auto %" the typed progress,
    // which `avance` weighs the same way.
    if (!modo.automatico)
        f.avance = arbol.avance(p);
    else if (hojas.empty())
        f.avance = avanceAuto(arbol, p, modo, scrubber);
    else
        f.avance = f.presupuesto > 0 ? f.ev / f.presupuesto : sumaAvance / static_cast<double>(hojas.size());
    f.cpi = f.costoReal > 0 ? f.ev / f.costoReal : 1.0;
    f.productividad = f.hhReal > 0 ? f.hhGanadas / f.hhReal : 1.0;
    f.desviacionInicio = desviacionInicioDias(p);
    f.desviacionFin = desviacionFinDias(p);
    if (p.nivel == NivelAWP::cwa || p.nivel == NivelAWP::cwp) f.iwpsIncluidos = hojas.size();
    return f;
}

ArbolAWP::Lista paquetesDelPanel(const ArbolAWP& arbol, const PaqueteAWP* seleccionado) {
    if (seleccionado) return {seleccionado};
    return arbol.cwas().empty() ? arbol.iwps() : arbol.cwas();
}

std::string textoHH(double hh) {
    return hh >= 1000 ? formato("%.1f k HH", hh / 1000) : formato("%.0f HH", hh);
}

std::string textoHHFicha(double hh) {
    return hh >= 1000 ? formato("%.1fk HH", hh / 1000) : formato("%.0f HH", hh);
}

std::string textoPorcentaje(double fraccion) { return formato("%.0f%%", fraccion * 100); }

std::string textoMoneda(double monto, const std::string& moneda, const QLocale& locale) {
    const QString texto = locale.toCurrencyString(monto, QString::fromStdString(moneda), 0);
    if (!texto.isEmpty()) return texto.toStdString();
    return formato("%lld", static_cast<long long>(std::trunc(monto)));
}

std::string textoDesviacion(const char* prefijo, int dias) {
    if (dias == 0) return std::string(prefijo) + " en plazo";
    return formato(dias > 0 ? "%s +%dd" : "%s %dd", prefijo, dias);
}

} // namespace teskal
