#include "scene/Material.h"

namespace teskal {

void Material::tocar() {
    if (auto c = contadores_.lock()) c->tocarApariencia();
}

void Material::setDiffuse(const Color& c) {
    diffuse_ = c;
    diffuseImagen_.reset();
    tocar();
}
void Material::setDiffuseImagen(std::shared_ptr<const ImagenRGBA> imagen) {
    diffuseImagen_ = std::move(imagen);
    diffuse_.reset();
    tocar();
}
void Material::setDiffuseContenido(const ContenidoDiffuse& c) {
    diffuse_ = c.color;
    diffuseImagen_ = c.imagen;
    tocar();
}
void Material::setEmission(const Color& c) {
    emission_ = c;
    tocar();
}
void Material::setTransparency(float opacidad) {
    transparency_ = opacidad;
    tocar();
}
void Material::setLightingModel(ModeloIluminacion m) {
    lightingModel_ = m;
    tocar();
}
void Material::setDoubleSided(bool v) {
    doubleSided_ = v;
    tocar();
}
void Material::setWritesToDepthBuffer(bool v) {
    writesDepth_ = v;
    tocar();
}
void Material::setReadsFromDepthBuffer(bool v) {
    readsDepth_ = v;
    tocar();
}
void Material::setRenderingOrder(int orden) {
    renderingOrder_ = orden;
    tocar();
}
void Material::setEscalaContenido(const glm::vec3& escala) {
    escalaContenido_ = escala;
    tocar();
}
void Material::setRepetirContenido(bool v) {
    repetir_ = v;
    tocar();
}

} // namespace teskal
