// The clash report on a desktop that lacks what it leans on: no OpenGL (the
// X server's GL left out of Qt's reach) and no program for HTML (an empty
// PATH). The report must not wait for views that never come, and "Imprimir /
// PDF" must name the file it wrote.
#include "analyses/clash/ui/ReporteAnalisisView.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace teskal;

class PruebaReporteSinEscritorio : public QObject {
    Q_OBJECT
    QTemporaryDir temporal_;

private slots:
    void initTestCase() {
        QVERIFY(temporal_.isValid());
        qputenv("TMPDIR", temporal_.path().toLocal8Bit());
        // No launcher for URLs anywhere on the path.
        qputenv("PATH", temporal_.filePath(QStringLiteral("vacia")).toLocal8Bit());
        qunsetenv("BROWSER");
    }

    void sinVistasNiNavegador() {
        QVERIFY(!RenderizadorImagenes().valido()); // the premise: no OpenGL here

        AnalisisInterferencias a;
        a.id = "A0000000-0000-0000-0000-000000000001";
        a.nombre = "Sin vistas";
        Interferencia i;
        i.id = "ID-1";
        i.nombreA = "Muro";
        i.nombreB = "Tubo";
        i.nodoA = Node::crear("Muro");
        i.nodoB = Node::crear("Tubo");
        a.interferencias = {i};
        ReporteAnalisisView v(a, nullptr);
        v.show();

        // The rendering ends with no image: the notice goes, printing is offered.
        auto* aviso = v.findChild<QWidget*>(QStringLiteral("avisoGenerando"));
        auto* imprimir = v.findChild<QPushButton*>(QStringLiteral("imprimirPDF"));
        QVERIFY(aviso->isVisible() && !imprimir->isEnabled());
        QCOMPARE(imprimir->toolTip(), QStringLiteral("Disponible cuando terminen de generarse las vistas"));
        QTRY_VERIFY(v.thumbnailsTerminados());
        QVERIFY(v.thumbnails().empty());
        QVERIFY(!aviso->isVisible() && imprimir->isEnabled() && imprimir->toolTip().isEmpty());

        // The file is written; the desktop can't open it: the alert names it.
        imprimir->click();
        const QString ruta = QDir(temporal_.path()).filePath(QStringLiteral("Sin vistas.html"));
        QVERIFY(QFile::exists(ruta));
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY((alerta = v.findChild<QMessageBox*>(QStringLiteral("alertaAbrirReporte"))) != nullptr);
        QCOMPARE(alerta->text(), QStringLiteral("No se pudo abrir el reporte"));
        QVERIFY2(alerta->informativeText().contains(QStringLiteral("«") + ruta + QStringLiteral("»")),
                 qPrintable(alerta->informativeText()));
        alerta->close();
    }
};

int main(int argc, char** argv) {
    // Qt's xcb platform without its GL integration makes no OpenGL context.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    QApplication app(argc, argv);
    PruebaReporteSinEscritorio prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "test_reporte_sin_escritorio.moc"
