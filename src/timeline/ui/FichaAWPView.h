#pragma once

#include "timeline/PaqueteAWP.h"

#include <QDialog>
#include <QImage>

namespace teskal {

class ContentView;

// The package's elements as the 3D view sees them from where it stands,
// everything else made invisible for the image and put back after it. A null
// image without names, without the view's camera, or without OpenGL.
QImage renderFicha(ContentView& cv, const PaqueteAWP& p);

// The read-only sheet of a package: identity, progress, dates and their
// deviations, resources from the roll-ups, its IWPs, and its elements with
// their rendering.
class FichaAWPView : public QDialog {
    Q_OBJECT
public:
    FichaAWPView(ContentView& cv, const PaqueteAWP& paquete, const QImage& imagenRender, QWidget* parent = nullptr);

signals:
    // "Editar paquete".
    void edicionSolicitada();
};

} // namespace teskal
