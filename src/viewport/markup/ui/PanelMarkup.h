#pragma once

#include <QFrame>

class QButtonGroup;
class QLineEdit;
class QPushButton;
class QSlider;

namespace teskal {

class ContentView;

// The markup panel over the 3D view while drawing: the palette, free drawing
// or text, the line width, clearing, the text to place, author and
// description, "Cancelar" and "Guardar".
class PanelMarkup : public QFrame {
    Q_OBJECT
public:
    PanelMarkup(ContentView& cv, QWidget* parent = nullptr);

private:
    void sincronizar();

    ContentView& cv_;
    std::vector<QPushButton*> colores_;
    QPushButton* dibujo_ = nullptr;
    QPushButton* texto_ = nullptr;
    QSlider* grosor_ = nullptr;
    QWidget* filaTexto_ = nullptr;
    QLineEdit* textoPend_ = nullptr;
    QLineEdit* autor_ = nullptr;
    QLineEdit* descripcion_ = nullptr;
};

} // namespace teskal
