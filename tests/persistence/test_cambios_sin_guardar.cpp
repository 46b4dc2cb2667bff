// Never losing work: which commands mark the workspace as changed, what
// clears the mark, the atomic write of the project document, and models whose
// files were not found, kept in the document and found again.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include "espera_eventos.h"

using namespace teskal;
using teskal::pruebas::esperarHasta;

namespace {

const std::string conversor = QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString();

void vincular(ContentView& cv, const std::string& clave, const std::string& nombre) {
    ModeloConvertido m;
    m.modelo = cargarOBJTexto("v 0 0 0\nv 2 0 0\nv 0 3 4\ng Muro\nf 1 2 3\n");
    cv.seleccionActual = clave;
    cv.fileName = nombre;
    cv.integrarModelo(std::move(m), "/proyectos/" + nombre, "/no/existe.obj");
}

// Two disciplines with a model each and one analysis with a clash, taken as saved.
std::unique_ptr<ContentView> espacioGuardado() {
    auto cv = std::make_unique<ContentView>("/no/hay");
    vincular(*cv, "ARQ", "arq.ifc");
    vincular(*cv, "EST", "est.ifc");
    Interferencia i;
    i.id = "1C2D3E4F-5A6B-7C8D-9E0F-A1B2C3D4E5F6";
    i.nodoA = cv->especialidades.at("ARQ").modelos[0].nodo;
    i.nodoB = cv->especialidades.at("EST").modelos[0].nodo;
    cv->registrarAnalisis("Análisis 1", {i}, 0.02);
    cv->cambiosGuardados = cv->cambios;
    return cv;
}

const std::string& idDe(const ContentView& cv, const char* clave) { return cv.especialidades.at(clave).modelos[0].id; }

} // namespace

TEST(CambiosSinGuardar, cadaOrdenQueCambiaElDocumentoLoMarca) {
    struct Caso {
        const char* nombre;
        bool cambia;
        std::function<void(ContentView&)> orden;
    };
    const std::vector<Caso> casos = {
        {"nueva especialidad", true, [](ContentView& cv) { cv.nuevaEspNombre = "Paisajismo"; cv.agregarEspecialidad(); }},
        {"color", true, [](ContentView& cv) { cv.abrirColor("ARQ"); cv.aplicarColor(colores::naranja); }},
        {"ojo de especialidad", true, [](ContentView& cv) { cv.alternarEspecialidad("ARQ"); }},
        {"desvincular todos", true, [](ContentView& cv) { cv.desvincularTodos("EST"); }},
        {"ojo de modelo", true, [](ContentView& cv) { cv.alternarModelo("ARQ", idDe(cv, "ARQ")); }},
        {"transparencia", true, [](ContentView& cv) { cv.fijarTransparencia("ARQ", idDe(cv, "ARQ"), 0.5); }},
        {"transformación", true,
         [](ContentView& cv) { cv.aplicarTransformacion("ARQ", idDe(cv, "ARQ"), {Unidades::metros, 1, 0, 0, 0}); }},
        {"eliminar modelo", true,
         [](ContentView& cv) { cv.pedirEliminarModelo("ARQ", idDe(cv, "ARQ")); cv.confirmarEliminarModelo(); }},
        {"vincular", true, [](ContentView& cv) { vincular(cv, "MEP", "mep.ifc"); }},
        {"análisis", true, [](ContentView& cv) { cv.registrarAnalisis("Análisis 2", {}, 0.02); }},
        {"estado de revisión", true, [](ContentView& cv) { cv.cambiarEstado(0, 0, EstadoClash::resuelto); }},
        {"eliminar análisis", true, [](ContentView& cv) { cv.pedirEliminarAnalisis(0); cv.eliminarAnalisis(); }},
        {"registros de secciones", true, [](ContentView& cv) { cv.seccion.guardadas.emplace_back(); cv.marcarCambio(); }},
        // Looking, selecting and dialogs left with "Cancelar" change nothing saved.
        {"seleccionar especialidad", false, [](ContentView& cv) { cv.seleccionarEspecialidad("EST"); }},
        {"color cancelado", false, [](ContentView& cv) { cv.abrirColor("ARQ"); cv.cancelarColor(); }},
        {"resaltar", false, [](ContentView& cv) { cv.resaltarModelo("ARQ", idDe(cv, "ARQ")); }},
        {"eliminar cancelado", false,
         [](ContentView& cv) { cv.pedirEliminarModelo("ARQ", idDe(cv, "ARQ")); cv.cancelarEliminarModelo(); }},
        {"transformación cerrada", false,
         [](ContentView& cv) { cv.abrirTransformacion("ARQ", idDe(cv, "ARQ")); cv.cerrarTransformacion(); }},
        {"análisis desplegado", false,
         [](ContentView& cv) { cv.alternarAnalisisExpandido(cv.historialAnalisis[0].id); }},
    };
    for (const Caso& c : casos) {
        auto cv = espacioGuardado();
        ASSERT_FALSE(cv->hayCambiosSinGuardar());
        c.orden(*cv);
        EXPECT_EQ(cv->hayCambiosSinGuardar(), c.cambia) << c.nombre;
    }
}

TEST(CambiosSinGuardar, guardarAbrirYNuevoProyectoLoLimpian) {
    QTemporaryDir dir;
    const std::string ruta = dir.filePath(QStringLiteral("obra.teskal")).toStdString();
    auto cv = espacioGuardado();
    cv->alternarEspecialidad("ARQ");
    std::vector<std::string> guardados;
    QObject::connect(cv.get(), &ContentView::proyectoGuardado, [&](const std::string& r) { guardados.push_back(r); });
    cv->guardarProyectoComo(ruta);
    EXPECT_FALSE(cv->hayCambiosSinGuardar());
    EXPECT_EQ(guardados, std::vector<std::string>{ruta});
    EXPECT_EQ(cv->gestor.nombreProyecto, "obra");

    cv->alternarEspecialidad("ARQ");
    ASSERT_TRUE(cv->hayCambiosSinGuardar());
    cv->abrirProyecto(ruta);
    EXPECT_FALSE(cv->showError) << cv->errorMessage.value_or("");
    EXPECT_FALSE(cv->hayCambiosSinGuardar());
    EXPECT_EQ(cv->gestor.urlActual, std::optional(ruta));

    cv->alternarEspecialidad("ARQ");
    cv->nuevoProyecto();
    EXPECT_FALSE(cv->hayCambiosSinGuardar());
    EXPECT_EQ(cv->gestor.nombreProyecto, "Proyecto sin título");
    EXPECT_FALSE(cv->gestor.urlActual);
    EXPECT_EQ(cv->ordenEspecialidades, ordenEspecialidadesPorDefecto());
    EXPECT_TRUE(cv->historialAnalisis.empty());
}

TEST(CambiosSinGuardar, laPreguntaEsperaConCambiosYNoSinEllos) {
    QTemporaryDir dir;
    auto cv = espacioGuardado();
    cv->pedirAccion({AccionPendiente::Tipo::abrirProyecto, {}});
    EXPECT_FALSE(cv->accionPorConfirmar);
    EXPECT_TRUE(cv->mostrarAbrirProyecto); // nothing unsaved: the panel at once
    cv->cerrarPaneles();

    cv->alternarEspecialidad("ARQ");
    cv->pedirAccion({AccionPendiente::Tipo::nuevoProyecto, {}});
    ASSERT_TRUE(cv->accionPorConfirmar);
    cv->responderGuardar(RespuestaGuardar::cancelar);
    EXPECT_TRUE(cv->hayCambiosSinGuardar());
    EXPECT_EQ(cv->especialidades.at("ARQ").modelos.size(), 1u);
    // "Guardar" without a file asks for one; leaving the panel drops the action.
    cv->pedirAccion({AccionPendiente::Tipo::nuevoProyecto, {}});
    cv->responderGuardar(RespuestaGuardar::guardar);
    EXPECT_TRUE(cv->showSavePicker);
    cv->cerrarPaneles();
    EXPECT_EQ(cv->especialidades.at("ARQ").modelos.size(), 1u);
    // With the file chosen, the save is written and the new project follows.
    cv->pedirAccion({AccionPendiente::Tipo::nuevoProyecto, {}});
    cv->responderGuardar(RespuestaGuardar::guardar);
    cv->guardarProyectoComo(dir.filePath(QStringLiteral("antes.teskal")).toStdString());
    EXPECT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("antes.teskal"))));
    EXPECT_TRUE(cv->especialidades.at("ARQ").modelos.empty());
    EXPECT_EQ(cv->gestor.nombreProyecto, "Proyecto sin título");
}

TEST(CambiosSinGuardar, unaEscrituraFallidaDejaElDocumentoAnterior) {
    QTemporaryDir dir;
    const QString ruta = dir.filePath(QStringLiteral("obra.teskal"));
    const QByteArray anterior = "{\"documento\": \"anterior\"}\n";
    struct Caso {
        const char* nombre;
        std::function<void()> preparar, deshacer;
        QString destino;
    };
    rlimit limite{};
    getrlimit(RLIMIT_FSIZE, &limite);
    const std::vector<Caso> casos = {
        // The disk fills halfway through the write (root writes past permissions,
        // not past the file size limit).
        {"escritura cortada",
         [&] {
             std::signal(SIGXFSZ, SIG_IGN);
             rlimit corto = limite;
             corto.rlim_cur = 64;
             setrlimit(RLIMIT_FSIZE, &corto);
         },
         [&] { setrlimit(RLIMIT_FSIZE, &limite); }, ruta},
        // The renaming over the target fails: a folder stands there.
        {"destino que es carpeta", [&] { QDir(dir.path()).mkpath(QStringLiteral("carpeta.teskal/dentro")); }, [] {},
         dir.filePath(QStringLiteral("carpeta.teskal"))},
    };
    for (const Caso& c : casos) {
        QFile f(ruta);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(anterior);
        f.close();
        auto cv = espacioGuardado();
        cv->alternarEspecialidad("ARQ");
        c.preparar();
        cv->guardarProyectoComo(c.destino.toStdString());
        c.deshacer();
        EXPECT_TRUE(cv->showError) << c.nombre;
        EXPECT_TRUE(cv->errorMessage.value_or("").starts_with("Error al guardar: ")) << c.nombre;
        EXPECT_TRUE(cv->hayCambiosSinGuardar()) << c.nombre;
        EXPECT_FALSE(cv->gestor.urlActual) << c.nombre;
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        EXPECT_EQ(f.readAll(), anterior) << c.nombre;
        f.close();
        EXPECT_TRUE(QFileInfo(dir.filePath(QStringLiteral("carpeta.teskal"))).isDir() ||
                    c.destino == ruta);
        // No half-written copy is left beside the document.
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("obra.teskal")}) << c.nombre;
    }
}

TEST(CambiosSinGuardar, modelosNoEncontradosSeListanSeConservanYSeBuscan) {
    const QString muestra = QStringLiteral(TESKAL_SAMPLES_DIR "/example.ifc");
    if (!QFileInfo::exists(muestra)) GTEST_SKIP() << "sin ../shared/samples";
    QTemporaryDir dir;
    const QString original = dir.filePath(QStringLiteral("antes/modelo.ifc"));
    const QString movido = dir.filePath(QStringLiteral("despues/modelo.ifc"));
    QDir().mkpath(QFileInfo(original).absolutePath());
    QDir().mkpath(QFileInfo(movido).absolutePath());
    ASSERT_TRUE(QFile::copy(muestra, original));
    ProyectoTESKAL p;
    p.ordenEspecialidades = {"ARQ", "EST"};
    p.especialidades = {{"ARQ", "Arquitectura", "building.2", 1, 1, 1, true,
                         {{"modelo.ifc", original.toStdString(), std::nullopt, false, 0.25}}},
                        {"EST", "Estructura", "folder", 1, 1, 1, true, {}}};
    QFile::rename(original, movido); // moved away after the save

    ContentView cv(conversor);
    cv.restaurarProyecto(p, std::nullopt);
    ASSERT_EQ(cv.modelosAusentes.size(), 1u);
    EXPECT_TRUE(cv.mostrarModelosAusentes);
    EXPECT_EQ(cv.modelosAusentes[0].clave, "ARQ");
    EXPECT_EQ(cv.modelosAusentes[0].guardado.nombre, "modelo.ifc");
    EXPECT_FALSE(cv.hayCambiosSinGuardar());
    // Saved again before it is found, the model stays in the document as read.
    EXPECT_EQ(cv.construirProyecto().especialidades, p.especialidades);

    cv.buscarModeloAusente(0, dir.filePath(QStringLiteral("no/existe.ifc")).toStdString());
    EXPECT_TRUE(cv.showError);
    EXPECT_EQ(cv.modelosAusentes.size(), 1u);
    cv.cerrarError();

    cv.buscarModeloAusente(0, movido.toStdString());
    EXPECT_TRUE(cv.modelosAusentes.empty());
    EXPECT_FALSE(cv.mostrarModelosAusentes);
    EXPECT_TRUE(cv.hayCambiosSinGuardar()); // the document points at another file
    ASSERT_TRUE(esperarHasta([&] { return cv.especialidades.at("ARQ").modelos.size() == 1; }));
    const ModeloVinculado& m = cv.especialidades.at("ARQ").modelos[0];
    EXPECT_EQ(m.rutaOrigen, std::optional(movido.toStdString()));
    EXPECT_FALSE(m.isVisible);
    EXPECT_EQ(m.transparencia, 0.25);
    EXPECT_GT(m.nodo->childNodes().size(), 0u);
    const auto guardado = cv.construirProyecto().especialidades[0].modelos;
    ASSERT_EQ(guardado.size(), 1u);
    EXPECT_EQ(guardado[0].rutaAbsoluta, movido.toStdString());
}
