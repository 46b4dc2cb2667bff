#include "persistence/JsonRegistros.h"

#include <QRegularExpression>
#include <QTimeZone>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>

namespace teskal {

namespace {

QString q(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

std::string citado(std::string_view clave) {
    return "\"" + std::string(clave) + "\"";
}

// The first characters of a wrong value, to show it in a message.
std::string muestra(const QString& texto) {
    constexpr qsizetype maximo = 60;
    return "\"" +
           (texto.size() > maximo ? texto.left(maximo) + QStringLiteral("…") : texto)
               .toStdString() +
           "\"";
}

} // namespace

QString textoFechaJson(const QDateTime& fecha) {
    return fecha.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"));
}

std::optional<QDateTime> fechaDesdeTextoJson(QStringView texto) {
    static const QRegularExpression forma(
        QStringLiteral("^([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):"
                       "([0-9]{2})(?:[.,]([0-9]+))?(?:(Z)|([+-])([0-9]{2}):?([0-9]{2}))$"));
    const QRegularExpressionMatch m = forma.match(texto);
    if (!m.hasMatch()) return std::nullopt;
    auto n = [&m](int grupo) { return m.capturedView(grupo).toInt(); };
    const QDate dia(n(1), n(2), n(3));
    if (!dia.isValid() || n(4) > 23 || n(5) > 59 || n(6) > 59) return std::nullopt;
    int ms = 0;
    if (m.hasCaptured(7)) ms = (m.captured(7) + QStringLiteral("00")).left(3).toInt();
    int desfase = 0;
    if (!m.hasCaptured(8)) {
        if (n(10) > 23 || n(11) > 59) return std::nullopt;
        desfase = (n(10) * 3600 + n(11) * 60) * (m.capturedView(9) == u"-" ? -1 : 1);
    }
    const QDateTime local(dia, QTime(n(4), n(5), n(6), ms), Qt::UTC);
    return local.addSecs(-desfase);
}

std::optional<std::string> uuidDesdeTexto(QStringView texto) {
    static const QRegularExpression forma(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    if (!forma.match(texto).hasMatch()) return std::nullopt;
    return texto.toString().toUpper().toStdString();
}

QJsonValue jsonFecha(const QDateTime& fecha) {
    return textoFechaJson(fecha);
}
QJsonValue jsonUuid(const std::string& id) {
    return q(id).toUpper();
}
QJsonValue jsonTexto(const std::string& texto) {
    return q(texto);
}

QJsonValue jsonFloat(float valor) {
    // The float's shortest decimal, held as the double nearest to it: the
    // writer prints that double as the same short text ("0.6", not
    // "0.60000002384185791"), and reading it as a float gives `valor` back.
    char texto[64];
    const auto fin = std::to_chars(texto, texto + sizeof texto, valor).ptr;
    double d = valor;
    std::from_chars(texto, fin, d);
    return d;
}

QJsonArray jsonPar(glm::vec2 par) {
    return QJsonArray{jsonFloat(par.x), jsonFloat(par.y)};
}

QJsonValue jsonDatos(const QByteArray& datos) {
    return QString::fromLatin1(datos.toBase64());
}

// ---------------------------------------------------------------------------

LectorJson::LectorJson(const QJsonValue& valor, std::string registro, std::string ruta)
    : registro_(std::move(registro)), ruta_(std::move(ruta)) {
    if (valor.isObject())
        objeto_ = valor.toObject();
    else if (ruta_.empty())
        error_ = "Se esperaba un objeto " + registro_ + ".";
    else
        error_ = "Se esperaba un objeto " + registro_ + " en " + ruta_ + ".";
}

void LectorJson::fallar(std::string mensaje) {
    if (error_.empty()) error_ = std::move(mensaje);
}

std::string LectorJson::donde() const {
    return ruta_.empty() ? registro_ : registro_ + " (" + ruta_ + ")";
}

std::string LectorJson::rutaDe(std::string_view clave) const {
    return ruta_.empty() ? std::string(clave) : ruta_ + "." + std::string(clave);
}

void LectorJson::tipoIncorrecto(std::string_view clave, std::string_view esperado) {
    fallar("La clave " + citado(clave) + " de " + donde() + " no es " + std::string(esperado) +
           ".");
}

std::optional<QJsonValue> LectorJson::valor(std::string_view clave, bool requerida) {
    if (!ok()) return std::nullopt;
    const auto it = objeto_.constFind(q(clave));
    if (it == objeto_.constEnd()) {
        if (requerida) fallar("Falta la clave " + citado(clave) + " en " + donde() + ".");
        return std::nullopt;
    }
    // A null optional reads as absent; a null required key is a value of the
    // wrong type, reported by the caller.
    if (!requerida && it.value().isNull()) return std::nullopt;
    return it.value();
}

std::string LectorJson::texto(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return {};
    if (!v->isString()) {
        tipoIncorrecto(clave, "un texto");
        return {};
    }
    return v->toString().toStdString();
}

std::optional<std::string> LectorJson::textoOpcional(std::string_view clave) {
    const auto v = valor(clave, false);
    if (!v) return std::nullopt;
    if (!v->isString()) {
        tipoIncorrecto(clave, "un texto");
        return std::nullopt;
    }
    return v->toString().toStdString();
}

std::optional<double> LectorJson::numeroOpcional(std::string_view clave) {
    const auto v = valor(clave, false);
    if (!v) return std::nullopt;
    if (!v->isDouble()) {
        tipoIncorrecto(clave, "un número");
        return std::nullopt;
    }
    return v->toDouble();
}

double LectorJson::numero(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return 0;
    if (!v->isDouble()) {
        tipoIncorrecto(clave, "un número");
        return 0;
    }
    return v->toDouble();
}

float LectorJson::numeroFloat(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return 0;
    if (!v->isDouble()) {
        tipoIncorrecto(clave, "un número");
        return 0;
    }
    const double d = v->toDouble();
    if (std::fabs(d) > FLT_MAX) {
        tipoIncorrecto(clave, "un número representable en 32 bits");
        return 0;
    }
    return static_cast<float>(d);
}

int LectorJson::entero(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return 0;
    const double d = v->isDouble() ? v->toDouble() : 0.5;
    if (std::floor(d) != d || d < INT_MIN || d > INT_MAX) {
        tipoIncorrecto(clave, "un número entero");
        return 0;
    }
    return static_cast<int>(d);
}

bool LectorJson::booleano(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return false;
    if (!v->isBool()) {
        tipoIncorrecto(clave, "un valor lógico (true o false)");
        return false;
    }
    return v->toBool();
}

std::string LectorJson::uuid(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return {};
    std::optional<std::string> id;
    if (v->isString()) id = uuidDesdeTexto(v->toString());
    if (!id) {
        tipoIncorrecto(clave, v->isString() ? "un UUID: " + muestra(v->toString())
                                            : std::string("un UUID"));
        return {};
    }
    return *id;
}

QDateTime LectorJson::fecha(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return {};
    std::optional<QDateTime> f;
    if (v->isString()) f = fechaDesdeTextoJson(v->toString());
    if (!f) {
        tipoIncorrecto(clave, v->isString() ? "una fecha ISO 8601: " + muestra(v->toString())
                                            : std::string("una fecha ISO 8601"));
        return {};
    }
    return *f;
}

std::optional<QDateTime> LectorJson::fechaOpcional(std::string_view clave) {
    const auto v = valor(clave, false);
    if (!v) return std::nullopt;
    std::optional<QDateTime> f;
    if (v->isString()) f = fechaDesdeTextoJson(v->toString());
    if (!f)
        tipoIncorrecto(clave, v->isString() ? "una fecha ISO 8601: " + muestra(v->toString())
                                            : std::string("una fecha ISO 8601"));
    return f;
}

std::optional<QByteArray> LectorJson::datosOpcional(std::string_view clave) {
    const auto v = valor(clave, false);
    if (!v) return std::nullopt;
    if (!v->isString()) {
        tipoIncorrecto(clave, "un texto base64");
        return std::nullopt;
    }
    auto leido = QByteArray::fromBase64Encoding(v->toString().toLatin1(),
                                                QByteArray::Base64Encoding |
                                                    QByteArray::AbortOnBase64DecodingErrors);
    // Latin-1 turns characters outside it into "?", which base64 refuses.
    if (!leido) {
        tipoIncorrecto(clave, "un texto base64 válido");
        return std::nullopt;
    }
    return std::move(*leido);
}

glm::vec2 LectorJson::par(std::string_view clave) {
    const auto v = valor(clave, true);
    if (!v) return glm::vec2(0.0f);
    const QJsonArray a = v->toArray();
    bool bien = v->isArray() && a.size() == 2 && a.at(0).isDouble() && a.at(1).isDouble();
    if (!bien) {
        tipoIncorrecto(clave, "un par de números [x, y]");
        return glm::vec2(0.0f);
    }
    const double x = a.at(0).toDouble(), y = a.at(1).toDouble();
    if (std::fabs(x) > FLT_MAX || std::fabs(y) > FLT_MAX) {
        tipoIncorrecto(clave, "un par de números representables en 32 bits");
        return glm::vec2(0.0f);
    }
    return {static_cast<float>(x), static_cast<float>(y)};
}

std::vector<std::string> LectorJson::textos(std::string_view clave) {
    std::vector<std::string> r;
    const auto a = arreglo(clave, true);
    if (!a) return r;
    r.reserve(static_cast<std::size_t>(a->size()));
    for (qsizetype i = 0; i < a->size(); ++i) {
        if (!a->at(i).isString()) {
            fallar("El valor " + rutaDe(clave) + "[" + std::to_string(i) + "] de " + donde() +
                   " no es un texto.");
            return {};
        }
        r.push_back(a->at(i).toString().toStdString());
    }
    return r;
}

std::optional<QJsonArray> LectorJson::arreglo(std::string_view clave, bool requerida) {
    const auto v = valor(clave, requerida);
    if (!v) return std::nullopt;
    if (!v->isArray()) {
        tipoIncorrecto(clave, "una lista");
        return std::nullopt;
    }
    return v->toArray();
}

std::optional<QJsonObject> LectorJson::diccionario(std::string_view clave, bool requerida) {
    const auto v = valor(clave, requerida);
    if (!v) return std::nullopt;
    if (!v->isObject()) {
        tipoIncorrecto(clave, "un objeto");
        return std::nullopt;
    }
    return v->toObject();
}

// ---------------------------------------------------------------------------
// Markup comments.

QJsonObject aJson(const PuntoMarkup& p) {
    return {{"x", p.x}, {"y", p.y}};
}

QJsonObject aJson(const TrazadoMarkup& t) {
    return {{"id", jsonUuid(t.id)}, {"puntos", aJson(t.puntos)}, {"r", t.r}, {"g", t.g}, {"b", t.b},
            {"grosor", t.grosor}};
}

QJsonObject aJson(const TextoMarkup& t) {
    return {{"id", jsonUuid(t.id)},
            {"texto", jsonTexto(t.texto)},
            {"x", t.x},
            {"y", t.y},
            {"r", t.r},
            {"g", t.g},
            {"b", t.b},
            {"tamano", t.tamano}};
}

QJsonObject aJson(const ComentarioMarkup& c) {
    QJsonObject o{{"id", jsonUuid(c.id)},
                  {"tag", jsonTexto(c.tag)},
                  {"trazados", aJson(c.trazados)},
                  {"textos", aJson(c.textos)},
                  {"fecha", jsonFecha(c.fecha)},
                  {"autor", jsonTexto(c.autor)},
                  {"descripcion", jsonTexto(c.descripcion)}};
    if (c.imagenJPEG) o.insert(QStringLiteral("imagenJPEG"), jsonDatos(*c.imagenJPEG));
    return o;
}

ResultadoJson<PuntoMarkup> puntoMarkupDesdeJson(const QJsonValue& valor, const std::string& ruta) {
    LectorJson l(valor, "PuntoMarkup", ruta);
    PuntoMarkup p;
    p.x = l.numero("x");
    p.y = l.numero("y");
    return l.resultado(p);
}

ResultadoJson<TrazadoMarkup> trazadoMarkupDesdeJson(const QJsonValue& valor,
                                                    const std::string& ruta) {
    LectorJson l(valor, "TrazadoMarkup", ruta);
    TrazadoMarkup t;
    t.id = l.uuid("id");
    t.puntos = l.lista("puntos", puntoMarkupDesdeJson);
    t.r = l.numero("r");
    t.g = l.numero("g");
    t.b = l.numero("b");
    t.grosor = l.numero("grosor");
    return l.resultado(std::move(t));
}

ResultadoJson<TextoMarkup> textoMarkupDesdeJson(const QJsonValue& valor, const std::string& ruta) {
    LectorJson l(valor, "TextoMarkup", ruta);
    TextoMarkup t;
    t.id = l.uuid("id");
    t.texto = l.texto("texto");
    t.x = l.numero("x");
    t.y = l.numero("y");
    t.r = l.numero("r");
    t.g = l.numero("g");
    t.b = l.numero("b");
    t.tamano = l.numero("tamano");
    return l.resultado(std::move(t));
}

ResultadoJson<ComentarioMarkup> comentarioMarkupDesdeJson(const QJsonValue& valor,
                                                          const std::string& ruta) {
    LectorJson l(valor, "ComentarioMarkup", ruta);
    ComentarioMarkup c;
    c.id = l.uuid("id");
    c.tag = l.texto("tag");
    c.trazados = l.lista("trazados", trazadoMarkupDesdeJson);
    c.textos = l.lista("textos", textoMarkupDesdeJson);
    c.imagenJPEG = l.datosOpcional("imagenJPEG");
    c.fecha = l.fecha("fecha");
    c.autor = l.texto("autor");
    c.descripcion = l.texto("descripcion");
    return l.resultado(std::move(c));
}

// ---------------------------------------------------------------------------
// Sections, dimensions and labels.

QJsonObject aJson(const Cota2D& c) {
    return {{"id", jsonUuid(c.id)},
            {"p1", jsonPar(c.p1)},
            {"p2", jsonPar(c.p2)},
            {"offsetLateral", jsonFloat(c.offsetLateral)}};
}

QJsonObject aJson(const Etiqueta2DGuardada& e) {
    return {{"nombre", jsonTexto(e.nombre)},
            {"key", jsonTexto(e.key)},
            {"visible", e.visible},
            {"offsetTexto", jsonPar(e.offsetTexto)}};
}

QJsonObject aJson(const SeccionGuardada& s) {
    return {{"id", jsonUuid(s.id)},
            {"nombre", jsonTexto(s.nombre)},
            {"eje", s.eje},
            {"posicion", s.posicion}};
}

ResultadoJson<Cota2D> cota2DDesdeJson(const QJsonValue& valor, const std::string& ruta) {
    LectorJson l(valor, "Cota2D", ruta);
    Cota2D c;
    c.id = l.uuid("id");
    c.p1 = l.par("p1");
    c.p2 = l.par("p2");
    c.offsetLateral = l.numeroFloat("offsetLateral");
    return l.resultado(std::move(c));
}

ResultadoJson<Etiqueta2DGuardada> etiqueta2DGuardadaDesdeJson(const QJsonValue& valor,
                                                              const std::string& ruta) {
    LectorJson l(valor, "Etiqueta2DGuardada", ruta);
    Etiqueta2DGuardada e;
    e.nombre = l.texto("nombre");
    e.key = l.texto("key");
    e.visible = l.booleano("visible");
    e.offsetTexto = l.par("offsetTexto");
    return l.resultado(std::move(e));
}

ResultadoJson<SeccionGuardada> seccionGuardadaDesdeJson(const QJsonValue& valor,
                                                        const std::string& ruta) {
    LectorJson l(valor, "SeccionGuardada", ruta);
    SeccionGuardada s;
    s.id = l.uuid("id");
    s.nombre = l.texto("nombre");
    s.eje = l.entero("eje");
    s.posicion = l.numero("posicion");
    return l.resultado(std::move(s));
}

// ---------------------------------------------------------------------------
// The timeline.

QJsonObject aJson(const PaqueteAWP& p) {
    QJsonObject o{{"id", jsonUuid(p.id)},
                  {"codigo", jsonTexto(p.codigo)},
                  {"nombre", jsonTexto(p.nombre)},
                  {"nivel", q(textoNivel(p.nivel))},
                  {"fechaInicio", jsonFecha(p.fechaInicio)},
                  {"fechaFin", jsonFecha(p.fechaFin)},
                  {"progreso", p.progreso},
                  {"presupuesto", p.presupuesto},
                  {"costoReal", p.costoReal},
                  {"hh", p.hh},
                  {"hhReal", p.hhReal},
                  {"colorIdx", p.colorIdx}};
    QJsonArray nombres;
    for (const std::string& n : p.elementosNombre) nombres.append(q(n));
    o.insert(QStringLiteral("elementosNombre"), nombres);
    if (p.parentCodigo) o.insert(QStringLiteral("parentCodigo"), q(*p.parentCodigo));
    if (p.fechaInicioReal)
        o.insert(QStringLiteral("fechaInicioReal"), jsonFecha(*p.fechaInicioReal));
    if (p.fechaFinReal) o.insert(QStringLiteral("fechaFinReal"), jsonFecha(*p.fechaFinReal));
    return o;
}

QJsonObject aJson(const TimeLinerConfig& c) {
    return {{"paquetes", aJson(c.paquetes)},
            {"fechaInicio", jsonFecha(c.fechaInicio)},
            {"fechaFin", jsonFecha(c.fechaFin)},
            {"moneda", jsonTexto(c.moneda)}};
}

ResultadoJson<PaqueteAWP> paqueteAWPDesdeJson(const QJsonValue& valor, const std::string& ruta) {
    LectorJson l(valor, "PaqueteAWP", ruta);
    PaqueteAWP p;
    p.id = l.uuid("id");
    p.codigo = l.texto("codigo");
    p.nombre = l.texto("nombre");
    const std::string nivel = l.texto("nivel");
    if (l.ok()) {
        if (const auto n = nivelDesdeTexto(nivel))
            p.nivel = *n;
        else
            l.fallar("La clave \"nivel\" de " + l.donde() + " tiene el valor " +
                     muestra(QString::fromStdString(nivel)) +
                     ", que no es un nivel AWP (CWA, CWP, IWP, PWP).");
    }
    p.parentCodigo = l.textoOpcional("parentCodigo");
    p.fechaInicio = l.fecha("fechaInicio");
    p.fechaFin = l.fecha("fechaFin");
    p.fechaInicioReal = l.fechaOpcional("fechaInicioReal");
    p.fechaFinReal = l.fechaOpcional("fechaFinReal");
    p.progreso = l.numero("progreso");
    p.presupuesto = l.numero("presupuesto");
    p.costoReal = l.numero("costoReal");
    p.hh = l.numero("hh");
    p.hhReal = l.numero("hhReal");
    p.elementosNombre = l.textos("elementosNombre");
    p.colorIdx = l.entero("colorIdx");
    return l.resultado(std::move(p));
}

ResultadoJson<TimeLinerConfig> timeLinerConfigDesdeJson(const QJsonValue& valor,
                                                        const std::string& ruta) {
    LectorJson l(valor, "TimeLinerConfig", ruta);
    TimeLinerConfig c;
    c.paquetes = l.lista("paquetes", paqueteAWPDesdeJson);
    c.fechaInicio = l.fecha("fechaInicio");
    c.fechaFin = l.fecha("fechaFin");
    c.moneda = l.texto("moneda");
    return l.resultado(std::move(c));
}

} // namespace teskal
