#pragma once

#include "timeline/PaqueteAWP.h"

#include <QDialog>
#include <functional>
#include <set>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QTableWidget;
class QWidget;

namespace teskal {

class ContentView;

// "Importar paquetes AWP desde CSV": the packages a CSV gave, for the user to
// pick; "Importar" hands the chosen ones, in file order, to onConfirmar.
class ImportarCSVView : public QDialog {
    Q_OBJECT
public:
    ImportarCSVView(std::vector<PaqueteAWP> paquetes, std::function<void(std::vector<PaqueteAWP>)> onConfirmar,
                    QWidget* parent = nullptr);

    // Picks or leaves a package by its id.
    void fijarSeleccion(const std::string& id, bool elegido);
    const std::set<std::string>& seleccionados() const { return seleccionados_; }
    const std::vector<PaqueteAWP>& paquetes() const { return paquetes_; }

private:
    void sincronizar();

    std::vector<PaqueteAWP> paquetes_;
    std::function<void(std::vector<PaqueteAWP>)> onConfirmar_;
    std::set<std::string> seleccionados_; // ids
    QLabel* conteo_ = nullptr;
    QTableWidget* tabla_ = nullptr;
    QPushButton* importar_ = nullptr;
};

// The timeline window's commands on work packages from and to other
// sources. "Importar CSV": the file panel, then the confirmation sheet or
// the alert "Error al importar CSV".
void seleccionarCSV(ContentView& cv, QWidget* ventana);
// The same from a path chosen already.
void importarCSVDe(ContentView& cv, QWidget* ventana, const std::string& ruta);
// "Exportar CSV": the save panel, then the file; a failed write goes to the
// error channel.
void exportarCSV(ContentView& cv, QWidget* ventana);
// The "Detector de Parámetros AWP" sheet.
void abrirDetectorAWP(ContentView& cv, QWidget* ventana);

} // namespace teskal
