#pragma once

#include "federation/Especialidades.h"
#include "federation/PropiedadesIFC.h"

#include <QUuid>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// One quantified element: a scene node measured by its local box. Its IFC
// type and discipline are those of the group that holds it.
struct ItemQTO {
    QUuid id;           // fresh for every computation
    std::string nombre; // the node's name, unchanged
    // Extents of the box in metres, never negative: along X ("Ancho"), along
    // Y and along Z. The scene is Z-up, so `dz` is the height ("Alto") and
    // the plan lies in X and Y.
    float dx = 0, dy = 0, dz = 0;
    float densidad = 0; // kg/m³
    // The element's properties as the index holds them ("Pset › Propiedad"
    // and "__tipoIFC"); shares the index's storage.
    PropiedadesElemento propiedades;

    // Derived quantities, in 32-bit floats and in this order of operations.
    float volumen() const { return (dx * dy) * dz; }
    float areaPlanta() const { return dx * dy; }
    // The whole surface of the box, all six faces.
    float areaCara() const {
        const float s = (dx * dz) + ((dy * dz) + (dx * dy));
        return s + s;
    }
    float peso() const { return volumen() * densidad; }
    // The value under the key, empty when it is absent.
    const std::string& valor(const std::string& clave) const;
};

// The elements of one IFC class within one discipline.
struct GrupoQTO {
    QUuid id; // fresh for every computation
    std::string tipoIFC;     // as the index holds it: "IFCWALL"
    std::string tipoNombre;  // readable: "Muro"
    std::string especialidad; // the discipline's `nombre`
    float densidad = 0;
    std::vector<ItemQTO> items; // in the order the traversal met them

    std::size_t cantidad() const { return items.size(); }
    // Plain sums over the items in list order, in 32-bit floats.
    float volumen() const;
    float areaPlanta() const;
    float areaCara() const;
    float peso() const;
    // What a group row shows in the extra column `clave`: the one value its
    // items share, "varios" when they differ, "—" when none has a value
    // (empty values and the STEP "$" count as none).
    std::string valorParametro(const std::string& clave) const;
};

// The readable name and the density (kg/m³) of an IFC class: a table of 26
// classes; any other keeps its class text and weighs 1000.
std::string nombreTipoQTO(std::string_view tipoIFC);
float densidadTipoQTO(std::string_view tipoIFC);

// True for a property value that says nothing: empty or the STEP "$".
inline bool valorVacioQTO(std::string_view v) { return v.empty() || v == "$"; }

// The takeoff of the federated scene: every named descendant of each
// discipline's root whose local box exceeds 0.001 m on some axis, grouped by
// IFC class and discipline name, sorted by discipline then readable name.
// Disciplines are walked in `ordenEspecialidades`. An element's properties
// come from its GlobalId when the node has one (`porGlobalId`), from its name
// otherwise (`porNombre`); without them it is an "IFCBUILDINGELEMENTPROXY".
std::vector<GrupoQTO> calcularGruposQTO(const std::map<std::string, EspecialidadBIM>& especialidades,
                                        const std::vector<std::string>& ordenEspecialidades,
                                        const PropiedadesPorEspecialidad& porNombre,
                                        const PropiedadesPorEspecialidad& porGlobalId = {});

} // namespace teskal
