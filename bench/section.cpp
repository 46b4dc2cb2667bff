// Benchmark section: the cut of the render benchmark's federation (some
// 108,000 element nodes, 2.1 million triangles, built in memory) by a
// horizontal plane at the middle of a storey, against the literal steps.
//
// Usage: bench_section [--elementos N] [--repeticiones N] [--imagen FILE]
//
// Printed first: the times of "Con profundidad" (3 m) and "Ilimitada", the
// segment and label counts of each mode, and one repaint of the "Corte
// exacto" sheet, fitted, into a 1600 x 1000 image (dibujarHoja, as the
// window draws). The last line is the median of extraerSegmentos plus
// construirEtiquetas in "Corte exacto".
//
// The baseline follows the steps as written: for every geometry node it walks
// up to the element's name, recomputes the node's box from its vertices,
// copies the vertices into an array of 16-byte entries and tests every
// triangle, computing the three distances and the three edge tests with no
// rejection in front; for the labels it walks up again and recomputes the
// element node's box. Both must give the same lines and labels: the benchmark
// compares them and stops if they differ.

#include "FederacionGenerada.h"
#include "Medicion.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "sections/HojaSeccion.h"
#include "sections/ui/DibujoHoja.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <glm/vec4.hpp>
#include <limits>
#include <thread>
#include <unordered_set>

using namespace teskal;
using namespace teskal::bench;

namespace {

double ms(double segundos) { return segundos * 1000.0; }

// One triangle by the steps: three distances, three edge tests, a point list.
std::optional<ParHoja> trianguloLiteral(int eje, const glm::vec4& a4, const glm::vec4& b4, const glm::vec4& c4,
                                        float posicion) {
    const glm::vec3 a(a4), b(b4), c(c4);
    const float da = componenteEje(eje, a) - posicion;
    const float db = componenteEje(eje, b) - posicion;
    const float dc = componenteEje(eje, c) - posicion;
    glm::vec2 puntos[3];
    int n = 0;
    if ((da > 0.0f) != (db > 0.0f)) {
        const float t = da / (da - db);
        puntos[n++] = proyectarEnHoja(eje, a + (b - a) * t);
    }
    if ((db > 0.0f) != (dc > 0.0f)) {
        const float t = db / (db - dc);
        puntos[n++] = proyectarEnHoja(eje, b + (c - b) * t);
    }
    if ((dc > 0.0f) != (da > 0.0f)) {
        const float t = dc / (dc - da);
        puntos[n++] = proyectarEnHoja(eje, c + (a - c) * t);
    }
    if (n < 2) return std::nullopt;
    return ParHoja{puntos[0], puntos[1]};
}

std::vector<Segmento2D> extraerLiteral(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                                       double posicion, double profundidad) {
    std::vector<Segmento2D> resultado;
    const float p = static_cast<float>(posicion);
    const float limite = profundidad == 0.0 ? p
                         : std::isinf(profundidad) ? std::numeric_limits<float>::lowest()
                                                   : static_cast<float>(posicion - profundidad);
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.isVisible || !esp.nodoRaiz) continue;
        esp.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            const std::string nombre(nombreElementoDe(n, esp.nodoRaiz.get()));
            const Box caja = n.boundingBox();
            const Geometry& g = *n.geometry();
            std::vector<glm::vec4> vertices(g.vertices.size());
            for (std::size_t i = 0; i < g.vertices.size(); ++i) vertices[i] = glm::vec4(g.vertices[i], 0.0f);
            const auto nv = static_cast<std::int64_t>(vertices.size());
            for (const auto& e : g.elementos) {
                if (e.primitiva != Primitiva::Triangulos) continue;
                for (std::size_t t = 0; t + 2 < e.indices.size(); t += 3) {
                    const auto i0 = e.indices[t], i1 = e.indices[t + 1], i2 = e.indices[t + 2];
                    if (i0 < 0 || i1 < 0 || i2 < 0 || i0 >= nv || i1 >= nv || i2 >= nv) continue;
                    if (auto par = trianguloLiteral(eje, vertices[i0], vertices[i1], vertices[i2], p))
                        resultado.push_back({par->first, par->second, clave, esp.colorOriginal, true, nombre});
                }
            }
            if (profundidad > 0.0) {
                const float centro = static_cast<float>(static_cast<double>(componenteEje(eje, caja.min)) +
                                                        static_cast<double>(componenteEje(eje, caja.max))) *
                                     0.5f;
                if (centro >= limite && p > centro)
                    for (auto& s : contornoCaja(eje, clave, esp.colorOriginal, caja.min, caja.max))
                        resultado.push_back(s);
            }
        });
    }
    return resultado;
}

// The labels by the steps, without the texts (the same for both forms): the
// element's name and box, walked up and recomputed at every geometry node.
std::size_t etiquetasLiteral(const std::map<std::string, EspecialidadBIM>& especialidades, int eje,
                             double posicion) {
    std::size_t cuenta = 0;
    const float p = static_cast<float>(posicion);
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.isVisible || !esp.nodoRaiz) continue;
        std::unordered_set<std::string> vistos;
        esp.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            const Node* e = nodoElementoDe(n, esp.nodoRaiz.get());
            if (!e) return;
            const Box caja = e->boundingBox();
            if (!vistos.insert(*e->name()).second) return;
            if (p >= componenteEje(eje, caja.min) && p <= componenteEje(eje, caja.max)) ++cuenta;
        });
    }
    return cuenta;
}

[[noreturn]] void uso() {
    std::fprintf(stderr, "uso: bench_section [--elementos N] [--repeticiones N] [--imagen ARCHIVO]\n");
    std::exit(2);
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000;
    int repeticiones = 7;
    std::string imagen;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--elementos" && i + 1 < argc)
            elementosPorModelo = std::max(1, std::atoi(argv[++i]));
        else if (a == "--repeticiones" && i + 1 < argc)
            repeticiones = std::max(1, std::atoi(argv[++i]));
        else if (a == "--imagen" && i + 1 < argc)
            imagen = argv[++i];
        else
            uso();
    }
    QGuiApplication app(argc, argv);
    imprimirCargaMaquina();
    auto cv = std::make_unique<ContentView>("/no/existe");
    Conteo conteo;
    construirFederacion(*cv, elementosPorModelo, conteo);
    // The middle of the eighth storey.
    const int eje = 2;
    const double posicion = 7 * alturaPlanta + alturaPlanta * 0.5;
    std::printf("section: %zu element nodes, %zu triangles; cut Z = %.2f m\n", conteo.nodos, conteo.triangulos,
                posicion);

    auto medir = [&](auto&& f) {
        Tiempos t;
        for (int r = 0; r < repeticiones; ++r) t.anadir(cronometrar(f));
        return t;
    };
    const auto& esp = cv->especialidades;
    const char* nombresModo[] = {"Corte exacto", "Con profundidad 3 m", "Ilimitada"};
    const double profundidades[] = {0.0, 3.0, std::numeric_limits<double>::infinity()};
    std::vector<Segmento2D> corte;
    for (int modo : {1, 2, 0}) {
        std::vector<Segmento2D> s;
        const Tiempos t = medir([&] { s = extraerSegmentos(esp, eje, posicion, profundidades[modo]); });
        std::size_t vistas = 0;
        for (const auto& x : s) vistas += x.esCorte ? 0 : 1;
        std::printf("extraerSegmentos %-20s %8.1f ms median (best %.1f), %zu cut lines, %zu seen lines\n",
                    nombresModo[modo], ms(t.mediana()), ms(t.mejor()), s.size() - vistas, vistas);
        if (extraerLiteral(esp, eje, posicion, profundidades[modo]) != s) {
            std::fprintf(stderr, "section: the literal steps give other lines in mode %d\n", modo);
            return 1;
        }
        if (modo == 0) corte = std::move(s);
    }
    std::vector<Etiqueta2D> etiquetas;
    const Tiempos tEtiquetas = medir([&] {
        etiquetas = construirEtiquetas(esp, eje, cv->propiedadesIFC, cv->propiedadesPorGlobalId, posicion);
    });
    std::printf("construirEtiquetas alone %21.1f ms median, %zu labels\n", ms(tEtiquetas.mediana()), etiquetas.size());
    if (etiquetasLiteral(esp, eje, posicion) != etiquetas.size()) {
        std::fprintf(stderr, "section: the literal steps give another number of labels\n");
        return 1;
    }
    // As abrirPlano2D runs them: the labels read the ranges the cut kept.
    const Tiempos total = medir([&] {
        RangosCorte rangos;
        auto s = extraerSegmentos(esp, eje, posicion, 0.0, &rangos);
        auto e = construirEtiquetas(esp, eje, cv->propiedadesIFC, cv->propiedadesPorGlobalId, posicion, &rangos);
        if (e.size() != etiquetas.size()) std::abort();
    });
    const Tiempos base = medir([&] {
        auto s = extraerLiteral(esp, eje, posicion, 0.0);
        const std::size_t e = etiquetasLiteral(esp, eje, posicion);
        if (e == 0) s.clear();
    });
    std::printf("literal steps (lines and labels) %13.1f ms median\n", ms(base.mediana()));
    std::printf("CPU time, lines and labels: %.1f ms median, literal steps %.1f ms\n", ms(total.medianaCPU()), ms(base.medianaCPU()));

    // One repaint of the "Corte exacto" sheet, fitted, as the window draws it.
    EstadoHoja hoja;
    hoja.segmentos = corte;
    hoja.etiquetas = etiquetas;
    hoja.ancho = 1600;
    hoja.alto = 1000;
    hoja.encuadrar();
    QImage lienzo(1600, 1000, QImage::Format_ARGB32_Premultiplied);
    const Tiempos pintura = medir([&] {
        QPainter p(&lienzo);
        dibujarHoja(p, hoja);
    });
    std::printf("sheet repaint at fit, 1600 x 1000 %12.1f ms median (best %.1f), scale %.2f px/m\n",
                ms(pintura.mediana()), ms(pintura.mejor()), hoja.escala);
    if (!imagen.empty()) lienzo.save(QString::fromStdString(imagen));

    imprimirFigura("section", ms(total.mediana()), "ms", base.mediana() / total.mediana(), "literal-steps");
    return 0;
}
