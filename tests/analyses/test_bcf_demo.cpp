// The demo federation end to end: its package opened through the real
// converter, a clash search over every pair of disciplines, and the BCF
// archive read back by bcf-client, where each topic's components carry the
// IfcGuids of the two elements that clash.
#include "../lector_bcf.h"
#include "analyses/bcf/BCFExporter.h"
#include "federation/ContentView.h"

#include <QFileInfo>
#include <QJsonArray>
#include <gtest/gtest.h>
#include <set>

#include "espera_eventos.h"

using namespace teskal;

TEST(BCFDemo, cadaTemaLlevaLosIfcGuidDeSusElementos) {
    const QString paquete = QStringLiteral(TESKAL_TESTS_DIR "/../examples/demo.teskalpkg");
    if (!QFileInfo::exists(paquete)) GTEST_SKIP() << "sin el paquete de demostración";
    ContentView cv(QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString());
    cv.abrirPaqueteDe(paquete.toStdString());
    auto modelos = [&] {
        std::size_t n = 0;
        for (const auto& [clave, e] : cv.especialidades) n += e.modelos.size();
        return n;
    };
    ASSERT_TRUE(pruebas::esperarHasta([&] { return !cv.isProcessing && modelos() == 3; }));
    // The six designed clashes are real: the exact method (the default)
    // keeps every one the boxes find.
    for (MetodoAnalisis m : {MetodoAnalisis::cajasEnvolventes, MetodoAnalisis::geometriaExacta}) {
        cv.abrirConfigAnalisis();
        cv.metodoAnalisis = m;
        cv.iniciarDeteccion("Demo", 0.02);
        ASSERT_TRUE(pruebas::esperarHasta([&] { return !cv.detectando; }));
    }
    ASSERT_EQ(cv.historialAnalisis.size(), 2u);
    const auto& cajas = cv.historialAnalisis[0].interferencias;
    const auto& exacto = cv.historialAnalisis[1].interferencias;
    ASSERT_EQ(exacto.size(), cajas.size());
    for (std::size_t k = 0; k < exacto.size(); ++k) {
        EXPECT_EQ(exacto[k].nodoA, cajas[k].nodoA);
        EXPECT_EQ(exacto[k].nodoB, cajas[k].nodoB);
        EXPECT_GT(*exacto[k].distancia, 0.02);
    }

    BCFExporter e;
    e.analisis = cv.historialAnalisis[1];
    e.nombreProyecto = "Demo";
    const auto archivo = e.escribirArchivo();
    ASSERT_TRUE(archivo);
    const pruebas::LecturaBCF leido = pruebas::leerConBcfClient(archivo->ruta);
    ASSERT_TRUE(leido.error.isEmpty()) << leido.error.toStdString();

    const QJsonArray temas = leido.datos[QStringLiteral("temas")].toArray();
    ASSERT_EQ(temas.size(), 6);
    for (const Interferencia& i : e.analisis.interferencias) {
        SCOPED_TRACE(i.nombreA + " / " + i.nombreB);
        // Each element's GlobalId is its node's own, as the converter gave it.
        ASSERT_EQ(i.globalIdA, i.nodoA->globalId());
        ASSERT_EQ(i.globalIdB, i.nodoB->globalId());
        ASSERT_EQ(i.globalIdA.size(), 22u);
        std::set<std::string> esperados{i.globalIdA, i.globalIdB}, leidos;
        for (const auto& t : temas) {
            if (t[QStringLiteral("guid")].toString().compare(QString::fromStdString(i.id), Qt::CaseInsensitive))
                continue;
            const QJsonObject vista = t[QStringLiteral("vistas")].toArray().at(0).toObject();
            EXPECT_FALSE(vista[QStringLiteral("camara")].isNull());
            for (const auto& c : vista[QStringLiteral("componentes")].toArray())
                leidos.insert(c[QStringLiteral("ifcGuid")].toString().toStdString());
        }
        EXPECT_EQ(leidos, esperados);
    }
}
