// The Wavefront OBJ reader that turns the converter's output into one model
// root with a node per element, the same model read as two pieces at once
// (cut at every byte), decimal coordinates rounded exactly as the number
// parser does, and the material pass over a loaded model.
#include "federation/CargaOBJ.h"
#include "federation/TextoUTF8.h"
#include "utilidades_prueba.h"

#include <bit>
#include <gtest/gtest.h>
#include <map>
#include <numeric>
#include <random>

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

constexpr Color blanco075{0.75f, 0.75f, 0.75f, 1.0f};

const glm::vec3 o{0, 0, 0}, p1{1, 2, 3}, p2{4, 5, 6}, p3{7, 8, 9}, p4{10, 11, 12};
constexpr std::string_view verticesCuatro = "v 1 2 3\nv 4 5 6\nv 7 8 9\nv 10 11 12\n";

// Empty when both models are the same, bit for bit; else the first difference.
std::string diferencia(const std::shared_ptr<Node>& a, const std::shared_ptr<Node>& b) {
    if (!a || !b)
        return (!a && !b) ? "" : std::string("only one model: ") + (a ? "one piece" : "two pieces");
    if (a->childNodes().size() != b->childNodes().size())
        return "node count " + std::to_string(a->childNodes().size()) + " vs " +
               std::to_string(b->childNodes().size());
    auto mismosPuntos = [](const std::vector<glm::vec3>& x, const std::vector<glm::vec3>& y) {
        if (x.size() != y.size()) return false;
        for (std::size_t i = 0; i < x.size(); ++i)
            for (int k = 0; k < 3; ++k)
                if (std::bit_cast<std::uint32_t>(x[i][k]) != std::bit_cast<std::uint32_t>(y[i][k]))
                    return false;
        return true;
    };
    for (std::size_t i = 0; i < a->childNodes().size(); ++i) {
        const Node& x = *a->childNodes()[i];
        const Node& y = *b->childNodes()[i];
        const std::string donde =
            "node " + std::to_string(i) + " (" + x.name().value_or("?") + "): ";
        if (x.name() != y.name()) return donde + "name " + y.name().value_or("?");
        if (x.globalId() != y.globalId() || x.claseIFC() != y.claseIFC())
            return donde + "identity " + y.globalId() + " " + y.claseIFC();
        const Geometry& gx = *x.geometry();
        const Geometry& gy = *y.geometry();
        if (gx.name != gy.name) return donde + "geometry name";
        if (!mismosPuntos(gx.vertices, gy.vertices)) return donde + "vertices";
        if (!mismosPuntos(gx.normales, gy.normales)) return donde + "normals";
        if (gx.elementos.size() != gy.elementos.size() ||
            gx.elementos[0].indices != gy.elementos[0].indices)
            return donde + "indices";
        if (gx.materiales.size() != gy.materiales.size()) return donde + "materials";
    }
    return "";
}

// Reads the text in two pieces at every cut and compares with one pass.
void compararEnCadaCorte(const std::string& texto, const std::string& identidades = {}) {
    const auto entero = cargarOBJTexto(texto, identidades);
    for (std::size_t corte = 0; corte <= texto.size(); ++corte) {
        const std::string d = diferencia(entero, cargarOBJTextoEnDosPartes(texto, corte, identidades));
        ASSERT_EQ(d, "") << "cut at byte " << corte << " of:\n" << texto;
    }
}

// Groups of varied sizes, empty groups, normals in some, vertices before and
// after their faces.
std::string textoGenerado() {
    std::mt19937 azar(20240514);
    auto n = [&](int hasta) { return static_cast<int>(azar() % static_cast<unsigned>(hasta)); };
    std::string texto;
    int vertices = 0;
    for (int grupo = 0; grupo < 60; ++grupo) {
        texto += n(6) == 0 ? "o Objeto " : "g Elemento ";
        texto += std::to_string(n(20)) + "\n";
        for (int k = n(5); k > 0; --k) {
            texto += "v " + std::to_string(n(1000) - 500) + "." + std::to_string(n(1000)) + " " +
                     std::to_string(n(100)) + "e-" + std::to_string(n(5)) + " " +
                     std::to_string(n(7)) + "\n";
            ++vertices;
        }
        if (n(4) == 0) texto += "vn 0 0 1\nvn 0 1 0\n";
        const bool conNormales = n(3) == 0;
        for (int k = n(4); k > 0; --k) {
            texto += "f";
            for (int c = 3 + n(3); c > 0; --c) {
                texto += " " + std::to_string(1 + n(vertices + 3));
                if (conNormales) texto += "//" + std::to_string(1 + n(4));
            }
            texto += "\n";
        }
    }
    return texto;
}

} // namespace

// Each text gives its nodes (none: no model), the unrolled vertices and
// normals of some of them, and the same model when read in two pieces.
TEST(CargaOBJ, CadaTextoDaSusElementos) {
    const std::string v4(verticesCuatro);
    struct Caso {
        const char* nombre;
        std::string texto;
        std::vector<std::string> nodos;
        std::map<std::size_t, Puntos> vertices{}, normales{}; // by node; normals absent: none
    };
    const std::vector<Caso> casos = {
        {"faces without a group",
         "# IfcConvert\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n",
         {"default"},
         {{0, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}}}},
        {"group names are the rest of the line, trimmed",
         v4 + "g\nf 1 2 3\ng Muro b\xC3\xA1sico: 200mm\nf 1 2 3\n  g   Muro  doble \t \nf 2 3 4\n"
              "o Objeto 1\nf 1 3 4\n",
         {"default", "Muro b\xC3\xA1sico: 200mm", "Muro  doble", "Objeto 1"},
         {{2, {p2, p3, p4}}, {3, {p1, p3, p4}}}},
        {"a group without faces is renamed; same names stay apart",
         v4 + "f 1 2 3\ng A\ng B\nf 2 3 4\nf 1 2 4\ng Muro\nf 1 2 3\ng Puerta\nf 1 3 4\n"
              "g Muro\nf 2 3 4\ng Final\n",
         {"default", "B", "Muro", "Puerta", "Muro"},
         {{1, {p2, p3, p4, p1, p2, p4}}, {2, {p1, p2, p3}}, {4, {p2, p3, p4}}}},
        {"faces fanned from the first corner",
         v4 + "v 13 14 15\nvn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvn 0 0 -1\ng Losa\nf 1//1 2//2 3//3 4//4\n"
              "g Pentagono\nf 1 2 3 4 5\n",
         {"Losa", "Pentagono"},
         {{0, {p1, p2, p3, p1, p3, p4}}, {1, {p1, p2, p3, p1, p3, p4, p1, p4, {13, 14, 15}}}}},
        {"normals only from full corners, and only when every corner has one",
         v4 + "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\nvn 0 1 0\nvn 1 0 0\nvn 0 0 -1\n"
              "g Completa\nf 1/1/1 2/2/2 3/3/3 4/4/4\ng SinTextura\nf 1//1 2//2 3//3\n"
              "g Mezcla\nf 1/1/1 2/2/2 3/3/3\nf 1 2 4\ng NormalFuera\nf 1/1/1 2/2/2 3/3/9\n"
              "g SoloTextura\nf 2/2 3/3 4/4\n",
         {"Completa", "SinTextura", "Mezcla", "NormalFuera", "SoloTextura"},
         {{0, {p1, p2, p3, p1, p3, p4}}, {2, {p1, p2, p3, p1, p2, p4}}, {4, {p2, p3, p4}}},
         {{0, {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, -1}}}}},
        {"corners out of range give the origin, invalid ones the first vertex",
         v4 + "g Fuera\nf 1 2 5\nf 0 -1 3\nf 99999999999 2 3\n"
              "g Invalida\nf 2 3 x\nf 99999999999999999999 3 4\nf 2 abc/1/1 4\n",
         {"Fuera", "Invalida"},
         {{0, {p1, p2, o, o, o, p3, o, p2, p3}}, {1, {p2, p3, p1, p1, p3, p4, p2, p1, p4}}}},
        {"short faces are dropped",
         v4 + "g Muro\nf 1 2\nf 2 3 4\ng Linea\nf 1 2\nf 3\nf\n",
         {"Muro"},
         {{0, {p2, p3, p4}}}},
        {"vertex lines need three numbers; other lines are ignored",
         "mtllib modelo.mtl\nv 1 2\nv 1 x 3\n\t  v  1e-3   -2.5E2  +3 \nvt 0.5 0.5\nv 4 5 6 0.5\n"
         "   # v 9 9 9\n\n\nV 8 8 8\nv 7 8 9\nvn 0 0 1\nvn 0 1\nvn 0 0 z\nvn 1 0 0\nvn 0 1 0\n"
         "usemtl Hormigon\ns off\nl 1 2\ng Muro\nf 1/1/1 2/1/2 3/1/3\n",
         {"Muro"},
         {{0, {{0.001f, -250, 3}, {4, 5, 6}, {7, 8, 9}}}},
         {{0, {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}}},
        {"indices resolved after the whole file", "g Muro\nf 1 2 3\n" + v4, {"Muro"}, {{0, {p1, p2, p3}}}},
        {"no faces", v4, {}},
        {"only short faces", v4 + "g Muro\nf 1 2\n", {}},
        {"only comments", "# solo comentarios\n\n   \n", {}},
        {"empty", "", {}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const auto raiz = cargarOBJTexto(c.texto);
        compararEnCadaCorte(c.texto);
        if (c.nodos.empty()) {
            EXPECT_EQ(raiz, nullptr);
            continue;
        }
        ASSERT_NE(raiz, nullptr);
        EXPECT_FALSE(raiz->name().has_value());
        EXPECT_EQ(raiz->geometry(), nullptr);
        ASSERT_EQ(nombres(*raiz), c.nodos);
        for (std::size_t i = 0; i < c.nodos.size(); ++i) {
            SCOPED_TRACE(i);
            const Geometry& g = *raiz->childNodes()[i]->geometry();
            EXPECT_EQ(g.name, c.nodos[i]);
            if (c.vertices.contains(i)) {
                EXPECT_EQ(g.vertices, c.vertices.at(i));
            }
            EXPECT_EQ(g.normales, c.normales.contains(i) ? c.normales.at(i) : Puntos{});
            // Every corner its own vertex, in order.
            ASSERT_EQ(g.elementos.size(), 1u);
            EXPECT_EQ(g.elementos[0].primitiva, Primitiva::Triangulos);
            Indices secuencia(g.vertices.size());
            std::iota(secuencia.begin(), secuencia.end(), 0);
            EXPECT_EQ(g.elementos[0].indices, secuencia);
            // The reader's own material: light grey, Phong, both sides.
            ASSERT_EQ(g.materiales.size(), 1u);
            EXPECT_EQ(g.materiales[0]->diffuse(), std::optional<Color>(blanco075));
            EXPECT_EQ(g.materiales[0]->lightingModel(), ModeloIluminacion::Phong);
            EXPECT_TRUE(g.materiales[0]->isDoubleSided());
        }
    }
    // Read in two pieces: faces after the cut before its first "g" belong to
    // the last group before it, a "g" right after the cut closes it; empty
    // groups renamed on either side; indices and normals of either piece;
    // line ends, blanks and odd lines; a generated file of sixty groups.
    for (const std::string& texto : std::initializer_list<std::string>{
             textoGenerado(),
             "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\ng Muro\nf 1 2 3\nf 1 3 4\nf 2 3 4\ng Losa\nf 4 3 2\n"
          "f 1 2 4\ng Puerta\nf 1 2 3\n",
          "f 1 2 3\nf 1 2 3\ng A\nf 3 2 1\nv 0 0 0\nv 1 0 0\nv 1 1 0\n",
          "v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\ng A\ng B\n\ng C\nf 1 2 3\no Objeto\ng\nf 2 3 1\n"
          "g Muro\nf 1 2 3\ng Muro\nf 3 1 2\ng Final\n",
          "g A\ng B\ng C\ng D\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\ng E\n",
          "g Alto\nf 1//1 5//2 6//3\nf 7 8 9\nv 0 0 0\nv 1 0 0\nv 1 1 0\nvn 0 0 1\n"
          "g Mezcla\nf 1/1/1 2/1/1 3/1/1\nf 2 3 4\nvn 0 1 0\nvn 1 0 0\nv 0 1 0\nv 2 2 2\nv 3 3 3\n"
          "g Bajo\nf 4//2 5//3 6//1 1//2\nf 1//9 2//1 3//1\ng Normales\nf 1//3 2//2 3//1\n",
          "v 0 0 0\r\nv 1 0 0\r\n\tv 1 1 0 \r\n# g Comentario\r\ng \xE3\x80\x80Muro\xE3\x80\x80\r\n"
          "f 1 2 3 \r\n\r\ng\tNo\r\nf\t1 2 3\r\nf 3 2 1\r\ns off\r\nusemtl m\r\no  Objeto  \r\nf 1 2 3",
          "v 0 0 0\nv 1 0 0\nv 1 1 0\ng A\nf 1 2\nf\ng B\nf 1 2 3\nf 3\n"})
        compararEnCadaCorte(texto);
}

TEST(CargaOBJ, EachElementTakesTheIdentityOfItsOwnGroupLineAlsoFromAFile) {
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
        const char *nombre, *globalId, *clase;
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

    // Each node keeps the identity of its own group line when read in two pieces.
    compararEnCadaCorte(obj, ids);
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\ng Vacio\ng Muro\nf 1 2 3\nf 3 2 1\n"
                        "g Losa\nf 1 2 3\ng Muro\nf 2 3 1\n",
                        "A\tIfcWall\tVacio\nB\tIfcWall\tMuro\nC\tIfcSlab\tLosa\nD\tIfcWall\tMuro\n");

    // From a file: the identities beside the OBJ, named by rutaIdentidadesOBJ;
    // a file not in UTF-8, empty, missing or a folder gives no model.
    pruebas::DirectorioTemporal dir;
    const std::string ruta = dir.escribir("modelo.obj", obj);
    EXPECT_EQ(rutaIdentidadesOBJ(ruta), dir.ruta() + "/modelo.ids");
    dir.escribir("modelo.ids", ids);
    EXPECT_EQ(cargarOBJ(ruta)->childNodes()[1]->globalId(), "1bbbbbbbbbbbbbbbbbbbbb");
    const std::string texto = std::string(verticesCuatro) + "g Muro b\xC3\xA1sico\nf 1 2 3 4\n";
    const auto acentos = cargarOBJ(dir.escribir("acentos.obj", texto));
    ASSERT_NE(acentos, nullptr);
    ASSERT_EQ(nombres(*acentos), (std::vector<std::string>{"Muro b\xC3\xA1sico"}));
    std::string latin1 = texto;
    latin1.replace(latin1.find("\xC3\xA1"), 2, "\xE1");
    for (const std::string& r : {dir.escribir("latin1.obj", latin1), dir.escribir("vacio.obj", ""),
                                 dir.inexistente(), dir.ruta()})
        EXPECT_EQ(cargarOBJ(r), nullptr) << r;
}

TEST(CargaOBJ, DecimalCoordinatesRoundExactlyAsTheNumberParser) {
    // Each value is read as a vertex coordinate and must equal leerFloat's
    // reading, bit for bit: digits in runs of eight and fewer, exponents,
    // signs, and decimals whose nearest double lies exactly halfway between
    // two floats although they don't (rounding through the double alone
    // would go the wrong way).
    const std::vector<std::string> valores = {
        "0", "-0", "+0.000", "5.", ".5", "-.25", "007", "12345678", "123456789",
        "0.0572855672281371", "-0.00711166413506405", "10.8585698235718", "2.587", "1e-3",
        "-2.5E2", "+3", "1.5e+7", "9007199254740991", "9007199254740993",
        "123456789012345678901234", "0.000000000000000000000000000001", "16777217", "16777219",
        "0.500000029802322387695312", "81.90983200073242", "0.05285356007516384",
        "7202656604476942e-22", "2646916178079111e5", "3.4028235e38", "1e39", "1e-46",
        "1.17549435e-38", "0x1p3", "inf", "-nan"};
    std::string texto;
    for (const std::string& v : valores) texto += "v " + v + " " + v + " 1\n";
    texto += "f";
    for (std::size_t i = 1; i <= valores.size(); ++i) texto += " " + std::to_string(i);
    texto += "\n";

    const auto raiz = cargarOBJTexto(texto);
    ASSERT_NE(raiz, nullptr);
    ASSERT_EQ(raiz->childNodes().size(), 1u);
    const std::vector<glm::vec3>& leidos = raiz->childNodes()[0]->geometry()->vertices;
    // The fan from the first corner: corner i + 1 of triangle i is vertex i + 1.
    ASSERT_EQ(leidos.size(), 3 * (valores.size() - 2));
    for (std::size_t i = 0; i < valores.size(); ++i) {
        const glm::vec3& p = i == 0                    ? leidos[0]
                             : i + 1 == valores.size() ? leidos.back()
                                                       : leidos[3 * (i - 1) + 1];
        const auto esperado = leerFloat(valores[i]);
        ASSERT_TRUE(esperado.has_value()) << valores[i];
        EXPECT_EQ(std::bit_cast<std::uint32_t>(p.x), std::bit_cast<std::uint32_t>(*esperado))
            << valores[i] << " read as " << p.x << ", expected " << *esperado;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(p.y), std::bit_cast<std::uint32_t>(*esperado))
            << valores[i];
    }
}

TEST(NormalizarMateriales, GivesEveryGeometryBelowTheRootAUsableMaterial) {
    auto conGeometria = [](const char* nombre, std::vector<std::shared_ptr<Material>> materiales) {
        auto n = Node::crear(nombre);
        auto g = std::make_shared<Geometry>();
        g->materiales = std::move(materiales);
        n->setGeometry(g);
        return n;
    };
    auto vacio = std::make_shared<Material>();
    vacio->setLightingModel(ModeloIluminacion::Constante);
    auto rojo = std::make_shared<Material>();
    rojo->setDiffuse(Color{1, 0, 0, 0.5f});
    rojo->setLightingModel(ModeloIluminacion::Lambert);
    rojo->setDoubleSided(true);
    auto imagen = std::make_shared<Material>();
    imagen->setDiffuseImagen(std::make_shared<ImagenRGBA>(ImagenRGBA{1, 1, {9, 9, 9, 255}}));
    imagen->setLightingModel(ModeloIluminacion::Lambert);
    auto raiz = Node::crear();
    auto sinMaterial = conGeometria("SinMaterial", {});
    auto sinDifuso = conGeometria("SinDifuso", {vacio, rojo});
    auto nieto = conGeometria("Nieto", {imagen});
    auto nietoSinMaterial = conGeometria("NietoSinMaterial", {});
    auto grupo = Node::crear("Grupo"); // no geometry
    grupo->addChildNode(nieto);
    grupo->addChildNode(nietoSinMaterial);
    raiz->addChildNode(sinMaterial);
    raiz->addChildNode(sinDifuso);
    raiz->addChildNode(grupo);

    normalizarMateriales(*raiz);

    // Materials are kept or added, never dropped; every one turns Phong, a
    // missing colour is light grey unless an image paints it.
    for (const auto& [n, cuantos] : {std::pair{sinMaterial, 1u}, std::pair{sinDifuso, 2u}, std::pair{nieto, 1u},
                                     std::pair{nietoSinMaterial, 1u}})
        ASSERT_EQ(n->geometry()->materiales.size(), cuantos) << *n->name();
    struct Esperado {
        const Material* m;
        std::optional<Color> difuso;
        bool dosCaras;
    };
    const Esperado esperados[] = {{sinMaterial->geometry()->materiales[0].get(), blanco075, false},
                                  {nietoSinMaterial->geometry()->materiales[0].get(), blanco075, false},
                                  {vacio.get(), blanco075, false},
                                  {rojo.get(), Color{1, 0, 0, 0.5f}, true},
                                  {imagen.get(), std::nullopt, false}};
    for (const Esperado& e : esperados) {
        SCOPED_TRACE(&e - esperados);
        EXPECT_EQ(e.m->diffuse(), e.difuso);
        EXPECT_EQ(e.m->lightingModel(), ModeloIluminacion::Phong);
        EXPECT_EQ(e.m->isDoubleSided(), e.dosCaras);
    }
    EXPECT_NE(imagen->diffuseImagen(), nullptr);
    EXPECT_EQ(grupo->geometry(), nullptr);
}
