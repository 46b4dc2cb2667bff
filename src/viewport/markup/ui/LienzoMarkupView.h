#pragma once

#include "viewport/markup/LienzoMarkup.h"

#include <QByteArray>
#include <QWidget>
#include <optional>

class QOpenGLWidget;
class QPainter;

namespace teskal {

class ContentView;

// Paints strokes and texts in canvas points: each stroke of two points or
// more as a round-capped, round-joined line of its width in its colour, then
// each text in the bold font of its size, in its colour with a black outline.
void pintarMarkup(QPainter& p, const std::vector<TrazadoMarkup>& trazados, const std::vector<TextoMarkup>& textos,
                  const TrazadoMarkup* actual = nullptr);

// The transparent drawing canvas over the 3D view, shown while the workspace
// is in markup mode. It takes the pointer then, so the camera stays where the
// drawing was made. Strokes and texts go to the workspace, which hands them
// back as the canvas's content.
class LienzoMarkupView : public QWidget {
    Q_OBJECT
public:
    LienzoMarkupView(ContentView& cv, QWidget* parent = nullptr);

    const LienzoMarkup& modelo() const { return modelo_; }
    // The canvas alone, at the size of its bounds, over a clear background.
    QImage imagen() const;

protected:
    void paintEvent(QPaintEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    void sincronizar();

    ContentView& cv_;
    LienzoMarkup modelo_;
};

// The comment's picture: the 3D view as it stands with the canvas drawn over
// it, stretched to the picture's size, as JPEG of quality 85. None without a
// view or a canvas, or when encoding fails.
std::optional<QByteArray> capturarVistaMarkup(QOpenGLWidget* vista, const LienzoMarkupView* lienzo);

} // namespace teskal
