#pragma once

#include "analyses/clash/Interferencias.h"

#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace teskal {

// The clashes among the candidates: two elements of two different
// disciplines whose pair is active clash when their boxes overlap by more than
// the tolerance on x, y and z at once. Disciplines are grouped in the order
// their candidates first appear; for each active pair of groups (i before j,
// i is side A), every element of A is met with every element of B, each in
// candidate order, and the result follows that order. Element pairs whose
// name key is excluded are skipped. A tree over each side-B group finds the
// boxes that can overlap, so the cost follows the clashes, not the product of
// the group sizes; the result is the same as the direct double loop.
std::vector<Interferencia> buscarInterferencias(const std::vector<NodoBB>& candidatos,
                                                const std::set<std::string>& paresActivos,
                                                const std::unordered_set<std::string>& excluidos,
                                                double tolerancia);

// The same search as the plain double loop over every pair of candidates.
std::vector<Interferencia> buscarInterferenciasDirecta(const std::vector<NodoBB>& candidatos,
                                                       const std::set<std::string>& paresActivos,
                                                       const std::unordered_set<std::string>& excluidos,
                                                       double tolerancia);

} // namespace teskal
