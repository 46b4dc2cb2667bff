#include "timeline/Sincronizacion4D.h"

#include "timeline/ArbolAWP.h"

#include <algorithm>

namespace teskal {

Estado4D estadoElemento(std::string_view nombre, const std::vector<PaqueteAWP>& paquetes, const QDateTime& fecha) {
    for (const PaqueteAWP& p : paquetes)
        if (std::find(p.elementosNombre.begin(), p.elementosNombre.end(), nombre) != p.elementosNombre.end())
            return estadoEnFecha(msDe(p.fechaInicio), msDe(p.fechaFin), msDe(fecha));
    return Estado4D::terminado;
}

std::string textoEstadoSync4D(const Resultado4D& r, bool vistaDisponible) {
    if (r.sinElementos) return "⚠ Sin elementos asignados";
    if (r.nodos > 0)
        return "🔵" + std::to_string(r.porEstado[2]) + " ✅" + std::to_string(r.porEstado[1]) + " ⬜" +
               std::to_string(r.porEstado[0]);
    if (vistaDisponible) return "⚠ Nombres no coinciden (" + std::to_string(r.nombres) + " buscados)";
    return "⚠ Vista 3D no disponible";
}

void Sincronia4D::construirNombres(const std::vector<PaqueteAWP>& paquetes) {
    slotDeNombre_.clear();
    inicio_.clear();
    fin_.clear();
    hayNombres_ = false;
    for (const PaqueteAWP& p : paquetes) {
        if (p.elementosNombre.empty()) continue;
        hayNombres_ = true;
        const qint64 inicio = msDe(p.fechaInicio), fin = msDe(p.fechaFin);
        // The first package that lists a name keeps it.
        for (const std::string& nombre : p.elementosNombre)
            if (slotDeNombre_.try_emplace(nombre, static_cast<std::uint32_t>(inicio_.size())).second) {
                inicio_.push_back(inicio);
                fin_.push_back(fin);
            }
    }
    estado_.assign(inicio_.size(), 0xff);
}

void Sincronia4D::construirTabla(const std::vector<std::shared_ptr<Node>>& raices) {
    // One walk: the element nodes with a listed name, a geometry and a
    // material, gathered by slot (a counting sort keeps the tree order).
    std::vector<std::pair<std::uint32_t, Node*>> hallados;
    for (const auto& raiz : raices) {
        if (!raiz) continue;
        raiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.name() || n.name()->empty() || !n.geometry() || !n.geometry()->firstMaterial()) return;
            const auto it = slotDeNombre_.find(*n.name());
            if (it != slotDeNombre_.end()) hallados.emplace_back(it->second, &n);
        });
    }
    desde_.assign(inicio_.size() + 1, 0);
    for (const auto& [slot, n] : hallados) ++desde_[slot + 1];
    for (std::size_t s = 0; s < inicio_.size(); ++s) desde_[s + 1] += desde_[s];
    nodos_.assign(hallados.size(), nullptr);
    std::vector<std::uint32_t> lleno(desde_.begin(), desde_.end() - 1);
    for (const auto& [slot, n] : hallados) nodos_[lleno[slot]++] = n;
    raicesTabla_.clear();
    for (const auto& raiz : raices) raicesTabla_.push_back(raiz.get());
}

void Sincronia4D::aplicarNodo(Node& n, Estado4D estado) {
    Material& m = *n.geometry()->firstMaterial();
    // The first touch records the original; later ones never overwrite it.
    auto [it, nuevo] = originales_.try_emplace(&n);
    if (nuevo) it->second = {n.shared_from_this(), m.diffuseContenido()};
    switch (estado) {
    case Estado4D::pendiente:
        n.setOpacity(0.0f);
        break;
    case Estado4D::enCurso:
        n.setOpacity(opacidadEnCurso);
        if (m.diffuse() != verdeEnCurso || m.diffuseImagen()) n.setDiffusePropio({verdeEnCurso, nullptr});
        break;
    case Estado4D::terminado:
        if (m.diffuse() != it->second.diffuse.color || m.diffuseImagen() != it->second.diffuse.imagen)
            n.setDiffusePropio(it->second.diffuse);
        n.setOpacity(1.0f);
        break;
    }
}

Resultado4D Sincronia4D::aplicar(const std::vector<PaqueteAWP>& paquetes, const VersionPaquetes& version,
                                 const std::vector<std::shared_ptr<Node>>& raices, const SceneCounters& contadores,
                                 const QDateTime& fecha) {
    if (version != version_) {
        construirNombres(paquetes);
        version_ = version;
        tablaValida_ = false;
    }
    Resultado4D r;
    r.nombres = inicio_.size();
    if (!hayNombres_) {
        r.sinElementos = true;
        return r;
    }
    const bool otrasRaices =
        !std::equal(raices.begin(), raices.end(), raicesTabla_.begin(), raicesTabla_.end(),
                    [](const std::shared_ptr<Node>& a, const Node* b) { return a.get() == b; });
    if (!tablaValida_ || otrasRaices || estructura_ != contadores.estructura) {
        construirTabla(raices);
        estructura_ = contadores.estructura;
        tablaValida_ = true;
        repasarTodo_ = true;
    }
    // Someone else changed the look since the last step: every node again.
    if (contadores.apariencia != aparienciaTrasPaso_) repasarTodo_ = true;

    const qint64 f = msDe(fecha);
    for (std::size_t s = 0; s < inicio_.size(); ++s) {
        const Estado4D e = estadoEnFecha(inicio_[s], fin_[s], f);
        ++r.porEstado[static_cast<std::size_t>(e)];
        if (!repasarTodo_ && estado_[s] == static_cast<std::uint8_t>(e)) continue;
        estado_[s] = static_cast<std::uint8_t>(e);
        for (std::uint32_t k = desde_[s]; k < desde_[s + 1]; ++k) aplicarNodo(*nodos_[k], e);
        r.nodosCambiados += desde_[s + 1] - desde_[s];
    }
    r.nodos = nodos_.size();
    if (r.nodos > 0) {
        repasarTodo_ = false;
        aparienciaTrasPaso_ = contadores.apariencia;
    }
    return r;
}

void Sincronia4D::restaurar() {
    for (auto& [clave, o] : originales_) {
        Node& n = *o.nodo;
        n.setOpacity(1.0f);
        if (!n.geometry()) continue;
        if (const Material* m = n.geometry()->firstMaterial(); m && m->diffuseContenido() != o.diffuse)
            n.setDiffusePropio(o.diffuse);
    }
    originales_.clear();
    std::fill(estado_.begin(), estado_.end(), 0xff);
    repasarTodo_ = true;
    aparienciaTrasPaso_ = ~0ull;
}

} // namespace teskal
