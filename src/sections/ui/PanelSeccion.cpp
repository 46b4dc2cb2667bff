#include "sections/ui/PanelSeccion.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "ui/TextoQt.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

namespace teskal {

PanelSeccion::PanelSeccion(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("panelSeccion"));
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(4, 0, 4, 0);
    activar_ = new QCheckBox(QStringLiteral("Activar corte"), this);
    activar_->setObjectName(QStringLiteral("activarCorte"));
    activar_->setIcon(iconoSimbolo("scissors"));
    v->addWidget(activar_);
    connect(activar_, &QCheckBox::toggled, this, [this](bool on) { cv_.fijarSeccionActiva(on); });

    controles_ = new QWidget(this);
    auto* c = new QVBoxLayout(controles_);
    c->setContentsMargins(0, 0, 0, 0);
    auto* filaEje = new QHBoxLayout();
    filaEje->addWidget(new QLabel(QStringLiteral("Eje"), controles_));
    ejes_ = new QButtonGroup(controles_);
    ejes_->setExclusive(true);
    const char* letras[] = {"X", "Y", "Z"};
    for (int i = 0; i < 3; ++i) {
        auto* b = new QToolButton(controles_);
        b->setObjectName(QStringLiteral("eje") + QLatin1String(letras[i]));
        b->setText(QLatin1String(letras[i]));
        b->setCheckable(true);
        b->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        ejes_->addButton(b, i);
        filaEje->addWidget(b);
    }
    connect(ejes_, &QButtonGroup::idClicked, this, [this](int eje) {
        if (eje != cv_.seccion.eje) cv_.fijarEjeSeccion(eje);
    });
    c->addLayout(filaEje);

    auto* filaPosicion = new QHBoxLayout();
    filaPosicion->addWidget(new QLabel(QStringLiteral("Posición"), controles_));
    filaPosicion->addStretch(1);
    valorPosicion_ = new QLabel(controles_);
    valorPosicion_->setObjectName(QStringLiteral("valorPosicion"));
    filaPosicion->addWidget(valorPosicion_);
    c->addLayout(filaPosicion);
    auto* filaDeslizador = new QHBoxLayout();
    minimo_ = new QLabel(controles_);
    maximo_ = new QLabel(controles_);
    posicion_ = new QSlider(Qt::Horizontal, controles_);
    posicion_->setObjectName(QStringLiteral("deslizadorPosicion"));
    filaDeslizador->addWidget(minimo_);
    filaDeslizador->addWidget(posicion_, 1);
    filaDeslizador->addWidget(maximo_);
    c->addLayout(filaDeslizador);
    connect(posicion_, &QSlider::valueChanged, this, [this](int paso) { cv_.fijarPosicionSeccion(posicionDePaso(paso)); });

    modo_ = new QComboBox(controles_);
    modo_->setObjectName(QStringLiteral("modoProfundidad"));
    modo_->addItems({QStringLiteral("Corte exacto"), QStringLiteral("Con profundidad"), QStringLiteral("Ilimitada")});
    modo_->setToolTip(QStringLiteral("Corte exacto: solo la línea de intersección.\nCon profundidad: muestra también el "
                                     "contorno de elementos detrás del plano.\nIlimitada: proyecta todo lo que hay al "
                                     "otro lado."));
    c->addWidget(modo_);
    connect(modo_, &QComboBox::currentIndexChanged, this, [this](int i) { cv_.fijarModoProfundidad(i); });

    filaProfundidad_ = new QWidget(controles_);
    auto* fp = new QHBoxLayout(filaProfundidad_);
    fp->setContentsMargins(0, 0, 0, 0);
    fp->addWidget(new QLabel(QStringLiteral("Profundidad"), filaProfundidad_));
    profundidad_ = new QSpinBox(filaProfundidad_);
    profundidad_->setObjectName(QStringLiteral("profundidad"));
    profundidad_->setRange(1, 50);
    profundidad_->setSuffix(QStringLiteral(" m"));
    fp->addStretch(1);
    fp->addWidget(profundidad_);
    c->addWidget(filaProfundidad_);
    connect(profundidad_, &QSpinBox::valueChanged, this, [this](int m) { cv_.fijarProfundidadSeccion(m); });

    auto* plano = new QPushButton(iconoSimbolo("doc.viewfinder"), QStringLiteral("Plano 2D"), controles_);
    plano->setObjectName(QStringLiteral("botonPlano2D"));
    c->addWidget(plano);
    connect(plano, &QPushButton::clicked, this, [this] { cv_.abrirPlano2D(); });
    v->addWidget(controles_);
    cajaGuardadas_ = new QVBoxLayout();
    cajaGuardadas_->setContentsMargins(0, 4, 0, 0);
    v->addLayout(cajaGuardadas_);

    connect(&cv_, &ContentView::changed, this, &PanelSeccion::sincronizar);
    reconstruirTrasCambios(cv_, this, [this] { reconstruirGuardadas(); });
    sincronizar();
    reconstruirGuardadas();
}

double PanelSeccion::posicionDePaso(int paso) const {
    return std::min(cv_.seccion.rangoMin + paso * 0.1, cv_.seccion.rangoMax);
}

void PanelSeccion::reconstruirGuardadas() {
    QVBoxLayout* filas = contenidoNuevo(cajaGuardadas_, guardadas_, this);
    guardadas_->setObjectName(QStringLiteral("seccionesGuardadas"));
    for (const SeccionGuardada& s : cv_.seccion.guardadas) {
        auto* fila = new QWidget(guardadas_);
        auto* h = new QHBoxLayout(fila);
        h->setContentsMargins(0, 0, 0, 0);
        auto* icono = new QLabel(fila);
        icono->setPixmap(iconoSimbolo("bookmark.fill").pixmap(14, 14));
        h->addWidget(icono);
        auto* nombre = new QLabel(q(s.nombre), fila);
        nombre->setObjectName(QStringLiteral("nombreSeccion"));
        h->addWidget(nombre, 1);
        auto* restaurar = new QToolButton(fila);
        restaurar->setObjectName(QStringLiteral("restaurarSeccion"));
        restaurar->setIcon(iconoSimbolo("arrow.uturn.left.circle"));
        restaurar->setToolTip(QStringLiteral("Restaurar y abrir plano 2D"));
        const SeccionGuardada copia = s;
        connect(restaurar, &QToolButton::clicked, this, [this, copia] { cv_.restaurarSeccion(copia); });
        h->addWidget(restaurar);
        auto* eliminar = new QToolButton(fila);
        eliminar->setObjectName(QStringLiteral("eliminarSeccion"));
        eliminar->setIcon(iconoSimbolo("trash"));
        eliminar->setToolTip(QStringLiteral("Eliminar sección guardada"));
        const std::string id = s.id;
        connect(eliminar, &QToolButton::clicked, this, [this, id] { cv_.pedirEliminarSeccion(id); });
        h->addWidget(eliminar);
        filas->addWidget(fila);
    }
}

void PanelSeccion::sincronizar() {
    const EstadoSeccion& s = cv_.seccion;
    const QSignalBlocker b1(activar_), b2(posicion_), b3(modo_), b4(profundidad_);
    activar_->setChecked(s.activa);
    controles_->setVisible(s.activa);
    if (auto* b = ejes_->button(s.eje == 0 || s.eje == 1 ? s.eje : 2)) b->setChecked(true);
    const int pasos = std::max(0, static_cast<int>(std::floor((s.rangoMax - s.rangoMin) / 0.1 + 1e-9)));
    posicion_->setRange(0, pasos);
    posicion_->setValue(static_cast<int>(std::lround((s.posicion - s.rangoMin) / 0.1)));
    valorPosicion_->setText(q(formato("%.2f m", s.posicion)));
    minimo_->setText(q(formato("%.1f", s.rangoMin)));
    maximo_->setText(q(formato("%.1f", s.rangoMax)));
    modo_->setCurrentIndex(std::clamp(s.modoProfundidad, 0, 2));
    filaProfundidad_->setVisible(s.modoProfundidad == 1);
    profundidad_->setValue(static_cast<int>(std::lround(s.profundidad)));
}

} // namespace teskal
