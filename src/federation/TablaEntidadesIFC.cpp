#include "federation/TablaEntidadesIFC.h"
#include <algorithm>
#include <chrono>
#include <cstdint>

namespace teskal {

std::size_t HashNumeroIFC::operator()(std::int64_t id) const noexcept {
    // A key drawn once per process from the clock and the process's own
    // addresses, so that crafted instance numbers can't be aimed at one
    // bucket; unlike a system random source, reading it can't fail.
    static const std::uint64_t clave = [] {
        static const int ancla = 0;
        return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
               (reinterpret_cast<std::uintptr_t>(&ancla) << 16);
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
