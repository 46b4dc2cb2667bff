// The road of one file from the picker into the scene: checks on the main
// thread, the conversion on a pool thread, the assembly back on the main one.
#include "federation/ContentView.h"

#include "federation/ConversionIFC.h"
#include "federation/TrabajoSegundoPlano.h"

#include <QFileInfo>

namespace teskal {

namespace {

// A file that is there but can't be read is refused before anything starts;
// a file that has vanished meets its failure at the copy.
bool accesoDenegado(const std::string& ruta) {
    const QFileInfo info(QString::fromStdString(ruta));
    return info.exists() && !info.isReadable();
}

constexpr const char* textoAccesoDenegado = "No se pudo acceder al archivo. Verifica los permisos en Sandbox.";

} // namespace

void ContentView::vincularIFC(const std::string& clave) {
    seleccionActual = clave;
    seleccionandoXOR.reset(); // this picker links to a discipline
    showFilePicker = true;
    emit changed();
}

void ContentView::archivosElegidos(const std::vector<std::string>& rutas, const std::string& falloSelector) {
    showFilePicker = false;
    if (!falloSelector.empty() || rutas.empty()) {
        // The slot a comparison's picker was filling is forgotten, so that
        // the next picker (a link from the menu, say) is not taken for it.
        seleccionandoXOR.reset();
    }
    if (!falloSelector.empty()) {
        mostrarError("Error al seleccionar archivo: " + falloSelector);
        return;
    }
    if (rutas.empty()) { // cancelled: nothing changes, not even fileName
        emit changed();
        return;
    }
    // A single selection: only the first counts.
    if (seleccionandoXOR) {
        const std::string slot = *seleccionandoXOR;
        seleccionandoXOR.reset();
        if (accesoDenegado(rutas.front())) {
            mostrarError(textoAccesoDenegado);
            return;
        }
        cargarSlotXOR(slot, rutas.front());
        return;
    }
    convertirYVincular(rutas.front());
}

void ContentView::convertirYVincular(const std::string& ruta) {
    if (accesoDenegado(ruta)) {
        mostrarError(textoAccesoDenegado);
        return;
    }
    const QFileInfo info(QString::fromStdString(ruta));
    fileName = info.fileName().toStdString();
    isProcessing = true;
    emit changed();

    // The model goes to the discipline chosen with the file, whatever is
    // selected when the conversion ends.
    const std::string clave = seleccionActual;
    TrabajoConversion trabajo;
    prepararConversion(trabajo);
    trabajo.rutaOrigen = ruta;
    trabajo.rutaSalida = rutaTemporalNueva(".obj");
    trabajo.rutaConversor = rutaConversor.empty() ? buscarConversor(carpetaPrograma_) : rutaConversor;
    if (trabajo.rutaConversor.empty()) {
        isProcessing = false;
        mostrarError("No se encontró el motor IfcConvert en el bundle de la app.");
        return;
    }

    enSegundoPlano(this, [trabajo] { return convertirIFC(trabajo); },
                   [trabajo, clave, limite = trabajo.limiteMinutos](ContentView& cv,
                                                                     ResultadoConversion resultado) {
                       if (auto* fallo = std::get_if<FalloConversion>(&resultado)) {
                           // A cancel has already cleared the overlay; later
                           // conversions may be running.
                           if (fallo->causa == FalloConversion::Causa::Cancelada) return;
                           cv.isProcessing = false;
                           switch (fallo->causa) {
                           case FalloConversion::Causa::Copia:
                               cv.mostrarError("No se pudo copiar el archivo al directorio temporal: " +
                                               fallo->descripcion);
                               break;
                           case FalloConversion::Causa::Lanzamiento:
                               cv.mostrarError("No se pudo ejecutar IfcConvert: " + fallo->descripcion);
                               break;
                           case FalloConversion::Causa::Salida:
                               cv.mostrarError("IfcConvert falló (código " + std::to_string(fallo->codigo) +
                                               "):\n" + fallo->descripcion);
                               break;
                           case FalloConversion::Causa::Geometria:
                               cv.mostrarError("No se pudo cargar la geometría. El archivo generado puede estar "
                                               "vacío o corrupto.");
                               break;
                           case FalloConversion::Causa::SinGeometria:
                               cv.mostrarError("El archivo no contiene geometría que se pueda mostrar");
                               break;
                           case FalloConversion::Causa::TiempoAgotado:
                               cv.mostrarError(textoLimiteConversion(limite));
                               break;
                           case FalloConversion::Causa::Cancelada:
                               break;
                           }
                           return;
                       }
                       cv.integrarModelo(std::move(std::get<ModeloConvertido>(resultado)), trabajo.rutaOrigen,
                                         trabajo.rutaSalida, clave);
                   });
}

} // namespace teskal
