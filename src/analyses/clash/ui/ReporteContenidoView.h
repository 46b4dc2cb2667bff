#pragma once

#include "analyses/clash/Interferencias.h"

#include <QImage>
#include <QWidget>
#include <map>
#include <string>
#include <vector>

namespace teskal {

class CeldaVista;

// The page of a clash report: the head with name, date, tolerance and total,
// five cards of counts, the table of clashes with a 3D view of each (a
// spinner on grey until its thumbnail exists) and the foot.
class ReporteContenidoView : public QWidget {
public:
    ReporteContenidoView(const AnalisisInterferencias& analisis, QWidget* parent = nullptr);

    // Shows these thumbnails (by clash id) in the "Vista 3D" column.
    void setThumbnails(const std::map<std::string, QImage>& thumbnails);

private:
    QWidget* cabecera();
    QWidget* tarjetas();
    QWidget* tabla();
    QWidget* pie();

    AnalisisInterferencias analisis_;
    std::vector<CeldaVista*> celdas_; // one per clash, in list order
};

} // namespace teskal
