#include "qto/ui/QuantityTakeoffView.h"

#include "federation/ContentView.h"
#include "ui/TextoQt.h"

#include <QComboBox>
#include <QDateTime>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>

namespace teskal {

namespace {

// The sortable column behind each title; the density, dimension and extra
// columns sort nothing.
std::optional<OrdenQTO> ordenDeColumna(int columna) {
    switch (columna) {
    case 0: return OrdenQTO::tipoNombre;
    case 1: return OrdenQTO::especialidad;
    case 2: return OrdenQTO::cantidad;
    case 7: return OrdenQTO::volumen;
    case 8: return OrdenQTO::areaPlanta;
    case 9: return OrdenQTO::areaCara;
    case 10: return OrdenQTO::peso;
    default: return std::nullopt;
    }
}

int columnaDeOrden(OrdenQTO orden) {
    for (int c = 0; c < 11; ++c)
        if (ordenDeColumna(c) == orden) return c;
    return 0;
}

QLabel* cifra(const QString& titulo, QLabel** valor, QWidget* padre, QHBoxLayout* fila) {
    auto* caja = new QVBoxLayout;
    auto* v = new QLabel(padre);
    v->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: bold;"));
    auto* t = new QLabel(titulo, padre);
    t->setStyleSheet(QStringLiteral("color: gray;"));
    caja->addWidget(v);
    caja->addWidget(t);
    fila->addLayout(caja);
    *valor = v;
    return v;
}

constexpr int rolGrupo = Qt::UserRole;

} // namespace

SheetParametrosIFC::SheetParametrosIFC(std::vector<ParamDisponible> disponibles,
                                       const std::vector<std::string>& seleccionados, QWidget* parent)
    : QDialog(parent), disponibles_(std::move(disponibles)), anteriores_(seleccionados),
      selLocal_(seleccionados.begin(), seleccionados.end()) {
    setObjectName(QStringLiteral("sheetParametrosIFC"));
    setWindowTitle(QStringLiteral("Parámetros IFC"));
    resize(520, 560);
    auto* v = new QVBoxLayout(this);
    if (disponibles_.empty()) {
        auto* titulo = new QLabel(QStringLiteral("Sin propiedades IFC disponibles"), this);
        titulo->setStyleSheet(QStringLiteral("font-weight: bold;"));
        v->addWidget(titulo);
        for (const char* linea : {"Las propiedades IFC se detectan cuando:",
                                  "• El archivo IFC contiene Psets (Property Sets).",
                                  "• Los nombres de los elementos en el visor 3D coinciden",
                                  "  con los nombres en el archivo IFC original.",
                                  "• El archivo fue cargado con la opción de vinculación IFC."})
            v->addWidget(new QLabel(QString::fromUtf8(linea), this));
        v->addStretch(1);
    } else {
        auto* cabecera = new QHBoxLayout;
        cuentas_ = new QLabel(this);
        cuentas_->setObjectName(QStringLiteral("cuentasParametros"));
        cabecera->addWidget(cuentas_, 1);
        auto* ninguno = new QPushButton(QStringLiteral("Deseleccionar todos"), this);
        ninguno->setObjectName(QStringLiteral("deseleccionarTodos"));
        connect(ninguno, &QPushButton::clicked, this, [this] {
            selLocal_.clear();
            llenar();
        });
        cabecera->addWidget(ninguno);
        v->addLayout(cabecera);
        busqueda_ = new QLineEdit(this);
        busqueda_->setObjectName(QStringLiteral("busquedaParametros"));
        busqueda_->setPlaceholderText(QStringLiteral("Buscar propiedad"));
        busqueda_->setClearButtonEnabled(true);
        connect(busqueda_, &QLineEdit::textChanged, this, &SheetParametrosIFC::llenar);
        v->addWidget(busqueda_);
        lista_ = new QTreeWidget(this);
        lista_->setObjectName(QStringLiteral("listaParametros"));
        lista_->setColumnCount(2);
        lista_->setHeaderHidden(true);
        lista_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        lista_->header()->setStretchLastSection(false);
        connect(lista_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* fila) {
            if (llenando_) return;
            const QString clave = fila->data(0, Qt::UserRole).toString();
            if (clave.isEmpty()) return;
            if (fila->checkState(0) == Qt::Checked)
                selLocal_.insert(clave.toStdString());
            else
                selLocal_.erase(clave.toStdString());
            actualizarCuentas();
        });
        v->addWidget(lista_, 1);
        sinResultados_ = new QLabel(this);
        sinResultados_->setObjectName(QStringLiteral("sinResultados"));
        sinResultados_->setAlignment(Qt::AlignCenter);
        v->addWidget(sinResultados_);
    }
    auto* botones = new QHBoxLayout;
    botones->addStretch(1);
    auto* cancelar = new QPushButton(QStringLiteral("Cancelar"), this);
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    botones->addWidget(cancelar);
    aplicar_ = new QPushButton(this);
    aplicar_->setObjectName(QStringLiteral("aplicarParametros"));
    aplicar_->setDefault(true);
    connect(aplicar_, &QPushButton::clicked, this, &QDialog::accept);
    botones->addWidget(aplicar_);
    v->addLayout(botones);
    llenar();
}

void SheetParametrosIFC::llenar() {
    if (lista_) {
        llenando_ = true;
        lista_->clear();
        const std::string buscado = busqueda_->text().toStdString();
        const auto psets = agruparParametros(disponibles_, buscado);
        for (const PsetDisponible& p : psets) {
            auto* raiz = new QTreeWidgetItem(lista_, {q(p.pset)});
            QFont negrita = raiz->font(0);
            negrita.setBold(true);
            raiz->setFont(0, negrita);
            for (const ParamDisponible& d : p.parametros) {
                auto* fila = new QTreeWidgetItem(
                    raiz, {q(d.nombre.empty() ? d.clave : d.nombre), QString::number(d.cuenta) + QStringLiteral(" elem.")});
                fila->setData(0, Qt::UserRole, q(d.clave));
                fila->setFlags(fila->flags() | Qt::ItemIsUserCheckable);
                fila->setCheckState(0, selLocal_.contains(d.clave) ? Qt::Checked : Qt::Unchecked);
                fila->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
            }
        }
        lista_->expandAll();
        lista_->resizeColumnToContents(1);
        sinResultados_->setVisible(psets.empty());
        sinResultados_->setText(QStringLiteral("Sin resultados para \"%1\"").arg(busqueda_->text()));
        llenando_ = false;
    }
    actualizarCuentas();
}

void SheetParametrosIFC::actualizarCuentas() {
    if (cuentas_) {
        std::set<std::string> psets;
        for (const ParamDisponible& d : disponibles_) psets.insert(d.pset);
        cuentas_->setText(QStringLiteral("%1 Psets · %2 seleccionados").arg(psets.size()).arg(selLocal_.size()));
    }
    aplicar_->setText(QStringLiteral("Aplicar (%1)").arg(selLocal_.size()));
}

std::vector<std::string> SheetParametrosIFC::seleccion() const {
    std::vector<std::string> r;
    for (const std::string& c : anteriores_)
        if (selLocal_.contains(c)) r.push_back(c);
    for (const ParamDisponible& d : disponibles_)
        if (selLocal_.contains(d.clave) && std::find(r.begin(), r.end(), d.clave) == r.end()) r.push_back(d.clave);
    return r;
}

QuantityTakeoffView::QuantityTakeoffView(TablaQTO tabla, ContentView& cv, QWidget* parent)
    : QWidget(parent), tabla_(std::move(tabla)), cv_(cv) {
    setObjectName(QStringLiteral("ventanaQTO"));
    setWindowTitle(QStringLiteral("Cuantificación de Elementos (QTO)"));
    auto* v = new QVBoxLayout(this);

    // Header: the title and the three figures.
    auto* cabecera = new QHBoxLayout;
    auto* titulo = new QLabel(QStringLiteral("Cuantificación de Elementos (QTO)"), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    cabecera->addWidget(titulo, 1);
    cifra(QStringLiteral("Elementos"), &elementos_, this, cabecera);
    elementos_->setObjectName(QStringLiteral("cifraElementos"));
    cabecera->addSpacing(16);
    cifra(QStringLiteral("Tipos IFC"), &tipos_, this, cabecera);
    tipos_->setObjectName(QStringLiteral("cifraTipos"));
    cabecera->addSpacing(16);
    toneladas_ = new QLabel(this);
    toneladas_->setObjectName(QStringLiteral("cifraToneladas"));
    toneladas_->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: bold; color: #b35900;"));
    toneladas_->setToolTip(QStringLiteral("Peso total estimado en toneladas"));
    cabecera->addWidget(toneladas_);
    v->addLayout(cabecera);

    // Controls: filter, open groups, extra columns, export.
    auto* controles = new QHBoxLayout;
    controles->addWidget(new QLabel(QStringLiteral("Especialidad:"), this));
    filtro_ = new QComboBox(this);
    filtro_->setObjectName(QStringLiteral("filtroEsp"));
    for (const std::string& o : tabla_.opcionesFiltro()) filtro_->addItem(q(o));
    connect(filtro_, &QComboBox::currentTextChanged, this, [this](const QString& texto) {
        tabla_.filtroEsp = texto.toStdString();
        reconstruir();
    });
    controles->addWidget(filtro_);
    auto* expandir = new QPushButton(QStringLiteral("Expandir todo"), this);
    expandir->setObjectName(QStringLiteral("expandirTodo"));
    connect(expandir, &QPushButton::clicked, this, [this] {
        tabla_.expandirTodo();
        reconstruir();
    });
    controles->addWidget(expandir);
    auto* contraer = new QPushButton(QStringLiteral("Contraer todo"), this);
    contraer->setObjectName(QStringLiteral("contraerTodo"));
    connect(contraer, &QPushButton::clicked, this, [this] {
        tabla_.contraerTodo();
        reconstruir();
    });
    controles->addWidget(contraer);
    controles->addStretch(1);
    activos_ = new QLabel(this);
    activos_->setObjectName(QStringLiteral("parametrosActivos"));
    controles->addWidget(activos_);
    quitar_ = new QPushButton(QStringLiteral("Quitar parámetros extra"), this);
    quitar_->setObjectName(QStringLiteral("quitarParametros"));
    connect(quitar_, &QPushButton::clicked, this, [this] {
        tabla_.parametrosExtra.clear();
        reconstruir();
    });
    controles->addWidget(quitar_);
    parametros_ = new QPushButton(this);
    parametros_->setObjectName(QStringLiteral("botonParametros"));
    connect(parametros_, &QPushButton::clicked, this, &QuantityTakeoffView::abrirParametros);
    controles->addWidget(parametros_);
    auto* exportar = new QPushButton(QStringLiteral("Exportar CSV"), this);
    exportar->setObjectName(QStringLiteral("exportarCSV"));
    connect(exportar, &QPushButton::clicked, this, &QuantityTakeoffView::exportarCSV);
    controles->addWidget(exportar);
    v->addLayout(controles);

    // Body: the table, or the sentence for an empty filter.
    cuerpo_ = new QStackedWidget(this);
    arbol_ = new QTreeWidget(cuerpo_);
    arbol_->setObjectName(QStringLiteral("tablaQTO"));
    arbol_->setAlternatingRowColors(true);
    arbol_->setUniformRowHeights(true);
    arbol_->header()->setSectionsClickable(true);
    arbol_->header()->setSortIndicatorShown(true);
    arbol_->header()->setDefaultAlignment(Qt::AlignCenter);
    connect(arbol_->header(), &QHeaderView::sectionClicked, this, &QuantityTakeoffView::pulsarTitulo);
    connect(arbol_, &QTreeWidget::itemExpanded, this, &QuantityTakeoffView::alternarGrupo);
    connect(arbol_, &QTreeWidget::itemCollapsed, this, &QuantityTakeoffView::alternarGrupo);
    cuerpo_->addWidget(arbol_);
    auto* vacio = new QLabel(QStringLiteral("No hay datos para el filtro seleccionado."), cuerpo_);
    vacio->setObjectName(QStringLiteral("sinDatosQTO"));
    vacio->setAlignment(Qt::AlignCenter);
    vacio->setStyleSheet(QStringLiteral("color: gray;"));
    cuerpo_->addWidget(vacio);
    v->addWidget(cuerpo_, 1);

    // Footer: the totals, the moment of the snapshot and the note on weights.
    auto* pie = new QHBoxLayout;
    pie_ = new QLabel(this);
    pie_->setObjectName(QStringLiteral("pieQTO"));
    pie->addWidget(pie_, 1);
    auto* generado = new QLabel(QStringLiteral("Generado por TESKAL · ") +
                                    tabla_.fecha.toString(QStringLiteral("dd/MM/yyyy HH:mm")),
                                this);
    generado->setStyleSheet(QStringLiteral("color: gray;"));
    pie->addWidget(generado);
    v->addLayout(pie);
    auto* nota = new QLabel(QStringLiteral("* Pesos estimados con densidades por defecto por tipo IFC"), this);
    nota->setStyleSheet(QStringLiteral("color: gray; font-size: 11px;"));
    v->addWidget(nota);

    reconstruir();
}

void QuantityTakeoffView::reconstruir() {
    reconstruyendo_ = true;
    const int desplazamiento = arbol_->verticalScrollBar()->value();
    const int desplazamientoH = arbol_->horizontalScrollBar()->value();
    const TotalesQTO t = tabla_.totales();
    elementos_->setText(QString::number(t.cantidad));
    tipos_->setText(QString::number(t.tipos));
    toneladas_->setText(q(tabla_.textoToneladas()));
    pie_->setText(q(tabla_.textoPie()));

    const std::size_t extra = tabla_.parametrosExtra.size();
    const std::size_t disponibles = tabla_.parametrosDisponibles().size();
    parametros_->setText(QStringLiteral("Parámetros IFC (%1)").arg(extra));
    parametros_->setToolTip(disponibles ? QStringLiteral("Seleccionar parámetros del archivo IFC para añadir como columnas")
                                        : QStringLiteral("No se detectaron propiedades IFC en los modelos. Verifica que "
                                                         "el archivo IFC contenga Psets."));
    activos_->setText(QStringLiteral("%1 parámetros IFC activos").arg(extra));
    activos_->setVisible(extra > 0);
    quitar_->setVisible(extra > 0);

    arbol_->clear();
    QStringList titulos;
    for (const std::string& s : tabla_.titulosColumnas()) titulos << q(s);
    arbol_->setColumnCount(static_cast<int>(titulos.size()));
    arbol_->setHeaderLabels(titulos);
    arbol_->header()->setSortIndicator(columnaDeOrden(tabla_.ordenColumna),
                                       tabla_.ordenAscendente ? Qt::AscendingOrder : Qt::DescendingOrder);
    const auto filas = tabla_.filas();
    cuerpo_->setCurrentIndex(filas.empty() ? 1 : 0);
    QTreeWidgetItem* grupo = nullptr;
    QList<QTreeWidgetItem*> abiertos;
    for (const FilaQTO& f : filas) {
        QStringList celdas;
        for (const std::string& c : f.celdas) celdas << q(c);
        QTreeWidgetItem* fila = nullptr;
        if (f.clase == FilaQTO::Clase::item) {
            fila = new QTreeWidgetItem(grupo, celdas);
        } else {
            fila = new QTreeWidgetItem(arbol_, celdas);
            if (f.clase == FilaQTO::Clase::grupo) {
                grupo = fila;
                fila->setData(0, rolGrupo, f.grupo.toString());
                fila->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
                if (tabla_.expandidos.contains(f.grupo)) abiertos << fila;
            }
            QFont negrita = fila->font(0);
            negrita.setBold(true);
            for (int c = 0; c < celdas.size(); ++c) fila->setFont(c, negrita);
        }
        for (int c = 2; c < celdas.size(); ++c) fila->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
    }
    for (QTreeWidgetItem* a : abiertos) a->setExpanded(true);
    arbol_->header()->setMinimumSectionSize(60);
    arbol_->setColumnWidth(0, 200);
    for (int c = 1; c < arbol_->columnCount(); ++c) arbol_->resizeColumnToContents(c);
    arbol_->verticalScrollBar()->setValue(desplazamiento);
    arbol_->horizontalScrollBar()->setValue(desplazamientoH);
    reconstruyendo_ = false;
}

void QuantityTakeoffView::pulsarTitulo(int columna) {
    if (const auto orden = ordenDeColumna(columna)) tabla_.pulsarColumna(*orden);
    reconstruir(); // restores the indicator of the column that sorts
}

void QuantityTakeoffView::alternarGrupo(QTreeWidgetItem* fila) {
    if (reconstruyendo_ || !fila || fila->parent()) return;
    const QString id = fila->data(0, rolGrupo).toString();
    if (id.isEmpty()) return;
    tabla_.alternarExpandido(QUuid::fromString(id));
    // Rebuilt after the tree has finished with its signal.
    QTimer::singleShot(0, this, &QuantityTakeoffView::reconstruir);
}

void QuantityTakeoffView::abrirParametros() {
    if (sheet_) return;
    sheet_ = new SheetParametrosIFC(tabla_.parametrosDisponibles(), tabla_.parametrosExtra, this);
    sheet_->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet_, &QDialog::accepted, this, [this, s = sheet_.data()] {
        tabla_.parametrosExtra = s->seleccion();
        reconstruir();
    });
    sheet_->open();
}

void QuantityTakeoffView::exportarCSV() {
    auto* panel = new QFileDialog(this, QStringLiteral("Exportar CSV"));
    panel->setObjectName(QStringLiteral("panelCSV"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setNameFilter(QStringLiteral("Valores separados por comas (*.csv)"));
    panel->setDefaultSuffix(QStringLiteral("csv"));
    panel->selectFile(q(nombreArchivoCSVQTO(QDateTime::currentSecsSinceEpoch())));
    connect(panel, &QFileDialog::fileSelected, this,
            [this](const QString& ruta) { cv_.guardarCSVQTO(ruta.toStdString(), tabla_.textoCSV()); });
    panel->open();
}

} // namespace teskal
