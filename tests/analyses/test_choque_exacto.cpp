// The exact clash test and the clearance check on generated meshes, each
// case held against the reference that meets every triangle of one mesh with
// every triangle of the other (no trees) and against the figure its
// construction gives; then the analysis by method over element candidates.
#include "analyses/clash/AnalisisExacto.h"
#include "analyses/clash/BusquedaInterferencias.h"
#include "analyses/clash/GeometriaChoque.h"
#include "federation/ContentView.h"
#include "scene/Geometry.h"

#include "espera_eventos.h"

#include <QFileInfo>

#include <cmath>
#include <gtest/gtest.h>
#include <glm/gtc/constants.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <limits>
#include <random>

using namespace teskal;
using dv = glm::dvec3;

namespace {

// A closed box of twelve triangles sharing its eight corners.
std::vector<Triangulo> caja(dv a, dv b) {
    const dv p[8] = {{a.x, a.y, a.z}, {b.x, a.y, a.z}, {b.x, b.y, a.z}, {a.x, b.y, a.z},
                     {a.x, a.y, b.z}, {b.x, a.y, b.z}, {b.x, b.y, b.z}, {a.x, b.y, b.z}};
    const int f[12][3] = {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
                          {1, 2, 6}, {1, 6, 5}, {2, 3, 7}, {2, 7, 6}, {3, 0, 4}, {3, 4, 7}};
    std::vector<Triangulo> t;
    for (const auto& c : f) t.push_back({p[c[0]], p[c[1]], p[c[2]]});
    return t;
}

// A closed prism of `lados` sides from `desde` to `hasta` whose flat sides
// stand `apotema` from its axis; `giro` turns the section about the axis.
std::vector<Triangulo> prisma(dv desde, dv hasta, double apotema, int lados, double giro = 0) {
    const dv eje = glm::normalize(hasta - desde);
    const dv otro = std::abs(eje.z) < 0.9 ? dv(0, 0, 1) : dv(1, 0, 0);
    const dv u = glm::normalize(glm::cross(eje, otro)), v = glm::cross(eje, u);
    const double radio = apotema / std::cos(glm::pi<double>() / lados);
    std::vector<dv> anillo;
    for (int i = 0; i < lados; ++i) {
        const double th = giro + 2 * glm::pi<double>() * i / lados;
        anillo.push_back(radio * (std::cos(th) * u + std::sin(th) * v));
    }
    std::vector<Triangulo> t;
    for (int i = 0; i < lados; ++i) {
        const dv& p = anillo[static_cast<std::size_t>(i)];
        const dv& q = anillo[static_cast<std::size_t>((i + 1) % lados)];
        t.push_back({desde + p, desde + q, hasta + q});
        t.push_back({desde + p, hasta + q, hasta + p});
        t.push_back({desde, desde + q, desde + p});
        t.push_back({hasta, hasta + p, hasta + q});
    }
    return t;
}

std::vector<Triangulo> unir(std::vector<Triangulo> a, const std::vector<Triangulo>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const double nan = std::numeric_limits<double>::quiet_NaN();

// The tree's answer must be the reference's: same verdict, same region.
void comoLaReferencia(const MallaElemento& a, const MallaElemento& b, double limite) {
    const ContactoMallas c = contactoMallas(a, b), r = contactoMallasDirecto(a, b);
    EXPECT_EQ(c.chocan, r.chocan);
    EXPECT_NEAR(c.profundidad, r.profundidad, 1e-9);
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(c.min[k], r.min[k], 1e-9);
        EXPECT_NEAR(c.max[k], r.max[k], 1e-9);
    }
    const auto s = separacionMallas(a, b, limite), sr = separacionMallasDirecta(a, b, limite);
    ASSERT_EQ(s.has_value(), sr.has_value());
    if (s) {
        EXPECT_NEAR(s->distancia, sr->distancia, 1e-9);
    }
}

TEST(ChoqueExacto, casosConstruidosComoLaReferencia) {
    // A pipe of 0.2 m runs along y through a wall 0.08 m thick; a thin pipe
    // through a thick wall penetrates by its own diameter.
    const auto muro = caja({0, 0, 0}, {4, 0.08, 3});
    const auto muroGrueso = caja({0, 0, 0}, {4, 0.3, 3});
    const auto tuboGrueso = prisma({2, -1, 1.5}, {2, 1.2, 1.5}, 0.1, 16);
    const auto tuboFino = prisma({2, -1, 1.5}, {2, 1.2, 1.5}, 0.05, 16);
    const auto tuboOblicuo = prisma({1, -1, 1.5}, {3, 1.3, 1.5}, 0.05, 8);
    // A column of 0.4 x 0.4 and a pipe running diagonally past it in plan:
    // one of the pipe's edges faces the column's corner from 0.77 m.
    const auto pilar = caja({0, 0, 0}, {0.4, 0.4, 3});
    const double apotema = 0.05, radio = apotema / std::cos(glm::pi<double>() / 8);
    const dv fuera = dv(0.4, 0.4, 1.5) + (0.77 + radio) * glm::normalize(dv(1, 1, 0));
    const auto tuboDiagonal = prisma(fuera - 6.0 * glm::normalize(dv(1, -1, 0)),
                                     fuera + 6.0 * glm::normalize(dv(1, -1, 0)), apotema, 8,
                                     glm::pi<double>() / 2);
    // Degenerate triangles: collinear corners, a repeated corner, a corner
    // that is not a number. They carry no surface.
    const std::vector<Triangulo> degenerados{{{0.5, 0.5, 0.5}, {0.7, 0.7, 0.7}, {0.9, 0.9, 0.9}},
                                             {{0.2, 0.1, 0.3}, {0.2, 0.1, 0.3}, {1.5, 1.5, 1.5}},
                                             {{0.5, 0.5, 0.5}, {nan, 1, 1}, {1.5, 1.5, 1.5}}};
    struct Caso {
        const char* nombre;
        std::vector<Triangulo> a, b;
        bool chocan;
        double profundidad; // NaN: not checked
        double distancia;   // NaN: at least the limit of 1 m
    };
    const Caso casos[] = {
        {"cajas que se cruzan", caja({0, 0, 0}, {1, 1, 1}), caja({0.875, 0.75, 0.5}, {2, 2, 2}), true, 0.125, 0},
        {"caja dentro de otra", caja({0, 0, 0}, {4, 4, 4}), caja({0.5, 1, 1}, {1, 2, 3}), true, 0.5, 0},
        {"caras que se tocan", caja({0, 0, 0}, {1, 1, 1}), caja({1, 0.25, 0.25}, {2, 2, 2}), true, 0, 0},
        {"aristas que se tocan", caja({0, 0, 0}, {1, 1, 1}), caja({1, 1, 0}, {2, 2, 1}), true, 0, 0},
        {"triángulos coplanares solapados", {{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}}, {{{0.5, 0.5, 0}, {3, 0.5, 0}, {0.5, 3, 0}}},
         true, 0, 0},
        {"cajas separadas", caja({0, 0, 0}, {1, 1, 1}), caja({1.25, 0, 0}, {2, 1, 1}), false, nan, 0.25},
        {"tubo grueso por muro delgado", muro, tuboGrueso, true, 0.08, 0},
        {"tubo fino por muro grueso", muroGrueso, tuboFino, true, 0.1, 0},
        {"tubo oblicuo por muro", muroGrueso, tuboOblicuo, true, nan, 0},
        {"tubo diagonal junto a un pilar", pilar, tuboDiagonal, false, nan, 0.77},
        {"triángulos degenerados", unir(caja({0, 0, 0}, {1, 1, 1}), degenerados), caja({0.875, 0.75, 0.5}, {2, 2, 2}),
         true, 0.125, 0},
        {"solo triángulos degenerados", degenerados, caja({0, 0, 0}, {2, 2, 2}), false, nan, nan},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const MallaElemento a(c.a), b(c.b);
        comoLaReferencia(a, b, 1.0);
        comoLaReferencia(b, a, 1.0);
        const ContactoMallas r = contactoMallas(a, b);
        EXPECT_EQ(r.chocan, c.chocan);
        if (!std::isnan(c.profundidad)) {
            EXPECT_NEAR(r.profundidad, c.profundidad, 1e-3);
        }
        const auto s = separacionMallas(a, b, 1.0);
        EXPECT_EQ(s.has_value(), !std::isnan(c.distancia));
        if (s && !std::isnan(c.distancia)) {
            EXPECT_NEAR(s->distancia, c.distancia, 1e-6);
        }
    }
    // The oblique pipe's region is the pipe's piece inside the wall: its
    // thinnest width is the pipe's, across two opposite flat sides.
    EXPECT_NEAR(contactoMallas(MallaElemento(muroGrueso), MallaElemento(tuboOblicuo)).profundidad, 0.1, 1e-3);
    // The degenerate triangles are left out of the surface, and the box stays closed.
    const MallaElemento conDegenerados(unir(caja({0, 0, 0}, {1, 1, 1}), degenerados));
    EXPECT_EQ(conDegenerados.triangulos().size(), 12u);
    EXPECT_TRUE(conDegenerados.cerrada());
    EXPECT_FALSE(MallaElemento(prisma({0, 0, 0}, {0, 0, 1}, 1, 6)).triangulos().empty());
}

TEST(ChoqueExacto, triangulosComoLaInterseccionDeSusPlanos) {
    // The crossing segment of two triangles, and the touching cases, each
    // with the points that bound the common part.
    struct Caso {
        const char* nombre;
        Triangulo a, b;
        bool cruzan, coplanares;
        dv desde, hasta;
    };
    const Triangulo base{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    const Caso casos[] = {
        {"atraviesa", base, {{1, 1, -1}, {1, 1, 1}, {1, 3, 1}}, true, false, {1, 1, 0}, {1, 2, 0}},
        {"un vértice en la cara", base, {{1, 1, 0}, {1, 1, 2}, {1, 2, 2}}, true, false, {1, 1, 0}, {1, 1, 0}},
        {"por encima", base, {{1, 1, 0.5}, {1, 1, 2}, {1, 3, 1}}, false, false, {}, {}},
        {"plano cruzado fuera del triángulo", base, {{3, 3, -1}, {3, 3, 1}, {3, 5, 1}}, false, false, {}, {}},
        {"coplanares disjuntos", base, {{5, 5, 0}, {6, 5, 0}, {5, 6, 0}}, false, true, {}, {}},
        {"coplanar contenido", base, {{1, 1, 0}, {2, 1, 0}, {1, 2, 0}}, true, true, {1, 1, 0}, {2, 2, 0}},
        {"degenerado", base, {{1, 1, -1}, {1, 1, 0}, {1, 1, 1}}, false, false, {}, {}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const CruceTriangulos r = cruzarTriangulos(c.a, c.b);
        EXPECT_EQ(r.cruzan, c.cruzan);
        if (!c.cruzan) continue;
        EXPECT_EQ(r.coplanares, c.coplanares);
        dv lo(1e9), hi(-1e9);
        for (int k = 0; k < r.cuantos; ++k) {
            lo = glm::min(lo, r.puntos[static_cast<std::size_t>(k)]);
            hi = glm::max(hi, r.puntos[static_cast<std::size_t>(k)]);
        }
        EXPECT_LT(glm::length(lo - c.desde), 1e-12);
        EXPECT_LT(glm::length(hi - c.hasta), 1e-12);
        dv ea, eb;
        EXPECT_EQ(distanciaTriangulos(c.a, c.b, ea, eb), 0.0);
    }
    dv ea, eb;
    EXPECT_NEAR(distanciaTriangulos(base, {{1, 1, 0.5}, {1, 1, 2}, {1, 3, 1}}, ea, eb), 0.5, 1e-12);
    EXPECT_NEAR(glm::length(ea - dv(1, 1, 0)) + glm::length(eb - dv(1, 1, 0.5)), 0, 1e-12);
}

// Random turned boxes and prisms, near one another: the tree's contact and
// separation against the reference's, pair by pair.
TEST(ChoqueExacto, mallasAlAzarComoLaReferencia) {
    std::mt19937 azar(2024);
    std::uniform_real_distribution<double> u(-1, 1), tam(0.05, 1.2);
    std::uniform_int_distribution<int> lados(3, 12);
    auto pieza = [&] {
        const dv p(u(azar), u(azar), u(azar));
        const dv q = p + dv(u(azar), u(azar), u(azar)) * 1.5;
        if (lados(azar) < 6) {
            const glm::dmat4 giro = glm::rotate(glm::dmat4(1.0), u(azar) * 3, glm::normalize(dv(u(azar), u(azar), 1)));
            std::vector<Triangulo> t = caja(p, p + dv(tam(azar), tam(azar), tam(azar)));
            for (auto& tr : t)
                for (dv* v : {&tr.a, &tr.b, &tr.c}) *v = dv(giro * glm::dvec4(*v, 1.0));
            return t;
        }
        return prisma(p, q + dv(0.01, 0, 0), tam(azar) * 0.3, lados(azar), u(azar));
    };
    int chocan = 0, cerca = 0;
    for (int ronda = 0; ronda < 300; ++ronda) {
        SCOPED_TRACE(ronda);
        const MallaElemento a(pieza()), b(pieza());
        comoLaReferencia(a, b, 0.5);
        chocan += contactoMallas(a, b).chocan;
        cerca += separacionMallas(a, b, 0.5).has_value();
    }
    // Both verdicts are well represented.
    EXPECT_GT(chocan, 20);
    EXPECT_LT(chocan, 280);
    EXPECT_GT(cerca, chocan);
}

// Candidates of two disciplines built from the meshes above, as the
// workspace reads them: node, key, name and box, geometry and transform.
struct Federacion {
    std::vector<NodoBB> candidatos;
    void anadir(const std::string& key, const std::string& nombre, const std::vector<Triangulo>& t,
                glm::dmat4 mundo = glm::dmat4(1.0)) {
        auto g = std::make_shared<Geometry>();
        ElementoGeometria e;
        for (const auto& tr : t)
            for (const dv* v : {&tr.a, &tr.b, &tr.c}) {
                e.indices.push_back(static_cast<std::int32_t>(g->vertices.size()));
                g->vertices.push_back(glm::vec3(*v));
            }
        g->elementos.push_back(std::move(e));
        const Box b = g->boundingBox();
        candidatos.push_back({Node::crear(nombre), key, nombre, {}, glm::dvec3(b.min), glm::dvec3(b.max), g, mundo});
    }
    std::vector<Interferencia> analizar(MetodoAnalisis m, double tol, double holgura = 0.05, bool directa = false) const {
        const ConfigAnalisis c{"Prueba", tol, m, holgura};
        const std::set<std::string> activos{"ARQ|MEP"};
        return directa ? analizarInterferenciasDirecta(candidatos, activos, {}, c, 2)
                       : analizarInterferencias(candidatos, activos, {}, c, 2);
    }
};

std::vector<std::string> nombres(const std::vector<Interferencia>& r) {
    std::vector<std::string> n;
    for (const auto& i : r) n.push_back(i.nombreA + "|" + i.nombreB);
    return n;
}

TEST(AnalisisExacto, subconjuntoOrdenadoDeLasCajasConSusMedidas) {
    Federacion f;
    f.anadir("ARQ", "Muro", caja({0, 0, 0}, {4, 0.25, 3}));
    f.anadir("ARQ", "Pilar", caja({6, 0, 0}, {6.4, 0.4, 3}));
    f.anadir("ARQ", "Losa", caja({-2, -2, -0.25}, {10, 10, 0}));
    f.anadir("MEP", "Tubo pasante", prisma({2, -1, 1.5}, {2, 1.2, 1.5}, 0.1, 16));
    const dv fuera = dv(6.4, 0.4, 1.5) + (0.77 + 0.05 / std::cos(glm::pi<double>() / 8)) * glm::normalize(dv(1, 1, 0));
    const dv dir = glm::normalize(dv(1, -1, 0));
    f.anadir("MEP", "Tubo diagonal", prisma(fuera - 6.0 * dir, fuera + 6.0 * dir, 0.05, 8, glm::pi<double>() / 2));
    f.anadir("MEP", "Ducto sobre losa", caja({1, 2, 0}, {3, 2.5, 0.5}));
    // A model moved 10 m up by its transform: its box (in its own
    // coordinates) overlaps the wall, its mesh in the world does not.
    f.anadir("MEP", "Tubo movido", prisma({2, -1, 2.5}, {2, 1.2, 2.5}, 0.1, 8),
             glm::translate(glm::dmat4(1.0), dv(0, 0, 10)));

    const auto cajas = f.analizar(MetodoAnalisis::cajasEnvolventes, 0.02);
    EXPECT_EQ(nombres(cajas), (std::vector<std::string>{"Muro|Tubo pasante", "Muro|Tubo diagonal",
                                                        "Muro|Tubo movido", "Pilar|Tubo diagonal"}));
    const auto exacto = f.analizar(MetodoAnalisis::geometriaExacta, 0.02);
    EXPECT_EQ(nombres(exacto), std::vector<std::string>{"Muro|Tubo pasante"});
    ASSERT_EQ(exacto.size(), 1u);
    EXPECT_EQ(exacto[0].metodo, MetodoAnalisis::geometriaExacta);
    EXPECT_NEAR(*exacto[0].distancia, 0.2, 1e-3); // the pipe's diameter, below the wall's 0.25
    EXPECT_NEAR(exacto[0].centroContacto->x, 2, 1e-6);
    EXPECT_NEAR(exacto[0].centroContacto->y, 0.125, 1e-6);
    EXPECT_EQ(exacto[0].viewpointTarget, *exacto[0].centroContacto);
    EXPECT_EQ(exacto[0].nodoA, cajas[0].nodoA);

    // The tolerance at the depth itself is no clash; just below it is one.
    EXPECT_TRUE(f.analizar(MetodoAnalisis::geometriaExacta, *exacto[0].distancia).empty());
    EXPECT_EQ(f.analizar(MetodoAnalisis::geometriaExacta, *exacto[0].distancia - 1e-6).size(), 1u);

    // "Holgura" of 1 m: the diagonal pipe 0.77 m from the column; the duct
    // standing on the slab touches it and is no clearance pair.
    const auto holgura = f.analizar(MetodoAnalisis::holgura, 0.02, 1.0);
    EXPECT_EQ(nombres(holgura), std::vector<std::string>{"Pilar|Tubo diagonal"});
    ASSERT_EQ(holgura.size(), 1u);
    EXPECT_NEAR(*holgura[0].distancia, 0.77, 1e-5);
    EXPECT_EQ(holgura[0].metodo, MetodoAnalisis::holgura);
    EXPECT_TRUE(f.analizar(MetodoAnalisis::holgura, 0.02, 0.7699).empty());

    // The direct form agrees clash by clash.
    for (MetodoAnalisis m : {MetodoAnalisis::geometriaExacta, MetodoAnalisis::holgura}) {
        const auto a = f.analizar(m, 0.02, 1.0), b = f.analizar(m, 0.02, 1.0, true);
        ASSERT_EQ(nombres(a), nombres(b));
        for (std::size_t k = 0; k < a.size(); ++k) EXPECT_NEAR(*a[k].distancia, *b[k].distancia, 1e-9);
    }
    for (MetodoAnalisis m : metodosAnalisis) EXPECT_EQ(metodoDesdeTexto(textoMetodo(m)), m);
    EXPECT_EQ(metodoDesdeTexto("Otro"), MetodoAnalisis::cajasEnvolventes);
}

} // namespace

// The duplex in ARQ and the FZK house in EST, both standing at the origin,
// through the real converter: the boxes of two buildings laid over each other
// meet everywhere, their meshes far less often.
TEST(AnalisisExacto, muestrasSuperpuestasDanMuchosMenosParesExactos) {
    const QString muestras = QStringLiteral(TESKAL_SAMPLES_DIR);
    if (!QFileInfo::exists(muestras + "/duplex.ifc")) GTEST_SKIP() << "sin ../shared/samples";
    ContentView cv(QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString());
    const std::pair<const char*, const char*> vinculos[] = {{"ARQ", "/duplex.ifc"}, {"EST", "/AC20-FZK-Haus.ifc"}};
    for (const auto& [clave, archivo] : vinculos) {
        cv.vincularIFC(clave);
        cv.archivosElegidos({(muestras + archivo).toStdString()});
        ASSERT_TRUE(pruebas::esperarHasta([&] { return !cv.isProcessing; }));
        ASSERT_FALSE(cv.showError) << cv.errorMessage.value_or("");
    }
    std::vector<std::vector<Interferencia>> r;
    for (MetodoAnalisis m : {MetodoAnalisis::cajasEnvolventes, MetodoAnalisis::geometriaExacta}) {
        cv.abrirConfigAnalisis();
        cv.mostrarConfigAnalisis = false;
        cv.iniciarDeteccion(ConfigAnalisis{std::string(textoMetodo(m)), 0.02, m, 0.05});
        ASSERT_TRUE(pruebas::esperarHasta([&] { return !cv.detectando; }));
        r.push_back(cv.interferencias);
    }
    const auto& cajas = r[0];
    const auto& exacto = r[1];
    // 141 box pairs, 77 exact ones: the rafters of the house's roof do run
    // through the duplex's walls and floors, the terrain and the furniture
    // only come near.
    EXPECT_GT(cajas.size(), 100u);
    EXPECT_GT(exacto.size(), 0u);
    EXPECT_LT(exacto.size() * 3, cajas.size() * 2);
    // The exact pairs are box pairs, in the boxes' order, each deeper than the
    // tolerance and no deeper than the boxes' overlap.
    std::size_t k = 0;
    for (const auto& e : exacto) {
        while (k < cajas.size() && (cajas[k].nodoA != e.nodoA || cajas[k].nodoB != e.nodoB)) ++k;
        ASSERT_LT(k, cajas.size()) << e.nombreA << " / " << e.nombreB;
        EXPECT_GT(*e.distancia, 0.02);
        const Box a = e.nodoA->boundingBox(), b = e.nodoB->boundingBox();
        const glm::vec3 solape = glm::min(a.max, b.max) - glm::max(a.min, b.min);
        EXPECT_LE(*e.distancia, std::min({solape.x, solape.y, solape.z}) + 1e-5);
        ++k;
    }
}
