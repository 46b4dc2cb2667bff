#pragma once

#include "analyses/clash/Interferencias.h"

#include <string>
#include <string_view>

// The documents of a BCF 2.1 archive of clashes, built by joining fixed
// literals and values: the literals are the format, to the byte. Line ends are
// single line feeds and no text ends with one.
namespace teskal {

// The value as XML text: "&", "<", ">" and the double quotation mark become
// entities; the apostrophe stays.
std::string escaparXML(std::string_view texto);

// An identifier as the archive writes it: the UUID text in upper case.
std::string guidBCF(std::string_view id);

// bcf.version: the fixed version document.
std::string textoVersionBCF();

// project.bcfp: the project `projectId` named `nombreProyecto`.
std::string textoProyectoBCF(std::string_view projectId, std::string_view nombreProyecto);

// <id>/markup.bcf: the topic of one clash of the analysis, with its one
// viewpoint and snapshot.
std::string textoMarkupBCF(const AnalisisInterferencias& analisis,
                           const Interferencia& interferencia, std::string_view viewpointGuid);

// <id>/viewpoint.bcfv: the camera of the clash and its two elements, named by
// their element names.
std::string textoViewpointBCF(const Interferencia& interferencia, std::string_view viewpointGuid);

// The archive's file name: the analysis name keeping only the letters and
// digits of any script, "-", "_" and blank, then ".bcf"; everything else is
// deleted, nothing takes its place. Characters are taken as a reader sees
// them: a letter with combining accents stays whole, and an accent on a
// deleted character goes with it.
std::string nombreArchivoBCF(std::string_view nombreAnalisis);

} // namespace teskal
