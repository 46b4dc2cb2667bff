#pragma once

#include "viewport/medicion/EstadoMedicion.h"
#include "viewport/render/RenderizadorEscena.h"

#include <QOpenGLWidget>
#include <QTimer>
#include <memory>
#include <optional>

class QShortcut;

namespace teskal {

class ContentView;

// The 3D view of the workspace's scene: draws it with the batched renderer,
// orbits (left drag), pans (right or middle drag) and dollies (wheel) its own
// camera, and turns a click into the selection of the element under it, or,
// while a measuring tool is on, into a measured point (hovering shows the
// snap ring and the rubber band).
class VisorEscena : public QOpenGLWidget {
    Q_OBJECT
public:
    explicit VisorEscena(ContentView& cv, QWidget* parent = nullptr);
    ~VisorEscena() override;

    const std::shared_ptr<Node>& camara() const { return camara_; }
    // The element under a point of the widget and the world point there.
    std::optional<ResultadoPick> elegirEn(QPoint punto, bool incluirPiso);
    // The click of the view: in selection, the nearest element that is not
    // the floor is selected, or nothing.
    void alClicar(QPoint punto);
    const EstadisticasRender& estadisticas() const { return render_.estadisticas(); }
    // The camera and the mouse as the measuring commands take them.
    VistaRaton vistaRaton(QPointF punto) const;

protected:
    void initializeGL() override;
    void paintGL() override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void wheelEvent(QWheelEvent* e) override;

private:
    void alCambiarEspacio();
    void orbitar(float dx, float dy);
    void desplazar(float dx, float dy);
    void acercar(float pasos);

    ContentView& cv_;
    RenderizadorEscena render_;
    std::shared_ptr<Node> camara_;
    QTimer sondeo_;
    QShortcut* escape_ = nullptr; // live only during a ghosted focus
    std::uint64_t estructuraVista_ = 0, aparienciaVista_ = 0;
    std::optional<double> cercanoAnterior_;
    QPoint pulsado_, ultimo_;
    Qt::MouseButton boton_ = Qt::NoButton;
    bool movido_ = false;
    glm::vec3 pivote_{0.0f};
};

} // namespace teskal
