#pragma once

#include "scene/Node.h"

#include <cstdint>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <vector>

namespace teskal {

// The nearest surface a ray meets: the node, the world point and the ray
// parameter there (in units of the ray's direction).
struct ImpactoRayo {
    std::shared_ptr<Node> nodo;
    glm::vec3 punto{0.0f};
    float t = 0;
};

// Ray casting over the scene's triangles, cheap enough for every mouse move
// on a federation of millions of triangles: one bounding-volume tree per
// group of elements (the children of one model root, or the floor), over the
// elements' boxes in the group's own coordinates, so that moving a model
// costs nothing and only groups whose elements changed are rebuilt. Helpers
// named "_TESKAL_" (measurement figures, lights, camera) are left out; the
// floor "_TESKAL_Piso" takes part. Hidden nodes are passed over.
class IndiceRayos {
public:
    IndiceRayos();
    ~IndiceRayos();

    // Brings the index up to date when the scene's structure counter is not
    // the one it last saw.
    void actualizar(const Scene& escena);
    // A change of the scene made only on nodes the index leaves out (the
    // measurement's own figures), from counter `antes` to `despues`: the index
    // stays valid. A change it has not seen yet still rebuilds.
    void cambioPropio(std::uint64_t antes, std::uint64_t despues) {
        if (visto_ == antes) visto_ = despues;
    }
    // The nearest triangle along origin + t * direction, t > 0.
    std::optional<ImpactoRayo> lanzar(const glm::vec3& origen, const glm::vec3& direccion) const;

    std::size_t elementos() const;
    // Groups rebuilt by the last update that rebuilt anything.
    std::size_t gruposReconstruidos() const { return reconstruidos_; }

private:
    struct Grupo;
    std::vector<std::unique_ptr<Grupo>> grupos_;
    std::uint64_t visto_ = ~0ull;
    std::weak_ptr<Node> raiz_;
    std::size_t reconstruidos_ = 0;
};

} // namespace teskal
