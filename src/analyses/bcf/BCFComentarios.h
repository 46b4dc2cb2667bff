#pragma once

#include "analyses/bcf/TextosBCF.h"
#include "viewport/markup/ComentarioMarkup.h"

#include <QByteArray>
#include <QString>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The BCF 2.1 archive of markup comments: one "Comment" topic per comment,
// named by the comment's id, with its picture as the snapshot and no
// viewpoint file (a comment has no camera). Two forms, as for clashes:
// - estandar: valid against the BCF 2.1 schemas, values escaped, the snapshot
//   a real PNG (the picture converted by the caller), named by the topic only
//   when it is there, and an extensions.xsd declaring the type "Comment";
// - literalTESKAL: the earlier texts byte for byte, values as they are, and
//   the JPEG bytes of the picture under the name snapshot.png.
namespace teskal {

// bcf.version: the standard text, or the literal one without the schema
// location and with the DetailedVersion line indented by two blanks.
std::string textoVersionComentariosBCF(FormaBCF forma);
// project.bcfp of the project "VORNEL Comentarios".
std::string textoProyectoComentariosBCF(std::string_view projectId, FormaBCF forma);
// <id>/markup.bcf of one comment. The title is the tag, then ": " and the
// description when there is one. The standard form names the snapshot only
// `conSnapshot`; the literal one always does.
std::string textoMarkupComentarioBCF(const ComentarioMarkup& c, std::string_view viewpointGuid, FormaBCF forma,
                                     bool conSnapshot);
// The archive's place: the chosen one, with ".bcf" appended when its
// extension is another one or none.
QString destinoBCFComentarios(const QString& ruta);

struct BCFComentarios {
    std::vector<ComentarioMarkup> comentarios;
    std::map<std::string, QByteArray> snapshotsPNG; // comment id -> its picture as PNG (standard form)
    FormaBCF forma = FormaBCF::estandar;

    // Writes the folder of texts under a new UUID in the temporary directory,
    // packs it with /usr/bin/zip into `destino` (what stood there is removed
    // first), and removes the folder. False when a folder or a text could
    // not be made or zip failed; the export stops at the first failure.
    bool escribir(const QString& destino) const;
};

} // namespace teskal
