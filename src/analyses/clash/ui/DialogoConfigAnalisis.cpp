#include "analyses/clash/ui/DialogoConfigAnalisis.h"

#include "analyses/clash/Interferencias.h"
#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "federation/TextoUTF8.h"
#include "ui/TextoQt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>

namespace teskal {

DialogoConfigAnalisis::DialogoConfigAnalisis(ContentView& cv, QWidget* parent) : QDialog(parent), cv_(cv) {
    setObjectName(QStringLiteral("dialogoConfigAnalisis"));
    setWindowTitle(QStringLiteral("Configurar Análisis de Interferencias"));
    setMinimumWidth(420);
    auto* v = new QVBoxLayout(this);

    v->addWidget(new QLabel(QStringLiteral("Nombre del análisis"), this));
    auto* nombre = new QLineEdit(QString::fromStdString(cv.nombreAnalisis), this);
    nombre->setObjectName(QStringLiteral("nombreAnalisis"));
    nombre->setPlaceholderText(QStringLiteral("Ej: Análisis estructural v1"));
    connect(nombre, &QLineEdit::textChanged, this, [this](const QString& t) {
        cv_.nombreAnalisis = t.toStdString();
        actualizarBoton();
    });
    v->addWidget(nombre);

    // The method: exact geometry, the boxes alone, or the clearance check
    // with its distance.
    auto* cabeceraMetodo = new QHBoxLayout;
    cabeceraMetodo->addWidget(new QLabel(QStringLiteral("Método"), this), 1);
    auto* metodo = new QComboBox(this);
    metodo->setObjectName(QStringLiteral("metodoAnalisis"));
    for (MetodoAnalisis m : metodosAnalisis) metodo->addItem(q(textoMetodo(m)));
    metodo->setCurrentIndex(static_cast<int>(cv.metodoAnalisis));
    cabeceraMetodo->addWidget(metodo);
    v->addLayout(cabeceraMetodo);
    auto* notaMetodo = new QLabel(this);
    notaMetodo->setWordWrap(true);
    notaMetodo->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(notaMetodo);
    auto* filaHolgura = new QWidget(this);
    auto* h = new QHBoxLayout(filaHolgura);
    h->setContentsMargins(0, 0, 0, 0);
    h->addWidget(new QLabel(QStringLiteral("Distancia de holgura"), filaHolgura), 1);
    auto* valorHolgura = new QLabel(QString::fromStdString(formato("%.3f m", cv.holguraAnalisis)), filaHolgura);
    auto* holgura = new QSlider(Qt::Horizontal, filaHolgura);
    holgura->setObjectName(QStringLiteral("holgura"));
    holgura->setRange(5, 1000); // millimetres, 0.005 to 1 m
    holgura->setSingleStep(5);
    holgura->setValue(static_cast<int>(std::lround(cv.holguraAnalisis * 1000)));
    holgura->setMinimumWidth(160);
    h->addWidget(holgura);
    h->addWidget(valorHolgura);
    connect(holgura, &QSlider::valueChanged, this, [this, valorHolgura](int mm) {
        cv_.holguraAnalisis = mm / 1000.0;
        valorHolgura->setText(QString::fromStdString(formato("%.3f m", cv_.holguraAnalisis)));
    });
    v->addWidget(filaHolgura);

    auto* cabeceraTol = new QHBoxLayout;
    cabeceraTol->addWidget(new QLabel(QStringLiteral("Tolerancia de contacto"), this), 1);
    auto* valorTol = new QLabel(QString::fromStdString(formato("%.3f m", cv.toleranciaAnalisis)), this);
    cabeceraTol->addWidget(valorTol);
    v->addLayout(cabeceraTol);
    auto* tolerancia = new QSlider(Qt::Horizontal, this);
    tolerancia->setObjectName(QStringLiteral("tolerancia"));
    tolerancia->setRange(1, 150); // millimetres, 0.001 to 0.15 m
    tolerancia->setValue(static_cast<int>(std::lround(cv.toleranciaAnalisis * 1000)));
    connect(tolerancia, &QSlider::valueChanged, this, [this, valorTol](int mm) {
        cv_.toleranciaAnalisis = mm / 1000.0;
        valorTol->setText(QString::fromStdString(formato("%.3f m", cv_.toleranciaAnalisis)));
    });
    v->addWidget(tolerancia);
    auto* nota = new QLabel(this);
    nota->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(nota);
    auto mostrarMetodo = [this, notaMetodo, filaHolgura, nota] {
        switch (cv_.metodoAnalisis) {
        case MetodoAnalisis::geometriaExacta:
            notaMetodo->setText(QStringLiteral("Prueba las mallas de los elementos: solo colisiones reales, con su penetración."));
            nota->setText(QStringLiteral("Penetración mínima de la región de contacto para reportar colisión."));
            break;
        case MetodoAnalisis::cajasEnvolventes:
            notaMetodo->setText(QStringLiteral("Solo las cajas envolventes: rápido, pero reporta pares que no se tocan."));
            nota->setText(QStringLiteral("Penetración mínima en los 3 ejes para reportar colisión."));
            break;
        case MetodoAnalisis::holgura:
            notaMetodo->setText(QStringLiteral("Pares más cercanos que la distancia de holgura sin llegar a tocarse."));
            nota->setText(QStringLiteral("En holgura la tolerancia no se aplica: cuenta la distancia entre mallas."));
            break;
        }
        filaHolgura->setVisible(cv_.metodoAnalisis == MetodoAnalisis::holgura);
    };
    connect(metodo, &QComboBox::currentIndexChanged, this, [this, mostrarMetodo](int i) {
        if (i < 0) return;
        cv_.metodoAnalisis = metodosAnalisis[static_cast<std::size_t>(i)];
        mostrarMetodo();
    });
    mostrarMetodo();

    auto* cabeceraPares = new QHBoxLayout;
    auto* tituloPares = new QLabel(QStringLiteral("Pares a analizar"), this);
    tituloPares->setStyleSheet(QStringLiteral("font-weight: bold;"));
    cabeceraPares->addWidget(tituloPares, 1);
    auto* todos = new QPushButton(QStringLiteral("Todos"), this);
    auto* ninguno = new QPushButton(QStringLiteral("Ninguno"), this);
    cabeceraPares->addWidget(todos);
    cabeceraPares->addWidget(ninguno);
    v->addLayout(cabeceraPares);
    pares_ = new QVBoxLayout;
    std::vector<QCheckBox*> casillas;
    for (const auto& [a, b] : cv.paresDisponibles) {
        auto* c = new QCheckBox(QString::fromStdString(a + "  ↔  " + b), this);
        const std::string clave = clavePar(a, b);
        c->setChecked(cv.paresActivos.contains(clave));
        connect(c, &QCheckBox::toggled, this, [this, clave](bool on) {
            if (on)
                cv_.paresActivos.insert(clave);
            else
                cv_.paresActivos.erase(clave);
            actualizarBoton();
        });
        casillas.push_back(c);
        pares_->addWidget(c);
    }
    v->addLayout(pares_);
    connect(todos, &QPushButton::clicked, this, [casillas] {
        for (auto* c : casillas) c->setChecked(true);
    });
    connect(ninguno, &QPushButton::clicked, this, [this, casillas] {
        for (auto* c : casillas) c->setChecked(false);
        cv_.paresActivos.clear();
        actualizarBoton();
    });

    auto* excluir = new QCheckBox(QStringLiteral("Excluir colisiones ya aprobadas o resueltas"), this);
    excluir->setObjectName(QStringLiteral("excluirResueltos"));
    excluir->setChecked(cv.excluirResueltos);
    connect(excluir, &QCheckBox::toggled, this, [this](bool on) { cv_.excluirResueltos = on; });
    v->addWidget(excluir);
    auto* notaExcluir = new QLabel(
        QStringLiteral("No re-reportar pares de elementos marcados como Aprobado o Resuelto en análisis anteriores."),
        this);
    notaExcluir->setWordWrap(true);
    notaExcluir->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(notaExcluir);

    auto* botones = new QDialogButtonBox(this);
    botones->addButton(QStringLiteral("Cancelar"), QDialogButtonBox::RejectRole);
    iniciar_ = botones->addButton(QStringLiteral("Iniciar análisis"), QDialogButtonBox::AcceptRole);
    iniciar_->setObjectName(QStringLiteral("iniciarAnalisis"));
    iniciar_->setDefault(true);
    connect(botones, &QDialogButtonBox::rejected, this, &DialogoConfigAnalisis::reject);
    connect(botones, &QDialogButtonBox::accepted, this, [this] {
        cv_.mostrarConfigAnalisis = false;
        accept();
        cv_.iniciarDeteccion(
            ConfigAnalisis{cv_.nombreAnalisis, cv_.toleranciaAnalisis, cv_.metodoAnalisis, cv_.holguraAnalisis});
    });
    v->addWidget(botones);
    actualizarBoton();
}

void DialogoConfigAnalisis::reject() {
    cv_.cancelarConfigAnalisis();
    QDialog::reject();
}

void DialogoConfigAnalisis::actualizarBoton() {
    iniciar_->setEnabled(!recortar(cv_.nombreAnalisis).empty() && !cv_.paresActivos.empty());
}

} // namespace teskal
