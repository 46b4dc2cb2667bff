#include "timeline/ui/PanelTimeline.h"

#include "federation/ContentView.h"
#include "timeline/ValorGanado.h"
#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "ui/TextoQt.h"

#include <QLabel>
#include <QPushButton>

namespace teskal {

PanelTimeline::PanelTimeline(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    caja_ = new QVBoxLayout(this);
    caja_->setContentsMargins(0, 0, 0, 0);
    reconstruirTrasCambios(cv_, this, [this] { reconstruir(); });
    reconstruir();
}

void PanelTimeline::reconstruir() {
    auto* v = contenidoNuevo(caja_, contenido_, this);
    v->setSpacing(4);
    auto* abrir = new QPushButton(iconoSimbolo("calendar.badge.clock"), QStringLiteral("Abrir Timeline"), contenido_);
    abrir->setObjectName(QStringLiteral("abrirTimeline"));
    connect(abrir, &QPushButton::clicked, this, &PanelTimeline::abrirSolicitado);
    v->addWidget(abrir, 0, Qt::AlignLeft);
    // The summary waits for a plan: an empty project shows the button alone.
    if (cv_.timeLiner.paquetes.empty()) return;
    const ArbolAWP arbol(cv_.timeLiner);
    const TotalesEVM t = totalesEVM(arbol, {});
    auto* resumen = new QLabel(QString::number(static_cast<qulonglong>(arbol.cwas().size())) +
                                   QStringLiteral(" CWA  ·  Avance: ") + q(textoPorcentaje(t.avanceGlobal)),
                               contenido_);
    resumen->setObjectName(QStringLiteral("resumenTimeline"));
    resumen->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(resumen);
}

} // namespace teskal
