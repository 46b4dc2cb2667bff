// The quantity takeoff in the workspace: the command that measures the
// federation into a new snapshot, and the write of its CSV.
#include "federation/ContentView.h"

#include <QSaveFile>

namespace teskal {

void ContentView::abrirQTO() {
    auto grupos = calcularGruposQTO(especialidades, ordenEspecialidades, propiedadesIFC, propiedadesPorGlobalId);
    if (grupos.empty()) {
        mostrarError("No hay elementos cargados para cuantificar. Vincula al menos un archivo IFC.");
        return;
    }
    qto.ventanasPendientes.push_back({std::move(grupos), QDateTime::currentDateTime()});
    emit changed();
}

bool ContentView::guardarCSVQTO(const std::string& ruta, const std::string& texto) {
    // UTF-8 without a byte order mark, written beside the target and renamed
    // over it: a failed write leaves any former file whole and says so.
    QSaveFile f(QString::fromStdString(ruta));
    f.setDirectWriteFallback(false);
    const auto largo = static_cast<qint64>(texto.size());
    const bool escrito = f.open(QIODevice::WriteOnly) && f.write(texto.data(), largo) == largo && f.flush();
    const bool completo = escrito && f.size() == largo;
    if (!completo || !f.commit()) {
        const std::string motivo = escrito && !completo ? std::string("el disco no admitió el archivo completo.")
                                                         : f.errorString().toStdString();
        f.cancelWriting();
        mostrarError("No se pudo guardar el CSV \"" + ruta + "\": " + motivo);
        return false;
    }
    return true;
}

} // namespace teskal
