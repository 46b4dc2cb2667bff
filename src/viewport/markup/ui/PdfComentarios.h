#pragma once

#include "viewport/markup/ComentarioMarkup.h"

#include <QDateTime>
#include <QImage>
#include <QString>
#include <vector>

namespace teskal {

// The workbench's logo as the reports draw it.
QImage logoVORNEL();

// The comment report as an A4 PDF of 595 x 842 points: a cover with the
// title and the count, then one page per comment with its tag, description,
// author and date on a band, its picture (when it decodes) and its counts of
// strokes and texts, and a foot. The text is Liberation Sans (metrically
// Helvetica), embedded. `ahora` is the moment the report names. False, with
// the reason in `error`, when the file could not be written.
bool exportarPDFComentarios(const std::vector<ComentarioMarkup>& comentarios, const QString& ruta,
                            const QDateTime& ahora, QString* error = nullptr);

// "3 trazo(s)   ·   1 texto(s)", a count of 0 left out; empty for neither.
QString textoConteosComentario(const ComentarioMarkup& c);

} // namespace teskal
