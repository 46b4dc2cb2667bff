#pragma once

// The federation the render and section benchmarks share, built in memory
// without IFC or converter: three disciplines (ARQ, EST, MEP) of three models
// each, every model a sector of a 100 x 100 x 60 m building of 15 storeys of
// 4 m, with N element nodes each. Every element has one geometry of unrolled
// triangles, as the OBJ reader makes them, and the reader's own material.

#include "federation/CargaOBJ.h"
#include "scene/Node.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/gtc/constants.hpp>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace teskal::bench {

constexpr int plantas = 15;
constexpr float alturaPlanta = 4.0f;
constexpr float ladoEdificio = 100.0f;
constexpr int modelosPorDisciplina = 3;
constexpr const char* disciplinas[] = {"ARQ", "EST", "MEP"};

// ---------------------------------------------------------------------------
// The generated federation.

enum class Eje { X, Y, Z };

// Appends an extruded n-sided prism as unrolled triangles (4n - 4 of them):
// the footprint has half-extents (a, b) across the axis and is centred on
// `origen`, from which it runs `largo` along the axis. Four sides give a box.
inline void prisma(std::vector<glm::vec3>& v, int lados, float a, float b, float largo, Eje eje,
            glm::vec3 origen) {
    std::array<glm::vec2, 8> p{};
    const float k = 1.0f / std::cos(glm::pi<float>() / static_cast<float>(lados));
    for (int i = 0; i < lados; ++i) {
        const float th =
            glm::two_pi<float>() * (static_cast<float>(i) + 0.5f) / static_cast<float>(lados);
        p[static_cast<std::size_t>(i)] = {a * k * std::cos(th), b * k * std::sin(th)};
    }
    auto punto = [&](int i, float w) {
        const glm::vec2 q = p[static_cast<std::size_t>(i)];
        switch (eje) {
        case Eje::X:
            return origen + glm::vec3(w, q.x, q.y);
        case Eje::Y:
            return origen + glm::vec3(q.x, w, q.y);
        case Eje::Z:
            break;
        }
        return origen + glm::vec3(q.x, q.y, w);
    };
    for (int i = 0; i < lados; ++i) {
        const int j = (i + 1) % lados;
        v.insert(v.end(), {punto(i, 0), punto(j, 0), punto(j, largo)});
        v.insert(v.end(), {punto(i, 0), punto(j, largo), punto(i, largo)});
    }
    for (int i = 1; i + 1 < lados; ++i) {
        v.insert(v.end(), {punto(0, 0), punto(i + 1, 0), punto(i, 0)});
        v.insert(v.end(), {punto(0, largo), punto(i, largo), punto(i + 1, largo)});
    }
}

struct Conteo {
    std::size_t nodos = 0;
    std::size_t triangulos = 0;
    std::size_t bytesArreglos = 0; // vertex and index arrays
};

// One element node the way the OBJ reader leaves it: a named node, a geometry
// of the same name with one triangle list 0, 1, 2, ... and the reader's
// material (white 0.75, Phong, double-sided).
inline std::shared_ptr<Node> elemento(const std::string& nombre, const std::vector<glm::vec3>& vertices,
                               Conteo& conteo) {
    auto g = std::make_shared<Geometry>();
    g->name = nombre;
    g->vertices.assign(vertices.begin(), vertices.end());
    ElementoGeometria e;
    e.primitiva = Primitiva::Triangulos;
    e.indices.resize(vertices.size());
    std::iota(e.indices.begin(), e.indices.end(), 0);
    g->elementos.push_back(std::move(e));
    g->materiales.push_back(materialPorDefectoOBJ(true));
    conteo.bytesArreglos += g->vertices.capacity() * sizeof(glm::vec3) +
                            g->elementos[0].indices.capacity() * sizeof(std::int32_t);
    conteo.triangulos += vertices.size() / 3;
    ++conteo.nodos;
    auto n = Node::crear(nombre);
    n->setGeometry(std::move(g));
    return n;
}

// A model root (unnamed, as the reader makes it) with `elementos` element
// nodes of one discipline over sector `sector` of the building: a strip of a
// third of its width, all storeys, laid out on a grid of cells.
inline std::shared_ptr<Node> generarModelo(const std::string& disciplina, int sector, int elementos,
                                    std::mt19937& azar, Conteo& conteo) {
    auto raiz = Node::crear();
    std::uniform_real_distribution<float> u(0.0f, 1.0f);
    const float anchoSector = ladoEdificio / modelosPorDisciplina;
    const float x0 = anchoSector * static_cast<float>(sector);
    const int porPlanta = (elementos + plantas - 1) / plantas;
    const int nx = std::max(
        1, static_cast<int>(std::lround(std::sqrt(porPlanta * anchoSector / ladoEdificio))));
    const int ny = (porPlanta + nx - 1) / nx;
    const float dx = anchoSector / static_cast<float>(nx);
    const float dy = ladoEdificio / static_cast<float>(ny);

    std::vector<glm::vec3> v;
    int hechos = 0;
    for (int s = 0; s < plantas && hechos < elementos; ++s) {
        const float z0 = alturaPlanta * static_cast<float>(s);
        for (int j = 0; j < ny && hechos < elementos; ++j) {
            for (int i = 0; i < nx && hechos < elementos; ++i, ++hechos) {
                const float cx = x0 + dx * static_cast<float>(i);
                const float cy = dy * static_cast<float>(j);
                const float r = u(azar);
                const std::string marca = std::to_string(100000 + conteo.nodos);
                std::string nombre;
                v.clear();
                if (disciplina == "ARQ") {
                    if (r < 0.4f) {
                        nombre = "Muro básico:Genérico - 200 mm:" + marca;
                        if ((i + j + s) % 2 == 0)
                            prisma(v, 4, dx / 2, 0.1f, 3.6f, Eje::Z, {cx + dx / 2, cy, z0});
                        else
                            prisma(v, 4, 0.1f, dy / 2, 3.6f, Eje::Z, {cx, cy + dy / 2, z0});
                    } else if (r < 0.6f) {
                        nombre = "Suelo:Losa de hormigón 250 mm:" + marca;
                        prisma(v, 4, dx / 2, dy / 2, 0.25f, Eje::Z, {cx + dx / 2, cy + dy / 2, z0});
                    } else {
                        nombre = "Mobiliario:Mesa redonda 900 mm:" + marca;
                        prisma(v, 8, 0.3f + 0.3f * u(azar), 0.3f + 0.3f * u(azar),
                               0.8f + 1.3f * u(azar), Eje::Z,
                               {cx + dx * u(azar), cy + dy * u(azar), z0 + 0.25f});
                    }
                } else if (disciplina == "EST") {
                    if (r < 0.5f) {
                        nombre = "Pilar circular:Hormigón 500 mm:" + marca;
                        prisma(v, 8, 0.25f, 0.25f, alturaPlanta - 0.5f, Eje::Z, {cx, cy, z0});
                    } else if ((i + j) % 2 == 0) {
                        nombre = "Viga rectangular:300 x 500 mm:" + marca;
                        prisma(v, 4, 0.15f, 0.25f, dx, Eje::X, {cx, cy, z0 + 3.75f});
                    } else {
                        nombre = "Viga rectangular:300 x 500 mm:" + marca;
                        prisma(v, 4, 0.15f, 0.25f, dy, Eje::Y, {cx, cy, z0 + 3.75f});
                    }
                } else {
                    if (r < 0.4f) {
                        const float radio = 0.05f + 0.1f * u(azar);
                        nombre = "Tubería:Acero al carbono:" + marca;
                        prisma(v, 8, radio, radio, dx, Eje::X,
                               {cx, cy + dy * u(azar), z0 + 3.0f + 0.4f * u(azar)});
                    } else if (r < 0.7f) {
                        nombre = "Conducto rectangular:Impulsión:" + marca;
                        prisma(v, 4, 0.2f, 0.15f, dy, Eje::Y, {cx + dx * u(azar), cy, z0 + 3.3f});
                    } else {
                        nombre = "Terminal de aire:Difusor circular:" + marca;
                        prisma(v, 6, 0.15f, 0.15f, 0.4f, Eje::Z,
                               {cx + dx * u(azar), cy + dy * u(azar), z0 + 2.8f});
                    }
                }
                raiz->addChildNode(elemento(nombre, v, conteo));
            }
        }
    }
    return raiz;
}

} // namespace teskal::bench
