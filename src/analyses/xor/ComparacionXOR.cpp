#include "analyses/xor/ComparacionXOR.h"

#include <QUuid>
#include <algorithm>
#include <cmath>

namespace teskal {

PartesNombre partesNombre(std::string_view nombreNodo) {
    const std::size_t barra = nombreNodo.find('/');
    if (barra == std::string_view::npos) return {{}, nombreNodo};
    const std::string_view primero = nombreNodo.substr(0, barra);
    const std::string_view resto = nombreNodo.substr(barra + 1);
    // An empty piece drops out, and a single piece is the whole name.
    if (primero.empty() || resto.empty()) return {{}, nombreNodo};
    return {primero, resto};
}

DeltasXOR deltasXOR(const Box& base, const Box& nuevo) {
    DeltasXOR d;
    double suma = 0;
    for (int i = 0; i < 3; ++i) {
        const double cb = (double(base.min[i]) + double(base.max[i])) * 0.5;
        const double cn = (double(nuevo.min[i]) + double(nuevo.max[i])) * 0.5;
        suma += (cb - cn) * (cb - cn);
        const double extensionBase = double(base.max[i]) - double(base.min[i]);
        const double extensionNueva = double(nuevo.max[i]) - double(nuevo.min[i]);
        d.tamano = std::max(d.tamano, std::abs(extensionBase - extensionNueva));
    }
    d.posicion = std::sqrt(suma);
    return d;
}

namespace {

std::string_view nombreDe(const Node& n) {
    return n.name() ? std::string_view(*n.name()) : std::string_view();
}

std::string nuevoUUID() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace

MapaXOR mapaXOR(Node& modelo, const GlobalIdsPorNombre* globalIds) {
    MapaXOR mapa;
    std::string sonda; // the id map is keyed by std::string: one probe reused
    modelo.enumerateChildNodes([&](Node& n, bool&) {
        if (!n.geometry()) return;
        std::string_view clave = partesNombre(nombreDe(n)).nombre;
        if (globalIds) {
            sonda.assign(clave);
            if (const auto it = globalIds->find(sonda); it != globalIds->end()) clave = it->second;
        }
        const auto [it, nueva] = mapa.nodos.try_emplace(clave, &n);
        if (nueva)
            mapa.orden.push_back(clave);
        else
            it->second = &n; // the last node of a repeated key stays
    });
    return mapa;
}

EstadisticasXOR ClasificacionXOR::estadisticas() const {
    return {static_cast<int>(agregados.size()), static_cast<int>(eliminados.size()),
            static_cast<int>(modificados.size()), static_cast<int>(comunes - modificados.size())};
}

ClasificacionXOR clasificarXOR(Node& base, Node& nuevo, const GlobalIdsPorNombre& idsBase,
                               const GlobalIdsPorNombre& idsNuevo) {
    const bool usarIds = !idsBase.empty() && !idsNuevo.empty();
    ClasificacionXOR c;
    c.base = mapaXOR(base, usarIds ? &idsBase : nullptr);
    c.nuevo = mapaXOR(nuevo, usarIds ? &idsNuevo : nullptr);

    for (const std::string_view clave : c.nuevo.orden) {
        const auto enBase = c.base.nodos.find(clave);
        if (enBase == c.base.nodos.end()) {
            c.agregados.push_back(clave);
            continue;
        }
        ++c.comunes;
        // Each common element's two boxes are read here once; the rows of the
        // result reuse these deltas.
        const DeltasXOR d =
            deltasXOR(enBase->second->boundingBox(), c.nuevo.nodos.at(clave)->boundingBox());
        if (d.modificado()) c.modificados.push_back({clave, d});
    }
    for (const std::string_view clave : c.base.orden)
        if (!c.nuevo.nodos.contains(clave)) c.eliminados.push_back(clave);
    return c;
}

namespace {

void pintar(Node& n, const Color& color, float opacidad) {
    Geometry* g = n.geometry().get();
    if (!g) return;
    if (Material* m = g->firstMaterial()) {
        m->setDiffuse(color);
        m->setTransparency(opacidad);
    }
}

} // namespace

void pintarXOR(const ClasificacionXOR& c) {
    // Unchanged first, then the changed keys over them: each key is in one set.
    for (const auto& [clave, n] : c.base.nodos) pintar(*n, coloresXOR::sinCambios, 0.75f);
    for (const auto& [clave, n] : c.nuevo.nodos) pintar(*n, coloresXOR::sinCambios, 0.0f);
    for (const std::string_view clave : c.eliminados)
        pintar(*c.base.nodos.at(clave), coloresXOR::eliminado, 1.0f);
    for (const std::string_view clave : c.agregados)
        pintar(*c.nuevo.nodos.at(clave), coloresXOR::agregado, 1.0f);
    for (const auto& m : c.modificados) {
        pintar(*c.base.nodos.at(m.clave), coloresXOR::modificadoAnterior, 1.0f);
        pintar(*c.nuevo.nodos.at(m.clave), coloresXOR::modificadoNuevo, 1.0f);
    }
}

std::vector<ElementoCambioXOR> elementosCambioXOR(const ClasificacionXOR& c) {
    std::vector<ElementoCambioXOR> filas;
    filas.reserve(c.agregados.size() + c.eliminados.size() + c.modificados.size());
    const auto fila = [&](const Node& n, TipoCambioXOR tipo, const DeltasXOR& d) {
        const PartesNombre partes = partesNombre(nombreDe(n));
        filas.push_back({nuevoUUID(), std::string(partes.nombre), std::string(partes.tipoIFC), tipo,
                         static_cast<float>(d.posicion), static_cast<float>(d.tamano)});
    };
    for (const std::string_view clave : c.agregados)
        fila(*c.nuevo.nodos.at(clave), TipoCambioXOR::agregado, {});
    for (const std::string_view clave : c.eliminados)
        fila(*c.base.nodos.at(clave), TipoCambioXOR::eliminado, {});
    for (const auto& m : c.modificados)
        fila(*c.nuevo.nodos.at(m.clave), TipoCambioXOR::modificado, m.deltas);
    std::stable_sort(
        filas.begin(), filas.end(),
        [](const ElementoCambioXOR& a, const ElementoCambioXOR& b) { return a.nombre < b.nombre; });
    return filas;
}

} // namespace teskal
