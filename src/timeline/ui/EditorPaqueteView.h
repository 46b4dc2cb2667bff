#pragma once

#include "timeline/PaqueteAWP.h"

#include <QDialog>
#include <QLayout>
#include <QWidget>
#include <set>
#include <vector>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTreeWidget;

namespace teskal {

class ContentView;

// A numeric input bound to a double: shows the value with its decimals
// unless it is being typed in, and writes what is typed ("," read as ".")
// when it differs from the value by more than 0.001.
class CampoNumerico : public QWidget {
    Q_OBJECT
public:
    CampoNumerico(const QString& titulo, double* valor, const QString& placeholder, int decimales,
                  bool layoutVertical, QWidget* parent = nullptr);
    // Shows the bound value again (after it changed elsewhere).
    void refrescar();
    QLineEdit* campo() const { return texto_; }

signals:
    void valorCambiado();

protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;

private:
    double* valor_;
    int decimales_;
    QLineEdit* texto_ = nullptr;
};

// Places its items in rows from left to right, wrapping where the next would
// pass the offered width: the chips of the assigned elements.
class FlowLayout : public QLayout {
public:
    explicit FlowLayout(QWidget* parent, int spacing = 4);
    ~FlowLayout() override;
    void addItem(QLayoutItem* item) override;
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem* itemAt(int i) const override;
    QLayoutItem* takeAt(int i) override;
    QSize sizeHint() const override { return minimumSize(); }
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int ancho) const override { return colocar(QRect(0, 0, ancho, 0), false); }
    void setGeometry(const QRect& r) override;

private:
    int colocar(const QRect& r, bool aplicar) const;
    std::vector<QLayoutItem*> items_;
    int spacing_;
};

// The package editor, on a copy: nothing reaches the plan until "Guardar",
// which the form's rules enable. Cancelling drops the copy.
class EditorPaqueteView : public QDialog {
    Q_OBJECT
public:
    EditorPaqueteView(ContentView& cv, PaqueteAWP copia, QWidget* parent = nullptr);

    const PaqueteAWP& paquete() const { return paquete_; }

private:
    QWidget* crearFormulario();
    QWidget* crearElementos();
    void llenarPadres();
    void llenarElementos();
    void llenarChips();
    void actualizar();

    ContentView& cv_;
    PaqueteAWP paquete_;
    bool existe_ = false;
    std::set<std::string> espExpandidas;
    QLineEdit* codigo_ = nullptr;
    QLineEdit* nombre_ = nullptr;
    QComboBox* nivel_ = nullptr;
    QComboBox* padre_ = nullptr;
    QDateEdit* inicio_ = nullptr;
    QDateEdit* fin_ = nullptr;
    QCheckBox* conInicioReal_ = nullptr;
    QCheckBox* conFinReal_ = nullptr;
    QDateEdit* inicioReal_ = nullptr;
    QDateEdit* finReal_ = nullptr;
    QLabel* desviaciones_ = nullptr;
    QSlider* avance_ = nullptr;
    QLabel* textoAvance_ = nullptr;
    QWidget* cifras_ = nullptr;  // IWP and PWP: the numeric fields
    QLabel* rollUps_ = nullptr;  // CWA and CWP: the roll-ups, read-only
    QLabel* factor_ = nullptr;
    QLineEdit* busqueda_ = nullptr;
    QTreeWidget* arbolElementos_ = nullptr;
    QLabel* sinResultados_ = nullptr;
    QLabel* cuentaElementos_ = nullptr;
    QWidget* chips_ = nullptr;
    QLabel* error_ = nullptr;
    QLabel* aviso_ = nullptr;
    QPushButton* guardar_ = nullptr;
};

} // namespace teskal
