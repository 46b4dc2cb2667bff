// The DXF of a sheet: byte for byte against files written by hand, the edge
// cases of its layers, heights, texts and dimensions, and every file written
// here read back and audited by ezdxf.
#include "escena_prueba.h"
#include "sections/DXF.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <cstdio>
#include <random>

using namespace teskal;
using namespace teskal::pruebas;

namespace {

Segmento2D linea(glm::vec2 a, glm::vec2 b, const char* key, bool esCorte = true) {
    return {a, b, key, {}, esCorte, "Muro"};
}

std::string esperado(const char* nombre) {
    QFile f(QStringLiteral(TESKAL_TESTS_DIR "/sections/dxf_esperado/") + QString::fromLatin1(nombre));
    if (!f.open(QIODevice::ReadOnly)) return {};
    return f.readAll().toStdString();
}

// The number of times a pair of lines (code, value) stands in the file.
int pares(const std::string& dxf, const std::string& codigo, const std::string& valor) {
    const std::string par = "\n" + codigo + "\n" + valor + "\n";
    int n = 0;
    for (std::size_t i = dxf.find(par); i != std::string::npos; i = dxf.find(par, i + 1)) ++n;
    return n;
}

// ezdxf's reading of a file: audit errors and entities per layer; null when
// ezdxf is not installed.
std::optional<QJsonObject> leerConEzdxf(const std::string& dxf) {
    QTemporaryDir dir;
    const QString ruta = dir.filePath(QStringLiteral("plano.dxf"));
    QFile f(ruta);
    f.open(QIODevice::WriteOnly);
    f.write(dxf.data(), static_cast<qint64>(dxf.size()));
    f.close();
    QProcess p;
    p.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(TESKAL_TESTS_DIR "/sections/leer_dxf.py"), ruta});
    p.waitForFinished(120000);
    if (p.exitCode() == 3) return std::nullopt;
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    return QJsonDocument::fromJson(p.readAllStandardOutput()).object();
}

// The entities a sheet gives per layer, counted from its lists.
void auditar(const std::string& dxf, const std::map<std::string, int>& porCapa) {
    const auto r = leerConEzdxf(dxf);
    if (!r) {
        std::cout << "[ AVISO    ] sin ezdxf (python3-ezdxf): el DXF no se audita\n";
        return;
    }
    EXPECT_EQ((*r)["errores"].toInt(), 0);
    EXPECT_EQ((*r)["version"].toString(), QStringLiteral("AC1009"));
    const QJsonObject capas = (*r)["capas"].toObject();
    EXPECT_EQ(capas.size(), static_cast<qsizetype>(porCapa.size()));
    for (const auto& [capa, n] : porCapa) EXPECT_EQ(capas[QString::fromStdString(capa)].toInt(), n) << capa;
}

} // namespace

TEST(GenerarDXF, archivosEscritosAMano) {
    const std::vector<Segmento2D> lineas{linea({0, 0}, {2, 0}, "ARQ"), linea({0, 0}, {0, 1}, "ARQ", false)};
    const std::string soloLineas = generarDXF(lineas, {}, {});
    EXPECT_EQ(soloLineas, esperado("solo_lineas.dxf"));
    auditar(soloLineas, {{"ARQ", 2}});

    // A label with its text to the left (right-aligned texts) and a
    // horizontal dimension, on a sheet 3 m wide (text height 0.05).
    Etiqueta2D e = etiqueta("E", {1, 0}, {-2, 1}, "Baño × 2", true, "ARQ");
    e.tipoIFC = "Espacio";
    e.dimensiones = "2.00 × 3.00 m";
    e.material = "Cerámica"; // not exported
    const Etiqueta2D oculta = etiqueta("O", {0, 0}, {1, 1}, "Oculta", false, "ARQ");
    const Cota2D cota{"C", {0, 0}, {4, 0}, 1.0f};
    const std::string conTodo = generarDXF({linea({0, 0}, {3, 0}, "ARQ")}, {e, oculta}, {cota});
    EXPECT_EQ(conTodo, esperado("etiqueta_y_cota.dxf"));
    auditar(conTodo, {{"ARQ", 1}, {"ETIQUETAS", 6}, {"COTAS", 10}});
}

TEST(GenerarDXF, capasAlturasYTextos) {
    struct Caso {
        const char* nombre;
        std::vector<Segmento2D> segmentos;
        std::vector<Etiqueta2D> etiquetas;
        std::vector<Cota2D> cotas;
        int capas;           // group 70 of the layer table
        const char* altura;  // group 40 of the label's name, if any
        std::map<std::string, int> porCapa;
    };
    const Etiqueta2D derecha = etiqueta("E", {0, 0}, {1.5f, 0}, "Muro", true, "EST");
    const Caso casos[] = {
        {"sin etiquetas ni cotas", {linea({0, 0}, {1, 0}, "EST"), linea({0, 0}, {1, 1}, "MEP")}, {}, {}, 3, nullptr,
         {{"EST", 1}, {"MEP", 1}}},
        {"cota de largo cero: capa sin entidad", {linea({0, 0}, {1, 0}, "ARQ")}, {}, {{"C", {1, 1}, {1, 1}, 0.6f}}, 3,
         nullptr, {{"ARQ", 1}}},
        {"200 m: altura acotada a 0.5", {linea({0, 0}, {200, 0}, "EST")}, {derecha}, {}, 3, "0.500000",
         {{"EST", 1}, {"ETIQUETAS", 6}}},
        {"3 m: altura mínima 0.05", {linea({0, 0}, {0, 3}, "EST")}, {derecha}, {}, 3, "0.050000",
         {{"EST", 1}, {"ETIQUETAS", 6}}},
        {"30 m: uno por ciento", {linea({0, 0}, {0, 30}, "EST")}, {derecha}, {}, 3, "0.300000",
         {{"EST", 1}, {"ETIQUETAS", 6}}},
        {"sin líneas: 0.1", {}, {derecha}, {}, 2, "0.100000", {{"ETIQUETAS", 6}}},
        {"clave no ASCII, en ASCII", {linea({0, 0}, {1, 0}, "ELÉ")}, {}, {}, 2, nullptr, {{"ELE", 1}}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        const std::string dxf = generarDXF(c.segmentos, c.etiquetas, c.cotas);
        EXPECT_EQ(pares(dxf, "2", "LAYER"), 1);
        EXPECT_NE(dxf.find("\n2\nLAYER\n70\n" + std::to_string(c.capas) + "\n"), std::string::npos);
        EXPECT_EQ(pares(dxf, "0", "LAYER"), c.capas);
        if (c.altura) {
            EXPECT_EQ(pares(dxf, "1", "Muro"), 1);
            EXPECT_NE(dxf.find("\n40\n" + std::string(c.altura) + "\n1\nMuro\n"), std::string::npos);
        }
        // A label with its text to the right has no alignment group.
        EXPECT_EQ(pares(dxf, "72", "2"), 0);
        auditar(dxf, c.porCapa);
    }
}

TEST(GenerarDXF, textoDeCotasYGiro) {
    struct Caso {
        glm::vec2 p1, p2;
        const char* texto;
        const char* angulo; // group 50, or none
    };
    const Caso casos[] = {
        {{0, 0}, {4, 0}, "4.00 m", nullptr},
        {{4, 0}, {0, 0}, "4.00 m", nullptr}, // right to left: turned by 180, no angle
        {{0, 0}, {0, 2.5f}, "2.50 m", "90.000000"},
        {{0, 0}, {-3, -3}, "4.24 m", "45.000000"},
    };
    for (const Caso& c : casos) {
        const std::string dxf = generarDXF({linea({0, 0}, {10, 0}, "ARQ")}, {}, {{"C", c.p1, c.p2, 0.6f}});
        EXPECT_EQ(pares(dxf, "1", c.texto), 1) << c.texto;
        EXPECT_EQ(pares(dxf, "50", c.angulo ? c.angulo : "0.000000"), c.angulo ? 1 : 0) << c.texto;
        EXPECT_EQ(dxf.find("\n50\n") != std::string::npos, c.angulo != nullptr);
    }
}

TEST(SanearTextoDXF, plegadoAASCII) {
    const std::pair<const char*, const char*> casos[] = {
        {"Baño × 2", "Bano x 2"},  {"Ñandú 90°", "Nandu 90deg"}, {"12 m² 3 m³", "12 m2 3 m3"},
        {"Línea\r\nsegunda\nfin", "Linea segunda fin"}, {"Muro 日本", "Muro "},   {"Çà", "Ca"},
    };
    for (const auto& [texto, saneado] : casos) EXPECT_EQ(sanearTextoDXF(texto), saneado) << texto;
}

TEST(GenerarDXF, numerosComoPrintf) {
    // Coordinates are written as "%.6f" writes them, halfway cases (rounded
    // to even on the exact binary value), tiny negatives and large values included.
    std::vector<float> valores{0.0078125f, 0.0234375f, -0.0078125f, -1e-9f, 1e-30f, -0.0f, 1.5e7f,
                               3.0e16f,    0.0000005f, 123456.789f, -4.25f, 1.0f / 3.0f};
    std::mt19937 azar(11);
    std::uniform_real_distribution<float> mantisa(-1.0f, 1.0f);
    std::uniform_int_distribution<int> exponente(-30, 25);
    for (int i = 0; i < 4000; ++i) valores.push_back(std::ldexp(mantisa(azar), exponente(azar)));
    std::vector<Segmento2D> lineas;
    for (std::size_t i = 0; i + 1 < valores.size(); i += 2)
        lineas.push_back(linea({valores[i], valores[i + 1]}, {0, 0}, "ARQ"));
    const std::string dxf = generarDXF(lineas, {}, {});
    std::size_t desde = dxf.find("ENTITIES");
    for (std::size_t i = 0; i + 1 < valores.size(); i += 2) {
        char esperado[512];
        std::snprintf(esperado, sizeof esperado, "\n10\n%.6f\n20\n%.6f\n", double(valores[i]), double(valores[i + 1]));
        const std::size_t en = dxf.find(esperado, desde);
        ASSERT_NE(en, std::string::npos) << esperado;
        desde = en + 1;
    }
}
