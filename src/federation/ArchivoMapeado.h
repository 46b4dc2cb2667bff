#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace teskal {

// A whole file mapped read-only into memory, read once. A file that can't be
// opened or mapped reads as empty text; the readers then yield nothing.
class ArchivoMapeado {
public:
    explicit ArchivoMapeado(const std::string& ruta);
    ~ArchivoMapeado();
    ArchivoMapeado(const ArchivoMapeado&) = delete;
    ArchivoMapeado& operator=(const ArchivoMapeado&) = delete;

    bool abierto() const { return abierto_; }
    std::string_view texto() const { return {datos_, tamano_}; }

private:
    const char* datos_ = nullptr;
    std::size_t tamano_ = 0;
    bool abierto_ = false;
};

} // namespace teskal
