#pragma once

#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"
#include "scene/Node.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace teskal {

// What one conversion needs, captured on the main thread.
struct TrabajoConversion {
    std::string rutaOrigen;   // the file the user chose
    std::string rutaConversor; // IfcConvert, already resolved
    std::string rutaSalida;   // the temporary OBJ, a new UUID name
    bool leerGrillas = true;  // links and restores read grid axes
    bool leerPropiedades = true; // links and restores read properties
    bool leerGlobalIds = false;  // a version of the comparison reads GlobalIds only
};

// A model that came through: geometry, properties and grid axes.
struct ModeloConvertido {
    std::shared_ptr<Node> modelo;
    PropiedadesModelo propiedades;           // by element Name
    PropiedadesModelo propiedadesPorGlobalId; // each element's own, by GlobalId
    std::vector<EjeGrilla> grillas;
    GlobalIdsPorNombre globalIds;
};

// Why a conversion stopped; the caller composes the sentence for its path.
struct FalloConversion {
    enum class Causa { Copia, Lanzamiento, Salida, Geometria };
    Causa causa = Causa::Copia;
    std::string descripcion; // system description, or the converter's stderr ("Sin detalle")
    int codigo = 0;          // the converter's exit status, for Causa::Salida
};

using ResultadoConversion = std::variant<ModeloConvertido, FalloConversion>;

// A new path in the temporary directory named by a new UUID and the ending.
std::string rutaTemporalNueva(const char* extension);

// Where the workbench finds its converter: "IfcConvert" beside its binary.
// Empty when it is not there.
std::string buscarConversor(const std::string& carpetaPrograma);

// The worker's part of a link, on a pool thread: copies the file under a UUID
// name, runs the converter on the copy, reads the IFC text whatever the
// converter did, deletes the copy, then loads and normalises the OBJ. The OBJ
// is left in place on every path: the caller removes it after a good load.
ResultadoConversion convertirIFC(const TrabajoConversion& trabajo);

} // namespace teskal
