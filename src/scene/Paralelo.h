#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

namespace teskal {

// Runs `trabajo(inicio, fin)` over [0, n) in slices of `porcion` on every
// core, the calling thread included, and returns when all slices are done.
// The slices are taken in turn from a shared counter, so a slow slice does
// not hold a core idle. `trabajo` must only write what its slice owns.
template <class Trabajo> void enParalelo(std::size_t n, std::size_t porcion, const Trabajo& trabajo) {
    porcion = std::max<std::size_t>(porcion, 1);
    const std::size_t porciones = (n + porcion - 1) / porcion;
    const std::size_t hilos = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), porciones);
    if (hilos <= 1) {
        if (n) trabajo(std::size_t(0), n);
        return;
    }
    std::atomic<std::size_t> siguiente{0};
    const auto tomar = [&] {
        for (std::size_t p; (p = siguiente.fetch_add(1, std::memory_order_relaxed)) < porciones;)
            trabajo(p * porcion, std::min(n, (p + 1) * porcion));
    };
    std::vector<std::thread> ayudantes;
    ayudantes.reserve(hilos - 1);
    for (std::size_t h = 1; h < hilos; ++h) ayudantes.emplace_back(tomar);
    tomar();
    for (std::thread& t : ayudantes) t.join();
}

// Runs `leer(i)` for i in [0, n) on every core, and `aplicar(i)` for each i
// in order, one at a time: as soon as i and every item before it are read,
// by whichever thread finds it so. For work whose reading can be shared but
// whose results must land in order (values that overwrite one another).
template <class Leer, class Aplicar> void enParaleloEnOrden(std::size_t n, const Leer& leer, const Aplicar& aplicar) {
    std::vector<char> leidos(n, 0);
    std::mutex turno;
    std::size_t siguiente = 0; // the next item to apply
    bool aplicando = false;
    enParalelo(n, 1, [&](std::size_t primero, std::size_t fin) {
        for (std::size_t i = primero; i < fin; ++i) {
            leer(i);
            std::unique_lock cerrojo(turno);
            leidos[i] = 1;
            if (aplicando) continue; // the thread applying will come to it
            aplicando = true;
            while (siguiente < n && leidos[siguiente]) {
                const std::size_t a = siguiente;
                cerrojo.unlock();
                aplicar(a);
                cerrojo.lock();
                ++siguiente;
            }
            aplicando = false;
        }
    });
}

} // namespace teskal
