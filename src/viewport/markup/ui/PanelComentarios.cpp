#include "viewport/markup/ui/PanelComentarios.h"

#include "federation/ContentView.h"
#include "ui/Iconos.h"

#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QPixmap>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace teskal {

namespace {

QLabel* etiquetaConIcono(const char* simbolo, const QString& texto, QWidget* padre, QHBoxLayout* fila) {
    auto* icono = new QLabel(padre);
    icono->setPixmap(iconoSimbolo(simbolo).pixmap(12, 12));
    fila->addWidget(icono);
    auto* l = new QLabel(texto, padre);
    l->setStyleSheet(QStringLiteral("color: gray; font-size: 11px;"));
    fila->addWidget(l);
    return l;
}

// A row that opens its comment on a click.
class FilaComentario : public QFrame {
public:
    FilaComentario(ContentView& cv, const ComentarioMarkup& c, QWidget* padre) : QFrame(padre), cv_(cv), id_(c.id) {
        setObjectName(QStringLiteral("filaComentario"));
        setFrameShape(QFrame::StyledPanel);
        setCursor(Qt::PointingHandCursor);
        auto* h = new QHBoxLayout(this);
        h->setContentsMargins(6, 4, 6, 4);
        auto* v = new QVBoxLayout;
        auto* tag = new QLabel(QString::fromStdString(c.tag), this);
        tag->setStyleSheet(QStringLiteral("font-weight: bold;"));
        v->addWidget(tag);
        if (!c.descripcion.empty()) {
            auto* d = new QLabel(QString::fromStdString(c.descripcion), this);
            d->setWordWrap(true);
            v->addWidget(d);
        }
        auto* pie = new QHBoxLayout;
        etiquetaConIcono("person.fill", QString::fromStdString(c.autor), this, pie);
        pie->addSpacing(8);
        auto* fecha = new QLabel(fechaComentario(c), this);
        fecha->setStyleSheet(QStringLiteral("color: gray; font-size: 11px;"));
        pie->addWidget(fecha);
        pie->addStretch(1);
        v->addLayout(pie);
        h->addLayout(v, 1);
        auto* quitar = new QToolButton(this);
        quitar->setObjectName(QStringLiteral("eliminarComentario"));
        quitar->setIcon(iconoSimbolo("minus.circle"));
        quitar->setToolTip(QStringLiteral("Eliminar comentario"));
        quitar->setAutoRaise(true);
        QObject::connect(quitar, &QToolButton::clicked, this, [this] { cv_.pedirEliminarComentario(id_); });
        h->addWidget(quitar, 0, Qt::AlignTop);
    }

protected:
    void mouseReleaseEvent(QMouseEvent* e) override {
        if (e->button() == Qt::LeftButton) cv_.abrirDetalleComentario(id_);
    }

private:
    ContentView& cv_;
    std::string id_;
};

} // namespace

QString fechaComentario(const ComentarioMarkup& c) {
    return QLocale(QStringLiteral("es_CL")).toString(c.fecha.toLocalTime(), QLocale::ShortFormat);
}

PanelComentarios::PanelComentarios(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("panelComentarios"));
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(4, 0, 4, 0);
    auto* nuevo = new QPushButton(iconoSimbolo("pencil.tip.crop.circle"), QStringLiteral("Nuevo comentario"), this);
    nuevo->setObjectName(QStringLiteral("nuevoComentario"));
    connect(nuevo, &QPushButton::clicked, this, [this] { cv_.nuevoComentario(); });
    v->addWidget(nuevo);
    filas_ = new QVBoxLayout;
    v->addLayout(filas_);
    auto* reporte = new QPushButton(iconoSimbolo("doc.text.fill"), QStringLiteral("Reporte de comentarios"), this);
    reporte->setObjectName(QStringLiteral("reporteComentarios"));
    connect(reporte, &QPushButton::clicked, this, &PanelComentarios::reporteSolicitado);
    v->addWidget(reporte);
    connect(&cv_, &ContentView::changed, this, &PanelComentarios::reconstruir);
    reconstruir();
}

void PanelComentarios::reconstruir() {
    // Rebuilt only when the list changed.
    std::size_t firma = cv_.markup.comentarios.size();
    for (const auto& c : cv_.markup.comentarios)
        firma = firma * 31 + std::hash<std::string>()(c.id) + std::hash<std::string>()(c.descripcion);
    if (firma == firma_) return;
    firma_ = firma;
    while (QLayoutItem* item = filas_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    if (cv_.markup.comentarios.empty()) {
        auto* vacio = new QLabel(QStringLiteral("Sin comentarios registrados"), this);
        vacio->setObjectName(QStringLiteral("sinComentarios"));
        vacio->setStyleSheet(QStringLiteral("color: gray;"));
        filas_->addWidget(vacio);
        return;
    }
    for (const auto& c : cv_.markup.comentarios) filas_->addWidget(new FilaComentario(cv_, c, this));
}

DialogoDetalleComentario::DialogoDetalleComentario(ContentView& cv, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("detalleComentario"));
    const ComentarioMarkup c = cv.markup.detalleComentario.value_or(ComentarioMarkup{});
    setWindowTitle(QString::fromStdString(c.tag));
    auto* v = new QVBoxLayout(this);
    auto* tag = new QLabel(QString::fromStdString(c.tag), this);
    tag->setStyleSheet(QStringLiteral("font-weight: bold; font-size: 16px;"));
    v->addWidget(tag);
    auto* datos = new QHBoxLayout;
    etiquetaConIcono("person.fill", QString::fromStdString(c.autor), this, datos);
    datos->addSpacing(12);
    etiquetaConIcono("calendar", fechaComentario(c), this, datos);
    datos->addStretch(1);
    v->addLayout(datos);
    auto* descripcion = new QLabel(QString::fromStdString(c.descripcion), this);
    descripcion->setWordWrap(true);
    v->addWidget(descripcion);
    auto* imagen = new QLabel(this);
    imagen->setObjectName(QStringLiteral("capturaComentario"));
    QImage foto;
    if (c.imagenJPEG) foto.loadFromData(*c.imagenJPEG, "JPEG");
    if (foto.isNull()) {
        imagen->setText(QStringLiteral("Sin captura de pantalla"));
        imagen->setStyleSheet(QStringLiteral("color: gray;"));
    } else {
        imagen->setPixmap(QPixmap::fromImage(foto.scaledToWidth(std::min(foto.width(), 640), Qt::SmoothTransformation)));
    }
    v->addWidget(imagen);
    auto* cerrar = new QPushButton(QStringLiteral("Cerrar"), this);
    cerrar->setObjectName(QStringLiteral("cerrarDetalle"));
    connect(cerrar, &QPushButton::clicked, this, &QDialog::accept);
    v->addWidget(cerrar, 0, Qt::AlignRight);
    connect(this, &QDialog::finished, &cv, [&cv] { cv.cerrarDetalleComentario(); });
}

} // namespace teskal
