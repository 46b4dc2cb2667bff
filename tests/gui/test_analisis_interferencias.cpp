// A clash analysis from the window under Xvfb: the command's reason while
// disabled, the sheet and its ways out, the run, the history row with its
// count, the orange elements in the view, the report windows "Ver Reporte"
// opens and the alert that deletes an analysis.
#include "analyses/clash/ui/DialogoConfigAnalisis.h"
#include "analyses/clash/ui/ReporteAnalisisView.h"
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
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QToolButton>
#include <QtTest>

using namespace teskal;

namespace {

QString texto(const QObject& o, const char* nombre) {
    return o.findChild<QLabel*>(QString::fromLatin1(nombre))->text();
}

void vincular(ContentView& cv, const std::string& clave, const char* obj) {
    cv.seleccionActual = clave;
    cv.fileName = clave + ".ifc";
    ModeloConvertido m;
    m.modelo = cargarOBJTexto(obj);
    cv.integrarModelo(std::move(m), "/x.ifc", "/no/existe.obj");
}

} // namespace

class PruebaAnalisis : public QObject {
    Q_OBJECT
private slots:
    void analisisDesdeLaVentana() {
        CentroNotificaciones centro;
        ContentView cv("/no/hay");
        VentanaPrincipal ventana(cv, centro);
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        auto* nueva = ventana.findChild<QPushButton*>(QStringLiteral("nuevaDeteccion"));
        QVERIFY(nueva);
        QVERIFY(!nueva->isEnabled()); // fewer than two disciplines with models, as its tooltip says
        QCOMPARE(nueva->toolTip(), QStringLiteral("Se necesitan modelos vinculados en al menos dos especialidades"));

        // A slab 4 m square in ARQ, a beam through it in EST. Dark colours, so
        // that the orange of a clash does not wash out to white.
        cv.especialidades.at("ARQ").colorOriginal = {0.1f, 0.1f, 0.1f, 1};
        cv.especialidades.at("EST").colorOriginal = {0.1f, 0.1f, 0.1f, 1};
        vincular(cv, "ARQ", "v -2 -2 0.8\nv 2 -2 0.8\nv 2 2 1.2\nv -2 2 1.2\ng Losa\nf 1 2 3 4\n");
        vincular(cv, "EST", "v -0.5 -3 0.5\nv 0.5 3 0.5\nv 0.5 3 1.5\nv -0.5 -3 1.5\ng Viga\nf 1 2 3 4\n");
        QTRY_VERIFY((nueva = ventana.findChild<QPushButton*>(QStringLiteral("nuevaDeteccion"))) && nueva->isEnabled());
        QVERIFY(nueva->toolTip().isEmpty());

        // Escape and the close box close the sheet for good, as "Cancelar":
        // the next change of the workspace does not bring it back.
        auto hojaVisible = [&ventana] {
            auto* h = ventana.findChild<DialogoConfigAnalisis*>();
            return h && h->isVisible() ? h : nullptr;
        };
        for (const bool escape : {true, false}) {
            QTRY_VERIFY((nueva = ventana.findChild<QPushButton*>(QStringLiteral("nuevaDeteccion"))) != nullptr);
            nueva->click();
            QPointer<DialogoConfigAnalisis> abierta;
            QTRY_VERIFY((abierta = hojaVisible()) != nullptr);
            if (escape)
                QTest::keyClick(abierta, Qt::Key_Escape);
            else
                abierta->close();
            QTRY_VERIFY(!abierta || !abierta->isVisible());
            QVERIFY2(!cv.mostrarConfigAnalisis, escape ? "Escape" : "cierre");
            emit cv.changed();
            QTest::qWait(50);
            QVERIFY2(!hojaVisible(), escape ? "Escape" : "cierre");
        }

        QTRY_VERIFY((nueva = ventana.findChild<QPushButton*>(QStringLiteral("nuevaDeteccion"))) != nullptr);
        nueva->click();
        DialogoConfigAnalisis* hoja = nullptr;
        QTRY_VERIFY((hoja = hojaVisible()) != nullptr);
        QCOMPARE(hoja->windowTitle(), QStringLiteral("Configurar Análisis de Interferencias"));
        auto* iniciar = hoja->findChild<QPushButton*>(QStringLiteral("iniciarAnalisis"));
        QVERIFY(iniciar->isEnabled());
        iniciar->click();
        QTRY_VERIFY(!cv.detectando && cv.historialAnalisis.size() == 1);
        QCOMPARE(cv.historialAnalisis[0].interferencias.size(), std::size_t(1));

        // The history row shows one open clash; its line is listed under it.
        QLabel* abiertos = nullptr;
        QTRY_VERIFY((abiertos = ventana.findChild<QLabel*>(QStringLiteral("cuentaAbiertos"))) != nullptr);
        QCOMPARE(abiertos->text(), QStringLiteral("1"));
        QTRY_VERIFY(ventana.findChild<QWidget*>(QString::fromStdString("interferencia_" + cv.interferencias[0].id)));
        QTRY_VERIFY(ventana.findChild<QLabel*>(QStringLiteral("leyendaColisiones")));

        // The slab glows orange in the view, seen from straight above.
        VisorEscena* visor = ventana.visorEscena();
        QTest::qWait(300);
        cv.viewport.terminarAnimacion();
        visor->camara()->setPosition({0, 0, 12});
        visor->camara()->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
        visor->update();
        const auto cam = CamaraRender::desdeNodo(*visor->camara(), float(visor->width()) / visor->height());
        const glm::vec4 clip = cam.proyeccion * cam.vista * glm::vec4(1.5f, 1.5f, 1.2f, 1);
        const QPoint p(int((clip.x / clip.w * 0.5f + 0.5f) * visor->width()),
                       int((0.5f - clip.y / clip.w * 0.5f) * visor->height()));
        QTRY_VERIFY(visor->isValid());
        const QRgb c = visor->grabFramebuffer().pixel(p);
        QVERIFY2(qRed(c) > 200 && qGreen(c) > 100 && qGreen(c) < qRed(c) - 40 && qBlue(c) < 120,
                 qPrintable(QString::number(c, 16)));

        // A click on the clash's line flies there and lights the pair deep orange.
        QWidget* linea = ventana.findChild<QWidget*>(QString::fromStdString("interferencia_" + cv.interferencias[0].id));
        QTest::mouseClick(linea->findChild<QLabel*>(), Qt::LeftButton);
        QTRY_COMPARE(cv.nodosDestacadosHistorial.size(), std::size_t(2));
        cv.viewport.terminarAnimacion();
        QCOMPARE(visor->camara()->position(), glm::vec3(cv.interferencias[0].viewpointPos));

        // "Ver Reporte" opens a window of its own, centred, that follows a
        // change of state while it is open: the badge, the cards and the foot.
        QToolButton* ver = nullptr;
        QTRY_VERIFY((ver = ventana.findChild<QToolButton*>(QStringLiteral("verReporte"))) != nullptr);
        QCOMPARE(ver->text(), QStringLiteral("Ver Reporte"));
        ver->click();
        QCOMPARE(ventana.reportWindows().size(), std::size_t(1));
        QPointer<QWidget> primera = ventana.reportWindows()[0].get();
        auto* reporte = qobject_cast<ReporteAnalisisView*>(primera.data());
        QVERIFY(reporte && reporte->isWindow() && reporte->isVisible());
        QCOMPARE(reporte->windowTitle(), QStringLiteral("Reporte · ") + QString::fromStdString(cv.historialAnalisis[0].nombre));
        QCOMPARE(reporte->size(), QSize(820, 700));
        QVERIFY(qAbs(reporte->geometry().center().x() - ventana.screen()->availableGeometry().center().x()) <= 1);
        QTRY_COMPARE(reporte->thumbnails().size(), std::size_t(1));
        const std::string id = cv.historialAnalisis[0].interferencias[0].id;
        cv.cambiarEstado(0, 0, EstadoClash::resuelto);
        QCOMPARE(reporte->analisis().interferencias[0].estado, EstadoClash::resuelto);
        QCOMPARE(texto(*reporte, ("estado_" + id).c_str()), QStringLiteral("Resuelto"));
        QCOMPARE(texto(*reporte->findChild<QWidget*>(QStringLiteral("tarjetaAbiertos")), "numero"), QStringLiteral("0"));
        QCOMPARE(texto(*reporte->findChild<QWidget*>(QStringLiteral("tarjetaResueltos")), "numero"), QStringLiteral("1"));
        QCOMPARE(texto(*reporte, "pieCuentas"),
                 QStringLiteral("Total interferencias: 1  ·  Resueltas: 1  ·  Pendientes: 0"));
        // A second window of the analysis is its own; closing the first keeps
        // it alive in the list.
        QTRY_VERIFY((ver = ventana.findChild<QToolButton*>(QStringLiteral("verReporte"))) != nullptr);
        ver->click();
        QCOMPARE(ventana.reportWindows().size(), std::size_t(2));
        auto* segunda = qobject_cast<ReporteAnalisisView*>(ventana.reportWindows()[1].get());
        QCOMPARE(segunda->analisis().interferencias[0].estado, EstadoClash::resuelto);
        QVERIFY(segunda->thumbnails().empty());
        primera->close();
        QTest::qWait(50);
        QVERIFY(primera && !primera->isVisible());
        QCOMPARE(ventana.reportWindows().size(), std::size_t(2));
        QTRY_COMPARE(segunda->thumbnails().size(), std::size_t(1));

        // The trash button asks first; "Eliminar" removes the analysis.
        ventana.findChild<QWidget*>(QString::fromStdString("analisis_" + cv.historialAnalisis[0].id))
            ->findChild<QAbstractButton*>(QStringLiteral("eliminarAnalisis"))
            ->click();
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY((alerta = ventana.findChild<QMessageBox*>(QStringLiteral("alertaEliminarAnalisis"))) != nullptr);
        QCOMPARE(alerta->text(), QStringLiteral("Esta acción no se puede deshacer."));
        for (auto* b : alerta->buttons())
            if (b->text() == QStringLiteral("Eliminar")) b->click();
        QTRY_VERIFY(cv.historialAnalisis.empty());
    }
};

QTEST_MAIN(PruebaAnalisis)
#include "test_analisis_interferencias.moc"
