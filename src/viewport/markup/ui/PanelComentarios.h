#pragma once

#include <QDialog>
#include <QWidget>

class QVBoxLayout;

namespace teskal {

class ContentView;
struct ComentarioMarkup;

// The date of a comment as its row and its sheet show it (local time).
QString fechaComentario(const ComentarioMarkup& c);

// The sidebar section "Comentarios": "Nuevo comentario", one row per comment
// (tag, description, author, date; a click opens its detail, the minus
// button asks to delete it), or "Sin comentarios registrados", and the button
// "Reporte de comentarios".
class PanelComentarios : public QWidget {
    Q_OBJECT
public:
    PanelComentarios(ContentView& cv, QWidget* parent = nullptr);

signals:
    void reporteSolicitado();

private:
    void reconstruir();

    ContentView& cv_;
    QVBoxLayout* filas_ = nullptr;
    std::size_t firma_ = ~std::size_t{0};
};

// The detail sheet of `detalleComentario`: tag, author, date, description and
// the picture, or "Sin captura de pantalla"; "Cerrar" clears it.
class DialogoDetalleComentario : public QDialog {
    Q_OBJECT
public:
    DialogoDetalleComentario(ContentView& cv, QWidget* parent = nullptr);
};

} // namespace teskal
