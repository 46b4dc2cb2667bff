// The workspace's clash commands: the analysis sheet, the search on the
// thread pool, the history and the review of each clash.
#include "federation/ContentView.h"

#include "analyses/clash/AnalisisExacto.h"
#include "analyses/clash/BusquedaInterferencias.h"
#include "federation/TextoUTF8.h"
#include "federation/TrabajoSegundoPlano.h"

#include <QUuid>
#include <algorithm>
#include <unordered_set>

namespace teskal {

namespace {

const Color naranjaProfundo{1.0f, 0.45f, 0.0f, 1.0f};

void fijarEmision(const std::shared_ptr<Node>& n, const Color& c) {
    if (n && n->geometry())
        if (Material* m = n->geometry()->firstMaterial()) m->setEmission(c);
}

} // namespace

bool ContentView::puedeDetectar() const {
    int conModelos = 0;
    for (const auto& [clave, e] : especialidades) conModelos += e.nodoRaiz != nullptr;
    return conModelos >= 2;
}

void ContentView::abrirConfigAnalisis() {
    nombreAnalisis = "Análisis " + QDateTime::currentDateTime().toString(QStringLiteral("dd/MM/yy HH:mm")).toStdString();
    std::vector<std::string> claves;
    for (const auto& [clave, e] : especialidades)
        if (e.nodoRaiz && e.isVisible) claves.push_back(clave);
    std::sort(claves.begin(), claves.end());
    paresDisponibles.clear();
    paresActivos.clear();
    for (std::size_t i = 0; i < claves.size(); ++i)
        for (std::size_t j = i + 1; j < claves.size(); ++j) {
            paresDisponibles.emplace_back(claves[i], claves[j]);
            paresActivos.insert(clavePar(claves[i], claves[j]));
        }
    mostrarConfigAnalisis = true;
    emit changed();
}

void ContentView::cancelarConfigAnalisis() {
    mostrarConfigAnalisis = false;
    emit changed();
}

void ContentView::limpiarInterferencias() {
    for (const auto& i : interferencias) {
        fijarEmision(i.nodoA, colores::negro);
        fijarEmision(i.nodoB, colores::negro);
    }
    interferencias.clear();
}

std::vector<NodoBB> ContentView::candidatosInterferencia() const {
    std::vector<NodoBB> candidatos;
    for (const auto& [clave, e] : especialidades) {
        if (!e.nodoRaiz || !e.isVisible) continue;
        const std::string& especialidad = clave; // clang < 16 can't capture a binding
        e.nodoRaiz->enumerateChildNodes([&](Node& n, bool&) {
            if (!n.geometry()) return;
            const Box b = n.boundingBox();
            if (!(b.max.x > b.min.x || b.max.y > b.min.y || b.max.z > b.min.z)) return;
            candidatos.push_back({n.shared_from_this(), especialidad, n.name().value_or("sin nombre"), n.globalId(),
                                  glm::dvec3(b.min), glm::dvec3(b.max), n.geometry(),
                                  glm::dmat4(n.worldTransform())});
        });
    }
    return candidatos;
}

void ContentView::iniciarDeteccion(const std::string& nombre, double tolerancia) {
    iniciarDeteccion(ConfigAnalisis{nombre, tolerancia, metodoAnalisis, holguraAnalisis});
}

void ContentView::iniciarDeteccion(const ConfigAnalisis& config) {
    if (detectando) return;
    detectando = true;
    limpiarInterferencias();
    emit changed();

    auto candidatos = std::make_shared<std::vector<NodoBB>>(candidatosInterferencia());
    auto activos = paresActivos;
    std::unordered_set<std::string> excluidos;
    if (excluirResueltos)
        for (const auto& a : historialAnalisis)
            for (const auto& i : a.interferencias)
                if (i.estado == EstadoClash::aprobado || i.estado == EstadoClash::resuelto)
                    excluidos.insert(clavePar(i.nombreA, i.nombreB));

    enSegundoPlano(
        this,
        [candidatos, activos = std::move(activos), excluidos = std::move(excluidos), config] {
            return analizarInterferencias(*candidatos, activos, excluidos, config);
        },
        [config](ContentView& cv, std::vector<Interferencia> resultado) {
            cv.registrarAnalisis(config, std::move(resultado));
        });
}

void ContentView::registrarAnalisis(const std::string& nombre, std::vector<Interferencia> resultado,
                                    double tolerancia) {
    registrarAnalisis(ConfigAnalisis{nombre, tolerancia, MetodoAnalisis::cajasEnvolventes, 0.0}, std::move(resultado));
}

void ContentView::registrarAnalisis(const ConfigAnalisis& config, std::vector<Interferencia> resultado) {
    AnalisisInterferencias a;
    a.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    a.nombre = config.nombre;
    a.fecha = QDateTime::currentDateTimeUtc();
    a.tolerancia = config.tolerancia;
    a.metodo = config.metodo;
    a.holgura = config.metodo == MetodoAnalisis::holgura ? config.holgura : 0.0;
    a.interferencias = resultado;
    analisisExpandidos.insert(a.id);
    historialAnalisis.push_back(std::move(a));
    marcarCambio();
    interferencias = std::move(resultado);
    detectando = false;
    std::unordered_set<Node*> marcados;
    for (const auto& i : interferencias)
        for (const auto* n : {&i.nodoA, &i.nodoB})
            if (*n && marcados.insert(n->get()).second) fijarEmision(*n, colores::naranjaPuro);
    emit changed();
}

void ContentView::restaurarDestacados() {
    for (const auto& n : nodosDestacadosHistorial) fijarEmision(n, n && enInterferencia(*n) ? colores::naranjaPuro : colores::negro);
    nodosDestacadosHistorial.clear();
    modoFocoFantasma = false;
}

void ContentView::enfocarInterferencia(const Interferencia& i) {
    if (!viewport.puntoDeVista()) return;
    restaurarDestacados();
    fijarEmision(i.nodoA, naranjaProfundo);
    fijarEmision(i.nodoB, naranjaProfundo);
    nodosDestacadosHistorial = {i.nodoA, i.nodoB};
    // A clash restored from a project has placeholders with nothing to show:
    // no ghosting then, which would only fade the whole scene.
    modoFocoFantasma = (i.nodoA && i.nodoA->geometry()) || (i.nodoB && i.nodoB->geometry());
    const float radio = static_cast<float>(i.radio);
    viewport.volarA(glm::vec3(i.viewpointPos), glm::vec3(i.viewpointTarget), std::max(radio * 0.001f, 0.01f),
                    radio * 200.0f, 600);
    emit changed();
}

void ContentView::terminarFocoFantasma() {
    if (!modoFocoFantasma) return;
    modoFocoFantasma = false;
    emit changed();
}

void ContentView::cambiarEstado(std::size_t analisis, std::size_t interferencia, EstadoClash estado) {
    if (analisis >= historialAnalisis.size()) return;
    auto& lista = historialAnalisis[analisis].interferencias;
    if (interferencia >= lista.size()) return;
    lista[interferencia].estado = estado;
    marcarCambio();
    emit changed();
}

void ContentView::pedirEliminarAnalisis(std::size_t indice) {
    if (indice >= historialAnalisis.size()) return;
    analisisPendienteEliminar = indice;
    emit changed();
}

void ContentView::eliminarAnalisis() {
    if (!analisisPendienteEliminar) return;
    const std::size_t indice = *analisisPendienteEliminar;
    analisisPendienteEliminar.reset();
    restaurarDestacados();
    if (indice < historialAnalisis.size()) {
        analisisExpandidos.erase(historialAnalisis[indice].id);
        historialAnalisis.erase(historialAnalisis.begin() + static_cast<std::ptrdiff_t>(indice));
        marcarCambio();
    }
    emit changed();
}

void ContentView::cancelarEliminarAnalisis() {
    analisisPendienteEliminar.reset();
    emit changed();
}

void ContentView::alternarAnalisisExpandido(const std::string& id) {
    if (!analisisExpandidos.erase(id)) analisisExpandidos.insert(id);
    emit changed();
}

} // namespace teskal
