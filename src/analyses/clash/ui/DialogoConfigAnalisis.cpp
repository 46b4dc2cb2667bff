#include "analyses/clash/ui/DialogoConfigAnalisis.h"

#include "analyses/clash/Interferencias.h"
#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "federation/TextoUTF8.h"

#include <QCheckBox>
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
    auto* nota = new QLabel(QStringLiteral("Penetración mínima en los 3 ejes para reportar colisión."), this);
    nota->setStyleSheet(QStringLiteral("color: gray;"));
    v->addWidget(nota);

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
        cv_.iniciarDeteccion(cv_.nombreAnalisis, cv_.toleranciaAnalisis);
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
