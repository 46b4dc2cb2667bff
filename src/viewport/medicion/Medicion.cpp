#include "viewport/medicion/Medicion.h"

#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "scene/Primitivas.h"

#include <QString>
#include <algorithm>
#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>
#include <glm/trigonometric.hpp>
#include <glm/matrix.hpp>

namespace teskal {

namespace {

constexpr const char* nombreFigura = "_TESKAL_Medicion";

// A colour with its alpha folded in, as an emission: the renderer adds its
// components to the surface's.
Color conAlfa(const Color& c, float alfa) { return {c.r * alfa, c.g * alfa, c.b * alfa, 1.0f}; }

std::shared_ptr<Node> nodoCon(std::shared_ptr<Geometry> g, const char* nombre = nombreFigura) {
    auto n = Node::crear(nombre);
    n->setGeometry(std::move(g));
    return n;
}

// Characters of a UTF-8 text as a reader counts them.
std::size_t caracteres(const std::string& s) { return static_cast<std::size_t>(QString::fromStdString(s).size()); }

// A flat label that faces the camera: the painted image on a quad `alto`
// metres high (width in proportion to the image), placed from `desde` in its
// own plane (in units of the quad's size: (-0.5, 0) centres it over its
// origin), constant lighting, no depth reading or writing.
std::shared_ptr<Node> etiqueta(const DibujoEtiqueta& dibujo, float alto, const glm::vec2& desde, int orden,
                               const PintorEtiquetas& pintor, float anchoFijo = 0) {
    const auto imagen = pintor ? pintor(dibujo) : nullptr;
    float ancho = anchoFijo;
    if (ancho <= 0) {
        ancho = imagen && imagen->alto > 0
                    ? alto * static_cast<float>(imagen->ancho) / static_cast<float>(imagen->alto)
                    : alto * 0.6f * static_cast<float>(dibujo.lineas.empty() ? 1 : caracteres(dibujo.lineas[0]));
    }
    const Color color = dibujo.colores.empty() ? colores::blanco : dibujo.colores[0];
    auto material = materialConstante(color, colores::negro, false, orden);
    if (imagen) material->setDiffuseImagen(imagen);
    auto n = nodoCon(geometriaPlano(ancho, alto, {desde.x * ancho, desde.y * alto}, material));
    n->setBillboard(true);
    return n;
}

DibujoEtiqueta texto(const std::string& t, const Color& color) {
    DibujoEtiqueta d;
    d.lineas = {t};
    d.colores = {color};
    return d;
}

// A text as the scene's bold text of `tamano` metres: the quad is a little
// taller than the font, for the outline and the descenders.
constexpr float altoPorTamano = 1.3f;

} // namespace

double areaPoligono(const std::vector<glm::vec3>& puntos) {
    if (puntos.size() < 3) return 0;
    glm::dvec3 suma(0.0);
    for (std::size_t i = 0; i < puntos.size(); ++i)
        suma += glm::cross(glm::dvec3(puntos[i]), glm::dvec3(puntos[(i + 1) % puntos.size()]));
    return glm::length(suma) / 2.0;
}

std::optional<double> anguloGrados(const glm::vec3& vertice, const glm::vec3& a, const glm::vec3& b) {
    const glm::dvec3 da = glm::dvec3(a) - glm::dvec3(vertice), db = glm::dvec3(b) - glm::dvec3(vertice);
    const double la = glm::length(da), lb = glm::length(db);
    if (la <= 0 || lb <= 0) return std::nullopt;
    const double c = std::clamp(glm::dot(da / la, db / lb), -1.0, 1.0);
    return std::acos(c) * 180.0 / glm::pi<double>();
}

glm::vec3 centroide(const std::vector<glm::vec3>& puntos) {
    glm::dvec3 s(0.0);
    for (const auto& p : puntos) s += glm::dvec3(p);
    return puntos.empty() ? glm::vec3(0.0f) : glm::vec3(s / static_cast<double>(puntos.size()));
}

std::string textoDistancia(double metros) { return formato("%.3f m", metros); }
std::string textoArea(double metros2) { return formato("%.3f m\u00B2", metros2); }
std::string textoAngulo(double grados) { return formato("%.2f\u00B0", grados); }
std::vector<std::string> lineasPunto(const glm::vec3& p) {
    return {formato("X  %+.4f m", static_cast<double>(p.x)), formato("Y  %+.4f m", static_cast<double>(p.y)),
            formato("Z  %+.4f m", static_cast<double>(p.z))};
}

float radioAnillo(float distanciaCamara) { return std::max(distanciaCamara * 0.012f, 0.05f); }

std::optional<glm::vec3> ajustarVertice(const Node& nodo, const VistaRaton& vista) {
    const auto& g = nodo.geometry();
    if (!g || g->vertices.empty()) return std::nullopt;
    const glm::mat4 mvp = vista.vistaProyeccion * nodo.worldTransform();
    const std::size_t n = std::min(g->vertices.size(), limiteVerticesSnap);
    float mejor = radioSnap2;
    std::optional<std::size_t> elegido;
    for (std::size_t i = 0; i < n; ++i) {
        const glm::vec4 c = mvp * glm::vec4(g->vertices[i], 1.0f);
        if (c.w <= 0.0f) continue;
        const float x = (c.x / c.w * 0.5f + 0.5f) * vista.tamano.x;
        const float y = (0.5f - c.y / c.w * 0.5f) * vista.tamano.y;
        const float dx = x - vista.raton.x, dy = y - vista.raton.y;
        const float d2 = dx * dx + dy * dy;
        if (d2 < mejor) {
            mejor = d2;
            elegido = i;
        }
    }
    if (!elegido) return std::nullopt;
    return glm::vec3(nodo.worldTransform() * glm::vec4(g->vertices[*elegido], 1.0f));
}

void rayoRaton(const VistaRaton& vista, glm::vec3& origen, glm::vec3& direccion) {
    const glm::mat4 inv = glm::inverse(vista.vistaProyeccion);
    const float x = vista.raton.x / std::max(vista.tamano.x, 1.0f) * 2.0f - 1.0f;
    const float y = 1.0f - vista.raton.y / std::max(vista.tamano.y, 1.0f) * 2.0f;
    const glm::vec4 cerca = inv * glm::vec4(x, y, -1.0f, 1.0f);
    const glm::vec4 lejos = inv * glm::vec4(x, y, 1.0f, 1.0f);
    origen = glm::vec3(cerca) / cerca.w;
    direccion = glm::vec3(lejos) / lejos.w - origen;
}

std::shared_ptr<Node> figuraMarcador(const glm::vec3& p, const std::string& t, const PintorEtiquetas& pintor) {
    auto n = Node::crear(nombreFigura);
    n->setPosition(p);
    n->addChildNode(
        nodoCon(geometriaEsfera(0.08f, materialConstante(colores::amarillo, conAlfa(colores::amarillo, 0.6f)))));
    auto e = etiqueta(texto(t, colores::amarillo), 0.2f * altoPorTamano, {0.0f, 0.0f}, 9, pintor);
    e->setPosition({0.0f, 0.0f, 0.1f});
    n->addChildNode(e);
    return n;
}

std::shared_ptr<Node> figuraDistancia(const glm::vec3& a, const glm::vec3& b, const PintorEtiquetas& pintor) {
    auto n = nodoCon(geometriaLineas({{a, b}}, materialConstante(colores::amarillo, colores::amarillo)));
    const double d = glm::length(glm::dvec3(b) - glm::dvec3(a));
    auto e = etiqueta(texto(textoDistancia(d), colores::amarillo), 0.18f * altoPorTamano, {-0.5f, 0.0f}, 9, pintor);
    e->setPosition((a + b) * 0.5f + glm::vec3(0, 0, 0.15f));
    n->addChildNode(e);
    return n;
}

std::shared_ptr<Node> figuraAngulo(const glm::vec3& V, const glm::vec3& a, const glm::vec3& b,
                                   const PintorEtiquetas& pintor) {
    const Color color{1.0f, 0.25f, 1.0f, 1.0f};
    auto n = Node::crear(nombreFigura);
    for (const glm::vec3& extremo : {a, b})
        if (auto g = geometriaCilindro(V, extremo, 0.025f, materialConstante(color, color))) n->addChildNode(nodoCon(g));
    const auto grados = anguloGrados(V, a, b);
    if (!grados) return n; // an arm without length has no direction: no arc, no label
    const glm::vec3 u = glm::normalize(a - V), v = glm::normalize(b - V);
    const float radio = std::min(glm::length(a - V), glm::length(b - V)) * 0.28f;
    const glm::vec3 normal = glm::cross(u, v);
    glm::vec3 bisectriz = u + v;
    if (glm::length(normal) >= 1e-4f) {
        // 28 steps from u to v in the plane of the arms.
        const glm::vec3 w = glm::normalize(glm::cross(glm::normalize(normal), u));
        const float total = static_cast<float>(glm::radians(*grados));
        glm::vec3 previo = V + radio * u;
        for (int i = 1; i <= 28; ++i) {
            const float th = total * static_cast<float>(i) / 28.0f;
            const glm::vec3 p = V + radio * (std::cos(th) * u + std::sin(th) * w);
            if (glm::length(p - previo) > 0.001f)
                if (auto g = geometriaCilindro(previo, p, 0.015f, materialConstante(color, color)))
                    n->addChildNode(nodoCon(g));
            previo = p;
        }
    }
    if (glm::length(bisectriz) < 1e-6f) bisectriz = glm::vec3(0, 0, 1); // opposite arms
    DibujoEtiqueta d = texto(textoAngulo(*grados), colores::blanco);
    d.estilo = DibujoEtiqueta::Estilo::recuadro;
    d.borde = color;
    d.ancho = 200;
    d.alto = 80;
    d.tamanoFuente = 32;
    auto e = etiqueta(d, 0.38f, {-0.5f, -0.5f}, 9, pintor, 0.85f);
    e->setPosition(V + glm::normalize(bisectriz) * radio * 1.6f);
    n->addChildNode(e);
    return n;
}

std::shared_ptr<Node> figuraPunto(const glm::vec3& p, const PintorEtiquetas& pintor) {
    const Color purpura = colores::purpura;
    auto n = Node::crear(nombreFigura);
    n->setPosition(p);
    n->addChildNode(nodoCon(geometriaEsfera(0.07f, materialConstante(purpura, conAlfa(purpura, 0.7f)))));
    // The stem rises from the top of the sphere, its middle 0.345 above p.
    const Color tallo{purpura.r, purpura.g, purpura.b, 0.55f};
    n->addChildNode(nodoCon(geometriaCilindro({0, 0, 0.345f - 0.275f}, {0, 0, 0.345f + 0.275f}, 0.012f,
                                              materialConstante(tallo, conAlfa(purpura, 0.35f)))));
    DibujoEtiqueta d;
    d.estilo = DibujoEtiqueta::Estilo::recuadro;
    d.lineas = lineasPunto(p);
    d.colores = {{1.0f, 0.45f, 0.45f, 1}, {0.45f, 1.0f, 0.5f, 1}, {0.45f, 0.7f, 1.0f, 1}};
    d.borde = purpura;
    d.ancho = 320;
    d.alto = 130;
    d.tamanoFuente = 24;
    d.monoespaciada = true;
    d.centrada = false;
    auto e = etiqueta(d, 0.62f, {-0.5f, -0.5f}, 20, pintor, 1.5f);
    e->setPosition({0, 0, 0.93f});
    n->addChildNode(e);
    return n;
}

std::shared_ptr<Node> figuraPoligono(const std::vector<glm::vec3>& puntos, const PintorEtiquetas& pintor) {
    if (puntos.size() < 3) return nullptr;
    std::vector<std::pair<glm::vec3, glm::vec3>> aristas;
    for (std::size_t i = 0; i < puntos.size(); ++i) aristas.push_back({puntos[i], puntos[(i + 1) % puntos.size()]});
    auto n = nodoCon(geometriaLineas(aristas, materialConstante(colores::verde, colores::verde)));
    auto e = etiqueta(texto(textoArea(areaPoligono(puntos)), colores::verde), 0.22f * altoPorTamano, {-0.5f, 0.0f},
                      9, pintor);
    e->setPosition(centroide(puntos) + glm::vec3(0, 0, 0.2f));
    n->addChildNode(e);
    return n;
}

std::shared_ptr<Node> figuraAnillo(const glm::vec3& p, float radio) {
    auto n = nodoCon(geometriaToro(radio, radio * 0.18f,
                                   materialConstante(colores::amarillo, colores::amarillo, false, 10)),
                     "_TESKAL_MedicionSnap");
    n->setPosition(p);
    n->setBillboard(true); // the ring reads as a circle from any side
    return n;
}

std::shared_ptr<Node> figuraBandaElastica(const std::vector<glm::vec3>& puntosArea,
                                          const std::optional<glm::vec3>& puntoA, const glm::vec3& p,
                                          const glm::vec3& posicionCamara, const PintorEtiquetas& pintor) {
    std::vector<std::pair<glm::vec3, glm::vec3>> aristas;
    if (!puntosArea.empty()) {
        std::vector<glm::vec3> camino = puntosArea;
        camino.push_back(p);
        for (std::size_t i = 0; i + 1 < camino.size(); ++i) aristas.push_back({camino[i], camino[i + 1]});
        aristas.push_back({p, puntosArea.front()});
        const Color verde{colores::verde.r, colores::verde.g, colores::verde.b, 0.8f};
        return nodoCon(geometriaLineas(aristas, materialConstante(verde, conAlfa(colores::verde, 0.8f), false, 10)),
                       "_TESKAL_MedicionPreview");
    }
    if (!puntoA) return nullptr;
    auto n = nodoCon(geometriaLineas({{*puntoA, p}}, materialConstante(colores::cian, colores::cian, false, 10)),
                     "_TESKAL_MedicionPreview");
    const glm::vec3 medio = (*puntoA + p) * 0.5f;
    const float escala = std::max(glm::length(medio - posicionCamara) * 0.018f, 0.12f);
    const double d = glm::length(glm::dvec3(p) - glm::dvec3(*puntoA));
    auto e = etiqueta(texto(textoDistancia(d), colores::cian), escala * altoPorTamano, {-0.5f, -0.5f}, 10, pintor);
    e->setPosition(medio);
    n->addChildNode(e);
    return n;
}

} // namespace teskal
