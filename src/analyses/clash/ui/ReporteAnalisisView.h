#pragma once

#include "analyses/clash/Interferencias.h"

#include <QByteArray>
#include <QImage>
#include <QWidget>
#include <map>
#include <optional>
#include <string>

class QLabel;
class QPushButton;

namespace teskal {

class IndicadorGiro;
class ReporteContenidoView;

// The report window of one analysis: a bar with the name and total, the
// notice while thumbnails are made, the outcome of the last BCF export and
// the buttons "Exportar BCF" and "Imprimir / PDF", above the scrolling page.
// The analysis is a copy taken when the window opened; the review states
// follow the sidebar through seguirEstados, so that the page, the HTML and the
// BCF carry the states of the moment. Thumbnails are rendered once, 0.2 s
// after the window is first shown, so that the window and its notice are
// drawn first; the notice goes when they are done, whether or not any image
// could be made.
class ReporteAnalisisView : public QWidget {
    Q_OBJECT
public:
    // `scene` is the live scene, where clashes restored from a project find
    // their elements by name; it must outlive the window (or be null).
    ReporteAnalisisView(AnalisisInterferencias analisis, Scene* scene, QWidget* parent = nullptr);

    const AnalisisInterferencias& analisis() const { return analisis_; }
    const std::map<std::string, QImage>& thumbnails() const { return thumbnails_; }
    bool thumbnailsTerminados() const { return thumbnailsTerminados_; }
    bool exportandoBCF() const { return exportandoBCF_; }
    const std::optional<bool>& bcfExito() const { return bcfExito_; }

    // Takes the review states of `vivo`, the same analysis as the history
    // holds it now, clash by clash; an analysis of another id changes nothing.
    void seguirEstados(const AnalisisInterferencias& vivo);
    // Renders every clash's thumbnail in turn and shows them all at once.
    void generarThumbnails();
    // Writes the HTML report to the temporary directory and opens it in the
    // desktop's browser; a write failure shows the "Error" alert instead, and
    // a desktop that can't open it an alert that names the file written.
    void generarHTML();
    // Exports the analysis with the current thumbnails as a BCF archive,
    // offered through a save panel; the outcome shows in the bar. A cancelled
    // panel shows no outcome.
    void exportarBCF();

signals:
    // The thumbnails have been assigned.
    void thumbnailsListos();
    // A BCF export has ended with this outcome.
    void bcfTerminado(bool exito);
    // The BCF save panel was cancelled.
    void bcfCancelado();

protected:
    void showEvent(QShowEvent* evento) override;

private:
    void sincronizar();
    // The thumbnails as PNG bytes, encoded once for the HTML file and BCF.
    const std::map<std::string, QByteArray>& thumbnailsPNG();

    AnalisisInterferencias analisis_;
    Scene* scene_ = nullptr;
    std::map<std::string, QImage> thumbnails_;
    std::optional<std::map<std::string, QByteArray>> png_;
    bool exportandoBCF_ = false;
    std::optional<bool> bcfExito_;
    bool thumbnailsProgramados_ = false;
    bool thumbnailsTerminados_ = false;

    QWidget* aviso_ = nullptr;
    QWidget* resultado_ = nullptr;
    QLabel* iconoResultado_ = nullptr;
    QLabel* textoResultado_ = nullptr;
    QPushButton* botonBCF_ = nullptr;
    IndicadorGiro* giroBCF_ = nullptr;
    QPushButton* botonHTML_ = nullptr;
    ReporteContenidoView* pagina_ = nullptr;
};

} // namespace teskal
