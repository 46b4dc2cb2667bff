#pragma once

#include "scene/Color.h"
#include "timeline/ArbolAWP.h"

#include <QPointF>
#include <optional>
#include <string>
#include <vector>

// The S-curve of a timeline as point lists in the chart's own coordinates:
// the planned and the earned share of the budget and of the man-hours over
// the IWPs' dates. Computed at every drawing from the config; the widget only
// strokes what this gives.
namespace teskal {

// Where the plot area begins inside the chart, in points.
inline constexpr double margenIzquierdoCurvaS = 34;
inline constexpr double margenSuperiorCurvaS = 10;

// Which families the chart shows: 0 "Costo", 1 "HH", 2 "Costo + HH".
enum class ModoCurvas { costo = 0, hh = 1, ambas = 2 };

// One curve: its legend name, colour and points (two or more to be drawn).
struct SerieCurvaS {
    std::string nombre;
    Color color;
    std::vector<QPointF> puntos;
};

// A month tick of the horizontal axis.
struct MarcaMes {
    QDateTime fecha; // the first day of the month, local time
    double x = 0;
};

struct CurvasS {
    bool hayDatos = false; // false: the chart shows only textoSinDatosCurvaS
    // In legend order: the man-hour family first in "HH".
    std::vector<SerieCurvaS> series;
    QDateTime inicio, fin; // the axis
    double dias = 1;       // N
    std::vector<MarcaMes> meses;
    std::optional<double> xScrubber; // only when it falls within the plot
};

inline constexpr const char* textoSinDatosCurvaS =
    "Sin datos — agrega presupuesto o HH a los IWP";
// The legend name of the scrubber line.
inline constexpr const char* textoFechaScrubberCurvaS = "Fecha scrubber";

// The chart of a plot area of ancho × alto points.
CurvasS calcularCurvasS(const ArbolAWP& arbol, ModoCurvas modo, double ancho, double alto,
                        const QDateTime& fechaScrubber);

// One stretch of a smoothed curve: a cubic from p0 to p1, or a straight line
// where the stretch is under 0.5 points high or 2 wide.
struct TramoCurva {
    QPointF p0, c1, c2, p1;
    bool recto = false;
};
// The smoothing of a curve's points: control points at 0.3 of the
// neighbours' difference, kept horizontally within each stretch so that the
// curve never folds back.
std::vector<TramoCurva> suavizarCurva(const std::vector<QPointF>& puntos);

// A line of the hover box.
struct LineaTT {
    std::string nombre;
    Color color;
    double pct = 0; // 0 to 1
    double yPt = 0; // where the curve stands at the hover date
};
struct TooltipCurvaS {
    QDateTime fecha;
    std::vector<LineaTT> lineas;
};
// The hover box at a horizontal pointer position; none outside the plot or
// without data.
std::optional<TooltipCurvaS> tooltipCurvaS(const ArbolAWP& arbol, ModoCurvas modo, double ancho,
                                           double alto, double x);

} // namespace teskal
