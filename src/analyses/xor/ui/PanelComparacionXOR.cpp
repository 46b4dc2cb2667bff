#include "analyses/xor/ui/PanelComparacionXOR.h"

#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "federation/ContentView.h"
#include "ui/TextoQt.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

PanelComparacionXOR::PanelComparacionXOR(ContentView& cv, QWidget* parent)
    : QWidget(parent), cv_(cv) {
    caja_ = new QVBoxLayout(this);
    caja_->setContentsMargins(0, 0, 0, 0);
    reconstruirTrasCambios(cv_, this, [this] { reconstruir(); });
    reconstruir();
}

QWidget* PanelComparacionXOR::filaSlot(const std::string& slot, QWidget* padre) {
    const bool base = slot == slotsXOR::base;
    const bool lleno = base ? cv_.modeloBase != nullptr : cv_.modeloNuevo != nullptr;
    auto* fila = new QWidget(padre);
    fila->setObjectName(q("slotXOR_" + slot));
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(0, 2, 0, 2);
    auto* etiqueta = new QLabel(q(ContentView::etiquetaSlotXOR(slot)), fila);
    etiqueta->setStyleSheet(QStringLiteral("font-weight: bold;"));
    etiqueta->setMinimumWidth(44);
    h->addWidget(etiqueta);
    auto* archivo = new QLabel(q(base ? cv_.fileNameBase : cv_.fileNameNuevo), fila);
    archivo->setObjectName(QStringLiteral("archivoSlot"));
    archivo->setStyleSheet(lleno ? QString() : QStringLiteral("color: gray;"));
    archivo->setToolTip(archivo->text());
    archivo->setMinimumWidth(60);
    h->addWidget(archivo, 1);
    auto* cargar = new QPushButton(QStringLiteral("Cargar"), fila);
    cargar->setObjectName(QStringLiteral("cargarSlot"));
    connect(cargar, &QPushButton::clicked, this, [this, slot] { cv_.pedirCargarSlotXOR(slot); });
    h->addWidget(cargar);
    if (lleno) {
        auto* quitar = new QToolButton(fila);
        quitar->setObjectName(QStringLiteral("limpiarSlot"));
        quitar->setIcon(iconoSimbolo("minus.circle"));
        quitar->setAutoRaise(true);
        connect(quitar, &QToolButton::clicked, this, [this, slot] { cv_.limpiarSlotXOR(slot); });
        h->addWidget(quitar);
    }
    return fila;
}

void PanelComparacionXOR::reconstruir() {
    auto* v = contenidoNuevo(caja_, contenido_, this);
    v->setSpacing(2);
    v->addWidget(filaSlot(std::string(slotsXOR::base), contenido_));
    v->addWidget(filaSlot(std::string(slotsXOR::nuevo), contenido_));

    if (!cv_.xorActivo) {
        if (cv_.modeloBase && cv_.modeloNuevo) {
            auto* comparar = new QPushButton(iconoSimbolo("arrow.triangle.2.circlepath"),
                                             QStringLiteral("Comparar versiones"), contenido_);
            comparar->setObjectName(QStringLiteral("compararVersiones"));
            connect(comparar, &QPushButton::clicked, this, [this] { cv_.compararXOR(); });
            v->addWidget(comparar, 0, Qt::AlignLeft);
        }
        return;
    }
    struct Cuenta {
        int valor;
        const char* palabra;
        const char* icono;
        Color color;
        const char* nombre;
    };
    const Cuenta cuentas[] = {
        {cv_.xorStats.agregados, " agregados", "plus.circle.fill", coloresXOR::agregado,
         "xorAgregados"},
        {cv_.xorStats.eliminados, " eliminados", "minus.circle.fill", coloresXOR::eliminado,
         "xorEliminados"},
        {cv_.xorStats.modificados, " modificados", "arrow.triangle.2.circlepath.circle.fill",
         coloresXOR::modificadoAnterior, "xorModificados"},
        {cv_.xorStats.iguales, " sin cambios", "equal.circle.fill", coloresXOR::sinCambios,
         "xorIguales"},
    };
    for (const Cuenta& c : cuentas) {
        auto* fila = new QHBoxLayout;
        auto* icono = new QLabel(contenido_);
        icono->setPixmap(iconoSimbolo(c.icono).pixmap(14, 14));
        fila->addWidget(icono);
        auto* texto =
            new QLabel(QString::number(c.valor) + QString::fromUtf8(c.palabra), contenido_);
        texto->setObjectName(QString::fromLatin1(c.nombre));
        texto->setStyleSheet(QStringLiteral("color: %1; font-weight: bold;").arg(css(c.color)));
        fila->addWidget(texto, 1);
        v->addLayout(fila);
    }
    auto* informe = new QPushButton(QStringLiteral("Ver Informe XOR"), contenido_);
    informe->setObjectName(QStringLiteral("verInformeXOR"));
    connect(informe, &QPushButton::clicked, this, &PanelComparacionXOR::informeSolicitado);
    v->addWidget(informe, 0, Qt::AlignLeft);
    auto* limpiar = new QPushButton(QStringLiteral("Limpiar XOR"), contenido_);
    limpiar->setObjectName(QStringLiteral("limpiarXOR"));
    connect(limpiar, &QPushButton::clicked, this, [this] { cv_.pedirLimpiarXOR(); });
    v->addWidget(limpiar, 0, Qt::AlignLeft);
}

} // namespace teskal
