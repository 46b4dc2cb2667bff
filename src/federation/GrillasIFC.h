#pragma once

#include <glm/vec3.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// One axis of an IFC grid, with its points in world coordinates and metres,
// where the converter puts the geometry of the same file.
struct EjeGrilla {
    std::string id; // a new UUID at each read
    std::string tag;
    bool esU = true; // true for the U list, false for the V list
    std::vector<glm::vec3> puntos; // two or more
};

// The grid axes of every IFCGRID of the file whose curves are polylines, each
// carried through its grid's placement chain and scaled from the project's
// length unit to metres. Never fails: an unreadable or non-UTF-8 file gives no
// axes, and a grid whose placement can't be read gives none of its own.
std::vector<EjeGrilla> leerGrillasIFC(const std::string& ruta);
std::vector<EjeGrilla> leerGrillasIFCTexto(std::string_view texto);

// Adds the new axes to the workspace's list, leaving out every axis whose
// key (tag followed by "U" or "V") is among the axes already there.
void fusionarGrillas(std::vector<EjeGrilla>& grillas, std::vector<EjeGrilla> nuevas);

} // namespace teskal
