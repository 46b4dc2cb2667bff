#pragma once

#include "qto/TablaQTO.h"

#include <QDialog>
#include <QPointer>
#include <QWidget>
#include <set>
#include <string>
#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace teskal {

class ContentView;

// The parameters sheet: the properties found in the takeoff's elements,
// grouped by property set, to choose as extra columns. "Aplicar" hands the
// choice back through `seleccion()`.
class SheetParametrosIFC : public QDialog {
    Q_OBJECT
public:
    SheetParametrosIFC(std::vector<ParamDisponible> disponibles, const std::vector<std::string>& seleccionados,
                       QWidget* parent = nullptr);
    // The chosen keys: those chosen before in their order, then the new ones
    // in the catalogue's order.
    std::vector<std::string> seleccion() const;

private:
    void llenar();
    void actualizarCuentas();

    std::vector<ParamDisponible> disponibles_;
    std::vector<std::string> anteriores_;
    std::set<std::string> selLocal_;
    QLineEdit* busqueda_ = nullptr;
    QTreeWidget* lista_ = nullptr;
    QLabel* sinResultados_ = nullptr;
    QLabel* cuentas_ = nullptr;
    QPushButton* aplicar_ = nullptr;
    bool llenando_ = false;
};

// The takeoff window: a snapshot of groups as a sortable, filterable table
// with open groups and extra IFC columns, its totals, and "Exportar CSV".
// It never looks at the workspace again except to write the CSV through it.
class QuantityTakeoffView : public QWidget {
    Q_OBJECT
public:
    QuantityTakeoffView(TablaQTO tabla, ContentView& cv, QWidget* parent = nullptr);

    const TablaQTO& tabla() const { return tabla_; }
    void exportarCSV();
    void abrirParametros();

private:
    void reconstruir();
    void pulsarTitulo(int columna);
    void alternarGrupo(QTreeWidgetItem* fila);

    TablaQTO tabla_;
    ContentView& cv_;
    QLabel* elementos_ = nullptr;
    QLabel* tipos_ = nullptr;
    QLabel* toneladas_ = nullptr;
    QComboBox* filtro_ = nullptr;
    QPushButton* parametros_ = nullptr;
    QPushButton* quitar_ = nullptr;
    QLabel* activos_ = nullptr;
    QStackedWidget* cuerpo_ = nullptr;
    QTreeWidget* arbol_ = nullptr;
    QLabel* pie_ = nullptr;
    bool reconstruyendo_ = false;
    QPointer<SheetParametrosIFC> sheet_;
};

} // namespace teskal
