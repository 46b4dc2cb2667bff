#pragma once

// A CSV file as Python's csv module reads it (UTF-8; a byte order mark would
// stay in the first field): its rows, or none when Python could not read it.

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QStringList>

namespace teskal::pruebas {

inline QList<QStringList> leerCSVConPython(const QString& ruta) {
    QProcess p;
    p.start(QStringLiteral("python3"),
            {QStringLiteral("-c"),
             QStringLiteral("import csv, json, sys\n"
                            "with open(sys.argv[1], encoding='utf-8', newline='') as f:\n"
                            "    print(json.dumps(list(csv.reader(f))))\n"),
             ruta});
    QList<QStringList> filas;
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return filas;
    for (const auto& f : QJsonDocument::fromJson(p.readAllStandardOutput()).array()) {
        filas.append(QStringList());
        for (const auto& c : f.toArray()) filas.back() << c.toString();
    }
    return filas;
}

} // namespace teskal::pruebas
