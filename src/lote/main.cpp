// vornel-lote: the workbench's coordination without a window, for pipelines
// and nightly checks on a server. See textoAyudaLote() for its options.
#include "lote/EjecucionLote.h"
#include "lote/OpcionesLote.h"
#include "viewport/render/ContextoEGL.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdio>

namespace {

// Qt's own warnings (the display-less platform's screen queries, the software
// rasterizer's notice) would mix with the progress lines: only fatal
// messages go through.
void mensajesQt(QtMsgType tipo, const QMessageLogContext&, const QString& mensaje) {
    if (tipo == QtFatalMsg || tipo == QtCriticalMsg)
        std::fprintf(stderr, "vornel-lote: Qt: %s\n", mensaje.toLocal8Bit().constData());
}

} // namespace

int main(int argc, char** argv) {
    QStringList argumentos;
    for (int i = 0; i < argc; ++i) argumentos << QString::fromLocal8Bit(argv[i]);
    const auto leidas = teskal::leerOpcionesLote(argumentos);
    if (const auto* error = std::get_if<std::string>(&leidas)) {
        std::fprintf(stderr, "vornel-lote: error: %s\nvornel-lote --ayuda muestra las opciones.\n", error->c_str());
        return teskal::salidaError;
    }
    const auto& opciones = std::get<teskal::OpcionesLote>(leidas);
    if (opciones.ayuda) {
        std::fputs(teskal::textoAyudaLote().c_str(), stdout);
        return teskal::salidaCorrecta;
    }

    qInstallMessageHandler(mensajesQt);
    const bool sinPantalla = teskal::prepararPlataformaSinPantalla();
    QCoreApplication::setApplicationName(QStringLiteral("VORNEL"));
    QGuiApplication app(argc, argv);
    return teskal::ejecutarLote(opciones, QCoreApplication::applicationDirPath().toStdString(), sinPantalla);
}
