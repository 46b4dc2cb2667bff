#pragma once

#include "analyses/clash/Interferencias.h"
#include "analyses/xor/ComparacionXOR.h"
#include "federation/CacheConversion.h"
#include "federation/Especialidades.h"
#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"
#include "persistence/GestorProyecto.h"
#include "qto/EstadoQTO.h"
#include "scene/ColoresSistema.h"
#include "scene/Node.h"
#include "sections/EstadoSeccion.h"
#include "timeline/EstadoTimeline.h"
#include "viewport/ViewportController.h"
#include "viewport/markup/EstadoMarkup.h"
#include "viewport/medicion/EstadoMedicion.h"

#include <QJsonObject>
#include <QObject>
#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace teskal {

struct ModeloConvertido;
struct ResultadoAWP;
struct TrabajoConversion;

// A model named by its discipline and id, with its name for the alert.
struct ReferenciaModelo {
    std::string clave;
    std::string id;
    std::string nombre;
};

// Names of the commands that menus post and the workspace handles.
namespace notificaciones {
inline constexpr const char* abrirIFC = "com.teskal.abrirIFC";
inline constexpr const char* guardarProyecto = "com.teskal.guardarProyecto";
inline constexpr const char* abrirProyecto = "com.teskal.abrirProyecto";
inline constexpr const char* abrirQTO = "com.teskal.abrirQTO";
inline constexpr const char* exportarPaquete = "com.teskal.exportarPaquete";
inline constexpr const char* importarPaquete = "com.teskal.importarPaquete";
inline constexpr const char* nuevoProyecto = "com.teskal.nuevoProyecto";
inline constexpr const char* guardarProyectoComo = "com.teskal.guardarProyectoComo";
} // namespace notificaciones

// What waits on the answer to "¿Guardar los cambios…?": closing the window,
// or replacing the workspace with a new, an opened or an unpacked project.
struct AccionPendiente {
    enum class Tipo { cerrar, nuevoProyecto, abrirProyecto, abrirPaquete };
    Tipo tipo = Tipo::cerrar;
    std::string ruta; // a project or package already chosen (a recent one); empty: the panel asks
};

enum class RespuestaGuardar { guardar, noGuardar, cancelar };

// A model of an opened document whose file was not found: it stays in the
// document under its discipline until its file is pointed at.
struct ModeloAusente {
    std::string clave;
    ModeloGuardado guardado;
};

// The workspace: owns every field the window draws, runs the commands, and
// signals `changed` after each. All of it lives on the main thread; long work
// goes to the thread pool on copies and comes back through one queued call.
class ContentView : public QObject {
    Q_OBJECT
public:
    explicit ContentView(std::string carpetaPrograma, QObject* parent = nullptr);
    ~ContentView() override;

    // Model federation.
    std::string fileName = "Ningún archivo seleccionado";
    bool showFilePicker = false;
    bool isProcessing = false;
    Scene scene;
    std::vector<std::string> ordenEspecialidades = ordenEspecialidadesPorDefecto();
    std::map<std::string, EspecialidadBIM> especialidades = especialidadesPorDefecto();
    std::string seleccionActual = "ARQ";
    PropiedadesPorEspecialidad propiedadesIFC;
    // Discipline key to GlobalId to the properties of that one element.
    PropiedadesPorEspecialidad propiedadesPorGlobalId;
    std::map<std::string, GlobalIdsPorNombre> globalIdsPorEsp; // no path fills it
    GlobalIdsPorNombre globalIdXorBase, globalIdXorNuevo;
    std::vector<EjeGrilla> grillasIFC;
    std::shared_ptr<Node> nodoGrillasIFC;
    bool mostrarNuevaEsp = false;
    std::string nuevaEspNombre;
    std::string nuevaEspIcono = "folder";
    Color nuevaEspColor = colores::teal;
    std::optional<std::string> modeloResaltadoId;
    std::vector<std::shared_ptr<Node>> nodosResaltados;
    std::optional<std::string> colorPickerKey;
    Color colorPickerColor = colores::gris;
    std::optional<ReferenciaModelo> modeloPendienteEliminar;
    std::optional<ReferenciaModelo> modeloEditandoTransformacion;
    TransformacionModelo transformacionEditando;

    // The 3D view: camera, selection, camera cut.
    ViewportController viewport;
    std::shared_ptr<Node> nodoSeleccionado;
    std::string nombreSeleccionado;
    std::optional<Color> diffuseOriginalSeleccionado;
    bool modoCorteCamara = false;
    double distanciaCorte = 0.5;
    bool mostrarPopoverCorte = false;
    // Measuring in the 3D view (viewport/medicion/).
    EstadoMedicion medicion;
    // Markup comments and their drawing (viewport/markup/).
    EstadoMarkup markup;

    // Version comparison: two slots beside the disciplines.
    std::shared_ptr<Node> modeloBase, modeloNuevo;
    std::string fileNameBase = "Sin versión base";
    std::string fileNameNuevo = "Sin versión nueva";
    std::optional<std::string> seleccionandoXOR;       // the slot the open picker fills
    std::optional<std::string> xorSlotPendienteCargar; // the slot waiting for "Continuar"
    std::optional<std::string> slotXORCargando;        // the slot whose version is converting
    bool confirmarLimpiarXOR = false;
    bool xorActivo = false;
    EstadisticasXOR xorStats;
    std::optional<ResultadoXOR> resultadoXOR;

    // Clash analysis.
    bool mostrarConfigAnalisis = false;
    std::string nombreAnalisis;
    double toleranciaAnalisis = 0.02;
    // The method of the next analysis and the clearance of "Holgura", kept
    // from one opening of the sheet to the next like the tolerance.
    MetodoAnalisis metodoAnalisis = MetodoAnalisis::geometriaExacta;
    double holguraAnalisis = 0.05;
    bool excluirResueltos = true;
    std::vector<std::pair<std::string, std::string>> paresDisponibles;
    std::set<std::string> paresActivos;
    bool detectando = false;
    std::vector<Interferencia> interferencias; // the latest run, lit in orange
    std::vector<AnalisisInterferencias> historialAnalisis;
    std::set<std::string> analisisExpandidos;
    std::vector<std::shared_ptr<Node>> nodosDestacadosHistorial;
    // While a clash is focused every other element is drawn ghosted, so that
    // the pair shows through walls; cleared by Escape, "Deseleccionar", a
    // click on empty space or the focus of another clash.
    bool modoFocoFantasma = false;
    std::optional<std::size_t> analisisPendienteEliminar;

    // Persistence.
    GestorProyecto gestor;
    bool showSavePicker = false;
    bool showPackageExportProgress = false;
    bool mostrarAbrirProyecto = false;
    bool mostrarExportarPaquete = false;
    bool mostrarAbrirPaquete = false;
    std::optional<std::string> paqueteExportado; // the name the alert announces

    // Unsaved changes: every command that changes the document counts one;
    // a save or an open takes the count as the saved one.
    std::uint64_t cambios = 0;
    std::uint64_t cambiosGuardados = 0;
    bool hayCambiosSinGuardar() const { return cambios != cambiosGuardados; }
    // Counts a change of the document; subsystems that edit its records
    // (sections, comments, timeline) call it too.
    void marcarCambio() { ++cambios; }
    // The action the prompt "¿Guardar los cambios de «nombre»?" stands for,
    // and the one a save started from that prompt goes on with.
    std::optional<AccionPendiente> accionPorConfirmar;
    std::optional<AccionPendiente> accionTrasGuardar;
    // Set once the window may close: nothing unsaved, or the prompt allowed it.
    bool cierreAutorizado = false;
    // Models of the opened document whose files were not found, and the alert
    // that lists them.
    std::vector<ModeloAusente> modelosAusentes;
    bool mostrarModelosAusentes = false;

    // 2D sections: the plane of the "Sección" panel, saved sections and the
    // stores of dimensions and labels by sheet title.
    EstadoSeccion seccion;

    // Records of the timeline subsystem.
    TimeLinerConfig timeLiner = TimeLinerConfig::porDefecto();
    // The timeline window's state; its commands live in timeline/TimeLiner.cpp.
    EstadoTimeline timeline;

    // Quantity takeoff: snapshots waiting for their windows.
    EstadoQTO qto;

    // Reporting.
    std::optional<std::string> errorMessage;
    bool showError = false;

    // The converter the links run; found beside the program at start-up.
    std::string rutaConversor;
    // A conversion that runs longer is ended ("conversion/limiteMinutos").
    double limiteConversionMinutos = 30;
    // The conversion cache every link, comparison version and restore uses:
    // the user's cache folder; empty converts every time.
    std::string carpetaCache = carpetaCachePorDefecto();
    // "Vaciar caché de conversiones": removes every entry; a failure goes
    // to the error channel.
    void vaciarCacheConversiones();

    // "Cancelar" on the progress overlay: ends the conversions of links and
    // comparison versions under way, and removes their temporary files.
    void cancelarConversion();
    // Quitting: ends every conversion, restores included, and waits for the
    // background work to finish, so no child process and no temporary file
    // outlives the workbench.
    void detenerTrabajos();

    // The one error channel: a complete sentence, then the alert.
    void mostrarError(std::string mensaje);
    void cerrarError();

    // Menu commands arrive here by name.
    void recibirNotificacion(const std::string& nombre);

    // Linking (the picker and the road of one file).
    void vincularIFC(const std::string& clave);
    // The picker's outcome: a failure text, an empty selection, or paths.
    void archivosElegidos(const std::vector<std::string>& rutas, const std::string& falloSelector = {});
    void convertirYVincular(const std::string& ruta);

    // Disciplines.
    void seleccionarEspecialidad(const std::string& clave);
    void abrirNuevaEspecialidad();
    void cancelarNuevaEspecialidad();
    void agregarEspecialidad();
    void abrirColor(const std::string& clave);
    void aplicarColor(const Color& color);
    void cancelarColor();
    void alternarEspecialidad(const std::string& clave);
    void desvincularTodos(const std::string& clave);
    void aplicarColores() { recolorearModelos(); }

    // Models.
    void alternarModelo(const std::string& clave, const std::string& id);
    void fijarTransparencia(const std::string& clave, const std::string& id, double transparencia);
    void abrirTransformacion(const std::string& clave, const std::string& id);
    void aplicarTransformacion(const std::string& clave, const std::string& id, const TransformacionModelo& t);
    void cerrarTransformacion();
    void pedirEliminarModelo(const std::string& clave, const std::string& id);
    void confirmarEliminarModelo();
    void cancelarEliminarModelo();
    void resaltarModelo(const std::string& clave, const std::string& id);

    // The 3D view.
    void zoomExtents();
    void aplicarVistaPreset(VistaPreset vista);
    void seleccionarNodo(const std::shared_ptr<Node>& nuevo);
    // The near plane the camera cut asks for, or none while it is off.
    std::optional<double> nearClipOverride() const {
        return modoCorteCamara ? std::optional<double>(distanciaCorte) : std::nullopt;
    }
    void pulsarCorte();
    void fijarModoCorte(bool activo);
    void fijarDistanciaCorte(double distancia);
    void cerrarPopoverCorte();
    // The key of the discipline that holds the node: the first ancestor named
    // "esp_" + key. Empty when no discipline holds it.
    static std::string claveDeNodo(const Node& nodo);
    // True while the node is one of the two elements of a listed clash.
    bool enInterferencia(const Node& nodo) const;

    // Measuring (viewport/medicion/Medicion3D.cpp). A tool button: the same
    // tool again turns measuring off; another one starts afresh. Both clear
    // what is drawn.
    void pulsarModoMedicion(ModoMedicion3D modo);
    void registrarPunto(const glm::vec3& p);
    void limpiarMedicion();
    void cerrarPoligono();
    // A click and a mouse move over the view while a tool is on.
    void clicMedicion(const VistaRaton& vista);
    void moverRatonMedicion(const VistaRaton& vista);
    void quitarHoverMedicion();
    // The surface point under the mouse, snapped to a vertex when one is near.
    std::optional<PuntoMedido> puntoBajoRaton(const VistaRaton& vista);

    // Markup comments (viewport/markup/Markup.cpp).
    void nuevoComentario();
    // Saves the drawing as the next comment, with the picture of the view.
    void guardarComentario();
    void cancelarMarkup();
    void elegirColorMarkup(int indice);
    void fijarModoTextoMarkup(bool texto);
    void fijarGrosorMarkup(double grosor);
    void limpiarAnotaciones();
    void agregarTrazado(TrazadoMarkup trazado);
    void agregarTexto(TextoMarkup texto);
    void pedirEliminarComentario(const std::string& id);
    void confirmarEliminarComentario();
    void cancelarEliminarComentario();
    void abrirDetalleComentario(const std::string& id);
    void cerrarDetalleComentario();

    // Version comparison.
    // "Cargar" on a slot: the picker, or first the alert while a comparison stands.
    void pedirCargarSlotXOR(const std::string& slot);
    void continuarCargaXOR();
    void cancelarCargaXOR();
    // Converts the file on the pool and installs it in the slot, hidden.
    void cargarSlotXOR(const std::string& slot, const std::string& ruta);
    void limpiarSlotXOR(const std::string& slot);
    void compararXOR();
    void pedirLimpiarXOR();
    void cancelarLimpiarXOR();
    void limpiarXOR();
    // The sidebar label of a slot: "Base" or "Nueva".
    static std::string etiquetaSlotXOR(std::string_view slot);
    // The progress text while `isProcessing`: "Procesando versión base..." or
    // "Procesando versión nueva..." while a slot loads, otherwise "Procesando "
    // with the selected discipline's name and "...".
    std::string textoProcesando() const;

    // Clash detection and review.
    // True when at least two disciplines have models ("Nueva detección").
    bool puedeDetectar() const;
    void abrirConfigAnalisis();
    void cancelarConfigAnalisis();
    // Starts an analysis with the workspace's method and clearance.
    void iniciarDeteccion(const std::string& nombre, double tolerancia);
    // Starts an analysis as the record says, whatever the sheet holds.
    void iniciarDeteccion(const ConfigAnalisis& config);
    // Keeps a box analysis; the second form keeps the method of the record.
    void registrarAnalisis(const std::string& nombre, std::vector<Interferencia> resultado, double tolerancia);
    void registrarAnalisis(const ConfigAnalisis& config, std::vector<Interferencia> resultado);
    void enfocarInterferencia(const Interferencia& i);
    void terminarFocoFantasma();
    void restaurarDestacados();
    void cambiarEstado(std::size_t analisis, std::size_t interferencia, EstadoClash estado);
    void pedirEliminarAnalisis(std::size_t indice);
    void eliminarAnalisis();
    void cancelarEliminarAnalisis();
    void alternarAnalisisExpandido(const std::string& id);
    // The candidates of a search: every element of the analysable disciplines
    // whose box has extent, with its box read now, its geometry and its
    // transform to world coordinates.
    std::vector<NodoBB> candidatosInterferencia() const;

    // Timeline. Opening puts the scrubber on the config's start and lets it
    // drive the scene; closing stops playback, puts out the lit elements and
    // restores the scene.
    void iniciarTimeLiner();
    void cerrarTimeLiner();
    // Moves the scrubber; while the timeline is open the scene follows.
    void fijarFechaScrubber(const QDateTime& fecha);
    // r, from 0 to 1, along the config's range.
    void arrastrarScrubber(double r);
    void retrocederScrubber();
    void avanzarScrubber();
    void fijarAutoAvance(bool activo);
    // 4D: applies the scrubber date to the scene and writes estadoSync4D
    // (nothing while the timeline is closed); restaurarEscena undoes it all,
    // lit elements included.
    void sincronizar4D();
    void restaurarEscena();
    // Play or pause: playing from the end starts again from the beginning.
    void alternarReproduccion();
    // One tick of playback: the date moves on by velocidad / 30 days.
    void pasoReproduccion();
    void fijarVelocidad(double diasPorSegundo);
    void alternarCWA(const std::string& codigo);
    // Selects a package by id (none clears) and lights its elements, and
    // for an area or a CWP those of the packages that carry its figures.
    void seleccionarPaquete(const std::optional<std::string>& id);
    // The editor works on a copy: a new IWP, or the package of that id.
    void nuevoPaqueteAWP();
    void editarPaqueteAWP(const std::string& id);
    void cancelarEdicionAWP();
    // Saves the editor's copy under the hierarchy rules; false saves nothing.
    bool guardarPaqueteAWP(const PaqueteAWP& paquete);
    void eliminarPaqueteAWP(const std::string& id);
    // The package of an id in the config, or null.
    const PaqueteAWP* paqueteAWP(const std::string& id) const;
    // 2D sections (src/sections/ComandosSeccion.cpp).
    // The slider's ends from the boxes of the visible disciplines along the
    // axis, with the position clamped to them.
    void actualizarRangoSeccion();
    // The plane in the 3D view and the clipping, element by element.
    void aplicarPlanoSeccion();
    // The panel's controls.
    void fijarSeccionActiva(bool activa);
    void fijarEjeSeccion(int eje);
    void fijarPosicionSeccion(double posicion);
    void fijarModoProfundidad(int modo);
    void fijarProfundidadSeccion(double profundidad);
    // Cuts the visible disciplines at the plane and leaves the sheet in
    // `seccion.planoPorAbrir` for the window, or reports that nothing was cut.
    void abrirPlano2D();
    // What a sheet keeps when it closes: its dimensions and labels under its title.
    void guardarEstadoPlano(const std::string& titulo, std::vector<Cota2D> cotas, std::vector<Etiqueta2D> etiquetas);
    // Saved sections: the plane of the panel under a name ("Sección N" for a
    // blank one), restored by one click, deleted behind the alert.
    void guardarSeccion(const std::string& nombre);
    void restaurarSeccion(const SeccionGuardada& guardada);
    void pedirEliminarSeccion(const std::string& id);
    void eliminarSeccion();
    void cancelarEliminarSeccion();

    // Projects and packages.
    ProyectoTESKAL construirProyecto() const;
    void guardarProyecto();
    void guardarProyectoComo(const std::string& ruta);
    bool escribirProyecto(const std::string& ruta);
    void abrirProyecto(const std::string& ruta);
    void restaurarProyecto(const ProyectoTESKAL& proyecto, const std::optional<std::string>& carpetaBase);
    void integrarModeloRestaurado(const std::string& clave, const ModeloGuardado& guardado, const std::string& ruta,
                                  ModeloConvertido convertido);
    // Closing, "Nuevo proyecto", "Abrir proyecto" and "Abrir paquete" go
    // through here: at once with nothing unsaved, else after the prompt.
    void pedirAccion(AccionPendiente accion);
    void responderGuardar(RespuestaGuardar respuesta);
    // An empty workspace with the six disciplines, named "Proyecto sin título".
    void nuevoProyecto();
    // "Buscar…" in the alert of missing models: converts the file and places
    // it as a restored model of its discipline.
    void buscarModeloAusente(std::size_t indice, const std::string& ruta);
    void cerrarModelosAusentes();
    void exportarPaqueteA(std::string ruta);
    void abrirPaqueteDe(const std::string& ruta);
    void cerrarAvisoPaquete();
    void cerrarPaneles();
    // Opens what the program was started with: a project or a package.
    void abrirArchivoInicial(const std::string& ruta);

    // Quantity takeoff ("Cuantificación (QTO)..."): measures the federation
    // into a new snapshot for its own window, or reports that there is
    // nothing to quantify.
    void abrirQTO();
    // "Exportar CSV" of a takeoff window: writes the text atomically; a
    // failure goes to the error channel and gives false.
    bool guardarCSVQTO(const std::string& ruta, const std::string& texto);

    // Work packages in and out of the timeline (timeline/ComandosDatosAWP.cpp).
    // The confirmed packages of a CSV: those whose code the plan lacks are
    // appended, the others dropped.
    void importarPaquetesAWP(const std::vector<PaqueteAWP>& paquetes);
    // The detector's selected results become packages with inferred parents,
    // and the plan's axis spans them all.
    void importarDetectadosAWP(const std::vector<ResultadoAWP>& resultados, const std::set<std::string>& seleccionados);
    // "Exportar CSV" of the timeline: the plan's CSV written atomically; a
    // failure goes to the error channel and gives false.
    bool exportarCSVAWP(const std::string& ruta);

    // Scene assembly.
    // The model goes to the discipline `clave`, the one chosen when its file
    // was picked, and is named after its file; with none given, it goes to
    // the selected discipline under `fileName`.
    void integrarModelo(ModeloConvertido convertido, const std::string& rutaOrigen, const std::string& rutaSalida,
                        const std::optional<std::string>& clave = std::nullopt);
    void recolorearModelos();
    void reconstruirGrillas();
    void actualizarPiso();
    static void configurarLuces(Scene& escena);

    // Lookups the window and tests share.
    const ModeloVinculado* buscarModelo(const std::string& clave, const std::string& id) const;
    // The IFC properties of an element node: its own, by GlobalId, when the
    // node has one; by name otherwise. Null when there are none.
    const PropiedadesElemento* propiedadesDe(const Node& nodo) const;
    bool hayModelos() const;
    // The centre and size the camera frames for the whole scene, the floor
    // and the grid lines left out; none for an empty scene.
    std::optional<std::pair<glm::dvec3, float>> encuadreEscena();

signals:
    void changed();
    // A save wrote the document to `ruta`.
    void proyectoGuardado(const std::string& ruta);

private:
    ModeloVinculado* buscarModeloMutable(const std::string& clave, const std::string& id);
    // The world box of the linked models of every discipline: the elements,
    // without helpers, the floor or the grid lines. Empty with no models.
    Box cajaElementos() const;
    void pintarModelo(const ModeloVinculado& m, const Color& color, bool conOpacidad);
    void limpiarInterferencias();
    void instalarSlotXOR(const std::string& slot, std::shared_ptr<Node> modelo, const std::string& nombre,
                         GlobalIdsPorNombre globalIds);
    // Repaints the two versions from a fresh matching (after a recolour).
    void repintarXOR();
    void limpiarResaltado();
    void agregarFiguraMedicion(std::shared_ptr<Node> figura);

    std::string carpetaPrograma_;
    // One token per generation of conversions: a cancel sets it and starts
    // a new one, so conversions started afterwards run on.
    std::shared_ptr<std::atomic<bool>> cancelacionVinculos_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<bool>> cancelacionRestauracion_ = std::make_shared<std::atomic<bool>>(false);

    // Fills the cancel token and time limit of a link or comparison version.
    void prepararConversion(TrabajoConversion& trabajo) const;
    void prepararRestauracion(TrabajoConversion& trabajo) const;
    // Converts a model of a document on the pool and places it as restored.
    void restaurarModelo(const std::string& clave, const ModeloGuardado& guardado, const std::string& ruta);
    void ejecutarAccion(const AccionPendiente& accion);
    // After a successful save: runs the action the prompt's "Guardar" held.
    void continuarTrasGuardar();
};

} // namespace teskal
