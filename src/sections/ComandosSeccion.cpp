// The section in the workspace: the panel's controls, the slider's range,
// the plane and the clipping in the 3D view, and the opening of a sheet.
#include "federation/ContentView.h"

#include "federation/TextoUTF8.h"

#include <QUuid>
#include <algorithm>
#include <glm/gtc/constants.hpp>
#include <limits>

namespace teskal {

namespace {

// A square of 100 m in its own XY plane, centred on its origin.
std::shared_ptr<Geometry> geometriaPlanoSeccion(const Color& color) {
    auto g = std::make_shared<Geometry>();
    g->name = std::string(nombrePlanoSeccion);
    constexpr float m = 50.0f;
    g->vertices = {{-m, -m, 0}, {m, -m, 0}, {m, m, 0}, {-m, m, 0}};
    g->normales.assign(4, glm::vec3(0, 0, 1));
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2, 0, 2, 3}});
    auto mat = std::make_shared<Material>();
    mat->setDiffuse(color);
    mat->setDoubleSided(true);
    g->materiales.push_back(std::move(mat));
    return g;
}

} // namespace

void ContentView::actualizarRangoSeccion() {
    float minimo = std::numeric_limits<float>::infinity();
    float maximo = -std::numeric_limits<float>::infinity();
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.isVisible || !esp.nodoRaiz) continue;
        esp.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            const Box caja = n.boundingBox();
            minimo = std::min(minimo, componenteEje(seccion.eje, caja.min));
            maximo = std::max(maximo, componenteEje(seccion.eje, caja.max));
        });
    }
    if (!(maximo > minimo)) return; // no visible geometry: the range stays
    seccion.rangoMin = static_cast<double>(minimo) - 0.5;
    seccion.rangoMax = static_cast<double>(maximo) + 0.5;
    if (seccion.rangoMin > seccion.posicion) seccion.posicion = seccion.rangoMin;
    if (seccion.posicion > seccion.rangoMax) seccion.posicion = seccion.rangoMax;
}

void ContentView::aplicarPlanoSeccion() {
    if (seccion.nodoPlanVisual) seccion.nodoPlanVisual->removeFromParentNode();
    seccion.nodoPlanVisual.reset();
    if (!seccion.activa) {
        for (const auto& [clave, esp] : especialidades)
            if (esp.nodoRaiz) esp.nodoRaiz->enumerateChildNodes([](Node& n, bool&) { n.setHidden(false); });
        return;
    }
    // Element by element: what lies wholly beyond the plane (on the high side)
    // is hidden, what the plane crosses stays whole.
    const float p = static_cast<float>(seccion.posicion);
    const int eje = seccion.eje;
    for (const auto& [clave, esp] : especialidades) {
        if (!esp.nodoRaiz) continue;
        esp.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            n.setHidden(p < componenteEje(eje, n.boundingBox().min));
        });
    }
    Color color{1.0f, 0.8f, 0.2f, 0.18f};
    glm::vec3 angulos{0.0f}, lugar{0.0f, 0.0f, p};
    if (eje == 0) {
        color = {0.2f, 0.6f, 1.0f, 0.18f};
        angulos = {0.0f, glm::half_pi<float>(), 0.0f};
        lugar = {p, 0.0f, 0.0f};
    } else if (eje == 1) {
        color = {0.2f, 1.0f, 0.3f, 0.18f};
        angulos = {glm::half_pi<float>(), 0.0f, 0.0f};
        lugar = {0.0f, p, 0.0f};
    }
    auto plano = Node::crear(std::string(nombrePlanoSeccion));
    plano->setGeometry(geometriaPlanoSeccion(color));
    plano->setEulerAngles(angulos);
    plano->setPosition(lugar);
    scene.rootNode()->addChildNode(plano);
    seccion.nodoPlanVisual = std::move(plano);
}

void ContentView::fijarSeccionActiva(bool activa) {
    seccion.activa = activa;
    if (activa) actualizarRangoSeccion();
    aplicarPlanoSeccion();
    emit changed();
}

void ContentView::fijarEjeSeccion(int eje) {
    seccion.eje = eje;
    actualizarRangoSeccion();
    aplicarPlanoSeccion();
    emit changed();
}

void ContentView::fijarPosicionSeccion(double posicion) {
    seccion.posicion = posicion;
    aplicarPlanoSeccion();
    emit changed();
}

void ContentView::fijarModoProfundidad(int modo) {
    seccion.modoProfundidad = modo;
    emit changed();
}

void ContentView::fijarProfundidadSeccion(double profundidad) {
    seccion.profundidad = profundidad;
    emit changed();
}

void ContentView::abrirPlano2D() {
    const double profundidad = profundidadDeModo(seccion.modoProfundidad, seccion.profundidad);
    Plano2D plano;
    RangosCorte rangos;
    plano.segmentos = extraerSegmentos(especialidades, seccion.eje, seccion.posicion, profundidad, &rangos);
    if (plano.segmentos.empty()) {
        mostrarError("No se encontraron elementos en el plano de corte. Ajusta la posición de la sección.");
        return;
    }
    plano.titulo = tituloPlano(seccion.eje, seccion.posicion, seccion.modoProfundidad, seccion.profundidad);
    plano.etiquetas =
        construirEtiquetas(especialidades, seccion.eje, propiedadesIFC, propiedadesPorGlobalId, seccion.posicion, &rangos);
    if (const auto it = seccion.almacenCotas.find(plano.titulo); it != seccion.almacenCotas.end())
        plano.cotas = it->second;
    if (const auto it = seccion.almacenEtiquetas.find(plano.titulo); it != seccion.almacenEtiquetas.end())
        plano.etiquetas = fusionarEtiquetas(std::move(plano.etiquetas), it->second);
    plano.segmentosGrilla = proyectarGrilla(grillasIFC, seccion.eje);
    seccion.planoPorAbrir = std::move(plano);
    emit changed();
}

void ContentView::guardarEstadoPlano(const std::string& titulo, std::vector<Cota2D> cotas,
                                     std::vector<Etiqueta2D> etiquetas) {
    // The document changes only where what it keeps of the sheet changes:
    // labels are compared by what the project holds of them.
    auto iguales = [](const std::vector<Etiqueta2D>& a, const std::vector<Etiqueta2D>& b) {
        if (a.size() != b.size()) return false;
        for (std::size_t i = 0; i < a.size(); ++i)
            if (!(etiquetaGuardada(a[i]) == etiquetaGuardada(b[i]))) return false;
        return true;
    };
    const auto c = seccion.almacenCotas.find(titulo);
    const auto e = seccion.almacenEtiquetas.find(titulo);
    const bool cambia = c == seccion.almacenCotas.end() || e == seccion.almacenEtiquetas.end() ||
                        c->second != cotas || !iguales(e->second, etiquetas);
    seccion.almacenCotas[titulo] = std::move(cotas);
    seccion.almacenEtiquetas[titulo] = std::move(etiquetas);
    if (cambia) marcarCambio();
    emit changed();
}

void ContentView::guardarSeccion(const std::string& nombre) {
    std::string n(recortarBlancos(nombre));
    const std::string cuenta = std::to_string(seccion.guardadas.size() + 1);
    if (n.empty()) n = "Sección " + cuenta;
    // Once: the name made here is not tested again.
    if (std::any_of(seccion.guardadas.begin(), seccion.guardadas.end(),
                    [&](const SeccionGuardada& s) { return s.nombre == n; }))
        n += " " + cuenta;
    seccion.guardadas.push_back({QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(), n,
                                 seccion.eje, seccion.posicion});
    marcarCambio();
    emit changed();
}

void ContentView::restaurarSeccion(const SeccionGuardada& guardada) {
    // The depth mode is the panel's: the title, and with it the stored
    // dimensions and labels, follow the current mode.
    seccion.eje = guardada.eje;
    seccion.posicion = guardada.posicion;
    actualizarRangoSeccion();
    aplicarPlanoSeccion();
    abrirPlano2D();
    emit changed();
}

void ContentView::pedirEliminarSeccion(const std::string& id) {
    seccion.pendienteEliminar = id;
    emit changed();
}

void ContentView::eliminarSeccion() {
    if (seccion.pendienteEliminar) {
        const std::string id = *seccion.pendienteEliminar;
        if (std::erase_if(seccion.guardadas, [&](const SeccionGuardada& s) { return s.id == id; }) > 0) marcarCambio();
    }
    seccion.pendienteEliminar.reset();
    emit changed();
}

void ContentView::cancelarEliminarSeccion() {
    seccion.pendienteEliminar.reset();
    emit changed();
}

} // namespace teskal
