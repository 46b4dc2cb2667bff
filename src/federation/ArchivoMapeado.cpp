#include "federation/ArchivoMapeado.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace teskal {

ArchivoMapeado::ArchivoMapeado(const std::string& ruta) {
    const int fd = ::open(ruta.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return;
    }
    if (st.st_size == 0) {
        abierto_ = true;
        ::close(fd);
        return;
    }
    void* p = ::mmap(nullptr, static_cast<std::size_t>(st.st_size), PROT_READ,
                     MAP_PRIVATE | MAP_POPULATE, fd, 0);
    ::close(fd);
    if (p == MAP_FAILED) return;
    ::madvise(p, static_cast<std::size_t>(st.st_size), MADV_SEQUENTIAL);
    datos_ = static_cast<const char*>(p);
    tamano_ = static_cast<std::size_t>(st.st_size);
    abierto_ = true;
}

ArchivoMapeado::~ArchivoMapeado() {
    if (datos_) ::munmap(const_cast<char*>(datos_), tamano_);
}

} // namespace teskal
