#include "timeline/ui/FichaAWPView.h"

#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "scene/ColoresSistema.h"
#include "timeline/EditorPaquete.h"
#include "timeline/GeometriaGantt.h"
#include "timeline/ValorGanado.h"
#include "timeline/ui/TimeLinerView.h"
#include "ui/TextoQt.h"
#include "viewport/render/RenderizadorImagenes.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <unordered_set>

namespace teskal {

QImage renderFicha(ContentView& cv, const PaqueteAWP& p) {
    const ArbolAWP arbol(cv.timeLiner);
    const std::vector<std::string> lista = nombresFicha(arbol, p);
    const std::shared_ptr<Node> camara = cv.viewport.puntoDeVista();
    if (lista.empty() || !camara || !cv.scene.rootNode()) return {};
    const std::unordered_set<std::string> nombres(lista.begin(), lista.end());
    // Only the package's elements stay visible for the image.
    std::vector<std::pair<std::shared_ptr<Node>, float>> anotados;
    cv.scene.rootNode()->enumerateChildNodes([&](Node& n, bool&) {
        if (!n.geometry()) return;
        anotados.emplace_back(n.shared_from_this(), n.opacity());
        n.setOpacity(n.name() && nombres.contains(*n.name()) ? 1.0f : 0.0f);
    });
    const QImage imagen = renderizarImagen(cv.scene, *camara, QSize(560, 340));
    for (const auto& [n, opacidad] : anotados) n->setOpacity(opacidad);
    return imagen;
}

namespace {

QString fecha(const QDateTime& f) { return q(textoFechaGantt(f, "dd-MM-yyyy")); }

QLabel* etiqueta(const QString& t, QWidget* padre, const QString& estilo = {}) {
    auto* l = new QLabel(t, padre);
    l->setWordWrap(true);
    if (!estilo.isEmpty()) l->setStyleSheet(estilo);
    return l;
}

QString colorDe(const Color& c) { return QStringLiteral("color: %1; font-weight: bold;").arg(css(c)); }

} // namespace

FichaAWPView::FichaAWPView(ContentView& cv, const PaqueteAWP& p, const QImage& imagenRender, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("fichaAWP"));
    temaTimeline(*this);
    setWindowTitle(QStringLiteral("Ficha AWP — ") + q(p.codigo));
    setFixedWidth(640);
    resize(640, 780);
    const ArbolAWP arbol(cv.timeLiner);
    const std::string& m = cv.timeLiner.moneda;
    auto* exterior = new QVBoxLayout(this);
    auto* desplazable = new QScrollArea(this);
    desplazable->setWidgetResizable(true);
    auto* hoja = new QWidget(desplazable);
    hoja->setObjectName(QStringLiteral("hojaFicha"));
    auto* v = new QVBoxLayout(hoja);
    desplazable->setWidget(hoja);
    exterior->addWidget(desplazable, 1);

    // The head: the product's mark, the level in full and the code.
    auto* cab = new QHBoxLayout;
    auto* logo = etiqueta(QStringLiteral("VORNEL"), hoja,
                          QStringLiteral("font-size: 18px; font-weight: 900; color: #007aff; letter-spacing: 2px;"));
    logo->setObjectName(QStringLiteral("logoTESKAL"));
    cab->addWidget(logo);
    const QString nivel = p.nivel == NivelAWP::cwa   ? QStringLiteral("Construction Work Area")
                          : p.nivel == NivelAWP::cwp ? QStringLiteral("Construction Work Package")
                                                     : q(textoNivel(p.nivel));
    auto* titulo = etiqueta(nivel + QStringLiteral(" — ") + q(p.codigo), hoja,
                            QStringLiteral("font-size: 16px; font-weight: bold;"));
    titulo->setObjectName(QStringLiteral("tituloFicha"));
    cab->addWidget(titulo, 1);
    v->addLayout(cab);
    v->addWidget(etiqueta(QStringLiteral("Objetivo del ") + q(textoNivel(p.nivel)) + QStringLiteral(": ") +
                              q(p.nombre),
                          hoja, QStringLiteral("color: gray;")));

    auto* identidad = new QGridLayout;
    const QString filasId[][2] = {{QStringLiteral("Código"), q(p.codigo)},
                                  {QStringLiteral("Tipo"), q(textoNivel(p.nivel))},
                                  {QStringLiteral("Preparado"), fecha(QDateTime::currentDateTimeUtc())},
                                  {QStringLiteral("Paquete Padre"), p.parentCodigo ? q(*p.parentCodigo) : "—"}};
    for (int i = 0; i < 4; ++i) {
        identidad->addWidget(etiqueta(filasId[i][0], hoja, QStringLiteral("color: gray;")), i, 0);
        identidad->addWidget(etiqueta(filasId[i][1], hoja, QStringLiteral("font-weight: bold;")), i, 1);
    }
    v->addLayout(identidad);
    const double avance = arbol.avance(p);
    auto* progreso = etiqueta(QStringLiteral("Avance: ") + q(textoPorcentaje(avance)), hoja,
                              colorDe(avance >= 1 ? colores::verde : colores::azul));
    progreso->setObjectName(QStringLiteral("avanceFicha"));
    v->addWidget(progreso);

    v->addWidget(etiqueta(QStringLiteral("Fechas"), hoja, QStringLiteral("font-weight: bold; padding-top: 8px;")));
    v->addWidget(etiqueta(QStringLiteral("PROGRAMADAS   Inicio: ") + fecha(p.fechaInicio) + QStringLiteral("   Fin: ") +
                              fecha(p.fechaFin) + QStringLiteral("   ") + QString::number(duracionDias(p)) +
                              QStringLiteral(" días"),
                          hoja));
    const auto real = [&](const QString& titulo, const std::optional<QDateTime>& f, const QString& sin,
                          const std::optional<int>& d) {
        QString t = f ? titulo + fecha(*f) : sin;
        auto* l = etiqueta(QStringLiteral("REALES   ") + t, hoja);
        v->addWidget(l);
        if (d)
            v->addWidget(etiqueta(*d < 0 ? QString::number(*d) + QStringLiteral(" días (retraso)")
                                         : QStringLiteral("+") + QString::number(*d) + QStringLiteral(" días"),
                                  hoja, colorDe(*d < 0 ? colores::rojo : colores::verde)));
    };
    real(QStringLiteral("Inicio real: "), p.fechaInicioReal, QStringLiteral("Sin fecha real de inicio"),
         desviacionInicioDias(p));
    real(QStringLiteral("Fin real: "), p.fechaFinReal, QStringLiteral("Sin fecha real de término"),
         desviacionFinDias(p));

    v->addWidget(etiqueta(QStringLiteral("Recursos"), hoja, QStringLiteral("font-weight: bold; padding-top: 8px;")));
    const double ev = arbol.valorGanado(p), costo = arbol.costoRealTotal(p);
    const double cpi = costo > 0 ? ev / costo : 1.0;
    auto* recursos = new QGridLayout;
    const auto cifra = [&](int fila, int col, const QString& titulo, const QString& valor, const Color& color) {
        recursos->addWidget(etiqueta(titulo, hoja, QStringLiteral("color: gray; font-size: 10px;")), fila * 2, col);
        recursos->addWidget(etiqueta(valor, hoja, colorDe(color)), fila * 2 + 1, col);
    };
    cifra(0, 0, QStringLiteral("Presupuesto"), q(textoMoneda(arbol.presupuestoTotal(p), m)), colores::azul);
    cifra(0, 1, QStringLiteral("Costo real"), q(textoMoneda(costo, m)), colores::naranja);
    cifra(0, 2, QStringLiteral("Valor ganado"), q(textoMoneda(ev, m)), avance >= 1 ? colores::verde : colores::teal);
    cifra(0, 3, QStringLiteral("CPI"), q(formato("%.2f", cpi)), colorIndice(cpi));
    const double hhReal = arbol.hhRealTotal(p), hhGanadas = arbol.hhGanadas(p);
    cifra(1, 0, QStringLiteral("HH Planificadas"), q(textoHHFicha(arbol.hhTotal(p))), colores::azul);
    cifra(1, 1, QStringLiteral("HH Reales"), q(textoHHFicha(hhReal)), colores::naranja);
    cifra(1, 2, QStringLiteral("HH Ganadas"), q(textoHHFicha(hhGanadas)), colores::verde);
    const double factor = hhReal > 0 ? hhGanadas / hhReal : 1.0;
    cifra(1, 3, QStringLiteral("Factor"), q(formato("%.2f", factor)), colorIndice(factor));
    v->addLayout(recursos);

    if (p.nivel == NivelAWP::cwa || p.nivel == NivelAWP::cwp) {
        v->addWidget(etiqueta(QStringLiteral("Installation Work Packages"), hoja,
                              QStringLiteral("font-weight: bold; padding-top: 8px;")));
        for (const PaqueteAWP* h : arbol.paquetesHoja(p))
            v->addWidget(etiqueta(q(h->codigo) + QStringLiteral("  ") + q(h->nombre) + QStringLiteral("   ") +
                                      fecha(h->fechaInicio) + QStringLiteral(" → ") + fecha(h->fechaFin) +
                                      QStringLiteral("   ") + q(textoPorcentaje(h->progreso)),
                                  hoja));
    }

    const std::vector<std::string> nombres = nombresFicha(arbol, p);
    v->addWidget(etiqueta(QStringLiteral("Elementos vinculados (") + QString::number(nombres.size()) +
                              QStringLiteral(")"),
                          hoja, QStringLiteral("font-weight: bold; padding-top: 8px;")));
    QStringList lista;
    for (const std::string& n : nombres) lista << q(n);
    if (!lista.isEmpty()) v->addWidget(etiqueta(lista.join(QStringLiteral(", ")), hoja));
    if (!imagenRender.isNull()) {
        auto* imagen = new QLabel(hoja);
        imagen->setObjectName(QStringLiteral("imagenRender"));
        imagen->setPixmap(QPixmap::fromImage(imagenRender));
        v->addWidget(imagen, 0, Qt::AlignHCenter);
    }
    v->addStretch(1);

    auto* botones = new QHBoxLayout;
    auto* editar = new QPushButton(QStringLiteral("Editar paquete"), this);
    connect(editar, &QPushButton::clicked, this, [this] {
        accept();
        emit edicionSolicitada();
    });
    auto* cerrar = new QPushButton(QStringLiteral("Cerrar"), this);
    cerrar->setObjectName(QStringLiteral("cerrarFicha"));
    connect(cerrar, &QPushButton::clicked, this, &QDialog::accept);
    botones->addWidget(editar);
    botones->addStretch(1);
    botones->addWidget(cerrar);
    exterior->addLayout(botones);
}

} // namespace teskal
