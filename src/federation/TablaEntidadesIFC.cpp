#include "federation/TablaEntidadesIFC.h"
#include <algorithm>

namespace teskal {

void TablaEntidadesIFC::registrar(std::int64_t id, std::int32_t valor) {
    if (id >= 0 && static_cast<std::uint64_t>(id) < limiteDenso_) {
        const auto i = static_cast<std::size_t>(id);
        if (i >= denso_.size()) {
            if (valor < 0) return; // nothing to replace
            denso_.resize(std::min(limiteDenso_, std::max<std::size_t>(i + 1, denso_.size() * 2)), -1);
        }
        denso_[i] = valor;
        return;
    }
    if (valor < 0) {
        const auto it = disperso_.find(id);
        if (it != disperso_.end()) it->second = -1;
        return;
    }
    disperso_[id] = valor;
}

} // namespace teskal
