#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

namespace teskal {

// The separator between a property set's name and a property's name in a
// property key: blank, U+203A, blank.
inline constexpr std::string_view separadorPropiedad = " \u203A ";
// The one pseudo-property: the element's STEP type in upper case.
inline constexpr std::string_view claveTipoIFC = "__tipoIFC";

// Property key ("Pset_WallCommon › IsExternal" or "__tipoIFC") to value.
using PropiedadesElemento = std::map<std::string, std::string>;
// Element name to its properties: what one IFC file yields.
using PropiedadesModelo = std::unordered_map<std::string, PropiedadesElemento>;
// Discipline key to the properties of its elements: the workspace's index.
using PropiedadesPorEspecialidad = std::unordered_map<std::string, PropiedadesModelo>;

// What the index reads of one IFC file, in one scan: every product's type,
// the single values of its property sets and the quantities of its quantity
// sets, its own and those of its type object (its own value wins).
struct IndiceIFC {
    // By element Name: elements that share a Name share one entry.
    PropiedadesModelo porNombre;
    // By GlobalId: each element's own entry.
    PropiedadesModelo porGlobalId;
};

// Never fails: an unreadable file gives an empty index, a malformed item is
// skipped.
IndiceIFC leerIndiceIFC(const std::string& ruta);
// The same over text already in memory.
IndiceIFC leerIndiceIFCTexto(std::string_view texto);

// The index by Name alone.
PropiedadesModelo leerPropiedadesIFC(const std::string& ruta);
PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto);

// Merges a model's properties into a discipline's: an element name that is
// there already gets the new inner dictionary whole, not key by key.
void fusionarPropiedades(PropiedadesModelo& destino, PropiedadesModelo nuevas);

} // namespace teskal
