#include "analyses/clash/EscenaThumbnail.h"

#include "scene/ClonNodo.h"
#include "scene/ColoresSistema.h"
#include "scene/Orientacion.h"

#include <algorithm>
#include <glm/gtc/constants.hpp>

namespace teskal {

std::shared_ptr<Node> buscarElementoConGeometria(Node& raiz, std::string_view nombre, std::string_view globalId) {
    std::shared_ptr<Node> hallado;
    raiz.enumerateChildNodes([&](Node& n, bool& parar) {
        const bool es = globalId.empty() ? n.name() && *n.name() == nombre : n.globalId() == globalId;
        if (n.geometry() && es) {
            hallado = n.shared_from_this();
            parar = true;
        }
    });
    return hallado;
}

std::shared_ptr<Node> copiaColoreada(const Node& original, const Color& color) {
    auto copia = clonarNodo(original);
    if (!original.geometry()) return copia;
    auto geometria = std::make_shared<Geometry>(*original.geometry());
    auto material = std::make_shared<Material>();
    material->setDiffuse(color);
    material->setEmission(colores::negro);
    material->setLightingModel(ModeloIluminacion::Phong);
    material->setDoubleSided(true);
    geometria->materiales = {material};
    copia->setGeometry(geometria);
    return copia;
}

void agregarLucesThumbnail(Node& raiz) {
    auto direccional = Node::crear();
    Light luzDir;
    luzDir.tipo = TipoLuz::Direccional;
    luzDir.intensidad = intensidadLuzDireccionalThumbnail;
    direccional->setLight(luzDir);
    direccional->setEulerAngles({-glm::quarter_pi<float>(), glm::quarter_pi<float>(), 0.0f});
    raiz.addChildNode(direccional);

    auto ambiental = Node::crear();
    Light luzAmb;
    luzAmb.tipo = TipoLuz::Ambiental;
    luzAmb.intensidad = intensidadLuzAmbientalThumbnail;
    ambiental->setLight(luzAmb);
    raiz.addChildNode(ambiental);
}

EscenaThumbnail escenaThumbnail(const Interferencia& interferencia, Scene* escenaViva) {
    EscenaThumbnail t;
    t.escena = std::make_unique<Scene>();
    Node& raiz = *t.escena->rootNode();

    std::shared_ptr<Node> a = interferencia.nodoA, b = interferencia.nodoB;
    if ((!a || !a->geometry()) && escenaViva) {
        auto vivoA =
            buscarElementoConGeometria(*escenaViva->rootNode(), interferencia.nombreA, interferencia.globalIdA);
        auto vivoB =
            buscarElementoConGeometria(*escenaViva->rootNode(), interferencia.nombreB, interferencia.globalIdB);
        if (vivoA && vivoB) {
            a = std::move(vivoA);
            b = std::move(vivoB);
        }
    }
    if (a) raiz.addChildNode(copiaColoreada(*a, colores::rojo));
    if (b) raiz.addChildNode(copiaColoreada(*b, colores::azul));

    agregarLucesThumbnail(raiz);

    // Closer than the stored viewpoint, which frames the clash for the 3D
    // view and BCF: a fixed diagonal at a distance that follows the clash's size.
    const double radio = interferencia.radio;
    const double d = std::max(radio * 0.45, 0.15);
    const glm::dvec3 objetivo = interferencia.viewpointTarget;
    const glm::dvec3 posicion(objetivo.x + d, objetivo.y + 0.6 * d, objetivo.z + d);
    Camera camara;
    camara.zFar = static_cast<float>(radio * 50.0);
    camara.zNear = static_cast<float>(std::max(radio * 0.001, 0.005));
    t.camara = Node::crear();
    t.camara->setCamera(camara);
    t.camara->setPosition(glm::vec3(posicion));
    t.camara->setEulerAngles(eulerMirandoHacia(glm::vec3(objetivo - posicion)));
    return t;
}

} // namespace teskal
