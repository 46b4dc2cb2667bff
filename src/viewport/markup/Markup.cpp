// The workspace's commands of markup comments: starting a drawing, its panel,
// saving it as the next comment, the detail sheet and the deletion.
#include "federation/ContentView.h"
#include "federation/Formato.h"
#include "viewport/markup/LienzoMarkup.h"

#include <algorithm>
#include <pwd.h>
#include <unistd.h>

namespace teskal {

std::string nombreCompletoUsuario() {
    if (const passwd* pw = ::getpwuid(::getuid())) {
        std::string nombre = pw->pw_gecos ? pw->pw_gecos : "";
        nombre = nombre.substr(0, nombre.find(','));
        if (!nombre.empty()) return nombre;
        if (pw->pw_name) return pw->pw_name;
    }
    return {};
}

std::string tagComentario(std::size_t numero) { return formato("MRK-%03zu", numero); }

void ContentView::nuevoComentario() {
    markup.trazadosActivos.clear();
    markup.textosActivos.clear();
    markup.markupDescripcion.clear();
    markup.markupTextoPend.clear();
    markup.markupModoTexto = false;
    markup.modoMarkup = true;
    emit changed();
}

void ContentView::guardarComentario() {
    ComentarioMarkup c;
    c.id = nuevoIdMarkup();
    // From the count: after a deletion two comments may share a tag.
    c.tag = tagComentario(markup.comentarios.size() + 1);
    c.fecha = QDateTime::currentDateTimeUtc();
    c.fecha.setTime(QTime(c.fecha.time().hour(), c.fecha.time().minute(), c.fecha.time().second()));
    c.autor = markup.markupAutor;
    c.descripcion = markup.markupDescripcion;
    c.trazados = markup.trazadosActivos;
    c.textos = markup.textosActivos;
    if (markup.capturarVista) c.imagenJPEG = markup.capturarVista();
    markup.comentarios.push_back(std::move(c));
    markup.trazadosActivos.clear();
    markup.textosActivos.clear();
    markup.markupDescripcion.clear();
    markup.markupTextoPend.clear();
    markup.modoMarkup = false;
    marcarCambio();
    emit changed();
}

void ContentView::cancelarMarkup() {
    markup.modoMarkup = false;
    emit changed();
}

void ContentView::elegirColorMarkup(int indice) {
    markup.markupColorIdx = std::clamp(indice, 0, static_cast<int>(markupPaleta.size()) - 1);
    markup.markupModoTexto = false; // a colour goes back to drawing
    emit changed();
}

void ContentView::fijarModoTextoMarkup(bool texto) {
    markup.markupModoTexto = texto;
    emit changed();
}

void ContentView::fijarGrosorMarkup(double grosor) {
    markup.markupGrosor = std::clamp(grosor, 1.0, 10.0);
    emit changed();
}

void ContentView::limpiarAnotaciones() {
    markup.trazadosActivos.clear();
    markup.textosActivos.clear();
    emit changed();
}

void ContentView::agregarTrazado(TrazadoMarkup trazado) {
    markup.trazadosActivos.push_back(std::move(trazado));
    emit changed();
}

void ContentView::agregarTexto(TextoMarkup texto) {
    markup.textosActivos.push_back(std::move(texto));
    emit changed();
}

void ContentView::pedirEliminarComentario(const std::string& id) {
    markup.comentarioPendElim = id;
    emit changed();
}

void ContentView::confirmarEliminarComentario() {
    if (!markup.comentarioPendElim) return;
    const std::string id = *markup.comentarioPendElim;
    markup.comentarioPendElim.reset();
    const auto antes = markup.comentarios.size();
    std::erase_if(markup.comentarios, [&id](const ComentarioMarkup& c) { return c.id == id; });
    if (markup.comentarios.size() != antes) marcarCambio();
    emit changed();
}

void ContentView::cancelarEliminarComentario() {
    markup.comentarioPendElim.reset();
    emit changed();
}

void ContentView::abrirDetalleComentario(const std::string& id) {
    for (const auto& c : markup.comentarios)
        if (c.id == id) markup.detalleComentario = c;
    emit changed();
}

void ContentView::cerrarDetalleComentario() {
    markup.detalleComentario.reset();
    emit changed();
}

} // namespace teskal
