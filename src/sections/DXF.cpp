#include "sections/DXF.h"

#include "federation/Formato.h"

#include <QString>
#include <glm/geometric.hpp>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <cmath>
#include <set>

namespace teskal {

namespace {

// "%.6f" of a float, exactly as printf writes it: the exact binary value
// times 10^6, rounded half to even, in whole digits. Null when the value is
// too large for this path (2^54 and more).
char* fijo6DeFloat(char* p, float f) {
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    const bool negativo = bits >> 31;
    const int exponente = static_cast<int>((bits >> 23) & 0xFF);
    const std::uint32_t fraccion = bits & 0x7FFFFF;
    const std::uint64_t m = exponente == 0 ? fraccion : (fraccion | 0x800000u);
    const int e = exponente == 0 ? -149 : exponente - 150; // f = m * 2^e
    if (e > 30) return nullptr;
    unsigned __int128 n;
    if (e >= 0) {
        n = (static_cast<unsigned __int128>(m) << e) * 1000000u;
    } else {
        const int k = -e;
        const unsigned __int128 x = static_cast<unsigned __int128>(m) * 1000000u; // below 2^44
        if (k >= 64) {
            n = 0; // below 2^-20: rounds to zero
        } else {
            unsigned __int128 q = x >> k;
            const unsigned __int128 resto = x & ((static_cast<unsigned __int128>(1) << k) - 1);
            const unsigned __int128 mitad = static_cast<unsigned __int128>(1) << (k - 1);
            if (resto > mitad || (resto == mitad && (q & 1))) ++q;
            n = q;
        }
    }
    if (negativo) *p++ = '-';
    const auto entera = static_cast<std::uint64_t>(n / 1000000u);
    auto decimales = static_cast<std::uint32_t>(n % 1000000u);
    p = std::to_chars(p, p + 24, entera).ptr;
    *p++ = '.';
    for (int i = 5; i >= 0; --i) {
        p[i] = static_cast<char>('0' + decimales % 10);
        decimales /= 10;
    }
    return p + 6;
}

// The file as it grows: each value one pair of lines, code then value.
class EscritorDXF {
public:
    std::string texto;

    void par(int codigo, std::string_view valor) {
        char b[16];
        const auto r = std::to_chars(b, b + sizeof b, codigo);
        texto.append(b, r.ptr);
        texto += '\n';
        texto.append(valor);
        texto += '\n';
    }
    void entero(int codigo, int valor) {
        char b[16];
        const auto r = std::to_chars(b, b + sizeof b, valor);
        par(codigo, std::string_view(b, static_cast<std::size_t>(r.ptr - b)));
    }
    // "%.6f", always with a point. Sheet coordinates are floats: those take
    // the exact integer path.
    void real(int codigo, double valor) {
        char b[400];
        char* fin = nullptr;
        if (std::isfinite(valor) && static_cast<double>(static_cast<float>(valor)) == valor)
            fin = fijo6DeFloat(b, static_cast<float>(valor));
        if (!fin) fin = std::to_chars(b, b + sizeof b, valor, std::chars_format::fixed, 6).ptr;
        par(codigo, std::string_view(b, static_cast<std::size_t>(fin - b)));
    }
    void linea(std::string_view capa, double x1, double y1, double x2, double y2, bool discontinua = false) {
        par(0, "LINE");
        par(8, capa);
        if (discontinua) par(6, "DASHED");
        real(10, x1);
        real(20, y1);
        real(30, 0.0);
        real(11, x2);
        real(21, y2);
        real(31, 0.0);
    }
    void capa(std::string_view nombre, int color) {
        par(0, "LAYER");
        par(2, nombre);
        entero(70, 0);
        entero(62, color);
        par(6, "CONTINUOUS");
    }
};

double alturaTexto(const std::vector<Segmento2D>& segmentos) {
    if (segmentos.empty()) return 0.1;
    double x0 = segmentos[0].p1.x, x1 = x0, y0 = segmentos[0].p1.y, y1 = y0;
    for (const auto& s : segmentos)
        for (const glm::vec2& p : {s.p1, s.p2}) {
            x0 = std::min(x0, static_cast<double>(p.x));
            x1 = std::max(x1, static_cast<double>(p.x));
            y0 = std::min(y0, static_cast<double>(p.y));
            y1 = std::max(y1, static_cast<double>(p.y));
        }
    double h = 0.1;
    if (x1 > x0 || y1 > y0) {
        const double s = std::max(x1 - x0, y1 - y0);
        h = s * 0.01 > 0.05 ? s * 0.01 : 0.05;
    }
    return h > 0.5 ? 0.5 : h;
}

} // namespace

std::string sanearTextoDXF(std::string_view texto) {
    // Folding first: letters with marks lose them (canonical decomposition,
    // so "²" is left for the table below).
    const QString descompuesto = QString::fromUtf8(texto.data(), static_cast<qsizetype>(texto.size()))
                                     .normalized(QString::NormalizationForm_D);
    std::string r;
    r.reserve(texto.size());
    for (qsizetype i = 0; i < descompuesto.size(); ++i) {
        const QChar c = descompuesto[i];
        const char16_t u = c.unicode();
        if (c.category() == QChar::Mark_NonSpacing) continue;
        if (u == u'\r') {
            if (i + 1 < descompuesto.size() && descompuesto[i + 1] == u'\n') ++i;
            r += ' '; // a line break as one blank
        } else if (u == u'\n') {
            r += ' ';
        } else if (u == u'×') {
            r += 'x';
        } else if (u == u'°') {
            r += "deg";
        } else if (u == u'²') {
            r += '2';
        } else if (u == u'³') {
            r += '3';
        } else if (u == u'ñ') {
            r += 'n';
        } else if (u == u'Ñ') {
            r += 'N';
        } else if (u < 0x80) {
            r += static_cast<char>(u);
        }
    }
    return r;
}

int colorCapaDXF(std::string_view clave) {
    if (clave == "ARQ") return 7;
    if (clave == "EST") return 3;
    if (clave == "MEP") return 5;
    if (clave == "TOP") return 30;
    if (clave == "ARE") return 1;
    if (clave == "EXI") return 6;
    return 7;
}

std::string generarDXF(const std::vector<Segmento2D>& segmentos, const std::vector<Etiqueta2D>& etiquetas,
                       const std::vector<Cota2D>& cotas) {
    const double h = alturaTexto(segmentos);
    const std::set<std::string> claves = [&] {
        std::set<std::string> c;
        for (const auto& s : segmentos) c.insert(s.key);
        return c;
    }();
    const bool hayEtiquetas = std::any_of(etiquetas.begin(), etiquetas.end(), [](const Etiqueta2D& e) { return e.visible; });
    const bool hayCotas = !cotas.empty();

    EscritorDXF w;
    // About 150 bytes per line entity.
    w.texto.reserve(1024 + segmentos.size() * 150 + etiquetas.size() * 800 + cotas.size() * 1400);
    w.par(0, "SECTION");
    w.par(2, "HEADER");
    w.par(9, "$ACADVER");
    w.par(1, "AC1009");
    w.par(9, "$INSUNITS");
    w.entero(70, 6);
    w.par(0, "ENDSEC");

    w.par(0, "SECTION");
    w.par(2, "TABLES");
    w.par(0, "TABLE");
    w.par(2, "LTYPE");
    w.entero(70, 2);
    w.par(0, "LTYPE");
    w.par(2, "CONTINUOUS");
    w.entero(70, 0);
    w.par(3, "Solid line");
    w.entero(72, 65);
    w.entero(73, 0);
    w.real(40, 0.0);
    w.par(0, "LTYPE");
    w.par(2, "DASHED");
    w.entero(70, 0);
    w.par(3, "__ __ __ __ __ __ __ __ __ __ __");
    w.entero(72, 65);
    w.entero(73, 2);
    w.real(40, 0.75);
    w.real(49, 0.5);
    w.real(49, -0.25);
    w.par(0, "ENDTAB");

    w.par(0, "TABLE");
    w.par(2, "LAYER");
    w.entero(70, static_cast<int>(claves.size()) + 1 + (hayEtiquetas ? 1 : 0) + (hayCotas ? 1 : 0));
    w.capa("0", 7);
    // Layer names in ASCII, as R12 has no UTF-8: folded as label texts are.
    for (const auto& c : claves) w.capa(sanearTextoDXF(c), colorCapaDXF(c));
    if (hayEtiquetas) w.capa("ETIQUETAS", 2);
    if (hayCotas) w.capa("COTAS", 5);
    w.par(0, "ENDTAB");
    w.par(0, "ENDSEC");

    w.par(0, "SECTION");
    w.par(2, "ENTITIES");
    // Consecutive lines of one discipline share the folded layer name.
    std::string claveActual, capaActual;
    for (const auto& s : segmentos) {
        if (s.key != claveActual || capaActual.empty()) {
            claveActual = s.key;
            capaActual = sanearTextoDXF(s.key);
        }
        w.linea(capaActual, s.p1.x, s.p1.y, s.p2.x, s.p2.y, !s.esCorte);
    }

    auto textoEn = [&](std::string_view capa, double x, double y, double alto, const std::string& valor,
                       bool derecha) {
        w.par(0, "TEXT");
        w.par(8, capa);
        w.real(10, x);
        w.real(20, y);
        w.real(30, 0.0);
        w.real(40, alto);
        w.par(1, valor);
        if (derecha) {
            w.entero(72, 2);
            w.real(11, x);
            w.real(21, y);
            w.real(31, 0.0);
        }
    };
    for (const auto& e : etiquetas) {
        if (!e.visible) continue;
        const glm::vec2 a = e.ancla, o = e.offsetTexto, t = a + o;
        const bool izquierda = o.x < 0;
        const double tx = t.x, ty = t.y, ax = a.x, ay = a.y;
        const double k = izquierda ? tx + 1.5 * h : tx - 1.5 * h;
        w.linea("ETIQUETAS", tx, ty, k, ty);
        w.linea("ETIQUETAS", k, ty, ax, ay);
        w.linea("ETIQUETAS", ax - 0.25 * h, ay, ax + 0.25 * h, ay);
        w.linea("ETIQUETAS", ax, ay - 0.25 * h, ax, ay + 0.25 * h);
        textoEn("ETIQUETAS", tx, ty + 0.35 * h, h, sanearTextoDXF(e.nombre), izquierda);
        std::string segunda = e.tipoIFC;
        if (!e.dimensiones.empty()) segunda += "  " + e.dimensiones;
        textoEn("ETIQUETAS", tx, ty - 0.55 * h, 0.72 * h, sanearTextoDXF(segunda), izquierda);
    }

    for (const auto& c : cotas) {
        const float largo = glm::length(c.p2 - c.p1);
        if (!(largo > 0.001f)) continue;
        const glm::dvec2 p1(c.p1), p2(c.p2);
        const glm::dvec2 u = (p2 - p1) / glm::length(p2 - p1);
        const glm::dvec2 n(u.y, -u.x);
        const double f = c.offsetLateral;
        const glm::dvec2 q1 = p1 + f * n, q2 = p2 + f * n;
        for (const glm::dvec2& p : {p1, p2}) {
            const glm::dvec2 a = p + 0.25 * h * n, b = p + (f + 0.4 * h) * n;
            w.linea("COTAS", a.x, a.y, b.x, b.y);
        }
        w.linea("COTAS", q1.x, q1.y, q2.x, q2.y);
        for (const auto& [punta, e] : {std::pair{q1, u}, std::pair{q2, -u}}) {
            const glm::dvec2 b = punta + 0.6 * h * e;
            const glm::dvec2 A = b - 0.18 * h * n, B = b + 0.18 * h * n;
            w.linea("COTAS", punta.x, punta.y, A.x, A.y);
            w.linea("COTAS", punta.x, punta.y, B.x, B.y);
            w.linea("COTAS", A.x, A.y, B.x, B.y);
        }
        const glm::dvec2 m = (q1 + q2) * 0.5;
        double angulo = std::atan2(u.y, u.x) * 180.0 / M_PI;
        if (angulo > 90) angulo -= 180;
        if (angulo < -90) angulo += 180;
        const std::string texto = sanearTextoDXF(formato("%.2f m", static_cast<double>(largo)));
        const double W = h * static_cast<double>(texto.size()) * 0.3;
        const glm::dvec2 p = m - W * u + 0.2 * h * glm::dvec2(-u.y, u.x);
        w.par(0, "TEXT");
        w.par(8, "COTAS");
        w.real(10, p.x);
        w.real(20, p.y);
        w.real(30, 0.0);
        w.real(40, 0.85 * h);
        w.par(1, texto);
        if (std::abs(angulo) > 0.01) w.real(50, angulo);
    }
    w.par(0, "ENDSEC");
    w.par(0, "EOF");
    return std::move(w.texto);
}

} // namespace teskal
