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

// Reads the type and the single-value properties of every product of the file,
// keyed by the element's Name. Never fails: an unreadable or non-UTF-8 file
// gives an empty result.
PropiedadesModelo leerPropiedadesIFC(const std::string& ruta);
// The same over text already in memory.
PropiedadesModelo leerPropiedadesIFCTexto(std::string_view texto);

// Merges a model's properties into a discipline's: an element name that is
// there already gets the new inner dictionary whole, not key by key.
void fusionarPropiedades(PropiedadesModelo& destino, PropiedadesModelo nuevas);

} // namespace teskal
