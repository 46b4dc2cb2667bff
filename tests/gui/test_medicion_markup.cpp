// Measuring and markup in the workbench window under Xvfb: a distance
// measured on a box (its value and its label on screen), a stroke drawn and
// saved as a comment (its picture shows the stroke), the comment list, its
// detail and deletion, and the report with its PDF (through poppler) and its
// BCF archive (through unzip and bcf-client).
#include "app/ui/VentanaPrincipal.h"
#include "federation/CargaOBJ.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "../lector_bcf.h"
#include "scene/Orientacion.h"
#include "viewport/markup/ui/LienzoMarkupView.h"
#include "viewport/markup/ui/ReporteComentariosView.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/ui/VisorEscena.h"

#include <QApplication>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace teskal;

namespace {

// A 2 x 1 x 1 m box from (0, 0, 0) to (2, 1, 1).
const char* caja = "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 1\nv 2 0 1\nv 2 1 1\nv 0 1 1\n"
                   "g IFCWALL/Caja\nf 1 2 3 4\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";

struct Banco {
    CentroNotificaciones centro;
    ContentView cv{"/no/hay"};
    VentanaPrincipal ventana{cv, centro};
    VisorEscena* visor = nullptr;

    Banco() {
        ventana.resize(1400, 900);
        ventana.show();
        cv.fileName = "caja.ifc";
        ModeloConvertido m;
        m.modelo = cargarOBJTexto(caja);
        cv.integrarModelo(std::move(m), "/x/caja.ifc", "/no/existe.obj");
        visor = ventana.visorEscena();
        cv.viewport.detenerAnimacion();
        QTest::qWait(200);
        cv.viewport.terminarAnimacion();
        // Straight down from 8 m over the box's middle.
        visor->camara()->setPosition({1, 0.5f, 8});
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

int amarillos(const QImage& imagen, QRect zona) {
    int n = 0;
    for (int y = zona.top(); y <= zona.bottom(); ++y)
        for (int x = zona.left(); x <= zona.right(); ++x) {
            const QRgb c = imagen.pixel(x, y);
            n += qRed(c) > 200 && qGreen(c) > 160 && qBlue(c) < 90;
        }
    return n;
}

QString ejecutar(const QString& programa, const QStringList& argumentos) {
    QProcess p;
    p.start(programa, argumentos);
    p.waitForFinished(-1);
    return QString::fromUtf8(p.readAllStandardOutput());
}

ComentarioMarkup comentario(const char* tag, const char* descripcion, std::optional<QByteArray> foto) {
    ComentarioMarkup c;
    c.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    c.tag = tag;
    c.descripcion = descripcion;
    c.autor = "Ana";
    c.fecha = QDateTime::currentDateTimeUtc();
    c.imagenJPEG = std::move(foto);
    c.trazados.push_back({"T", {{0, 0}, {5, 5}}, 1, 0, 0, 3});
    return c;
}

} // namespace

class PruebaMedicionMarkup : public QObject {
    Q_OBJECT
private slots:
    // One window: the distance first, then the comment over the same view.
    void midaYComentaLaCaja() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QTRY_VERIFY(b.visor->isValid());
        const QPoint a = b.pixel({0, 0, 1}), d = b.pixel({2, 0, 1});
        const QRect zonaEtiqueta(b.pixel({1, 0, 1.15f}) - QPoint(40, 20), QSize(80, 30));
        const int antes = amarillos(b.visor->grabFramebuffer(), zonaEtiqueta);

        b.ventana.findChild<QToolButton*>(QStringLiteral("medir_1"))->click();
        QCOMPARE(b.cv.medicion.modoMedicion3D, ModoMedicion3D::distancia);
        // Hovering near a corner shows the ring there.
        QTest::mouseMove(b.visor, a + QPoint(3, -2));
        QTRY_VERIFY(b.cv.medicion.nodoSnapIndicador);
        QCOMPARE(b.cv.medicion.nodoSnapIndicador->position(), glm::vec3(0, 0, 1));
        // Two clicks a few pixels off the corners snap to them: 2.000 m.
        QTest::mouseClick(b.visor, Qt::LeftButton, {}, a + QPoint(3, -2));
        QTest::mouseClick(b.visor, Qt::LeftButton, {}, d + QPoint(-2, -3));
        QTRY_VERIFY(b.cv.medicion.medicionPuntoB.has_value());
        QCOMPARE(std::pair(*b.cv.medicion.medicionPuntoA, *b.cv.medicion.medicionPuntoB),
                 std::pair(glm::vec3(0, 0, 1), glm::vec3(2, 0, 1)));
        // The yellow label "2.000 m" stands over the line's middle.
        QTRY_VERIFY2(amarillos(b.visor->grabFramebuffer(), zonaEtiqueta) > antes + 40,
                     qPrintable(QString::number(amarillos(b.visor->grabFramebuffer(), zonaEtiqueta))));
        auto* limpiar = b.ventana.findChild<QToolButton*>(QStringLiteral("limpiarMedicion"));
        QVERIFY(limpiar->isVisible());
        limpiar->click();
        QVERIFY(!b.cv.medicion.medicionPuntoA);
        QTRY_VERIFY(amarillos(b.visor->grabFramebuffer(), zonaEtiqueta) <= antes);

        QVERIFY(b.ventana.findChild<QLabel*>(QStringLiteral("sinComentarios")));
        b.ventana.findChild<QPushButton*>(QStringLiteral("nuevoComentario"))->click();
        LienzoMarkupView* lienzo = b.ventana.lienzoMarkup();
        QTRY_VERIFY(lienzo->isVisible());
        b.ventana.findChild<QPushButton*>(QStringLiteral("colorMarkup2"))->click(); // green
        b.cv.fijarGrosorMarkup(10);
        // A stroke across the canvas's middle.
        const int y = lienzo->height() / 2;
        QTest::mousePress(lienzo, Qt::LeftButton, {}, QPoint(100, y));
        for (int x = 120; x <= 400; x += 20) QTest::mouseMove(lienzo, QPoint(x, y));
        QTest::mouseRelease(lienzo, Qt::LeftButton, {}, QPoint(400, y));
        QCOMPARE(b.cv.markup.trazadosActivos.size(), std::size_t(1));
        auto* descripcion = b.ventana.findChild<QLineEdit*>(QStringLiteral("descripcionMarkup"));
        QTest::keyClicks(descripcion, QStringLiteral("Junta abierta"));
        b.ventana.findChild<QPushButton*>(QStringLiteral("guardarComentario"))->click();

        QCOMPARE(b.cv.markup.comentarios.size(), std::size_t(1));
        const ComentarioMarkup& c = b.cv.markup.comentarios[0];
        QCOMPARE(c.tag + " " + c.descripcion, std::string("MRK-001 Junta abierta"));
        QVERIFY(!lienzo->isVisible());
        // The picture is the view with the stroke burnt in, stretched to its size.
        QVERIFY(c.imagenJPEG);
        QImage foto;
        QVERIFY(foto.loadFromData(*c.imagenJPEG, "JPEG"));
        const double escala = double(foto.width()) / lienzo->width();
        const QRgb trazo = foto.pixel(int(250 * escala), int(y * escala));
        QVERIFY2(qGreen(trazo) > 170 && qRed(trazo) < 90 && qBlue(trazo) < 130, qPrintable(QString::number(trazo, 16)));

        // The row, its detail, and the deletion through its alert.
        QTRY_VERIFY(b.ventana.findChild<QWidget*>(QStringLiteral("filaComentario")));
        b.cv.abrirDetalleComentario(c.id);
        QDialog* detalle = nullptr;
        QTRY_VERIFY((detalle = b.ventana.findChild<QDialog*>(QStringLiteral("detalleComentario"))) != nullptr);
        QVERIFY(!detalle->findChild<QLabel*>(QStringLiteral("capturaComentario"))->pixmap().isNull());
        detalle->findChild<QPushButton*>(QStringLiteral("cerrarDetalle"))->click();
        QTRY_VERIFY(!b.cv.markup.detalleComentario);
        QTRY_VERIFY(!b.ventana.findChild<QDialog*>(QStringLiteral("detalleComentario")));
        b.ventana.findChild<QToolButton*>(QStringLiteral("eliminarComentario"))->click();
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY((alerta = b.ventana.findChild<QMessageBox*>(QStringLiteral("alertaEliminarComentario"))) != nullptr);
        QCOMPARE(alerta->text(), QStringLiteral("Esta acción no se puede deshacer."));
        for (QAbstractButton* boton : alerta->buttons())
            if (boton->text() == QStringLiteral("Eliminar")) boton->click();
        QTRY_VERIFY(b.cv.markup.comentarios.empty());

        // A comment restored without a picture shows "Sin captura de pantalla".
        b.cv.markup.comentarios.push_back(comentario("MRK-001", "", std::nullopt));
        b.cv.abrirDetalleComentario(b.cv.markup.comentarios[0].id);
        QTRY_VERIFY((detalle = b.ventana.findChild<QDialog*>(QStringLiteral("detalleComentario"))) != nullptr);
        QCOMPARE(detalle->findChild<QLabel*>(QStringLiteral("capturaComentario"))->text(),
                 QStringLiteral("Sin captura de pantalla"));
    }

    void reporteConSuPDFYSuBCF() {
        Banco b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.ventana));
        QImage imagen(320, 200, QImage::Format_RGB32);
        imagen.fill(Qt::darkCyan);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(imagen.save(&buffer, "JPEG", 85));
        b.cv.markup.comentarios = {comentario("MRK-001", "Fisura en losa", jpeg), comentario("MRK-002", "", std::nullopt)};
        b.ventana.abrirReporteComentarios();
        auto* reporte = dynamic_cast<ReporteComentariosView*>(b.ventana.reportWindows().back().get());
        QVERIFY(reporte);
        QCOMPARE(reporte->windowTitle(), QStringLiteral("Reporte de Comentarios — VORNEL"));

        QTemporaryDir d;
        const QString pdf = d.filePath(QStringLiteral("Reporte_Comentarios_VORNEL.pdf"));
        QVERIFY(reporte->exportarPDF(pdf));
        const QString info = ejecutar(QStringLiteral("pdfinfo"), {pdf});
        QVERIFY2(info.contains(QStringLiteral("Page size:       595 x 842 pts")), qPrintable(info));
        QVERIFY2(info.contains(QRegularExpression(QStringLiteral("Pages:\\s+3\\n"))), qPrintable(info));
        const QString texto = ejecutar(QStringLiteral("pdftotext"), {pdf, QStringLiteral("-")});
        for (const char* esperado : {"Reporte de Comentarios", "2 comentario(s)", "MRK-001", "Fisura en losa", "MRK-002",
                                     "1 trazo(s)", "Generado por VORNEL"})
            QVERIFY2(texto.contains(QString::fromUtf8(esperado)), esperado);
        const QString fuentes = ejecutar(QStringLiteral("pdffonts"), {pdf});
        QVERIFY2(fuentes.contains(QStringLiteral("LiberationSans")), qPrintable(fuentes));
        QVERIFY2(!fuentes.contains(QRegularExpression(QStringLiteral(" no +no "))), qPrintable(fuentes)); // all embedded

        // A place that cannot be written goes to the error alert.
        QVERIFY(!reporte->exportarPDF(d.filePath(QStringLiteral("no/existe.pdf"))));
        QTRY_VERIFY(b.cv.showError);
        QVERIFY(b.cv.errorMessage->starts_with("No se pudo exportar el PDF de comentarios"));
        b.cv.cerrarError();

        // An empty list: the cover alone.
        ReporteComentariosView vacio({}, {});
        QVERIFY(vacio.exportarPDF(pdf));
        QVERIFY(ejecutar(QStringLiteral("pdfinfo"), {pdf}).contains(QRegularExpression(QStringLiteral("Pages:\\s+1\\n"))));

        // The BCF: a target without extension gets ".bcf"; another tool reads it.
        bool hecho = false, terminado = false;
        reporte->exportarBCF(d.filePath(QStringLiteral("Comentarios")), FormaBCF::estandar, [&](bool h) {
            hecho = h;
            terminado = true;
        });
        QTRY_VERIFY(terminado);
        QVERIFY(hecho);
        const QString bcf = d.filePath(QStringLiteral("Comentarios.bcf"));
        const QString lista = ejecutar(QStringLiteral("/usr/bin/unzip"), {QStringLiteral("-Z1"), bcf});
        QCOMPARE(lista.count(QStringLiteral("snapshot.png")), 1);
        QVERIFY(lista.contains(QStringLiteral("extensions.xsd")));
        QProcess png;
        png.start(QStringLiteral("/usr/bin/unzip"),
                  {QStringLiteral("-p"), bcf, QString::fromStdString(b.cv.markup.comentarios[0].id) + "/snapshot.png"});
        png.waitForFinished(-1);
        QCOMPARE(QImage::fromData(png.readAllStandardOutput(), "PNG").size(), QSize(320, 200));
        const auto lectura = pruebas::leerConBcfClient(bcf);
        QVERIFY2(lectura.error.isEmpty(), qPrintable(lectura.error));
        QCOMPARE(lectura.datos["temas"].toArray().size(), 2);
    }
};

QTEST_MAIN(PruebaMedicionMarkup)
#include "test_medicion_markup.moc"
