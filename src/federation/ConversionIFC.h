#pragma once

#include "federation/CacheConversion.h"
#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"
#include "scene/Node.h"

#include <atomic>
#include <cstdint>
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
    // Set from the main thread to stop the conversion: the child is ended and
    // every temporary file removed. Shared by the conversions one "Cancelar"
    // (or quitting) stops.
    std::shared_ptr<std::atomic<bool>> cancelar;
    // The converter is ended after this long; 0 or less waits without limit.
    double limiteMinutos = 0;
    // The conversion cache's folder; empty converts without it ("--sin-cache").
    std::string carpetaCache;
    std::uint64_t limiteCache = limiteCachePorDefecto;
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
    enum class Causa {
        Copia,
        Lanzamiento,
        Salida,
        Geometria,    // the OBJ can't be read
        SinGeometria, // the converter succeeded but wrote no faces
        Cancelada,    // stopped by the user or by quitting: no message
        TiempoAgotado // the time limit ended it
    };
    Causa causa = Causa::Copia;
    std::string descripcion; // system description, or the converter's stderr ("Sin detalle")
    int codigo = 0;          // the converter's exit status, for Causa::Salida
};

using ResultadoConversion = std::variant<ModeloConvertido, FalloConversion>;

// A new path in the temporary directory named by a new UUID and the ending.
std::string rutaTemporalNueva(const char* extension);

// The time limit of a conversion in minutes: the setting
// "conversion/limiteMinutos", 30 when it is absent or not a positive number.
double limiteMinutosConversion();
// "La conversión superó el límite de N minutos y se canceló."
std::string textoLimiteConversion(double minutos);

// Removes the converter's outputs: the OBJ, its MTL and its identities.
void eliminarSalidasConversion(const std::string& rutaOBJ);

// Where the workbench finds its converter: "IfcConvert" beside its binary.
// Empty when it is not there.
std::string buscarConversor(const std::string& carpetaPrograma);

// The worker's part of a link, on a pool thread: copies the file under a UUID
// name (the IFC inside a .ifczip is taken out of it), runs the converter on
// the copy, reads the IFC text whatever the converter did, deletes the copy,
// then loads and normalises the OBJ. The converter's outputs are removed on
// every path once read, so nothing is left in the temporary folder.
// With a cache folder, a file converted before by the same converter comes
// from its entry instead (no copy, no converter, no scan), and a successful
// conversion leaves its entry there.
ResultadoConversion convertirIFC(const TrabajoConversion& trabajo);

} // namespace teskal
