#pragma once

#include "scene/Node.h"
#include "viewport/VistaPreset.h"

#include <QObject>
#include <QVariantAnimation>
#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>
#include <memory>
#include <optional>
#include <string_view>

namespace teskal {

// The level-1 helpers that the camera's measures of the scene leave out: the
// floor, 5 km wide whatever the model, and the grid lines, whose axes may run
// kilometres past the elements.
inline constexpr std::string_view nombrePisoEscena = "_TESKAL_Piso";
inline constexpr std::string_view nombreGrillasEscena = "GrillasIFC";

// The one way for the rest of the workbench to move the camera. It holds the
// view's point of view weakly: once the view is gone, calls do nothing. Moves
// are animated with ease-in-ease-out; a new move takes over from wherever the
// camera stands.
class ViewportController : public QObject {
    Q_OBJECT
public:
    explicit ViewportController(QObject* parent = nullptr);

    void vincularPuntoDeVista(const std::shared_ptr<Node>& camara) { camara_ = camara; }
    std::shared_ptr<Node> puntoDeVista() const { return camara_.lock(); }

    // Looks at the centre from (c.x + r, c.y - r, c.z + r) in 0.8 s.
    void enfocarCaja(const glm::dvec3& centro, float tamano);
    // Moves to the preset at a distance of 2.5 r in 0.6 s.
    void aplicarVista(VistaPreset vista, const glm::dvec3& centro, float tamano);
    // Flies to a stored viewpoint with these clipping planes.
    void volarA(const glm::vec3& posicion, const glm::vec3& objetivo, float cercano, float lejano, int milisegundos);
    // Applies the near-plane override; when it has just gone, sets the near
    // plane from the size of the elements under `raiz`: the floor and the
    // grid lines are left out, so that a 5 km floor does not push it to 5 m.
    void actualizarCercano(std::optional<double> anterior, std::optional<double> actual, const Node& raiz);

    bool animando() const { return animacion_.state() == QAbstractAnimation::Running; }
    // Jumps to the end of the running move.
    void terminarAnimacion();
    // Stops the running move where it stands (the user took the camera).
    void detenerAnimacion() { animacion_.stop(); }

signals:
    // The camera moved or changed: the view should draw again.
    void camaraCambiada();

private:
    // Every move looks at its target with Z as the world's vertical (Y when
    // the view runs along Z).
    void mover(const glm::vec3& posicion, const glm::vec3& objetivo, int milisegundos);
    void aplicarPaso(double t);

    std::weak_ptr<Node> camara_;
    QVariantAnimation animacion_;
    glm::vec3 posicionInicial_{0.0f}, posicionFinal_{0.0f};
    glm::quat giroInicial_{1, 0, 0, 0}, giroFinal_{1, 0, 0, 0};
};

} // namespace teskal
