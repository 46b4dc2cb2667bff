#pragma once

#include "scene/Color.h"
#include "scene/Node.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// The unit system of a model's transform, by its text and scale factor.
enum class Unidades { milimetros, metros, pies, pulgadas };

std::string_view textoUnidades(Unidades u); // "Milímetros", "Metros", "Pies", "Pulgadas"
float factorUnidades(Unidades u);           // 0.001, 1, 0.3048, 0.0254
std::optional<Unidades> unidadesDesdeTexto(std::string_view texto);

// A per-model transform: unit scale, offsets in metres and a turn about Z in
// degrees.
struct TransformacionModelo {
    Unidades unidades = Unidades::metros;
    double offsetX = 0, offsetY = 0, offsetZ = 0;
    double giroZ = 0;
    friend bool operator==(const TransformacionModelo&, const TransformacionModelo&) = default;
};

// One IFC file linked to a discipline.
struct ModeloVinculado {
    std::string id; // UUID, new at each link and each restore
    std::string nombre;
    std::shared_ptr<Node> nodo; // the model root
    bool isVisible = true;
    double transparencia = 0; // 0 opaque to 0.75
    std::optional<std::string> rutaOrigen;
    TransformacionModelo transformacion;
};

// A discipline: its models, its colour, its visibility. Its identity is its key.
struct EspecialidadBIM {
    std::string nombre;
    std::string icono; // symbol name, mapped to a theme icon by the window
    std::shared_ptr<Node> nodoRaiz; // the "esp_" + key node, from the first link on
    std::vector<ModeloVinculado> modelos;
    Color colorOriginal;
    bool isVisible = true;
};

// The six disciplines every workspace starts with, and their order.
std::vector<std::string> ordenEspecialidadesPorDefecto();
std::map<std::string, EspecialidadBIM> especialidadesPorDefecto();

// The key of a new discipline: the first three characters of the name,
// upper-cased, then a counter from 1 while the key is taken.
std::string claveNuevaEspecialidad(std::string_view nombre, const std::vector<std::string>& claves);

// Opacity that a transparency value gives the model's materials.
inline float opacidadDeTransparencia(double transparencia) { return static_cast<float>(1.0 - transparencia); }

} // namespace teskal
