#include "federation/ErroresSistema.h"

#include <cerrno>

namespace teskal {

std::string describirErrorSistema(int codigo) {
    switch (codigo) {
    case ENOENT: return "El archivo o la carpeta no existe.";
    case EACCES:
    case EPERM: return "Permiso denegado.";
    case ENOSPC: return "No queda espacio en el disco.";
    case EDQUOT: return "Se superó la cuota de disco.";
    case EEXIST: return "El archivo ya existe.";
    case EISDIR: return "La ruta es una carpeta, no un archivo.";
    case ENOTDIR: return "Una parte de la ruta no es una carpeta.";
    case EROFS: return "El sistema de archivos es de solo lectura.";
    case ENAMETOOLONG: return "El nombre del archivo es demasiado largo.";
    case EIO: return "Error de entrada y salida del disco.";
    case EMFILE:
    case ENFILE: return "Hay demasiados archivos abiertos.";
    case ENOMEM: return "No hay memoria suficiente.";
    case EFBIG: return "El archivo es demasiado grande.";
    case ENOEXEC: return "El archivo no es un programa ejecutable.";
    case ETXTBSY: return "El programa está ocupado.";
    case ELOOP: return "Hay demasiados enlaces simbólicos en la ruta.";
    default: return "Error del sistema (código " + std::to_string(codigo) + ").";
    }
}

} // namespace teskal
