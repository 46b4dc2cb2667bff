#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QTranslator>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("VORNEL"));
    QApplication::setApplicationVersion(QStringLiteral("1.0"));
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QStringLiteral("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));

    // The toolkit's own texts (file dialogs, colour picker) in Spanish.
    QTranslator traduccion;
    if (traduccion.load(QLocale(QStringLiteral("es")), QStringLiteral("qtbase"), QStringLiteral("_"),
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&traduccion);

    teskal::CentroNotificaciones centro;
    teskal::ContentView cv(QApplication::applicationDirPath().toStdString());
    QObject::connect(&centro, &teskal::CentroNotificaciones::publicada, &cv,
                     [&cv](const std::string& nombre) { cv.recibirNotificacion(nombre); });
    teskal::VentanaPrincipal ventana(cv, centro);
    ventana.show();
    // A project or a package given on the command line opens at once.
    const QStringList argumentos = QApplication::arguments();
    if (argumentos.size() > 1) cv.abrirArchivoInicial(argumentos.at(1).toStdString());
    return QApplication::exec();
}
