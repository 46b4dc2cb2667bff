#pragma once

#include "scene/Box.h"
#include "scene/Camera.h"
#include "scene/Geometry.h"
#include "scene/Light.h"
#include "scene/SceneCounters.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// A node of the scene tree. Children are owned; the parent is weak. Identity
// is object identity. Setters bump the counters of the scene the node is in.
class Node : public std::enable_shared_from_this<Node> {
public:
    static std::shared_ptr<Node> crear(std::optional<std::string> nombre = std::nullopt);

    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> nombre) { name_ = std::move(nombre); }
    bool nombreEmpiezaCon(std::string_view prefijo) const {
        return name_ && std::string_view(*name_).substr(0, prefijo.size()) == prefijo;
    }

    // The IFC element this node draws: its GlobalId and its class in the
    // schema's spelling (IfcWallStandardCase), as the converter reported them.
    // Empty when the converter gave no identity (then the element is known by
    // its name alone).
    const std::string& globalId() const { return globalId_; }
    const std::string& claseIFC() const { return claseIFC_; }
    void setIdentidadIFC(std::string globalId, std::string clase) {
        globalId_ = std::move(globalId);
        claseIFC_ = std::move(clase);
    }

    const std::vector<std::shared_ptr<Node>>& childNodes() const { return hijos_; }
    std::shared_ptr<Node> parent() const { return padre_.lock(); }
    void addChildNode(std::shared_ptr<Node> hijo);
    // Inserts the child at this place among the children (clamped to the end).
    void insertChildNode(std::shared_ptr<Node> hijo, std::size_t lugar);
    void removeFromParentNode();
    // The first descendant (depth first) or child with this exact name.
    std::shared_ptr<Node> childNodeWithName(std::string_view nombre, bool recursivamente) const;

    // Walks the descendants depth first, the node itself excluded. The visitor
    // receives (Node&, bool& stop); setting stop ends the walk.
    template <class F> void enumerateChildNodes(F&& visitar) {
        bool parar = false;
        enumerarDesde(*this, visitar, parar);
    }

    const std::shared_ptr<Geometry>& geometry() const { return geometria_; }
    void setGeometry(std::shared_ptr<Geometry> g);

    const glm::vec3& position() const { return posicion_; }
    const glm::vec3& eulerAngles() const { return euler_; }
    const glm::vec3& scale() const { return escala_; }
    void setPosition(const glm::vec3& p);
    void setEulerAngles(const glm::vec3& e);
    void setScale(const glm::vec3& s);
    // Translation, then rotation (roll about Z first, then yaw about Y, then
    // pitch about X), then scale: parent coordinates from own coordinates.
    glm::mat4 transform() const;
    glm::mat4 worldTransform() const;

    bool isHidden() const { return oculto_; }
    void setHidden(bool v);
    float opacity() const { return opacidad_; }
    void setOpacity(float v);

    // A billboard keeps its own XY plane facing the camera, turned with it:
    // its world rotation is the camera's, whatever the tree gives it.
    bool billboard() const { return billboard_; }
    void setBillboard(bool v);

    const std::optional<Light>& light() const { return luz_; }
    void setLight(std::optional<Light> l);
    const std::optional<Camera>& camera() const { return camara_; }
    void setCamera(std::optional<Camera> c);

    // Box of the own geometry and of all children, in own coordinates.
    Box boundingBox() const;
    // The same box without the children that bear one of these names.
    Box boundingBoxSin(std::initializer_list<std::string_view> nombresHijos) const;
    // The same box carried into world coordinates (its eight corners).
    Box boundingBoxMundo() const;

    // Ties this subtree (nodes and materials) to a scene's counters.
    void vincularContadores(const std::shared_ptr<SceneCounters>& c);
    // Marks an appearance change made directly on this node's materials.
    void tocarApariencia();
    // Sets the diffuse contents of the first material. When this node alone
    // shows that material (a geometry and a material of its own, no
    // children), the change is logged as this node's, and the renderer
    // rewrites the state of this node only. Does nothing without a material.
    void setDiffusePropio(const ContenidoDiffuse& c);

private:
    Node() = default;
    template <class F> static void enumerarDesde(Node& n, F& visitar, bool& parar) {
        for (std::size_t i = 0; i < n.hijos_.size() && !parar; ++i) {
            // Hold the child: the visitor may detach it from the tree.
            std::shared_ptr<Node> hijo = n.hijos_[i];
            visitar(*hijo, parar);
            if (!parar) enumerarDesde(*hijo, visitar, parar);
        }
    }
    void tocarEstructura();
    // An appearance change of this node's own: logged by node for a leaf,
    // whose look reaches no other node.
    void tocarAparienciaPropia();

    std::optional<std::string> name_;
    std::string globalId_;
    std::string claseIFC_;
    std::vector<std::shared_ptr<Node>> hijos_;
    std::weak_ptr<Node> padre_;
    std::shared_ptr<Geometry> geometria_;
    glm::vec3 posicion_{0.0f};
    glm::vec3 euler_{0.0f};
    glm::vec3 escala_{1.0f};
    bool oculto_ = false;
    float opacidad_ = 1.0f;
    bool billboard_ = false;
    std::optional<Light> luz_;
    std::optional<Camera> camara_;
    std::shared_ptr<SceneCounters> contadores_;
};

// The one scene of a workspace: a root node and the counters of its tree.
class Scene {
public:
    Scene();
    const std::shared_ptr<Node>& rootNode() const { return raiz_; }
    const SceneCounters& contadores() const { return *contadores_; }

private:
    std::shared_ptr<SceneCounters> contadores_;
    std::shared_ptr<Node> raiz_;
};

} // namespace teskal
