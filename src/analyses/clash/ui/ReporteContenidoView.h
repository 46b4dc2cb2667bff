#pragma once

#include "analyses/clash/Interferencias.h"

#include <QImage>
#include <QWidget>
#include <map>
#include <string>
#include <vector>

class QLabel;

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
    // Shows the review states of `analisis`, the page's own analysis with
    // states changed since: the badges, the cards and the counts of the foot.
    void setEstados(const AnalisisInterferencias& analisis);

private:
    QWidget* cabecera();
    QWidget* tarjetas();
    QWidget* tabla();
    QWidget* pie();
    void mostrarCuentas();

    AnalisisInterferencias analisis_;
    std::vector<CeldaVista*> celdas_; // one per clash, in list order
    std::vector<QLabel*> estados_;    // the state badge of each clash, in list order
    std::vector<QLabel*> numeros_;    // the numbers of the five cards
    QLabel* cuentasPie_ = nullptr;
};

} // namespace teskal
