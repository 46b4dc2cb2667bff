#pragma once

#include "scene/Node.h"
#include "timeline/PaqueteAWP.h"

#include <QDateTime>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The schedule shown on the scene: each element named by a work package
// takes a state from the scrubber date and the planned dates of its package,
// and the state decides whether its node is hidden, translucent green or in
// its own colours. The first look of every node changed is remembered, so
// that closing the timeline puts the scene back as it was.
namespace teskal {

enum class Estado4D : std::uint8_t { pendiente = 0, enCurso = 1, terminado = 2 };

// The look of an element under way.
inline constexpr Color verdeEnCurso{0.0f, 0.8f, 0.35f, 1.0f};
inline constexpr float opacidadEnCurso = 0.65f;

// The state at `fecha` (milliseconds since the epoch) of an element of a
// package planned from `inicio` to `fin`: both ends are still under way.
inline Estado4D estadoEnFecha(qint64 inicio, qint64 fin, qint64 fecha) {
    return fecha < inicio ? Estado4D::pendiente : fecha <= fin ? Estado4D::enCurso : Estado4D::terminado;
}

// The state of one name at a date, by the first package in the list whose
// elements hold it; a name in no package is finished.
Estado4D estadoElemento(std::string_view nombre, const std::vector<PaqueteAWP>& paquetes, const QDateTime& fecha);

// What one synchronisation found.
struct Resultado4D {
    bool sinElementos = false;   // no package has elements: nothing was touched
    std::size_t nombres = 0;     // distinct names of the packages with elements
    std::size_t nodos = 0;       // element nodes reached
    std::size_t nodosCambiados = 0; // nodes whose state this step changed
    std::array<std::size_t, 3> porEstado{}; // names by state: pending, under way, finished
};

// What tells one list of packages from another for the name table: the
// document's change count (every edit of a package counts one) and the
// list's place and length (an opened project brings a new list).
struct VersionPaquetes {
    std::uint64_t cambios = 0;
    const PaqueteAWP* lista = nullptr;
    std::size_t cuantos = 0;
    friend bool operator==(const VersionPaquetes&, const VersionPaquetes&) = default;
};

// The summary the timeline shows: the counts by state, or why nothing was
// applied.
std::string textoEstadoSync4D(const Resultado4D& r, bool vistaDisponible);

// The scene driven by the schedule. It keeps a table from each name to its
// element nodes, built once (when the packages change, when the roots change
// or when the scene's structure moves), and the state last applied to each
// name, so that a step of the scrubber touches only the nodes whose state
// changes. When something else changed the scene's look since the last
// step, the next step goes over every node of the table again.
class Sincronia4D {
public:
    // Applies the date to the element nodes under `raices`. A different
    // version of the packages rebuilds the table of names.
    Resultado4D aplicar(const std::vector<PaqueteAWP>& paquetes, const VersionPaquetes& version,
                        const std::vector<std::shared_ptr<Node>>& raices, const SceneCounters& contadores,
                        const QDateTime& fecha);
    // Puts back every remembered colour, opacity 1 on every node touched,
    // and forgets them.
    void restaurar();

    // The original diffuse contents of each node changed, by node identity.
    struct Original {
        std::shared_ptr<Node> nodo;
        ContenidoDiffuse diffuse;
    };
    const std::unordered_map<const Node*, Original>& coloresOriginales() const { return originales_; }

private:
    void construirNombres(const std::vector<PaqueteAWP>& paquetes);
    void construirTabla(const std::vector<std::shared_ptr<Node>>& raices);
    void aplicarNodo(Node& n, Estado4D estado);

    // Names: the dates of the first package that lists each, by slot.
    bool hayNombres_ = false;
    std::optional<VersionPaquetes> version_;
    std::unordered_map<std::string, std::uint32_t> slotDeNombre_;
    std::vector<qint64> inicio_, fin_;
    std::vector<std::uint8_t> estado_; // last applied, 255 for none

    // The table: the element nodes of slot s are nodos_[desde_[s] .. desde_[s + 1]).
    bool tablaValida_ = false;
    std::vector<const Node*> raicesTabla_;
    std::uint64_t estructura_ = 0;
    std::vector<std::uint32_t> desde_;
    std::vector<Node*> nodos_;

    bool repasarTodo_ = true;
    std::uint64_t aparienciaTrasPaso_ = ~0ull;
    std::unordered_map<const Node*, Original> originales_;
};

} // namespace teskal
