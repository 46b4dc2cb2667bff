#include "viewport/ui/LeyendaVisor.h"

#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "federation/ContentView.h"
#include "viewport/PanelDetalle.h"
#include "ui/TextoQt.h"

#include <QGridLayout>
#include <set>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

namespace teskal {

namespace {


QLabel* muestraColor(const Color& c, int lado, QWidget* padre) {
    auto* l = new QLabel(padre);
    l->setFixedSize(lado, lado);
    l->setStyleSheet(QStringLiteral("background: %1; border-radius: %2px;")
                         .arg(QColor::fromRgbF(c.r, c.g, c.b).name())
                         .arg(lado / 4));
    return l;
}

} // namespace

LeyendaVisor::LeyendaVisor(ContentView& cv, QWidget* parent) : QFrame(parent), cv_(cv) {
    setObjectName(QStringLiteral("leyenda"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("#leyenda { background: rgba(255, 255, 255, 225); border-radius: 8px; }"));
    setMaximumWidth(360);
    caja_ = new QVBoxLayout(this);
    caja_->setContentsMargins(10, 8, 10, 8);
    reconstruirTrasCambios(cv_, this, [this] { reconstruir(); });
    reconstruir();
}

void LeyendaVisor::reconstruir() {
    auto* v = contenidoNuevo(caja_, contenido_, this);
    auto* titulo = new QLabel(QStringLiteral("Leyenda"), contenido_);
    titulo->setStyleSheet(QStringLiteral("font-weight: bold;"));
    v->addWidget(titulo);
    if (cv_.xorActivo) {
        // The two versions stand in place of the disciplines.
        const std::pair<const char*, Color> entradas[] = {
            {"Agregado", coloresXOR::agregado},
            {"Eliminado", coloresXOR::eliminado},
            {"Modificado — posición anterior", coloresXOR::modificadoAnterior},
            {"Modificado — nueva posición/tamaño", coloresXOR::modificadoNuevo},
            {"Sin cambios", coloresXOR::sinCambios},
        };
        for (const auto& [texto, color] : entradas) {
            auto* fila = new QHBoxLayout;
            fila->addWidget(muestraColor(color, 12, contenido_));
            auto* etiqueta = new QLabel(QString::fromUtf8(texto), contenido_);
            etiqueta->setObjectName(QStringLiteral("leyendaXOR"));
            fila->addWidget(etiqueta, 1);
            v->addLayout(fila);
        }
    }
    for (const std::string& clave : cv_.ordenEspecialidades) {
        if (cv_.xorActivo) break;
        const auto it = cv_.especialidades.find(clave);
        if (it == cv_.especialidades.end() || it->second.modelos.empty()) continue;
        auto* fila = new QHBoxLayout;
        fila->addWidget(muestraColor(it->second.colorOriginal, 12, contenido_));
        fila->addWidget(new QLabel(q(it->second.nombre), contenido_), 1);
        v->addLayout(fila);
    }
    if (!cv_.interferencias.empty()) {
        // The clashes of the latest run, by pair of disciplines.
        auto* cabecera = new QLabel(QStringLiteral("Colisiones"), contenido_);
        cabecera->setObjectName(QStringLiteral("leyendaColisiones"));
        cabecera->setStyleSheet(QStringLiteral("font-weight: bold; color: %1;")
                                    .arg(QColor::fromRgbF(colores::naranjaPuro.r, colores::naranjaPuro.g, colores::naranjaPuro.b).name()));
        v->addWidget(cabecera);
        std::set<std::string> pares;
        for (const auto& i : cv_.interferencias) pares.insert(i.especialidadA + " ↔ " + i.especialidadB);
        for (const auto& par : pares) {
            auto* fila = new QHBoxLayout;
            fila->addWidget(muestraColor(colores::naranjaPuro, 6, contenido_));
            fila->addWidget(new QLabel(q(par), contenido_), 1);
            v->addLayout(fila);
        }
        v->addWidget(new QLabel(QString::number(cv_.interferencias.size()) + QStringLiteral(" elementos afectados"),
                                contenido_));
    }
    auto* aplicar = new QPushButton(QStringLiteral("Aplicar colores"), contenido_);
    aplicar->setObjectName(QStringLiteral("aplicarColores"));
    aplicar->setToolTip(QStringLiteral("Fuerza la aplicación de los colores de leyenda a todos los modelos"));
    connect(aplicar, &QPushButton::clicked, this, [this] { cv_.aplicarColores(); });
    v->addWidget(aplicar);

    if (cv_.nodoSeleccionado) {
        auto* cabecera = new QHBoxLayout;
        auto* icono = new QLabel(contenido_);
        icono->setPixmap(iconoSimbolo("info.circle").pixmap(14, 14));
        cabecera->addWidget(icono);
        auto* props = new QLabel(QStringLiteral("Propiedades"), contenido_);
        props->setStyleSheet(QStringLiteral("font-weight: bold;"));
        cabecera->addWidget(props, 1);
        v->addSpacing(6);
        v->addLayout(cabecera);

        auto* filas = new QWidget;
        filas->setObjectName(QStringLiteral("panelDetalle"));
        auto* rejilla = new QGridLayout(filas);
        rejilla->setContentsMargins(0, 0, 0, 0);
        int r = 0;
        for (const FilaDetalle& f : filasDetalle(cv_, *cv_.nodoSeleccionado)) {
            auto* etiqueta = new QLabel(q(f.etiqueta), filas);
            if (f.etiqueta.rfind("──", 0) == 0) {
                etiqueta->setStyleSheet(QStringLiteral("font-weight: bold; color: #555;"));
                rejilla->addWidget(etiqueta, r++, 0, 1, 2);
                continue;
            }
            etiqueta->setStyleSheet(QStringLiteral("color: #555;"));
            etiqueta->setWordWrap(true);
            etiqueta->setMaximumWidth(150);
            auto* valor = new QLabel(q(f.valor), filas);
            valor->setTextInteractionFlags(Qt::TextSelectableByMouse);
            valor->setWordWrap(true);
            rejilla->addWidget(etiqueta, r, 0, Qt::AlignTop);
            rejilla->addWidget(valor, r++, 1);
        }
        rejilla->setColumnStretch(1, 1);
        auto* desplazable = new QScrollArea(contenido_);
        desplazable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        desplazable->setWidget(filas);
        desplazable->setWidgetResizable(true);
        desplazable->setFrameShape(QFrame::NoFrame);
        desplazable->setMaximumHeight(420);
        desplazable->setMinimumWidth(300);
        v->addWidget(desplazable);
        auto* deseleccionar = new QPushButton(QStringLiteral("Deseleccionar"), contenido_);
        deseleccionar->setObjectName(QStringLiteral("deseleccionar"));
        connect(deseleccionar, &QPushButton::clicked, this, [this] { cv_.seleccionarNodo(nullptr); });
        v->addWidget(deseleccionar);
    }
    adjustSize();
}

} // namespace teskal
