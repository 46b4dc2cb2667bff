#pragma once

#include <QFrame>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The legend over the 3D view: the disciplines that have models with their
// colours, "Aplicar colores", and while an element is selected its panel
// "Propiedades" with "Deseleccionar".
class LeyendaVisor : public QFrame {
    Q_OBJECT
public:
    explicit LeyendaVisor(ContentView& cv, QWidget* parent = nullptr);

private:
    void reconstruir();

    ContentView& cv_;
    QVBoxLayout* caja_ = nullptr;
    QWidget* contenido_ = nullptr;
};

} // namespace teskal
