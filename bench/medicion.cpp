// Benchmark measure: one hover step of the measuring tools on the render
// benchmark's federation (108,000 elements, 2.1 million triangles) at
// 1280 x 800: the hit test under the mouse, the vertex snap over at most 8000
// vertices, and the snap ring and the rubber band with its label rebuilt in
// the scene. The frame's own drawing is not included. Before it, the PDF of
// the comment report for 100 comments with pictures.
//
// Usage: bench_medicion [--elementos N] [--posiciones N] [--posiciones-base N]
//
// The hover hits by a ray cast over the index of the elements' boxes
// (IndiceRayos, built once, the first hover's cost printed apart). The
// baseline hits as a click in selection does: the renderer's identity pass
// over every triangle, one pixel read, then the same snap and figures; its
// figures are built but not put in the scene, so that no structure change is
// charged to it. Both must find the same element at every baseline position.

#include "FederacionGenerada.h"
#include "ContextoGL.h"
#include "Medicion.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "viewport/markup/ui/PdfComentarios.h"
#include "viewport/medicion/IndiceRayos.h"
#include "viewport/medicion/Medicion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/render/RenderizadorEscena.h"
#include "viewport/ui/EtiquetasMedicion.h"

#include <QBuffer>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QPainter>
#include <QTemporaryDir>
#include <QUuid>
#include <cstdio>
#include <cstdlib>
#include <random>

using namespace teskal;
using namespace teskal::bench;

namespace {

constexpr int ancho = 1280, alto = 800;

[[noreturn]] void uso() {
    std::fprintf(stderr, "uso: bench_medicion [--elementos N] [--posiciones N] [--posiciones-base N]\n");
    std::exit(2);
}

double ms(double s) { return s * 1000.0; }

// A picture of a view with a drawing over it, as a comment keeps it.
QByteArray fotoComentario(int i) {
    QImage imagen(ancho, alto, QImage::Format_RGB32);
    QPainter p(&imagen);
    QLinearGradient g(0, 0, 0, alto);
    g.setColorAt(0, QColor::fromRgbF(0.93, 0.91, 0.97));
    g.setColorAt(1, QColor::fromRgbF(0.68, 0.64, 0.84));
    p.fillRect(imagen.rect(), g);
    p.setPen(QPen(QColor(200, 40, 40), 4));
    p.drawRect(100 + i, 120, 600, 400);
    p.drawLine(0, i * 7 % alto, ancho, alto - i * 5 % alto);
    p.end();
    QByteArray jpeg;
    QBuffer b(&jpeg);
    b.open(QIODevice::WriteOnly);
    imagen.save(&b, "JPEG", 85);
    return jpeg;
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000, posiciones = 200, posicionesBase = 12;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto entero = [&] { return i + 1 < argc ? std::max(1, std::atoi(argv[++i])) : (uso(), 0); };
        if (a == "--elementos")
            elementosPorModelo = entero();
        else if (a == "--posiciones")
            posiciones = entero();
        else if (a == "--posiciones-base")
            posicionesBase = entero();
        else
            uso();
    }
    QGuiApplication app(argc, argv);

    // The comment report's PDF: 100 comments with pictures.
    {
        std::vector<ComentarioMarkup> comentarios;
        for (int i = 0; i < 100; ++i) {
            ComentarioMarkup c;
            c.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
            c.tag = tagComentario(static_cast<std::size_t>(i) + 1);
            c.descripcion = "Revisión de la junta " + std::to_string(i + 1);
            c.autor = "Coordinación";
            c.fecha = QDateTime::currentDateTimeUtc();
            c.imagenJPEG = fotoComentario(i);
            c.trazados.push_back({"T", {{0, 0}, {10, 10}}, 1, 0, 0, 3});
            comentarios.push_back(std::move(c));
        }
        QTemporaryDir d;
        const QString ruta = d.filePath(QStringLiteral("comentarios.pdf"));
        Tiempos t;
        for (int r = 0; r < 3; ++r)
            t.anadir(cronometrar([&] {
                if (!exportarPDFComentarios(comentarios, ruta, QDateTime::currentDateTime())) {
                    std::fprintf(stderr, "measure: the PDF could not be written\n");
                    std::exit(1);
                }
            }));
        std::printf("pdf: 100 comments with 1280x800 pictures, %d pages, %.0f ms (median of 3, best %.0f), "
                    "%.1f MB\n",
                    101, ms(t.mediana()), ms(t.mejor()), megabytes(tamanoArchivo(ruta.toStdString())));
    }

    // The federation, through the workspace's own road for a converted model.
    auto cv = std::make_unique<ContentView>("/no/existe");
    ContentView::configurarLuces(cv->scene);
    Conteo conteo;
    construirFederacion(*cv, elementosPorModelo, conteo);
    std::printf("measure: %zu element nodes, %zu triangles\n", conteo.nodos, conteo.triangulos);
    auto camaraNodo = Node::crear("_TESKAL_Camara");
    camaraNodo->setCamera(Camera{60.0f, 0.1f, 1000.0f, false, 1.0f});
    cv->viewport.vincularPuntoDeVista(camaraNodo);
    cv->zoomExtents();
    cv->viewport.terminarAnimacion();
    const CamaraRender camara =
        CamaraRender::desdeNodo(*camaraNodo, static_cast<float>(ancho) / static_cast<float>(alto));
    const auto vistaEn = [&](glm::vec2 raton) {
        return VistaRaton{camara.proyeccion * camara.vista, camara.posicion, {ancho, alto}, raton};
    };

    // Distance mode with A placed: every hover rebuilds the ring and the band
    // with its label, painted as the window paints it.
    cv->medicion.pintorEtiquetas = pintarEtiquetaMedicion;
    cv->pulsarModoMedicion(ModoMedicion3D::distancia);
    std::mt19937 raton(7);
    std::uniform_real_distribution<float> ux(0, ancho), uy(0, alto);
    std::vector<glm::vec2> lugares;
    for (int i = 0; i < posiciones; ++i) lugares.push_back({ux(raton), uy(raton)});
    const Medida primera = cronometrar([&] { cv->clicMedicion(vistaEn({ancho / 2.0f, alto / 2.0f})); });
    std::printf("index: %zu elements, built by the first hit test in %.0f ms\n", cv->medicion.indice->elementos(),
                ms(primera.pared));

    Tiempos hover;
    int aciertos = 0, ajustes = 0;
    for (const glm::vec2& l : lugares) {
        hover.anadir(cronometrar([&] { cv->moverRatonMedicion(vistaEn(l)); }));
        aciertos += cv->medicion.nodoLineaPreview != nullptr;
        ajustes += cv->medicion.nodoSnapIndicador != nullptr;
    }
    std::printf("hover: %d positions, %d on a surface, %d snapped; median %.3f ms, best %.3f ms, CPU median "
                "%.3f ms\n",
                posiciones, aciertos, ajustes, ms(hover.mediana()), ms(hover.mejor()), ms(hover.medianaCPU()));

    // The baseline: the renderer's identity pass per hover.
    ContextoGL gl3;
    if (!gl3.crear("measure")) return 1;
    QOpenGLFramebufferObject fbo(QSize(ancho, alto), QOpenGLFramebufferObject::Depth);
    cv->quitarHoverMedicion();
    RenderizadorEscena render;
    render.elegir(cv->scene, camara, ancho, alto, 0, 0, true, fbo.handle()); // uploads the scene
    Tiempos base;
    int distintos = 0;
    for (int i = 0; i < posicionesBase && i < posiciones; ++i) {
        const glm::vec2 l = lugares[static_cast<std::size_t>(i)];
        std::optional<ResultadoPick> pick;
        base.anadir(cronometrar([&] {
            pick = render.elegir(cv->scene, camara, ancho, alto, static_cast<int>(l.x), static_cast<int>(l.y), true,
                                 fbo.handle());
            if (!pick) return;
            const VistaRaton v = vistaEn(l);
            const auto ajustado = ajustarVertice(*pick->nodo, v);
            const glm::vec3 p = ajustado.value_or(pick->punto);
            if (ajustado) figuraAnillo(p, radioAnillo(glm::length(p - v.posicionCamara)));
            figuraBandaElastica({}, cv->medicion.medicionPuntoA, p, v.posicionCamara, pintarEtiquetaMedicion);
        }));
        // Both find the same element under the pixel's centre.
        glm::vec3 o, d;
        rayoRaton(vistaEn({std::floor(l.x) + 0.5f, std::floor(l.y) + 0.5f}), o, d);
        const auto rayo = cv->medicion.indice->lanzar(o, d);
        distintos += (pick ? pick->nodo : nullptr) != (rayo ? rayo->nodo : nullptr);
    }
    std::printf("baseline: identity pass per hover over %d positions, median %.1f ms, best %.1f ms; %d of them "
                "found another element than the ray cast\n",
                static_cast<int>(base.pared.size()), ms(base.mediana()), ms(base.mejor()), distintos);
    imprimirFigura("measure", ms(hover.mediana()), "ms", base.mediana() / hover.mediana(), "id-pass-per-hover");
    return 0;
}
