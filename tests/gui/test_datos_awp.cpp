// Work packages from other sources in the timeline window under Xvfb: the
// detector's sheet scanning the property index, choosing by code and
// importing; the CSV confirmation sheet and the alert of a file without
// packages; the export through its save panel.
#include "federation/ContentView.h"
#include "timeline/CSVAWP.h"
#include "timeline/ui/DetectorAWPView.h"
#include "timeline/ui/ImportarCSVView.h"
#include "timeline/ui/TimeLinerView.h"

#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace teskal;

namespace {

template <class T> T* hijo(QWidget& w, const char* nombre) {
    return w.findChild<T*>(QString::fromLatin1(nombre));
}

QString texto(QWidget& w, const char* nombre) { return hijo<QLabel>(w, nombre)->text(); }

} // namespace

class PruebaDatosAWP : public QObject {
    Q_OBJECT
private slots:
    void detectorCSVYExportacion() {
        QTemporaryDir dir;
        ContentView cv("/no/hay");
        cv.propiedadesIFC = {{"ARQ",
                              {{"Muro 1", {{"AWP › CWA", "A1"}, {"AWP › IWP", "I1"}}},
                               {"Muro 2", {{"AWP › IWP", "I1"}, {"Pset › cwp ", "P9"}}},
                               {"Losa", {{"AWP › CWA", "A1"}}}}}};
        TimeLinerView ventana(cv);
        ventana.resize(1200, 700);
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));

        // The detector: the first screen, the scan, the results by level.
        hijo<QPushButton>(ventana, "detectorAWPBoton")->click();
        auto* detector = ventana.findChild<DetectorAWPView*>();
        QVERIFY(detector);
        hijo<QPushButton>(*detector, "detectarAhora")->click();
        QTRY_VERIFY_WITH_TIMEOUT(!detector->detectando(), 60000);
        QCOMPARE(texto(*detector, "conteo"), QStringLiteral("3 paquetes detectados con 5 elemento(s)"));
        auto* lista = hijo<QTreeWidget>(*detector, "resultados");
        QCOMPARE(lista->topLevelItemCount(), 3); // CWA, CWP, IWP
        QCOMPARE(lista->topLevelItem(2)->child(0)->text(1), QStringLiteral("2 elemento(s)"));
        // Leaving P9 out through its check box, then importing the rest.
        lista->topLevelItem(1)->child(0)->setCheckState(0, Qt::Unchecked);
        QCOMPARE(detector->seleccionados(), (std::set<std::string>{"A1", "I1"}));
        hijo<QPushButton>(*detector, "importarSeleccionados")->click();
        QVERIFY(!detector->isVisible());
        QCOMPARE(cv.timeLiner.paquetes.size(), 2u);
        QCOMPARE(cv.timeLiner.paquetes[1].parentCodigo, std::optional<std::string>("A1"));

        // A CSV: nothing chosen at first, one row picked and imported.
        const QString ruta = dir.filePath(QStringLiteral("plan.csv"));
        QFile f(ruta);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("Nivel,Código,Nombre,Inicio,Fin\nIWP,I2,Muro,2025-01-01,2025-01-31\nIWP,I1,Otro,2025-01-01,"
                "2025-01-31\n");
        f.close();
        importarCSVDe(cv, &ventana, ruta.toStdString());
        auto* confirmacion = ventana.findChild<ImportarCSVView*>();
        QVERIFY(confirmacion);
        QCOMPARE(texto(*confirmacion, "conteo"), QStringLiteral("2 paquetes encontrados · 0 seleccionados"));
        auto* importar = hijo<QPushButton>(*confirmacion, "importar");
        QVERIFY(!importar->isEnabled());
        hijo<QTableWidget>(*confirmacion, "paquetesCSV")->item(0, 0)->setCheckState(Qt::Checked);
        QCOMPARE(importar->text(), QStringLiteral("Importar 1 paquetes"));
        importar->click();
        QCOMPARE(cv.timeLiner.paquetes.size(), 3u);
        QCOMPARE(cv.timeLiner.paquetes[2].nombre, std::string("Muro"));

        // A file with no valid package: the alert, and nothing changes.
        importarCSVDe(cv, &ventana, dir.filePath(QStringLiteral("no-existe.csv")).toStdString());
        auto* alerta = ventana.findChild<QMessageBox*>(QStringLiteral("errorCSV"));
        QVERIFY(alerta);
        QCOMPARE(alerta->windowTitle(), QStringLiteral("Error al importar CSV"));
        QCOMPARE(alerta->text().toStdString(), std::string(mensajeCSVSinPaquetes));
        alerta->accept();
        QCOMPARE(cv.timeLiner.paquetes.size(), 3u);

        // The export through its save panel, with the proposed name.
        hijo<QPushButton>(ventana, "exportarCSVBoton")->click();
        auto* panel = ventana.findChild<QFileDialog*>(QStringLiteral("panelExportarCSV"));
        QVERIFY(panel);
        const QString salida = dir.filePath(QStringLiteral("TimeLiner_AWP_TESKAL.csv"));
        panel->setDirectory(dir.path());
        panel->selectFile(QStringLiteral("TimeLiner_AWP_TESKAL"));
        static_cast<QDialog*>(panel)->accept(); // "Guardar"
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(salida), 10000);
        QFile exportado(salida);
        QVERIFY(exportado.open(QIODevice::ReadOnly));
        QCOMPARE(exportado.readAll().count('\n'), 4);
        ventana.close();
    }
};

QTEST_MAIN(PruebaDatosAWP)
#include "test_datos_awp.moc"
