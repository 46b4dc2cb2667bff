#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <memory>
#include <vector>

class QFileDialog;
class QLabel;
class QMenu;
class QSplitter;
class QMessageBox;
class QStackedWidget;

namespace teskal {

class CentroNotificaciones;
class ContentView;
struct AnalisisInterferencias;
class DialogoColorEspecialidad;
class DialogoConfigAnalisis;
class DialogoNuevaEspecialidad;
class DialogoTransformacion;
class AlertaModelosAusentes;
class VentanaAcercaDe;
class VisorEscena;
class LienzoMarkupView;
class DialogoDetalleComentario;

// The workbench's main window: the sidebar with its sections, the detail
// column (welcome state or 3D view) with the progress overlay, the menus, and
// the dialogs and alerts that the workspace's pending fields open.
class VentanaPrincipal : public QMainWindow {
    Q_OBJECT
public:
    VentanaPrincipal(ContentView& cv, CentroNotificaciones& centro, QWidget* parent = nullptr);

    VisorEscena* visorEscena() const { return visorEscena_; }
    LienzoMarkupView* lienzoMarkup() const { return lienzo_; }

    // Opens the report of a copy of this analysis in a window of its own,
    // kept (not deleted) when the user closes it.
    void abrirReporte(const AnalisisInterferencias& analisis);
    // The change report of the standing comparison, with its images rendered
    // from the two versions; nothing without a comparison.
    void abrirInformeXOR();
    // The comment report of a copy of the comments as they stand.
    void abrirReporteComentarios();
    const std::vector<std::unique_ptr<QWidget>>& reportWindows() const { return reportWindows_; }
    // "Abrir Timeline": one timeline window at a time, brought to the front
    // when it is open already.
    void abrirTimeLiner();
    const std::vector<std::unique_ptr<QWidget>>& timeLinerWindows() const { return timeLinerWindows_; }
    // The sheet windows opened so far, closed ones included.
    const std::vector<std::unique_ptr<QWidget>>& vista2DWindows() const { return vista2DWindows_; }

protected:
    void closeEvent(QCloseEvent* evento) override;

public:

private:
    void crearMenus();
    QWidget* crearBarraLateral();
    void sincronizar();
    void abrirSelectorArchivo();
    QFileDialog* dialogoArchivo(const QString& titulo, const QString& mensaje, const QString& filtro, bool guardar,
                                const QString& nombre, std::function<void(const QString&)> alAceptar);
    void abrirPanelesProyecto();
    // Opens the sheet the workspace cut (`seccion.planoPorAbrir`).
    void abrirPlano2D();
    void abrirError();
    // The takeoffs the workspace computed, each in a new window.
    void abrirVentanasQTO();
    void abrirEliminarModelo();
    void abrirEliminarAnalisis();
    // "¿Guardar los cambios de «nombre»?" for the workspace's pending action.
    void abrirGuardarCambios();
    // The window fits the screen it opens on, or takes its remembered size.
    void ajustarAPantalla();
    void guardarAjustes();
    void agregarReciente(const QString& ruta);
    void llenarRecientes();
    // A warning alert with a confirming button and "Cancelar"; `confirmar`
    // runs for the first button, `cancelar` for the other and for closing.
    QMessageBox* abrirConfirmacion(const QString& titulo, const QString& mensaje, const QString& boton,
                                   bool destructivo, const QString& nombreObjeto, std::function<void()> confirmar,
                                   std::function<void()> cancelar);

    ContentView& cv_;
    CentroNotificaciones& centro_;
    QStackedWidget* detalle_ = nullptr;
    QWidget* bienvenida_ = nullptr;
    QWidget* visor_ = nullptr;
    VisorEscena* visorEscena_ = nullptr;
    QWidget* superposicion_ = nullptr;
    QLabel* textoProgreso_ = nullptr;
    QPointer<QFileDialog> selector_;
    QPointer<QFileDialog> panelProyecto_;
    QPointer<QMessageBox> avisoPaquete_;
    QPointer<QMessageBox> alertaError_;
    QPointer<QMessageBox> alertaEliminar_;
    QPointer<QMessageBox> alertaEliminarAnalisis_;
    QPointer<QMessageBox> alertaEliminarSeccion_;
    QPointer<QMessageBox> alertaLimpiarXOR_;
    QPointer<QMessageBox> alertaCargarXOR_;
    QPointer<QMessageBox> alertaEliminarComentario_;
    QPointer<DialogoDetalleComentario> detalleComentario_;
    LienzoMarkupView* lienzo_ = nullptr;
    QPointer<DialogoConfigAnalisis> dialogoAnalisis_;
    QPointer<DialogoNuevaEspecialidad> dialogoNueva_;
    QPointer<DialogoColorEspecialidad> dialogoColor_;
    QPointer<DialogoTransformacion> dialogoTransformacion_;
    QPointer<VentanaAcercaDe> acercaDe_;
    QPointer<QMessageBox> alertaGuardar_;
    QPointer<AlertaModelosAusentes> alertaAusentes_;
    QMenu* recientes_ = nullptr;
    QSplitter* division_ = nullptr;
    QString ultimaRuta_;       // the project file last seen, for the recent list
    bool cierrePedido_ = false; // the close the workspace allowed is under way
    bool cerrada_ = false;
    std::vector<std::unique_ptr<QWidget>> reportWindows_;
    std::vector<std::unique_ptr<QWidget>> timeLinerWindows_;
    std::vector<std::unique_ptr<QWidget>> vista2DWindows_;
};

} // namespace teskal
