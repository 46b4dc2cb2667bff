// Work shared among the cores: every item done once, and results applied in
// order however the reading finishes.
#include "scene/Paralelo.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <numeric>

using namespace teskal;

TEST(Paralelo, EveryItemOnceAndResultsAppliedInOrder) {
    for (const std::size_t n : {0u, 1u, 7u, 300u}) {
        std::vector<std::atomic<int>> vistos(n);
        enParalelo(n, 16, [&](std::size_t inicio, std::size_t fin) {
            for (std::size_t i = inicio; i < fin; ++i) ++vistos[i];
        });
        for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(vistos[i], 1) << i << " of " << n;

        // Earlier items take longer to read, so later ones are read first.
        std::vector<std::size_t> aplicados;
        std::atomic<int> aplicandoA{0};
        enParaleloEnOrden(
            n,
            [&](std::size_t i) { std::this_thread::sleep_for(std::chrono::microseconds(50 * ((n - i) % 8))); },
            [&](std::size_t i) {
                EXPECT_EQ(aplicandoA.fetch_add(1), 0) << "two items applied at once";
                aplicados.push_back(i);
                aplicandoA.fetch_sub(1);
            });
        std::vector<std::size_t> enOrden(n);
        std::iota(enOrden.begin(), enOrden.end(), std::size_t(0));
        EXPECT_EQ(aplicados, enOrden) << n;
    }
}
