// The property index of an IFC file: statement assembly, the entity table,
// the product and relation passes, the file reader and the merge rule.
#include "federation/PropiedadesIFC.h"
#include "utilidades_prueba.h"

#include <gtest/gtest.h>

using namespace teskal;
using teskal::pruebas::archivoIFC;
using teskal::pruebas::clave;

namespace {

PropiedadesModelo leer(std::string_view datos) {
    return leerPropiedadesIFCTexto(archivoIFC(datos));
}

// A wall and a slab; Pset_WallCommon is related to the wall only.
constexpr std::string_view muroYLosa = R"IFC(
#12=IFCWALLSTANDARDCASE('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro exterior',$,'Basic Wall:Muro 200',#20,#30,'318540');
#13=IFCSLAB('1kTvXnbbzCWw8lcMd1dR4o',#5,'Losa',$,$,#21,#31,'318600',.FLOOR.);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#41=IFCPROPERTYSINGLEVALUE('Reference',$,IFCIDENTIFIER('Muro 200'),$);
#42=IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(0.200),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40,#41,#42));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
)IFC";

const PropiedadesElemento propiedadesMuro = {
    {"__tipoIFC", "IFCWALLSTANDARDCASE"},
    {clave("Pset_WallCommon", "IsExternal"), ".T."},
    {clave("Pset_WallCommon", "Reference"), "Muro 200"},
    {clave("Pset_WallCommon", "Width"), "0.200"},
};

} // namespace

TEST(PropiedadesIFC, ReadsTypeAndSingleValuesByElementName) {
    const auto r = leer(muroYLosa);
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r.at("Muro exterior"), propiedadesMuro);
    EXPECT_EQ(r.at("Losa"), (PropiedadesElemento{{"__tipoIFC", "IFCSLAB"}}));
}

TEST(PropiedadesIFC, StatementsBrokenOverLinesAreRejoinedWithNothingBetween) {
    // The blanks at the break are trimmed away with the line.
    const auto r = leer(R"IFC(
#12=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro 
	  exterior',$,$,#20,#30,$);
#40=IFCPROPERTYSINGLEVALUE('Fire
Rating',$,IFCLABEL('EI 
 60'),$);
#41=IFCPROPERTYSINGLEVALUE('Acoustic',$,IFCLABEL('45'),$);
#42=IFCPROPERTYSINGLEVALUE('Cortada',$,IFCLABEL('x'),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,
   'Pset_WallCommon',$,(#40
   ,#41));
#51=IFCPROPERTYSET('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Cortado',$,(#41,
   #42));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,
(#12)
,#50);
#61=IFCRELDEFINESBYPROPERTIES('4vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#51);
)IFC");
    // A continuation line that begins with "#" starts a statement of its own,
    // which cuts Pset_Cortado's list after #41.
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Muroexterior"),
              (PropiedadesElemento{{"__tipoIFC", "IFCWALL"},
                                   {clave("Pset_WallCommon", "FireRating"), "EI60"},
                                   {clave("Pset_WallCommon", "Acoustic"), "45"},
                                   {clave("Pset_Cortado", "Acoustic"), "45"}}));
}

TEST(PropiedadesIFC, HeaderIsIgnoredAndTheTailOnlySpoilsTheLastArgument) {
    // Lines may be indented with tabs or Unicode blanks; the last data
    // statement carries "ENDSEC;" and "END-ISO-10303-21;" in its arguments.
    const std::string texto =
        "ISO-10303-21;\nHEADER;\nFILE_NAME('#9=IFCWALL(''h'',$,''Cabecera'')');\n"
        "ENDSEC;\nDATA;\n"
        "\t#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.F.),$);\n"
        "\xC2\xA0#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_SlabCommon',$,(#40));\n"
        "#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#13),#50);\n"
        "  #13=IFCSLAB('1kTvXnbbzCWw8lcMd1dR4o',#5,'Losa',$,$,#21,#31,$,.FLOOR.);\n"
        "ENDSEC;\nEND-ISO-10303-21;\n";
    const auto r = leerPropiedadesIFCTexto(texto);
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Losa"), (PropiedadesElemento{{"__tipoIFC", "IFCSLAB"},
                                                 {clave("Pset_SlabCommon", "IsExternal"), ".F."}}));
}

TEST(PropiedadesIFC, CrlfLineEndsReadTheSameAsLf) {
    std::string lf = archivoIFC(muroYLosa);
    // A statement broken between arguments, as exporters wrap long lines.
    lf.insert(lf.find("#40="),
              "#14=IFCCOLUMN('3kTvXnbbzCWw8lcMd1dR4o',#5,\n  'Pilar',$,$,#22,#32,$);\n");
    lf.replace(lf.find("(#12),#50"), 9, "(#12\n,#14)\n,#50");
    const auto r = leerPropiedadesIFCTexto(pruebas::aCRLF(lf));
    EXPECT_EQ(r, leerPropiedadesIFCTexto(lf));
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r.at("Muro exterior"), propiedadesMuro);
    EXPECT_EQ(r.at("Pilar").at(clave("Pset_WallCommon", "Width")), "0.200");
}

TEST(PropiedadesIFC, NumbersAndTypesAreTrimmedAndBadOnesSkipTheStatement) {
    const auto r = leer(R"IFC(
#12x=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Letra',$,$,$,$,$);
#=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'SinNumero',$,$,$,$,$);
#1.5=IFCWALL('0ccccccccccccccccccccc',#5,'Decimal',$,$,$,$,$);
#99999999999999999999=IFCWALL('0ddddddddddddddddddddd',#5,'Desborde',$,$,$,$,$);
#14 IFCWALL('0eeeeeeeeeeeeeeeeeeeee',#5,'SinIgual',$,$,$,$,$);
#15=IFCWALL;
# +7 = IfcColumn ('0fffffffffffffffffffff',#5,'Columna',$,$,$,$,$);
#-8	=	ifcbeam	('0ggggggggggggggggggggg',#5,'Viga',$,$,$,$,$);
#40=IFCPROPERTYSINGLEVALUE('LoadBearing',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Estructura',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#7,#-8,#12),#50);
)IFC");
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r.at("Columna").at(clave("Pset_Estructura", "LoadBearing")), ".T.");
    EXPECT_EQ(r.at("Columna").at("__tipoIFC"), "IFCCOLUMN");
    EXPECT_EQ(r.at("Viga").at(clave("Pset_Estructura", "LoadBearing")), ".T.");
    EXPECT_EQ(r.at("Viga").at("__tipoIFC"), "IFCBEAM");
}

TEST(PropiedadesIFC, ALaterStatementWithTheSameNumberReplacesTheEarlier) {
    const auto r = leer(R"IFC(
#12=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Primero',$,$,$,$,$);
#12=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'Segundo',$,$,$,$,$);
#14=IFCWALL('0ccccccccccccccccccccc',#5,'Reemplazado',$,$,$,$,$);
#14=IFCOPENINGELEMENT('0ddddddddddddddddddddd',#5,'Hueco',$,$,$,$,$);
#900000000000=IFCWALL('0eeeeeeeeeeeeeeeeeeeee',#5,'Lejano',$,$,$,$,$);
#900000000000=IFCBUILDINGSTOREY('0fffffffffffffffffffff',#5,'Nivel 1',$,$,$,$,$,.ELEMENT.,0.);
#900000000001=IFCSLAB('0ggggggggggggggggggggg',#5,'Losa lejana',$,$,$,$,$,.FLOOR.);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Comun',$,(#40));
#51=IFCPROPERTYSET('0hhhhhhhhhhhhhhhhhhhhh',#5,'Pset_Perdido',$,(#40));
#51=IFCELEMENTQUANTITY('0iiiiiiiiiiiiiiiiiiiii',#5,'Qto_Base',$,$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12,#900000000001),#50);
#61=IFCRELDEFINESBYPROPERTIES('1vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#51);
)IFC");
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r.at("Segundo"), (PropiedadesElemento{{"__tipoIFC", "IFCWALL"},
                                                    {clave("Pset_Comun", "IsExternal"), ".T."}}));
    EXPECT_EQ(r.at("Losa lejana"),
              (PropiedadesElemento{{"__tipoIFC", "IFCSLAB"},
                                   {clave("Pset_Comun", "IsExternal"), ".T."}}));
}

TEST(PropiedadesIFC, DanglingReferencesSkipOnlyTheirItem) {
    const auto r = leer(R"IFC(
#12=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro',$,$,#20,#30,$);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#404,#40,#405));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#998,#12,#999),#50);
#61=IFCRELDEFINESBYPROPERTIES('1vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#777);
#62=IFCRELDEFINESBYPROPERTIES('2vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),$);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Muro"), (PropiedadesElemento{{"__tipoIFC", "IFCWALL"},
                                                 {clave("Pset_WallCommon", "IsExternal"), ".T."}}));
}

TEST(PropiedadesIFC, ANullOrEmptyNameLeavesTheElementOut) {
    const auto r = leer(R"IFC(
#12=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,$,$,$,$,$,$);
#13=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'',$,$,$,$,$);
#14=IFCWALL('0ccccccccccccccccccccc',#5,*,$,$,$,$,$);
#15=IFCWALL('0ddddddddddddddddddddd',#5);
#16=IFCWALL('0eeeeeeeeeeeeeeeeeeeee',#5,'Muro \X2\00D1\X0\',$,$,$,$,$);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12,#13,#14,#15),#50);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Muro \xC3\x91"), (PropiedadesElemento{{"__tipoIFC", "IFCWALL"}}));
}

TEST(PropiedadesIFC, OnlyTheTwentySixProductTypesGetAnEntry) {
    const char* productos[] = {"IFCWALL",        "IFCWALLSTANDARDCASE",
                               "IFCSLAB",        "IFCBEAM",
                               "IFCCOLUMN",      "IFCDOOR",
                               "IFCWINDOW",      "IFCSTAIR",
                               "IFCSTAIRFLIGHT", "IFCROOF",
                               "IFCSPACE",       "IFCFURNISHINGELEMENT",
                               "IFCMEMBER",      "IFCPLATE",
                               "IFCFLOWSEGMENT", "IFCFLOWTERMINAL",
                               "IFCFLOWFITTING", "IFCPIPESEGMENT",
                               "IFCPIPEFITTING", "IFCDUCTSEGMENT",
                               "IFCDUCTFITTING", "IFCBUILDINGELEMENTPROXY",
                               "IFCCOVERING",    "IFCFOOTING",
                               "IFCPILE",        "IFCRAILING"};
    const char* otros[] = {"IFCRAMP",
                           "IFCOPENINGELEMENT",
                           "IFCWALLTYPE",
                           "IFCWALLELEMENTEDCASE",
                           "IFCSLABTYPE",
                           "IFCBUILDINGSTOREY",
                           "IFCPROPERTYSET",
                           "IFCCURTAINWALL",
                           "IFCSITE",
                           "IFCPROJECT",
                           "IFCWAL",
                           "IFCFLOWCONTROLLER",
                           "IFCBUILDINGELEMENT",
                           "XIFCWALL",
                           "IFCWALLX"};
    std::string datos;
    int n = 100;
    for (const char* t : productos)
        datos += "#" + std::to_string(n++) + "=" + t + "('0abcdefghijklmnopqrstu',#5,'P_" + t +
                 "',$,$,$,$,$);\n";
    for (const char* t : otros)
        datos += "#" + std::to_string(n++) + "=" + t + "('0abcdefghijklmnopqrstu',#5,'O_" + t +
                 "',$,$,$,$,$);\n";
    const auto r = leer(datos);
    EXPECT_EQ(r.size(), std::size(productos));
    for (const char* t : productos) {
        const auto it = r.find(std::string("P_") + t);
        ASSERT_NE(it, r.end()) << t;
        EXPECT_EQ(it->second, (PropiedadesElemento{{"__tipoIFC", t}}));
    }
}

TEST(PropiedadesIFC, APropertySetOnASlabAndAnOpeningLandsOnlyOnTheSlab) {
    const auto r = leer(R"IFC(
#13=IFCSLAB('1kTvXnbbzCWw8lcMd1dR4o',#5,'Losa',$,$,#21,#31,$,.FLOOR.);
#14=IFCOPENINGELEMENT('2kTvXnbbzCWw8lcMd1dR4o',#5,'Hueco',$,$,#22,#32,$);
#15=IFCBUILDINGSTOREY('3kTvXnbbzCWw8lcMd1dR4o',#5,'Nivel 1',$,$,#23,$,$,.ELEMENT.,0.);
#40=IFCPROPERTYSINGLEVALUE('PitchAngle',$,IFCPLANEANGLEMEASURE(0.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_SlabCommon',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#14,#13,#15),#50);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Losa"), (PropiedadesElemento{{"__tipoIFC", "IFCSLAB"},
                                                 {clave("Pset_SlabCommon", "PitchAngle"), "0."}}));
}

TEST(PropiedadesIFC, SameNamedElementsShareOneEntryAndTheLaterRelationWins) {
    const auto r = leer(R"IFC(
#12=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Muro',$,$,#20,#30,$);
#13=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'Muro',$,$,#21,#31,$);
#40=IFCPROPERTYSINGLEVALUE('Reference',$,IFCIDENTIFIER('Muro 200'),$);
#41=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#42=IFCPROPERTYSINGLEVALUE('Reference',$,IFCIDENTIFIER('Muro 100'),$);
#43=IFCPROPERTYSINGLEVALUE('Acabado',$,IFCLABEL('Yeso'),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40,#41));
#51=IFCPROPERTYSET('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#42));
#52=IFCPROPERTYSET('2Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Acabados',$,(#43));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
#61=IFCRELDEFINESBYPROPERTIES('4vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#13),#51);
#62=IFCRELDEFINESBYPROPERTIES('5vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#13),#52);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Muro"),
              (PropiedadesElemento{{"__tipoIFC", "IFCWALL"},
                                   {clave("Pset_WallCommon", "Reference"), "Muro 100"},
                                   {clave("Pset_WallCommon", "IsExternal"), ".T."},
                                   {clave("Pset_Acabados", "Acabado"), "Yeso"}}));
}

TEST(PropiedadesIFC, AnEmptyValueStaysAndAnEmptyNameIsDropped) {
    const auto r = leer(R"IFC(
#12=IFCCOLUMN('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Pilar P1',$,$,#20,#30,$);
#40=IFCPROPERTYSINGLEVALUE('Altura',$,$,$);
#41=IFCPROPERTYSINGLEVALUE('',$,IFCLABEL('sin nombre'),$);
#42=IFCPROPERTYSINGLEVALUE($,$,IFCLABEL('nulo'),$);
#43=IFCPROPERTYSINGLEVALUE('Corta',$);
#44=IFCPROPERTYSINGLEVALUE('Material',$,IFCLABEL('Hormig\X\F3n'),$);
#45=IFCPROPERTYSINGLEVALUE('Seccion',$,IFCLABEL('30x30, armada'),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset',$,(#40,#41,#42,#43,#44,#45));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Pilar P1"), (PropiedadesElemento{{"__tipoIFC", "IFCCOLUMN"},
                                                     {clave("Pset", "Altura"), ""},
                                                     {clave("Pset", "Material"), "Hormig\xC3\xB3n"},
                                                     {clave("Pset", "Seccion"), "30x30, armada"}}));
}

TEST(PropiedadesIFC, OnlyPropertySetsOfSingleValuesAreRead) {
    const auto r = leer(R"IFC(
#12=IFCDOOR('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Puerta',$,$,#20,#30,$,2.1,0.9);
#40=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI 30'),$);
#41=IFCPROPERTYENUMERATEDVALUE('Operacion',$,(IFCLABEL('Batiente')),$);
#42=IFCPROPERTYBOUNDEDVALUE('Rango',$,IFCREAL(1.),IFCREAL(0.),$);
#43=IFCQUANTITYLENGTH('Width',$,$,0.9);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_DoorCommon',$,(#40,#41,#42,#43));
#51=IFCELEMENTQUANTITY('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Qto_DoorBaseQuantities',$,$,(#40,#43));
#52=IFCPROPERTYSET('2Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Corto',$);
#53=IFCPROPERTYSET('3Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Otro',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
#61=IFCRELDEFINESBYPROPERTIES('4vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#51);
#62=IFCRELDEFINESBYPROPERTIES('5vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#52);
#63=IFCRELDEFINESBYPROPERTIES('6vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12));
#64=IFCRELDEFINESBYTYPE('7vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#53);
#65=IFCRELASSOCIATES('8vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#53);
#66=IFCRELDEFINESBYPROPERTIES('9vB2YO$MX4xv5uCqZZG05x',#5,'Falsa',$,(#40),#53);
#67=IFCRELDEFINESBYPROPERTIES('0wB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#66);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Puerta"),
              (PropiedadesElemento{{"__tipoIFC", "IFCDOOR"},
                                   {clave("Pset_DoorCommon", "FireRating"), "EI 30"}}));
}

TEST(PropiedadesIFC, ARelationMayComeBeforeWhatItRelates) {
    const auto r = leer(R"IFC(
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#912),#950);
#950=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_BeamCommon',$,(#940));
#940=IFCPROPERTYSINGLEVALUE('Span',$,IFCPOSITIVELENGTHMEASURE(6.25),$);
#912=IFCBEAM('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Viga V-3',$,$,#20,#30,$);
)IFC");
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r.at("Viga V-3"), (PropiedadesElemento{{"__tipoIFC", "IFCBEAM"},
                                                     {clave("Pset_BeamCommon", "Span"), "6.25"}}));
}

TEST(PropiedadesIFC, ReadsAFileAndGivesNothingForUnreadableOnes) {
    pruebas::DirectorioTemporal dir;
    const auto r = leerPropiedadesIFC(dir.escribir("modelo.ifc", archivoIFC(muroYLosa)));
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r.at("Muro exterior"), propiedadesMuro);

    // One Latin-1 byte anywhere empties the whole result.
    std::string latin1 = archivoIFC(muroYLosa);
    latin1.insert(latin1.find("'Losa'") + 5, "\xD1");
    EXPECT_TRUE(leerPropiedadesIFC(dir.escribir("latin1.ifc", latin1)).empty());
    EXPECT_TRUE(leerPropiedadesIFCTexto(latin1).empty());

    EXPECT_TRUE(leerPropiedadesIFC(dir.escribir("vacio.ifc", "")).empty());
    EXPECT_TRUE(leerPropiedadesIFC(dir.inexistente()).empty());
    EXPECT_TRUE(leerPropiedadesIFC(dir.ruta()).empty());
}

TEST(FusionarPropiedades, ANewEntryReplacesTheOldOneWhole) {
    PropiedadesModelo destino = {
        {"Muro", {{"__tipoIFC", "IFCWALL"}, {clave("Pset_WallCommon", "IsExternal"), ".T."}}},
        {"Losa", {{"__tipoIFC", "IFCSLAB"}}},
    };
    PropiedadesModelo nuevas = {
        {"Muro", {{"__tipoIFC", "IFCWALLSTANDARDCASE"}}},
        {"Pilar", {{"__tipoIFC", "IFCCOLUMN"}}},
    };
    fusionarPropiedades(destino, std::move(nuevas));
    EXPECT_EQ(destino, (PropiedadesModelo{
                           {"Muro", {{"__tipoIFC", "IFCWALLSTANDARDCASE"}}},
                           {"Losa", {{"__tipoIFC", "IFCSLAB"}}},
                           {"Pilar", {{"__tipoIFC", "IFCCOLUMN"}}},
                       }));
}
