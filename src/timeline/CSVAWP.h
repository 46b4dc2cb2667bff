#pragma once

#include "timeline/PaqueteAWP.h"

#include <QDateTime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Work packages from and to spreadsheets. The import maps its columns by
// header aliases and takes only the fields it knows; the export writes one
// row per package with its own figures, and more columns than the import
// reads back.
namespace teskal {

// The export's first line, without its line feed.
inline constexpr std::string_view cabeceraCSVAWP =
    "Nivel,Código,Nombre,Padre,Inicio,Fin,Avance%,Presupuesto,Costo Real,EV,CPI,HH Plan,HH Real,HH Ganadas,"
    "Factor Prod.";
// The name the export's save panel proposes, without its extension.
inline constexpr std::string_view nombreCSVAWP = "TimeLiner_AWP_TESKAL";
// What an import that found no package says, under the title
// "Error al importar CSV".
inline constexpr std::string_view mensajeCSVSinPaquetes =
    "No se encontraron paquetes válidos en el CSV.\n\nColumnas requeridas:\nNivel, Código, Nombre, "
    "Inicio (YYYY-MM-DD), Fin (YYYY-MM-DD)";

// The packages of a CSV text, in file order; none without a header that
// names the level, code, name, start and finish. A row is skipped when it is
// shorter than a column it needs, its level is not one of the four, its code
// is empty, a date is unreadable or the finish comes before the start. Each
// package is new (a fresh id, the defaults of `ahora`) with the fields the
// columns give: level, code, name, dates, and where their columns exist the
// parent, the progress (a percentage), the budget and the planned man-hours.
std::vector<PaqueteAWP> parsearCSV(std::string_view texto,
                                   const QDateTime& ahora = QDateTime::currentDateTimeUtc());

// The file read as UTF-8 and parsed; a file that can't be read, or is not
// UTF-8, gives none.
std::vector<PaqueteAWP> leerCSVAWP(const std::string& ruta);

// A date of the import: "yyyy-MM-dd" (midnight UTC, as an ISO 8601 date
// reads), else "dd/MM/yyyy", else "MM/dd/yyyy" (midnight local time). Blanks
// around it are ignored.
std::optional<QDateTime> leerFechaCSV(std::string_view texto);

// The export of every package in list order: the header, then one line per
// package, each ended by a line feed. Only the name is quoted (inner quotation
// marks as they stand); the figures are the package's own, with no roll-up.
std::string textoCSVAWP(const TimeLinerConfig& config);

} // namespace teskal
