// The timeline in the workspace: the scrubber and how progress is read, the
// open areas, the selection that lights a package's elements in the scene,
// and the editor's copy with its save under the hierarchy rules.
#include "federation/ContentView.h"

#include "timeline/EditorPaquete.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace teskal {

namespace {

// The glow of a selected package's elements.
constexpr Color emisionDestacada{0.1f, 0.8f, 1.0f, 1.0f};

void fijarEmision(Node& n, const Color& c) {
    if (n.geometry())
        if (Material* m = n.geometry()->firstMaterial()) m->setEmission(c);
}

} // namespace

void ContentView::iniciarTimeLiner() {
    timeline.fechaScrubber = timeLiner.fechaInicio;
    timeline.modo4D = true;
    emit changed();
}

void ContentView::cerrarTimeLiner() {
    // Playback stops first: a tick after this point finds it stopped and
    // leaves the restored scene alone.
    timeline.reproduciendo = false;
    timeline.modo4D = false;
    restaurarEscena();
    timeline.seleccionado.reset();
    timeline.paqueteEditando.reset();
    emit changed();
}

void ContentView::fijarFechaScrubber(const QDateTime& fecha) {
    if (!fecha.isValid()) return;
    timeline.fechaScrubber = fecha;
    if (timeline.modo4D) sincronizar4D();
    else emit changed();
}

void ContentView::sincronizar4D() {
    if (!timeline.modo4D) return;
    // The live view reaches the whole scene; without it, the disciplines'
    // roots.
    const bool vista = viewport.puntoDeVista() != nullptr;
    std::vector<std::shared_ptr<Node>> raices;
    if (vista) raices.push_back(scene.rootNode());
    else
        for (const auto& clave : ordenEspecialidades)
            if (const auto it = especialidades.find(clave); it != especialidades.end() && it->second.nodoRaiz)
                raices.push_back(it->second.nodoRaiz);
    const VersionPaquetes version{cambios, timeLiner.paquetes.data(), timeLiner.paquetes.size()};
    const Resultado4D r = timeline.sincronia.aplicar(timeLiner.paquetes, version, raices, scene.contadores(),
                                                     timeline.fechaScrubber);
    timeline.estadoSync4D = textoEstadoSync4D(r, vista);
    emit changed();
}

void ContentView::restaurarEscena() {
    for (const auto& n : timeline.nodosDestacados)
        if (n) fijarEmision(*n, colores::negro);
    timeline.nodosDestacados.clear();
    timeline.sincronia.restaurar();
    timeline.estadoSync4D.clear();
}

void ContentView::alternarReproduccion() {
    if (timeline.reproduciendo) {
        timeline.reproduciendo = false;
    } else {
        if (timeline.fechaScrubber >= timeLiner.fechaFin) timeline.fechaScrubber = timeLiner.fechaInicio;
        timeline.reproduciendo = true;
    }
    emit changed();
}

void ContentView::pasoReproduccion() {
    if (!timeline.reproduciendo) return;
    // Not limited: the date may stand up to one tick past the end.
    const auto paso = static_cast<qint64>(std::llround(timeline.velocidad / ticksPorSegundo * 86400.0 * 1000.0));
    timeline.fechaScrubber = timeline.fechaScrubber.addMSecs(paso);
    if (timeline.fechaScrubber >= timeLiner.fechaFin) timeline.reproduciendo = false;
    if (timeline.modo4D) sincronizar4D();
    else emit changed();
}

void ContentView::fijarVelocidad(double diasPorSegundo) {
    timeline.velocidad = diasPorSegundo;
    emit changed();
}

void ContentView::arrastrarScrubber(double r) {
    const qint64 rango = timeLiner.fechaInicio.secsTo(timeLiner.fechaFin);
    const double fraccion = std::clamp(r, 0.0, 1.0);
    fijarFechaScrubber(timeLiner.fechaInicio.addSecs(static_cast<qint64>(fraccion * static_cast<double>(rango))));
}

void ContentView::retrocederScrubber() {
    fijarFechaScrubber(std::max(timeline.fechaScrubber.addSecs(-pasoScrubberSegundos), timeLiner.fechaInicio));
}

void ContentView::avanzarScrubber() {
    fijarFechaScrubber(std::min(timeline.fechaScrubber.addSecs(pasoScrubberSegundos), timeLiner.fechaFin));
}

void ContentView::fijarAutoAvance(bool activo) {
    timeline.modoAutoAvance = activo;
    emit changed();
}

void ContentView::alternarCWA(const std::string& codigo) {
    if (!timeline.expandidosCWA.erase(codigo)) timeline.expandidosCWA.insert(codigo);
    emit changed();
}

const PaqueteAWP* ContentView::paqueteAWP(const std::string& id) const {
    const auto it = std::find_if(timeLiner.paquetes.begin(), timeLiner.paquetes.end(),
                                 [&](const PaqueteAWP& p) { return p.id == id; });
    return it == timeLiner.paquetes.end() ? nullptr : &*it;
}

void ContentView::seleccionarPaquete(const std::optional<std::string>& id) {
    for (const auto& n : timeline.nodosDestacados)
        if (n) fijarEmision(*n, colores::negro);
    timeline.nodosDestacados.clear();
    timeline.seleccionado = id;
    const PaqueteAWP* p = id ? paqueteAWP(*id) : nullptr;
    if (p) {
        std::unordered_set<std::string> nombres(p->elementosNombre.begin(), p->elementosNombre.end());
        if (p->nivel == NivelAWP::cwa || p->nivel == NivelAWP::cwp) {
            const ArbolAWP arbol(timeLiner);
            for (const PaqueteAWP* h : arbol.paquetesHoja(*p))
                nombres.insert(h->elementosNombre.begin(), h->elementosNombre.end());
        }
        if (!nombres.empty())
            scene.rootNode()->enumerateChildNodes([&](Node& n, bool&) {
                if (!n.name() || !nombres.contains(*n.name()) || !n.geometry() || !n.geometry()->firstMaterial())
                    return;
                fijarEmision(n, emisionDestacada);
                timeline.nodosDestacados.push_back(n.shared_from_this());
            });
    }
    emit changed();
}

void ContentView::nuevoPaqueteAWP() {
    timeline.paqueteEditando = PaqueteAWP::nuevo();
    emit changed();
}

void ContentView::editarPaqueteAWP(const std::string& id) {
    if (const PaqueteAWP* p = paqueteAWP(id)) {
        timeline.paqueteEditando = *p;
        emit changed();
    }
}

void ContentView::cancelarEdicionAWP() {
    timeline.paqueteEditando.reset();
    emit changed();
}

bool ContentView::guardarPaqueteAWP(const PaqueteAWP& paquete) {
    if (!guardarPaquete(timeLiner, paquete)) return false;
    timeline.paqueteEditando.reset();
    marcarCambio();
    emit changed();
    return true;
}

void ContentView::eliminarPaqueteAWP(const std::string& id) {
    if (eliminarPaquete(timeLiner, id)) {
        if (timeline.seleccionado == id) seleccionarPaquete(std::nullopt);
        marcarCambio();
    }
    timeline.paqueteEditando.reset();
    emit changed();
}

} // namespace teskal
