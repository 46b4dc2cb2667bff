#pragma once

#include <QTimer>
#include <QVBoxLayout>
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

// Puts a fresh, empty content widget in `caja` in place of `contenido` (the
// old one is deleted once its signals are done) and gives its layout, with
// no margins, for the rebuild to fill.
inline QVBoxLayout* contenidoNuevo(QVBoxLayout* caja, QWidget*& contenido, QWidget* dueno) {
    if (contenido) {
        caja->removeWidget(contenido);
        contenido->deleteLater();
    }
    contenido = new QWidget(dueno);
    auto* filas = new QVBoxLayout(contenido);
    filas->setContentsMargins(0, 0, 0, 0);
    caja->addWidget(contenido);
    return filas;
}

} // namespace teskal
