#pragma once

#include "analyses/bcf/TextosBCF.h"
#include "viewport/markup/ComentarioMarkup.h"

#include <QDateTime>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

namespace teskal {

// The comments' BCF archive of `forma` at `ruta` (".bcf" appended when its
// extension is another), written as one job on the thread pool on a copy:
// the standard form's snapshots are the pictures converted to PNG here, on
// the calling thread. `fin` runs on the main thread with true when the
// archive reached its place.
void exportarBCFComentarios(const std::vector<ComentarioMarkup>& comentarios, const QString& ruta, FormaBCF forma,
                            std::function<void(bool)> fin);

// The window "Reporte de Comentarios — VORNEL": the head with the count and
// the date, "Exportar BCF" and "Exportar PDF", and one card per comment of
// the copy taken when it opened. A failed export is reported through
// `alFallar` (the workspace's error channel).
class ReporteComentariosView : public QWidget {
    Q_OBJECT
public:
    ReporteComentariosView(std::vector<ComentarioMarkup> comentarios, std::function<void(std::string)> alFallar,
                           QWidget* parent = nullptr);

    const std::vector<ComentarioMarkup>& comentarios() const { return comentarios_; }
    // The exports the panels run on confirmation.
    bool exportarPDF(const QString& ruta);
    void exportarBCF(const QString& ruta, FormaBCF forma, std::function<void(bool)> fin = {});

private:
    void pedirPDF();
    void pedirBCF();

    std::vector<ComentarioMarkup> comentarios_;
    std::function<void(std::string)> alFallar_;
};

} // namespace teskal
