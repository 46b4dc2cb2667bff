// Feeds arbitrary bytes to the three readers of the IFC text index and to the
// STEP text helpers they share. Besides the sanitizers, it checks what the
// readers promise about their results (every text in UTF-8 whatever the
// bytes, the index by Name the same from both readers), and compares the tuned
// text primitives (UTF-8 check, trimming, integers, type names, statement
// assembly, entity and argument split) with plain versions written here; a
// broken promise or a difference traps.
#include "federation/GlobalIdsIFC.h"
#include "federation/GrillasIFC.h"
#include "federation/PropiedadesIFC.h"
#include "federation/TextoSTEP.h"
#include "federation/TextoUTF8.h"
#include "federation/TiposIFC.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace teskal;

namespace {

void comprobar(bool condicion) {
    if (!condicion) __builtin_trap();
}

bool esNombreDeProducto(std::string_view nombre) {
    return std::find(nombresProductoIFC.begin(), nombresProductoIFC.end(), nombre) !=
           nombresProductoIFC.end();
}

// An entry of the index: a product type, and keys and values in UTF-8.
void comprobarEntrada(const PropiedadesElemento& props) {
    const auto tipo = props.find(std::string(claveTipoIFC));
    comprobar(tipo != props.end() && esNombreDeProducto(tipo->second));
    for (const auto& [clave, valor] : props) {
        comprobar(esUTF8Valido(clave) && esUTF8Valido(valor));
        if (clave != claveTipoIFC) comprobar(clave.find(separadorPropiedad) != std::string::npos);
    }
}

// The pieces are views into args, in order, not overlapping, and trimmed.
void comprobarPiezas(std::string_view args, const std::vector<std::string_view>& piezas) {
    const char* anterior = args.data();
    for (const std::string_view p : piezas) {
        if (p.empty()) continue;
        comprobar(p.data() >= anterior);
        comprobar(p.data() + p.size() <= args.data() + args.size());
        comprobar(recortar(p).size() == p.size());
        anterior = p.data() + p.size();
    }
}

// The helpers on one piece of text: whatever its bytes, what they decode is
// UTF-8, and bytes that are not UTF-8 are read as ISO 8859-1.
void probarAyudantes(std::string_view s) {
    const std::string limpio = limpiarTextoSTEP(s);
    const std::string nominal = leerValorNominal(s);
    comprobar(esUTF8Valido(limpio));
    comprobar(esUTF8Valido(nominal));
    const std::string utf8 = comoUTF8(s);
    comprobar(esUTF8Valido(utf8));
    if (esUTF8Valido(s)) comprobar(utf8 == s);
    // Without a backslash or an apostrophe there is nothing to decode.
    if (s.find_first_of("\\'") == std::string_view::npos) comprobar(decodificarTextoSTEP(s) == utf8);
    const auto referencias = leerListaReferencias(s);
    comprobar(referencias.size() <= static_cast<std::size_t>(std::count(s.begin(), s.end(), '#')));
    // A lone reference reads the same as a list of one.
    if (const auto r = leerReferencia(s))
        comprobar(referencias.size() == 1 && referencias[0] == *r);
}

// --- Plain versions of the primitives, one byte at a time.

// Well-formed UTF-8 after the table of valid byte sequences.
bool utf8Simple(std::string_view s) {
    std::size_t i = 0;
    while (i < s.size()) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t n = 0;
        unsigned char bajo = 0x80, alto = 0xBF; // range of the second byte
        if (c >= 0xC2 && c <= 0xDF) {
            n = 1;
        } else if (c >= 0xE0 && c <= 0xEF) {
            n = 2;
            if (c == 0xE0) bajo = 0xA0;
            if (c == 0xED) alto = 0x9F;
        } else if (c >= 0xF0 && c <= 0xF4) {
            n = 3;
            if (c == 0xF0) bajo = 0x90;
            if (c == 0xF4) alto = 0x8F;
        } else {
            return false;
        }
        if (s.size() - i <= n) return false;
        const auto segundo = static_cast<unsigned char>(s[i + 1]);
        if (segundo < bajo || segundo > alto) return false;
        for (std::size_t k = 2; k <= n; ++k)
            if ((static_cast<unsigned char>(s[i + k]) & 0xC0) != 0x80) return false;
        i += n + 1;
    }
    return true;
}

// Tab and the Unicode space separators, in UTF-8.
// clang-format off
constexpr std::string_view blancos[] = {
    " ", "\t", "\xC2\xA0", "\xE1\x9A\x80",
    "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85",
    "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89", "\xE2\x80\x8A",
    "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};
// clang-format on

// Blanks off the front first, then off the back.
std::string_view recortarSimple(std::string_view s) {
    for (bool otra = true; otra;) {
        otra = false;
        for (const std::string_view b : blancos)
            if (s.starts_with(b)) s.remove_prefix(b.size()), otra = true;
    }
    for (bool otra = true; otra;) {
        otra = false;
        for (const std::string_view b : blancos)
            if (s.ends_with(b)) s.remove_suffix(b.size()), otra = true;
    }
    return s;
}

std::optional<std::int64_t> enteroSimple(std::string_view s) {
    if (!s.empty() && s[0] == '+') {
        s.remove_prefix(1);
        if (!s.empty() && s[0] == '-') return std::nullopt;
    }
    if (s.empty()) return std::nullopt;
    std::int64_t v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size()) return std::nullopt;
    return v;
}

// The class of a type name, from an ordered map of the tables' names built
// once, one name at a time.
ClaseIFC tipoSimple(std::string_view escrito) {
    static const std::map<std::string, ClaseIFC, std::less<>> clases = [] {
        std::map<std::string, ClaseIFC, std::less<>> m;
        for (std::size_t i = 0; i < nombresProductoIFC.size(); ++i)
            m[std::string(nombresProductoIFC[i])] = {TipoIFC::Producto, static_cast<std::uint16_t>(i)};
        for (const std::string_view t : nombresObjetoTipoIFC) m[std::string(t)].tipo = TipoIFC::ObjetoTipo;
        for (int i = 0; i < 255; ++i)
            if (const std::string_view n = nombreTipoIFC(static_cast<TipoIFC>(i)); !n.empty())
                m[std::string(n)].tipo = static_cast<TipoIFC>(i);
        return m;
    }();
    const auto it = clases.find(aMayusculas(recortarSimple(escrito)));
    return it == clases.end() ? ClaseIFC{} : it->second;
}

bool partirSimple(std::string_view sentencia, PartesEntidad& partes) {
    const std::size_t igual = sentencia.find('=');
    const std::size_t parentesis = sentencia.find('(');
    if (igual == std::string_view::npos || parentesis == std::string_view::npos ||
        parentesis < igual)
        return false;
    partes.numero = sentencia.substr(1, igual - 1);
    partes.tipo = sentencia.substr(igual + 1, parentesis - igual - 1);
    std::string_view args = recortarSimple(sentencia.substr(parentesis + 1));
    if (!args.empty() && args.back() == ';') args = recortarSimple(args.substr(0, args.size() - 1));
    if (!args.empty() && args.back() == ')') args.remove_suffix(1);
    partes.args = args;
    return true;
}

// The statements of a text, one byte at a time: separators (blanks, control
// bytes, comments) between statements, then up to a ";" outside strings and
// comments; only those that begin with "#", with line ends and the blanks
// around them and comments removed.
std::vector<std::string> sentenciasSimples(std::string_view t) {
    std::vector<std::string> r;
    std::size_t i = 0;
    const auto comentario = [&](std::size_t k) { return k + 1 < t.size() && t[k] == '/' && t[k + 1] == '*'; };
    const auto saltarComentario = [&](std::size_t k) {
        const std::size_t fin = t.find("*/", k + 2);
        return fin == std::string_view::npos ? t.size() : fin + 2;
    };
    while (i < t.size()) {
        const auto c = static_cast<unsigned char>(t[i]);
        if (c <= ' ' || c == 0x7F) {
            ++i;
            continue;
        }
        if (comentario(i)) {
            i = saltarComentario(i);
            continue;
        }
        bool blanco = false;
        for (const std::string_view b : blancos)
            if (!blanco && t.substr(i).starts_with(b)) i += b.size(), blanco = true;
        if (blanco) continue;
        const bool entidad = t[i] == '#';
        std::string s;
        bool enTexto = false;
        while (i < t.size()) {
            const char d = t[i];
            if (d == '\n' || d == '\r') {
                s.resize(recortarSimple(s).size()); // only the end: it begins with "#"
                ++i;
                for (bool otra = true; otra && i < t.size();) {
                    otra = false;
                    if (t[i] == '\n' || t[i] == '\r') ++i, otra = true;
                    for (const std::string_view b : blancos)
                        if (!otra && t.substr(i).starts_with(b)) i += b.size(), otra = true;
                }
                continue;
            }
            if (!enTexto && comentario(i)) {
                i = saltarComentario(i);
                continue;
            }
            s.push_back(d);
            ++i;
            if (d == '\'') enTexto = !enTexto;
            if (d == ';' && !enTexto) break;
        }
        if (entidad) r.push_back(std::move(s));
    }
    return r;
}

std::vector<std::string_view> separarSimple(std::string_view args) {
    std::vector<std::string_view> r;
    bool enTexto = false;
    std::int64_t profundidad = 0;
    std::size_t inicio = 0;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const char c = args[i];
        if (c == '\'') {
            enTexto = !enTexto;
        } else if (enTexto) {
            continue;
        } else if (c == '(') {
            ++profundidad;
        } else if (c == ')') {
            --profundidad;
        } else if (c == ',' && profundidad == 0) {
            r.push_back(recortarSimple(args.substr(inicio, i - inicio)));
            inicio = i + 1;
        }
    }
    const std::string_view resto = recortarSimple(args.substr(inicio));
    if (!resto.empty()) r.push_back(resto);
    return r;
}

bool mismasVistas(const std::vector<std::string_view>& a, const std::vector<std::string_view>& b,
                  std::size_t cuantas) {
    if (a.size() < cuantas || b.size() < cuantas) return false;
    for (std::size_t i = 0; i < cuantas; ++i)
        if (a[i].data() != b[i].data() || a[i].size() != b[i].size()) return false;
    return true;
}

// The tuned primitives against the plain ones, on one piece of text.
void compararPrimitivas(std::string_view s) {
    const std::string_view r = recortar(s);
    const std::string_view rs = recortarSimple(s);
    comprobar(r.data() == rs.data() && r.size() == rs.size());
    comprobar(leerEntero(s) == enteroSimple(s));
    comprobar(clasificarTipoIFC(s) == tipoSimple(s));

    const std::vector<std::string_view> todas = separarArgumentosSTEP(s);
    const std::vector<std::string_view> simples = separarSimple(s);
    comprobar(todas.size() == simples.size() && mismasVistas(todas, simples, todas.size()));
    // A bounded split gives the first pieces of the whole one.
    std::vector<std::string_view> algunas;
    for (const std::size_t maximo : {0, 1, 2, 3, 6, 9}) {
        separarArgumentosSTEP(s, algunas, maximo);
        const std::size_t esperadas = std::min(maximo, todas.size());
        comprobar(algunas.size() == esperadas && mismasVistas(algunas, todas, esperadas));
    }

    if (!s.empty() && s.front() == '#') {
        PartesEntidad a, b;
        const bool ok = partirEntidadSTEP(s, a);
        comprobar(ok == partirSimple(s, b));
        if (!ok) return;
        comprobar(a.numero.data() == b.numero.data() && a.numero.size() == b.numero.size() &&
                  a.tipo.data() == b.tipo.data() && a.tipo.size() == b.tipo.size() &&
                  a.args.data() == b.args.data() && a.args.size() == b.args.size());
        // The parts as the entity table reads them.
        comprobar(clasificarTipoIFC(a.tipo) == tipoSimple(a.tipo));
        comprobar(leerEntero(recortar(a.numero)) == enteroSimple(recortarSimple(a.numero)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t tamano) {
    const std::string_view texto(reinterpret_cast<const char*>(datos), tamano);
    // At several alignments, for the block-wise ASCII skip.
    for (const std::size_t desde : {0, 1, 7, 31})
        if (desde <= texto.size())
            comprobar(esUTF8Valido(texto.substr(desde)) == utf8Simple(texto.substr(desde)));

    // The statement assembly against the plain one.
    std::vector<std::string> sentencias;
    recorrerSentenciasSTEP(texto, [&](std::string_view s, bool) { sentencias.emplace_back(s); });
    comprobar(sentencias == sentenciasSimples(texto));

    const PropiedadesModelo propiedades = leerPropiedadesIFCTexto(texto);
    for (const auto& [nombre, props] : propiedades) {
        comprobar(!nombre.empty() && esUTF8Valido(nombre));
        comprobarEntrada(props);
    }
    const IndiceIFC indice = leerIndiceIFCTexto(texto);
    comprobar(indice.porNombre == propiedades);
    for (const auto& [gid, props] : indice.porGlobalId) {
        comprobar(!gid.empty() && esUTF8Valido(gid));
        comprobarEntrada(props);
    }

    const std::vector<EjeGrilla> ejes = leerGrillasIFCTexto(texto);
    for (const EjeGrilla& e : ejes) {
        comprobar(!e.id.empty() && e.puntos.size() >= 2);
        comprobar(esUTF8Valido(e.tag));
        for (const auto& p : e.puntos) // in metres and in place, never out of range
            comprobar(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
    }

    const GlobalIdsPorNombre ids = leerGlobalIdsTexto(texto);
    for (const auto& [nombre, gid] : ids) {
        comprobar(!nombre.empty() && !gid.empty());
        comprobar(esUTF8Valido(nombre) && esUTF8Valido(gid));
    }

    // The helpers, on the whole text and on each of its top-level pieces.
    const std::vector<std::string_view> piezas = separarArgumentosSTEP(texto);
    comprobarPiezas(texto, piezas);
    probarAyudantes(texto);
    for (const std::string_view p : piezas) probarAyudantes(p);

    compararPrimitivas(texto);
    for (const std::string_view p : piezas) compararPrimitivas(p);
    // Each line, trimmed as the statement walk trims it.
    for (std::size_t inicio = 0; inicio <= texto.size();) {
        std::size_t fin = texto.find('\n', inicio);
        if (fin == std::string_view::npos) fin = texto.size();
        std::string_view linea = texto.substr(inicio, fin - inicio);
        if (linea.ends_with('\r')) linea.remove_suffix(1);
        compararPrimitivas(recortar(linea));
        inicio = fin + 1;
    }
    return 0;
}
