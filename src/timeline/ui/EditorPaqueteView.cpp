#include "timeline/ui/EditorPaqueteView.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "timeline/EditorPaquete.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ValorGanado.h"
#include "ui/Iconos.h"
#include "timeline/ui/TimeLinerView.h"
#include "ui/TextoQt.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace teskal {

CampoNumerico::CampoNumerico(const QString& titulo, double* valor, const QString& placeholder, int decimales,
                             bool layoutVertical, QWidget* parent)
    : QWidget(parent), valor_(valor), decimales_(decimales) {
    QBoxLayout* caja = layoutVertical ? static_cast<QBoxLayout*>(new QVBoxLayout(this))
                                      : static_cast<QBoxLayout*>(new QHBoxLayout(this));
    caja->setContentsMargins(0, 0, 0, 0);
    auto* etiqueta = new QLabel(titulo, this);
    etiqueta->setMinimumWidth(layoutVertical ? 0 : 90);
    texto_ = new QLineEdit(this);
    texto_->setPlaceholderText(placeholder);
    texto_->installEventFilter(this);
    caja->addWidget(etiqueta);
    caja->addWidget(texto_, 1);
    connect(texto_, &QLineEdit::textEdited, this, [this](const QString& t) {
        if (const auto v = valorCampoNumerico(t.toStdString(), *valor_)) {
            *valor_ = *v;
            emit valorCambiado();
        }
    });
    refrescar();
}

void CampoNumerico::refrescar() {
    if (!texto_->hasFocus()) texto_->setText(q(textoCampoNumerico(*valor_, decimales_)));
}

bool CampoNumerico::eventFilter(QObject* objeto, QEvent* evento) {
    // Entering the field selects its text, so that typing replaces it;
    // leaving it shows the value formatted again.
    if (objeto == texto_ && evento->type() == QEvent::FocusIn)
        QTimer::singleShot(0, texto_, &QLineEdit::selectAll);
    if (objeto == texto_ && evento->type() == QEvent::FocusOut)
        texto_->setText(q(textoCampoNumerico(*valor_, decimales_)));
    return QWidget::eventFilter(objeto, evento);
}

FlowLayout::FlowLayout(QWidget* parent, int spacing) : QLayout(parent), spacing_(spacing) {
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout() {
    for (QLayoutItem* i : items_) delete i;
}

void FlowLayout::addItem(QLayoutItem* item) { items_.push_back(item); }

QLayoutItem* FlowLayout::itemAt(int i) const {
    return i >= 0 && i < count() ? items_[static_cast<std::size_t>(i)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int i) {
    if (i < 0 || i >= count()) return nullptr;
    QLayoutItem* item = items_[static_cast<std::size_t>(i)];
    items_.erase(items_.begin() + i);
    return item;
}

QSize FlowLayout::minimumSize() const {
    QSize s;
    for (QLayoutItem* i : items_) s = s.expandedTo(i->minimumSize());
    return s;
}

void FlowLayout::setGeometry(const QRect& r) {
    QLayout::setGeometry(r);
    colocar(r, true);
}

int FlowLayout::colocar(const QRect& r, bool aplicar) const {
    int x = r.x(), y = r.y(), altoFila = 0;
    for (QLayoutItem* i : items_) {
        const QSize s = i->sizeHint();
        if (x + s.width() > r.right() + 1 && altoFila > 0) { // the next row
            x = r.x();
            y += altoFila + spacing_;
            altoFila = 0;
        }
        if (aplicar) i->setGeometry(QRect(QPoint(x, y), s));
        x += s.width() + spacing_;
        altoFila = std::max(altoFila, s.height());
    }
    return y + altoFila - r.y();
}

namespace {

QDateTime conFecha(const QDateTime& anterior, const QDate& fecha) {
    // The day changes; the time of day stays, in local time.
    const QTime hora = anterior.isValid() ? anterior.toLocalTime().time() : QTime(8, 0);
    return QDateTime(fecha, hora, Qt::LocalTime).toUTC();
}

QDateEdit* editorFecha(const QDateTime& f, QWidget* padre) {
    auto* e = new QDateEdit(padre);
    e->setCalendarPopup(true);
    e->setDisplayFormat(QStringLiteral("dd-MM-yyyy"));
    e->setDate((f.isValid() ? f : QDateTime::currentDateTime()).toLocalTime().date());
    return e;
}

QLabel* seccion(const QString& t, QWidget* padre) {
    auto* l = new QLabel(t, padre);
    l->setStyleSheet(QStringLiteral("font-weight: bold; padding-top: 8px;"));
    return l;
}

} // namespace

EditorPaqueteView::EditorPaqueteView(ContentView& cv, PaqueteAWP copia, QWidget* parent)
    : QDialog(parent), cv_(cv), paquete_(std::move(copia)) {
    existe_ = cv_.paqueteAWP(paquete_.id) != nullptr;
    setObjectName(QStringLiteral("editorPaquete"));
    temaTimeline(*this);
    setWindowTitle(existe_ ? QStringLiteral("Editar: ") + q(paquete_.codigo) : QStringLiteral("Nuevo Paquete AWP"));
    resize(620, 760);
    auto* v = new QVBoxLayout(this);
    auto* titulo = new QLabel(windowTitle(), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    v->addWidget(titulo);
    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    auto* cuerpo = new QWidget(desplazable);
    auto* cv2 = new QVBoxLayout(cuerpo);
    cv2->addWidget(crearFormulario());
    cv2->addWidget(crearElementos());
    cv2->addStretch(1);
    desplazable->setWidget(cuerpo);
    v->addWidget(desplazable, 1);

    error_ = new QLabel(this);
    error_->setObjectName(QStringLiteral("errorValidacion"));
    aviso_ = new QLabel(this);
    aviso_->setObjectName(QStringLiteral("avisoFechas"));
    for (QLabel* l : {error_, aviso_}) {
        l->setWordWrap(true);
        l->setStyleSheet(QStringLiteral("color: #d4a000;"));
        v->addWidget(l);
    }
    auto* botones = new QHBoxLayout;
    if (existe_) {
        auto* eliminar = new QPushButton(QStringLiteral("Eliminar"), this);
        eliminar->setObjectName(QStringLiteral("eliminarPaquete"));
        connect(eliminar, &QPushButton::clicked, this, [this] {
            const std::string id = paquete_.id;
            accept();
            cv_.eliminarPaqueteAWP(id);
        });
        botones->addWidget(eliminar);
    }
    botones->addStretch(1);
    auto* cancelar = new QPushButton(QStringLiteral("Cancelar"), this);
    cancelar->setObjectName(QStringLiteral("cancelarPaquete"));
    connect(cancelar, &QPushButton::clicked, this, &QDialog::reject);
    guardar_ = new QPushButton(QStringLiteral("Guardar"), this);
    guardar_->setObjectName(QStringLiteral("guardarPaquete"));
    guardar_->setDefault(true);
    connect(guardar_, &QPushButton::clicked, this, [this] {
        const PaqueteAWP p = paquete_;
        if (!formularioValido(p)) return;
        accept();
        cv_.guardarPaqueteAWP(p);
    });
    botones->addWidget(cancelar);
    botones->addWidget(guardar_);
    v->addLayout(botones);
    connect(this, &QDialog::rejected, this, [this] { cv_.cancelarEdicionAWP(); });
    llenarPadres();
    llenarElementos();
    actualizar();
}

QWidget* EditorPaqueteView::crearFormulario() {
    auto* w = new QWidget(this);
    auto* f = new QFormLayout(w);
    codigo_ = new QLineEdit(q(paquete_.codigo), w);
    codigo_->setObjectName(QStringLiteral("codigo"));
    codigo_->setPlaceholderText(QStringLiteral("CWA-01"));
    connect(codigo_, &QLineEdit::textEdited, this, [this](const QString& t) {
        paquete_.codigo = t.trimmed().toStdString();
        actualizar();
    });
    f->addRow(QStringLiteral("Código:"), codigo_);
    nombre_ = new QLineEdit(q(paquete_.nombre), w);
    nombre_->setObjectName(QStringLiteral("nombre"));
    connect(nombre_, &QLineEdit::textEdited, this, [this](const QString& t) { paquete_.nombre = t.toStdString(); });
    f->addRow(QStringLiteral("Nombre:"), nombre_);
    nivel_ = new QComboBox(w);
    nivel_->setObjectName(QStringLiteral("nivel"));
    for (NivelAWP n : nivelesAWP) nivel_->addItem(q(textoNivel(n)));
    nivel_->setCurrentIndex(static_cast<int>(paquete_.nivel));
    connect(nivel_, &QComboBox::currentIndexChanged, this, [this](int i) {
        paquete_.nivel = nivelesAWP[static_cast<std::size_t>(i)];
        paquete_.parentCodigo.reset();
        llenarPadres();
        actualizar();
    });
    f->addRow(QStringLiteral("Nivel:"), nivel_);
    padre_ = new QComboBox(w);
    padre_->setObjectName(QStringLiteral("padre"));
    connect(padre_, &QComboBox::activated, this, [this](int i) {
        const QString codigo = padre_->itemData(i).toString();
        if (codigo.isNull())
            paquete_.parentCodigo.reset();
        else
            paquete_.parentCodigo = codigo.toStdString();
        actualizar();
    });
    f->addRow(QStringLiteral("Paquete padre:"), padre_);

    f->addRow(seccion(QStringLiteral("Fechas Programadas"), w));
    inicio_ = editorFecha(paquete_.fechaInicio, w);
    inicio_->setObjectName(QStringLiteral("inicio"));
    fin_ = editorFecha(paquete_.fechaFin, w);
    fin_->setObjectName(QStringLiteral("fin"));
    connect(inicio_, &QDateEdit::dateChanged, this, [this](const QDate& d) {
        paquete_.fechaInicio = conFecha(paquete_.fechaInicio, d);
        actualizar();
    });
    connect(fin_, &QDateEdit::dateChanged, this, [this](const QDate& d) {
        paquete_.fechaFin = conFecha(paquete_.fechaFin, d);
        actualizar();
    });
    f->addRow(QStringLiteral("Inicio:"), inicio_);
    f->addRow(QStringLiteral("Fin:"), fin_);

    f->addRow(seccion(QStringLiteral("Fechas Reales"), w));
    const auto filaReal = [&](const QString& titulo, const QString& registrar, std::optional<QDateTime>& campo,
                              QCheckBox*& casilla, QDateEdit*& editor) {
        auto* fila = new QWidget(w);
        auto* h = new QHBoxLayout(fila);
        h->setContentsMargins(0, 0, 0, 0);
        casilla = new QCheckBox(titulo, fila);
        casilla->setChecked(campo.has_value());
        editor = editorFecha(campo.value_or(QDateTime::currentDateTimeUtc()), fila);
        editor->setEnabled(campo.has_value());
        auto* hoy = new QPushButton(registrar, fila);
        h->addWidget(casilla);
        h->addWidget(editor, 1);
        h->addWidget(hoy);
        QCheckBox* c = casilla;
        QDateEdit* e = editor;
        auto* campoPtr = &campo;
        connect(c, &QCheckBox::toggled, this, [this, e, campoPtr](bool activo) {
            e->setEnabled(activo);
            if (activo)
                *campoPtr = conFecha(paquete_.fechaInicio, e->date());
            else
                campoPtr->reset();
            actualizar();
        });
        connect(e, &QDateEdit::dateChanged, this, [this, c, campoPtr](const QDate& d) {
            if (c->isChecked()) *campoPtr = conFecha(paquete_.fechaInicio, d);
            actualizar();
        });
        // Stamps today.
        connect(hoy, &QPushButton::clicked, this, [c, e] {
            e->setDate(QDate::currentDate());
            c->setChecked(true);
        });
        f->addRow(fila);
    };
    filaReal(QStringLiteral("Inicio real:"), QStringLiteral("Registrar inicio real"), paquete_.fechaInicioReal,
             conInicioReal_, inicioReal_);
    filaReal(QStringLiteral("Fin real:"), QStringLiteral("Registrar fin real"), paquete_.fechaFinReal, conFinReal_,
             finReal_);
    desviaciones_ = new QLabel(w);
    desviaciones_->setObjectName(QStringLiteral("desviaciones"));
    f->addRow(desviaciones_);

    auto* filaAvance = new QWidget(w);
    auto* ha = new QHBoxLayout(filaAvance);
    ha->setContentsMargins(0, 0, 0, 0);
    textoAvance_ = new QLabel(filaAvance);
    textoAvance_->setMinimumWidth(90);
    avance_ = new QSlider(Qt::Horizontal, filaAvance);
    avance_->setObjectName(QStringLiteral("avance"));
    avance_->setRange(0, 100);
    avance_->setValue(static_cast<int>(std::lround(paquete_.progreso * 100)));
    connect(avance_, &QSlider::valueChanged, this, [this](int v) {
        paquete_.progreso = v / 100.0;
        actualizar();
    });
    ha->addWidget(textoAvance_);
    ha->addWidget(avance_, 1);
    f->addRow(filaAvance);

    // The figures: typed on an IWP or PWP, rolled up on an area or CWP.
    cifras_ = new QWidget(w);
    auto* vc = new QVBoxLayout(cifras_);
    vc->setContentsMargins(0, 0, 0, 0);
    const struct {
        const char* titulo;
        double* valor;
        const char* nombre;
    } campos[] = {{"Presupuesto:", &paquete_.presupuesto, "presupuesto"},
                  {"Costo real:", &paquete_.costoReal, "costoReal"},
                  {"HH Planif.", &paquete_.hh, "hh"},
                  {"HH Reales:", &paquete_.hhReal, "hhReal"}};
    for (const auto& c : campos) {
        auto* campo = new CampoNumerico(QString::fromUtf8(c.titulo), c.valor, QStringLiteral("0"), 0, false, cifras_);
        campo->setObjectName(QString::fromLatin1(c.nombre));
        connect(campo, &CampoNumerico::valorCambiado, this, &EditorPaqueteView::actualizar);
        vc->addWidget(campo);
    }
    factor_ = new QLabel(cifras_);
    vc->addWidget(factor_);
    f->addRow(cifras_);
    rollUps_ = new QLabel(w);
    rollUps_->setObjectName(QStringLiteral("rollUps"));
    f->addRow(rollUps_);

    auto* colores = new QWidget(w);
    auto* hc = new QHBoxLayout(colores);
    hc->setContentsMargins(0, 0, 0, 0);
    auto* grupo = new QButtonGroup(colores);
    for (int i = 0; i < 8; ++i) {
        auto* b = new QToolButton(colores);
        b->setCheckable(true);
        b->setFixedSize(22, 22);
        b->setStyleSheet(QStringLiteral("QToolButton { background: %1; border-radius: 11px; border: 2px solid "
                                        "transparent; } QToolButton:checked { border-color: white; }")
                             .arg(css(colorPaquete(i))));
        b->setChecked(i == ((paquete_.colorIdx % 8) + 8) % 8);
        grupo->addButton(b, i);
        hc->addWidget(b);
    }
    hc->addStretch(1);
    connect(grupo, &QButtonGroup::idClicked, this, [this](int i) { paquete_.colorIdx = i; });
    f->addRow(QStringLiteral("Color:"), colores);
    return w;
}

QWidget* EditorPaqueteView::crearElementos() {
    auto* w = new QWidget(this);
    auto* v = new QVBoxLayout(w);
    v->setContentsMargins(0, 0, 0, 0);
    v->addWidget(seccion(QStringLiteral("Elementos"), w));
    if (!cv_.hayModelos() && cv_.propiedadesIFC.empty()) {
        auto* sin = new QLabel(QStringLiteral("No hay modelos IFC cargados"), w);
        sin->setObjectName(QStringLiteral("sinModelos"));
        sin->setStyleSheet(QStringLiteral("font-weight: bold;"));
        v->addWidget(sin);
        v->addWidget(new QLabel(QStringLiteral("Vincula al menos un archivo IFC\npara poder asignar elementos."), w));
    } else {
        auto* h = new QHBoxLayout;
        busqueda_ = new QLineEdit(w);
        busqueda_->setObjectName(QStringLiteral("buscarElemento"));
        busqueda_->setPlaceholderText(QStringLiteral("Buscar elemento…"));
        connect(busqueda_, &QLineEdit::textChanged, this, &EditorPaqueteView::llenarElementos);
        h->addWidget(busqueda_, 1);
        // The 3D selection as a shortcut: the element clicked in the view.
        auto* seleccion = new QPushButton(QStringLiteral("Añadir selección 3D"), w);
        seleccion->setObjectName(QStringLiteral("anadirSeleccion"));
        seleccion->setEnabled(!cv_.nombreSeleccionado.empty());
        connect(seleccion, &QPushButton::clicked, this, [this] {
            const auto& l = paquete_.elementosNombre;
            if (std::find(l.begin(), l.end(), cv_.nombreSeleccionado) == l.end())
                alternarElemento(paquete_, cv_.nombreSeleccionado);
            llenarElementos();
        });
        h->addWidget(seleccion);
        v->addLayout(h);
        arbolElementos_ = new QTreeWidget(w);
        arbolElementos_->setObjectName(QStringLiteral("arbolElementos"));
        arbolElementos_->setHeaderHidden(true);
        arbolElementos_->setMinimumHeight(180);
        connect(arbolElementos_, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item) {
            const QString nombre = item->data(0, Qt::UserRole).toString();
            if (nombre.isNull()) return;
            const auto& l = paquete_.elementosNombre;
            const bool asignado = std::find(l.begin(), l.end(), nombre.toStdString()) != l.end();
            if (asignado != (item->checkState(0) == Qt::Checked)) alternarElemento(paquete_, nombre.toStdString());
            llenarChips();
        });
        connect(arbolElementos_, &QTreeWidget::itemExpanded, this,
                [this](QTreeWidgetItem* i) { espExpandidas.insert(i->text(0).toStdString()); });
        connect(arbolElementos_, &QTreeWidget::itemCollapsed, this,
                [this](QTreeWidgetItem* i) { espExpandidas.erase(i->text(0).toStdString()); });
        v->addWidget(arbolElementos_);
        sinResultados_ = new QLabel(w);
        sinResultados_->setObjectName(QStringLiteral("sinResultados"));
        v->addWidget(sinResultados_);
    }
    auto* h = new QHBoxLayout;
    cuentaElementos_ = new QLabel(w);
    cuentaElementos_->setObjectName(QStringLiteral("cuentaElementos"));
    h->addWidget(cuentaElementos_, 1);
    auto* quitar = new QPushButton(QStringLiteral("Quitar todos"), w);
    quitar->setObjectName(QStringLiteral("quitarTodos"));
    connect(quitar, &QPushButton::clicked, this, [this] {
        paquete_.elementosNombre.clear();
        llenarElementos();
    });
    h->addWidget(quitar);
    v->addLayout(h);
    chips_ = new QWidget(w);
    chips_->setObjectName(QStringLiteral("chips"));
    new FlowLayout(chips_);
    v->addWidget(chips_);
    return w;
}

void EditorPaqueteView::llenarPadres() {
    padre_->clear();
    padre_->addItem(QStringLiteral("Sin padre"), QString());
    for (const PaqueteAWP* p : padresPosibles(cv_.timeLiner, paquete_.nivel)) {
        if (p->id == paquete_.id) continue;
        padre_->addItem(q(p->codigo) + QStringLiteral(" — ") + q(p->nombre), q(p->codigo));
    }
    const int i = paquete_.parentCodigo ? padre_->findData(q(*paquete_.parentCodigo)) : 0;
    padre_->setCurrentIndex(std::max(i, 0));
    padre_->setEnabled(paquete_.nivel != NivelAWP::cwa);
}

void EditorPaqueteView::llenarElementos() {
    if (arbolElementos_) {
        const QSignalBlocker bloqueo(arbolElementos_);
        arbolElementos_->clear();
        const std::string buscado = busqueda_->text().toStdString();
        const auto grupos = elementosDisponibles(cv_.propiedadesIFC, cv_.ordenEspecialidades, buscado);
        const auto& l = paquete_.elementosNombre;
        for (const GrupoElementos& g : grupos) {
            auto* raiz = new QTreeWidgetItem(arbolElementos_, {q(g.clave)});
            for (const std::string& n : g.nombres) {
                auto* item = new QTreeWidgetItem(raiz, {q(n)});
                item->setData(0, Qt::UserRole, q(n));
                item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
                item->setCheckState(0, std::find(l.begin(), l.end(), n) != l.end() ? Qt::Checked : Qt::Unchecked);
            }
            raiz->setExpanded(!buscado.empty() || espExpandidas.contains(g.clave));
        }
        sinResultados_->setText(grupos.empty() && !buscado.empty()
                                    ? QStringLiteral("Sin resultados para \"%1\"").arg(q(buscado))
                                    : QString());
        sinResultados_->setVisible(grupos.empty() && !buscado.empty());
    }
    llenarChips();
}

void EditorPaqueteView::llenarChips() {
    QLayout* flujo = chips_->layout();
    while (QLayoutItem* i = flujo->takeAt(0)) {
        delete i->widget();
        delete i;
    }
    for (const std::string& n : paquete_.elementosNombre) {
        auto* chip = new QToolButton(chips_);
        chip->setText(q(n) + QStringLiteral("  ✕"));
        chip->setStyleSheet(QStringLiteral("QToolButton { background: rgba(0,122,255,0.25); border-radius: 9px; "
                                           "padding: 2px 8px; }"));
        connect(chip, &QToolButton::clicked, this, [this, n] {
            alternarElemento(paquete_, n);
            llenarElementos();
        });
        flujo->addWidget(chip);
    }
    cuentaElementos_->setText(QString::number(static_cast<qulonglong>(paquete_.elementosNombre.size())) +
                              QStringLiteral(" elemento(s) asignado(s)"));
}

void EditorPaqueteView::actualizar() {
    const auto error = errorValidacion(paquete_, cv_.timeLiner);
    const auto aviso = avisoFechas(paquete_, cv_.timeLiner);
    const QString icono = QStringLiteral("⚠ ");
    error_->setText(error ? icono + q(*error) : QString());
    error_->setVisible(error.has_value());
    aviso_->setText(aviso ? icono + q(*aviso) : QString());
    aviso_->setVisible(aviso.has_value());
    guardar_->setEnabled(formularioValido(paquete_));
    textoAvance_->setText(QStringLiteral("Avance: ") + q(formato("%.0f%%", paquete_.progreso * 100)));

    QStringList d;
    if (const auto i = desviacionInicioDias(paquete_)) d << QStringLiteral("Inicio: ") + q(textoDesviacionEditor(*i));
    if (const auto f = desviacionFinDias(paquete_)) d << QStringLiteral("Fin: ") + q(textoDesviacionEditor(*f));
    desviaciones_->setText(d.join(QStringLiteral("   ")));
    desviaciones_->setVisible(!d.isEmpty());

    const bool hoja = paquete_.nivel == NivelAWP::iwp || paquete_.nivel == NivelAWP::pwp;
    cifras_->setVisible(hoja);
    rollUps_->setVisible(!hoja);
    factor_->setText(q(formato("Factor productividad: %.2f",
                               paquete_.hhReal > 0 ? paquete_.hh * paquete_.progreso / paquete_.hhReal : 1.0)));
    if (!hoja) {
        // The figures of the packages below, as the plan stands.
        TimeLinerConfig c = cv_.timeLiner;
        guardarPaquete(c, paquete_);
        const ArbolAWP arbol(c);
        const PaqueteAWP* p = nullptr;
        for (const PaqueteAWP& x : c.paquetes)
            if (x.id == paquete_.id) p = &x;
        const PaqueteAWP& base = p ? *p : paquete_;
        const std::string& m = c.moneda;
        rollUps_->setText(
            QString::number(static_cast<qulonglong>(arbol.paquetesHoja(base).size())) + QStringLiteral(" IWP(s)\n") +
            QStringLiteral("Presupuesto: ") + q(textoMoneda(arbol.presupuestoTotal(base), m)) +
            QStringLiteral("\nCosto real: ") + q(textoMoneda(arbol.costoRealTotal(base), m)) +
            QStringLiteral("\nHH Planif. ") + q(textoHH(arbol.hhTotal(base))) + QStringLiteral("\nHH Reales: ") +
            q(textoHH(arbol.hhRealTotal(base))));
    }
}

} // namespace teskal
