#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "federation/TextoUTF8.h"

// Helpers over the STEP (ISO 10303-21) text of an IFC file, shared by the
// three readers of the IFC text index.
namespace teskal {

// Splits an argument list at its top-level commas. Quotes and parentheses
// protect commas; every piece is trimmed and kept, even empty, except an
// empty last one. The views point into args.
std::vector<std::string_view> separarArgumentosSTEP(std::string_view args);
// The same, into a buffer the caller reuses.
void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino);
// Only the first `maximo` pieces: the same pieces as the whole split gives,
// and as many of them as it has up to `maximo`, so "at least n arguments"
// reads the same with any maximo >= n. The rest of the text is not scanned.
void separarArgumentosSTEP(std::string_view args, std::vector<std::string_view>& destino,
                           std::size_t maximo);

// A STEP string or value as text: "$" and "*" are empty, the surrounding
// apostrophes go, \X2\ and \X\ escapes are decoded. Doubled apostrophes stay.
std::string limpiarTextoSTEP(std::string_view s);

// Decodes the \X2\...\X0\ and \X\hh escapes; every other backslash is kept.
std::string decodificarTextoSTEP(std::string_view s);

// A property's nominal value as text: enumerations lose their dots, typed
// values such as IFCLABEL('x') give what is inside; numbers stay as written.
std::string leerValorNominal(std::string_view s);

// The instance numbers of a list such as (#1,#2,#3); other pieces are skipped.
std::vector<std::int64_t> leerListaReferencias(std::string_view s);
// The same, into a buffer the caller reuses.
void leerListaReferencias(std::string_view s, std::vector<std::int64_t>& destino);

// The instance number of a reference "#12", or none.
std::optional<std::int64_t> leerReferencia(std::string_view s);

// The parts of one entity statement "#12=IFCWALL(...);".
struct PartesEntidad {
    std::string_view numero; // between "#" and "=", untrimmed
    std::string_view tipo;   // between "=" and "(", untrimmed, as written
    std::string_view args;   // after "(", less a final ";" and then a final ")"
};

// Cuts a statement that begins with "#" into its parts; false when it has no
// "=" or no "(" after the "=".
bool partirEntidadSTEP(std::string_view sentencia, PartesEntidad& partes);

// Walks the statements of the text. Lines are split at "\n" and trimmed of
// blanks and tabs; a line that begins with "#" starts a new statement, any
// other line is appended to the current one with nothing between. Only
// statements that begin with "#" reach the visitor, as visitar(view, estable):
// estable is true when the view points into the text itself, false when it
// points into a buffer that the next statement overwrites.
template <class F> void recorrerSentenciasSTEP(std::string_view texto, F&& visitar) {
    std::string unida;            // a statement that spans several lines
    std::string_view actual;      // the current statement, if it is on one line
    bool actualEsUnida = false;
    bool actualEsEntidad = false; // begins with "#"

    auto entregar = [&] {
        if (!actualEsEntidad) return;
        if (actualEsUnida)
            visitar(std::string_view(unida), false);
        else
            visitar(actual, true);
    };

    if (texto.empty()) return;
    const char* p = texto.data();
    const char* const fin = p + texto.size();
    while (p <= fin) {
        const char* nl = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(fin - p)));
        // A carriage return before the line end belongs to the line end (CRLF files).
        const char* finLinea = nl ? nl : fin;
        if (finLinea > p && finLinea[-1] == '\r') --finLinea;
        const std::string_view linea = recortar(std::string_view(p, static_cast<std::size_t>(finLinea - p)));
        if (!linea.empty() && linea.front() == '#') {
            entregar();
            actual = linea;
            actualEsUnida = false;
            actualEsEntidad = true;
        } else if (!linea.empty() && actualEsEntidad) {
            if (!actualEsUnida) {
                unida.assign(actual);
                actualEsUnida = true;
            }
            unida.append(linea);
        }
        if (!nl) break;
        p = nl + 1;
    }
    entregar();
}

} // namespace teskal
