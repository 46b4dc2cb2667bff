// The cut of a scene into sheet lines, labels and grid, and the section
// commands of the workspace.
#include "escena_prueba.h"
#include "federation/ConversionIFC.h"
#include "sections/Seccion.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <limits>
#include <random>

using namespace teskal;
using namespace teskal::pruebas;

namespace {

constexpr float inf = std::numeric_limits<float>::infinity();

std::size_t contar(const std::vector<Segmento2D>& s, bool esCorte) {
    std::size_t n = 0;
    for (const auto& x : s) n += x.esCorte == esCorte;
    return n;
}

} // namespace

TEST(IntersectarTriangulo, casosDelPlano) {
    struct Caso {
        const char* nombre;
        int eje;
        glm::vec3 a, b, c;
        float posicion;
        std::optional<ParHoja> esperado;
    };
    const Caso casos[] = {
        {"cruza: puntos en el orden ab, bc, ca", 2, {0, 0, 0}, {2, 0, 2}, {0, 2, 2}, 1.0f, ParHoja{{1, 0}, {0, 1}}},
        {"vértice en el plano y dos encima: segmento de largo cero", 2, {0, 0, 1}, {2, 0, 2}, {0, 2, 2}, 1.0f,
         ParHoja{{0, 0}, {0, 0}}},
        {"vértice en el plano y dos debajo: nada", 2, {0, 0, 1}, {2, 0, 0}, {0, 2, 0}, 1.0f, std::nullopt},
        {"cara en el plano: nada", 2, {0, 0, 1}, {2, 0, 1}, {0, 2, 1}, 1.0f, std::nullopt},
        {"todo encima: nada", 2, {0, 0, 2}, {2, 0, 3}, {0, 2, 4}, 1.0f, std::nullopt},
        {"eje X proyecta (y, z)", 0, {0, 1, 2}, {2, 1, 2}, {2, 3, 4}, 1.0f, ParHoja{{1, 2}, {2, 3}}},
        {"eje Y proyecta (x, z)", 1, {1, 0, 5}, {1, 2, 5}, {3, 2, 7}, 1.0f, ParHoja{{1, 5}, {2, 6}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const auto r = intersectarTriangulo(c.eje, c.a, c.b, c.c, c.posicion);
        ASSERT_EQ(r.has_value(), c.esperado.has_value());
        if (r) EXPECT_EQ(*r, *c.esperado);
    }
}

TEST(CortarGeometria, soloTriangulosConIndicesValidos) {
    auto g = geometriaCaja({0, 0, 0}, {1, 1, 1});
    const std::size_t caja = cortarGeometria(*g, 2, 0.5f).size();
    EXPECT_EQ(caja, 8u); // the eight side triangles
    // An index out of range drops its triangle; lines give nothing.
    g->elementos.push_back({Primitiva::Triangulos, {0, 5, 99, 0, 5, -1}});
    g->elementos.push_back({Primitiva::Lineas, {0, 7}});
    EXPECT_EQ(cortarGeometria(*g, 2, 0.5f).size(), caja);
    g->vertices.clear();
    EXPECT_TRUE(cortarGeometria(*g, 2, 0.5f).empty());
}

TEST(CortarGeometria, laLecturaDelRangoNoCambiaLasLineas) {
    // Random geometries on a coarse lattice, so that vertices fall exactly on
    // the plane, some out of range, some not a number: the cut must equal the
    // triangles tested one by one.
    std::mt19937 azar(7);
    std::uniform_int_distribution<int> celda(-2, 2);
    for (int prueba = 0; prueba < 400; ++prueba) {
        Geometry g;
        for (int i = 0; i < 6; ++i)
            g.vertices.push_back({static_cast<float>(celda(azar)), static_cast<float>(celda(azar)),
                                  static_cast<float>(celda(azar)) * 0.5f});
        if (prueba % 7 == 0) g.vertices[2].z = std::nanf("");
        ElementoGeometria e;
        for (int k = 0; k < 9; ++k) e.indices.push_back(celda(azar) + 2 + (prueba % 11 == 0 ? 3 : 0));
        g.elementos.push_back(e);
        for (int eje : {0, 1, 2})
            for (float p : {-1.0f, -0.5f, 0.0f, 0.5f, 1.0f}) {
                std::vector<ParHoja> uno;
                const auto n = static_cast<std::int32_t>(g.vertices.size());
                for (std::size_t t = 0; t + 2 < e.indices.size(); t += 3) {
                    const auto i0 = e.indices[t], i1 = e.indices[t + 1], i2 = e.indices[t + 2];
                    if (i0 >= n || i1 >= n || i2 >= n) continue;
                    if (auto r = intersectarTriangulo(eje, g.vertices[i0], g.vertices[i1], g.vertices[i2], p))
                        uno.push_back(*r);
                }
                const auto todos = cortarGeometria(g, eje, p);
                ASSERT_EQ(todos.size(), uno.size()) << "prueba " << prueba << " eje " << eje << " p " << p;
                for (std::size_t i = 0; i < uno.size(); ++i) {
                    // NaN points compare unequal: compare their bits.
                    EXPECT_EQ(std::memcmp(&todos[i], &uno[i], sizeof(ParHoja)), 0);
                }
            }
    }
}

TEST(ExtraerSegmentos, limitesDeProfundidad) {
    // The plane at z = 10; each case is one box of height 1 around its centre.
    struct Caso {
        const char* nombre;
        float centro;
        double profundidad;
        bool contorno;
        bool corte;
    };
    const Caso casos[] = {
        {"corte exacto: ningún contorno", 9.0f, 0.0, false, false},
        {"profundidad 3, centro en el límite 7: contorno", 7.0f, 3.0, true, false},
        {"profundidad 3, centro bajo el límite: nada", 6.9f, 3.0, false, false},
        {"profundidad 3, centro en el plano: solo corte", 10.0f, 3.0, false, true},
        {"profundidad 3, centro bajo el plano y cortado: corte y contorno", 9.75f, 3.0, true, true},
        {"ilimitada: contorno a cualquier distancia", -1000.0f, std::numeric_limits<double>::infinity(), true, false},
        {"encima del plano: nada", 12.0f, std::numeric_limits<double>::infinity(), false, false},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        ContentView cv("/no/existe");
        modeloEn(cv, "ARQ")->addChildNode(elementoCaja("Muro", {1, 2, c.centro - 0.5f}, {3, 5, c.centro + 0.5f}));
        const auto s = extraerSegmentos(cv.especialidades, 2, 10.0, c.profundidad);
        EXPECT_EQ(contar(s, false), c.contorno ? 4u : 0u);
        EXPECT_EQ(contar(s, true) > 0, c.corte);
        if (c.contorno) {
            const auto it = std::find_if(s.begin(), s.end(), [](const Segmento2D& x) { return !x.esCorte; });
            // c0 (1, 2) to c1 (3, 2), then c1 c2, c2 c3, c3 c0.
            EXPECT_EQ(it->p1, glm::vec2(1, 2));
            EXPECT_EQ(it->p2, glm::vec2(3, 2));
            EXPECT_EQ((it + 2)->p1, glm::vec2(3, 5));
            EXPECT_EQ((it + 3)->p2, glm::vec2(1, 2));
            EXPECT_TRUE(it->nombreElemento.empty());
        }
    }
}

TEST(ExtraerSegmentos, nombreClaveYColorDeCadaElemento) {
    ContentView cv("/no/existe");
    // An unnamed geometry node takes the name of its element above it; a
    // named one is its own element.
    auto puerta = Node::crear("Puerta 1");
    auto hoja = Node::crear();
    hoja->setGeometry(geometriaCaja({0, 0, 0}, {1, 0.1f, 2}));
    puerta->addChildNode(hoja);
    modeloEn(cv, "ARQ")->addChildNode(puerta);
    modeloEn(cv, "EST")->addChildNode(elementoCaja("Pilar", {5, 5, 0}, {5.5f, 5.5f, 3}));
    modeloEn(cv, "MEP")->addChildNode(elementoCaja("Tubo", {8, 0, 0}, {9, 1, 3}));
    cv.especialidades.at("MEP").isVisible = false; // switched off: no lines

    const auto s = extraerSegmentos(cv.especialidades, 2, 1.0, 0.0);
    ASSERT_EQ(s.size(), 16u);
    for (const auto& x : s) {
        EXPECT_TRUE(x.esCorte);
        EXPECT_NE(x.key, "MEP");
        EXPECT_EQ(x.nombreElemento, x.key == "ARQ" ? "Puerta 1" : "Pilar");
        EXPECT_EQ(x.color, cv.especialidades.at(x.key).colorOriginal);
    }
    // The labels leave the switched-off discipline out too.
    const auto e = construirEtiquetas(cv.especialidades, 2, {}, {}, 1.0);
    ASSERT_EQ(e.size(), 2u);
}

TEST(ConstruirEtiquetas, columnasDeTextoPorGrupo) {
    // Anchors on x = 0 (left of the mean) and x = 10 (right), heights 0..3;
    // each group steps from its highest anchor down.
    struct Caso {
        int izquierda, derecha;
        std::vector<float> yIzquierda, yDerecha; // by anchor height, highest first
    };
    const Caso casos[] = {
        {1, 1, {0}, {0}},
        {2, 1, {-1.5f, 0}, {0}},
        {3, 2, {-1.5f, 0, 1.5f}, {-1.5f, 0}},
        {4, 4, {-3.0f, -1.5f, 0, 1.5f}, {-3.0f, -1.5f, 0, 1.5f}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(std::to_string(c.izquierda) + " a la izquierda, " + std::to_string(c.derecha) + " a la derecha");
        std::vector<Etiqueta2D> e;
        // Listed lowest first, so the order of places is not the list's.
        for (int i = 0; i < c.izquierda; ++i) e.push_back(etiqueta("", {0, static_cast<float>(i)}, {0, 0}, "", false, ""));
        for (int i = 0; i < c.derecha; ++i) e.push_back(etiqueta("", {10, static_cast<float>(i)}, {0, 0}, "", false, ""));
        colocarTextosEtiquetas(e);
        std::vector<glm::vec2> esperados, colocados;
        for (int i = c.izquierda - 1; i >= 0; --i) esperados.push_back({-4.0f, c.yIzquierda[i]});
        for (int i = c.derecha - 1; i >= 0; --i) esperados.push_back({1.5f, c.yDerecha[i]});
        for (const Etiqueta2D& x : e) colocados.push_back(x.offsetTexto);
        EXPECT_EQ(colocados, esperados);
    }
    // One anchor x for all: none is below the mean, all go right.
    std::vector<Etiqueta2D> mismas(3, etiqueta("", {2, 0}, {0, 0}, "", false, ""));
    colocarTextosEtiquetas(mismas);
    for (const auto& e : mismas) EXPECT_EQ(e.offsetTexto.x, 1.5f);
}

TEST(ConstruirEtiquetas, camposDeCadaElemento) {
    ContentView cv("/no/existe");
    // One name in two disciplines: a label each. The plane at the bottom of a
    // box still labels it; a box above the plane is not labelled.
    modeloEn(cv, "ARQ")->addChildNode(elementoCaja("Muro A", {0, 0, 1}, {4, 0.2f, 3}));
    modeloEn(cv, "EST")->addChildNode(elementoCaja("Muro A", {10, 0, 0}, {12, 1, 5}));
    modeloEn(cv, "EST")->addChildNode(elementoCaja("Viga", {0, 0, 1.5f}, {1, 1, 2}));
    cv.propiedadesIFC["ARQ"]["Muro A"] = PropiedadesElemento{
        {"__tipoIFC", "IFCWALLSTANDARDCASE"},
        {"Pset_A › MaterialLayer", "Hormigón"},
        {"Pset_B › Material", "Otro"},
        {"Pset_C › Building Storey", "Nivel 1"},
        {"__material", "oculto"},
    };
    cv.propiedadesIFC["EST"]["Muro A"] = PropiedadesElemento{{"__tipoIFC", "IFCCURTAINWALL"}};

    const auto e = construirEtiquetas(cv.especialidades, 2, cv.propiedadesIFC, cv.propiedadesPorGlobalId, 1.0);
    ASSERT_EQ(e.size(), 2u);
    EXPECT_EQ(e[0].key, "ARQ");
    EXPECT_EQ(e[1].key, "EST");
    EXPECT_NE(e[0].id, e[1].id);
    EXPECT_EQ(e[0].ancla, glm::vec2(2, 0.1f));
    EXPECT_EQ(e[0].dimensiones, "4.00 × 0.20 m");
    EXPECT_EQ(e[0].tipoIFC, "Muro");
    EXPECT_EQ(e[0].material, "Hormigón"); // the first in key order
    EXPECT_EQ(e[0].nivel, "Nivel 1");
    EXPECT_FALSE(e[0].visible);
    EXPECT_EQ(e[0].color, cv.especialidades.at("ARQ").colorOriginal);
    EXPECT_EQ(e[1].material, ""); // its own discipline's properties
}

TEST(ConstruirEtiquetas, tiposLegibles) {
    const std::pair<const char*, const char*> casos[] = {
        {"IFCWALL", "Muro"},          {"IFCPIPESEGMENT", "Tubería"},
        {"IFCRAILING", "Baranda"},    {"IFCCURTAINWALL", "Curtainwall"},
        {"IFCFLOW TERMINAL", "Flow Terminal"}, {"XIFCYIFC", "Xy"},
        {"", ""},
    };
    for (const auto& [tipo, legible] : casos) EXPECT_EQ(tipoIFCLegible(tipo), legible) << tipo;
}

TEST(FusionarEtiquetas, tomaVisibilidadYPosicionDelNombreYClave) {
    std::vector<Etiqueta2D> frescas{etiqueta("F1", {0, 0}, {0, 0}, "Muro", false, "ARQ"),
                                    etiqueta("F2", {0, 0}, {0, 0}, "Muro", false, "EST"),
                                    etiqueta("F3", {0, 0}, {0, 0}, "Losa", false, "ARQ")};
    frescas[0].dimensiones = "1.00 × 1.00 m";
    const std::vector<Etiqueta2D> guardadas{
        etiqueta("G1", {0, 0}, {3, -2}, "Muro", true, "ARQ"),
        etiqueta("G2", {0, 0}, {9, 9}, "Ya no está", true, "ARQ")};
    const auto r = fusionarEtiquetas(frescas, guardadas);
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r[0].id, "F1");
    EXPECT_TRUE(r[0].visible);
    EXPECT_EQ(r[0].offsetTexto, glm::vec2(3, -2));
    EXPECT_EQ(r[0].dimensiones, "1.00 × 1.00 m");
    EXPECT_FALSE(r[1].visible); // another discipline
    EXPECT_EQ(r[2], frescas[2]);
}

TEST(ProyectarGrilla, cadaTramoComoLineaVista) {
    const std::vector<EjeGrilla> grillas{{"1", "A", true, {{0, 0, 0}, {0, 10, 0}, {5, 10, 0}}},
                                         {"2", "B", false, {{1, 1, 1}}}};
    const auto s = proyectarGrilla(grillas, 1);
    ASSERT_EQ(s.size(), 2u);
    EXPECT_EQ(s[1].p1, glm::vec2(0, 0));
    EXPECT_EQ(s[1].p2, glm::vec2(5, 0));
    EXPECT_EQ(s[0].key, "GRILLA");
    EXPECT_EQ(s[0].nombreElemento, "A");
    EXPECT_FALSE(s[0].esCorte);
    EXPECT_EQ(s[0].color, (Color{0.5f, 0.5f, 0.5f, 0.55f}));
}

TEST(TituloPlano, ejePosicionYProfundidad) {
    const std::tuple<int, double, int, double, const char*> casos[] = {
        {2, 1.2, 0, 1.0, "Plano 2D — Eje Z = 1.20 m"},
        {0, -3.456, 1, 3.0, "Plano 2D — Eje X = -3.46 m · 3.0 m prof."},
        {1, 1.004, 2, 1.0, "Plano 2D — Eje Y = 1.00 m · ilimitado"},
    };
    for (const auto& [eje, pos, modo, prof, titulo] : casos) EXPECT_EQ(tituloPlano(eje, pos, modo, prof), titulo);
}

// ---------------------------------------------------------------------------
// The commands of the workspace.

TEST(SeccionEspacioTrabajo, planoYRecortePorEje) {
    struct Caso {
        int eje;
        Color color;
        glm::vec3 angulos, lugar;
    };
    const float r = glm::half_pi<float>();
    const Caso casos[] = {{0, {0.2f, 0.6f, 1.0f, 0.18f}, {0, r, 0}, {1.5f, 0, 0}},
                          {1, {0.2f, 1.0f, 0.3f, 0.18f}, {r, 0, 0}, {0, 1.5f, 0}},
                          {2, {1.0f, 0.8f, 0.2f, 0.18f}, {0, 0, 0}, {0, 0, 1.5f}}};
    for (const Caso& c : casos) {
        SCOPED_TRACE("eje " + std::to_string(c.eje));
        ContentView cv("/no/existe");
        auto modelo = modeloEn(cv, "ARQ");
        auto cruzado = elementoCaja("Cruzado", {0, 0, 0}, {3, 3, 3});
        auto alBorde = elementoCaja("Al borde", {1.5f, 1.5f, 1.5f}, {2, 2, 2}); // the plane at its bottom
        auto mas = elementoCaja("Más allá", {2, 2, 2}, {3, 3, 3});
        for (auto& n : {cruzado, alBorde, mas}) modelo->addChildNode(n);
        cv.especialidades.at("ARQ").isVisible = false; // hidden disciplines are clipped too
        cv.seccion.eje = c.eje;
        cv.seccion.posicion = 1.5;
        cv.fijarSeccionActiva(true);
        EXPECT_FALSE(cruzado->isHidden());
        EXPECT_FALSE(alBorde->isHidden());
        EXPECT_TRUE(mas->isHidden());
        const auto plano = cv.seccion.nodoPlanVisual;
        ASSERT_TRUE(plano);
        EXPECT_EQ(plano->parent(), cv.scene.rootNode());
        EXPECT_EQ(plano->geometry()->firstMaterial()->diffuse(), c.color);
        EXPECT_TRUE(plano->geometry()->firstMaterial()->isDoubleSided());
        EXPECT_EQ(plano->eulerAngles(), c.angulos);
        EXPECT_EQ(plano->position(), c.lugar);
        EXPECT_EQ(plano->boundingBox().tamano(), glm::vec3(100, 100, 0));

        // Off: the plane goes and every descendant is shown, also what was hidden elsewhere.
        modelo->setHidden(true);
        cv.fijarSeccionActiva(false);
        EXPECT_FALSE(cv.seccion.nodoPlanVisual);
        EXPECT_EQ(plano->parent(), nullptr);
        EXPECT_FALSE(mas->isHidden());
        EXPECT_FALSE(modelo->isHidden());
    }
}

TEST(SeccionEspacioTrabajo, rangoDelDeslizador) {
    ContentView cv("/no/existe");
    const auto rango = [&] { return std::tuple(cv.seccion.rangoMin, cv.seccion.rangoMax, cv.seccion.posicion); };
    // No visible discipline: the range stays.
    cv.seccion.posicion = 20;
    cv.actualizarRangoSeccion();
    EXPECT_EQ(rango(), std::tuple(-50.0, 50.0, 20.0));
    auto modelo = modeloEn(cv, "ARQ");
    modelo->addChildNode(elementoCaja("A", {0, -4, 2}, {1, 1, 3}));
    modelo->addChildNode(elementoCaja("B", {0, 0, 6}, {1, 8, 9}));
    cv.fijarSeccionActiva(true);
    EXPECT_EQ(rango(), std::tuple(1.5, 9.5, 9.5));
    cv.fijarEjeSeccion(1);
    EXPECT_EQ(rango(), std::tuple(-4.5, 8.5, 8.5));
}

TEST(SeccionEspacioTrabajo, abrirPlanoSusAlmacenesYSeccionesGuardadas) {
    ContentView cv("/no/existe");
    modeloEn(cv, "ARQ")->addChildNode(elementoCaja("Muro", {0, 0, 0}, {4, 0.2f, 3}));
    cv.grillasIFC = {{"1", "A", true, {{0, -5, 0}, {0, 5, 0}}}};
    cv.seccion.posicion = 5.0; // above everything
    cv.abrirPlano2D();
    EXPECT_TRUE(cv.showError);
    EXPECT_EQ(cv.errorMessage, "No se encontraron elementos en el plano de corte. Ajusta la posición de la sección.");
    EXPECT_FALSE(cv.seccion.planoPorAbrir);

    // Only an outline behind the plane is not an empty sheet.
    cv.showError = false;
    cv.seccion.modoProfundidad = 2;
    cv.abrirPlano2D();
    ASSERT_TRUE(cv.seccion.planoPorAbrir);
    EXPECT_FALSE(cv.showError);
    EXPECT_EQ(cv.seccion.planoPorAbrir->titulo, "Plano 2D — Eje Z = 5.00 m · ilimitado");

    // What a closed sheet kept comes back under the same title.
    cv.seccion.modoProfundidad = 0;
    cv.seccion.posicion = 1.0;
    const std::string titulo = tituloPlano(2, 1.0, 0, 1.0);
    const Etiqueta2D guardada = etiqueta("", {0, 0}, {7, 7}, "Muro", true, "ARQ");
    const Cota2D cota{"C0DE0000-0000-4000-8000-000000000001", {0, 0}, {4, 0}, 0.6f};
    const auto cambios = cv.cambios;
    cv.guardarEstadoPlano(titulo, {cota}, {guardada});
    EXPECT_GT(cv.cambios, cambios);
    cv.abrirPlano2D();
    ASSERT_TRUE(cv.seccion.planoPorAbrir);
    const Plano2D& p = *cv.seccion.planoPorAbrir;
    EXPECT_EQ(p.titulo, titulo);
    EXPECT_EQ(p.cotas, std::vector<Cota2D>{cota});
    ASSERT_EQ(p.etiquetas.size(), 1u);
    EXPECT_TRUE(p.etiquetas[0].visible);
    EXPECT_EQ(p.etiquetas[0].offsetTexto, glm::vec2(7, 7));
    EXPECT_EQ(p.etiquetas[0].dimensiones, "4.00 × 0.20 m");
    ASSERT_EQ(p.segmentosGrilla.size(), 1u);
    EXPECT_EQ(contar(p.segmentos, true), 8u);
    // Keeping the same lists again changes nothing in the document.
    const auto otra = cv.cambios;
    cv.guardarEstadoPlano(titulo, {cota}, p.etiquetas);
    EXPECT_EQ(cv.cambios, otra);

    // Saved sections: blank names numbered, "Cancelar" keeps the entry and
    // "Eliminar" removes it; restoring sets the panel's plane and opens its
    // sheet with what its title kept; the switch is not touched.
    cv.seccion.eje = 1;
    cv.seccion.posicion = 0.1;
    const auto nombres = [&] {
        std::vector<std::string> n;
        for (const auto& s : cv.seccion.guardadas) n.push_back(s.nombre);
        return n;
    };
    const auto antes = cv.cambios;
    cv.guardarSeccion("  ");
    cv.guardarSeccion("");
    EXPECT_EQ(nombres(), (std::vector<std::string>{"Sección 1", "Sección 2"}));
    EXPECT_GT(cv.cambios, antes);
    cv.pedirEliminarSeccion(cv.seccion.guardadas[0].id);
    cv.cancelarEliminarSeccion();
    EXPECT_EQ(cv.seccion.guardadas.size(), 2u);
    cv.pedirEliminarSeccion(cv.seccion.guardadas[0].id);
    EXPECT_TRUE(cv.seccion.pendienteEliminar);
    cv.eliminarSeccion();
    EXPECT_FALSE(cv.seccion.pendienteEliminar);
    // The next blank name is "Sección 2" again, taken: it becomes "Sección 2 2".
    cv.guardarSeccion("");
    cv.guardarSeccion(" Fachada ");
    EXPECT_EQ(nombres(), (std::vector<std::string>{"Sección 2", "Sección 2 2", "Fachada"}));
    EXPECT_EQ(cv.seccion.guardadas[2].eje, 1);
    EXPECT_EQ(cv.seccion.guardadas[2].posicion, 0.1);
    cv.seccion.planoPorAbrir.reset();
    cv.restaurarSeccion({"5E0C6A1B-0000-4000-8000-000000000001", "Planta", 2, 1.0});
    EXPECT_FALSE(cv.seccion.activa);
    ASSERT_TRUE(cv.seccion.planoPorAbrir);
    EXPECT_EQ(cv.seccion.planoPorAbrir->titulo, titulo);
    EXPECT_EQ(cv.seccion.planoPorAbrir->cotas, std::vector<Cota2D>{cota});
}

// ---------------------------------------------------------------------------
// The samples through the real converter.

class MuestraSeccion : public testing::TestWithParam<const char*> {};

TEST_P(MuestraSeccion, murosCortadosDondeDiceSuGeometria) {
    const QString ifc = QStringLiteral(TESKAL_SAMPLES_DIR "/") + QString::fromUtf8(GetParam());
    if (!QFileInfo::exists(ifc)) GTEST_SKIP() << "no está la muestra " << ifc.toStdString();
    constexpr double altura = 1.2;
    QProcess oraculo;
    oraculo.start(QStringLiteral(TESKAL_PYTHON),
                  {QStringLiteral(TESKAL_TESTS_DIR "/sections/corte_muro.py"), ifc, QString::number(altura)});
    ASSERT_TRUE(oraculo.waitForFinished(300000));
    ASSERT_EQ(oraculo.exitCode(), 0) << oraculo.readAllStandardError().toStdString();
    const QJsonArray muros = QJsonDocument::fromJson(oraculo.readAllStandardOutput()).array();
    ASSERT_GE(muros.size(), 3);

    TrabajoConversion trabajo; // the real converter, straight into a workspace
    trabajo.rutaOrigen = ifc.toStdString();
    trabajo.rutaConversor = TESKAL_IFCCONVERT;
    trabajo.rutaSalida = rutaTemporalNueva(".obj");
    auto resultado = convertirIFC(trabajo);
    ASSERT_TRUE(std::holds_alternative<ModeloConvertido>(resultado));
    ContentView cv("/no/existe");
    cv.integrarModelo(std::move(std::get<ModeloConvertido>(resultado)), trabajo.rutaOrigen, trabajo.rutaSalida, "ARQ");
    eliminarSalidasConversion(trabajo.rutaSalida);

    const auto segmentos = extraerSegmentos(cv.especialidades, 2, altura, 0.0);
    const auto etiquetas = construirEtiquetas(cv.especialidades, 2, cv.propiedadesIFC, cv.propiedadesPorGlobalId, altura);
    for (const QJsonValue& v : muros) {
        const QJsonObject m = v.toObject();
        const std::string nombre = m["nombre"].toString().toStdString();
        SCOPED_TRACE(nombre);
        glm::vec2 mn(inf), mx(-inf);
        for (const auto& s : segmentos)
            if (s.nombreElemento == nombre)
                for (const glm::vec2& p : {s.p1, s.p2}) {
                    mn = glm::min(mn, p);
                    mx = glm::max(mx, p);
                }
        ASSERT_LE(mn.x, mx.x) << "sin líneas de corte";
        const auto punto = [&](const char* k) { return glm::vec2(m[k][0].toDouble(), m[k][1].toDouble()); };
        EXPECT_LT(glm::distance(mn, punto("min")) + glm::distance(mx, punto("max")), 1e-3f);
        const auto e = std::find_if(etiquetas.begin(), etiquetas.end(),
                                    [&](const Etiqueta2D& x) { return x.nombre == nombre; });
        ASSERT_NE(e, etiquetas.end());
        EXPECT_EQ(e->tipoIFC, "Muro");
    }
}

INSTANTIATE_TEST_SUITE_P(Muestras, MuestraSeccion, testing::Values("duplex.ifc", "AC20-FZK-Haus.ifc"));
