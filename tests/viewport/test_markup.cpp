// Markup comments on the workspace, headless: the canvas's pointer rules, the
// panel's commands, saving and numbering, the detail and the deletion.
#include "federation/ContentView.h"
#include "viewport/markup/LienzoMarkup.h"

#include <gtest/gtest.h>

using namespace teskal;

TEST(Markup, ElLienzoConElPuntero) {
    std::vector<TrazadoMarkup> trazados;
    std::vector<TextoMarkup> textos;
    LienzoMarkup l;
    l.onNuevoTrazado = [&](TrazadoMarkup t) { trazados.push_back(std::move(t)); };
    l.onNuevoTexto = [&](TextoMarkup t) { textos.push_back(std::move(t)); };
    l.colorR = 0.1, l.colorG = 0.9, l.colorB = 0.3, l.grosor = 5;

    // A click without a drag: a stroke of one point, kept but not drawn.
    l.pulsar({10, 20});
    l.soltar();
    ASSERT_EQ(trazados.size(), 1u);
    EXPECT_EQ(trazados[0].puntos.size(), 1u);
    EXPECT_FALSE(trazadoDibujable(trazados[0]));
    EXPECT_FALSE(l.trazadoActual);
    // A drag: every point, in the colour and width of the moment.
    l.pulsar({0, 0});
    l.arrastrar({5, 5});
    l.arrastrar({9, 1});
    l.soltar();
    ASSERT_EQ(trazados.size(), 2u);
    EXPECT_EQ(trazados[1].puntos, (std::vector<PuntoMarkup>{{0, 0}, {5, 5}, {9, 1}}));
    EXPECT_TRUE(trazadoDibujable(trazados[1]));
    EXPECT_EQ(trazados[1].grosor, 5);
    EXPECT_EQ(trazados[1].g, 0.9);
    EXPECT_NE(trazados[0].id, trazados[1].id);

    // Text mode with an empty text: a click does nothing at all.
    l.modoTexto = true;
    l.pulsar({30, 40});
    l.arrastrar({31, 41});
    l.soltar();
    EXPECT_TRUE(textos.empty());
    EXPECT_EQ(trazados.size(), 2u);
    l.textoPendiente = "Fisura";
    l.pulsar({30, 40});
    ASSERT_EQ(textos.size(), 1u);
    EXPECT_EQ(textos[0].texto, "Fisura");
    EXPECT_EQ(textos[0].x, 30);
    EXPECT_EQ(textos[0].tamano, 16);
    EXPECT_EQ(textos[0].b, 0.3);
}

TEST(Markup, GuardarNumerarYEliminar) {
    ContentView cv{"/no/hay"};
    auto& m = cv.markup;
    EXPECT_EQ(tagComentario(1), "MRK-001");
    EXPECT_EQ(tagComentario(1001), "MRK-1001");

    // The panel: a colour in text mode goes back to drawing.
    cv.nuevoComentario();
    EXPECT_TRUE(m.modoMarkup);
    cv.fijarModoTextoMarkup(true);
    cv.elegirColorMarkup(2);
    EXPECT_FALSE(m.markupModoTexto);
    EXPECT_EQ(m.markupColorIdx, 2);
    cv.agregarTrazado({"T1", {{0, 0}, {1, 1}}, 0.1, 0.9, 0.3, 3});
    cv.agregarTexto({"X1", "Nota", 5, 5, 1, 1, 1, 16});
    cv.limpiarAnotaciones();
    EXPECT_TRUE(m.trazadosActivos.empty() && m.textosActivos.empty());

    // Saved with nothing drawn and no capture: a comment without a picture.
    m.markupAutor = "Ana Pérez";
    m.markupDescripcion = "Revisar junta";
    const auto cambios = cv.cambios;
    cv.guardarComentario();
    ASSERT_EQ(m.comentarios.size(), 1u);
    const ComentarioMarkup& c = m.comentarios[0];
    EXPECT_EQ(c.tag, "MRK-001");
    EXPECT_EQ(c.autor, "Ana Pérez");
    EXPECT_EQ(c.descripcion, "Revisar junta");
    EXPECT_FALSE(c.imagenJPEG);
    EXPECT_TRUE(c.fecha.isValid());
    EXPECT_FALSE(m.modoMarkup);
    EXPECT_TRUE(m.markupDescripcion.empty());
    EXPECT_EQ(m.markupAutor, "Ana Pérez"); // kept for the next comment
    EXPECT_GT(cv.cambios, cambios);

    // The drawing and the capture travel with the comment; 1000 before give MRK-1001.
    m.comentarios.resize(1000);
    cv.nuevoComentario();
    cv.agregarTrazado({"T2", {{0, 0}, {1, 1}}, 1, 0, 0, 3});
    m.capturarVista = [] { return std::optional<QByteArray>(QByteArray("\xFF\xD8jpeg", 6)); };
    cv.guardarComentario();
    EXPECT_EQ(m.comentarios.back().tag, "MRK-1001");
    EXPECT_EQ(m.comentarios.back().trazados.size(), 1u);
    EXPECT_EQ(m.comentarios.back().imagenJPEG, QByteArray("\xFF\xD8jpeg", 6));

    // The detail, then a deletion asked, cancelled, asked again and confirmed.
    const std::string id = m.comentarios.back().id;
    cv.abrirDetalleComentario(id);
    ASSERT_TRUE(m.detalleComentario);
    EXPECT_EQ(m.detalleComentario->tag, "MRK-1001");
    cv.cerrarDetalleComentario();
    EXPECT_FALSE(m.detalleComentario);
    cv.pedirEliminarComentario(id);
    cv.cancelarEliminarComentario();
    EXPECT_EQ(m.comentarios.size(), 1001u);
    cv.pedirEliminarComentario(id);
    cv.confirmarEliminarComentario();
    EXPECT_EQ(m.comentarios.size(), 1000u);
    EXPECT_FALSE(m.comentarioPendElim);
    // A deletion then an addition may repeat a tag; that is accepted.
    cv.nuevoComentario();
    cv.guardarComentario();
    EXPECT_EQ(m.comentarios.back().tag, "MRK-1001");
}
