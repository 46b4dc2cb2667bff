#include "federation/CacheConversion.h"

#include "federation/ArchivoMapeado.h"
#include "federation/ErroresSistema.h"

#include <QCryptographicHash>
#include <QStandardPaths>
#include <QUuid>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fcntl.h>
#include <unistd.h>

namespace teskal {

namespace fs = std::filesystem;

namespace {

// An entry: the magic line, the format version, the payload's length, the
// payload, and the SHA-256 of the payload. Numbers are little-endian.
constexpr std::string_view magiaCache = "VORNELCACHE\n";
constexpr std::string_view extensionEntrada = ".entrada";
constexpr std::string_view extensionParcial = ".parcial";
constexpr std::size_t largoDigesto = 32;
constexpr std::size_t largoCabecera = magiaCache.size() + 4 + 8;

std::string hexadecimal(const QByteArray& bytes) { return bytes.toHex().toStdString(); }

QByteArrayView vista(std::string_view t) { return QByteArrayView(t.data(), static_cast<qsizetype>(t.size())); }

// The payload, written into one buffer.
class Escritor {
public:
    void numero(std::uint64_t v) {
        char b[8];
        for (int i = 0; i < 8; ++i) b[i] = static_cast<char>((v >> (8 * i)) & 0xFF);
        datos.append(b, 8);
    }
    void texto(std::string_view t) {
        numero(t.size());
        datos.append(t.data(), t.size());
    }
    void real(float f) {
        std::uint32_t u;
        std::memcpy(&u, &f, 4);
        numero(u);
    }
    void propiedades(const PropiedadesModelo& p) {
        numero(p.size());
        for (const auto& [nombre, elemento] : p) {
            texto(nombre);
            numero(elemento.size());
            for (const auto& [clave, valor] : elemento) {
                texto(clave);
                texto(valor);
            }
        }
    }
    std::string datos;
};

// Reads the payload back; any read past its end marks it broken and gives
// empty values from then on.
class Lector {
public:
    explicit Lector(std::string_view d) : p_(d.data()), fin_(d.data() + d.size()) {}
    bool roto() const { return roto_; }
    bool agotado() const { return p_ == fin_; }

    std::uint64_t numero() {
        if (roto_ || fin_ - p_ < 8) return romper();
        std::uint64_t v = 0;
        for (int i = 0; i < 8; ++i) v |= static_cast<std::uint64_t>(static_cast<unsigned char>(p_[i])) << (8 * i);
        p_ += 8;
        return v;
    }
    std::string_view texto() {
        const std::uint64_t n = numero();
        if (roto_ || static_cast<std::uint64_t>(fin_ - p_) < n) {
            romper();
            return {};
        }
        const std::string_view t(p_, static_cast<std::size_t>(n));
        p_ += n;
        return t;
    }
    float real() {
        const auto u = static_cast<std::uint32_t>(numero());
        float f;
        std::memcpy(&f, &u, 4);
        return f;
    }
    // A count of items that each take at least `minimo` bytes: one that could
    // not fit in what is left is a broken entry, not a huge allocation.
    std::size_t cuenta(std::size_t minimo) {
        const std::uint64_t n = numero();
        if (roto_ || n > static_cast<std::uint64_t>(fin_ - p_) / minimo) {
            romper();
            return 0;
        }
        return static_cast<std::size_t>(n);
    }
    PropiedadesModelo propiedades() {
        PropiedadesModelo p;
        const std::size_t n = cuenta(16);
        p.reserve(n);
        for (std::size_t i = 0; i < n && !roto_; ++i) {
            std::string nombre(texto());
            const std::size_t pares = cuenta(16);
            PropiedadesElemento elemento;
            elemento.reserve(pares);
            for (std::size_t k = 0; k < pares && !roto_; ++k) {
                const std::string_view clave = texto();
                elemento.insert_or_assign(std::string(clave), std::string(texto()));
            }
            p.insert_or_assign(std::move(nombre), std::move(elemento));
        }
        return p;
    }

private:
    std::uint64_t romper() {
        roto_ = true;
        p_ = fin_;
        return 0;
    }
    const char* p_;
    const char* fin_;
    bool roto_ = false;
};

fs::path rutaEntrada(const std::string& carpeta, const std::string& clave) {
    return fs::path(carpeta) / (clave + std::string(extensionEntrada));
}

bool escribirTodo(int fd, const char* datos, std::size_t largo) {
    while (largo > 0) {
        const ssize_t n = ::write(fd, datos, largo);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        datos += n;
        largo -= static_cast<std::size_t>(n);
    }
    return true;
}

struct ArchivoCache {
    fs::path ruta;
    std::uint64_t bytes = 0;
    fs::file_time_type uso;
};

std::vector<ArchivoCache> entradasDe(const std::string& carpeta) {
    std::vector<ArchivoCache> entradas;
    std::error_code ec;
    for (fs::directory_iterator it(carpeta, ec), fin; !ec && it != fin; it.increment(ec)) {
        if (it->path().extension() != extensionEntrada) continue;
        std::error_code e;
        const auto bytes = it->file_size(e);
        const auto uso = it->last_write_time(e);
        if (!e) entradas.push_back({it->path(), bytes, uso});
    }
    return entradas;
}

} // namespace

std::string carpetaCachePorDefecto() {
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (base.isEmpty()) return {};
    return (fs::path(base.toStdString()) / "vornel").string();
}

std::string versionConversorCache(const std::string& rutaConversor) {
    const ArchivoMapeado conversor(rutaConversor);
    if (!conversor.abierto()) return {};
    return hexadecimal(QCryptographicHash::hash(vista(conversor.texto()), QCryptographicHash::Sha256));
}

std::string claveCache(const std::string& rutaIFC, std::string_view versionConversor, LecturasCache lecturas) {
    const ArchivoMapeado ifc(rutaIFC);
    if (!ifc.abierto() || versionConversor.empty()) return {};
    const QByteArray bytes = QCryptographicHash::hash(vista(ifc.texto()), QCryptographicHash::Sha256);
    QCryptographicHash clave(QCryptographicHash::Sha256);
    const std::string partes = "vornel-cache\n" + std::to_string(versionFormatoCache) + "\n" +
                               std::string(versionConversor) + "\n" + (lecturas.propiedades ? "P" : "-") +
                               (lecturas.grillas ? "G" : "-") + (lecturas.globalIds ? "I" : "-") + "\n";
    clave.addData(vista(partes));
    clave.addData(bytes);
    return hexadecimal(clave.result());
}

std::optional<EntradaCache> leerEntradaCache(const std::string& carpeta, const std::string& clave) {
    if (carpeta.empty() || clave.empty()) return std::nullopt;
    const fs::path ruta = rutaEntrada(carpeta, clave);
    std::optional<EntradaCache> entrada;
    {
        const ArchivoMapeado archivo(ruta.string());
        if (!archivo.abierto()) return std::nullopt;
        const std::string_view todo = archivo.texto();
        Lector cabecera(todo.size() >= largoCabecera ? todo.substr(magiaCache.size()) : std::string_view());
        const bool magia = todo.starts_with(magiaCache);
        const auto version = static_cast<std::uint32_t>(cabecera.numero() & 0xFFFFFFFFu);
        // The version is four bytes: the length follows it at offset 4.
        Lector largo(todo.size() >= largoCabecera ? todo.substr(magiaCache.size() + 4, 8) : std::string_view());
        const std::uint64_t n = largo.numero();
        const bool completo = magia && !largo.roto() && version == versionFormatoCache &&
                              todo.size() == largoCabecera + n + largoDigesto;
        if (completo) {
            const std::string_view carga = todo.substr(largoCabecera, static_cast<std::size_t>(n));
            const std::string_view digesto = todo.substr(largoCabecera + static_cast<std::size_t>(n));
            const QByteArray calculado = QCryptographicHash::hash(vista(carga), QCryptographicHash::Sha256);
            if (digesto == std::string_view(calculado.constData(), largoDigesto)) {
                Lector l(carga);
                EntradaCache e;
                e.obj = l.texto();
                e.identidades = l.texto();
                e.propiedades = l.propiedades();
                e.propiedadesPorGlobalId = l.propiedades();
                const std::size_t ejes = l.cuenta(8 * 3);
                for (std::size_t i = 0; i < ejes && !l.roto(); ++i) {
                    EjeGrilla eje;
                    eje.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
                    eje.tag = l.texto();
                    eje.esU = l.numero() != 0;
                    const std::size_t puntos = l.cuenta(8 * 3);
                    eje.puntos.reserve(puntos);
                    for (std::size_t k = 0; k < puntos && !l.roto(); ++k) {
                        const float x = l.real(), y = l.real(), z = l.real();
                        eje.puntos.emplace_back(x, y, z);
                    }
                    e.grillas.push_back(std::move(eje));
                }
                const std::size_t ids = l.cuenta(16);
                e.globalIds.reserve(ids);
                for (std::size_t i = 0; i < ids && !l.roto(); ++i) {
                    std::string nombre(l.texto());
                    e.globalIds.insert_or_assign(std::move(nombre), std::string(l.texto()));
                }
                if (!l.roto() && l.agotado() && !e.obj.empty()) entrada = std::move(e);
            }
        }
    }
    std::error_code ec;
    if (!entrada) {
        // Never trusted: the conversion that missed writes it anew.
        fs::remove(ruta, ec);
        return std::nullopt;
    }
    fs::last_write_time(ruta, fs::file_time_type::clock::now(), ec);
    return entrada;
}

bool escribirEntradaCache(const std::string& carpeta, const std::string& clave, std::string_view obj,
                          std::string_view identidades, const PropiedadesModelo& propiedades,
                          const PropiedadesModelo& propiedadesPorGlobalId, const std::vector<EjeGrilla>& grillas,
                          const GlobalIdsPorNombre& globalIds, std::uint64_t limiteBytes) {
    if (carpeta.empty() || clave.empty() || obj.empty()) return false;
    Escritor carga;
    carga.datos.reserve(obj.size() + identidades.size() + 4096);
    carga.texto(obj);
    carga.texto(identidades);
    carga.propiedades(propiedades);
    carga.propiedades(propiedadesPorGlobalId);
    carga.numero(grillas.size());
    for (const EjeGrilla& eje : grillas) {
        carga.texto(eje.tag);
        carga.numero(eje.esU ? 1 : 0);
        carga.numero(eje.puntos.size());
        for (const auto& p : eje.puntos) {
            carga.real(p.x);
            carga.real(p.y);
            carga.real(p.z);
        }
    }
    carga.numero(globalIds.size());
    for (const auto& [nombre, gid] : globalIds) {
        carga.texto(nombre);
        carga.texto(gid);
    }
    Escritor cabecera;
    cabecera.datos.append(magiaCache);
    cabecera.numero(versionFormatoCache);
    cabecera.datos.resize(magiaCache.size() + 4); // four bytes of version
    cabecera.numero(carga.datos.size());
    const QByteArray digesto = QCryptographicHash::hash(vista(carga.datos), QCryptographicHash::Sha256);
    // An entry larger than the whole bound would evict everything, itself too.
    if (cabecera.datos.size() + carga.datos.size() + largoDigesto > limiteBytes) return false;

    std::error_code ec;
    fs::create_directories(carpeta, ec);
    // A name of its own for each write: two conversions of one file write
    // side by side and each renames a whole entry into place.
    const fs::path parcial =
        fs::path(carpeta) / (clave + "." + QUuid::createUuid().toString(QUuid::Id128).toStdString() +
                             std::string(extensionParcial));
    const int fd = ::open(parcial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const bool escrito = escribirTodo(fd, cabecera.datos.data(), cabecera.datos.size()) &&
                         escribirTodo(fd, carga.datos.data(), carga.datos.size()) &&
                         escribirTodo(fd, digesto.constData(), largoDigesto) && ::fsync(fd) == 0;
    const bool cerrado = ::close(fd) == 0;
    if (!escrito || !cerrado || std::rename(parcial.c_str(), rutaEntrada(carpeta, clave).c_str()) != 0) {
        fs::remove(parcial, ec);
        return false;
    }
    recortarCache(carpeta, limiteBytes);
    return true;
}

void recortarCache(const std::string& carpeta, std::uint64_t limiteBytes) {
    std::vector<ArchivoCache> entradas = entradasDe(carpeta);
    std::uint64_t total = 0;
    for (const auto& e : entradas) total += e.bytes;
    if (total <= limiteBytes) return;
    std::sort(entradas.begin(), entradas.end(),
              [](const ArchivoCache& a, const ArchivoCache& b) { return a.uso < b.uso; });
    for (const auto& e : entradas) {
        if (total <= limiteBytes) break;
        std::error_code ec;
        if (fs::remove(e.ruta, ec)) total -= e.bytes;
    }
}

std::string vaciarCache(const std::string& carpeta) {
    std::error_code ec;
    if (!fs::exists(carpeta, ec)) return {};
    for (fs::directory_iterator it(carpeta, ec), fin; !ec && it != fin; it.increment(ec)) {
        const fs::path ext = it->path().extension();
        if (ext != extensionEntrada && ext != extensionParcial) continue;
        std::error_code e;
        fs::remove(it->path(), e);
        if (e) return "No se pudo eliminar «" + it->path().string() + "»: " + describirErrorSistema(e.value());
    }
    if (ec) return "No se pudo leer la carpeta «" + carpeta + "»: " + describirErrorSistema(ec.value());
    return {};
}

TamanoCache tamanoCache(const std::string& carpeta) {
    TamanoCache t;
    for (const auto& e : entradasDe(carpeta)) {
        t.bytes += e.bytes;
        ++t.entradas;
    }
    return t;
}

} // namespace teskal
