// Work packages from other sources: the detector over the property index
// with its inferred parents and its import, the CSV import's reading rules,
// and the CSV export read back by Python and imported again.
#include "federation/ContentView.h"
#include "lector_csv.h"
#include "timeline/CSVAWP.h"
#include "timeline/DetectorAWP.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

using N = NivelAWP;

// A package as one line of text, with the fields the CSV import knows.
std::string resumen(const PaqueteAWP& p) {
    char cifras[96];
    std::snprintf(cifras, sizeof cifras, "%g|%g|%g", p.progreso, p.presupuesto, p.hh);
    return std::string(textoNivel(p.nivel)) + "|" + p.codigo + "|" + p.nombre + "|" + p.parentCodigo.value_or("-") +
           "|" + p.fechaInicio.toUTC().toString(Qt::ISODate).toStdString() + "|" +
           p.fechaFin.toUTC().toString(Qt::ISODate).toStdString() + "|" + cifras;
}

std::vector<std::string> resumenes(const std::vector<PaqueteAWP>& l) {
    std::vector<std::string> r;
    for (const PaqueteAWP& p : l) r.push_back(resumen(p));
    return r;
}

} // namespace

TEST(DetectorAWP, nivelesCodigosPadresEImportacion) {
    // Names match in any case and property set, trimmed; a name that merely
    // contains the letters, an empty value and the type never do. "Muro 1"
    // of both disciplines is one element.
    const PropiedadesPorEspecialidad indice{
        {"ARQ",
         {{"Muro 1", {{"AWP › IWP", "IWP-01"}, {"AWP › CWP", "CWP-A"}, {"__tipoIFC", "IFCWALL"}}},
          {"Muro 2",
           {{"Pset_Obra › iwp ", "IWP-01"}, {"AWP › CWA", ""}, {"AWP › CWA_Codigo", "X"}, {"Obra › PWP", "PWP-9"}}},
          {"Losa 1", {{"cwa", "AREA-1"}, {"AWP › IWP", "IWP-02"}}},
          {"Viga 1", {{"AWP › CWA", "AREA-1"}, {"AWP › CWP", "CWP-A"}, {"IWP de obra", "no"}}},
          {"Tubo 1", {{"AWP › PWP", "DUP"}, {"AWP › CWP", "DUP"}}}}},
        {"MEP",
         {{"Muro 1", {{"Otro › IWP", "IWP-01"}}}, {"Tubo 2", {{"AWP › IWP", "EXIST"}, {"AWP › CWP", "CWP-B"}}}}},
    };
    const std::vector<ResultadoAWP> esperado{
        {N::cwa, "AREA-1", {"Losa 1", "Viga 1"}}, {N::cwp, "CWP-A", {"Muro 1", "Viga 1"}},
        {N::cwp, "CWP-B", {"Tubo 2"}},            {N::cwp, "DUP", {"Tubo 1"}},
        {N::iwp, "EXIST", {"Tubo 2"}},            {N::iwp, "IWP-01", {"Muro 1", "Muro 2"}},
        {N::iwp, "IWP-02", {"Losa 1"}},           {N::pwp, "DUP", {"Tubo 1"}},
        {N::pwp, "PWP-9", {"Muro 2"}},
    };
    const auto resultados = detectarAWP(indice);
    EXPECT_EQ(resultados, esperado);

    // A code the plan has is neither imported nor merged; of two levels with
    // one code, selected together, the first takes the code. CWP-B is not
    // selected, so it is no candidate either.
    TimeLinerConfig config = TimeLinerConfig::porDefecto(QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC));
    PaqueteAWP existente = PaqueteAWP::nuevo(QDateTime(QDate(2020, 3, 1), QTime(0, 0), Qt::UTC));
    existente.codigo = "EXIST";
    existente.elementosNombre = {"Otro"};
    config.paquetes = {existente};
    const QDateTime ahora(QDate(2025, 6, 1), QTime(9, 0), Qt::UTC);
    std::set<std::string> seleccion;
    for (const auto& r : resultados) seleccion.insert(r.codigo);
    seleccion.erase("CWP-B");
    EXPECT_EQ(importarDetectados(config, resultados, seleccion, ahora), 6u);

    const struct {
        const char* codigo;
        NivelAWP nivel;
        std::optional<std::string> padre;
    } paquetes[] = {
        {"AREA-1", N::cwa, {}},
        {"CWP-A", N::cwp, "AREA-1"}, // through Viga 1
        {"DUP", N::cwp, {}},
        {"IWP-01", N::iwp, "CWP-A"}, // through Muro 1
        {"IWP-02", N::iwp, "AREA-1"}, // no CWP shares Losa 1, the area does
        {"PWP-9", N::pwp, "IWP-01"},
    };
    ASSERT_EQ(config.paquetes.size(), 7u);
    EXPECT_EQ(config.paquetes[0], existente);
    for (std::size_t i = 0; i < std::size(paquetes); ++i) {
        const PaqueteAWP& p = config.paquetes[i + 1];
        SCOPED_TRACE(p.codigo);
        EXPECT_EQ(p.codigo, paquetes[i].codigo);
        EXPECT_EQ(p.nombre, p.codigo);
        EXPECT_EQ(p.nivel, paquetes[i].nivel);
        EXPECT_EQ(p.parentCodigo, paquetes[i].padre);
        EXPECT_EQ(p.fechaInicio, ahora);
    }
    EXPECT_EQ(config.paquetes[4].elementosNombre, (std::vector<std::string>{"Muro 1", "Muro 2"}));
    // The axis spans the packages: the old one's start, the new ones' end.
    EXPECT_EQ(config.fechaInicio, existente.fechaInicio);
    EXPECT_EQ(config.fechaFin, config.paquetes[1].fechaFin);
}

TEST(DetectorAWP, padreConMasElementosComunesOElPrimero) {
    const std::vector<ResultadoAWP> candidatos{
        {N::cwa, "A", {"e1", "e2"}}, {N::cwp, "P", {"e1", "e2", "e3"}}, {N::cwa, "B", {"e2", "e3"}},
        {N::cwa, "C", {"e4"}},       {N::cwa, "D", {"e5", "e5"}}, {N::cwa, "E", {"e6", "e5"}},
    };
    const struct {
        std::vector<std::string> elementos;
        NivelAWP nivel;
        std::optional<std::string> padre;
    } casos[] = {
        {{"e1"}, N::cwa, "A"},
        {{"e3"}, N::cwa, "B"},
        {{"e2"}, N::cwa, "A"},             // a tie: the first
        {{"e2", "e3", "e4"}, N::cwa, "B"}, // two in common beat one
        {{"e9"}, N::cwa, std::nullopt},
        {{"e4"}, N::cwp, std::nullopt}, // only the level asked for
        {{"e5", "e6"}, N::cwa, "E"},    // a name twice in a candidate counts once
    };
    for (const auto& c : casos) EXPECT_EQ(inferirPadre(c.nivel, c.elementos, candidatos), c.padre) << c.elementos[0];
}

TEST(CSVAWP, lecturaTolerante) {
    const std::string bom = "\xEF\xBB\xBF";
    const std::string cabecera = "Nivel,Código,Nombre,Padre,Inicio,Fin,Avance,Presupuesto,HH Plan\n";
    const std::string dias = "T00:00:00Z|2025-01-31T00:00:00Z";
    const struct {
        std::string texto;
        std::vector<std::string> paquetes;
    } casos[] = {
        // A byte order mark before the first header; CR LF line ends; a level
        // in lower case; an empty name takes the code; the short row and the
        // empty lines are skipped.
        {bom + "Nivel,Código,Nombre,Inicio,Fin\r\ncwa ,A1,,2025-01-01,2025-01-31\r\n\r\nIWP,I9,Corta\r\n",
         {"CWA|A1|A1|-|2025-01-01" + dias + "|0|0|0"}},
        // A quoted comma stays in the name; the percent sign or none, a
        // fraction read as a percentage, an unreadable number as 0.
        {cabecera + "IWP,I1,\"Losa, nivel 2\",A1,2025-01-01,2025-01-31,50%,1500.5,80\n"
                    "IWP,I2,Muro,,2025-01-01,2025-01-31, 50 ,x,\n"
                    "IWP,I3,Viga,A1,2025-01-01,2025-01-31,0.5,2e3,8\n"
                    "IWP,I4,Tubo,A1,2025-01-01,2025-01-31,abc,,\n",
         {"IWP|I1|Losa, nivel 2|A1|2025-01-01" + dias + "|0.5|1500.5|80",
          "IWP|I2|Muro|-|2025-01-01" + dias + "|0.5|0|0", "IWP|I3|Viga|A1|2025-01-01" + dias + "|0.005|2000|8",
          "IWP|I4|Tubo|A1|2025-01-01" + dias + "|0|0|0"}},
        // Aliases in English, in any order of columns; "Costo" alone is the
        // budget; "term" names the finish.
        {"\"Code\",Name,Nivel,Parent,Start,Term,Progress,Costo,HH_Plan\n"
         "P1,Bombeo,cwp,A1,2025-01-01,2025-01-31,100,250,16\n",
         {"CWP|P1|Bombeo|A1|2025-01-01" + dias + "|1|250|16"}},
        // "Presupuesto" comes before "Costo Real" however the columns stand.
        {"Nivel,Codigo,Nombre,Inicio,Fin,Costo Real,Presupuesto\nIWP,I1,x,2025-01-01,2025-01-31,7,9\n",
         {"IWP|I1|x|-|2025-01-01" + dias + "|0|9|0"}},
        // Rows dropped: an unknown level, an empty code, a finish before the
        // start, a date in none of the forms; an equal start and finish stand.
        {"Nivel,Código,Nombre,Padre,Inicio,Fin\nXYZ,I1,a,,2025-01-01,2025-01-31\nIWP, ,b,,2025-01-01,2025-01-31\n"
                    "IWP,I2,c,,2025-02-01,2025-01-31\nIWP,I3,d,,2025-02-30,2025-03-01\n"
                    "IWP,I4,e,,2025-01-31,2025-01-31\n",
         {"IWP|I4|e|-|2025-01-31T00:00:00Z|2025-01-31T00:00:00Z|0|0|0"}},
        // A required column missing, or no line at all: nothing.
        {"Nivel,Código,Nombre,Inicio\nIWP,I1,a,2025-01-01\n", {}},
        {"\n \n", {}},
    };
    for (const auto& c : casos) EXPECT_EQ(resumenes(parsearCSV(c.texto)), c.paquetes) << c.texto;

    // Day first when both readings are dates; month first when only that one is.
    const auto local = [](int a, int m, int d) { return QDateTime(QDate(a, m, d), QTime(0, 0), Qt::LocalTime).toUTC(); };
    const struct {
        const char* texto;
        std::optional<QDateTime> fecha;
    } fechas[] = {
        {" 2025-06-05 ", QDateTime(QDate(2025, 6, 5), QTime(0, 0), Qt::UTC)},
        {"05/06/2025", local(2025, 6, 5)},
        {"1/2/2025", local(2025, 2, 1)},
        {"01/13/2025", local(2025, 1, 13)},
        {"13/13/2025", std::nullopt},
        {"2025/01/05", std::nullopt},
        {"2025-1-05", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& f : fechas) EXPECT_EQ(leerFechaCSV(f.texto), f.fecha) << f.texto;
}

TEST(CSVAWP, exportacionLeidaPorPythonEImportadaDeNuevo) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const std::string ruta = dir.filePath(QStringLiteral("plan.csv")).toStdString();
    const QDateTime t0(QDate(2025, 3, 1), QTime(0, 0), Qt::UTC);

    ContentView cv("/no/hay");
    const auto paquete = [&](const char* codigo, N nivel, const char* nombre, std::optional<std::string> padre) {
        PaqueteAWP p = PaqueteAWP::nuevo(t0);
        p.codigo = codigo;
        p.nombre = nombre;
        p.nivel = nivel;
        p.parentCodigo = std::move(padre);
        p.fechaFin = t0.addDays(30);
        return p;
    };
    cv.timeLiner.paquetes = {paquete("A-01", N::cwa, "Área, norte", {}), paquete("I-01", N::iwp, "Losa", "A-01")};
    cv.timeLiner.paquetes[0].presupuesto = 999; // an area writes its own figures
    PaqueteAWP& i1 = cv.timeLiner.paquetes[1];
    i1.progreso = 0.3333;
    i1.presupuesto = 1000.9;
    i1.costoReal = 250.7;
    i1.hh = 120.6;
    i1.hhReal = 30;
    i1.fechaFin = t0.addDays(45);
    ASSERT_TRUE(cv.exportarCSVAWP(ruta));

    const auto filas = pruebas::leerCSVConPython(QString::fromStdString(ruta));
    const QList<QStringList> esperado{
        QString::fromUtf8(cabeceraCSVAWP.data(), cabeceraCSVAWP.size()).split(','),
        {"CWA", "A-01", "Área, norte", "", "2025-03-01", "2025-03-31", "0.0", "999", "0", "0", "1.00", "0", "0", "0",
         "1.00"},
        // EV 1000.9 × 0.3333 = 333.6, CPI 333.6 / 250.7; HH ganadas 40.2, factor 40.2 / 30.
        {"IWP", "I-01", "Losa", "A-01", "2025-03-01", "2025-04-15", "33.3", "1000", "250", "333", "1.33", "120", "30",
         "40", "1.34"},
    };
    EXPECT_EQ(filas, esperado);

    // Into a project without those codes: every field the import knows comes
    // back; into the same project again: nothing.
    ContentView otro("/no/hay");
    otro.importarPaquetesAWP(leerCSVAWP(ruta));
    ASSERT_EQ(otro.timeLiner.paquetes.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        const PaqueteAWP &a = cv.timeLiner.paquetes[i], &b = otro.timeLiner.paquetes[i];
        EXPECT_EQ(resumen(b), resumen([&] {
                      PaqueteAWP r = a;
                      r.presupuesto = std::trunc(r.presupuesto);
                      r.hh = std::trunc(r.hh);
                      r.progreso = std::round(r.progreso * 1000) / 1000;
                      return r;
                  }()));
        EXPECT_EQ(b.costoReal, 0);
        EXPECT_EQ(b.hhReal, 0);
    }
    const auto cambios = cv.cambios;
    cv.importarPaquetesAWP(leerCSVAWP(ruta));
    EXPECT_EQ(cv.timeLiner.paquetes.size(), 2u);
    EXPECT_EQ(cv.cambios, cambios);

    // Not UTF-8: nothing read. A write that fails is told.
    QFile latin(dir.filePath(QStringLiteral("latin1.csv")));
    ASSERT_TRUE(latin.open(QIODevice::WriteOnly));
    latin.write("Nivel,C\xF3" "digo,Nombre,Inicio,Fin\nIWP,I1,a,2025-01-01,2025-01-31\n");
    latin.close();
    EXPECT_TRUE(leerCSVAWP(latin.fileName().toStdString()).empty());
    EXPECT_FALSE(cv.exportarCSVAWP(dir.filePath(QStringLiteral("no/existe/plan.csv")).toStdString()));
    EXPECT_TRUE(cv.showError);
    EXPECT_NE(cv.errorMessage.value_or("").find("No se pudo guardar el CSV"), std::string::npos);
}
