// The renderer on real OpenGL (Mesa under Xvfb): a known scene drawn
// offscreen, checked pixel by pixel, and picking by the identity pass.
#include "federation/ContentView.h"
#include "scene/Orientacion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QGuiApplication>
#include <QtTest>

using namespace teskal;

namespace {

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

// A workspace with four 2 m boxes in a row along X on the floor: red, a hidden
// green one, an invisible blue one (opacity 0) and a grey one that glows.
struct EscenaConocida {
    ContentView cv{"/no/hay"};
    std::shared_ptr<Node> rojo, oculto, invisible, brillante, camara;
    QSize tamano{400, 300};

    EscenaConocida() {
        ContentView::configurarLuces(cv.scene);
        auto esp = Node::crear("esp_ARQ");
        auto modelo = Node::crear();
        cv.scene.rootNode()->addChildNode(esp);
        esp->addChildNode(modelo);
        rojo = caja("Muro rojo", {-7, -1, 0}, {-5, 1, 2}, {1, 0, 0, 1});
        oculto = caja("Oculto", {-3, -1, 0}, {-1, 1, 2}, {0, 1, 0, 1});
        invisible = caja("Invisible", {1, -1, 0}, {3, 1, 2}, {0, 0, 1, 1});
        brillante = caja("Brillante", {5, -1, 0}, {7, 1, 2}, {0.2f, 0.2f, 0.2f, 1});
        for (auto& n : {rojo, oculto, invisible, brillante}) modelo->addChildNode(n);
        oculto->setHidden(true);
        invisible->setOpacity(0.0f);
        brillante->geometry()->firstMaterial()->setEmission({0, 0.8f, 0, 1});
        cv.actualizarPiso();
        // Straight down from 20 m, +Y up on the image.
        camara = Node::crear("camara");
        camara->setCamera(Camera{45.0f, 0.1f, 100.0f, false, 1.0f});
        camara->setPosition({0, 0, 20});
        camara->setEulerAngles(eulerMirandoA({0, 0, -1}, {0, 1, 0}));
    }

    // The pixel (from the top left) where a world point lands.
    QPoint pixel(glm::vec3 p) const {
        const auto c = CamaraRender::desdeNodo(*camara, float(tamano.width()) / tamano.height());
        const glm::vec4 clip = c.proyeccion * c.vista * glm::vec4(p, 1);
        const glm::vec3 ndc = glm::vec3(clip) / clip.w;
        return {int((ndc.x * 0.5f + 0.5f) * tamano.width()), int((0.5f - ndc.y * 0.5f) * tamano.height())};
    }
};

bool esRojo(QRgb c) { return qRed(c) > 150 && qGreen(c) < 60 && qBlue(c) < 60; }

} // namespace

class PruebaRender : public QObject {
    Q_OBJECT
private slots:
    void escenaConocidaPixelAPixel() {
        EscenaConocida e;
        RenderizadorImagenes r;
        QVERIFY(r.valido());
        const QImage img = r.renderizar(e.cv.scene, *e.camara, e.tamano);
        QCOMPARE(img.size(), e.tamano);
        // The red box where it should be, lit from above.
        QVERIFY2(esRojo(img.pixel(e.pixel({-6, 0, 2}))), qPrintable(QString::number(img.pixel(e.pixel({-6, 0, 2})), 16)));
        // The hidden box and the one at opacity 0 are absent: the floor shows.
        const QRgb pisoVisto = img.pixel(e.pixel({0, 4, 0}));
        for (glm::vec3 p : {glm::vec3(-2, 0, 2), glm::vec3(2, 0, 2)}) {
            const QRgb c = img.pixel(e.pixel(p));
            QVERIFY2(qGreen(c) < 200 && qBlue(c) < qBlue(pisoVisto) + 40, qPrintable(QString::number(c, 16)));
            QVERIFY(std::abs(qRed(c) - qRed(pisoVisto)) < 40);
        }
        // Emission lights the dark grey box green.
        const QRgb b = img.pixel(e.pixel({6, 0, 2}));
        QVERIFY2(qGreen(b) > qRed(b) + 100, qPrintable(QString::number(b, 16)));
        // Colour changes go through the appearance counter alone.
        const auto estructura = r.estadisticas().lotes;
        e.rojo->geometry()->firstMaterial()->setDiffuse({0, 0, 1, 1});
        const QImage azul = r.renderizar(e.cv.scene, *e.camara, e.tamano);
        QVERIFY(qBlue(azul.pixel(e.pixel({-6, 0, 2}))) > 150);
        QCOMPARE(r.estadisticas().lotes, estructura);
        QCOMPARE(r.estadosReescritos(), 4u); // a material's change is not tied to one node
        // An element's own look rewrites its state alone, in its place; a
        // model root's reaches all its elements.
        const struct {
            std::shared_ptr<Node> nodo;
            float opacidad;
            std::size_t reescritos;
            bool rojoVisible, brillanteVisible;
        } pasos[] = {{e.brillante, 0.0f, 1, true, false}, {e.brillante, 1.0f, 1, true, true},
                     {e.rojo->parent(), 0.0f, 4, false, false}, {e.rojo->parent(), 1.0f, 4, true, true}};
        e.rojo->geometry()->firstMaterial()->setDiffuse({1, 0, 0, 1});
        r.renderizar(e.cv.scene, *e.camara, e.tamano);
        for (const auto& p : pasos) {
            p.nodo->setOpacity(p.opacidad);
            const QImage img = r.renderizar(e.cv.scene, *e.camara, e.tamano);
            QCOMPARE(r.estadosReescritos(), p.reescritos);
            QCOMPARE(esRojo(img.pixel(e.pixel({-6, 0, 2}))), p.rojoVisible);
            QCOMPARE(qGreen(img.pixel(e.pixel({6, 0, 2}))) > 100, p.brillanteVisible);
        }
        e.brillante->setDiffusePropio({Color{0, 0, 1, 1}, nullptr});
        QVERIFY(qBlue(r.renderizar(e.cv.scene, *e.camara, e.tamano).pixel(e.pixel({6, 0, 2}))) > 150);
        QCOMPARE(r.estadosReescritos(), 1u);
        // One batch for the four elements: a handful of calls, not one per node.
        QCOMPARE(r.estadisticas().lotes, 1);
        QVERIFY(r.estadisticas().llamadasDibujo <= 8);
    }

    void eleccionPorPixel() {
        EscenaConocida e;
        RenderizadorImagenes r;
        QVERIFY(r.valido());
        // The top face of the red box: the node and the point within a millimetre.
        const glm::vec3 objetivo(-6.2f, 0.3f, 2.0f);
        auto hit = r.elegir(e.cv.scene, *e.camara, e.tamano, e.pixel(objetivo), false);
        QVERIFY(hit);
        QCOMPARE(hit->nodo, e.rojo);
        QVERIFY2(std::abs(hit->punto.z - 2.0f) < 0.001f, qPrintable(QString::number(hit->punto.z)));
        QVERIFY(glm::length(glm::vec2(hit->punto) - glm::vec2(objetivo)) < 0.05f);
        // Hidden and invisible boxes are not hit; the floor only when asked.
        QVERIFY(!r.elegir(e.cv.scene, *e.camara, e.tamano, e.pixel({-2, 0, 2}), false));
        QVERIFY(!r.elegir(e.cv.scene, *e.camara, e.tamano, e.pixel({2, 0, 2}), false));
        auto piso = r.elegir(e.cv.scene, *e.camara, e.tamano, e.pixel({2, 0, 2}), true);
        QVERIFY(piso);
        QCOMPARE(*piso->nodo->name(), std::string("_TESKAL_Piso"));
        QVERIFY(std::abs(piso->punto.z + 0.01f) < 0.001f);
    }
};

QTEST_MAIN(PruebaRender)
#include "test_render.moc"
