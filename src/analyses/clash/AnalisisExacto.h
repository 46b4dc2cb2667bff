#pragma once

#include "analyses/clash/Interferencias.h"

#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace teskal {

// The clashes of an analysis by its method, from the candidates and the
// pairs the box search keeps (`buscarInterferencias`):
// - "Cajas envolventes": the box search's clashes, as they are.
// - "Geometría exacta": of the box search's clashes, those whose meshes clash
//   with a penetration above the tolerance (see GeometriaChoque.h), in the
//   same order; each with its penetration, the centre of its contact region
//   and a viewpoint on that region.
// - "Holgura": the box search run with the boxes grown by the clearance, then
//   the pairs whose meshes stand apart by more than nothing and less than the
//   clearance, with that distance and the midpoint of the nearest points.
// Each element's mesh is built once, in world coordinates, and its tree serves
// every pair it takes part in; meshes and pairs are spread over `hilos`
// threads (0: one per core). A candidate without geometry clashes with nothing
// by mesh.
std::vector<Interferencia> analizarInterferencias(const std::vector<NodoBB>& candidatos,
                                                  const std::set<std::string>& paresActivos,
                                                  const std::unordered_set<std::string>& excluidos,
                                                  const ConfigAnalisis& config, unsigned hilos = 0);

// The same for the exact and clearance methods, every triangle of one element
// met with every triangle of the other, without trees: the baseline of the
// benchmark and the reference of the tests.
std::vector<Interferencia> analizarInterferenciasDirecta(const std::vector<NodoBB>& candidatos,
                                                         const std::set<std::string>& paresActivos,
                                                         const std::unordered_set<std::string>& excluidos,
                                                         const ConfigAnalisis& config, unsigned hilos = 0);

} // namespace teskal
