#include "timeline/GeometriaGantt.h"

#include "scene/ColoresSistema.h"

#include <QLocale>
#include <algorithm>
#include <array>

namespace teskal {

Color colorPaquete(int colorIdx) {
    static constexpr std::array<Color, 8> paleta = {colores::azul,  colores::purpura, colores::teal,
                                                    colores::indigo, colores::cian,   colores::menta,
                                                    colores::naranja, colores::rosa};
    const int i = ((colorIdx % 8) + 8) % 8; // a negative index read from a file wraps too
    return paleta[static_cast<std::size_t>(i)];
}

Color colorNivel(NivelAWP nivel) {
    switch (nivel) {
    case NivelAWP::cwa:
        return colores::azul;
    case NivelAWP::cwp:
        return colores::purpura;
    case NivelAWP::iwp:
        return colores::teal;
    case NivelAWP::pwp:
        return colores::naranja;
    }
    return colores::teal;
}

namespace {

// xFecha over a counter that reads the zone's offsets once for all rows.
struct EjeGantt {
    const MedidasGantt& m;
    ContadorDias contador;
    double dias;

    EjeGantt(const TimeLinerConfig& c, const MedidasGantt& medidas)
        : m(medidas), contador(c.fechaInicio, c.fechaInicio, c.fechaFin),
          dias(static_cast<double>(duracionDias(c))) {}

    double x(qint64 ms) const {
        const auto d = contador.hasta(ms);
        return m.lW + (d ? *d : 0) / dias * (m.ancho - m.lW);
    }
    double x(const QDateTime& f) const { return x(msDe(f)); }
    bool dentro(double x) const { return x >= m.lW && x <= m.ancho; }
};

} // namespace

double xFecha(const TimeLinerConfig& config, const QDateTime& fecha, const MedidasGantt& m) {
    const auto d = diasEnteros(config.fechaInicio, fecha);
    return m.lW + (d ? *d : 0) / static_cast<double>(duracionDias(config)) * (m.ancho - m.lW);
}

std::vector<FilaAWP> filasCompletas(const ArbolAWP& arbol) {
    std::set<std::string> todas;
    for (const PaqueteAWP* cwa : arbol.cwas()) todas.insert(cwa->codigo);
    return arbol.filas(todas);
}

GeometriaGantt geometriaGantt(const ArbolAWP& arbol, const std::vector<FilaAWP>& filas,
                              const std::set<std::string>& expandidosCWA, const ModoAvance& modo,
                              const QDateTime& hoy, const MedidasGantt& m) {
    const TimeLinerConfig& config = arbol.config();
    const EjeGantt eje(config, m);
    GeometriaGantt g;
    g.medidas = m;
    g.alto = m.origenFilas() + static_cast<double>(filas.size()) * m.rH + m.fH;
    g.hoy = hoy;
    g.scrubber = modo.fechaScrubber;
    g.paquetes = config.paquetes.size();
    g.iwps = arbol.iwps().size();
    g.filas.reserve(filas.size());
    double y = m.origenFilas();
    for (const FilaAWP& f : filas) {
        const PaqueteAWP& p = *f.pkg;
        FilaGantt fila{&p, f.sangria, y, {}, false, false};
        y += m.rH;
        BarraGantt& b = fila.barra;
        if (p.nivel == NivelAWP::cwa || p.nivel == NivelAWP::cwp) {
            b.resumen = true;
            const ArbolAWP::Lista hojas = arbol.paquetesHoja(p);
            qint64 inicio = arbol.inicioMs(p), fin = arbol.finMs(p);
            if (!hojas.empty()) {
                inicio = arbol.inicioMs(*hojas.front());
                fin = arbol.finMs(*hojas.front());
                for (const PaqueteAWP* h : hojas) {
                    inicio = std::min(inicio, arbol.inicioMs(*h));
                    fin = std::max(fin, arbol.finMs(*h));
                }
            }
            b.x0 = eje.x(inicio);
            b.x1 = eje.x(fin);
            b.avance = avanceEfectivo(arbol, p, modo);
            if (p.nivel == NivelAWP::cwa) {
                fila.expandible = !arbol.hijos(p.codigo, NivelAWP::cwp).empty() ||
                                  !arbol.hijos(p.codigo, NivelAWP::iwp).empty();
                fila.expandida = expandidosCWA.contains(p.codigo);
            }
        } else {
            b.x0 = eje.x(arbol.inicioMs(p));
            b.x1 = eje.x(arbol.finMs(p));
            b.avance = avanceAuto(p, modo);
        }
        if (b.x1 - b.x0 < m.anchoMinimoBarra) b.x1 = b.x0 + m.anchoMinimoBarra;
        b.avance = std::clamp(b.avance, 0.0, 1.0);
        if (p.fechaInicioReal) b.xInicioReal = eje.x(*p.fechaInicioReal);
        if (p.fechaFinReal) b.xFinReal = eje.x(*p.fechaFinReal);
        g.filas.push_back(fila);
    }

    // A tick on the first day of every month from the axis start's month
    // until past its end, by the calendar in local time.
    const QDate inicio = config.fechaInicio.toLocalTime().date();
    QDateTime mes(QDate(inicio.year(), inicio.month(), 1), QTime(0, 0), Qt::LocalTime);
    for (; mes.isValid() && mes <= config.fechaFin; mes = mes.addMonths(1)) {
        const double x = eje.x(mes);
        if (eje.dentro(x)) g.meses.push_back({mes, x});
    }
    if (hoy.isValid())
        if (const double x = eje.x(hoy); eje.dentro(x)) g.xHoy = x;
    if (modo.fechaScrubber.isValid())
        if (const double x = eje.x(modo.fechaScrubber); eje.dentro(x)) g.xScrubber = x;
    return g;
}

std::optional<std::size_t> filaEn(const GeometriaGantt& g, double y) {
    const double dentro = y - g.medidas.origenFilas();
    if (dentro < 0) return std::nullopt;
    const auto i = static_cast<std::size_t>(dentro / g.medidas.rH);
    return i < g.filas.size() ? std::optional(i) : std::nullopt;
}

std::string textoFechaGantt(const QDateTime& fecha, const char* formato) {
    const QLocale espanol(QLocale::Spanish, QLocale::Chile);
    return espanol.toString(fecha.toLocalTime(), QString::fromLatin1(formato)).toStdString();
}

std::string nombreGanttPDF(const TimeLinerConfig& config) {
    return "Gantt_" + textoFechaGantt(config.fechaInicio, "yyyyMM");
}

} // namespace teskal
