#pragma once

#include <QFrame>
#include <QPointer>
#include <utility>
#include <vector>

#include "viewport/medicion/EstadoMedicion.h"

class QToolButton;

namespace teskal {

class ContentView;
class PopoverCorte;

// The toolbar over the 3D view: zoom extents, the preset views, the camera
// cut with its popover, and the four measuring tools with "Limpiar" and
// "Cerrar".
class BarraVisor : public QFrame {
    Q_OBJECT
public:
    explicit BarraVisor(ContentView& cv, QWidget* parent = nullptr);

private:
    void sincronizar();

    ContentView& cv_;
    QToolButton* corte_ = nullptr;
    std::vector<std::pair<ModoMedicion3D, QToolButton*>> herramientas_;
    QToolButton* limpiar_ = nullptr;
    QToolButton* cerrar_ = nullptr;
    QPointer<QFrame> popover_;
};

} // namespace teskal
