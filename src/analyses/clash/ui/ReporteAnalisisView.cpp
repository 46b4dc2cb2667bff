#include "analyses/clash/ui/ReporteAnalisisView.h"

#include "analyses/bcf/BCFExporter.h"
#include "analyses/bcf/ui/GuardadoBCF.h"
#include "analyses/clash/ReporteHTML.h"
#include "analyses/clash/ui/ReporteContenidoView.h"
#include "analyses/clash/ui/ThumbnailInterferencia.h"
#include "ui/Iconos.h"
#include "ui/IndicadorGiro.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QDesktopServices>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace teskal {

ReporteAnalisisView::ReporteAnalisisView(AnalisisInterferencias analisis, Scene* scene,
                                         QWidget* parent)
    : QWidget(parent), analisis_(std::move(analisis)), scene_(scene) {
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(0);

    auto* barra = new QWidget(this);
    barra->setObjectName(QStringLiteral("barraReporte"));
    auto* h = new QHBoxLayout(barra);
    h->setContentsMargins(14, 8, 14, 8);
    auto* nombre = new QLabel(QString::fromStdString(analisis_.nombre), barra);
    nombre->setTextFormat(Qt::PlainText); // a name is never markup
    nombre->setObjectName(QStringLiteral("nombreReporte"));
    nombre->setStyleSheet(QStringLiteral("font-weight: bold; font-size: 14px;"));
    h->addWidget(nombre);
    auto* total =
        new QLabel(QStringLiteral("· %1 colisiones").arg(analisis_.interferencias.size()), barra);
    total->setObjectName(QStringLiteral("totalReporte"));
    total->setStyleSheet(QStringLiteral("color: gray;"));
    h->addWidget(total);
    h->addStretch(1);

    aviso_ = new QWidget(barra);
    aviso_->setObjectName(QStringLiteral("avisoGenerando"));
    auto* cajaAviso = new QHBoxLayout(aviso_);
    cajaAviso->setContentsMargins(0, 0, 0, 0);
    cajaAviso->addWidget(new IndicadorGiro(14, aviso_));
    auto* textoAviso = new QLabel(QStringLiteral("Generando vistas…"), aviso_);
    textoAviso->setStyleSheet(QStringLiteral("color: gray;"));
    cajaAviso->addWidget(textoAviso);
    h->addWidget(aviso_);

    resultado_ = new QWidget(barra);
    resultado_->setObjectName(QStringLiteral("resultadoBCF"));
    auto* cajaResultado = new QHBoxLayout(resultado_);
    cajaResultado->setContentsMargins(0, 0, 0, 0);
    iconoResultado_ = new QLabel(resultado_);
    textoResultado_ = new QLabel(resultado_);
    cajaResultado->addWidget(iconoResultado_);
    cajaResultado->addWidget(textoResultado_);
    h->addWidget(resultado_);

    botonBCF_ = new QPushButton(iconoSimbolo("square.and.arrow.up.on.square"),
                                QStringLiteral("Exportar BCF"), barra);
    botonBCF_->setObjectName(QStringLiteral("exportarBCF"));
    connect(botonBCF_, &QPushButton::clicked, this, &ReporteAnalisisView::exportarBCF);
    botonBCF_->setToolTip(
        QStringLiteral("Exportar como BIM Collaboration Format 2.1 (Revit, Navisworks, Solibri)"));
    giroBCF_ = new IndicadorGiro(14, barra);
    h->addWidget(giroBCF_);
    h->addWidget(botonBCF_);

    botonHTML_ =
        new QPushButton(iconoSimbolo("printer.fill"), QStringLiteral("Imprimir / PDF"), barra);
    botonHTML_->setObjectName(QStringLiteral("imprimirPDF"));
    connect(botonHTML_, &QPushButton::clicked, this, &ReporteAnalisisView::generarHTML);
    h->addWidget(botonHTML_);
    v->addWidget(barra);

    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    desplazable->setFrameShape(QFrame::NoFrame);
    desplazable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    pagina_ = new ReporteContenidoView(analisis_, desplazable);
    desplazable->setWidget(pagina_);
    v->addWidget(desplazable, 1);

    sincronizar();
}

void ReporteAnalisisView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (thumbnailsProgramados_) return;
    thumbnailsProgramados_ = true;
    // Rendering blocks the window: the delay lets it and the notice be drawn first.
    QTimer::singleShot(200, this, &ReporteAnalisisView::generarThumbnails);
}

void ReporteAnalisisView::sincronizar() {
    const bool esperando = !thumbnailsTerminados_ && !analisis_.interferencias.empty();
    aviso_->setVisible(esperando);
    botonHTML_->setEnabled(!esperando);
    botonHTML_->setToolTip(esperando ? QStringLiteral("Disponible cuando terminen de generarse las vistas")
                                     : QString());
    botonBCF_->setEnabled(!exportandoBCF_);
    giroBCF_->setVisible(exportandoBCF_);
    resultado_->setVisible(bcfExito_.has_value());
    if (bcfExito_) {
        const bool ok = *bcfExito_;
        iconoResultado_->setPixmap(
            iconoSimbolo(ok ? "checkmark.circle.fill" : "xmark.circle.fill").pixmap(14, 14));
        textoResultado_->setText(ok ? QStringLiteral("BCF exportado")
                                    : QStringLiteral("Error al exportar"));
        textoResultado_->setStyleSheet(ok ? QStringLiteral("color: #34c759;")
                                          : QStringLiteral("color: #ff3b30;"));
    }
}

void ReporteAnalisisView::generarThumbnails() {
    RenderizadorImagenes renderizador;
    // Without an OpenGL context no image comes out: the report then goes on
    // without its views.
    thumbnails_ = renderThumbnails(analisis_, scene_, renderizador);
    thumbnailsTerminados_ = true;
    png_.reset();
    pagina_->setThumbnails(thumbnails_);
    sincronizar();
    emit thumbnailsListos();
}

const std::map<std::string, QByteArray>& ReporteAnalisisView::thumbnailsPNG() {
    if (!png_) png_ = teskal::thumbnailsPNG(thumbnails_);
    return *png_;
}

void ReporteAnalisisView::generarHTML() {
    const std::string documento =
        documentoReporteHTML(analisis_, thumbnailsPNG(), textoFechaReporte(analisis_.fecha));
    const QString ruta =
        QDir(QDir::tempPath())
            .filePath(QString::fromStdString(nombreArchivoReporte(analisis_.nombre)));
    const std::string error = escribirArchivoReporte(ruta, documento);
    if (!error.empty()) {
        auto* alerta = new QMessageBox(QMessageBox::Warning, QStringLiteral("Error"),
                                       QStringLiteral("Error"), QMessageBox::Ok, this);
        alerta->setObjectName(QStringLiteral("alertaReporte"));
        alerta->setAttribute(Qt::WA_DeleteOnClose);
        alerta->setInformativeText(QStringLiteral("No se pudo generar el reporte: ") +
                                   QString::fromStdString(error));
        alerta->setWindowModality(Qt::ApplicationModal);
        alerta->show();
        return;
    }
    if (QDesktopServices::openUrl(QUrl::fromLocalFile(ruta))) return;
    auto* alerta = new QMessageBox(QMessageBox::Warning, QStringLiteral("Error"),
                                   QStringLiteral("No se pudo abrir el reporte"), QMessageBox::Ok, this);
    alerta->setObjectName(QStringLiteral("alertaAbrirReporte"));
    alerta->setAttribute(Qt::WA_DeleteOnClose);
    alerta->setInformativeText(
        QStringLiteral("El escritorio no tiene un programa para abrir archivos HTML. El reporte se guardó en "
                       "«%1»: ábrelo con un navegador para imprimirlo o guardarlo como PDF.")
            .arg(QDir::toNativeSeparators(ruta)));
    alerta->setTextInteractionFlags(Qt::TextSelectableByMouse);
    alerta->setWindowModality(Qt::ApplicationModal);
    alerta->show();
}

void ReporteAnalisisView::seguirEstados(const AnalisisInterferencias& vivo) {
    if (vivo.id != analisis_.id) return;
    // The history keeps an analysis's clashes in their order: each is matched
    // at its own place, and its id confirms it.
    bool cambio = false;
    for (std::size_t k = 0; k < analisis_.interferencias.size() && k < vivo.interferencias.size(); ++k) {
        Interferencia& i = analisis_.interferencias[k];
        const Interferencia& v = vivo.interferencias[k];
        if (v.id == i.id && v.estado != i.estado) {
            i.estado = v.estado;
            cambio = true;
        }
    }
    if (cambio) pagina_->setEstados(analisis_);
}

void ReporteAnalisisView::exportarBCF() {
    if (exportandoBCF_) return;
    exportandoBCF_ = true;
    bcfExito_.reset();
    sincronizar();
    const BCFExporter exportador{analisis_, analisis_.nombre, thumbnailsPNG()};
    const QPointer<ReporteAnalisisView> ventana(this);
    exportador.exportar(
        [ventana](const ArchivosBCF& archivos, BCFExporter::Completion completion) {
            if (!ventana) return completion(false);
            // A cancelled panel is no failure: the bar shows no outcome.
            guardarBCF(ventana, archivos, std::move(completion), [ventana] {
                if (!ventana) return;
                ventana->exportandoBCF_ = false;
                ventana->sincronizar();
                emit ventana->bcfCancelado();
            });
        },
        [ventana](bool exito) {
            if (!ventana) return;
            ventana->exportandoBCF_ = false;
            ventana->bcfExito_ = exito;
            ventana->sincronizar();
            emit ventana->bcfTerminado(exito);
        });
}

} // namespace teskal
