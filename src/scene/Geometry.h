#pragma once

#include "scene/Box.h"
#include "scene/Material.h"

#include <cstdint>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <string>
#include <vector>

namespace teskal {

enum class Primitiva { Triangulos, Lineas };

// One index list of a geometry: triangles (three indices each) or line
// segments (two each), 32-bit signed indices into the vertex source.
struct ElementoGeometria {
    Primitiva primitiva = Primitiva::Triangulos;
    std::vector<std::int32_t> indices;
};

// Vertices, optional normals (absent when the source data had none or their
// count did not match), index lists and materials.
struct Geometry {
    std::string name;
    std::vector<glm::vec3> vertices;
    std::vector<glm::vec3> normales;
    std::vector<glm::vec2> coordenadasTextura; // per vertex, or empty
    std::vector<ElementoGeometria> elementos;
    std::vector<std::shared_ptr<Material>> materiales;

    bool tieneNormales() const { return !normales.empty() && normales.size() == vertices.size(); }
    Material* firstMaterial() const { return materiales.empty() ? nullptr : materiales.front().get(); }
    // Box of the vertices that the index lists use.
    Box boundingBox() const;
};

} // namespace teskal
