// Benchmark report: the thumbnails of a clash report over an analysis of 500
// clashes, rendered the way the report window renders them, against a fresh
// offscreen renderer per thumbnail.
//
// Usage: bench_report [--interferencias N] [--base N]
//
// The models are built in memory, without IFC or converter: "ARQ" holds N
// walls with a door opening each (boxes of 36 triangles), "MEP" N round pipes
// of 16 sides (64 triangles), each pipe running through one wall. Walls stand
// 6 m apart on a grid, so that the clash search (the workspace's own) finds
// exactly one clash per wall. The elements live in a workspace scene (root,
// "esp_" + key, model root, elements) and the analysis is restored-style too:
// one pass with live nodes, one with empty placeholders whose elements are
// found by name in the live scene, as after opening a project.
//
// Timed: renderThumbnails over the whole analysis with one RenderizadorImagenes
// (460 x 310, 4 samples), as the window does, and the same per clash with a
// new renderer (its own GL context and shaders) for each of the first
// --base thumbnails (50 by default). Both must give the same pixels: the
// benchmark compares them and stops if they differ. Every thumbnail must show
// red and blue. Then the BCF archive of the analysis with those thumbnails
// (BCFExporter::escribirArchivo: texts, snapshots and /usr/bin/zip), best and
// median of three, in ms.

#include "Medicion.h"
#include "analyses/bcf/BCFExporter.h"
#include "analyses/clash/BusquedaInterferencias.h"
#include "analyses/clash/ui/ThumbnailInterferencia.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>
#include <cmath>
#include <cstring>
#include <glm/gtc/constants.hpp>

using namespace teskal;
using namespace teskal::bench;

namespace {

struct Generado {
    Scene escena;
    std::vector<NodoBB> candidatos;
};

std::shared_ptr<Node> nodoConGeometria(const std::string& nombre, std::vector<glm::vec3> vertices,
                                       std::vector<std::int32_t> indices) {
    auto g = std::make_shared<Geometry>();
    g->vertices = std::move(vertices);
    g->elementos.push_back({Primitiva::Triangulos, std::move(indices)});
    auto m = std::make_shared<Material>();
    m->setDiffuse({0.8f, 0.8f, 0.8f, 1});
    g->materiales.push_back(m);
    auto n = Node::crear(nombre);
    n->setGeometry(g);
    return n;
}

// A box's 12 triangles into the lists.
void anadirCaja(std::vector<glm::vec3>& v, std::vector<std::int32_t>& ix, glm::vec3 a,
                glm::vec3 b) {
    const auto base = static_cast<std::int32_t>(v.size());
    for (int i = 0; i < 8; ++i)
        v.push_back({(i & 1) ? b.x : a.x, (i & 2) ? b.y : a.y, (i & 4) ? b.z : a.z});
    const int caras[6][4] = {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 4, 5, 1},
                             {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 5, 7, 3}};
    for (const auto& c : caras)
        for (int k : {c[0], c[1], c[2], c[0], c[2], c[3]}) ix.push_back(base + k);
}

Generado generar(int n) {
    Generado g;
    auto arq = Node::crear("esp_ARQ"), mep = Node::crear("esp_MEP");
    auto modeloArq = Node::crear(), modeloMep = Node::crear();
    g.escena.rootNode()->addChildNode(arq);
    g.escena.rootNode()->addChildNode(mep);
    arq->addChildNode(modeloArq);
    mep->addChildNode(modeloMep);
    const int lado = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(n))));
    for (int k = 0; k < n; ++k) {
        const float x0 = static_cast<float>(k % lado) * 6.0f,
                    y0 = static_cast<float>(k / lado) * 6.0f;
        // A wall 4 m long, 0.2 m thick, 2.8 m high, with a 1 m door: three boxes.
        std::vector<glm::vec3> v;
        std::vector<std::int32_t> ix;
        anadirCaja(v, ix, {x0, y0, 0}, {x0 + 1.5f, y0 + 0.2f, 2.8f});
        anadirCaja(v, ix, {x0 + 2.5f, y0, 0}, {x0 + 4, y0 + 0.2f, 2.8f});
        anadirCaja(v, ix, {x0 + 1.5f, y0, 2.1f}, {x0 + 2.5f, y0 + 0.2f, 2.8f});
        modeloArq->addChildNode(
            nodoConGeometria("Muro " + std::to_string(k + 1), std::move(v), std::move(ix)));

        // A pipe of 0.15 m radius along Y, through the wall at x0 + 0.8, z 1.6.
        v.clear();
        ix.clear();
        const int lados = 16;
        for (int s = 0; s < lados; ++s) {
            const float a = glm::two_pi<float>() * static_cast<float>(s) / lados;
            const float cx = x0 + 0.8f + 0.15f * std::cos(a), cz = 1.6f + 0.15f * std::sin(a);
            v.push_back({cx, y0 - 1.5f, cz});
            v.push_back({cx, y0 + 1.7f, cz});
        }
        v.push_back({x0 + 0.8f, y0 - 1.5f, 1.6f});
        v.push_back({x0 + 0.8f, y0 + 1.7f, 1.6f});
        const std::int32_t c0 = 2 * lados, c1 = 2 * lados + 1;
        for (int s = 0; s < lados; ++s) {
            const std::int32_t a0 = 2 * s, a1 = 2 * s + 1, b0 = 2 * ((s + 1) % lados), b1 = b0 + 1;
            ix.insert(ix.end(), {a0, b0, b1, a0, b1, a1, c0, b0, a0, c1, a1, b1});
        }
        modeloMep->addChildNode(
            nodoConGeometria("Tubo " + std::to_string(k + 1), std::move(v), std::move(ix)));
    }
    for (const auto& [modelo, clave] : {std::pair{modeloArq, "ARQ"}, std::pair{modeloMep, "MEP"}})
        for (const auto& e : modelo->childNodes()) {
            const Box b = e->boundingBox();
            g.candidatos.push_back({e, clave, *e->name(), e->globalId(), glm::dvec3(b.min), glm::dvec3(b.max)});
        }
    return g;
}

bool tieneRojoYAzul(const QImage& img) {
    bool rojo = false, azul = false;
    for (int y = 0; y < img.height() && !(rojo && azul); y += 2)
        for (int x = 0; x < img.width(); x += 2) {
            const QRgb c = img.pixel(x, y);
            rojo |= qRed(c) > 120 && qRed(c) > qGreen(c) + 60 && qRed(c) > qBlue(c) + 60;
            azul |= qBlue(c) > 120 && qBlue(c) > qRed(c) + 60;
        }
    return rojo && azul;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    // The BCF writer leaves its folders in the temporary directory: a private
    // one, removed at the end.
    QTemporaryDir temporal;
    if (temporal.isValid()) qputenv("TMPDIR", temporal.path().toLocal8Bit());
    int n = 500, base = 50;
    for (int i = 1; i + 1 < argc; ++i) {
        if (!std::strcmp(argv[i], "--interferencias"))
            n = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--base"))
            base = std::atoi(argv[++i]);
    }

    Generado g = generar(n);
    AnalisisInterferencias analisis;
    analisis.id = "B0000000-0000-0000-0000-000000000001";
    analisis.nombre = "Bench reporte";
    analisis.fecha = QDateTime::currentDateTime();
    analisis.interferencias =
        buscarInterferencias(g.candidatos, {clavePar("ARQ", "MEP")}, {}, 0.02);
    std::printf("report: %d walls and %d pipes, %zu triangles, %zu clashes\n", n, n,
                static_cast<std::size_t>(n) * (36 + 64), analisis.interferencias.size());
    if (analisis.interferencias.size() != static_cast<std::size_t>(n)) {
        std::fprintf(stderr, "report: expected one clash per wall\n");
        return 1;
    }

    RenderizadorImagenes renderizador;
    if (!renderizador.valido()) {
        std::fprintf(stderr, "report: no OpenGL 3.3 context (run under Xvfb)\n");
        return 1;
    }
    // Warm-up: shaders compiled, first frame out of the way.
    renderThumbnail(analisis.interferencias[0], &g.escena, renderizador);

    std::map<std::string, QImage> vivos;
    const Medida mVivos =
        cronometrar([&] { vivos = renderThumbnails(analisis, &g.escena, renderizador); });

    // The same clashes as a restored project holds them: elements by name.
    AnalisisInterferencias restaurado = analisis;
    for (auto& i : restaurado.interferencias) i.nodoA = Node::crear(), i.nodoB = Node::crear();
    std::map<std::string, QImage> restaurados;
    const Medida mRest =
        cronometrar([&] { restaurados = renderThumbnails(restaurado, &g.escena, renderizador); });

    int conAmbos = 0, igualesRest = 0;
    for (const auto& i : analisis.interferencias) {
        conAmbos += tieneRojoYAzul(vivos[i.id]);
        igualesRest += vivos[i.id] == restaurados[i.id];
    }
    if (conAmbos != n || igualesRest != n) {
        std::fprintf(stderr,
                     "report: %d of %d thumbnails show both elements, %d restored ones equal\n",
                     conAmbos, n, igualesRest);
        return 1;
    }

    // Baseline: a new renderer (GL context, shaders, buffers) per thumbnail.
    base = std::min(base, n);
    int igualesBase = 0;
    const Medida mBase = cronometrar([&] {
        for (int k = 0; k < base; ++k) {
            RenderizadorImagenes propio;
            const QImage img = renderThumbnail(analisis.interferencias[static_cast<std::size_t>(k)],
                                               &g.escena, propio);
            igualesBase += img == vivos[analisis.interferencias[static_cast<std::size_t>(k)].id];
        }
    });
    if (igualesBase != base) {
        std::fprintf(stderr, "report: %d of %d baseline thumbnails differ\n", base - igualesBase,
                     base);
        return 1;
    }

    const double porSegundo = n / mVivos.pared;
    const double porSegundoRest = n / mRest.pared;
    const double porSegundoBase = base / mBase.pared;
    std::printf("report: %d thumbnails 460x310x4 with one renderer: %.0f ms (cpu %.0f ms), %.1f "
                "per second\n",
                n, mVivos.pared * 1e3, mVivos.cpu * 1e3, porSegundo);
    std::printf("report: the same, restored clashes found by name: %.0f ms, %.1f per second\n",
                mRest.pared * 1e3, porSegundoRest);
    std::printf(
        "report: baseline, a new renderer per thumbnail, %d thumbnails: %.0f ms, %.1f per second\n",
        base, mBase.pared * 1e3, porSegundoBase);
    std::size_t bytesPNG = 0;
    std::map<std::string, QByteArray> png;
    const Medida mPNG = cronometrar([&] { png = thumbnailsPNG(vivos); });
    for (const auto& [id, b] : png) bytesPNG += static_cast<std::size_t>(b.size());
    std::printf("report: PNG encoding of %zu thumbnails: %.0f ms, %.1f MB\n", png.size(),
                mPNG.pared * 1e3, megabytes(static_cast<long long>(bytesPNG)));
    // The BCF archive of the analysis with those thumbnails as snapshots:
    // 500 topic folders of three files each, packed by /usr/bin/zip.
    const BCFExporter exportador{analisis, analisis.nombre, png};
    std::optional<BCFExporter::Archivo> archivo;
    Tiempos tBCF;
    for (int k = 0; k < 3; ++k) {
        tBCF.anadir(cronometrar([&] { archivo = exportador.escribirArchivo(); }));
        if (!archivo) {
            std::fprintf(stderr, "report: the BCF archive could not be written\n");
            return 1;
        }
    }
    std::printf("report: BCF archive of %zu topics with snapshots (escribirArchivo): best %.0f ms, "
                "median %.0f ms, "
                "%.1f MB\n",
                analisis.interferencias.size(), tBCF.mejor() * 1e3, tBCF.mediana() * 1e3,
                megabytes(tamanoArchivo(archivo->ruta.toStdString())));
    imprimirFigura("report", porSegundo, "thumbnails/s", porSegundo / porSegundoBase,
                   "new-renderer-per-thumbnail");
    return 0;
}
