#pragma once

#include "scene/Color.h"
#include "scene/SceneCounters.h"

#include <cstdint>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <vector>

namespace teskal {

// Raw pixels for a material's contents: RGBA, 8 bits a channel, rows top down.
struct ImagenRGBA {
    int ancho = 0;
    int alto = 0;
    std::vector<std::uint8_t> pixeles;
};

enum class ModeloIluminacion { Phong, Lambert, Constante };

// What a material's diffuse channel holds: a colour, an image, or nothing.
struct ContenidoDiffuse {
    std::optional<Color> color;
    std::shared_ptr<const ImagenRGBA> imagen;
    friend bool operator==(const ContenidoDiffuse&, const ContenidoDiffuse&) = default;
};

class Node;

// A surface's look. Every setter bumps the appearance counter of the scene
// the material is shown in, so the renderer sees the change.
class Material {
public:
    const std::optional<Color>& diffuse() const { return diffuse_; }
    const std::shared_ptr<const ImagenRGBA>& diffuseImagen() const { return diffuseImagen_; }
    // True when the diffuse channel holds neither a colour nor an image.
    bool diffuseVacio() const { return !diffuse_ && !diffuseImagen_; }
    ContenidoDiffuse diffuseContenido() const { return {diffuse_, diffuseImagen_}; }
    const Color& emission() const { return emission_; }
    float transparency() const { return transparency_; }
    ModeloIluminacion lightingModel() const { return lightingModel_; }
    bool isDoubleSided() const { return doubleSided_; }
    bool writesToDepthBuffer() const { return writesDepth_; }
    bool readsFromDepthBuffer() const { return readsDepth_; }
    int renderingOrder() const { return renderingOrder_; }
    const glm::vec3& escalaContenido() const { return escalaContenido_; }
    bool repetirContenido() const { return repetir_; }

    void setDiffuse(const Color& c);
    void setDiffuseImagen(std::shared_ptr<const ImagenRGBA> imagen);
    // Puts back contents read with diffuseContenido, whichever they are.
    void setDiffuseContenido(const ContenidoDiffuse& c);
    void setEmission(const Color& c);
    void setTransparency(float opacidad);
    void setLightingModel(ModeloIluminacion m);
    void setDoubleSided(bool v);
    void setWritesToDepthBuffer(bool v);
    void setReadsFromDepthBuffer(bool v);
    void setRenderingOrder(int orden);
    // Texture tiling: the scale of the contents transform and repeat wrapping.
    void setEscalaContenido(const glm::vec3& escala);
    void setRepetirContenido(bool v);

    // The counters of the scene that shows this material (set on attach).
    void vincularContadores(const std::shared_ptr<SceneCounters>& c) { contadores_ = c; }

private:
    friend class Node; // Node::setDiffusePropio logs the change as its own
    void tocar();

    std::optional<Color> diffuse_;
    std::shared_ptr<const ImagenRGBA> diffuseImagen_;
    Color emission_{0, 0, 0, 1};
    float transparency_ = 1.0f;
    ModeloIluminacion lightingModel_ = ModeloIluminacion::Phong;
    bool doubleSided_ = false;
    bool writesDepth_ = true;
    bool readsDepth_ = true;
    int renderingOrder_ = 0;
    glm::vec3 escalaContenido_{1.0f};
    bool repetir_ = false;
    std::weak_ptr<SceneCounters> contadores_;
};

} // namespace teskal
