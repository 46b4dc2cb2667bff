#pragma once

// The real /usr/bin/unzip over an archive a test wrote: its listing and the
// bytes of one entry, as another tool would find them.
#include <QByteArray>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <gtest/gtest.h>
#include <string>

namespace teskal::pruebas {

// The standard output of /usr/bin/unzip, which must end with status 0.
inline std::string unzip(const QStringList& argumentos) {
    QProcess p;
    p.start(QStringLiteral("/usr/bin/unzip"), argumentos);
    EXPECT_TRUE(p.waitForFinished(-1));
    EXPECT_TRUE(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
        << argumentos.join(u' ').toStdString();
    return p.readAllStandardOutput().toStdString();
}

// The archive's entries, sorted, a blank between each two.
inline std::string entradas(const QString& archivo) {
    QList<QByteArray> lineas = QByteArray::fromStdString(unzip({"-Z1", archivo})).split('\n');
    lineas.removeAll(QByteArray());
    std::sort(lineas.begin(), lineas.end());
    return lineas.join(' ').toStdString();
}

inline std::string contenido(const QString& archivo, const std::string& entrada) {
    return unzip({QStringLiteral("-p"), archivo, QString::fromStdString(entrada)});
}

} // namespace teskal::pruebas
