// The takeoff window under Xvfb over the demo federation: opened with the
// menu shortcut and the toolbar button (one more window each), sorted by a
// column title, a group opened, an IFC property added as a column through
// the parameters sheet, and the CSV exported through the save panel and read
// back with Python's csv module.
// With nothing linked, the shortcut raises the error instead.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "qto/ui/QuantityTakeoffView.h"
#include "../lector_csv.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>

using namespace teskal;

namespace {

struct Banco {
    CentroNotificaciones centro;
    ContentView cv{QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString()};
    VentanaPrincipal ventana{cv, centro};
    Banco() {
        QObject::connect(&centro, &CentroNotificaciones::publicada, &cv,
                         [this](const std::string& n) { cv.recibirNotificacion(n); });
        ventana.show();
    }
    // Ctrl+Shift+Q on the main window, as the user presses it.
    void pulsarAtajo() {
        ventana.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&ventana));
        QTest::keyClick(&ventana, Qt::Key_Q, Qt::ControlModifier | Qt::ShiftModifier);
    }
    std::vector<QuantityTakeoffView*> ventanasQTO() const {
        std::vector<QuantityTakeoffView*> r;
        for (const auto& w : ventana.reportWindows())
            if (auto* v = qobject_cast<QuantityTakeoffView*>(w.get())) r.push_back(v);
        return r;
    }
};

} // namespace

class PruebaCuantificacionQTO : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void sinModelosElAtajoAvisa() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        b.pulsarAtajo();
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY((alerta = b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaError"))) != nullptr);
        QCOMPARE(alerta->text(),
                 QStringLiteral("No hay elementos cargados para cuantificar. Vincula al menos un archivo IFC."));
        QVERIFY(b.ventanasQTO().empty());
    }

    void demoOrdenarColumnaYExportar() {
        const QString paquete = QStringLiteral(TESKAL_TESTS_DIR "/../examples/demo.teskalpkg");
        if (!QFileInfo::exists(paquete)) QSKIP("sin el paquete de demostración");
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        b.cv.abrirPaqueteDe(paquete.toStdString());
        auto modelos = [&] {
            std::size_t n = 0;
            for (const auto& [clave, e] : b.cv.especialidades) n += e.modelos.size();
            return n;
        };
        QTRY_VERIFY_WITH_TIMEOUT(!b.cv.isProcessing && modelos() == 3, 600000);

        b.pulsarAtajo();
        QTRY_COMPARE(b.ventanasQTO().size(), std::size_t(1));
        // The toolbar's button takes the same path: one more snapshot.
        auto* boton = b.ventana.findChild<QToolButton*>(QStringLiteral("botonQTO"));
        QCOMPARE(boton->toolTip(), QStringLiteral("Tabla de volúmenes y áreas por tipo IFC · Ctrl+Shift+Q"));
        QTest::mouseClick(boton, Qt::LeftButton);
        QTRY_COMPARE(b.ventanasQTO().size(), std::size_t(2));
        QuantityTakeoffView* v = b.ventanasQTO()[0];
        QVERIFY(QTest::qWaitForWindowExposed(v));
        QCOMPARE(v->windowTitle(), QStringLiteral("Cuantificación de Elementos (QTO)"));
        QCOMPARE(v->size(), QSize(870, 700));
        auto* arbol = v->findChild<QTreeWidget*>(QStringLiteral("tablaQTO"));
        const auto& grupos = v->tabla().grupos;
        QVERIFY(grupos.size() >= 3);
        QCOMPARE(arbol->topLevelItemCount(), static_cast<int>(grupos.size()) + 1);
        QCOMPARE(arbol->topLevelItem(arbol->topLevelItemCount() - 1)->text(0), QStringLiteral("TOTAL"));

        // "Peso total" twice: ascending, then descending, as the rows show.
        QHeaderView* cabecera = arbol->header();
        auto pulsarTitulo = [&](int columna) {
            arbol->horizontalScrollBar()->setValue(arbol->horizontalScrollBar()->maximum());
            QTest::mouseClick(cabecera->viewport(), Qt::LeftButton, {},
                              QPoint(cabecera->sectionViewportPosition(columna) + 5, cabecera->height() / 2));
        };
        auto pesos = [&] {
            QList<double> r;
            for (int i = 0; i + 1 < arbol->topLevelItemCount(); ++i) {
                const QString t = arbol->topLevelItem(i)->text(10);
                r << (t == QStringLiteral("—") ? 0.0 : t.toDouble());
            }
            return r;
        };
        for (const bool ascendente : {true, false}) {
            pulsarTitulo(10);
            QVERIFY(v->tabla().ordenColumna == OrdenQTO::peso && v->tabla().ordenAscendente == ascendente);
            const QList<double> r = pesos();
            QVERIFY(ascendente ? std::is_sorted(r.begin(), r.end()) : std::is_sorted(r.rbegin(), r.rend()));
        }
        QCOMPARE(cabecera->sortIndicatorSection(), 10);

        // A group opened by its disclosure mark shows its elements.
        arbol->topLevelItem(0)->setExpanded(true);
        QTRY_COMPARE(static_cast<std::size_t>(arbol->topLevelItem(0)->childCount()),
                 v->tabla().gruposFiltradosOrdenados()[0]->cantidad());

        // The most frequent property as an extra column.
        QTest::mouseClick(v->findChild<QPushButton*>(QStringLiteral("botonParametros")), Qt::LeftButton);
        SheetParametrosIFC* sheet = nullptr;
        QTRY_VERIFY((sheet = v->findChild<SheetParametrosIFC*>()) != nullptr);
        auto* lista = sheet->findChild<QTreeWidget*>(QStringLiteral("listaParametros"));
        QVERIFY(lista && lista->topLevelItemCount() > 0);
        const ParamDisponible primero = v->tabla().parametrosDisponibles().front();
        QTreeWidgetItem* elegido = nullptr;
        for (int i = 0; i < lista->topLevelItemCount(); ++i)
            for (int j = 0; j < lista->topLevelItem(i)->childCount(); ++j)
                if (lista->topLevelItem(i)->child(j)->data(0, Qt::UserRole).toString() ==
                    QString::fromStdString(primero.clave))
                    elegido = lista->topLevelItem(i)->child(j);
        QVERIFY(elegido);
        elegido->setCheckState(0, Qt::Checked);
        auto* aplicar = sheet->findChild<QPushButton*>(QStringLiteral("aplicarParametros"));
        QCOMPARE(aplicar->text(), QStringLiteral("Aplicar (1)"));
        QTest::mouseClick(aplicar, Qt::LeftButton);
        QTRY_COMPARE(arbol->columnCount(), 12);
        QCOMPARE(arbol->headerItem()->text(11), QString::fromStdString(primero.nombre));
        QCOMPARE(v->findChild<QPushButton*>(QStringLiteral("botonParametros"))->text(),
                 QStringLiteral("Parámetros IFC (1)"));

        // "Exportar CSV": the save panel proposes the name, the file is written.
        QTemporaryDir dir;
        QTest::mouseClick(v->findChild<QPushButton*>(QStringLiteral("exportarCSV")), Qt::LeftButton);
        QFileDialog* panel = nullptr;
        QTRY_VERIFY((panel = v->findChild<QFileDialog*>(QStringLiteral("panelCSV"))) != nullptr);
        QVERIFY(panel->selectedFiles().value(0).contains(QStringLiteral("TESKAL_QTO_")));
        const QString ruta = dir.filePath(QStringLiteral("demo.csv"));
        panel->selectFile(ruta);
        static_cast<QDialog*>(panel)->accept();
        QTRY_VERIFY(QFileInfo::exists(ruta));
        QVERIFY(!b.cv.showError);
        const QList<QStringList> filas = pruebas::leerCSVConPython(ruta);
        std::size_t elementos = 0;
        for (const GrupoQTO& g : grupos) elementos += g.cantidad();
        QCOMPARE(static_cast<std::size_t>(filas.size()), elementos + 1);
        QCOMPARE(filas[0].size(), 13);
        QCOMPARE(filas[0][0], QStringLiteral("Tipo IFC"));
        QCOMPARE(filas[0][12], QString::fromStdString(primero.clave));
        // Rows follow the table's order: the heaviest group first.
        const GrupoQTO* pesado = v->tabla().gruposFiltradosOrdenados().front();
        QCOMPARE(filas[1][0], QString::fromStdString(pesado->tipoIFC));
        QCOMPARE(filas[1][3], QString::fromStdString(pesado->items.front().nombre));
    }
};

QTEST_MAIN(PruebaCuantificacionQTO)
#include "test_cuantificacion_qto.moc"
