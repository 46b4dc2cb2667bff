#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace teskal {

class Node;

// The two change counters of a scene. Structure moves when nodes come or go,
// when geometry changes or a node moves; appearance moves when a colour,
// an opacity, a hidden flag or a material setting changes. The renderer
// re-uploads only what a counter says changed.
//
// Appearance changes that concern one leaf node alone (its opacity, its
// hidden flag, a material that no other node shows) are also logged by node,
// so that a reader rewrites the state of those nodes only. The log covers
// every appearance change after `registroDesde`: entry k is the change that
// took the counter to registroDesde + k + 1. Any other appearance change
// empties it and moves `registroDesde` to the present count.
struct SceneCounters {
    std::uint64_t estructura = 0;
    std::uint64_t apariencia = 0;
    std::uint64_t registroDesde = 0;
    std::vector<const Node*> registro;

    // Past this many entries the log starts again: a reader then rewrites
    // everything, which costs less than reading the log.
    static constexpr std::size_t limiteRegistro = std::size_t{1} << 20;

    // A change whose reach is not one node.
    void tocarApariencia() {
        ++apariencia;
        registro.clear();
        registroDesde = apariencia;
    }
    // A change of this leaf node alone.
    void tocarAparienciaDe(const Node* n) {
        if (registro.size() >= limiteRegistro) return tocarApariencia();
        ++apariencia;
        registro.push_back(n);
    }
    // The nodes changed since a reader saw the count `visto`, or none when
    // the log does not reach back that far (the reader rewrites everything).
    // Nodes may repeat.
    std::optional<std::span<const Node* const>> cambiosDesde(std::uint64_t visto) const {
        if (visto < registroDesde || visto > apariencia) return std::nullopt;
        return std::span<const Node* const>(registro).subspan(static_cast<std::size_t>(visto - registroDesde));
    }
};

} // namespace teskal
