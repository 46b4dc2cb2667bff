#pragma once

#include "qto/CuantificacionQTO.h"

#include <QDateTime>
#include <vector>

namespace teskal {

// A takeoff computed by the command, waiting for its window: the groups and
// the moment they were measured.
struct InstantaneaQTO {
    std::vector<GrupoQTO> grupos;
    QDateTime fecha;
};

// The workspace's part of the quantity takeoff. A takeoff is a snapshot that
// lives in its own window, so the workspace only hands each new one over.
struct EstadoQTO {
    // Opened by the command and not yet shown; the window takes them out.
    std::vector<InstantaneaQTO> ventanasPendientes;
};

} // namespace teskal
