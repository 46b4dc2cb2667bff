#include "app/ui/VistaBienvenida.h"

#include "ui/Iconos.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace teskal {

VistaBienvenida::VistaBienvenida(ContentView& cv, CentroNotificaciones& centro, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("bienvenida"));
    auto* v = new QVBoxLayout(this);
    v->addStretch(1);

    auto* titulo = new QLabel(QStringLiteral("VORNEL"), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 40px; font-weight: bold;"));
    titulo->setAlignment(Qt::AlignCenter);
    v->addWidget(titulo);
    auto* version = new QLabel(QStringLiteral("Versión 1.0  ·  Build 1"), this);
    version->setAlignment(Qt::AlignCenter);
    v->addWidget(version);
    auto* formatos = new QLabel(
        QStringLiteral("Formatos soportados: IFC 2x3 · IFC 4  —  Requiere Linux con OpenGL 3.3 o superior"), this);
    formatos->setAlignment(Qt::AlignCenter);
    formatos->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(formatos);
    v->addSpacing(16);

    auto* botones = new QHBoxLayout;
    botones->addStretch(1);
    auto* vincular = new QPushButton(iconoSimbolo("doc.badge.plus"), QStringLiteral("Vincular IFC"), this);
    vincular->setObjectName(QStringLiteral("bienvenidaVincular"));
    connect(vincular, &QPushButton::clicked, this, [&cv] { cv.vincularIFC(cv.seleccionActual); });
    auto* abrir = new QPushButton(iconoSimbolo("folder"), QStringLiteral("Abrir proyecto…"), this);
    connect(abrir, &QPushButton::clicked, this, [&centro] { centro.publicar(notificaciones::abrirProyecto); });
    botones->addWidget(vincular);
    botones->addWidget(abrir);
    botones->addStretch(1);
    v->addLayout(botones);
    v->addSpacing(24);

    const char* filas[][2] = {
        {"Federar modelos", "Vincula archivos IFC a cada especialidad (ARQ, EST, MEP…)\n"
                            "Los modelos se superponen en el visor 3D con sus colores de especialidad"},
        {"Comparación XOR", "Compara dos versiones del modelo e identifica elementos agregados, eliminados y "
                            "modificados"},
        {"Detectar interferencias", "Analiza colisiones entre especialidades y exporta el reporte BCF"},
        {"Generar secciones y QTO", "Crea secciones 2D con cotas, etiquetas y cuantifica elementos IFC"},
        {"Timeline / Control de Obra", "Gestiona paquetes AWP, visualización 4D, curva S y control 5D con EVM y HH"},
    };
    auto* rejilla = new QGridLayout;
    int r = 0;
    for (const auto& fila : filas) {
        auto* t = new QLabel(QString::fromUtf8(fila[0]), this);
        t->setStyleSheet(QStringLiteral("font-weight: bold;"));
        auto* d = new QLabel(QString::fromUtf8(fila[1]), this);
        d->setStyleSheet(QStringLiteral("color: gray;"));
        rejilla->addWidget(t, r, 0, Qt::AlignTop);
        rejilla->addWidget(d, r, 1);
        ++r;
    }
    auto* centrado = new QHBoxLayout;
    centrado->addStretch(1);
    centrado->addLayout(rejilla);
    centrado->addStretch(1);
    v->addLayout(centrado);
    v->addStretch(2);
}

} // namespace teskal
