// Two versions compared from the window under Xvfb: each slot loaded through
// the picker and the real converter, "Comparar versiones", the counts in the
// sidebar, the legend, a green and a red element in the view, and the alerts
// that reload a slot and clear the comparison.
#include "analyses/xor/ComparacionXOR.h"
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "scene/Orientacion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/ui/VisorEscena.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace teskal;

namespace {

// Base: a wall that goes and a slab that stays. New: the slab and a pillar.
const char* descripcion = R"([
 {"ruta": "%1/base.ifc", "elementos": [
   {"nombre": "Muro borrado", "gid": "0Vxor00000000000000001", "min": [-4, -1, 0], "tam": [2, 2, 3]},
   {"nombre": "Losa", "gid": "0Vxor00000000000000002", "min": [-6, -6, -0.3], "tam": [12, 12, 0.3]}]},
 {"ruta": "%1/nueva.ifc", "elementos": [
   {"nombre": "Pilar nuevo", "gid": "0Vxor00000000000000003", "min": [2, -1, 0], "tam": [2, 2, 3]},
   {"nombre": "Losa", "gid": "0Vxor00000000000000002", "min": [-6, -6, -0.3], "tam": [12, 12, 0.3]}]}
])";

QPoint proyectar(VisorEscena* visor, glm::vec3 p) {
    const auto cam =
        CamaraRender::desdeNodo(*visor->camara(), float(visor->width()) / visor->height());
    const glm::vec4 clip = cam.proyeccion * cam.vista * glm::vec4(p, 1);
    return {int((clip.x / clip.w * 0.5f + 0.5f) * visor->width()),
            int((0.5f - clip.y / clip.w * 0.5f) * visor->height())};
}

QMessageBox* esperarAlerta(QWidget& ventana, const QString& nombre) {
    QMessageBox* alerta = nullptr;
    for (int i = 0; i < 200 && !alerta; ++i) {
        QTest::qWait(20);
        alerta = ventana.findChild<QMessageBox*>(nombre);
    }
    return alerta;
}

void pulsar(QMessageBox* alerta, const QString& texto) {
    for (auto* b : alerta->buttons())
        if (b->text() == texto) b->click();
}

} // namespace

class PruebaComparacionXOR : public QObject {
    Q_OBJECT
private slots:
    void compararDesdeLaVentana() {
        QTemporaryDir dir;
        QFile json(dir.filePath(QStringLiteral("versiones.json")));
        QVERIFY(json.open(QIODevice::WriteOnly));
        json.write(QString::fromUtf8(descripcion).arg(dir.path()).toUtf8());
        json.close();
        QProcess generador;
        generador.start(
            QStringLiteral(TESKAL_PYTHON),
            {QStringLiteral(TESKAL_TESTS_DIR "/analyses/versiones_xor.py"), json.fileName()});
        QVERIFY(generador.waitForFinished(300000));
        QCOMPARE(generador.exitCode(), 0);

        CentroNotificaciones centro;
        ContentView cv("/no/hay");
        cv.rutaConversor = TESKAL_IFCCONVERT;
        VentanaPrincipal ventana(cv, centro);
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        QVERIFY(!ventana.findChild<QPushButton*>(QStringLiteral("compararVersiones")));

        // Each slot's "Cargar" opens the picker; the chosen file converts into it.
        const auto cargar = [&](const char* slot, const QString& archivo) {
            QWidget* fila =
                ventana.findChild<QWidget*>(QStringLiteral("slotXOR_") + QLatin1String(slot));
            QVERIFY(fila);
            fila->findChild<QPushButton*>(QStringLiteral("cargarSlot"))->click();
            QFileDialog* selector = nullptr;
            QTRY_VERIFY((selector = ventana.findChild<QFileDialog*>(
                             QStringLiteral("selectorIFC"))) != nullptr);
            selector->selectFile(dir.filePath(archivo));
            static_cast<QDialog*>(selector)->accept(); // as the "Abrir" button does
            QTRY_VERIFY_WITH_TIMEOUT(!cv.isProcessing, 300000);
            QVERIFY2(!cv.showError, cv.errorMessage.value_or("").c_str());
        };
        cargar("BASE", QStringLiteral("base.ifc"));
        QVERIFY(cv.modeloBase);
        QTRY_COMPARE(ventana.findChild<QWidget*>(QStringLiteral("slotXOR_BASE"))
                         ->findChild<QLabel*>(QStringLiteral("archivoSlot"))
                         ->text(),
                     QStringLiteral("base.ifc"));
        cargar("NUEVO", QStringLiteral("nueva.ifc"));
        QVERIFY(cv.modeloNuevo);

        QPushButton* comparar = nullptr;
        QTRY_VERIFY((comparar = ventana.findChild<QPushButton*>(
                         QStringLiteral("compararVersiones"))) != nullptr);
        QCOMPARE(comparar->text(), QStringLiteral("Comparar versiones"));
        comparar->click();
        QVERIFY(cv.xorActivo);
        QLabel* agregados = nullptr;
        QTRY_VERIFY((agregados = ventana.findChild<QLabel*>(QStringLiteral("xorAgregados"))) !=
                    nullptr);
        QCOMPARE(agregados->text(), QStringLiteral("1 agregados"));
        QCOMPARE(ventana.findChild<QLabel*>(QStringLiteral("xorEliminados"))->text(),
                 QStringLiteral("1 eliminados"));
        QCOMPARE(ventana.findChild<QLabel*>(QStringLiteral("xorModificados"))->text(),
                 QStringLiteral("0 modificados"));
        QCOMPARE(ventana.findChild<QLabel*>(QStringLiteral("xorIguales"))->text(),
                 QStringLiteral("1 sin cambios"));
        QStringList leyenda;
        for (auto* l : ventana.findChildren<QLabel*>(QStringLiteral("leyendaXOR")))
            leyenda << l->text();
        QCOMPARE(leyenda, (QStringList{"Agregado", "Eliminado", "Modificado — posición anterior",
                                       "Modificado — nueva posición/tamaño", "Sin cambios"}));

        // Seen from above: the pillar green, the removed wall red.
        VisorEscena* visor = ventana.visorEscena();
        QTest::qWait(300);
        cv.viewport.terminarAnimacion();
        visor->camara()->setPosition({0, 0, 20});
        visor->camara()->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
        visor->update();
        QTRY_VERIFY(visor->isValid());
        const QImage imagen = visor->grabFramebuffer();
        const QRgb verde = imagen.pixel(proyectar(visor, {3, 0, 3}));
        const QRgb rojo = imagen.pixel(proyectar(visor, {-3, 0, 3}));
        QVERIFY2(qGreen(verde) > qRed(verde) + 60 && qGreen(verde) > qBlue(verde) + 60,
                 qPrintable(QString::number(verde, 16)));
        QVERIFY2(qRed(rojo) > qGreen(rojo) + 80 && qRed(rojo) > qBlue(rojo) + 80,
                 qPrintable(QString::number(rojo, 16)));

        // Reloading a slot while the comparison stands asks first.
        ventana.findChild<QWidget*>(QStringLiteral("slotXOR_NUEVO"))
            ->findChild<QPushButton*>(QStringLiteral("cargarSlot"))
            ->click();
        QMessageBox* recarga = esperarAlerta(ventana, QStringLiteral("alertaCargarXOR"));
        QVERIFY(recarga);
        QCOMPARE(recarga->windowTitle(), QStringLiteral("Cargar nuevo archivo"));
        QCOMPARE(recarga->text(),
                 QStringLiteral("Cargar un nuevo archivo en el slot \"Nueva\" borrará el resultado "
                                "de comparación XOR actual. ¿Deseas continuar?"));
        pulsar(recarga, QStringLiteral("Cancelar"));
        QTRY_VERIFY(!cv.xorSlotPendienteCargar);
        QVERIFY(cv.xorActivo);

        // "Limpiar XOR" asks, then ends the comparison.
        ventana.findChild<QPushButton*>(QStringLiteral("limpiarXOR"))->click();
        QMessageBox* limpiar = esperarAlerta(ventana, QStringLiteral("alertaLimpiarXOR"));
        QVERIFY(limpiar);
        QCOMPARE(limpiar->windowTitle(), QStringLiteral("Limpiar comparación XOR"));
        QCOMPARE(
            limpiar->text(),
            QStringLiteral("Se eliminará el resultado de la comparación XOR activa. Los modelos "
                           "base y nuevo permanecerán vinculados."));
        pulsar(limpiar, QStringLiteral("Limpiar"));
        QTRY_VERIFY(!cv.xorActivo);
        QTRY_VERIFY(ventana.findChild<QPushButton*>(QStringLiteral("compararVersiones")));
        QVERIFY(ventana.findChildren<QLabel*>(QStringLiteral("leyendaXOR")).isEmpty());
    }
};

QTEST_MAIN(PruebaComparacionXOR)
#include "test_comparacion_xor.moc"
