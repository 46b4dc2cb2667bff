// The batch command's run: the workspace of the workbench (ContentView)
// driven without a window. Opening, analyses and exports go through the same
// commands and writers as the workbench's; only the waits, the progress
// lines and the summary are the command's own.
#include "lote/EjecucionLote.h"

#include "analyses/bcf/BCFExporter.h"
#include "analyses/clash/ReporteHTML.h"
#include "analyses/clash/ui/ThumbnailInterferencia.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "persistence/GestorProyecto.h"
#include "qto/TablaQTO.h"
#include "sections/DXF.h"
#include "viewport/render/ContextoEGL.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QOpenGLContext>
#include <QSaveFile>
#include <QThreadPool>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>

namespace teskal {

void aplicarMetodoInterferencias(ContentView& cv, MetodoInterferencias metodo, double holgura) {
    switch (metodo) {
    case MetodoInterferencias::cajas:
        cv.metodoAnalisis = MetodoAnalisis::cajasEnvolventes;
        break;
    case MetodoInterferencias::exacto:
        cv.metodoAnalisis = MetodoAnalisis::geometriaExacta;
        break;
    case MetodoInterferencias::holgura:
        cv.metodoAnalisis = MetodoAnalisis::holgura;
        cv.holguraAnalisis = holgura;
        break;
    }
}

namespace {

namespace fs = std::filesystem;

// The run's failure: the sentence that names the file and the cause.
struct ErrorLote {
    std::string mensaje;
};

void progreso(const std::string& linea) {
    std::fprintf(stderr, "vornel-lote: %s\n", linea.c_str());
    std::fflush(stderr);
}

std::string nombreArchivo(const std::string& ruta) { return QFileInfo(QString::fromStdString(ruta)).fileName().toStdString(); }

// Runs the event loop until the condition holds: the workspace's background
// work delivers through queued calls on this thread.
void esperar(const std::function<bool()>& listo) {
    while (!listo()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

// The workspace's last error, consumed: the alert the window would show.
std::optional<std::string> errorPendiente(ContentView& cv) {
    if (!cv.showError) return std::nullopt;
    cv.cerrarError();
    return cv.errorMessage.value_or("Error sin descripción.");
}

// The sentence of a failed conversion, as the link's alert words it.
std::string textoFalloConversion(const FalloConversion& f, double limiteMinutos) {
    switch (f.causa) {
    case FalloConversion::Causa::Copia:
        return "no se pudo copiar el archivo al directorio temporal: " + f.descripcion;
    case FalloConversion::Causa::Lanzamiento:
        return "no se pudo ejecutar IfcConvert: " + f.descripcion;
    case FalloConversion::Causa::Salida:
        return "IfcConvert falló (código " + std::to_string(f.codigo) + "): " + f.descripcion;
    case FalloConversion::Causa::Geometria:
        return "no se pudo cargar la geometría. El archivo generado puede estar vacío o corrupto.";
    case FalloConversion::Causa::SinGeometria:
        return "el archivo no contiene geometría que se pueda mostrar.";
    case FalloConversion::Causa::TiempoAgotado:
        return textoLimiteConversion(limiteMinutos);
    case FalloConversion::Causa::Cancelada:
        break;
    }
    return "la conversión se canceló.";
}

// One model to convert: from the document (restored) or from --vincular.
struct ModeloPorConvertir {
    std::string clave;
    std::string ruta;
    std::optional<ModeloGuardado> guardado; // none for a link
};

int contarElementos(Node& modelo) {
    int n = 0;
    modelo.enumerateChildNodes([&](Node& hijo, bool&) { n += hijo.geometry() != nullptr; });
    return n;
}

void escribirArchivo(const std::string& ruta, const QByteArray& datos, const char* que) {
    // Whole or not at all, as the workbench writes its documents.
    QSaveFile f(QString::fromStdString(ruta));
    f.setDirectWriteFallback(false);
    if (f.open(QIODevice::WriteOnly) && f.write(datos) == datos.size() && f.commit()) return;
    throw ErrorLote{std::string("No se pudo escribir ") + que + " «" + ruta + "»: " + f.errorString().toStdString()};
}

class Lote {
public:
    Lote(const OpcionesLote& o, const std::string& carpetaPrograma, bool sinPantalla)
        : o_(o), cv_(carpetaPrograma), sinPantalla_(sinPantalla) {
        if (o_.sinCache) cv_.carpetaCache.clear();
        cv_.rutaConversor = buscarConversor(carpetaPrograma);
    }

    int ejecutar() {
        if (cv_.rutaConversor.empty())
            throw ErrorLote{"No se encontró el conversor IfcConvert junto al programa."};
        abrir();
        convertir();
        int salida = salidaCorrecta;
        if (o_.analizar) salida = analizar();
        if (!o_.qto.empty()) cuantificar();
        if (o_.ejeSeccion) seccionar();
        if (o_.xor_) comparar();
        escribirResumen();
        return salida;
    }

private:
    void abrir() {
        if (o_.proyecto.empty()) return;
        const std::string& ruta = o_.proyecto;
        progreso("abriendo " + ruta);
        const QFileInfo info(QString::fromStdString(ruta));
        if (!info.isFile()) throw ErrorLote{"No se encontró el proyecto «" + ruta + "»."};
        if (!info.isReadable()) throw ErrorLote{"No se pudo leer el proyecto «" + ruta + "»: permiso denegado."};
        ProyectoTESKAL proyecto;
        std::optional<std::string> carpeta;
        if (info.suffix().toLower() == extensionPaquete) {
            auto r = abrirPaquete(ruta);
            if (auto* e = std::get_if<std::string>(&r))
                throw ErrorLote{"No se pudo abrir el paquete «" + ruta + "»: " + *e};
            proyecto = std::move(std::get<0>(r).first);
            carpeta = std::get<0>(r).second;
            carpetaPaquete_ = *carpeta;
            cv_.gestor.nombreProyecto = info.completeBaseName().toStdString();
        } else {
            QFile f(info.filePath());
            if (!f.open(QIODevice::ReadOnly))
                throw ErrorLote{"No se pudo leer el proyecto «" + ruta + "»: " + f.errorString().toStdString()};
            auto r = decodificarProyecto(f.readAll());
            if (auto* e = std::get_if<std::string>(&r))
                throw ErrorLote{"No se pudo leer el proyecto «" + ruta + "»: " + *e};
            proyecto = std::move(std::get<ProyectoTESKAL>(r));
            cv_.gestor.fijarProyecto(ruta);
        }
        // The document's disciplines, history, sections and plan come back as
        // the workbench restores them; its models are converted below, where
        // a failure is an error rather than a silent omission.
        ProyectoTESKAL sinModelos = proyecto;
        for (auto& e : sinModelos.especialidades) e.modelos.clear();
        cv_.restaurarProyecto(sinModelos, carpeta);
        for (const auto& e : proyecto.especialidades) {
            if (!cv_.especialidades.contains(e.key)) continue;
            for (const auto& m : e.modelos) {
                std::error_code ec;
                std::string encontrada;
                if (!m.rutaAbsoluta.empty() && fs::is_regular_file(m.rutaAbsoluta, ec))
                    encontrada = m.rutaAbsoluta;
                else if (carpeta && m.rutaRelativa && !m.rutaRelativa->empty() &&
                         fs::is_regular_file(fs::path(*carpeta) / *m.rutaRelativa, ec))
                    encontrada = (fs::path(*carpeta) / *m.rutaRelativa).string();
                if (encontrada.empty())
                    throw ErrorLote{"No se encontró el archivo del modelo «" + m.nombre + "» de " + e.key + ": «" +
                                    (m.rutaAbsoluta.empty() ? m.rutaRelativa.value_or("") : m.rutaAbsoluta) +
                                    "»."};
                modelos_.push_back({e.key, encontrada, m});
            }
        }
    }

    void convertir() {
        for (const auto& [clave, ruta] : o_.vinculos) {
            if (!cv_.especialidades.contains(clave))
                throw ErrorLote{"La especialidad «" + clave + "» de --vincular no existe en el proyecto."};
            const QFileInfo info(QString::fromStdString(ruta));
            if (!info.isFile()) throw ErrorLote{"No se encontró el modelo «" + ruta + "»."};
            if (!info.isReadable())
                throw ErrorLote{"No se pudo leer el modelo «" + ruta + "»: permiso denegado."};
            modelos_.push_back({clave, info.absoluteFilePath().toStdString(), std::nullopt});
        }
        // Every model at once on the pool, as a restore converts them; each
        // job fills its own slot, read once the pool is done.
        std::vector<std::optional<ResultadoConversion>> resultados(modelos_.size());
        std::vector<TrabajoConversion> trabajos(modelos_.size());
        QElapsedTimer reloj;
        reloj.start();
        for (std::size_t i = 0; i < modelos_.size(); ++i) {
            TrabajoConversion& t = trabajos[i];
            t.rutaOrigen = modelos_[i].ruta;
            t.rutaConversor = cv_.rutaConversor;
            t.rutaSalida = rutaTemporalNueva(".obj");
            t.limiteMinutos = cv_.limiteConversionMinutos;
            t.carpetaCache = cv_.carpetaCache;
            progreso("convirtiendo " + modelos_[i].clave + " " + nombreArchivo(modelos_[i].ruta));
            QThreadPool::globalInstance()->start([&t, &r = resultados[i]] { r = convertirIFC(t); });
        }
        QThreadPool::globalInstance()->waitForDone();
        for (std::size_t i = 0; i < modelos_.size(); ++i) {
            ResultadoConversion& r = *resultados[i];
            const ModeloPorConvertir& m = modelos_[i];
            if (auto* fallo = std::get_if<FalloConversion>(&r))
                throw ErrorLote{"No se pudo convertir «" + m.ruta + "» (" + m.clave +
                                "): " + textoFalloConversion(*fallo, trabajos[i].limiteMinutos)};
            auto& convertido = std::get<ModeloConvertido>(r);
            const int elementos = contarElementos(*convertido.modelo);
            if (m.guardado)
                cv_.integrarModeloRestaurado(m.clave, *m.guardado, m.ruta, std::move(convertido));
            else
                cv_.integrarModelo(std::move(convertido), m.ruta, trabajos[i].rutaSalida, m.clave);
            progreso(m.clave + " " + nombreArchivo(m.ruta) + ": " + std::to_string(elementos) + " elementos");
        }
        if (!modelos_.empty())
            progreso(std::to_string(modelos_.size()) + " modelos convertidos en " +
                     std::to_string(reloj.elapsed()) + " ms");
    }

    int analizar() {
        cv_.abrirConfigAnalisis();
        if (!o_.pares.empty()) {
            cv_.paresActivos.clear();
            for (const auto& [a, b] : o_.pares) {
                for (const std::string& clave : {a, b}) {
                    const auto it = cv_.especialidades.find(clave);
                    if (it == cv_.especialidades.end())
                        throw ErrorLote{"La especialidad «" + clave + "» de --interferencias no existe en el proyecto."};
                    if (!it->second.nodoRaiz || it->second.modelos.empty())
                        throw ErrorLote{"La especialidad «" + clave + "» de --interferencias no tiene modelos."};
                }
                cv_.paresActivos.insert(clavePar(a, b));
            }
        }
        cv_.mostrarConfigAnalisis = false;
        if (cv_.paresActivos.empty())
            throw ErrorLote{"No hay dos especialidades con modelos entre las que buscar interferencias."};
        cv_.toleranciaAnalisis = o_.tolerancia;
        aplicarMetodoInterferencias(cv_, o_.metodo, o_.holgura);
        progreso("buscando interferencias (" + std::string(nombreMetodo(o_.metodo)) + ", tolerancia " +
                 QString::number(o_.tolerancia).toStdString() + " m)");
        const std::size_t antes = cv_.historialAnalisis.size();
        cv_.iniciarDeteccion(cv_.nombreAnalisis, o_.tolerancia);
        esperar([&] { return !cv_.detectando; });
        if (cv_.historialAnalisis.size() != antes + 1) throw ErrorLote{"La búsqueda de interferencias no terminó."};
        const AnalisisInterferencias& a = cv_.historialAnalisis.back();
        progreso(std::to_string(a.interferencias.size()) + " interferencias");

        if (!o_.bcf.empty() || !o_.html.empty()) {
            const std::map<std::string, QByteArray> png = vistas(a);
            if (!o_.html.empty()) {
                const std::string documento = documentoReporteHTML(a, png, textoFechaReporte(a.fecha));
                if (const std::string e = escribirArchivoReporte(QString::fromStdString(o_.html), documento);
                    !e.empty())
                    throw ErrorLote{"No se pudo escribir el reporte «" + o_.html + "»: " + e};
                progreso("reporte HTML en " + o_.html);
            }
            if (!o_.bcf.empty()) {
                const BCFExporter exportador{a, a.nombre, png};
                const auto archivo = exportador.escribirArchivo();
                if (!archivo) throw ErrorLote{"No se pudo componer el archivo BCF de «" + o_.bcf + "»."};
                if (!copiarArchivoBCF(archivo->ruta, QString::fromStdString(o_.bcf)))
                    throw ErrorLote{"No se pudo escribir el archivo BCF «" + o_.bcf + "»."};
                progreso("BCF en " + o_.bcf);
            }
        }
        if (o_.maxInterferencias && static_cast<long long>(a.interferencias.size()) > *o_.maxInterferencias) {
            progreso(std::to_string(a.interferencias.size()) + " interferencias superan el máximo de " +
                     std::to_string(*o_.maxInterferencias));
            return salidaExcedida;
        }
        return salidaCorrecta;
    }

    // The clash views, rendered offscreen as the report window renders them.
    std::map<std::string, QByteArray> vistas(const AnalisisInterferencias& a) {
        std::unique_ptr<QOpenGLContext> contexto;
        if (sinPantalla_) {
            contexto = crearContextoEGLSinSuperficie();
            if (!contexto)
                throw ErrorLote{"No se pudo crear un contexto OpenGL 3.3 con EGL (plataforma sin superficie de "
                                "Mesa) para las vistas de las interferencias."};
        }
        RenderizadorImagenes renderizador(std::move(contexto));
        if (!renderizador.valido())
            throw ErrorLote{"No se pudo crear un contexto OpenGL 3.3 para las vistas de las interferencias."};
        progreso("dibujando " + std::to_string(a.interferencias.size()) + " vistas");
        return thumbnailsPNG(renderThumbnails(a, &cv_.scene, renderizador));
    }

    void cuantificar() {
        cv_.abrirQTO();
        if (auto e = errorPendiente(cv_)) throw ErrorLote{"No se pudo cuantificar para «" + o_.qto + "»: " + *e};
        TablaQTO tabla;
        tabla.grupos = std::move(cv_.qto.ventanasPendientes.back().grupos);
        tabla.fecha = cv_.qto.ventanasPendientes.back().fecha;
        cv_.qto.ventanasPendientes.clear();
        if (!cv_.guardarCSVQTO(o_.qto, tabla.textoCSV())) throw ErrorLote{*errorPendiente(cv_)};
        progreso("cuantificación en " + o_.qto + " (" + std::to_string(tabla.totales().cantidad) + " elementos)");
    }

    void seccionar() {
        cv_.seccion.eje = *o_.ejeSeccion;
        cv_.seccion.posicion = o_.posicionSeccion;
        cv_.seccion.modoProfundidad = o_.modoProfundidad;
        cv_.seccion.profundidad = o_.profundidad;
        cv_.abrirPlano2D();
        if (auto e = errorPendiente(cv_)) throw ErrorLote{"La sección no dio ningún plano: " + *e};
        const Plano2D plano = std::move(*cv_.seccion.planoPorAbrir);
        cv_.seccion.planoPorAbrir.reset();
        progreso("sección «" + plano.titulo + "»: " + std::to_string(plano.segmentos.size()) + " segmentos");
        seccion_ = plano.titulo;
        if (!o_.dxf.empty()) {
            // The sheet as it opens: its lines, labels and stored dimensions.
            const std::string texto = generarDXF(plano.segmentos, plano.etiquetas, plano.cotas);
            escribirArchivo(o_.dxf, QByteArray::fromStdString(texto), "el DXF");
            progreso("DXF en " + o_.dxf);
        }
    }

    void comparar() {
        const auto& [base, nueva] = *o_.xor_;
        for (const auto& [slot, ruta] : {std::pair{std::string(slotsXOR::base), base},
                                         std::pair{std::string(slotsXOR::nuevo), nueva}}) {
            const QFileInfo info(QString::fromStdString(ruta));
            if (!info.isFile()) throw ErrorLote{"No se encontró la versión «" + ruta + "» de --xor."};
            if (!info.isReadable())
                throw ErrorLote{"No se pudo leer la versión «" + ruta + "» de --xor: permiso denegado."};
            progreso("convirtiendo la versión " + ContentView::etiquetaSlotXOR(slot) + " " + nombreArchivo(ruta));
            cv_.cargarSlotXOR(slot, info.absoluteFilePath().toStdString());
            esperar([&] { return !cv_.isProcessing || cv_.showError; });
            if (auto e = errorPendiente(cv_)) throw ErrorLote{"No se pudo convertir la versión «" + ruta + "»: " + *e};
        }
        cv_.compararXOR();
        const EstadisticasXOR& s = cv_.xorStats;
        progreso("XOR: " + std::to_string(s.agregados) + " agregados, " + std::to_string(s.eliminados) +
                 " eliminados, " + std::to_string(s.modificados) + " modificados, " + std::to_string(s.iguales) +
                 " iguales");
    }

    void escribirResumen() {
        QJsonObject r;
        r[QStringLiteral("proyecto")] = QString::fromStdString(cv_.gestor.nombreProyecto);
        QJsonArray modelos;
        int elementos = 0;
        for (const std::string& clave : cv_.ordenEspecialidades) {
            const auto it = cv_.especialidades.find(clave);
            if (it == cv_.especialidades.end()) continue;
            for (const auto& m : it->second.modelos) {
                const int n = m.nodo ? contarElementos(*m.nodo) : 0;
                elementos += n;
                modelos.append(QJsonObject{{QStringLiteral("especialidad"), QString::fromStdString(clave)},
                                           {QStringLiteral("nombre"), QString::fromStdString(m.nombre)},
                                           {QStringLiteral("elementos"), n}});
            }
        }
        r[QStringLiteral("modelos")] = modelos;
        r[QStringLiteral("elementos")] = elementos;
        if (o_.analizar && !cv_.historialAnalisis.empty()) {
            const AnalisisInterferencias& a = cv_.historialAnalisis.back();
            QJsonObject porPar, porEstado;
            for (EstadoClash e : estadosClash) porEstado[QString::fromUtf8(textoEstado(e))] = 0;
            for (const std::string& par : cv_.paresActivos) {
                QJsonObject estados;
                for (EstadoClash e : estadosClash) estados[QString::fromUtf8(textoEstado(e))] = 0;
                estados[QStringLiteral("total")] = 0;
                porPar[QString::fromStdString(par)] = estados;
            }
            for (const Interferencia& i : a.interferencias) {
                const QString par = QString::fromStdString(clavePar(i.especialidadA, i.especialidadB));
                const QString estado = QString::fromUtf8(textoEstado(i.estado));
                QJsonObject p = porPar[par].toObject();
                p[estado] = p[estado].toInt() + 1;
                p[QStringLiteral("total")] = p[QStringLiteral("total")].toInt() + 1;
                porPar[par] = p;
                porEstado[estado] = porEstado[estado].toInt() + 1;
            }
            QJsonObject c{{QStringLiteral("nombre"), QString::fromStdString(a.nombre)},
                          {QStringLiteral("metodo"), QString::fromUtf8(nombreMetodo(o_.metodo))},
                          {QStringLiteral("tolerancia"), a.tolerancia},
                          {QStringLiteral("total"), static_cast<int>(a.interferencias.size())},
                          {QStringLiteral("porPar"), porPar},
                          {QStringLiteral("porEstado"), porEstado}};
            if (o_.maxInterferencias) {
                c[QStringLiteral("maximo")] = static_cast<double>(*o_.maxInterferencias);
                c[QStringLiteral("excedido")] =
                    static_cast<long long>(a.interferencias.size()) > *o_.maxInterferencias;
            }
            r[QStringLiteral("interferencias")] = c;
        }
        if (!seccion_.empty()) r[QStringLiteral("seccion")] = QString::fromStdString(seccion_);
        if (o_.xor_) {
            const EstadisticasXOR& s = cv_.xorStats;
            r[QStringLiteral("xor")] = QJsonObject{{QStringLiteral("base"), QString::fromStdString(o_.xor_->first)},
                                                   {QStringLiteral("nueva"), QString::fromStdString(o_.xor_->second)},
                                                   {QStringLiteral("agregados"), s.agregados},
                                                   {QStringLiteral("eliminados"), s.eliminados},
                                                   {QStringLiteral("modificados"), s.modificados},
                                                   {QStringLiteral("iguales"), s.iguales}};
        }
        QJsonObject archivos;
        for (const auto& [nombre, ruta] : {std::pair{"bcf", &o_.bcf}, std::pair{"html", &o_.html},
                                           std::pair{"qto", &o_.qto}, std::pair{"dxf", &o_.dxf}})
            if (!ruta->empty()) archivos[QString::fromUtf8(nombre)] = QString::fromStdString(*ruta);
        r[QStringLiteral("archivos")] = archivos;
        const QByteArray texto = QJsonDocument(r).toJson(QJsonDocument::Indented);
        if (o_.json.empty()) {
            std::fwrite(texto.constData(), 1, static_cast<std::size_t>(texto.size()), stdout);
            std::fflush(stdout);
        } else {
            escribirArchivo(o_.json, texto, "el resumen");
            progreso("resumen en " + o_.json);
        }
    }

public:
    ~Lote() {
        cv_.detenerTrabajos();
        // The package's unpacked folder goes with the run.
        std::error_code ec;
        if (!carpetaPaquete_.empty()) fs::remove_all(carpetaPaquete_, ec);
    }

private:
    const OpcionesLote& o_;
    ContentView cv_;
    bool sinPantalla_;
    std::vector<ModeloPorConvertir> modelos_;
    std::string carpetaPaquete_;
    std::string seccion_;
};

} // namespace

int ejecutarLote(const OpcionesLote& opciones, const std::string& carpetaPrograma, bool sinPantalla) {
    try {
        Lote lote(opciones, carpetaPrograma, sinPantalla);
        return lote.ejecutar();
    } catch (const ErrorLote& e) {
        std::fprintf(stderr, "vornel-lote: error: %s\n", e.mensaje.c_str());
        return salidaError;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "vornel-lote: error: no hubo memoria suficiente para terminar.\n");
        return salidaError;
    }
}

} // namespace teskal
