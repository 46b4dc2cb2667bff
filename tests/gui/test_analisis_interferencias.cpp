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
#include <QComboBox>
#include <QShortcut>
#include <QSlider>
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

// A closed box as the converter writes one: eight corners, six faces; `base`
// is the count of the corners written before it in the file.
std::string cajaOBJ(const char* nombre, glm::vec3 a, glm::vec3 b, int base = 0) {
    std::string t;
    for (int k = 0; k < 8; ++k) {
        const glm::vec3 p(k & 1 ? b.x : a.x, k & 2 ? b.y : a.y, k & 4 ? b.z : a.z);
        t += "v " + std::to_string(p.x) + " " + std::to_string(p.y) + " " + std::to_string(p.z) + "\n";
    }
    t += "g " + std::string(nombre) + "\n";
    for (const auto& f : {"1 3 4 2", "5 6 8 7", "1 2 6 5", "3 7 8 4", "1 5 7 3", "2 4 8 6"}) {
        t += "f";
        for (const char* c = f; *c; ++c)
            if (*c != ' ') t += " " + std::to_string(*c - '0' + base);
        t += "\n";
    }
    return t;
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

        // A slab 4 m square and 0.3 m thick in ARQ with a wall standing on
        // it, a beam through the slab in EST. Dark colours, so that the orange
        // of a clash does not wash out to white.
        cv.especialidades.at("ARQ").colorOriginal = {0.1f, 0.1f, 0.1f, 1};
        cv.especialidades.at("EST").colorOriginal = {0.1f, 0.1f, 0.1f, 1};
        vincular(cv, "ARQ",
                 (cajaOBJ("Losa", {-2, -2, 0.9f}, {2, 2, 1.2f}) + cajaOBJ("Muro", {-1.5f, -2, 1.2f}, {-1, 2, 3}, 8))
                     .c_str());
        vincular(cv, "EST", cajaOBJ("Viga", {-0.5f, -3, 0.5f}, {0.5f, 3, 1.5f}).c_str());
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
        // A new analysis tests the meshes unless the sheet says otherwise.
        QCOMPARE(hoja->findChild<QComboBox*>(QStringLiteral("metodoAnalisis"))->currentText(),
                 QStringLiteral("Geometría exacta"));
        QVERIFY(!hoja->findChild<QSlider*>(QStringLiteral("holgura"))->isVisibleTo(hoja));
        auto* iniciar = hoja->findChild<QPushButton*>(QStringLiteral("iniciarAnalisis"));
        QVERIFY(iniciar->isEnabled());
        iniciar->click();
        QTRY_VERIFY(!cv.detectando && cv.historialAnalisis.size() == 1);
        QCOMPARE(cv.historialAnalisis[0].interferencias.size(), std::size_t(1));
        QCOMPARE(cv.historialAnalisis[0].metodo, MetodoAnalisis::geometriaExacta);

        // The history row shows one open clash; its line is listed under it.
        QLabel* abiertos = nullptr;
        QTRY_VERIFY((abiertos = ventana.findChild<QLabel*>(QStringLiteral("cuentaAbiertos"))) != nullptr);
        QCOMPARE(abiertos->text(), QStringLiteral("1"));
        QCOMPARE(texto(ventana, "toleranciaMetodo"), QStringLiteral("tol: 0.020 m · exacta"));
        QWidget* linea = nullptr;
        QTRY_VERIFY((linea = ventana.findChild<QWidget*>(QString::fromStdString("interferencia_" + cv.interferencias[0].id))));
        // The slab's thickness is the penetration.
        const QString lineas = linea->findChildren<QLabel*>().back()->text();
        QVERIFY2(lineas.endsWith(QStringLiteral("\nPenetración 300.0 mm")), qPrintable(lineas));
        QTRY_VERIFY(ventana.findChild<QLabel*>(QStringLiteral("leyendaColisiones")));

        // The slab glows orange in the view, seen from straight above.
        VisorEscena* visor = ventana.visorEscena();
        auto desdeArriba = [&] {
            cv.viewport.terminarAnimacion();
            visor->camara()->setPosition({0, 0, 12});
            visor->camara()->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
            visor->update();
        };
        auto pixel = [&](glm::vec3 punto) {
            const auto cam = CamaraRender::desdeNodo(*visor->camara(), float(visor->width()) / visor->height());
            const glm::vec4 clip = cam.proyeccion * cam.vista * glm::vec4(punto, 1);
            return visor->grabFramebuffer().pixel(int((clip.x / clip.w * 0.5f + 0.5f) * visor->width()),
                                                  int((0.5f - clip.y / clip.w * 0.5f) * visor->height()));
        };
        auto naranja = [](QRgb c) { return qRed(c) > 200 && qGreen(c) > 100 && qGreen(c) < qRed(c) - 40 && qBlue(c) < 120; };
        QTest::qWait(300);
        desdeArriba();
        QTRY_VERIFY(visor->isValid());
        QVERIFY2(naranja(pixel({1.5f, 1.5f, 1.2f})), qPrintable(QString::number(pixel({1.5f, 1.5f, 1.2f}), 16)));
        const glm::vec3 sobreMuro(-1.25f, 0.5f, 3); // the slab lies under it, seen from above
        QVERIFY2(qRed(pixel(sobreMuro)) < 90, qPrintable(QString::number(pixel(sobreMuro), 16)));

        // A click on the clash's line flies to the contact region and lights
        // the pair deep orange; every other element turns to a ghost, so the
        // slab shows through the wall, until Escape.
        QTest::mouseClick(linea->findChild<QLabel*>(), Qt::LeftButton);
        QTRY_COMPARE(cv.nodosDestacadosHistorial.size(), std::size_t(2));
        cv.viewport.terminarAnimacion();
        QCOMPARE(visor->camara()->position(), glm::vec3(cv.interferencias[0].viewpointPos));
        QCOMPARE(cv.interferencias[0].viewpointTarget, *cv.interferencias[0].centroContacto);
        QVERIFY(cv.modoFocoFantasma);
        desdeArriba();
        QTRY_VERIFY2(naranja(pixel(sobreMuro)), qPrintable(QString::number(pixel(sobreMuro), 16)));
        // Escape: the view's shortcut, live while the focus lasts. Fired as the
        // shortcut map fires it, without taking the display's focus from the
        // window tests that run beside this one.
        auto* escape = visor->findChild<QShortcut*>();
        QVERIFY(escape && escape->isEnabled());
        QCOMPARE(escape->key(), QKeySequence(Qt::Key_Escape));
        emit escape->activated();
        QVERIFY(!cv.modoFocoFantasma);
        QTRY_VERIFY(!escape->isEnabled());
        QTRY_VERIFY2(qRed(pixel(sobreMuro)) < 90, qPrintable(QString::number(pixel(sobreMuro), 16)));

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
