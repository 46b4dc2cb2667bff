#pragma once

#include "analyses/clash/Interferencias.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace teskal {

// The BCF 2.1 archive of one clash analysis, one topic per clash, for other
// coordination tools to read.
struct BCFExporter {
    AnalisisInterferencias analisis;
    std::string nombreProyecto;                   // the name in project.bcfp
    std::map<std::string, QByteArray> thumbnails; // Interferencia id -> PNG bytes

    // The archive as it lies in the temporary directory, and the file name
    // offered to the user.
    struct Archivo {
        std::string nombre;
        QString ruta;
    };

    // Writes the archive in the calling thread: a folder TESKAL_BCF_<UUID> in
    // the temporary directory with bcf.version, project.bcfp and, per clash,
    // <id>/markup.bcf, <id>/viewpoint.bcfv and <id>/snapshot.png (only for a
    // thumbnail that is a PNG); then /usr/bin/zip packs the folder's content
    // into nombreArchivoBCF(analisis.nombre) beside it, replacing a file of
    // that name. Nothing when a folder or a text can't be written or zip
    // doesn't end with status 0; a missing snapshot is no failure. The folder
    // and the archive stay behind.
    std::optional<Archivo> escribirArchivo() const;

    using Completion = std::function<void(bool)>;
    using Guardar = std::function<void(const std::string& nombre, const QString& ruta, Completion)>;

    // The whole export: escribirArchivo as one job on the thread pool, on a
    // copy; then, on the main thread, guardar(nombre, ruta, completion) when
    // the archive was written, or completion(false). `guardar` is the one to
    // call `completion` on success, with true when the archive reached the
    // place the user chose.
    void exportar(Guardar guardar, Completion completion) const;
};

// Copies the archive at `ruta` to `destino`, first removing what stands there
// (a failure to remove is ignored: the copy then fails). True when the copy
// worked.
bool copiarArchivoBCF(const QString& ruta, const QString& destino);

} // namespace teskal
