// The 3D view inside the workbench window under Xvfb: what it draws, a click
// that selects an element through the floor, the legend and its panel.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CargaOBJ.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "scene/Orientacion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/ui/VisorEscena.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace teskal;

namespace {

// Two flat 2 m squares 1 m above the ground, 6 m apart along X.
const char* dosLosas = "v -4 -1 1\nv -2 -1 1\nv -2 1 1\nv -4 1 1\n"
                       "v 2 -1 1\nv 4 -1 1\nv 4 1 1\nv 2 1 1\n"
                       "g IFCSLAB/Losa izquierda\nf 1 2 3 4\ng Losa derecha\nf 5 6 7 8\n";

struct Banco {
    CentroNotificaciones centro;
    ContentView cv{"/no/hay"};
    VentanaPrincipal ventana{cv, centro};
    VisorEscena* visor = nullptr;

    Banco() {
        ventana.show();
        cv.fileName = "losas.ifc";
        ModeloConvertido m;
        m.modelo = cargarOBJTexto(dosLosas);
        m.propiedades["IFCSLAB/Losa izquierda"] = {{"__tipoIFC", "IFCSLAB"}, {"Pset_SlabCommon \u203A IsExternal", "F"}};
        cv.integrarModelo(std::move(m), "/x/losas.ifc", "/no/existe.obj");
        visor = ventana.visorEscena();
        // Straight down from 15 m, as the tests of the renderer do.
        cv.viewport.detenerAnimacion();
        QTest::qWait(200); // the framing after a link comes 0.15 s later
        cv.viewport.terminarAnimacion();
        visor->camara()->setPosition({0, 0, 15});
        visor->camara()->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
        visor->camara()->setCamera(Camera{45, 0.1f, 100, false, 1});
        visor->update();
    }

    QPoint pixel(glm::vec3 p) const {
        const auto c = CamaraRender::desdeNodo(*visor->camara(), float(visor->width()) / visor->height());
        const glm::vec4 clip = c.proyeccion * c.vista * glm::vec4(p, 1);
        const glm::vec3 ndc = glm::vec3(clip) / clip.w;
        return {int((ndc.x * 0.5f + 0.5f) * visor->width()), int((0.5f - ndc.y * 0.5f) * visor->height())};
    }
};

} // namespace

class PruebaVisor : public QObject {
    Q_OBJECT
private slots:
    void dibujaYSeleccionaAtravesDelPiso() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QTRY_VERIFY(b.visor->isValid());
        const QImage imagen = b.visor->grabFramebuffer();
        // Both slabs in the architecture grey, lit from above.
        const QRgb losa = imagen.pixel(b.pixel({-3, 0, 1}));
        QVERIFY2(qRed(losa) > 170 && std::abs(qRed(losa) - qBlue(losa)) < 20, qPrintable(QString::number(losa, 16)));
        // One batch, a handful of draw calls.
        QCOMPARE(b.visor->estadisticas().lotes, 1);

        // A click on the left slab selects it and lights it yellow.
        QTest::mouseClick(b.visor, Qt::LeftButton, {}, b.pixel({-3, 0, 1}));
        QTRY_VERIFY(b.cv.nodoSeleccionado);
        QCOMPARE(b.cv.nombreSeleccionado, std::string("IFCSLAB/Losa izquierda"));
        QTRY_VERIFY(qBlue(b.visor->grabFramebuffer().pixel(b.pixel({-3, 0, 1}))) < 150);
        // The legend shows the element's panel with its rows.
        QStringList textos;
        QTRY_VERIFY(b.ventana.findChild<QWidget*>(QStringLiteral("panelDetalle")));
        for (auto* l : b.ventana.findChild<QWidget*>(QStringLiteral("panelDetalle"))->findChildren<QLabel*>())
            textos << l->text();
        QVERIFY(textos.contains(QStringLiteral("Tipo IFC")));
        QVERIFY(textos.contains(QStringLiteral("IFCSLAB")));
        QVERIFY(textos.contains(QStringLiteral("── Propiedades IFC ──")));

        // A click on bare floor selects nothing: the floor is passed through.
        QTest::mouseClick(b.visor, Qt::LeftButton, {}, b.pixel({0, 3, 0}));
        QTRY_VERIFY(!b.cv.nodoSeleccionado);
        QTRY_VERIFY(!b.ventana.findChild<QWidget*>(QStringLiteral("panelDetalle")));

        // "Deseleccionar" clears a selection.
        QTest::mouseClick(b.visor, Qt::LeftButton, {}, b.pixel({3, 0, 1}));
        QTRY_COMPARE(b.cv.nombreSeleccionado, std::string("Losa derecha"));
        QPushButton* deseleccionar = nullptr;
        QTRY_VERIFY((deseleccionar = b.ventana.findChild<QPushButton*>(QStringLiteral("deseleccionar"))) != nullptr);
        deseleccionar->click();
        QTRY_VERIFY(!b.cv.nodoSeleccionado);
    }
};

QTEST_MAIN(PruebaVisor)
#include "test_visor.moc"
