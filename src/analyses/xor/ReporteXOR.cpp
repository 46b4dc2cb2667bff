// The change report of a version comparison: its counts, texts and the
// scenes its element images are rendered from.
#include "analyses/xor/ReporteXOR.h"

#include "federation/Formato.h"
#include "scene/ClonNodo.h"
#include "scene/ColoresSistema.h"
#include "scene/Orientacion.h"

#include <algorithm>

namespace teskal {

const std::array<AspectoCambioXOR, 3>& aspectosCambioXOR() {
    static const std::array<AspectoCambioXOR, 3> aspectos{{
        {TipoCambioXOR::agregado, "Agregados", "plus.circle.fill", colores::verde, colores::verde},
        {TipoCambioXOR::eliminado, "Eliminados", "minus.circle.fill", colores::rojo, colores::rojo},
        {TipoCambioXOR::modificado, "Modificados", "arrow.triangle.2.circlepath.circle.fill",
         colores::naranja, coloresXOR::modificadoAnterior},
    }};
    return aspectos;
}

const AspectoCambioXOR& aspectoCambioXOR(TipoCambioXOR tipo) {
    return aspectosCambioXOR()[static_cast<std::size_t>(tipo)];
}

int CuentasInformeXOR::deTipo(TipoCambioXOR tipo) const {
    switch (tipo) {
    case TipoCambioXOR::agregado:
        return agregados;
    case TipoCambioXOR::eliminado:
        return eliminados;
    case TipoCambioXOR::modificado:
        return modificados;
    }
    return 0;
}

CuentasInformeXOR cuentasInformeXOR(const ResultadoXOR& resultado) {
    CuentasInformeXOR c;
    c.iguales = resultado.iguales;
    for (const ElementoCambioXOR& e : resultado.elementos) {
        switch (e.tipoCambio) {
        case TipoCambioXOR::agregado:
            ++c.agregados;
            break;
        case TipoCambioXOR::eliminado:
            ++c.eliminados;
            break;
        case TipoCambioXOR::modificado:
            ++c.modificados;
            break;
        }
    }
    return c;
}

const std::string& claveThumbnailXOR(const ElementoCambioXOR& elemento) {
    return elemento.globalId.empty() ? elemento.nombre : elemento.globalId;
}

bool deltaVisibleXOR(float delta) {
    return delta > 0.001f;
}

std::string textoDeltaXOR(float delta) {
    return deltaVisibleXOR(delta) ? formato("%.3f m", static_cast<double>(delta)) : "—";
}

std::string textoElementosXOR(int cantidad) {
    return std::to_string(cantidad) + (cantidad == 1 ? " elemento" : " elementos");
}

std::string tituloInformeXOR(const ResultadoXOR& resultado) {
    return "Informe XOR · " + resultado.archivoBase + " → " + resultado.archivoNuevo;
}

std::vector<TrabajoThumbnailXOR>
trabajosThumbnailXOR(const std::vector<ElementoCambioXOR>& elementos, Node* modeloBase,
                     Node* modeloNuevo) {
    std::vector<TrabajoThumbnailXOR> trabajos;
    trabajos.reserve(elementos.size());
    for (const ElementoCambioXOR& e : elementos) {
        Node* modelo = modeloNuevo;
        if (e.tipoCambio == TipoCambioXOR::eliminado ||
            (e.tipoCambio == TipoCambioXOR::modificado && !modeloNuevo))
            modelo = modeloBase;
        if (!modelo) continue;
        const auto nodo = buscarElementoConGeometria(*modelo, e.nombre, e.globalId);
        if (!nodo) continue;
        trabajos.push_back({claveThumbnailXOR(e), clonarNodo(*nodo),
                            aspectoCambioXOR(e.tipoCambio).colorThumbnail});
    }
    return trabajos;
}

namespace {

// Gives the clone and each of its descendants a geometry of its own with the
// one plain material: the live scene's geometries stay as they are.
void pintarClon(Node& n, const std::shared_ptr<Material>& material) {
    if (n.geometry()) {
        auto geometria = std::make_shared<Geometry>(*n.geometry());
        geometria->materiales = {material};
        n.setGeometry(std::move(geometria));
    }
    for (const auto& hijo : n.childNodes()) pintarClon(*hijo, material);
}

} // namespace

EscenaThumbnail escenaThumbnailXOR(const Node& clon, const Color& color) {
    EscenaThumbnail t;
    t.escena = std::make_unique<Scene>();
    Node& raiz = *t.escena->rootNode();

    auto material = std::make_shared<Material>();
    material->setDiffuse(color);
    material->setEmission(colores::negro);
    material->setLightingModel(ModeloIluminacion::Phong);
    material->setDoubleSided(true);
    auto objeto = clonarNodo(clon);
    pintarClon(*objeto, material);
    raiz.addChildNode(objeto);
    agregarLucesThumbnail(raiz);

    // The element alone, framed on its own box: a fixed diagonal at a
    // distance that follows its largest extent.
    const Box caja = objeto->boundingBoxMundo();
    const glm::dvec3 minimo = caja.vacia ? glm::dvec3(0.0) : glm::dvec3(caja.min);
    const glm::dvec3 maximo = caja.vacia ? glm::dvec3(0.0) : glm::dvec3(caja.max);
    const glm::dvec3 extension = maximo - minimo;
    const double s = std::max({extension.x, extension.y, extension.z});
    const glm::dvec3 centro = (minimo + maximo) * 0.5;
    const double d = std::max(s * 0.75, 0.15);
    const glm::dvec3 posicion(centro.x + d, centro.y + 0.6 * d, centro.z + d);
    Camera camara;
    // An element without extent still gets a view volume around the camera.
    camara.zFar = static_cast<float>(std::max(s * 50.0, d * 4.0));
    camara.zNear = static_cast<float>(std::max(s * 0.001, 0.005));
    t.camara = Node::crear();
    t.camara->setCamera(camara);
    t.camara->setPosition(glm::vec3(posicion));
    t.camara->setEulerAngles(eulerMirandoHacia(glm::vec3(centro - posicion)));
    return t;
}

} // namespace teskal
