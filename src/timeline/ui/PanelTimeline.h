#pragma once

#include <QWidget>

class QVBoxLayout;

namespace teskal {

class ContentView;

// The sidebar section "Timeline / Control de Obra": "Abrir Timeline" and the
// summary of the plan, its areas and its overall progress.
class PanelTimeline : public QWidget {
    Q_OBJECT
public:
    explicit PanelTimeline(ContentView& cv, QWidget* parent = nullptr);

signals:
    // "Abrir Timeline": the window opens the timeline.
    void abrirSolicitado();

private:
    void reconstruir();

    ContentView& cv_;
    QVBoxLayout* caja_ = nullptr;
    QWidget* contenido_ = nullptr;
};

} // namespace teskal
