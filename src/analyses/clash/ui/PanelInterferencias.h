#pragma once

#include <QWidget>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The sidebar section of clashes: "Nueva detección" (or "Analizando..."),
// then one collapsible row per analysis with its counts, and its clashes.
class PanelInterferencias : public QWidget {
    Q_OBJECT
public:
    explicit PanelInterferencias(ContentView& cv, QWidget* parent = nullptr);

signals:
    // "Ver Reporte" of the analysis at this index of the history.
    void reporteSolicitado(std::size_t indice);

private:
    void reconstruir();
    QWidget* filaAnalisis(std::size_t indice, QWidget* padre);
    QWidget* filaInterferencia(std::size_t analisis, std::size_t indice, QWidget* padre);

    ContentView& cv_;
    QVBoxLayout* caja_ = nullptr;
    QWidget* contenido_ = nullptr;
};

} // namespace teskal
