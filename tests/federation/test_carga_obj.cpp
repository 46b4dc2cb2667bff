// The Wavefront OBJ reader that turns the converter's output into one model
// root with a node per element, and the material pass over a loaded model.
#include "federation/CargaOBJ.h"
#include "utilidades_prueba.h"

#include <gtest/gtest.h>

namespace teskal {
inline void PrintTo(const Color& c, std::ostream* os) {
    *os << "Color(" << c.r << ", " << c.g << ", " << c.b << ", " << c.a << ")";
}
} // namespace teskal

using namespace teskal;

namespace {

using Puntos = std::vector<glm::vec3>;
using Indices = std::vector<std::int32_t>;

std::vector<std::string> nombres(const Node& raiz) {
    std::vector<std::string> r;
    for (const auto& h : raiz.childNodes()) r.push_back(h->name().value_or("<sin nombre>"));
    return r;
}

// The geometry of the i-th element node, which must exist.
const Geometry& geometria(const std::shared_ptr<Node>& raiz, std::size_t i) {
    EXPECT_LT(i, raiz->childNodes().size());
    static const Geometry ninguna;
    if (i >= raiz->childNodes().size()) return ninguna;
    const auto& g = raiz->childNodes()[i]->geometry();
    EXPECT_NE(g, nullptr);
    return g ? *g : ninguna;
}

Indices secuencia(std::int32_t n) {
    Indices r;
    for (std::int32_t i = 0; i < n; ++i) r.push_back(i);
    return r;
}

constexpr Color blanco075{0.75f, 0.75f, 0.75f, 1.0f};

const Puntos cuatro = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
constexpr std::string_view verticesCuatro = "v 1 2 3\nv 4 5 6\nv 7 8 9\nv 10 11 12\n";

} // namespace

TEST(CargaOBJ, FacesWithoutAGroupGiveOneNodeNamedDefault) {
    const auto raiz = cargarOBJTexto("# IfcConvert\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n");
    ASSERT_NE(raiz, nullptr);
    EXPECT_FALSE(raiz->name().has_value());
    EXPECT_EQ(raiz->geometry(), nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"default"}));
    const Geometry& g = geometria(raiz, 0);
    EXPECT_EQ(g.name, "default");
    EXPECT_EQ(g.vertices, (Puntos{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}));
    EXPECT_TRUE(g.normales.empty());
    ASSERT_EQ(g.elementos.size(), 1u);
    EXPECT_EQ(g.elementos[0].primitiva, Primitiva::Triangulos);
    EXPECT_EQ(g.elementos[0].indices, (Indices{0, 1, 2}));
    ASSERT_EQ(g.materiales.size(), 1u);
    const Material& m = *g.materiales[0];
    ASSERT_TRUE(m.diffuse().has_value());
    EXPECT_EQ(*m.diffuse(), blanco075);
    EXPECT_EQ(m.lightingModel(), ModeloIluminacion::Phong);
    EXPECT_TRUE(m.isDoubleSided());
}

TEST(CargaOBJ, GroupNamesAreTheRestOfTheLineTrimmed) {
    const auto raiz =
        cargarOBJTexto(std::string(verticesCuatro) + "g\nf 1 2 3\n"
                                                     "g Muro b\xC3\xA1sico: 200mm\nf 1 2 3\n"
                                                     "  g   Muro  doble \t \nf 2 3 4\n"
                                                     "o Objeto 1\nf 1 3 4\n");
    ASSERT_NE(raiz, nullptr);
    EXPECT_EQ(nombres(*raiz), (std::vector<std::string>{"default", "Muro b\xC3\xA1sico: 200mm",
                                                        "Muro  doble", "Objeto 1"}));
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(geometria(raiz, i).name, *raiz->childNodes()[i]->name());
    EXPECT_EQ(geometria(raiz, 2).vertices, (Puntos{cuatro[1], cuatro[2], cuatro[3]}));
    EXPECT_EQ(geometria(raiz, 3).vertices, (Puntos{cuatro[0], cuatro[2], cuatro[3]}));
}

TEST(CargaOBJ, AGroupWithoutFacesIsRenamedAndSameNamedGroupsStaySeparate) {
    const auto raiz = cargarOBJTexto(std::string(verticesCuatro) + "f 1 2 3\n"
                                                                   "g A\ng B\nf 2 3 4\nf 1 2 4\n"
                                                                   "g Muro\nf 1 2 3\n"
                                                                   "g Puerta\nf 1 3 4\n"
                                                                   "g Muro\nf 2 3 4\n"
                                                                   "g Final\n");
    ASSERT_NE(raiz, nullptr);
    EXPECT_EQ(nombres(*raiz), (std::vector<std::string>{"default", "B", "Muro", "Puerta", "Muro"}));
    EXPECT_EQ(geometria(raiz, 1).vertices,
              (Puntos{cuatro[1], cuatro[2], cuatro[3], cuatro[0], cuatro[1], cuatro[3]}));
    EXPECT_EQ(geometria(raiz, 1).elementos[0].indices, secuencia(6));
    EXPECT_EQ(geometria(raiz, 2).vertices, (Puntos{cuatro[0], cuatro[1], cuatro[2]}));
    EXPECT_EQ(geometria(raiz, 4).vertices, (Puntos{cuatro[1], cuatro[2], cuatro[3]}));
    EXPECT_EQ(geometria(raiz, 4).elementos[0].indices, (Indices{0, 1, 2}));
}

TEST(CargaOBJ, FacesAreFannedFromTheFirstCornerWithUnrolledVertices) {
    const auto raiz =
        cargarOBJTexto(std::string(verticesCuatro) + "v 13 14 15\n"
                                                     "vn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvn 0 0 -1\n"
                                                     "g Losa\nf 1//1 2//2 3//3 4//4\n"
                                                     "g Pentagono\nf 1 2 3 4 5\n");
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Losa", "Pentagono"}));
    const Geometry& losa = geometria(raiz, 0);
    EXPECT_EQ(losa.vertices,
              (Puntos{cuatro[0], cuatro[1], cuatro[2], cuatro[0], cuatro[2], cuatro[3]}));
    EXPECT_EQ(losa.elementos[0].indices, secuencia(6));
    EXPECT_TRUE(losa.normales.empty());
    const Geometry& pentagono = geometria(raiz, 1);
    const glm::vec3 quinto{13, 14, 15};
    EXPECT_EQ(pentagono.vertices, (Puntos{cuatro[0], cuatro[1], cuatro[2], cuatro[0], cuatro[2],
                                          cuatro[3], cuatro[0], cuatro[3], quinto}));
    EXPECT_EQ(pentagono.elementos[0].indices, secuencia(9));
}

TEST(CargaOBJ, NormalsComeOnlyFromFullCornersAndOnlyWhenEveryCornerHasOne) {
    const auto raiz =
        cargarOBJTexto(std::string(verticesCuatro) + "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                                                     "vn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvn 0 0 -1\n"
                                                     "g Completa\nf 1/1/1 2/2/2 3/3/3 4/4/4\n"
                                                     "g SinTextura\nf 1//1 2//2 3//3\n"
                                                     "g Mezcla\nf 1/1/1 2/2/2 3/3/3\nf 1 2 4\n"
                                                     "g NormalFuera\nf 1/1/1 2/2/2 3/3/9\n"
                                                     "g SoloTextura\nf 2/2 3/3 4/4\n");
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Completa", "SinTextura", "Mezcla",
                                                        "NormalFuera", "SoloTextura"}));
    const Geometry& completa = geometria(raiz, 0);
    EXPECT_EQ(completa.vertices,
              (Puntos{cuatro[0], cuatro[1], cuatro[2], cuatro[0], cuatro[2], cuatro[3]}));
    EXPECT_EQ(completa.normales,
              (Puntos{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, -1}}));
    for (std::size_t i = 1; i < 5; ++i)
        EXPECT_TRUE(geometria(raiz, i).normales.empty()) << *raiz->childNodes()[i]->name();
    EXPECT_EQ(geometria(raiz, 2).vertices.size(), 6u);
    EXPECT_EQ(geometria(raiz, 4).vertices, (Puntos{cuatro[1], cuatro[2], cuatro[3]}));
}

TEST(CargaOBJ, CornersOutOfRangeGiveTheOriginAndInvalidOnesTheFirstVertex) {
    const auto raiz =
        cargarOBJTexto(std::string(verticesCuatro) +
                       "g Fuera\nf 1 2 5\nf 0 -1 3\nf 99999999999 2 3\n"
                       "g Invalida\nf 2 3 x\nf 99999999999999999999 3 4\nf 2 abc/1/1 4\n");
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Fuera", "Invalida"}));
    const glm::vec3 o{0, 0, 0};
    EXPECT_EQ(geometria(raiz, 0).vertices,
              (Puntos{cuatro[0], cuatro[1], o, o, o, cuatro[2], o, cuatro[1], cuatro[2]}));
    EXPECT_EQ(geometria(raiz, 1).vertices,
              (Puntos{cuatro[1], cuatro[2], cuatro[0], cuatro[0], cuatro[2], cuatro[3], cuatro[1],
                      cuatro[0], cuatro[3]}));
}

TEST(CargaOBJ, ShortFacesAreDroppedAndFilesWithoutFacesGiveNothing) {
    const auto raiz = cargarOBJTexto(std::string(verticesCuatro) + "g Muro\nf 1 2\nf 2 3 4\n"
                                                                   "g Linea\nf 1 2\nf 3\nf\n");
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Muro"}));
    EXPECT_EQ(geometria(raiz, 0).vertices, (Puntos{cuatro[1], cuatro[2], cuatro[3]}));

    EXPECT_EQ(cargarOBJTexto(verticesCuatro), nullptr);
    EXPECT_EQ(cargarOBJTexto(std::string(verticesCuatro) + "g Muro\nf 1 2\n"), nullptr);
    EXPECT_EQ(cargarOBJTexto("# solo comentarios\n\n   \n"), nullptr);
    EXPECT_EQ(cargarOBJTexto(""), nullptr);
}

TEST(CargaOBJ, VertexLinesNeedThreeNumbersAndOtherLinesAreIgnored) {
    const auto raiz = cargarOBJTexto("mtllib modelo.mtl\n"
                                     "v 1 2\n"
                                     "v 1 x 3\n"
                                     "\t  v  1e-3   -2.5E2  +3 \n"
                                     "vt 0.5 0.5\n"
                                     "v 4 5 6 0.5\n"
                                     "   # v 9 9 9\n"
                                     "\n\n"
                                     "V 8 8 8\n"
                                     "v 7 8 9\n"
                                     "vn 0 0 1\nvn 0 1\nvn 0 0 z\nvn 1 0 0\nvn 0 1 0\n"
                                     "usemtl Hormigon\ns off\nl 1 2\n"
                                     "g Muro\n"
                                     "f 1/1/1 2/1/2 3/1/3\n");
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Muro"}));
    const Geometry& g = geometria(raiz, 0);
    EXPECT_EQ(g.vertices, (Puntos{{0.001f, -250, 3}, {4, 5, 6}, {7, 8, 9}}));
    EXPECT_EQ(g.normales, (Puntos{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}));
}

TEST(CargaOBJ, IndicesAreResolvedAfterTheWholeFileIsRead) {
    const auto raiz = cargarOBJTexto("g Muro\nf 1 2 3\n" + std::string(verticesCuatro));
    ASSERT_NE(raiz, nullptr);
    EXPECT_EQ(geometria(raiz, 0).vertices, (Puntos{cuatro[0], cuatro[1], cuatro[2]}));
}

TEST(CargaOBJ, ReadsAFileAndGivesNothingForUnreadableOnes) {
    pruebas::DirectorioTemporal dir;
    const std::string texto = std::string(verticesCuatro) + "g Muro b\xC3\xA1sico\nf 1 2 3 4\n";
    const auto raiz = cargarOBJ(dir.escribir("modelo.obj", texto));
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(nombres(*raiz), (std::vector<std::string>{"Muro b\xC3\xA1sico"}));
    EXPECT_EQ(geometria(raiz, 0).vertices.size(), 6u);

    std::string latin1 = texto;
    latin1.replace(latin1.find("\xC3\xA1"), 2, "\xE1");
    EXPECT_EQ(cargarOBJ(dir.escribir("latin1.obj", latin1)), nullptr);
    EXPECT_EQ(cargarOBJ(dir.escribir("vacio.obj", "")), nullptr);
    EXPECT_EQ(cargarOBJ(dir.inexistente()), nullptr);
    EXPECT_EQ(cargarOBJ(dir.ruta()), nullptr);
}

TEST(CargaOBJ, EachElementTakesTheIdentityOfItsOwnGroupLine) {
    const std::string obj = "v 0 0 0\nv 1 0 0\nv 0 1 0\n"
                            "g Muro\nf 1 2 3\n"   // line 0
                            "g Muro\nf 1 2 3\n"   // line 1: same name, its own identity
                            "g Hueco\n"           // line 2: no faces, renamed by the next
                            "g\nf 1 2 3\n"        // line 3: an element without a Name
                            "g Losa\nf 1 2 3\n"   // line 4: its line names another element
                            "g Viga\nf 1 2 3\n";  // line 5: no line at all
    const std::string ids = "0aaaaaaaaaaaaaaaaaaaaa\tIfcWall\tMuro\n"
                            "1bbbbbbbbbbbbbbbbbbbbb\tIfcWallStandardCase\tMuro\r\n"
                            "2ccccccccccccccccccccc\tIfcOpeningElement\tHueco\n"
                            "3ddddddddddddddddddddd\tIfcBeam\t\n"
                            "4eeeeeeeeeeeeeeeeeeeee\tIfcSlab\tTecho\n";
    const auto raiz = cargarOBJTexto(obj, ids);
    ASSERT_TRUE(raiz);
    struct Esperado {
        const char* nombre;
        const char* globalId;
        const char* clase;
    };
    const std::vector<Esperado> esperados = {{"Muro", "0aaaaaaaaaaaaaaaaaaaaa", "IfcWall"},
                                             {"Muro", "1bbbbbbbbbbbbbbbbbbbbb", "IfcWallStandardCase"},
                                             {"default", "3ddddddddddddddddddddd", "IfcBeam"},
                                             {"Losa", "", ""},
                                             {"Viga", "", ""}};
    ASSERT_EQ(raiz->childNodes().size(), esperados.size());
    for (std::size_t i = 0; i < esperados.size(); ++i) {
        const Node& n = *raiz->childNodes()[i];
        SCOPED_TRACE(i);
        EXPECT_EQ(n.name(), std::optional<std::string>(esperados[i].nombre));
        EXPECT_EQ(n.globalId(), esperados[i].globalId);
        EXPECT_EQ(n.claseIFC(), esperados[i].clase);
    }
    // Without identities, or with a line missing its fields, nodes have none.
    for (const std::string& otras : {std::string(), std::string("0aaa IfcWall Muro\n")}) {
        const auto sinIds = cargarOBJTexto(obj, otras);
        for (const auto& n : sinIds->childNodes()) EXPECT_EQ(n->globalId(), "");
    }

    // From a file: the identities beside the OBJ, named by rutaIdentidadesOBJ.
    pruebas::DirectorioTemporal dir;
    const std::string ruta = dir.escribir("modelo.obj", obj);
    EXPECT_EQ(rutaIdentidadesOBJ(ruta), dir.ruta() + "/modelo.ids");
    dir.escribir("modelo.ids", ids);
    EXPECT_EQ(cargarOBJ(ruta)->childNodes()[1]->globalId(), "1bbbbbbbbbbbbbbbbbbbbb");
}

TEST(NormalizarMateriales, GivesEveryGeometryBelowTheRootAUsableMaterial) {
    auto raiz = Node::crear();
    auto sinMaterial = Node::crear("SinMaterial");
    sinMaterial->setGeometry(std::make_shared<Geometry>());
    auto sinDifuso = Node::crear("SinDifuso");
    auto gSinDifuso = std::make_shared<Geometry>();
    auto vacio = std::make_shared<Material>();
    vacio->setLightingModel(ModeloIluminacion::Constante);
    auto rojo = std::make_shared<Material>();
    rojo->setDiffuse(Color{1, 0, 0, 0.5f});
    rojo->setLightingModel(ModeloIluminacion::Lambert);
    rojo->setDoubleSided(true);
    gSinDifuso->materiales = {vacio, rojo};
    sinDifuso->setGeometry(gSinDifuso);
    auto grupo = Node::crear("Grupo"); // no geometry
    auto nieto = Node::crear("Nieto");
    auto gNieto = std::make_shared<Geometry>();
    auto imagen = std::make_shared<Material>();
    imagen->setDiffuseImagen(std::make_shared<ImagenRGBA>(ImagenRGBA{1, 1, {9, 9, 9, 255}}));
    imagen->setLightingModel(ModeloIluminacion::Lambert);
    gNieto->materiales = {imagen};
    nieto->setGeometry(gNieto);
    auto nietoSinMaterial = Node::crear("NietoSinMaterial");
    nietoSinMaterial->setGeometry(std::make_shared<Geometry>());
    grupo->addChildNode(nieto);
    grupo->addChildNode(nietoSinMaterial);
    raiz->addChildNode(sinMaterial);
    raiz->addChildNode(sinDifuso);
    raiz->addChildNode(grupo);

    normalizarMateriales(*raiz);

    for (const auto& n : {sinMaterial, nietoSinMaterial}) {
        ASSERT_EQ(n->geometry()->materiales.size(), 1u) << *n->name();
        const Material& m = *n->geometry()->materiales[0];
        ASSERT_TRUE(m.diffuse().has_value());
        EXPECT_EQ(*m.diffuse(), blanco075);
        EXPECT_EQ(m.lightingModel(), ModeloIluminacion::Phong);
        EXPECT_FALSE(m.isDoubleSided());
    }
    ASSERT_EQ(gSinDifuso->materiales.size(), 2u);
    ASSERT_TRUE(vacio->diffuse().has_value());
    EXPECT_EQ(*vacio->diffuse(), blanco075);
    EXPECT_EQ(vacio->lightingModel(), ModeloIluminacion::Phong);
    ASSERT_TRUE(rojo->diffuse().has_value());
    EXPECT_EQ(*rojo->diffuse(), (Color{1, 0, 0, 0.5f}));
    EXPECT_EQ(rojo->lightingModel(), ModeloIluminacion::Phong);
    EXPECT_TRUE(rojo->isDoubleSided());
    ASSERT_EQ(gNieto->materiales.size(), 1u);
    EXPECT_NE(imagen->diffuseImagen(), nullptr);
    EXPECT_FALSE(imagen->diffuse().has_value());
    EXPECT_EQ(imagen->lightingModel(), ModeloIluminacion::Phong);
    EXPECT_EQ(grupo->geometry(), nullptr);
}
