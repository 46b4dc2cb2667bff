#pragma once

#include "timeline/GeometriaGantt.h"

#include <QRectF>
#include <optional>
#include <string>

class QPainter;

namespace teskal {

struct OpcionesGantt {
    // The page: title and footer bands, bars in the package's palette
    // colour. The screen: bars coloured by progress, the selected row lit.
    bool pagina = true;
    std::optional<std::string> seleccionado; // id
    std::optional<QRectF> visible;           // rows outside it are skipped
};

// Draws the chart of a geometry: the screen's view and the PDF's page are
// this one drawing.
void dibujarGantt(QPainter& p, const GeometriaGantt& g, const OpcionesGantt& opciones);

// Writes the Gantt of every row, all areas expanded, as one PDF page 1200
// points wide and as tall as its rows, with real text. False with the reason
// when the file can't be written; false with no reason when there are no rows
// (nothing is written then).
bool escribirGanttPDF(const ArbolAWP& arbol, const ModoAvance& modo, const QDateTime& hoy, const std::string& ruta,
                      std::string& error);

} // namespace teskal
