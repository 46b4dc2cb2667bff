#include "analyses/bcf/ui/GuardadoBCF.h"

#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>

namespace teskal {

QString filtroBCF(FormaBCF forma) {
    return forma == FormaBCF::estandar
               ? QStringLiteral("BCF 2.1 (*.bcf *.bcfzip)")
               : QStringLiteral("BCF 2.1 — formato literal TESKAL (*.bcf *.bcfzip)");
}

void guardarBCF(QWidget* padre, const ArchivosBCF& archivos, BCFExporter::Completion completion,
                std::function<void()> alCancelar) {
    const QString mensaje = QStringLiteral("Guardar informe BCF 2.1");
    auto* dialogo = new QFileDialog(padre, mensaje);
    dialogo->setObjectName(QStringLiteral("panelBCF"));
    dialogo->setAttribute(Qt::WA_DeleteOnClose);
    dialogo->setOption(QFileDialog::DontUseNativeDialog);
    dialogo->setAcceptMode(QFileDialog::AcceptSave);
    dialogo->setFileMode(QFileDialog::AnyFile);
    dialogo->setNameFilters({filtroBCF(FormaBCF::estandar), filtroBCF(FormaBCF::literalTESKAL)});
    dialogo->selectNameFilter(filtroBCF(FormaBCF::estandar));
    dialogo->selectFile(QString::fromStdString(archivos.nombre));
    // The message under the fields, as the panel's own text.
    if (auto* rejilla = qobject_cast<QGridLayout*>(dialogo->layout())) {
        auto* texto = new QLabel(mensaje, dialogo);
        texto->setObjectName(QStringLiteral("mensajeBCF"));
        texto->setWordWrap(true);
        rejilla->addWidget(texto, rejilla->rowCount(), 0, 1, -1);
    }
    QObject::connect(dialogo, &QFileDialog::finished, dialogo,
                     [dialogo, archivos, completion = std::move(completion),
                      alCancelar = std::move(alCancelar)](int resultado) {
                         const QStringList elegidos = dialogo->selectedFiles();
                         if (resultado != QDialog::Accepted || elegidos.isEmpty()) {
                             if (alCancelar) alCancelar();
                             return;
                         }
                         const FormaBCF forma =
                             dialogo->selectedNameFilter() == filtroBCF(FormaBCF::literalTESKAL)
                                 ? FormaBCF::literalTESKAL
                                 : FormaBCF::estandar;
                         completion(copiarArchivoBCF(archivos.ruta(forma), elegidos.first()));
                     });
    dialogo->setWindowModality(Qt::ApplicationModal);
    dialogo->show();
}

} // namespace teskal
