#include "federation/ContentView.h"

#include "federation/ConversionIFC.h"
#include "federation/TextoUTF8.h"

#include <QThreadPool>
#include <algorithm>
#include <glm/gtc/constants.hpp>

namespace teskal {

ContentView::ContentView(std::string carpetaPrograma, QObject* parent)
    : QObject(parent), limiteConversionMinutos(limiteMinutosConversion()),
      carpetaPrograma_(std::move(carpetaPrograma)) {}

ContentView::~ContentView() { detenerTrabajos(); }

void ContentView::prepararConversion(TrabajoConversion& trabajo) const {
    trabajo.cancelar = cancelacionVinculos_;
    trabajo.limiteMinutos = limiteConversionMinutos;
    trabajo.carpetaCache = carpetaCache;
}

void ContentView::prepararRestauracion(TrabajoConversion& trabajo) const {
    trabajo.cancelar = cancelacionRestauracion_;
    trabajo.limiteMinutos = limiteConversionMinutos;
    trabajo.carpetaCache = carpetaCache;
}

void ContentView::vaciarCacheConversiones() {
    if (const std::string error = vaciarCache(carpetaCache); !error.empty())
        mostrarError("No se pudo vaciar la caché de conversiones: " + error);
}

void ContentView::cancelarConversion() {
    cancelacionVinculos_->store(true);
    cancelacionVinculos_ = std::make_shared<std::atomic<bool>>(false);
    isProcessing = false;
    slotXORCargando.reset();
    emit changed();
}

void ContentView::detenerTrabajos() {
    cancelacionVinculos_->store(true);
    cancelacionRestauracion_->store(true);
    QThreadPool::globalInstance()->waitForDone();
    cancelacionVinculos_ = std::make_shared<std::atomic<bool>>(false);
    cancelacionRestauracion_ = std::make_shared<std::atomic<bool>>(false);
    isProcessing = false;
}

void ContentView::mostrarError(std::string mensaje) {
    errorMessage = std::move(mensaje);
    showError = true;
    emit changed();
}

void ContentView::cerrarError() {
    showError = false;
    emit changed();
}

void ContentView::recibirNotificacion(const std::string& nombre) {
    if (nombre == notificaciones::abrirIFC) {
        showFilePicker = true;
    } else if (nombre == notificaciones::guardarProyecto) {
        guardarProyecto();
        return;
    } else if (nombre == notificaciones::guardarProyectoComo) {
        showSavePicker = true;
    } else if (nombre == notificaciones::abrirProyecto) {
        pedirAccion({AccionPendiente::Tipo::abrirProyecto, {}});
        return;
    } else if (nombre == notificaciones::exportarPaquete) {
        mostrarExportarPaquete = true;
    } else if (nombre == notificaciones::importarPaquete) {
        pedirAccion({AccionPendiente::Tipo::abrirPaquete, {}});
        return;
    } else if (nombre == notificaciones::nuevoProyecto) {
        pedirAccion({AccionPendiente::Tipo::nuevoProyecto, {}});
        return;
    } else if (nombre == notificaciones::abrirQTO) {
        abrirQTO();
        return;
    } else {
        return; // a name no command answers to
    }
    emit changed();
}

const ModeloVinculado* ContentView::buscarModelo(const std::string& clave, const std::string& id) const {
    const auto it = especialidades.find(clave);
    if (it == especialidades.end()) return nullptr;
    for (const auto& m : it->second.modelos)
        if (m.id == id) return &m;
    return nullptr;
}

const PropiedadesElemento* ContentView::propiedadesDe(const Node& nodo) const {
    const std::string clave = claveDeNodo(nodo);
    // An element with a GlobalId shows only its own entry: the entry of its
    // name may belong to another element of the same name.
    const bool porGlobalId = !nodo.globalId().empty();
    const auto& indice = porGlobalId ? propiedadesPorGlobalId : propiedadesIFC;
    const auto esp = indice.find(clave);
    if (esp == indice.end()) return nullptr;
    if (!porGlobalId && !nodo.name()) return nullptr;
    const auto entrada = esp->second.find(porGlobalId ? nodo.globalId() : *nodo.name());
    return entrada == esp->second.end() ? nullptr : &entrada->second;
}

ModeloVinculado* ContentView::buscarModeloMutable(const std::string& clave, const std::string& id) {
    return const_cast<ModeloVinculado*>(buscarModelo(clave, id));
}

bool ContentView::hayModelos() const {
    for (const auto& [clave, esp] : especialidades)
        if (esp.nodoRaiz) return true;
    return false;
}

void ContentView::seleccionarEspecialidad(const std::string& clave) {
    if (!especialidades.contains(clave)) return;
    seleccionActual = clave;
    emit changed();
}

void ContentView::abrirNuevaEspecialidad() {
    mostrarNuevaEsp = true;
    emit changed();
}

void ContentView::cancelarNuevaEspecialidad() {
    mostrarNuevaEsp = false;
    emit changed();
}

void ContentView::agregarEspecialidad() {
    const std::string nombre(recortar(nuevaEspNombre));
    if (nombre.empty()) return;
    const std::string clave = claveNuevaEspecialidad(nombre, ordenEspecialidades);
    EspecialidadBIM e;
    e.nombre = nombre;
    e.icono = nuevaEspIcono.empty() ? "folder" : nuevaEspIcono;
    e.colorOriginal = nuevaEspColor;
    especialidades[clave] = std::move(e);
    ordenEspecialidades.push_back(clave);
    marcarCambio();
    mostrarNuevaEsp = false;
    nuevaEspNombre.clear();
    nuevaEspIcono = "folder";
    emit changed();
}

void ContentView::abrirColor(const std::string& clave) {
    const auto it = especialidades.find(clave);
    if (it == especialidades.end()) return;
    colorPickerKey = clave;
    colorPickerColor = it->second.colorOriginal;
    emit changed();
}

void ContentView::aplicarColor(const Color& color) {
    if (colorPickerKey) {
        const auto it = especialidades.find(*colorPickerKey);
        if (it != especialidades.end()) {
            it->second.colorOriginal = color;
            marcarCambio();
            recolorearModelos();
        }
    }
    colorPickerKey.reset();
    emit changed();
}

void ContentView::cancelarColor() {
    colorPickerKey.reset();
    emit changed();
}

void ContentView::alternarEspecialidad(const std::string& clave) {
    const auto it = especialidades.find(clave);
    if (it == especialidades.end() || !it->second.nodoRaiz) return;
    EspecialidadBIM& e = it->second;
    e.isVisible = !e.isVisible;
    marcarCambio();
    e.nodoRaiz->setHidden(!e.isVisible);
    // Turned on again: a model hidden by its own eye stays hidden.
    if (e.isVisible)
        for (auto& m : e.modelos) m.nodo->setHidden(!m.isVisible);
    emit changed();
}

void ContentView::desvincularTodos(const std::string& clave) {
    const auto it = especialidades.find(clave);
    if (it == especialidades.end()) return;
    EspecialidadBIM& e = it->second;
    if (e.nodoRaiz) e.nodoRaiz->removeFromParentNode();
    e.nodoRaiz.reset();
    e.modelos.clear();
    marcarCambio();
    e.isVisible = true;
    propiedadesIFC.erase(clave);
    propiedadesPorGlobalId.erase(clave);
    limpiarInterferencias();
    reconstruirGrillas(); // the axes stay; their lines follow the elements left
    emit changed();
}

void ContentView::alternarModelo(const std::string& clave, const std::string& id) {
    ModeloVinculado* m = buscarModeloMutable(clave, id);
    if (!m) return;
    m->isVisible = !m->isVisible;
    marcarCambio();
    m->nodo->setHidden(!m->isVisible);
    emit changed();
}

void ContentView::fijarTransparencia(const std::string& clave, const std::string& id, double transparencia) {
    ModeloVinculado* m = buscarModeloMutable(clave, id);
    if (!m) return;
    m->transparencia = transparencia;
    marcarCambio();
    const float opacidad = opacidadDeTransparencia(transparencia);
    m->nodo->enumerateChildNodes([opacidad](Node& n, bool&) {
        if (Geometry* g = n.geometry().get())
            if (Material* mat = g->firstMaterial()) mat->setTransparency(opacidad);
    });
    emit changed();
}

void ContentView::abrirTransformacion(const std::string& clave, const std::string& id) {
    const ModeloVinculado* m = buscarModelo(clave, id);
    if (!m) return;
    transformacionEditando = m->transformacion;
    modeloEditandoTransformacion = ReferenciaModelo{clave, id, m->nombre};
    emit changed();
}

void ContentView::aplicarTransformacion(const std::string& clave, const std::string& id,
                                        const TransformacionModelo& t) {
    modeloEditandoTransformacion.reset();
    ModeloVinculado* m = buscarModeloMutable(clave, id);
    if (!m) {
        emit changed();
        return;
    }
    m->transformacion = t;
    marcarCambio();
    const float f = factorUnidades(t.unidades);
    m->nodo->setScale({f, f, f});
    // Offsets are metres, not scaled by the unit; the turn is about the model
    // root's origin, the world origin.
    m->nodo->setPosition({static_cast<float>(t.offsetX), static_cast<float>(t.offsetY),
                          static_cast<float>(t.offsetZ)});
    glm::vec3 euler = m->nodo->eulerAngles();
    euler.z = static_cast<float>(t.giroZ * glm::pi<double>() / 180.0);
    m->nodo->setEulerAngles(euler);
    reconstruirGrillas();
    emit changed();
}

void ContentView::cerrarTransformacion() {
    modeloEditandoTransformacion.reset();
    emit changed();
}

void ContentView::pedirEliminarModelo(const std::string& clave, const std::string& id) {
    const ModeloVinculado* m = buscarModelo(clave, id);
    if (!m) return;
    modeloPendienteEliminar = ReferenciaModelo{clave, id, m->nombre};
    emit changed();
}

void ContentView::cancelarEliminarModelo() {
    modeloPendienteEliminar.reset();
    emit changed();
}

void ContentView::confirmarEliminarModelo() {
    if (!modeloPendienteEliminar) return;
    const ReferenciaModelo ref = *modeloPendienteEliminar;
    modeloPendienteEliminar.reset();
    const auto it = especialidades.find(ref.clave);
    if (it == especialidades.end()) {
        emit changed();
        return;
    }
    auto& modelos = it->second.modelos;
    const auto m = std::find_if(modelos.begin(), modelos.end(),
                                [&](const ModeloVinculado& x) { return x.id == ref.id; });
    if (m == modelos.end()) {
        emit changed();
        return;
    }
    m->nodo->removeFromParentNode();
    modelos.erase(m);
    marcarCambio();
    // The properties of the removed model stay until the discipline is empty.
    if (modelos.empty()) {
        desvincularTodos(ref.clave);
        return;
    }
    limpiarInterferencias();
    reconstruirGrillas();
    emit changed();
}

void ContentView::limpiarResaltado() {
    for (const auto& n : nodosResaltados)
        if (Geometry* g = n->geometry().get())
            if (Material* mat = g->firstMaterial()) mat->setEmission(colores::negro);
    nodosResaltados.clear();
}

void ContentView::resaltarModelo(const std::string& clave, const std::string& id) {
    limpiarResaltado();
    if (modeloResaltadoId == id) {
        modeloResaltadoId.reset();
        emit changed();
        return;
    }
    const ModeloVinculado* m = buscarModelo(clave, id);
    if (!m) {
        emit changed();
        return;
    }
    modeloResaltadoId = id;
    m->nodo->enumerateChildNodes([this](Node& n, bool&) {
        Geometry* g = n.geometry().get();
        if (!g) return;
        if (Material* mat = g->firstMaterial()) mat->setEmission(Color{0.0f, 0.75f, 1.0f, 1.0f});
        nodosResaltados.push_back(n.shared_from_this());
    });
    emit changed();
    const Box caja = m->nodo->boundingBoxMundo();
    if (caja.min == caja.max) return;
    const glm::vec3 tam = caja.tamano();
    const float mayor = std::max({tam.x, tam.y, tam.z});
    viewport.enfocarCaja(glm::dvec3(caja.centro()), mayor > 0 ? mayor : 10.0f);
}

} // namespace teskal
