// The workbench window under Xvfb: the welcome state, linking a sample through
// the real menu path and file dialog, the sidebar rows, and the alerts.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CargaOBJ.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ConversionIFC.h"
#include "federation/ContentView.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
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
    void bienvenidaYTitulo() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QCOMPARE(b.ventana.windowTitle(), QStringLiteral("VORNEL"));
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
    }

    void vincularMuestraPorElMenu() {
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
    }

    void errorYEliminacionConSusAlertas() {
        Banco b;
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

        // Unlinking a model goes through its alert; "Eliminar" removes it.
        ModeloConvertido m;
        m.modelo = cargarOBJTexto("v 0 0 0\nv 1 0 0\nv 0 1 0\ng Muro\nf 1 2 3\n");
        b.cv.fileName = "muros.ifc";
        b.cv.integrarModelo(std::move(m), "/x/muros.ifc", "/no/existe.obj");
        QTRY_VERIFY(b.textosBarraLateral().contains(QStringLiteral("muros.ifc")));
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
                 QStringLiteral("¿Eliminar \"muros.ifc\" de la escena? Esta acción no se puede deshacer."));
        for (QAbstractButton* boton : eliminar->buttons())
            if (boton->text() == QStringLiteral("Eliminar")) boton->click();
        QTRY_VERIFY(!b.textosBarraLateral().contains(QStringLiteral("muros.ifc")));
        QVERIFY(!b.cv.especialidades.at("ARQ").nodoRaiz);
        QCOMPARE(b.ventana.findChild<QStackedWidget*>()->currentWidget()->objectName(), QStringLiteral("bienvenida"));
    }
};

QTEST_MAIN(PruebaVentanaPrincipal)
#include "test_ventana_principal.moc"
