// The version comparison in the workspace: the two slots and their loader,
// the comparison itself on the main thread, and the way back to the
// federated view.
#include "federation/ContentView.h"

#include "federation/ConversionIFC.h"
#include "federation/TrabajoSegundoPlano.h"

#include <QDateTime>
#include <QFileInfo>
#include <QUuid>
#include <filesystem>

namespace teskal {

namespace {

constexpr const char* sinVersionBase = "Sin versión base";
constexpr const char* sinVersionNueva = "Sin versión nueva";

std::string textoFalloXOR(const FalloConversion& fallo, double limiteMinutos) {
    switch (fallo.causa) {
    case FalloConversion::Causa::Copia:
        return "Error copiando archivo: " + fallo.descripcion;
    case FalloConversion::Causa::Lanzamiento:
        return "Error ejecutando IfcConvert: " + fallo.descripcion;
    case FalloConversion::Causa::Salida:
        return "IfcConvert falló:\n" + fallo.descripcion;
    case FalloConversion::Causa::TiempoAgotado:
        return textoLimiteConversion(limiteMinutos);
    case FalloConversion::Causa::Geometria:
    case FalloConversion::Causa::SinGeometria:
    case FalloConversion::Causa::Cancelada:
        break;
    }
    return "No se pudo cargar la geometría XOR.";
}

} // namespace

std::string ContentView::etiquetaSlotXOR(std::string_view slot) {
    return slot == slotsXOR::base ? "Base" : "Nueva";
}

std::string ContentView::textoProcesando() const {
    if (slotXORCargando)
        return *slotXORCargando == slotsXOR::base ? "Procesando versión base..." : "Procesando versión nueva...";
    const auto it = especialidades.find(seleccionActual);
    return "Procesando " + (it == especialidades.end() ? std::string() : it->second.nombre) + "...";
}

void ContentView::pedirCargarSlotXOR(const std::string& slot) {
    if (xorActivo) {
        xorSlotPendienteCargar = slot; // the alert "Cargar nuevo archivo" asks first
    } else {
        seleccionandoXOR = slot;
        showFilePicker = true;
    }
    emit changed();
}

void ContentView::continuarCargaXOR() {
    if (!xorSlotPendienteCargar) return;
    const std::string slot = *xorSlotPendienteCargar;
    xorSlotPendienteCargar.reset();
    limpiarXOR();
    seleccionandoXOR = slot;
    showFilePicker = true;
    emit changed();
}

void ContentView::cancelarCargaXOR() {
    xorSlotPendienteCargar.reset();
    emit changed();
}

void ContentView::cargarSlotXOR(const std::string& slot, const std::string& ruta) {
    TrabajoConversion trabajo;
    prepararConversion(trabajo);
    trabajo.rutaOrigen = ruta;
    trabajo.rutaSalida = rutaTemporalNueva(".obj");
    trabajo.rutaConversor =
        rutaConversor.empty() ? buscarConversor(carpetaPrograma_) : rutaConversor;
    trabajo.leerGrillas = false;
    trabajo.leerPropiedades = false;
    trabajo.leerGlobalIds = true;
    if (trabajo.rutaConversor.empty()) {
        mostrarError("No se encontró el motor IfcConvert en el bundle de la app.");
        return;
    }
    isProcessing = true;
    slotXORCargando = slot;
    emit changed();

    const std::string nombre = QFileInfo(QString::fromStdString(ruta)).fileName().toStdString();
    enSegundoPlano(this, [trabajo] { return convertirIFC(trabajo); },
                   [trabajo, slot, nombre](ContentView& cv, ResultadoConversion resultado) {
                       if (const auto* fallo = std::get_if<FalloConversion>(&resultado)) {
                           // A cancel has already ended this load's progress.
                           if (fallo->causa == FalloConversion::Causa::Cancelada) return;
                           cv.slotXORCargando.reset();
                           cv.isProcessing = false;
                           cv.mostrarError(textoFalloXOR(*fallo, trabajo.limiteMinutos));
                           return;
                       }
                       cv.slotXORCargando.reset();
                       auto& convertido = std::get<ModeloConvertido>(resultado);
                       cv.instalarSlotXOR(slot, std::move(convertido.modelo), nombre,
                                          std::move(convertido.globalIds));
                       std::error_code ec;
                       std::filesystem::remove(trabajo.rutaSalida, ec);
                   });
}

void ContentView::instalarSlotXOR(const std::string& slot, std::shared_ptr<Node> modelo,
                                  const std::string& nombre, GlobalIdsPorNombre globalIds) {
    const bool base = slot == slotsXOR::base;
    std::shared_ptr<Node>& lugar = base ? modeloBase : modeloNuevo;
    if (lugar) lugar->removeFromParentNode();
    lugar = std::move(modelo);
    (base ? fileNameBase : fileNameNuevo) = nombre;
    (base ? globalIdXorBase : globalIdXorNuevo) = std::move(globalIds);
    lugar->setHidden(true);
    scene.rootNode()->addChildNode(lugar);
    isProcessing = false;
    actualizarPiso();
    // A load that was under way when a comparison started recomputes it.
    if (xorActivo)
        compararXOR();
    else
        emit changed();
}

void ContentView::limpiarSlotXOR(const std::string& slot) {
    if (xorActivo) limpiarXOR();
    const bool base = slot == slotsXOR::base;
    std::shared_ptr<Node>& lugar = base ? modeloBase : modeloNuevo;
    if (lugar) lugar->removeFromParentNode();
    lugar.reset();
    (base ? fileNameBase : fileNameNuevo) = base ? sinVersionBase : sinVersionNueva;
    (base ? globalIdXorBase : globalIdXorNuevo).clear();
    xorStats = {};
    emit changed();
}

void ContentView::compararXOR() {
    if (!modeloBase || !modeloNuevo) return;
    // A lit selection would give its old colour back over the comparison's.
    seleccionarNodo(nullptr);
    for (auto& [clave, esp] : especialidades)
        if (esp.nodoRaiz) esp.nodoRaiz->setHidden(true);
    modeloBase->setHidden(false);
    modeloNuevo->setHidden(false);

    const ClasificacionXOR c =
        clasificarXOR(*modeloBase, *modeloNuevo, globalIdXorBase, globalIdXorNuevo);
    pintarXOR(c);
    xorStats = c.estadisticas();

    ResultadoXOR r;
    r.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    r.fecha = QDateTime::currentDateTime();
    r.archivoBase = fileNameBase;
    r.archivoNuevo = fileNameNuevo;
    r.elementos = elementosCambioXOR(c);
    r.iguales = xorStats.iguales;
    resultadoXOR = std::move(r);
    xorActivo = true;
    actualizarPiso();
    emit changed();
}

void ContentView::repintarXOR() {
    if (!xorActivo || !modeloBase || !modeloNuevo) return;
    pintarXOR(clasificarXOR(*modeloBase, *modeloNuevo, globalIdXorBase, globalIdXorNuevo));
}

void ContentView::pedirLimpiarXOR() {
    confirmarLimpiarXOR = true;
    emit changed();
}

void ContentView::cancelarLimpiarXOR() {
    confirmarLimpiarXOR = false;
    emit changed();
}

void ContentView::limpiarXOR() {
    confirmarLimpiarXOR = false;
    xorActivo = false;
    resultadoXOR.reset();
    // The painted versions stay painted, hidden: a new comparison repaints them.
    if (modeloBase) modeloBase->setHidden(true);
    if (modeloNuevo) modeloNuevo->setHidden(true);
    for (auto& [clave, esp] : especialidades)
        if (esp.nodoRaiz) esp.nodoRaiz->setHidden(!esp.isVisible);
    xorStats = {};
    recolorearModelos(); // signals the change
}

} // namespace teskal
