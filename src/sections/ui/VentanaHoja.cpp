#include "sections/ui/VentanaHoja.h"

#include "federation/Formato.h"
#include "sections/DXF.h"
#include "sections/ui/DibujoHoja.h"
#include "ui/Iconos.h"
#include "ui/TextoQt.h"

#include <QCloseEvent>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPageSize>
#include <QPdfWriter>
#include <QFrame>
#include <QMessageBox>
#include <QSaveFile>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace teskal {

namespace {

glm::dvec2 punto(const QPointF& p) { return {p.x(), p.y()}; }

} // namespace

VistaHoja::VistaHoja(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("lienzoHoja"));
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 150);
    // The first fit waits until the view has its size.
    QTimer::singleShot(50, this, [this] {
        hoja.ancho = width();
        hoja.alto = height();
        hoja.encuadrar();
        update();
    });
}

void VistaHoja::paintEvent(QPaintEvent*) {
    hoja.ancho = width();
    hoja.alto = height();
    QPainter p(this);
    dibujarHoja(p, hoja);
}

void VistaHoja::resizeEvent(QResizeEvent*) {
    hoja.ancho = width();
    hoja.alto = height();
}

void VistaHoja::pulsar(QMouseEvent* e, int clics) {
    if (e->button() != Qt::LeftButton) return;
    setFocus();
    const std::size_t cotas = hoja.cotas.size();
    const auto antes = hoja.etiquetas;
    if (hoja.pulsar(punto(e->position()), clics, MedidasQt(this))) update();
    if (hoja.cotas.size() != cotas || hoja.etiquetas != antes) emit contenidoCambiado();
}

void VistaHoja::mousePressEvent(QMouseEvent* e) { pulsar(e, 1); }
void VistaHoja::mouseDoubleClickEvent(QMouseEvent* e) { pulsar(e, 2); }

void VistaHoja::mouseMoveEvent(QMouseEvent* e) {
    const glm::dvec2 m = punto(e->position());
    if (e->buttons() & Qt::LeftButton) {
        if (hoja.arrastrar(m)) update();
        hoja.mousePos = m;
        return;
    }
    if (hoja.mover(m)) update();
}

void VistaHoja::mouseReleaseEvent(QMouseEvent* e) {
    if (e->button() != Qt::LeftButton) return;
    if (hoja.soltar()) update();
}

void VistaHoja::wheelEvent(QWheelEvent* e) {
    const int delta = e->angleDelta().y();
    const double escala = hoja.escala;
    hoja.zoom(delta, punto(e->position()));
    if (hoja.escala != escala) update();
    e->accept();
}

void VistaHoja::keyPressEvent(QKeyEvent* e) {
    if (e->key() == Qt::Key_Escape) {
        if (hoja.escape()) update();
        return;
    }
    QWidget::keyPressEvent(e);
}

VentanaHoja::VentanaHoja(Plano2D plano, QWidget* parent) : QWidget(parent, Qt::Window), titulo_(plano.titulo) {
    setObjectName(QStringLiteral("ventanaHoja"));
    setWindowTitle(q(titulo_));
    resize(820, 680);

    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(0, 0, 0, 0);
    v->setSpacing(0);
    auto* barra = new QWidget(this);
    barra->setObjectName(QStringLiteral("barraHoja"));
    auto* b = new QHBoxLayout(barra);
    b->setContentsMargins(8, 4, 8, 4);
    auto boton = [&](const char* nombre, const QString& texto, const std::string& icono, const QString& ayuda,
                     bool alternable) {
        auto* t = new QToolButton(barra);
        t->setObjectName(QString::fromLatin1(nombre));
        t->setText(texto);
        t->setIcon(iconoSimbolo(icono));
        t->setToolTip(ayuda);
        t->setCheckable(alternable);
        t->setToolButtonStyle(texto.isEmpty() ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
        b->addWidget(t);
        return t;
    };
    etiquetas_ = boton("botonEtiquetas", QStringLiteral("Etiquetas"), "tag.fill",
                       QStringLiteral("Mostrar / ocultar etiquetas IFC"), true);
    etiquetas_->setChecked(true);
    etiquetar_ = boton("botonEtiquetar", QStringLiteral("Etiquetar"), "tag.circle",
                       QStringLiteral("Modo etiqueta: pinchar sobre un elemento para crear su etiqueta\nClic en "
                                      "etiqueta: seleccionar · × : ocultar · Arrastrar: mover"),
                       true);
    cota_ = boton("botonCota", QStringLiteral("Cota"), "ruler",
                  QStringLiteral("Herramienta de cotas: clic en dos puntos para medir\nEsc: cancelar · Clic 1: "
                                 "origen · Clic 2: destino\nArrastrar cota creada: ajustar separación"),
                  true);
    auto* borrar = boton("botonBorrarCotas", {}, "trash", QStringLiteral("Borrar todas las cotas"), false);
    grosor_ = boton("botonGrosor", {}, "lineweight", QStringLiteral("Editar espesores de línea"), true);
    auto* encuadrar = boton("botonEncuadrar", {}, "viewfinder",
                            QStringLiteral("Encuadrar todo (también: doble clic en el lienzo)"), false);
    b->addStretch(1);
    auto* dxf = boton("botonDXF", QStringLiteral("DXF"), "square.and.arrow.up",
                      QStringLiteral("Exportar DXF compatible con AutoCAD / Revit"), false);
    connect(dxf, &QToolButton::clicked, this, &VentanaHoja::exportarDXF);
    auto* pdf = boton("botonPDF", QStringLiteral("PDF"), "doc.richtext",
                      QStringLiteral("Exportar PDF de la vista 2D actual"), false);
    connect(pdf, &QToolButton::clicked, this, &VentanaHoja::exportarPDF);
    guardar_ = boton("botonGuardar", QStringLiteral("Guardar"), "bookmark",
                     QStringLiteral("Guardar sección en el panel lateral"), false);
    connect(guardar_, &QToolButton::clicked, this, &VentanaHoja::guardar);
    v->addWidget(barra);

    vista_ = new VistaHoja(this);
    vista_->hoja.segmentos = std::move(plano.segmentos);
    vista_->hoja.etiquetas = std::move(plano.etiquetas);
    vista_->hoja.cotas = std::move(plano.cotas);
    vista_->hoja.segmentosGrilla = std::move(plano.segmentosGrilla);
    v->addWidget(vista_, 1);

    auto* pie = new QWidget(this);
    auto* p = new QHBoxLayout(pie);
    p->setContentsMargins(8, 2, 8, 2);
    estado_ = new QLabel(pie);
    estado_->setObjectName(QStringLiteral("estadoHoja"));
    auto* pista = new QLabel(QStringLiteral("Scroll: zoom · Arrastrar: pan · Doble clic: encuadrar"), pie);
    pista->setStyleSheet(QStringLiteral("color: gray;"));
    p->addWidget(estado_);
    p->addStretch(1);
    p->addWidget(pista);
    v->addWidget(pie);

    // "Espesores de línea": two sliders and "Restablecer".
    popoverGrosor_ = new QFrame(this, Qt::Popup);
    popoverGrosor_->setObjectName(QStringLiteral("popoverGrosor"));
    popoverGrosor_->setFrameShape(QFrame::StyledPanel);
    auto* g = new QVBoxLayout(popoverGrosor_);
    auto* tituloPopover = new QLabel(QStringLiteral("Espesores de línea"), popoverGrosor_);
    tituloPopover->setStyleSheet(QStringLiteral("font-weight: bold;"));
    g->addWidget(tituloPopover);
    auto deslizador = [&](const char* nombre, const QString& texto, int desde, int hasta, int valor) {
        auto* fila = new QHBoxLayout();
        auto* s = new QSlider(Qt::Horizontal, popoverGrosor_);
        s->setObjectName(QString::fromLatin1(nombre));
        s->setRange(desde, hasta); // quarters
        s->setValue(valor);
        auto* valorTexto = new QLabel(popoverGrosor_);
        auto mostrar = [valorTexto](int cuartos) { valorTexto->setText(q(formato("%.2f", cuartos * 0.25))); };
        mostrar(valor);
        connect(s, &QSlider::valueChanged, valorTexto, mostrar);
        fila->addWidget(new QLabel(texto, popoverGrosor_));
        fila->addWidget(s, 1);
        fila->addWidget(valorTexto);
        g->addLayout(fila);
        return s;
    };
    grosorCorte_ = deslizador("deslizadorCorte", QStringLiteral("Corte"), 2, 16, 4);
    grosorProyeccion_ = deslizador("deslizadorProyeccion", QStringLiteral("Proyección"), 1, 8, 2);
    auto* restablecer = new QPushButton(QStringLiteral("Restablecer"), popoverGrosor_);
    g->addWidget(restablecer, 0, Qt::AlignRight);
    connect(restablecer, &QPushButton::clicked, this, [this] {
        grosorCorte_->setValue(4);
        grosorProyeccion_->setValue(2);
    });
    connect(grosorCorte_, &QSlider::valueChanged, this, &VentanaHoja::actualizarVista);
    connect(grosorProyeccion_, &QSlider::valueChanged, this, &VentanaHoja::actualizarVista);
    connect(grosor_, &QToolButton::toggled, this, [this](bool on) {
        if (!on) {
            popoverGrosor_->hide();
            return;
        }
        popoverGrosor_->adjustSize();
        popoverGrosor_->move(grosor_->mapToGlobal(QPoint(0, grosor_->height())));
        popoverGrosor_->show();
    });
    popoverGrosor_->installEventFilter(this);

    connect(etiquetas_, &QToolButton::toggled, this, &VentanaHoja::actualizarVista);
    connect(etiquetar_, &QToolButton::toggled, this, [this](bool on) {
        if (on) cota_->setChecked(false);
        actualizarVista();
    });
    connect(cota_, &QToolButton::toggled, this, [this](bool on) {
        if (on) etiquetar_->setChecked(false);
        actualizarVista();
    });
    connect(borrar, &QToolButton::clicked, this, [this] {
        vista_->hoja.borrarCotas();
        vista_->update();
    });
    connect(encuadrar, &QToolButton::clicked, this, [this] {
        vista_->hoja.encuadrar();
        vista_->update();
    });
    actualizarVista();
    actualizarEstado();
}

void VentanaHoja::actualizarVista() {
    EstadoHoja& h = vista_->hoja;
    h.mostrarEtiquetas = etiquetas_->isChecked();
    h.modoEtiquetar = etiquetar_->isChecked();
    h.modoCota = cota_->isChecked();
    h.grosorCorte = grosorCorte_->value() * 0.25;
    h.grosorProyeccion = grosorProyeccion_->value() * 0.25;
    h.cotaP1Preview.reset();
    h.snapPoint.reset();
    etiquetas_->setIcon(iconoSimbolo(h.mostrarEtiquetas ? "tag.fill" : "tag"));
    etiquetar_->setText(h.modoEtiquetar ? QStringLiteral("Etiquetando…") : QStringLiteral("Etiquetar"));
    etiquetar_->setIcon(iconoSimbolo(h.modoEtiquetar ? "tag.circle.fill" : "tag.circle"));
    cota_->setText(h.modoCota ? QStringLiteral("Midiendo…") : QStringLiteral("Cota"));
    vista_->update();
}

QString VentanaHoja::nombreArchivo() const {
    QString nombre = q(titulo_);
    nombre.replace(QLatin1Char('/'), QLatin1Char('-'));
    nombre.remove(QLatin1Char(':'));
    nombre.replace(QLatin1Char(' '), QLatin1Char('_'));
    return nombre;
}

void VentanaHoja::exportarDXF() {
    QFileDialog panel(this, QStringLiteral("Exportar plano DXF"));
    panel.setObjectName(QStringLiteral("panelDXF"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setNameFilter(QStringLiteral("DXF (*.dxf)"));
    panel.setDefaultSuffix(QStringLiteral("dxf"));
    panel.selectFile(nombreArchivo() + QStringLiteral(".dxf"));
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty()) return;
    escribirDXF(panel.selectedFiles().first());
}

void VentanaHoja::alertaError(const QString& texto, const QString& detalle) {
    QMessageBox alerta(QMessageBox::Critical, QStringLiteral("Error"), texto, QMessageBox::Ok, this);
    alerta.setObjectName(QStringLiteral("alertaExportar"));
    alerta.setInformativeText(detalle);
    alerta.exec();
}

void VentanaHoja::exportarPDF() {
    QFileDialog panel(this, QStringLiteral("Exportar sección como PDF"));
    panel.setObjectName(QStringLiteral("panelPDF"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setNameFilter(QStringLiteral("PDF (*.pdf)"));
    panel.setDefaultSuffix(QStringLiteral("pdf"));
    panel.selectFile(nombreArchivo() + QStringLiteral(".pdf"));
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty()) return;
    escribirPDF(panel.selectedFiles().first());
}

bool VentanaHoja::escribirPDF(const QString& ruta) {
    // The page is the view at this moment, one point per pixel; the drawing
    // is replayed into it, so lines and texts stay vectors.
    EstadoHoja hoja = vista_->hoja;
    hoja.ancho = vista_->width();
    hoja.alto = vista_->height();
    QSaveFile archivo(ruta);
    if (archivo.open(QIODevice::WriteOnly)) {
        {
            QPdfWriter pdf(&archivo);
            pdf.setCreator(QStringLiteral("VORNEL"));
            pdf.setTitle(q(titulo_));
            pdf.setResolution(72);
            pdf.setPageMargins(QMarginsF(0, 0, 0, 0));
            pdf.setPageSize(QPageSize(QSizeF(hoja.ancho, hoja.alto), QPageSize::Point, QString(),
                                      QPageSize::ExactMatch));
            QPainter p(&pdf);
            dibujarHoja(p, hoja);
        }
        if (archivo.commit()) return true;
    }
    alertaError(QStringLiteral("Error al exportar PDF"), archivo.errorString());
    return false;
}

void VentanaHoja::guardar() {
    if (alGuardar) alGuardar(titulo_, vista_->hoja.cotas, vista_->hoja.etiquetas);
    QDialog dialogo(this);
    dialogo.setObjectName(QStringLiteral("dialogoGuardarSeccion"));
    dialogo.setWindowTitle(QStringLiteral("Guardar sección"));
    auto* v = new QVBoxLayout(&dialogo);
    v->addWidget(new QLabel(QStringLiteral("Nombre de la sección"), &dialogo));
    auto* campo = new QLineEdit(q(titulo_), &dialogo);
    campo->setObjectName(QStringLiteral("nombreSeccion"));
    campo->selectAll();
    v->addWidget(campo);
    auto* nota = new QLabel(QStringLiteral("Asigna un nombre para identificar esta sección en el panel lateral."), &dialogo);
    nota->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(nota);
    auto* botones = new QDialogButtonBox(&dialogo);
    botones->addButton(QStringLiteral("Guardar"), QDialogButtonBox::AcceptRole);
    botones->addButton(QStringLiteral("Cancelar"), QDialogButtonBox::RejectRole);
    connect(botones, &QDialogButtonBox::accepted, &dialogo, &QDialog::accept);
    connect(botones, &QDialogButtonBox::rejected, &dialogo, &QDialog::reject);
    v->addWidget(botones);
    if (dialogo.exec() != QDialog::Accepted) return;
    const QString nombre = campo->text().trimmed();
    if (alGuardarSeccion) alGuardarSeccion(nombre.isEmpty() ? titulo_ : nombre.toStdString());
    mostrarGuardado();
}

void VentanaHoja::mostrarGuardado() {
    guardadoFlash_ = true;
    guardar_->setText(QStringLiteral("Guardado"));
    guardar_->setIcon(iconoSimbolo("checkmark.circle.fill"));
    QTimer::singleShot(1800, this, [this] {
        guardadoFlash_ = false;
        guardar_->setText(QStringLiteral("Guardar"));
        guardar_->setIcon(iconoSimbolo("bookmark"));
    });
}

bool VentanaHoja::escribirDXF(const QString& ruta) {
    const EstadoHoja& h = vista_->hoja;
    const std::string texto = generarDXF(h.segmentos, h.etiquetas, h.cotas);
    // Written whole or not at all: a failed write leaves no partial file.
    QSaveFile archivo(ruta);
    if (archivo.open(QIODevice::WriteOnly) &&
        archivo.write(texto.data(), static_cast<qint64>(texto.size())) == static_cast<qint64>(texto.size()) &&
        archivo.commit())
        return true;
    alertaError(QStringLiteral("Error al exportar DXF"), archivo.errorString());
    return false;
}

void VentanaHoja::actualizarEstado() {
    std::size_t corte = 0, vistas = 0;
    for (const auto& s : vista_->hoja.segmentos) (s.esCorte ? corte : vistas)++;
    QString texto = QString::number(corte) + QStringLiteral(" líneas de corte");
    if (vistas > 0) texto += QStringLiteral(" · ") + QString::number(vistas) + QStringLiteral(" de proyección");
    estado_->setText(texto);
}

bool VentanaHoja::eventFilter(QObject* objeto, QEvent* evento) {
    // A click outside closes the popover; its button goes off with it.
    if (objeto == popoverGrosor_ && evento->type() == QEvent::Hide) grosor_->setChecked(false);
    return QWidget::eventFilter(objeto, evento);
}

void VentanaHoja::closeEvent(QCloseEvent* e) {
    popoverGrosor_->hide();
    if (alGuardar) alGuardar(titulo_, vista_->hoja.cotas, vista_->hoja.etiquetas);
    e->accept();
}

} // namespace teskal
