// The workspace driven headless: the road of a file into the federated scene
// with the real converter, its failures with small fake converters, and the
// rules of disciplines and linked models.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThreadPool>
#include <functional>
#include <glm/gtc/constants.hpp>
#include <set>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>
#include "espera_eventos.h"
#include "utilidades_prueba.h"

using namespace teskal;

using teskal::pruebas::esperarHasta;

namespace {

const std::string muestras = TESKAL_SAMPLES_DIR;

// Files the conversions left in the temporary folder (a private one per test
// process): copies named UUID.ifc and outputs UUID.obj.
QStringList sobrantes(const char* patron) {
    return QDir(QDir::tempPath()).entryList({QString::fromLatin1(patron)}, QDir::Files);
}

// A file of the given bytes in the folder; gives its path.
QString escribirEn(const QTemporaryDir& dir, const char* nombre, const char* bytes) {
    const QString ruta = dir.filePath(QString::fromLatin1(nombre));
    QFile f(ruta);
    f.open(QIODevice::WriteOnly);
    f.write(bytes);
    return ruta;
}

constexpr const char* muroIFC = "ISO-10303-21;\nDATA;\n#1=IFCWALL('g',$,'Muro',$,$,$,$,$);\nENDSEC;\n";

std::string conversorFalso(const QTemporaryDir& dir, const char* nombre, const std::string& cuerpo) {
    const QString ruta = escribirEn(dir, nombre, ("#!/bin/sh\n" + cuerpo + "\n").c_str());
    QFile::setPermissions(ruta, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return ruta.toStdString();
}

std::unique_ptr<ContentView> espacio() {
    auto cv = std::make_unique<ContentView>(QFileInfo(QString::fromUtf8(TESKAL_IFCCONVERT)).absolutePath().toStdString());
    ContentView::configurarLuces(cv->scene);
    return cv;
}

// Links a file to a discipline and waits for its conversion, which must end
// without an alert.
testing::AssertionResult vincularYEsperar(ContentView& cv, const std::string& esp, const std::string& ruta) {
    cv.vincularIFC(esp);
    cv.archivosElegidos({ruta});
    if (!esperarHasta([&] { return !cv.isProcessing; })) return testing::AssertionFailure() << "sigue convirtiendo";
    if (cv.showError) return testing::AssertionFailure() << cv.errorMessage.value_or("");
    return testing::AssertionSuccess();
}

// Runs one of the tests' IFC generators with its argument.
testing::AssertionResult generarIFC(const char* guion, const QString& argumento) {
    QProcess p;
    p.start(QStringLiteral(TESKAL_PYTHON), {QStringLiteral(TESKAL_TESTS_DIR "/") + QString::fromLatin1(guion), argumento});
    if (p.waitForFinished(300000) && p.exitCode() == 0) return testing::AssertionSuccess();
    return testing::AssertionFailure() << p.readAllStandardError().toStdString();
}

std::vector<Material*> materialesDe(const Node& modelo) {
    std::vector<Material*> r;
    const_cast<Node&>(modelo).enumerateChildNodes([&](Node& n, bool&) {
        if (n.geometry()) r.push_back(n.geometry()->firstMaterial());
    });
    return r;
}

// A model made without the converter, for the rules that need no real file.
ModeloConvertido modeloDePrueba(float x0, float z0) {
    const std::string obj = "v " + std::to_string(x0) + " 0 " + std::to_string(z0) + "\nv " +
                            std::to_string(x0 + 2) + " 0 " + std::to_string(z0) + "\nv " + std::to_string(x0) +
                            " 3 " + std::to_string(z0 + 4) + "\ng Muro\nf 1 2 3\ng Losa\nf 1 3 2\n";
    ModeloConvertido m;
    m.modelo = cargarOBJTexto(obj);
    m.propiedades["Muro"]["__tipoIFC"] = "IFCWALL";
    return m;
}

void vincularDePrueba(ContentView& cv, const std::string& clave, const std::string& nombre, float x0 = 0,
                      float z0 = 0) {
    cv.seleccionActual = clave;
    cv.fileName = nombre;
    cv.integrarModelo(modeloDePrueba(x0, z0), "/proyectos/" + nombre, "/no/existe.obj");
}

TEST(VinculoIFC, muestrasFederadasConConversorReal) {
    if (!QFileInfo::exists(QString::fromStdString(muestras))) GTEST_SKIP() << "sin ../shared/samples";
    auto cv = espacio();
    cv->vincularIFC("ARQ");
    EXPECT_TRUE(cv->showFilePicker);
    cv->archivosElegidos({muestras + "/duplex.ifc", muestras + "/example.ifc"}); // only the first counts
    EXPECT_TRUE(cv->isProcessing);
    EXPECT_EQ(cv->fileName, "duplex.ifc");

    // A path with blanks and accents, to another discipline while the first
    // converts; a selection made meanwhile takes nothing.
    QTemporaryDir dir;
    const QString acentos = dir.filePath(QStringLiteral("mi carpeta/Casa Ñandú.ifc"));
    QDir().mkpath(QFileInfo(acentos).absolutePath());
    ASSERT_TRUE(QFile::copy(QString::fromStdString(muestras + "/IfcOpenHouse_IFC4.ifc"), acentos));
    cv->vincularIFC("EST");
    cv->archivosElegidos({acentos.toStdString()});
    cv->seleccionarEspecialidad("MEP");
    EXPECT_EQ(cv->fileName, "Casa Ñandú.ifc");
    ASSERT_TRUE(esperarHasta([&] {
        return cv->especialidades.at("ARQ").modelos.size() + cv->especialidades.at("EST").modelos.size() == 2;
    }));
    ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
    ASSERT_FALSE(cv->showError) << cv->errorMessage.value_or("");
    EXPECT_FALSE(cv->especialidades.at("MEP").nodoRaiz);

    const auto& arq = cv->especialidades.at("ARQ");
    ASSERT_TRUE(arq.nodoRaiz);
    EXPECT_EQ(arq.nodoRaiz->name(), std::optional<std::string>("esp_ARQ"));
    EXPECT_EQ(arq.nodoRaiz->parent(), cv->scene.rootNode());
    ASSERT_EQ(arq.modelos.size(), 1u);
    const ModeloVinculado& duplex = arq.modelos[0];
    EXPECT_EQ(duplex.nombre, "duplex.ifc");
    EXPECT_EQ(duplex.rutaOrigen, muestras + "/duplex.ifc");
    EXPECT_FALSE(duplex.nodo->name());
    EXPECT_EQ(duplex.nodo->parent(), arq.nodoRaiz);
    EXPECT_GT(duplex.nodo->childNodes().size(), 100u);
    const auto& est = cv->especialidades.at("EST");
    ASSERT_EQ(est.modelos.size(), 1u);
    EXPECT_EQ(est.modelos[0].nombre, "Casa Ñandú.ifc");
    // Each discipline paints its models in its own colour, opaque.
    for (const auto& [modelo, color] : {std::pair{duplex.nodo, Color{0.85f, 0.85f, 0.85f, 1}},
                                        std::pair{est.modelos[0].nodo, Color{0.6f, 0.6f, 0.6f, 1}}})
        for (Material* m : materialesDe(*modelo)) {
            ASSERT_TRUE(m->diffuse());
            EXPECT_EQ(*m->diffuse(), color);
            EXPECT_EQ(m->transparency(), 1.0f);
        }

    // Every element node knows its own GlobalId and class from the converter;
    // properties go per discipline, keyed by the node names.
    ASSERT_TRUE(cv->propiedadesIFC.contains("EST"));
    std::set<std::string> ids;
    std::size_t conEntrada = 0;
    for (const auto& n : duplex.nodo->childNodes()) {
        EXPECT_EQ(n->globalId().size(), 22u) << n->name().value_or("");
        EXPECT_EQ(n->claseIFC().rfind("Ifc", 0), 0u) << n->claseIFC();
        ids.insert(n->globalId());
        conEntrada += cv->propiedadesIFC["ARQ"].contains(*n->name());
    }
    EXPECT_EQ(ids.size(), duplex.nodo->childNodes().size());
    EXPECT_GT(conEntrada * 2, duplex.nodo->childNodes().size());

    // A .ifczip links like the IFC inside it, properties included.
    const QString zip = dir.filePath(QStringLiteral("casa [v2].ifczip"));
    QProcess comprimir;
    comprimir.start(QStringLiteral("/usr/bin/zip"), {QStringLiteral("-j"), zip, acentos});
    ASSERT_TRUE(comprimir.waitForFinished(60000) && comprimir.exitCode() == 0);
    ASSERT_TRUE(vincularYEsperar(*cv, "MEP", zip.toStdString()));
    const auto& mep = cv->especialidades.at("MEP");
    ASSERT_EQ(mep.modelos.size(), 1u);
    EXPECT_EQ(mep.modelos[0].nodo->childNodes().size(), est.modelos[0].nodo->childNodes().size());
    EXPECT_FALSE(cv->propiedadesIFC["MEP"].empty());

    // Nothing left in the temporary folder: copies and outputs are gone.
    EXPECT_TRUE(sobrantes("*").isEmpty()) << sobrantes("*").join(',').toStdString();
}

// A hundred piles of one name, each with its own reference: every node shows
// its own properties, found by its GlobalId.
TEST(VinculoIFC, elementosDelMismoNombreMuestranSusPropiasPropiedades) {
    QTemporaryDir dir;
    QJsonArray elementos;
    for (int i = 0; i < 100; ++i) {
        const QString gid = QStringLiteral("0Pilote%1").arg(i, 15, 10, QLatin1Char('0'));
        elementos.append(QJsonObject{{"nombre", "Pilote"}, {"gid", gid}, {"clase", "IfcPile"},
                                     {"min", QJsonArray{i * 2.0, 0, 0}}, {"tam", QJsonArray{0.5, 0.5, 8}},
                                     {"pset", QJsonObject{{"Referencia", QStringLiteral("P-%1").arg(i)}}}});
    }
    const QString ruta = dir.filePath(QStringLiteral("pilotes.ifc"));
    const QString descripcion = dir.filePath(QStringLiteral("pilotes.json"));
    QFile f(descripcion);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(QJsonDocument(QJsonArray{QJsonObject{{"ruta", ruta}, {"elementos", elementos}}}).toJson());
    f.close();
    ASSERT_TRUE(generarIFC("analyses/versiones_xor.py", descripcion));

    auto cv = espacio();
    ASSERT_TRUE(vincularYEsperar(*cv, "EST", ruta.toStdString()));
    const auto& nodos = cv->especialidades.at("EST").modelos.at(0).nodo->childNodes();
    ASSERT_EQ(nodos.size(), 100u);
    for (const auto& n : nodos) {
        ASSERT_EQ(n->claseIFC(), "IfcPile");
        const PropiedadesElemento* p = cv->propiedadesDe(*n);
        ASSERT_TRUE(p) << n->globalId();
        const int i = std::stoi(n->globalId().substr(7));
        EXPECT_EQ(p->at(pruebas::clave("Pset_Prueba", "Referencia")), "P-" + std::to_string(i));
        EXPECT_EQ(p->at("__tipoIFC"), "IFCPILE");
    }
}

// A converter that never ends: cancelled by the user, stopped by the time
// limit, or ended by quitting, it leaves no process and no temporary file.
TEST(VinculoIFC, unConversorQueNoTerminaSeDetiene) {
    QTemporaryDir dir;
    const QString ifc = escribirEn(dir, "modelo.ifc", muroIFC);
    // It writes a partial output first, as a converter at work does, and
    // waits in a child process of its own.
    const std::string conversor =
        conversorFalso(dir, "eterno", "echo 'v 0 0 0' > \"$2\"; : > \"${2%.obj}.mtl\"; sleep 6173");
    auto procesosVivos = [&] {
        QProcess ps;
        ps.start(QStringLiteral("/usr/bin/pgrep"),
                 {QStringLiteral("-f"), QString::fromStdString(conversor) + QStringLiteral("|sleep 6173")});
        ps.waitForFinished(10000);
        return !ps.readAllStandardOutput().trimmed().isEmpty();
    };
    struct Caso {
        const char* nombre;
        std::function<void(ContentView&)> detener;
        std::string mensaje; // empty: no alert
    };
    const std::vector<Caso> casos = {
        {"cancelar", [](ContentView& cv) { cv.cancelarConversion(); }, ""},
        {"limite", [](ContentView&) {}, "La conversión superó el límite de 0.005 minutos y se canceló."},
        {"salir", [](ContentView& cv) { cv.detenerTrabajos(); }, ""},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        auto cv = espacio();
        cv->rutaConversor = conversor;
        cv->limiteConversionMinutos = c.mensaje.empty() ? 30 : 0.005; // 0.3 s
        cv->archivosElegidos({ifc.toStdString()});
        ASSERT_TRUE(cv->isProcessing);
        ASSERT_TRUE(esperarHasta([&] { return procesosVivos(); }, 30000));
        c.detener(*cv);
        if (c.mensaje.empty()) {
            EXPECT_FALSE(cv->isProcessing);
        }
        ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing && !procesosVivos(); }, 30000));
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        EXPECT_EQ(cv->showError, !c.mensaje.empty());
        EXPECT_EQ(cv->errorMessage.value_or(""), c.mensaje);
        EXPECT_TRUE(cv->especialidades.at("ARQ").modelos.empty());
        EXPECT_TRUE(sobrantes("*").isEmpty()) << sobrantes("*").join(',').toStdString();
    }
}

// Every failure on the road shows its own sentence, leaves nothing in the
// temporary folder and keeps the models linked before.
TEST(VinculoIFC, fallosDelCaminoConSuFrase) {
    QTemporaryDir dir;
    auto cv = espacio();
    vincularDePrueba(*cv, "ARQ", "previo.ifc"); // an earlier model that must stay
    const std::string ifc = escribirEn(dir, "modelo.ifc", muroIFC).toStdString();
    const std::string noEjecutable = escribirEn(dir, "noejecutable", "").toStdString();
    const std::string noIFC = escribirEn(dir, "planilla.ifc", "Nombre;Cantidad\nMuro;3\n").toStdString();
    const std::string real = cv->rutaConversor;

    struct Caso {
        const char* nombre;
        std::string conversor, archivo;
        std::string esperado;
        bool prefijo = false; // the converter's or the system's own words follow
    };
    const std::string sinGeometria = "El archivo no contiene geometría que se pueda mostrar";
    const std::vector<Caso> casos = {
        {"sale3", conversorFalso(dir, "sale3", "echo 'sin licencia' >&2; exit 3"), ifc,
         "IfcConvert falló (código 3):\nsin licencia\n"},
        {"latin1", conversorFalso(dir, "latin1", "printf 'error en \\351l' >&2; exit 2"), ifc,
         "IfcConvert falló (código 2):\nSin detalle"},
        {"mudo", conversorFalso(dir, "mudo", "exit 1"), ifc, "IfcConvert falló (código 1):\n"},
        {"vacio", conversorFalso(dir, "vacio", ": > \"$2\"; exit 0"), ifc, sinGeometria},
        {"sincaras", conversorFalso(dir, "sincaras", "printf 'v 0 0 0\\nv 1 0 0\\n' > \"$2\"; exit 0"), ifc,
         sinGeometria},
        {"sinsalida", conversorFalso(dir, "sinsalida", "exit 0"), ifc,
         "No se pudo cargar la geometría. El archivo generado puede estar vacío o corrupto."},
        {"noejecutable", noEjecutable, ifc, "No se pudo ejecutar IfcConvert: ", true},
        {"desaparecido", conversorFalso(dir, "nunca", "exit 0"), dir.filePath(QStringLiteral("ya no está.ifc")).toStdString(),
         "No se pudo copiar el archivo al directorio temporal: El archivo o la carpeta no existe."},
        {"noIFC", real, noIFC, "IfcConvert falló (código 1):\nNo se pudo leer el archivo IFC", true},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        cv->rutaConversor = c.conversor;
        cv->showError = false;
        cv->archivosElegidos({c.archivo});
        ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
        EXPECT_TRUE(cv->showError);
        const std::string mensaje = cv->errorMessage.value_or("");
        EXPECT_EQ(c.prefijo ? mensaje.substr(0, c.esperado.size()) : mensaje, c.esperado);
        EXPECT_TRUE(sobrantes("*").isEmpty()); // the copy and the outputs go on every path
    }
    // The text readers find nothing in a file that is not IFC either.
    EXPECT_TRUE(leerPropiedadesIFC(noIFC).empty());
    EXPECT_TRUE(leerGrillasIFC(noIFC).empty());

    // No converter beside the program: refused before any work starts.
    ContentView sinConversor("/no/hay/programa");
    sinConversor.archivosElegidos({ifc});
    EXPECT_FALSE(sinConversor.isProcessing);
    EXPECT_EQ(*sinConversor.errorMessage, "No se encontró el motor IfcConvert en el bundle de la app.");

    // The picker's own failure, and a cancelled picker that changes nothing.
    cv->fileName = "antes.ifc";
    cv->archivosElegidos({}, "permiso denegado");
    EXPECT_EQ(*cv->errorMessage, "Error al seleccionar archivo: permiso denegado");
    cv->showError = false;
    cv->archivosElegidos({});
    EXPECT_FALSE(cv->showError);
    EXPECT_EQ(cv->fileName, "antes.ifc");

    // A file that can't be read (not testable as root, who reads everything).
    if (geteuid() != 0) {
        QFile::setPermissions(QString::fromStdString(ifc), QFileDevice::Permissions());
        cv->archivosElegidos({ifc});
        EXPECT_EQ(*cv->errorMessage, "No se pudo acceder al archivo. Verifica los permisos en Sandbox.");
        EXPECT_FALSE(cv->isProcessing);
    }
    EXPECT_EQ(cv->especialidades.at("ARQ").modelos.size(), 1u);
    EXPECT_FALSE(cv->isProcessing);
}

TEST(Especialidades, claveDeUnaNuevaEspecialidad) {
    auto cv = espacio();
    struct Caso {
        const char* nombre;
        const char* icono;
        const char* clave;
    };
    const Caso casos[] = {{"Arquitectura 2", "", "ARQ1"}, {"arquitectura paisaje", "", "ARQ2"},
                          {"  Sanitaria\t", "drop", "SAN"}, {"Ag", "", "AG"},
                          {"Área verde", "", "ÁRE"},        {"a b c", "", "A B"}};
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        cv->abrirNuevaEspecialidad();
        cv->nuevaEspNombre = c.nombre;
        cv->nuevaEspIcono = c.icono;
        cv->agregarEspecialidad();
        EXPECT_EQ(cv->ordenEspecialidades.back(), c.clave);
        EXPECT_FALSE(cv->mostrarNuevaEsp);
    }
    EXPECT_EQ(cv->especialidades.at("SAN").nombre, "Sanitaria");
    EXPECT_EQ(cv->especialidades.at("SAN").icono, "drop");
    EXPECT_EQ(cv->especialidades.at("ARQ1").icono, "folder");
    EXPECT_EQ(cv->especialidades.at("ARQ1").colorOriginal, colores::teal);

    // A blank name adds nothing and keeps the form open.
    const std::size_t antes = cv->ordenEspecialidades.size();
    cv->abrirNuevaEspecialidad();
    cv->nuevaEspNombre = " \t ";
    cv->agregarEspecialidad();
    EXPECT_EQ(cv->ordenEspecialidades.size(), antes);
    EXPECT_TRUE(cv->mostrarNuevaEsp);
}


// Two models in each of two disciplines: eyes, transparency and colour in
// one, highlight, transformation and unlinking in the other.
TEST(Especialidades, ojosColorResaltadoTransformacionYDesvinculo) {
    auto cv = espacio();
    vincularDePrueba(*cv, "EST", "a.ifc");
    vincularDePrueba(*cv, "EST", "b.ifc", 10);
    vincularDePrueba(*cv, "ARQ", "a.ifc");
    vincularDePrueba(*cv, "ARQ", "b.ifc", 5);
    auto& est = cv->especialidades.at("EST");
    auto& arq = cv->especialidades.at("ARQ");
    std::string a = est.modelos[0].id, b = est.modelos[1].id;

    // A model hidden by its own eye stays hidden through the discipline's eye.
    cv->alternarModelo("EST", a);
    EXPECT_TRUE(est.modelos[0].nodo->isHidden());
    cv->alternarEspecialidad("EST");
    EXPECT_FALSE(est.isVisible);
    EXPECT_TRUE(est.nodoRaiz->isHidden());
    EXPECT_TRUE(est.modelos[0].nodo->isHidden());
    cv->alternarEspecialidad("EST");
    EXPECT_FALSE(est.nodoRaiz->isHidden());
    EXPECT_TRUE(est.modelos[0].nodo->isHidden());
    EXPECT_FALSE(est.modelos[1].nodo->isHidden());
    // A discipline with no models has a disabled eye.
    cv->alternarEspecialidad("MEP");
    EXPECT_TRUE(cv->especialidades.at("MEP").isVisible);

    // Transparency survives a recolour; the colour follows the discipline.
    cv->fijarTransparencia("EST", b, 0.5);
    for (Material* m : materialesDe(*est.modelos[1].nodo)) EXPECT_FLOAT_EQ(m->transparency(), 0.5f);
    cv->abrirColor("EST");
    EXPECT_EQ(cv->colorPickerColor, (Color{0.6f, 0.6f, 0.6f, 1}));
    cv->aplicarColor(Color{1, 0, 0, 1});
    EXPECT_FALSE(cv->colorPickerKey);
    cv->aplicarColores();
    for (Material* m : materialesDe(*est.modelos[1].nodo)) {
        EXPECT_FLOAT_EQ(m->transparency(), 0.5f);
        EXPECT_EQ(*m->diffuse(), (Color{1, 0, 0, 1}));
    }
    // The recolour keeps the hidden model hidden, node by node.
    for (const auto& n : est.modelos[0].nodo->childNodes()) EXPECT_TRUE(n->isHidden());

    a = arq.modelos[0].id;
    b = arq.modelos[1].id;

    auto camara = Node::crear();
    camara->setCamera(Camera{});
    cv->viewport.vincularPuntoDeVista(camara);
    cv->resaltarModelo("ARQ", a);
    EXPECT_EQ(cv->modeloResaltadoId, a);
    EXPECT_EQ(cv->nodosResaltados.size(), 2u);
    for (Material* m : materialesDe(*arq.modelos[0].nodo)) EXPECT_EQ(m->emission(), (Color{0, 0.75f, 1, 1}));
    // The camera frames the model's box: centre (1, 1.5, 2), size 4.
    cv->viewport.terminarAnimacion();
    EXPECT_EQ(camara->position(), glm::vec3(1 + 4, 1.5f - 4, 2 + 4));
    // Another model moves the highlight; a second click clears it and selects nothing.
    cv->resaltarModelo("ARQ", b);
    for (Material* m : materialesDe(*arq.modelos[0].nodo)) EXPECT_EQ(m->emission(), colores::negro);
    cv->resaltarModelo("ARQ", b);
    EXPECT_FALSE(cv->modeloResaltadoId);
    EXPECT_TRUE(cv->nodosResaltados.empty());
    for (Material* m : materialesDe(*arq.modelos[1].nodo)) EXPECT_EQ(m->emission(), colores::negro);

    // Turn of 90 degrees and 10 m offset: position and rotation are separate,
    // the turn is about the root's origin; the unit scales the geometry.
    cv->abrirTransformacion("ARQ", a);
    ASSERT_TRUE(cv->modeloEditandoTransformacion);
    EXPECT_EQ(cv->modeloEditandoTransformacion->nombre, "a.ifc");
    TransformacionModelo t;
    t.unidades = Unidades::milimetros;
    t.offsetX = 10;
    t.giroZ = 90;
    cv->aplicarTransformacion("ARQ", a, t);
    EXPECT_FALSE(cv->modeloEditandoTransformacion);
    const Node& raizA = *arq.modelos[0].nodo;
    EXPECT_EQ(raizA.position(), glm::vec3(10, 0, 0));
    EXPECT_FLOAT_EQ(raizA.eulerAngles().z, glm::half_pi<float>());
    EXPECT_EQ(raizA.scale(), glm::vec3(0.001f));
    const glm::vec3 p = glm::vec3(raizA.worldTransform() * glm::vec4(1000, 0, 0, 1));
    EXPECT_NEAR(p.x, 10, 1e-4);
    EXPECT_NEAR(p.y, 1, 1e-4);
    EXPECT_EQ(arq.modelos[0].transformacion, t);

    // Removing one model keeps the discipline's properties; the last one takes
    // the root, the properties, and turns the discipline visible again.
    cv->alternarEspecialidad("ARQ");
    cv->pedirEliminarModelo("ARQ", a);
    ASSERT_TRUE(cv->modeloPendienteEliminar);
    EXPECT_EQ(cv->modeloPendienteEliminar->nombre, "a.ifc");
    cv->confirmarEliminarModelo();
    EXPECT_FALSE(cv->modeloPendienteEliminar);
    EXPECT_EQ(arq.modelos.size(), 1u);
    EXPECT_TRUE(cv->propiedadesIFC.contains("ARQ"));
    auto raiz = arq.nodoRaiz;
    cv->pedirEliminarModelo("ARQ", b);
    cv->confirmarEliminarModelo();
    EXPECT_FALSE(arq.nodoRaiz);
    EXPECT_FALSE(raiz->parent());
    EXPECT_TRUE(arq.isVisible);
    EXPECT_FALSE(cv->propiedadesIFC.contains("ARQ"));
}

TEST(EnsamblajeEscena, pisoLucesYGrillas) {
    auto cv = espacio();
    const auto& raiz = cv->scene.rootNode();
    // Lights set up again replace the old ones.
    ContentView::configurarLuces(cv->scene);
    EXPECT_EQ(raiz->childNodes().size(), 2u);
    const auto luz = raiz->childNodeWithName("_TESKAL_LuzDir", false);
    ASSERT_TRUE(luz);
    // The light looks along (0.5, 0.5, -0.7).
    const glm::vec3 frente = glm::vec3(luz->transform() * glm::vec4(0, 0, -1, 0));
    const glm::vec3 esperado = glm::normalize(glm::vec3(0.5f, 0.5f, -0.7f));
    EXPECT_LT(glm::distance(frente, esperado), 1e-5f);
    EXPECT_GT(glm::vec3(luz->transform() * glm::vec4(0, 1, 0, 0)).z, 0); // its up leans to world up

    // An empty scene has no floor.
    cv->actualizarPiso();
    EXPECT_FALSE(raiz->childNodeWithName("_TESKAL_Piso", false));

    vincularDePrueba(*cv, "ARQ", "a.ifc", 0, -2);
    auto piso = raiz->childNodeWithName("_TESKAL_Piso", false);
    ASSERT_TRUE(piso);
    EXPECT_FLOAT_EQ(piso->position().z, -2.01f);
    const Material* m = piso->geometry()->firstMaterial();
    EXPECT_TRUE(m->diffuseImagen()); // the tiled floor texture, seen through
    EXPECT_FLOAT_EQ(m->transparency(), 0.75f);
    EXPECT_EQ(luz->light()->orthographicScale, 30.0f); // a small scene keeps the minimum

    // A far model widens the light; the old floor does not inflate the box.
    vincularDePrueba(*cv, "EST", "b.ifc", 100, 0);
    EXPECT_FLOAT_EQ(luz->light()->orthographicScale, 0.8f * 102.0f);
    EXPECT_EQ(std::count_if(raiz->childNodes().begin(), raiz->childNodes().end(),
                            [](const auto& n) { return n->name() == std::optional<std::string>("_TESKAL_Piso"); }),
              1);

    // Grid lines: one segment per consecutive pair of points, one node, cut in
    // plan to the elements' box, (0, 0, -2)-(102, 3, 4), grown by a tenth of
    // its largest side, 10.2 m; grillasIFC keeps the axes whole.
    cv->grillasIFC = {{"1", "A", true, {{0, -1000, 0}, {0, 1000, 0}}},
                      {"2", "1", false, {{-500, 0, 1}, {-400, 0, 1}, {500, 0, 1}}},
                      {"3", "S", false, {{-1000, 5, 0}, {1000, 5, 20}}},
                      {"4", "Fuera", false, {{500, 500, 0}, {600, 500, 0}}},
                      {"5", "Dentro", false, {{1, 1, 0}, {2, 2.5f, 0}}}};
    const auto enteras = cv->grillasIFC;
    cv->reconstruirGrillas();
    ASSERT_TRUE(cv->nodoGrillasIFC);
    EXPECT_EQ(raiz->childNodeWithName("GrillasIFC", false), cv->nodoGrillasIFC);
    const Geometry& g = *cv->nodoGrillasIFC->geometry();
    EXPECT_EQ(g.elementos[0].primitiva, Primitiva::Lineas);
    EXPECT_EQ(*g.firstMaterial()->diffuse(), Color::gris(0.55f, 0.6f));
    // Axis 1 loses its first piece, wholly outside; S keeps its slope in Z.
    const std::vector<glm::vec3> recortadas = {{0, -10.2f, 0},      {0, 13.2f, 0},         {-10.2f, 0, 1},
                                               {112.2f, 0, 1},      {-10.2f, 5, 9.898f},   {112.2f, 5, 11.122f},
                                               {1, 1, 0},           {2, 2.5f, 0}};
    ASSERT_EQ(g.vertices.size(), recortadas.size());
    EXPECT_EQ(g.elementos[0].indices, (std::vector<std::int32_t>{0, 1, 2, 3, 4, 5, 6, 7}));
    for (std::size_t i = 0; i < recortadas.size(); ++i)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(g.vertices[i][c], recortadas[i][c], 1e-3) << i;
    EXPECT_EQ(cv->grillasIFC.size(), enteras.size());
    for (std::size_t i = 0; i < enteras.size(); ++i) EXPECT_EQ(cv->grillasIFC[i].puntos, enteras[i].puntos);

    // The lines follow the box as it changes, to the whole axes with no
    // elements; with no axes there is no node.
    auto modeloArq = [&] { return cv->especialidades.at("ARQ").modelos.at(0).id; };
    TransformacionModelo corrida;
    corrida.offsetX = 50;
    struct Paso {
        const char* nombre;
        std::function<void()> hacer;
        glm::vec2 min, max; // the drawn lines in plan
    };
    const std::vector<Paso> pasos = {
        {"one model left: (0, 0)-(2, 3) and 5 m", [&] { cv->desvincularTodos("EST"); }, {-5, -5}, {7, 8}},
        {"the model moved 50 m", [&] { cv->aplicarTransformacion("ARQ", modeloArq(), corrida); }, {45, 0}, {57, 5}},
        {"no elements", [&] { cv->desvincularTodos("ARQ"); }, {-1000, -1000}, {1000, 1000}},
    };
    for (const Paso& p : pasos) {
        SCOPED_TRACE(p.nombre);
        p.hacer();
        ASSERT_TRUE(cv->nodoGrillasIFC);
        EXPECT_EQ(raiz->childNodeWithName("GrillasIFC", false), cv->nodoGrillasIFC); // one node, replaced
        const Box b = cv->nodoGrillasIFC->boundingBox();
        EXPECT_LT(glm::distance(glm::vec2(b.min), p.min) + glm::distance(glm::vec2(b.max), p.max), 1e-3f);
    }
    cv->grillasIFC.clear();
    cv->reconstruirGrillas();
    EXPECT_FALSE(cv->nodoGrillasIFC);
    EXPECT_FALSE(raiz->childNodeWithName("GrillasIFC", false));
}

// Where two axes cross in plan, from the first two points of each.
glm::vec2 cruce(const EjeGrilla& u, const EjeGrilla& v) {
    const glm::vec2 p(u.puntos[0]), r = glm::vec2(u.puntos[1]) - p;
    const glm::vec2 q(v.puntos[0]), s = glm::vec2(v.puntos[1]) - q;
    const float t = ((q.x - p.x) * s.y - (q.y - p.y) * s.x) / (r.x * s.y - r.y * s.x);
    return p + t * r;
}

// A model authored in millimetres, its site far off and turned, its grid on a
// raised storey, moved and turned again, and a column on every intersection:
// through the real converter the axes cross where the columns stand, the
// drawn lines stop near them while the axes stay whole, the camera frames the
// columns, and a project restored from it brings the grid back.
TEST(VinculoIFC, grillaEnMilimetrosCruzaDondeEstanLosPilares) {
    QTemporaryDir dir;
    const QString ifc = dir.filePath(QStringLiteral("grilla mm.ifc"));
    ASSERT_TRUE(generarIFC("federation/grilla_milimetros.py", ifc));
    auto cv = espacio();
    ASSERT_TRUE(vincularYEsperar(*cv, "EST", ifc.toStdString()));

    std::map<std::string, const EjeGrilla*> ejes;
    for (const EjeGrilla& e : cv->grillasIFC) ejes[e.tag + (e.esU ? "U" : "V")] = &e;
    ASSERT_EQ(ejes.size(), 5u);
    const Node& modelo = *cv->especialidades.at("EST").modelos.at(0).nodo;
    for (const char* u : {"A", "B", "C"}) {
        for (const char* v : {"1", "2"}) {
            SCOPED_TRACE(std::string(u) + v);
            const auto pilar = modelo.childNodeWithName(std::string("Pilar ") + u + v, false);
            ASSERT_TRUE(pilar);
            const Box b = pilar->boundingBoxMundo();
            const glm::vec2 c = cruce(*ejes.at(std::string(u) + "U"), *ejes.at(std::string(v) + "V"));
            EXPECT_LT(glm::distance(c, glm::vec2(b.centro())), 2e-3f);
            EXPECT_NEAR(ejes.at(std::string(u) + "U")->puntos[0].z, b.min.z, 2e-3); // on the storey
        }
    }
    // Whole axes: 140 m each. Drawn: within the columns' box and 5 m around it.
    for (const auto& [clave, e] : ejes)
        EXPECT_NEAR(glm::distance(e->puntos[0], e->puntos[1]), 140.0f, 1e-2) << clave;
    const Box elementos = modelo.boundingBoxMundo();
    ASSERT_TRUE(cv->nodoGrillasIFC);
    const Box dibujo = cv->nodoGrillasIFC->boundingBox();
    for (int c = 0; c < 2; ++c) {
        EXPECT_LT(dibujo.min[c], elementos.min[c]);
        EXPECT_GE(dibujo.min[c], elementos.min[c] - 5.0f - 1e-3f);
        EXPECT_GT(dibujo.max[c], elementos.max[c]);
        EXPECT_LE(dibujo.max[c], elementos.max[c] + 5.0f + 1e-3f);
    }
    // The camera frames the columns, not the lines around them.
    const auto encuadre = cv->encuadreEscena();
    ASSERT_TRUE(encuadre);
    const glm::vec3 tam = elementos.tamano();
    EXPECT_FLOAT_EQ(encuadre->second, std::max({tam.x, tam.y, tam.z}));

    // Saved and opened in a workspace that shows another grid: that one goes,
    // this one comes back with the model, drawn as before.
    const std::string proyecto = dir.filePath(QStringLiteral("grilla.teskal")).toStdString();
    ASSERT_TRUE(cv->escribirProyecto(proyecto));
    auto otro = espacio();
    otro->grillasIFC = {{"x", "Z", true, {{0, 0, 0}, {1, 0, 0}}}};
    otro->reconstruirGrillas();
    otro->abrirProyecto(proyecto);
    EXPECT_TRUE(otro->grillasIFC.empty());
    EXPECT_FALSE(otro->nodoGrillasIFC);
    ASSERT_TRUE(esperarHasta([&] { return !otro->especialidades.at("EST").modelos.empty(); }));
    ASSERT_EQ(otro->grillasIFC.size(), cv->grillasIFC.size());
    for (std::size_t i = 0; i < cv->grillasIFC.size(); ++i) {
        EXPECT_EQ(otro->grillasIFC[i].tag, cv->grillasIFC[i].tag);
        EXPECT_EQ(otro->grillasIFC[i].puntos, cv->grillasIFC[i].puntos);
    }
    ASSERT_TRUE(otro->nodoGrillasIFC);
    EXPECT_EQ(otro->nodoGrillasIFC->geometry()->vertices, cv->nodoGrillasIFC->geometry()->vertices);
}

} // namespace
