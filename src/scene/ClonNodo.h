#pragma once

#include "scene/Node.h"

#include <memory>

namespace teskal {

// A copy of a node and its whole subtree, detached from any scene: names,
// transforms, hidden flags, opacities, lights and cameras are copied, while
// geometries (and so their materials) are shared with the original, so that a
// copy costs no vertex data until someone gives it a geometry of its own.
std::shared_ptr<Node> clonarNodo(const Node& original);

} // namespace teskal
