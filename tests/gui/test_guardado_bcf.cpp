// The save panel of a BCF archive under Xvfb: its title, message, suggested
// name, modality and its two file types; confirming copies the archive of the
// chosen type to the chosen place and reports true; cancelling is told apart
// from a failure, and writes nothing.
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
        for (const auto& [ruta, datos] : {std::pair(archivos_.estandar, contenido_),
                                          std::pair(archivos_.literal, contenidoLiteral_)}) {
            QFile f(ruta);
            QVERIFY(f.open(QIODevice::WriteOnly) && f.write(datos) == datos.size());
        }
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
        QCOMPARE(
            panel->nameFilters(),
            QStringList({QStringLiteral("BCF 2.1 (*.bcf *.bcfzip)"),
                         QStringLiteral("BCF 2.1 — formato literal TESKAL (*.bcf *.bcfzip)")}));
        QCOMPARE(panel->selectedNameFilter(), panel->nameFilters()[0]);
        QVERIFY(!resultado_);

        // The user picks a folder of their own and keeps the suggested name.
        QVERIFY(QDir(carpeta_.path()).mkpath(QStringLiteral("destino")));
        panel->setDirectory(carpeta_.filePath(QStringLiteral("destino")));
        QTest::keyClick(campo, Qt::Key_Return);
        QTRY_COMPARE(resultado_, std::optional(true));
        QCOMPARE(leer(carpeta_.filePath(QStringLiteral("destino/Fase 23 ok.bcf"))), contenido_);
        QTRY_VERIFY(panelAbierto() == nullptr);

        // The second file type saves the literal form's archive.
        panel = abrir(&ventana, "Literal.bcf");
        QVERIFY(panel);
        panel->setDirectory(carpeta_.filePath(QStringLiteral("destino")));
        panel->selectNameFilter(panel->nameFilters()[1]);
        campo = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QCOMPARE(campo->text(), QStringLiteral("Literal.bcf"));
        QTest::keyClick(campo, Qt::Key_Return);
        QTRY_COMPARE(resultado_, std::optional(true));
        QCOMPARE(leer(carpeta_.filePath(QStringLiteral("destino/Literal.bcf"))), contenidoLiteral_);
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

    void cancelarNoEscribeNada() {
        QFileDialog* panel = abrir(nullptr, "Cancelado.bcf");
        QVERIFY(panel);
        panel->setDirectory(carpeta_.path());
        panel->reject();
        QTRY_VERIFY(cancelado_);
        QVERIFY(!resultado_);
        QVERIFY(!QFile::exists(carpeta_.filePath(QStringLiteral("Cancelado.bcf"))));
        QTRY_VERIFY(panelAbierto() == nullptr);
    }

private:
    static QFileDialog* panelAbierto() {
        auto* d = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        return d && d->objectName() == QStringLiteral("panelBCF") ? d : nullptr;
    }

    static QByteArray leer(const QString& ruta) {
        QFile f(ruta);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    // Opens the panel for the temporary archives; its answer lands in resultado_.
    QFileDialog* abrir(QWidget* padre, const std::string& nombre) {
        resultado_.reset();
        cancelado_ = false;
        ArchivosBCF archivos = archivos_;
        archivos.nombre = nombre;
        guardarBCF(padre, archivos, [this](bool ok) { resultado_ = ok; }, [this] { cancelado_ = true; });
        return QTest::qWaitFor([] { return panelAbierto() != nullptr; }) ? panelAbierto() : nullptr;
    }

    QTemporaryDir carpeta_;
    const ArchivosBCF archivos_{{},
                                carpeta_.filePath(QStringLiteral("estandar.bcf")),
                                carpeta_.filePath(QStringLiteral("literal.bcf"))};
    const QByteArray contenido_{"PK\x03\x04 contenido del archivo", 26};
    const QByteArray contenidoLiteral_{"PK\x03\x04 forma literal", 19};
    std::optional<bool> resultado_;
    bool cancelado_ = false;
};

QTEST_MAIN(PruebaGuardadoBCF)
#include "test_guardado_bcf.moc"
