#pragma once

#include <QWidget>

namespace teskal {

class ContentView;
class CentroNotificaciones;

// What the detail column shows while no discipline has a model.
class VistaBienvenida : public QWidget {
    Q_OBJECT
public:
    VistaBienvenida(ContentView& cv, CentroNotificaciones& centro, QWidget* parent = nullptr);
};

} // namespace teskal
