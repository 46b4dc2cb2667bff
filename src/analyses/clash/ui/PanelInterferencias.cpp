#include "analyses/clash/ui/PanelInterferencias.h"

#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "ui/TextoQt.h"
#include "analyses/clash/ReporteHTML.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

namespace {


// A clash line: a click flies to it; the right button offers the states.
class LineaInterferencia : public QWidget {
public:
    std::function<void()> alClicar;
    using QWidget::QWidget;

protected:
    void mousePressEvent(QMouseEvent* e) override { e->accept(); }
    void mouseReleaseEvent(QMouseEvent* e) override {
        if (e->button() == Qt::LeftButton && alClicar) alClicar();
    }
};

} // namespace

PanelInterferencias::PanelInterferencias(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    caja_ = new QVBoxLayout(this);
    caja_->setContentsMargins(0, 0, 0, 0);
    reconstruirTrasCambios(cv_, this, [this] { reconstruir(); });
    reconstruir();
}

void PanelInterferencias::reconstruir() {
    auto* v = contenidoNuevo(caja_, contenido_, this);
    v->setSpacing(2);
    if (cv_.detectando) {
        auto* fila = new QHBoxLayout;
        auto* giro = new QProgressBar(contenido_);
        giro->setRange(0, 0);
        giro->setMaximumWidth(60);
        giro->setTextVisible(false);
        fila->addWidget(giro);
        fila->addWidget(new QLabel(QStringLiteral("Analizando..."), contenido_), 1);
        v->addLayout(fila);
    } else {
        auto* nueva = new QPushButton(iconoSimbolo("exclamationmark.triangle"), QStringLiteral("Nueva detección"),
                                      contenido_);
        nueva->setObjectName(QStringLiteral("nuevaDeteccion"));
        nueva->setEnabled(cv_.puedeDetectar());
        // A disabled command says why.
        if (!nueva->isEnabled())
            nueva->setToolTip(QStringLiteral("Se necesitan modelos vinculados en al menos dos especialidades"));
        connect(nueva, &QPushButton::clicked, this, [this] { cv_.abrirConfigAnalisis(); });
        v->addWidget(nueva, 0, Qt::AlignLeft);
    }
    for (std::size_t a = 0; a < cv_.historialAnalisis.size(); ++a) {
        v->addWidget(filaAnalisis(a, contenido_));
        if (!cv_.analisisExpandidos.contains(cv_.historialAnalisis[a].id)) continue;
        for (std::size_t i = 0; i < cv_.historialAnalisis[a].interferencias.size(); ++i)
            v->addWidget(filaInterferencia(a, i, contenido_));
    }
}

QWidget* PanelInterferencias::filaAnalisis(std::size_t indice, QWidget* padre) {
    const AnalisisInterferencias& a = cv_.historialAnalisis[indice];
    auto* fila = new QWidget(padre);
    fila->setObjectName(q("analisis_" + a.id));
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(0, 2, 0, 2);
    const bool abierto = cv_.analisisExpandidos.contains(a.id);
    auto* plegar = new QToolButton(fila);
    plegar->setArrowType(abierto ? Qt::DownArrow : Qt::RightArrow);
    plegar->setAutoRaise(true);
    const std::string id = a.id;
    connect(plegar, &QToolButton::clicked, this, [this, id] { cv_.alternarAnalisisExpandido(id); });
    h->addWidget(plegar);
    auto* nombre = new QLabel(q(a.nombre), fila);
    nombre->setStyleSheet(QStringLiteral("font-weight: bold;"));
    // A long name gives way to the buttons at the end of the row.
    nombre->setMinimumWidth(1);
    nombre->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    nombre->setToolTip(q(a.nombre));
    h->addWidget(nombre, 1);
    auto cuenta = [&](EstadoClash e) {
        const int n = a.cuenta(e);
        if (n <= 0) return;
        auto* icono = new QLabel(fila);
        icono->setPixmap(iconoSimbolo(std::string(iconoEstado(e))).pixmap(12, 12));
        h->addWidget(icono);
        auto* l = new QLabel(QString::number(n), fila);
        l->setObjectName(e == EstadoClash::abierto ? QStringLiteral("cuentaAbiertos") : QStringLiteral("cuentaResueltos"));
        l->setStyleSheet(QStringLiteral("color: %1; font-weight: bold;").arg(css(colorEstado(e))));
        h->addWidget(l);
    };
    cuenta(EstadoClash::abierto);
    cuenta(EstadoClash::resuelto);
    // The method follows the tolerance in a word: "exacta", "cajas" or the
    // clearance; its full name is the tooltip.
    std::string corto = " · exacta";
    if (a.metodo == MetodoAnalisis::cajasEnvolventes) corto = " · cajas";
    if (a.metodo == MetodoAnalisis::holgura) corto = formato(" · holgura %.3f m", a.holgura);
    auto* tol = new QLabel(q("tol: " + formato("%.3f", a.tolerancia) + " m" + corto), fila);
    tol->setObjectName(QStringLiteral("toleranciaMetodo"));
    tol->setStyleSheet(QStringLiteral("color: gray;"));
    tol->setToolTip(q(textoMetodo(a.metodo)));
    h->addWidget(tol);
    auto* reporte = new QToolButton(fila);
    reporte->setObjectName(QStringLiteral("verReporte"));
    reporte->setIcon(iconoSimbolo("doc.text.magnifyingglass"));
    reporte->setText(QStringLiteral("Ver Reporte")); // icon only in the row; the text names it
    reporte->setToolTip(QStringLiteral("Ver Reporte"));
    reporte->setAutoRaise(true);
    connect(reporte, &QToolButton::clicked, this, [this, indice] { emit reporteSolicitado(indice); });
    h->addWidget(reporte);
    auto* borrar = new QToolButton(fila);
    borrar->setObjectName(QStringLiteral("eliminarAnalisis"));
    borrar->setIcon(iconoSimbolo("trash"));
    borrar->setToolTip(QStringLiteral("Eliminar análisis"));
    borrar->setAutoRaise(true);
    connect(borrar, &QToolButton::clicked, this, [this, indice] { cv_.pedirEliminarAnalisis(indice); });
    h->addWidget(borrar);
    return fila;
}

QWidget* PanelInterferencias::filaInterferencia(std::size_t analisis, std::size_t indice, QWidget* padre) {
    const Interferencia& i = cv_.historialAnalisis[analisis].interferencias[indice];
    auto* fila = new LineaInterferencia(padre);
    fila->setObjectName(q("interferencia_" + i.id));
    fila->setCursor(Qt::PointingHandCursor);
    fila->setToolTip(q(textoEstado(i.estado)) + QStringLiteral(" — clic derecho para cambiar estado"));
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(22, 1, 0, 1);
    auto* punto = new QLabel(fila);
    punto->setFixedSize(8, 8);
    punto->setStyleSheet(QStringLiteral("background: %1; border-radius: 4px;").arg(css(colorEstado(i.estado))));
    h->addWidget(punto, 0, Qt::AlignTop);
    // An exact or clearance clash adds its measure in millimetres.
    QString lineas = q(i.nombreA) + QStringLiteral("\n↔ ") + q(i.nombreB) + QStringLiteral("\n") +
                     q(i.especialidadA) + QStringLiteral(" / ") + q(i.especialidadB);
    if (i.distancia) lineas += QStringLiteral("\n") + q(tituloMedida(i.metodo) + " " + textoMilimetros(i));
    auto* texto = new QLabel(lineas, fila);
    texto->setStyleSheet(QStringLiteral("font-size: 11px;"));
    h->addWidget(texto, 1);
    fila->alClicar = [this, analisis, indice] {
        if (analisis < cv_.historialAnalisis.size() && indice < cv_.historialAnalisis[analisis].interferencias.size())
            cv_.enfocarInterferencia(cv_.historialAnalisis[analisis].interferencias[indice]);
    };
    fila->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(fila, &QWidget::customContextMenuRequested, this, [this, fila, analisis, indice](const QPoint& p) {
        QMenu menu;
        menu.addSection(QStringLiteral("Cambiar estado"));
        for (EstadoClash e : estadosClash)
            menu.addAction(iconoSimbolo(std::string(iconoEstado(e))), q(textoEstado(e)), this,
                           [this, analisis, indice, e] { cv_.cambiarEstado(analisis, indice, e); });
        menu.exec(fila->mapToGlobal(p));
    });
    return fila;
}

} // namespace teskal
