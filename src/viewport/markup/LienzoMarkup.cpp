#include "viewport/markup/LienzoMarkup.h"

#include <QUuid>

namespace teskal {

std::string nuevoIdMarkup() { return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(); }

void LienzoMarkup::pulsar(const PuntoMarkup& p) {
    if (modoTexto) {
        if (textoPendiente.empty()) return;
        TextoMarkup t;
        t.id = nuevoIdMarkup();
        t.texto = textoPendiente;
        t.x = p.x;
        t.y = p.y;
        t.r = colorR;
        t.g = colorG;
        t.b = colorB;
        t.tamano = 16;
        if (onNuevoTexto) onNuevoTexto(std::move(t));
        return;
    }
    TrazadoMarkup t;
    t.id = nuevoIdMarkup();
    t.puntos = {p};
    t.r = colorR;
    t.g = colorG;
    t.b = colorB;
    t.grosor = grosor;
    trazadoActual = std::move(t);
}

void LienzoMarkup::arrastrar(const PuntoMarkup& p) {
    if (trazadoActual) trazadoActual->puntos.push_back(p);
}

void LienzoMarkup::soltar() {
    if (!trazadoActual) return;
    TrazadoMarkup t = std::move(*trazadoActual);
    trazadoActual.reset();
    if (onNuevoTrazado) onNuevoTrazado(std::move(t));
}

} // namespace teskal
