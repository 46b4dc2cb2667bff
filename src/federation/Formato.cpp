#include "federation/Formato.h"

#include <QString>
#include <cstdarg>

namespace teskal {

std::string formato(const char* plantilla, ...) {
    va_list args;
    va_start(args, plantilla);
    // Qt formats numbers in the C locale, unlike the C library after setlocale.
    const QString texto = QString::vasprintf(plantilla, args);
    va_end(args);
    return texto.toStdString();
}

} // namespace teskal
