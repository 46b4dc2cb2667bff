#pragma once

#include "federation/PropiedadesIFC.h"
#include "timeline/ArbolAWP.h"

#include <QLocale>
#include <optional>
#include <string>
#include <vector>

// The rules of the package editor: which parents a level may take, when the
// form can be saved, what it warns about, the save that keeps the project's
// time axis around every package, the numeric field's reading, and the
// element names on offer.
namespace teskal {

// The packages a level may hang from: none for an area, areas for a CWP,
// areas and CWPs for an IWP, IWPs for a PWP.
std::vector<const PaqueteAWP*> padresPosibles(const TimeLinerConfig& config, NivelAWP nivel);
// A code, and a parent for every level but the area.
bool formularioValido(const PaqueteAWP& p);
// Why the form can't be saved, the first reason that applies; none when it can.
std::optional<std::string> errorValidacion(const PaqueteAWP& p, const TimeLinerConfig& config);
// A warning that does not block saving: dates outside the project's axis,
// or an actual finish before the actual start.
std::optional<std::string> avisoFechas(const PaqueteAWP& p, const TimeLinerConfig& config,
                                       const QLocale& locale = QLocale(QLocale::Spanish, QLocale::Chile));
// Saves the edited package (replacing the one of its id, or appended) and
// spans the project's axis from the earliest start to the latest finish of
// all packages. The one place the hierarchy rules hold: an invalid form
// saves nothing and gives false.
bool guardarPaquete(TimeLinerConfig& config, const PaqueteAWP& p);
// Removes the package of that id; its children keep their parent's code.
bool eliminarPaquete(TimeLinerConfig& config, const std::string& id);

// The numeric field: the shown text of a value ("%.0f" with no decimals,
// else "%.Nf"), and the value a typed text writes ("," read as "."), none
// when it is within 0.001 of the stored one. A text that does not read
// compares as -1.
std::string textoCampoNumerico(double valor, int decimales);
std::optional<double> valorCampoNumerico(const std::string& texto, double valorActual);

// The element names of each discipline that hold the search text (any case),
// sorted, for the editor's selector; disciplines without a match are left out.
struct GrupoElementos {
    std::string clave;
    std::vector<std::string> nombres;
};
std::vector<GrupoElementos> elementosDisponibles(const PropiedadesPorEspecialidad& propiedades,
                                                 const std::vector<std::string>& orden,
                                                 const std::string& busqueda);
// Adds the name to the package's elements, or takes it out.
void alternarElemento(PaqueteAWP& p, const std::string& nombre);

// The names the package's sheet shows in its rendering: its own elements,
// and those of its IWPs (and, for an area, of its CWPs) below it.
std::vector<std::string> nombresFicha(const ArbolAWP& arbol, const PaqueteAWP& p);
// The deviation in the editor's words: "En plazo", "N d retraso", "N d adelanto".
std::string textoDesviacionEditor(int dias);

} // namespace teskal
