#pragma once

#include <QWidget>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The sidebar section of the version comparison: the slots "Base" and
// "Nueva" with their files, then "Comparar versiones" or, while a comparison
// stands, its four counts, "Ver Informe XOR" and "Limpiar XOR".
class PanelComparacionXOR : public QWidget {
    Q_OBJECT
public:
    explicit PanelComparacionXOR(ContentView& cv, QWidget* parent = nullptr);

signals:
    // "Ver Informe XOR": the window opens the change report.
    void informeSolicitado();

private:
    void reconstruir();
    QWidget* filaSlot(const std::string& slot, QWidget* padre);

    ContentView& cv_;
    QVBoxLayout* caja_ = nullptr;
    QWidget* contenido_ = nullptr;
};

} // namespace teskal
