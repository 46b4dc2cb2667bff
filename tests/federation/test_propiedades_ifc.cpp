// The property index of an IFC file: the entity table, the product and
// relation passes, the file reader and the merge rule (how statements are
// found across lines, headers and line ends is test_texto_step's).
#include "federation/PropiedadesIFC.h"
#include "federation/TiposIFC.h"
#include "utilidades_prueba.h"

#include <algorithm>
#include <cctype>
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

// Each DATA section, in the frame of a whole file, gives exactly its
// elements by name, with their type and the values related to them.
TEST(PropiedadesIFC, CadaSeccionDaSusElementos) {
    const std::string qto = "Qto_DoorBaseQuantities";
    struct Caso {
        const char* nombre;
        std::string_view datos;
        PropiedadesModelo esperado;
    };
    const std::vector<Caso> casos = {
        {"type and single values by element name",
         muroYLosa,
         {{"Muro exterior", propiedadesMuro}, {"Losa", {{"__tipoIFC", "IFCSLAB"}}}}},
        // A continuation line that begins with "#" is still part of its statement,
        // whose arguments outlive the scan buffer.
        {"statements broken over lines rejoin with nothing between",
         R"IFC(
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
)IFC",
         {{"Muroexterior",
           {{"__tipoIFC", "IFCWALL"},
            {clave("Pset_WallCommon", "FireRating"), "EI60"},
            {clave("Pset_WallCommon", "Acoustic"), "45"},
            {clave("Pset_Cortado", "Acoustic"), "45"},
            {clave("Pset_Cortado", "Cortada"), "x"}}}}},
        {"numbers and types trimmed, bad ones skip the statement",
         R"IFC(
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
)IFC",
         {{"Columna", {{"__tipoIFC", "IFCCOLUMN"}, {clave("Pset_Estructura", "LoadBearing"), ".T."}}},
          {"Viga", {{"__tipoIFC", "IFCBEAM"}, {clave("Pset_Estructura", "LoadBearing"), ".T."}}}}},
        // The quantity set that replaced Pset_Perdido lists no quantity.
        {"a later statement of the same number replaces the earlier",
         R"IFC(
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
)IFC",
         {{"Hueco", {{"__tipoIFC", "IFCOPENINGELEMENT"}}},
          {"Nivel 1", {{"__tipoIFC", "IFCBUILDINGSTOREY"}}},
          {"Segundo", {{"__tipoIFC", "IFCWALL"}, {clave("Pset_Comun", "IsExternal"), ".T."}}},
          {"Losa lejana", {{"__tipoIFC", "IFCSLAB"}, {clave("Pset_Comun", "IsExternal"), ".T."}}}}},
        {"dangling references skip only their item",
         R"IFC(
#12=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Muro',$,$,#20,#30,$);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#404,#40,#405));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#998,#12,#999),#50);
#61=IFCRELDEFINESBYPROPERTIES('1vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#777);
#62=IFCRELDEFINESBYPROPERTIES('2vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),$);
)IFC",
         {{"Muro", {{"__tipoIFC", "IFCWALL"}, {clave("Pset_WallCommon", "IsExternal"), ".T."}}}}},
        {"a null or empty name leaves the element out",
         R"IFC(
#12=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,$,$,$,$,$,$);
#13=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'',$,$,$,$,$);
#14=IFCWALL('0ccccccccccccccccccccc',#5,*,$,$,$,$,$);
#15=IFCWALL('0ddddddddddddddddddddd',#5);
#16=IFCWALL('0eeeeeeeeeeeeeeeeeeeee',#5,'Muro \X2\00D1\X0\',$,$,$,$,$);
#40=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12,#13,#14,#15),#50);
)IFC",
         {{"Muro \xC3\x91", {{"__tipoIFC", "IFCWALL"}}}}},
        // Of a property set only its single values, of a quantity set only its
        // quantities, each number as the file writes it.
        {"single values and quantities as written",
         R"IFC(
#12=IFCDOOR('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Puerta',$,$,#20,#30,$,2.1,0.9);
#40=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI 30'),$);
#41=IFCPROPERTYENUMERATEDVALUE('Operacion',$,(IFCLABEL('Batiente')),$);
#42=IFCPROPERTYBOUNDEDVALUE('Rango',$,IFCREAL(1.),IFCREAL(0.),$);
#43=IFCQUANTITYLENGTH('Width',$,$,0.90,$);
#44=IFCQUANTITYAREA('Area',$,$,1.8900E0);
#45=IFCQUANTITYVOLUME('Volume',$,$,0.075);
#46=IFCQUANTITYCOUNT('Hojas',$,$,2.);
#47=IFCQUANTITYWEIGHT('GrossWeight',$,#9,42.5,$);
#48=IFCQUANTITYTIME('Montaje',$,$,3600.);
#49=IFCQUANTITYNUMBER('Numero',$,$,7.,$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_DoorCommon',$,(#40,#41,#42,#43));
#51=IFCELEMENTQUANTITY('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Qto_DoorBaseQuantities',$,$,(#40,#43,#44,#45,#46,#47,#48,#49));
#52=IFCPROPERTYSET('2Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Corto',$);
#53=IFCPROPERTYSET('3Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Otro',$,(#40));
#54=IFCELEMENTQUANTITY('4Fc3y1Xb95$eO9iBf8ZQvW',#5,'Qto_Corto',$,(#43));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
#61=IFCRELDEFINESBYPROPERTIES('4vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#51);
#62=IFCRELDEFINESBYPROPERTIES('5vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#52);
#63=IFCRELDEFINESBYPROPERTIES('6vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12));
#64=IFCRELDEFINESBYTYPE('7vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#53);
#65=IFCRELASSOCIATES('8vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#53);
#66=IFCRELDEFINESBYPROPERTIES('9vB2YO$MX4xv5uCqZZG05x',#5,'Falsa',$,(#40),#53);
#67=IFCRELDEFINESBYPROPERTIES('0wB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#66);
#68=IFCRELDEFINESBYPROPERTIES('1wB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#54);
)IFC",
         {{"Puerta",
           {{"__tipoIFC", "IFCDOOR"},
            {clave("Pset_DoorCommon", "FireRating"), "EI 30"},
            {clave(qto, "Width"), "0.90"},
            {clave(qto, "Area"), "1.8900E0"},
            {clave(qto, "Volume"), "0.075"},
            {clave(qto, "Hojas"), "2."},
            {clave(qto, "GrossWeight"), "42.5"},
            {clave(qto, "Montaje"), "3600."},
            {clave(qto, "Numero"), "7."}}}}},
        {"same-named elements share one entry; the later relation wins",
         R"IFC(
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
)IFC",
         {{"Muro",
           {{"__tipoIFC", "IFCWALL"},
            {clave("Pset_WallCommon", "Reference"), "Muro 100"},
            {clave("Pset_WallCommon", "IsExternal"), ".T."},
            {clave("Pset_Acabados", "Acabado"), "Yeso"}}}}},
        {"an empty value stays, an empty property name is dropped",
         R"IFC(
#12=IFCCOLUMN('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Pilar P1',$,$,#20,#30,$);
#40=IFCPROPERTYSINGLEVALUE('Altura',$,$,$);
#41=IFCPROPERTYSINGLEVALUE('',$,IFCLABEL('sin nombre'),$);
#42=IFCPROPERTYSINGLEVALUE($,$,IFCLABEL('nulo'),$);
#43=IFCPROPERTYSINGLEVALUE('Corta',$);
#44=IFCPROPERTYSINGLEVALUE('Material',$,IFCLABEL('Hormig\X\F3n'),$);
#45=IFCPROPERTYSINGLEVALUE('Seccion',$,IFCLABEL('30x30, armada'),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset',$,(#40,#41,#42,#43,#44,#45));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
)IFC",
         {{"Pilar P1",
           {{"__tipoIFC", "IFCCOLUMN"},
            {clave("Pset", "Altura"), ""},
            {clave("Pset", "Material"), "Hormig\xC3\xB3n"},
            {clave("Pset", "Seccion"), "30x30, armada"}}}}},
        {"a relation may come before what it relates",
         R"IFC(
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#912),#950);
#950=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_BeamCommon',$,(#940));
#940=IFCPROPERTYSINGLEVALUE('Span',$,IFCPOSITIVELENGTHMEASURE(6.25),$);
#912=IFCBEAM('2O2Fr$t4X7Zf8NOew3FLOH',#5,'Viga V-3',$,$,#20,#30,$);
)IFC",
         {{"Viga V-3", {{"__tipoIFC", "IFCBEAM"}, {clave("Pset_BeamCommon", "Span"), "6.25"}}}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        EXPECT_EQ(leer(c.datos), c.esperado);
    }
}




TEST(PropiedadesIFC, EveryProductTypeOfTheThreeSchemasGetsAnEntry) {
    // Types the reader must know, and types it must not take for products.
    for (const char* t : {"IFCREINFORCINGBAR", "IFCDISCRETEACCESSORY", "IFCELECTRICDISTRIBUTIONBOARD",
                          "IFCPAVEMENT", "IFCKERB", "IFCFLOWCONTROLLER", "IFCWALLSTANDARDCASE", "IFCGRID",
                          "IFCOPENINGELEMENT", "IFCBUILDINGSTOREY", "IFCANNOTATION"})
        EXPECT_NE(std::find(nombresProductoIFC.begin(), nombresProductoIFC.end(), t),
                  nombresProductoIFC.end())
            << t;
    const char* otros[] = {"IFCWALLTYPE", "IFCDOORSTYLE",  "IFCPROJECT", "IFCPROPERTYSET",
                           "IFCGRIDAXIS", "IFCRELDEFINESBYTYPE", "IFCWAL", "XIFCWALL",
                           "IFCWALLX",    "IFCWALL2",     "IFC"};
    // Every product, every other one written in lower case.
    std::string datos;
    int n = 100;
    for (const std::string_view t : nombresProductoIFC) {
        std::string escrito(t);
        if (n % 2)
            for (char& c : escrito) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        datos += "#" + std::to_string(n) + "=" + escrito + "('0abcdefghijklmnopqrs" + std::to_string(n) +
                 "',#5,'P_" + std::string(t) + "',$,$,$,$,$);\n";
        ++n;
    }
    for (const char* t : otros)
        datos += "#" + std::to_string(n++) + "=" + t + "('1abcdefghijklmnopqrstu',#5,'O_" + t +
                 "',$,$,$,$,$);\n";
    const auto r = leer(datos);
    EXPECT_EQ(r.size(), nombresProductoIFC.size());
    for (const std::string_view t : nombresProductoIFC) {
        const auto it = r.find("P_" + std::string(t));
        ASSERT_NE(it, r.end()) << t;
        EXPECT_EQ(it->second, (PropiedadesElemento{{"__tipoIFC", std::string(t)}}));
    }
}

TEST(PropiedadesIFC, ATypeObjectsSetsApplyToItsElementsAndTheirOwnValueWins) {
    // Muro A has its own FireRating, related before the type in the file;
    // Muro B's own one comes after it. The type carries a property set and a
    // quantity set in HasPropertySets, and (IFC4) one more related to it by
    // IFCRELDEFINESBYPROPERTIES. Pilar's type lists nothing.
    const std::string datos = R"IFC(
#61=IFCRELDEFINESBYPROPERTIES('0wB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#52);
#12=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Muro A',$,$,$,$,$);
#13=IFCWALL('0bbbbbbbbbbbbbbbbbbbbb',#5,'Muro B',$,$,$,$,$);
#14=IFCCOLUMN('0ccccccccccccccccccccc',#5,'Pilar',$,$,$,$,$);
#40=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI 60'),$);
#41=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);
#42=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI 120'),$);
#43=IFCQUANTITYLENGTH('Width',$,$,0.25);
#44=IFCPROPERTYSINGLEVALUE('Fabricante',$,IFCLABEL('Acme'),$);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#40,#41));
#51=IFCELEMENTQUANTITY('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Qto_WallBaseQuantities',$,$,(#43));
#52=IFCPROPERTYSET('2Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_WallCommon',$,(#42));
#53=IFCPROPERTYSET('3Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Fabricante',$,(#44));
#70=IFCWALLTYPE('4Fc3y1Xb95$eO9iBf8ZQvW',#5,'Muro 250',$,$,(#50,#51),$,$,$,.STANDARD.);
#71=IFCCOLUMNTYPE('5Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pilar 30',$,$,$,$,$,$,.COLUMN.);
#80=IFCRELDEFINESBYTYPE('6Fc3y1Xb95$eO9iBf8ZQvW',#5,$,$,(#12,#13),#70);
#81=IFCRELDEFINESBYTYPE('7Fc3y1Xb95$eO9iBf8ZQvW',#5,$,$,(#14),#71);
#82=IFCRELDEFINESBYPROPERTIES('8Fc3y1Xb95$eO9iBf8ZQvW',#5,$,$,(#70,#999),#53);
#83=IFCRELDEFINESBYTYPE('9Fc3y1Xb95$eO9iBf8ZQvW',#5,$,$,(#14),#53);
#62=IFCRELDEFINESBYPROPERTIES('1wB2YO$MX4xv5uCqZZG05x',#5,$,$,(#13),#52);
)IFC";
    const PropiedadesElemento muro = {{"__tipoIFC", "IFCWALL"},
                                        {clave("Pset_WallCommon", "FireRating"), "EI 120"},
                                        {clave("Pset_WallCommon", "IsExternal"), ".T."},
                                        {clave("Qto_WallBaseQuantities", "Width"), "0.25"},
                                        {clave("Pset_Fabricante", "Fabricante"), "Acme"}};
    const IndiceIFC indice = leerIndiceIFCTexto(archivoIFC(datos));
    const auto& r = indice.porNombre;
    ASSERT_EQ(r.size(), 3u); // the type objects have no entry
    EXPECT_EQ(r.at("Muro A"), muro);
    EXPECT_EQ(r.at("Muro B"), muro);
    EXPECT_EQ(r.at("Pilar"), (PropiedadesElemento{{"__tipoIFC", "IFCCOLUMN"}}));
    EXPECT_EQ(indice.porGlobalId.at("0aaaaaaaaaaaaaaaaaaaaa"), muro);

    // Without their own FireRating both walls take the type's.
    std::string sinPropios = datos;
    sinPropios.replace(sinPropios.find("(#42)"), 5, "(#44)");
    const auto r2 = leer(sinPropios);
    EXPECT_EQ(r2.at("Muro A").at(clave("Pset_WallCommon", "FireRating")), "EI 60");
    EXPECT_EQ(r2.at("Muro B").at(clave("Pset_WallCommon", "FireRating")), "EI 60");
}

TEST(PropiedadesIFC, ThousandsOfRelationsApplyInFileOrder) {
    // More relations than one run of the relation pass reads, so that runs
    // are read on several threads: each sets the wall's "Orden" and a
    // property of its own. The last "Orden" stands and nothing is lost.
    std::string datos = "#1=IFCWALL('0aaaaaaaaaaaaaaaaaaaaa',#5,'Muro',$,$,$,$,$);\n";
    const int n = 5000;
    for (int k = 1; k <= n; ++k) {
        const auto id = [&](int d) { return "#" + std::to_string(10 * k + d); };
        datos += id(0) + "=IFCPROPERTYSINGLEVALUE('Orden',$,IFCINTEGER(" + std::to_string(k) + "),$);\n" +
                 id(1) + "=IFCPROPERTYSINGLEVALUE('Propia " + std::to_string(k) + "',$,IFCLABEL('x'),$);\n" +
                 id(2) + "=IFCPROPERTYSET('1abcdefghijklmnopqrstu',#5,'P',$,(" + id(0) + "," + id(1) + "));\n" +
                 id(3) + "=IFCRELDEFINESBYPROPERTIES('2abcdefghijklmnopqrstu',#5,$,$,(#1)," + id(2) + ");\n";
    }
    const IndiceIFC r = leerIndiceIFCTexto(archivoIFC(datos));
    const PropiedadesElemento& muro = r.porNombre.at("Muro");
    EXPECT_EQ(muro.at(clave("P", "Orden")), std::to_string(n));
    EXPECT_EQ(muro.size(), std::size_t(n + 2));
    EXPECT_EQ(r.porGlobalId.at("0aaaaaaaaaaaaaaaaaaaaa"), muro);
}

TEST(PropiedadesIFC, ReinforcingBarsAndDiscreteAccessoriesHaveTheirProperties) {
    const IndiceIFC r = leerIndiceIFCTexto(archivoIFC(R"IFC(
#12=IFCREINFORCINGBAR('0aaaaaaaaaaaaaaaaaaaaa',#5,'Barra \S\X8 12',$,$,$,$,$,'B500S',0.012,1.13E-4,6.,.MAIN.,.RIBBED.);
#13=IFCDISCRETEACCESSORY('0bbbbbbbbbbbbbbbbbbbbb',#5,'Anclaje',$,$,$,$,$,.ANCHORPLATE.);
#40=IFCPROPERTYSINGLEVALUE('BarDiameter',$,IFCPOSITIVELENGTHMEASURE(0.012),$);
#41=IFCPROPERTYSINGLEVALUE('Material',$,IFCLABEL('Acero S275 \S\X8 20'),$);
#42=IFCQUANTITYWEIGHT('Peso',$,$,5.33);
#50=IFCPROPERTYSET('0Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_ReinforcingBarCommon',$,(#40));
#51=IFCPROPERTYSET('1Fc3y1Xb95$eO9iBf8ZQvW',#5,'Pset_Accesorio',$,(#41));
#52=IFCELEMENTQUANTITY('2Fc3y1Xb95$eO9iBf8ZQvW',#5,'Qto_Barra',$,$,(#42));
#60=IFCRELDEFINESBYPROPERTIES('3vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#50);
#61=IFCRELDEFINESBYPROPERTIES('4vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#13),#51);
#62=IFCRELDEFINESBYPROPERTIES('5vB2YO$MX4xv5uCqZZG05x',#5,$,$,(#12),#52);
)IFC"));
    const PropiedadesElemento barra = {{"__tipoIFC", "IFCREINFORCINGBAR"},
                                       {clave("Pset_ReinforcingBarCommon", "BarDiameter"), "0.012"},
                                       {clave("Qto_Barra", "Peso"), "5.33"}};
    const PropiedadesElemento accesorio = {{"__tipoIFC", "IFCDISCRETEACCESSORY"},
                                           {clave("Pset_Accesorio", "Material"), "Acero S275 \xC3\x98" "8 20"}};
    EXPECT_EQ(r.porNombre, (PropiedadesModelo{{"Barra \xC3\x98" "8 12", barra}, {"Anclaje", accesorio}}));
    EXPECT_EQ(r.porGlobalId, (PropiedadesModelo{{"0aaaaaaaaaaaaaaaaaaaaa", barra},
                                                {"0bbbbbbbbbbbbbbbbbbbbb", accesorio}}));
}

TEST(PropiedadesIFC, SameNamedElementsKeepEachTheirOwnEntryByGlobalId) {
    // A hundred elements named "Muro", each with its own value.
    std::string datos;
    for (int i = 0; i < 100; ++i) {
        const std::string n = std::to_string(i);
        datos += "#" + std::to_string(1000 + i) + "=IFCWALL('gid" + n + "',#5,'Muro',$,$,$,$,$);\n";
        datos += "#" + std::to_string(2000 + i) + "=IFCPROPERTYSINGLEVALUE('Marca',$,IFCLABEL('M-" + n +
                 "'),$);\n";
        datos += "#" + std::to_string(3000 + i) + "=IFCPROPERTYSET('ps" + n + "',#5,'Pset',$,(#" +
                 std::to_string(2000 + i) + "));\n";
        datos += "#" + std::to_string(4000 + i) + "=IFCRELDEFINESBYPROPERTIES('r" + n + "',#5,$,$,(#" +
                 std::to_string(1000 + i) + "),#" + std::to_string(3000 + i) + ");\n";
    }
    const IndiceIFC r = leerIndiceIFCTexto(archivoIFC(datos));
    ASSERT_EQ(r.porNombre.size(), 1u);
    EXPECT_EQ(r.porNombre.at("Muro").at(clave("Pset", "Marca")), "M-99"); // the later relation
    ASSERT_EQ(r.porGlobalId.size(), 100u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(r.porGlobalId.at("gid" + std::to_string(i)),
                  (PropiedadesElemento{{"__tipoIFC", "IFCWALL"},
                                       {clave("Pset", "Marca"), "M-" + std::to_string(i)}}));
}



TEST(PropiedadesIFC, ReadsAFileAndGivesNothingForUnreadableOnes) {
    pruebas::DirectorioTemporal dir;
    const auto r = leerPropiedadesIFC(dir.escribir("modelo.ifc", archivoIFC(muroYLosa)));
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r.at("Muro exterior"), propiedadesMuro);

    // A Latin-1 byte in one name decodes that name and leaves the rest read.
    std::string latin1 = archivoIFC(muroYLosa);
    latin1.insert(latin1.find("'Losa'") + 5, "\xD1");
    const IndiceIFC conLatin1 = leerIndiceIFC(dir.escribir("latin1.ifc", latin1));
    ASSERT_EQ(conLatin1.porNombre.size(), 2u);
    EXPECT_EQ(conLatin1.porNombre.at("Muro exterior"), propiedadesMuro);
    EXPECT_EQ(conLatin1.porNombre.at("Losa\xC3\x91").at("__tipoIFC"), "IFCSLAB");
    EXPECT_EQ(conLatin1.porGlobalId.at("2O2Fr$t4X7Zf8NOew3FLOH"), propiedadesMuro);

    EXPECT_TRUE(leerPropiedadesIFC(dir.escribir("vacio.ifc", "")).empty());
    EXPECT_TRUE(leerPropiedadesIFC(dir.inexistente()).empty());
    EXPECT_TRUE(leerPropiedadesIFC(dir.ruta()).empty());
    EXPECT_TRUE(leerIndiceIFC(dir.inexistente()).porGlobalId.empty());
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
