// Every sample IFC file through the real converter and the text index: the
// element nodes of the OBJ, the property index and the GlobalId map must agree
// with each other and with what IfcOpenShell reads from the same file.
#include "federation/CargaOBJ.h"
#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace teskal;

namespace {

struct ElementoOraculo {
    std::string tipo;
    std::string gid;
    std::map<std::string, std::optional<std::string>> propiedades;
};

// The index keeps a STEP string's doubled apostrophes as written, where
// IfcOpenShell and the converter write one.
std::string comoEnElIndice(std::string s) {
    for (std::size_t i = s.find('\''); i != std::string::npos; i = s.find('\'', i + 2)) s.insert(i, 1, '\'');
    return s;
}

// Element name to what IfcOpenShell says of it; names that repeat are dropped,
// since the index keeps one entry for all of them.
std::map<std::string, ElementoOraculo> leerOraculo(const QString& ifc) {
    QProcess p;
    p.start(QStringLiteral(TESKAL_PYTHON),
            {QStringLiteral(TESKAL_TESTS_DIR "/federation/oraculo_ifc.py"), ifc});
    EXPECT_TRUE(p.waitForFinished(300000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    const QJsonArray lista = QJsonDocument::fromJson(p.readAllStandardOutput()).array();
    std::map<std::string, ElementoOraculo> unicos;
    std::set<std::string> repetidos;
    for (const auto& v : lista) {
        const QJsonObject o = v.toObject();
        const std::string nombre = comoEnElIndice(o["nombre"].toString().toStdString());
        if (unicos.contains(nombre) || repetidos.contains(nombre)) {
            unicos.erase(nombre);
            repetidos.insert(nombre);
            continue;
        }
        ElementoOraculo e{o["tipo"].toString().toStdString(),
                          comoEnElIndice(o["gid"].toString().toStdString()), {}};
        const QJsonObject props = o["propiedades"].toObject();
        for (auto it = props.begin(); it != props.end(); ++it)
            e.propiedades[comoEnElIndice(it.key().toStdString())] =
                it.value().isNull() ? std::nullopt
                                    : std::optional(comoEnElIndice(it.value().toString().toStdString()));
        unicos.emplace(nombre, std::move(e));
    }
    return unicos;
}

class MuestraIFC : public testing::TestWithParam<const char*> {};

TEST_P(MuestraIFC, conversionYLectoresCoinciden) {
    const QString ifc = QStringLiteral(TESKAL_SAMPLES_DIR "/") + QString::fromUtf8(GetParam());
    if (!QFileInfo::exists(ifc)) GTEST_SKIP() << "no está la muestra " << ifc.toStdString();

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString obj = dir.filePath(QStringLiteral("salida.obj"));
    QProcess conversor;
    conversor.start(QStringLiteral(TESKAL_IFCCONVERT),
                    {ifc, obj, QStringLiteral("--use-world-coords"), QStringLiteral("--use-element-names")});
    ASSERT_TRUE(conversor.waitForFinished(600000));
    ASSERT_EQ(conversor.exitStatus(), QProcess::NormalExit);
    ASSERT_EQ(conversor.exitCode(), 0) << conversor.readAllStandardError().toStdString();

    auto modelo = cargarOBJ(obj.toStdString());
    ASSERT_TRUE(modelo);
    normalizarMateriales(*modelo);
    const PropiedadesModelo props = leerPropiedadesIFC(ifc.toStdString());
    const GlobalIdsPorNombre gids = leerGlobalIds(ifc.toStdString());
    const auto oraculo = leerOraculo(ifc);
    ASSERT_FALSE(oraculo.empty());

    // Element nodes: named, with triangles inside their vertex list, one material.
    // The converter names an element without a Name "g " and the reader calls
    // that group "default": those nodes can't meet an index entry.
    std::size_t nodosConNombre = 0, nodosConPropiedades = 0;
    for (const auto& nodo : modelo->childNodes()) {
        ASSERT_TRUE(nodo->name());
        const Geometry* g = nodo->geometry().get();
        ASSERT_NE(g, nullptr);
        ASSERT_EQ(g->elementos.size(), 1u);
        const auto& indices = g->elementos[0].indices;
        ASSERT_FALSE(indices.empty());
        ASSERT_EQ(indices.size() % 3, 0u);
        ASSERT_EQ(indices.size(), g->vertices.size());
        ASSERT_NE(g->firstMaterial(), nullptr);
        EXPECT_FALSE(g->firstMaterial()->diffuseVacio());
        const std::string nombre = comoEnElIndice(*nodo->name());
        if (nombre != "default") ++nodosConNombre;
        if (props.contains(nombre)) ++nodosConPropiedades;
        // A node whose name IfcOpenShell knows as an indexed product has an entry.
        if (oraculo.contains(nombre)) {
            EXPECT_TRUE(props.contains(nombre)) << nombre;
        }
    }
    // Names written by the converter and names decoded by the index meet.
    EXPECT_GT(nodosConPropiedades * 2, nodosConNombre);

    for (const auto& [nombre, esperado] : oraculo) {
        SCOPED_TRACE(nombre);
        const auto it = props.find(nombre);
        ASSERT_NE(it, props.end());
        const PropiedadesElemento& p = it->second;
        EXPECT_EQ(p.at(std::string(claveTipoIFC)), esperado.tipo);
        ASSERT_TRUE(gids.contains(nombre));
        EXPECT_EQ(gids.at(nombre), esperado.gid);
        EXPECT_EQ(p.size(), esperado.propiedades.size() + 1);
        for (const auto& [clave, valor] : esperado.propiedades) {
            const auto pv = p.find(clave);
            ASSERT_NE(pv, p.end()) << clave;
            if (valor) {
                EXPECT_EQ(pv->second, *valor) << clave;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Muestras, MuestraIFC,
                         testing::Values("duplex.ifc", "AC20-FZK-Haus.ifc", "IfcOpenHouse_IFC4.ifc",
                                         "example.ifc"),
                         [](const auto& info) {
                             std::string n = info.param;
                             for (char& c : n)
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             return n;
                         });

// A file that is not IFC makes the converter exit non-zero with a reason, and
// the readers give nothing for it without failing.
TEST(ConversorIFC, archivoQueNoEsIFCFallaConMotivo) {
    QTemporaryDir dir;
    const QString falso = dir.filePath(QStringLiteral("no es ifc.ifc"));
    {
        QFile f(falso);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("esto no es un archivo STEP\n");
    }
    QProcess conversor;
    conversor.start(QStringLiteral(TESKAL_IFCCONVERT),
                    {falso, dir.filePath(QStringLiteral("s.obj")), QStringLiteral("--use-world-coords"),
                     QStringLiteral("--use-element-names")});
    ASSERT_TRUE(conversor.waitForFinished(120000));
    EXPECT_NE(conversor.exitCode(), 0);
    EXPECT_FALSE(conversor.readAllStandardError().trimmed().isEmpty());
    EXPECT_TRUE(leerPropiedadesIFC(falso.toStdString()).empty());
    EXPECT_TRUE(leerGrillasIFC(falso.toStdString()).empty());
}

} // namespace
