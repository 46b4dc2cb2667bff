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

MapaXOR::MapaXOR(std::size_t capacidad) {
    entradas_.reserve(capacidad);
    std::size_t n = 16;
    while (n < capacidad * 2) n *= 2;
    tabla_.assign(n, 0);
}

std::size_t MapaXOR::hueco(std::string_view clave) const {
    const std::size_t mascara = tabla_.size() - 1;
    std::size_t i = std::hash<std::string_view>{}(clave)&mascara;
    while (tabla_[i] != 0 && entradas_[tabla_[i] - 1].clave != clave) i = (i + 1) & mascara;
    return i;
}

void MapaXOR::crecer() {
    std::vector<std::uint32_t> vieja(tabla_.size() * 2, 0);
    tabla_.swap(vieja);
    for (std::uint32_t e = 0; e < entradas_.size(); ++e) tabla_[hueco(entradas_[e].clave)] = e + 1;
}

void MapaXOR::poner(std::string_view clave, Node* nodo) {
    std::size_t i = hueco(clave);
    if (tabla_[i] != 0) {
        entradas_[tabla_[i] - 1].nodo = nodo; // the last node of a repeated key stays
        return;
    }
    entradas_.push_back({clave, nodo});
    tabla_[i] = static_cast<std::uint32_t>(entradas_.size());
    if (entradas_.size() * 2 > tabla_.size()) crecer();
}

Node* MapaXOR::buscar(std::string_view clave) const {
    const std::uint32_t e = tabla_[hueco(clave)];
    return e ? entradas_[e - 1].nodo : nullptr;
}

bool tieneGlobalIdsPropios(Node& modelo) {
    bool alguno = false;
    modelo.enumerateChildNodes([&](Node& n, bool& parar) {
        parar = alguno = n.geometry() && !n.globalId().empty();
    });
    return alguno;
}

MapaXOR mapaXOR(Node& modelo, const GlobalIdsPorNombre* globalIds, bool porNodo) {
    // The elements are mostly the root's children: a good first size.
    MapaXOR mapa(modelo.childNodes().size());
    std::string sonda; // the id map is keyed by std::string: one probe reused
    modelo.enumerateChildNodes([&](Node& n, bool&) {
        if (!n.geometry()) return;
        if (porNodo && !n.globalId().empty()) {
            mapa.poner(n.globalId(), &n);
            return;
        }
        std::string_view clave = partesNombre(nombreDe(n)).nombre;
        if (globalIds) {
            sonda.assign(clave);
            if (const auto it = globalIds->find(sonda); it != globalIds->end()) clave = it->second;
        }
        mapa.poner(clave, &n);
    });
    return mapa;
}

EstadisticasXOR ClasificacionXOR::estadisticas() const {
    return {static_cast<int>(agregados.size()), static_cast<int>(eliminados.size()),
            static_cast<int>(modificados.size()), static_cast<int>(comunes - modificados.size())};
}

ClasificacionXOR clasificarXOR(Node& base, Node& nuevo, const GlobalIdsPorNombre& idsBase,
                               const GlobalIdsPorNombre& idsNuevo) {
    const bool porNodo = tieneGlobalIdsPropios(base) && tieneGlobalIdsPropios(nuevo);
    const bool usarIds = !porNodo && !idsBase.empty() && !idsNuevo.empty();
    ClasificacionXOR c;
    c.base = mapaXOR(base, usarIds ? &idsBase : nullptr, porNodo);
    c.nuevo = mapaXOR(nuevo, usarIds ? &idsNuevo : nullptr, porNodo);

    for (const auto& [clave, nodoNuevo] : c.nuevo.entradas()) {
        Node* nodoBase = c.base.buscar(clave);
        if (!nodoBase) {
            c.agregados.push_back(clave);
            continue;
        }
        ++c.comunes;
        // Each common element's two boxes are read here once; the rows of the
        // result reuse these deltas.
        const DeltasXOR d = deltasXOR(nodoBase->boundingBox(), nodoNuevo->boundingBox());
        if (d.modificado()) c.modificados.push_back({clave, d});
    }
    for (const auto& [clave, nodo] : c.base.entradas())
        if (!c.nuevo.contiene(clave)) c.eliminados.push_back(clave);
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
    for (const auto& [clave, n] : c.base.entradas()) pintar(*n, coloresXOR::sinCambios, 0.75f);
    for (const auto& [clave, n] : c.nuevo.entradas()) pintar(*n, coloresXOR::sinCambios, 0.0f);
    for (const std::string_view clave : c.eliminados)
        pintar(*c.base.buscar(clave), coloresXOR::eliminado, 1.0f);
    for (const std::string_view clave : c.agregados)
        pintar(*c.nuevo.buscar(clave), coloresXOR::agregado, 1.0f);
    for (const auto& m : c.modificados) {
        pintar(*c.base.buscar(m.clave), coloresXOR::modificadoAnterior, 1.0f);
        pintar(*c.nuevo.buscar(m.clave), coloresXOR::modificadoNuevo, 1.0f);
    }
}

std::vector<ElementoCambioXOR> elementosCambioXOR(const ClasificacionXOR& c) {
    std::vector<ElementoCambioXOR> filas;
    filas.reserve(c.agregados.size() + c.eliminados.size() + c.modificados.size());
    const auto fila = [&](const Node& n, TipoCambioXOR tipo, const DeltasXOR& d) {
        const PartesNombre partes = partesNombre(nombreDe(n));
        filas.push_back({nuevoUUID(), std::string(partes.nombre), std::string(partes.tipoIFC), tipo,
                         static_cast<float>(d.posicion), static_cast<float>(d.tamano), n.globalId()});
    };
    for (const std::string_view clave : c.agregados)
        fila(*c.nuevo.buscar(clave), TipoCambioXOR::agregado, {});
    for (const std::string_view clave : c.eliminados)
        fila(*c.base.buscar(clave), TipoCambioXOR::eliminado, {});
    for (const auto& m : c.modificados)
        fila(*c.nuevo.buscar(m.clave), TipoCambioXOR::modificado, m.deltas);
    std::stable_sort(
        filas.begin(), filas.end(),
        [](const ElementoCambioXOR& a, const ElementoCambioXOR& b) { return a.nombre < b.nombre; });
    return filas;
}

} // namespace teskal
