#pragma once

#include <glm/vec3.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// One axis of an IFC grid, with its points as the file states them (no unit
// conversion and no placement applied).
struct EjeGrilla {
    std::string id; // a new UUID at each read
    std::string tag;
    bool esU = true; // true for the U list, false for the V list
    std::vector<glm::vec3> puntos; // two or more
};

// The grid axes of every IFCGRID of the file whose curves are polylines.
// Never fails: an unreadable file gives no axes.
std::vector<EjeGrilla> leerGrillasIFC(const std::string& ruta);
std::vector<EjeGrilla> leerGrillasIFCTexto(std::string_view texto);

// Adds the new axes to the workspace's list, leaving out every axis whose
// key (tag followed by "U" or "V") is among the axes already there.
void fusionarGrillas(std::vector<EjeGrilla>& grillas, std::vector<EjeGrilla> nuevas);

} // namespace teskal
