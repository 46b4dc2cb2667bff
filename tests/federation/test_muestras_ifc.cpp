// Every sample IFC file through the real converter and the text index: the
// element nodes of the OBJ, the property index by Name and by GlobalId and the
// GlobalId map must agree with each other and with what IfcOpenShell reads
// from the same file; the same file on one line or with CR line ends reads the
// same.
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
    std::string nombre;
    std::string tipo;
    std::string gid;
    std::map<std::string, std::optional<std::string>> propiedades; // none: not compared
};

// Every product, as IfcOpenShell reads it.
std::vector<ElementoOraculo> leerOraculo(const QString& ifc) {
    QProcess p;
    p.start(QStringLiteral(TESKAL_PYTHON),
            {QStringLiteral(TESKAL_TESTS_DIR "/federation/oraculo_ifc.py"), ifc});
    EXPECT_TRUE(p.waitForFinished(300000));
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    const QJsonArray lista = QJsonDocument::fromJson(p.readAllStandardOutput()).array();
    std::vector<ElementoOraculo> elementos;
    for (const auto& v : lista) {
        const QJsonObject o = v.toObject();
        ElementoOraculo e{o["nombre"].toString().toStdString(), o["tipo"].toString().toStdString(),
                          o["gid"].toString().toStdString(), {}};
        const QJsonObject props = o["propiedades"].toObject();
        for (auto it = props.begin(); it != props.end(); ++it)
            e.propiedades[it.key().toStdString()] =
                it.value().isNull() ? std::nullopt : std::optional(it.value().toString().toStdString());
        elementos.push_back(std::move(e));
    }
    return elementos;
}

// An entry of the index against what IfcOpenShell says of the element.
void compararEntrada(const PropiedadesElemento& p, const ElementoOraculo& esperado) {
    EXPECT_EQ(p.at(std::string(claveTipoIFC)), esperado.tipo);
    EXPECT_EQ(p.size(), esperado.propiedades.size() + 1);
    for (const auto& [clave, valor] : esperado.propiedades) {
        const auto pv = p.find(clave);
        ASSERT_NE(pv, p.end()) << clave;
        if (valor) {
            EXPECT_EQ(pv->second, *valor) << clave;
        }
    }
}

std::string leerArchivo(const QString& ruta) {
    QFile f(ruta);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return f.readAll().toStdString();
}

std::string nombreDePrueba(const testing::TestParamInfo<const char*>& info) {
    std::string n = info.param;
    for (char& c : n)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return n;
}

constexpr const char* muestras[] = {"duplex.ifc", "AC20-FZK-Haus.ifc", "IfcOpenHouse_IFC4.ifc",
                                    "example.ifc"};

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
    const IndiceIFC indice = leerIndiceIFC(ifc.toStdString());
    const PropiedadesModelo& props = indice.porNombre;
    EXPECT_EQ(leerPropiedadesIFC(ifc.toStdString()), props);
    const GlobalIdsPorNombre gids = leerGlobalIds(ifc.toStdString());
    const auto elementos = leerOraculo(ifc);
    ASSERT_FALSE(elementos.empty());
    // By Name, the names that one element alone bears: the index keeps one
    // entry for all the elements of a name.
    std::map<std::string, const ElementoOraculo*> oraculo;
    std::set<std::string> repetidos;
    for (const ElementoOraculo& e : elementos) {
        if (e.nombre.empty()) continue;
        if (!oraculo.emplace(e.nombre, &e).second) repetidos.insert(e.nombre);
    }
    for (const std::string& n : repetidos) oraculo.erase(n);

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
        const std::string nombre = *nodo->name();
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
        compararEntrada(it->second, *esperado);
        ASSERT_TRUE(gids.contains(nombre));
        EXPECT_EQ(gids.at(nombre), esperado->gid);
    }
    // By GlobalId, every element with its own entry, same-named ones too.
    EXPECT_EQ(indice.porGlobalId.size(), elementos.size());
    for (const ElementoOraculo& e : elementos) {
        SCOPED_TRACE(e.gid);
        const auto it = indice.porGlobalId.find(e.gid);
        ASSERT_NE(it, indice.porGlobalId.end());
        compararEntrada(it->second, e);
    }
}

INSTANTIATE_TEST_SUITE_P(Muestras, MuestraIFC, testing::ValuesIn(muestras), nombreDePrueba);

// The sample written on one line, and with CR alone as line end, gives the
// same index as the file itself.
class VarianteMuestraIFC : public testing::TestWithParam<const char*> {};

TEST_P(VarianteMuestraIFC, unaLineaYSoloCRDanElMismoIndice) {
    const QString ifc = QStringLiteral(TESKAL_SAMPLES_DIR "/") + QString::fromUtf8(GetParam());
    if (!QFileInfo::exists(ifc)) GTEST_SKIP() << "no está la muestra " << ifc.toStdString();
    const std::string texto = leerArchivo(ifc);
    std::string unaLinea, soloCR;
    for (std::size_t i = 0; i < texto.size(); ++i) {
        const char c = texto[i];
        if (c != '\r' && c != '\n') unaLinea.push_back(c);
        if (c == '\r' && i + 1 < texto.size() && texto[i + 1] == '\n') continue;
        soloCR.push_back(c == '\n' ? '\r' : c);
    }
    ASSERT_EQ(unaLinea.find('\n'), std::string::npos);
    ASSERT_EQ(soloCR.find('\n'), std::string::npos);
    const IndiceIFC original = leerIndiceIFCTexto(texto);
    ASSERT_GT(original.porGlobalId.size(), 10u);
    for (const std::string* variante : {&unaLinea, &soloCR}) {
        const IndiceIFC leido = leerIndiceIFCTexto(*variante);
        EXPECT_EQ(leido.porNombre, original.porNombre);
        EXPECT_EQ(leido.porGlobalId, original.porGlobalId);
    }
}

INSTANTIATE_TEST_SUITE_P(Muestras, VarianteMuestraIFC, testing::ValuesIn(muestras), nombreDePrueba);

} // namespace
