#include "analyses/clash/EstadoClash.h"

#include "scene/ColoresSistema.h"

namespace teskal {

std::string_view textoEstado(EstadoClash e) {
    switch (e) {
    case EstadoClash::abierto: return "Abierto";
    case EstadoClash::enRevision: return "En revisión";
    case EstadoClash::aprobado: return "Aprobado";
    case EstadoClash::resuelto: return "Resuelto";
    }
    return "Abierto";
}

EstadoClash estadoDesdeTexto(std::string_view texto) {
    for (EstadoClash e : estadosClash)
        if (textoEstado(e) == texto) return e;
    return EstadoClash::abierto;
}

Color colorEstado(EstadoClash e) {
    switch (e) {
    case EstadoClash::abierto: return colores::rojo;
    case EstadoClash::enRevision: return colores::naranja;
    case EstadoClash::aprobado: return colores::azul;
    case EstadoClash::resuelto: return colores::verde;
    }
    return colores::rojo;
}

std::string_view iconoEstado(EstadoClash e) {
    switch (e) {
    case EstadoClash::abierto: return "exclamationmark.circle.fill";
    case EstadoClash::enRevision: return "clock.circle.fill";
    case EstadoClash::aprobado: return "checkmark.seal.fill";
    case EstadoClash::resuelto: return "checkmark.circle.fill";
    }
    return "exclamationmark.circle.fill";
}

std::string_view estadoBCF(EstadoClash e) {
    switch (e) {
    case EstadoClash::abierto: return "Open";
    case EstadoClash::enRevision: return "InProgress";
    case EstadoClash::aprobado: return "Resolved";
    case EstadoClash::resuelto: return "Closed";
    }
    return "Open";
}

} // namespace teskal
