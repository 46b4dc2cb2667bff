#include "persistence/ProyectoTESKAL.h"

#include "persistence/JsonRegistros.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

namespace teskal {

namespace {

QJsonObject aJson(const ModeloGuardado& m) {
    QJsonObject o{{"nombre", jsonTexto(m.nombre)},
                  {"rutaAbsoluta", jsonTexto(m.rutaAbsoluta)},
                  {"isVisible", m.isVisible},
                  {"transparencia", m.transparencia}};
    if (m.rutaRelativa) o[QStringLiteral("rutaRelativa")] = jsonTexto(*m.rutaRelativa);
    return o;
}

// A discipline's colour is a float in the workspace: written as its shortest
// decimal (0.85, not 0.8500000238418579) and read back as that same float.
QJsonValue jsonColor(double componente) {
    return jsonFloat(static_cast<float>(componente));
}

QJsonObject aJson(const EspecialidadGuardada& e) {
    QJsonArray modelos;
    for (const auto& m : e.modelos) modelos.append(aJson(m));
    return {{"key", jsonTexto(e.key)},   {"nombre", jsonTexto(e.nombre)}, {"icono", jsonTexto(e.icono)},
            {"colorR", jsonColor(e.colorR)}, {"colorG", jsonColor(e.colorG)}, {"colorB", jsonColor(e.colorB)},
            {"isVisible", e.isVisible}, {"modelos", modelos}};
}

QJsonObject aJson(const InterferenciaGuardada& i) {
    QJsonObject o{{"id", jsonUuid(i.id)},
            {"nombreA", jsonTexto(i.nombreA)},
            {"especialidadA", jsonTexto(i.especialidadA)},
            {"nombreB", jsonTexto(i.nombreB)},
            {"especialidadB", jsonTexto(i.especialidadB)},
            {"estado", jsonTexto(i.estado)},
            {"vpPosX", i.vpPosX},
            {"vpPosY", i.vpPosY},
            {"vpPosZ", i.vpPosZ},
            {"vpTgtX", i.vpTgtX},
            {"vpTgtY", i.vpTgtY},
            {"vpTgtZ", i.vpTgtZ},
            {"radio", i.radio}};
    if (i.globalIdA) o[QStringLiteral("globalIdA")] = jsonTexto(*i.globalIdA);
    if (i.globalIdB) o[QStringLiteral("globalIdB")] = jsonTexto(*i.globalIdB);
    if (i.distancia) o[QStringLiteral("distancia")] = *i.distancia;
    if (i.centroX) o[QStringLiteral("centroX")] = *i.centroX;
    if (i.centroY) o[QStringLiteral("centroY")] = *i.centroY;
    if (i.centroZ) o[QStringLiteral("centroZ")] = *i.centroZ;
    return o;
}

QJsonObject aJson(const AnalisisGuardado& a) {
    QJsonArray lista;
    for (const auto& i : a.interferencias) lista.append(aJson(i));
    QJsonObject o{{"id", jsonUuid(a.id)},
                  {"nombre", jsonTexto(a.nombre)},
                  {"fecha", jsonFecha(a.fecha)},
                  {"tolerancia", a.tolerancia},
                  {"interferencias", lista}};
    if (a.metodo) o[QStringLiteral("metodo")] = jsonTexto(*a.metodo);
    if (a.holgura) o[QStringLiteral("holgura")] = *a.holgura;
    return o;
}

ResultadoJson<ModeloGuardado> modeloDesdeJson(const QJsonValue& v, const std::string& ruta) {
    LectorJson l(v, "ModeloGuardado", ruta);
    ModeloGuardado m{l.texto("nombre"), l.texto("rutaAbsoluta"), l.textoOpcional("rutaRelativa"),
                     l.booleano("isVisible"), l.numero("transparencia")};
    return l.resultado(std::move(m));
}

ResultadoJson<EspecialidadGuardada> especialidadDesdeJson(const QJsonValue& v, const std::string& ruta) {
    LectorJson l(v, "EspecialidadGuardada", ruta);
    EspecialidadGuardada e{l.texto("key"),         l.texto("nombre"),         l.texto("icono"),
                           l.numeroFloat("colorR"), l.numeroFloat("colorG"), l.numeroFloat("colorB"),
                           l.booleano("isVisible"), {}};
    e.modelos = l.lista("modelos", modeloDesdeJson);
    return l.resultado(std::move(e));
}

ResultadoJson<InterferenciaGuardada> interferenciaDesdeJson(const QJsonValue& v, const std::string& ruta) {
    LectorJson l(v, "InterferenciaGuardada", ruta);
    InterferenciaGuardada i{l.uuid("id"),         l.texto("nombreA"), l.texto("especialidadA"), l.texto("nombreB"),
                            l.texto("especialidadB"), l.texto("estado"), l.numero("vpPosX"),      l.numero("vpPosY"),
                            l.numero("vpPosZ"),    l.numero("vpTgtX"), l.numero("vpTgtY"),       l.numero("vpTgtZ"),
                            l.numero("radio"),        l.textoOpcional("globalIdA"), l.textoOpcional("globalIdB"),
                            l.numeroOpcional("distancia"), l.numeroOpcional("centroX"), l.numeroOpcional("centroY"),
                            l.numeroOpcional("centroZ")};
    return l.resultado(std::move(i));
}

ResultadoJson<AnalisisGuardado> analisisDesdeJson(const QJsonValue& v, const std::string& ruta) {
    LectorJson l(v, "AnalisisGuardado", ruta);
    AnalisisGuardado a{l.uuid("id"), l.texto("nombre"), l.fecha("fecha"), l.numero("tolerancia"), {}};
    a.interferencias = l.lista("interferencias", interferenciaDesdeJson);
    a.metodo = l.textoOpcional("metodo");
    a.holgura = l.numeroOpcional("holgura");
    return l.resultado(std::move(a));
}

} // namespace

QByteArray codificarProyecto(const ProyectoTESKAL& p) {
    QJsonObject raiz;
    raiz[QStringLiteral("version")] = p.version;
    QJsonArray orden;
    for (const auto& k : p.ordenEspecialidades) orden.append(jsonTexto(k));
    raiz[QStringLiteral("ordenEspecialidades")] = orden;
    QJsonArray esps;
    for (const auto& e : p.especialidades) esps.append(aJson(e));
    raiz[QStringLiteral("especialidades")] = esps;
    QJsonArray historial;
    for (const auto& a : p.historialAnalisis) historial.append(aJson(a));
    raiz[QStringLiteral("historialAnalisis")] = historial;
    if (p.timeLiner) raiz[QStringLiteral("timeLiner")] = aJson(*p.timeLiner);
    if (p.secciones) raiz[QStringLiteral("secciones")] = aJson(*p.secciones);
    if (p.cotasPorSeccion) raiz[QStringLiteral("cotasPorSeccion")] = aJson(*p.cotasPorSeccion);
    if (p.etiquetasPorSeccion) raiz[QStringLiteral("etiquetasPorSeccion")] = aJson(*p.etiquetasPorSeccion);
    if (p.comentarios) raiz[QStringLiteral("comentarios")] = aJson(*p.comentarios);
    return QJsonDocument(raiz).toJson(QJsonDocument::Indented);
}

std::variant<ProyectoTESKAL, std::string> decodificarProyecto(const QByteArray& datos) {
    QJsonParseError fallo{};
    const QJsonDocument doc = QJsonDocument::fromJson(datos, &fallo);
    if (fallo.error != QJsonParseError::NoError)
        return "el archivo no es un documento JSON válido (" + fallo.errorString().toStdString() + ", posición " +
               std::to_string(fallo.offset) + ").";
    if (!doc.isObject()) return std::string("el documento no es un objeto JSON.");
    LectorJson l(doc.object(), "ProyectoTESKAL");
    ProyectoTESKAL p;
    p.version = l.entero("version");
    p.ordenEspecialidades = l.textos("ordenEspecialidades");
    p.especialidades = l.lista("especialidades", especialidadDesdeJson);
    p.historialAnalisis = l.lista("historialAnalisis", analisisDesdeJson);
    p.timeLiner = l.objetoOpcional("timeLiner", timeLinerConfigDesdeJson);
    p.secciones = l.listaOpcional("secciones", seccionGuardadaDesdeJson);
    p.cotasPorSeccion = l.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson);
    p.etiquetasPorSeccion = l.diccionarioDeListasOpcional("etiquetasPorSeccion", etiqueta2DGuardadaDesdeJson);
    p.comentarios = l.listaOpcional("comentarios", comentarioMarkupDesdeJson);
    if (!l.ok()) return l.error();
    return p;
}

} // namespace teskal
