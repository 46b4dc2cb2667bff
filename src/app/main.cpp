#include "app/ui/VentanaPrincipal.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("TESKAL"));
    teskal::VentanaPrincipal ventana;
    ventana.show();
    return QApplication::exec();
}
