#include "timeline/ui/DetectorAWPView.h"

#include "federation/ContentView.h"
#include "federation/TrabajoSegundoPlano.h"
#include "timeline/ui/TimeLinerView.h"
#include "ui/Iconos.h"
#include "ui/IndicadorGiro.h"
#include "ui/TextoQt.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace teskal {

namespace {

// The icon of each level's section, in the levels' order.
constexpr const char* iconosNivel[] = {"map", "folder.fill", "list.clipboard.fill", "wrench.and.screwdriver.fill"};

QString elementos(std::size_t n) {
    return QString::number(static_cast<qulonglong>(n)) + QStringLiteral(" elemento(s)");
}

} // namespace

DetectorAWPView::DetectorAWPView(ContentView& cv, QWidget* parent) : QDialog(parent), cv_(cv) {
    setObjectName(QStringLiteral("detectorAWP"));
    temaTimeline(*this);
    setWindowTitle(QStringLiteral("Detector de Parámetros AWP"));
    resize(560, 620);
    auto* v = new QVBoxLayout(this);
    auto* titulo = new QLabel(QStringLiteral("Detector de Parámetros AWP"), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    auto* subtitulo = new QLabel(QStringLiteral("Extrae CWA · CWP · IWP · PWP desde las propiedades IFC"), this);
    subtitulo->setStyleSheet(QStringLiteral("color: #999;"));
    v->addWidget(titulo);
    v->addWidget(subtitulo);

    paginas_ = new QStackedWidget(this);
    // Before any result: what the scan does, and the command.
    auto* inicio = new QWidget(paginas_);
    auto* vi = new QVBoxLayout(inicio);
    vi->addStretch(1);
    auto* explicacion = new QLabel(
        QStringLiteral("Analiza los archivos IFC cargados para encontrar\nlos parámetros CWA, CWP, IWP y PWP."), inicio);
    explicacion->setAlignment(Qt::AlignCenter);
    vi->addWidget(explicacion);
    giro_ = new IndicadorGiro(24, inicio);
    giro_->hide();
    vi->addWidget(giro_, 0, Qt::AlignCenter);
    detectarAhora_ = new QPushButton(QStringLiteral("Detectar ahora"), inicio);
    detectarAhora_->setObjectName(QStringLiteral("detectarAhora"));
    connect(detectarAhora_, &QPushButton::clicked, this, &DetectorAWPView::detectar);
    vi->addWidget(detectarAhora_, 0, Qt::AlignCenter);
    vi->addStretch(1);
    paginas_->addWidget(inicio);

    // With results: the count, the selection commands and the list by level.
    auto* conResultados = new QWidget(paginas_);
    auto* vr = new QVBoxLayout(conResultados);
    vr->setContentsMargins(0, 0, 0, 0);
    auto* fila = new QHBoxLayout;
    conteo_ = new QLabel(conResultados);
    conteo_->setObjectName(QStringLiteral("conteo"));
    fila->addWidget(conteo_, 1);
    auto* todo = new QPushButton(QStringLiteral("Seleccionar todo"), conResultados);
    todo->setObjectName(QStringLiteral("seleccionarTodo"));
    connect(todo, &QPushButton::clicked, this, [this] {
        for (const ResultadoAWP& r : resultados_) seleccionados_.insert(r.codigo);
        sincronizar();
    });
    auto* limpiar = new QPushButton(QStringLiteral("Limpiar"), conResultados);
    limpiar->setObjectName(QStringLiteral("limpiar"));
    connect(limpiar, &QPushButton::clicked, this, [this] {
        seleccionados_.clear();
        sincronizar();
    });
    fila->addWidget(todo);
    fila->addWidget(limpiar);
    vr->addLayout(fila);
    lista_ = new QTreeWidget(conResultados);
    lista_->setObjectName(QStringLiteral("resultados"));
    lista_->setColumnCount(2);
    lista_->setHeaderHidden(true);
    lista_->setUniformRowHeights(true);
    lista_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    lista_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    lista_->header()->setStretchLastSection(false);
    connect(lista_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int columna) {
        if (columna != 0 || !item->parent()) return;
        fijarSeleccion(item->data(0, Qt::UserRole).toString().toStdString(), item->checkState(0) == Qt::Checked);
    });
    vr->addWidget(lista_, 1);
    paginas_->addWidget(conResultados);
    v->addWidget(paginas_, 1);

    auto* pie = new QHBoxLayout;
    auto* cancelar = new QPushButton(QStringLiteral("Cancelar"), this);
    cancelar->setObjectName(QStringLiteral("cancelar"));
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    detectarDeNuevo_ = new QPushButton(QStringLiteral("Detectar de nuevo"), this);
    detectarDeNuevo_->setObjectName(QStringLiteral("detectarDeNuevo"));
    connect(detectarDeNuevo_, &QPushButton::clicked, this, &DetectorAWPView::detectar);
    importar_ = new QPushButton(QStringLiteral("Importar seleccionados"), this);
    importar_->setObjectName(QStringLiteral("importarSeleccionados"));
    importar_->setDefault(true);
    connect(importar_, &QPushButton::clicked, this, &DetectorAWPView::importarSeleccionados);
    pie->addWidget(cancelar);
    pie->addStretch(1);
    pie->addWidget(detectarDeNuevo_);
    pie->addWidget(importar_);
    v->addLayout(pie);
    reconstruirLista();
}

void DetectorAWPView::detectar() {
    detectando_ = true;
    resultados_.clear();
    seleccionados_.clear();
    reconstruirLista();
    // The scan reads a copy: the workspace's index may change meanwhile.
    enSegundoPlano(
        this, [copia = cv_.propiedadesIFC] { return detectarAWP(copia); },
        [](DetectorAWPView& v, std::vector<ResultadoAWP> r) { v.recibir(std::move(r)); });
}

void DetectorAWPView::recibir(std::vector<ResultadoAWP> resultados) {
    resultados_ = std::move(resultados);
    for (const ResultadoAWP& r : resultados_) seleccionados_.insert(r.codigo);
    detectando_ = false;
    reconstruirLista();
    emit deteccionTerminada();
}

void DetectorAWPView::importarSeleccionados() {
    if (detectando_) return;
    cv_.importarDetectadosAWP(resultados_, seleccionados_);
    accept();
}

void DetectorAWPView::fijarSeleccion(const std::string& codigo, bool elegido) {
    if (elegido)
        seleccionados_.insert(codigo);
    else
        seleccionados_.erase(codigo);
    sincronizar();
}

void DetectorAWPView::reconstruirLista() {
    const QSignalBlocker bloqueo(lista_);
    lista_->clear();
    filasPorCodigo_.clear();
    std::array<QTreeWidgetItem*, 4> secciones{};
    std::size_t total = 0;
    for (const ResultadoAWP& r : resultados_) {
        const auto n = static_cast<std::size_t>(r.nivel);
        if (!secciones[n]) {
            secciones[n] = new QTreeWidgetItem(lista_, {q(textoNivel(r.nivel))});
            secciones[n]->setIcon(0, iconoSimbolo(iconosNivel[n]));
            secciones[n]->setFlags(Qt::ItemIsEnabled);
            QFont negrita = secciones[n]->font(0);
            negrita.setBold(true);
            secciones[n]->setFont(0, negrita);
        }
        auto* item = new QTreeWidgetItem(secciones[n], {q(r.codigo), elementos(r.elementos.size())});
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setData(0, Qt::UserRole, q(r.codigo));
        item->setCheckState(0, seleccionados_.contains(r.codigo) ? Qt::Checked : Qt::Unchecked);
        item->setForeground(1, QColor(0x99, 0x99, 0x99));
        filasPorCodigo_[r.codigo].push_back(item);
        total += r.elementos.size();
    }
    lista_->expandAll();
    conteo_->setText(QString::number(static_cast<qulonglong>(resultados_.size())) +
                     QStringLiteral(" paquetes detectados con ") + elementos(total));
    sincronizar();
}

void DetectorAWPView::sincronizar() {
    {
        const QSignalBlocker bloqueo(lista_);
        for (auto& [codigo, filas] : filasPorCodigo_) {
            const Qt::CheckState estado = seleccionados_.contains(codigo) ? Qt::Checked : Qt::Unchecked;
            for (QTreeWidgetItem* f : filas)
                if (f->checkState(0) != estado) f->setCheckState(0, estado);
        }
    }
    const bool hayResultados = !resultados_.empty();
    paginas_->setCurrentIndex(hayResultados ? 1 : 0);
    giro_->setVisible(detectando_);
    detectarAhora_->setEnabled(!detectando_);
    detectarDeNuevo_->setVisible(hayResultados);
    importar_->setEnabled(!detectando_ && hayResultados && !seleccionados_.empty());
}

} // namespace teskal
