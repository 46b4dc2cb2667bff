// The OBJ reader's two ways through a text: a large file is read as two
// pieces at once and must give the very model that one pass gives, and
// plain decimal coordinates, read without the general number parser, must
// round exactly as it does.
#include "federation/CargaOBJ.h"
#include "federation/TextoUTF8.h"
#include "utilidades_prueba.h"

#include <bit>
#include <gtest/gtest.h>
#include <random>

using namespace teskal;

namespace {

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

} // namespace

TEST(CargaOBJEnDosPartes, GroupsThatRunAcrossTheCutKeepTheirFaces) {
    // Faces at the start of the second piece before its first "g" belong to
    // the last group of the first; a "g" right after the cut closes it.
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                        "g Muro\nf 1 2 3\nf 1 3 4\nf 2 3 4\n"
                        "g Losa\nf 4 3 2\nf 1 2 4\n"
                        "g Puerta\nf 1 2 3\n");
    // The whole file in one group, and faces before any group.
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\nf 3 2 1\nf 1 3 2\nf 2 1 3\n");
    compararEnCadaCorte("f 1 2 3\nf 1 2 3\ng A\nf 3 2 1\n"
                        "v 0 0 0\nv 1 0 0\nv 1 1 0\n");
}

TEST(CargaOBJEnDosPartes, GroupsWithoutFacesAreRenamedAcrossTheCut) {
    // A group left without faces at the cut takes the name of the next "g",
    // on either side; same-named groups stay separate.
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 1 1 0\n"
                        "f 1 2 3\ng A\ng B\n\ng C\nf 1 2 3\n"
                        "o Objeto\ng\nf 2 3 1\ng Muro\nf 1 2 3\ng Muro\nf 3 1 2\n"
                        "g Final\n");
    compararEnCadaCorte("g A\ng B\ng C\ng D\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\ng E\n");
    // Short faces are dropped on either side.
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 1 1 0\ng A\nf 1 2\nf\ng B\nf 1 2 3\nf 3\n");
}

TEST(CargaOBJEnDosPartes, IdentitiesFollowTheirGroupLinesAcrossTheCut) {
    // Faces before any group, an empty group renamed, a group running across
    // the cut: each node keeps the identity of its own group line.
    compararEnCadaCorte("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\ng Vacio\ng Muro\nf 1 2 3\nf 3 2 1\n"
                        "g Losa\nf 1 2 3\ng Muro\nf 2 3 1\n",
                        "A\tIfcWall\tVacio\nB\tIfcWall\tMuro\nC\tIfcSlab\tLosa\nD\tIfcWall\tMuro\n");
}

TEST(CargaOBJEnDosPartes, IndicesAndNormalsResolveAgainstTheWholeFile) {
    // Corners name vertices and normals of either piece, some out of range;
    // normals stay only where every corner of the group has a usable one.
    compararEnCadaCorte("g Alto\nf 1//1 5//2 6//3\nf 7 8 9\n"
                        "v 0 0 0\nv 1 0 0\nv 1 1 0\nvn 0 0 1\n"
                        "g Mezcla\nf 1/1/1 2/1/1 3/1/1\nf 2 3 4\n"
                        "vn 0 1 0\nvn 1 0 0\nv 0 1 0\nv 2 2 2\nv 3 3 3\n"
                        "g Bajo\nf 4//2 5//3 6//1 1//2\nf 1//9 2//1 3//1\n"
                        "g Normales\nf 1//3 2//2 3//1\n");
}

TEST(CargaOBJEnDosPartes, LineEndsBlanksAndOddLinesCutTheSame) {
    compararEnCadaCorte("v 0 0 0\r\nv 1 0 0\r\n\tv 1 1 0 \r\n# g Comentario\r\n"
                        "g \xE3\x80\x80Muro\xE3\x80\x80\r\nf 1 2 3 \r\n\r\n"
                        "g\tNo\r\nf\t1 2 3\r\nf 3 2 1\r\ns off\r\nusemtl m\r\n"
                        "o  Objeto  \r\nf 1 2 3");
}

TEST(CargaOBJEnDosPartes, GivesTheSameModelOnAGeneratedFile) {
    // Groups of varied sizes, empty groups, normals in some, vertices before
    // and after their faces; every line start is tried as the cut.
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
    const auto entero = cargarOBJTexto(texto);
    ASSERT_NE(entero, nullptr);
    EXPECT_GT(entero->childNodes().size(), 20u);
    std::size_t cortes = 0;
    ASSERT_EQ(texto.back(), '\n');
    for (std::size_t inicio = 0; inicio < texto.size(); inicio = texto.find('\n', inicio) + 1) {
        // The second piece begins at the line after the one that starts at `inicio`.
        ASSERT_EQ(diferencia(entero, cargarOBJTextoEnDosPartes(texto, inicio)), "")
            << "cut at byte " << inicio;
        ++cortes;
    }
    EXPECT_GT(cortes, 100u);
}

TEST(CargaOBJ, DecimalCoordinatesRoundExactlyAsTheNumberParser) {
    // Each value is read as a vertex coordinate and must equal leerFloat's
    // reading, bit for bit: digits in runs of eight and fewer, exponents,
    // signs, and decimals whose nearest double lies exactly halfway between
    // two floats although they don't (rounding through the double alone
    // would go the wrong way).
    const std::vector<std::string> valores = {
        "0",
        "-0",
        "+0.000",
        "5.",
        ".5",
        "-.25",
        "007",
        "12345678",
        "123456789",
        "0.0572855672281371",
        "-0.00711166413506405",
        "10.8585698235718",
        "2.587",
        "1e-3",
        "-2.5E2",
        "+3",
        "1.5e+7",
        "9007199254740991",
        "9007199254740993",
        "123456789012345678901234",
        "0.000000000000000000000000000001",
        "16777217",
        "16777219",
        "0.500000029802322387695312",
        "81.90983200073242",
        "0.05285356007516384",
        "7202656604476942e-22",
        "2646916178079111e5",
        "3.4028235e38",
        "1e39",
        "1e-46",
        "1.17549435e-38",
        "0x1p3",
        "inf",
        "-nan",
    };
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
