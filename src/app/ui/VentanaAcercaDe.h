#pragma once

#include <QDialog>

namespace teskal {

// The about window: the product's name and version.
class VentanaAcercaDe : public QDialog {
    Q_OBJECT
public:
    explicit VentanaAcercaDe(QWidget* parent = nullptr);
};

} // namespace teskal
