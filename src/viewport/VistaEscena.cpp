// The workspace's commands on the 3D view: framing, presets, selection and
// the camera cut.
#include "federation/ContentView.h"

#include <algorithm>

namespace teskal {

std::optional<std::pair<glm::dvec3, float>> ContentView::encuadreEscena() {
    // The floor and the grid lines would inflate the box: the camera frames
    // the elements.
    const Box caja = scene.rootNode()->boundingBoxSin({nombrePisoEscena, nombreGrillasEscena, nombrePlanoSeccion});
    if (caja.min == caja.max) return std::nullopt;
    const glm::vec3 tam = caja.tamano();
    const float m = std::max({tam.x, tam.y, tam.z});
    return std::make_pair(glm::dvec3(caja.centro()), m > 0 ? m : 10.0f);
}

void ContentView::zoomExtents() {
    if (const auto e = encuadreEscena()) viewport.enfocarCaja(e->first, e->second);
}

void ContentView::aplicarVistaPreset(VistaPreset vista) {
    if (const auto e = encuadreEscena()) viewport.aplicarVista(vista, e->first, e->second);
}

std::string ContentView::claveDeNodo(const Node& nodo) {
    for (auto p = nodo.parent(); p; p = p->parent())
        if (p->nombreEmpiezaCon("esp_")) return p->name()->substr(4);
    return {};
}

bool ContentView::enInterferencia(const Node& nodo) const {
    for (const auto& i : interferencias)
        if (i.nodoA.get() == &nodo || i.nodoB.get() == &nodo) return true;
    return false;
}

void ContentView::seleccionarNodo(const std::shared_ptr<Node>& nuevo) {
    if (nodoSeleccionado && nodoSeleccionado->geometry())
        if (Material* m = nodoSeleccionado->geometry()->firstMaterial()) {
            m->setEmission(enInterferencia(*nodoSeleccionado) ? colores::naranjaPuro : colores::negro);
            if (diffuseOriginalSeleccionado) m->setDiffuse(*diffuseOriginalSeleccionado);
        }
    nodoSeleccionado = nuevo;
    diffuseOriginalSeleccionado.reset();
    // "Deseleccionar" and a click on empty space end a clash's ghosted focus.
    if (!nuevo) modoFocoFantasma = false;
    Material* m = nuevo && nuevo->geometry() ? nuevo->geometry()->firstMaterial() : nullptr;
    if (!m) {
        nombreSeleccionado.clear();
        emit changed();
        return;
    }
    // Only a colour is remembered: a textured material gets no texture back.
    if (m->diffuse() && !m->diffuseImagen()) diffuseOriginalSeleccionado = *m->diffuse();
    m->setEmission(Color{1.0f, 0.85f, 0.0f, 1.0f});
    m->setDiffuse(Color{1.0f, 0.95f, 0.4f, 1.0f});
    if (nuevo->name())
        nombreSeleccionado = *nuevo->name();
    else if (!nuevo->geometry()->name.empty())
        nombreSeleccionado = nuevo->geometry()->name;
    else
        nombreSeleccionado = "Elemento sin nombre";
    emit changed();
}

void ContentView::pulsarCorte() {
    if (!modoCorteCamara) {
        modoCorteCamara = true;
        mostrarPopoverCorte = true;
    } else {
        mostrarPopoverCorte = !mostrarPopoverCorte;
    }
    emit changed();
}

void ContentView::fijarModoCorte(bool activo) {
    modoCorteCamara = activo;
    if (!activo) mostrarPopoverCorte = false;
    emit changed();
}

void ContentView::fijarDistanciaCorte(double distancia) {
    distanciaCorte = std::clamp(distancia, 0.05, 5.0);
    emit changed();
}

void ContentView::cerrarPopoverCorte() {
    mostrarPopoverCorte = false;
    emit changed();
}

} // namespace teskal
