#pragma once

// Reads a BCF archive back with bcf-client, a maintained BCF library, through
// tests/analyses/leer_bcf.py run by the project's Python: what another
// coordination tool would find in it.
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>

namespace teskal::pruebas {

struct LecturaBCF {
    QJsonObject datos; // as leer_bcf.py describes it
    QString error;     // the reader's complaint; empty when it read the archive
};

inline LecturaBCF leerConBcfClient(const QString& archivo) {
    QProcess p;
    p.start(QStringLiteral(TESKAL_PYTHON),
            {QStringLiteral(TESKAL_TESTS_DIR "/analyses/leer_bcf.py"), archivo});
    if (!p.waitForFinished(120000)) return {{}, QStringLiteral("leer_bcf.py no terminó")};
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return {{}, QString::fromUtf8(p.readAllStandardError())};
    QJsonParseError e;
    const QJsonDocument d = QJsonDocument::fromJson(p.readAllStandardOutput(), &e);
    if (!d.isObject()) return {{}, e.errorString()};
    return {d.object(), {}};
}

} // namespace teskal::pruebas
