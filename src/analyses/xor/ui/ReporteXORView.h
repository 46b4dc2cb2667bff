#pragma once

#include "analyses/xor/ComparacionXOR.h"

#include <QImage>
#include <QObject>
#include <QWidget>
#include <map>
#include <string>
#include <vector>

namespace teskal {

class CeldaVistaXOR;

// The images of a change report, by element key (GlobalId, or name when the
// element has none). Empty until the whole series is rendered; then filled
// in one step, `terminado` set and `changed` signalled.
class XORThumbnailStore : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    const std::map<std::string, QImage>& thumbnails() const { return thumbnails_; }
    bool terminado() const { return terminado_; }
    void asignar(std::map<std::string, QImage> thumbnails);

signals:
    void changed();

private:
    std::map<std::string, QImage> thumbnails_;
    bool terminado_ = false;
};

// Renders the images of the changed elements into the store. The elements'
// nodes are found and cloned now, from the two live models (either may be
// null); the clones are then rendered one per turn of the event loop, with
// one offscreen renderer for the whole series, on the main thread where its
// GL context lives, so the window stays usable meanwhile; the map reaches
// the store at once at the end. The work belongs to the store: destroying
// the store (closing and releasing its window) stops it.
void generarThumbnailsXOR(const std::vector<ElementoCambioXOR>& elementos, Node* modeloBase,
                          Node* modeloNuevo, XORThumbnailStore& store);

// The change report of a comparison: the head with both files and the date,
// four cards of counts, one table per kind of change that has elements
// (each element with its image, a spinner until the images arrive), and
// the foot. It reads nothing but the result it was given.
class ReporteXORView : public QWidget {
    Q_OBJECT
public:
    explicit ReporteXORView(ResultadoXOR resultado, QWidget* parent = nullptr);

    const ResultadoXOR& resultado() const { return resultado_; }
    XORThumbnailStore& thumbnailStore() { return *store_; }

private:
    QWidget* cabecera(QWidget* padre);
    QWidget* tarjetas(QWidget* padre);
    QWidget* seccion(TipoCambioXOR tipo, int cantidad, QWidget* padre);
    QWidget* pie(QWidget* padre);
    void mostrarThumbnails();

    ResultadoXOR resultado_;
    XORThumbnailStore* store_ = nullptr;
    std::vector<std::pair<std::string, CeldaVistaXOR*>> celdas_; // key of each row's image
};

} // namespace teskal
