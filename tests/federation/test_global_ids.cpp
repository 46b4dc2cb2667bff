// The GlobalId of every product of an IFC file, keyed by the element's Name.
#include "federation/GlobalIdsIFC.h"
#include "utilidades_prueba.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace teskal;
using teskal::pruebas::archivoIFC;

namespace {

GlobalIdsPorNombre leer(std::string_view datos) {
    return leerGlobalIdsTexto(archivoIFC(datos));
}

constexpr std::string_view modelo = R"IFC(
#12=IFCWALLSTANDARDCASE('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro exterior',$,'Basic Wall:Muro 200',#20,#30,'318540');
#13=IFCSLAB('1kTvXnbbzCWw8lcMd1dR4o',#5,'Losa',$,$,#21,#31,'318600',.FLOOR.);
#14=IFCOPENINGELEMENT('0Xq4lm9Uz5e8OjY7cW1v$p',#5,'Hueco',$,$,#22,#32,$);
#15=IFCBUILDINGSTOREY('3Y0JqrGQf0ZuLJ5Y_8K9lJ',#5,'Nivel 1',$,$,#23,$,$,.ELEMENT.,0.);
#16=IFCWALLTYPE('1Ab2Cd3Ef4Gh5Ij6Kl7Mn8',#5,'Muro 200',$,$,$,$,$,$,.STANDARD.);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,'Relacion',$,(#12),#50);
#17=IFCRAILING('2Ws7T1dKb6Ju$9Qw8gqJdR',#5,'Baranda',$,$,#24,#34,$,.HANDRAIL.);
)IFC";

} // namespace

TEST(GlobalIdsIFC, MapsTheNameOfEveryProductToItsGlobalId) {
    // The opening and the storey are products; the wall type is not.
    EXPECT_EQ(leer(modelo), (GlobalIdsPorNombre{{"Muro exterior", "2O2Fr$t4X7Zf8NOew3FLOH"},
                                                {"Losa", "1kTvXnbbzCWw8lcMd1dR4o"},
                                                {"Hueco", "0Xq4lm9Uz5e8OjY7cW1v$p"},
                                                {"Nivel 1", "3Y0JqrGQf0ZuLJ5Y_8K9lJ"},
                                                {"Baranda", "2Ws7T1dKb6Ju$9Qw8gqJdR"}}));
}

TEST(GlobalIdsIFC, TheLastStatementInFileOrderWinsForARepeatedName) {
    const auto r = leer(R"IFC(
#30=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Muro',$,$,$,$,$);
#20=IFCCOLUMN('0bbbbbbbbbbbbbbbbbbbbb',#5,'Muro',$,$,$,$,$);
#10=IFCWALL('0ccccccccccccccccccccc',#5,'Muro',$,$,$,$,$);
#11=IFCWALL('0ddddddddddddddddddddd',#5,'Otro',$,$,$,$,$);
)IFC");
    EXPECT_EQ(r, (GlobalIdsPorNombre{{"Muro", "0ccccccccccccccccccccc"},
                                     {"Otro", "0ddddddddddddddddddddd"}}));
}

TEST(GlobalIdsIFC, TheInstanceNumberIsNotReadNorDeduplicated) {
    // Without a table, a bad number still counts and a repeated number
    // replaces nothing.
    const auto r = leer(R"IFC(
#12x=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Letra',$,$,$,$,$);
#=IFCBEAM('0bbbbbbbbbbbbbbbbbbbbb',#5,'SinNumero',$,$,$,$,$);
#40=IFCWALL('0ccccccccccccccccccccc',#5,'Primero',$,$,$,$,$);
#40=IFCWALL('0ddddddddddddddddddddd',#5,'Segundo',$,$,$,$,$);
#41=IFCWALL('0eeeeeeeeeeeeeeeeeeeee',#5,'Tapado',$,$,$,$,$);
#41=IFCOPENINGELEMENT('0fffffffffffffffffffff',#5,'Hueco',$,$,$,$,$);
#42 IFCWALL('0ggggggggggggggggggggg',#5,'SinIgual',$,$,$,$,$);
#43=IFCWALL;
)IFC");
    EXPECT_EQ(r, (GlobalIdsPorNombre{{"Letra", "0aaaaaaaaaaaaaaaaaaaaa"},
                                     {"SinNumero", "0bbbbbbbbbbbbbbbbbbbbb"},
                                     {"Primero", "0ccccccccccccccccccccc"},
                                     {"Segundo", "0ddddddddddddddddddddd"},
                                     {"Tapado", "0eeeeeeeeeeeeeeeeeeeee"},
                                     {"Hueco", "0fffffffffffffffffffff"}}));
}

TEST(GlobalIdsIFC, AnEmptyGlobalIdOrNameSkipsTheStatement) {
    const auto r = leer(R"IFC(
#12=IFCWALL($,#5,'SinId',$,$,$,$,$);
#13=IFCWALL('',#5,'IdVacio',$,$,$,$,$);
#14=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,$,$,$,$,$,$);
#15=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'',$,$,$,$,$);
#17=IFCWALL('0ddddddddddddddddddddd',#5,'Muro');
#16=IFCWALL('0ccccccccccccccccccccc',#5);
)IFC");
    EXPECT_EQ(r, (GlobalIdsPorNombre{{"Muro", "0ddddddddddddddddddddd"}}));
}

TEST(GlobalIdsIFC, StatementsAreAssembledTrimmedAndDecoded) {
    const std::string texto =
        "ISO-10303-21;\nHEADER;\nFILE_NAME('#9=IFCWALL(''0hhhhhhhhhhhhhhhhhhhhh'',$,''Cab'')');\n"
        "ENDSEC;\nDATA;\n"
        "  #12 = ifcWall ( '2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro \\X2\\00D1\\X0\\',$,$,$,$,$);\n"
        "\t#13=IFCSLAB('1kTvXnbbzCWw8lc\n  Md1dR4o',#5,\n'Losa \n  alta',$,$,$,$,$,.FLOOR.);\n"
        "#14=IFCDOOR('0Xq4lm9Uz5e8OjY7cW1v$p',#5,'O''Brien',$,$,$,$,$,2.1,0.9);"
        "#15=IFCREINFORCINGBAR('1Xq4lm9Uz5e8OjY7cW1v$p',#5,'Barra \\S\\X8 12 \xE9',$,$,$,$,$);\n"
        "ENDSEC;\nEND-ISO-10303-21;\n";
    const GlobalIdsPorNombre esperado = {{"Muro \xC3\x91", "2O2Fr$t4X7Zf8NOew3FLOH"},
                                         {"Losaalta", "1kTvXnbbzCWw8lcMd1dR4o"},
                                         {"O'Brien", "0Xq4lm9Uz5e8OjY7cW1v$p"},
                                         {"Barra \xC3\x98" "8 12 \xC3\xA9", "1Xq4lm9Uz5e8OjY7cW1v$p"}};
    EXPECT_EQ(leerGlobalIdsTexto(texto), esperado);

    // The same file with CRLF line ends, with CR alone, or with its
    // statements on one line reads the same.
    std::string cr = texto, unaLinea = texto;
    std::replace(cr.begin(), cr.end(), '\n', '\r');
    for (std::size_t i = unaLinea.find(";\n"); i != std::string::npos; i = unaLinea.find(";\n", i))
        unaLinea.erase(i + 1, 1);
    EXPECT_EQ(leerGlobalIdsTexto(pruebas::aCRLF(texto)), esperado);
    EXPECT_EQ(leerGlobalIdsTexto(cr), esperado);
    EXPECT_EQ(leerGlobalIdsTexto(unaLinea), esperado);
}

TEST(GlobalIdsIFC, ReadsAFileWhateverItsBytesAndGivesNothingForUnreadableOnes) {
    pruebas::DirectorioTemporal dir;
    const auto r = leerGlobalIds(dir.escribir("base.ifc", archivoIFC(modelo)));
    EXPECT_EQ(r.size(), 5u);
    EXPECT_EQ(r.at("Losa"), "1kTvXnbbzCWw8lcMd1dR4o");

    // A Latin-1 byte in one name decodes that name and leaves the rest read.
    std::string latin1 = archivoIFC(modelo);
    latin1.insert(latin1.find("'Hueco'") + 6, "\xF1");
    const auto conLatin1 = leerGlobalIds(dir.escribir("latin1.ifc", latin1));
    EXPECT_EQ(conLatin1.size(), 5u);
    EXPECT_EQ(conLatin1.at("Hueco\xC3\xB1"), "0Xq4lm9Uz5e8OjY7cW1v$p");

    EXPECT_TRUE(leerGlobalIds(dir.escribir("vacio.ifc", "")).empty());
    EXPECT_TRUE(leerGlobalIds(dir.inexistente()).empty());
    EXPECT_TRUE(leerGlobalIds(dir.ruta()).empty());
}
