#pragma once

#include "federation/GlobalIdsIFC.h"
#include "scene/Color.h"
#include "scene/Node.h"

#include <QDateTime>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teskal {

// The two slots of a version comparison.
namespace slotsXOR {
inline constexpr std::string_view base = "BASE";
inline constexpr std::string_view nuevo = "NUEVO";
} // namespace slotsXOR

enum class TipoCambioXOR { agregado, eliminado, modificado };

// One element that changed between the two versions.
struct ElementoCambioXOR {
    std::string id; // UUID
    std::string nombre;
    std::string tipoIFC;
    TipoCambioXOR tipoCambio = TipoCambioXOR::agregado;
    float deltaPosicion = 0; // metres between the box centres; 0 unless modified
    float deltaTamano = 0;   // largest change of a box extent; 0 unless modified
    std::string globalId;    // the node's own, empty when the converter gave none
};

// One comparison, kept in memory for its report.
struct ResultadoXOR {
    std::string id; // UUID
    QDateTime fecha;
    std::string archivoBase;
    std::string archivoNuevo;
    std::vector<ElementoCambioXOR> elementos; // sorted by nombre
    int iguales = 0;
};

// The four counts of the sidebar.
struct EstadisticasXOR {
    int agregados = 0;
    int eliminados = 0;
    int modificados = 0;
    int iguales = 0;
    friend bool operator==(const EstadisticasXOR&, const EstadisticasXOR&) = default;
};

// A node name split at its first "/": with two non-empty pieces the first is
// the IFC type and the rest (further "/" included) the name; otherwise the
// type is empty and the name is the whole text.
struct PartesNombre {
    std::string_view tipoIFC;
    std::string_view nombre;
};
PartesNombre partesNombre(std::string_view nombreNodo);

// A change counts when the box centre moves, or a box extent changes, by
// strictly more than this many metres.
inline constexpr double umbralCambioXOR = 0.05;

// Distance between the box centres and largest change of an extent.
struct DeltasXOR {
    double posicion = 0;
    double tamano = 0;
    bool modificado() const { return posicion > umbralCambioXOR || tamano > umbralCambioXOR; }
};
DeltasXOR deltasXOR(const Box& base, const Box& nuevo);

// Key of an element to its node, the last node enumerated winning a repeated
// key. The key is the node's own GlobalId when `porNodo` and the node has one;
// otherwise the name part, or its GlobalId when ids are in use and the slot's
// map knows the name part. Keys view the node names and the id maps:
// they stay valid while those stand unchanged. Entries keep the order of
// each key's first node; lookups go through one open-addressed table, with
// no allocation per element.
class MapaXOR {
public:
    struct Entrada {
        std::string_view clave;
        Node* nodo;
    };
    explicit MapaXOR(std::size_t capacidad = 0);
    // Adds the key or, when it is there, gives it this node.
    void poner(std::string_view clave, Node* nodo);
    Node* buscar(std::string_view clave) const;
    bool contiene(std::string_view clave) const { return buscar(clave) != nullptr; }
    const std::vector<Entrada>& entradas() const { return entradas_; }
    std::size_t size() const { return entradas_.size(); }

private:
    std::size_t hueco(std::string_view clave) const;
    void crecer();

    std::vector<Entrada> entradas_;
    std::vector<std::uint32_t> tabla_; // entry index + 1; 0 marks a free slot
};
MapaXOR mapaXOR(Node& modelo, const GlobalIdsPorNombre* globalIds, bool porNodo = false);

// True when some element node of the model carries its own GlobalId.
bool tieneGlobalIdsPropios(Node& modelo);

// The matched sets of two models. Keys of each kind keep the enumeration
// order of their model (the new model's for added and modified keys, the
// base's for eliminated ones), so the result is the same from run to run.
struct ClasificacionXOR {
    MapaXOR base, nuevo;
    std::vector<std::string_view> agregados, eliminados;
    struct Modificado {
        std::string_view clave;
        DeltasXOR deltas;
    };
    std::vector<Modificado> modificados;
    std::size_t comunes = 0;

    EstadisticasXOR estadisticas() const;
};

// Matches the two models by key and sorts every key into added, eliminated, modified or equal. Each node's
// box is read once.
ClasificacionXOR clasificarXOR(Node& base, Node& nuevo, const GlobalIdsPorNombre& idsBase,
                               const GlobalIdsPorNombre& idsNuevo);
// The key: each node's own GlobalId when both models' nodes carry them, so
// same-named elements are told apart; otherwise the name's GlobalId when both
// maps are non-empty; otherwise the name part.

// The colours of the comparison.
namespace coloresXOR {
inline constexpr Color agregado{0.1f, 0.75f, 0.2f, 1};
inline constexpr Color eliminado{0.9f, 0.15f, 0.15f, 1};
inline constexpr Color modificadoAnterior{0.95f, 0.55f, 0.05f, 1};
inline constexpr Color modificadoNuevo{0.95f, 0.9f, 0.1f, 1};
inline constexpr Color sinCambios = Color::gris(0.5f);
} // namespace coloresXOR

// Paints both models: in the base, eliminated red and modified orange, solid,
// the rest faint grey; in the new model, added green and modified yellow,
// solid, the rest invisible. Only the nodes of the two maps are painted.
void pintarXOR(const ClasificacionXOR& c);

// The changed elements, each with a new id, sorted by name in plain text
// order (stable, so equal names keep added, eliminated, modified order).
std::vector<ElementoCambioXOR> elementosCambioXOR(const ClasificacionXOR& c);

} // namespace teskal
