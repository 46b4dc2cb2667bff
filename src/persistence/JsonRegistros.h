#pragma once

#include "sections/SeccionGuardada.h"
#include "timeline/PaqueteAWP.h"
#include "viewport/markup/ComentarioMarkup.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <concepts>
#include <glm/vec2.hpp>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// The JSON forms of the records that the project document carries next to its
// disciplines and analyses: markup comments, saved sections with their
// dimensions and labels, and the timeline. Encoding writes every required key
// and leaves absent optionals out; decoding is strict and reports the first
// fault as one complete Spanish sentence that names the key, the record and
// where the record stands in the document.
//
// Value encodings: dates as "yyyy-MM-ddTHH:mm:ssZ" in UTC; UUIDs as upper-case
// text 8-4-4-4-12; binary data as base64; a pair of floats as [x, y]; 32-bit
// floats by their shortest decimal form, so that 0.6 reads back as 0.6f.
namespace teskal {

// The outcome of decoding one record: the record, or the reason it can't be read.
template <typename T> struct ResultadoJson {
    using Tipo = T;
    std::optional<T> valor;
    std::string error; // empty on success
    bool ok() const { return valor.has_value(); }
};

// "2024-03-05T14:07:09Z": the instant in UTC, whole seconds.
QString textoFechaJson(const QDateTime& fecha);
// An ISO 8601 date and time with its zone: "Z" or an offset ("+02:00", "-0300"),
// with or without fractional seconds (kept to the millisecond). No zone, or an
// impossible date or time, gives nothing.
std::optional<QDateTime> fechaDesdeTextoJson(QStringView texto);
// A UUID of the form 8-4-4-4-12 in either case, in upper case; anything else
// (braces included) gives nothing.
std::optional<std::string> uuidDesdeTexto(QStringView texto);

QJsonValue jsonFecha(const QDateTime& fecha);
QJsonValue jsonUuid(const std::string& id);
QJsonValue jsonTexto(const std::string& texto);
// The shortest decimal that reads back as the same float.
QJsonValue jsonFloat(float valor);
QJsonArray jsonPar(glm::vec2 par);
QJsonValue jsonDatos(const QByteArray& datos);

// Reads one JSON object as the record `registro`, found at `ruta` in the
// document ("comentarios[2].trazados[0]"; empty for a record read alone). The
// first fault is kept and every later read returns a default value, so that a
// decoder can read all its keys and ask once at the end.
class LectorJson {
public:
    LectorJson(const QJsonValue& valor, std::string registro, std::string ruta = {});

    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& ruta() const { return ruta_; }
    // The record and its place, for messages: "PaqueteAWP (timeLiner.paquetes[3])".
    std::string donde() const;
    // Keeps `mensaje` unless a fault is already kept.
    void fallar(std::string mensaje);

    // Required keys: a missing key, or a value of another type, is a fault.
    std::string texto(std::string_view clave);
    double numero(std::string_view clave);
    float numeroFloat(std::string_view clave);
    int entero(std::string_view clave);
    bool booleano(std::string_view clave);
    std::string uuid(std::string_view clave);
    QDateTime fecha(std::string_view clave);
    glm::vec2 par(std::string_view clave);
    std::vector<std::string> textos(std::string_view clave);

    // Optional keys: missing or null gives nothing; a value of another type is
    // a fault.
    std::optional<std::string> textoOpcional(std::string_view clave);
    std::optional<double> numeroOpcional(std::string_view clave);
    std::optional<QDateTime> fechaOpcional(std::string_view clave);
    std::optional<QByteArray> datosOpcional(std::string_view clave);

    // Nested records, each read by `decodificar(valor, ruta)`, a decoder such
    // as comentarioMarkupDesdeJson.
    template <typename F> auto objeto(std::string_view clave, F decodificar);
    template <typename F> auto objetoOpcional(std::string_view clave, F decodificar);
    template <typename F> auto lista(std::string_view clave, F decodificar);
    template <typename F> auto listaOpcional(std::string_view clave, F decodificar);
    // A dictionary from text to a list of records ("cotasPorSeccion").
    template <typename F> auto diccionarioDeListas(std::string_view clave, F decodificar);
    template <typename F> auto diccionarioDeListasOpcional(std::string_view clave, F decodificar);

    // The record read, or the fault.
    template <typename T> ResultadoJson<T> resultado(T valor) const {
        if (!ok()) return {std::nullopt, error_};
        return {std::move(valor), {}};
    }

private:
    // The value of a key; nothing when it is missing (a fault if `requerida`)
    // or, for an optional key, null.
    std::optional<QJsonValue> valor(std::string_view clave, bool requerida);
    void tipoIncorrecto(std::string_view clave, std::string_view esperado);
    std::string rutaDe(std::string_view clave) const;
    std::optional<QJsonArray> arreglo(std::string_view clave, bool requerida);
    std::optional<QJsonObject> diccionario(std::string_view clave, bool requerida);

    template <typename F>
    auto elementos(const QJsonArray& a, const std::string& base, F& decodificar);
    template <typename F>
    auto listasPorClave(const QJsonObject& o, std::string_view clave, F& decodificar);

    QJsonObject objeto_;
    std::string registro_;
    std::string ruta_;
    std::string error_;
};

template <typename F>
using RegistroDe = typename std::invoke_result_t<F&, const QJsonValue&, const std::string&>::Tipo;

template <typename F>
auto LectorJson::elementos(const QJsonArray& a, const std::string& base, F& decodificar) {
    std::vector<RegistroDe<F>> r;
    r.reserve(static_cast<std::size_t>(a.size()));
    for (qsizetype i = 0; i < a.size() && ok(); ++i) {
        auto leido = decodificar(a.at(i), base + "[" + std::to_string(i) + "]");
        if (!leido.ok())
            fallar(std::move(leido.error));
        else
            r.push_back(std::move(*leido.valor));
    }
    if (!ok()) r.clear();
    return r;
}

template <typename F>
auto LectorJson::listasPorClave(const QJsonObject& o, std::string_view clave, F& decodificar) {
    std::map<std::string, std::vector<RegistroDe<F>>> r;
    for (auto it = o.begin(); it != o.end() && ok(); ++it) {
        const std::string titulo = it.key().toStdString();
        const std::string base = rutaDe(clave) + "[\"" + titulo + "\"]";
        if (!it.value().isArray()) {
            fallar("El valor " + base + " de " + donde() + " no es una lista.");
            break;
        }
        r[titulo] = elementos(it.value().toArray(), base, decodificar);
    }
    if (!ok()) r.clear();
    return r;
}

template <typename F> auto LectorJson::objeto(std::string_view clave, F decodificar) {
    RegistroDe<F> r{};
    if (const auto v = valor(clave, true)) {
        auto leido = decodificar(*v, rutaDe(clave));
        if (leido.ok())
            r = std::move(*leido.valor);
        else
            fallar(std::move(leido.error));
    }
    return r;
}

template <typename F> auto LectorJson::objetoOpcional(std::string_view clave, F decodificar) {
    std::optional<RegistroDe<F>> r;
    if (const auto v = valor(clave, false)) {
        auto leido = decodificar(*v, rutaDe(clave));
        if (leido.ok())
            r = std::move(leido.valor);
        else
            fallar(std::move(leido.error));
    }
    return r;
}

template <typename F> auto LectorJson::lista(std::string_view clave, F decodificar) {
    std::vector<RegistroDe<F>> r;
    if (const auto a = arreglo(clave, true)) r = elementos(*a, rutaDe(clave), decodificar);
    return r;
}

template <typename F> auto LectorJson::listaOpcional(std::string_view clave, F decodificar) {
    std::optional<std::vector<RegistroDe<F>>> r;
    if (const auto a = arreglo(clave, false)) {
        auto lista = elementos(*a, rutaDe(clave), decodificar);
        if (ok()) r = std::move(lista);
    }
    return r;
}

template <typename F> auto LectorJson::diccionarioDeListas(std::string_view clave, F decodificar) {
    std::map<std::string, std::vector<RegistroDe<F>>> r;
    if (const auto o = diccionario(clave, true)) r = listasPorClave(*o, clave, decodificar);
    return r;
}

template <typename F>
auto LectorJson::diccionarioDeListasOpcional(std::string_view clave, F decodificar) {
    std::optional<std::map<std::string, std::vector<RegistroDe<F>>>> r;
    if (const auto o = diccionario(clave, false)) {
        auto mapa = listasPorClave(*o, clave, decodificar);
        if (ok()) r = std::move(mapa);
    }
    return r;
}

// Markup comments.
QJsonObject aJson(const PuntoMarkup& p);
QJsonObject aJson(const TrazadoMarkup& t);
QJsonObject aJson(const TextoMarkup& t);
QJsonObject aJson(const ComentarioMarkup& c);
ResultadoJson<PuntoMarkup> puntoMarkupDesdeJson(const QJsonValue& valor,
                                                const std::string& ruta = {});
ResultadoJson<TrazadoMarkup> trazadoMarkupDesdeJson(const QJsonValue& valor,
                                                    const std::string& ruta = {});
ResultadoJson<TextoMarkup> textoMarkupDesdeJson(const QJsonValue& valor,
                                                const std::string& ruta = {});
ResultadoJson<ComentarioMarkup> comentarioMarkupDesdeJson(const QJsonValue& valor,
                                                          const std::string& ruta = {});

// Sections, dimensions and labels.
QJsonObject aJson(const Cota2D& c);
QJsonObject aJson(const Etiqueta2DGuardada& e);
QJsonObject aJson(const SeccionGuardada& s);
ResultadoJson<Cota2D> cota2DDesdeJson(const QJsonValue& valor, const std::string& ruta = {});
ResultadoJson<Etiqueta2DGuardada> etiqueta2DGuardadaDesdeJson(const QJsonValue& valor,
                                                              const std::string& ruta = {});
ResultadoJson<SeccionGuardada> seccionGuardadaDesdeJson(const QJsonValue& valor,
                                                        const std::string& ruta = {});

// The timeline.
QJsonObject aJson(const PaqueteAWP& p);
QJsonObject aJson(const TimeLinerConfig& c);
ResultadoJson<PaqueteAWP> paqueteAWPDesdeJson(const QJsonValue& valor,
                                              const std::string& ruta = {});
ResultadoJson<TimeLinerConfig> timeLinerConfigDesdeJson(const QJsonValue& valor,
                                                        const std::string& ruta = {});

// A list of records as a JSON array, and a dictionary from text to lists of
// records ("cotasPorSeccion", "etiquetasPorSeccion") as a JSON object.
template <typename T>
requires requires(const T& t) {
    { aJson(t) } -> std::same_as<QJsonObject>;
}
QJsonArray aJson(const std::vector<T>& lista) {
    QJsonArray a;
    for (const T& t : lista) a.append(aJson(t));
    return a;
}

template <typename T>
requires requires(const T& t) {
    { aJson(t) } -> std::same_as<QJsonObject>;
}
QJsonObject aJson(const std::map<std::string, std::vector<T>>& porClave) {
    QJsonObject o;
    for (const auto& [clave, lista] : porClave)
        o.insert(QString::fromStdString(clave), aJson(lista));
    return o;
}

} // namespace teskal
