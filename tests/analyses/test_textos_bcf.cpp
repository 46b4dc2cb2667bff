// The documents of a BCF archive byte for byte against tests/analyses/bcf_esperado/;
// the camera of a viewpoint in 32-bit floats; the archive's file name.
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
    return {id, {}, {}, espA, espB, nombreA, nombreB, {}, {}, pos, objetivo, 0.5, estado};
}

// One clash per review state: (1) names with "&", "<", ">", quotes and an
// apostrophe, the camera on its target; (2) an id in lower case, "↔" in a
// name, the camera along +Y; (3) far from the origin, obliquely, so that the
// difference must be taken in doubles; (4) a discipline "I&C", the camera
// 0.87 mm from its target, under the 1 mm below which the view points down.
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
    return a;
}

const char* const viewpointGuids[] = {
    "9A8B7C6D-5E4F-4A3B-8C2D-1E0F9A8B7C6D", "0A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9",
    "F0E1D2C3-B4A5-4968-8778-695A4B3C2D1E", "13579BDF-2468-4ACE-8642-FDB97531ECA8"};

} // namespace

TEST(TextosBCF, documentosComoElTextoEscrito) {
    AnalisisInterferencias a = analisisDePrueba();
    EXPECT_EQ(textoVersionBCF(), esperado("bcf.version"));
    EXPECT_EQ(textoProyectoBCF("7C9E6679-7425-40DE-944B-E07FC1F90AE7", a.nombre),
              esperado("project.bcfp"));
    for (std::size_t k = 0; k < a.interferencias.size(); ++k) {
        SCOPED_TRACE(k + 1);
        const std::string n = std::to_string(k + 1);
        EXPECT_EQ(textoMarkupBCF(a, a.interferencias[k], viewpointGuids[k]),
                  esperado("markup_" + n + ".bcf"));
        EXPECT_EQ(textoViewpointBCF(a.interferencias[k], viewpointGuids[k]),
                  esperado("viewpoint_" + n + ".bcfv"));
    }
    // The tolerance keeps its trailing zeros.
    a.tolerancia = 0.02;
    EXPECT_NE(textoMarkupBCF(a, a.interferencias[0], viewpointGuids[0])
                  .find("Tolerancia: 0.020 m.</Description>"),
              std::string::npos);
    // The ampersand of a text that already reads as an entity is escaped too.
    EXPECT_EQ(escaparXML("&lt;\"x\" 'y'"), "&amp;lt;&quot;x&quot; 'y'");
}

TEST(TextosBCF, ceroNegativoConSigno) {
    // Coordinates pass on as they are, the sign of a zero included; a
    // direction or up vector with nothing along an axis has +0 there. The
    // layout is checked above, so blanks are left out here.
    Interferencia i = analisisDePrueba().interferencias[0];
    i.viewpointPos = {-0.0, 2, -0.00004};
    i.viewpointTarget = {-0.0, 2, -3};
    std::string t = textoViewpointBCF(i, viewpointGuids[0]);
    std::erase_if(t, [](char c) { return c == ' ' || c == '\n'; });
    EXPECT_NE(t.find("<CameraViewPoint><X>-0.0000</X><Y>2.0000</Y><Z>-0.0000</Z></CameraViewPoint>"
                     "<CameraDirection><X>0.000000</X><Y>0.000000</Y><Z>-1.000000</Z>"
                     "</CameraDirection><CameraUpVector><X>0.000000</X><Y>1.000000</Y>"
                     "<Z>0.000000</Z></CameraUpVector><FieldOfView>"),
              std::string::npos)
        << t;
}

TEST(CamaraBCF, umbralesDeUnMilimetro) {
    using Vectores = std::pair<glm::vec3, glm::vec3>; // direction, up
    const auto camara = [](glm::dvec3 p, glm::dvec3 o) {
        const CamaraBCF c = camaraBCF(p, o);
        return Vectores(c.direccion, c.arriba);
    };
    // 0.9 mm away: down, with Y up; 1.1 mm away: a real direction.
    EXPECT_EQ(camara({5, 5, 5}, {5, 5, 5.0009}), Vectores({0, 0, -1}, {0, 1, 0}));
    EXPECT_EQ(camara({5, 5, 5}, {5, 5, 5.0011}), Vectores({0, 0, 1}, {0, 1, 0}));
    // Straight down along -Y: nothing of Y is left off the view.
    EXPECT_EQ(camara({0, 9, 0}, {0, -1, 0}), Vectores({0, -1, 0}, {0, 1, 0}));
    // Nearly along Y, but more than the threshold off it: the projection
    // stands, leaning against the view.
    const CamaraBCF inclinada = camaraBCF({0, 0, 0}, {0.01, 1, 0});
    EXPECT_GT(inclinada.arriba.y, 0.0f);
    EXPECT_LT(inclinada.arriba.x, -0.9f);
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
