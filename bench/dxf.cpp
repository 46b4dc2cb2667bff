// Benchmark dxf: generarDXF over the "Ilimitada" sheet of the render
// benchmark's federation (108,000 elements) cut at the middle of a storey:
// hundreds of thousands of lines, every label shown and a few dimensions.
// The file write is not timed. The baseline writes the same text with one
// snprintf per value (code and value each formatted on their own and
// appended); both texts must be equal.
//
// Usage: bench_dxf [--elementos N] [--repeticiones N] [--archivo FILE]

#include "FederacionGenerada.h"
#include "Medicion.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "sections/DXF.h"

#include <QCoreApplication>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <set>
#include <thread>

using namespace teskal;
using namespace teskal::bench;

namespace {

// The same file, one snprintf for every value.
class EscritorIngenuo {
public:
    std::string texto;
    void par(int codigo, const std::string& valor) {
        char b[64];
        std::snprintf(b, sizeof b, "%d\n", codigo);
        texto += b;
        texto += valor;
        texto += '\n';
    }
    void entero(int codigo, int valor) {
        char b[32];
        std::snprintf(b, sizeof b, "%d", valor);
        par(codigo, b);
    }
    void real(int codigo, double valor) {
        char b[400];
        std::snprintf(b, sizeof b, "%.6f", valor);
        par(codigo, b);
    }
    void linea(const std::string& capa, double x1, double y1, double x2, double y2, bool discontinua = false) {
        par(0, "LINE");
        par(8, capa);
        if (discontinua) par(6, "DASHED");
        real(10, x1);
        real(20, y1);
        real(30, 0.0);
        real(11, x2);
        real(21, y2);
        real(31, 0.0);
    }
    void capa(const std::string& nombre, int color) {
        par(0, "LAYER");
        par(2, nombre);
        entero(70, 0);
        entero(62, color);
        par(6, "CONTINUOUS");
    }
};

std::string dxfIngenuo(const std::vector<Segmento2D>& segmentos, const std::vector<Etiqueta2D>& etiquetas,
                       const std::vector<Cota2D>& cotas) {
    double h = 0.1;
    if (!segmentos.empty()) {
        double x0 = segmentos[0].p1.x, x1 = x0, y0 = segmentos[0].p1.y, y1 = y0;
        for (const auto& s : segmentos)
            for (const glm::vec2& p : {s.p1, s.p2}) {
                x0 = std::min(x0, double(p.x));
                x1 = std::max(x1, double(p.x));
                y0 = std::min(y0, double(p.y));
                y1 = std::max(y1, double(p.y));
            }
        if (x1 > x0 || y1 > y0) {
            const double s = std::max(x1 - x0, y1 - y0);
            h = s * 0.01 > 0.05 ? s * 0.01 : 0.05;
        }
    }
    if (h > 0.5) h = 0.5;
    std::set<std::string> claves;
    for (const auto& s : segmentos) claves.insert(s.key);
    bool hayEtiquetas = false;
    for (const auto& e : etiquetas) hayEtiquetas |= e.visible;
    EscritorIngenuo w;
    for (const char* v : {"SECTION"}) w.par(0, v);
    w.par(2, "HEADER");
    w.par(9, "$ACADVER");
    w.par(1, "AC1009");
    w.par(9, "$INSUNITS");
    w.entero(70, 6);
    w.par(0, "ENDSEC");
    w.par(0, "SECTION");
    w.par(2, "TABLES");
    w.par(0, "TABLE");
    w.par(2, "LTYPE");
    w.entero(70, 2);
    w.par(0, "LTYPE");
    w.par(2, "CONTINUOUS");
    w.entero(70, 0);
    w.par(3, "Solid line");
    w.entero(72, 65);
    w.entero(73, 0);
    w.real(40, 0.0);
    w.par(0, "LTYPE");
    w.par(2, "DASHED");
    w.entero(70, 0);
    w.par(3, "__ __ __ __ __ __ __ __ __ __ __");
    w.entero(72, 65);
    w.entero(73, 2);
    w.real(40, 0.75);
    w.real(49, 0.5);
    w.real(49, -0.25);
    w.par(0, "ENDTAB");
    w.par(0, "TABLE");
    w.par(2, "LAYER");
    w.entero(70, int(claves.size()) + 1 + hayEtiquetas + !cotas.empty());
    w.capa("0", 7);
    for (const auto& c : claves) w.capa(sanearTextoDXF(c), colorCapaDXF(c));
    if (hayEtiquetas) w.capa("ETIQUETAS", 2);
    if (!cotas.empty()) w.capa("COTAS", 5);
    w.par(0, "ENDTAB");
    w.par(0, "ENDSEC");
    w.par(0, "SECTION");
    w.par(2, "ENTITIES");
    for (const auto& s : segmentos) w.linea(sanearTextoDXF(s.key), s.p1.x, s.p1.y, s.p2.x, s.p2.y, !s.esCorte);
    auto texto = [&](double x, double y, double alto, const std::string& v, bool derecha) {
        w.par(0, "TEXT");
        w.par(8, "ETIQUETAS");
        w.real(10, x);
        w.real(20, y);
        w.real(30, 0.0);
        w.real(40, alto);
        w.par(1, v);
        if (derecha) {
            w.entero(72, 2);
            w.real(11, x);
            w.real(21, y);
            w.real(31, 0.0);
        }
    };
    for (const auto& e : etiquetas) {
        if (!e.visible) continue;
        const glm::vec2 t = e.ancla + e.offsetTexto;
        const bool izq = e.offsetTexto.x < 0;
        const double k = izq ? t.x + 1.5 * h : t.x - 1.5 * h;
        w.linea("ETIQUETAS", t.x, t.y, k, t.y);
        w.linea("ETIQUETAS", k, t.y, e.ancla.x, e.ancla.y);
        w.linea("ETIQUETAS", e.ancla.x - 0.25 * h, e.ancla.y, e.ancla.x + 0.25 * h, e.ancla.y);
        w.linea("ETIQUETAS", e.ancla.x, e.ancla.y - 0.25 * h, e.ancla.x, e.ancla.y + 0.25 * h);
        texto(t.x, t.y + 0.35 * h, h, sanearTextoDXF(e.nombre), izq);
        std::string segunda = e.tipoIFC;
        if (!e.dimensiones.empty()) segunda += "  " + e.dimensiones;
        texto(t.x, t.y - 0.55 * h, 0.72 * h, sanearTextoDXF(segunda), izq);
    }
    for (const auto& c : cotas) {
        const float largo = glm::length(c.p2 - c.p1);
        if (!(largo > 0.001f)) continue;
        const glm::dvec2 p1(c.p1), p2(c.p2);
        const glm::dvec2 u = (p2 - p1) / glm::length(p2 - p1), n(u.y, -u.x);
        const double f = c.offsetLateral;
        const glm::dvec2 q1 = p1 + f * n, q2 = p2 + f * n;
        for (const glm::dvec2& p : {p1, p2}) {
            const glm::dvec2 a = p + 0.25 * h * n, b = p + (f + 0.4 * h) * n;
            w.linea("COTAS", a.x, a.y, b.x, b.y);
        }
        w.linea("COTAS", q1.x, q1.y, q2.x, q2.y);
        for (const auto& [punta, e] : {std::pair{q1, u}, std::pair{q2, -u}}) {
            const glm::dvec2 b = punta + 0.6 * h * e, A = b - 0.18 * h * n, B = b + 0.18 * h * n;
            w.linea("COTAS", punta.x, punta.y, A.x, A.y);
            w.linea("COTAS", punta.x, punta.y, B.x, B.y);
            w.linea("COTAS", A.x, A.y, B.x, B.y);
        }
        const glm::dvec2 m = (q1 + q2) * 0.5;
        double angulo = std::atan2(u.y, u.x) * 180.0 / M_PI;
        if (angulo > 90) angulo -= 180;
        if (angulo < -90) angulo += 180;
        char b[64];
        std::snprintf(b, sizeof b, "%.2f m", double(largo));
        const std::string t = sanearTextoDXF(b);
        const double W = h * double(t.size()) * 0.3;
        const glm::dvec2 p = m - W * u + 0.2 * h * glm::dvec2(-u.y, u.x);
        w.par(0, "TEXT");
        w.par(8, "COTAS");
        w.real(10, p.x);
        w.real(20, p.y);
        w.real(30, 0.0);
        w.real(40, 0.85 * h);
        w.par(1, t);
        if (std::abs(angulo) > 0.01) w.real(50, angulo);
    }
    w.par(0, "ENDSEC");
    w.par(0, "EOF");
    return w.texto;
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000, repeticiones = 5;
    std::string archivo;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--elementos" && i + 1 < argc)
            elementosPorModelo = std::max(1, std::atoi(argv[++i]));
        else if (a == "--repeticiones" && i + 1 < argc)
            repeticiones = std::max(1, std::atoi(argv[++i]));
        else if (a == "--archivo" && i + 1 < argc)
            archivo = argv[++i];
        else {
            std::fprintf(stderr, "uso: bench_dxf [--elementos N] [--repeticiones N] [--archivo ARCHIVO]\n");
            return 2;
        }
    }
    QCoreApplication app(argc, argv);
    imprimirCargaMaquina();
    auto cv = std::make_unique<ContentView>("/no/existe");
    Conteo conteo;
    construirFederacion(*cv, elementosPorModelo, conteo);
    // The "Ilimitada" sheet of the middle of the eighth storey, as abrirPlano2D makes it.
    cv->seccion.eje = 2;
    cv->seccion.posicion = 7 * alturaPlanta + alturaPlanta * 0.5;
    cv->seccion.modoProfundidad = 2;
    cv->abrirPlano2D();
    if (!cv->seccion.planoPorAbrir) {
        std::fprintf(stderr, "dxf: the cut gave no sheet\n");
        return 1;
    }
    Plano2D plano = std::move(*cv->seccion.planoPorAbrir);
    for (auto& e : plano.etiquetas) e.visible = true;
    plano.cotas = {{"C1", {0, 0}, {100, 0}, 0.6f}, {"C2", {0, 0}, {0, 100}, 0.6f}, {"C3", {10, 10}, {40, 50}, 1.2f}};
    std::printf("dxf: %s, %zu lines, %zu labels shown, %zu dimensions\n", plano.titulo.c_str(), plano.segmentos.size(),
                plano.etiquetas.size(), plano.cotas.size());

    std::string texto;
    Tiempos t, base;
    for (int r = 0; r < repeticiones; ++r)
        t.anadir(cronometrar([&] { texto = generarDXF(plano.segmentos, plano.etiquetas, plano.cotas); }));
    std::string ingenuo;
    for (int r = 0; r < std::max(1, repeticiones / 2); ++r)
        base.anadir(cronometrar([&] { ingenuo = dxfIngenuo(plano.segmentos, plano.etiquetas, plano.cotas); }));
    if (ingenuo != texto) {
        std::fprintf(stderr, "dxf: the one-print-per-value text differs\n");
        return 1;
    }
    const double mb = static_cast<double>(texto.size()) / 1e6;
    std::printf("generarDXF: %.1f MB in %.1f ms median (best %.1f, CPU %.1f); one print per value %.1f ms\n", mb,
                t.mediana() * 1000, t.mejor() * 1000, t.medianaCPU() * 1000, base.mediana() * 1000);
    if (!archivo.empty()) {
        std::ofstream f(archivo, std::ios::binary);
        f.write(texto.data(), static_cast<std::streamsize>(texto.size()));
    }
    imprimirFigura("dxf", mb / t.mediana(), "MB/s", base.mediana() / t.mediana(), "one-print-per-value");
    return 0;
}
