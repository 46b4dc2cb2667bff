#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <string>

class QCheckBox;
class QLabel;
class QToolButton;
class QScrollArea;
class QSlider;
class QStackedWidget;
class QVBoxLayout;

namespace teskal {

class ContentView;
class EditorPaqueteView;
class GraficoCurvaS;
class VistaGantt;

// The timeline's windows are dark, as its chart is: the palette and the
// label colour for a window named by its object name.
void temaTimeline(QWidget& w);

// The timeline window: the scrubber with its steps and "Auto %", the Gantt of
// the package tree, and beside it the earned-value panel or the S-curve.
// Opening puts the scrubber on the plan's start and, a moment later, shows
// the schedule on the 3D scene; stepping, dragging and playing move it on.
// Closing stops playback and restores the scene.
class TimeLinerView : public QWidget {
    Q_OBJECT
public:
    explicit TimeLinerView(ContentView& cv, QWidget* parent = nullptr);
    // A view released while still open restores the scene as closing does.
    ~TimeLinerView() override;

    // "Exportar Gantt a PDF": the save panel, then the file.
    void exportarGanttPDF();
    // Writes the PDF to this path; a failure goes to the error channel.
    bool exportarGanttPDFA(const std::string& ruta);
    // "Ver Ficha AWP": the package's sheet with its rendering.
    void abrirFichaAWP(const std::string& id);

protected:
    void showEvent(QShowEvent* evento) override;
    void closeEvent(QCloseEvent* evento) override;

private:
    QWidget* crearBarra();
    QWidget* crearScrubber();
    void sincronizar();
    void reconstruirPanelEVM();

    ContentView& cv_;
    bool iniciada_ = false;
    bool abierta_ = false; // shown and not closed yet: the scene shows the schedule
    QSlider* scrubber_ = nullptr;
    QLabel* fechaScrubber_ = nullptr;
    QCheckBox* autoAvance_ = nullptr;
    QToolButton* reproducir_ = nullptr;
    QLabel* estadoSync4D_ = nullptr;
    QTimer playTimer_; // 30 ticks a second while playing
    QScrollArea* desplazaGantt_ = nullptr;
    VistaGantt* gantt_ = nullptr;
    QStackedWidget* lateral_ = nullptr;
    QVBoxLayout* cajaEVM_ = nullptr;
    QWidget* contenidoEVM_ = nullptr;
    GraficoCurvaS* curva_ = nullptr;
    QPointer<EditorPaqueteView> editor_;
    int panelModo = 0; // 0 "EVM / Costo", 1 "S-Curve"
};

} // namespace teskal
