#pragma once

#include <QWidget>
#include <string>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The sidebar section of disciplines and their linked models. It is drawn
// from the workspace's fields and rebuilt, once per turn of the event loop,
// whenever they change.
class PanelFederacion : public QWidget {
    Q_OBJECT
public:
    explicit PanelFederacion(ContentView& cv, QWidget* parent = nullptr);

private:
    void reconstruir();
    QWidget* filaEspecialidad(const std::string& clave);
    QWidget* filaModelo(const std::string& clave, const std::string& id);
    void menuEspecialidad(const std::string& clave, const QPoint& donde);
    void llenarMenuModelo(class QMenu& menu, const std::string& clave, const std::string& id);

    ContentView& cv_;
    QVBoxLayout* lista_ = nullptr;
    QWidget* contenido_ = nullptr;
};

} // namespace teskal
