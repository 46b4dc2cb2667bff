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

class PruebaGuardadoBCF : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() {
        QVERIFY(carpeta_.isValid());
        QFile f(archivo_);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write(contenido_) == contenido_.size());
    }

    void confirmarCopiaElArchivo() {
        QWidget ventana;
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        QFileDialog* panel = abrir(&ventana, "Fase 23 ok.bcf");
        QVERIFY(panel);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Guardar informe BCF 2.1"));
        auto* mensaje = panel->findChild<QLabel*>(QStringLiteral("mensajeBCF"));
        QVERIFY(mensaje && mensaje->isVisible());
        QCOMPARE(mensaje->text(), QStringLiteral("Guardar informe BCF 2.1"));
        QCOMPARE(panel->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(panel->windowModality(), Qt::ApplicationModal);
        auto* campo = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QVERIFY(campo);
        QCOMPARE(campo->text(), QStringLiteral("Fase 23 ok.bcf"));
        QVERIFY(!resultado_);

        // The user picks a folder of their own and keeps the suggested name.
        QVERIFY(QDir(carpeta_.path()).mkpath(QStringLiteral("destino")));
        panel->setDirectory(carpeta_.filePath(QStringLiteral("destino")));
        QTest::keyClick(campo, Qt::Key_Return);
        QTRY_COMPARE(resultado_, std::optional(true));
        QFile copia(carpeta_.filePath(QStringLiteral("destino/Fase 23 ok.bcf")));
        QVERIFY(copia.open(QIODevice::ReadOnly));
        QCOMPARE(copia.readAll(), contenido_);
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

    void cancelarNoEscribeNada() {
        QFileDialog* panel = abrir(nullptr, "Cancelado.bcf");
        QVERIFY(panel);
        panel->setDirectory(carpeta_.path());
        panel->reject();
        QTRY_COMPARE(resultado_, std::optional(false));
        QVERIFY(!QFile::exists(carpeta_.filePath(QStringLiteral("Cancelado.bcf"))));
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

private:
    static QFileDialog* panelAbierto() {
        auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        return d && d->objectName() == QStringLiteral("panelBCF") ? d : nullptr;
    }

    // Opens the panel for the temporary archive; its answer lands in resultado_.
    QFileDialog* abrir(QWidget* padre, const std::string& nombre) {
        resultado_.reset();
        guardarBCF(padre, nombre, archivo_, [this](bool ok) { resultado_ = ok; });
        return QTest::qWaitFor([] { return panelAbierto() != nullptr; }) ? panelAbierto() : nullptr;
    }

    QTemporaryDir carpeta_;
    const QString archivo_ = carpeta_.filePath(QStringLiteral("archivo_temporal.bcf"));
    const QByteArray contenido_{"PK\x03\x04 contenido del archivo", 26};
    std::optional<bool> resultado_;
};

QTEST_MAIN(PruebaGuardadoBCF)
#include "test_guardado_bcf.moc"
