#pragma once

#include "analyses/bcf/BCFExporter.h"

#include <QString>
#include <functional>

class QWidget;

namespace teskal {

// The file type of each form in the save panel: "BCF 2.1", chosen at first,
// and "BCF 2.1 — formato literal TESKAL", each with its patterns.
QString filtroBCF(FormaBCF forma);

// The save panel of a BCF archive: a modal file dialog with the two file
// types, `archivos.nombre` as the suggested file name and the message
// "Guardar informe BCF 2.1". On confirmation the archive of the chosen type
// is copied to the chosen place, replacing what stands there, and completion
// reports whether the copy worked; a cancelled panel calls `alCancelar`
// instead, as the user chose not to save. Returns at once: the dialog (object
// name "panelBCF") lives until it closes.
void guardarBCF(QWidget* padre, const ArchivosBCF& archivos, BCFExporter::Completion completion,
                std::function<void()> alCancelar);

} // namespace teskal
