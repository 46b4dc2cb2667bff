#include "viewport/ui/BarraVisor.h"

#include "ui/Iconos.h"
#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "ui/TextoQt.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

namespace {


// The popover of the camera cut: its switch, and while on, the distance.
QFrame* crearPopoverCorte(ContentView& cv, QWidget* padre) {
    auto* p = new QFrame(padre, Qt::Popup);
    p->setObjectName(QStringLiteral("popoverCorte"));
    p->setFrameShape(QFrame::StyledPanel);
    p->setAttribute(Qt::WA_DeleteOnClose);
    auto* v = new QVBoxLayout(p);
    auto* interruptor = new QCheckBox(QStringLiteral("Corte de cámara"), p);
    interruptor->setObjectName(QStringLiteral("interruptorCorte"));
    interruptor->setIcon(iconoSimbolo("scissors.fill"));
    interruptor->setChecked(cv.modoCorteCamara);
    v->addWidget(interruptor);
    auto* texto = new QLabel(QStringLiteral("Recorta la geometría frente a la cámara según la distancia indicada. "
                                            "Útil para navegar en interiores sin modificar la sección permanente "
                                            "de la escena."),
                             p);
    texto->setWordWrap(true);
    texto->setMaximumWidth(300);
    v->addWidget(texto);

    auto* detalle = new QWidget(p);
    auto* d = new QVBoxLayout(detalle);
    d->setContentsMargins(0, 0, 0, 0);
    auto* cabecera = new QHBoxLayout;
    cabecera->addWidget(new QLabel(QStringLiteral("Distancia de corte"), detalle), 1);
    auto* valor = new QLabel(q(formato("%.2f m", cv.distanciaCorte)), detalle);
    valor->setObjectName(QStringLiteral("valorCorte"));
    cabecera->addWidget(valor);
    d->addLayout(cabecera);
    auto* filaDeslizador = new QHBoxLayout;
    filaDeslizador->addWidget(new QLabel(QStringLiteral("0.05"), detalle));
    auto* deslizador = new QSlider(Qt::Horizontal, detalle);
    deslizador->setObjectName(QStringLiteral("deslizadorCorte"));
    deslizador->setRange(1, 100); // steps of 0.05 m
    deslizador->setValue(static_cast<int>(std::lround(cv.distanciaCorte / 0.05)));
    filaDeslizador->addWidget(deslizador, 1);
    filaDeslizador->addWidget(new QLabel(QStringLiteral("5.0 m"), detalle));
    d->addLayout(filaDeslizador);
    auto* nota = new QHBoxLayout;
    auto* icono = new QLabel(detalle);
    icono->setPixmap(iconoSimbolo("info.circle").pixmap(12, 12));
    nota->addWidget(icono);
    nota->addWidget(new QLabel(QStringLiteral("Acércate a una pared para ver el efecto del corte."), detalle), 1);
    d->addLayout(nota);
    detalle->setVisible(cv.modoCorteCamara);
    v->addWidget(detalle);

    QObject::connect(interruptor, &QCheckBox::toggled, p, [&cv, detalle, p](bool activo) {
        cv.fijarModoCorte(activo);
        detalle->setVisible(activo);
        if (!activo) p->close();
    });
    QObject::connect(deslizador, &QSlider::valueChanged, p, [&cv, valor](int paso) {
        cv.fijarDistanciaCorte(paso * 0.05);
        valor->setText(q(formato("%.2f m", cv.distanciaCorte)));
    });
    QObject::connect(p, &QObject::destroyed, &cv, [&cv] {
        if (cv.mostrarPopoverCorte) cv.cerrarPopoverCorte();
    });
    return p;
}

} // namespace

BarraVisor::BarraVisor(ContentView& cv, QWidget* parent) : QFrame(parent), cv_(cv) {
    setObjectName(QStringLiteral("barraVisor"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("#barraVisor { background: rgba(255, 255, 255, 225); border-radius: 8px; }"));
    auto* h = new QHBoxLayout(this);
    h->setContentsMargins(6, 4, 6, 4);

    auto* extension = new QToolButton(this);
    extension->setObjectName(QStringLiteral("zoomExtents"));
    extension->setIcon(iconoSimbolo("scope"));
    extension->setToolTip(QStringLiteral("Zoom extents"));
    extension->setAutoRaise(true);
    connect(extension, &QToolButton::clicked, this, [this] { cv_.zoomExtents(); });
    h->addWidget(extension);

    auto* vistas = new QToolButton(this);
    vistas->setObjectName(QStringLiteral("vistasPreset"));
    vistas->setText(QStringLiteral("Vistas"));
    vistas->setToolTip(QStringLiteral("Vistas predefinidas"));
    vistas->setPopupMode(QToolButton::InstantPopup);
    vistas->setAutoRaise(true);
    auto* menu = new QMenu(vistas);
    for (VistaPreset v : vistasPreset) {
        const auto nombre = nombreVistaPreset(v);
        menu->addAction(QString::fromUtf8(nombre.data(), static_cast<qsizetype>(nombre.size())), this,
                        [this, v] { cv_.aplicarVistaPreset(v); });
    }
    vistas->setMenu(menu);
    h->addWidget(vistas);

    corte_ = new QToolButton(this);
    corte_->setObjectName(QStringLiteral("botonCorte"));
    corte_->setIcon(iconoSimbolo("scissors"));
    corte_->setText(QStringLiteral("Corte"));
    corte_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    corte_->setAutoRaise(true);
    corte_->setCheckable(true);
    connect(corte_, &QToolButton::clicked, this, [this] { cv_.pulsarCorte(); });
    h->addWidget(corte_);

    // The measuring tools, then "Limpiar" and "Cerrar" while they apply.
    struct Herramienta {
        ModoMedicion3D modo;
        const char* texto;
        const char* simbolo;
        const char* nombre;
    };
    for (const Herramienta& t : {Herramienta{ModoMedicion3D::distancia, "Dist.", "ruler", "distancia"},
                                 Herramienta{ModoMedicion3D::area, "Área", "skew", "área"},
                                 Herramienta{ModoMedicion3D::angulo, "Ángulo", "angle", "ángulo"},
                                 Herramienta{ModoMedicion3D::punto, "Punto", "mappin.circle", "punto"}}) {
        auto* b = new QToolButton(this);
        b->setObjectName(QStringLiteral("medir_") + QString::number(static_cast<int>(t.modo)));
        b->setIcon(iconoSimbolo(t.simbolo));
        b->setText(QString::fromUtf8(t.texto));
        b->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        b->setAutoRaise(true);
        b->setCheckable(true);
        b->setProperty("tooltipActivo", QStringLiteral("Medir %1 activo — clic para desactivar").arg(QString::fromUtf8(t.nombre)));
        const ModoMedicion3D modo = t.modo;
        connect(b, &QToolButton::clicked, this, [this, modo] { cv_.pulsarModoMedicion(modo); });
        h->addWidget(b);
        herramientas_.push_back({modo, b});
    }
    limpiar_ = new QToolButton(this);
    limpiar_->setObjectName(QStringLiteral("limpiarMedicion"));
    limpiar_->setIcon(iconoSimbolo("xmark.circle"));
    limpiar_->setText(QStringLiteral("Limpiar"));
    limpiar_->setToolTip(QStringLiteral("Limpiar medición"));
    limpiar_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    limpiar_->setAutoRaise(true);
    connect(limpiar_, &QToolButton::clicked, this, [this] { cv_.limpiarMedicion(); });
    h->addWidget(limpiar_);
    cerrar_ = new QToolButton(this);
    cerrar_->setObjectName(QStringLiteral("cerrarPoligono"));
    cerrar_->setIcon(iconoSimbolo("checkmark.circle.fill"));
    cerrar_->setText(QStringLiteral("Cerrar"));
    cerrar_->setToolTip(QStringLiteral("Cerrar polígono y calcular área"));
    cerrar_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    cerrar_->setAutoRaise(true);
    connect(cerrar_, &QToolButton::clicked, this, [this] { cv_.cerrarPoligono(); });
    h->addWidget(cerrar_);
    auto* qto = new QToolButton(this);
    qto->setObjectName(QStringLiteral("botonQTO"));
    qto->setIcon(iconoSimbolo("tablecells"));
    qto->setText(QStringLiteral("QTO"));
    qto->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    qto->setToolTip(QStringLiteral("Tabla de volúmenes y áreas por tipo IFC · Ctrl+Shift+Q"));
    qto->setAutoRaise(true);
    // The same path as the menu item.
    connect(qto, &QToolButton::clicked, this, [this] { cv_.recibirNotificacion(notificaciones::abrirQTO); });
    h->addWidget(qto);

    connect(&cv_, &ContentView::changed, this, &BarraVisor::sincronizar);
    sincronizar();
}

void BarraVisor::sincronizar() {
    const EstadoMedicion& m = cv_.medicion;
    for (const auto& [modo, boton] : herramientas_) {
        const bool activo = m.modoMedicion3D == modo;
        boton->setChecked(activo);
        boton->setToolTip(activo ? boton->property("tooltipActivo").toString() : boton->text());
    }
    limpiar_->setVisible(m.medicionPuntoA.has_value() || !m.medicionPuntosArea.empty());
    cerrar_->setVisible(m.modoMedicion3D == ModoMedicion3D::area && m.medicionPuntosArea.size() >= 3);
    corte_->setChecked(cv_.modoCorteCamara);
    corte_->setToolTip(cv_.modoCorteCamara
                           ? q("Corte de cámara activo (" + formato("%.2f", cv_.distanciaCorte) +
                               " m) — clic para ajustar")
                           : QStringLiteral("Corte de cámara — navegación interior sin seccionar la escena"));
    if (cv_.mostrarPopoverCorte && !popover_) {
        popover_ = crearPopoverCorte(cv_, this);
        popover_->adjustSize();
        popover_->move(corte_->mapToGlobal(QPoint(0, corte_->height() + 4)));
        popover_->show();
    } else if (!cv_.mostrarPopoverCorte && popover_) {
        popover_->close();
    }
}

} // namespace teskal
