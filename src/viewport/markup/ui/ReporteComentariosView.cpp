#include "viewport/markup/ui/ReporteComentariosView.h"

#include "analyses/bcf/BCFComentarios.h"
#include "analyses/bcf/ui/GuardadoBCF.h"
#include "ui/Iconos.h"
#include "viewport/markup/ui/PanelComentarios.h"
#include "viewport/markup/ui/PdfComentarios.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QPushButton>
#include <QScrollArea>
#include <QThreadPool>
#include <QVBoxLayout>

namespace teskal {

void exportarBCFComentarios(const std::vector<ComentarioMarkup>& comentarios, const QString& ruta, FormaBCF forma,
                            std::function<void(bool)> fin) {
    BCFComentarios bcf{comentarios, {}, forma};
    if (forma == FormaBCF::estandar)
        for (const auto& c : comentarios) {
            QImage foto;
            if (!c.imagenJPEG || !foto.loadFromData(*c.imagenJPEG)) continue;
            QByteArray png;
            QBuffer buffer(&png);
            buffer.open(QIODevice::WriteOnly);
            if (foto.save(&buffer, "PNG")) bcf.snapshotsPNG[c.id] = png;
        }
    const QString destino = destinoBCFComentarios(ruta);
    QThreadPool::globalInstance()->start([bcf = std::move(bcf), destino, fin = std::move(fin)]() mutable {
        const bool hecho = bcf.escribir(destino);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [hecho, fin = std::move(fin)] { if (fin) fin(hecho); },
            Qt::QueuedConnection);
    });
}

namespace {

QLabel* textoGris(const QString& t, QWidget* padre) {
    auto* l = new QLabel(t, padre);
    l->setStyleSheet(QStringLiteral("color: #888;"));
    return l;
}

QWidget* tarjeta(const ComentarioMarkup& c, QWidget* padre) {
    auto* w = new QFrame(padre);
    w->setObjectName(QStringLiteral("tarjetaComentario"));
    w->setFrameShape(QFrame::StyledPanel);
    auto* h = new QHBoxLayout(w);
    auto* foto = new QLabel(w);
    QImage imagen;
    if (c.imagenJPEG) imagen.loadFromData(*c.imagenJPEG);
    if (imagen.isNull())
        foto->setText(QStringLiteral("Sin captura de pantalla"));
    else
        foto->setPixmap(QPixmap::fromImage(imagen.scaledToWidth(220, Qt::SmoothTransformation)));
    h->addWidget(foto);
    auto* v = new QVBoxLayout;
    auto* tag = new QLabel(QString::fromStdString(c.tag), w);
    tag->setStyleSheet(QStringLiteral("font-weight: bold; font-size: 15px;"));
    v->addWidget(tag);
    if (!c.descripcion.empty()) {
        auto* d = new QLabel(QString::fromStdString(c.descripcion), w);
        d->setWordWrap(true);
        v->addWidget(d);
    }
    for (const auto& [simbolo, texto] : {std::pair{"person.fill", QString::fromStdString(c.autor)},
                                         std::pair{"calendar", fechaComentario(c)}}) {
        auto* fila = new QHBoxLayout;
        auto* icono = new QLabel(w);
        icono->setPixmap(iconoSimbolo(simbolo).pixmap(12, 12));
        fila->addWidget(icono);
        fila->addWidget(textoGris(texto, w), 1);
        v->addLayout(fila);
    }
    v->addWidget(textoGris(QStringLiteral("%1 trazo(s)   ·   %2 texto(s)").arg(c.trazados.size()).arg(c.textos.size()),
                           w));
    v->addStretch(1);
    h->addLayout(v, 1);
    return w;
}

} // namespace

ReporteComentariosView::ReporteComentariosView(std::vector<ComentarioMarkup> comentarios,
                                               std::function<void(std::string)> alFallar, QWidget* parent)
    : QWidget(parent), comentarios_(std::move(comentarios)), alFallar_(std::move(alFallar)) {
    setObjectName(QStringLiteral("reporteComentarios"));
    setWindowTitle(QStringLiteral("Reporte de Comentarios — VORNEL"));
    auto* v = new QVBoxLayout(this);
    auto* titulo = new QLabel(QStringLiteral("Reporte de Comentarios"), this);
    titulo->setStyleSheet(QStringLiteral("font-size: 20px; font-weight: bold;"));
    v->addWidget(titulo);
    auto* cuenta = textoGris(QStringLiteral("%1 comentario(s)  ·  %2")
                                 .arg(comentarios_.size())
                                 .arg(QLocale(QStringLiteral("es_CL"))
                                          .toString(QDate::currentDate(), QStringLiteral("d 'de' MMMM 'de' yyyy"))),
                             this);
    cuenta->setObjectName(QStringLiteral("cuentaComentarios"));
    v->addWidget(cuenta);
    auto* botones = new QHBoxLayout;
    auto* bcf = new QPushButton(iconoSimbolo("archivebox"), QStringLiteral("Exportar BCF"), this);
    bcf->setObjectName(QStringLiteral("exportarBCF"));
    connect(bcf, &QPushButton::clicked, this, &ReporteComentariosView::pedirBCF);
    auto* pdf = new QPushButton(iconoSimbolo("doc.richtext"), QStringLiteral("Exportar PDF"), this);
    pdf->setObjectName(QStringLiteral("exportarPDF"));
    connect(pdf, &QPushButton::clicked, this, &ReporteComentariosView::pedirPDF);
    botones->addWidget(bcf);
    botones->addWidget(pdf);
    botones->addStretch(1);
    v->addLayout(botones);

    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    auto* lista = new QWidget(desplazable);
    auto* filas = new QVBoxLayout(lista);
    for (const auto& c : comentarios_) filas->addWidget(tarjeta(c, lista));
    filas->addStretch(1);
    desplazable->setWidget(lista);
    v->addWidget(desplazable, 1);
}

bool ReporteComentariosView::exportarPDF(const QString& ruta) {
    QString error;
    if (exportarPDFComentarios(comentarios_, ruta, QDateTime::currentDateTime(), &error)) return true;
    if (alFallar_) alFallar_("No se pudo exportar el PDF de comentarios: " + error.toStdString() + ".");
    return false;
}

void ReporteComentariosView::exportarBCF(const QString& ruta, FormaBCF forma, std::function<void(bool)> fin) {
    exportarBCFComentarios(comentarios_, ruta, forma, [alFallar = alFallar_, fin = std::move(fin)](bool hecho) {
        if (!hecho && alFallar) alFallar("No se pudo exportar el archivo BCF de comentarios.");
        if (fin) fin(hecho);
    });
}

void ReporteComentariosView::pedirPDF() {
    auto* panel = new QFileDialog(this, QStringLiteral("Exportar PDF"));
    panel->setObjectName(QStringLiteral("panelPDFComentarios"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(QStringLiteral("PDF (*.pdf)"));
    panel->setDefaultSuffix(QStringLiteral("pdf"));
    panel->selectFile(QStringLiteral("Reporte_Comentarios_VORNEL"));
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& ruta) { exportarPDF(ruta); });
    panel->open();
}

void ReporteComentariosView::pedirBCF() {
    auto* panel = new QFileDialog(this, QStringLiteral("Exportar BCF"));
    panel->setObjectName(QStringLiteral("panelBCFComentarios"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters({filtroBCF(FormaBCF::estandar), filtroBCF(FormaBCF::literalTESKAL)});
    panel->selectNameFilter(filtroBCF(FormaBCF::estandar));
    panel->selectFile(QStringLiteral("Comentarios_VORNEL.bcf"));
    connect(panel, &QFileDialog::fileSelected, this, [this, panel](const QString& ruta) {
        const FormaBCF forma = panel->selectedNameFilter() == filtroBCF(FormaBCF::literalTESKAL)
                                   ? FormaBCF::literalTESKAL
                                   : FormaBCF::estandar;
        exportarBCF(ruta, forma);
    });
    panel->open();
}

} // namespace teskal
