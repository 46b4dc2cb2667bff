#pragma once

#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The conversion cache: what the converter wrote for an IFC file (the OBJ and
// its identities) and what the text index read of it, kept under the user's
// cache folder, so that reopening a project, linking the same file again or
// restoring a package skips the converter and the scans. One file per entry,
// named by its key; an entry is read whole, checked against its own digest,
// and anything damaged, cut short or of another format is ignored, removed and
// rebuilt by the conversion that missed it.
namespace teskal {

// Bumped whenever the readers (OBJ, index, grids, GlobalIds) or the entry's
// layout change: entries of another version never match a key.
inline constexpr std::uint32_t versionFormatoCache = 1;
// The bound of the cache folder, least recently used entries evicted past it.
inline constexpr std::uint64_t limiteCachePorDefecto = 2ull * 1024 * 1024 * 1024;

// Where the cache lives: "vornel" in the user's cache folder
// ($XDG_CACHE_HOME, ~/.cache when it is not set).
std::string carpetaCachePorDefecto();

// Which readers a conversion ran: part of the key, since a comparison version
// reads GlobalIds only and a link reads properties and grids.
struct LecturasCache {
    bool propiedades = true;
    bool grillas = true;
    bool globalIds = false;
};

// The converter's version as the cache sees it: a SHA-256 of its executable,
// in hexadecimal. Empty when it can't be read (nothing is then cached).
std::string versionConversorCache(const std::string& rutaConversor);

// The key of an entry: the SHA-256 of the IFC file's bytes (a .ifczip's own
// bytes), the converter's version, the cache format's version and the
// readers, digested into 64 hexadecimal characters. Empty when the file
// can't be read.
std::string claveCache(const std::string& rutaIFC, std::string_view versionConversor, LecturasCache lecturas);

// What an entry holds.
struct EntradaCache {
    std::string obj;         // the converter's OBJ text
    std::string identidades; // its ".ids" beside it, empty when it wrote none
    PropiedadesModelo propiedades;
    PropiedadesModelo propiedadesPorGlobalId;
    std::vector<EjeGrilla> grillas; // new UUIDs at each read, as a scan gives
    GlobalIdsPorNombre globalIds;
};

// The entry of a key, or none on a miss. An entry that does not read whole
// and check out is removed. A hit marks the entry as just used.
std::optional<EntradaCache> leerEntradaCache(const std::string& carpeta, const std::string& clave);

// Writes an entry under its key atomically (a new file renamed over the
// former, so a reader sees the whole entry or none, and two conversions of
// one file at once leave one good entry), then evicts the least recently
// used entries until the folder holds at most `limiteBytes`. False when it
// could not be written; the conversion goes on all the same.
bool escribirEntradaCache(const std::string& carpeta, const std::string& clave, std::string_view obj,
                          std::string_view identidades, const PropiedadesModelo& propiedades,
                          const PropiedadesModelo& propiedadesPorGlobalId, const std::vector<EjeGrilla>& grillas,
                          const GlobalIdsPorNombre& globalIds, std::uint64_t limiteBytes = limiteCachePorDefecto);

// Removes entries, least recently used first, until the folder's entries add
// up to at most `limiteBytes`.
void recortarCache(const std::string& carpeta, std::uint64_t limiteBytes);

// Empties the cache: every entry and every unfinished write. Empty on
// success, otherwise the Spanish description of the failure.
std::string vaciarCache(const std::string& carpeta);

// The entries' size in bytes and their count.
struct TamanoCache {
    std::uint64_t bytes = 0;
    std::size_t entradas = 0;
};
TamanoCache tamanoCache(const std::string& carpeta);

} // namespace teskal
