// The JSON forms of comments, sections, dimensions, labels and the timeline:
// round trips through the document's text, the exact keys of each record,
// strict reading with its messages, dates, UUIDs, floats, and the label
// conversion between the sheet and the project.
#include "persistence/JsonRegistros.h"

#include <QJsonDocument>
#include <functional>
#include <map>
#include <QTimeZone>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace teskal;

namespace {

const QDateTime kFecha(QDate(2024, 3, 5), QTime(14, 7, 9), Qt::UTC);

// A value through the document's text and back, as a saved file would take it.
QJsonObject porTexto(const QJsonObject& o) {
    return QJsonDocument::fromJson(QJsonDocument(o).toJson(QJsonDocument::Indented)).object();
}

std::string compacto(const QJsonObject& o) {
    return QJsonDocument(o).toJson(QJsonDocument::Compact).toStdString();
}

std::set<std::string> claves(const QJsonObject& o) {
    std::set<std::string> r;
    for (const QString& k : o.keys()) r.insert(k.toStdString());
    return r;
}

// Encodes, writes as text, reads, decodes: the record comes back equal, and
// encoding it again gives the same bytes.
template <typename T, typename F> void idaYVuelta(const T& original, F decodificar) {
    const QJsonObject json = aJson(original);
    const auto leido = decodificar(porTexto(json), std::string{});
    ASSERT_TRUE(leido.ok()) << leido.error;
    EXPECT_TRUE(*leido.valor == original);
    EXPECT_EQ(QJsonDocument(aJson(*leido.valor)).toJson(), QJsonDocument(json).toJson());
}

// A decoder as the message it gives for an object; empty when it reads.
using Error = std::function<std::string(const QJsonObject&)>;
template <typename F> Error error(F decodificar) {
    return [decodificar](const QJsonObject& o) { return decodificar(o, std::string{}).error; };
}

TrazadoMarkup trazado(const std::string& id, std::vector<PuntoMarkup> puntos) {
    return {id, std::move(puntos), 1.0, 0.15, 0.15, 4.5};
}

ComentarioMarkup comentarioCompleto() {
    ComentarioMarkup c;
    c.id = "0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0";
    c.tag = "MRK-007";
    c.trazados = {
        trazado("11111111-2222-3333-4444-555555555555", {{10.5, 20.25}, {11, 22}, {-3.125, 1e6}}),
        trazado("AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE", {{0.1, 0.2}})};
    c.textos = {{"99999999-8888-7777-6666-555555555555", "Fisura en losa — revisar ñ", 120.5, 64,
                 1.0, 0.9, 0.0, 16},
                {"12345678-9ABC-DEF0-1234-56789ABCDEF0", "", 0, 0, 0.3, 0.6, 1.0, 22.5}};
    c.imagenJPEG = QByteArray("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\xFF\xD9", 13);
    c.fecha = kFecha;
    c.autor = "Ana Muñoz";
    c.descripcion = "Interferencia entre ducto y viga.\nVer eje C-4.";
    return c;
}

Cota2D cota() {
    return {"C0DE0000-0000-4000-8000-00000000C07A", {1.25f, -3.5f}, {0.1f, 7.3f}, 0.6f};
}

SeccionGuardada seccion() {
    return {"5EC00000-0000-4000-8000-000000000001", "Planta baja", 1, 1.004};
}

Etiqueta2DGuardada etiquetaG() {
    return {"Muro Básico:Genérico 200 mm", "ARQ", true, {0.75f, -1.2f}};
}

PaqueteAWP paqueteCompleto() {
    PaqueteAWP p;
    p.id = "A1B2C3D4-E5F6-4789-ABCD-EF0123456789";
    p.codigo = "IWP-01.02";
    p.nombre = "Hormigonado losa nivel 2";
    p.nivel = NivelAWP::iwp;
    p.parentCodigo = "CWP-01";
    p.fechaInicio = kFecha;
    p.fechaFin = kFecha.addDays(30);
    p.fechaInicioReal = kFecha.addDays(2);
    p.fechaFinReal = kFecha.addDays(35).addSecs(3600);
    p.progreso = 0.35;
    p.presupuesto = 125000.5;
    p.costoReal = 48000.25;
    p.hh = 820;
    p.hhReal = 301.75;
    p.elementosNombre = {"Losa:200mm:101", "Losa:200mm:102", "Viga V-3"};
    p.colorIdx = 11;
    return p;
}

PaqueteAWP paqueteMinimo() {
    PaqueteAWP p;
    p.id = "00000000-0000-0000-0000-000000000000";
    p.codigo = "CWA-A";
    p.nivel = NivelAWP::cwa;
    p.fechaInicio = kFecha;
    p.fechaFin = kFecha;
    return p;
}

TimeLinerConfig configuracion() {
    TimeLinerConfig c;
    c.paquetes = {paqueteMinimo(), paqueteCompleto()};
    c.fechaInicio = kFecha;
    c.fechaFin = kFecha.addMonths(12);
    c.moneda = "CLP";
    return c;
}

} // namespace

TEST(RegistrosJson, idaYVueltaDeCadaRegistro) {
    {
        SCOPED_TRACE("markup");
        const ComentarioMarkup c = comentarioCompleto();
        idaYVuelta(c.trazados[0].puntos[2], puntoMarkupDesdeJson);
        idaYVuelta(c.trazados[0], trazadoMarkupDesdeJson);
        idaYVuelta(c.trazados[1], trazadoMarkupDesdeJson);
        idaYVuelta(TrazadoMarkup{"AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE", {}, 0, 0, 0, 1},
                   trazadoMarkupDesdeJson);
        idaYVuelta(c.textos[0], textoMarkupDesdeJson);
        idaYVuelta(c, comentarioMarkupDesdeJson);
        ComentarioMarkup sinImagen = c;
        sinImagen.imagenJPEG.reset();
        idaYVuelta(sinImagen, comentarioMarkupDesdeJson);
        // An empty picture is still a picture: it comes back present.
        ComentarioMarkup imagenVacia = c;
        imagenVacia.imagenJPEG = QByteArray();
        idaYVuelta(imagenVacia, comentarioMarkupDesdeJson);
        ComentarioMarkup vacio = c;
        vacio.trazados.clear();
        vacio.textos.clear();
        idaYVuelta(vacio, comentarioMarkupDesdeJson);
    }
    {
        SCOPED_TRACE("secciones");
        idaYVuelta(cota(), cota2DDesdeJson);
        idaYVuelta(Cota2D{"C0DE0000-0000-4000-8000-00000000C07B",
                          {-1e-7f, 3.4e38f},
                          {123456.789f, 0.0f},
                          -2.3f},
                   cota2DDesdeJson);
        idaYVuelta(etiquetaG(), etiqueta2DGuardadaDesdeJson);
        idaYVuelta(Etiqueta2DGuardada{"", "MEP", false, {0, 0}}, etiqueta2DGuardadaDesdeJson);
        idaYVuelta(seccion(), seccionGuardadaDesdeJson);
        idaYVuelta(SeccionGuardada{"5EC00000-0000-4000-8000-000000000002", "Corte X", 0, -12.5},
                   seccionGuardadaDesdeJson);
    }
    {
        SCOPED_TRACE("timeline");
        idaYVuelta(paqueteCompleto(), paqueteAWPDesdeJson);
        idaYVuelta(paqueteMinimo(), paqueteAWPDesdeJson);
        // Each level by its exact text.
        const char* textos[] = {"CWA", "CWP", "IWP", "PWP"};
        for (std::size_t i = 0; i < nivelesAWP.size(); ++i) {
            PaqueteAWP p = paqueteMinimo();
            p.nivel = nivelesAWP[i];
            idaYVuelta(p, paqueteAWPDesdeJson);
            EXPECT_EQ(aJson(p)["nivel"].toString(), textos[i]);
        }
        idaYVuelta(configuracion(), timeLinerConfigDesdeJson);
        idaYVuelta(TimeLinerConfig::porDefecto(kFecha), timeLinerConfigDesdeJson);
    }
}

// Each record's exact keys; removing any one of them, an optional one still
// reads and a required one fails naming the key and the record.
TEST(RegistrosJson, clavesExactasRequeridasYOpcionales) {
    const ComentarioMarkup c = comentarioCompleto();
    ComentarioMarkup sinImagen = c;
    sinImagen.imagenJPEG.reset();
    const std::set<std::string> comentario{"id",         "tag",   "trazados", "textos",
                                           "imagenJPEG", "fecha", "autor",    "descripcion"};
    const std::set<std::string> paquete{
        "id",       "codigo",          "nombre",          "nivel",    "parentCodigo", "fechaInicio",
        "fechaFin", "fechaInicioReal", "fechaFinReal",    "progreso", "presupuesto",  "costoReal",
        "hh",       "hhReal",          "elementosNombre", "colorIdx"};
    const std::set<std::string> opcionalesPaquete{"parentCodigo", "fechaInicioReal", "fechaFinReal"};
    auto sin = [](std::set<std::string> s, const std::set<std::string>& quitar) {
        for (const std::string& k : quitar) s.erase(k);
        return s;
    };
    struct Caso {
        const char* registro;
        QJsonObject json;
        Error decodificar;
        std::set<std::string> claves, opcionales;
    };
    const std::vector<Caso> casos = {
        {"PuntoMarkup", aJson(c.trazados[0].puntos[0]), error(puntoMarkupDesdeJson), {"x", "y"}},
        {"TrazadoMarkup", aJson(c.trazados[0]), error(trazadoMarkupDesdeJson),
         {"id", "puntos", "r", "g", "b", "grosor"}},
        {"TextoMarkup", aJson(c.textos[0]), error(textoMarkupDesdeJson),
         {"id", "texto", "x", "y", "r", "g", "b", "tamano"}},
        {"ComentarioMarkup", aJson(c), error(comentarioMarkupDesdeJson), comentario, {"imagenJPEG"}},
        {"ComentarioMarkup", aJson(sinImagen), error(comentarioMarkupDesdeJson), sin(comentario, {"imagenJPEG"})},
        {"Cota2D", aJson(cota()), error(cota2DDesdeJson), {"id", "p1", "p2", "offsetLateral"}},
        {"Etiqueta2DGuardada", aJson(etiquetaG()), error(etiqueta2DGuardadaDesdeJson),
         {"nombre", "key", "visible", "offsetTexto"}},
        {"SeccionGuardada", aJson(seccion()), error(seccionGuardadaDesdeJson), {"id", "nombre", "eje", "posicion"}},
        {"PaqueteAWP", aJson(paqueteCompleto()), error(paqueteAWPDesdeJson), paquete, opcionalesPaquete},
        {"PaqueteAWP", aJson(paqueteMinimo()), error(paqueteAWPDesdeJson), sin(paquete, opcionalesPaquete)},
        {"TimeLinerConfig", aJson(configuracion()), error(timeLinerConfigDesdeJson),
         {"paquetes", "fechaInicio", "fechaFin", "moneda"}},
    };
    for (const Caso& caso : casos) {
        SCOPED_TRACE(std::string(caso.registro) + " of " + std::to_string(caso.claves.size()) + " keys");
        EXPECT_EQ(claves(caso.json), caso.claves);
        for (const std::string& k : caso.claves) {
            SCOPED_TRACE(k);
            QJsonObject o = caso.json;
            o.remove(QString::fromStdString(k));
            EXPECT_EQ(caso.decodificar(o),
                      caso.opcionales.contains(k) ? "" : "Falta la clave \"" + k + "\" en " + caso.registro + ".");
        }
    }
}

TEST(RegistrosJson, valoresCodificados) {
    const QJsonObject c = aJson(comentarioCompleto());
    EXPECT_EQ(c["fecha"].toString(), "2024-03-05T14:07:09Z");
    EXPECT_EQ(c["imagenJPEG"].toString(), "/9j/4AAQSkZJRgD/2Q==");
    EXPECT_EQ(c["trazados"].toArray().size(), 2);
    EXPECT_EQ(c["trazados"][0]["puntos"][1]["y"].toDouble(), 22.0);

    const QJsonObject p = aJson(paqueteCompleto());
    EXPECT_EQ(p["parentCodigo"].toString(), "CWP-01");
    EXPECT_EQ(p["fechaFinReal"].toString(), "2024-04-09T15:07:09Z");
    EXPECT_EQ(p["elementosNombre"].toArray(),
              (QJsonArray{"Losa:200mm:101", "Losa:200mm:102", "Viga V-3"}));

    // Integers stay integers in the text, floats keep their short form.
    const std::pair<std::string, const char*> textos[] = {
        {compacto(aJson(seccion())), "\"eje\":1,"},
        {compacto(p), "\"colorIdx\":11,"},
        {compacto(aJson(cota())), "\"offsetLateral\":0.6,"},
        {compacto(aJson(cota())), "\"p2\":[0.1,7.3]"},
        {compacto(aJson(cota())), "\"p1\":[1.25,-3.5]"},
        {compacto(aJson(etiquetaG())), "\"visible\":true"},
        {compacto(aJson(etiquetaG())), "\"offsetTexto\":[0.75,-1.2]"}};
    for (const auto& [texto, parte] : textos)
        EXPECT_NE(texto.find(parte), std::string::npos) << texto;
}

TEST(RegistrosJson, nulosYTiposIncorrectos) {
    // A null optional reads as absent (its absence is read in
    // clavesRequeridasYOpcionales); a null required key is a fault.
    QJsonObject p = aJson(paqueteCompleto());
    for (const char* k : {"parentCodigo", "fechaInicioReal", "fechaFinReal"})
        p.insert(QLatin1String(k), QJsonValue());
    const auto leido = paqueteAWPDesdeJson(p);
    ASSERT_TRUE(leido.ok()) << leido.error;
    EXPECT_FALSE(leido.valor->parentCodigo || leido.valor->fechaInicioReal ||
                 leido.valor->fechaFinReal);
    QJsonObject c = aJson(comentarioCompleto());
    c.insert("imagenJPEG", QJsonValue());
    EXPECT_FALSE(comentarioMarkupDesdeJson(c).valor->imagenJPEG);

    // Each record with one key of the wrong kind: the message names the key,
    // the record and what was expected.
    const ComentarioMarkup com = comentarioCompleto();
    const std::map<std::string, std::pair<QJsonObject, Error>> registros = {
        {"PuntoMarkup", {aJson(com.trazados[0].puntos[0]), error(puntoMarkupDesdeJson)}},
        {"TextoMarkup", {aJson(com.textos[0]), error(textoMarkupDesdeJson)}},
        {"ComentarioMarkup", {aJson(com), error(comentarioMarkupDesdeJson)}},
        {"Cota2D", {aJson(cota()), error(cota2DDesdeJson)}},
        {"Etiqueta2DGuardada", {aJson(etiquetaG()), error(etiqueta2DGuardadaDesdeJson)}},
        {"SeccionGuardada", {aJson(seccion()), error(seccionGuardadaDesdeJson)}},
        {"PaqueteAWP", {aJson(paqueteMinimo()), error(paqueteAWPDesdeJson)}},
    };
    const QJsonValue nulo;
    const std::string par = "no es un par de números [x, y].";
    const std::string nivel = "que no es un nivel AWP (CWA, CWP, IWP, PWP).";
    struct Caso {
        const char* registro;
        const char* clave;
        QJsonValue valor;
        std::string error; // after "La clave "k" de R "; a whole message when it starts "El"
    };
    const std::vector<Caso> casos = {
        {"PuntoMarkup", "x", "1", "no es un número."},
        {"TextoMarkup", "texto", 7, "no es un texto."},
        {"ComentarioMarkup", "trazados", QJsonObject{}, "no es una lista."},
        {"ComentarioMarkup", "fecha", "05/03/2024", "no es una fecha ISO 8601: \"05/03/2024\"."},
        {"ComentarioMarkup", "fecha", 1709647629, "no es una fecha ISO 8601."},
        {"ComentarioMarkup", "imagenJPEG", "no es base64!", "no es un texto base64 válido."},
        {"ComentarioMarkup", "imagenJPEG", true, "no es un texto base64."},
        {"Cota2D", "id", "1234", "no es un UUID: \"1234\"."},
        {"Cota2D", "id", "{C0DE0000-0000-4000-8000-00000000C07A}",
         "no es un UUID: \"{C0DE0000-0000-4000-8000-00000000C07A}\"."},
        {"Cota2D", "p1", QJsonArray{1, 2, 3}, par},
        {"Cota2D", "p1", QJsonArray{1}, par},
        {"Cota2D", "p1", QJsonArray{1, "2"}, par},
        {"Cota2D", "p1", QJsonObject{{"x", 1}, {"y", 2}}, par},
        {"Cota2D", "p1", 1.5, par},
        {"Cota2D", "offsetLateral", 1e300, "no es un número representable en 32 bits."},
        {"Etiqueta2DGuardada", "visible", "true", "no es un valor lógico (true o false)."},
        {"SeccionGuardada", "eje", 2.5, "no es un número entero."},
        {"SeccionGuardada", "eje", "2", "no es un número entero."},
        {"SeccionGuardada", "eje", 1e12, "no es un número entero."},
        {"PaqueteAWP", "hh", nulo, "no es un número."},
        {"PaqueteAWP", "elementosNombre", QJsonArray{"A", 3},
         "El valor elementosNombre[1] de PaqueteAWP no es un texto."},
        {"PaqueteAWP", "parentCodigo", 5, "no es un texto."},
        {"PaqueteAWP", "fechaFinReal", "mañana", "no es una fecha ISO 8601: \"mañana\"."},
        {"PaqueteAWP", "colorIdx", 1.5, "no es un número entero."},
        {"PaqueteAWP", "nivel", 2, "no es un texto."},
        {"PaqueteAWP", "nivel", "XYZ", "tiene el valor \"XYZ\", " + nivel},
        {"PaqueteAWP", "nivel", "iwp", "tiene el valor \"iwp\", " + nivel},
        {"PaqueteAWP", "nivel", "Iwp", "tiene el valor \"Iwp\", " + nivel},
        {"PaqueteAWP", "nivel", "", "tiene el valor \"\", " + nivel},
        {"PaqueteAWP", "nivel", " IWP", "tiene el valor \" IWP\", " + nivel},
    };
    for (const Caso& k : casos) {
        SCOPED_TRACE(std::string(k.registro) + "." + k.clave);
        auto [o, decodificar] = registros.at(k.registro);
        o.insert(QLatin1String(k.clave), k.valor);
        const std::string esperado =
            k.error.rfind("El", 0) == 0
                ? k.error
                : "La clave \"" + std::string(k.clave) + "\" de " + k.registro + " " + k.error;
        EXPECT_EQ(decodificar(o), esperado);
    }
    EXPECT_EQ(puntoMarkupDesdeJson(QJsonValue(3)).error, "Se esperaba un objeto PuntoMarkup.");
    EXPECT_EQ(timeLinerConfigDesdeJson(QJsonArray{}, "timeLiner").error,
              "Se esperaba un objeto TimeLinerConfig en timeLiner.");
}

TEST(RegistrosJson, errorAnidadoNombraSuLugar) {
    QJsonObject c = aJson(comentarioCompleto());
    QJsonArray trazados = c["trazados"].toArray();
    QJsonObject t = trazados[1].toObject();
    QJsonArray puntos = t["puntos"].toArray();
    puntos.append(QJsonObject{{"x", 1}});
    puntos.append(QJsonObject{{"y", 1}}); // a second fault, never reported
    t["puntos"] = puntos;
    trazados[1] = t;
    c["trazados"] = trazados;
    EXPECT_EQ(comentarioMarkupDesdeJson(c).error,
              "Falta la clave \"y\" en PuntoMarkup (trazados[1].puntos[1]).");
    EXPECT_EQ(comentarioMarkupDesdeJson(c, "comentarios[4]").error,
              "Falta la clave \"y\" en PuntoMarkup (comentarios[4].trazados[1].puntos[1]).");

    c["trazados"] = QJsonArray{5};
    EXPECT_EQ(comentarioMarkupDesdeJson(c).error,
              "Se esperaba un objeto TrazadoMarkup en trazados[0].");

    QJsonObject cfg = aJson(configuracion());
    QJsonArray paquetes = cfg["paquetes"].toArray();
    QJsonObject p = paquetes[1].toObject();
    p["nivel"] = "XYZ";
    paquetes[1] = p;
    cfg["paquetes"] = paquetes;
    EXPECT_EQ(timeLinerConfigDesdeJson(cfg, "timeLiner").error,
              "La clave \"nivel\" de PaqueteAWP (timeLiner.paquetes[1]) tiene el valor \"XYZ\", "
              "que no es un "
              "nivel AWP (CWA, CWP, IWP, PWP).");
}

TEST(RegistrosJson, diccionariosYListasDelDocumento) {
    const CotasPorTitulo cotas{
        {"Planta Z 1.00 m",
         {cota(), Cota2D{"C0DE0000-0000-4000-8000-000000000002", {0, 0}, {5, 0}, -0.4f}}},
        {"Corte X 3.20 m · prof. 1.00 m", {}}};
    const EtiquetasGuardadasPorTitulo etiquetas{{"Planta Z 1.00 m", {etiquetaG()}}};
    const std::vector<SeccionGuardada> secciones{seccion()};
    QJsonObject documento{
        {"cotasPorSeccion", aJson(cotas)},
        {"etiquetasPorSeccion", aJson(etiquetas)},
        {"secciones", aJson(secciones)},
        {"comentarios", aJson(std::vector<ComentarioMarkup>{comentarioCompleto()})},
        {"timeLiner", aJson(configuracion())}};
    EXPECT_EQ(claves(documento["cotasPorSeccion"].toObject()),
              (std::set<std::string>{"Planta Z 1.00 m", "Corte X 3.20 m · prof. 1.00 m"}));
    documento = porTexto(documento);

    {
        LectorJson l(documento, "ProyectoTESKAL");
        const auto c = l.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson);
        const auto e =
            l.diccionarioDeListasOpcional("etiquetasPorSeccion", etiqueta2DGuardadaDesdeJson);
        const auto s = l.listaOpcional("secciones", seccionGuardadaDesdeJson);
        const auto m = l.listaOpcional("comentarios", comentarioMarkupDesdeJson);
        const auto t = l.objetoOpcional("timeLiner", timeLinerConfigDesdeJson);
        ASSERT_TRUE(l.ok()) << l.error();
        EXPECT_TRUE(c == cotas);
        EXPECT_TRUE(e == etiquetas);
        EXPECT_TRUE(s == secciones);
        ASSERT_TRUE(m && m->size() == 1);
        EXPECT_TRUE(m->front() == comentarioCompleto());
        EXPECT_TRUE(t == configuracion());
    }
    {
        // Absent or null optional keys give nothing, and no fault.
        QJsonObject sinNada{{"timeLiner", QJsonValue()}};
        LectorJson l(sinNada, "ProyectoTESKAL");
        EXPECT_FALSE(l.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson));
        EXPECT_FALSE(l.listaOpcional("comentarios", comentarioMarkupDesdeJson));
        EXPECT_FALSE(l.objetoOpcional("timeLiner", timeLinerConfigDesdeJson));
        EXPECT_TRUE(l.ok()) << l.error();
        // The required forms of the same keys fail.
        l.lista("secciones", seccionGuardadaDesdeJson);
        EXPECT_EQ(l.error(), "Falta la clave \"secciones\" en ProyectoTESKAL.");
    }
    {
        QJsonObject mal = documento;
        QJsonObject porTitulo = mal["cotasPorSeccion"].toObject();
        QJsonArray lista = porTitulo["Planta Z 1.00 m"].toArray();
        QJsonObject sinOffset = lista[1].toObject();
        sinOffset.remove("offsetLateral");
        lista[1] = sinOffset;
        porTitulo["Planta Z 1.00 m"] = lista;
        mal["cotasPorSeccion"] = porTitulo;
        LectorJson l(mal, "ProyectoTESKAL");
        EXPECT_FALSE(l.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson));
        EXPECT_EQ(l.error(), "Falta la clave \"offsetLateral\" en Cota2D (cotasPorSeccion[\"Planta "
                             "Z 1.00 m\"][1]).");

        porTitulo["Planta Z 1.00 m"] = QJsonObject{};
        mal["cotasPorSeccion"] = porTitulo;
        LectorJson l2(mal, "ProyectoTESKAL");
        l2.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson);
        EXPECT_EQ(
            l2.error(),
            "El valor cotasPorSeccion[\"Planta Z 1.00 m\"] de ProyectoTESKAL no es una lista.");

        mal["cotasPorSeccion"] = QJsonArray{};
        LectorJson l3(mal, "ProyectoTESKAL");
        l3.diccionarioDeListasOpcional("cotasPorSeccion", cota2DDesdeJson);
        EXPECT_EQ(l3.error(), "La clave \"cotasPorSeccion\" de ProyectoTESKAL no es un objeto.");
    }
}

TEST(RegistrosJson, fechas) {
    // Another zone is written as the same instant in UTC; milliseconds are dropped.
    for (const auto& [fecha, texto] :
         {std::pair{kFecha, "2024-03-05T14:07:09Z"},
          std::pair{QDateTime(QDate(2024, 3, 5), QTime(16, 7, 9), Qt::OffsetFromUTC, 7200), "2024-03-05T14:07:09Z"},
          std::pair{kFecha.addMSecs(789), "2024-03-05T14:07:09Z"},
          std::pair{QDateTime(QDate(2023, 12, 31), QTime(23, 59, 59), Qt::OffsetFromUTC, -3 * 3600),
                    "2024-01-01T02:59:59Z"}})
        EXPECT_EQ(textoFechaJson(fecha), texto);

    const std::pair<const char*, QDateTime> validas[] = {
        {"2024-03-05T14:07:09Z", kFecha},
        {"2024-03-05T16:07:09+02:00", kFecha},
        {"2024-03-05T11:07:09-0300", kFecha},
        {"2024-03-05T14:07:09.250Z", kFecha.addMSecs(250)},
        {"2024-03-05T14:07:09.1234567Z", kFecha.addMSecs(123)},
        {"2024-03-05T14:07:09.5+01:00", kFecha.addSecs(-3600).addMSecs(500)},
        {"2024-02-29T00:00:00Z", QDateTime(QDate(2024, 2, 29), QTime(0, 0), Qt::UTC)},
    };
    for (const auto& [texto, esperada] : validas) {
        const auto f = fechaDesdeTextoJson(QString::fromLatin1(texto));
        ASSERT_TRUE(f) << texto;
        EXPECT_EQ(*f, esperada) << texto;
        EXPECT_EQ(f->timeSpec(), Qt::UTC) << texto;
    }
    for (const char* mal :
         {"2024-03-05T14:07:09", "2024-03-05", "2024-03-05 14:07:09Z", "2023-02-29T00:00:00Z",
          "2024-13-01T00:00:00Z", "2024-03-05T24:00:00Z", "2024-03-05T14:60:00Z",
          "2024-03-05T14:07:09+25:00", "2024-03-05T14:07:09Zx", ""})
        EXPECT_FALSE(fechaDesdeTextoJson(QString::fromLatin1(mal))) << mal;

    // A date read with an offset is written back in UTC.
    QJsonObject s = aJson(configuracion());
    s["fechaInicio"] = "2024-03-05T16:07:09+02:00";
    const auto c = timeLinerConfigDesdeJson(s);
    ASSERT_TRUE(c.ok()) << c.error;
    EXPECT_EQ(c.valor->fechaInicio, kFecha);
    EXPECT_EQ(aJson(*c.valor)["fechaInicio"].toString(), "2024-03-05T14:07:09Z");
}

TEST(RegistrosJson, uuidsEnMayusculas) {
    EXPECT_EQ(uuidDesdeTexto(u"c0de0000-abcd-4ef0-8000-00000000c07a"),
              "C0DE0000-ABCD-4EF0-8000-00000000C07A");
    for (const char16_t* mal :
         {u"C0DE0000ABCD4EF0800000000000C07A", u"{C0DE0000-ABCD-4EF0-8000-00000000C07A}",
          u"C0DE0000-ABCD-4EF0-8000-00000000C07", u"G0DE0000-ABCD-4EF0-8000-00000000C07A",
          u" C0DE0000-ABCD-4EF0-8000-00000000C07A", u""})
        EXPECT_FALSE(uuidDesdeTexto(mal)) << QString::fromUtf16(mal).toStdString();

    // Lower case read is kept in upper case; a lower-case id is written in upper case.
    QJsonObject o = aJson(seccion());
    o["id"] = "5ec0abcd-0000-4000-8000-00000000000f";
    const auto s = seccionGuardadaDesdeJson(o);
    ASSERT_TRUE(s.ok()) << s.error;
    EXPECT_EQ(s.valor->id, "5EC0ABCD-0000-4000-8000-00000000000F");
    TrazadoMarkup t = comentarioCompleto().trazados[0];
    t.id = "aaaaaaaa-bbbb-cccc-dddd-eeeeeeeeeeee";
    EXPECT_EQ(aJson(t)["id"].toString(), "AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE"); // every record writes ids alike
}

TEST(RegistrosJson, floatsVuelvenIguales) {
    // Any float, written through the document's text, reads back as the same
    // float, and is written in no more digits than it needs.
    std::mt19937 azar(7);
    std::uniform_real_distribution<float> lugar(-1000.0f, 1000.0f);
    std::uniform_int_distribution<int> exponente(-30, 30);
    for (int i = 0; i < 2000; ++i) {
        const float f = std::ldexp(lugar(azar), exponente(azar));
        const Cota2D c{"C0DE0000-0000-4000-8000-00000000C07A", {f, -f}, {f * 3, 0}, f};
        const auto leida = cota2DDesdeJson(porTexto(aJson(c)));
        ASSERT_TRUE(leida.ok()) << leida.error;
        ASSERT_EQ(leida.valor->offsetLateral, f) << compacto(aJson(c));
        ASSERT_EQ(leida.valor->p1, c.p1);
        ASSERT_EQ(leida.valor->p2, c.p2);
    }
    EXPECT_EQ(jsonFloat(0.6f).toDouble(), 0.6);
    EXPECT_EQ(jsonFloat(-2.3f).toDouble(), -2.3);
}

TEST(RegistrosJson, conversionDeEtiquetas) {
    Etiqueta2D viva;
    viva.id = "E71C0000-0000-4000-8000-000000000001";
    viva.ancla = {12.5f, 3.25f};
    viva.offsetTexto = {0.4f, -0.8f};
    viva.nombre = "Viga W12x26:V-14";
    viva.tipoIFC = "Viga";
    viva.dimensiones = "6.00 × 0.30 m";
    viva.material = "Acero A36";
    viva.nivel = "Nivel 2";
    viva.visible = true;
    viva.key = "EST";
    viva.color = Color{0.2f, 0.4f, 0.9f, 1.0f};

    const Etiqueta2DGuardada g = etiquetaGuardada(viva);
    EXPECT_TRUE(g == (Etiqueta2DGuardada{"Viga W12x26:V-14", "EST", true, {0.4f, -0.8f}}));

    // Restored: a new id each time, the four kept fields, the rest blank.
    const Etiqueta2D r1 = etiquetaRestaurada(g);
    const Etiqueta2D r2 = etiquetaRestaurada(g);
    EXPECT_EQ(uuidDesdeTexto(QString::fromStdString(r1.id)), r1.id);
    EXPECT_NE(r1.id, r2.id);
    EXPECT_NE(r1.id, viva.id);
    Etiqueta2D esperada;
    esperada.id = r1.id;
    esperada.offsetTexto = viva.offsetTexto;
    esperada.nombre = viva.nombre;
    esperada.key = viva.key;
    esperada.visible = true;
    esperada.color = colorEtiquetaRestaurada;
    EXPECT_TRUE(r1 == esperada);

    // A whole store saved and restored (its JSON is diccionariosYListasDelDocumento's):
    // titles, order and the four kept fields survive.
    Etiqueta2D otra = viva;
    otra.nombre = "Muro M-1";
    otra.key = "ARQ";
    otra.visible = false;
    otra.offsetTexto = {-2.0f, 0.0f};
    const EtiquetasPorTitulo store{{"Planta Z 1.00 m", {viva, otra}}, {"Corte Y 0.00 m", {}}};
    const EtiquetasPorTitulo vuelta = etiquetasRestauradas(etiquetasGuardadas(store));
    ASSERT_EQ(vuelta.size(), 2u);
    ASSERT_EQ(vuelta.at("Corte Y 0.00 m").size(), 0u);
    const auto& lista = vuelta.at("Planta Z 1.00 m");
    ASSERT_EQ(lista.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) // the hidden one stays hidden
        EXPECT_TRUE(etiquetaGuardada(lista[i]) == etiquetaGuardada(store.at("Planta Z 1.00 m")[i])) << i;
}

TEST(RegistrosJson, valoresPorDefecto) {
    // Twelve months by the calendar in local time: from 29 February to 28
    // February, and a leap year's 366 days from March to March.
    const QDateTime bisiesto(QDate(2024, 2, 29), QTime(12, 0), Qt::LocalTime);
    const TimeLinerConfig c = TimeLinerConfig::porDefecto(bisiesto);
    EXPECT_TRUE(c.paquetes.empty());
    EXPECT_EQ(c.moneda, "USD");
    EXPECT_EQ(c.fechaInicio, bisiesto);
    EXPECT_EQ(c.fechaInicio.timeSpec(), Qt::UTC);
    EXPECT_EQ(c.fechaFin, QDateTime(QDate(2025, 2, 28), QTime(12, 0), Qt::LocalTime));
    const QDateTime marzo(QDate(2023, 3, 15), QTime(10, 30), Qt::LocalTime);
    EXPECT_EQ(TimeLinerConfig::porDefecto(marzo).fechaFin, QDateTime(QDate(2024, 3, 15), QTime(10, 30), Qt::LocalTime));

    const QDateTime enero(QDate(2024, 1, 15), QTime(9, 45), Qt::LocalTime);
    const PaqueteAWP p = PaqueteAWP::nuevo(enero);
    const PaqueteAWP q = PaqueteAWP::nuevo(enero);
    EXPECT_EQ(uuidDesdeTexto(QString::fromStdString(p.id)), p.id);
    EXPECT_NE(p.id, q.id);
    EXPECT_EQ(p.nivel, NivelAWP::iwp);
    EXPECT_EQ(p.codigo, "");
    EXPECT_EQ(p.fechaInicio, enero);
    EXPECT_EQ(p.fechaFin, QDateTime(QDate(2024, 2, 14), QTime(9, 45), Qt::LocalTime));
    EXPECT_FALSE(p.parentCodigo || p.fechaInicioReal || p.fechaFinReal);
    EXPECT_EQ(p.progreso + p.presupuesto + p.costoReal + p.hh + p.hhReal, 0.0);
    EXPECT_TRUE(p.elementosNombre.empty());
    EXPECT_EQ(p.colorIdx, 0);
}
