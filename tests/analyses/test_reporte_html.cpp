// The printable report of a clash analysis: the document's parts in order,
// counts, rows, badges and thumbnails, raw values, the file name, the date
// text and the write of the file.
#include "analyses/clash/ReporteHTML.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <ctime>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

Interferencia clash(const std::string& id, const std::string& a, const std::string& b,
                    EstadoClash e) {
    Interferencia i;
    i.id = id;
    i.nombreA = a;
    i.nombreB = b;
    i.especialidadA = "ARQ";
    i.especialidadB = "MEP";
    i.estado = e;
    return i;
}

AnalisisInterferencias analisisDePrueba() {
    AnalisisInterferencias a;
    a.id = "A0000000-0000-0000-0000-000000000001";
    a.nombre = "Fase 1";
    a.tolerancia = 0.025;
    a.fecha = QDateTime(QDate(2026, 3, 1), QTime(14, 5, 9));
    a.interferencias = {
        clash("ID-1", "Muro 1", "Tubo 1", EstadoClash::abierto),
        clash("ID-2", "Muro 2", "Tubo 2", EstadoClash::enRevision),
        clash("ID-3", "Losa 3", "Ducto 3", EstadoClash::aprobado),
        clash("ID-4", "Losa 4", "Ducto 4", EstadoClash::resuelto),
        clash("ID-5", "Viga 5", "Tubo 5", EstadoClash::abierto),
        clash("ID-6", "Viga 6", "Tubo 6", EstadoClash::resuelto),
        clash("ID-7", "Viga 7", "Tubo 7", EstadoClash::abierto),
    };
    return a;
}

std::size_t contar(const std::string& texto, const std::string& trozo) {
    std::size_t n = 0;
    for (auto p = texto.find(trozo); p != std::string::npos;
         p = texto.find(trozo, p + trozo.size()))
        ++n;
    return n;
}

// The text between `desde` and the next `hasta`, from the first `desde`.
std::string entre(const std::string& texto, const std::string& desde, const std::string& hasta) {
    const auto a = texto.find(desde);
    if (a == std::string::npos) return {};
    const auto b = texto.find(hasta, a + desde.size());
    return b == std::string::npos ? std::string()
                                  : texto.substr(a + desde.size(), b - a - desde.size());
}

} // namespace

TEST(ReporteHTML, documentoConCabeceraTarjetasFilasYPie) {
    const AnalisisInterferencias a = analisisDePrueba();
    const QByteArray png("\x89PNG\r\n\x1a\nfalso", 13);
    const std::map<std::string, QByteArray> thumbnails = {{"ID-2", png}, {"ID-5", QByteArray()}};
    const std::string html =
        documentoReporteHTML(a, thumbnails, QStringLiteral("1 de marzo de 2026, 14:05"));

    // Opening, style sheet and closing in their places.
    EXPECT_EQ(
        html.rfind("<!DOCTYPE html><html lang=\"es\">\n<head><meta charset=\"UTF-8\">\n<style>", 0),
        0u);
    EXPECT_NE(
        html.find(
            "</style></head><body><div class=\"header\"><div><h1>Informe de Interferencias BIM</h1>"
            "<h2>Fase 1</h2><div class=\"meta\">Fecha: 1 de marzo de 2026, 14:05 &nbsp;·&nbsp; "
            "Tolerancia: 0.025 m &nbsp;·&nbsp; 7 colisiones detectadas</div></div>"
            "<div class=\"brand\">VORNEL</div></div>"),
        std::string::npos);
    const std::string css = entre(html, "<style>", "</style>");
    for (const char* regla :
         {".badge.enrevision", ".card.solved", "table.main th", ".thumb", "@media print",
          "border-collapse: collapse", "object-fit: cover", "#ff9500"})
        EXPECT_NE(css.find(regla), std::string::npos) << regla;

    // Five cards: total 7, open 3, under review 1, approved 1, solved 2.
    EXPECT_NE(
        html.find(
            "<div class=\"cards\">"
            "<div class=\"card total\"><div class=\"n\">7</div><div class=\"lbl\">Total</div></div>"
            "<div class=\"card open\"><div class=\"n\">3</div><div "
            "class=\"lbl\">Abiertos</div></div>"
            "<div class=\"card review\"><div class=\"n\">1</div><div class=\"lbl\">En "
            "revisión</div></div>"
            "<div class=\"card aprob\"><div class=\"n\">1</div><div "
            "class=\"lbl\">Aprobados</div></div>"
            "<div class=\"card solved\"><div class=\"n\">2</div><div "
            "class=\"lbl\">Resueltos</div></div>"
            "</div>"),
        std::string::npos);
    EXPECT_NE(
        html.find(
            "<table class=\"main\"><thead><tr><th>#</th><th>Vista 3D</th><th>Elemento A</th>"
            "<th>Esp. A</th><th>Elemento B</th><th>Esp. B</th><th>Estado</th></tr></thead><tbody>"),
        std::string::npos);

    // One row per clash, numbered from 1 in list order.
    EXPECT_EQ(contar(html, "<tr>\n"), a.interferencias.size());
    std::size_t desde = 0;
    for (std::size_t k = 0; k < a.interferencias.size(); ++k) {
        SCOPED_TRACE(k);
        const std::string numero =
            "<tr>\n<td style=\"text-align:right;color:#999;\">" + std::to_string(k + 1) + "</td>";
        const auto p = html.find(numero, desde);
        ASSERT_NE(p, std::string::npos);
        const std::string fila = html.substr(p, html.find("</tr>", p) - p);
        EXPECT_NE(fila.find("<td><b>" + a.interferencias[k].nombreA +
                            "</b></td><td style=\"color:#666;\">ARQ</td>"
                            "<td><b>" +
                            a.interferencias[k].nombreB +
                            "</b></td><td style=\"color:#666;\">MEP</td>"),
                  std::string::npos);
        desde = p + 1;
    }
    // Badges in the order of the rows, by their classes.
    const char* clases[] = {"abierto\">Abierto",   "enrevision\">En revisión",
                            "aprobado\">Aprobado", "resuelto\">Resuelto",
                            "abierto\">Abierto",   "resuelto\">Resuelto",
                            "abierto\">Abierto"};
    desde = 0;
    for (const char* c : clases) {
        const auto p =
            html.find(std::string("<td><span class=\"badge ") + c + "</span></td></tr>", desde);
        ASSERT_NE(p, std::string::npos) << c;
        desde = p + 1;
    }

    // Only the clash with PNG bytes gets an image; empty bytes and a missing
    // entry give the empty box.
    EXPECT_EQ(contar(html, "<img class='thumb' src='data:image/png;base64,"), 1u);
    EXPECT_NE(html.find("<td><img class='thumb' src='data:image/png;base64," +
                        png.toBase64().toStdString() + "'></td>"),
              std::string::npos);
    EXPECT_EQ(contar(html, "<td><div class='thumb'></div></td>"), 6u);
    const auto fila2 = html.find(">2</td>");
    EXPECT_LT(fila2, html.find("<img class='thumb'"));
    EXPECT_GT(html.find(">3</td>"), html.find("<img class='thumb'"));

    EXPECT_TRUE(html.ends_with(
        "</tbody></table><div class=\"pie\">Generado por VORNEL · 1 de marzo de 2026, "
        "14:05</div></body></html>"));
}

TEST(ReporteHTML, cuentasDelPieDejanAprobadosFuera) {
    AnalisisInterferencias a = analisisDePrueba();
    CuentasReporte c = cuentasReporte(a);
    EXPECT_EQ(c.total, 7);
    EXPECT_EQ(c.resueltos, 2);
    EXPECT_EQ(c.pendientes(), 4); // three open, one under review
    // Approving an open clash takes it from the pending and adds nothing solved.
    a.interferencias[0].estado = EstadoClash::aprobado;
    c = cuentasReporte(a);
    EXPECT_EQ(c.pendientes(), 3);
    EXPECT_EQ(c.resueltos, 2);
    EXPECT_EQ(c.aprobados, 2);
    EXPECT_EQ(c.total, c.pendientes() + c.resueltos + c.aprobados);
}

TEST(ReporteHTML, sinInterferenciasTablaVaciaYValoresSinEscapar) {
    AnalisisInterferencias a;
    a.nombre = "R&D <norte>";
    a.tolerancia = 0.0;
    a.fecha = QDateTime(QDate(2025, 12, 31), QTime(23, 59));
    std::string html = documentoReporteHTML(a, {}, QStringLiteral("F"));
    EXPECT_NE(html.find("<tbody></tbody></table>"), std::string::npos);
    EXPECT_EQ(contar(html, "<tr>\n"), 0u);
    EXPECT_NE(html.find("<h2>R&D <norte></h2>"), std::string::npos);
    EXPECT_EQ(html.find("&amp;"), std::string::npos);
    EXPECT_EQ(html.find("&lt;"), std::string::npos);
    EXPECT_NE(html.find("Tolerancia: 0.000 m &nbsp;·&nbsp; 0 colisiones detectadas"),
              std::string::npos);
    for (const char* n : {"Total", "Abiertos", "En revisión", "Aprobados", "Resueltos"})
        EXPECT_NE(html.find(std::string("<div class=\"n\">0</div><div class=\"lbl\">") + n),
                  std::string::npos)
            << n;

    // Element names are written raw as well.
    a.interferencias.push_back(clash("X", "A&B<1>", "C\"D'", EstadoClash::abierto));
    html = documentoReporteHTML(a, {}, QStringLiteral("F"));
    EXPECT_NE(html.find("<td><b>A&B<1></b></td>"), std::string::npos);
    EXPECT_NE(html.find("<td><b>C\"D'</b></td>"), std::string::npos);
}

TEST(ReporteHTML, nombreDeArchivoClasesDeEstadoYRegistros) {
    EXPECT_EQ(nombreArchivoReporte("Fase 2/3"), "Fase 2-3.html");
    EXPECT_EQ(nombreArchivoReporte("a:b/c::d"), "a-b-c--d.html");
    EXPECT_EQ(nombreArchivoReporte("Ñandú & más?"), "Ñandú & más?.html");
    EXPECT_EQ(nombreArchivoReporte(""), ".html");

    EXPECT_EQ(claseBadge(EstadoClash::abierto), "abierto");
    EXPECT_EQ(claseBadge(EstadoClash::enRevision), "enrevision");
    EXPECT_EQ(claseBadge(EstadoClash::aprobado), "aprobado");
    EXPECT_EQ(claseBadge(EstadoClash::resuelto), "resuelto");

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
    if (zonaAntes.isNull())
        qunsetenv("TZ");
    else
        qputenv("TZ", zonaAntes);
    tzset();
    EXPECT_EQ(texto, QStringLiteral("4 de julio de 2026, 22:30"));
}

TEST(ReporteHTML, escribeElArchivoOInformaElFallo) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString ruta = dir.filePath(QString::fromStdString(nombreArchivoReporte("Fase 2/3")));
    const std::string texto = "<!DOCTYPE html>ñ";
    ASSERT_EQ(escribirArchivoReporte(ruta, "contenido anterior, más largo que el nuevo"), "");
    EXPECT_EQ(escribirArchivoReporte(ruta, texto), "");
    QFile f(ruta);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll().toStdString(), texto);
    EXPECT_TRUE(ruta.endsWith(QStringLiteral("/Fase 2-3.html")));

    EXPECT_EQ(escribirArchivoReporte(dir.filePath(QStringLiteral("no/existe.html")), texto),
              "El archivo o la carpeta no existe.");
}
