#pragma once

#include "scene/Color.h"
#include "timeline/ArbolAWP.h"
#include "timeline/ValorGanado.h"

#include <QDateTime>
#include <optional>
#include <string>
#include <vector>

// The Gantt chart as geometry, in points with the origin at the top left:
// where each row and bar stands, the month ticks, and the today and scrubber
// lines. The screen and the PDF draw what this gives; the PDF adds a title
// band above and a footer band below.
namespace teskal {

struct MedidasGantt {
    double ancho = 1200; // the page, or the widget
    double lW = 270;     // the label column
    double rH = 22;      // a row
    double tH = 40;      // the title band (none on screen)
    double hH = 20;      // the month header
    double fH = 28;      // the footer band (none on screen)
    double anchoMinimoBarra = 4;

    double origenFilas() const { return tH + hH; }
};
// The PDF's page: 1200 points wide, all bands.
inline MedidasGantt medidasPDF() { return {}; }
// The screen's chart: no title or footer band.
inline MedidasGantt medidasPantalla(double ancho) { return {ancho, 270, 22, 0, 20, 0, 4}; }

// The package palette by colorIdx, modulo its eight colours: blue, purple,
// teal, indigo, cyan, mint, orange, pink.
Color colorPaquete(int colorIdx);
// The mark of a level: CWA blue, CWP purple, IWP teal, PWP orange.
Color colorNivel(NivelAWP nivel);

struct BarraGantt {
    double x0 = 0, x1 = 0; // at least anchoMinimoBarra apart
    double avance = 0;      // the filled fraction
    bool resumen = false;   // an area's or CWP's span over its leaves
    // The actual dates' marks on the bar, when the package has them.
    std::optional<double> xInicioReal, xFinReal;
};

struct FilaGantt {
    const PaqueteAWP* pkg = nullptr;
    int sangria = 0;
    double y = 0; // the row's top
    BarraGantt barra;
    bool expandible = false; // an area with rows to show
    bool expandida = false;
};

struct LineaMes {
    QDateTime fecha; // the first day of the month, local time
    double x = 0;
};

struct GeometriaGantt {
    MedidasGantt medidas;
    double alto = 0; // title, header, rows and footer
    std::vector<FilaGantt> filas;
    std::vector<LineaMes> meses; // only those over the chart
    std::optional<double> xHoy, xScrubber; // only within the chart
    QDateTime hoy, scrubber;
    std::size_t paquetes = 0, iwps = 0; // the counts the title and footer read
};

// The x of a date: the whole days from the config's start over its
// duracionDias, across the chart right of the label column. Not limited to
// the axis.
double xFecha(const TimeLinerConfig& config, const QDateTime& fecha, const MedidasGantt& m);

// The rows the PDF shows: every area expanded, then the orphan IWPs.
std::vector<FilaAWP> filasCompletas(const ArbolAWP& arbol);

// The geometry of these rows. A bar's progress follows the mode: the
// scrubber's for an IWP or PWP in "Auto %", the roll-up for a summary.
GeometriaGantt geometriaGantt(const ArbolAWP& arbol, const std::vector<FilaAWP>& filas,
                              const std::set<std::string>& expandidosCWA, const ModoAvance& modo,
                              const QDateTime& hoy, const MedidasGantt& m);

// The row under a point, or none.
std::optional<std::size_t> filaEn(const GeometriaGantt& g, double y);

// The dates of the chart and the PDF in Spanish: "MMM yy" for the months,
// "dd-MM-yy" for the scrubber, "yyyyMM" for the proposed file name.
std::string textoFechaGantt(const QDateTime& fecha, const char* formato);
// "Gantt_" and the config's start as "yyyyMM".
std::string nombreGanttPDF(const TimeLinerConfig& config);

} // namespace teskal
