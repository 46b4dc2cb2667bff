// The timeline's packages from and to other sources: the confirmed CSV
// import, the detector's import and the CSV export.
#include "federation/ContentView.h"

#include "timeline/ArbolAWP.h"
#include "timeline/CSVAWP.h"
#include "timeline/DetectorAWP.h"

namespace teskal {

void ContentView::importarPaquetesAWP(const std::vector<PaqueteAWP>& paquetes) {
    if (agregarPaquetes(timeLiner, paquetes) > 0) marcarCambio();
    emit changed();
}

void ContentView::importarDetectadosAWP(const std::vector<ResultadoAWP>& resultados,
                                        const std::set<std::string>& seleccionados) {
    const QDateTime inicio = timeLiner.fechaInicio, fin = timeLiner.fechaFin;
    if (importarDetectados(timeLiner, resultados, seleccionados) > 0 || timeLiner.fechaInicio != inicio ||
        timeLiner.fechaFin != fin)
        marcarCambio();
    emit changed();
}

bool ContentView::exportarCSVAWP(const std::string& ruta) {
    // The same atomic write as every CSV of the workbench; a failed write is
    // told, not swallowed.
    return guardarCSVQTO(ruta, textoCSVAWP(timeLiner));
}

} // namespace teskal
