#include "scene/ClonNodo.h"

namespace teskal {

std::shared_ptr<Node> clonarNodo(const Node& original) {
    auto copia = Node::crear(original.name());
    copia->setIdentidadIFC(original.globalId(), original.claseIFC());
    copia->setGeometry(original.geometry());
    copia->setPosition(original.position());
    copia->setEulerAngles(original.eulerAngles());
    copia->setScale(original.scale());
    copia->setHidden(original.isHidden());
    copia->setOpacity(original.opacity());
    copia->setLight(original.light());
    copia->setCamera(original.camera());
    for (const auto& hijo : original.childNodes()) copia->addChildNode(clonarNodo(*hijo));
    return copia;
}

} // namespace teskal
