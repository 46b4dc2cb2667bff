#include "analyses/bcf/ui/GuardadoBCF.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>

namespace teskal {

void guardarBCF(QWidget* padre, const std::string& nombre, const QString& ruta,
                BCFExporter::Completion completion) {
    const QString mensaje = QStringLiteral("Guardar informe BCF 2.1");
    auto* dialogo = new QFileDialog(padre, mensaje);
    dialogo->setObjectName(QStringLiteral("panelBCF"));
    dialogo->setAttribute(Qt::WA_DeleteOnClose);
    dialogo->setOption(QFileDialog::DontUseNativeDialog);
    dialogo->setAcceptMode(QFileDialog::AcceptSave);
    dialogo->setFileMode(QFileDialog::AnyFile);
    dialogo->selectFile(QString::fromStdString(nombre));
    // The message under the fields, as the panel's own text.
    if (auto* rejilla = qobject_cast<QGridLayout*>(dialogo->layout())) {
        auto* texto = new QLabel(mensaje, dialogo);
        texto->setObjectName(QStringLiteral("mensajeBCF"));
        texto->setWordWrap(true);
        rejilla->addWidget(texto, rejilla->rowCount(), 0, 1, -1);
    }
    QObject::connect(dialogo, &QFileDialog::finished, dialogo,
                     [dialogo, ruta, completion = std::move(completion)](int resultado) {
                         const QStringList elegidos = dialogo->selectedFiles();
                         if (resultado != QDialog::Accepted || elegidos.isEmpty()) {
                             completion(false);
                             return;
                         }
                         completion(copiarArchivoBCF(ruta, elegidos.first()));
                     });
    dialogo->setWindowModality(Qt::ApplicationModal);
    dialogo->show();
}

} // namespace teskal
