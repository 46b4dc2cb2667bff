#include "app/ui/AlertaModelosAusentes.h"

#include "federation/ContentView.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace teskal {

AlertaModelosAusentes::AlertaModelosAusentes(ContentView& cv, QWidget* parent) : QDialog(parent), cv_(cv) {
    setObjectName(QStringLiteral("alertaModelosAusentes"));
    setWindowTitle(QStringLiteral("Modelos no encontrados"));
    auto* v = new QVBoxLayout(this);
    auto* texto = new QLabel(QStringLiteral("No se encontraron los archivos de estos modelos. Siguen en el proyecto; "
                                            "indica dónde están con «Buscar…»."),
                             this);
    texto->setWordWrap(true);
    v->addWidget(texto);
    filas_ = new QWidget(this);
    cajaFilas_ = new QVBoxLayout(filas_);
    cajaFilas_->setContentsMargins(0, 0, 0, 0);
    v->addWidget(filas_);
    auto* botones = new QDialogButtonBox(QDialogButtonBox::Close, this);
    botones->button(QDialogButtonBox::Close)->setText(QStringLiteral("Cerrar"));
    connect(botones, &QDialogButtonBox::rejected, this, &QDialog::reject);
    v->addWidget(botones);
    connect(this, &QDialog::finished, this, [this] { cv_.cerrarModelosAusentes(); });
    actualizar();
}

void AlertaModelosAusentes::actualizar() {
    while (QLayoutItem* item = cajaFilas_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (std::size_t i = 0; i < cv_.modelosAusentes.size(); ++i) {
        const ModeloAusente& a = cv_.modelosAusentes[i];
        auto* fila = new QWidget(filas_);
        auto* h = new QHBoxLayout(fila);
        h->setContentsMargins(0, 0, 0, 0);
        const auto esp = cv_.especialidades.find(a.clave);
        const std::string disciplina = esp == cv_.especialidades.end() ? a.clave : esp->second.nombre;
        auto* nombre = new QLabel(QStringLiteral("<b>%1</b> · %2<br><small>%3</small>")
                                      .arg(QString::fromStdString(a.guardado.nombre).toHtmlEscaped(),
                                           QString::fromStdString(disciplina).toHtmlEscaped(),
                                           QString::fromStdString(a.guardado.rutaAbsoluta).toHtmlEscaped()),
                                  fila);
        nombre->setObjectName(QStringLiteral("modeloAusente"));
        h->addWidget(nombre, 1);
        auto* buscar = new QPushButton(QStringLiteral("Buscar…"), fila);
        buscar->setObjectName(QStringLiteral("buscarModeloAusente"));
        connect(buscar, &QPushButton::clicked, this, [this, i] {
            auto* d = new QFileDialog(this, QStringLiteral("Buscar modelo"));
            d->setObjectName(QStringLiteral("selectorModeloAusente"));
            d->setAttribute(Qt::WA_DeleteOnClose);
            d->setOption(QFileDialog::DontUseNativeDialog);
            d->setFileMode(QFileDialog::ExistingFile);
            d->setNameFilters({QStringLiteral("Archivos IFC (*.ifc *.IFC *.ifczip)"), QStringLiteral("Todos los archivos (*)")});
            const QString carpeta = QSettings().value(QStringLiteral("carpetas/ifc")).toString();
            if (!carpeta.isEmpty() && QFileInfo(carpeta).isDir()) d->setDirectory(carpeta);
            connect(d, &QFileDialog::fileSelected, this, [this, i](const QString& ruta) {
                QSettings().setValue(QStringLiteral("carpetas/ifc"), QFileInfo(ruta).absolutePath());
                cv_.buscarModeloAusente(i, ruta.toStdString());
            });
            d->open();
        });
        h->addWidget(buscar);
        cajaFilas_->addWidget(fila);
    }
    adjustSize();
}

} // namespace teskal
