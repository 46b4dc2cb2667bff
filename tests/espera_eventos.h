#pragma once

// Waiting in a model test for work that comes back through the event loop
// (conversions, package jobs, clash searches on the thread pool).

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <functional>

namespace teskal::pruebas {

// Runs the event loop until the condition holds; false when the time runs out.
inline bool esperarHasta(const std::function<bool()>& condicion, int milisegundos = 600000) {
    QElapsedTimer reloj;
    reloj.start();
    while (!condicion()) {
        if (reloj.elapsed() > milisegundos) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    QCoreApplication::processEvents();
    return true;
}

} // namespace teskal::pruebas
