#pragma once

#include <QMainWindow>

namespace teskal {

// The workbench's one main window.
class VentanaPrincipal : public QMainWindow {
    Q_OBJECT
public:
    explicit VentanaPrincipal(QWidget* parent = nullptr);
};

} // namespace teskal
