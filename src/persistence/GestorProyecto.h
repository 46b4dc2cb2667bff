#pragma once

#include "persistence/ProyectoTESKAL.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace teskal {

// Which file the workspace was saved to or opened from, and its name.
struct GestorProyecto {
    std::optional<std::string> urlActual;
    std::string nombreProyecto = "Proyecto sin título";

    // Remembers the file and takes its name, without extension, as the project's.
    void fijarProyecto(const std::string& ruta);
};

// The extension of project files.
inline constexpr const char* extensionProyecto = "teskal";
inline constexpr const char* extensionPaquete = "teskalpkg";

// A unique file name in a package's "modelos/" folder: the name itself, or
// "base_n.ext" with the first n from 1 that is free (a name without an
// extension gets a trailing dot, "modelo_1."). The name is added to `usados`.
std::string nombreUnicoEnPaquete(const std::string& nombre, std::vector<std::string>& usados);

// Writes the package: a temporary folder "teskalpkg_<UUID>" with
// proyecto.json and a copy of every linked file in modelos/, zipped by
// /usr/bin/zip into `destino` (an existing file there is replaced). The
// document's models get their "modelos/..." relative paths here. Gives an
// empty text on success, else the description of the failure.
std::string exportarPaquete(const std::string& destino, ProyectoTESKAL proyecto,
                            const std::vector<std::vector<std::string>>& rutasPorEspecialidad);

// Opens a package into a new temporary folder "teskalpkg_open_<UUID>" with
// /usr/bin/unzip, after refusing archives whose entries leave the folder
// (absolute paths, ".." components) or are symbolic links. Gives the project
// and the folder, or the description of the failure.
std::variant<std::pair<ProyectoTESKAL, std::string>, std::string> abrirPaquete(const std::string& ruta);

} // namespace teskal
