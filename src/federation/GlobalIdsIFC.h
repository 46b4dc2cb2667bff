#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace teskal {

// Element Name to GlobalId, for every product of the file; the last statement
// in file order wins for a repeated Name. Never fails: an unreadable file
// gives an empty map.
using GlobalIdsPorNombre = std::unordered_map<std::string, std::string>;

GlobalIdsPorNombre leerGlobalIds(const std::string& ruta);
GlobalIdsPorNombre leerGlobalIdsTexto(std::string_view texto);

} // namespace teskal
