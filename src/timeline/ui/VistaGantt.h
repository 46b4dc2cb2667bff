#pragma once

#include <QWidget>

namespace teskal {

class ContentView;

// The Gantt on screen: the rows of the open areas, drawn by the same drawing
// as the PDF without its bands. A click selects a row's package, a click on
// an area's disclosure mark opens or closes it, a double click edits.
class VistaGantt : public QWidget {
    Q_OBJECT
public:
    explicit VistaGantt(ContentView& cv, QWidget* parent = nullptr);

    // The height that holds every row at this width.
    int altoNecesario() const;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* evento) override;
    void mousePressEvent(QMouseEvent* evento) override;
    void mouseDoubleClickEvent(QMouseEvent* evento) override;

private:
    ContentView& cv_;
};

} // namespace teskal
