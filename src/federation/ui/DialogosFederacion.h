#pragma once

#include <QDialog>

class QColorDialog;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;

namespace teskal {

class ContentView;

// The sheet "Nueva Especialidad": name, symbol and colour of a new discipline.
class DialogoNuevaEspecialidad : public QDialog {
    Q_OBJECT
public:
    DialogoNuevaEspecialidad(ContentView& cv, QWidget* parent);

private:
    ContentView& cv_;
    QLineEdit* nombre_;
    QLineEdit* icono_;
    QColor color_;
};

// The colour sheet of a discipline.
class DialogoColorEspecialidad : public QDialog {
    Q_OBJECT
public:
    DialogoColorEspecialidad(ContentView& cv, QWidget* parent);

private:
    ContentView& cv_;
    QColorDialog* selector_;
};

// The sheet "Transformación del modelo": units, offsets in metres, turn about Z.
class DialogoTransformacion : public QDialog {
    Q_OBJECT
public:
    DialogoTransformacion(ContentView& cv, QWidget* parent);

private:
    void mostrar(const struct TransformacionModelo& t);

    ContentView& cv_;
    QComboBox* unidades_;
    QDoubleSpinBox* offset_[3];
    QDoubleSpinBox* giro_;
};

} // namespace teskal
