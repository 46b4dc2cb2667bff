// The timeline under Xvfb: the Gantt PDF read back with poppler, the window
// opened from the sidebar, a plan made through the editor with its bar, its
// EVM figures and its elements lit from its row, the package sheet's
// rendering of its elements alone, and the schedule played on the scene.
#include "app/ui/VentanaPrincipal.h"
#include "federation/CentroNotificaciones.h"
#include "federation/ContentView.h"
#include "scene/Orientacion.h"
#include "timeline/EditorPaquete.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ui/DibujoGantt.h"
#include "timeline/ui/EditorPaqueteView.h"
#include "timeline/ui/FichaAWPView.h"
#include "timeline/ui/TimeLinerView.h"
#include "timeline/ui/VistaGantt.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSlider>
#include <QToolButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace teskal;

namespace {

const QDateTime t0(QDate(2025, 3, 3), QTime(8, 0), Qt::LocalTime);

// A plan of three areas, two CWPs each with two or three IWPs, budgets,
// man-hours, progress and a few actual dates, over about a year.
TimeLinerConfig planDemo() {
    TimeLinerConfig c = TimeLinerConfig::porDefecto(t0);
    int n = 0;
    const auto nuevo = [&](std::string codigo, std::string nombre, NivelAWP nivel, std::optional<std::string> padre,
                           int inicio, int dias) -> PaqueteAWP& {
        PaqueteAWP p;
        p.id = "ID-" + std::to_string(n);
        p.codigo = std::move(codigo);
        p.nombre = std::move(nombre);
        p.nivel = nivel;
        p.parentCodigo = std::move(padre);
        p.fechaInicio = t0.addDays(inicio).toUTC();
        p.fechaFin = t0.addDays(inicio + dias).toUTC();
        p.colorIdx = n++ % 8;
        c.paquetes.push_back(p);
        return c.paquetes.back();
    };
    const char* areas[] = {"Edificio principal", "Estacionamientos", "Urbanización"};
    for (int a = 0; a < 3; ++a) {
        const std::string cwa = "CWA-0" + std::to_string(a + 1);
        nuevo(cwa, areas[a], NivelAWP::cwa, {}, a * 60, 200);
        for (int b = 0; b < 2; ++b) {
            const std::string cwp = cwa + "-P" + std::to_string(b + 1);
            nuevo(cwp, b == 0 ? "Obra gruesa" : "Terminaciones", NivelAWP::cwp, cwa, a * 60 + b * 70, 120);
            for (int i = 0; i < 2 + (a + b) % 2; ++i) {
                PaqueteAWP& p = nuevo(cwp + "-I" + std::to_string(i + 1), "Frente " + std::to_string(i + 1),
                                      NivelAWP::iwp, cwp, a * 60 + b * 70 + i * 25, 40);
                p.presupuesto = 20000.0 * (1 + i + a);
                p.costoReal = p.presupuesto * (a == 0 ? 0.9 : 0.4);
                p.hh = 300.0 * (1 + b + i);
                p.hhReal = p.hh * 0.5;
                p.progreso = a == 0 ? 1.0 : a == 1 ? 0.4 * (2 - b) : 0;
                if (a == 0) p.fechaFinReal = p.fechaFin.addDays(i * 3 - 2);
                if (a == 1 && b == 0) p.fechaInicioReal = p.fechaInicio.addDays(4);
            }
        }
    }
    guardarPaquete(c, c.paquetes.front()); // spans the axis over the packages
    return c;
}

QString ejecutar(const QString& programa, const QStringList& argumentos) {
    QProcess p;
    p.start(programa, argumentos);
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
    return QString::fromUtf8(p.readAllStandardOutput());
}

// A box as twelve triangles, one material of its own.
std::shared_ptr<Node> caja(const std::string& nombre, glm::vec3 a, glm::vec3 b, Color color) {
    auto g = std::make_shared<Geometry>();
    g->name = nombre;
    for (int i = 0; i < 8; ++i)
        g->vertices.push_back({(i & 1) ? b.x : a.x, (i & 2) ? b.y : a.y, (i & 4) ? b.z : a.z});
    const int caras[6][4] = {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 4, 5, 1}, {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 5, 7, 3}};
    ElementoGeometria e;
    for (const auto& c : caras) e.indices.insert(e.indices.end(), {c[0], c[1], c[2], c[0], c[2], c[3]});
    g->elementos.push_back(e);
    auto m = std::make_shared<Material>();
    m->setDiffuse(color);
    g->materiales.push_back(m);
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

Color emision(const std::shared_ptr<Node>& n) { return n->geometry()->firstMaterial()->emission(); }

} // namespace

class PruebaTimeline : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void ganttPDF() {
        if (QStandardPaths::findExecutable(QStringLiteral("pdfinfo")).isEmpty())
            QSKIP("poppler-utils (pdfinfo, pdftotext) is not installed");
        QTemporaryDir dir;
        const TimeLinerConfig plan = planDemo();
        const ArbolAWP arbol(plan);
        const auto filas = filasCompletas(arbol);
        const struct {
            const char* nombre;
            TimeLinerConfig config;
            std::size_t filas;
        } casos[] = {{"plan.pdf", plan, filas.size()}, {"vacio.pdf", TimeLinerConfig::porDefecto(t0), 0}};
        for (const auto& k : casos) {
            const std::string ruta = dir.filePath(QString::fromLatin1(k.nombre)).toStdString();
            std::string error;
            const bool escrito = escribirGanttPDF(ArbolAWP(k.config), {false, t0.addDays(90)}, t0.addDays(120), ruta,
                                                  error);
            QCOMPARE(escrito, k.filas > 0);
            QVERIFY(error.empty());
            if (!escrito) {
                QVERIFY(!QFileInfo::exists(QString::fromStdString(ruta))); // no rows, no file
                continue;
            }
            // One page, 1200 points wide, as tall as every row and the bands.
            const QString info = ejecutar(QStringLiteral("pdfinfo"), {QString::fromStdString(ruta)});
            QVERIFY2(info.contains(QStringLiteral("Pages:           1")), qPrintable(info));
            const QString pagina =
                QStringLiteral("Page size:       1200 x %1 pts").arg(static_cast<int>(k.filas) * 22 + 88);
            QVERIFY2(info.contains(pagina), qPrintable(info));
            const QString texto = ejecutar(QStringLiteral("pdftotext"), {QString::fromStdString(ruta), "-"});
            QVERIFY(texto.contains(QStringLiteral("Diagrama Gantt AWP — TESKAL")));
            // A collapsed area on screen still has all its rows on paper.
            for (const PaqueteAWP& p : k.config.paquetes)
                QVERIFY2(texto.contains(QString::fromStdString(p.codigo)), p.codigo.c_str());
            QVERIFY(texto.contains(QStringLiteral("%1 paquetes").arg(k.config.paquetes.size())));
        }
        // A failed write reaches the error channel with the reason.
        ContentView cv("/no/hay");
        cv.timeLiner = plan;
        TimeLinerView vista(cv);
        QVERIFY(!vista.exportarGanttPDFA(dir.filePath(QStringLiteral("no/existe/gantt.pdf")).toStdString()));
        QVERIFY(cv.showError);
        QVERIFY2(cv.errorMessage->rfind("No se pudo escribir el PDF del Gantt: ", 0) == 0, cv.errorMessage->c_str());
        QVERIFY(cv.errorMessage->size() > 40);
    }

    void ventanaDesdeLaBarraLateral() {
        CentroNotificaciones centro;
        ContentView cv{"/no/hay"};
        VentanaPrincipal ventana{cv, centro};
        ventana.show();
        auto modelo = Node::crear();
        cv.scene.rootNode()->addChildNode(modelo);
        const auto muro = caja("Muro A", {0, 0, 0}, {1, 1, 1}, {1, 0, 0, 1});
        const auto losa = caja("Losa B", {2, 0, 0}, {3, 1, 1}, {0, 1, 0, 1});
        for (const auto& n : {muro, losa}) modelo->addChildNode(n);
        cv.propiedadesIFC["ARQ"]["Muro A"];
        cv.propiedadesIFC["EST"]["Losa B"];

        // The sidebar rebuilds its section after changes: the button is
        // looked up each time.
        const auto abrir = [&] {
            QPushButton* b = nullptr;
            QTRY_VERIFY((b = ventana.findChild<QPushButton*>(QStringLiteral("abrirTimeline"))) != nullptr);
            b->click();
        };
        abrir();
        abrir(); // one window at a time
        QCOMPARE(ventana.timeLinerWindows().size(), 1u);
        auto* vista = static_cast<TimeLinerView*>(ventana.timeLinerWindows().front().get());
        QCOMPARE(vista->windowTitle(), QStringLiteral("Timeline / Control de Obra — VORNEL"));
        QCOMPARE(vista->size(), QSize(1200, 720));
        QTRY_VERIFY(vista->isVisible());
        QCOMPARE(cv.timeline.fechaScrubber, cv.timeLiner.fechaInicio);

        // Through the editor: an area, then an IWP under it.
        const auto editar = [&](const QString& codigo, int nivel, int padre, const char* presupuesto,
                                const char* hh, int avance, const char* elemento) {
            vista->findChild<QPushButton*>(QStringLiteral("nuevoPaquete"))->click();
            EditorPaqueteView* editor = nullptr;
            QTRY_VERIFY((editor = vista->findChild<EditorPaqueteView*>()) != nullptr);
            QCOMPARE(editor->windowTitle(), QStringLiteral("Nuevo Paquete AWP"));
            QTest::keyClicks(editor->findChild<QLineEdit*>(QStringLiteral("codigo")), codigo);
            editor->findChild<QComboBox*>(QStringLiteral("nivel"))->setCurrentIndex(nivel);
            auto* guardar = editor->findChild<QPushButton*>(QStringLiteral("guardarPaquete"));
            if (padre >= 0) {
                QVERIFY(!guardar->isEnabled());
                QCOMPARE(editor->findChild<QLabel*>(QStringLiteral("errorValidacion"))->text(),
                         QStringLiteral("⚠ Selecciona un paquete padre"));
                auto* padres = editor->findChild<QComboBox*>(QStringLiteral("padre"));
                padres->setCurrentIndex(padre);
                emit padres->activated(padre);
            }
            if (presupuesto) {
                QTest::keyClicks(editor->findChild<CampoNumerico*>(QStringLiteral("presupuesto"))->campo(), presupuesto);
                QTest::keyClicks(editor->findChild<CampoNumerico*>(QStringLiteral("hh"))->campo(), hh);
                editor->findChild<QSlider*>(QStringLiteral("avance"))->setValue(avance);
            }
            if (elemento) {
                auto* arbol = editor->findChild<QTreeWidget*>(QStringLiteral("arbolElementos"));
                const auto items = arbol->findItems(QString::fromUtf8(elemento), Qt::MatchExactly | Qt::MatchRecursive);
                QCOMPARE(items.size(), 1);
                items.front()->setCheckState(0, Qt::Checked);
                QCOMPARE(editor->findChild<QLabel*>(QStringLiteral("cuentaElementos"))->text(),
                         QStringLiteral("1 elemento(s) asignado(s)"));
            }
            QVERIFY(guardar->isEnabled());
            guardar->click();
            QTRY_VERIFY(!vista->findChild<EditorPaqueteView*>());
        };
        editar(QStringLiteral("CWA-01"), 0, -1, nullptr, nullptr, 0, nullptr);
        editar(QStringLiteral("IWP-01"), 2, 1, "1000", "1500", 50, "Muro A");
        QCOMPARE(cv.timeLiner.paquetes.size(), 2u);
        const PaqueteAWP& iwp = cv.timeLiner.paquetes[1];
        QCOMPARE(iwp.parentCodigo, std::optional<std::string>("CWA-01"));
        QCOMPARE(iwp.presupuesto, 1000.0);
        QCOMPARE(iwp.elementosNombre, std::vector<std::string>{"Muro A"});

        // The EVM panel: EV is half the budget, the man-hours in thousands.
        const auto valor = [&](const char* tile) {
            return vista->findChild<QWidget*>(QString::fromLatin1(tile))->findChild<QLabel*>(QStringLiteral("valor"))->text();
        };
        QTRY_COMPARE(valor("tileBAC"), QString::fromStdString(textoMoneda(1000, "USD")));
        QCOMPARE(valor("tileEV"), QString::fromStdString(textoMoneda(500, "USD")));
        QCOMPARE(valor("tileHHPlan"), QStringLiteral("1.5 k HH"));
        QCOMPARE(valor("tileSPI"), QStringLiteral("0.50"));
        auto* resumen = ventana.findChild<QLabel*>(QStringLiteral("resumenTimeline"));
        QTRY_VERIFY(resumen);
        QCOMPARE(resumen->text(), QStringLiteral("1 CWA  ·  Avance: 50%"));

        // The area opens from its disclosure mark; the IWP's bar stands
        // where the geometry puts it, and its row lights its element.
        auto* gantt = vista->findChild<VistaGantt*>();
        QTest::mouseClick(gantt, Qt::LeftButton, {}, QPoint(10, 20 + 11));
        QTRY_VERIFY(cv.timeline.expandidosCWA.contains("CWA-01"));
        const ArbolAWP arbol(cv.timeLiner);
        const auto g = geometriaGantt(arbol, arbol.filas(cv.timeline.expandidosCWA), cv.timeline.expandidosCWA,
                                      cv.timeline.modoAvance(), QDateTime::currentDateTimeUtc(),
                                      medidasPantalla(gantt->width()));
        QCOMPARE(g.filas.size(), 2u);
        QTRY_VERIFY(gantt->height() >= 20 + 44);
        const QImage imagen = gantt->grab().toImage();
        const FilaGantt& fila = g.filas[1];
        const QPoint enBarra(static_cast<int>(fila.barra.x0 + 2), static_cast<int>(fila.y + 11));
        const QPoint fuera(enBarra.x(), static_cast<int>(fila.y + 22 * 3)); // below the last row
        QVERIFY(imagen.rect().contains(enBarra) && imagen.rect().contains(fuera));
        QVERIFY2(imagen.pixelColor(enBarra) != imagen.pixelColor(fuera),
                 qPrintable(imagen.pixelColor(enBarra).name()));
        QCOMPARE(imagen.pixelColor(enBarra).green() > imagen.pixelColor(enBarra).blue(), true); // orange, under way
        QTest::mouseClick(gantt, Qt::LeftButton, {}, QPoint(200, static_cast<int>(fila.y + 11)));
        QCOMPARE(cv.timeline.seleccionado, std::optional<std::string>(iwp.id));
        QCOMPARE(emision(muro), (Color{0.1f, 0.8f, 1.0f, 1.0f}));
        QCOMPARE(emision(losa), colores::negro);
        QTRY_VERIFY(vista->findChild<QPushButton*>(QStringLiteral("verFicha")));

        // "Auto %" reads the scrubber: past every finish everything is earned.
        cv.fijarFechaScrubber(cv.timeLiner.fechaFin.addDays(1));
        cv.fijarAutoAvance(true);
        QTRY_COMPARE(valor("tileEV"), QString::fromStdString(textoMoneda(1000, "USD")));

        vista->close();
        QVERIFY(cv.timeline.nodosDestacados.empty());
        QCOMPARE(emision(muro), colores::negro);
        abrir(); // a closed window gives way to a new one
        QCOMPARE(ventana.timeLinerWindows().size(), 1u);
        QVERIFY(ventana.timeLinerWindows().front().get() != vista);
        ventana.timeLinerWindows().front()->close();
    }

    void planGeneradoYFicha() {
        ContentView cv{"/no/hay"};
        cv.timeLiner = planDemo();
        ContentView::configurarLuces(cv.scene);
        auto modelo = Node::crear();
        cv.scene.rootNode()->addChildNode(modelo);
        const auto muro = caja("Muro A", {-6, -2, 0}, {-2, 2, 3}, {0.8f, 0.1f, 0.1f, 1});
        const auto losa = caja("Losa B", {2, -2, 0}, {6, 2, 3}, {0.1f, 0.8f, 0.1f, 1});
        for (const auto& n : {muro, losa}) modelo->addChildNode(n);
        auto camara = Node::crear("camara");
        camara->setCamera(Camera{45.0f, 0.1f, 100.0f, false, 1.0f});
        camara->setPosition({0, 0, 20});
        camara->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
        cv.viewport.vincularPuntoDeVista(camara);
        cv.timeLiner.paquetes[2].elementosNombre = {"Muro A"}; // the first IWP of CWA-01

        TimeLinerView vista(cv);
        vista.resize(1200, 720);
        vista.show();
        QVERIFY(QTest::qWaitForWindowExposed(&vista));

        // The sheet of the area: its rendering shows its IWP's wall and
        // hides the slab, and the scene keeps its opacities.
        const QImage imagen = renderFicha(cv, cv.timeLiner.paquetes[0]);
        if (imagen.isNull()) QSKIP("no OpenGL 3.3 context for the offscreen rendering");
        const QColor izquierda = imagen.pixelColor(imagen.width() / 4 + 10, imagen.height() / 2);
        const QColor derecha = imagen.pixelColor(imagen.width() * 3 / 4 - 10, imagen.height() / 2);
        QVERIFY2(izquierda.red() > 2 * izquierda.green(), qPrintable(izquierda.name()));
        QVERIFY2(derecha.green() < derecha.red() + 40, qPrintable(derecha.name()));
        QCOMPARE(std::pair(muro->opacity(), losa->opacity()), std::pair(1.0f, 1.0f));
        for (const PaqueteAWP& p : cv.timeLiner.paquetes)
            if (p.codigo == "CWA-03") QVERIFY(renderFicha(cv, p).isNull()); // no names, no image
        vista.abrirFichaAWP(cv.timeLiner.paquetes[0].id);
        FichaAWPView* ficha = nullptr;
        QTRY_VERIFY((ficha = vista.findChild<FichaAWPView*>()) != nullptr);
        QCOMPARE(ficha->findChild<QLabel*>(QStringLiteral("tituloFicha"))->text(),
                 QStringLiteral("Construction Work Area — CWA-01"));
        QVERIFY(ficha->findChild<QLabel*>(QStringLiteral("imagenRender")));
        ficha->accept();
    }

    // A generated model of three boxes seen from above, two of them in
    // packages: the scrubber at three dates shows them hidden, translucent
    // green and in their own colours, and closing during playback puts the
    // scene back.
    void reproduccion4D() {
        ContentView cv{"/no/hay"};
        ContentView::configurarLuces(cv.scene);
        auto modelo = Node::crear();
        cv.scene.rootNode()->addChildNode(modelo);
        const Color rojo{0.9f, 0.1f, 0.1f, 1}, azul{0.1f, 0.2f, 0.9f, 1}, gris{0.6f, 0.6f, 0.6f, 1};
        const auto muro = caja("Muro A", {-7, -2, 0}, {-3, 2, 3}, rojo);
        const auto losa = caja("Losa B", {-2, -2, 0}, {2, 2, 3}, azul);
        const auto viga = caja("Viga C", {3, -2, 0}, {7, 2, 3}, gris);
        for (const auto& n : {muro, losa, viga}) modelo->addChildNode(n);
        auto camara = Node::crear("camara");
        camara->setCamera(Camera{45.0f, 0.1f, 100.0f, false, 1.0f});
        camara->setPosition({0, 0, 20});
        camara->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
        cv.viewport.vincularPuntoDeVista(camara);
        cv.timeLiner = TimeLinerConfig::porDefecto(t0);
        cv.timeLiner.fechaFin = t0.addDays(100);
        PaqueteAWP i1 = PaqueteAWP::nuevo(t0.addDays(5)), i2 = PaqueteAWP::nuevo(t0.addDays(40));
        i1.codigo = "IWP-01";
        i1.elementosNombre = {"Muro A"};
        i2.codigo = "IWP-02";
        i2.elementosNombre = {"Losa B"};
        cv.timeLiner.paquetes = {i1, i2}; // each 30 days long

        RenderizadorImagenes r;
        if (!r.valido()) QSKIP("no OpenGL 3.3 context for the offscreen rendering");
        const QSize tamano(400, 300);
        const auto c = CamaraRender::desdeNodo(*camara, 400.0f / 300.0f);
        const auto pixel = [&](const QImage& img, glm::vec3 p) {
            const glm::vec4 clip = c.proyeccion * c.vista * glm::vec4(p, 1);
            return img.pixelColor(int((clip.x / clip.w * 0.5f + 0.5f) * 400), int((0.5f - clip.y / clip.w * 0.5f) * 300));
        };
        // What each box shows at its centre: 'f' the background (hidden), 'v'
        // translucent green, or its own colour: 'r' red, 'a' blue, 'g' grey.
        const auto clase = [](const QColor& p) {
            const int r = p.red(), g = p.green(), b = p.blue();
            if (g > r + 60 && g > b) return 'v';
            if (r > g + 80 && r > b + 80) return 'r';
            if (b > r + 80) return 'a';
            if (r > 150 && g > 140 && b > 150 && b > r + 8) return 'f';
            if (std::max({r, g, b}) - std::min({r, g, b}) < 20) return 'g';
            return '?';
        };
        const auto mirar = [&](const char* donde, const char* esperado) {
            const QImage img = r.renderizar(cv.scene, *camara, tamano);
            std::string visto;
            for (const glm::vec3 centro : {glm::vec3(-5, 0, 3), glm::vec3(0, 0, 3), glm::vec3(5, 0, 3)})
                visto += clase(pixel(img, centro));
            QVERIFY2(visto == esperado, qPrintable(QStringLiteral("%1: %2").arg(donde, QString::fromStdString(visto))));
        };

        TimeLinerView vista(cv);
        vista.resize(1200, 720);
        vista.show();
        QVERIFY(QTest::qWaitForWindowExposed(&vista));
        auto* estado = vista.findChild<QLabel*>(QStringLiteral("estadoSync4D"));
        // The first synchronisation comes a moment after opening: all pending.
        QTRY_COMPARE(estado->text(), QStringLiteral("🔵0 ✅0 ⬜2"));
        mirar("apertura", "ffg");
        auto* scrubber = vista.findChild<QSlider*>(QStringLiteral("scrubber"));
        scrubber->setValue(200); // day 20
        QCOMPARE(estado->text(), QStringLiteral("🔵0 ✅1 ⬜1"));
        mirar("día 20", "vfg");
        scrubber->setValue(500); // day 50
        QCOMPARE(estado->text(), QStringLiteral("🔵1 ✅1 ⬜0"));
        mirar("día 50", "rvg");
        for (int i = 0; i < 2; ++i) vista.findChild<QToolButton*>(QStringLiteral("avanzarScrubber"))->click();
        QCOMPARE(cv.timeline.fechaScrubber, cv.timeLiner.fechaFin); // held at the end
        QCOMPARE(estado->text(), QStringLiteral("🔵2 ✅0 ⬜0"));
        mirar("al final", "rag");

        // Play from the end starts again at the beginning; close while it runs.
        vista.findChild<QToolButton*>(QStringLiteral("reproducir"))->click();
        QVERIFY(cv.timeline.reproduciendo);
        QTRY_VERIFY(cv.timeline.fechaScrubber > t0.addDays(1));
        QVERIFY(cv.timeline.fechaScrubber < t0.addDays(30));
        QCOMPARE(muro->opacity() < 1.0f, true);
        vista.close();
        QVERIFY(!cv.timeline.reproduciendo);
        QTest::qWait(150); // a tick would have come by now
        for (const auto& [n, color] : {std::pair(muro, rojo), std::pair(losa, azul), std::pair(viga, gris)}) {
            QCOMPARE(n->opacity(), 1.0f);
            QCOMPARE(n->geometry()->firstMaterial()->diffuse(), std::optional<Color>(color));
        }
        mirar("cerrada", "rag");
    }
};

QTEST_MAIN(PruebaTimeline)
#include "test_ventana_timeline.moc"
