#pragma once

// The geometry of the exact clash test: triangles in world coordinates, the
// crossing and the distance of two triangles, an element's mesh with its tree
// of triangle boxes, and the contact and the separation of two meshes.
//
// The penetration of a clash is the width of its contact region along the
// region's thinnest axis. The contact region is the common part of the two
// elements: its corners are the ends of the segments where the two surfaces
// cross and the corners of each mesh that lie inside the other (when the
// other is closed). Its width is measured along the world axes and along the
// normal of every triangle that bounds it, and the least of those widths is
// the penetration: a pipe through a wall penetrates by the wall's thickness
// (or by the pipe's diameter, when that is less), a column inside a wall by
// the column's thinnest side, two boxes by the thinnest side of their
// overlap. Surfaces that only touch give a region of no width: no
// penetration.

#include <array>
#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace teskal {

struct Geometry;

// A triangle in world coordinates, metres.
struct Triangulo {
    glm::dvec3 a{0.0}, b{0.0}, c{0.0};
};

// A triangle has no surface when a corner is not finite or it has no area
// (collinear or repeated corners): it never crosses nor touches anything.
bool trianguloDegenerado(const Triangulo& t);

// Where two triangles meet. `puntos` bound their common part: the two ends of
// the segment where they cross, or, for two triangles in one plane, the
// corners of their overlap. Triangles that only touch meet too.
struct CruceTriangulos {
    bool cruzan = false;
    bool coplanares = false;
    int cuantos = 0;
    std::array<glm::dvec3, 15> puntos{};
};
CruceTriangulos cruzarTriangulos(const Triangulo& a, const Triangulo& b);

// The least distance between two triangles with the nearest point of each;
// 0 when they meet.
double distanciaTriangulos(const Triangulo& a, const Triangulo& b, glm::dvec3& enA, glm::dvec3& enB);

// One element's triangles in world coordinates with a tree of their boxes,
// built once and only read afterwards (by any number of threads at once).
class MallaElemento {
public:
    MallaElemento() = default;
    // The triangles of the geometry's triangle lists carried by `mundo` into
    // world coordinates; line lists and indices out of range are left out.
    MallaElemento(const Geometry& g, const glm::dmat4& mundo);
    explicit MallaElemento(const std::vector<Triangulo>& triangulos);

    // The triangles with a surface, in the tree's order.
    const std::vector<Triangulo>& triangulos() const { return tri_; }
    // Their unit normals, in the same order.
    const std::vector<glm::dvec3>& normales() const { return normales_; }
    // Every edge is shared by an even number of the triangles with a surface
    // (corners matched by position): the mesh encloses a volume and a point
    // can be inside it.
    bool cerrada() const { return cerrada_; }
    bool vacia() const { return tri_.empty(); }
    const glm::dvec3& min() const { return min_; }
    const glm::dvec3& max() const { return max_; }

    // Whether a point lies strictly inside the closed mesh, by the parity of
    // the crossings of rays cast from it (a ray that grazes an edge is cast
    // again in another direction). False for an open mesh or a point on the
    // surface.
    bool contiene(const glm::dvec3& p) const;
    // The same test over every triangle, without the tree.
    bool contieneDirecto(const glm::dvec3& p) const;

    struct NodoArbol {
        glm::dvec3 min, max;
        std::int32_t primero = 0, cuenta = 0; // triangles of a leaf (cuenta > 0)
        std::int32_t derecho = 0;             // the left child follows its parent
    };
    const std::vector<NodoArbol>& arbol() const { return arbol_; }
    // The corners of the triangles, each corner once as the geometry gave it.
    const std::vector<glm::dvec3>& vertices() const { return vertices_; }
    const std::vector<std::array<std::int32_t, 3>>& indices() const { return indices_; }

private:
    void construir(std::vector<glm::dvec3> vertices, std::vector<std::array<std::int32_t, 3>> indices);
    std::int32_t construirNodo(std::int32_t desde, std::int32_t hasta);
    int cruzarRayo(const glm::dvec3& p, const glm::dvec3& dir, bool conArbol) const;

    std::vector<glm::dvec3> vertices_;
    std::vector<std::array<std::int32_t, 3>> indices_; // parallel to tri_
    std::vector<Triangulo> tri_;
    std::vector<glm::dvec3> normales_;
    std::vector<NodoArbol> arbol_;
    std::span<std::int32_t> orden_;                       // while building
    std::span<const std::pair<glm::dvec3, glm::dvec3>> cajas_; // while building
    glm::dvec3 min_{0.0}, max_{0.0};
    bool cerrada_ = false;
};

// The contact of two meshes: whether they clash (their surfaces cross or
// touch, or a corner of one lies inside the other, closed, mesh), the box of
// the contact region and its penetration (see the head of this file).
struct ContactoMallas {
    bool chocan = false;
    double profundidad = 0;
    glm::dvec3 min{0.0}, max{0.0};
    glm::dvec3 centro() const { return (min + max) * 0.5; }
};
// Through the two trees: only triangles whose boxes meet are tested.
ContactoMallas contactoMallas(const MallaElemento& a, const MallaElemento& b);
// Every triangle of one against every triangle of the other.
ContactoMallas contactoMallasDirecto(const MallaElemento& a, const MallaElemento& b);

// The least distance between two meshes and the nearest point of each. 0 when
// they meet or one lies inside the other; nothing when it is not below
// `limite` (nor then is containment looked at).
struct SeparacionMallas {
    double distancia = 0;
    glm::dvec3 enA{0.0}, enB{0.0};
};
std::optional<SeparacionMallas> separacionMallas(const MallaElemento& a, const MallaElemento& b, double limite);
std::optional<SeparacionMallas> separacionMallasDirecta(const MallaElemento& a, const MallaElemento& b,
                                                         double limite);

} // namespace teskal
