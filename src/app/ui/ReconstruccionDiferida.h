#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>

#include "federation/ContentView.h"

namespace teskal {

// Calls `reconstruir` once on the next turn of the event loop after a burst of
// workspace changes. A click inside a row may be what changed the workspace:
// the row must outlive its own signal, so it is never rebuilt from inside it.
inline void reconstruirTrasCambios(ContentView& cv, QWidget* dueno, std::function<void()> reconstruir) {
    auto* temporizador = new QTimer(dueno);
    temporizador->setSingleShot(true);
    temporizador->setInterval(0);
    QObject::connect(&cv, &ContentView::changed, temporizador, qOverload<>(&QTimer::start));
    QObject::connect(temporizador, &QTimer::timeout, dueno, std::move(reconstruir));
}

} // namespace teskal
