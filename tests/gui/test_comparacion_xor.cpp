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

template <class T = QWidget> T* hijo(const QObject& o, const char* nombre) {
    return o.findChild<T*>(QString::fromUtf8(nombre));
}

// Waits for the named alert, checks its title and text, and presses a button.
void responder(QWidget& ventana, const char* nombre, const QString& titulo, const QString& texto,
               const QString& boton) {
    QMessageBox* alerta = nullptr;
    QTRY_VERIFY((alerta = hijo<QMessageBox>(ventana, nombre)) != nullptr);
    QCOMPARE(alerta->windowTitle(), titulo);
    QCOMPARE(alerta->text(), texto);
    for (auto* b : alerta->buttons())
        if (b->text() == boton) b->click();
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
        QCOMPARE(QProcess::execute(QStringLiteral(TESKAL_PYTHON),
                                   {QStringLiteral(TESKAL_TESTS_DIR "/analyses/versiones_xor.py"),
                                    json.fileName()}),
                 0);

        CentroNotificaciones centro;
        ContentView cv("/no/hay");
        cv.rutaConversor = TESKAL_IFCCONVERT;
        VentanaPrincipal ventana(cv, centro);
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        QVERIFY(!hijo(ventana, "compararVersiones"));

        // Each slot's "Cargar" opens the picker; the chosen file converts into it.
        const auto cargar = [&](const char* fila, const QString& archivo) {
            QVERIFY(hijo(ventana, fila));
            hijo<QPushButton>(*hijo(ventana, fila), "cargarSlot")->click();
            QFileDialog* selector = nullptr;
            QTRY_VERIFY((selector = hijo<QFileDialog>(ventana, "selectorIFC")) != nullptr);
            selector->selectFile(dir.filePath(archivo));
            static_cast<QDialog*>(selector)->accept(); // as the "Abrir" button does
            QTRY_VERIFY_WITH_TIMEOUT(!cv.isProcessing, 300000);
            QVERIFY2(!cv.showError, cv.errorMessage.value_or("").c_str());
        };
        cargar("slotXOR_BASE", QStringLiteral("base.ifc"));
        QVERIFY(cv.modeloBase);
        QTRY_COMPARE(hijo<QLabel>(*hijo(ventana, "slotXOR_BASE"), "archivoSlot")->text(),
                     QStringLiteral("base.ifc"));
        cargar("slotXOR_NUEVO", QStringLiteral("nueva.ifc"));
        QVERIFY(cv.modeloNuevo);

        QPushButton* comparar = nullptr;
        QTRY_VERIFY((comparar = hijo<QPushButton>(ventana, "compararVersiones")) != nullptr);
        QCOMPARE(comparar->text(), QStringLiteral("Comparar versiones"));
        comparar->click();
        QVERIFY(cv.xorActivo);
        QTRY_VERIFY(hijo(ventana, "xorAgregados"));
        const std::pair<const char*, const char*> cuentas[] = {{"xorAgregados", "1 agregados"},
                                                               {"xorEliminados", "1 eliminados"},
                                                               {"xorModificados", "0 modificados"},
                                                               {"xorIguales", "1 sin cambios"}};
        for (const auto& [nombre, texto] : cuentas)
            QCOMPARE(hijo<QLabel>(ventana, nombre)->text(), QString::fromUtf8(texto));
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
        QVERIFY2(qGreen(verde) > qMax(qRed(verde), qBlue(verde)) + 60,
                 qPrintable(QString::number(verde, 16)));
        QVERIFY2(qRed(rojo) > qMax(qGreen(rojo), qBlue(rojo)) + 80,
                 qPrintable(QString::number(rojo, 16)));

        // Reloading a slot while the comparison stands asks first.
        hijo<QPushButton>(*hijo(ventana, "slotXOR_NUEVO"), "cargarSlot")->click();
        responder(ventana, "alertaCargarXOR", QStringLiteral("Cargar nuevo archivo"),
                  QStringLiteral("Cargar un nuevo archivo en el slot \"Nueva\" borrará el "
                                 "resultado de comparación XOR actual. ¿Deseas continuar?"),
                  QStringLiteral("Cancelar"));
        QTRY_VERIFY(!cv.xorSlotPendienteCargar && cv.xorActivo);

        // "Limpiar XOR" asks, then ends the comparison.
        hijo<QPushButton>(ventana, "limpiarXOR")->click();
        responder(ventana, "alertaLimpiarXOR", QStringLiteral("Limpiar comparación XOR"),
                  QStringLiteral("Se eliminará el resultado de la comparación XOR activa. Los "
                                 "modelos base y nuevo permanecerán vinculados."),
                  QStringLiteral("Limpiar"));
        QTRY_VERIFY(!cv.xorActivo);
        QTRY_VERIFY(hijo(ventana, "compararVersiones"));
        QVERIFY(ventana.findChildren<QLabel*>(QStringLiteral("leyendaXOR")).isEmpty());
    }
};

QTEST_MAIN(PruebaComparacionXOR)
#include "test_comparacion_xor.moc"
