#include "federation/GlobalIdsIFC.h"

#include "federation/ArchivoMapeado.h"
#include "federation/TextoSTEP.h"
#include "federation/TiposIFC.h"

#include <vector>

namespace teskal {

GlobalIdsPorNombre leerGlobalIdsTexto(std::string_view texto) {
    GlobalIdsPorNombre resultado;
    PartesEntidad partes;
    std::vector<std::string_view> args;
    // Statement by statement, without a table: the instance number is not
    // read at all, so a statement with a bad number still counts.
    recorrerSentenciasSTEP(texto, [&](std::string_view sentencia, bool) {
        if (!partirEntidadSTEP(sentencia, partes)) return;
        if (!clasificarTipoIFC(partes.tipo).esProducto()) return;
        separarArgumentosSTEP(partes.args, args, 3);
        if (args.size() < 3) return;
        std::string gid = limpiarTextoSTEP(args[0]);
        std::string nombre = limpiarTextoSTEP(args[2]);
        if (gid.empty() || nombre.empty()) return;
        resultado[std::move(nombre)] = std::move(gid);
    });
    return resultado;
}

GlobalIdsPorNombre leerGlobalIds(const std::string& ruta) {
    const ArchivoMapeado archivo(ruta);
    return leerGlobalIdsTexto(archivo.texto());
}

} // namespace teskal
