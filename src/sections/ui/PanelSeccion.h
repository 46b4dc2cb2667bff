#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSlider;
class QSpinBox;
class QButtonGroup;
class QVBoxLayout;

namespace teskal {

class ContentView;

// The sidebar section "Sección": the switch, and while it is on the axis,
// the position slider, the depth mode, the depth (mode "Con profundidad")
// and "Plano 2D".
class PanelSeccion : public QWidget {
    Q_OBJECT
public:
    explicit PanelSeccion(ContentView& cv, QWidget* parent = nullptr);

private:
    void sincronizar();
    // The slider moves in steps of 0.1 m from the range's lower end.
    double posicionDePaso(int paso) const;

    ContentView& cv_;
    QCheckBox* activar_ = nullptr;
    QWidget* controles_ = nullptr;
    QButtonGroup* ejes_ = nullptr;
    QLabel* valorPosicion_ = nullptr;
    QLabel* minimo_ = nullptr;
    QLabel* maximo_ = nullptr;
    QSlider* posicion_ = nullptr;
    QComboBox* modo_ = nullptr;
    QWidget* filaProfundidad_ = nullptr;
    QSpinBox* profundidad_ = nullptr;
    // The saved sections, one row each, rebuilt after the workspace changes.
    QVBoxLayout* cajaGuardadas_ = nullptr;
    QWidget* guardadas_ = nullptr;
    void reconstruirGuardadas();
};

} // namespace teskal
