// Clash reports on real OpenGL (Mesa under Xvfb): thumbnails rendered
// offscreen and checked where the two elements project, the report window
// before and after its thumbnails, the HTML file handed to the browser or the
// alert when it can't be written, and the review states that follow the
// sidebar into the page and the BCF. The HTML document itself, names escaped,
// is test_reporte_html's; the windows "Ver Reporte" opens are
// test_analisis_interferencias'.
#include "../lector_bcf.h"
#include "analyses/clash/EscenaThumbnail.h"
#include "analyses/clash/ReporteHTML.h"
#include "analyses/clash/ui/ReporteAnalisisView.h"
#include "analyses/clash/ui/ThumbnailInterferencia.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace teskal;

namespace {

// A box as twelve triangles with a grey material of its own.
std::shared_ptr<Node> caja(const std::string& nombre, glm::vec3 a, glm::vec3 b) {
    auto g = std::make_shared<Geometry>();
    for (int i = 0; i < 8; ++i)
        g->vertices.push_back({(i & 1) ? b.x : a.x, (i & 2) ? b.y : a.y, (i & 4) ? b.z : a.z});
    const int caras[6][4] = {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 4, 5, 1},
                             {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 5, 7, 3}};
    ElementoGeometria e;
    for (const auto& c : caras)
        e.indices.insert(e.indices.end(), {c[0], c[1], c[2], c[0], c[2], c[3]});
    g->elementos.push_back(e);
    auto m = std::make_shared<Material>();
    m->setDiffuse({0.6f, 0.6f, 0.6f, 1});
    g->materiales.push_back(m);
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

// Two half-metre boxes side by side across the thumbnail's line of sight,
// around the target (0, 0, 0).
Interferencia clashVivo(const std::string& id, const std::string& a, const std::string& b) {
    Interferencia i;
    i.id = id;
    i.nodoA = caja(a, {-0.25f, -0.75f, -0.25f}, {0.25f, -0.25f, 0.25f});
    i.nodoB = caja(b, {-0.25f, 0.25f, -0.25f}, {0.25f, 0.75f, 0.25f});
    i.nombreA = a;
    i.nombreB = b;
    i.especialidadA = "ARQ";
    i.especialidadB = "MEP";
    i.viewpointTarget = {0, 0, 0};
    i.viewpointPos = {3, 2, 3};
    i.radio = 4;
    return i;
}

// The same clash as a restored project leaves it: names, no geometry.
Interferencia clashRestaurado(const std::string& id, const std::string& a, const std::string& b) {
    Interferencia i = clashVivo(id, a, b);
    i.nodoA = Node::crear();
    i.nodoB = Node::crear();
    return i;
}

bool esRojo(QRgb c) {
    return qRed(c) > 120 && qRed(c) > qGreen(c) + 60 && qRed(c) > qBlue(c) + 60;
}
bool esAzul(QRgb c) {
    return qBlue(c) > 120 && qBlue(c) > qRed(c) + 60 && qBlue(c) > qGreen(c) + 20;
}

// The pixel where a world point falls in a thumbnail.
QPoint pixelDe(const EscenaThumbnail& t, glm::vec3 punto) {
    const QSize s = tamanoThumbnail;
    const auto cam = CamaraRender::desdeNodo(*t.camara, float(s.width()) / s.height());
    const glm::vec4 clip = cam.proyeccion * cam.vista * glm::vec4(punto, 1);
    return {int((clip.x / clip.w * 0.5f + 0.5f) * s.width()),
            int((0.5f - clip.y / clip.w * 0.5f) * s.height())};
}

int pixelesDe(const QImage& imagen, bool (*prueba)(QRgb)) {
    int n = 0;
    for (int y = 0; y < imagen.height(); ++y)
        for (int x = 0; x < imagen.width(); ++x) n += prueba(imagen.pixel(x, y));
    return n;
}

QImage rgb(const QImage& i) {
    return i.convertToFormat(QImage::Format_RGB32);
}

AnalisisInterferencias analisis(const std::string& nombre, std::vector<Interferencia> lista) {
    AnalisisInterferencias a;
    a.id = "A0000000-0000-0000-0000-00000000000" + std::to_string(lista.size());
    a.nombre = nombre;
    a.fecha = QDateTime(QDate(2026, 3, 1), QTime(14, 5));
    a.interferencias = std::move(lista);
    return a;
}

template <class T = QWidget> T* hijo(const QObject& o, const char* nombre) {
    return o.findChild<T*>(QString::fromLatin1(nombre));
}
QString texto(const QObject& o, const char* nombre) {
    return hijo<QLabel>(o, nombre)->text();
}

QFileDialog* panelBCF() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* d = qobject_cast<QFileDialog*>(w);
            d && d->objectName() == QStringLiteral("panelBCF") && d->isVisible())
            return d;
    return nullptr;
}

// Receives the files the report hands to the desktop's browser.
class Navegador : public QObject {
    Q_OBJECT
public:
    QList<QUrl> abiertas;
public slots:
    void abrir(const QUrl& url) { abiertas.push_back(url); }
};

} // namespace

class PruebaReporte : public QObject {
    Q_OBJECT
    QTemporaryDir temporal_;

private slots:
    void initTestCase() {
        QVERIFY(temporal_.isValid());
        qputenv("TMPDIR", temporal_.path().toLocal8Bit());
    }

    void thumbnailsConLosElementosDondeSeProyectan() {
        RenderizadorImagenes r;
        QVERIFY(r.valido());
        const Interferencia i = clashVivo("ID-1", "Muro", "Tubo");
        const QImage imagen = renderThumbnail(i, nullptr, r);
        QCOMPARE(imagen.size(), QSize(460, 310));

        // The centres of the two boxes, projected with the thumbnail's camera.
        const EscenaThumbnail t = escenaThumbnail(i, nullptr);
        const QPoint a = pixelDe(t, {0, -0.5f, 0}), b = pixelDe(t, {0, 0.5f, 0});
        QVERIFY(imagen.rect().contains(a) && imagen.rect().contains(b));
        QVERIFY(a.x() < b.x() - 40); // A stands left of B, well apart
        QVERIFY2(esRojo(imagen.pixel(a)) && esAzul(imagen.pixel(b)),
                 qPrintable(QString::number(imagen.pixel(a), 16) + " " +
                            QString::number(imagen.pixel(b), 16)));
        // The corners show the dark ground.
        for (QPoint esquina : {QPoint(2, 2), QPoint(457, 2), QPoint(2, 307), QPoint(457, 307)}) {
            const QRgb c = imagen.pixel(esquina);
            const int desvio =
                qMax(qAbs(qRed(c) - 26), qMax(qAbs(qGreen(c) - 26), qAbs(qBlue(c) - 26)));
            QVERIFY2(desvio <= 3, qPrintable(QString::number(c, 16)));
        }

        // The same renderer next draws a restored clash whose names the live
        // scene does not hold: lights only, nothing red or blue left over.
        Scene viva;
        viva.rootNode()->addChildNode(caja("Otro", {0, 0, 0}, {1, 1, 1}));
        const QImage vacia = renderThumbnail(clashRestaurado("ID-2", "Muro", "Tubo"), &viva, r);
        QCOMPARE(pixelesDe(vacia, esRojo) + pixelesDe(vacia, esAzul), 0);

        // Once the names are in the live scene, the restored clash finds them.
        viva.rootNode()->addChildNode(i.nodoA);
        viva.rootNode()->addChildNode(i.nodoB);
        const QImage hallada = renderThumbnail(clashRestaurado("ID-3", "Muro", "Tubo"), &viva, r);
        QVERIFY(esRojo(hallada.pixel(a)) && esAzul(hallada.pixel(b)));

        // A column 1.2 m high on a 0.2 m square, in the Z-up world: its red
        // pixels make a shape several times taller than wide.
        Interferencia c = clashVivo("ID-C", "Columna", "Viga");
        c.nodoA = caja("Columna", {-0.1f, -0.1f, -0.6f}, {0.1f, 0.1f, 0.6f});
        c.nodoB = caja("Viga", {0.3f, -0.05f, -0.65f}, {0.5f, 0.05f, -0.55f});
        const QImage columna = renderThumbnail(c, nullptr, r);
        QRect rojo;
        for (int y = 0; y < columna.height(); ++y)
            for (int x = 0; x < columna.width(); ++x)
                if (esRojo(columna.pixel(x, y))) rojo |= QRect(x, y, 1, 1);
        QVERIFY(!rojo.isEmpty());
        QVERIFY2(rojo.height() > 2 * rojo.width(),
                 qPrintable(QStringLiteral("%1 x %2").arg(rojo.width()).arg(rojo.height())));
    }

    // One report window: the notice, then the table; the HTML to the browser
    // or the alert; the BCF save panel cancelled, then saved with the states.
    void ventanaHTMLyBCFDelReporte() {
        const std::string idA = "5A1C0D2E-0000-4000-8000-0000000000A1",
                          idB = "5A1C0D2E-0000-4000-8000-0000000000B2";
        Scene viva;
        ReporteAnalisisView v(analisis("Fase 2/3: ok?", {clashVivo(idA, "A&B", "<C>"),
                                                         clashRestaurado(idB, "No está", "Tampoco")}),
                              &viva);
        QElapsedTimer reloj;
        bool listos = false;
        qint64 espera = 0;
        connect(&v, &ReporteAnalisisView::thumbnailsListos, this, [&] {
            listos = true;
            espera = reloj.elapsed();
        });
        v.resize(820, 700);
        reloj.start();
        v.show();

        // Before the thumbnails: the notice, a disabled print button, grey cells.
        auto* aviso = hijo(v, "avisoGenerando");
        auto* imprimir = hijo<QPushButton>(v, "imprimirPDF");
        auto* bcf = hijo<QPushButton>(v, "exportarBCF");
        QVERIFY(aviso && imprimir && bcf);
        QVERIFY(aviso->isVisible() && !imprimir->isEnabled() && bcf->isEnabled());
        QCOMPARE(aviso->findChild<QLabel*>()->text(), QStringLiteral("Generando vistas…"));
        QCOMPARE(bcf->toolTip(),
                 QStringLiteral(
                     "Exportar como BIM Collaboration Format 2.1 (Revit, Navisworks, Solibri)"));
        QVERIFY(v.thumbnails().empty());
        auto* celda = hijo(v, ("vista_" + idA).c_str());
        QVERIFY(celda);
        QCOMPARE(celda->size(), QSize(120, 78));
        const QImage gris = celda->grab().toImage();
        QCOMPARE(pixelesDe(gris, esRojo), 0);

        // After: both clashes have a thumbnail, rendered no sooner than 0.2 s
        // after the window was shown, and the table shows them.
        QVERIFY(QTest::qWaitForWindowExposed(&v));
        QTRY_VERIFY(listos);
        QVERIFY2(espera >= 195, qPrintable(QString::number(espera)));
        QCOMPARE(v.thumbnails().size(), std::size_t(2));
        QVERIFY(!aviso->isVisible() && imprimir->isEnabled());
        const QImage llena = celda->grab().toImage();
        QVERIFY(pixelesDe(llena, esRojo) > 50 && pixelesDe(llena, esAzul) > 50);
        const QImage sinObjetos = hijo(v, ("vista_" + idB).c_str())->grab().toImage();
        QCOMPARE(pixelesDe(sinObjetos, esRojo), 0);
        QVERIFY(sinObjetos != gris); // the dark thumbnail, not the grey waiting ground

        // The page: counts and the records heading.
        QCOMPARE(texto(*hijo(v, "tarjetaAbiertos"), "numero"), QStringLiteral("2"));
        QCOMPARE(texto(v, "registros"), QStringLiteral("2 registros"));
        QCOMPARE(texto(v, "pieCuentas"),
                 QStringLiteral("Total interferencias: 2  ·  Resueltas: 0  ·  Pendientes: 2"));
        QCOMPARE(texto(v, "totalReporte"), QStringLiteral("· 2 colisiones"));

        // The HTML goes to the browser, its thumbnails as PNGs of the rendered images.
        Navegador navegador;
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &navegador, "abrir");
        imprimir->click();
        QCOMPARE(navegador.abiertas.size(), 1);
        const QString ruta = navegador.abiertas[0].toLocalFile();
        QCOMPARE(ruta, QDir(temporal_.path()).filePath(QStringLiteral("Fase 2-3- ok?.html")));
        QFile f(ruta);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray html = f.readAll();
        QVERIFY(html.startsWith("<!DOCTYPE html>"));
        QVERIFY(html.contains("<td><b>A&amp;B</b></td>") &&
                html.contains("<td><b>&lt;C&gt;</b></td>"));
        const int desde = html.indexOf("base64,") + 7;
        QVERIFY(desde > 7);
        const QImage png = QImage::fromData(
            QByteArray::fromBase64(html.mid(desde, html.indexOf('\'', desde) - desde)), "PNG");
        QCOMPARE(rgb(png), rgb(v.thumbnails().at(idA)));

        // A folder stands where the file goes: the alert, and no browser.
        QVERIFY(QFile::remove(ruta) && QDir().mkdir(ruta));
        imprimir->click();
        QMessageBox* alerta = nullptr;
        QTRY_VERIFY((alerta = hijo<QMessageBox>(v, "alertaReporte")) != nullptr);
        QCOMPARE(alerta->text(), QStringLiteral("Error"));
        QVERIFY(alerta->isModal());
        QCOMPARE(alerta->informativeText(),
                 QStringLiteral(
                     "No se pudo generar el reporte: La ruta es una carpeta, no un archivo."));
        QCOMPARE(navegador.abiertas.size(), 1);
        alerta->close();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

        // Cancelling the BCF save panel is no failure: no outcome shows.
        auto* resultado = hijo(v, "resultadoBCF");
        std::optional<bool> terminado;
        bool cancelado = false;
        connect(&v, &ReporteAnalisisView::bcfTerminado, this, [&](bool ok) { terminado = ok; });
        connect(&v, &ReporteAnalisisView::bcfCancelado, this, [&] { cancelado = true; });
        bcf->click();
        QVERIFY(v.exportandoBCF() && !bcf->isEnabled() && !resultado->isVisible());
        QFileDialog* panel = nullptr;
        QTRY_VERIFY((panel = panelBCF()) != nullptr);
        panel->reject();
        QTRY_VERIFY(cancelado);
        QVERIFY(!terminado && !v.bcfExito());
        QVERIFY(!v.exportandoBCF() && bcf->isEnabled() && !resultado->isVisible());

        // A state changed after the window opened reaches the archive.
        AnalisisInterferencias vivo = v.analisis();
        vivo.interferencias[1].estado = EstadoClash::enRevision;
        v.seguirEstados(vivo);

        // Saving it: the outcome turns to success, and the archive carries the
        // two thumbnails as the snapshots of their topics.
        terminado.reset();
        bcf->click();
        QVERIFY(!v.bcfExito() && !resultado->isVisible());
        QTRY_VERIFY((panel = panelBCF()) != nullptr);
        auto* campo = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QCOMPARE(campo->text(), QStringLiteral("Fase 23 ok.bcf"));
        const QString destino = QDir(temporal_.path()).filePath(QStringLiteral("destino"));
        QVERIFY(QDir().mkpath(destino));
        panel->setDirectory(destino);
        campo->setText(QStringLiteral("Fase 23 ok.bcf"));
        QTest::keyClick(campo, Qt::Key_Return);
        QTRY_COMPARE(terminado, std::optional<bool>(true));
        QCOMPARE(resultado->findChildren<QLabel*>().last()->text(),
                 QStringLiteral("BCF exportado"));
        QList<QByteArray> snapshots;
        for (const std::string& id : {idA, idB}) {
            QProcess unzip;
            unzip.start(QStringLiteral("/usr/bin/unzip"),
                        {QStringLiteral("-p"), destino + QStringLiteral("/Fase 23 ok.bcf"),
                         QString::fromStdString(id + "/snapshot.png")});
            QVERIFY(unzip.waitForFinished(30000) && unzip.exitCode() == 0);
            const QByteArray snapshot = unzip.readAllStandardOutput();
            QCOMPARE(rgb(QImage::fromData(snapshot, "PNG")), rgb(v.thumbnails().at(id)));
            snapshots.push_back(
                QCryptographicHash::hash(snapshot, QCryptographicHash::Md5).toHex());
        }
        // The archive saved is the standard one, which bcf-client reads whole.
        const teskal::pruebas::LecturaBCF leido =
            teskal::pruebas::leerConBcfClient(destino + QStringLiteral("/Fase 23 ok.bcf"));
        QVERIFY2(leido.error.isEmpty(), qPrintable(leido.error));
        const QJsonArray temas = leido.datos[QStringLiteral("temas")].toArray();
        QCOMPARE(temas.size(), 2);
        QCOMPARE(temas[0][QStringLiteral("titulo")].toString(), QStringLiteral("A&B ↔ <C>"));
        QCOMPARE(temas[0][QStringLiteral("estado")].toString(), QStringLiteral("Open"));
        QCOMPARE(temas[1][QStringLiteral("estado")].toString(), QStringLiteral("InProgress"));
        for (int k = 0; k < 2; ++k)
            QCOMPARE(temas[k][QStringLiteral("vistas")][0][QStringLiteral("snapshot")].toString(),
                     QString::fromLatin1(snapshots[k]));
    }

    void analisisSinInterferencias() {
        ReporteAnalisisView v(analisis("Vacío", {}), nullptr);
        v.show();
        QVERIFY(QTest::qWaitForWindowExposed(&v));
        QVERIFY(!hijo(v, "avisoGenerando")->isVisible() && !hijo(v, "resultadoBCF")->isVisible());
        QVERIFY(hijo(v, "imprimirPDF")->isEnabled() && hijo(v, "exportarBCF")->isEnabled());
        QCOMPARE(texto(v, "registros"), QStringLiteral("0 registros"));
    }
};

QTEST_MAIN(PruebaReporte)
#include "test_reporte.moc"
