// The scene's assembly on the main thread: a converted model under its
// discipline, the colours of all models, the grid lines, the floor, the lights.
#include "federation/ContentView.h"

#include "federation/ConversionIFC.h"
#include "scene/Orientacion.h"

#include <QTimer>
#include <QFileInfo>
#include <QUuid>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <glm/geometric.hpp>
#include <glm/vec2.hpp>
#include <optional>

namespace teskal {

namespace {

constexpr const char* nombrePiso = "_TESKAL_Piso";
constexpr const char* nombreLuzDir = "_TESKAL_LuzDir";
constexpr const char* nombreLuzAmb = "_TESKAL_LuzAmb";

// The floor tile: purple fill with a half-white line of 1.5 along its left and
// bottom edges, so that the repeated tile draws a one-metre grid.
std::shared_ptr<const ImagenRGBA> imagenBaldosa() {
    constexpr int lado = 128;
    auto img = std::make_shared<ImagenRGBA>();
    img->ancho = img->alto = lado;
    img->pixeles.resize(lado * lado * 4);
    const float fondo[3] = {0.30f, 0.26f, 0.52f};
    // A stroke 1.5 wide centred on the edge covers three quarters of the edge
    // pixels; white at alpha 0.5 over that coverage.
    const float cobertura = 0.75f * 0.5f;
    for (int y = 0; y < lado; ++y) {
        for (int x = 0; x < lado; ++x) {
            const bool borde = x == 0 || y == lado - 1; // left column, bottom row (rows top down)
            std::uint8_t* p = &img->pixeles[static_cast<std::size_t>((y * lado + x) * 4)];
            for (int c = 0; c < 3; ++c) {
                const float v = borde ? fondo[c] * (1 - cobertura) + cobertura : fondo[c];
                p[c] = static_cast<std::uint8_t>(std::lround(v * 255.0f));
            }
            p[3] = 255;
        }
    }
    return img;
}

// Cuts the segment a-b to the rectangle [min, max] in plan, Z following along
// the segment (Liang-Barsky). False when no part of it lies inside.
bool recortarEnPlanta(glm::vec3& a, glm::vec3& b, const glm::vec2& min, const glm::vec2& max) {
    for (const glm::vec3* p : {&a, &b})
        if (!std::isfinite(p->x) || !std::isfinite(p->y) || !std::isfinite(p->z)) return false;
    const glm::dvec3 origen(a), d = glm::dvec3(b) - origen;
    const double p[4] = {-d.x, d.x, -d.y, d.y};
    const double q[4] = {origen.x - min.x, max.x - origen.x, origen.y - min.y, max.y - origen.y};
    double t0 = 0, t1 = 1;
    for (int i = 0; i < 4; ++i) {
        if (p[i] == 0) {
            if (q[i] < 0) return false; // parallel to this side and outside it
            continue;
        }
        const double t = q[i] / p[i];
        if (p[i] < 0) {
            if (t > t1) return false;
            t0 = std::max(t0, t);
        } else {
            if (t < t0) return false;
            t1 = std::min(t1, t);
        }
    }
    // Ends that are inside stay exactly as they were.
    if (t0 > 0) a = glm::vec3(origen + t0 * d);
    if (t1 < 1) b = glm::vec3(origen + t1 * d);
    return true;
}

std::shared_ptr<Geometry> geometriaPlano(float ancho, float alto) {
    auto g = std::make_shared<Geometry>();
    const float x = ancho / 2, y = alto / 2;
    g->vertices = {{-x, -y, 0}, {x, -y, 0}, {x, y, 0}, {-x, y, 0}};
    g->normales.assign(4, glm::vec3(0, 0, 1));
    g->coordenadasTextura = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
    g->elementos.push_back({Primitiva::Triangulos, {0, 1, 2, 0, 2, 3}});
    return g;
}

} // namespace

void ContentView::pintarModelo(const ModeloVinculado& m, const Color& color, bool conOpacidad) {
    const float opacidad = conOpacidad ? opacidadDeTransparencia(m.transparencia) : 1.0f;
    m.nodo->enumerateChildNodes([&](Node& n, bool&) {
        Geometry* g = n.geometry().get();
        if (!g) return;
        if (Material* mat = g->firstMaterial()) {
            mat->setDiffuse(color);
            mat->setTransparency(opacidad);
        }
    });
}

void ContentView::integrarModelo(ModeloConvertido convertido, const std::string& rutaOrigen,
                                 const std::string& rutaSalida, const std::optional<std::string>& claveVinculo) {
    const std::string clave = claveVinculo.value_or(seleccionActual);
    auto itEsp = especialidades.find(clave);
    if (itEsp == especialidades.end()) {
        isProcessing = false;
        emit changed();
        return;
    }
    fusionarPropiedades(propiedadesIFC[clave], std::move(convertido.propiedades));
    fusionarPropiedades(propiedadesPorGlobalId[clave], std::move(convertido.propiedadesPorGlobalId));

    EspecialidadBIM& esp = itEsp->second;
    if (!esp.nodoRaiz) {
        esp.nodoRaiz = Node::crear("esp_" + clave);
        scene.rootNode()->addChildNode(esp.nodoRaiz);
    }
    ModeloVinculado modelo;
    modelo.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
    // A link names the model after its own file: with links in parallel,
    // fileName holds the last one chosen.
    modelo.nombre = claveVinculo ? QFileInfo(QString::fromStdString(rutaOrigen)).fileName().toStdString() : fileName;
    modelo.nodo = convertido.modelo;
    modelo.rutaOrigen = rutaOrigen;
    esp.modelos.push_back(modelo);
    marcarCambio();
    esp.nodoRaiz->addChildNode(modelo.nodo);
    pintarModelo(modelo, esp.colorOriginal, false);
    recolorearModelos();

    // The drawn lines follow the elements' box, which this model has changed.
    fusionarGrillas(grillasIFC, std::move(convertido.grillas));
    reconstruirGrillas();
    isProcessing = false;
    actualizarPiso();
    emit changed();
    // The view frames the whole scene a moment later, once it has drawn.
    QTimer::singleShot(150, this, [this] { zoomExtents(); });
    std::error_code ec;
    std::filesystem::remove(rutaSalida, ec);
}

void ContentView::recolorearModelos() {
    for (auto& [clave, esp] : especialidades) {
        for (const auto& m : esp.modelos) {
            const float opacidad = opacidadDeTransparencia(m.transparencia);
            m.nodo->setHidden(!m.isVisible);
            const Color& color = esp.colorOriginal; // clang < 16 can't capture a binding
            m.nodo->enumerateChildNodes([&](Node& n, bool&) {
                if (Geometry* g = n.geometry().get())
                    if (Material* mat = g->firstMaterial()) {
                        mat->setDiffuse(color);
                        mat->setTransparency(opacidad);
                    }
                n.setHidden(!m.isVisible);
            });
        }
    }
    repintarXOR(); // a standing comparison keeps its colours over the disciplines'
    emit changed();
}

Box ContentView::cajaElementos() const {
    // Every linked model, hidden or not, as zoom extents counts them: the grid
    // does not jump when an eye is turned. The model's transform is in its
    // world box.
    Box caja;
    for (const auto& [clave, esp] : especialidades)
        for (const auto& m : esp.modelos)
            if (m.nodo) caja.incluir(m.nodo->boundingBoxMundo());
    return caja;
}

void ContentView::reconstruirGrillas() {
    if (nodoGrillasIFC) nodoGrillasIFC->removeFromParentNode();
    nodoGrillasIFC.reset();
    if (grillasIFC.empty()) return;
    // Axes may run kilometres past the building (a site grid); drawn whole
    // they would dwarf the model. The lines stop at a margin around the
    // elements: the larger of 5 m and a tenth of the box's largest side, room
    // for the axes' ends to read beyond the outermost elements. grillasIFC
    // keeps every axis whole for the sections. With no elements, the whole
    // axes are drawn.
    const Box caja = cajaElementos();
    std::optional<std::pair<glm::vec2, glm::vec2>> ventana;
    if (!caja.vacia) {
        const glm::vec3 tam = caja.tamano();
        const float margen = std::max(5.0f, 0.1f * std::max({tam.x, tam.y, tam.z}));
        ventana.emplace(glm::vec2(caja.min) - margen, glm::vec2(caja.max) + margen);
    }
    auto g = std::make_shared<Geometry>();
    ElementoGeometria lineas{Primitiva::Lineas, {}};
    for (const EjeGrilla& eje : grillasIFC) {
        for (std::size_t i = 0; i + 1 < eje.puntos.size(); ++i) {
            glm::vec3 a = eje.puntos[i], b = eje.puntos[i + 1];
            if (ventana && !recortarEnPlanta(a, b, ventana->first, ventana->second)) continue;
            g->vertices.push_back(a);
            g->vertices.push_back(b);
            lineas.indices.push_back(static_cast<std::int32_t>(lineas.indices.size()));
            lineas.indices.push_back(static_cast<std::int32_t>(lineas.indices.size()));
        }
    }
    if (g->vertices.empty()) return;
    g->elementos.push_back(std::move(lineas));
    auto mat = std::make_shared<Material>();
    mat->setDoubleSided(true);
    mat->setDiffuse(Color::gris(0.55f, 0.6f));
    g->materiales.push_back(mat);
    nodoGrillasIFC = Node::crear(std::string(nombreGrillasEscena));
    nodoGrillasIFC->setGeometry(g);
    scene.rootNode()->addChildNode(nodoGrillasIFC);
}

void ContentView::actualizarPiso() {
    const auto& raiz = scene.rootNode();
    if (auto viejo = raiz->childNodeWithName(nombrePiso, false)) viejo->removeFromParentNode();
    const Box caja = raiz->boundingBox();
    if (caja.min == caja.max) return; // an empty scene has no floor

    auto geo = geometriaPlano(5000, 5000);
    auto mat = std::make_shared<Material>();
    mat->setDiffuseImagen(imagenBaldosa());
    mat->setRepetirContenido(true);
    mat->setEscalaContenido({5000, 5000, 1}); // one tile per metre
    mat->setLightingModel(ModeloIluminacion::Lambert);
    mat->setTransparency(0.75f);
    mat->setDoubleSided(false);
    geo->materiales.push_back(mat);
    auto piso = Node::crear(nombrePiso);
    piso->setGeometry(geo);
    piso->setPosition({0, 0, caja.min.z - 0.01f});
    raiz->addChildNode(piso);

    const glm::vec3 tam = caja.tamano();
    const float extension = std::max({tam.x, tam.y, tam.z});
    if (auto luz = raiz->childNodeWithName(nombreLuzDir, false); luz && luz->light()) {
        Light l = *luz->light();
        l.orthographicScale = std::max(30.0f, 0.8f * extension);
        luz->setLight(l);
    }
}

void ContentView::configurarLuces(Scene& escena) {
    const auto raiz = escena.rootNode();
    std::vector<std::shared_ptr<Node>> viejas;
    for (const auto& n : raiz->childNodes())
        if (n->light() && n->nombreEmpiezaCon("_TESKAL_Luz")) viejas.push_back(n);
    for (auto& n : viejas) n->removeFromParentNode();

    Light dir;
    dir.tipo = TipoLuz::Direccional;
    dir.intensidad = 900;
    dir.proyectaSombras = true;
    dir.sombrasDiferidas = true;
    dir.radioSombra = 5;
    dir.muestrasSombra = 16;
    dir.sesgoSombra = 1;
    dir.colorSombra = Color{0, 0, 0, 0.45f};
    dir.orthographicScale = 150;
    auto nodoDir = Node::crear(nombreLuzDir);
    nodoDir->setLight(dir);
    nodoDir->setEulerAngles(eulerMirandoA({0.5f, 0.5f, -0.7f}, {0, 0, 1}));
    raiz->addChildNode(nodoDir);

    Light amb;
    amb.tipo = TipoLuz::Ambiental;
    amb.intensidad = 350;
    amb.color = Color{1, 1, 1, 1};
    auto nodoAmb = Node::crear(nombreLuzAmb);
    nodoAmb->setLight(amb);
    raiz->addChildNode(nodoAmb);
}

} // namespace teskal
