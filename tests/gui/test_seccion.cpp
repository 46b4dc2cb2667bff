// The section through the workbench window under Xvfb: the switch of the
// "Sección" panel clips the 3D view and stands the plane in it; "Plano 2D"
// opens the duplex cut at 1.2 m in a sheet window, where the label tool
// labels walls and the dimension tool draws a snapped dimension that shows on
// the canvas, goes to DXF and PDF, and is kept under the sheet's title when
// the window closes.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "federation/Formato.h"
#include "sections/ui/VentanaHoja.h"
#include "ui/TextoQt.h"
#include "viewport/ui/VisorEscena.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>
#include <set>

using namespace teskal;

class PruebaSeccion : public QObject {
    Q_OBJECT
private slots:
    void corteDelDuplexConEtiquetasYCota() {
        const QString ifc = QStringLiteral(TESKAL_SAMPLES_DIR "/duplex.ifc");
        if (!QFileInfo::exists(ifc)) QSKIP("no está la muestra duplex.ifc");
        CentroNotificaciones centro;
        ContentView cv("/no/hay");
        VentanaPrincipal ventana(cv, centro);
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));

        TrabajoConversion trabajo;
        trabajo.rutaOrigen = ifc.toStdString();
        trabajo.rutaConversor = TESKAL_IFCCONVERT;
        trabajo.rutaSalida = rutaTemporalNueva(".obj");
        auto resultado = convertirIFC(trabajo);
        QVERIFY(std::holds_alternative<ModeloConvertido>(resultado));
        cv.integrarModelo(std::move(std::get<ModeloConvertido>(resultado)), trabajo.rutaOrigen, trabajo.rutaSalida,
                          "ARQ");
        eliminarSalidasConversion(trabajo.rutaSalida);
        VisorEscena* visor = ventana.visorEscena();
        QTRY_VERIFY(visor->isValid());
        QTest::qWait(1200); // the framing after a link
        cv.viewport.terminarAnimacion();
        visor->update();
        QTest::qWait(100);
        const QImage antes = visor->grabFramebuffer();

        // The switch: the plane stands in the scene and the view changes.
        auto* activar = ventana.findChild<QCheckBox*>(QStringLiteral("activarCorte"));
        QVERIFY(activar);
        activar->click();
        QVERIFY(cv.seccion.activa);
        cv.fijarPosicionSeccion(1.2);
        QVERIFY(cv.seccion.nodoPlanVisual);
        int ocultos = 0;
        cv.especialidades.at("ARQ").nodoRaiz->enumerateChildNodes([&](Node& n, bool&) { ocultos += n.isHidden(); });
        QVERIFY(ocultos > 10);
        visor->update();
        QTRY_VERIFY(visor->grabFramebuffer() != antes);

        // "Plano 2D" opens the sheet.
        auto* plano = ventana.findChild<QPushButton*>(QStringLiteral("botonPlano2D"));
        QVERIFY(plano && plano->isVisible());
        plano->click();
        QTRY_COMPARE(ventana.vista2DWindows().size(), std::size_t(1));
        auto* hoja = static_cast<VentanaHoja*>(ventana.vista2DWindows()[0].get());
        QCOMPARE(hoja->windowTitle(), QStringLiteral("Plano 2D — Eje Z = 1.20 m"));
        QVERIFY(QTest::qWaitForWindowExposed(hoja));
        VistaHoja* vista = hoja->vista();
        QTRY_VERIFY(vista->hoja.escala != 100.0); // fitted once it has its size
        EstadoHoja& h = vista->hoja;

        // The label tool on four walls' cut lines.
        hoja->findChild<QToolButton*>(QStringLiteral("botonEtiquetar"))->click();
        QVERIFY(h.modoEtiquetar);
        std::set<std::string> etiquetados;
        for (const Segmento2D& s : h.segmentos) {
            if (etiquetados.size() == 4) break;
            if (s.nombreElemento.find("Wall") == std::string::npos || etiquetados.contains(s.nombreElemento)) continue;
            const glm::dvec2 m = h.aVista((s.p1 + s.p2) * 0.5f);
            if (glm::length(h.aVista(s.p1) - h.aVista(s.p2)) < 30) continue;
            QTest::mouseClick(vista, Qt::LeftButton, {}, QPoint(int(std::lround(m.x)), int(std::lround(m.y))));
            etiquetados.insert(h.segmentos[*h.elegirSegmento({std::lround(m.x), std::lround(m.y)}, 12.0)].nombreElemento);
        }
        int visibles = 0;
        for (const auto& e : h.etiquetas) visibles += e.visible;
        QVERIFY2(visibles >= 3, qPrintable(QString::number(visibles)));

        // The dimension tool: two clicks a few pixels off the ends of a long
        // wall line snap onto them.
        auto* cota = hoja->findChild<QToolButton*>(QStringLiteral("botonCota"));
        cota->click();
        QVERIFY(h.modoCota && !h.modoEtiquetar);
        const Segmento2D* largo = nullptr;
        for (const Segmento2D& s : h.segmentos)
            if (s.esCorte && (!largo || glm::length(s.p2 - s.p1) > glm::length(largo->p2 - largo->p1))) largo = &s;
        QVERIFY(largo);
        const glm::dvec2 a = h.aVista(largo->p1), b = h.aVista(largo->p2);
        const glm::dvec2 fuera = glm::normalize(b - a) * 3.0;
        const QPoint pa(int(std::lround(a.x - fuera.x)), int(std::lround(a.y - fuera.y)));
        const QPoint pb(int(std::lround(b.x + fuera.x)), int(std::lround(b.y + fuera.y)));
        const auto ajusteA = h.ajustarAPunto({pa.x(), pa.y()}), ajusteB = h.ajustarAPunto({pb.x(), pb.y()});
        QVERIFY(ajusteA && ajusteB);
        QTest::mouseMove(vista, pa);
        QTRY_VERIFY(h.snapPoint == ajusteA);
        QTest::mouseClick(vista, Qt::LeftButton, {}, pa);
        QTest::mouseMove(vista, pb);
        QTest::mouseClick(vista, Qt::LeftButton, {}, pb);
        QCOMPARE(h.cotas.size(), std::size_t(1));
        // On the snapped points, not where the clicks were, near the wall's ends.
        QCOMPARE(h.cotas[0].p1, *ajusteA);
        QCOMPARE(h.cotas[0].p2, *ajusteB);
        QVERIFY(h.cotas[0].p1 != glm::vec2(h.aHoja({pa.x(), pa.y()})));
        QVERIFY(glm::length(h.aVista(h.cotas[0].p1) - a) <= 3.5);
        QVERIFY(glm::length(h.aVista(h.cotas[0].p2) - b) <= 3.5);
        cota->click(); // off, so no tool overlay covers the dimension
        // The dimension line in its blue, 0.6 m off the measured line.
        vista->repaint();
        const QImage lienzo = vista->grab().toImage();
        const glm::dvec2 ca = h.aVista(h.cotas[0].p1), cb = h.aVista(h.cotas[0].p2);
        const glm::dvec2 n = glm::dvec2(-(cb - ca).y, (cb - ca).x) / glm::length(cb - ca);
        const glm::dvec2 sobre = ca + (cb - ca) * 0.25 + n * (h.escala * 0.6);
        bool azul = false;
        for (int dx = -1; dx <= 1 && !azul; ++dx)
            for (int dy = -1; dy <= 1 && !azul; ++dy) {
                const QColor c = lienzo.pixelColor(int(std::lround(sobre.x)) + dx, int(std::lround(sobre.y)) + dy);
                azul = c.blue() > 150 && c.blue() - c.red() > 60 && c.blue() - c.green() > 30;
            }
        QVERIFY2(azul, "la línea de cota no está en su azul");

        // The DXF of the sheet, read back and audited by ezdxf: one entity
        // per line, six per visible label, ten per dimension.
        QTemporaryDir dir;
        const QString dxf = dir.filePath(QStringLiteral("plano.dxf"));
        QVERIFY(hoja->escribirDXF(dxf));
        QProcess lector;
        lector.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(TESKAL_TESTS_DIR "/sections/leer_dxf.py"), dxf});
        QVERIFY(lector.waitForFinished(300000));
        if (lector.exitCode() == 3) {
            qWarning("sin ezdxf (python3-ezdxf): el DXF no se audita");
        } else {
            QCOMPARE(lector.exitCode(), 0);
            const QJsonObject r = QJsonDocument::fromJson(lector.readAllStandardOutput()).object();
            QCOMPARE(r["errores"].toInt(), 0);
            const QJsonObject capas = r["capas"].toObject();
            QCOMPARE(capas["ARQ"].toInt(), int(h.segmentos.size()));
            QCOMPARE(capas["ETIQUETAS"].toInt(), 6 * visibles);
            QCOMPARE(capas["COTAS"].toInt(), 10);
        }

        // The PDF: one page of the view's size, with the label and dimension texts.
        const QString pdf = dir.filePath(QStringLiteral("plano.pdf"));
        QVERIFY(hoja->escribirPDF(pdf));
        const auto ejecutar = [](const QString& programa, const QStringList& argumentos) {
            QProcess p;
            p.start(programa, argumentos);
            p.waitForFinished(60000);
            return QString::fromUtf8(p.readAllStandardOutput());
        };
        const QString textoInfo = ejecutar(QStringLiteral("pdfinfo"), {pdf});
        QVERIFY2(textoInfo.contains(QStringLiteral("Page size:       %1 x %2 pts").arg(vista->width()).arg(vista->height())),
                 qPrintable(textoInfo));
        QVERIFY2(textoInfo.contains(QRegularExpression(QStringLiteral("Pages:\\s+1\\n"))), qPrintable(textoInfo));
        // In drawing order.
        const QString textos = ejecutar(QStringLiteral("pdftotext"), {QStringLiteral("-raw"), pdf, QStringLiteral("-")});
        QVERIFY2(textos.contains(q(formato("%.2f m", double(glm::length(h.cotas[0].p2 - h.cotas[0].p1))))),
                 qPrintable(textos));
        for (const auto& e : h.etiquetas)
            if (e.visible) QVERIFY2(textos.contains(q(lineasEtiqueta(e)[0].texto)), qPrintable(textos));

        // Closing keeps the dimension and the labels under the title.
        hoja->close();
        const std::string titulo = "Plano 2D — Eje Z = 1.20 m";
        QCOMPARE(cv.seccion.almacenCotas[titulo].size(), std::size_t(1));
        QCOMPARE(cv.seccion.almacenEtiquetas[titulo].size(), h.etiquetas.size());
        QCOMPARE(ventana.vista2DWindows().size(), std::size_t(1));
        cv.detenerTrabajos();
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    PruebaSeccion prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "test_seccion.moc"
