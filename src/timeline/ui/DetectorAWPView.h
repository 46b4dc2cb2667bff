#pragma once

#include "timeline/DetectorAWP.h"

#include <QDialog>
#include <map>
#include <set>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace teskal {

class ContentView;
class IndicadorGiro;

// "Detector de Parámetros AWP", a sheet of the timeline window: scans the
// property index of the loaded models on the thread pool, lists the packages
// found by level with their element counts, and imports the selected ones
// with their elements and inferred parents.
class DetectorAWPView : public QDialog {
    Q_OBJECT
public:
    explicit DetectorAWPView(ContentView& cv, QWidget* parent = nullptr);

    // "Detectar ahora" / "Detectar de nuevo": the former results go, a scan
    // of a copy of the index starts.
    void detectar();
    // "Importar seleccionados": the chosen results into the plan, then the
    // sheet closes.
    void importarSeleccionados();
    // Chooses or leaves a code: every result that bears it follows.
    void fijarSeleccion(const std::string& codigo, bool elegido);

    const std::vector<ResultadoAWP>& resultados() const { return resultados_; }
    const std::set<std::string>& seleccionados() const { return seleccionados_; }
    bool detectando() const { return detectando_; }

signals:
    // A scan delivered its results (possibly none).
    void deteccionTerminada();

private:
    void recibir(std::vector<ResultadoAWP> resultados);
    void reconstruirLista();
    void sincronizar();

    ContentView& cv_;
    std::vector<ResultadoAWP> resultados_;
    bool detectando_ = false;
    std::set<std::string> seleccionados_;

    QStackedWidget* paginas_ = nullptr;
    QPushButton* detectarAhora_ = nullptr;
    IndicadorGiro* giro_ = nullptr;
    QLabel* conteo_ = nullptr;
    QTreeWidget* lista_ = nullptr;
    QPushButton* detectarDeNuevo_ = nullptr;
    QPushButton* importar_ = nullptr;
    // The rows of each code, to check them together.
    std::map<std::string, std::vector<QTreeWidgetItem*>> filasPorCodigo_;
};

} // namespace teskal
