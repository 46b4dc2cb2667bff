#include "federation/ui/DialogosFederacion.h"

#include "federation/ContentView.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

namespace {

QColor qcolor(const Color& c) { return QColor::fromRgbF(c.r, c.g, c.b, c.a); }
Color color(const QColor& c) {
    return Color{static_cast<float>(c.redF()), static_cast<float>(c.greenF()), static_cast<float>(c.blueF()),
                 static_cast<float>(c.alphaF())};
}

void pintarMuestra(QToolButton* b, const QColor& c) {
    b->setStyleSheet(QStringLiteral("background: %1; border: 1px solid #666; border-radius: 3px;").arg(c.name()));
}

} // namespace

DialogoNuevaEspecialidad::DialogoNuevaEspecialidad(ContentView& cv, QWidget* parent)
    : QDialog(parent), cv_(cv), color_(qcolor(cv.nuevaEspColor)) {
    setObjectName(QStringLiteral("dialogoNuevaEspecialidad"));
    setWindowTitle(QStringLiteral("Nueva Especialidad"));
    auto* forma = new QFormLayout;
    nombre_ = new QLineEdit(QString::fromStdString(cv.nuevaEspNombre), this);
    nombre_->setPlaceholderText(QStringLiteral("Ej: Sanitaria"));
    icono_ = new QLineEdit(cv.nuevaEspIcono == "folder" ? QString() : QString::fromStdString(cv.nuevaEspIcono), this);
    icono_->setPlaceholderText(QStringLiteral("Ej: pipe.and.drop"));
    auto* muestra = new QToolButton(this);
    muestra->setFixedSize(40, 20);
    pintarMuestra(muestra, color_);
    connect(muestra, &QToolButton::clicked, this, [this, muestra] {
        const QColor elegido = QColorDialog::getColor(color_, this, QStringLiteral("Color"));
        if (!elegido.isValid()) return;
        color_ = elegido;
        pintarMuestra(muestra, color_);
    });
    forma->addRow(QStringLiteral("Nombre"), nombre_);
    forma->addRow(QStringLiteral("Ícono SF Symbol"), icono_);
    forma->addRow(QStringLiteral("Color"), muestra);

    auto* botones = new QDialogButtonBox(this);
    botones->addButton(QStringLiteral("Cancelar"), QDialogButtonBox::RejectRole);
    auto* agregar = botones->addButton(QStringLiteral("Agregar"), QDialogButtonBox::AcceptRole);
    agregar->setDefault(true);
    connect(botones, &QDialogButtonBox::rejected, this, [this] {
        cv_.cancelarNuevaEspecialidad();
        reject();
    });
    connect(botones, &QDialogButtonBox::accepted, this, [this] {
        cv_.nuevaEspNombre = nombre_->text().toStdString();
        cv_.nuevaEspIcono = icono_->text().trimmed().toStdString();
        cv_.nuevaEspColor = color(color_);
        cv_.agregarEspecialidad();
        if (!cv_.mostrarNuevaEsp) accept(); // an empty name keeps the sheet open
    });
    auto* v = new QVBoxLayout(this);
    v->addLayout(forma);
    v->addWidget(botones);
}

DialogoColorEspecialidad::DialogoColorEspecialidad(ContentView& cv, QWidget* parent) : QDialog(parent), cv_(cv) {
    setObjectName(QStringLiteral("dialogoColor"));
    const auto it = cv.especialidades.find(cv.colorPickerKey.value_or(""));
    const QString nombre = it == cv.especialidades.end() ? QString() : QString::fromStdString(it->second.nombre);
    setWindowTitle(QStringLiteral("Color de ") + nombre);
    auto* v = new QVBoxLayout(this);
    v->addWidget(new QLabel(QStringLiteral("Selecciona un color"), this));
    selector_ = new QColorDialog(qcolor(cv.colorPickerColor), this);
    selector_->setOptions(QColorDialog::NoButtons | QColorDialog::DontUseNativeDialog);
    selector_->setWindowFlags(Qt::Widget);
    v->addWidget(selector_);
    auto* botones = new QDialogButtonBox(this);
    botones->addButton(QStringLiteral("Cancelar"), QDialogButtonBox::RejectRole);
    botones->addButton(QStringLiteral("Aplicar"), QDialogButtonBox::AcceptRole)->setDefault(true);
    connect(botones, &QDialogButtonBox::rejected, this, [this] {
        cv_.cancelarColor();
        reject();
    });
    connect(botones, &QDialogButtonBox::accepted, this, [this] {
        cv_.aplicarColor(color(selector_->currentColor()));
        accept();
    });
    v->addWidget(botones);
}

DialogoTransformacion::DialogoTransformacion(ContentView& cv, QWidget* parent) : QDialog(parent), cv_(cv) {
    setObjectName(QStringLiteral("dialogoTransformacion"));
    setWindowTitle(QStringLiteral("Transformación del modelo"));
    auto* v = new QVBoxLayout(this);
    if (cv.modeloEditandoTransformacion)
        v->addWidget(new QLabel(QString::fromStdString(cv.modeloEditandoTransformacion->nombre), this));

    auto* grupoUnidades = new QGroupBox(QStringLiteral("Sistema de unidades"), this);
    unidades_ = new QComboBox(grupoUnidades);
    for (Unidades u : {Unidades::milimetros, Unidades::metros, Unidades::pies, Unidades::pulgadas})
        unidades_->addItem(QString::fromUtf8(textoUnidades(u).data(), static_cast<qsizetype>(textoUnidades(u).size())),
                           static_cast<int>(u));
    (new QVBoxLayout(grupoUnidades))->addWidget(unidades_);
    v->addWidget(grupoUnidades);

    auto* grupoDesplazamiento = new QGroupBox(QStringLiteral("Desplazamiento (metros)"), this);
    auto* forma = new QFormLayout(grupoDesplazamiento);
    const char* ejes[3] = {"X", "Y", "Z"};
    for (int i = 0; i < 3; ++i) {
        offset_[i] = new QDoubleSpinBox(grupoDesplazamiento);
        offset_[i]->setRange(-1e7, 1e7);
        offset_[i]->setDecimals(3);
        forma->addRow(QString::fromLatin1(ejes[i]), offset_[i]);
    }
    v->addWidget(grupoDesplazamiento);

    auto* grupoGiro = new QGroupBox(QStringLiteral("Giro en Z (grados)"), this);
    giro_ = new QDoubleSpinBox(grupoGiro);
    giro_->setRange(-360, 360);
    giro_->setDecimals(2);
    (new QVBoxLayout(grupoGiro))->addWidget(giro_);
    v->addWidget(grupoGiro);

    auto* botones = new QDialogButtonBox(this);
    auto* restablecer = botones->addButton(QStringLiteral("Restablecer"), QDialogButtonBox::ResetRole);
    botones->addButton(QStringLiteral("Cancelar"), QDialogButtonBox::RejectRole);
    botones->addButton(QStringLiteral("Aplicar"), QDialogButtonBox::AcceptRole)->setDefault(true);
    connect(restablecer, &QPushButton::clicked, this, [this] { mostrar(TransformacionModelo{}); });
    connect(botones, &QDialogButtonBox::rejected, this, [this] {
        cv_.cerrarTransformacion();
        reject();
    });
    connect(botones, &QDialogButtonBox::accepted, this, [this] {
        if (!cv_.modeloEditandoTransformacion) return reject();
        TransformacionModelo t;
        t.unidades = static_cast<Unidades>(unidades_->currentData().toInt());
        t.offsetX = offset_[0]->value();
        t.offsetY = offset_[1]->value();
        t.offsetZ = offset_[2]->value();
        t.giroZ = giro_->value();
        cv_.transformacionEditando = t;
        const ReferenciaModelo ref = *cv_.modeloEditandoTransformacion;
        cv_.aplicarTransformacion(ref.clave, ref.id, t);
        accept();
    });
    v->addWidget(botones);
    mostrar(cv.transformacionEditando);
}

void DialogoTransformacion::mostrar(const TransformacionModelo& t) {
    unidades_->setCurrentIndex(unidades_->findData(static_cast<int>(t.unidades)));
    offset_[0]->setValue(t.offsetX);
    offset_[1]->setValue(t.offsetY);
    offset_[2]->setValue(t.offsetZ);
    giro_->setValue(t.giroZ);
}

} // namespace teskal
