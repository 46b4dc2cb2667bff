#include "persistence/ProyectoTESKAL.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QTimeZone>
#include <QUuid>
#include <cmath>

namespace teskal {

namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

// Reads required and optional keys of one object; the first fault is kept,
// as a complete sentence naming the key and the record.
class Lector {
public:
    Lector(const QJsonObject& o, const char* registro, std::string& error) : o_(o), registro_(registro), error_(error) {}

    bool tiene(const char* clave) const { return o_.contains(QLatin1String(clave)); }
    QJsonValue valor(const char* clave) {
        if (!error_.empty()) return {};
        const QJsonValue v = o_.value(QLatin1String(clave));
        if (v.isUndefined()) fallar(std::string("falta la clave \"") + clave + "\" en " + registro_ + ".");
        return v;
    }
    std::string texto(const char* clave) {
        const QJsonValue v = valor(clave);
        if (!error_.empty()) return {};
        if (!v.isString()) fallar(tipo(clave, "un texto"));
        return v.toString().toStdString();
    }
    double numero(const char* clave) {
        const QJsonValue v = valor(clave);
        if (!error_.empty()) return 0;
        if (!v.isDouble()) fallar(tipo(clave, "un número"));
        return v.toDouble();
    }
    int entero(const char* clave) {
        const double d = numero(clave);
        if (error_.empty() && (d != static_cast<double>(static_cast<long long>(d)) || std::abs(d) > 2147483647.0))
            fallar(tipo(clave, "un número entero"));
        return static_cast<int>(d);
    }
    bool booleano(const char* clave) {
        const QJsonValue v = valor(clave);
        if (!error_.empty()) return false;
        if (!v.isBool()) fallar(tipo(clave, "un valor lógico"));
        return v.toBool();
    }
    QJsonArray lista(const char* clave) {
        const QJsonValue v = valor(clave);
        if (!error_.empty()) return {};
        if (!v.isArray()) fallar(tipo(clave, "una lista"));
        return v.toArray();
    }
    std::string uuid(const char* clave) {
        const std::string t = texto(clave);
        if (error_.empty() && QUuid::fromString(q(t)).isNull()) fallar(tipo(clave, "un UUID"));
        return QString::fromStdString(t).toUpper().toStdString();
    }
    QDateTime fecha(const char* clave) {
        const std::string t = texto(clave);
        if (!error_.empty()) return {};
        const auto f = fechaDesdeTexto(q(t));
        if (!f) fallar(tipo(clave, "una fecha ISO 8601"));
        return f.value_or(QDateTime());
    }
    void fallar(std::string mensaje) {
        if (error_.empty()) error_ = std::move(mensaje);
    }

private:
    std::string tipo(const char* clave, const char* esperado) const {
        return std::string("la clave \"") + clave + "\" de " + registro_ + " no es " + esperado + ".";
    }
    const QJsonObject& o_;
    const char* registro_;
    std::string& error_;
};

QJsonObject objetoDe(const QJsonValue& v, const char* registro, std::string& error) {
    if (!v.isObject() && error.empty()) error = std::string("un elemento de ") + registro + " no es un objeto.";
    return v.toObject();
}

} // namespace

QString textoFecha(const QDateTime& fecha) {
    return fecha.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) + QStringLiteral("Z");
}

std::optional<QDateTime> fechaDesdeTexto(const QString& texto) {
    QDateTime f = QDateTime::fromString(texto, Qt::ISODateWithMs);
    if (!f.isValid()) f = QDateTime::fromString(texto, Qt::ISODate);
    if (!f.isValid() || f.timeSpec() == Qt::LocalTime) return std::nullopt; // a zone is required
    return f.toUTC();
}

QByteArray codificarProyecto(const ProyectoTESKAL& p) {
    QJsonObject raiz = p.opcionales;
    raiz[QStringLiteral("version")] = p.version;
    QJsonArray orden;
    for (const auto& k : p.ordenEspecialidades) orden.append(q(k));
    raiz[QStringLiteral("ordenEspecialidades")] = orden;
    QJsonArray esps;
    for (const auto& e : p.especialidades) {
        QJsonArray modelos;
        for (const auto& m : e.modelos) {
            QJsonObject o{{"nombre", q(m.nombre)},
                          {"rutaAbsoluta", q(m.rutaAbsoluta)},
                          {"isVisible", m.isVisible},
                          {"transparencia", m.transparencia}};
            if (m.rutaRelativa) o[QStringLiteral("rutaRelativa")] = q(*m.rutaRelativa);
            modelos.append(o);
        }
        esps.append(QJsonObject{{"key", q(e.key)},
                                {"nombre", q(e.nombre)},
                                {"icono", q(e.icono)},
                                {"colorR", e.colorR},
                                {"colorG", e.colorG},
                                {"colorB", e.colorB},
                                {"isVisible", e.isVisible},
                                {"modelos", modelos}});
    }
    raiz[QStringLiteral("especialidades")] = esps;
    QJsonArray historial;
    for (const auto& a : p.historialAnalisis) {
        QJsonArray lista;
        for (const auto& i : a.interferencias)
            lista.append(QJsonObject{{"id", q(i.id)},
                                     {"nombreA", q(i.nombreA)},
                                     {"especialidadA", q(i.especialidadA)},
                                     {"nombreB", q(i.nombreB)},
                                     {"especialidadB", q(i.especialidadB)},
                                     {"estado", q(i.estado)},
                                     {"vpPosX", i.vpPosX},
                                     {"vpPosY", i.vpPosY},
                                     {"vpPosZ", i.vpPosZ},
                                     {"vpTgtX", i.vpTgtX},
                                     {"vpTgtY", i.vpTgtY},
                                     {"vpTgtZ", i.vpTgtZ},
                                     {"radio", i.radio}});
        historial.append(QJsonObject{{"id", q(a.id)},
                                     {"nombre", q(a.nombre)},
                                     {"fecha", textoFecha(a.fecha)},
                                     {"tolerancia", a.tolerancia},
                                     {"interferencias", lista}});
    }
    raiz[QStringLiteral("historialAnalisis")] = historial;
    return QJsonDocument(raiz).toJson(QJsonDocument::Indented);
}

std::variant<ProyectoTESKAL, std::string> decodificarProyecto(const QByteArray& datos) {
    QJsonParseError fallo{};
    const QJsonDocument doc = QJsonDocument::fromJson(datos, &fallo);
    if (fallo.error != QJsonParseError::NoError)
        return "el archivo no es un documento JSON válido (" + fallo.errorString().toStdString() + ", posición " +
               std::to_string(fallo.offset) + ").";
    if (!doc.isObject()) return std::string("el documento no es un objeto JSON.");
    std::string error;
    const QJsonObject raiz = doc.object();
    Lector r(raiz, "el proyecto", error);
    ProyectoTESKAL p;
    p.version = r.entero("version");
    for (const auto& v : r.lista("ordenEspecialidades")) {
        if (!v.isString()) r.fallar("un elemento de \"ordenEspecialidades\" no es un texto.");
        p.ordenEspecialidades.push_back(v.toString().toStdString());
    }
    for (const auto& v : r.lista("especialidades")) {
        const QJsonObject o = objetoDe(v, "especialidades", error);
        Lector e(o, "EspecialidadGuardada", error);
        EspecialidadGuardada eg{e.texto("key"),        e.texto("nombre"),  e.texto("icono"),
                                e.numero("colorR"),    e.numero("colorG"), e.numero("colorB"),
                                e.booleano("isVisible"), {}};
        for (const auto& vm : e.lista("modelos")) {
            const QJsonObject om = objetoDe(vm, "modelos", error);
            Lector m(om, "ModeloGuardado", error);
            ModeloGuardado mg{m.texto("nombre"), m.texto("rutaAbsoluta"), std::nullopt, m.booleano("isVisible"),
                              m.numero("transparencia")};
            if (m.tiene("rutaRelativa")) mg.rutaRelativa = m.texto("rutaRelativa");
            eg.modelos.push_back(std::move(mg));
        }
        p.especialidades.push_back(std::move(eg));
    }
    for (const auto& v : r.lista("historialAnalisis")) {
        const QJsonObject o = objetoDe(v, "historialAnalisis", error);
        Lector a(o, "AnalisisGuardado", error);
        AnalisisGuardado ag{a.uuid("id"), a.texto("nombre"), a.fecha("fecha"), a.numero("tolerancia"), {}};
        for (const auto& vi : a.lista("interferencias")) {
            const QJsonObject oi = objetoDe(vi, "interferencias", error);
            Lector i(oi, "InterferenciaGuardada", error);
            ag.interferencias.push_back({i.uuid("id"), i.texto("nombreA"), i.texto("especialidadA"),
                                         i.texto("nombreB"), i.texto("especialidadB"), i.texto("estado"),
                                         i.numero("vpPosX"), i.numero("vpPosY"), i.numero("vpPosZ"),
                                         i.numero("vpTgtX"), i.numero("vpTgtY"), i.numero("vpTgtZ"),
                                         i.numero("radio")});
        }
        p.historialAnalisis.push_back(std::move(ag));
    }
    if (!error.empty()) return error;
    for (const char* clave : {"timeLiner", "secciones", "cotasPorSeccion", "etiquetasPorSeccion", "comentarios"})
        if (raiz.contains(QLatin1String(clave)) && !raiz.value(QLatin1String(clave)).isNull())
            p.opcionales[QLatin1String(clave)] = raiz.value(QLatin1String(clave));
    return p;
}

} // namespace teskal
