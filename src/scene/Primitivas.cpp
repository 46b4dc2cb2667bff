#include "scene/Primitivas.h"

#include <cmath>
#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

namespace teskal {

namespace {

std::shared_ptr<Geometry> nueva(std::shared_ptr<Material> material) {
    auto g = std::make_shared<Geometry>();
    g->materiales.push_back(std::move(material));
    g->elementos.push_back({Primitiva::Triangulos, {}});
    return g;
}

// Two unit vectors perpendicular to `eje` and to each other.
std::pair<glm::vec3, glm::vec3> base(const glm::vec3& eje) {
    const glm::vec3 otro = std::fabs(eje.z) < 0.9f ? glm::vec3(0, 0, 1) : glm::vec3(1, 0, 0);
    const glm::vec3 u = glm::normalize(glm::cross(eje, otro));
    return {u, glm::cross(eje, u)};
}

// Indices of a grid of (filas + 1) x (columnas + 1) vertices, row by row.
void rejilla(std::vector<std::int32_t>& ix, int filas, int columnas, int desde = 0) {
    for (int i = 0; i < filas; ++i)
        for (int j = 0; j < columnas; ++j) {
            const int a = desde + i * (columnas + 1) + j, b = a + columnas + 1;
            ix.insert(ix.end(), {a, b, a + 1, a + 1, b, b + 1});
        }
}

} // namespace

std::shared_ptr<Material> materialConstante(const Color& difuso, const Color& emision, bool profundidad, int orden) {
    auto m = std::make_shared<Material>();
    m->setDiffuse(difuso);
    m->setEmission(emision);
    m->setLightingModel(ModeloIluminacion::Constante);
    m->setDoubleSided(true);
    m->setReadsFromDepthBuffer(profundidad);
    m->setWritesToDepthBuffer(profundidad);
    m->setRenderingOrder(orden);
    return m;
}

std::shared_ptr<Geometry> geometriaEsfera(float radio, std::shared_ptr<Material> material, int segmentos,
                                          int anillos) {
    auto g = nueva(std::move(material));
    g->vertices.reserve(static_cast<std::size_t>((anillos + 1) * (segmentos + 1)));
    for (int i = 0; i <= anillos; ++i) {
        const float fi = glm::pi<float>() * static_cast<float>(i) / static_cast<float>(anillos);
        for (int j = 0; j <= segmentos; ++j) {
            const float th = glm::two_pi<float>() * static_cast<float>(j) / static_cast<float>(segmentos);
            g->vertices.push_back(radio * glm::vec3(std::sin(fi) * std::cos(th), std::sin(fi) * std::sin(th),
                                                    std::cos(fi)));
        }
    }
    rejilla(g->elementos[0].indices, anillos, segmentos);
    return g;
}

std::shared_ptr<Geometry> geometriaCilindro(const glm::vec3& a, const glm::vec3& b, float radio,
                                            std::shared_ptr<Material> material, int lados) {
    const glm::vec3 eje = b - a;
    const float largo = glm::length(eje);
    if (largo < 1e-4f) return nullptr;
    const auto [u, v] = base(eje / largo);
    auto g = nueva(std::move(material));
    for (const glm::vec3& extremo : {a, b})
        for (int j = 0; j <= lados; ++j) {
            const float th = glm::two_pi<float>() * static_cast<float>(j) / static_cast<float>(lados);
            g->vertices.push_back(extremo + radio * (std::cos(th) * u + std::sin(th) * v));
        }
    auto& ix = g->elementos[0].indices;
    rejilla(ix, 1, lados);
    // The two caps, fanned from their centres.
    const int centroA = static_cast<int>(g->vertices.size());
    g->vertices.push_back(a);
    g->vertices.push_back(b);
    for (int j = 0; j < lados; ++j) {
        ix.insert(ix.end(), {centroA, j + 1, j});
        ix.insert(ix.end(), {centroA + 1, lados + 1 + j, lados + 1 + j + 1});
    }
    return g;
}

std::shared_ptr<Geometry> geometriaToro(float radioAnillo, float radioTubo, std::shared_ptr<Material> material,
                                        int segmentos, int lados) {
    auto g = nueva(std::move(material));
    for (int i = 0; i <= segmentos; ++i) {
        const float th = glm::two_pi<float>() * static_cast<float>(i) / static_cast<float>(segmentos);
        const glm::vec3 radial(std::cos(th), std::sin(th), 0);
        for (int j = 0; j <= lados; ++j) {
            const float fi = glm::two_pi<float>() * static_cast<float>(j) / static_cast<float>(lados);
            g->vertices.push_back(radial * (radioAnillo + radioTubo * std::cos(fi)) +
                                  glm::vec3(0, 0, radioTubo * std::sin(fi)));
        }
    }
    rejilla(g->elementos[0].indices, segmentos, lados);
    return g;
}

std::shared_ptr<Geometry> geometriaPlano(float ancho, float alto, const glm::vec2& desde,
                                         std::shared_ptr<Material> material) {
    auto g = nueva(std::move(material));
    g->vertices = {{desde.x, desde.y, 0}, {desde.x + ancho, desde.y, 0}, {desde.x + ancho, desde.y + alto, 0},
                   {desde.x, desde.y + alto, 0}};
    g->coordenadasTextura = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    g->elementos[0].indices = {0, 1, 2, 0, 2, 3};
    return g;
}

std::shared_ptr<Geometry> geometriaLineas(const std::vector<std::pair<glm::vec3, glm::vec3>>& segmentos,
                                          std::shared_ptr<Material> material) {
    auto g = std::make_shared<Geometry>();
    g->materiales.push_back(std::move(material));
    for (const auto& [a, b] : segmentos) {
        const auto i = static_cast<std::int32_t>(g->vertices.size());
        g->vertices.push_back(a);
        g->vertices.push_back(b);
        g->elementos.push_back({Primitiva::Lineas, {i, i + 1}});
    }
    return g;
}

} // namespace teskal
