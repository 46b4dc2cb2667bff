// The grid axes of an IFC file: points, polylines, axes and grids, the
// project's length unit and the grid's placement, and the merge of new axes
// into the workspace's list.
#include "federation/GrillasIFC.h"
#include "utilidades_prueba.h"

#include <QString>
#include <QUuid>
#include <algorithm>
#include <gtest/gtest.h>
#include <set>

using namespace teskal;
using teskal::pruebas::archivoIFC;

namespace {

using Puntos = std::vector<glm::vec3>;

struct EjeEsperado {
    std::string tag;
    bool esU;
    Puntos puntos;
};

std::vector<EjeGrilla> leer(std::string_view datos) {
    return leerGrillasIFCTexto(archivoIFC(datos));
}

void esperarEjes(const std::vector<EjeGrilla>& ejes, const std::vector<EjeEsperado>& esperados,
                 float tolerancia = 0) {
    ASSERT_EQ(ejes.size(), esperados.size());
    for (std::size_t i = 0; i < ejes.size(); ++i) {
        SCOPED_TRACE("axis " + esperados[i].tag);
        EXPECT_EQ(ejes[i].tag, esperados[i].tag);
        EXPECT_EQ(ejes[i].esU, esperados[i].esU);
        ASSERT_EQ(ejes[i].puntos.size(), esperados[i].puntos.size());
        for (std::size_t k = 0; k < ejes[i].puntos.size(); ++k)
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(ejes[i].puntos[k][c], esperados[i].puntos[k][c],
                            tolerancia * std::max(1.0f, std::abs(esperados[i].puntos[k][c])))
                    << "point " << k << " component " << c;
    }
}

// Two U axes with 2D and 3D points and one V axis; grilla() adds the grid
// that holds them, with its placement.
constexpr std::string_view ejesGrilla = R"IFC(
#101=IFCCARTESIANPOINT((0.,-2.));
#102=IFCCARTESIANPOINT((0.,12.));
#103=IFCPOLYLINE((#101,#102));
#104=IFCGRIDAXIS('A',#103,.T.);
#105=IFCCARTESIANPOINT((5.,-2.,0.5));
#106=IFCCARTESIANPOINT((5.,12.,0.5));
#107=IFCPOLYLINE((#105,#106));
#108=IFCGRIDAXIS('B',#107,.T.);
#111=IFCCARTESIANPOINT((-2.,0.));
#112=IFCCARTESIANPOINT((7.,0.));
#113=IFCPOLYLINE((#111,#112));
#114=IFCGRIDAXIS('1',#113,.T.);
)IFC";

std::string grilla(std::string_view colocacion = "$") {
    return std::string(ejesGrilla) + "#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$," +
           std::string(colocacion) + ",#31,(#104,#108),(#114),$);\n";
}

const std::vector<EjeEsperado> ejesComoEscritos = {
    {"A", true, {{0, -2, 0}, {0, 12, 0}}},
    {"B", true, {{5, -2, 0.5f}, {5, 12, 0.5f}}},
    {"1", false, {{-2, 0, 0}, {7, 0, 0}}}};

} // namespace

// Without a project or a placement the points stand as written, in metres.
TEST(GrillasIFC, AxesAsTheFileWritesThemWithoutProjectOrPlacement) {
    std::string partida = grilla();
    partida.replace(partida.find("(#104,#108)"), 11, "(#104\n  ,#108)");
    struct Caso {
        const char* nombre;
        std::string texto;
        std::vector<EjeEsperado> esperados;
    };
    const std::vector<Caso> casos = {
        {"U then V", archivoIFC(grilla()), ejesComoEscritos},
        {"CRLF and a statement over two lines", pruebas::aCRLF(archivoIFC(partida)), ejesComoEscritos},
        {"numbers that don't parse are left out", archivoIFC(R"IFC(
#101=IFCCARTESIANPOINT((0.,-2000.,0.));
#102=IFCCARTESIANPOINT((1.2E4,-2.5E-1,3.));
#103=IFCCARTESIANPOINT((24000.,$,1500.));
#104=IFCCARTESIANPOINT((7.));
#105=IFCDIRECTION((1.,0.,0.));
#106=IFCCARTESIANPOINT(( 3. , 4. , 5. , 6. ));
#110=IFCPOLYLINE((#101,#104,#102,#105,#103,#106));
#111=IFCGRIDAXIS('C\X2\00D1\X0\',#110,.T.);
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,$,#31,$,(#111),$);
)IFC"),
         {{"C\xC3\x91", false, {{0, -2000, 0}, {12000, -0.25f, 3}, {24000, 1500, 0}, {3, 4, 5}}}}},
        {"curves other than polylines of two points give no axis", archivoIFC(R"IFC(
#101=IFCCARTESIANPOINT((0.,-2.));
#102=IFCCARTESIANPOINT((0.,12.));
#103=IFCPOLYLINE((#101,#102));
#104=IFCGRIDAXIS('A',#103,.T.);
#130=IFCCIRCLE(#131,5.);
#132=IFCTRIMMEDCURVE(#130,(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(90.)),.T.,.PARAMETER.);
#133=IFCGRIDAXIS('Curvo',#132,.T.);
#134=IFCPOLYLINE((#101,#999));
#135=IFCGRIDAXIS('Corto',#134,.T.);
#136=IFCPOLYLINE((#101,#101));
#137=IFCGRIDAXIS('Repetido',#136,.T.);
#138=IFCGRIDAXIS('SinCurva',$,.T.);
#139=IFCGRIDAXIS('SoloTag');
#140=IFCGRIDAXIS('Colgante',#888,.T.);
#141=IFCGRIDAXIS('Punto',#101,.T.);
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,$,#31,
(#133,#135,#104,#138,#139,#140,#141,#777,#103),(#137),$);
)IFC"),
         {{"A", true, {{0, -2, 0}, {0, 12, 0}}}, {"Repetido", false, {{0, -2, 0}, {0, -2, 0}}}}},
        {"forward references; a later number replaces an earlier one", archivoIFC(R"IFC(
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,$,#31,(#104),
  (#114),$);
#104=IFCGRIDAXIS('A',#103,.T.);
#103=IFCPOLYLINE(
   (#101,#102));
#101=IFCCARTESIANPOINT((0.,-2.));
#102=IFCCARTESIANPOINT((0.,12.));
#102=IFCCARTESIANPOINT((0.,15.));
#114=IFCGRIDAXIS('1',#113,.T.);
#113=IFCPOLYLINE((#111,#112));
#111=IFCCARTESIANPOINT((-2.,0.));
#112=IFCCARTESIANPOINT((7.,0.));
#112=IFCDIRECTION((1.,0.));
)IFC"),
         {{"A", true, {{0, -2, 0}, {0, 15, 0}}}}},
        {"every grid gives its axes",
         archivoIFC(grilla() +
                    "#220=IFCGRID('0Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla 2',$,$,$,#31,(#114),(#104),$);"),
         {ejesComoEscritos[0], ejesComoEscritos[1], ejesComoEscritos[2],
          {"1", true, {{-2, 0, 0}, {7, 0, 0}}}, {"A", false, {{0, -2, 0}, {0, 12, 0}}}}},
        // The grid is the last data statement: "ENDSEC;" joins its WAxes only.
        {"the last statement keeps its axes despite the tail",
         "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n" + std::string(ejesGrilla) +
             "#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,$,#31,(#104),(#104),$);\n"
             "ENDSEC;\nEND-ISO-10303-21;\n",
         {{"A", true, {{0, -2, 0}, {0, 12, 0}}}, {"A", false, {{0, -2, 0}, {0, 12, 0}}}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        esperarEjes(leerGrillasIFCTexto(c.texto), c.esperados);
    }
}

// The project's length unit, as the converter reads it, scales the axes to
// metres: the B axis (5, -2, 0.5)-(5, 12, 0.5) times the factor.
TEST(GrillasIFC, TheProjectsLengthUnitScalesToMetres) {
    const std::string proyecto = "#200=IFCPROJECT('0Pq$Kz0nH5Bx8O1f2aDtGw',#5,'P',$,$,$,$,$,#210);\n";
    const std::string metro = "#211=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n";
    const std::string pie = metro + "#212=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.3048),#211);\n"
                                    "#213=IFCCONVERSIONBASEDUNIT(#214,.LENGTHUNIT.,'FOOT',#212);\n";
    struct Caso {
        const char* nombre;
        std::string unidades;
        double factor;
    };
    const std::vector<Caso> casos = {
        {"metre", metro + "#210=IFCUNITASSIGNMENT((#211));", 1.0},
        {"millimetre after an area unit",
         "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
         "#215=IFCSIUNIT(*,.AREAUNIT.,.KILO.,.SQUARE_METRE.);\n#210=IFCUNITASSIGNMENT((#215,#211));",
         0.001},
        {"decametre", "#211=IFCSIUNIT(*,.LENGTHUNIT.,.DECA.,.METRE.);\n#210=IFCUNITASSIGNMENT((#211));", 10.0},
        {"foot", pie + "#210=IFCUNITASSIGNMENT((#213));", 0.3048},
        {"foot in millimetres",
         "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#212=IFCMEASUREWITHUNIT(IFCREAL(304.8),#211);\n"
         "#213=IFCCONVERSIONBASEDUNIT(#214,.LENGTHUNIT.,'FOOT',#212);\n#210=IFCUNITASSIGNMENT((#213));",
         0.3048},
        {"foot with an offset",
         metro + "#212=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.3048),#211);\n"
                 "#213=IFCCONVERSIONBASEDUNITWITHOFFSET(#214,.LENGTHUNIT.,'FOOT',#212,0.);\n"
                 "#210=IFCUNITASSIGNMENT((#213));",
         0.3048},
        // The converter follows one step to an SI unit: an inch made of feet
        // leaves the file in metres.
        {"inch made of feet",
         pie + "#216=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.0833333),#213);\n"
               "#217=IFCCONVERSIONBASEDUNIT(#214,.LENGTHUNIT.,'INCH',#216);\n#210=IFCUNITASSIGNMENT((#217));",
         1.0},
        {"the last length unit of the assignment",
         "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#215=IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.);\n"
         "#210=IFCUNITASSIGNMENT((#211,#215));",
         0.01},
        {"a zero factor is passed over",
         "#215=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n" + metro +
             "#212=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.),#211);\n"
             "#213=IFCCONVERSIONBASEDUNIT(#214,.LENGTHUNIT.,'NADA',#212);\n#210=IFCUNITASSIGNMENT((#215,#213));",
         0.001},
        {"two projects: metres",
         "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#210=IFCUNITASSIGNMENT((#211));\n"
         "#201=IFCPROJECT('1Pq$Kz0nH5Bx8O1f2aDtGw',#5,'Q',$,$,$,$,$,#210);",
         1.0},
        {"a dangling assignment: metres", "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);", 1.0},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const float f = static_cast<float>(c.factor);
        const auto ejes = leer(proyecto + c.unidades + "\n" + grilla());
        ASSERT_EQ(ejes.size(), 3u);
        esperarEjes({ejes[1]}, {{"B", true, {{5 * f, -2 * f, 0.5f * f}, {5 * f, 12 * f, 0.5f * f}}}}, 1e-6f);
    }
    // An axis that leaves a float's range once in metres is left out.
    const auto lejos = leer(proyecto + "#211=IFCSIUNIT(*,.LENGTHUNIT.,.EXA.,.METRE.);\n"
                                       "#210=IFCUNITASSIGNMENT((#211));\n" + grilla() +
                            "#105=IFCCARTESIANPOINT((5.E21,-2.,0.5));");
    ASSERT_EQ(lejos.size(), 2u);
    EXPECT_EQ(lejos[1].tag, "1");
    EXPECT_FLOAT_EQ(lejos[1].puntos[1].x, 7e18f);
}

// The grid's placement chain carries the axes into world coordinates: the B
// axis (5, -2, 0.5)-(5, 12, 0.5) through each placement.
TEST(GrillasIFC, ThePlacementChainCarriesTheAxesIntoTheWorld) {
    // Parent at (10, 20, 3), the grid 1 m along X from it, its location in 2D.
    const std::string cadena = R"IFC(
#301=IFCCARTESIANPOINT((10.,20.,3.));
#302=IFCAXIS2PLACEMENT3D(#301,$,$);
#303=IFCLOCALPLACEMENT($,#302);
#304=IFCCARTESIANPOINT((1.,0.));
#305=IFCAXIS2PLACEMENT3D(#304,$,$);
#306=IFCLOCALPLACEMENT(#303,#305);
)IFC";
    const std::string origen = "#310=IFCCARTESIANPOINT((0.,0.,0.));\n";
    const float r = std::sqrt(0.5f);
    struct Caso {
        const char* nombre;
        std::string colocaciones;
        std::string_view colocacion; // the grid's ObjectPlacement
        Puntos esperados;
    };
    const std::vector<Caso> casos = {
        {"translated chain", cadena, "#306", {{16, 18, 3.5f}, {16, 32, 3.5f}}},
        {"turned a quarter by RefDirection",
         origen + "#311=IFCDIRECTION((0.,1.,0.));\n#312=IFCAXIS2PLACEMENT3D(#310,$,#311);\n"
                  "#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{2, 5, 0.5f}, {-12, 5, 0.5f}}},
        {"Axis along X, RefDirection along Y, not unit",
         origen + "#311=IFCDIRECTION((1.,0.,0.));\n#314=IFCDIRECTION((0.,2.,0.));\n"
                  "#312=IFCAXIS2PLACEMENT3D(#310,#311,#314);\n#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{0.5f, 5, -2}, {0.5f, 5, 12}}},
        {"Axis along X without RefDirection: X from the world's Z",
         origen + "#311=IFCDIRECTION((1.,0.,0.));\n#312=IFCAXIS2PLACEMENT3D(#310,#311,$);\n"
                  "#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{0.5f, 2, 5}, {0.5f, -12, 5}}},
        {"RefDirection slanted to the Axis is made square",
         origen + "#311=IFCDIRECTION((1.,1.,1.));\n#312=IFCAXIS2PLACEMENT3D(#310,$,#311);\n"
                  "#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{7 * r, 3 * r, 0.5f}, {-7 * r, 17 * r, 0.5f}}},
        {"2D placement",
         "#310=IFCCARTESIANPOINT((5.,5.));\n#311=IFCDIRECTION((0.,1.));\n"
         "#312=IfcAxis2Placement2D(#310,#311);\n#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{7, 10, 0.5f}, {-7, 10, 0.5f}}},
        {"turned parent, translated child",
         origen + "#311=IFCDIRECTION((0.,1.,0.));\n#312=IFCAXIS2PLACEMENT3D(#310,$,#311);\n"
                  "#303=IFCLOCALPLACEMENT($,#312);\n#304=IFCCARTESIANPOINT((1.,0.,0.));\n"
                  "#305=IFCAXIS2PLACEMENT3D(#304,$,$);\n#313=IFCLOCALPLACEMENT(#303,#305);",
         "#313", {{2, 6, 0.5f}, {-12, 6, 0.5f}}},
        {"placement and points in millimetres",
         "#200=IFCPROJECT('0Pq$Kz0nH5Bx8O1f2aDtGw',#5,'P',$,$,$,$,$,#210);\n"
         "#211=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#210=IFCUNITASSIGNMENT((#211));\n"
         "#310=IFCCARTESIANPOINT((1000.,2000.,0.));\n#312=IFCAXIS2PLACEMENT3D(#310,$,$);\n"
         "#313=IFCLOCALPLACEMENT($,#312);",
         "#313", {{1.005f, 1.998f, 0.0005f}, {1.005f, 2.012f, 0.0005f}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const auto ejes = leer(c.colocaciones + "\n" + grilla(c.colocacion));
        ASSERT_EQ(ejes.size(), 3u);
        esperarEjes({ejes[1]}, {{"B", true, c.esperados}}, 1e-5f);
    }
    // A direction written last reads despite the closing lines joined to it.
    const auto ultima = leerGrillasIFCTexto("ISO-10303-21;\nDATA;\n" + grilla("#313") + origen +
                                            "#312=IFCAXIS2PLACEMENT3D(#310,$,#311);\n#313=IFCLOCALPLACEMENT($,#312);\n"
                                            "#311=IFCDIRECTION((0.,1.,0.));\nENDSEC;\nEND-ISO-10303-21;\n");
    ASSERT_EQ(ultima.size(), 3u);
    esperarEjes({ultima[1]}, {{"B", true, {{2, 5, 0.5f}, {-12, 5, 0.5f}}}}, 1e-5f);
}

// A grid whose placement can't be read is left out, and the scan goes on to
// the next grid; no chain loops.
TEST(GrillasIFC, AnUnreadablePlacementLeavesOutOnlyItsGrid) {
    const std::string punto = "#42=IFCCARTESIANPOINT((0.,0.,0.));\n";
    struct Caso {
        const char* nombre;
        std::string texto; // the statements, and the placement of the bad grid as #40
    };
    const std::vector<Caso> casos = {
        {"dangling", ""},
        {"placed relative to itself", punto + "#41=IFCAXIS2PLACEMENT3D(#42,$,$);\n#40=IFCLOCALPLACEMENT(#40,#41);"},
        {"a cycle of two", punto + "#41=IFCAXIS2PLACEMENT3D(#42,$,$);\n#40=IFCLOCALPLACEMENT(#43,#41);\n"
                                   "#43=IFCLOCALPLACEMENT(#40,#41);"},
        {"dangling RelativePlacement", "#40=IFCLOCALPLACEMENT($,#99);"},
        {"a zero direction", punto + "#44=IFCDIRECTION((0.,0.,0.));\n#41=IFCAXIS2PLACEMENT3D(#42,#44,$);\n"
                                     "#40=IFCLOCALPLACEMENT($,#41);"},
        {"RefDirection along the Axis",
         punto + "#44=IFCDIRECTION((0.,0.,2.));\n#41=IFCAXIS2PLACEMENT3D(#42,$,#44);\n#40=IFCLOCALPLACEMENT($,#41);"},
        {"a Location that is not a point",
         "#44=IFCDIRECTION((0.,0.,1.));\n#41=IFCAXIS2PLACEMENT3D(#44,$,$);\n#40=IFCLOCALPLACEMENT($,#41);"},
        {"a grid placement", "#40=IFCGRIDPLACEMENT(#45,#46);"},
        {"too few arguments", punto + "#41=IFCAXIS2PLACEMENT3D(#42,$,$);\n#40=IFCLOCALPLACEMENT(#41);"},
        {"a grid of 8 arguments", "#121=IFCGRID('4Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Corta',$,$,$,#31,(#108));"},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        // The bad grid holds B and 1; the good one after it holds A.
        std::string datos = std::string(ejesGrilla) + c.texto + "\n";
        if (c.texto.find("IFCGRID(") == std::string::npos)
            datos += "#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Mala',$,$,#40,#31,(#108),(#114),$);\n";
        datos += "#130=IFCGRID('5Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Buena',$,$,$,#31,(#104),$,$);\n";
        esperarEjes(leer(datos), {ejesComoEscritos[0]});
    }
}

TEST(GrillasIFC, ANewUUIDAtEachReadAndNothingFromUnreadableFiles) {
    const std::string texto = archivoIFC(grilla());
    const auto primera = leerGrillasIFCTexto(texto);
    pruebas::DirectorioTemporal dir;
    const auto segunda = leerGrillasIFC(dir.escribir("grilla.ifc", texto));
    esperarEjes(segunda, ejesComoEscritos);
    std::set<std::string> ids;
    for (const auto* lectura : {&primera, &segunda})
        for (const auto& e : *lectura) {
            EXPECT_FALSE(QUuid::fromString(QString::fromStdString(e.id)).isNull()) << e.id;
            ids.insert(e.id);
        }
    EXPECT_EQ(ids.size(), 6u);

    // A Latin-1 byte elsewhere leaves the axes read; tags undouble their
    // apostrophes and read bytes that are not UTF-8 as ISO 8859-1.
    std::string latin1 = texto;
    latin1.insert(latin1.find("'Grilla'") + 7, "\xE9");
    latin1.replace(latin1.find("'A'"), 3, "'D'''");
    latin1.replace(latin1.find("'B'"), 3, "'\xC1'");
    const auto leidos = leerGrillasIFC(dir.escribir("latin1.ifc", latin1));
    ASSERT_EQ(leidos.size(), 3u);
    EXPECT_EQ(leidos[0].tag, "D'");
    EXPECT_EQ(leidos[1].tag, "\xC3\x81");
    for (const std::string& r : {dir.escribir("vacio.ifc", ""), dir.inexistente(), dir.ruta()})
        EXPECT_TRUE(leerGrillasIFC(r).empty()) << r;
}

TEST(FusionarGrillas, DropsNewAxesWhoseTagAndListAreAlreadyThere) {
    const Puntos viejos = {{0, 0, 0}, {0, 10, 0}};
    const Puntos nuevos = {{1, 1, 0}, {1, 11, 0}};
    std::vector<EjeGrilla> grillas = {{"id-a-u", "A", true, viejos}, {"id-1-v", "1", false, viejos}};
    fusionarGrillas(grillas, {{"n1", "A", true, nuevos},
                              {"n2", "A", false, nuevos},
                              {"n3", "1", false, nuevos},
                              {"n4", "1", true, nuevos},
                              {"n5", "B", true, nuevos}});
    std::vector<std::pair<std::string, Puntos>> quedan;
    for (const EjeGrilla& e : grillas) quedan.emplace_back(e.id, e.puntos);
    EXPECT_EQ(quedan, (std::vector<std::pair<std::string, Puntos>>{
                          {"id-a-u", viejos}, {"id-1-v", viejos}, {"n2", nuevos}, {"n4", nuevos}, {"n5", nuevos}}));
}
