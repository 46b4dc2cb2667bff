#include "app/ui/VentanaPrincipal.h"

#include <QApplication>
#include <QtTest>

class PruebaVentanaPrincipal : public QObject {
    Q_OBJECT
private slots:
    void abreConTituloYTamano() {
        teskal::VentanaPrincipal ventana;
        ventana.show();
        QVERIFY(QTest::qWaitForWindowExposed(&ventana));
        QCOMPARE(ventana.windowTitle(), QStringLiteral("TESKAL"));
        QCOMPARE(ventana.size(), QSize(1440, 900));
    }
};

QTEST_MAIN(PruebaVentanaPrincipal)
#include "test_ventana_principal.moc"
