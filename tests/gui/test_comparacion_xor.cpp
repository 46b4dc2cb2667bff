// Two versions compared from the window under Xvfb: each slot loaded through
// the picker and the real converter with its progress text, "Comparar
// versiones", the counts in the sidebar, the legend, a green and a red
// element in the view, the change report with its tables and images, and the
// alerts that reload a slot and clear the comparison.
#include "analyses/xor/ComparacionXOR.h"
#include "analyses/xor/ui/ReporteXORView.h"
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "scene/Orientacion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/ui/VisorEscena.h"

#include <QApplication>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace teskal;

namespace {

// Base: a wall that goes, a beam that moves and a slab that stays. New: the
// slab, the moved beam, a pillar and two same-named pillars of their own.
const char* descripcion = R"([
 {"ruta": "%1/base.ifc", "elementos": [
   {"nombre": "Muro borrado", "gid": "0Vxor00000000000000001", "min": [-4, -1, 0], "tam": [2, 2, 3]},
   {"nombre": "Viga", "gid": "0Vxor00000000000000004", "min": [-1, 3, 2], "tam": [2, 0.5, 0.5]},
   {"nombre": "Losa", "gid": "0Vxor00000000000000002", "min": [-6, -6, -0.3], "tam": [12, 12, 0.3]}]},
 {"ruta": "%1/nueva.ifc", "elementos": [
   {"nombre": "Pilar nuevo", "gid": "0Vxor00000000000000003", "min": [2, -1, 0], "tam": [2, 2, 3]},
   {"nombre": "Viga", "gid": "0Vxor00000000000000004", "min": [-1, 4, 2], "tam": [2, 0.5, 0.5]},
   {"nombre": "Pilar doble", "gid": "0Vxor00000000000000005", "min": [4, 3, 0], "tam": [0.3, 0.3, 3]},
   {"nombre": "Pilar doble", "gid": "0Vxor00000000000000006", "min": [4, -5, 0], "tam": [1.5, 1.5, 0.4]},
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

// The texts of a report table's cells, row by row, "|" between cells; the
// image column gives "img" when its cell shows an image.
QStringList filas(QWidget& seccion) {
    auto* g = static_cast<QGridLayout*>(hijo(seccion, "tablaXOR")->layout());
    QStringList r;
    for (int f = 1; f < g->rowCount(); ++f) {
        QStringList celdas;
        for (int c = 0; c < g->columnCount(); ++c) {
            QWidget* w = g->itemAtPosition(f, c) ? g->itemAtPosition(f, c)->widget() : nullptr;
            if (auto* l = qobject_cast<QLabel*>(w))
                celdas << l->text();
            else if (w)
                celdas << (w->grab().toImage().pixelColor(10, 39) != QColor(0xe5, 0xe5, 0xea) ? "img" : "-");
        }
        r << celdas.join(u'|');
    }
    return r;
}

// The hue family of an image's centre: the element stands there.
char tono(const QImage& imagen) {
    const QColor c = imagen.pixelColor(imagen.width() / 2, imagen.height() / 2);
    if (c.green() > c.red() + 60 && c.green() > c.blue() + 60) return 'v';
    if (c.red() > c.green() + 30 && c.green() > c.blue() + 40) return 'n';
    if (c.red() > c.green() + 80 && c.red() > c.blue() + 80) return 'r';
    return '?';
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
        const auto cargar = [&](const char* fila, const QString& archivo, const QString& progreso) {
            QVERIFY(hijo(ventana, fila));
            hijo<QPushButton>(*hijo(ventana, fila), "cargarSlot")->click();
            QFileDialog* selector = nullptr;
            QTRY_VERIFY((selector = hijo<QFileDialog>(ventana, "selectorIFC")) != nullptr);
            selector->selectFile(dir.filePath(archivo));
            static_cast<QDialog*>(selector)->accept(); // as the "Abrir" button does
            QVERIFY(cv.isProcessing);
            QTRY_VERIFY(hijo(ventana, "progreso")->isVisible());
            QCOMPARE(hijo(ventana, "progreso")->findChild<QLabel*>()->text(), progreso);
            QTRY_VERIFY_WITH_TIMEOUT(!cv.isProcessing, 300000);
            QVERIFY2(!cv.showError, cv.errorMessage.value_or("").c_str());
        };
        cargar("slotXOR_BASE", QStringLiteral("base.ifc"), QStringLiteral("Procesando versión base..."));
        QVERIFY(cv.modeloBase);
        QTRY_COMPARE(hijo<QLabel>(*hijo(ventana, "slotXOR_BASE"), "archivoSlot")->text(),
                     QStringLiteral("base.ifc"));
        cargar("slotXOR_NUEVO", QStringLiteral("nueva.ifc"), QStringLiteral("Procesando versión nueva..."));
        QVERIFY(cv.modeloNuevo);

        QPushButton* comparar = nullptr;
        QTRY_VERIFY((comparar = hijo<QPushButton>(ventana, "compararVersiones")) != nullptr);
        QCOMPARE(comparar->text(), QStringLiteral("Comparar versiones"));
        comparar->click();
        QVERIFY(cv.xorActivo);
        QTRY_VERIFY(hijo(ventana, "xorAgregados"));
        const std::pair<const char*, const char*> cuentas[] = {{"xorAgregados", "3 agregados"},
                                                               {"xorEliminados", "1 eliminados"},
                                                               {"xorModificados", "1 modificados"},
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

        // "Ver Informe XOR": counts, one table per kind, an image per element.
        hijo<QPushButton>(ventana, "verInformeXOR")->click();
        QCOMPARE(ventana.reportWindows().size(), std::size_t(1));
        auto* informe = qobject_cast<ReporteXORView*>(ventana.reportWindows().back().get());
        QVERIFY(informe && informe->isVisible());
        QCOMPARE(informe->windowTitle(), QStringLiteral("Informe XOR · base.ifc → nueva.ifc"));
        QCOMPARE(informe->size(), QSize(1020, 700));
        const std::pair<const char*, const char*> tarjetas[] = {{"tarjetaAgregados", "3"},
                                                                {"tarjetaEliminados", "1"},
                                                                {"tarjetaModificados", "1"},
                                                                {"tarjetaSinCambios", "1"}};
        for (const auto& [nombre, n] : tarjetas)
            QCOMPARE(hijo<QLabel>(*hijo(*informe, nombre), "numero")->text(), QString::fromUtf8(n));
        QCOMPARE(hijo<QLabel>(*informe, "pieInformeXOR")->text(), QStringLiteral("Total de elementos: 6"));
        const QStringList esperando = filas(*hijo(*informe, "seccionAgregados"));
        QCOMPARE(esperando.first(), QStringLiteral("1|-|—|Pilar doble"));
        QTRY_VERIFY_WITH_TIMEOUT(informe->thumbnailStore().terminado(), 120000);
        const std::pair<const char*, QStringList> tablas[] = {
            {"seccionAgregados", {"1|img|—|Pilar doble", "2|img|—|Pilar doble", "3|img|—|Pilar nuevo"}},
            {"seccionEliminados", {"1|img|—|Muro borrado"}},
            {"seccionModificados", {"1|img|—|Viga|1.000 m|—"}},
        };
        for (const auto& [seccion, esperadas] : tablas)
            QCOMPARE(filas(*hijo(*informe, seccion)), esperadas);
        QCOMPARE(hijo<QLabel>(*hijo(*informe, "seccionAgregados"), "cuentaSeccion")->text(),
                 QStringLiteral("3 elementos"));
        QCOMPARE(hijo<QLabel>(*hijo(*informe, "seccionEliminados"), "cuentaSeccion")->text(),
                 QStringLiteral("1 elemento"));
        // Keyed by GlobalId: the two same-named pillars have images of their own.
        const auto& imagenes = informe->thumbnailStore().thumbnails();
        const std::pair<const char*, char> tonos[] = {{"0Vxor00000000000000003", 'v'},
                                                      {"0Vxor00000000000000005", 'v'},
                                                      {"0Vxor00000000000000006", 'v'},
                                                      {"0Vxor00000000000000001", 'r'},
                                                      {"0Vxor00000000000000004", 'n'}};
        QCOMPARE(imagenes.size(), std::size(tonos));
        if (qEnvironmentVariableIsSet("VORNEL_CAPTURA")) {
            const QString carpeta = qEnvironmentVariable("VORNEL_CAPTURA");
            informe->grab().save(carpeta + QStringLiteral("/informe.png"));
            hijo(*informe, "paginaInformeXOR")->grab().save(carpeta + QStringLiteral("/pagina.png"));
            for (const auto& [clave, imagen] : imagenes)
                imagen.save(carpeta + QStringLiteral("/") + QString::fromStdString(clave) + QStringLiteral(".png"));
        }
        for (const auto& [clave, esperado] : tonos) {
            QVERIFY2(imagenes.count(clave), clave);
            QCOMPARE(imagenes.at(clave).size(), QSize(460, 310));
            const QImage& imagen = imagenes.at(clave);
            QVERIFY2(tono(imagen) == esperado,
                     qPrintable(imagen.pixelColor(imagen.width() / 2, imagen.height() / 2).name()));
        }
        QVERIFY(imagenes.at("0Vxor00000000000000005") != imagenes.at("0Vxor00000000000000006"));

        // Closed before its images arrive, a second report is harmless, and
        // so is releasing it; the first window stays listed and its images stay.
        hijo<QPushButton>(ventana, "verInformeXOR")->click();
        QCOMPARE(ventana.reportWindows().size(), std::size_t(2));
        ventana.reportWindows().back()->close();
        QTest::qWait(50);
        {
            ReporteXORView suelto(*cv.resultadoXOR);
            generarThumbnailsXOR(cv.resultadoXOR->elementos, cv.modeloBase.get(), cv.modeloNuevo.get(),
                                 suelto.thumbnailStore());
        }
        QTest::qWait(500);
        QCOMPARE(informe->thumbnailStore().thumbnails().size(), std::size(tonos));

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
