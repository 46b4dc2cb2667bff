#include "federation/TablaEntidadesIFC.h"
#include <algorithm>
#include <random>

namespace teskal {

std::size_t HashNumeroIFC::operator()(std::int64_t id) const noexcept {
    static const std::uint64_t clave = [] {
        std::random_device azar;
        return (static_cast<std::uint64_t>(azar()) << 32) ^ azar();
    }();
    // The splitmix64 finaliser over the keyed number.
    std::uint64_t x = static_cast<std::uint64_t>(id) ^ clave;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    return static_cast<std::size_t>(x ^ (x >> 31));
}

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
