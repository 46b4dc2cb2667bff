#include "analyses/xor/ui/ReporteXORView.h"

#include "analyses/clash/ReporteHTML.h"
#include "analyses/clash/ui/ThumbnailInterferencia.h"
#include "analyses/xor/ReporteXOR.h"
#include "ui/Iconos.h"
#include "ui/IndicadorGiro.h"
#include "scene/ColoresSistema.h"
#include "viewport/render/RenderizadorImagenes.h"
#include "ui/TextoQt.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <memory>

namespace teskal {

namespace {


// Plain text always: names come from IFC files.
QLabel* etiqueta(const QString& texto, const QString& estilo, QWidget* padre) {
    auto* l = new QLabel(texto, padre);
    l->setTextFormat(Qt::PlainText);
    l->setStyleSheet(estilo);
    return l;
}

QLabel* icono(const char* simbolo, int lado, QWidget* padre) {
    auto* l = new QLabel(padre);
    l->setPixmap(iconoSimbolo(simbolo).pixmap(lado, lado));
    return l;
}

// Renders a series of clones, one per turn of the event loop, with one
// renderer, and hands the whole map to the store at the end.
class GeneradorThumbnailsXOR : public QObject {
public:
    GeneradorThumbnailsXOR(std::vector<TrabajoThumbnailXOR> trabajos, XORThumbnailStore& store)
        : QObject(&store), trabajos_(std::move(trabajos)), store_(store) {
        QTimer::singleShot(0, this, [this] { siguiente(); });
    }

private:
    void siguiente() {
        if (siguiente_ < trabajos_.size()) {
            if (!renderizador_) renderizador_ = std::make_unique<RenderizadorImagenes>();
            TrabajoThumbnailXOR& t = trabajos_[siguiente_++];
            EscenaThumbnail escena = escenaThumbnailXOR(*t.clon, t.color);
            QImage imagen = renderizador_->renderizar(
                *escena.escena, *escena.camara, tamanoThumbnail, muestrasThumbnail, fondoThumbnail);
            // A later element with the same key overwrites.
            if (!imagen.isNull()) imagenes_[t.clave] = std::move(imagen);
            t.clon.reset();
            QTimer::singleShot(0, this, [this] { siguiente(); });
            return;
        }
        renderizador_.reset();
        store_.asignar(std::move(imagenes_));
        deleteLater();
    }

    std::vector<TrabajoThumbnailXOR> trabajos_;
    std::size_t siguiente_ = 0;
    std::unique_ptr<RenderizadorImagenes> renderizador_;
    std::map<std::string, QImage> imagenes_;
    XORThumbnailStore& store_;
};

} // namespace

void XORThumbnailStore::asignar(std::map<std::string, QImage> thumbnails) {
    thumbnails_ = std::move(thumbnails);
    terminado_ = true;
    emit changed();
}

void generarThumbnailsXOR(const std::vector<ElementoCambioXOR>& elementos, Node* modeloBase,
                          Node* modeloNuevo, XORThumbnailStore& store) {
    new GeneradorThumbnailsXOR(trabajosThumbnailXOR(elementos, modeloBase, modeloNuevo), store);
}

// The "Vista 3D" cell: the image stretched to the frame, or a spinner on a
// grey ground until the images arrive; an element without an image keeps
// the grey ground alone.
class CeldaVistaXOR : public QWidget {
public:
    explicit CeldaVistaXOR(QWidget* parent) : QWidget(parent) {
        setFixedSize(120, 78);
        auto* centro = new QHBoxLayout(this);
        centro->setContentsMargins(0, 0, 0, 0);
        giro_ = new IndicadorGiro(18, this);
        centro->addWidget(giro_, 0, Qt::AlignCenter);
    }

    void setImagen(const QImage& imagen, bool terminado) {
        imagen_ = imagen.isNull() ? QPixmap()
                                  : QPixmap::fromImage(imagen.scaled(size(), Qt::IgnoreAspectRatio,
                                                                     Qt::SmoothTransformation));
        giro_->setVisible(imagen_.isNull() && !terminado);
        update();
    }
    const QPixmap& imagen() const { return imagen_; }

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
        p.drawPixmap(0, 0, imagen_);
    }

private:
    QPixmap imagen_;
    IndicadorGiro* giro_ = nullptr;
};

ReporteXORView::ReporteXORView(ResultadoXOR resultado, QWidget* parent)
    : QWidget(parent), resultado_(std::move(resultado)), store_(new XORThumbnailStore(this)) {
    auto* exterior = new QVBoxLayout(this);
    exterior->setContentsMargins(0, 0, 0, 0);
    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    desplazable->setFrameShape(QFrame::NoFrame);
    desplazable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    exterior->addWidget(desplazable);

    auto* pagina = new QWidget(desplazable);
    pagina->setObjectName(QStringLiteral("paginaInformeXOR"));
    pagina->setAttribute(Qt::WA_StyledBackground);
    pagina->setStyleSheet(
        QStringLiteral("#paginaInformeXOR { background: white; } QLabel { color: #1c1c1e; }"));
    auto* v = new QVBoxLayout(pagina);
    v->setContentsMargins(24, 20, 24, 20);
    v->setSpacing(16);
    v->addWidget(cabecera(pagina));
    v->addWidget(tarjetas(pagina));
    const CuentasInformeXOR cuentas = cuentasInformeXOR(resultado_);
    for (const AspectoCambioXOR& a : aspectosCambioXOR())
        if (const int n = cuentas.deTipo(a.tipo); n > 0) v->addWidget(seccion(a.tipo, n, pagina));
    v->addWidget(pie(pagina));
    v->addStretch(1);
    desplazable->setWidget(pagina);

    connect(store_, &XORThumbnailStore::changed, this, &ReporteXORView::mostrarThumbnails);
}

QWidget* ReporteXORView::cabecera(QWidget* padre) {
    auto* marco = new QWidget(padre);
    marco->setObjectName(QStringLiteral("cabeceraInformeXOR"));
    marco->setAttribute(Qt::WA_StyledBackground);
    marco->setStyleSheet(
        QStringLiteral("#cabeceraInformeXOR { background: #f5f5f7; border-radius: 10px; }"));
    auto* h = new QHBoxLayout(marco);
    h->setContentsMargins(20, 18, 20, 18);
    auto* textos = new QVBoxLayout;
    textos->setSpacing(6);
    textos->addWidget(etiqueta(QStringLiteral("Informe de Cambios XOR"),
                               QStringLiteral("font-size: 20px; font-weight: bold;"), marco));
    auto* archivos = new QHBoxLayout;
    archivos->setSpacing(6);
    const QString estiloArchivo = QStringLiteral("font-size: 13px; color: #555;");
    archivos->addWidget(icono("doc", 14, marco));
    auto* base = etiqueta(q(resultado_.archivoBase), estiloArchivo, marco);
    base->setObjectName(QStringLiteral("archivoBaseXOR"));
    archivos->addWidget(base);
    archivos->addWidget(icono("arrow.right", 14, marco));
    archivos->addWidget(icono("doc.fill", 14, marco));
    auto* nuevo = etiqueta(q(resultado_.archivoNuevo), estiloArchivo, marco);
    nuevo->setObjectName(QStringLiteral("archivoNuevoXOR"));
    archivos->addWidget(nuevo);
    archivos->addStretch(1);
    textos->addLayout(archivos);
    textos->addWidget(etiqueta(textoFechaReporte(resultado_.fecha),
                               QStringLiteral("font-size: 11px; color: #888;"), marco));
    h->addLayout(textos, 1);
    h->addWidget(etiqueta(QStringLiteral("TESKAL"),
                          QStringLiteral("font-size: 12px; font-weight: bold; color: #ff9500;"),
                          marco),
                 0, Qt::AlignTop | Qt::AlignRight);
    return marco;
}

QWidget* ReporteXORView::tarjetas(QWidget* padre) {
    const CuentasInformeXOR c = cuentasInformeXOR(resultado_);
    struct Tarjeta {
        const char* nombre;
        int n;
        const char* etiqueta;
        const char* icono;
        Color color;
    };
    const Tarjeta lista[] = {
        {"tarjetaAgregados", c.agregados, "Agregados", "plus.circle.fill", colores::verde},
        {"tarjetaEliminados", c.eliminados, "Eliminados", "minus.circle.fill", colores::rojo},
        {"tarjetaModificados", c.modificados, "Modificados",
         "arrow.triangle.2.circlepath.circle.fill", colores::naranja},
        {"tarjetaSinCambios", c.iguales, "Sin cambios", "equal.circle.fill", colores::gris},
    };
    auto* fila = new QWidget(padre);
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(0, 0, 0, 0);
    h->setSpacing(10);
    for (const Tarjeta& t : lista) {
        auto* tarjeta = new QWidget(fila);
        tarjeta->setObjectName(QString::fromLatin1(t.nombre));
        tarjeta->setAttribute(Qt::WA_StyledBackground);
        const Color& k = t.color;
        tarjeta->setStyleSheet(QStringLiteral("#%1 { background: rgba(%2, %3, %4, 22); border: 1px "
                                              "solid %5; border-radius: 8px; }")
                                   .arg(QString::fromLatin1(t.nombre))
                                   .arg(int(k.r * 255))
                                   .arg(int(k.g * 255))
                                   .arg(int(k.b * 255))
                                   .arg(css(k)));
        auto* v = new QVBoxLayout(tarjeta);
        v->setContentsMargins(8, 12, 8, 12);
        v->setSpacing(2);
        v->addWidget(icono(t.icono, 16, tarjeta), 0, Qt::AlignHCenter);
        auto* numero = etiqueta(QString::number(t.n),
                                QStringLiteral("font-size: 26px; font-weight: bold;"), tarjeta);
        numero->setObjectName(QStringLiteral("numero"));
        v->addWidget(numero, 0, Qt::AlignHCenter);
        v->addWidget(etiqueta(QString::fromUtf8(t.etiqueta),
                              QStringLiteral("font-size: 10px; color: #666;"), tarjeta),
                     0, Qt::AlignHCenter);
        h->addWidget(tarjeta, 1);
    }
    return fila;
}

QWidget* ReporteXORView::seccion(TipoCambioXOR tipo, int cantidad, QWidget* padre) {
    const AspectoCambioXOR& a = aspectoCambioXOR(tipo);
    const bool modificado = tipo == TipoCambioXOR::modificado;
    auto* marco = new QWidget(padre);
    marco->setObjectName(QStringLiteral("seccion") + QString::fromUtf8(a.titulo));
    auto* v = new QVBoxLayout(marco);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(8);
    auto* encabezado = new QHBoxLayout;
    encabezado->addWidget(icono(a.icono, 16, marco));
    encabezado->addWidget(etiqueta(
        QString::fromUtf8(a.titulo),
        QStringLiteral("font-size: 14px; font-weight: bold; color: %1;").arg(css(a.colorTexto)),
        marco));
    encabezado->addStretch(1);
    auto* cuenta = etiqueta(q(textoElementosXOR(cantidad)), QStringLiteral("color: #888;"), marco);
    cuenta->setObjectName(QStringLiteral("cuentaSeccion"));
    encabezado->addWidget(cuenta);
    v->addLayout(encabezado);

    auto* tabla = new QWidget(marco);
    tabla->setObjectName(QStringLiteral("tablaXOR"));
    auto* g = new QGridLayout(tabla);
    g->setContentsMargins(0, 0, 0, 0);
    g->setHorizontalSpacing(14);
    g->setVerticalSpacing(6);
    const QStringList columnas =
        modificado ? QStringList{"#", "Vista 3D", "Tipo IFC", "Nombre", "Δ Posición", "Δ Tamaño"}
                   : QStringList{"#", "Vista 3D", "Tipo IFC", "Nombre del elemento"};
    for (int k = 0; k < columnas.size(); ++k)
        g->addWidget(
            etiqueta(columnas[k],
                     QStringLiteral(
                         "font-size: 10px; font-weight: bold; color: #555; background: #f5f5f7; "
                         "padding: 6px 4px; border-bottom: 2px solid #e5e5ea;"),
                     tabla),
            0, k);
    const QString secundario = QStringLiteral("color: #999;");
    int fila = 1;
    for (const ElementoCambioXOR& e : resultado_.elementos) {
        if (e.tipoCambio != tipo) continue;
        auto* numero = etiqueta(QString::number(fila), secundario, tabla);
        numero->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        g->addWidget(numero, fila, 0);
        auto* celda = new CeldaVistaXOR(tabla);
        celda->setObjectName(QStringLiteral("vistaXOR"));
        celda->setProperty("clave", q(claveThumbnailXOR(e)));
        celdas_.emplace_back(claveThumbnailXOR(e), celda);
        g->addWidget(celda, fila, 1);
        g->addWidget(etiqueta(e.tipoIFC.empty() ? QStringLiteral("—") : q(e.tipoIFC),
                              QStringLiteral("color: #666;"), tabla),
                     fila, 2);
        auto* nombre = etiqueta(q(e.nombre), QStringLiteral("font-weight: bold;"), tabla);
        nombre->setWordWrap(true);
        g->addWidget(nombre, fila, 3);
        if (modificado) {
            int columna = 4;
            for (const float delta : {e.deltaPosicion, e.deltaTamano})
                g->addWidget(etiqueta(q(textoDeltaXOR(delta)),
                                      deltaVisibleXOR(delta)
                                          ? QStringLiteral("color: %1;").arg(css(colores::naranja))
                                          : secundario,
                                      tabla),
                             fila, columna++);
        }
        ++fila;
    }
    g->setColumnStretch(3, 1);
    v->addWidget(tabla);
    return marco;
}

QWidget* ReporteXORView::pie(QWidget* padre) {
    auto* marco = new QWidget(padre);
    auto* v = new QVBoxLayout(marco);
    v->setContentsMargins(0, 8, 0, 0);
    v->setSpacing(2);
    const int total = static_cast<int>(resultado_.elementos.size()) + resultado_.iguales;
    auto* cuentas = etiqueta(QStringLiteral("Total de elementos: %1").arg(total),
                             QStringLiteral("font-size: 11px; color: #555;"), marco);
    cuentas->setObjectName(QStringLiteral("pieInformeXOR"));
    v->addWidget(cuentas, 0, Qt::AlignRight);
    v->addWidget(
        etiqueta(QStringLiteral("Generado por TESKAL · ") +
                     QLocale(QStringLiteral("es_CL")).toString(resultado_.fecha.toLocalTime(), QLocale::ShortFormat),
                 QStringLiteral("font-size: 10px; color: #999;"), marco),
        0, Qt::AlignRight);
    return marco;
}

void ReporteXORView::mostrarThumbnails() {
    const auto& imagenes = store_->thumbnails();
    for (const auto& [clave, celda] : celdas_) {
        const auto it = imagenes.find(clave);
        celda->setImagen(it == imagenes.end() ? QImage() : it->second, store_->terminado());
    }
}

} // namespace teskal
