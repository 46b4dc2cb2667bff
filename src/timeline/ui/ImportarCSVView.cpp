#include "timeline/ui/ImportarCSVView.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "timeline/CSVAWP.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ui/DetectorAWPView.h"
#include "timeline/ui/TimeLinerView.h"
#include "ui/TextoQt.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace teskal {

namespace {

QString fecha(const QDateTime& f) { return q(textoFechaGantt(f, "dd-MM-yyyy")); }

} // namespace

ImportarCSVView::ImportarCSVView(std::vector<PaqueteAWP> paquetes,
                                 std::function<void(std::vector<PaqueteAWP>)> onConfirmar, QWidget* parent)
    : QDialog(parent), paquetes_(std::move(paquetes)), onConfirmar_(std::move(onConfirmar)) {
    setObjectName(QStringLiteral("importarCSV"));
    temaTimeline(*this);
    setWindowTitle(QStringLiteral("Importar paquetes AWP desde CSV"));
    resize(820, 560);
    auto* v = new QVBoxLayout(this);
    auto* titulo = new QLabel(QStringLiteral("Importar paquetes AWP desde CSV"), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    v->addWidget(titulo);
    conteo_ = new QLabel(this);
    conteo_->setObjectName(QStringLiteral("conteo"));
    v->addWidget(conteo_);

    const QStringList columnas{QStringLiteral("Nivel"), QStringLiteral("Código"), QStringLiteral("Nombre"),
                               QStringLiteral("Padre"), QStringLiteral("Inicio"), QStringLiteral("Fin"),
                               QStringLiteral("Avance")};
    tabla_ = new QTableWidget(static_cast<int>(paquetes_.size()), static_cast<int>(columnas.size()), this);
    tabla_->setObjectName(QStringLiteral("paquetesCSV"));
    tabla_->setHorizontalHeaderLabels(columnas);
    tabla_->verticalHeader()->hide();
    tabla_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tabla_->setSelectionMode(QAbstractItemView::NoSelection);
    tabla_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    for (int fila = 0; fila < static_cast<int>(paquetes_.size()); ++fila) {
        const PaqueteAWP& p = paquetes_[static_cast<std::size_t>(fila)];
        const QString textos[] = {q(textoNivel(p.nivel)), q(p.codigo),       q(p.nombre),
                                  q(p.parentCodigo.value_or("")), fecha(p.fechaInicio), fecha(p.fechaFin),
                                  q(formato("%.0f%%", p.progreso * 100))};
        for (int c = 0; c < static_cast<int>(std::size(textos)); ++c) {
            auto* item = new QTableWidgetItem(textos[c]);
            item->setFlags(c == 0 ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::ItemIsEnabled);
            if (c == 0) item->setCheckState(Qt::Unchecked);
            tabla_->setItem(fila, c, item);
        }
    }
    tabla_->resizeColumnsToContents();
    tabla_->horizontalHeader()->setSectionResizeMode(2, QHeaderView::Stretch);
    connect(tabla_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (item->column() != 0) return;
        fijarSeleccion(paquetes_[static_cast<std::size_t>(item->row())].id, item->checkState() == Qt::Checked);
    });
    v->addWidget(tabla_, 1);

    auto* pie = new QLabel(QStringLiteral("Columnas requeridas: Nivel (CWA/CWP/IWP/PWP), Código, Nombre, Inicio, "
                                          "Fin (YYYY-MM-DD o DD/MM/YYYY)"),
                           this);
    pie->setStyleSheet(QStringLiteral("color: #999; font-size: 11px;"));
    pie->setWordWrap(true);
    v->addWidget(pie);
    auto* botones = new QHBoxLayout;
    auto* cancelar = new QPushButton(QStringLiteral("Cancelar"), this);
    cancelar->setObjectName(QStringLiteral("cancelar"));
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    importar_ = new QPushButton(this);
    importar_->setObjectName(QStringLiteral("importar"));
    importar_->setDefault(true);
    connect(importar_, &QPushButton::clicked, this, [this] {
        std::vector<PaqueteAWP> elegidos;
        for (const PaqueteAWP& p : paquetes_)
            if (seleccionados_.contains(p.id)) elegidos.push_back(p);
        if (onConfirmar_) onConfirmar_(std::move(elegidos));
        accept();
    });
    botones->addWidget(cancelar);
    botones->addStretch(1);
    botones->addWidget(importar_);
    v->addLayout(botones);
    sincronizar();
}

void ImportarCSVView::fijarSeleccion(const std::string& id, bool elegido) {
    if (elegido)
        seleccionados_.insert(id);
    else
        seleccionados_.erase(id);
    {
        const QSignalBlocker bloqueo(tabla_);
        for (int fila = 0; fila < tabla_->rowCount(); ++fila)
            if (paquetes_[static_cast<std::size_t>(fila)].id == id)
                tabla_->item(fila, 0)->setCheckState(elegido ? Qt::Checked : Qt::Unchecked);
    }
    sincronizar();
}

void ImportarCSVView::sincronizar() {
    const auto n = [](std::size_t v) { return QString::number(static_cast<qulonglong>(v)); };
    conteo_->setText(n(paquetes_.size()) + QStringLiteral(" paquetes encontrados · ") + n(seleccionados_.size()) +
                     QStringLiteral(" seleccionados"));
    importar_->setText(QStringLiteral("Importar ") + n(seleccionados_.size()) + QStringLiteral(" paquetes"));
    importar_->setEnabled(!seleccionados_.empty());
}

void seleccionarCSV(ContentView& cv, QWidget* ventana) {
    auto* panel = new QFileDialog(ventana, QStringLiteral("Importar CSV"));
    panel->setObjectName(QStringLiteral("panelImportarCSV"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilter(QStringLiteral("Valores separados por comas (*.csv)"));
    panel->setLabelText(QFileDialog::LookIn, QStringLiteral("Selecciona un archivo CSV con paquetes AWP"));
    panel->setWindowTitle(QStringLiteral("Selecciona un archivo CSV con paquetes AWP"));
    QObject::connect(panel, &QFileDialog::fileSelected, ventana,
                     [&cv, ventana](const QString& ruta) { importarCSVDe(cv, ventana, ruta.toStdString()); });
    panel->open();
}

void importarCSVDe(ContentView& cv, QWidget* ventana, const std::string& ruta) {
    std::vector<PaqueteAWP> paquetes = leerCSVAWP(ruta);
    if (paquetes.empty()) {
        auto* alerta = new QMessageBox(QMessageBox::Warning, QStringLiteral("Error al importar CSV"),
                                       q(mensajeCSVSinPaquetes), QMessageBox::Ok, ventana);
        alerta->setObjectName(QStringLiteral("errorCSV"));
        alerta->button(QMessageBox::Ok)->setText(QStringLiteral("OK"));
        alerta->setAttribute(Qt::WA_DeleteOnClose);
        alerta->open();
        return;
    }
    auto* vista = new ImportarCSVView(
        std::move(paquetes), [&cv](std::vector<PaqueteAWP> elegidos) { cv.importarPaquetesAWP(elegidos); }, ventana);
    vista->setAttribute(Qt::WA_DeleteOnClose);
    vista->open();
}

void exportarCSV(ContentView& cv, QWidget* ventana) {
    auto* panel = new QFileDialog(ventana, QStringLiteral("Exportar CSV"));
    panel->setObjectName(QStringLiteral("panelExportarCSV"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(QStringLiteral("Valores separados por comas (*.csv)"));
    panel->setDefaultSuffix(QStringLiteral("csv"));
    panel->selectFile(q(nombreCSVAWP) + QStringLiteral(".csv"));
    QObject::connect(panel, &QFileDialog::fileSelected, ventana,
                     [&cv](const QString& ruta) { cv.exportarCSVAWP(ruta.toStdString()); });
    panel->open();
}

void abrirDetectorAWP(ContentView& cv, QWidget* ventana) {
    auto* detector = new DetectorAWPView(cv, ventana);
    detector->setAttribute(Qt::WA_DeleteOnClose);
    detector->open();
}

} // namespace teskal
