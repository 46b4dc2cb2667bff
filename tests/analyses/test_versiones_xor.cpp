// The version comparison in the workspace, with versions written by
// IfcOpenShell and converted by the real converter: loads into the slots,
// the comparison, the alerts' fields, clearing, and the loader's failures.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "persistence/ProyectoTESKAL.h"

#include "espera_eventos.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

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
    const std::string cifras = std::to_string(n);
    return "0Vxor" + std::string(17 - cifras.size(), '0') + cifras;
}

// A workspace whose converter is the one built with the tests, and the
// version files of one test, written by IfcOpenShell's API.
class VersionesXOR : public ::testing::Test {
protected:
    QTemporaryDir dir;
    int contador = 0;
    std::unique_ptr<ContentView> cv = std::make_unique<ContentView>(
        QFileInfo(QString::fromUtf8(TESKAL_IFCCONVERT)).absolutePath().toStdString());

    void SetUp() override { ContentView::configurarLuces(cv->scene); }

    // Writes every file in one run of the generator; gives their paths.
    std::vector<std::string> escribir(const std::vector<std::vector<Caja>>& archivos) {
        QJsonArray lista;
        std::vector<std::string> rutas;
        for (std::size_t i = 0; i < archivos.size(); ++i) {
            const QString ruta =
                dir.filePath(QStringLiteral("version_%1_%2.ifc").arg(contador++).arg(i));
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
        const QString descripcion = dir.filePath(QStringLiteral("descripcion.json"));
        QFile f(descripcion);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly) && f.write(QJsonDocument(lista).toJson()) > 0);
        f.close();
        QProcess p;
        p.start(QStringLiteral(TESKAL_PYTHON),
                {QStringLiteral(TESKAL_TESTS_DIR "/analyses/versiones_xor.py"), descripcion});
        EXPECT_TRUE(p.waitForFinished(300000));
        EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
        return rutas;
    }

    void cargar(std::string_view slot, const std::string& ruta) {
        cv->cargarSlotXOR(std::string(slot), ruta);
        ASSERT_TRUE(cv->isProcessing);
        ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
        ASSERT_FALSE(cv->showError) << cv->errorMessage.value_or("");
    }
    void comparar(const std::string& base, const std::string& nuevo) {
        cargar(slotsXOR::base, base);
        cargar(slotsXOR::nuevo, nuevo);
        cv->compararXOR();
    }
    // The result's rows as (name, kind), in their order.
    std::vector<std::pair<std::string, TipoCambioXOR>> filas() const {
        std::vector<std::pair<std::string, TipoCambioXOR>> r;
        for (const auto& e : cv->resultadoXOR->elementos) r.emplace_back(e.nombre, e.tipoCambio);
        return r;
    }
    // The comparison's flags and the picker's slot as one text, so that each
    // step checks the whole state.
    std::string estado() const {
        const auto slot = [](const std::optional<std::string>& s) { return s ? *s : "-"; };
        return std::string(cv->xorActivo ? "activa" : "inactiva") +
               (cv->resultadoXOR ? " resultado" : "") +
               (cv->confirmarLimpiarXOR ? " confirmar" : "") +
               " pendiente:" + slot(cv->xorSlotPendienteCargar) +
               " selector:" + slot(cv->seleccionandoXOR) + (cv->showFilePicker ? " abierto" : "");
    }
    bool oculta(const char* clave) const {
        return cv->especialidades.at(clave).nodoRaiz->isHidden();
    }
    long enLaRaiz(const std::shared_ptr<Node>& n) const {
        return std::ranges::count(cv->scene.rootNode()->childNodes(), n);
    }
};

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

using Filas = std::vector<std::pair<std::string, TipoCambioXOR>>;

} // namespace

TEST_F(VersionesXOR, CargaComparaYCuentaLosCambiosDeDosVersiones) {
    auto nueva = versionBase();
    nueva[1].x += 0.04; // moved 0.04 and grown 0.03: equal
    nueva[1].dz += 0.03;
    nueva[2].y += 0.06; // moved 0.06: modified
    nueva.erase(nueva.begin() + 3);
    nueva.push_back({"Pilar nuevo", gid(6), 22, 0, 0, 0.4, 0.4, 3});
    nueva[0].pset = QJsonObject{{"Resistencia", "H30"}}; // properties alone are not a change
    const auto rutas = escribir({versionBase(), nueva});

    cargar(slotsXOR::base, rutas[0]);
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

    cargar(slotsXOR::nuevo, rutas[1]);
    EXPECT_FALSE(cv->xorActivo);
    cv->compararXOR();
    ASSERT_TRUE(cv->xorActivo && cv->resultadoXOR);
    EXPECT_FALSE(cv->modeloBase->isHidden() || cv->modeloNuevo->isHidden());
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{1, 1, 1, 3}));
    const ResultadoXOR& r = *cv->resultadoXOR;
    EXPECT_EQ(r.archivoBase, cv->fileNameBase);
    EXPECT_EQ(r.archivoNuevo, cv->fileNameNuevo);
    EXPECT_EQ(r.iguales, 3);
    EXPECT_EQ(filas(), (Filas{{"Muro borrado", TipoCambioXOR::eliminado},
                              {"Muro movido", TipoCambioXOR::modificado},
                              {"Pilar nuevo", TipoCambioXOR::agregado}}));
    ASSERT_EQ(r.elementos.size(), 3u);
    EXPECT_NEAR(r.elementos[1].deltaPosicion, 0.06f, 2e-4);
    EXPECT_NEAR(r.elementos[1].deltaTamano, 0.0f, 2e-4);
    // Both versions are painted in place.
    EXPECT_EQ(materialDe(*cv->modeloBase, "Muro borrado")->diffuse(), coloresXOR::eliminado);
    EXPECT_EQ(materialDe(*cv->modeloNuevo, "Pilar nuevo")->diffuse(), coloresXOR::agregado);
}

TEST_F(VersionesXOR, GiroEnSuSitioIdenticosYRenombradoConElMismoGlobalId) {
    // A square pillar turned a quarter about its own axis keeps its box.
    auto base = versionBase(), girada = versionBase();
    base.push_back({"Pilar", gid(7), 30, 0, 0, 0.5, 0.5, 3});
    girada.push_back({"Pilar", gid(7), 30, 0, 0, 0.5, 0.5, 3, 90});
    // Two pillars share a name: each is itself, never the other's twin.
    for (auto* v : {&base, &girada}) v->push_back({"Pilar", gid(8), 40, 0, 0, 0.5, 0.5, 3});
    auto renombrada = base;
    renombrada[0].nombre = "Muro renombrado";
    const auto rutas = escribir({base, girada, renombrada});

    comparar(rutas[0], rutas[1]);
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 7}));
    // The same file in both slots: no rows, every element equal.
    cv->limpiarXOR();
    cargar(slotsXOR::nuevo, rutas[0]);
    cv->compararXOR();
    EXPECT_TRUE(cv->resultadoXOR->elementos.empty());
    EXPECT_EQ(cv->resultadoXOR->iguales, 7);

    // A renamed wall keeps its GlobalId: it matches while both slots have ids.
    cv->limpiarXOR();
    cargar(slotsXOR::nuevo, rutas[2]);
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 7}));
    // Without ids on the new side, elements match by name: the renamed wall
    // is new, and the two pillars of one name count once.
    cv->limpiarXOR();
    cv->globalIdXorNuevo.clear();
    cv->modeloNuevo->enumerateChildNodes([](Node& n, bool&) { n.setIdentidadIFC({}, {}); });
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{1, 1, 0, 5}));
    EXPECT_EQ(filas(), (Filas{{"Muro quieto", TipoCambioXOR::eliminado},
                              {"Muro renombrado", TipoCambioXOR::agregado}}));
}

TEST_F(VersionesXOR, LimpiarDevuelveLasEspecialidadesComoEstaban) {
    const auto rutas = escribir({versionBase(), versionBase()});
    vincularDePrueba(*cv, "ARQ");
    vincularDePrueba(*cv, "EST");
    cv->alternarEspecialidad("EST"); // hidden before the comparison
    ASSERT_TRUE(oculta("EST"));
    comparar(rutas[0], rutas[1]);
    EXPECT_TRUE(oculta("ARQ") && oculta("EST"));
    // "Aplicar colores" while the comparison stands keeps the comparison's colours.
    cv->aplicarColores();
    EXPECT_FLOAT_EQ(materialDe(*cv->modeloNuevo, "Losa")->transparency(), 0.0f);

    cv->pedirLimpiarXOR();
    EXPECT_EQ(estado(), "activa resultado confirmar pendiente:- selector:-");
    cv->cancelarLimpiarXOR();
    EXPECT_EQ(estado(), "activa resultado pendiente:- selector:-");
    cv->pedirLimpiarXOR();
    cv->limpiarXOR();
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:-");
    EXPECT_EQ(cv->xorStats, EstadisticasXOR{});
    EXPECT_FALSE(oculta("ARQ"));
    EXPECT_TRUE(oculta("EST"));
    // The models stay in their slots, hidden and painted, ready for another comparison.
    EXPECT_TRUE(cv->modeloBase->isHidden() && cv->modeloNuevo->isHidden());
    EXPECT_EQ(materialDe(*cv->modeloBase, "Losa")->diffuse(), coloresXOR::sinCambios);

    // Removing a slot during a comparison ends it first; with one slot empty
    // comparing does nothing.
    cv->compararXOR();
    cv->limpiarSlotXOR(std::string(slotsXOR::nuevo));
    EXPECT_FALSE(cv->xorActivo || cv->modeloNuevo);
    EXPECT_EQ(cv->fileNameNuevo, "Sin versión nueva");
    EXPECT_TRUE(cv->globalIdXorNuevo.empty());
    EXPECT_FALSE(oculta("ARQ"));
    EXPECT_EQ(enLaRaiz(cv->modeloBase), 1);
    cv->compararXOR();
    EXPECT_FALSE(cv->xorActivo);
}

TEST_F(VersionesXOR, RecargarUnSlotPasaPorLaAlertaYUnaCargaTardiaRecalcula) {
    auto tercera = versionBase();
    tercera.pop_back(); // the slab goes
    const auto rutas = escribir({versionBase(), versionBase(), tercera});

    // Without a comparison "Cargar" opens the picker for the slot; a
    // cancelled picker forgets the slot.
    cv->pedirCargarSlotXOR(std::string(slotsXOR::base));
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:BASE abierto");
    cv->archivosElegidos({});
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:-");
    cv->pedirCargarSlotXOR(std::string(slotsXOR::base));
    cv->archivosElegidos({rutas[0]});
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:-");
    ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
    EXPECT_TRUE(cv->modeloBase);
    EXPECT_FALSE(cv->hayModelos()) << "a version is not a discipline's model";
    cargar(slotsXOR::nuevo, rutas[1]);
    cv->compararXOR();

    // With one standing, the alert asks first; "Cancelar" changes nothing.
    cv->pedirCargarSlotXOR(std::string(slotsXOR::nuevo));
    EXPECT_EQ(estado(), "activa resultado pendiente:NUEVO selector:-");
    EXPECT_EQ(ContentView::etiquetaSlotXOR(*cv->xorSlotPendienteCargar), "Nueva");
    cv->cancelarCargaXOR();
    EXPECT_EQ(estado(), "activa resultado pendiente:- selector:-");
    // "Continuar" ends the comparison and opens the picker for the slot; a
    // discipline's link then takes the picker back for itself.
    cv->pedirCargarSlotXOR(std::string(slotsXOR::nuevo));
    cv->continuarCargaXOR();
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:NUEVO abierto");
    cv->vincularIFC("ARQ");
    EXPECT_EQ(estado(), "inactiva pendiente:- selector:- abierto");

    // A load that started before the comparison arrives after it: recomputed.
    cv->cargarSlotXOR(std::string(slotsXOR::nuevo), rutas[2]);
    cv->compararXOR();
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 0, 0, 5}));
    ASSERT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
    EXPECT_TRUE(cv->xorActivo);
    EXPECT_EQ(cv->xorStats, (EstadisticasXOR{0, 1, 0, 4}));
    EXPECT_EQ(cv->resultadoXOR->elementos.at(0).nombre, "Losa");
    EXPECT_FALSE(cv->modeloNuevo->isHidden());
    EXPECT_EQ(enLaRaiz(cv->modeloNuevo), 1);

    // Opening a project empties both slots.
    const auto base = cv->modeloBase;
    cv->restaurarProyecto(ProyectoTESKAL{}, std::nullopt);
    EXPECT_FALSE(cv->xorActivo || cv->resultadoXOR || cv->modeloBase || cv->modeloNuevo);
    EXPECT_FALSE(base->parent());
    EXPECT_EQ(cv->fileNameBase, "Sin versión base");
    EXPECT_EQ(cv->fileNameNuevo, "Sin versión nueva");
    EXPECT_TRUE(cv->globalIdXorBase.empty());
}

TEST_F(VersionesXOR, LosFallosDeLaCargaTienenSusPropiosTextos) {
    const auto fallar = [&](const std::string& ruta) {
        cv->showError = false;
        cv->cargarSlotXOR(std::string(slotsXOR::base), ruta);
        EXPECT_TRUE(esperarHasta([&] { return !cv->isProcessing; }));
        EXPECT_TRUE(cv->showError);
        EXPECT_FALSE(cv->modeloBase);
        EXPECT_EQ(cv->fileNameBase, "Sin versión base");
        return cv->errorMessage.value_or("");
    };
    EXPECT_EQ(
        fallar(dir.filePath("no_existe.ifc").toStdString()).rfind("Error copiando archivo: ", 0),
        0u);
    QFile roto(dir.filePath("roto.ifc"));
    ASSERT_TRUE(roto.open(QIODevice::WriteOnly));
    roto.write("esto no es IFC\n");
    roto.close();
    EXPECT_EQ(fallar(roto.fileName().toStdString()).rfind("IfcConvert falló:\n", 0), 0u);
    // A file the converter accepts but that has no geometry.
    const auto vacio = escribir({{}});
    EXPECT_EQ(fallar(vacio[0]), "No se pudo cargar la geometría XOR.");
    cv->rutaConversor = dir.filePath("no_hay_conversor").toStdString();
    EXPECT_EQ(fallar(vacio[0]).rfind("Error ejecutando IfcConvert: ", 0), 0u);
}
