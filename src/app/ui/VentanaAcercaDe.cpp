#include "app/ui/VentanaAcercaDe.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QLabel>
#include <QVBoxLayout>

namespace teskal {

VentanaAcercaDe::VentanaAcercaDe(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("acercaDe"));
    setWindowTitle(QStringLiteral("Acerca de VORNEL"));
    auto* v = new QVBoxLayout(this);
    auto* nombre = new QLabel(QStringLiteral("VORNEL"), this);
    nombre->setStyleSheet(QStringLiteral("font-size: 28px; font-weight: bold;"));
    nombre->setAlignment(Qt::AlignCenter);
    v->addWidget(nombre);
    auto* version = new QLabel(QStringLiteral("Versión 1.0 (Build 1)"), this);
    version->setAlignment(Qt::AlignCenter);
    v->addWidget(version);
    auto* lema = new QLabel(QStringLiteral("Coordinación BIM: federación, interferencias, secciones, QTO y 4D"), this);
    lema->setAlignment(Qt::AlignCenter);
    v->addWidget(lema);
    auto* botones = new QDialogButtonBox(QDialogButtonBox::Close, this);
    botones->button(QDialogButtonBox::Close)->setText(QStringLiteral("Cerrar"));
    connect(botones, &QDialogButtonBox::rejected, this, &QDialog::close);
    v->addWidget(botones);
}

} // namespace teskal
