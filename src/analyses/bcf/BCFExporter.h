#pragma once

#include "analyses/bcf/TextosBCF.h"
#include "analyses/clash/Interferencias.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace teskal {

// The archives of one export, one per form, offered under one file name.
struct ArchivosBCF {
    std::string nombre;
    QString estandar;
    QString literal;

    const QString& ruta(FormaBCF forma) const {
        return forma == FormaBCF::estandar ? estandar : literal;
    }
};

// The BCF 2.1 archive of one clash analysis, one topic per clash, for other
// coordination tools to read.
struct BCFExporter {
    AnalisisInterferencias analisis;
    std::string nombreProyecto;                   // the name in project.bcfp
    std::map<std::string, QByteArray> thumbnails; // Interferencia id -> PNG bytes
    FormaBCF forma = FormaBCF::estandar;

    // The archive as it lies in the temporary directory, and the file name
    // offered to the user.
    struct Archivo {
        std::string nombre;
        QString ruta;
    };

    // Writes the archive of `forma` in the calling thread: a folder
    // TESKAL_BCF_<UUID> in the temporary directory with bcf.version,
    // project.bcfp, extensions.xsd (standard form only) and, per clash,
    // <id>/markup.bcf, <id>/viewpoint.bcfv and <id>/snapshot.png (only for a
    // thumbnail that is a PNG); then /usr/bin/zip packs the folder's content
    // into nombreArchivoBCF(analisis.nombre), replacing a file of that name:
    // the standard form's in the temporary directory, the literal form's in
    // its folder "BCF literal TESKAL" there. Nothing when a folder or a text
    // can't be written or zip doesn't end with status 0; a missing snapshot is
    // no failure. The folders and the archive stay behind.
    std::optional<Archivo> escribirArchivo() const;

    using Completion = std::function<void(bool)>;
    using Guardar = std::function<void(const ArchivosBCF& archivos, Completion)>;

    // The whole export: the archives of both forms written as one job on the
    // thread pool, on a copy; then, on the main thread, guardar(archivos,
    // completion) when both were written, or completion(false). `guardar` is
    // the one to call `completion` on success, with true when the archive of
    // the form the user chose reached the place the user chose.
    void exportar(Guardar guardar, Completion completion) const;
};

// Copies the archive at `ruta` to `destino`, first removing what stands there
// (a failure to remove is ignored: the copy then fails). True when the copy
// worked.
bool copiarArchivoBCF(const QString& ruta, const QString& destino);

// The pieces other archives of the workbench share: /usr/bin/zip -r
// <archivo> . run in `carpeta` (true on status 0), a file written whole or
// not at all, and the PNG signature test.
bool comprimirZip(const QString& carpeta, const QString& archivo);
bool escribirArchivoAtomico(const QString& ruta, const QByteArray& datos);
bool esImagenPNG(const QByteArray& datos);

} // namespace teskal
