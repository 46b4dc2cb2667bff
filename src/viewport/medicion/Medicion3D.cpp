// The workspace's commands of measuring in the 3D view: the tool buttons,
// clicks and hovers, the points and the figures they leave in the scene.
#include "federation/ContentView.h"
#include "viewport/medicion/IndiceRayos.h"
#include "viewport/medicion/Medicion.h"

namespace teskal {

namespace {

// Runs a change that touches only the measurement's own nodes, telling the
// ray-cast index that its elements are as they were.
template <class F> void cambioDeFiguras(EstadoMedicion& m, Scene& escena, F&& cambio) {
    const std::uint64_t antes = escena.contadores().estructura;
    cambio();
    if (m.indice) m.indice->cambioPropio(antes, escena.contadores().estructura);
}

} // namespace

void ContentView::pulsarModoMedicion(ModoMedicion3D modo) {
    if (medicion.modoMedicion3D == modo) {
        medicion.modoMedicion3D = ModoMedicion3D::inactivo;
        limpiarMedicion();
    } else {
        limpiarMedicion();
        medicion.modoMedicion3D = modo;
    }
    emit changed();
}

void ContentView::agregarFiguraMedicion(std::shared_ptr<Node> figura) {
    if (!figura) return;
    cambioDeFiguras(medicion, scene, [&] { scene.rootNode()->addChildNode(figura); });
    medicion.nodosMedicion.push_back(std::move(figura));
}

void ContentView::quitarHoverMedicion() {
    cambioDeFiguras(medicion, scene, [&] {
        if (medicion.nodoSnapIndicador) medicion.nodoSnapIndicador->removeFromParentNode();
        if (medicion.nodoLineaPreview) medicion.nodoLineaPreview->removeFromParentNode();
    });
    medicion.nodoSnapIndicador.reset();
    medicion.nodoLineaPreview.reset();
}

void ContentView::limpiarMedicion() {
    cambioDeFiguras(medicion, scene, [&] {
        for (const auto& n : medicion.nodosMedicion) n->removeFromParentNode();
    });
    medicion.nodosMedicion.clear();
    medicion.medicionPuntoA.reset();
    medicion.medicionPuntoB.reset();
    medicion.medicionPuntoC.reset();
    medicion.medicionPuntosArea.clear();
    quitarHoverMedicion();
    emit changed();
}

void ContentView::registrarPunto(const glm::vec3& p) {
    EstadoMedicion& m = medicion;
    const PintorEtiquetas& pintor = m.pintorEtiquetas;
    switch (m.modoMedicion3D) {
    case ModoMedicion3D::inactivo:
        return;
    case ModoMedicion3D::distancia:
        if (m.medicionPuntoA && !m.medicionPuntoB) {
            m.medicionPuntoB = p;
            agregarFiguraMedicion(figuraMarcador(p, "B", pintor));
            agregarFiguraMedicion(figuraDistancia(*m.medicionPuntoA, p, pintor));
        } else {
            // The first click, or a third one that begins a new measurement.
            limpiarMedicion();
            m.medicionPuntoA = p;
            agregarFiguraMedicion(figuraMarcador(p, "A", pintor));
        }
        break;
    case ModoMedicion3D::area:
        m.medicionPuntosArea.push_back(p);
        agregarFiguraMedicion(figuraMarcador(p, std::to_string(m.medicionPuntosArea.size()), pintor));
        break;
    case ModoMedicion3D::angulo:
        if (m.medicionPuntoA && !m.medicionPuntoB) {
            m.medicionPuntoB = p;
            agregarFiguraMedicion(figuraMarcador(p, "Vértice", pintor));
        } else if (m.medicionPuntoA && m.medicionPuntoB && !m.medicionPuntoC) {
            m.medicionPuntoC = p;
            agregarFiguraMedicion(figuraMarcador(p, "B", pintor));
            agregarFiguraMedicion(figuraAngulo(*m.medicionPuntoB, *m.medicionPuntoA, p, pintor));
        } else {
            limpiarMedicion();
            m.medicionPuntoA = p;
            agregarFiguraMedicion(figuraMarcador(p, "A", pintor));
        }
        break;
    case ModoMedicion3D::punto:
        limpiarMedicion();
        m.medicionPuntoA = p;
        agregarFiguraMedicion(figuraPunto(p, pintor));
        break;
    }
    emit changed();
}

void ContentView::cerrarPoligono() {
    EstadoMedicion& m = medicion;
    if (m.medicionPuntosArea.size() < 3) return;
    agregarFiguraMedicion(figuraPoligono(m.medicionPuntosArea, m.pintorEtiquetas));
    m.medicionPuntosArea.clear();
    m.medicionPuntoA.reset();
    quitarHoverMedicion(); // the rubber band ran through the points just closed
    emit changed();
}

std::optional<PuntoMedido> ContentView::puntoBajoRaton(const VistaRaton& vista) {
    if (!medicion.indice) medicion.indice = std::make_shared<IndiceRayos>();
    medicion.indice->actualizar(scene);
    glm::vec3 origen, direccion;
    rayoRaton(vista, origen, direccion);
    const auto impacto = medicion.indice->lanzar(origen, direccion);
    if (!impacto) return std::nullopt;
    if (const auto vertice = ajustarVertice(*impacto->nodo, vista)) return PuntoMedido{*vertice, true};
    return PuntoMedido{impacto->punto, false};
}

void ContentView::clicMedicion(const VistaRaton& vista) {
    if (medicion.modoMedicion3D == ModoMedicion3D::inactivo) return;
    // A click on empty space does nothing; the floor counts as a surface.
    if (const auto p = puntoBajoRaton(vista)) registrarPunto(p->punto);
}

void ContentView::moverRatonMedicion(const VistaRaton& vista) {
    if (medicion.modoMedicion3D == ModoMedicion3D::inactivo) return;
    const auto p = puntoBajoRaton(vista);
    quitarHoverMedicion();
    if (!p) return;
    EstadoMedicion& m = medicion;
    cambioDeFiguras(m, scene, [&] {
        if (p->ajustado) {
            m.nodoSnapIndicador = figuraAnillo(p->punto, radioAnillo(glm::length(p->punto - vista.posicionCamara)));
            scene.rootNode()->addChildNode(m.nodoSnapIndicador);
        }
        m.nodoLineaPreview =
            figuraBandaElastica(m.medicionPuntosArea, m.medicionPuntoA, p->punto, vista.posicionCamara,
                                m.pintorEtiquetas);
        if (m.nodoLineaPreview) scene.rootNode()->addChildNode(m.nodoLineaPreview);
    });
}

} // namespace teskal
