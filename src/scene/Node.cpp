#include "scene/Node.h"

#include <algorithm>
#include <glm/gtc/matrix_transform.hpp>

namespace teskal {

std::shared_ptr<Node> Node::crear(std::optional<std::string> nombre) {
    std::shared_ptr<Node> n(new Node());
    n->name_ = std::move(nombre);
    return n;
}

void Node::tocarEstructura() {
    if (contadores_) ++contadores_->estructura;
}

void Node::tocarApariencia() {
    if (contadores_) contadores_->tocarApariencia();
}

void Node::tocarAparienciaPropia() {
    if (!contadores_) return;
    if (hijos_.empty()) contadores_->tocarAparienciaDe(this);
    else contadores_->tocarApariencia();
}

void Node::setDiffusePropio(const ContenidoDiffuse& c) {
    if (!geometria_ || geometria_->materiales.empty() || !geometria_->materiales.front()) return;
    const auto& m = geometria_->materiales.front();
    // A geometry or material held elsewhere may be shown by another node.
    if (geometria_.use_count() != 1 || m.use_count() != 1) return m->setDiffuseContenido(c);
    m->diffuse_ = c.color;
    m->diffuseImagen_ = c.imagen;
    tocarAparienciaPropia();
}

void Node::vincularContadores(const std::shared_ptr<SceneCounters>& c) {
    contadores_ = c;
    if (geometria_)
        for (auto& m : geometria_->materiales)
            if (m) m->vincularContadores(c);
    for (auto& h : hijos_) h->vincularContadores(c);
}

void Node::addChildNode(std::shared_ptr<Node> hijo) { insertChildNode(std::move(hijo), hijos_.size()); }

void Node::insertChildNode(std::shared_ptr<Node> hijo, std::size_t lugar) {
    if (!hijo || hijo.get() == this) return;
    hijo->removeFromParentNode();
    hijo->padre_ = weak_from_this();
    if (contadores_) hijo->vincularContadores(contadores_);
    hijos_.insert(hijos_.begin() + static_cast<std::ptrdiff_t>(std::min(lugar, hijos_.size())), std::move(hijo));
    tocarEstructura();
}

void Node::removeFromParentNode() {
    auto padre = padre_.lock();
    if (!padre) return;
    auto& hermanos = padre->hijos_;
    auto it = std::find_if(hermanos.begin(), hermanos.end(),
                           [this](const std::shared_ptr<Node>& h) { return h.get() == this; });
    padre_.reset();
    padre->tocarEstructura();
    if (it != hermanos.end()) hermanos.erase(it); // may release this node: nothing after
}

std::shared_ptr<Node> Node::childNodeWithName(std::string_view nombre, bool recursivamente) const {
    for (const auto& h : hijos_)
        if (h->name_ && *h->name_ == nombre) return h;
    if (recursivamente)
        for (const auto& h : hijos_)
            if (auto n = h->childNodeWithName(nombre, true)) return n;
    return nullptr;
}

void Node::setGeometry(std::shared_ptr<Geometry> g) {
    geometria_ = std::move(g);
    if (contadores_ && geometria_)
        for (auto& m : geometria_->materiales)
            if (m) m->vincularContadores(contadores_);
    tocarEstructura();
}

void Node::setPosition(const glm::vec3& p) {
    posicion_ = p;
    tocarEstructura();
}
void Node::setEulerAngles(const glm::vec3& e) {
    euler_ = e;
    tocarEstructura();
}
void Node::setScale(const glm::vec3& s) {
    escala_ = s;
    tocarEstructura();
}
void Node::setHidden(bool v) {
    if (oculto_ == v) return;
    oculto_ = v;
    tocarAparienciaPropia();
}
void Node::setOpacity(float v) {
    if (opacidad_ == v) return;
    opacidad_ = v;
    tocarAparienciaPropia();
}
void Node::setBillboard(bool v) {
    billboard_ = v;
    tocarApariencia();
}
void Node::setLight(std::optional<Light> l) {
    luz_ = std::move(l);
    tocarEstructura();
}
void Node::setCamera(std::optional<Camera> c) {
    camara_ = std::move(c);
    tocarEstructura();
}

glm::mat4 Node::transform() const {
    glm::mat4 m = glm::translate(glm::mat4(1.0f), posicion_);
    m = glm::rotate(m, euler_.x, glm::vec3(1, 0, 0));
    m = glm::rotate(m, euler_.y, glm::vec3(0, 1, 0));
    m = glm::rotate(m, euler_.z, glm::vec3(0, 0, 1));
    return glm::scale(m, escala_);
}

glm::mat4 Node::worldTransform() const {
    glm::mat4 m = transform();
    for (auto p = padre_.lock(); p; p = p->padre_.lock()) m = p->transform() * m;
    return m;
}

namespace {

void incluirTransformada(Box& caja, const Box& b, const glm::mat4& t) {
    if (b.vacia) return;
    for (int i = 0; i < 8; ++i) {
        const glm::vec3 esquina((i & 1) ? b.max.x : b.min.x, (i & 2) ? b.max.y : b.min.y,
                                (i & 4) ? b.max.z : b.min.z);
        caja.incluir(glm::vec3(t * glm::vec4(esquina, 1.0f)));
    }
}

} // namespace

Box Node::boundingBox() const { return boundingBoxSin({}); }

Box Node::boundingBoxSin(std::initializer_list<std::string_view> nombresHijos) const {
    Box caja;
    if (geometria_) caja.incluir(geometria_->boundingBox());
    for (const auto& h : hijos_) {
        if (h->name_ && std::find(nombresHijos.begin(), nombresHijos.end(), *h->name_) != nombresHijos.end())
            continue;
        incluirTransformada(caja, h->boundingBox(), h->transform());
    }
    return caja;
}

Box Node::boundingBoxMundo() const {
    Box caja;
    incluirTransformada(caja, boundingBox(), worldTransform());
    return caja;
}

Scene::Scene()
    : contadores_(std::make_shared<SceneCounters>()), raiz_(Node::crear()) {
    raiz_->vincularContadores(contadores_);
}

} // namespace teskal
