#pragma once

#include <QFrame>
#include <QPointer>

class QToolButton;

namespace teskal {

class ContentView;
class PopoverCorte;

// The toolbar over the 3D view: zoom extents, the preset views and the
// camera cut with its popover.
class BarraVisor : public QFrame {
    Q_OBJECT
public:
    explicit BarraVisor(ContentView& cv, QWidget* parent = nullptr);

private:
    void sincronizar();

    ContentView& cv_;
    QToolButton* corte_ = nullptr;
    QPointer<QFrame> popover_;
};

} // namespace teskal
