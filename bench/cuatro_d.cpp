// Benchmark 4d: the schedule played on the render benchmark's federation
// (about 108,000 elements), every element assigned to one of 20,000
// installation packages whose starts are spread evenly over twelve months
// (30 days each, in an order shuffled against the tree's, so that each step
// changes elements all over the scene). 100 equal scrubber steps cross the
// range; each step is timed from the date to the GPU: the states, the
// materials and opacities, and the renderer's upload of the element state.
// The baseline is the literal form: per step a map from name to state and
// one walk of the whole scene applying it, after which the renderer rewrites
// every element's state. Both leave the same scene (checked), and closing
// puts the scene back as it was (checked). Runs under Xvfb.

#include "DatosAWP.h"
#include "FederacionGenerada.h"
#include "ContextoGL.h"
#include "Medicion.h"
#include "timeline/Sincronizacion4D.h"
#include "viewport/render/RenderizadorEscena.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <numeric>
#include <random>
#include <unordered_map>

using namespace teskal;
using namespace teskal::bench;

namespace {

constexpr int paquetesIWP = 20000;
constexpr int pasos = 100;

double ms(double s) { return s * 1000.0; }

[[noreturn]] void uso() {
    std::fprintf(stderr, "usage: bench_4d [--elementos N] [--pasos-base N]\n");
    std::exit(2);
}

// The element nodes of the scene, in tree order.
std::vector<Node*> elementosDe(ContentView& cv) {
    std::vector<Node*> r;
    for (const auto& clave : cv.ordenEspecialidades) {
        const auto& e = cv.especialidades.at(clave);
        for (const auto& m : e.modelos)
            for (const auto& n : m.nodo->childNodes()) r.push_back(n.get());
    }
    return r;
}

// Every element in one IWP: consecutive elements share a package, and the
// packages' places in time are shuffled.
TimeLinerConfig planPara(const std::vector<Node*>& elementos) {
    const QDateTime t0(QDate(2026, 1, 5), QTime(8, 0), Qt::UTC);
    TimeLinerConfig c = TimeLinerConfig::porDefecto(t0);
    c.fechaFin = t0.addMonths(12);
    const qint64 ventana = t0.secsTo(c.fechaFin) - 30 * 86400;
    std::vector<int> lugar(paquetesIWP);
    std::iota(lugar.begin(), lugar.end(), 0);
    std::shuffle(lugar.begin(), lugar.end(), std::mt19937(4));
    c.paquetes.resize(paquetesIWP);
    for (int k = 0; k < paquetesIWP; ++k) {
        PaqueteAWP& p = c.paquetes[static_cast<std::size_t>(k)];
        p.id = "ID-" + std::to_string(k);
        p.codigo = "IWP-" + std::to_string(k);
        p.fechaInicio = t0.addSecs(ventana * lugar[static_cast<std::size_t>(k)] / paquetesIWP);
        p.fechaFin = p.fechaInicio.addDays(30);
    }
    for (std::size_t i = 0; i < elementos.size(); ++i)
        c.paquetes[i * paquetesIWP / elementos.size()].elementosNombre.push_back(*elementos[i]->name());
    return c;
}

// The look of every element: opacity and diffuse colour.
using Aspecto = std::vector<std::pair<float, std::optional<Color>>>;
Aspecto aspecto(const std::vector<Node*>& elementos) {
    Aspecto a;
    a.reserve(elementos.size());
    for (const Node* n : elementos) a.emplace_back(n->opacity(), n->geometry()->firstMaterial()->diffuse());
    return a;
}

// The literal form: a map from name to state built per step, one walk of
// the scene, every matched node set through the plain setters.
struct Literal {
    std::unordered_map<const Node*, ContenidoDiffuse> originales;

    void paso(ContentView& cv, const QDateTime& fecha) {
        std::unordered_map<std::string, Estado4D> estados;
        const qint64 f = msDe(fecha);
        for (const PaqueteAWP& p : cv.timeLiner.paquetes)
            for (const std::string& nombre : p.elementosNombre)
                estados.try_emplace(nombre, estadoEnFecha(msDe(p.fechaInicio), msDe(p.fechaFin), f));
        cv.scene.rootNode()->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.name() || n.name()->empty() || !n.geometry() || !n.geometry()->firstMaterial()) return;
            const auto it = estados.find(*n.name());
            if (it == estados.end()) return;
            Material& m = *n.geometry()->firstMaterial();
            const auto [original, nuevo] = originales.try_emplace(&n, m.diffuseContenido());
            switch (it->second) {
            case Estado4D::pendiente: n.setOpacity(0.0f); break;
            case Estado4D::enCurso:
                n.setOpacity(opacidadEnCurso);
                m.setDiffuse(verdeEnCurso);
                break;
            case Estado4D::terminado:
                m.setDiffuseContenido(original->second);
                n.setOpacity(1.0f);
                break;
            }
        });
    }
};

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000;
    int pasosBase = pasos;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--elementos" && i + 1 < argc) elementosPorModelo = std::max(1, std::atoi(argv[++i]));
        else if (a == "--pasos-base" && i + 1 < argc) pasosBase = std::clamp(std::atoi(argv[++i]), 1, pasos);
        else uso();
    }
    QGuiApplication app(argc, argv);
    imprimirCargaMaquina();
    imprimirImportacionYDetector();

    auto cv = std::make_unique<ContentView>("/no/existe");
    Conteo conteo;
    construirFederacion(*cv, elementosPorModelo, conteo);
    const std::vector<Node*> elementos = elementosDe(*cv);
    cv->timeLiner = planPara(elementos);
    const TimeLinerConfig& plan = cv->timeLiner;
    std::printf("4d: %zu element nodes in 9 models, %d IWPs from %s to %s, %zu names assigned\n", elementos.size(),
                paquetesIWP, qPrintable(plan.fechaInicio.toString(Qt::ISODate)),
                qPrintable(plan.fechaFin.toString(Qt::ISODate)), elementos.size());

    // The 3D view is at hand: its point of view is bound, so the scene's
    // root is walked, as in the workbench.
    auto camaraNodo = Node::crear("_TESKAL_Camara");
    camaraNodo->setCamera(Camera{60.0f, 0.1f, 1000.0f, false, 1.0f});
    cv->viewport.vincularPuntoDeVista(camaraNodo);
    const CamaraRender camara = CamaraRender::desdeNodo(*camaraNodo, 1280.0f / 800.0f);

    ContextoGL gl3;
    if (!gl3.crear("4d")) return 1;
    QOpenGLContext& contexto = gl3.contexto;
    QOpenGLFunctions* gl = contexto.functions();
    RenderizadorEscena render;
    render.inicializar();
    // A pick outside the view brings the renderer up to date with the scene
    // and stops there: what a frame uploads, without the drawing.
    const auto subir = [&] {
        render.elegir(cv->scene, camara, 1280, 800, -1, -1, false, 0);
        gl->glFinish();
    };
    const Medida subidaInicial = cronometrar(subir);
    const Aspecto inicial = aspecto(elementos);
    std::printf("renderer: first upload of the federation %.0f ms\n", ms(subidaInicial.pared));

    const qint64 rango = plan.fechaInicio.secsTo(plan.fechaFin);
    const auto fechaDePaso = [&](int k) { return plan.fechaInicio.addSecs(rango * k / pasos); };

    // Opening: the first synchronisation builds the name table and the
    // scene table and touches every element.
    cv->iniciarTimeLiner();
    const Medida apertura = cronometrar([&] {
        cv->sincronizar4D();
        subir();
    });
    std::printf("opening: first synchronisation with the tables and the upload %.0f ms (CPU %.0f ms), %zu states "
                "rewritten; %s\n",
                ms(apertura.pared), ms(apertura.cpu), render.estadosReescritos(), cv->timeline.estadoSync4D.c_str());

    Tiempos nuestro;
    std::vector<double> reescritos;
    Aspecto aMitad;
    for (int k = 1; k <= pasos; ++k) {
        nuestro.anadir(cronometrar([&] {
            cv->fijarFechaScrubber(fechaDePaso(k));
            subir();
        }));
        reescritos.push_back(static_cast<double>(render.estadosReescritos()));
        if (k == pasos / 2) aMitad = aspecto(elementos);
    }
    std::sort(reescritos.begin(), reescritos.end());
    std::printf("4d steps: median %.2f ms per step (CPU %.2f ms), best %.2f ms, over %d steps of %.1f days; median "
                "%.0f element states uploaded per step; last status %s\n",
                ms(nuestro.mediana()), ms(nuestro.medianaCPU()), ms(nuestro.mejor()), pasos,
                static_cast<double>(rango) / pasos / 86400.0, reescritos[reescritos.size() / 2],
                cv->timeline.estadoSync4D.c_str());

    // Closing puts every element back.
    const Medida cierre = cronometrar([&] {
        cv->cerrarTimeLiner();
        subir();
    });
    if (aspecto(elementos) != inicial) {
        std::fprintf(stderr, "4d: closing the timeline did not restore the scene\n");
        return 1;
    }
    std::printf("closing: restoration and upload %.0f ms, scene as before (checked)\n", ms(cierre.pared));

    // The literal form over the same steps (the first pasosBase of them).
    Literal literal;
    Tiempos base;
    Aspecto aMitadLiteral;
    for (int k = 1; k <= pasosBase; ++k) {
        base.anadir(cronometrar([&] {
            literal.paso(*cv, fechaDePaso(k));
            subir();
        }));
        if (k == pasos / 2) aMitadLiteral = aspecto(elementos);
    }
    std::printf("literal: median %.2f ms per step (CPU %.2f ms), best %.2f ms, over %d steps; %zu states rewritten "
                "per step\n",
                ms(base.mediana()), ms(base.medianaCPU()), ms(base.mejor()), pasosBase, render.estadosReescritos());
    if (!aMitadLiteral.empty() && aMitadLiteral != aMitad) {
        std::fprintf(stderr, "4d: the two forms leave different scenes at step %d\n", pasos / 2);
        return 1;
    }
    if (!aMitadLiteral.empty()) std::printf("both forms leave the same scene at step %d (checked)\n", pasos / 2);

    render.liberar();
    contexto.doneCurrent();
    imprimirFigura("4d", ms(nuestro.mediana()), "ms", base.mediana() / nuestro.mediana(), "literal");
    return 0;
}
