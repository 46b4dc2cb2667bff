#pragma once

#include "scene/Color.h"
#include "timeline/ArbolAWP.h"

#include <QLocale>
#include <string>

// Earned value and man-hours of a timeline: the project's totals over its
// installation packages, each package's card, and the texts the panels show.
// In "Auto %" the progress of a package is read from the scrubber date between
// its planned dates instead of its typed progress.
namespace teskal {

// How progress is read: typed, or from the scrubber date.
struct ModoAvance {
    bool automatico = false; // "Auto %"
    QDateTime fechaScrubber;
};

// The progress of one package at the scrubber date (its typed progress
// outside "Auto %").
double avanceAuto(const PaqueteAWP& p, const ModoAvance& modo);
// The progress of a package of any level as the panels show it.
double avanceEfectivo(const ArbolAWP& arbol, const PaqueteAWP& p, const ModoAvance& modo);
// The date at which a package's earned value lands on the S-curve.
QDateTime fechaAvance(const PaqueteAWP& p);

// The colour of an index: green from 1, orange from 0.85, red below.
enum class TonoIndice { verde, naranja, rojo };
TonoIndice tonoIndice(double valor);
// The system colour of that tone.
Color colorIndice(double valor);

// The project's figures, over its IWPs.
struct TotalesEVM {
    double bac = 0; // "BAC (Presupuesto)"
    double ac = 0;  // "AC  (Costo real)"
    double ev = 0;  // "EV  (Valor ganado)"
    double spi = 1; // EV over BAC: the earned share of the whole budget
    double cpi = 1;
    double hhPlanificadas = 0;
    double hhReales = 0;
    double hhGanadas = 0;
    double factorProd = 1;
    double hhDia = 0;
    double avanceGlobal = 0; // plain mean of the typed progress
    bool mostrarHH = false;  // the man-hour panel is shown
};
TotalesEVM totalesEVM(const ArbolAWP& arbol, const ModoAvance& modo);

// One package's card in the panel.
struct FichaEVM {
    const PaqueteAWP* paquete = nullptr;
    double presupuesto = 0;
    double costoReal = 0;
    double hh = 0;
    double hhReal = 0;
    double avance = 0;
    double ev = 0;
    double hhGanadas = 0;
    double cpi = 1;
    double productividad = 1;
    std::optional<int> desviacionInicio;
    std::optional<int> desviacionFin;
    std::size_t iwpsIncluidos = 0; // shown on areas and CWPs
};
FichaEVM fichaEVM(const ArbolAWP& arbol, const PaqueteAWP& p, const ModoAvance& modo);
// The packages the panel lists: the selected one alone, else the areas, else
// the IWPs.
ArbolAWP::Lista paquetesDelPanel(const ArbolAWP& arbol, const PaqueteAWP* seleccionado);

// Man-hours on the timeline panels: "%.1f k HH" from 1000, "%.0f HH" below.
std::string textoHH(double hh);
// The same on the package sheet: "%.1fk HH", "%.0f HH".
std::string textoHHFicha(double hh);
// "%.0f%%" of the fraction times 100.
std::string textoPorcentaje(double fraccion);
// An amount in the currency with no fraction digits; the amount truncated to
// an integer should the locale give no text.
std::string textoMoneda(double monto, const std::string& moneda, const QLocale& locale = QLocale());
// "Inicio en plazo", "Inicio +3d", "Inicio -2d" (prefijo "Inicio" or "Fin").
std::string textoDesviacion(const char* prefijo, int dias);

} // namespace teskal
