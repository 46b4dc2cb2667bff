// The grid axes of an IFC file: points, polylines, axes and grids, and the
// merge of new axes into the workspace's list.
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

std::vector<EjeGrilla> leer(std::string_view datos) {
    return leerGrillasIFCTexto(archivoIFC(datos));
}

void esperarEje(const EjeGrilla& e, const std::string& tag, bool esU, const Puntos& puntos) {
    EXPECT_EQ(e.tag, tag);
    EXPECT_EQ(e.esU, esU) << "axis " << tag;
    EXPECT_EQ(e.puntos, puntos) << "axis " << tag;
}

const EjeGrilla* buscar(const std::vector<EjeGrilla>& ejes, const std::string& tag, bool esU) {
    const auto it = std::find_if(ejes.begin(), ejes.end(),
                                 [&](const EjeGrilla& e) { return e.tag == tag && e.esU == esU; });
    return it == ejes.end() ? nullptr : &*it;
}

// Two U axes with 2D and 3D points and one V axis.
constexpr std::string_view grilla = R"IFC(
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
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,(#104,#108),(#114),$);
)IFC";

} // namespace

TEST(GrillasIFC, ReadsUAxesThenVAxesWithTheirPoints) {
    const auto ejes = leer(grilla);
    ASSERT_EQ(ejes.size(), 3u);
    esperarEje(ejes[0], "A", true, {{0, -2, 0}, {0, 12, 0}});
    esperarEje(ejes[1], "B", true, {{5, -2, 0.5f}, {5, 12, 0.5f}});
    esperarEje(ejes[2], "1", false, {{-2, 0, 0}, {7, 0, 0}});
}

TEST(GrillasIFC, CrlfLineEndsReadTheSameAsLf) {
    std::string lf(grilla);
    lf.replace(lf.find("(#104,#108)"), 11, "(#104\n  ,#108)");
    const auto ejes = leerGrillasIFCTexto(pruebas::aCRLF(archivoIFC(lf)));
    ASSERT_EQ(ejes.size(), 3u);
    esperarEje(ejes[0], "A", true, {{0, -2, 0}, {0, 12, 0}});
    esperarEje(ejes[1], "B", true, {{5, -2, 0.5f}, {5, 12, 0.5f}});
    esperarEje(ejes[2], "1", false, {{-2, 0, 0}, {7, 0, 0}});
}

TEST(GrillasIFC, PointsAreTakenAsWrittenLeavingOutWhatDoesNotParse) {
    const auto ejes = leer(R"IFC(
#101=IFCCARTESIANPOINT((0.,-2000.,0.));
#102=IFCCARTESIANPOINT((1.2E4,-2.5E-1,3.));
#103=IFCCARTESIANPOINT((24000.,$,1500.));
#104=IFCCARTESIANPOINT((7.));
#105=IFCDIRECTION((1.,0.,0.));
#106=IFCCARTESIANPOINT(( 3. , 4. , 5. , 6. ));
#110=IFCPOLYLINE((#101,#104,#102,#105,#103,#106));
#111=IFCGRIDAXIS('C\X2\00D1\X0\',#110,.T.);
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,$,(#111),$);
)IFC");
    ASSERT_EQ(ejes.size(), 1u);
    esperarEje(ejes[0], "C\xC3\x91", false,
               {{0, -2000, 0}, {12000, -0.25f, 3}, {24000, 1500, 0}, {3, 4, 5}});
}

TEST(GrillasIFC, AGridWithEightArgumentsGivesNoAxes) {
    const auto ejes = leer(R"IFC(
#101=IFCCARTESIANPOINT((0.,-2.));
#102=IFCCARTESIANPOINT((0.,12.));
#103=IFCPOLYLINE((#101,#102));
#104=IFCGRIDAXIS('A',#103,.T.);
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,(#104));
)IFC");
    EXPECT_TRUE(ejes.empty());
}

TEST(GrillasIFC, AxesWhoseCurveIsNotAPolylineOfTwoPointsAreLeftOut) {
    const auto ejes = leer(R"IFC(
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
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,
(#133,#135,#104,#138,#139,#140,#141,#777,#103),(#137),$);
)IFC");
    ASSERT_EQ(ejes.size(), 2u);
    esperarEje(ejes[0], "A", true, {{0, -2, 0}, {0, 12, 0}});
    esperarEje(ejes[1], "Repetido", false, {{0, -2, 0}, {0, -2, 0}});
}

TEST(GrillasIFC, ReferencesMayPointForwardAndLaterNumbersReplaceEarlier) {
    const auto ejes = leer(R"IFC(
#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,(#104),
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
)IFC");
    ASSERT_EQ(ejes.size(), 1u);
    esperarEje(ejes[0], "A", true, {{0, -2, 0}, {0, 15, 0}});
}

TEST(GrillasIFC, EveryGridContributesItsAxes) {
    std::string datos(grilla);
    datos += "#220=IFCGRID('0Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla 2',$,$,#30,#31,(#114),(#104),$);\n";
    const auto ejes = leer(datos);
    ASSERT_EQ(ejes.size(), 5u);
    const std::vector<std::pair<std::string, bool>> esperados = {
        {"A", true}, {"B", true}, {"1", false}, {"1", true}, {"A", false}};
    for (const auto& [tag, esU] : esperados)
        EXPECT_NE(buscar(ejes, tag, esU), nullptr) << tag << (esU ? "U" : "V");
    ASSERT_NE(buscar(ejes, "1", true), nullptr);
    EXPECT_EQ(buscar(ejes, "1", true)->puntos, (Puntos{{-2, 0, 0}, {7, 0, 0}}));
}

TEST(GrillasIFC, TheLastStatementKeepsItsAxesDespiteTheTail) {
    // The grid is the last data statement: "ENDSEC;" joins its WAxes only.
    const auto ejes = leerGrillasIFCTexto(
        "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"
        "#101=IFCCARTESIANPOINT((0.,-2.));\n#102=IFCCARTESIANPOINT((0.,12.));\n"
        "#103=IFCPOLYLINE((#101,#102));\n#104=IFCGRIDAXIS('A',#103,.T.);\n"
        "#120=IFCGRID('3Gx$Kz0nH5Bx8O1f2aDtGw',#5,'Grilla',$,$,#30,#31,(#104),(#104),$);\n"
        "ENDSEC;\nEND-ISO-10303-21;\n");
    ASSERT_EQ(ejes.size(), 2u);
    esperarEje(ejes[0], "A", true, {{0, -2, 0}, {0, 12, 0}});
    esperarEje(ejes[1], "A", false, {{0, -2, 0}, {0, 12, 0}});
}

TEST(GrillasIFC, EachAxisGetsANewUUIDAtEachRead) {
    const auto primera = leer(grilla);
    const auto segunda = leer(grilla);
    ASSERT_EQ(primera.size(), 3u);
    ASSERT_EQ(segunda.size(), 3u);
    std::set<std::string> ids;
    for (const auto* lectura : {&primera, &segunda})
        for (const auto& e : *lectura) {
            EXPECT_FALSE(QUuid::fromString(QString::fromStdString(e.id)).isNull()) << e.id;
            ids.insert(e.id);
        }
    EXPECT_EQ(ids.size(), 6u);
}

TEST(GrillasIFC, ReadsAFileWhateverItsBytesAndGivesNothingForUnreadableOnes) {
    pruebas::DirectorioTemporal dir;
    const auto ejes = leerGrillasIFC(dir.escribir("grilla.ifc", archivoIFC(grilla)));
    ASSERT_EQ(ejes.size(), 3u);
    esperarEje(ejes[2], "1", false, {{-2, 0, 0}, {7, 0, 0}});

    // A Latin-1 byte elsewhere leaves the axes read; tags undouble their
    // apostrophes and read bytes that are not UTF-8 as ISO 8859-1.
    std::string latin1 = archivoIFC(grilla);
    latin1.insert(latin1.find("'Grilla'") + 7, "\xE9");
    latin1.replace(latin1.find("'A'"), 3, "'D'''");
    latin1.replace(latin1.find("'B'"), 3, "'\xC1'");
    const auto leidos = leerGrillasIFC(dir.escribir("latin1.ifc", latin1));
    ASSERT_EQ(leidos.size(), 3u);
    EXPECT_EQ(leidos[0].tag, "D'");
    EXPECT_EQ(leidos[1].tag, "\xC3\x81");

    EXPECT_TRUE(leerGrillasIFC(dir.escribir("vacio.ifc", "")).empty());
    EXPECT_TRUE(leerGrillasIFC(dir.inexistente()).empty());
    EXPECT_TRUE(leerGrillasIFC(dir.ruta()).empty());
}

TEST(FusionarGrillas, DropsNewAxesWhoseTagAndListAreAlreadyThere) {
    const Puntos viejos = {{0, 0, 0}, {0, 10, 0}};
    const Puntos nuevos = {{1, 1, 0}, {1, 11, 0}};
    std::vector<EjeGrilla> grillas = {{"id-a-u", "A", true, viejos},
                                      {"id-1-v", "1", false, viejos}};
    fusionarGrillas(grillas, {{"n1", "A", true, nuevos},
                              {"n2", "A", false, nuevos},
                              {"n3", "1", false, nuevos},
                              {"n4", "1", true, nuevos},
                              {"n5", "B", true, nuevos}});
    ASSERT_EQ(grillas.size(), 5u);
    EXPECT_EQ(grillas[0].id, "id-a-u");
    EXPECT_EQ(grillas[0].puntos, viejos);
    EXPECT_EQ(grillas[1].id, "id-1-v");
    EXPECT_EQ(grillas[1].puntos, viejos);
    EXPECT_EQ(grillas[2].id, "n2");
    EXPECT_EQ(grillas[3].id, "n4");
    EXPECT_EQ(grillas[4].id, "n5");
    EXPECT_EQ(grillas[4].puntos, nuevos);
}
