#pragma once

#include "scene/Node.h"
#include "timeline/PaqueteAWP.h"
#include "timeline/Sincronizacion4D.h"
#include "timeline/ValorGanado.h"

#include <QDateTime>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The timeline's share of the workspace: the scrubber date and how progress
// is read, the open areas of the tree, the selected package and the scene
// nodes it lights, and the package the editor works on. The packages
// themselves are the project's TimeLinerConfig (ContentView::timeLiner),
// which every timeline view reads and only the editor's save changes.
namespace teskal {

struct EstadoTimeline {
    // The date the panels read in "Auto %"; the config's start once the
    // window opens.
    QDateTime fechaScrubber = QDateTime::currentDateTimeUtc();
    bool modoAutoAvance = false; // "Auto %"
    std::set<std::string> expandidosCWA;
    std::optional<std::string> seleccionado; // id of the selected package
    // The element nodes lit by the selection, glowing until it changes or
    // the window closes.
    std::vector<std::shared_ptr<Node>> nodosDestacados;
    // The editor's copy: nothing reaches the config until it is saved.
    std::optional<PaqueteAWP> paqueteEditando;

    // 4D: while the window is open the scrubber drives the scene.
    bool modo4D = false;
    bool reproduciendo = false;
    double velocidad = 30; // days of schedule per second of playback
    std::string estadoSync4D; // the summary of the last synchronisation
    Sincronia4D sincronia;    // the name table and the remembered colours

    ModoAvance modoAvance() const { return {modoAutoAvance, fechaScrubber}; }
};

// A step of the scrubber: 30 days.
inline constexpr qint64 pasoScrubberSegundos = 2592000;
// Playback ticks 30 times a second.
inline constexpr int ticksPorSegundo = 30;
// The speed choices: their labels and days per second.
inline constexpr std::pair<const char*, double> velocidades4D[] = {{"1×", 15}, {"2×", 30}, {"4×", 60}, {"8×", 120}};

} // namespace teskal
