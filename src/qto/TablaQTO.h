#pragma once

#include "qto/CuantificacionQTO.h"

#include <QDateTime>
#include <QUuid>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// The sortable columns of the takeoff table.
enum class OrdenQTO { tipoNombre, especialidad, cantidad, volumen, areaPlanta, areaCara, peso };
inline constexpr OrdenQTO ordenesQTO[] = {OrdenQTO::tipoNombre, OrdenQTO::especialidad, OrdenQTO::cantidad,
                                          OrdenQTO::volumen,    OrdenQTO::areaPlanta,   OrdenQTO::areaCara,
                                          OrdenQTO::peso};
// The column's raw text: "Tipo IFC", "Especialidad", "Cant.", "Vol. (m³)",
// "Área planta (m²)", "Área cara (m²)", "Peso (kg)".
std::string_view textoOrdenQTO(OrdenQTO orden);

// One property found in the takeoff's elements, for the parameters sheet.
struct ParamDisponible {
    QUuid id;
    std::string clave;  // "Pset › Propiedad", as in the items' properties
    std::string pset;   // the part before the first " › "
    std::string nombre; // the rest, empty for a key without " › "
    std::size_t cuenta = 0; // items that have the key
};

// The catalogue shown under one property set in the sheet.
struct PsetDisponible {
    std::string pset;
    std::vector<ParamDisponible> parametros;
};

// One row of the table as it is drawn: its cells in column order.
struct FilaQTO {
    enum class Clase { grupo, item, total };
    Clase clase = Clase::grupo;
    QUuid grupo; // the group of a group or item row
    std::vector<std::string> celdas;
};

// Sums over the filtered groups, taken per group and then added, in 32-bit
// floats.
struct TotalesQTO {
    std::size_t cantidad = 0;
    std::size_t tipos = 0; // groups after filtering
    float volumen = 0;
    float areaPlanta = 0;
    float peso = 0; // kg
};

// The takeoff window's state over one snapshot of groups: filter, order,
// open groups and extra columns, and everything the window draws and exports.
struct TablaQTO {
    static constexpr std::string_view todas = "Todas";

    std::vector<GrupoQTO> grupos;
    QDateTime fecha; // moment of computation
    std::string filtroEsp = std::string(todas);
    std::set<QUuid> expandidos;
    OrdenQTO ordenColumna = OrdenQTO::tipoNombre;
    bool ordenAscendente = true;
    std::vector<std::string> parametrosExtra; // keys, in column order

    // "Todas" and each discipline of the groups, in order of first appearance.
    std::vector<std::string> opcionesFiltro() const;
    // The groups of the filter, sorted by the column. Descending is the plain
    // negation of the ascending comparison, so equal keys answer true both
    // ways: the sort used tolerates that.
    std::vector<const GrupoQTO*> gruposFiltradosOrdenados() const;
    // A click on a sortable column's title: a new column sorts ascending, the
    // same column flips direction.
    void pulsarColumna(OrdenQTO columna);
    void alternarExpandido(const QUuid& grupo);
    void expandirTodo(); // every filtered group
    void contraerTodo();

    // Every property key of every item ("__tipoIFC" aside) with its count,
    // the most frequent first.
    std::vector<ParamDisponible> parametrosDisponibles() const;

    TotalesQTO totales() const;
    // Column titles: the eleven fixed ones (the first and third dimension
    // columns both read "Largo (m)") and the `nombre` of each extra key.
    std::vector<std::string> titulosColumnas() const;
    // The body: each filtered group, its items when it is open, then "TOTAL".
    // Quantities above 0.0001 are formatted, others read "—". Empty when no
    // group passes the filter.
    std::vector<FilaQTO> filas() const;
    // "≈ 12.3 t", the total weight in tonnes.
    std::string textoToneladas() const;
    // "Vol.: … m³  ·  Área planta: … m²  ·  Peso estimado: … t".
    std::string textoPie() const;

    // The element list of the filtered groups as CSV: a header and one row
    // per item, every field quoted, lines joined by a line feed without one
    // at the end.
    std::string textoCSV() const;
};

// The name the save panel proposes: "TESKAL_QTO_<seconds since 1970>.csv".
std::string nombreArchivoCSVQTO(std::int64_t segundos);

// The sheet's catalogue narrowed by the search text (case-insensitive, over
// the whole key), grouped by property set in name order.
std::vector<PsetDisponible> agruparParametros(const std::vector<ParamDisponible>& disponibles,
                                              const std::string& busqueda);

// A 32-bit quantity in fixed notation with `decimales` digits and a point,
// whatever the locale, as printf's "%.*f" writes it.
void agregarFijo(std::string& s, float v, int decimales);

// The text between quotation marks, each quotation mark doubled.
std::string citarCSV(std::string_view texto);

} // namespace teskal
