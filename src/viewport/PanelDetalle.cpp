#include "viewport/PanelDetalle.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"

#include <cmath>

namespace teskal {

namespace {

// The parts of a name split on "/", empty pieces dropped ("a//b" has two).
std::vector<std::string> partesNombre(const std::string& nombre) {
    std::vector<std::string> partes;
    std::size_t inicio = 0;
    while (inicio <= nombre.size()) {
        std::size_t barra = nombre.find('/', inicio);
        if (barra == std::string::npos) barra = nombre.size();
        if (barra > inicio) partes.push_back(nombre.substr(inicio, barra - inicio));
        inicio = barra + 1;
    }
    return partes;
}

} // namespace

std::vector<FilaDetalle> filasDetalle(const ContentView& cv, const Node& nodo) {
    std::vector<FilaDetalle> filas;
    // The element's IFC identity as the converter reported it; a node without
    // one (a helper, or a group the converter did not name) shows a dash.
    filas.push_back({"Clase IFC", nodo.claseIFC().empty() ? "—" : nodo.claseIFC()});
    filas.push_back({"GlobalId", nodo.globalId().empty() ? "—" : nodo.globalId()});
    std::string nombre = "Sin nombre";
    if (nodo.name())
        nombre = *nodo.name();
    else if (nodo.geometry() && !nodo.geometry()->name.empty())
        nombre = nodo.geometry()->name;

    const auto partes = partesNombre(nombre);
    if (partes.size() < 2) {
        filas.push_back({"Elemento", nombre});
    } else {
        filas.push_back({"Tipo IFC", partes[0]});
        filas.push_back({"Nombre", partes[1]});
    }

    const std::string clave = ContentView::claveDeNodo(nodo);
    const auto esp = cv.especialidades.find(clave);
    filas.push_back({"Especialidad", esp == cv.especialidades.end() ? "—" : esp->second.nombre});

    const Box caja = nodo.boundingBox();
    const glm::vec3 t = caja.tamano();
    const float w = std::fabs(t.x), h = std::fabs(t.y), d = std::fabs(t.z);
    const glm::vec3 c = caja.centro();
    filas.push_back({"Dimensiones (m)", formato("W:%.2f H:%.2f D:%.2f", w, h, d)});
    filas.push_back({"Posición", formato("X:%.2f Y:%.2f Z:%.2f", c.x, c.y, c.z)});
    filas.push_back({"Vol. aprox. (m³)", formato("%.4f", static_cast<double>(w) * h * d)});
    filas.push_back({"Interferencia", cv.enInterferencia(nodo) ? "Colisión detectada" : "Sin conflictos"});

    const PropiedadesElemento* propiedades = cv.propiedadesDe(nodo);
    if (!propiedades || propiedades->empty()) return filas;
    filas.push_back({"── Propiedades IFC ──", ""});
    // The entry keeps its keys in ascending text order.
    for (const auto& [k, v] : *propiedades) filas.push_back({k, v});
    return filas;
}

} // namespace teskal
