// The save panel of a BCF archive under Xvfb: its title, message, suggested
// name and modality; confirming copies the archive to the chosen place and
// reports true; cancelling reports false and writes nothing.
#include "analyses/bcf/ui/GuardadoBCF.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>
#include <optional>

using namespace teskal;

namespace {

QFileDialog* panelAbierto() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* d = qobject_cast<QFileDialog*>(w);
            d && d->objectName() == QStringLiteral("panelBCF") && d->isVisible())
            return d;
    return nullptr;
}

QByteArray leer(const QString& ruta) {
    QFile f(ruta);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class PruebaGuardadoBCF : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QVERIFY(carpeta_.isValid());
        QFile f(carpeta_.filePath(QStringLiteral("archivo_temporal.bcf")));
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(contenido_);
    }

    void confirmarCopiaElArchivo() {
        QWidget ventana;
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        std::optional<bool> resultado;
        guardarBCF(&ventana, "Fase 23 ok.bcf",
                   carpeta_.filePath(QStringLiteral("archivo_temporal.bcf")),
                   [&](bool ok) { resultado = ok; });
        QFileDialog* panel = nullptr;
        QTRY_VERIFY((panel = panelAbierto()) != nullptr);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Guardar informe BCF 2.1"));
        auto* mensaje = panel->findChild<QLabel*>(QStringLiteral("mensajeBCF"));
        QVERIFY(mensaje && mensaje->isVisible());
        QCOMPARE(mensaje->text(), QStringLiteral("Guardar informe BCF 2.1"));
        QCOMPARE(panel->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(panel->windowModality(), Qt::ApplicationModal);
        auto* campo = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QVERIFY(campo);
        QCOMPARE(campo->text(), QStringLiteral("Fase 23 ok.bcf"));
        QVERIFY(!resultado);

        // The user picks a folder of their own and keeps the suggested name.
        QVERIFY(QDir(carpeta_.path()).mkpath(QStringLiteral("destino")));
        panel->setDirectory(carpeta_.filePath(QStringLiteral("destino")));
        campo->setText(QStringLiteral("Fase 23 ok.bcf"));
        QTest::keyClick(campo, Qt::Key_Return);
        QTRY_VERIFY(resultado.has_value());
        QVERIFY(*resultado);
        QCOMPARE(leer(carpeta_.filePath(QStringLiteral("destino/Fase 23 ok.bcf"))), contenido_);
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

    void cancelarNoEscribeNada() {
        std::optional<bool> resultado;
        guardarBCF(nullptr, "Cancelado.bcf",
                   carpeta_.filePath(QStringLiteral("archivo_temporal.bcf")),
                   [&](bool ok) { resultado = ok; });
        QFileDialog* panel = nullptr;
        QTRY_VERIFY((panel = panelAbierto()) != nullptr);
        panel->setDirectory(carpeta_.path());
        panel->reject();
        QTRY_VERIFY(resultado.has_value());
        QVERIFY(!*resultado);
        QVERIFY(!QFile::exists(carpeta_.filePath(QStringLiteral("Cancelado.bcf"))));
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

private:
    QTemporaryDir carpeta_;
    const QByteArray contenido_{"PK\x03\x04 contenido del archivo", 26};
};

QTEST_MAIN(PruebaGuardadoBCF)
#include "test_guardado_bcf.moc"
