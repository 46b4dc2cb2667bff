// The documents of a BCF archive of clashes against texts written out by hand
// in tests/analyses/bcf_esperado/, byte for byte; the camera of a viewpoint in
// 32-bit floats; the archive's file name.
#include "analyses/bcf/CamaraBCF.h"
#include "analyses/bcf/TextosBCF.h"

#include <QFile>
#include <QTimeZone>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>
#include <random>

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
    Interferencia i;
    i.id = std::move(id);
    i.especialidadA = std::move(espA);
    i.especialidadB = std::move(espB);
    i.nombreA = std::move(nombreA);
    i.nombreB = std::move(nombreB);
    i.viewpointPos = pos;
    i.viewpointTarget = objetivo;
    i.estado = estado;
    return i;
}

// Four clashes, one per review state:
// 1. names with "&", "<", ">", quotes and an apostrophe; the camera on its target;
// 2. an element named with "↔"; the camera looking straight along +Y;
// 3. far from the origin, obliquely: the printed position and vectors are
//    those of 32-bit arithmetic on the difference taken in doubles;
// 4. a discipline "I&C"; the camera 0.87 mm from its target, under the 1 mm
//    below which the view points down.
// The analysis was run at 11:05:09 three hours behind UTC, with a tolerance of
// 12.5 mm (printed with three decimals, rounded up).
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
        interferencia("C0FFEE00-1234-4ABC-8DEF-0123456789AB", "EST", "MEP", "Viga ↔ V-12",
                      "Ducto 300×200", {4, -3, 2}, {4, 7.5, 2}, EstadoClash::enRevision),
        interferencia("5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A", "MEP", "ARQ", "Tubería Ø110",
                      "Losa N+3", {-11741.41921, 16849.64572, -15245.27204},
                      {-11740.86721, 16850.87509, -15243.87746}, EstadoClash::aprobado),
        interferencia("2E4F6A8C-0B1D-4F3E-A5C7-E9F1A3B5C7D9", "ARQ", "I&C", "Puerta P-01",
                      "Bandeja <cables>", {2, 3, 1}, {2.0005, 3.0005, 1.0005},
                      EstadoClash::resuelto),
    };
    return a;
}

const char* const viewpointGuids[] = {
    "9A8B7C6D-5E4F-4A3B-8C2D-1E0F9A8B7C6D", "0A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9",
    "F0E1D2C3-B4A5-4968-8778-695A4B3C2D1E", "13579BDF-2468-4ACE-8642-FDB97531ECA8"};

} // namespace

TEST(TextosBCF, versionYProyectoComoElTextoEscrito) {
    EXPECT_EQ(textoVersionBCF(), esperado("bcf.version"));
    const AnalisisInterferencias a = analisisDePrueba();
    EXPECT_EQ(textoProyectoBCF("7C9E6679-7425-40DE-944B-E07FC1F90AE7", a.nombre),
              esperado("project.bcfp"));
}

TEST(TextosBCF, markupYViewpointDeCadaInterferencia) {
    const AnalisisInterferencias a = analisisDePrueba();
    for (std::size_t k = 0; k < a.interferencias.size(); ++k) {
        SCOPED_TRACE(k + 1);
        const std::string n = std::to_string(k + 1);
        EXPECT_EQ(textoMarkupBCF(a, a.interferencias[k], viewpointGuids[k]),
                  esperado("markup_" + n + ".bcf"));
        EXPECT_EQ(textoViewpointBCF(a.interferencias[k], viewpointGuids[k]),
                  esperado("viewpoint_" + n + ".bcfv"));
    }
}

TEST(TextosBCF, topicEnMayusculasYToleranciaConTresDecimales) {
    AnalisisInterferencias a = analisisDePrueba();
    Interferencia i = a.interferencias[0];
    i.id = "6b1d7e0a-3c55-4f0b-9d2e-1a2b3c4d5e6f";
    a.tolerancia = 0.02;
    const std::string t = textoMarkupBCF(a, i, viewpointGuids[0]);
    EXPECT_NE(t.find("<Topic Guid=\"6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F\""), std::string::npos);
    EXPECT_NE(t.find("Tolerancia: 0.020 m.</Description>"), std::string::npos);
    a.tolerancia = 0.1;
    EXPECT_NE(textoMarkupBCF(a, i, viewpointGuids[0]).find("Tolerancia: 0.100 m."),
              std::string::npos);
}

TEST(TextosBCF, ceroNegativoConSigno) {
    // Coordinates pass on as they are, the sign of a zero included; a
    // direction or up vector with nothing along an axis has +0 there.
    Interferencia i = analisisDePrueba().interferencias[0];
    i.viewpointPos = {-0.0, 2, -0.00004};
    i.viewpointTarget = {-0.0, 2, -3};
    const std::string t = textoViewpointBCF(i, viewpointGuids[0]);
    const auto inicio = t.find("<CameraViewPoint>");
    ASSERT_NE(inicio, std::string::npos);
    EXPECT_EQ(t.substr(inicio, t.find("<FieldOfView>") - inicio), "<CameraViewPoint>\n"
                                                                  "            <X>-0.0000</X>\n"
                                                                  "            <Y>2.0000</Y>\n"
                                                                  "            <Z>-0.0000</Z>\n"
                                                                  "        </CameraViewPoint>\n"
                                                                  "        <CameraDirection>\n"
                                                                  "            <X>0.000000</X>\n"
                                                                  "            <Y>0.000000</Y>\n"
                                                                  "            <Z>-1.000000</Z>\n"
                                                                  "        </CameraDirection>\n"
                                                                  "        <CameraUpVector>\n"
                                                                  "            <X>0.000000</X>\n"
                                                                  "            <Y>1.000000</Y>\n"
                                                                  "            <Z>0.000000</Z>\n"
                                                                  "        </CameraUpVector>\n"
                                                                  "        ");
}

TEST(TextosBCF, escapadoDeEntidades) {
    EXPECT_EQ(escaparXML("A&B<1>"), "A&amp;B&lt;1&gt;");
    // The ampersand of a text that already reads as an entity is escaped too.
    EXPECT_EQ(escaparXML("&lt;\"x\" 'y'"), "&amp;lt;&quot;x&quot; 'y'");
    EXPECT_EQ(escaparXML("Ø ↔ ×"), "Ø ↔ ×");
}

TEST(CamaraBCF, diferenciaEnDoblePrecisionYLuegoEn32Bits) {
    // 16777217 has no 32-bit float: narrowed first, the two points would be
    // 2 m apart along X; their difference in doubles is 1 m.
    const CamaraBCF c = camaraBCF({16777217.0, 0, 0}, {16777218.0, 1, 0});
    EXPECT_EQ(c.posicion, glm::vec3(16777216.0f, 0, 0));
    EXPECT_FLOAT_EQ(c.direccion.x, std::sqrt(0.5f));
    EXPECT_FLOAT_EQ(c.direccion.y, std::sqrt(0.5f));
    EXPECT_EQ(c.direccion.z, 0.0f);
}

TEST(CamaraBCF, umbralDeUnMilimetro) {
    // 0.9 mm away: down, with Y up.
    CamaraBCF c = camaraBCF({5, 5, 5}, {5, 5, 5.0009});
    EXPECT_EQ(c.direccion, glm::vec3(0, 0, -1));
    EXPECT_EQ(c.arriba, glm::vec3(0, 1, 0));
    // 1.1 mm away, upwards: a real direction.
    c = camaraBCF({5, 5, 5}, {5, 5, 5.0011});
    EXPECT_EQ(c.direccion, glm::vec3(0, 0, 1));
    EXPECT_EQ(c.arriba, glm::vec3(0, 1, 0));
    // Straight down along -Y: Y has nothing left once projected off the view.
    c = camaraBCF({0, 9, 0}, {0, -1, 0});
    EXPECT_EQ(c.direccion, glm::vec3(0, -1, 0));
    EXPECT_EQ(c.arriba, glm::vec3(0, 1, 0));
    // Nearly along Y, but more than the threshold off it: the projection
    // stands, leaning against the view.
    c = camaraBCF({0, 0, 0}, {0.01, 1, 0});
    EXPECT_GT(c.arriba.y, 0.0f);
    EXPECT_LT(c.arriba.x, -0.9f);
}

TEST(CamaraBCF, direccionYArribaUnitariosYPerpendiculares) {
    std::mt19937 azar(77);
    std::uniform_real_distribution<double> lugar(-500, 500), paso(-20, 20);
    for (int n = 0; n < 2000; ++n) {
        const glm::dvec3 p(lugar(azar), lugar(azar), lugar(azar));
        const glm::dvec3 o = p + glm::dvec3(paso(azar), paso(azar), paso(azar));
        const CamaraBCF c = camaraBCF(p, o);
        SCOPED_TRACE(n);
        ASSERT_NEAR(glm::length(c.direccion), 1.0f, 1e-6f);
        ASSERT_NEAR(glm::length(c.arriba), 1.0f, 1e-6f);
        ASSERT_NEAR(glm::dot(c.direccion, c.arriba), 0.0f, 1e-6f);
        // Towards the target, and Y's side of the view.
        ASSERT_GT(glm::dot(glm::dvec3(c.direccion), o - p), 0.0);
        ASSERT_GE(c.arriba.y, 0.0f);
    }
}

TEST(NombreArchivoBCF, soloLetrasDigitosGuionesYBlancos) {
    EXPECT_EQ(nombreArchivoBCF("Fase 2/3: ok?"), "Fase 23 ok.bcf");
    EXPECT_EQ(nombreArchivoBCF("/:?*<>|\\\"'.,;!()[]{}"), ".bcf");
    EXPECT_EQ(nombreArchivoBCF(""), ".bcf");
    // Accented letters, other scripts and their digits stay; "-", "_" and the
    // blank stay; tab, line feed and the no-break space go.
    EXPECT_EQ(nombreArchivoBCF("Revisión Ñandú-ÉTAPA_2 東京タワー ٣٤"),
              "Revisión Ñandú-ÉTAPA_2 東京タワー ٣٤.bcf");
    EXPECT_EQ(nombreArchivoBCF("a\tb\nc\u00a0d"), "abcd.bcf");
    // Beyond the 16-bit plane: a mathematical letter and digit stay, an emoji goes.
    EXPECT_EQ(nombreArchivoBCF("\U0001D49C\U0001D7D8\U0001F600x"), "\U0001D49C\U0001D7D8x.bcf");
    // A letter with a combining accent stays whole; an accent on a deleted
    // character goes with it.
    EXPECT_EQ(nombreArchivoBCF("Cafe\u0301!/\u0301x"), "Cafe\u0301x.bcf");
}
