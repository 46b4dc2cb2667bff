// The workspace's projects and packages: the document built from the
// workspace, saving, opening and the restore that converts every model again.
#include "federation/ContentView.h"

#include "federation/ConversionIFC.h"
#include "federation/TrabajoSegundoPlano.h"

#include <QFile>
#include <QSaveFile>
#include <QFileInfo>
#include <QUuid>
#include <filesystem>

namespace teskal {

ProyectoTESKAL ContentView::construirProyecto() const {
    ProyectoTESKAL p;
    p.version = 2;
    p.ordenEspecialidades = ordenEspecialidades;
    for (const std::string& clave : ordenEspecialidades) {
        const auto it = especialidades.find(clave);
        if (it == especialidades.end()) continue;
        const EspecialidadBIM& e = it->second;
        EspecialidadGuardada g{clave, e.nombre, e.icono, e.colorOriginal.r, e.colorOriginal.g, e.colorOriginal.b,
                               e.isVisible, {}};
        for (const auto& m : e.modelos)
            g.modelos.push_back({m.nombre, m.rutaOrigen.value_or(""), std::nullopt, m.isVisible, m.transparencia});
        // A model whose file was not found stays in the document as it was read.
        for (const auto& a : modelosAusentes)
            if (a.clave == clave) g.modelos.push_back(a.guardado);
        p.especialidades.push_back(std::move(g));
    }
    for (const auto& a : historialAnalisis) {
        AnalisisGuardado g{a.id, a.nombre, a.fecha, a.tolerancia, {}, std::string(textoMetodo(a.metodo)),
                           a.metodo == MetodoAnalisis::holgura ? std::optional<double>(a.holgura) : std::nullopt};
        for (const auto& i : a.interferencias) {
            auto opcional = [](const std::string& t) {
                return t.empty() ? std::nullopt : std::optional<std::string>(t);
            };
            g.interferencias.push_back({i.id, i.nombreA, i.especialidadA, i.nombreB, i.especialidadB,
                                        std::string(textoEstado(i.estado)), i.viewpointPos.x, i.viewpointPos.y,
                                        i.viewpointPos.z, i.viewpointTarget.x, i.viewpointTarget.y,
                                        i.viewpointTarget.z, i.radio, opcional(i.globalIdA),
                                        opcional(i.globalIdB), i.distancia});
            if (i.centroContacto) {
                g.interferencias.back().centroX = i.centroContacto->x;
                g.interferencias.back().centroY = i.centroContacto->y;
                g.interferencias.back().centroZ = i.centroContacto->z;
            }
        }
        p.historialAnalisis.push_back(std::move(g));
    }
    p.timeLiner = timeLiner;
    p.secciones = seccion.guardadas;
    p.cotasPorSeccion = seccion.almacenCotas;
    p.etiquetasPorSeccion = etiquetasGuardadas(seccion.almacenEtiquetas);
    p.comentarios = markup.comentarios;
    return p;
}

bool ContentView::escribirProyecto(const std::string& ruta) {
    // Written beside the target and renamed over it at the end: a failure or
    // a crash halfway leaves the former document as it was.
    QSaveFile f(QString::fromStdString(ruta));
    f.setDirectWriteFallback(false);
    const QByteArray datos = codificarProyecto(construirProyecto());
    // A short write (a full disk, a size limit) is no error to the file
    // device: the written size is checked before the rename.
    const bool escrito = f.open(QIODevice::WriteOnly) && f.write(datos) == datos.size() && f.flush();
    const bool completo = escrito && f.size() == datos.size();
    if (!completo || !f.commit()) {
        const std::string motivo = escrito && !completo ? std::string("el disco no admitió el documento completo.")
                                                         : f.errorString().toStdString();
        f.cancelWriting();
        accionTrasGuardar.reset();
        mostrarError("Error al guardar: " + motivo);
        return false;
    }
    cambiosGuardados = cambios;
    emit proyectoGuardado(ruta);
    return true;
}

void ContentView::guardarProyecto() {
    if (gestor.urlActual) {
        if (escribirProyecto(*gestor.urlActual)) continuarTrasGuardar();
        emit changed();
        return;
    }
    showSavePicker = true;
    emit changed();
}

void ContentView::guardarProyectoComo(const std::string& ruta) {
    showSavePicker = false;
    if (escribirProyecto(ruta)) {
        gestor.fijarProyecto(ruta);
        continuarTrasGuardar();
    }
    emit changed();
}

void ContentView::continuarTrasGuardar() {
    if (!accionTrasGuardar) return;
    const AccionPendiente accion = *accionTrasGuardar;
    accionTrasGuardar.reset();
    ejecutarAccion(accion);
}

void ContentView::cerrarPaneles() {
    // A save panel left without a file drops what waited on the save.
    if (showSavePicker) accionTrasGuardar.reset();
    showSavePicker = mostrarAbrirProyecto = mostrarExportarPaquete = mostrarAbrirPaquete = false;
    emit changed();
}

void ContentView::pedirAccion(AccionPendiente accion) {
    if (accion.tipo == AccionPendiente::Tipo::cerrar && cierreAutorizado) return;
    if (hayCambiosSinGuardar()) {
        accionPorConfirmar = std::move(accion);
        emit changed();
        return;
    }
    ejecutarAccion(accion);
}

void ContentView::responderGuardar(RespuestaGuardar respuesta) {
    if (!accionPorConfirmar) return;
    const AccionPendiente accion = *accionPorConfirmar;
    accionPorConfirmar.reset();
    switch (respuesta) {
    case RespuestaGuardar::guardar:
        accionTrasGuardar = accion;
        guardarProyecto(); // goes on once the document is written
        return;
    case RespuestaGuardar::noGuardar:
        ejecutarAccion(accion);
        return;
    case RespuestaGuardar::cancelar:
        emit changed();
        return;
    }
}

void ContentView::ejecutarAccion(const AccionPendiente& accion) {
    switch (accion.tipo) {
    case AccionPendiente::Tipo::cerrar:
        cierreAutorizado = true;
        emit changed();
        return;
    case AccionPendiente::Tipo::nuevoProyecto:
        nuevoProyecto();
        return;
    case AccionPendiente::Tipo::abrirProyecto:
        if (!accion.ruta.empty()) {
            abrirProyecto(accion.ruta);
            return;
        }
        mostrarAbrirProyecto = true;
        emit changed();
        return;
    case AccionPendiente::Tipo::abrirPaquete:
        if (!accion.ruta.empty()) {
            abrirPaqueteDe(accion.ruta);
            return;
        }
        mostrarAbrirPaquete = true;
        emit changed();
        return;
    }
}

void ContentView::nuevoProyecto() {
    ProyectoTESKAL vacio;
    vacio.ordenEspecialidades = ordenEspecialidadesPorDefecto();
    const auto porDefecto = especialidadesPorDefecto();
    for (const std::string& clave : vacio.ordenEspecialidades) {
        const EspecialidadBIM& e = porDefecto.at(clave);
        vacio.especialidades.push_back({clave, e.nombre, e.icono, e.colorOriginal.r, e.colorOriginal.g,
                                        e.colorOriginal.b, true, {}});
    }
    gestor = GestorProyecto{};
    restaurarProyecto(vacio, std::nullopt);
}

void ContentView::abrirProyecto(const std::string& ruta) {
    mostrarAbrirProyecto = false;
    QFile f(QString::fromStdString(ruta));
    if (!f.open(QIODevice::ReadOnly)) {
        if (f.exists() && !QFileInfo(f).isReadable()) {
            mostrarError("No se pudo acceder al archivo del proyecto.");
            return;
        }
        mostrarError("Error al cargar el proyecto: " + f.errorString().toStdString());
        return;
    }
    auto decodificado = decodificarProyecto(f.readAll());
    if (auto* error = std::get_if<std::string>(&decodificado)) {
        mostrarError("Error al cargar el proyecto: " + *error);
        return;
    }
    gestor.fijarProyecto(ruta);
    restaurarProyecto(std::get<ProyectoTESKAL>(decodificado), std::nullopt);
}

void ContentView::restaurarProyecto(const ProyectoTESKAL& p, const std::optional<std::string>& carpetaBase) {
    // Models still converting for the document being replaced never arrive.
    cancelacionRestauracion_->store(true);
    cancelacionRestauracion_ = std::make_shared<std::atomic<bool>>(false);
    modelosAusentes.clear();
    mostrarModelosAusentes = false;
    for (const std::string& clave : ordenEspecialidades) {
        const auto it = especialidades.find(clave);
        if (it != especialidades.end() && it->second.nodoRaiz) it->second.nodoRaiz->removeFromParentNode();
    }
    limpiarInterferencias();
    restaurarDestacados();
    seleccionarNodo(nullptr);
    if (xorActivo) limpiarXOR();
    // The slots of the comparison empty: a project keeps no versions.
    for (auto* modelo : {&modeloBase, &modeloNuevo}) {
        if (*modelo) (*modelo)->removeFromParentNode();
        modelo->reset();
    }
    fileNameBase = "Sin versión base";
    fileNameNuevo = "Sin versión nueva";
    globalIdXorBase.clear();
    globalIdXorNuevo.clear();
    modeloResaltadoId.reset();
    nodosResaltados.clear();
    historialAnalisis.clear();
    analisisExpandidos.clear();
    propiedadesIFC.clear();
    propiedadesPorGlobalId.clear();
    // The grids of the project's own models come back with them.
    grillasIFC.clear();
    reconstruirGrillas();
    ordenEspecialidades = p.ordenEspecialidades;
    especialidades.clear();
    for (const auto& g : p.especialidades) {
        EspecialidadBIM e;
        e.nombre = g.nombre;
        e.icono = g.icono;
        e.colorOriginal = Color{static_cast<float>(g.colorR), static_cast<float>(g.colorG),
                                static_cast<float>(g.colorB), 1.0f};
        e.isVisible = g.isVisible;
        especialidades[g.key] = std::move(e); // a repeated key replaces the former
    }
    for (const auto& g : p.historialAnalisis) {
        AnalisisInterferencias a{g.id, g.nombre, g.fecha, g.tolerancia, {}};
        a.metodo = metodoDesdeTexto(g.metodo.value_or(""));
        a.holgura = g.holgura.value_or(0.0);
        for (const auto& s : g.interferencias) {
            Interferencia i;
            i.id = s.id;
            // Empty placeholders: a saved clash lives on names and numbers.
            i.nodoA = Node::crear();
            i.nodoB = Node::crear();
            i.especialidadA = s.especialidadA;
            i.especialidadB = s.especialidadB;
            i.nombreA = s.nombreA;
            i.nombreB = s.nombreB;
            i.globalIdA = s.globalIdA.value_or("");
            i.globalIdB = s.globalIdB.value_or("");
            i.viewpointPos = {s.vpPosX, s.vpPosY, s.vpPosZ};
            i.viewpointTarget = {s.vpTgtX, s.vpTgtY, s.vpTgtZ};
            i.radio = s.radio;
            i.estado = estadoDesdeTexto(s.estado);
            i.metodo = a.metodo;
            if (a.metodo != MetodoAnalisis::cajasEnvolventes) i.distancia = s.distancia;
            if (s.centroX && s.centroY && s.centroZ) i.centroContacto = glm::dvec3(*s.centroX, *s.centroY, *s.centroZ);
            a.interferencias.push_back(std::move(i));
        }
        historialAnalisis.push_back(std::move(a));
    }
    timeLiner = p.timeLiner.value_or(TimeLinerConfig::porDefecto());
    seccion.guardadas = p.secciones.value_or(std::vector<SeccionGuardada>{});
    markup.comentarios = p.comentarios.value_or(std::vector<ComentarioMarkup>{});
    seccion.almacenCotas = p.cotasPorSeccion.value_or(CotasPorTitulo{});
    seccion.almacenEtiquetas = p.etiquetasPorSeccion ? etiquetasRestauradas(*p.etiquetasPorSeccion) : EtiquetasPorTitulo{};
    emit changed();

    // Every model is converted again, one job each, all at once. A model
    // whose file can't be found is listed for the alert and stays in the
    // document; a conversion that fails leaves the model out quietly.
    const std::string conversor = rutaConversor.empty() ? buscarConversor(carpetaPrograma_) : rutaConversor;
    for (const auto& g : p.especialidades) {
        if (!especialidades.contains(g.key)) continue;
        for (const auto& m : g.modelos) {
            std::string ruta;
            std::error_code ec;
            if (!m.rutaAbsoluta.empty() && std::filesystem::is_regular_file(m.rutaAbsoluta, ec))
                ruta = m.rutaAbsoluta;
            else if (carpetaBase && m.rutaRelativa && !m.rutaRelativa->empty() &&
                     std::filesystem::is_regular_file(std::filesystem::path(*carpetaBase) / *m.rutaRelativa, ec))
                ruta = (std::filesystem::path(*carpetaBase) / *m.rutaRelativa).string();
            if (ruta.empty()) {
                ModeloGuardado ausente = m;
                ausente.rutaRelativa.reset(); // a package's folder does not outlive the opening
                modelosAusentes.push_back({g.key, std::move(ausente)});
                continue;
            }
            if (!conversor.empty()) restaurarModelo(g.key, m, ruta);
        }
    }
    mostrarModelosAusentes = !modelosAusentes.empty();
    // What was just read is the saved state.
    cambiosGuardados = cambios;
    cierreAutorizado = false;
    emit changed();
}

void ContentView::restaurarModelo(const std::string& clave, const ModeloGuardado& guardado, const std::string& ruta) {
    const std::string conversor = rutaConversor.empty() ? buscarConversor(carpetaPrograma_) : rutaConversor;
    if (conversor.empty()) return;
    TrabajoConversion t;
    t.rutaOrigen = ruta;
    t.rutaConversor = conversor;
    t.rutaSalida = rutaTemporalNueva(".obj");
    prepararRestauracion(t);
    // A restore shows no error: a model that does not come through is left out.
    enSegundoPlano(
        this,
        [t] {
            ResultadoConversion r = convertirIFC(t);
            std::error_code e;
            std::filesystem::remove(t.rutaSalida, e);
            return r;
        },
        [clave, guardado, ruta, cancelado = t.cancelar](ContentView& cv, ResultadoConversion r) {
            if (cancelado && cancelado->load()) return;
            if (auto* convertido = std::get_if<ModeloConvertido>(&r))
                cv.integrarModeloRestaurado(clave, guardado, ruta, std::move(*convertido));
        });
}

void ContentView::buscarModeloAusente(std::size_t indice, const std::string& ruta) {
    if (indice >= modelosAusentes.size()) return;
    std::error_code ec;
    if (!std::filesystem::is_regular_file(ruta, ec)) {
        mostrarError("No se encontró el archivo \"" + ruta + "\".");
        return;
    }
    ModeloAusente a = std::move(modelosAusentes[indice]);
    modelosAusentes.erase(modelosAusentes.begin() + static_cast<std::ptrdiff_t>(indice));
    a.guardado.rutaAbsoluta = ruta;
    // The document now points at the new file.
    marcarCambio();
    if (modelosAusentes.empty()) mostrarModelosAusentes = false;
    emit changed();
    restaurarModelo(a.clave, a.guardado, ruta);
}

void ContentView::cerrarModelosAusentes() {
    mostrarModelosAusentes = false;
    emit changed();
}

void ContentView::integrarModeloRestaurado(const std::string& clave, const ModeloGuardado& guardado,
                                           const std::string& ruta, ModeloConvertido convertido) {
    const auto it = especialidades.find(clave);
    if (it == especialidades.end()) return;
    fusionarPropiedades(propiedadesIFC[clave], std::move(convertido.propiedades));
    fusionarPropiedades(propiedadesPorGlobalId[clave], std::move(convertido.propiedadesPorGlobalId));
    EspecialidadBIM& esp = it->second;
    if (!esp.nodoRaiz) {
        esp.nodoRaiz = Node::crear("esp_" + clave);
        scene.rootNode()->addChildNode(esp.nodoRaiz);
    }
    ModeloVinculado m;
    m.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    m.nombre = guardado.nombre;
    m.nodo = convertido.modelo;
    m.isVisible = guardado.isVisible;
    m.transparencia = guardado.transparencia;
    m.rutaOrigen = ruta;
    esp.modelos.push_back(m);
    esp.nodoRaiz->addChildNode(m.nodo);
    m.nodo->setHidden(!m.isVisible);
    pintarModelo(m, esp.colorOriginal, false);
    recolorearModelos();
    // Axes merge as a link merges them; the lines follow the grown box.
    fusionarGrillas(grillasIFC, std::move(convertido.grillas));
    reconstruirGrillas();
    zoomExtents();
    actualizarPiso();
    emit changed();
}

void ContentView::exportarPaqueteA(std::string ruta) {
    mostrarExportarPaquete = false;
    if (QFileInfo(QString::fromStdString(ruta)).suffix().toLower() != extensionPaquete)
        ruta += std::string(".") + extensionPaquete;
    isProcessing = true;
    emit changed();
    ProyectoTESKAL proyecto = construirProyecto();
    std::vector<std::vector<std::string>> rutas;
    for (const auto& g : proyecto.especialidades) {
        rutas.emplace_back();
        for (const auto& m : especialidades.at(g.key).modelos) rutas.back().push_back(m.rutaOrigen.value_or(""));
    }
    enSegundoPlano(
        this,
        [ruta, proyecto = std::move(proyecto), rutas = std::move(rutas)] {
            return exportarPaquete(ruta, proyecto, rutas);
        },
        [ruta](ContentView& cv, std::string error) {
            cv.isProcessing = false;
            if (!error.empty()) {
                cv.mostrarError("Error al exportar el paquete: " + error);
                return;
            }
            cv.paqueteExportado = QFileInfo(QString::fromStdString(ruta)).fileName().toStdString();
            emit cv.changed();
        });
}

void ContentView::cerrarAvisoPaquete() {
    paqueteExportado.reset();
    emit changed();
}

void ContentView::abrirPaqueteDe(const std::string& ruta) {
    mostrarAbrirPaquete = false;
    const QFileInfo info(QString::fromStdString(ruta));
    if (info.exists() && !info.isReadable()) {
        mostrarError("No se pudo acceder al paquete.");
        return;
    }
    isProcessing = true;
    emit changed();
    enSegundoPlano(this, [ruta] { return abrirPaquete(ruta); },
                   [ruta](ContentView& cv, std::variant<std::pair<ProyectoTESKAL, std::string>, std::string> r) {
                       cv.isProcessing = false;
                       if (auto* error = std::get_if<std::string>(&r)) {
                           cv.mostrarError("Error al abrir el paquete: " + *error);
                           return;
                       }
                       // A package is no place to save to: the next save asks for a file.
                       cv.gestor.urlActual.reset();
                       cv.gestor.nombreProyecto =
                           QFileInfo(QString::fromStdString(ruta)).completeBaseName().toStdString();
                       auto& [proyecto, carpeta] = std::get<0>(r);
                       cv.restaurarProyecto(proyecto, carpeta);
                   });
}

void ContentView::abrirArchivoInicial(const std::string& ruta) {
    if (QFileInfo(QString::fromStdString(ruta)).suffix().toLower() == extensionPaquete)
        abrirPaqueteDe(ruta);
    else
        abrirProyecto(ruta);
}

} // namespace teskal
