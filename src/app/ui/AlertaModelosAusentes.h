#pragma once

#include <QDialog>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The alert of an opened project or package whose model files were not
// found: one row per model with "Buscar…" to point at its file. Closing it
// leaves the models listed in the document.
class AlertaModelosAusentes : public QDialog {
    Q_OBJECT
public:
    AlertaModelosAusentes(ContentView& cv, QWidget* parent);
    // Rebuilds the rows from the workspace's list.
    void actualizar();

private:
    ContentView& cv_;
    QWidget* filas_ = nullptr;
    QVBoxLayout* cajaFilas_ = nullptr;
};

} // namespace teskal
