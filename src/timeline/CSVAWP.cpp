// Work packages in and out of CSV: the tolerant import with its header
// aliases and the export with its figures.
#include "timeline/CSVAWP.h"

#include "federation/TextoUTF8.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace teskal {

namespace {

// The length of the line end that starts at s[i] (LF, VT, FF, CR, U+0085,
// U+2028, U+2029), or 0. Each of them ends a line; a CR LF pair gives an
// empty line between, which is dropped like any other.
std::size_t largoFinLinea(std::string_view s, std::size_t i) {
    const auto c = static_cast<unsigned char>(s[i]);
    if (c >= 0x0A && c <= 0x0D) return 1;
    if (c == 0xC2 && i + 1 < s.size() && static_cast<unsigned char>(s[i + 1]) == 0x85) return 2;
    if (c == 0xE2 && i + 2 < s.size() && static_cast<unsigned char>(s[i + 1]) == 0x80 &&
        (static_cast<unsigned char>(s[i + 2]) == 0xA8 || static_cast<unsigned char>(s[i + 2]) == 0xA9))
        return 3;
    return 0;
}

// Calls f with each line trimmed of blanks, the empty ones left out.
template <class F> void porLineas(std::string_view texto, F f) {
    std::size_t inicio = 0;
    for (std::size_t i = 0; i <= texto.size();) {
        const std::size_t fin = i == texto.size() ? 1 : largoFinLinea(texto, i);
        if (!fin) {
            ++i;
            continue;
        }
        const std::string_view linea = recortar(texto.substr(inicio, i - inicio));
        if (!linea.empty() && !f(linea)) return;
        i += fin;
        inicio = i;
    }
}

std::string_view sinComillas(std::string_view s) {
    while (!s.empty() && s.front() == '"') s.remove_prefix(1);
    while (!s.empty() && s.back() == '"') s.remove_suffix(1);
    return s;
}

std::string aMinusculas(std::string_view s) {
    std::string r(s);
    for (char& c : r) {
        if (static_cast<unsigned char>(c) >= 0x80)
            return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())).toLower().toStdString();
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return r;
}

double numeroOCero(std::string_view s) { return leerDouble(recortar(s)).value_or(0); }

// Digits only, as a number; none for an empty text or any other byte.
std::optional<int> digitos(std::string_view s, std::size_t minimo, std::size_t maximo) {
    if (s.size() < minimo || s.size() > maximo) return std::nullopt;
    int v = 0;
    for (char c : s) {
        if (c < '0' || c > '9') return std::nullopt;
        v = v * 10 + (c - '0');
    }
    return v;
}

// Three numbers separated by one character, each within its digit counts.
std::optional<std::array<int, 3>> tresNumeros(std::string_view s, char separador, std::array<std::size_t, 6> largos) {
    const auto a = s.find(separador);
    if (a == std::string_view::npos) return std::nullopt;
    const auto b = s.find(separador, a + 1);
    if (b == std::string_view::npos) return std::nullopt;
    const auto x = digitos(s.substr(0, a), largos[0], largos[1]);
    const auto y = digitos(s.substr(a + 1, b - a - 1), largos[2], largos[3]);
    const auto z = digitos(s.substr(b + 1), largos[4], largos[5]);
    if (!x || !y || !z) return std::nullopt;
    return std::array<int, 3>{*x, *y, *z};
}

std::optional<QDateTime> fechaLocal(int anio, int mes, int dia) {
    const QDate d(anio, mes, dia);
    if (!d.isValid()) return std::nullopt;
    return QDateTime(d, QTime(0, 0), Qt::LocalTime).toUTC();
}

// The aliases of a field, tried in order.
struct Columna {
    std::array<std::string_view, 4> alias;
    bool requerida;
};
enum Campo : std::size_t { cNivel, cCodigo, cNombre, cInicio, cFin, cPadre, cProgreso, cPresupuesto, cHH, numeroCampos };
constexpr std::array<Columna, numeroCampos> columnas{{
    {{"nivel"}, true},
    {{"código", "codigo", "code"}, true},
    {{"nombre", "name"}, true},
    {{"inicio", "start"}, true},
    {{"fin", "end", "term"}, true},
    {{"padre", "parent"}, false},
    {{"avance", "progreso", "progress"}, false},
    {{"presupuesto", "budget", "cost"}, false},
    {{"hh plan", "hh_plan", "horas hombre plan", "hhplan"}, false},
}};
constexpr std::size_t sinColumna = std::numeric_limits<std::size_t>::max();

// A figure truncated to an integer, as the export writes it; beyond the
// range of a 64-bit integer it stops at the limit, and not a number is 0.
long long truncado(double v) {
    if (std::isnan(v)) return 0;
    if (v >= 9.2e18) return std::numeric_limits<long long>::max();
    if (v <= -9.2e18) return std::numeric_limits<long long>::min();
    return static_cast<long long>(v);
}

void anadirEntero(std::string& s, long long v) {
    char b[24];
    const auto r = std::to_chars(b, b + sizeof b, v);
    s.append(b, r.ptr);
}

// "%.Nf": always a point, whatever the locale.
void anadirFijo(std::string& s, double v, int decimales) {
    char b[400];
    const auto r = std::to_chars(b, b + sizeof b, v, std::chars_format::fixed, decimales);
    s.append(b, r.ptr);
}

void anadirFecha(std::string& s, const QDateTime& f) {
    if (!f.isValid()) return;
    const QDate d = f.toUTC().date();
    char b[32];
    const int n = std::snprintf(b, sizeof b, "%04d-%02d-%02d", d.year(), d.month(), d.day());
    if (n > 0) s.append(b, static_cast<std::size_t>(std::min(n, static_cast<int>(sizeof b) - 1)));
}

} // namespace

std::optional<QDateTime> leerFechaCSV(std::string_view texto) {
    texto = recortar(texto);
    if (const auto iso = tresNumeros(texto, '-', {4, 4, 2, 2, 2, 2})) {
        const QDate d((*iso)[0], (*iso)[1], (*iso)[2]);
        if (d.isValid()) return QDateTime(d, QTime(0, 0), Qt::UTC);
    }
    if (const auto barras = tresNumeros(texto, '/', {1, 2, 1, 2, 4, 4})) {
        if (auto f = fechaLocal((*barras)[2], (*barras)[1], (*barras)[0])) return f; // dd/MM/yyyy
        return fechaLocal((*barras)[2], (*barras)[0], (*barras)[1]);                 // MM/dd/yyyy
    }
    return std::nullopt;
}

std::vector<PaqueteAWP> parsearCSV(std::string_view texto, const QDateTime& ahora) {
    std::vector<PaqueteAWP> paquetes;
    std::array<std::size_t, numeroCampos> columna;
    columna.fill(sinColumna);
    bool cabecera = true;
    bool valida = true;
    // The fields of the row under way: their texts keep their room from row
    // to row.
    std::vector<std::string> campos;
    std::size_t numero = 0;
    FabricaPaquetes fabrica(ahora);
    paquetes.reserve(static_cast<std::size_t>(std::count(texto.begin(), texto.end(), '\n')));

    porLineas(texto, [&](std::string_view linea) {
        if (cabecera) {
            cabecera = false;
            // Split without regard to quotes; trimmed of blanks, then of
            // quotation marks, in lower case.
            std::vector<std::string> titulos;
            for (std::size_t i = 0;;) {
                const auto coma = linea.find(',', i);
                titulos.push_back(aMinusculas(sinComillas(recortar(linea.substr(i, coma - i)))));
                if (coma == std::string_view::npos) break;
                i = coma + 1;
            }
            for (std::size_t c = 0; c < numeroCampos; ++c) {
                for (std::string_view alias : columnas[c].alias) {
                    if (alias.empty()) break;
                    for (std::size_t t = 0; t < titulos.size() && columna[c] == sinColumna; ++t)
                        if (titulos[t].find(alias) != std::string::npos) columna[c] = t;
                    if (columna[c] != sinColumna) break;
                }
                if (columnas[c].requerida && columna[c] == sinColumna) valida = false;
            }
            return valida;
        }

        // A quotation mark toggles the quoted state and is dropped; a comma
        // outside quotes ends a field. The runs between them are copied
        // whole.
        numero = 0;
        const auto nuevoCampo = [&]() -> std::string& {
            if (numero == campos.size()) campos.emplace_back();
            std::string& c = campos[numero++];
            c.clear();
            return c;
        };
        std::string* campo = &nuevoCampo();
        bool entreComillas = false;
        for (std::size_t i = 0; i < linea.size();) {
            const std::size_t marca = linea.find_first_of(entreComillas ? "\"" : "\",", i);
            const std::size_t fin = marca == std::string_view::npos ? linea.size() : marca;
            campo->append(linea.data() + i, fin - i);
            if (fin == linea.size()) break;
            if (linea[fin] == '"')
                entreComillas = !entreComillas;
            else
                campo = &nuevoCampo();
            i = fin + 1;
        }
        // A column past the end of a short row skips the row.
        for (std::size_t c = 0; c < numeroCampos; ++c)
            if (columna[c] != sinColumna && columna[c] >= numero) return true;
        const auto de = [&](Campo c) { return std::string_view(campos[columna[c]]); };

        const auto nivelFila = nivelEscrito(de(cNivel));
        if (!nivelFila) return true;
        const std::string_view codigoFila = recortar(de(cCodigo));
        if (codigoFila.empty()) return true;
        const auto desde = leerFechaCSV(de(cInicio));
        const auto hasta = leerFechaCSV(de(cFin));
        if (!desde || !hasta || *hasta < *desde) return true;

        PaqueteAWP& p = paquetes.emplace_back(fabrica.nuevo());
        p.nivel = *nivelFila;
        p.codigo = codigoFila;
        const std::string_view nombreFila = recortar(de(cNombre));
        p.nombre = nombreFila.empty() ? codigoFila : nombreFila;
        p.fechaInicio = *desde;
        p.fechaFin = *hasta;
        if (columna[cPadre] != sinColumna) {
            const std::string_view padreFila = recortar(de(cPadre));
            if (!padreFila.empty()) p.parentCodigo = std::string(padreFila);
        }
        if (columna[cProgreso] != sinColumna) {
            // Every percent sign out, then a number of hundredths.
            std::string& s = campos[columna[cProgreso]];
            std::erase(s, '%');
            p.progreso = numeroOCero(s) / 100;
        }
        if (columna[cPresupuesto] != sinColumna) p.presupuesto = numeroOCero(de(cPresupuesto));
        if (columna[cHH] != sinColumna) p.hh = numeroOCero(de(cHH));
        return true;
    });
    return paquetes;
}

std::vector<PaqueteAWP> leerCSVAWP(const std::string& ruta) {
    QFile archivo(QString::fromStdString(ruta));
    if (!archivo.open(QIODevice::ReadOnly)) return {};
    const QByteArray datos = archivo.readAll();
    const std::string_view texto(datos.constData(), static_cast<std::size_t>(datos.size()));
    if (!esUTF8Valido(texto)) return {};
    return parsearCSV(texto);
}

std::string textoCSVAWP(const TimeLinerConfig& config) {
    std::string s;
    s.reserve(cabeceraCSVAWP.size() + 1 + config.paquetes.size() * 160);
    s.append(cabeceraCSVAWP);
    s.push_back('\n');
    for (const PaqueteAWP& p : config.paquetes) {
        const double ev = p.presupuesto * p.progreso;
        const double hhGanadas = p.hh * p.progreso;
        s.append(textoNivel(p.nivel));
        s.push_back(',');
        s.append(p.codigo);
        s.append(",\"");
        s.append(p.nombre);
        s.append("\",");
        if (p.parentCodigo) s.append(*p.parentCodigo);
        s.push_back(',');
        anadirFecha(s, p.fechaInicio);
        s.push_back(',');
        anadirFecha(s, p.fechaFin);
        s.push_back(',');
        anadirFijo(s, p.progreso * 100, 1);
        s.push_back(',');
        anadirEntero(s, truncado(p.presupuesto));
        s.push_back(',');
        anadirEntero(s, truncado(p.costoReal));
        s.push_back(',');
        anadirEntero(s, truncado(ev));
        s.push_back(',');
        anadirFijo(s, p.costoReal > 0 ? ev / p.costoReal : 1, 2);
        s.push_back(',');
        anadirEntero(s, truncado(p.hh));
        s.push_back(',');
        anadirEntero(s, truncado(p.hhReal));
        s.push_back(',');
        anadirEntero(s, truncado(hhGanadas));
        s.push_back(',');
        anadirFijo(s, p.hhReal > 0 ? hhGanadas / p.hhReal : 1, 2);
        s.push_back('\n');
    }
    return s;
}

} // namespace teskal
