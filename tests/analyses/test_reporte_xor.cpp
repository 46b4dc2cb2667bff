// The change report's model side: which node each row's image is cloned
// from (and in which colour), the scene the image is rendered from, and the
// texts of the counts and deltas.
#include "analyses/xor/ReporteXOR.h"
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "scene/ColoresSistema.h"

#include <gtest/gtest.h>

using namespace teskal;

namespace {

// Two versions as the OBJ reader gives them: a pair of same-named pillars
// told apart by their GlobalIds, a wall, and a wall whose name was cut at "/".
std::shared_ptr<Node> version(float x) {
    std::string obj;
    int k = 0;
    for (const char* nombre : {"Pilar", "Pilar", "Muro", "Muro/Tabique"}) {
        const std::string a = std::to_string(x + 10 * k), b = std::to_string(x + 10 * k + 1);
        obj += std::string("g ") + nombre + "\nv " + a + " 0 0\nv " + b + " 2 0\nv " + a +
               " 2 3\nf " + std::to_string(3 * k + 1) + " " + std::to_string(3 * k + 2) + " " +
               std::to_string(3 * k + 3) + "\n";
        ++k;
    }
    return cargarOBJTexto(obj, "GID1\tIfcColumn\tPilar\nGID2\tIfcColumn\tPilar\n\tIfcWall\tMuro\n\t"
                               "IfcWall\tMuro/Tabique\n");
}

ElementoCambioXOR fila(const char* nombre, const char* gid, TipoCambioXOR tipo) {
    ElementoCambioXOR e;
    e.nombre = nombre;
    e.globalId = gid;
    e.tipoCambio = tipo;
    return e;
}

} // namespace

TEST(ReporteXOR, CadaImagenSeClonaDelNodoDeSuModeloConSuColor) {
    auto base = version(0), nuevo = version(100);
    const Node* segundoPilarNuevo = nuevo->childNodes()[1].get();
    ASSERT_EQ(segundoPilarNuevo->globalId(), "GID2");
    struct Caso {
        const char* nombre;
        ElementoCambioXOR elemento;
        bool conNuevo;
        const char* clave; // empty: no image
        float x;           // where the cloned node's box starts
        Color color;
    } casos[] = {
        {"agregado, del nuevo por GlobalId", fila("Pilar", "GID2", TipoCambioXOR::agregado), true,
         "GID2", 110, colores::verde},
        {"eliminado, de la base", fila("Pilar", "GID1", TipoCambioXOR::eliminado), true, "GID1", 0,
         colores::rojo},
        {"modificado, del nuevo, por nombre", fila("Muro", "", TipoCambioXOR::modificado), true,
         "Muro", 120, coloresXOR::modificadoAnterior},
        {"modificado sin nuevo, de la base", fila("Muro", "", TipoCambioXOR::modificado), false,
         "Muro", 20, coloresXOR::modificadoAnterior},
        {"agregado sin nuevo: sin imagen",
         fila("Muro", "", TipoCambioXOR::agregado),
         false,
         "",
         0,
         {}},
        {"nombre cortado en la barra: sin imagen",
         fila("Tabique", "", TipoCambioXOR::eliminado),
         true,
         "",
         0,
         {}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const auto trabajos =
            trabajosThumbnailXOR({c.elemento}, base.get(), c.conNuevo ? nuevo.get() : nullptr);
        if (!*c.clave) {
            EXPECT_TRUE(trabajos.empty());
            continue;
        }
        ASSERT_EQ(trabajos.size(), 1u);
        EXPECT_EQ(trabajos[0].clave, c.clave);
        EXPECT_EQ(trabajos[0].color, c.color);
        EXPECT_FLOAT_EQ(trabajos[0].clon->boundingBox().min.x, c.x);
        EXPECT_FALSE(trabajos[0].clon->parent()); // detached from the live scene
    }
}

TEST(ReporteXOR, LaEscenaDeUnaImagenEncuadraElElementoSinTocarElOriginal) {
    auto modelo = version(0);
    Node& pilar = *modelo->childNodes()[0]; // box (0, 0, 0) to (1, 2, 3)
    const auto colorOriginal = pilar.geometry()->firstMaterial()->diffuse();
    EscenaThumbnail t = escenaThumbnailXOR(pilar, colores::verde);

    int conGeometria = 0, luces = 0;
    t.escena->rootNode()->enumerateChildNodes([&](Node& n, bool&) {
        luces += n.light().has_value();
        if (!n.geometry()) return;
        ++conGeometria;
        const Material& m = *n.geometry()->firstMaterial();
        EXPECT_EQ(m.diffuse(), colores::verde);
        EXPECT_EQ(m.emission(), colores::negro);
        EXPECT_TRUE(m.isDoubleSided());
    });
    EXPECT_EQ(conGeometria, 1);
    EXPECT_EQ(luces, 2);
    EXPECT_EQ(pilar.geometry()->firstMaterial()->diffuse(), colorOriginal);

    // s = 3, d = 2.25, looking at the centre (0.5, 1, 1.5).
    const glm::vec3 p = t.camara->position();
    EXPECT_NEAR(p.x, 0.5 + 2.25, 1e-5);
    EXPECT_NEAR(p.y, 1 + 0.6 * 2.25, 1e-5);
    EXPECT_NEAR(p.z, 1.5 + 2.25, 1e-5);
    EXPECT_FLOAT_EQ(t.camara->camera()->zFar, 150);
    EXPECT_FLOAT_EQ(t.camara->camera()->zNear, 0.005f);
}

TEST(ReporteXOR, CuentasYTextos) {
    ResultadoXOR r;
    r.archivoBase = "a.ifc";
    r.archivoNuevo = "b.ifc";
    r.iguales = 4;
    r.elementos = {fila("A", "", TipoCambioXOR::agregado), fila("B", "", TipoCambioXOR::modificado),
                   fila("C", "", TipoCambioXOR::agregado)};
    const CuentasInformeXOR c = cuentasInformeXOR(r);
    EXPECT_EQ((std::array{c.agregados, c.eliminados, c.modificados, c.iguales, c.total()}),
              (std::array{2, 0, 1, 4, 7}));
    EXPECT_EQ(tituloInformeXOR(r), "Informe XOR · a.ifc → b.ifc");

    const std::pair<float, const char*> deltas[] = {{0.0f, "—"},
                                                    {0.001f, "—"},
                                                    {0.0011f, "0.001 m"},
                                                    {0.06f, "0.060 m"},
                                                    {12.3456f, "12.346 m"}};
    for (const auto& [delta, texto] : deltas) EXPECT_EQ(textoDeltaXOR(delta), texto) << delta;
    EXPECT_EQ(textoElementosXOR(1), "1 elemento");
    EXPECT_EQ(textoElementosXOR(0), "0 elementos");
    EXPECT_EQ(textoElementosXOR(3), "3 elementos");
}

TEST(ReporteXOR, ElProgresoNombraLaVersionQueSeCarga) {
    ContentView cv("/no/hay");
    const std::pair<std::optional<std::string>, const char*> casos[] = {
        {std::nullopt, "Procesando Arquitectura..."},
        {std::string(slotsXOR::base), "Procesando versión base..."},
        {std::string(slotsXOR::nuevo), "Procesando versión nueva..."},
    };
    for (const auto& [slot, texto] : casos) {
        cv.slotXORCargando = slot;
        EXPECT_EQ(cv.textoProcesando(), texto);
    }
    // A cancel ends a slot's load: a discipline's link shows its own name again.
    cv.cancelarConversion();
    EXPECT_EQ(cv.textoProcesando(), "Procesando Arquitectura...");
}
