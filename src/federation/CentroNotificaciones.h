#pragma once

#include <QObject>
#include <string>

namespace teskal {

// Where menu items post named commands ("com.teskal.abrirIFC", ...) and the
// workspace listens, so that a menu item and a button take one path.
class CentroNotificaciones : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    void publicar(const std::string& nombre) { emit publicada(nombre); }

signals:
    void publicada(const std::string& nombre);
};

} // namespace teskal
