#pragma once

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>
#include <memory>
#include <utility>

namespace teskal {

// Long work of the workspace: `trabajo()` runs as one job on the thread pool,
// on the copies its closure holds; its result comes back by one queued call
// on the main thread to `entrega(destino, resultado)`. A destination that is
// gone by then is skipped, and nothing else crosses threads.
template <class Destino, class Trabajo, class Entrega>
void enSegundoPlano(Destino* destino, Trabajo trabajo, Entrega entrega) {
    QPointer<Destino> vivo(destino);
    QThreadPool::globalInstance()->start(
        [vivo, trabajo = std::move(trabajo), entrega = std::move(entrega)]() mutable {
            auto resultado = std::make_shared<decltype(trabajo())>(trabajo());
            QMetaObject::invokeMethod(
                QCoreApplication::instance(),
                [vivo, resultado, entrega]() mutable {
                    if (vivo) entrega(*vivo, std::move(*resultado));
                },
                Qt::QueuedConnection);
        });
}

} // namespace teskal
