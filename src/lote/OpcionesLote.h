#pragma once

#include <QStringList>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace teskal {

// How clashes are told: the boxes of the two elements (the workbench's
// search), the exact geometry, or the exact geometry with a clearance.
enum class MetodoInterferencias { cajas, exacto, holgura };

// What one run of the batch command was asked for.
struct OpcionesLote {
    bool ayuda = false;
    std::string proyecto; // a .teskal or a .teskalpkg; empty with links alone
    std::vector<std::pair<std::string, std::string>> vinculos; // discipline key, IFC file
    // Discipline pairs of the clash analysis; empty with an analysis asked
    // for means every pair of disciplines with models.
    std::vector<std::pair<std::string, std::string>> pares;
    bool analizar = false; // a clash output, a bound or pairs were given
    double tolerancia = 0.02;
    // As a new analysis in the workbench: the exact geometry, and a
    // clearance of 5 cm when the clearance check is asked for.
    MetodoInterferencias metodo = MetodoInterferencias::exacto;
    double holgura = 0.05;
    std::optional<long long> maxInterferencias;
    std::string bcf, html, qto, dxf, json;
    // The section: axis code (0 X, 1 Y, 2 Z), position, depth mode and depth.
    std::optional<int> ejeSeccion;
    double posicionSeccion = 0.0;
    int modoProfundidad = 0;
    double profundidad = 1.0;
    std::optional<std::pair<std::string, std::string>> xor_; // base, new
    bool sinCache = false;
};

// The options of a command line (the program's name first). Gives the
// options or the Spanish sentence that says what is wrong with them.
std::variant<OpcionesLote, std::string> leerOpcionesLote(const QStringList& argumentos);

// The help text of "vornel-lote --ayuda", in the manner of a manual page.
std::string textoAyudaLote();

// The name of a method as the command line and the summary write it.
const char* nombreMetodo(MetodoInterferencias metodo);

} // namespace teskal
