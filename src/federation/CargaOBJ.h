#pragma once

#include "scene/Node.h"

#include <memory>
#include <string>
#include <string_view>

namespace teskal {

// Reads the Wavefront OBJ that the converter wrote into one unnamed model root
// with one child node per group that has faces, named by the group (the IFC
// element's Name). Faces become triangle fans; vertices are unrolled per
// triangle corner. The MTL file is never read. Gives nullptr when the file
// can't be read as UTF-8 or holds no faces.
//
// When the converter wrote its identities beside the OBJ (see
// rutaIdentidadesOBJ: one line per group line, "GlobalId<TAB>class<TAB>name"),
// each element node gets the GlobalId and IFC class of its line, provided
// the line's name is the group's name; without them nodes have no identity.
std::shared_ptr<Node> cargarOBJ(const std::string& ruta);
std::shared_ptr<Node> cargarOBJTexto(std::string_view texto, std::string_view identidades = {});

// Where the converter writes the identities of an OBJ: its path with ".ids"
// for the extension.
std::string rutaIdentidadesOBJ(const std::string& rutaOBJ);

// cargarOBJTexto reads a large text as two pieces at once, cut at a line end
// near its middle, and gives the same model as a reading in one piece. This
// reads any text that way, the second piece beginning after the first line
// end at or after `corte` (in one piece when there is no such line end), so
// that both readings can be compared on small texts.
std::shared_ptr<Node> cargarOBJTextoEnDosPartes(std::string_view texto, std::size_t corte,
                                                std::string_view identidades = {});

// The material a loaded element gets: diffuse white 0.75, Phong.
std::shared_ptr<Material> materialPorDefectoOBJ(bool dobleCara);

// Gives every geometry below the model root a usable material: a missing one
// is added (white 0.75, Phong, single-sided); an existing one without diffuse
// contents gets white 0.75, and every one is set to Phong.
void normalizarMateriales(Node& modelo);

} // namespace teskal
