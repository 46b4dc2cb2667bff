// The documents of a BCF archive byte for byte against tests/analyses/bcf_esperado/
// (the literal form there, the standard form in estandar/, whose element order
// is the schemas'); text without what XML forbids; the camera of a viewpoint
// in 32-bit floats, for each form; the archive's file name.
#include "analyses/bcf/CamaraBCF.h"
#include "analyses/bcf/TextosBCF.h"

#include <QFile>
#include <QTimeZone>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <tuple>

using namespace teskal;

namespace {

std::string esperado(const std::string& nombre) {
    QFile f(QStringLiteral(TESKAL_TESTS_DIR "/analyses/bcf_esperado/") +
            QString::fromStdString(nombre));
    EXPECT_TRUE(f.open(QIODevice::ReadOnly)) << nombre;
    return f.readAll().toStdString();
}

Interferencia interferencia(std::string id, std::string espA, std::string espB, std::string nombreA,
                            std::string nombreB, glm::dvec3 pos, glm::dvec3 objetivo,
                            EstadoClash estado) {
    return {id, {}, {}, espA, espB, nombreA, nombreB, pos, objetivo, 0.5, estado, {}, {}};
}

// One clash per review state: (1) names with "&", "<", ">", quotes and an
// apostrophe, the camera on its target; (2) an id in lower case, "↔" in a
// name, the camera along +Y; (3) far from the origin, obliquely, so that the
// difference must be taken in doubles; (4) a discipline "I&C", the camera
// 0.87 mm from its target, under the 1 mm below which the view points down.
// GlobalIds: (1) both, "_" and "$" among them; (2) A, and B with one that is
// not a GlobalId; (3) none; (4) A, and B one character too long.
AnalisisInterferencias analisisDePrueba() {
    AnalisisInterferencias a;
    a.id = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";
    a.nombre = "Revisión \"Torre B\" d'Alba & <1>";
    a.fecha = QDateTime(QDate(2026, 3, 1), QTime(11, 5, 9), QTimeZone(-3 * 3600));
    a.tolerancia = 0.0125;
    a.interferencias = {
        interferencia("6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F", "ARQ", "EST", "A&B<1>",
                      "Muro \"norte\" d'este", {1.5, -2.25, 3}, {1.5, -2.25, 3},
                      EstadoClash::abierto),
        interferencia("c0ffee00-1234-4abc-8def-0123456789ab", "EST", "MEP", "Viga ↔ V-12",
                      "Ducto 300×200", {4, -3, 2}, {4, 7.5, 2}, EstadoClash::enRevision),
        interferencia("5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A", "MEP", "ARQ", "Tubería Ø110",
                      "Losa N+3", {-11741.41921, 16849.64572, -15245.27204},
                      {-11740.86721, 16850.87509, -15243.87746}, EstadoClash::aprobado),
        interferencia("2E4F6A8C-0B1D-4F3E-A5C7-E9F1A3B5C7D9", "ARQ", "I&C", "Puerta P-01",
                      "Bandeja <cables>", {2, 3, 1}, {2.0005, 3.0005, 1.0005},
                      EstadoClash::resuelto),
    };
    auto& l = a.interferencias;
    std::tie(l[0].globalIdA, l[0].globalIdB) =
        std::pair("2O2Fr$t4X7Zf8NOew3FLOH", "0K3x_9Jm$1YqWnH7Ze4TbA");
    std::tie(l[1].globalIdA, l[1].globalIdB) = std::pair("3vB2YO$MX4xv5uCqZZG05x", "no-es-un-guid");
    std::tie(l[3].globalIdA, l[3].globalIdB) =
        std::pair("1hqIFTRjfV6AWq_bMtnZwI", "1hqIFTRjfV6AWq_bMtnZwIx");
    return a;
}

const char* const viewpointGuids[] = {
    "9A8B7C6D-5E4F-4A3B-8C2D-1E0F9A8B7C6D", "0A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9",
    "F0E1D2C3-B4A5-4968-8778-695A4B3C2D1E", "13579BDF-2468-4ACE-8642-FDB97531ECA8"};

} // namespace

TEST(TextosBCF, documentosComoElTextoEscrito) {
    AnalisisInterferencias a = analisisDePrueba();
    EXPECT_EQ(textoVersionBCF(), esperado("bcf.version"));
    // The standard form departs from the literal one only in the labels, the
    // viewpoint reference, the order of components and camera, the IfcGuids,
    // the schema's name and the up vector.
    for (const auto& [forma, carpeta] :
         {std::pair(FormaBCF::literalTESKAL, ""), std::pair(FormaBCF::estandar, "estandar/")}) {
        SCOPED_TRACE(carpeta);
        const std::string c = carpeta;
        EXPECT_EQ(textoProyectoBCF("7C9E6679-7425-40DE-944B-E07FC1F90AE7", a.nombre, forma),
                  esperado("project.bcfp"));
        for (std::size_t k = 0; k < a.interferencias.size(); ++k) {
            SCOPED_TRACE(k + 1);
            const std::string n = std::to_string(k + 1);
            EXPECT_EQ(textoMarkupBCF(a, a.interferencias[k], viewpointGuids[k], forma),
                      esperado(c + "markup_" + n + ".bcf"));
            EXPECT_EQ(textoViewpointBCF(a.interferencias[k], viewpointGuids[k], forma),
                      esperado(c + "viewpoint_" + n + ".bcfv"));
        }
    }
    EXPECT_EQ(textoExtensionesBCF(a), esperado("estandar/extensions.xsd"));
    // The tolerance keeps its trailing zeros.
    a.tolerancia = 0.02;
    EXPECT_NE(textoMarkupBCF(a, a.interferencias[0], viewpointGuids[0])
                  .find("Tolerancia: 0.020 m.</Description>"),
              std::string::npos);
    // Without clashes the labels are "Clash" alone.
    a.interferencias.clear();
    EXPECT_NE(textoExtensionesBCF(a).find("<xs:restriction base=\"TopicLabel\">\n"
                                          "                <xs:enumeration value=\"Clash\"/>\n"
                                          "            </xs:restriction>"),
              std::string::npos);
}

TEST(TextosBCF, ceroNegativoConSignoYNingunNumeroNoFinito) {
    // Coordinates pass on as they are, the sign of a zero included; a
    // direction or up vector with nothing along an axis has +0 there. The
    // layout is checked above, so blanks are left out here.
    Interferencia i = analisisDePrueba().interferencias[0];
    i.viewpointPos = {-0.0, 2, -0.00004};
    i.viewpointTarget = {-0.0, 2, -3};
    const auto sinBlancos = [](std::string t) {
        std::erase_if(t, [](char c) { return c == ' ' || c == '\n'; });
        return t;
    };
    for (const FormaBCF forma : {FormaBCF::estandar, FormaBCF::literalTESKAL}) {
        const std::string t = sinBlancos(textoViewpointBCF(i, viewpointGuids[0], forma));
        EXPECT_NE(
            t.find("<CameraViewPoint><X>-0.0000</X><Y>2.0000</Y><Z>-0.0000</Z></CameraViewPoint>"
                   "<CameraDirection><X>0.000000</X><Y>0.000000</Y><Z>-1.000000</Z>"
                   "</CameraDirection><CameraUpVector><X>0.000000</X><Y>1.000000</Y>"
                   "<Z>0.000000</Z></CameraUpVector><FieldOfView>"),
            std::string::npos)
            << t;
    }
    // A camera that is not finite everywhere is left out of the standard
    // form, whose components stay; no "nan" or "inf" anywhere.
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 inf = std::numeric_limits<double>::infinity();
    for (const auto& [pos, objetivo] : {std::pair(glm::dvec3(nan, 0, 0), glm::dvec3(1, 1, 1)),
                                        std::pair(glm::dvec3(0, 0, 0), glm::dvec3(0, inf, 0)),
                                        std::pair(glm::dvec3(1e300, 0, 0), glm::dvec3(0, 0, 0))}) {
        i.viewpointPos = pos;
        i.viewpointTarget = objetivo;
        const std::string t = sinBlancos(textoViewpointBCF(i, viewpointGuids[0]));
        EXPECT_EQ(t.find("Camera"), std::string::npos) << t;
        EXPECT_EQ(t.find("nan<"), std::string::npos) << t;
        EXPECT_EQ(t.find("inf<"), std::string::npos) << t;
        EXPECT_NE(t.find("</Components><ClippingPlanes/></VisualizationInfo>"), std::string::npos)
            << t;
    }
}

TEST(TextosBCF, soloCaracteresQueXMLAdmite) {
    // Escaped as before; C0 controls but tab, line feed and carriage return
    // go, and so do U+FFFE and U+FFFF; a byte that is not well-formed UTF-8
    // (stray, truncated, overlong, a surrogate, past U+10FFFF) becomes U+FFFD.
    const std::pair<std::string, std::string> casos[] = {
        {"A&B<1> \"x\" 'y'", "A&amp;B&lt;1&gt; &quot;x&quot; 'y'"},
        {std::string("a\0b\x01\x08\x0B\x0C\x1F\x7F", 9) + "\t\n\rc", "ab\x7F\t\n\rc"},
        {"Ø ↔ 東 \U0001F600", "Ø ↔ 東 \U0001F600"},
        {"x\xEF\xBF\xBEy\xEF\xBF\xBFz\xEF\xBF\xBD", "xyz\xEF\xBF\xBD"},
        {"\x80|\xC3|\xC0\xAF|\xE0\x80\xAF|\xED\xA0\x80|\xF4\x90\x80\x80|\xF8",
         "\uFFFD|\uFFFD|\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD|"
         "\uFFFD\uFFFD\uFFFD\uFFFD|"
         "\uFFFD"},
    };
    for (const auto& [entrada, salida] : casos) EXPECT_EQ(textoXML(entrada), salida) << entrada;
    // The escaping alone: the ampersand of a text that already reads as an
    // entity is escaped too.
    EXPECT_EQ(escaparXML("&lt;\"x\" 'y'"), "&amp;lt;&quot;x&quot; 'y'");

    // Names of the standard form pass through it; the literal form keeps them.
    Interferencia i = analisisDePrueba().interferencias[0];
    i.nombreA = "Viga\x01\xFF";
    AnalisisInterferencias a = analisisDePrueba();
    EXPECT_NE(textoMarkupBCF(a, i, viewpointGuids[0]).find("<Title>Viga\uFFFD ↔ "),
              std::string::npos);
    EXPECT_NE(textoViewpointBCF(i, viewpointGuids[0]).find(">Viga\uFFFD</AuthoringToolId>"),
              std::string::npos);
    EXPECT_NE(textoViewpointBCF(i, viewpointGuids[0], FormaBCF::literalTESKAL)
                  .find(">Viga\x01\xFF</AuthoringToolId>"),
              std::string::npos);
}

TEST(TextosBCF, ifcGuidDeVeintidosCaracteres) {
    const std::pair<const char*, bool> casos[] = {
        {"2O2Fr$t4X7Zf8NOew3FLOH", true},   {"0000000000000000000000", true},
        {"zzzzzzzzzzzzzzzzzzzzz_", true},   {"2O2Fr$t4X7Zf8NOew3FLO", false},
        {"2O2Fr$t4X7Zf8NOew3FLOHH", false}, {"2O2Fr$t4X7Zf8NOew3FLO-", false},
        {"2O2Fr$t4X7Zf8NOew3FL,H", false},  {"", false},
    };
    for (const auto& [gid, valido] : casos) EXPECT_EQ(esIfcGuid(gid), valido) << gid;
}

TEST(CamaraBCF, umbralesDeUnMilimetro) {
    using Vectores = std::pair<glm::vec3, glm::vec3>; // direction, up
    using Camara = CamaraBCF (*)(const glm::dvec3&, const glm::dvec3&);
    const auto camara = [](Camara f, glm::dvec3 p, glm::dvec3 o) {
        const CamaraBCF c = f(p, o);
        return Vectores(c.direccion, c.arriba);
    };
    // Standard: Z is up; a view along Z takes Y. Literal: Y projected off
    // the view, or Y itself along Y.
    struct Caso {
        glm::dvec3 p, o;
        Vectores estandar, literal;
    };
    const Caso casos[] = {
        // 0.9 mm away: down; 1.1 mm away: a real direction, up along Z.
        {{5, 5, 5}, {5, 5, 5.0009}, {{0, 0, -1}, {0, 1, 0}}, {{0, 0, -1}, {0, 1, 0}}},
        {{5, 5, 5}, {5, 5, 5.0011}, {{0, 0, 1}, {0, 1, 0}}, {{0, 0, 1}, {0, 1, 0}}},
        // Level views: Z up; along Y the literal form leaves Y parallel to the view.
        {{0, 9, 0}, {0, -1, 0}, {{0, -1, 0}, {0, 0, 1}}, {{0, -1, 0}, {0, 1, 0}}},
        {{0, 0, 0}, {-3, 0, 0}, {{-1, 0, 0}, {0, 0, 1}}, {{-1, 0, 0}, {0, 1, 0}}},
    };
    for (const Caso& c : casos) {
        EXPECT_EQ(camara(camaraBCF, c.p, c.o), c.estandar);
        EXPECT_EQ(camara(camaraBCFLiteral, c.p, c.o), c.literal);
    }
    // Nearly along Z (or Y for the literal form), but more than the threshold
    // off it: the projection stands, leaning against the view.
    const CamaraBCF inclinada = camaraBCF({0, 0, 0}, {0.01, 0, 1});
    EXPECT_GT(inclinada.arriba.z, 0.0f);
    EXPECT_LT(inclinada.arriba.x, -0.9f);
    const CamaraBCF inclinadaLiteral = camaraBCFLiteral({0, 0, 0}, {0.01, 1, 0});
    EXPECT_GT(inclinadaLiteral.arriba.y, 0.0f);
    EXPECT_LT(inclinadaLiteral.arriba.x, -0.9f);
}

TEST(CamaraBCF, direccionYArribaUnitariosYPerpendiculares) {
    std::mt19937 azar(77);
    std::uniform_real_distribution<double> lugar(-500, 500), paso(-20, 20);
    for (int n = 0; n < 2000; ++n) {
        const glm::dvec3 p(lugar(azar), lugar(azar), lugar(azar));
        // Every tenth straight up or down, where Y takes over.
        const glm::dvec3 o = p + (n % 10 == 0 ? glm::dvec3(0, 0, paso(azar))
                                              : glm::dvec3(paso(azar), paso(azar), paso(azar)));
        SCOPED_TRACE(n);
        for (const CamaraBCF& c : {camaraBCF(p, o), camaraBCFLiteral(p, o)}) {
            ASSERT_NEAR(glm::length(c.direccion), 1.0f, 1e-6f);
            ASSERT_NEAR(glm::length(c.arriba), 1.0f, 1e-6f);
            ASSERT_GT(glm::dot(glm::dvec3(c.direccion), o - p), 0.0); // towards the target
        }
        // Standard: perpendicular, on Z's side (Y's when looking along Z).
        const CamaraBCF c = camaraBCF(p, o);
        ASSERT_NEAR(glm::dot(c.direccion, c.arriba), 0.0f, 1e-6f);
        ASSERT_TRUE(n % 10 == 0 ? c.arriba == glm::vec3(0, 1, 0) : c.arriba.z > 0.0f);
        // Literal: perpendicular, on Y's side; its projection of Y loses
        // digits where the view runs close to Y.
        const CamaraBCF l = camaraBCFLiteral(p, o);
        ASSERT_NEAR(glm::dot(l.direccion, l.arriba), 0.0f, 1e-5f);
        ASSERT_GE(l.arriba.y, 0.0f);
    }
}

TEST(NombreArchivoBCF, soloLetrasDigitosGuionesYBlancos) {
    // Letters of any script and their digits, "-", "_" and the blank stay;
    // tab, line feed, the no-break space and an emoji go; a combining accent
    // goes with its character.
    const std::pair<const char*, const char*> casos[] = {
        {"/:?*<>|\\\"'.,;!()[]{}", ".bcf"},
        {"", ".bcf"},
        {"Revisión Ñandú-ÉTAPA_2 東京タワー ٣٤", "Revisión Ñandú-ÉTAPA_2 東京タワー ٣٤.bcf"},
        {"a\tb\nc\u00a0d", "abcd.bcf"},
        {"\U0001D49C\U0001D7D8\U0001F600x", "\U0001D49C\U0001D7D8x.bcf"},
        {"Cafe\u0301!/\u0301x", "Cafe\u0301x.bcf"},
    };
    for (const auto& [nombre, archivo] : casos) EXPECT_EQ(nombreArchivoBCF(nombre), archivo);
}
