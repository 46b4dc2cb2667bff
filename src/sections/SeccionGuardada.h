#pragma once

#include "scene/Color.h"

#include <glm/vec2.hpp>
#include <map>
#include <string>
#include <vector>

// What a section sheet leaves behind: its dimensions and labels, kept by sheet
// title, and the saved sections of the side panel. Sheet coordinates are
// metres with y upward; the axis code is 0 for X, 1 for Y and 2 for Z.
namespace teskal {

// One element's label on a sheet.
struct Etiqueta2D {
    std::string id;              // UUID, upper case; new for every extraction
    glm::vec2 ancla{0.0f};       // centre of the element's box on the sheet
    glm::vec2 offsetTexto{0.0f}; // text position relative to ancla
    std::string nombre;          // the element's name
    std::string tipoIFC;         // the readable type, not the IFC class name
    std::string dimensiones;     // "%.2f × %.2f m"
    std::string material;        // may be empty
    std::string nivel;           // may be empty
    bool visible = false;
    std::string key; // discipline key
    Color color;
    friend bool operator==(const Etiqueta2D&, const Etiqueta2D&) = default;
};

// One dimension: the measured points and the distance of the dimension line
// from the measured line, along the normal (uy, -ux) of the unit vector u from
// p1 to p2.
struct Cota2D {
    std::string id; // UUID, upper case
    glm::vec2 p1{0.0f};
    glm::vec2 p2{0.0f};
    float offsetLateral = 0;
    friend bool operator==(const Cota2D&, const Cota2D&) = default;
};

// What the project keeps of a label: the element it belongs to, whether it is
// shown and where its text was dragged.
struct Etiqueta2DGuardada {
    std::string nombre;
    std::string key;
    bool visible = false;
    glm::vec2 offsetTexto{0.0f};
    friend bool operator==(const Etiqueta2DGuardada&, const Etiqueta2DGuardada&) = default;
};

// One entry of the side panel: a plane that can be cut again. Depth mode and
// depth are not kept; they come from the panel when the entry is restored.
struct SeccionGuardada {
    std::string id; // UUID, upper case
    std::string nombre;
    int eje = 2;
    double posicion = 0;
    friend bool operator==(const SeccionGuardada&, const SeccionGuardada&) = default;
};

// The contents of the dimension and label stores, by sheet title (depth suffix
// included), and the labels as the project document carries them.
using CotasPorTitulo = std::map<std::string, std::vector<Cota2D>>;
using EtiquetasPorTitulo = std::map<std::string, std::vector<Etiqueta2D>>;
using EtiquetasGuardadasPorTitulo = std::map<std::string, std::vector<Etiqueta2DGuardada>>;

// The colour of a label read back from a project. Such a label is never shown:
// it only lends its offset and visibility to the fresh label of the same
// element when the sheet is cut again.
inline constexpr Color colorEtiquetaRestaurada{0.0f, 0.0f, 0.0f, 0.85f};

// A label as the project keeps it: nombre, key, visible and offsetTexto.
Etiqueta2DGuardada etiquetaGuardada(const Etiqueta2D& etiqueta);
// A saved label back as a label: a new id, the anchor at (0, 0), the saved
// offset, name, key and visibility, empty type, dimensions, material and level.
Etiqueta2D etiquetaRestaurada(const Etiqueta2DGuardada& guardada);

EtiquetasGuardadasPorTitulo etiquetasGuardadas(const EtiquetasPorTitulo& porTitulo);
EtiquetasPorTitulo etiquetasRestauradas(const EtiquetasGuardadasPorTitulo& porTitulo);

} // namespace teskal
