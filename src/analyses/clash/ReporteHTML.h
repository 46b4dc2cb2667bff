#pragma once

#include "analyses/clash/Interferencias.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <map>
#include <string>
#include <string_view>

// The printable report of a clash analysis: one HTML document with a head,
// five cards of counts, a table of clashes with their thumbnails and a foot,
// which the user opens in a browser to print or save as PDF. Every text the
// document prints is escaped: names come from users and from IFC files.
namespace teskal {

// The counts a report shows, over the clashes of one analysis.
struct CuentasReporte {
    int total = 0;
    int abiertos = 0;
    int enRevision = 0;
    int aprobados = 0;
    int resueltos = 0;

    // Still to deal with: open and under review. An approved clash is
    // neither pending nor solved.
    int pendientes() const { return abiertos + enRevision; }
};
CuentasReporte cuentasReporte(const AnalisisInterferencias& analisis);

// The text as HTML shows it, in element content and in attributes in either
// quotes: "&", "<", ">", the double quotation mark and the apostrophe become
// references.
std::string escaparHTML(std::string_view texto);

// The file name of the report: the analysis's name with every "/" and ":"
// turned into "-", then ".html".
std::string nombreArchivoReporte(std::string_view nombre);

// The class of a state's badge: its text in lower case without blanks or
// accents ("abierto", "enrevision", "aprobado", "resuelto").
std::string claseBadge(EstadoClash estado);

// "1 de marzo de 2026, 14:05": the long date and the short time of the
// Chilean Spanish locale, in local time.
QString textoFechaReporte(const QDateTime& fecha);

// The heading of a clash's measure in the reports: "Penetración" for the
// exact method, "Holgura" for the clearance check; empty for boxes, whose
// reports keep their columns.
std::string tituloMedida(MetodoAnalisis metodo);
// A clash's measure in millimetres, "12.5 mm"; empty without one.
std::string textoMilimetros(const Interferencia& i);

// "12 registros", "1 registro".
QString textoRegistros(int total);

// The whole document, titled "Informe de Interferencias BIM · " and the
// analysis's name. `thumbnails` holds PNG bytes by clash id; a clash without
// them (or with empty bytes) gets an empty box; an image's alt text names the
// clash's number and its two elements.
std::string documentoReporteHTML(const AnalisisInterferencias& analisis,
                                 const std::map<std::string, QByteArray>& thumbnails,
                                 const QString& fecha);

// Writes `texto` to `ruta`, replacing what is there. Empty on success,
// otherwise the Spanish description of the failure.
std::string escribirArchivoReporte(const QString& ruta, const std::string& texto);

} // namespace teskal
