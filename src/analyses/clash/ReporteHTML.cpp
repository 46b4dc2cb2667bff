#include "analyses/clash/ReporteHTML.h"

#include "federation/ErroresSistema.h"
#include "federation/Formato.h"

#include <QLocale>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace teskal {

namespace {

// Print-friendly: light cards in the colours of the states, an orange head
// for the table, thumbnails on a dark ground with an orange hairline.
constexpr const char* hojaEstilo =
    "* { box-sizing: border-box; }\n"
    "body { font-family: -apple-system, Helvetica, sans-serif; margin: 32px; color: #1c1c1e; "
    "font-size: 12px; background: #fff; }\n"
    ".header { display: flex; justify-content: space-between; align-items: flex-start; "
    "padding: 18px 20px; background: #f5f5f7; border-radius: 10px; margin-bottom: 20px; }\n"
    ".header h1 { font-size: 20px; margin: 0 0 4px; }\n"
    ".header h2 { font-size: 13px; margin: 0 0 6px; color: #555; font-weight: normal; }\n"
    ".header .meta { font-size: 10px; color: #888; }\n"
    ".header .brand { font-size: 11px; font-weight: bold; color: #ff9500; text-align: right; "
    "margin-top: 4px; }\n"
    ".cards { display: flex; gap: 10px; margin-bottom: 20px; }\n"
    ".card { flex: 1; text-align: center; padding: 12px 8px; border-radius: 8px; "
    "border: 1px solid #ddd; }\n"
    ".card .n { font-size: 26px; font-weight: 700; font-variant-numeric: tabular-nums; }\n"
    ".card .lbl { font-size: 10px; color: #666; margin-top: 2px; }\n"
    ".card.total { background: #fff3e0; border-color: #ff9500; }\n"
    ".card.open { background: #fdecea; border-color: #e53935; }\n"
    ".card.review { background: #fff8e1; border-color: #fb8c00; }\n"
    ".card.aprob { background: #e3f2fd; border-color: #1e88e5; }\n"
    ".card.solved { background: #e8f5e9; border-color: #43a047; }\n"
    "table.main { width: 100%; border-collapse: collapse; font-size: 11px; }\n"
    "table.main th { background: #fff3e0; color: #555; font-size: 10px; padding: 7px 10px; "
    "text-align: left; border-bottom: 2px solid #ffd09e; }\n"
    "table.main td { padding: 7px 10px; vertical-align: middle; border-bottom: 1px solid #f0f0f0; "
    "}\n"
    "table.main tr:nth-child(even) td { background: #fafafa; }\n"
    ".thumb { width: 120px; height: 78px; object-fit: cover; border-radius: 5px; "
    "background: #1a1a1a; border: 1px solid rgba(255,149,0,0.3); }\n"
    ".badge { display: inline-block; padding: 2px 8px; border-radius: 4px; font-size: 10px; "
    "font-weight: 600; }\n"
    ".badge.abierto { background: #fdecea; color: #c62828; }\n"
    ".badge.enrevision { background: #fff3e0; color: #e65100; }\n"
    ".badge.aprobado { background: #e3f2fd; color: #1565c0; }\n"
    ".badge.resuelto { background: #e8f5e9; color: #2e7d32; }\n"
    ".pie { font-size: 10px; color: #999; margin-top: 16px; text-align: right; }\n"
    "hr { border: none; border-top: 2px solid #ff9500; margin: 0 0 20px; }\n"
    "@media print { body { margin: 16px; } }\n";

void tarjeta(std::string& html, const char* clase, int n, const char* etiqueta) {
    html += "<div class=\"card ";
    html += clase;
    html += "\"><div class=\"n\">";
    html += std::to_string(n);
    html += "</div><div class=\"lbl\">";
    html += etiqueta;
    html += "</div></div>";
}

void celdaThumbnail(std::string& html, const std::map<std::string, QByteArray>& thumbnails,
                    const Interferencia& i, int numero) {
    const auto it = thumbnails.find(i.id);
    if (it == thumbnails.end() || it->second.isEmpty()) {
        html += "<div class='thumb'></div>";
        return;
    }
    html += "<img class='thumb' alt='Vista 3D de la interferencia ";
    html += std::to_string(numero);
    html += ": ";
    html += escaparHTML(i.nombreA + " ↔ " + i.nombreB);
    html += "' src='data:image/png;base64,";
    html += it->second.toBase64().toStdString();
    html += "'>";
}

} // namespace

std::string escaparHTML(std::string_view texto) {
    std::string r;
    r.reserve(texto.size());
    for (const char c : texto) {
        switch (c) {
        case '&':
            r += "&amp;";
            break;
        case '<':
            r += "&lt;";
            break;
        case '>':
            r += "&gt;";
            break;
        case '"':
            r += "&quot;";
            break;
        case '\'':
            r += "&#39;";
            break;
        default:
            r += c;
        }
    }
    return r;
}

CuentasReporte cuentasReporte(const AnalisisInterferencias& analisis) {
    CuentasReporte c;
    c.total = static_cast<int>(analisis.interferencias.size());
    c.abiertos = analisis.cuenta(EstadoClash::abierto);
    c.enRevision = analisis.cuenta(EstadoClash::enRevision);
    c.aprobados = analisis.cuenta(EstadoClash::aprobado);
    c.resueltos = analisis.cuenta(EstadoClash::resuelto);
    return c;
}

std::string nombreArchivoReporte(std::string_view nombre) {
    std::string archivo(nombre);
    for (char& c : archivo)
        if (c == '/' || c == ':') c = '-';
    return archivo + ".html";
}

std::string claseBadge(EstadoClash estado) {
    QString clase = QString::fromUtf8(textoEstado(estado).data(),
                                      static_cast<qsizetype>(textoEstado(estado).size()))
                        .toLower();
    clase.remove(QLatin1Char(' '));
    clase.replace(QStringLiteral("ó"), QStringLiteral("o"));
    clase.replace(QStringLiteral("é"), QStringLiteral("e"));
    return clase.toStdString();
}

QString textoFechaReporte(const QDateTime& fecha) {
    // The long date without the weekday, then the locale's short time.
    const QLocale chile(QStringLiteral("es_CL"));
    const QDateTime local = fecha.toLocalTime();
    return chile.toString(local.date(), QStringLiteral("d 'de' MMMM 'de' yyyy")) +
           QStringLiteral(", ") + chile.toString(local.time(), QLocale::ShortFormat);
}

QString textoRegistros(int total) {
    return QString::number(total) + QStringLiteral(" registro") +
           (total == 1 ? QString() : QStringLiteral("s"));
}

std::string tituloMedida(MetodoAnalisis metodo) {
    switch (metodo) {
    case MetodoAnalisis::geometriaExacta:
        return "Penetración";
    case MetodoAnalisis::holgura:
        return "Holgura";
    case MetodoAnalisis::cajasEnvolventes:
        break;
    }
    return {};
}

std::string textoMilimetros(const Interferencia& i) {
    return i.distancia ? formato("%.1f mm", *i.distancia * 1000.0) : std::string();
}

std::string documentoReporteHTML(const AnalisisInterferencias& analisis,
                                 const std::map<std::string, QByteArray>& thumbnails,
                                 const QString& fecha) {
    const CuentasReporte c = cuentasReporte(analisis);
    const std::string textoFecha = escaparHTML(fecha.toStdString());
    const std::string nombre = escaparHTML(analisis.nombre);
    std::string html;
    html.reserve(8192 + analisis.interferencias.size() * 1024);
    html += "<!DOCTYPE html><html lang=\"es\">\n<head><meta charset=\"UTF-8\">\n<title>"
            "Informe de Interferencias BIM · ";
    html += nombre;
    html += "</title>\n<style>";
    html += hojaEstilo;
    html += "</style></head><body>";

    html += "<div class=\"header\"><div><h1>Informe de Interferencias BIM</h1><h2>";
    html += nombre;
    html += "</h2><div class=\"meta\">Fecha: ";
    html += textoFecha;
    html += " &nbsp;·&nbsp; Tolerancia: ";
    html += formato("%.3f", analisis.tolerancia);
    html += " m &nbsp;·&nbsp; ";
    const std::string medida = tituloMedida(analisis.metodo);
    if (!medida.empty()) {
        html += "Método: ";
        html += textoMetodo(analisis.metodo);
        if (analisis.metodo == MetodoAnalisis::holgura) html += formato(" %.3f m", analisis.holgura);
        html += " &nbsp;·&nbsp; ";
    }
    html += std::to_string(c.total);
    html += " colisiones detectadas</div></div><div class=\"brand\">VORNEL</div></div>";

    html += "<div class=\"cards\">";
    tarjeta(html, "total", c.total, "Total");
    tarjeta(html, "open", c.abiertos, "Abiertos");
    tarjeta(html, "review", c.enRevision, "En revisión");
    tarjeta(html, "aprob", c.aprobados, "Aprobados");
    tarjeta(html, "solved", c.resueltos, "Resueltos");
    html += "</div>";

    html += "<table class=\"main\"><thead><tr><th>#</th><th>Vista 3D</th><th>Elemento A</th>"
            "<th>Esp. A</th><th>Elemento B</th><th>Esp. B</th>";
    if (!medida.empty()) html += "<th>" + medida + "</th>";
    html += "<th>Estado</th></tr></thead><tbody>";
    int numero = 0;
    for (const Interferencia& i : analisis.interferencias) {
        html += "<tr>\n<td style=\"text-align:right;color:#999;\">";
        html += std::to_string(++numero);
        html += "</td><td>";
        celdaThumbnail(html, thumbnails, i, numero);
        html += "</td><td><b>";
        html += escaparHTML(i.nombreA);
        html += "</b></td><td style=\"color:#666;\">";
        html += escaparHTML(i.especialidadA);
        html += "</td><td><b>";
        html += escaparHTML(i.nombreB);
        html += "</b></td><td style=\"color:#666;\">";
        html += escaparHTML(i.especialidadB);
        if (!medida.empty()) {
            html += "</td><td style=\"text-align:right;\">";
            html += textoMilimetros(i);
        }
        html += "</td><td><span class=\"badge ";
        html += claseBadge(i.estado);
        html += "\">";
        html += textoEstado(i.estado);
        html += "</span></td></tr>";
    }
    html += "</tbody></table><div class=\"pie\">Generado por VORNEL · ";
    html += textoFecha;
    html += "</div></body></html>";
    return html;
}

std::string escribirArchivoReporte(const QString& ruta, const std::string& texto) {
    const QByteArray camino = ruta.toLocal8Bit();
    const int fd = ::open(camino.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return describirErrorSistema(errno);
    std::size_t escrito = 0;
    while (escrito < texto.size()) {
        const ssize_t n = ::write(fd, texto.data() + escrito, texto.size() - escrito);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int codigo = errno;
            ::close(fd);
            return describirErrorSistema(codigo);
        }
        escrito += static_cast<std::size_t>(n);
    }
    if (::close(fd) != 0) return describirErrorSistema(errno);
    return {};
}

} // namespace teskal
