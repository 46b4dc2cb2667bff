#include "viewport/markup/ui/PanelMarkup.h"

#include "federation/ContentView.h"
#include "ui/Iconos.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

namespace teskal {

namespace {

// A line edit that writes the workspace on every edit and is rewritten from
// it only when the text differs, so the cursor stays put.
void fijarTexto(QLineEdit* e, const std::string& valor) {
    const QString q = QString::fromStdString(valor);
    if (e->text() != q) e->setText(q);
}

} // namespace

PanelMarkup::PanelMarkup(ContentView& cv, QWidget* parent) : QFrame(parent), cv_(cv) {
    setObjectName(QStringLiteral("panelMarkup"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("#panelMarkup { background: rgba(255, 255, 255, 235); border-radius: 8px; }"));
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(8, 6, 8, 6);

    auto* herramientas = new QHBoxLayout;
    for (std::size_t i = 0; i < markupPaleta.size(); ++i) {
        const ColorMarkup& c = markupPaleta[i];
        auto* b = new QPushButton(this);
        b->setObjectName(QStringLiteral("colorMarkup%1").arg(i));
        b->setToolTip(QString::fromUtf8(c.nombre));
        b->setFixedSize(22, 22);
        b->setCheckable(true);
        b->setStyleSheet(QStringLiteral("QPushButton { background: %1; border: 1px solid #888; border-radius: 11px; }"
                                        "QPushButton:checked { border: 3px solid #222; }")
                             .arg(QColor::fromRgbF(c.r, c.g, c.b).name()));
        connect(b, &QPushButton::clicked, this, [this, i] { cv_.elegirColorMarkup(static_cast<int>(i)); });
        herramientas->addWidget(b);
        colores_.push_back(b);
    }
    dibujo_ = new QPushButton(QStringLiteral("Dibujo libre"), this);
    dibujo_->setObjectName(QStringLiteral("dibujoLibre"));
    dibujo_->setCheckable(true);
    connect(dibujo_, &QPushButton::clicked, this, [this] { cv_.fijarModoTextoMarkup(false); });
    texto_ = new QPushButton(QStringLiteral("Agregar texto (clic donde colocar)"), this);
    texto_->setObjectName(QStringLiteral("agregarTexto"));
    texto_->setCheckable(true);
    connect(texto_, &QPushButton::clicked, this, [this] { cv_.fijarModoTextoMarkup(true); });
    herramientas->addWidget(dibujo_);
    herramientas->addWidget(texto_);
    auto* iconoGrosor = new QLabel(this);
    iconoGrosor->setPixmap(iconoSimbolo("lineweight").pixmap(16, 16));
    herramientas->addWidget(iconoGrosor);
    grosor_ = new QSlider(Qt::Horizontal, this);
    grosor_->setObjectName(QStringLiteral("grosorMarkup"));
    grosor_->setRange(1, 10);
    grosor_->setMaximumWidth(120);
    connect(grosor_, &QSlider::valueChanged, this, [this](int g) {
        if (g != static_cast<int>(std::lround(cv_.markup.markupGrosor))) cv_.fijarGrosorMarkup(g);
    });
    herramientas->addWidget(grosor_);
    auto* limpiar = new QPushButton(iconoSimbolo("trash"), QStringLiteral("Limpiar anotaciones"), this);
    limpiar->setObjectName(QStringLiteral("limpiarAnotaciones"));
    connect(limpiar, &QPushButton::clicked, this, [this] { cv_.limpiarAnotaciones(); });
    herramientas->addWidget(limpiar);
    v->addLayout(herramientas);

    filaTexto_ = new QWidget(this);
    auto* t = new QHBoxLayout(filaTexto_);
    t->setContentsMargins(0, 0, 0, 0);
    auto* iconoTexto = new QLabel(filaTexto_);
    iconoTexto->setPixmap(iconoSimbolo("hand.point.up").pixmap(16, 16));
    t->addWidget(iconoTexto);
    textoPend_ = new QLineEdit(filaTexto_);
    textoPend_->setObjectName(QStringLiteral("textoMarkup"));
    textoPend_->setPlaceholderText(QStringLiteral("Escribe el texto y luego clic en la vista…"));
    connect(textoPend_, &QLineEdit::textEdited, this,
            [this](const QString& s) { cv_.markup.markupTextoPend = s.toStdString(); emit cv_.changed(); });
    t->addWidget(textoPend_);
    v->addWidget(filaTexto_);

    auto* datos = new QHBoxLayout;
    autor_ = new QLineEdit(this);
    autor_->setObjectName(QStringLiteral("autorMarkup"));
    autor_->setPlaceholderText(QStringLiteral("Autor"));
    connect(autor_, &QLineEdit::textEdited, this,
            [this](const QString& s) { cv_.markup.markupAutor = s.toStdString(); });
    descripcion_ = new QLineEdit(this);
    descripcion_->setObjectName(QStringLiteral("descripcionMarkup"));
    descripcion_->setPlaceholderText(QStringLiteral("Descripción del comentario…"));
    connect(descripcion_, &QLineEdit::textEdited, this,
            [this](const QString& s) { cv_.markup.markupDescripcion = s.toStdString(); });
    datos->addWidget(autor_, 1);
    datos->addWidget(descripcion_, 2);
    auto* cancelar = new QPushButton(iconoSimbolo("xmark.circle"), QStringLiteral("Cancelar"), this);
    cancelar->setObjectName(QStringLiteral("cancelarMarkup"));
    connect(cancelar, &QPushButton::clicked, this, [this] { cv_.cancelarMarkup(); });
    auto* guardar = new QPushButton(iconoSimbolo("checkmark.circle.fill"), QStringLiteral("Guardar"), this);
    guardar->setObjectName(QStringLiteral("guardarComentario"));
    connect(guardar, &QPushButton::clicked, this, [this] { cv_.guardarComentario(); });
    datos->addWidget(cancelar);
    datos->addWidget(guardar);
    v->addLayout(datos);

    connect(&cv_, &ContentView::changed, this, &PanelMarkup::sincronizar);
    sincronizar();
}

void PanelMarkup::sincronizar() {
    const EstadoMarkup& m = cv_.markup;
    setVisible(m.modoMarkup);
    if (m.modoMarkup) raise();
    for (std::size_t i = 0; i < colores_.size(); ++i)
        colores_[i]->setChecked(static_cast<int>(i) == m.markupColorIdx);
    dibujo_->setChecked(!m.markupModoTexto);
    texto_->setChecked(m.markupModoTexto);
    filaTexto_->setVisible(m.markupModoTexto);
    grosor_->setValue(static_cast<int>(std::lround(m.markupGrosor)));
    fijarTexto(textoPend_, m.markupTextoPend);
    fijarTexto(autor_, m.markupAutor);
    fijarTexto(descripcion_, m.markupDescripcion);
}

} // namespace teskal
