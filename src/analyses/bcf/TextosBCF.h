#pragma once

#include "analyses/clash/Interferencias.h"

#include <string>
#include <string_view>
#include <vector>

// The documents of a BCF 2.1 archive of clashes, built by joining fixed
// literals and values. Line ends are single line feeds and no text ends with
// one. Two forms share the writer:
// - estandar: what other coordination tools read, valid against the BCF 2.1
//   schemas (markup.xsd, visinfo.xsd, project.xsd, version.xsd): labels as
//   repeated <Labels> after the title, one <Viewpoints Guid> per viewpoint,
//   the components (with the elements' IfcGuid) before the camera, and an
//   extensions.xsd in the archive that declares the topic types, statuses
//   and labels; no character that XML forbids, no number that is not finite.
// - literalTESKAL: the earlier texts, byte for byte, kept for the tools made
//   to read them; its up vector is the world's Y made perpendicular to the view.
namespace teskal {

enum class FormaBCF { estandar, literalTESKAL };

// The value as XML text: "&", "<", ">" and the double quotation mark become
// entities; the apostrophe stays.
std::string escaparXML(std::string_view texto);

// escaparXML, and only characters that XML allows: the C0 controls other than
// tab, line feed and carriage return, U+FFFE and U+FFFF are left out, and each
// byte that is not part of well-formed UTF-8 becomes U+FFFD.
std::string textoXML(std::string_view texto);

// An identifier as the archive writes it: the UUID text in upper case.
std::string guidBCF(std::string_view id);

// True for an IFC GlobalId as the viewpoint's IfcGuid takes it: 22
// characters of 0-9, A-Z, a-z, "_" and "$".
bool esIfcGuid(std::string_view globalId);

// bcf.version: the fixed version document, the same in both forms.
std::string textoVersionBCF();

// project.bcfp: the project `projectId` named `nombreProyecto`, pointing to
// extensions.xsd.
std::string textoProyectoBCF(std::string_view projectId, std::string_view nombreProyecto,
                             FormaBCF forma = FormaBCF::estandar);

// <id>/markup.bcf: the topic of one clash of the analysis, with its one
// viewpoint and snapshot.
std::string textoMarkupBCF(const AnalisisInterferencias& analisis,
                           const Interferencia& interferencia, std::string_view viewpointGuid,
                           FormaBCF forma = FormaBCF::estandar);

// <id>/viewpoint.bcfv: the camera of the clash and its two elements, named by
// their element names and, in the standard form, by their GlobalIds where
// they have one. A camera with a value that is not finite is left out of the
// standard form.
std::string textoViewpointBCF(const Interferencia& interferencia, std::string_view viewpointGuid,
                              FormaBCF forma = FormaBCF::estandar);

// extensions.xsd of the standard form: the topic type "Clash", the four topic
// statuses the review states map to, and the labels the analysis's topics
// carry ("Clash" and their disciplines, each once, in order of appearance),
// as restrictions of markup.xsd's types.
std::string textoExtensionesBCF(const AnalisisInterferencias& analisis);
// The same schema for any topic types, statuses and labels, in the order given.
std::string textoExtensionesBCF(const std::vector<std::string_view>& tipos,
                                const std::vector<std::string_view>& estados,
                                const std::vector<std::string_view>& etiquetas);

// The archive's file name: the analysis name keeping only the letters and
// digits of any script, "-", "_" and blank, then ".bcf"; everything else is
// deleted, nothing takes its place. Characters are taken as a reader sees
// them: a letter with combining accents stays whole, and an accent on a
// deleted character goes with it.
std::string nombreArchivoBCF(std::string_view nombreAnalisis);

} // namespace teskal
