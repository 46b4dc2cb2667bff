#pragma once

#include <cstdint>
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
// apostrophes go, and the rest is decoded as decodificarTextoSTEP does.
std::string limpiarTextoSTEP(std::string_view s);

// The text of a STEP string, in UTF-8: doubled apostrophes are undoubled,
// "\\" gives one backslash, and the escapes \S\c (c plus 128 in the code
// page in force), \PA\ to \PI\ (ISO 8859-1 to 8859-9, 8859-1 until one
// says otherwise), \X\hh, \X2\...\X0\ (surrogate pairs combined) and
// \X4\...\X0\ are decoded. Bytes that are not valid UTF-8 are read as
// ISO 8859-1. A malformed escape keeps its backslash as a plain character.
std::string decodificarTextoSTEP(std::string_view s);

// The bytes as UTF-8: as they are when they are valid UTF-8, read as ISO
// 8859-1 otherwise.
std::string comoUTF8(std::string_view s);

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
    std::string_view args;   // after "(", trimmed, less a final ";" and then a final ")"
};

// Cuts a statement that begins with "#" into its parts; false when it has no
// "=" or no "(" after the "=". Blanks before the final ";" and ")" do not
// keep them from going.
bool partirEntidadSTEP(std::string_view sentencia, PartesEntidad& partes);

// Finds the entity statements of a STEP text by its syntax: a statement
// begins at a statement boundary (the start of the text or a ";" outside a
// string, then blanks, line ends and comments) and ends at the next ";"
// outside a string, whatever the lines: any number to a line, with LF, CRLF
// or CR alone. A statement broken over lines, even inside a string, is
// rejoined with its line ends and the blanks around them removed; comments
// outside strings are removed too. Header statements and the section
// keywords do not begin with "#" and are passed over.
class LectorSentenciasSTEP {
public:
    explicit LectorSentenciasSTEP(std::string_view texto);

    // The next statement that begins with "#", with its ";" (a last one cut
    // short by the end of the text has none). estable is true when the view
    // points into the text itself, false when it points into a buffer that
    // the next call overwrites.
    bool siguiente(std::string_view& sentencia, bool& estable);

    // Stops the reading at `alto`: siguiente gives no statement that begins
    // at or after it. Where the reader stands after the last statement it
    // gave tells whether a statement ran across `alto`.
    void detenerEn(const char* alto) { alto_ = alto; }
    const char* posicion() const { return p_; }

private:
    // Reads the 64 bytes at base, whose first byte is inside a string or not.
    void cargarBloque(const char* base, bool enTexto);
    // The ";" that ends the statement beginning at inicio, from the blocks;
    // false when the statement must be read byte by byte (line ends or a
    // comment in it, or the end of the text near).
    bool buscarEnBloques(const char* inicio, bool comentario, const char*& final);

    const char* p_;
    const char* fin_;
    const char* alto_ = fin_;
    bool avx2_; // the processor reads 32 bytes at a time
    // The block of 64 bytes last read: the ";" outside strings in it, its
    // line ends and "/" outside strings, and whether it ends inside a string.
    const char* base_ = nullptr;
    std::uint64_t finales_ = 0;
    std::uint64_t raros_ = 0;
    bool enTextoAlFinal_ = false;
    std::string unida_; // the last statement that had to be rejoined
};

// Where a large text can be read in two parts at once: just after a ";"
// near its middle that a "#" follows (blanks and line ends between), the
// likely start of a statement; npos when there is none near. The reader of
// the first part checks that it really is one (see detenerEn).
std::size_t puntoDeCorteSTEP(std::string_view texto);

// Calls visitar(sentencia, estable) for every statement that
// LectorSentenciasSTEP finds, in file order.
template <class F> void recorrerSentenciasSTEP(std::string_view texto, F&& visitar) {
    LectorSentenciasSTEP lector(texto);
    std::string_view sentencia;
    bool estable = true;
    while (lector.siguiente(sentencia, estable)) visitar(sentencia, estable);
}

} // namespace teskal
