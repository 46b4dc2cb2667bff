#pragma once

#include <QDialog>

class QPushButton;
class QVBoxLayout;

namespace teskal {

class ContentView;

// The sheet "Configurar Análisis de Interferencias": name, method (with the
// clearance of "Holgura"), tolerance, the
// discipline pairs to search and the exclusion of closed pairs. "Cancelar",
// Escape and the close box all close it for good: the pending sheet is
// cleared, so the next change of the workspace does not open it again.
class DialogoConfigAnalisis : public QDialog {
    Q_OBJECT
public:
    DialogoConfigAnalisis(ContentView& cv, QWidget* parent);

    void reject() override;

private:
    void actualizarBoton();

    ContentView& cv_;
    QPushButton* iniciar_ = nullptr;
    QVBoxLayout* pares_ = nullptr;
};

} // namespace teskal
