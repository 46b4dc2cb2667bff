#pragma once

#include "analyses/bcf/BCFExporter.h"

#include <QString>
#include <string>

class QWidget;

namespace teskal {

// The save panel of a BCF archive: a modal file dialog with no type filter,
// `nombre` as the suggested file name and the message "Guardar informe BCF
// 2.1". On confirmation the archive at `ruta` is copied to the chosen place,
// replacing what stands there, and completion reports whether the copy
// worked; a cancelled panel reports false. Returns at once: the dialog
// (object name "panelBCF") lives until it closes.
void guardarBCF(QWidget* padre, const std::string& nombre, const QString& ruta,
                BCFExporter::Completion completion);

} // namespace teskal
