// The version comparison in the workspace, with versions written by
// IfcOpenShell and converted by the real converter: loads into the slots,
// the comparison, the alerts' fields, clearing, and the loader's failures.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "persistence/ProyectoTESKAL.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include "espera_eventos.h"

using namespace teskal;

using teskal::pruebas::esperarHasta;

namespace {

struct Caja {
    std::string nombre;
    std::string gid;
    double x, y, z;    // min corner
    double dx, dy, dz; // size
    double giroZ = 0;
    QJsonObject pset = {};
};

// GlobalIds in the IFC alphabet, one per number.
std::string gid(int n) {
    std::string s = "0Vxor00000000000000000";
    const std::string cifras = std::to_string(n);
    s.replace(s.size() - cifras.size(), cifras.size(), cifras);
    return s;
}

// The files of one test: IFC versions written by IfcOpenShell's API.
class Versiones {
public:
    // Writes every file in one run of the generator; gives their paths.
    std::vector<std::string> escribir(const std::vector<std::vector<Caja>>& archivos) {
        QJsonArray lista;
        std::vector<std::string> rutas;
        for (std::size_t i = 0; i < archivos.size(); ++i) {
            const QString ruta =
                dir_.filePath(QStringLiteral("version_%1_%2.ifc").arg(contador_++).arg(i));
            QJsonArray elementos;
            for (const Caja& c : archivos[i])
                elementos.append(QJsonObject{{"nombre", QString::fromStdString(c.nombre)},
                                             {"gid", QString::fromStdString(c.gid)},
                                             {"min", QJsonArray{c.x, c.y, c.z}},
                                             {"tam", QJsonArray{c.dx, c.dy, c.dz}},
                                             {"giroZ", c.giroZ},
                                             {"pset", c.pset}});
            lista.append(QJsonObject{{"ruta", ruta}, {"elementos", elementos}});
            rutas.push_back(ruta.toStdString());
        }
        const QString descripcion = dir_.filePath(QStringLiteral("descripcion.json"));
        QFile f(descripcion);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(QJsonDocument(lista).toJson());
        f.close();
        QProcess p;
        p.start(QStringLiteral(TESKAL_PYTHON),
                {QStringLiteral(TESKAL_TESTS_DIR "/analyses/versiones_xor.py"), descripcion});
        EXPECT_TRUE(p.waitForFinished(300000));
        EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
        return rutas;
    }
    QString ruta(const char* nombre) const { return dir_.filePath(QString::fromLatin1(nombre)); }

private:
    QTemporaryDir dir_;
    int contador_ = 0;
};

std::unique_ptr<ContentView> espacio() {
    auto cv = std::make_unique<ContentView>(
        QFileInfo(QString::fromUtf8(TESKAL_IFCCONVERT)).absolutePath().toStdString());
    ContentView::configurarLuces(cv->scene);
    return cv;
}

void cargar(ContentView& cv, std::string_view slot, const std::string& ruta) {
    cv.cargarSlotXOR(std::string(slot), ruta);
    ASSERT_TRUE(cv.isProcessing);
    ASSERT_TRUE(esperarHasta([&] { return !cv.isProcessing; }));
    ASSERT_FALSE(cv.showError) << cv.errorMessage.value_or("");
}

const ElementoCambioXOR* fila(const ContentView& cv, const std::string& nombre) {
    for (const auto& e : cv.resultadoXOR->elementos)
        if (e.nombre == nombre) return &e;
    return nullptr;
}

const Material* materialDe(const Node& modelo, const std::string& nombre) {
    const auto n = modelo.childNodeWithName(nombre, true);
    return n && n->geometry() ? n->geometry()->firstMaterial() : nullptr;
}

// A discipline's model made without the converter.
void vincularDePrueba(ContentView& cv, const std::string& clave) {
    cv.seleccionActual = clave;
    ModeloConvertido m;
    m.modelo = cargarOBJTexto("v 0 0 0\nv 2 0 0\nv 0 3 4\ng Muro " + clave + "\nf 1 2 3\n");
    cv.fileName = clave + ".ifc";
    cv.integrarModelo(std::move(m), {}, {});
}

// The base of most tests: four walls and a slab.
std::vector<Caja> versionBase() {
    return {{"Muro quieto", gid(1), 0, 0, 0, 4, 0.2, 3},
            {"Muro casi quieto", gid(2), 5, 0, 0, 4, 0.2, 3},
            {"Muro movido", gid(3), 10, 0, 0, 4, 0.2, 3},
            {"Muro borrado", gid(4), 15, 0, 0, 4, 0.2, 3},
            {"Losa", gid(5), 0, 0, 3, 20, 6, 0.25}};
}

} // namespace

TEST(VersionesXOR, CargaComparaYCuentaLosCambiosDeDosVersiones) {
    Versiones v;
    auto nueva = versionBase();
    nueva[1].x += 0.04; // moved 0.04 and grown 0.03: equal
    nueva[1].dz += 0.03;
    nueva[2].y += 0.06; // moved 0.06: modified
    nueva.erase(nueva.begin() + 3);
    nueva.push_back({"Pilar nuevo", gid(6), 22, 0, 0, 0.4, 0.4, 3});
    nueva[0].pset = QJsonObject{{"Resistencia", "H30"}}; // properties alone are not a change
    const auto rutas = v.escribir({versionBase(), nueva});

    auto cv = espacio();
    EXPECT_EQ(cv->fileNameBase, "Sin versión base");
    EXPECT_EQ(cv->fileNameNuevo, "Sin versión nueva");
    cargar(*cv, slotsXOR::base, rutas[0]);
    ASSERT_TRUE(cv->modeloBase);
    EXPECT_TRUE(cv->modeloBase->isHidden());
    EXPECT_EQ(cv->modeloBase->parent(), cv->scene.rootNode());
    EXPECT_EQ(cv->fileNameBase,
              QFileInfo(QString::fromStdString(rutas[0])).fileName().toStdString());
    EXPECT_EQ(cv->globalIdXorBase.at("Muro movido"), gid(3));
    EXPECT_TRUE(cv->scene.rootNode()->childNodeWithName("_TESKAL_Piso", false))
        << "the floor follows the load";
    // The temporary copy and output are gone.
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"*.ifc", "*.obj"}, QDir::Files).isEmpty());

    cargar(*cv, slotsXOR::nuevo, rutas[1]);
    EXPECT_FALSE(cv->xorActivo);
    cv->compararXOR();
    ASSERT_TRUE(cv->xorActivo);
    EXPECT_FALSE(cv->modeloBase->isHidden());
    EXPECT_FALSE(cv->modeloNuevo->isHidden());
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{1, 1, 1, 3}));

    ASSERT_TRUE(cv->resultadoXOR);
    const ResultadoXOR& r = *cv->resultadoXOR;
    EXPECT_EQ(r.archivoBase, cv->fileNameBase);
    EXPECT_EQ(r.archivoNuevo, cv->fileNameNuevo);
    EXPECT_EQ(r.iguales, 3);
    ASSERT_EQ(r.elementos.size(), 3u);
    EXPECT_EQ(r.elementos[0].nombre, "Muro borrado");
    EXPECT_EQ(r.elementos[1].nombre, "Muro movido");
    EXPECT_EQ(r.elementos[2].nombre, "Pilar nuevo");
    const ElementoCambioXOR* movido = fila(*cv, "Muro movido");
    EXPECT_EQ(movido->tipoCambio, TipoCambioXOR::modificado);
    EXPECT_NEAR(movido->deltaPosicion, 0.06f, 2e-4);
    EXPECT_NEAR(movido->deltaTamano, 0.0f, 2e-4);
    EXPECT_EQ(fila(*cv, "Muro borrado")->tipoCambio, TipoCambioXOR::eliminado);
    EXPECT_EQ(fila(*cv, "Pilar nuevo")->tipoCambio, TipoCambioXOR::agregado);
    EXPECT_FALSE(fila(*cv, "Muro casi quieto"));

    // The two versions painted in place.
    EXPECT_EQ(materialDe(*cv->modeloBase, "Muro borrado")->diffuse(), coloresXOR::eliminado);
    EXPECT_EQ(materialDe(*cv->modeloBase, "Muro movido")->diffuse(),
              coloresXOR::modificadoAnterior);
    EXPECT_EQ(materialDe(*cv->modeloNuevo, "Muro movido")->diffuse(), coloresXOR::modificadoNuevo);
    EXPECT_EQ(materialDe(*cv->modeloNuevo, "Pilar nuevo")->diffuse(), coloresXOR::agregado);
    EXPECT_FLOAT_EQ(materialDe(*cv->modeloBase, "Losa")->transparency(), 0.75f);
    EXPECT_FLOAT_EQ(materialDe(*cv->modeloNuevo, "Losa")->transparency(), 0.0f);
}

TEST(VersionesXOR, GiroEnSuSitioYArchivosIdenticosNoSonCambios) {
    Versiones v;
    auto girada = versionBase();
    // A square pillar turned a quarter about its own axis keeps its box.
    girada.push_back({"Pilar", gid(7), 30, 0, 0, 0.5, 0.5, 3, 90});
    auto base = versionBase();
    base.push_back({"Pilar", gid(7), 30, 0, 0, 0.5, 0.5, 3});
    const auto rutas = v.escribir({base, girada});

    auto cv = espacio();
    cargar(*cv, slotsXOR::base, rutas[0]);
    cargar(*cv, slotsXOR::nuevo, rutas[1]);
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 6}));

    // The same file in both slots: no rows, every distinct key equal.
    cv->limpiarXOR();
    cargar(*cv, slotsXOR::nuevo, rutas[0]);
    cv->compararXOR();
    EXPECT_TRUE(cv->resultadoXOR->elementos.empty());
    EXPECT_EQ(cv->resultadoXOR->iguales, 6);
}

TEST(VersionesXOR, UnRenombradoConElMismoGlobalIdCasaSoloConAmbosMapas) {
    Versiones v;
    auto nueva = versionBase();
    nueva[0].nombre = "Muro renombrado";
    const auto rutas = v.escribir({versionBase(), nueva});

    auto cv = espacio();
    cargar(*cv, slotsXOR::base, rutas[0]);
    cargar(*cv, slotsXOR::nuevo, rutas[1]);
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 5}));

    // Without the ids of one version the names key the elements.
    cv->limpiarXOR();
    cv->globalIdXorNuevo.clear();
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{1, 1, 0, 4}));
    EXPECT_EQ(fila(*cv, "Muro renombrado")->tipoCambio, TipoCambioXOR::agregado);
    EXPECT_EQ(fila(*cv, "Muro quieto")->tipoCambio, TipoCambioXOR::eliminado);
}

TEST(VersionesXOR, LimpiarDevuelveLasEspecialidadesComoEstaban) {
    Versiones v;
    const auto rutas = v.escribir({versionBase(), versionBase()});
    auto cv = espacio();
    vincularDePrueba(*cv, "ARQ");
    vincularDePrueba(*cv, "EST");
    cv->alternarEspecialidad("EST"); // hidden before the comparison
    ASSERT_TRUE(cv->especialidades.at("EST").nodoRaiz->isHidden());
    cargar(*cv, slotsXOR::base, rutas[0]);
    cargar(*cv, slotsXOR::nuevo, rutas[1]);

    cv->compararXOR();
    EXPECT_TRUE(cv->especialidades.at("ARQ").nodoRaiz->isHidden());
    EXPECT_TRUE(cv->especialidades.at("EST").nodoRaiz->isHidden());
    // "Aplicar colores" while the comparison stands keeps the comparison's colours.
    cv->aplicarColores();
    EXPECT_FLOAT_EQ(materialDe(*cv->modeloNuevo, "Losa")->transparency(), 0.0f);

    cv->pedirLimpiarXOR();
    EXPECT_TRUE(cv->confirmarLimpiarXOR);
    cv->cancelarLimpiarXOR();
    EXPECT_FALSE(cv->confirmarLimpiarXOR);
    EXPECT_TRUE(cv->xorActivo);
    cv->pedirLimpiarXOR();
    cv->limpiarXOR();
    EXPECT_FALSE(cv->confirmarLimpiarXOR);
    EXPECT_FALSE(cv->xorActivo);
    EXPECT_FALSE(cv->resultadoXOR);
    EXPECT_EQ(cv->xorStats, EstadisticasXOR{});
    EXPECT_FALSE(cv->especialidades.at("ARQ").nodoRaiz->isHidden());
    EXPECT_TRUE(cv->especialidades.at("EST").nodoRaiz->isHidden());
    EXPECT_TRUE(cv->modeloBase->isHidden());
    EXPECT_TRUE(cv->modeloNuevo->isHidden());
    // The models stay in their slots, painted, ready for another comparison.
    EXPECT_TRUE(cv->modeloBase && cv->modeloNuevo);
    EXPECT_EQ(materialDe(*cv->modeloBase, "Losa")->diffuse(), coloresXOR::sinCambios);

    // Removing a slot during a comparison ends it first.
    cv->compararXOR();
    cv->limpiarSlotXOR(std::string(slotsXOR::nuevo));
    EXPECT_FALSE(cv->xorActivo);
    EXPECT_FALSE(cv->modeloNuevo);
    EXPECT_EQ(cv->fileNameNuevo, "Sin versión nueva");
    EXPECT_TRUE(cv->globalIdXorNuevo.empty());
    EXPECT_FALSE(cv->especialidades.at("ARQ").nodoRaiz->isHidden());
    std::size_t versiones = 0;
    for (const auto& n : cv->scene.rootNode()->childNodes()) versiones += n == cv->modeloBase;
    EXPECT_EQ(versiones, 1u);
    // Comparing with one slot empty does nothing.
    cv->compararXOR();
    EXPECT_FALSE(cv->xorActivo);
}

TEST(VersionesXOR, RecargarUnSlotPasaPorLaAlertaYUnaCargaTardiaRecalcula) {
    Versiones v;
    auto tercera = versionBase();
    tercera.pop_back(); // the slab goes
    const auto rutas = v.escribir({versionBase(), versionBase(), tercera});
    auto cv = espacio();

    // Without a comparison "Cargar" opens the picker for the slot; a
    // cancelled picker forgets the slot.
    cv->pedirCargarSlotXOR(std::string(slotsXOR::base));
    EXPECT_TRUE(cv->showFilePicker);
    EXPECT_EQ(cv->seleccionandoXOR, std::string(slotsXOR::base));
    cv->archivosElegidos({});
    EXPECT_FALSE(cv->seleccionandoXOR);
    EXPECT_FALSE(cv->showFilePicker);
    cv->pedirCargarSlotXOR(std::string(slotsXOR::base));
    cv->archivosElegidos({rutas[0]});
    EXPECT_FALSE(cv->seleccionandoXOR);
    ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
    EXPECT_TRUE(cv->modeloBase);
    EXPECT_FALSE(cv->hayModelos()) << "a version is not a discipline's model";
    cargar(*cv, slotsXOR::nuevo, rutas[1]);
    cv->compararXOR();

    // With one standing, the alert asks first; "Cancelar" changes nothing.
    cv->pedirCargarSlotXOR(std::string(slotsXOR::nuevo));
    EXPECT_EQ(cv->xorSlotPendienteCargar, std::string(slotsXOR::nuevo));
    EXPECT_FALSE(cv->seleccionandoXOR);
    EXPECT_EQ(ContentView::etiquetaSlotXOR(*cv->xorSlotPendienteCargar), "Nueva");
    cv->cancelarCargaXOR();
    EXPECT_FALSE(cv->xorSlotPendienteCargar);
    EXPECT_TRUE(cv->xorActivo);

    // "Continuar" ends the comparison and opens the picker for the slot.
    cv->showFilePicker = false;
    cv->pedirCargarSlotXOR(std::string(slotsXOR::nuevo));
    cv->continuarCargaXOR();
    EXPECT_FALSE(cv->xorSlotPendienteCargar);
    EXPECT_FALSE(cv->xorActivo);
    EXPECT_TRUE(cv->showFilePicker);
    EXPECT_EQ(cv->seleccionandoXOR, std::string(slotsXOR::nuevo));
    // A discipline's link takes the picker back for itself.
    cv->vincularIFC("ARQ");
    EXPECT_FALSE(cv->seleccionandoXOR);

    // A load that started before the comparison arrives after it: recomputed.
    cv->cargarSlotXOR(std::string(slotsXOR::nuevo), rutas[2]);
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 5}));
    ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
    EXPECT_TRUE(cv->xorActivo);
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 1, 0, 4}));
    EXPECT_EQ(cv->resultadoXOR->elementos.at(0).nombre, "Losa");
    EXPECT_FALSE(cv->modeloNuevo->isHidden());
    std::size_t raices = 0;
    for (const auto& n : cv->scene.rootNode()->childNodes()) raices += n == cv->modeloNuevo;
    EXPECT_EQ(raices, 1u);
}

TEST(VersionesXOR, LosFallosDeLaCargaTienenSusPropiosTextos) {
    Versiones v;
    auto cv = espacio();
    const auto fallar = [&](const std::string& ruta) {
        cv->showError = false;
        cv->cargarSlotXOR(std::string(slotsXOR::base), ruta);
        EXPECT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
        EXPECT_TRUE(cv->showError);
        EXPECT_FALSE(cv->modeloBase);
        EXPECT_EQ(cv->fileNameBase, "Sin versión base");
        return cv->errorMessage.value_or("");
    };
    EXPECT_EQ(fallar(v.ruta("no_existe.ifc").toStdString()).rfind("Error copiando archivo: ", 0),
              0u);

    QFile roto(v.ruta("roto.ifc"));
    ASSERT_TRUE(roto.open(QIODevice::WriteOnly));
    roto.write("esto no es IFC\n");
    roto.close();
    EXPECT_EQ(fallar(roto.fileName().toStdString()).rfind("IfcConvert falló:\n", 0), 0u);

    // A file the converter accepts but that has no geometry.
    const auto vacio = v.escribir({{}});
    EXPECT_EQ(fallar(vacio[0]), "No se pudo cargar la geometría XOR.");

    cv->rutaConversor = v.ruta("no_hay_conversor").toStdString();
    EXPECT_EQ(fallar(vacio[0]).rfind("Error ejecutando IfcConvert: ", 0), 0u);
}

TEST(VersionesXOR, AbrirUnProyectoVaciaLosSlots) {
    Versiones v;
    const auto rutas = v.escribir({versionBase(), versionBase()});
    auto cv = espacio();
    cargar(*cv, slotsXOR::base, rutas[0]);
    cargar(*cv, slotsXOR::nuevo, rutas[1]);
    cv->compararXOR();
    const auto base = cv->modeloBase;

    cv->restaurarProyecto(ProyectoTESKAL{}, std::nullopt);
    EXPECT_FALSE(cv->xorActivo);
    EXPECT_FALSE(cv->resultadoXOR);
    EXPECT_FALSE(cv->modeloBase);
    EXPECT_FALSE(cv->modeloNuevo);
    EXPECT_FALSE(base->parent());
    EXPECT_EQ(cv->fileNameBase, "Sin versión base");
    EXPECT_EQ(cv->fileNameNuevo, "Sin versión nueva");
    EXPECT_TRUE(cv->globalIdXorBase.empty());
}
