#include "federation/ui/PanelFederacion.h"

#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "federation/ContentView.h"
#include "ui/TextoQt.h"

#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

namespace {


QColor qcolor(const Color& c) { return QColor::fromRgbF(c.r, c.g, c.b, c.a); }

QToolButton* botonIcono(const std::string& simbolo, const QString& ayuda, QWidget* padre) {
    auto* b = new QToolButton(padre);
    b->setIcon(iconoSimbolo(simbolo));
    b->setToolTip(ayuda);
    b->setAutoRaise(true);
    return b;
}

} // namespace

PanelFederacion::PanelFederacion(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    auto* raiz = new QVBoxLayout(this);
    raiz->setContentsMargins(0, 0, 0, 0);
    lista_ = raiz;
    reconstruirTrasCambios(cv_, this, [this] { reconstruir(); });
    reconstruir();
}

void PanelFederacion::reconstruir() {
    auto* filas = contenidoNuevo(lista_, contenido_, this);
    filas->setSpacing(2);
    for (const std::string& clave : cv_.ordenEspecialidades) {
        const auto it = cv_.especialidades.find(clave);
        if (it == cv_.especialidades.end()) continue;
        filas->addWidget(filaEspecialidad(clave));
        for (const ModeloVinculado& m : it->second.modelos) filas->addWidget(filaModelo(clave, m.id));
    }
    auto* nueva = new QPushButton(iconoSimbolo("plus.circle"), QStringLiteral("Nueva especialidad"), contenido_);
    nueva->setObjectName(QStringLiteral("nuevaEspecialidad"));
    nueva->setFlat(true);
    connect(nueva, &QPushButton::clicked, this, [this] { cv_.abrirNuevaEspecialidad(); });
    filas->addWidget(nueva, 0, Qt::AlignLeft);
}

QWidget* PanelFederacion::filaEspecialidad(const std::string& clave) {
    const EspecialidadBIM& e = cv_.especialidades.at(clave);
    auto* fila = new QWidget(contenido_);
    fila->setObjectName(q("especialidad_" + clave));
    fila->setAutoFillBackground(true);
    if (cv_.seleccionActual == clave) {
        QPalette p = fila->palette();
        p.setColor(QPalette::Window, p.color(QPalette::Highlight).lighter(170));
        fila->setPalette(p);
    }
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(4, 2, 4, 2);

    auto* icono = new QLabel(fila);
    icono->setPixmap(iconoSimbolo(e.icono).pixmap(16, 16));
    h->addWidget(icono);
    auto* nombre = new QPushButton(q(e.nombre), fila);
    nombre->setFlat(true);
    nombre->setStyleSheet(QStringLiteral("text-align: left; font-weight: bold;"));
    connect(nombre, &QPushButton::clicked, this, [this, clave] { cv_.seleccionarEspecialidad(clave); });
    h->addWidget(nombre, 1);
    auto* cuenta = new QLabel(QString::number(e.modelos.size()), fila);
    cuenta->setStyleSheet(QStringLiteral("color: gray;"));
    h->addWidget(cuenta);

    auto* muestra = new QToolButton(fila);
    muestra->setObjectName(QStringLiteral("muestraColor"));
    muestra->setToolTip(QStringLiteral("Clic para cambiar color de ") + q(e.nombre));
    muestra->setFixedSize(16, 16);
    muestra->setStyleSheet(QStringLiteral("background: %1; border: 1px solid #666; border-radius: 3px;")
                               .arg(qcolor(e.colorOriginal).name()));
    connect(muestra, &QToolButton::clicked, this, [this, clave] { cv_.abrirColor(clave); });
    h->addWidget(muestra);

    auto* ojo = botonIcono(e.isVisible ? "eye" : "eye.slash",
                           e.isVisible ? QStringLiteral("Ocultar especialidad") : QStringLiteral("Mostrar especialidad"),
                           fila);
    ojo->setObjectName(QStringLiteral("ojoEspecialidad"));
    if (!e.nodoRaiz) {
        ojo->setEnabled(false);
        ojo->setToolTip(QStringLiteral("Sin modelos vinculados: vincula un IFC para mostrar u ocultar la especialidad"));
        auto* efecto = new QGraphicsOpacityEffect(ojo);
        efecto->setOpacity(0.3);
        ojo->setGraphicsEffect(efecto);
    }
    connect(ojo, &QToolButton::clicked, this, [this, clave] { cv_.alternarEspecialidad(clave); });
    h->addWidget(ojo);

    auto* vincular = botonIcono("plus", QStringLiteral("Vincular IFC"), fila);
    vincular->setObjectName(QStringLiteral("vincularIFC"));
    vincular->setText(QStringLiteral("Vincular IFC"));
    connect(vincular, &QToolButton::clicked, this, [this, clave] { cv_.vincularIFC(clave); });
    h->addWidget(vincular);

    fila->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(fila, &QWidget::customContextMenuRequested, this,
            [this, clave, fila](const QPoint& p) { menuEspecialidad(clave, fila->mapToGlobal(p)); });
    return fila;
}

void PanelFederacion::menuEspecialidad(const std::string& clave, const QPoint& donde) {
    QMenu menu;
    menu.addAction(QStringLiteral("Vincular archivo IFC"), this, [this, clave] { cv_.vincularIFC(clave); });
    menu.addAction(QStringLiteral("Cambiar color"), this, [this, clave] { cv_.abrirColor(clave); });
    menu.addSeparator();
    menu.addAction(QStringLiteral("Desvincular todos"), this, [this, clave] { cv_.desvincularTodos(clave); });
    menu.exec(donde);
}

void PanelFederacion::llenarMenuModelo(QMenu& menu, const std::string& clave, const std::string& id) {
    const ModeloVinculado* m = cv_.buscarModelo(clave, id);
    if (!m) return;
    QMenu* transparencia = menu.addMenu(QStringLiteral("Transparencia"));
    const std::pair<const char*, double> niveles[] = {{"Opaco", 0}, {"25%", 0.25}, {"50%", 0.5}, {"75%", 0.75}};
    for (const auto& [texto, valor] : niveles) {
        QString t = QString::fromUtf8(texto);
        if (m->transparencia == valor) t += QStringLiteral(" ✓");
        const double v = valor;
        transparencia->addAction(t, this, [this, clave, id, v] { cv_.fijarTransparencia(clave, id, v); });
    }
    menu.addAction(iconoSimbolo("scope"), QStringLiteral("Zoom al modelo"), this,
                   [this, clave, id] { cv_.resaltarModelo(clave, id); });
    menu.addAction(QStringLiteral("Transformación del modelo…"), this,
                   [this, clave, id] { cv_.abrirTransformacion(clave, id); });
    menu.addSeparator();
    menu.addAction(iconoSimbolo("trash"), QStringLiteral("Eliminar modelo vinculado"), this,
                   [this, clave, id] { cv_.pedirEliminarModelo(clave, id); });
}

QWidget* PanelFederacion::filaModelo(const std::string& clave, const std::string& id) {
    const ModeloVinculado& m = *cv_.buscarModelo(clave, id);
    auto* fila = new QWidget(contenido_);
    fila->setObjectName(q("modelo_" + id));
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(24, 0, 4, 0);

    auto* ojo = botonIcono(m.isVisible ? "eye" : "eye.slash",
                           m.isVisible ? QStringLiteral("Ocultar modelo") : QStringLiteral("Mostrar modelo"), fila);
    ojo->setObjectName(QStringLiteral("ojoModelo"));
    connect(ojo, &QToolButton::clicked, this, [this, clave, id] { cv_.alternarModelo(clave, id); });
    h->addWidget(ojo);

    auto* nombre = new QPushButton(q(m.nombre), fila);
    nombre->setObjectName(QStringLiteral("nombreModelo"));
    nombre->setFlat(true);
    nombre->setToolTip(QStringLiteral("Zoom al modelo"));
    const bool resaltado = cv_.modeloResaltadoId == id;
    nombre->setStyleSheet(resaltado ? QStringLiteral("text-align: left; color: #00a8e8; font-weight: bold;")
                                    : QStringLiteral("text-align: left;"));
    connect(nombre, &QPushButton::clicked, this, [this, clave, id] { cv_.resaltarModelo(clave, id); });
    h->addWidget(nombre, 1);
    if (m.transparencia > 0) h->addWidget(new QLabel(QString::number(m.transparencia * 100) + "%", fila));

    auto* mas = botonIcono("ellipsis.circle", QStringLiteral("Opciones del modelo"), fila);
    mas->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(mas);
    llenarMenuModelo(*menu, clave, id);
    mas->setMenu(menu);
    h->addWidget(mas);

    // The row's own delete control shows the short form; the menus the long one.
    auto* desvincular = botonIcono("trash", QStringLiteral("Eliminar modelo vinculado"), fila);
    desvincular->setObjectName(QStringLiteral("desvincularModelo"));
    desvincular->setText(QStringLiteral("Desvincular"));
    desvincular->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    connect(desvincular, &QToolButton::clicked, this, [this, clave, id] { cv_.pedirEliminarModelo(clave, id); });
    h->addWidget(desvincular);

    fila->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(fila, &QWidget::customContextMenuRequested, this, [this, clave, id, fila](const QPoint& p) {
        QMenu contexto;
        llenarMenuModelo(contexto, clave, id);
        contexto.exec(fila->mapToGlobal(p));
    });
    return fila;
}

} // namespace teskal
