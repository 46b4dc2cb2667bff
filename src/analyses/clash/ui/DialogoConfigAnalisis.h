#pragma once

#include <QDialog>

class QPushButton;
class QVBoxLayout;

namespace teskal {

class ContentView;

// The sheet "Configurar Análisis de Interferencias": name, tolerance, the
// discipline pairs to search and the exclusion of closed pairs.
class DialogoConfigAnalisis : public QDialog {
    Q_OBJECT
public:
    DialogoConfigAnalisis(ContentView& cv, QWidget* parent);

private:
    void actualizarBoton();

    ContentView& cv_;
    QPushButton* iniciar_ = nullptr;
    QVBoxLayout* pares_ = nullptr;
};

} // namespace teskal
