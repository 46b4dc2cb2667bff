#include "viewport/ViewportController.h"

#include "scene/Orientacion.h"

#include <algorithm>

namespace teskal {

ViewportController::ViewportController(QObject* parent) : QObject(parent) {
    animacion_.setStartValue(0.0);
    animacion_.setEndValue(1.0);
    animacion_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&animacion_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& v) { aplicarPaso(v.toDouble()); });
}

void ViewportController::aplicarPaso(double t) {
    auto camara = camara_.lock();
    if (!camara) return;
    const float f = static_cast<float>(t);
    camara->setPosition(posicionInicial_ + (posicionFinal_ - posicionInicial_) * f);
    camara->setEulerAngles(eulerDeCuaternion(glm::slerp(giroInicial_, giroFinal_, f)));
    emit camaraCambiada();
}

void ViewportController::mover(const glm::vec3& posicion, const glm::vec3& objetivo, int milisegundos) {
    auto camara = camara_.lock();
    if (!camara) return;
    animacion_.stop();
    posicionInicial_ = camara->position();
    giroInicial_ = cuaternionDeEuler(camara->eulerAngles());
    posicionFinal_ = posicion;
    giroFinal_ = cuaternionDeEuler(eulerMirandoHacia(objetivo - posicion));
    if (glm::dot(giroInicial_, giroFinal_) < 0) giroInicial_ = -giroInicial_; // the short way round
    animacion_.setDuration(milisegundos);
    animacion_.start();
}

void ViewportController::terminarAnimacion() {
    if (!animando()) return;
    animacion_.stop();
    aplicarPaso(1.0);
}

void ViewportController::enfocarCaja(const glm::dvec3& c, float r) {
    auto camara = camara_.lock();
    if (!camara || !camara->camera()) return;
    Camera cam = *camara->camera();
    cam.zFar = r * 100.0f;
    cam.zNear = std::max(r * 0.001f, 0.01f);
    camara->setCamera(cam);
    const glm::vec3 centro(c);
    mover(centro + glm::vec3(r, -r, r), centro, 800);
}

void ViewportController::aplicarVista(VistaPreset vista, const glm::dvec3& c, float r) {
    auto camara = camara_.lock();
    if (!camara || !camara->camera()) return;
    Camera cam = *camara->camera();
    cam.zFar = r * 200.0f;
    cam.zNear = std::max(r * 0.001f, 0.01f);
    camara->setCamera(cam);
    const glm::vec3 centro(c);
    const float d = r * 2.5f;
    // Up is the world's Z; the view from above, along Z, takes Y.
    glm::vec3 desde(0.0f);
    switch (vista) {
    case VistaPreset::arriba: desde = {0, 0, d}; break;
    case VistaPreset::frontal: desde = {0, -d, 0}; break;
    case VistaPreset::posterior: desde = {0, d, 0}; break;
    case VistaPreset::izquierda: desde = {-d, 0, 0}; break;
    case VistaPreset::derecha: desde = {d, 0, 0}; break;
    case VistaPreset::isoIzquierda: desde = {-d, -d, 0.7f * d}; break;
    case VistaPreset::isoDerecha: desde = {d, -d, 0.7f * d}; break;
    }
    mover(centro + desde, centro, 600);
}

void ViewportController::volarA(const glm::vec3& posicion, const glm::vec3& objetivo, float cercano, float lejano,
                                int milisegundos) {
    auto camara = camara_.lock();
    if (!camara || !camara->camera()) return;
    Camera cam = *camara->camera();
    cam.zFar = lejano;
    cam.zNear = cercano;
    camara->setCamera(cam);
    mover(posicion, objetivo, milisegundos);
}

void ViewportController::actualizarCercano(std::optional<double> anterior, std::optional<double> actual,
                                           const Node& raiz) {
    auto camara = camara_.lock();
    if (!camara || !camara->camera()) return;
    Camera cam = *camara->camera();
    if (actual) {
        cam.zNear = static_cast<float>(*actual);
    } else if (!anterior) {
        return; // a camera that the user has moved is left alone
    } else {
        const glm::vec3 tam = raiz.boundingBoxSin({nombrePisoEscena, nombreGrillasEscena}).tamano();
        const float m = std::max({tam.x, tam.y, tam.z});
        cam.zNear = m > 0 ? std::max(m * 0.001f, 0.01f) : 0.01f;
    }
    if (cam.zNear == camara->camera()->zNear) return;
    camara->setCamera(cam);
    emit camaraCambiada();
}

} // namespace teskal
