#include "analyses/clash/ui/ReporteContenidoView.h"

#include "analyses/clash/ReporteHTML.h"
#include "ui/Iconos.h"
#include "ui/IndicadorGiro.h"
#include "federation/Formato.h"
#include "ui/TextoQt.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

namespace teskal {

namespace {


// Plain text always: a name such as "<b>x</b>" from a user or an IFC file
// shows as written.
QLabel* etiqueta(const QString& texto, const QString& estilo, QWidget* padre) {
    auto* l = new QLabel(texto, padre);
    l->setTextFormat(Qt::PlainText);
    l->setStyleSheet(estilo);
    return l;
}

QWidget* iconoCon(const std::string& simbolo, const QString& texto, const QString& estilo,
                  QWidget* padre) {
    auto* w = new QWidget(padre);
    auto* h = new QHBoxLayout(w);
    h->setContentsMargins(0, 0, 0, 0);
    h->setSpacing(4);
    auto* icono = new QLabel(w);
    icono->setPixmap(iconoSimbolo(simbolo).pixmap(12, 12));
    h->addWidget(icono);
    h->addWidget(etiqueta(texto, estilo, w));
    h->addStretch(1);
    return w;
}

// The badge of a review state: its text in the state's own colour on a light
// wash of it.
void pintarEstado(QLabel* badge, EstadoClash estado) {
    const Color c = colorEstado(estado);
    badge->setText(q(textoEstado(estado)));
    badge->setStyleSheet(QStringLiteral("background: rgba(%1, %2, %3, 40); color: %4; font-size: 10px; "
                                        "font-weight: bold; padding: 2px 8px; border-radius: 4px;")
                             .arg(int(c.r * 255))
                             .arg(int(c.g * 255))
                             .arg(int(c.b * 255))
                             .arg(css(c)));
}

} // namespace

// The "Vista 3D" cell: the thumbnail cropped to fill the frame, or a spinner
// on a grey ground while it does not exist.
class CeldaVista : public QWidget {
public:
    explicit CeldaVista(QWidget* parent) : QWidget(parent) {
        setFixedSize(120, 78);
        auto* centro = new QHBoxLayout(this);
        centro->setContentsMargins(0, 0, 0, 0);
        giro_ = new IndicadorGiro(18, this);
        centro->addWidget(giro_, 0, Qt::AlignCenter);
    }

    void setImagen(const QImage& imagen) {
        imagen_ = imagen.isNull()
                      ? QPixmap()
                      : QPixmap::fromImage(imagen.scaled(size(), Qt::KeepAspectRatioByExpanding,
                                                         Qt::SmoothTransformation));
        giro_->setVisible(imagen_.isNull());
        update();
    }
    bool tieneImagen() const { return !imagen_.isNull(); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.setRenderHint(QPainter::Antialiasing);
        QPainterPath marco;
        marco.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
        if (imagen_.isNull()) {
            p.fillPath(marco, QColor(0xe5, 0xe5, 0xea));
            return;
        }
        p.setClipPath(marco);
        p.drawPixmap((width() - imagen_.width()) / 2, (height() - imagen_.height()) / 2, imagen_);
        p.setClipping(false);
        p.setPen(QPen(QColor(255, 149, 0, 77), 1));
        p.drawPath(marco);
    }

private:
    QPixmap imagen_;
    IndicadorGiro* giro_ = nullptr;
};

ReporteContenidoView::ReporteContenidoView(const AnalisisInterferencias& analisis, QWidget* parent)
    : QWidget(parent), analisis_(analisis) {
    setObjectName(QStringLiteral("paginaReporte"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(
        QStringLiteral("#paginaReporte { background: white; } QLabel { color: #1c1c1e; }"));
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(24, 20, 24, 20);
    v->setSpacing(16);
    v->addWidget(cabecera());
    v->addWidget(tarjetas());
    auto* titulo = etiqueta(QStringLiteral("Listado de Interferencias"),
                            QStringLiteral("font-size: 14px; font-weight: bold;"), this);
    auto* registros = etiqueta(textoRegistros(static_cast<int>(analisis_.interferencias.size())),
                               QStringLiteral("color: #888;"), this);
    registros->setObjectName(QStringLiteral("registros"));
    auto* encabezado = new QHBoxLayout;
    encabezado->addWidget(titulo);
    encabezado->addStretch(1);
    encabezado->addWidget(registros);
    v->addLayout(encabezado);
    v->addWidget(tabla());
    v->addWidget(pie());
    v->addStretch(1);
}

QWidget* ReporteContenidoView::cabecera() {
    auto* marco = new QWidget(this);
    marco->setObjectName(QStringLiteral("cabeceraReporte"));
    marco->setAttribute(Qt::WA_StyledBackground);
    marco->setStyleSheet(
        QStringLiteral("#cabeceraReporte { background: #f5f5f7; border-radius: 10px; }"));
    auto* h = new QHBoxLayout(marco);
    h->setContentsMargins(20, 18, 20, 18);
    auto* textos = new QVBoxLayout;
    textos->setSpacing(4);
    textos->addWidget(etiqueta(QStringLiteral("Informe de Interferencias BIM"),
                               QStringLiteral("font-size: 20px; font-weight: bold;"), marco));
    textos->addWidget(
        etiqueta(q(analisis_.nombre), QStringLiteral("font-size: 13px; color: #555;"), marco));
    const QString gris = QStringLiteral("font-size: 11px; color: #888;");
    textos->addWidget(etiqueta(textoFechaReporte(analisis_.fecha), gris, marco));
    std::string tolerancia = formato("%.3f", analisis_.tolerancia) + " m";
    if (analisis_.metodo != MetodoAnalisis::cajasEnvolventes) {
        tolerancia += " · " + std::string(textoMetodo(analisis_.metodo));
        if (analisis_.metodo == MetodoAnalisis::holgura) tolerancia += formato(" %.3f m", analisis_.holgura);
    }
    textos->addWidget(iconoCon("ruler", q(tolerancia), gris, marco));
    textos->addWidget(etiqueta(QString::number(analisis_.interferencias.size()) +
                                   QStringLiteral(" colisiones detectadas"),
                               gris, marco));
    h->addLayout(textos, 1);
    auto* marca =
        etiqueta(QStringLiteral("TESKAL"),
                 QStringLiteral("font-size: 12px; font-weight: bold; color: #ff9500;"), marco);
    h->addWidget(marca, 0, Qt::AlignTop | Qt::AlignRight);
    return marco;
}

QWidget* ReporteContenidoView::tarjetas() {
    const CuentasReporte c = cuentasReporte(analisis_);
    struct Tarjeta {
        const char* nombre;
        int n;
        const char* etiqueta;
        const char* icono;
        const char* fondo;
        const char* borde;
    };
    const Tarjeta lista[] = {
        {"tarjetaTotal", c.total, "Total", "exclamationmark.triangle.fill", "#fff3e0", "#ff9500"},
        {"tarjetaAbiertos", c.abiertos, "Abiertos", "exclamationmark.circle.fill", "#fdecea",
         "#e53935"},
        {"tarjetaEnRevision", c.enRevision, "En revisión", "clock.circle.fill", "#fff8e1",
         "#fb8c00"},
        {"tarjetaAprobados", c.aprobados, "Aprobados", "checkmark.seal.fill", "#e3f2fd", "#1e88e5"},
        {"tarjetaResueltos", c.resueltos, "Resueltos", "checkmark.circle.fill", "#e8f5e9",
         "#43a047"},
    };
    auto* fila = new QWidget(this);
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(0, 0, 0, 0);
    h->setSpacing(10);
    for (const Tarjeta& t : lista) {
        auto* tarjeta = new QWidget(fila);
        tarjeta->setObjectName(QString::fromLatin1(t.nombre));
        tarjeta->setAttribute(Qt::WA_StyledBackground);
        tarjeta->setStyleSheet(
            QStringLiteral("#%1 { background: %2; border: 1px solid %3; border-radius: 8px; }")
                .arg(QString::fromLatin1(t.nombre), QString::fromLatin1(t.fondo),
                     QString::fromLatin1(t.borde)));
        auto* v = new QVBoxLayout(tarjeta);
        v->setContentsMargins(8, 12, 8, 12);
        v->setSpacing(2);
        auto* icono = new QLabel(tarjeta);
        icono->setPixmap(iconoSimbolo(t.icono).pixmap(16, 16));
        v->addWidget(icono, 0, Qt::AlignHCenter);
        auto* numero = etiqueta(QString::number(t.n),
                                QStringLiteral("font-size: 26px; font-weight: bold;"), tarjeta);
        numero->setObjectName(QStringLiteral("numero"));
        numeros_.push_back(numero);
        v->addWidget(numero, 0, Qt::AlignHCenter);
        v->addWidget(etiqueta(QString::fromUtf8(t.etiqueta),
                              QStringLiteral("font-size: 10px; color: #666;"), tarjeta),
                     0, Qt::AlignHCenter);
        h->addWidget(tarjeta, 1);
    }
    return fila;
}

QWidget* ReporteContenidoView::tabla() {
    auto* marco = new QWidget(this);
    marco->setObjectName(QStringLiteral("tablaReporte"));
    auto* g = new QGridLayout(marco);
    g->setContentsMargins(0, 0, 0, 0);
    g->setHorizontalSpacing(14);
    g->setVerticalSpacing(6);
    // The measure's column comes before the state's, for exact and clearance
    // analyses only.
    const std::string medida = tituloMedida(analisis_.metodo);
    std::vector<std::string> columnas{"#", "Vista 3D", "Elemento A", "Esp. A", "Elemento B", "Esp. B"};
    if (!medida.empty()) columnas.push_back(medida);
    columnas.push_back("Estado");
    const int colEstado = static_cast<int>(columnas.size()) - 1;
    for (int k = 0; k < static_cast<int>(columnas.size()); ++k) {
        auto* cabeza = etiqueta(q(columnas[static_cast<std::size_t>(k)]),
                                QStringLiteral("font-size: 10px; font-weight: bold; color: #555; "
                                               "background: #fff3e0; padding: 6px 4px; "
                                               "border-bottom: 2px solid #ffd09e;"),
                                marco);
        g->addWidget(cabeza, 0, k);
    }
    int fila = 1;
    for (const Interferencia& i : analisis_.interferencias) {
        auto* numero = etiqueta(QString::number(fila), QStringLiteral("color: #999;"), marco);
        numero->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        g->addWidget(numero, fila, 0);
        auto* celda = new CeldaVista(marco);
        celda->setObjectName(q("vista_" + i.id));
        celdas_.push_back(celda);
        g->addWidget(celda, fila, 1);
        // Long element names wrap, so the page keeps to the window's width.
        auto* nombreA = etiqueta(q(i.nombreA), QStringLiteral("font-weight: bold;"), marco);
        nombreA->setWordWrap(true);
        // The names give way first when the measure's column takes room.
        nombreA->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        nombreA->setMinimumWidth(90);
        g->addWidget(nombreA, fila, 2);
        g->addWidget(etiqueta(q(i.especialidadA), QStringLiteral("color: #666;"), marco), fila, 3);
        auto* nombreB = etiqueta(q(i.nombreB), QStringLiteral("font-weight: bold;"), marco);
        nombreB->setWordWrap(true);
        nombreB->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        nombreB->setMinimumWidth(90);
        g->addWidget(nombreB, fila, 4);
        g->addWidget(etiqueta(q(i.especialidadB), QStringLiteral("color: #666;"), marco), fila, 5);
        if (!medida.empty()) {
            auto* mm = etiqueta(q(textoMilimetros(i)), QString(), marco);
            mm->setObjectName(q("medida_" + i.id));
            mm->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            g->addWidget(mm, fila, 6);
        }
        auto* badge = etiqueta(QString(), QString(), marco);
        pintarEstado(badge, i.estado);
        estados_.push_back(badge);
        badge->setObjectName(q("estado_" + i.id));
        g->addWidget(badge, fila, colEstado, Qt::AlignLeft | Qt::AlignVCenter);
        ++fila;
    }
    g->setColumnStretch(2, 1);
    g->setColumnStretch(4, 1);
    return marco;
}

QWidget* ReporteContenidoView::pie() {
    auto* marco = new QWidget(this);
    auto* v = new QVBoxLayout(marco);
    v->setContentsMargins(0, 8, 0, 0);
    v->setSpacing(2);
    cuentasPie_ = etiqueta(QString(), QStringLiteral("font-size: 11px; color: #555;"), marco);
    cuentasPie_->setObjectName(QStringLiteral("pieCuentas"));
    v->addWidget(cuentasPie_, 0, Qt::AlignRight);
    auto* generado =
        etiqueta(QStringLiteral("Generado por VORNEL · ") + textoFechaReporte(analisis_.fecha),
                 QStringLiteral("font-size: 10px; color: #999;"), marco);
    v->addWidget(generado, 0, Qt::AlignRight);
    mostrarCuentas();
    return marco;
}

void ReporteContenidoView::mostrarCuentas() {
    const CuentasReporte c = cuentasReporte(analisis_);
    const int porTarjeta[] = {c.total, c.abiertos, c.enRevision, c.aprobados, c.resueltos};
    for (std::size_t k = 0; k < numeros_.size() && k < std::size(porTarjeta); ++k)
        numeros_[k]->setText(QString::number(porTarjeta[k]));
    cuentasPie_->setText(QStringLiteral("Total interferencias: %1  ·  Resueltas: %2  ·  Pendientes: %3")
                             .arg(c.total)
                             .arg(c.resueltos)
                             .arg(c.pendientes()));
}

void ReporteContenidoView::setEstados(const AnalisisInterferencias& analisis) {
    for (std::size_t k = 0; k < analisis_.interferencias.size() && k < analisis.interferencias.size(); ++k) {
        analisis_.interferencias[k].estado = analisis.interferencias[k].estado;
        pintarEstado(estados_[k], analisis_.interferencias[k].estado);
    }
    mostrarCuentas();
}

void ReporteContenidoView::setThumbnails(const std::map<std::string, QImage>& thumbnails) {
    for (std::size_t k = 0; k < celdas_.size(); ++k) {
        const auto it = thumbnails.find(analisis_.interferencias[k].id);
        celdas_[k]->setImagen(it == thumbnails.end() ? QImage() : it->second);
    }
}

} // namespace teskal
