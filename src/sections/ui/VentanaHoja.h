#pragma once

#include "sections/HojaSeccion.h"

#include <QWidget>
#include <functional>

class QLabel;
class QToolButton;
class QFrame;
class QSlider;

namespace teskal {

// The canvas of a sheet: its state, the mouse, the wheel and Esc, and the
// drawing through dibujarHoja.
class VistaHoja : public QWidget {
    Q_OBJECT
public:
    explicit VistaHoja(QWidget* parent = nullptr);
    EstadoHoja hoja;

signals:
    // The lists changed (a dimension or label was added, moved or removed).
    void contenidoCambiado();

protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseDoubleClickEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void wheelEvent(QWheelEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;

private:
    void pulsar(QMouseEvent* e, int clics);
};

// The window of one sheet: the toolbar, the canvas and the status line. It
// keeps the lists it was opened with; closing it hands its dimensions and
// labels to `alGuardar`.
class VentanaHoja : public QWidget {
    Q_OBJECT
public:
    VentanaHoja(Plano2D plano, QWidget* parent = nullptr);

    const std::string& titulo() const { return titulo_; }
    VistaHoja* vista() const { return vista_; }
    // Runs when the window closes, with the sheet's current lists.
    std::function<void(const std::string&, const std::vector<Cota2D>&, const std::vector<Etiqueta2D>&)> alGuardar;
    // "Guardar": a saved section of this name in the side panel.
    std::function<void(const std::string&)> alGuardarSeccion;
    // "PDF": the save panel, then the sheet exactly as it stands on the
    // screen (zoom, pan, overlays) on one page of the view's size in points.
    void exportarPDF();
    bool escribirPDF(const QString& ruta);
    // "Guardar": keeps the sheet's lists, then asks for the section's name.
    void guardar();
    // "DXF": the save panel, then the file of the sheet as it stands.
    void exportarDXF();
    // Writes the sheet's DXF to the file atomically; a failure shows the
    // alert "Error al exportar DXF" and returns false.
    bool escribirDXF(const QString& ruta);
    // The sheet's title as a file name: "/" to "-", no ":", blanks to "_".
    QString nombreArchivo() const;

protected:
    void closeEvent(QCloseEvent* e) override;
    bool eventFilter(QObject* objeto, QEvent* evento) override;

private:
    // The toolbar's states written to the canvas; a first dimension point
    // and the snap target are dropped at every such update.
    void actualizarVista();
    void actualizarEstado();

    std::string titulo_;
    VistaHoja* vista_ = nullptr;
    QToolButton* etiquetas_ = nullptr;
    QToolButton* etiquetar_ = nullptr;
    QToolButton* cota_ = nullptr;
    QToolButton* grosor_ = nullptr;
    QFrame* popoverGrosor_ = nullptr;
    QSlider* grosorCorte_ = nullptr;
    QSlider* grosorProyeccion_ = nullptr;
    QLabel* estado_ = nullptr;
    QToolButton* guardar_ = nullptr;
    bool guardadoFlash_ = false;
    void mostrarGuardado();
    void alertaError(const QString& texto, const QString& detalle);
};

} // namespace teskal
