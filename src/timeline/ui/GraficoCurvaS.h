#pragma once

#include "timeline/CurvaS.h"

#include <QWidget>
#include <optional>

namespace teskal {

class ContentView;

// The S-curve of the plan: the planned and earned curves of cost and
// man-hours that the model computes for this size, the month axis, the
// scrubber line and, under the pointer, the box with each curve's share.
class GraficoCurvaS : public QWidget {
    Q_OBJECT
public:
    explicit GraficoCurvaS(ContentView& cv, QWidget* parent = nullptr);

    ModoCurvas curvasModo = ModoCurvas::ambas;

protected:
    void paintEvent(QPaintEvent* evento) override;
    void mouseMoveEvent(QMouseEvent* evento) override;
    void leaveEvent(QEvent* evento) override;

private:
    double anchoPlot() const;
    double altoPlot() const;

    ContentView& cv_;
    std::optional<double> sCurveHoverX;
};

} // namespace teskal
