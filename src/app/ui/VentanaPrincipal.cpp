#include "app/ui/VentanaPrincipal.h"

#include <QLabel>

namespace teskal {

VentanaPrincipal::VentanaPrincipal(QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("TESKAL"));
    resize(1440, 900);
    auto* bienvenida = new QLabel(QStringLiteral("TESKAL · Coordinación BIM"), this);
    bienvenida->setAlignment(Qt::AlignCenter);
    setCentralWidget(bienvenida);
}

} // namespace teskal
