#include "timeline/ui/TimeLinerView.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ValorGanado.h"
#include "timeline/ui/DibujoGantt.h"
#include "timeline/ui/EditorPaqueteView.h"
#include "timeline/ui/FichaAWPView.h"
#include "timeline/ui/GraficoCurvaS.h"
#include "timeline/ui/ImportarCSVView.h"
#include "timeline/ui/VistaGantt.h"
#include "ui/Iconos.h"
#include "ui/ReconstruccionDiferida.h"
#include "ui/TextoQt.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolButton>

namespace teskal {

namespace {

constexpr int pasosSlider = 1000;

// A tile of a figure: its label small, its value large in its colour.
QWidget* tile(const QString& etiqueta, const QString& valor, const Color& color, const QString& nombre,
              QWidget* padre) {
    auto* w = new QWidget(padre);
    w->setObjectName(nombre);
    w->setAttribute(Qt::WA_StyledBackground);
    w->setStyleSheet(QStringLiteral("#%1 { background: rgba(255,255,255,0.05); border-radius: 6px; }").arg(nombre));
    auto* v = new QVBoxLayout(w);
    v->setContentsMargins(8, 6, 8, 6);
    v->setSpacing(1);
    auto* e = new QLabel(etiqueta, w);
    e->setStyleSheet(QStringLiteral("color: #999; font-size: 10px;"));
    auto* l = new QLabel(valor, w);
    l->setObjectName(QStringLiteral("valor"));
    l->setStyleSheet(QStringLiteral("color: %1; font-size: 15px; font-weight: bold;").arg(css(color)));
    v->addWidget(e);
    v->addWidget(l);
    return w;
}

QLabel* cabecera(const QString& texto, QWidget* padre) {
    auto* l = new QLabel(texto, padre);
    l->setStyleSheet(QStringLiteral("color: #aaa; font-weight: bold; font-size: 11px; padding-top: 6px;"));
    return l;
}

} // namespace

void temaTimeline(QWidget& w) {
    QPalette paleta = w.palette();
    paleta.setColor(QPalette::Window, QColor(0x1c, 0x1c, 0x1f));
    paleta.setColor(QPalette::Base, QColor(0x16, 0x16, 0x18));
    paleta.setColor(QPalette::AlternateBase, QColor(0x22, 0x22, 0x26));
    paleta.setColor(QPalette::Button, QColor(0x2c, 0x2c, 0x30));
    for (const auto rol : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        paleta.setColor(rol, QColor(0xe6, 0xe6, 0xe6));
    w.setPalette(paleta);
    w.setAutoFillBackground(true);
    // Labels with a style of their own take the application's palette, and so
    // do the pages of scroll areas: their colours are given by rule.
    w.setStyleSheet(QStringLiteral("#%1 QLabel, #%1 QCheckBox { color: #e6e6e6; } "
                                   "#%1 QScrollArea > QWidget > QWidget { background: #1c1c1f; }")
                        .arg(w.objectName()));
}

TimeLinerView::TimeLinerView(ContentView& cv, QWidget* parent) : QWidget(parent), cv_(cv) {
    setObjectName(QStringLiteral("timeLinerView"));
    setWindowTitle(QStringLiteral("Timeline / Control de Obra — VORNEL"));
    temaTimeline(*this);
    auto* v = new QVBoxLayout(this);
    v->setContentsMargins(10, 8, 10, 8);
    v->addWidget(crearBarra());
    v->addWidget(crearScrubber());

    auto* division = new QSplitter(Qt::Horizontal, this);
    desplazaGantt_ = new QScrollArea(division);
    desplazaGantt_->setWidgetResizable(true);
    desplazaGantt_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    gantt_ = new VistaGantt(cv_, desplazaGantt_);
    desplazaGantt_->setWidget(gantt_);
    division->addWidget(desplazaGantt_);

    lateral_ = new QStackedWidget(division);
    auto* desplazaEVM = new QScrollArea(lateral_);
    desplazaEVM->setWidgetResizable(true);
    auto* panelEVM = new QWidget(desplazaEVM);
    panelEVM->setObjectName(QStringLiteral("panelEVM"));
    cajaEVM_ = new QVBoxLayout(panelEVM);
    desplazaEVM->setWidget(panelEVM);
    lateral_->addWidget(desplazaEVM);

    auto* paginaCurva = new QWidget(lateral_);
    auto* vc = new QVBoxLayout(paginaCurva);
    vc->setContentsMargins(0, 0, 0, 0);
    auto* modos = new QComboBox(paginaCurva);
    modos->setObjectName(QStringLiteral("curvasModo"));
    modos->addItems({QStringLiteral("Costo"), QStringLiteral("HH"), QStringLiteral("Costo + HH")});
    modos->setCurrentIndex(2);
    curva_ = new GraficoCurvaS(cv_, paginaCurva);
    connect(modos, &QComboBox::currentIndexChanged, this, [this](int i) {
        curva_->curvasModo = static_cast<ModoCurvas>(i);
        curva_->update();
    });
    vc->addWidget(modos, 0, Qt::AlignLeft);
    vc->addWidget(curva_, 1);
    lateral_->addWidget(paginaCurva);
    division->addWidget(lateral_);
    division->setStretchFactor(0, 3);
    division->setStretchFactor(1, 2);
    division->setSizes({700, 480});
    v->addWidget(division, 1);

    playTimer_.setInterval(1000 / ticksPorSegundo);
    connect(&playTimer_, &QTimer::timeout, this, [this] { cv_.pasoReproduccion(); });
    reconstruirTrasCambios(cv_, this, [this] { reconstruirPanelEVM(); });
    connect(&cv_, &ContentView::changed, this, &TimeLinerView::sincronizar);
    reconstruirPanelEVM();
    sincronizar();
}

TimeLinerView::~TimeLinerView() {
    playTimer_.stop();
    if (!abierta_) return;
    // The workspace's signal must not reach this half-destroyed view.
    disconnect(&cv_, nullptr, this, nullptr);
    cv_.cerrarTimeLiner();
}

QWidget* TimeLinerView::crearBarra() {
    auto* barra = new QWidget(this);
    auto* h = new QHBoxLayout(barra);
    h->setContentsMargins(0, 0, 0, 0);
    auto* titulo = new QLabel(QStringLiteral("Timeline / Control de Obra"), barra);
    titulo->setStyleSheet(QStringLiteral("font-size: 16px; font-weight: bold;"));
    h->addWidget(titulo);
    h->addStretch(1);
    auto* nuevo = new QPushButton(iconoSimbolo("plus.circle"), QStringLiteral("Nuevo paquete"), barra);
    nuevo->setObjectName(QStringLiteral("nuevoPaquete"));
    connect(nuevo, &QPushButton::clicked, this, [this] { cv_.nuevoPaqueteAWP(); });
    h->addWidget(nuevo);
    // Packages from the models' properties and from and to spreadsheets.
    const auto boton = [&](const char* icono, const char* texto, const char* nombre, auto accion) {
        auto* b = new QPushButton(iconoSimbolo(icono), QString::fromUtf8(texto), barra);
        b->setObjectName(QString::fromLatin1(nombre));
        connect(b, &QPushButton::clicked, this, [this, accion] { accion(cv_, this); });
        h->addWidget(b);
    };
    boton("wand.and.stars", "Detector AWP", "detectorAWPBoton", abrirDetectorAWP);
    boton("square.and.arrow.down", "Importar CSV", "importarCSVBoton", seleccionarCSV);
    boton("square.and.arrow.up", "Exportar CSV", "exportarCSVBoton", exportarCSV);
    auto* pdf = new QPushButton(iconoSimbolo("printer.fill"), QStringLiteral("Exportar Gantt a PDF"), barra);
    pdf->setObjectName(QStringLiteral("exportarGantt"));
    connect(pdf, &QPushButton::clicked, this, &TimeLinerView::exportarGanttPDF);
    h->addWidget(pdf);
    // The side panel: "EVM / Costo" or "S-Curve".
    auto* grupo = new QButtonGroup(barra);
    const char* nombres[] = {"EVM / Costo", "S-Curve"};
    for (int i = 0; i < 2; ++i) {
        auto* b = new QPushButton(QString::fromUtf8(nombres[i]), barra);
        b->setObjectName(i == 0 ? QStringLiteral("panelEVMBoton") : QStringLiteral("panelCurvaBoton"));
        b->setCheckable(true);
        b->setChecked(i == panelModo);
        grupo->addButton(b, i);
        h->addWidget(b);
    }
    connect(grupo, &QButtonGroup::idClicked, this, [this](int i) {
        panelModo = i;
        lateral_->setCurrentIndex(i);
    });
    return barra;
}

QWidget* TimeLinerView::crearScrubber() {
    auto* fila = new QWidget(this);
    auto* h = new QHBoxLayout(fila);
    h->setContentsMargins(0, 4, 0, 4);
    auto* atras = new QToolButton(fila);
    atras->setObjectName(QStringLiteral("retrocederScrubber"));
    atras->setText(QStringLiteral("◀ 30 d"));
    atras->setToolTip(QStringLiteral("Retroceder 30 días"));
    connect(atras, &QToolButton::clicked, this, [this] { cv_.retrocederScrubber(); });
    scrubber_ = new QSlider(Qt::Horizontal, fila);
    scrubber_->setObjectName(QStringLiteral("scrubber"));
    scrubber_->setRange(0, pasosSlider);
    connect(scrubber_, &QSlider::valueChanged, this,
            [this](int valor) { cv_.arrastrarScrubber(static_cast<double>(valor) / pasosSlider); });
    auto* adelante = new QToolButton(fila);
    adelante->setObjectName(QStringLiteral("avanzarScrubber"));
    adelante->setText(QStringLiteral("30 d ▶"));
    adelante->setToolTip(QStringLiteral("Avanzar 30 días"));
    connect(adelante, &QToolButton::clicked, this, [this] { cv_.avanzarScrubber(); });
    fechaScrubber_ = new QLabel(fila);
    fechaScrubber_->setObjectName(QStringLiteral("fechaScrubber"));
    fechaScrubber_->setMinimumWidth(90);
    fechaScrubber_->setStyleSheet(QStringLiteral("color: #ffcc00; font-weight: bold;"));
    autoAvance_ = new QCheckBox(QStringLiteral("Auto %"), fila);
    autoAvance_->setObjectName(QStringLiteral("autoAvance"));
    autoAvance_->setStyleSheet(QStringLiteral("color: #e6e6e6;"));
    connect(autoAvance_, &QCheckBox::toggled, this, [this](bool activo) { cv_.fijarAutoAvance(activo); });
    reproducir_ = new QToolButton(fila);
    reproducir_->setObjectName(QStringLiteral("reproducir"));
    reproducir_->setMinimumWidth(32);
    connect(reproducir_, &QToolButton::clicked, this, [this] { cv_.alternarReproduccion(); });
    auto* velocidad = new QComboBox(fila);
    velocidad->setObjectName(QStringLiteral("velocidad"));
    for (const auto& [texto, dias] : velocidades4D) velocidad->addItem(QString::fromUtf8(texto), dias);
    velocidad->setCurrentIndex(1); // "2×", 30 days a second
    connect(velocidad, &QComboBox::currentIndexChanged, this,
            [this, velocidad](int i) { cv_.fijarVelocidad(velocidad->itemData(i).toDouble()); });
    estadoSync4D_ = new QLabel(fila);
    estadoSync4D_->setObjectName(QStringLiteral("estadoSync4D"));
    estadoSync4D_->setMinimumWidth(150);
    estadoSync4D_->setStyleSheet(QStringLiteral("color: #bbb;"));
    h->addWidget(reproducir_);
    h->addWidget(velocidad);
    h->addWidget(atras);
    h->addWidget(scrubber_, 1);
    h->addWidget(adelante);
    h->addWidget(fechaScrubber_);
    h->addWidget(estadoSync4D_);
    h->addWidget(autoAvance_);
    return fila;
}

void TimeLinerView::sincronizar() {
    const TimeLinerConfig& c = cv_.timeLiner;
    const double rango = static_cast<double>(c.fechaInicio.secsTo(c.fechaFin));
    const double r = rango > 0 ? static_cast<double>(c.fechaInicio.secsTo(cv_.timeline.fechaScrubber)) / rango : 0;
    {
        const QSignalBlocker bloqueo(scrubber_);
        scrubber_->setValue(static_cast<int>(std::lround(std::clamp(r, 0.0, 1.0) * pasosSlider)));
    }
    {
        const QSignalBlocker bloqueo(autoAvance_);
        autoAvance_->setChecked(cv_.timeline.modoAutoAvance);
    }
    fechaScrubber_->setText(q(textoFechaGantt(cv_.timeline.fechaScrubber, "dd-MM-yyyy")));
    estadoSync4D_->setText(q(cv_.timeline.estadoSync4D));
    // The timer follows the workspace: a tick that reaches the end stops it.
    const bool reproduciendo = cv_.timeline.reproduciendo && cv_.timeline.modo4D;
    if (reproduciendo != playTimer_.isActive()) {
        if (reproduciendo) playTimer_.start();
        else playTimer_.stop();
    }
    reproducir_->setText(reproduciendo ? QStringLiteral("⏸") : QStringLiteral("▶"));
    reproducir_->setToolTip(reproduciendo ? QStringLiteral("Pausa") : QStringLiteral("Reproducir"));
    reproducir_->setStyleSheet(QStringLiteral("color: %1; font-weight: bold;")
                                   .arg(css(reproduciendo ? colores::naranja : colores::verde)));
    if (cv_.timeline.paqueteEditando && !editor_) {
        editor_ = new EditorPaqueteView(cv_, *cv_.timeline.paqueteEditando, this);
        editor_->setAttribute(Qt::WA_DeleteOnClose);
        editor_->open();
    }
}

void TimeLinerView::reconstruirPanelEVM() {
    auto* v = contenidoNuevo(cajaEVM_, contenidoEVM_, cajaEVM_->parentWidget());
    v->setSpacing(6);
    QWidget* w = contenidoEVM_;
    const TimeLinerConfig& c = cv_.timeLiner;
    const ArbolAWP arbol(c);
    const ModoAvance modo = cv_.timeline.modoAvance();
    const TotalesEVM t = totalesEVM(arbol, modo);

    v->addWidget(cabecera(QStringLiteral("VALOR GANADO — COSTO"), w));
    auto* rejilla = new QGridLayout;
    rejilla->addWidget(tile(QStringLiteral("BAC (Presupuesto)"), q(textoMoneda(t.bac, c.moneda)), colores::azul,
                            QStringLiteral("tileBAC"), w), 0, 0);
    rejilla->addWidget(tile(QStringLiteral("AC  (Costo real)"), q(textoMoneda(t.ac, c.moneda)), colores::naranja,
                            QStringLiteral("tileAC"), w), 0, 1);
    rejilla->addWidget(tile(QStringLiteral("EV  (Valor ganado)"), q(textoMoneda(t.ev, c.moneda)), colores::verde,
                            QStringLiteral("tileEV"), w), 0, 2);
    rejilla->addWidget(tile(QStringLiteral("SPI"), q(formato("%.2f", t.spi)), colorIndice(t.spi),
                            QStringLiteral("tileSPI"), w), 1, 0);
    rejilla->addWidget(tile(QStringLiteral("CPI"), q(formato("%.2f", t.cpi)), colorIndice(t.cpi),
                            QStringLiteral("tileCPI"), w), 1, 1);
    rejilla->addWidget(tile(QStringLiteral("Avance global"), q(textoPorcentaje(t.avanceGlobal)),
                            t.avanceGlobal >= 1 ? colores::verde : colores::azul, QStringLiteral("tileAvance"), w),
                       1, 2);
    v->addLayout(rejilla);

    if (t.mostrarHH) {
        v->addWidget(cabecera(QStringLiteral("HORAS HOMBRE"), w));
        auto* hh = new QGridLayout;
        hh->addWidget(tile(QStringLiteral("HH Planificadas"), q(textoHH(t.hhPlanificadas)), colores::azul,
                           QStringLiteral("tileHHPlan"), w), 0, 0);
        hh->addWidget(tile(QStringLiteral("HH Reales"), q(textoHH(t.hhReales)), colores::naranja,
                           QStringLiteral("tileHHReal"), w), 0, 1);
        hh->addWidget(tile(QStringLiteral("HH Ganadas"), q(textoHH(t.hhGanadas)), colores::verde,
                           QStringLiteral("tileHHGanadas"), w), 0, 2);
        hh->addWidget(tile(QStringLiteral("Factor\nProd."), q(formato("%.2f", t.factorProd)),
                           colorIndice(t.factorProd), QStringLiteral("tileFactor"), w), 1, 0);
        hh->addWidget(tile(QStringLiteral("HH/día"), q(formato("%.2f", t.hhDia)), colorIndice(t.hhDia),
                           QStringLiteral("tileHHDia"), w), 1, 1);
        v->addLayout(hh);
    }

    // One card per package: the selected one alone, else the areas, else
    // the IWPs.
    const PaqueteAWP* seleccionado = cv_.timeline.seleccionado ? cv_.paqueteAWP(*cv_.timeline.seleccionado) : nullptr;
    v->addWidget(cabecera(seleccionado ? QStringLiteral("PAQUETE SELECCIONADO") : QStringLiteral("PAQUETES"), w));
    if (c.paquetes.empty()) {
        auto* vacio = new QLabel(QStringLiteral("Sin paquetes: crea un CWA con «Nuevo paquete»."), w);
        vacio->setStyleSheet(QStringLiteral("color: #888;"));
        v->addWidget(vacio);
    }
    for (const PaqueteAWP* p : paquetesDelPanel(arbol, seleccionado)) {
        const FichaEVM f = fichaEVM(arbol, *p, modo);
        auto* tarjeta = new QWidget(w);
        tarjeta->setObjectName(QStringLiteral("tarjeta_") + q(p->codigo));
        tarjeta->setAttribute(Qt::WA_StyledBackground);
        tarjeta->setStyleSheet(QStringLiteral("#%1 { background: rgba(255,255,255,0.05); border-radius: 6px; }")
                                   .arg(tarjeta->objectName()));
        auto* tv = new QVBoxLayout(tarjeta);
        tv->setSpacing(2);
        auto* cab = new QHBoxLayout;
        auto* nombre = new QLabel(QStringLiteral("<b>%1</b>  %2  <span style='color:#888'>%3</span>")
                                      .arg(q(p->codigo).toHtmlEscaped(), q(p->nombre).toHtmlEscaped(),
                                           q(textoNivel(p->nivel))),
                                  tarjeta);
        cab->addWidget(nombre, 1);
        auto* avance = new QLabel(q(textoPorcentaje(f.avance)), tarjeta);
        avance->setObjectName(QStringLiteral("avance"));
        avance->setStyleSheet(QStringLiteral("font-weight: bold; color: %1;")
                                  .arg(css(f.avance >= 1 ? colores::verde : colores::azul)));
        cab->addWidget(avance);
        tv->addLayout(cab);
        QStringList lineas;
        if (f.presupuesto > 0) {
            lineas << QStringLiteral("Presupuesto: ") + q(textoMoneda(f.presupuesto, c.moneda));
            lineas << QStringLiteral("Real: ") + q(textoMoneda(f.costoReal, c.moneda)) + QStringLiteral("   EV: ") +
                          q(textoMoneda(f.ev, c.moneda));
        }
        if (f.hh > 0)
            lineas << q(textoHH(f.hh)) + QStringLiteral(" plan  ·  ") + q(textoHH(f.hhReal)) +
                          QStringLiteral(" reales  ·  ") + q(textoHH(f.hhGanadas)) + QStringLiteral(" ganadas");
        for (const QString& l : lineas) {
            auto* e = new QLabel(l, tarjeta);
            e->setStyleSheet(QStringLiteral("color: #bbb; font-size: 11px;"));
            tv->addWidget(e);
        }
        auto* indices = new QHBoxLayout;
        const auto indice = [&](const QString& texto, const Color& color) {
            auto* e = new QLabel(texto, tarjeta);
            e->setStyleSheet(QStringLiteral("color: %1; font-size: 11px; font-weight: bold;").arg(css(color)));
            indices->addWidget(e);
        };
        indice(q(formato("CPI %.2f", f.cpi)), colorIndice(f.cpi));
        indice(q(formato("Prod. %.2f", f.productividad)), f.productividad >= 1 ? colores::verde : colores::naranja);
        const auto desviacion = [&](const char* prefijo, const std::optional<int>& d) {
            if (d) indice(q(textoDesviacion(prefijo, *d)), *d < 0 ? colores::rojo : colores::verde);
        };
        desviacion("Inicio", f.desviacionInicio);
        desviacion("Fin", f.desviacionFin);
        if (p->nivel == NivelAWP::cwa || p->nivel == NivelAWP::cwp)
            indice(QString::number(static_cast<qulonglong>(f.iwpsIncluidos)) + QStringLiteral(" IWP(s) incluidos"),
                   colores::gris);
        indices->addStretch(1);
        tv->addLayout(indices);
        if (seleccionado) {
            auto* botones = new QHBoxLayout;
            auto* editar = new QPushButton(QStringLiteral("Editar paquete"), tarjeta);
            editar->setObjectName(QStringLiteral("editarPaquete"));
            const std::string id = p->id;
            connect(editar, &QPushButton::clicked, this, [this, id] { cv_.editarPaqueteAWP(id); });
            auto* ficha = new QPushButton(QStringLiteral("Ver Ficha AWP"), tarjeta);
            ficha->setObjectName(QStringLiteral("verFicha"));
            connect(ficha, &QPushButton::clicked, this, [this, id] { abrirFichaAWP(id); });
            botones->addWidget(editar);
            botones->addWidget(ficha);
            botones->addStretch(1);
            tv->addLayout(botones);
        }
        v->addWidget(tarjeta);
    }
    v->addStretch(1);
}

void TimeLinerView::exportarGanttPDF() {
    if (cv_.timeLiner.paquetes.empty()) return;
    auto* d = new QFileDialog(this, QStringLiteral("Exportar Gantt a PDF"));
    d->setObjectName(QStringLiteral("panelGanttPDF"));
    d->setAttribute(Qt::WA_DeleteOnClose);
    d->setOption(QFileDialog::DontUseNativeDialog);
    d->setAcceptMode(QFileDialog::AcceptSave);
    d->setNameFilter(QStringLiteral("PDF (*.pdf)"));
    d->selectFile(q(nombreGanttPDF(cv_.timeLiner)) + QStringLiteral(".pdf"));
    connect(d, &QFileDialog::fileSelected, this, [this](QString ruta) {
        if (QFileInfo(ruta).suffix().isEmpty()) ruta += QStringLiteral(".pdf");
        exportarGanttPDFA(ruta.toStdString());
    });
    d->open();
}

bool TimeLinerView::exportarGanttPDFA(const std::string& ruta) {
    std::string error;
    const ArbolAWP arbol(cv_.timeLiner);
    if (escribirGanttPDF(arbol, cv_.timeline.modoAvance(), QDateTime::currentDateTimeUtc(), ruta, error)) return true;
    if (!error.empty()) cv_.mostrarError(error);
    return false;
}

void TimeLinerView::abrirFichaAWP(const std::string& id) {
    const PaqueteAWP* p = cv_.paqueteAWP(id);
    if (!p) return;
    auto* ficha = new FichaAWPView(cv_, *p, renderFicha(cv_, *p), this);
    ficha->setAttribute(Qt::WA_DeleteOnClose);
    connect(ficha, &FichaAWPView::edicionSolicitada, this, [this, id] { cv_.editarPaqueteAWP(id); });
    ficha->open();
}

void TimeLinerView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (iniciada_) return;
    iniciada_ = true;
    abierta_ = true;
    cv_.iniciarTimeLiner();
    // The first synchronisation waits for the 3D view to be at hand; one
    // that comes after the window closed finds the timeline shut.
    QTimer::singleShot(300, this, [this] { cv_.sincronizar4D(); });
}

void TimeLinerView::closeEvent(QCloseEvent* evento) {
    // No tick may run after this: the scene is restored below.
    playTimer_.stop();
    abierta_ = false;
    if (editor_) editor_->reject();
    cv_.cerrarTimeLiner();
    evento->accept();
}

} // namespace teskal
