#pragma once

#include <glm/common.hpp>
#include <glm/vec3.hpp>

namespace teskal {

// An axis-aligned box. An empty box reads as min = max = (0, 0, 0), as a node
// with nothing under it reports.
struct Box {
    glm::vec3 min{0.0f};
    glm::vec3 max{0.0f};
    bool vacia = true;

    void incluir(const glm::vec3& p) {
        if (vacia) {
            min = max = p;
            vacia = false;
            return;
        }
        min = glm::min(min, p);
        max = glm::max(max, p);
    }
    void incluir(const Box& otra) {
        if (otra.vacia) return;
        incluir(otra.min);
        incluir(otra.max);
    }
    glm::vec3 centro() const { return (min + max) * 0.5f; }
    glm::vec3 tamano() const { return max - min; }
};

} // namespace teskal
