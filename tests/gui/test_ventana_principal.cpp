// The workbench window under Xvfb: the welcome state, linking a sample through
// the real menu path and file dialog, the sidebar rows, the alerts, the
// prompt before unsaved work is lost, missing models found again, and what
// the window remembers.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ConversionIFC.h"
#include "federation/ContentView.h"

#include <QAction>
#include <QSplitter>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QPushButton>
#include <QStackedWidget>
#include <QTemporaryFile>
#include <QToolButton>
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

    // Opens "Abrir IFC..." from the menu and chooses the file in the dialog.
    void vincularPorMenu(const QString& ruta) {
        ventana.findChild<QAction*>(QStringLiteral("accionAbrirIFC"))->trigger();
        QFileDialog* selector = nullptr;
        QTRY_VERIFY((selector = ventana.findChild<QFileDialog*>(QStringLiteral("selectorIFC"))) != nullptr);
        selector->selectFile(ruta);
        static_cast<QDialog*>(selector)->accept(); // as the "Abrir" button does
    }

    QStringList textosBarraLateral() const {
        QStringList t;
        for (auto* b : ventana.findChild<QWidget*>(QStringLiteral("barraLateral"))->findChildren<QPushButton*>())
            t << b->text();
        return t;
    }
};

} // namespace

class PruebaVentanaPrincipal : public QObject {
    Q_OBJECT
private slots:
    // Settings go to the test area, and each test starts without any.
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { QSettings().clear(); }

    void bienvenidaTituloYRoadMap() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QCOMPARE(b.ventana.windowTitle(), QStringLiteral("Proyecto sin título[*] — VORNEL"));
        QVERIFY(!b.ventana.isWindowModified());
        QCOMPARE(b.ventana.size(), QSize(1440, 900));
        auto* detalle = b.ventana.findChild<QStackedWidget*>();
        QCOMPARE(detalle->currentWidget()->objectName(), QStringLiteral("bienvenida"));
        QStringList textos;
        for (auto* l : detalle->currentWidget()->findChildren<QLabel*>()) textos << l->text();
        QVERIFY(textos.contains(QStringLiteral("Versión 1.0  ·  Build 1")));
        QVERIFY(textos.contains(QStringLiteral("Detectar interferencias")));
        // The six disciplines, in order, each with its link button.
        const QStringList lateral = b.textosBarraLateral();
        QVERIFY(lateral.indexOf(QStringLiteral("Arquitectura")) < lateral.indexOf(QStringLiteral("Existente")));
        QVERIFY(lateral.contains(QStringLiteral("Áreas de Reserva")));
        QVERIFY(lateral.contains(QStringLiteral("Nueva especialidad")));

        // The road map travels beside the program and speaks of the product.
        QStringList ayuda;
        for (QAction* a : b.ventana.menuBar()->actions())
            if (a->text() == QStringLiteral("Ayuda"))
                for (QAction* item : a->menu()->actions()) ayuda << item->text();
        QCOMPARE(ayuda, (QStringList{"Road Map VORNEL", "Acerca de VORNEL"}));
        QFile hoja(QCoreApplication::applicationDirPath() + QStringLiteral("/ROADMAP.md"));
        QVERIFY(hoja.open(QIODevice::ReadOnly));
        const QString texto = QString::fromUtf8(hoja.readAll());
        for (const char* tema : {"Federation", "Comparison", "Clashes", "BCF", "Reports", "Sections", "Takeoff",
                                 "Measurement and markup", "Timeline", "4D", "Batch"})
            QVERIFY2(texto.contains(QString::fromLatin1(tema)), tema);
    }

    // A sample linked through the menu, a failure and the unlink, with their alerts.
    void vincularFallarYDesvincularPorElMenu() {
        const QString duplex = QStringLiteral(TESKAL_SAMPLES_DIR "/duplex.ifc");
        if (!QFileInfo::exists(duplex)) QSKIP("sin ../shared/samples");
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        b.vincularPorMenu(duplex);
        QTRY_VERIFY(b.cv.isProcessing);
        QCOMPARE(b.ventana.findChild<QWidget*>(QStringLiteral("progreso"))->isVisible(), true);
        QTRY_VERIFY_WITH_TIMEOUT(!b.cv.isProcessing, 300000);
        QVERIFY2(!b.cv.showError, b.cv.errorMessage.value_or("").c_str());
        QTRY_VERIFY(b.textosBarraLateral().contains(QStringLiteral("duplex.ifc")));
        QCOMPARE(b.ventana.findChild<QWidget*>(QStringLiteral("progreso"))->isVisible(), false);
        QCOMPARE(b.ventana.findChild<QStackedWidget*>()->currentWidget()->objectName(), QStringLiteral("visor3D"));
        // The model row sits under its discipline.
        const QStringList lateral = b.textosBarraLateral();
        QCOMPARE(lateral.indexOf(QStringLiteral("duplex.ifc")), lateral.indexOf(QStringLiteral("Arquitectura")) + 1);

        // A file that is no IFC: the converter's failure in its alert.
        QTemporaryFile falso(QDir::tempPath() + QStringLiteral("/XXXXXX.ifc"));
        QVERIFY(falso.open());
        falso.write("no es un IFC\n");
        falso.close();
        b.vincularPorMenu(falso.fileName());
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT((alerta = b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaError"))) != nullptr,
                                 120000);
        QCOMPARE(alerta->windowTitle(), QStringLiteral("Error"));
        QVERIFY(alerta->text().startsWith(QStringLiteral("IfcConvert falló (código 1):\n")));
        // A second failure while the alert stands replaces its text.
        b.cv.mostrarError("Otro fallo.");
        QCOMPARE(alerta->text(), QStringLiteral("Otro fallo."));
        alerta->buttons().first()->click();
        QTRY_VERIFY(!b.cv.showError);

        // Unlinking the model goes through its alert; "Eliminar" removes it.
        // The row's own control reads "Desvincular", the long form its tooltip.
        const QString fila = QString::fromStdString("modelo_" + b.cv.especialidades.at("ARQ").modelos[0].id);
        QToolButton* desvincular = nullptr;
        QTRY_VERIFY(b.ventana.findChild<QWidget*>(fila) &&
                    (desvincular = b.ventana.findChild<QWidget*>(fila)->findChild<QToolButton*>(
                         QStringLiteral("desvincularModelo"))) != nullptr);
        QCOMPARE(desvincular->text(), QStringLiteral("Desvincular"));
        QCOMPARE(desvincular->toolTip(), QStringLiteral("Eliminar modelo vinculado"));
        desvincular->click();
        QMessageBox* eliminar = nullptr;
        QTRY_VERIFY((eliminar = b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaEliminarModelo"))) != nullptr);
        QCOMPARE(eliminar->windowTitle(), QStringLiteral("Eliminar modelo"));
        QCOMPARE(eliminar->text(),
                 QStringLiteral("¿Eliminar \"duplex.ifc\" de la escena? Esta acción no se puede deshacer."));
        for (QAbstractButton* boton : eliminar->buttons())
            if (boton->text() == QStringLiteral("Eliminar")) boton->click();
        QTRY_VERIFY(!b.textosBarraLateral().contains(QStringLiteral("duplex.ifc")));
        QVERIFY(!b.cv.especialidades.at("ARQ").nodoRaiz);
        QCOMPARE(b.ventana.findChild<QStackedWidget*>()->currentWidget()->objectName(), QStringLiteral("bienvenida"));
    }

    // Closing with unsaved changes asks first; each answer does what it says,
    // through the close box or "Salir".
    void preguntaAntesDePerderCambios() {
        struct Caso {
            QString boton;
            bool porSalir;
            bool cierra, escribe;
        };
        const QList<Caso> casos = {{QStringLiteral("Guardar"), false, true, true},
                                   {QStringLiteral("No guardar"), true, true, false},
                                   {QStringLiteral("Cancelar"), false, false, false}};
        for (const Caso& c : casos) {
            QTemporaryDir dir;
            const QString ruta = dir.filePath(QStringLiteral("obra.teskal"));
            Banco b;
            QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
            b.cv.gestor.fijarProyecto(ruta.toStdString());
            b.cv.nuevaEspNombre = "Paisajismo";
            b.cv.agregarEspecialidad();
            QCOMPARE(b.ventana.windowTitle(), QStringLiteral("obra[*] — VORNEL"));
            QVERIFY(b.ventana.isWindowModified());
            if (c.porSalir)
                b.ventana.findChild<QAction*>(QStringLiteral("accionSalir"))->trigger();
            else
                b.ventana.close();
            QVERIFY(b.ventana.isVisible());
            QMessageBox* alerta = nullptr;
            QTRY_VERIFY((alerta = b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaGuardarCambios"))) != nullptr);
            QCOMPARE(alerta->text(), QStringLiteral("¿Guardar los cambios de «obra»?"));
            QStringList botones;
            for (QAbstractButton* boton : alerta->buttons()) botones << boton->text();
            botones.sort();
            QCOMPARE(botones, (QStringList{"Cancelar", "Guardar", "No guardar"}));
            for (QAbstractButton* boton : alerta->buttons())
                if (boton->text() == c.boton) boton->click();
            QTRY_COMPARE(b.ventana.isVisible(), !c.cierra);
            QCOMPARE(QFileInfo::exists(ruta), c.escribe);
            QCOMPARE(b.ventana.isWindowModified(), !c.escribe);
            if (c.escribe) QCOMPARE(b.ventana.statusBar()->currentMessage(), QStringLiteral("Proyecto guardado"));
            QTRY_VERIFY(!b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaGuardarCambios")));
        }
    }

    // A model moved after the save is listed on opening and found with "Buscar…".
    void modeloMovidoSeBuscaDesdeLaAlerta() {
        const QString muestra = QStringLiteral(TESKAL_SAMPLES_DIR "/example.ifc");
        if (!QFileInfo::exists(muestra)) QSKIP("sin ../shared/samples");
        QTemporaryDir dir;
        const QString movido = dir.filePath(QStringLiteral("nuevo/example.ifc"));
        QDir().mkpath(QFileInfo(movido).absolutePath());
        QVERIFY(QFile::copy(muestra, movido));
        ProyectoTESKAL p;
        p.ordenEspecialidades = {"ARQ"};
        p.especialidades = {{"ARQ", "Arquitectura", "building.2", 1, 1, 1, true,
                             {{"example.ifc", dir.filePath(QStringLiteral("viejo/example.ifc")).toStdString(),
                               std::nullopt, true, 0}}}};
        Banco b;
        b.cv.restaurarProyecto(p, std::nullopt);
        QDialog* alerta = nullptr;
        QTRY_VERIFY((alerta = b.ventana.findChild<QDialog*>(QStringLiteral("alertaModelosAusentes"))) != nullptr);
        QCOMPARE(alerta->findChildren<QPushButton*>(QStringLiteral("buscarModeloAusente")).size(), 1);
        QVERIFY(alerta->findChild<QLabel*>(QStringLiteral("modeloAusente"))->text().contains(QStringLiteral("example.ifc")));
        alerta->findChild<QPushButton*>(QStringLiteral("buscarModeloAusente"))->click();
        QFileDialog* selector = nullptr;
        QTRY_VERIFY((selector = alerta->findChild<QFileDialog*>(QStringLiteral("selectorModeloAusente"))) != nullptr);
        selector->selectFile(movido);
        static_cast<QDialog*>(selector)->accept();
        QTRY_VERIFY(!b.ventana.findChild<QDialog*>(QStringLiteral("alertaModelosAusentes")));
        QTRY_VERIFY_WITH_TIMEOUT(b.textosBarraLateral().contains(QStringLiteral("example.ifc")), 300000);
        QCOMPARE(QSettings().value(QStringLiteral("carpetas/ifc")).toString(), QFileInfo(movido).absolutePath());
    }

    // The window fits its screen, is usable at 1280×720, and opens again at the
    // size, splitter and recent projects it had.
    void pantallaYRecuerdos() {
        QTemporaryDir dir;
        QSize tamano;
        QList<int> division;
        {
            Banco b;
            QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
            const QRect disponible = b.ventana.screen()->availableGeometry();
            QVERIFY(disponible.contains(b.ventana.geometry()));
            QVERIFY((b.ventana.geometry().center() - disponible.center()).manhattanLength() < 40);
            b.ventana.resize(1280, 720);
            QTRY_COMPARE(b.ventana.size(), QSize(1280, 720));
            auto* splitter = b.ventana.findChild<QSplitter*>(QStringLiteral("division"));
            splitter->setSizes({420, 860});
            division = splitter->sizes();
            tamano = b.ventana.size();
            for (int n = 0; n < 12; ++n)
                b.cv.guardarProyectoComo(dir.filePath(QStringLiteral("p%1.teskal").arg(n)).toStdString());
            b.ventana.close();
            QTRY_VERIFY(!b.ventana.isVisible());
        }
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QCOMPARE(b.ventana.size(), tamano);
        QCOMPARE(b.ventana.findChild<QSplitter*>(QStringLiteral("division"))->sizes(), division);
        auto* recientes = b.ventana.findChild<QMenu*>(QStringLiteral("menuRecientes"));
        QCOMPARE(recientes->actions().size(), 10);
        QCOMPARE(recientes->actions().first()->data().toString(), dir.filePath(QStringLiteral("p11.teskal")));
        // A recent project opens as "Abrir proyecto" does.
        recientes->actions().at(1)->trigger();
        QTRY_COMPARE(b.ventana.windowTitle(), QStringLiteral("p10[*] — VORNEL"));
    }
};

QTEST_MAIN(PruebaVentanaPrincipal)
#include "test_ventana_principal.moc"
