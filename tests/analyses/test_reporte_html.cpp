// The printable report of a clash analysis: the whole document, its names
// escaped, the file name, the date text and the write of the file.
#include "analyses/clash/ReporteHTML.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <array>
#include <ctime>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

Interferencia clash(const std::string& id, const std::string& a, const std::string& b,
                    EstadoClash e) {
    return {id, {}, {}, "ARQ", "MEP", a, b, {}, {}, 0.5, e, {}, {}};
}

// Names with "&", "<", ">" and both quotes, which the report escapes.
AnalisisInterferencias analisisDePrueba() {
    AnalisisInterferencias a;
    a.nombre = "R&D <Fase 1>";
    a.tolerancia = 0.025;
    a.fecha = QDateTime(QDate(2026, 3, 1), QTime(14, 5, 9));
    a.interferencias = {
        clash("ID-1", "Muro 1", "Tubo 1", EstadoClash::abierto),
        clash("ID-2", "Muro 2", "Tubo 2", EstadoClash::enRevision),
        clash("ID-3", "Losa <3>", "Ducto \"3\" & 'x'", EstadoClash::aprobado), // and its A discipline
        clash("ID-4", "Losa 4", "Ducto 4", EstadoClash::resuelto),
        clash("ID-5", "Viga 5", "Tubo 5", EstadoClash::abierto),
        clash("ID-6", "Viga 6", "Tubo 6", EstadoClash::resuelto),
        clash("ID-7", "Viga 7", "Tubo 7", EstadoClash::abierto),
    };
    return a;
}

// The document from the end of its style sheet: the head with the analysis'
// name and meta line, the cards (total, open, under review, approved, solved),
// the table around the given rows and the foot.
std::string cuerpo(const std::string& nombre, const std::string& fecha, const std::string& meta,
                   const std::array<int, 5>& n, const std::string& filas) {
    const char* const tarjetas[][2] = {{"total", "Total"},
                                       {"open", "Abiertos"},
                                       {"review", "En revisión"},
                                       {"aprob", "Aprobados"},
                                       {"solved", "Resueltos"}};
    std::string r = "</style></head><body><div class=\"header\"><div><h1>Informe de Interferencias "
                    "BIM</h1><h2>" +
                    nombre + "</h2><div class=\"meta\">Fecha: " + fecha + " &nbsp;·&nbsp; " + meta +
                    "</div></div><div class=\"brand\">VORNEL</div></div><div class=\"cards\">";
    for (int k = 0; k < 5; ++k)
        r += std::string("<div class=\"card ") + tarjetas[k][0] + "\"><div class=\"n\">" +
             std::to_string(n[k]) + "</div><div class=\"lbl\">" + tarjetas[k][1] + "</div></div>";
    return r +
           "</div><table class=\"main\"><thead><tr><th>#</th><th>Vista 3D</th><th>Elemento "
           "A</th><th>Esp. A</th><th>Elemento B</th><th>Esp. B</th><th>Estado</th></tr>"
           "</thead><tbody>" +
           filas + "</tbody></table><div class=\"pie\">Generado por VORNEL · " + fecha +
           "</div></body></html>";
}

} // namespace

TEST(ReporteHTML, documentoConCabeceraTarjetasFilasYPie) {
    AnalisisInterferencias a = analisisDePrueba();
    a.interferencias[2].especialidadA = "<i>ARQ</i>";
    const QByteArray png("\x89PNG\r\n\x1a\nfalso", 13);
    const std::string fecha = "1 de marzo de 2026, 14:05";
    std::string html = documentoReporteHTML(a, {{"ID-2", png}, {"ID-5", QByteArray()}},
                                            QString::fromStdString(fecha));

    EXPECT_EQ(
        html.rfind("<!DOCTYPE html><html lang=\"es\">\n<head><meta charset=\"UTF-8\">\n"
                   "<title>Informe de Interferencias BIM · R&amp;D &lt;Fase 1&gt;</title>\n<style>",
                   0),
        0u);
    const auto finEstilo = html.find("</style>");
    const std::string css = html.substr(0, finEstilo);
    for (const char* regla :
         {".badge.enrevision", ".card.solved", "table.main th", ".thumb", "@media print",
          "border-collapse: collapse", "object-fit: cover", "#ff9500"})
        EXPECT_NE(css.find(regla), std::string::npos) << regla;

    // One row per clash, numbered from 1 in list order; only the clash with
    // PNG bytes gets an image, with its alt text, empty bytes and a missing
    // entry the empty box. Names escaped.
    const char* const badges[] = {"abierto\">Abierto",   "enrevision\">En revisión",
                                  "aprobado\">Aprobado", "resuelto\">Resuelto",
                                  "abierto\">Abierto",   "resuelto\">Resuelto",
                                  "abierto\">Abierto"};
    std::string filas;
    for (std::size_t k = 0; k < a.interferencias.size(); ++k)
        filas +=
            "<tr>\n<td style=\"text-align:right;color:#999;\">" + std::to_string(k + 1) +
            "</td><td>" +
            (k == 1 ? "<img class='thumb' alt='Vista 3D de la interferencia 2: Muro 2 ↔ Tubo 2' "
                      "src='data:image/png;base64,iVBORw0KGgpmYWxzbw=='>"
                    : "<div class='thumb'></div>") +
            "</td><td><b>" + (k == 2 ? "Losa &lt;3&gt;" : a.interferencias[k].nombreA) +
            "</b></td><td style=\"color:#666;\">" + (k == 2 ? "&lt;i&gt;ARQ&lt;/i&gt;" : "ARQ") +
            "</td><td><b>" +
            (k == 2 ? "Ducto &quot;3&quot; &amp; &#39;x&#39;" : a.interferencias[k].nombreB) +
            "</b></td><td style=\"color:#666;\">MEP</td><td><span class=\"badge " + badges[k] +
            "</span></td></tr>";
    EXPECT_EQ(html.substr(finEstilo),
              cuerpo("R&amp;D &lt;Fase 1&gt;", fecha,
                     "Tolerancia: 0.025 m &nbsp;·&nbsp; 7 colisiones detectadas", {7, 3, 1, 1, 2},
                     filas));
    // Pending are the open and the under review; an approved clash is neither
    // pending nor solved.
    EXPECT_EQ(cuentasReporte(a).pendientes(), 4);

    a.interferencias.clear();
    a.tolerancia = 0.0;
    html = documentoReporteHTML(a, {}, QStringLiteral("<F>")); // the date text escaped too
    EXPECT_EQ(html.substr(html.find("</style>")),
              cuerpo("R&amp;D &lt;Fase 1&gt;", "&lt;F&gt;",
                     "Tolerancia: 0.000 m &nbsp;·&nbsp; 0 colisiones detectadas", {0, 0, 0, 0, 0},
                     ""));

    // Exact and clearance analyses name their method and add the measure's
    // column before the state's.
    struct Caso {
        MetodoAnalisis metodo;
        const char *meta, *columna;
    };
    for (const Caso& c : {Caso{MetodoAnalisis::geometriaExacta, "Método: Geometría exacta &nbsp;", "Penetración"},
                          Caso{MetodoAnalisis::holgura, "Método: Holgura 0.050 m &nbsp;", "Holgura"}}) {
        a.metodo = c.metodo;
        a.holgura = 0.05;
        a.interferencias = {clash("ID-1", "Muro 1", "Tubo 1", EstadoClash::abierto)};
        a.interferencias[0].distancia = 0.125;
        html = documentoReporteHTML(a, {}, QStringLiteral("hoy"));
        EXPECT_NE(html.find(c.meta), std::string::npos) << c.columna;
        EXPECT_NE(html.find(std::string("<th>Esp. B</th><th>") + c.columna + "</th><th>Estado</th>"), std::string::npos);
        EXPECT_NE(html.find("MEP</td><td style=\"text-align:right;\">125.0 mm</td><td><span"), std::string::npos);
    }
}

TEST(ReporteHTML, nombreDeArchivoYRegistros) {
    EXPECT_EQ(nombreArchivoReporte("a:b/c::d"), "a-b-c--d.html");
    EXPECT_EQ(nombreArchivoReporte("Ñandú & más?"), "Ñandú & más?.html");
    EXPECT_EQ(nombreArchivoReporte(""), ".html");
    EXPECT_EQ(textoRegistros(0), QStringLiteral("0 registros"));
    EXPECT_EQ(textoRegistros(1), QStringLiteral("1 registro"));
    EXPECT_EQ(textoRegistros(2), QStringLiteral("2 registros"));
}

TEST(ReporteHTML, fechaLargaConHoraCortaEnHoraLocal) {
    EXPECT_EQ(textoFechaReporte(QDateTime(QDate(2026, 3, 1), QTime(14, 5, 9))),
              QStringLiteral("1 de marzo de 2026, 14:05"));
    EXPECT_EQ(textoFechaReporte(QDateTime(QDate(2025, 9, 18), QTime(9, 7))),
              QStringLiteral("18 de septiembre de 2025, 09:07"));
    // A moment given in UTC reads in the machine's local time: four hours
    // behind UTC here, so early on the 5th is still the evening of the 4th.
    const QByteArray zonaAntes = qgetenv("TZ");
    qputenv("TZ", "<-04>4");
    tzset();
    const QString texto =
        textoFechaReporte(QDateTime(QDate(2026, 7, 5), QTime(2, 30), QTimeZone::utc()));
    zonaAntes.isNull() ? qunsetenv("TZ") : qputenv("TZ", zonaAntes);
    tzset();
    EXPECT_EQ(texto, QStringLiteral("4 de julio de 2026, 22:30"));
}

TEST(ReporteHTML, escribeElArchivoOInformaElFallo) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString ruta = dir.filePath(QString::fromStdString(nombreArchivoReporte("Fase 2/3")));
    EXPECT_TRUE(ruta.endsWith(QStringLiteral("/Fase 2-3.html")));
    // A longer earlier file is cut to the new text.
    ASSERT_EQ(escribirArchivoReporte(ruta, "contenido anterior, más largo que el nuevo"), "");
    EXPECT_EQ(escribirArchivoReporte(ruta, "<!DOCTYPE html>ñ"), "");
    QFile f(ruta);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), QByteArray("<!DOCTYPE html>ñ"));
    EXPECT_EQ(escribirArchivoReporte(dir.filePath(QStringLiteral("no/existe.html")), "x"),
              "El archivo o la carpeta no existe.");
}
