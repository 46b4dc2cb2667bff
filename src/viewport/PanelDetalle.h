#pragma once

#include <string>
#include <vector>

namespace teskal {

class ContentView;
class Node;

// One row of the element panel: a label and its value. A label that begins
// with "──" is a heading.
struct FilaDetalle {
    std::string etiqueta;
    std::string valor;
    friend bool operator==(const FilaDetalle&, const FilaDetalle&) = default;
};

// The rows that describe the selected element: its IFC class (in the schema's
// spelling, such as IfcWallStandardCase) and GlobalId, "—" for each it lacks;
// its name or its IFC type and name, discipline, box dimensions, position, box volume, clash state, then
// its IFC properties in ascending key order.
std::vector<FilaDetalle> filasDetalle(const ContentView& cv, const Node& nodo);

} // namespace teskal
