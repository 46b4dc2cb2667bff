// The sheet's state under the mouse, the wheel and Esc: zoom and its limits,
// fit, snapping, the dimension tool, labels, selection and deletion.
#include "escena_prueba.h"
#include "sections/HojaSeccion.h"

#include <gtest/gtest.h>

using namespace teskal;
using teskal::pruebas::etiqueta;

namespace {

// Fixed text sizes: every label block 60 by 39 pixels, every dimension text
// 30 by 10.
class MedidasFijas : public MedidasTexto {
public:
    glm::dvec2 bloqueEtiqueta(const Etiqueta2D&) const override { return {60, 39}; }
    glm::dvec2 textoCota(const std::string&, double) const override { return {30, 10}; }
};
const MedidasFijas medidas;

Segmento2D corte(glm::vec2 a, glm::vec2 b, const char* nombre = "Muro") {
    return {a, b, "ARQ", {}, true, nombre};
}

// A view of 800 by 600 at 100 pixels per metre: the sheet origin at (400, 300).
EstadoHoja hoja() {
    EstadoHoja h;
    h.ancho = 800;
    h.alto = 600;
    h.segmentos = {corte({0, 0}, {2, 0}), corte({2, 0}, {2, 1}), {{-1, -1}, {-1, 3}, "ARQ", {}, false, {}}};
    return h;
}

} // namespace

TEST(HojaSeccion, zoomYSusLimites) {
    struct Caso {
        double escala, delta, esperada;
    };
    const Caso casos[] = {{100, 120, 115},    {100, -120, 100 / 1.15}, {3990, 120, 4000},
                          {4000, 120, 4000},  {4.2, -120, 4},          {4, -120, 4},
                          {100, 0, 100},      {9000, 120, 4000}, // a fit beyond the limit comes back at the next step
                          {2, -120, 4}};
    for (const Caso& c : casos) {
        SCOPED_TRACE(std::to_string(c.escala) + " " + std::to_string(c.delta));
        EstadoHoja h = hoja();
        h.escala = c.escala;
        h.panOffset = {13, -7};
        const glm::dvec2 raton{250, 420};
        const glm::dvec2 bajo = h.aHoja(raton);
        h.zoom(c.delta, raton);
        EXPECT_NEAR(h.escala, c.esperada, 1e-9);
        if (c.esperada == c.escala) {
            EXPECT_EQ(h.panOffset, glm::dvec2(13, -7)); // nothing moved
        } else {
            EXPECT_NEAR(h.aVista(glm::vec2(bajo)).x, raton.x, 1e-3); // the point under the mouse stays
            EXPECT_NEAR(h.aVista(glm::vec2(bajo)).y, raton.y, 1e-3);
        }
    }
}

TEST(HojaSeccion, encuadrar) {
    EstadoHoja h = hoja();
    h.segmentosGrilla = {{{-100, -100}, {100, 100}, "GRILLA", {}, false, "A"}}; // the grid does not count
    h.encuadrar();
    // Lines from (-1, -1) to (2, 3): 3 by 4 metres into 700 by 500 pixels.
    EXPECT_DOUBLE_EQ(h.escala, 125.0);
    EXPECT_DOUBLE_EQ(h.panOffset.x, -0.5 * 125.0);
    EXPECT_DOUBLE_EQ(h.panOffset.y, 1.0 * 125.0);

    // No width, no lines or no room: nothing changes.
    EstadoHoja sinAncho = hoja(), sinLineas = hoja(), sinSitio = hoja();
    sinAncho.segmentos = {corte({1, 0}, {1, 5}), corte({1, 2}, {1, 9})};
    sinLineas.segmentos.clear();
    sinSitio.ancho = 10;
    for (EstadoHoja d : {sinAncho, sinLineas, sinSitio}) {
        d.encuadrar();
        EXPECT_EQ(d.escala, 100.0) << d.ancho << " " << d.segmentos.size();
        EXPECT_EQ(d.panOffset, glm::dvec2(0)) << d.ancho << " " << d.segmentos.size();
    }
    // A tiny sheet fits beyond the zoom limit.
    EstadoHoja diminuta = hoja();
    diminuta.segmentos = {corte({0, 0}, {0.01f, 0.01f})};
    diminuta.encuadrar();
    EXPECT_GT(diminuta.escala, 4000.0);
}

TEST(HojaSeccion, ajusteAExtremosYLineas) {
    // The end (2, 0) of the two cut lines is at (600, 300); the seen line at x = 300.
    struct Caso {
        const char* nombre;
        glm::dvec2 raton;
        std::optional<glm::vec2> esperado;
    };
    const Caso casos[] = {
        {"extremo a menos de 7.5 px", {605, 304}, glm::vec2(2, 0)},
        {"sobre la línea, lejos de los extremos", {500, 310}, glm::vec2(1, 0)},
        {"a 14 px de la línea", {500, 314}, glm::vec2(1, 0)},
        {"a 16 px de todo", {500, 316}, std::nullopt},
        {"las líneas vistas no atraen", {302, 250}, std::nullopt},
    };
    const EstadoHoja h = hoja();
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const auto p = h.ajustarAPunto(c.raton);
        ASSERT_EQ(p.has_value(), c.esperado.has_value());
        if (p) {
            EXPECT_NEAR(p->x, c.esperado->x, 1e-6);
            EXPECT_NEAR(p->y, c.esperado->y, 1e-6);
        }
    }
}

TEST(HojaSeccion, herramientaDeCotas) {
    EstadoHoja h = hoja();
    h.modoCota = true;
    h.etiquetas = {etiqueta("E1", {1, 0}, {1.5f, 0}, "Muro", true, "ARQ")};
    // Two clicks give a dimension between the snapped points (an end wins
    // where the projection on its line falls on it).
    h.pulsar({397, 303}, 1, medidas);
    ASSERT_TRUE(h.cotaP1Preview);
    h.pulsar({598, 200}, 1, medidas);
    ASSERT_EQ(h.cotas.size(), 1u);
    EXPECT_EQ(h.cotas[0].p1, glm::vec2(0, 0));
    EXPECT_EQ(h.cotas[0].p2, glm::vec2(2, 1));
    EXPECT_EQ(h.cotas[0].offsetLateral, 0.6f);
    EXPECT_FALSE(h.cotaP1Preview);
    // A double click is two clicks of the tool: the second cancels, no fit.
    h.pulsar({100, 100}, 1, medidas);
    h.pulsar({100, 100}, 2, medidas);
    EXPECT_EQ(h.cotas.size(), 1u);
    EXPECT_FALSE(h.cotaP1Preview);
    EXPECT_EQ(h.escala, 100.0);
    // A click on a label with the tool on starts a dimension, it selects nothing.
    h.pulsar(h.aVista({2.5f, 0}), 1, medidas);
    EXPECT_TRUE(h.cotaP1Preview);
    EXPECT_FALSE(h.etiquetaSeleccionadaId);
    EXPECT_FALSE(h.draggedLabelId);
    // Esc drops the first point.
    h.escape();
    EXPECT_FALSE(h.cotaP1Preview);
}

TEST(HojaSeccion, arrastrarSeleccionarYBorrarCotas) {
    EstadoHoja h = hoja();
    h.cotas = {{"C1", {0, 0}, {2, 0}, 0.6f}};
    // The line drawn at 0.6 m on the normal (0, -1): y = 360 on the screen.
    const GeometriaCota g = h.geometriaCota(h.cotas[0], medidas);
    EXPECT_NEAR(g.linea1.x, 400, 1e-9);
    EXPECT_NEAR(g.linea1.y, 360, 1e-3);
    h.pulsar({500, 365}, 1, medidas);
    EXPECT_EQ(h.cotaDragId, "C1");
    // Dragging towards the measured line never brings it below 0.1 m.
    for (const auto [y, lateral] : {std::pair{340.0, 0.35f}, {250.0, 0.1f}}) {
        h.arrastrar({500, y});
        EXPECT_NEAR(h.cotas[0].offsetLateral, lateral, 1e-6) << y;
    }
    h.soltar();
    EXPECT_FALSE(h.cotaSeleccionadaId); // a drag does not select
    // A plain click selects; the × deletes.
    h.pulsar({500, h.geometriaCota(h.cotas[0], medidas).linea1.y}, 1, medidas);
    h.soltar();
    ASSERT_EQ(h.cotaSeleccionadaId, "C1");
    h.pulsar(h.geometriaCota(h.cotas[0], medidas).centroBorrar + glm::dvec2(6, -6), 1, medidas);
    EXPECT_TRUE(h.cotas.empty());
    EXPECT_FALSE(h.cotaSeleccionadaId);
}

TEST(HojaSeccion, etiquetasColocarArrastrarYOcultar) {
    EstadoHoja h = hoja();
    h.etiquetas = {etiqueta("E1", {1, 0}, {-4, 0}, "Muro", false, "ARQ"), etiqueta("E2", {1, 0}, {0, 0}, "Muro", false, "EST")};
    h.modoEtiquetar = true;
    // Far from any named cut line: nothing.
    EXPECT_FALSE(h.pulsar({100, 100}, 1, medidas));
    // On the wall's line: its label (same name and key) gets its text at the click.
    h.pulsar({450, 305}, 1, medidas);
    EXPECT_TRUE(h.etiquetas[0].visible);
    EXPECT_FALSE(h.etiquetas[1].visible);
    EXPECT_NEAR(h.etiquetas[0].offsetTexto.x, -0.5f - 0.8f, 1e-6);
    EXPECT_NEAR(h.etiquetas[0].offsetTexto.y, -0.05f, 1e-6);
    // Visible already: a second pick keeps its place.
    const glm::vec2 lugar = h.etiquetas[0].offsetTexto;
    h.pulsar({560, 302}, 1, medidas);
    EXPECT_EQ(h.etiquetas[0].offsetTexto, lugar);

    // Without the tool: a click on the box picks it up; a drag moves it and
    // does not select; a plain click selects; the × hides it.
    h.modoEtiquetar = false;
    const glm::dvec2 texto = h.geometriaEtiqueta(h.etiquetas[0], medidas).texto;
    h.pulsar(texto + glm::dvec2(5, 0), 1, medidas);
    EXPECT_EQ(h.draggedLabelId, "E1");
    h.arrastrar(texto + glm::dvec2(25, -10));
    h.soltar();
    EXPECT_NEAR(h.etiquetas[0].offsetTexto.x, lugar.x + 0.2f, 1e-5);
    EXPECT_NEAR(h.etiquetas[0].offsetTexto.y, lugar.y + 0.1f, 1e-5);
    EXPECT_FALSE(h.etiquetaSeleccionadaId);
    const GeometriaEtiqueta g = h.geometriaEtiqueta(h.etiquetas[0], medidas);
    h.pulsar(g.codo, 1, medidas); // the leader's outer end also takes the label
    h.soltar();
    ASSERT_EQ(h.etiquetaSeleccionadaId, "E1");
    h.pulsar(h.geometriaEtiqueta(h.etiquetas[0], medidas).centroOcultar, 1, medidas);
    EXPECT_FALSE(h.etiquetas[0].visible);
    EXPECT_FALSE(h.etiquetaSeleccionadaId);
    // Picked again with the tool, it gets a new place from the click.
    h.modoEtiquetar = true;
    h.pulsar({550, 300}, 1, medidas);
    EXPECT_NEAR(h.etiquetas[0].offsetTexto.x, 0.5f + 0.8f, 1e-6);
}

TEST(HojaSeccion, panYDobleClic) {
    EstadoHoja h = hoja();
    h.pulsar({100, 100}, 1, medidas);
    h.arrastrar({130, 90});
    h.arrastrar({140, 95});
    h.soltar();
    EXPECT_EQ(h.panOffset, glm::dvec2(40, -5));
    EXPECT_FALSE(h.arrastrar({200, 200})); // released: no pan
    h.pulsar({100, 100}, 2, medidas);
    EXPECT_DOUBLE_EQ(h.escala, 125.0);
}
