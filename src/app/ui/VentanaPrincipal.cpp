#include "app/ui/VentanaPrincipal.h"

#include "analyses/clash/ui/DialogoConfigAnalisis.h"
#include "analyses/clash/ui/PanelInterferencias.h"
#include "analyses/clash/ui/ReporteAnalisisView.h"
#include "analyses/xor/ReporteXOR.h"
#include "analyses/xor/ui/PanelComparacionXOR.h"
#include "analyses/xor/ui/ReporteXORView.h"
#include "app/ui/AlertaModelosAusentes.h"
#include "app/ui/VentanaAcercaDe.h"
#include "app/ui/VistaBienvenida.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "federation/ui/DialogosFederacion.h"
#include "federation/ui/PanelFederacion.h"
#include "viewport/markup/ui/LienzoMarkupView.h"
#include "viewport/markup/ui/PanelComentarios.h"
#include "viewport/markup/ui/PanelMarkup.h"
#include "viewport/markup/ui/ReporteComentariosView.h"
#include "qto/ui/QuantityTakeoffView.h"
#include "timeline/ui/PanelTimeline.h"
#include "timeline/ui/TimeLinerView.h"
#include "sections/ui/PanelSeccion.h"
#include "sections/ui/VentanaHoja.h"
#include "viewport/ui/BarraVisor.h"
#include "viewport/ui/LeyendaVisor.h"
#include "viewport/ui/VisorEscena.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace teskal {

namespace {

QLabel* tituloSeccion(const QString& texto, QWidget* padre) {
    auto* l = new QLabel(texto, padre);
    l->setStyleSheet(QStringLiteral("font-weight: bold; color: gray; padding: 8px 4px 2px 4px;"));
    return l;
}

} // namespace

VentanaPrincipal::VentanaPrincipal(ContentView& cv, CentroNotificaciones& centro, QWidget* parent)
    : QMainWindow(parent), cv_(cv), centro_(centro) {
    crearMenus();

    // The detail column: welcome state or 3D view, with the overlay above.
    auto* columnaDetalle = new QWidget(this);
    auto* capas = new QGridLayout(columnaDetalle);
    capas->setContentsMargins(0, 0, 0, 0);
    detalle_ = new QStackedWidget(columnaDetalle);
    bienvenida_ = new VistaBienvenida(cv_, centro_, detalle_);
    // The 3D view with the toolbar and the legend floating over it.
    visor_ = new QWidget(detalle_);
    visor_->setObjectName(QStringLiteral("visor3D"));
    auto* capasVisor = new QGridLayout(visor_);
    capasVisor->setContentsMargins(0, 0, 0, 0);
    visorEscena_ = new VisorEscena(cv_, visor_);
    capasVisor->addWidget(visorEscena_, 0, 0);
    auto* herramientas = new BarraVisor(cv_, visor_);
    capasVisor->addWidget(herramientas, 0, 0, Qt::AlignTop | Qt::AlignHCenter);
    auto* leyenda = new LeyendaVisor(cv_, visor_);
    capasVisor->addWidget(leyenda, 0, 0, Qt::AlignTop | Qt::AlignRight);
    // The markup canvas over the view, and its panel over the canvas.
    lienzo_ = new LienzoMarkupView(cv_, visor_);
    capasVisor->addWidget(lienzo_, 0, 0);
    capasVisor->addWidget(new PanelMarkup(cv_, visor_), 0, 0, Qt::AlignBottom | Qt::AlignHCenter);
    cv_.markup.capturarVista = [this] { return capturarVistaMarkup(visorEscena_, lienzo_); };

    detalle_->addWidget(bienvenida_);
    detalle_->addWidget(visor_);
    capas->addWidget(detalle_, 0, 0);

    superposicion_ = new QWidget(columnaDetalle);
    superposicion_->setObjectName(QStringLiteral("progreso"));
    superposicion_->setAttribute(Qt::WA_StyledBackground);
    superposicion_->setStyleSheet(
        QStringLiteral("#progreso { background: rgba(30, 30, 36, 220); border-radius: 10px; } QLabel { color: white; }"));
    auto* cajaProgreso = new QVBoxLayout(superposicion_);
    auto* barra = new QProgressBar(superposicion_);
    barra->setRange(0, 0);
    barra->setTextVisible(false);
    textoProgreso_ = new QLabel(superposicion_);
    textoProgreso_->setAlignment(Qt::AlignCenter);
    auto* cancelar = new QPushButton(QStringLiteral("Cancelar"), superposicion_);
    cancelar->setObjectName(QStringLiteral("cancelarConversion"));
    connect(cancelar, &QPushButton::clicked, this, [this] { cv_.cancelarConversion(); });
    cajaProgreso->addWidget(barra);
    cajaProgreso->addWidget(textoProgreso_);
    cajaProgreso->addWidget(cancelar, 0, Qt::AlignCenter);
    capas->addWidget(superposicion_, 0, 0, Qt::AlignCenter);
    superposicion_->hide();

    division_ = new QSplitter(Qt::Horizontal, this);
    division_->setObjectName(QStringLiteral("division"));
    division_->addWidget(crearBarraLateral());
    division_->addWidget(columnaDetalle);
    division_->setStretchFactor(1, 1);
    division_->setSizes({340, 1100});
    setCentralWidget(division_);
    statusBar()->setObjectName(QStringLiteral("lineaEstado"));
    connect(&cv_, &ContentView::proyectoGuardado, this,
            [this] { statusBar()->showMessage(QStringLiteral("Proyecto guardado"), 5000); });
    ajustarAPantalla();

    // The 3D view's set-up prepares the scene's lights.
    ContentView::configurarLuces(cv_.scene);
    connect(&cv_, &ContentView::changed, this, &VentanaPrincipal::sincronizar);
    sincronizar();
}

void VentanaPrincipal::crearMenus() {
    QMenu* archivo = menuBar()->addMenu(QStringLiteral("Archivo"));
    QAction* nuevo = archivo->addAction(QStringLiteral("Nuevo proyecto"));
    nuevo->setObjectName(QStringLiteral("accionNuevoProyecto"));
    nuevo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_N));
    connect(nuevo, &QAction::triggered, this, [this] { centro_.publicar(notificaciones::nuevoProyecto); });
    QAction* abrirIFC = archivo->addAction(QStringLiteral("Abrir IFC..."));
    abrirIFC->setObjectName(QStringLiteral("accionAbrirIFC"));
    abrirIFC->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(abrirIFC, &QAction::triggered, this, [this] { centro_.publicar(notificaciones::abrirIFC); });

    auto publicarCon = [this](QMenu* menu, const QString& texto, const char* nombre, const char* notificacion,
                              const QKeySequence& atajo) {
        QAction* a = menu->addAction(texto);
        a->setObjectName(QString::fromLatin1(nombre));
        if (!atajo.isEmpty()) a->setShortcut(atajo);
        const std::string n = notificacion;
        connect(a, &QAction::triggered, this, [this, n] { centro_.publicar(n); });
    };
    archivo->addSeparator();
    publicarCon(archivo, QStringLiteral("Guardar proyecto"), "accionGuardarProyecto", notificaciones::guardarProyecto,
                QKeySequence(Qt::CTRL | Qt::Key_S));
    publicarCon(archivo, QStringLiteral("Guardar como…"), "accionGuardarComo", notificaciones::guardarProyectoComo,
                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    publicarCon(archivo, QStringLiteral("Abrir proyecto..."), "accionAbrirProyecto", notificaciones::abrirProyecto,
                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
    recientes_ = archivo->addMenu(QStringLiteral("Proyectos recientes"));
    recientes_->setObjectName(QStringLiteral("menuRecientes"));
    connect(recientes_, &QMenu::aboutToShow, this, &VentanaPrincipal::llenarRecientes);
    llenarRecientes();
    archivo->addSeparator();
    publicarCon(archivo, QStringLiteral("Exportar paquete compartible..."), "accionExportarPaquete",
                notificaciones::exportarPaquete, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    publicarCon(archivo, QStringLiteral("Abrir paquete compartible..."), "accionAbrirPaquete",
                notificaciones::importarPaquete, QKeySequence());
    archivo->addSeparator();
    QAction* salir = archivo->addAction(QStringLiteral("Salir"));
    salir->setObjectName(QStringLiteral("accionSalir"));
    salir->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(salir, &QAction::triggered, this, &QWidget::close); // the same path as the close box

    QMenu* herramientas = menuBar()->addMenu(QStringLiteral("Herramientas"));
    publicarCon(herramientas, QStringLiteral("Cuantificación (QTO)..."), "accionQTO", notificaciones::abrirQTO,
                QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Q));
    herramientas->addSeparator();
    // Conversions are kept in the user's cache folder; this forgets them, so
    // that every model is converted again on its next link or opening.
    QAction* vaciarCache = herramientas->addAction(QStringLiteral("Vaciar caché de conversiones"));
    vaciarCache->setObjectName(QStringLiteral("accionVaciarCache"));
    connect(vaciarCache, &QAction::triggered, this, [this] { cv_.vaciarCacheConversiones(); });

    QMenu* ayuda = menuBar()->addMenu(QStringLiteral("Ayuda"));
    QAction* hojaRuta = ayuda->addAction(QStringLiteral("Road Map VORNEL"));
    hojaRuta->setObjectName(QStringLiteral("accionRoadMap"));
    connect(hojaRuta, &QAction::triggered, this, [this] {
        // The plan travels beside the program; the desktop opens it.
        const QString ruta = QCoreApplication::applicationDirPath() + QStringLiteral("/ROADMAP.md");
        if (!QFileInfo::exists(ruta))
            cv_.mostrarError("No se encontró el Road Map junto al programa: " + ruta.toStdString());
        else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(ruta)))
            cv_.mostrarError("No se pudo abrir el Road Map; está en " + ruta.toStdString());
    });
    QAction* acerca = ayuda->addAction(QStringLiteral("Acerca de VORNEL"));
    acerca->setObjectName(QStringLiteral("accionAcercaDe"));
    connect(acerca, &QAction::triggered, this, [this] {
        if (!acercaDe_) acercaDe_ = new VentanaAcercaDe(this);
        acercaDe_->show();
        acercaDe_->raise();
    });
}

QWidget* VentanaPrincipal::crearBarraLateral() {
    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    desplazable->setMinimumWidth(330);
    desplazable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* lateral = new QWidget(desplazable);
    lateral->setObjectName(QStringLiteral("barraLateral"));
    auto* v = new QVBoxLayout(lateral);
    v->addWidget(tituloSeccion(QStringLiteral("Federación de Modelos"), lateral));
    v->addWidget(new PanelFederacion(cv_, lateral));
    v->addWidget(tituloSeccion(QStringLiteral("Comparación XOR"), lateral));
    auto* comparacion = new PanelComparacionXOR(cv_, lateral);
    connect(comparacion, &PanelComparacionXOR::informeSolicitado, this, &VentanaPrincipal::abrirInformeXOR);
    v->addWidget(comparacion);
    v->addWidget(tituloSeccion(QStringLiteral("Interferencias"), lateral));
    auto* interferencias = new PanelInterferencias(cv_, lateral);
    connect(interferencias, &PanelInterferencias::reporteSolicitado, this, [this](std::size_t indice) {
        if (indice < cv_.historialAnalisis.size()) abrirReporte(cv_.historialAnalisis[indice]);
    });
    v->addWidget(interferencias);
    v->addWidget(tituloSeccion(QStringLiteral("Sección"), lateral));
    v->addWidget(new PanelSeccion(cv_, lateral));
    v->addWidget(tituloSeccion(QStringLiteral("Comentarios"), lateral));
    auto* comentarios = new PanelComentarios(cv_, lateral);
    connect(comentarios, &PanelComentarios::reporteSolicitado, this, &VentanaPrincipal::abrirReporteComentarios);
    v->addWidget(comentarios);
    v->addWidget(tituloSeccion(QStringLiteral("Timeline / Control de Obra"), lateral));
    auto* timeline = new PanelTimeline(cv_, lateral);
    connect(timeline, &PanelTimeline::abrirSolicitado, this, &VentanaPrincipal::abrirTimeLiner);
    v->addWidget(timeline);
    v->addStretch(1);
    desplazable->setWidget(lateral);
    return desplazable;
}

void VentanaPrincipal::sincronizar() {
    setWindowTitle(QString::fromStdString(cv_.gestor.nombreProyecto) + QStringLiteral("[*] — VORNEL"));
    setWindowModified(cv_.hayCambiosSinGuardar());
    if (cv_.gestor.urlActual && QString::fromStdString(*cv_.gestor.urlActual) != ultimaRuta_) {
        ultimaRuta_ = QString::fromStdString(*cv_.gestor.urlActual);
        agregarReciente(ultimaRuta_);
    }
    if (cv_.cierreAutorizado && !cierrePedido_) {
        cierrePedido_ = true;
        QTimer::singleShot(0, this, &QWidget::close);
    }
    // The versions of a comparison show in the 3D view too, with or without
    // disciplines beside them.
    const bool hayEscena = cv_.hayModelos() || cv_.modeloBase || cv_.modeloNuevo;
    detalle_->setCurrentWidget(hayEscena ? visor_ : bienvenida_);

    if (cv_.isProcessing) {
        textoProgreso_->setText(QString::fromStdString(cv_.textoProcesando()));
        superposicion_->show();
        superposicion_->raise();
    } else {
        superposicion_->hide();
    }

    // Pending fields open their dialogs, once each.
    if (cv_.seccion.planoPorAbrir) abrirPlano2D();
    if (cv_.seccion.pendienteEliminar && !alertaEliminarSeccion_) {
        QString nombre;
        for (const auto& s : cv_.seccion.guardadas)
            if (s.id == *cv_.seccion.pendienteEliminar) nombre = QString::fromStdString(s.nombre);
        alertaEliminarSeccion_ = abrirConfirmacion(
            QStringLiteral("Eliminar sección"),
            QStringLiteral("¿Eliminar la sección \"") + nombre + QStringLiteral("\"? Esta acción no se puede deshacer."),
            QStringLiteral("Eliminar"), true, QStringLiteral("alertaEliminarSeccion"), [this] { cv_.eliminarSeccion(); },
            [this] { cv_.cancelarEliminarSeccion(); });
    }
    if (cv_.showFilePicker && !selector_) abrirSelectorArchivo();
    if (cv_.mostrarNuevaEsp && !dialogoNueva_) {
        dialogoNueva_ = new DialogoNuevaEspecialidad(cv_, this);
        dialogoNueva_->setAttribute(Qt::WA_DeleteOnClose);
        dialogoNueva_->open();
    }
    if (cv_.colorPickerKey && !dialogoColor_) {
        dialogoColor_ = new DialogoColorEspecialidad(cv_, this);
        dialogoColor_->setAttribute(Qt::WA_DeleteOnClose);
        dialogoColor_->open();
    }
    if (cv_.modeloEditandoTransformacion && !dialogoTransformacion_) {
        dialogoTransformacion_ = new DialogoTransformacion(cv_, this);
        dialogoTransformacion_->setAttribute(Qt::WA_DeleteOnClose);
        dialogoTransformacion_->open();
    }
    if (cv_.modeloPendienteEliminar && !alertaEliminar_) abrirEliminarModelo();
    if (cv_.mostrarConfigAnalisis && !dialogoAnalisis_) {
        dialogoAnalisis_ = new DialogoConfigAnalisis(cv_, this);
        dialogoAnalisis_->setAttribute(Qt::WA_DeleteOnClose);
        dialogoAnalisis_->open();
    }
    if (cv_.analisisPendienteEliminar && !alertaEliminarAnalisis_) abrirEliminarAnalisis();
    if (cv_.markup.comentarioPendElim && !alertaEliminarComentario_)
        alertaEliminarComentario_ = abrirConfirmacion(
            QStringLiteral("Eliminar comentario"), QStringLiteral("Esta acción no se puede deshacer."),
            QStringLiteral("Eliminar"), true, QStringLiteral("alertaEliminarComentario"),
            [this] { cv_.confirmarEliminarComentario(); }, [this] { cv_.cancelarEliminarComentario(); });
    if (cv_.markup.detalleComentario && !detalleComentario_) {
        detalleComentario_ = new DialogoDetalleComentario(cv_, this);
        detalleComentario_->setAttribute(Qt::WA_DeleteOnClose);
        detalleComentario_->open();
    }
    if (cv_.confirmarLimpiarXOR && !alertaLimpiarXOR_)
        alertaLimpiarXOR_ = abrirConfirmacion(
            QStringLiteral("Limpiar comparación XOR"),
            QStringLiteral("Se eliminará el resultado de la comparación XOR activa. Los modelos base y nuevo "
                           "permanecerán vinculados."),
            QStringLiteral("Limpiar"), true, QStringLiteral("alertaLimpiarXOR"), [this] { cv_.limpiarXOR(); },
            [this] { cv_.cancelarLimpiarXOR(); });
    if (cv_.xorSlotPendienteCargar && !alertaCargarXOR_)
        alertaCargarXOR_ = abrirConfirmacion(
            QStringLiteral("Cargar nuevo archivo"),
            QStringLiteral("Cargar un nuevo archivo en el slot \"%1\" borrará el resultado de comparación XOR "
                           "actual. ¿Deseas continuar?")
                .arg(QString::fromStdString(ContentView::etiquetaSlotXOR(*cv_.xorSlotPendienteCargar))),
            QStringLiteral("Continuar"), false, QStringLiteral("alertaCargarXOR"),
            [this] { cv_.continuarCargaXOR(); }, [this] { cv_.cancelarCargaXOR(); });
    abrirPanelesProyecto();
    if (cv_.paqueteExportado && !avisoPaquete_) {
        avisoPaquete_ = new QMessageBox(QMessageBox::Information, QStringLiteral("Paquete exportado"),
                                        QStringLiteral("Paquete exportado"), QMessageBox::NoButton, this);
        avisoPaquete_->setObjectName(QStringLiteral("avisoPaqueteExportado"));
        avisoPaquete_->setAttribute(Qt::WA_DeleteOnClose);
        avisoPaquete_->setInformativeText(QStringLiteral("El archivo \"%1\" está listo para compartir.")
                                              .arg(QString::fromStdString(*cv_.paqueteExportado)));
        avisoPaquete_->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
        connect(avisoPaquete_, &QMessageBox::finished, this, [this] { cv_.cerrarAvisoPaquete(); });
        avisoPaquete_->open();
    }
    if (cv_.accionPorConfirmar && !alertaGuardar_) abrirGuardarCambios();
    if (cv_.mostrarModelosAusentes) {
        if (!alertaAusentes_) {
            alertaAusentes_ = new AlertaModelosAusentes(cv_, this);
            alertaAusentes_->setAttribute(Qt::WA_DeleteOnClose);
            alertaAusentes_->open();
        } else {
            alertaAusentes_->actualizar();
        }
    } else if (alertaAusentes_) {
        alertaAusentes_->close();
    }
    if (!cv_.qto.ventanasPendientes.empty()) abrirVentanasQTO();
    if (cv_.showError) abrirError();
}

void VentanaPrincipal::abrirVentanasQTO() {
    // Each takeoff is a snapshot in a window of its own; earlier ones stay.
    auto pendientes = std::move(cv_.qto.ventanasPendientes);
    cv_.qto.ventanasPendientes.clear();
    for (InstantaneaQTO& i : pendientes) {
        TablaQTO tabla;
        tabla.grupos = std::move(i.grupos);
        tabla.fecha = i.fecha;
        auto ventana = std::make_unique<QuantityTakeoffView>(std::move(tabla), cv_);
        ventana->resize(870, 700);
        if (const QScreen* pantalla = screen())
            ventana->move(pantalla->availableGeometry().center() - ventana->rect().center());
        ventana->show();
        ventana->raise();
        ventana->activateWindow();
        reportWindows_.push_back(std::move(ventana));
    }
}

void VentanaPrincipal::abrirGuardarCambios() {
    alertaGuardar_ = new QMessageBox(
        QMessageBox::Warning, QStringLiteral("VORNEL"),
        QStringLiteral("¿Guardar los cambios de «%1»?").arg(QString::fromStdString(cv_.gestor.nombreProyecto)),
        QMessageBox::NoButton, this);
    alertaGuardar_->setObjectName(QStringLiteral("alertaGuardarCambios"));
    alertaGuardar_->setAttribute(Qt::WA_DeleteOnClose);
    alertaGuardar_->setInformativeText(QStringLiteral("Si no los guardas, se perderán."));
    QPushButton* guardar = alertaGuardar_->addButton(QStringLiteral("Guardar"), QMessageBox::AcceptRole);
    QPushButton* noGuardar = alertaGuardar_->addButton(QStringLiteral("No guardar"), QMessageBox::DestructiveRole);
    alertaGuardar_->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    alertaGuardar_->setDefaultButton(guardar);
    QMessageBox* alerta = alertaGuardar_;
    connect(alerta, &QMessageBox::finished, this, [this, alerta, guardar, noGuardar] {
        const QAbstractButton* elegido = alerta->clickedButton();
        // Escape or the close box cancel, as "Cancelar" does.
        cv_.responderGuardar(elegido == guardar     ? RespuestaGuardar::guardar
                             : elegido == noGuardar ? RespuestaGuardar::noGuardar
                                                    : RespuestaGuardar::cancelar);
    });
    alertaGuardar_->open();
}

void VentanaPrincipal::ajustarAPantalla() {
    QSettings ajustes;
    const QScreen* pantalla = screen();
    const QRect disponible = pantalla ? pantalla->availableGeometry() : QRect(0, 0, 1440, 900);
    if (!restoreGeometry(ajustes.value(QStringLiteral("ventana/geometria")).toByteArray())) {
        resize(QSize(1440, 900).boundedTo(disponible.size()));
        move(disponible.center() - rect().center());
    } else if (!disponible.contains(frameGeometry())) {
        // Remembered on a larger screen: at most this one, centred.
        resize(size().boundedTo(disponible.size()));
        move(disponible.center() - rect().center());
    }
    division_->restoreState(ajustes.value(QStringLiteral("ventana/division")).toByteArray());
}

void VentanaPrincipal::guardarAjustes() {
    QSettings ajustes;
    ajustes.setValue(QStringLiteral("ventana/geometria"), saveGeometry());
    ajustes.setValue(QStringLiteral("ventana/division"), division_->saveState());
}

void VentanaPrincipal::agregarReciente(const QString& ruta) {
    QSettings ajustes;
    QStringList lista = ajustes.value(QStringLiteral("proyectosRecientes")).toStringList();
    lista.removeAll(ruta);
    lista.prepend(ruta);
    while (lista.size() > 10) lista.removeLast();
    ajustes.setValue(QStringLiteral("proyectosRecientes"), lista);
    llenarRecientes();
}

void VentanaPrincipal::llenarRecientes() {
    recientes_->clear();
    const QStringList lista = QSettings().value(QStringLiteral("proyectosRecientes")).toStringList();
    for (const QString& ruta : lista) {
        QAction* a = recientes_->addAction(QFileInfo(ruta).completeBaseName());
        a->setToolTip(ruta);
        a->setData(ruta);
        connect(a, &QAction::triggered, this,
                [this, ruta] { cv_.pedirAccion({AccionPendiente::Tipo::abrirProyecto, ruta.toStdString()}); });
    }
    recientes_->setEnabled(!lista.isEmpty());
}

QFileDialog* VentanaPrincipal::dialogoArchivo(const QString& titulo, const QString& mensaje, const QString& filtro,
                                              bool guardar, const QString& nombre,
                                              std::function<void(const QString&)> alAceptar) {
    auto* d = new QFileDialog(this, titulo);
    // Each kind of file (projects, packages) opens where the last one was.
    const QString claveCarpeta = filtro.contains(QStringLiteral("teskalpkg")) ? QStringLiteral("carpetas/paquete")
                                                                           : QStringLiteral("carpetas/proyecto");
    const QString carpeta = QSettings().value(claveCarpeta).toString();
    if (!carpeta.isEmpty() && QFileInfo(carpeta).isDir()) d->setDirectory(carpeta);
    d->setObjectName(QStringLiteral("panelProyecto"));
    d->setAttribute(Qt::WA_DeleteOnClose);
    d->setOption(QFileDialog::DontUseNativeDialog);
    d->setAcceptMode(guardar ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    d->setFileMode(guardar ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    d->setNameFilter(filtro);
    if (!nombre.isEmpty()) d->selectFile(nombre);
    if (!mensaje.isEmpty())
        if (auto* rejilla = qobject_cast<QGridLayout*>(d->layout())) {
            auto* texto = new QLabel(mensaje, d);
            texto->setWordWrap(true);
            rejilla->addWidget(texto, rejilla->rowCount(), 0, 1, -1);
        }
    connect(d, &QFileDialog::finished, this, [this, d, alAceptar, claveCarpeta](int resultado) {
        if (resultado == QDialog::Accepted && !d->selectedFiles().isEmpty()) {
            QSettings().setValue(claveCarpeta, QFileInfo(d->selectedFiles().first()).absolutePath());
            alAceptar(d->selectedFiles().first());
        } else
            cv_.cerrarPaneles();
    });
    d->open();
    return d;
}

void VentanaPrincipal::abrirPanelesProyecto() {
    if (panelProyecto_) return;
    const QString filtroProyecto = QStringLiteral("Proyecto VORNEL (*.teskal)");
    const QString filtroPaquete = QStringLiteral("Paquete compartible (*.teskalpkg)");
    if (cv_.showSavePicker) {
        panelProyecto_ = dialogoArchivo(QStringLiteral("Guardar proyecto"), {}, filtroProyecto, true,
                                        QString::fromStdString(cv_.gestor.nombreProyecto) + QStringLiteral(".teskal"),
                                        [this](QString ruta) {
                                            if (QFileInfo(ruta).suffix().isEmpty()) ruta += QStringLiteral(".teskal");
                                            cv_.guardarProyectoComo(ruta.toStdString());
                                        });
    } else if (cv_.mostrarAbrirProyecto) {
        panelProyecto_ = dialogoArchivo(QStringLiteral("Abrir proyecto VORNEL"), {}, filtroProyecto, false, {},
                                        [this](const QString& ruta) { cv_.abrirProyecto(ruta.toStdString()); });
    } else if (cv_.mostrarExportarPaquete) {
        panelProyecto_ = dialogoArchivo(
            QStringLiteral("Exportar paquete compartible"),
            QStringLiteral("El paquete incluirá todos los modelos IFC. Envíalo a otro usuario con VORNEL."), filtroPaquete,
            true, QString::fromStdString(cv_.gestor.nombreProyecto) + QStringLiteral(".teskalpkg"),
            [this](const QString& ruta) { cv_.exportarPaqueteA(ruta.toStdString()); });
    } else if (cv_.mostrarAbrirPaquete) {
        panelProyecto_ = dialogoArchivo(QStringLiteral("Abrir paquete compartible"),
                                        QStringLiteral("Selecciona un archivo .teskalpkg recibido de otro usuario."),
                                        filtroPaquete, false, {},
                                        [this](const QString& ruta) { cv_.abrirPaqueteDe(ruta.toStdString()); });
    }
}

void VentanaPrincipal::abrirSelectorArchivo() {
    selector_ = new QFileDialog(this, QStringLiteral("Abrir IFC"));
    selector_->setObjectName(QStringLiteral("selectorIFC"));
    selector_->setAttribute(Qt::WA_DeleteOnClose);
    selector_->setOption(QFileDialog::DontUseNativeDialog);
    selector_->setFileMode(QFileDialog::ExistingFile);
    selector_->setNameFilters({QStringLiteral("Todos los archivos (*)"), QStringLiteral("Archivos IFC (*.ifc *.IFC)")});
    const QString carpeta = QSettings().value(QStringLiteral("carpetas/ifc")).toString();
    if (!carpeta.isEmpty() && QFileInfo(carpeta).isDir()) selector_->setDirectory(carpeta);
    connect(selector_, &QFileDialog::finished, this, [this](int resultado) {
        std::vector<std::string> rutas;
        if (resultado == QDialog::Accepted && selector_)
            for (const QString& r : selector_->selectedFiles()) rutas.push_back(r.toStdString());
        if (!rutas.empty())
            QSettings().setValue(QStringLiteral("carpetas/ifc"),
                                 QFileInfo(QString::fromStdString(rutas.front())).absolutePath());
        cv_.archivosElegidos(rutas);
    });
    selector_->open();
}

void VentanaPrincipal::abrirError() {
    const QString texto = QString::fromStdString(cv_.errorMessage.value_or(""));
    if (alertaError_) { // a failure raised while another stands replaces the text
        alertaError_->setText(texto);
        return;
    }
    alertaError_ = new QMessageBox(QMessageBox::Warning, QStringLiteral("Error"), texto, QMessageBox::NoButton, this);
    alertaError_->setObjectName(QStringLiteral("alertaError"));
    alertaError_->setAttribute(Qt::WA_DeleteOnClose);
    alertaError_->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    connect(alertaError_, &QMessageBox::finished, this, [this] { cv_.cerrarError(); });
    alertaError_->open();
}

void VentanaPrincipal::abrirEliminarAnalisis() {
    alertaEliminarAnalisis_ = new QMessageBox(QMessageBox::Warning, QStringLiteral("Eliminar análisis"),
                                              QStringLiteral("Esta acción no se puede deshacer."),
                                              QMessageBox::NoButton, this);
    alertaEliminarAnalisis_->setObjectName(QStringLiteral("alertaEliminarAnalisis"));
    alertaEliminarAnalisis_->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* eliminar = alertaEliminarAnalisis_->addButton(QStringLiteral("Eliminar"), QMessageBox::DestructiveRole);
    alertaEliminarAnalisis_->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    connect(alertaEliminarAnalisis_, &QMessageBox::finished, this, [this, eliminar] {
        if (alertaEliminarAnalisis_ && alertaEliminarAnalisis_->clickedButton() == eliminar)
            cv_.eliminarAnalisis();
        else
            cv_.cancelarEliminarAnalisis();
    });
    alertaEliminarAnalisis_->open();
}

QMessageBox* VentanaPrincipal::abrirConfirmacion(const QString& titulo, const QString& mensaje, const QString& boton,
                                                 bool destructivo, const QString& nombreObjeto,
                                                 std::function<void()> confirmar, std::function<void()> cancelar) {
    auto* alerta = new QMessageBox(QMessageBox::Warning, titulo, mensaje, QMessageBox::NoButton, this);
    alerta->setObjectName(nombreObjeto);
    alerta->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* si = alerta->addButton(boton, destructivo ? QMessageBox::DestructiveRole : QMessageBox::AcceptRole);
    alerta->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    connect(alerta, &QMessageBox::finished, this, [alerta, si, confirmar, cancelar] {
        if (alerta->clickedButton() == si)
            confirmar();
        else
            cancelar();
    });
    alerta->open();
    return alerta;
}

void VentanaPrincipal::abrirEliminarModelo() {
    const QString nombre = QString::fromStdString(cv_.modeloPendienteEliminar->nombre);
    alertaEliminar_ = new QMessageBox(
        QMessageBox::Warning, QStringLiteral("Eliminar modelo"),
        QStringLiteral("¿Eliminar \"%1\" de la escena? Esta acción no se puede deshacer.").arg(nombre),
        QMessageBox::NoButton, this);
    alertaEliminar_->setObjectName(QStringLiteral("alertaEliminarModelo"));
    alertaEliminar_->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* eliminar = alertaEliminar_->addButton(QStringLiteral("Eliminar"), QMessageBox::DestructiveRole);
    alertaEliminar_->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    connect(alertaEliminar_, &QMessageBox::finished, this, [this, eliminar] {
        if (alertaEliminar_ && alertaEliminar_->clickedButton() == eliminar)
            cv_.confirmarEliminarModelo();
        else
            cv_.cancelarEliminarModelo();
    });
    alertaEliminar_->open();
}

void VentanaPrincipal::abrirPlano2D() {
    auto ventana = std::make_unique<VentanaHoja>(std::move(*cv_.seccion.planoPorAbrir));
    cv_.seccion.planoPorAbrir.reset();
    // Closing keeps the sheet's dimensions and labels under its title; the
    // window itself stays in the list.
    ventana->alGuardar = [this](const std::string& titulo, const std::vector<Cota2D>& cotas,
                                const std::vector<Etiqueta2D>& etiquetas) {
        cv_.guardarEstadoPlano(titulo, cotas, etiquetas);
    };
    ventana->alGuardarSeccion = [this](const std::string& nombre) { cv_.guardarSeccion(nombre); };
    // Centred on the main window's screen, key and in front.
    if (const QScreen* pantalla = screen()) {
        QRect marco = ventana->frameGeometry();
        marco.moveCenter(pantalla->availableGeometry().center());
        ventana->move(marco.topLeft());
    }
    ventana->show();
    ventana->raise();
    ventana->activateWindow();
    vista2DWindows_.push_back(std::move(ventana));
}

void VentanaPrincipal::abrirReporte(const AnalisisInterferencias& analisis) {
    auto ventana = std::make_unique<ReporteAnalisisView>(analisis, &cv_.scene);
    ventana->setWindowTitle(QStringLiteral("Reporte · ") + QString::fromStdString(analisis.nombre));
    ventana->resize(820, 700);
    if (const QScreen* pantalla = screen())
        ventana->move(pantalla->availableGeometry().center() - ventana->rect().center());
    // The window follows the review states of its analysis while it is open.
    connect(&cv_, &ContentView::changed, ventana.get(), [this, w = ventana.get()] {
        for (const AnalisisInterferencias& a : cv_.historialAnalisis) w->seguirEstados(a);
    });
    ventana->show();
    reportWindows_.push_back(std::move(ventana));
}

void VentanaPrincipal::abrirReporteComentarios() {
    auto ventana = std::make_unique<ReporteComentariosView>(
        cv_.markup.comentarios, [this](std::string mensaje) { cv_.mostrarError(std::move(mensaje)); });
    ventana->resize(760, 700);
    if (const QScreen* pantalla = screen())
        ventana->move(pantalla->availableGeometry().center() - ventana->rect().center());
    ventana->show();
    reportWindows_.push_back(std::move(ventana));
}

void VentanaPrincipal::abrirInformeXOR() {
    if (!cv_.resultadoXOR) return;
    auto ventana = std::make_unique<ReporteXORView>(*cv_.resultadoXOR);
    ventana->setWindowTitle(QString::fromStdString(tituloInformeXOR(*cv_.resultadoXOR)));
    ventana->resize(1020, 700);
    if (const QScreen* pantalla = screen())
        ventana->move(pantalla->availableGeometry().center() - ventana->rect().center());
    ventana->show();
    generarThumbnailsXOR(cv_.resultadoXOR->elementos, cv_.modeloBase.get(), cv_.modeloNuevo.get(),
                         ventana->thumbnailStore());
    reportWindows_.push_back(std::move(ventana));
}

void VentanaPrincipal::abrirTimeLiner() {
    for (const auto& w : timeLinerWindows_)
        if (w->isVisible()) {
            w->raise();
            w->activateWindow();
            return;
        }
    std::erase_if(timeLinerWindows_, [](const auto& w) { return !w->isVisible(); });
    auto ventana = std::make_unique<TimeLinerView>(cv_);
    ventana->resize(1200, 720);
    if (const QScreen* pantalla = screen())
        ventana->move(pantalla->availableGeometry().center() - ventana->rect().center());
    ventana->show();
    ventana->raise();
    ventana->activateWindow();
    timeLinerWindows_.push_back(std::move(ventana));
}

} // namespace teskal

namespace teskal {

void VentanaPrincipal::closeEvent(QCloseEvent* evento) {
    if (cerrada_) {
        evento->accept();
        return;
    }
    // Unsaved changes ask first; the window stays until the answer allows it.
    if (!cv_.cierreAutorizado) {
        evento->ignore();
        cv_.pedirAccion({AccionPendiente::Tipo::cerrar, {}});
        if (!cv_.cierreAutorizado) return;
    }
    // Closing the main window ends the program, report windows and all; the
    // conversions under way are ended before it goes.
    cerrada_ = true;
    guardarAjustes();
    evento->accept();
    cv_.detenerTrabajos();
    QCoreApplication::quit();
}

} // namespace teskal
