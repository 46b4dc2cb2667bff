#pragma once

#include "federation/PropiedadesIFC.h"
#include "timeline/PaqueteAWP.h"

#include <QDateTime>
#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Work packages that the models already carry as IFC properties: a property
// named after a level (CWA, CWP, IWP, PWP, in any property set and in any
// case) assigns its element to the package whose code is the value. The
// parents of the packages imported from them are inferred from the elements
// they share.
namespace teskal {

// One package found: its level, its code and the names of the elements that
// bear it (ascending, each once).
struct ResultadoAWP {
    NivelAWP nivel = NivelAWP::iwp;
    std::string codigo;
    std::vector<std::string> elementos;
    friend bool operator==(const ResultadoAWP&, const ResultadoAWP&) = default;
};

// The level a property key names: the part after its last " › " (the whole
// key without one), trimmed of blanks and upper-cased, must be exactly
// "CWA", "CWP", "IWP" or "PWP". None for any other key, "__tipoIFC"
// included.
std::optional<NivelAWP> nivelDePropiedad(std::string_view clave);

// Scans every property of every element of every discipline once: a
// property of a level with a value that is not empty puts the element under
// that level and that value, as it stands, as the code. Elements are known by
// name, so same-named elements and the same name in two disciplines count
// once. The packages come by level, then by code, ascending.
std::vector<ResultadoAWP> detectarAWP(const PropiedadesPorEspecialidad& propiedades);

// The parents that the candidates offer: of the candidates of a level, the
// one that shares the most element names with a child; of equals, the first
// in the candidates' order. Built once over the candidates, so each question
// costs the child's names, not a pass over every candidate.
class InferenciaPadres {
public:
    // The candidates are read where they stand and must outlive the
    // inference.
    explicit InferenciaPadres(const std::vector<const ResultadoAWP*>& candidatos);
    // The code of the parent, or none when no candidate of the level shares
    // an element with the child.
    std::optional<std::string> inferirPadre(NivelAWP nivelPadre, const std::vector<std::string>& elementos) const;

private:
    // Every name of every candidate, numbered; by level, for each number,
    // the candidates that bear it (their positions among that level's
    // candidates, ascending) from desde_[n][id] to desde_[n][id + 1].
    std::unordered_map<std::string_view, std::uint32_t> idNombre_;
    std::array<std::vector<std::uint32_t>, 4> desde_;
    std::array<std::vector<std::uint32_t>, 4> posiciones_;
    std::array<std::vector<const ResultadoAWP*>, 4> porNivel_;
    mutable std::vector<std::uint32_t> comunes_; // counts of the question under way, by position
    mutable std::vector<std::uint32_t> tocados_;
    mutable std::vector<std::uint64_t> vistoEn_; // by name number
    mutable std::uint64_t pregunta_ = 0;
};

// The same question over candidates given once.
std::optional<std::string> inferirPadre(NivelAWP nivelPadre, const std::vector<std::string>& elementos,
                                        const std::vector<ResultadoAWP>& candidatos);

// "Importar seleccionados": the results whose code is selected, in order,
// become packages (code and name the code, the level, the elements, the
// dates of `ahora`) with the parent inferred among the chosen ones: a CWP
// from a CWA, an IWP from a CWP or else a CWA, a PWP from an IWP. A code the
// config already has, or that an earlier result of the import took, is
// skipped and nothing of it is merged. Then the config's axis spans the
// earliest start and the latest finish of all its packages. Gives how many
// packages were appended.
std::size_t importarDetectados(TimeLinerConfig& config, const std::vector<ResultadoAWP>& resultados,
                               const std::set<std::string>& seleccionados,
                               const QDateTime& ahora = QDateTime::currentDateTimeUtc());

} // namespace teskal
