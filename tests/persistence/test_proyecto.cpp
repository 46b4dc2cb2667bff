// The project document and the shareable package: encoding and strict
// decoding, the restore and its order, and packages through the real zip,
// unzip and converter, hostile archives included.
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "persistence/GestorProyecto.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QUuid>
#include <QThread>
#include <gtest/gtest.h>
#include "espera_eventos.h"

using namespace teskal;

using teskal::pruebas::esperarHasta;

namespace {

const QString muestras = QStringLiteral(TESKAL_SAMPLES_DIR);

QStringList claves(const QJsonObject& o) {
    QStringList k = o.keys();
    k.sort();
    return k;
}

ProyectoTESKAL proyectoDePrueba() {
    ProyectoTESKAL p;
    p.ordenEspecialidades = {"ARQ", "EST"};
    // Colours as the workspace gives them: floats.
    p.especialidades = {{"ARQ", "Arquitectura", "building.2", 0.85f, 0.85f, 0.85f, true,
                         {{"casa.ifc", "/x/casa.ifc", std::nullopt, false, 0.25}}},
                        {"EST", "Estructura", "square.3.layers.3d", 0.6f, 0.6f, 0.6f, false, {}}};
    AnalisisGuardado a{"0B8F1A9C-3D2E-4F60-9A1B-2C3D4E5F6A7B", "Análisis 1",
                       QDateTime(QDate(2026, 11, 23), QTime(10, 20, 30), Qt::UTC), 0.02, {}};
    a.interferencias.push_back({"1C2D3E4F-5A6B-7C8D-9E0F-A1B2C3D4E5F6", "Muro 1", "ARQ", "Viga 2", "EST",
                                "En revisión", 1, 2, 3, 4, 5, 6, 0.5, "2XPyKWY018sA1ygZKgQPtU", std::nullopt});
    p.historialAnalisis = {a};
    return p;
}

// An exact analysis as the workbench writes it: its method, and each clash's
// penetration and contact centre.
AnalisisGuardado analisisExacto() {
    AnalisisGuardado a{"2B8F1A9C-3D2E-4F60-9A1B-2C3D4E5F6A7B", "Exacto",
                       QDateTime(QDate(2026, 11, 23), QTime(11, 0, 0), Qt::UTC), 0.02, {}, "Geometría exacta",
                       std::nullopt};
    a.interferencias.push_back({"3C2D3E4F-5A6B-7C8D-9E0F-A1B2C3D4E5F6", "Muro 1", "ARQ", "Tubo", "MEP", "Abierto", 1,
                                2, 3, 4, 5, 6, 0.5, std::nullopt, std::nullopt, 0.125, 4, 5, 6});
    return a;
}

TEST(DocumentoProyecto, codificacionYDecodificacion) {
    const ProyectoTESKAL p = proyectoDePrueba();
    const QByteArray json = codificarProyecto(p);
    // Pretty-printed, keys sorted, dates in UTC with a Z, no nil optionals.
    EXPECT_TRUE(json.contains("\n    \""));
    EXPECT_TRUE(json.contains("\"fecha\": \"2026-11-23T10:20:30Z\""));
    EXPECT_FALSE(json.contains("rutaRelativa"));
    // A colour is the float's shortest decimal.
    EXPECT_TRUE(json.contains("\"colorR\": 0.85,")) << json.constData();
    EXPECT_LT(json.indexOf("\"especialidades\""), json.indexOf("\"historialAnalisis\""));
    const QJsonObject raiz = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(claves(raiz), (QStringList{"especialidades", "historialAnalisis", "ordenEspecialidades", "version"}));
    EXPECT_EQ(raiz["version"].toInt(), 2);
    const QJsonObject esp = raiz["especialidades"].toArray()[0].toObject();
    EXPECT_EQ(claves(esp),
              (QStringList{"colorB", "colorG", "colorR", "icono", "isVisible", "key", "modelos", "nombre"}));
    EXPECT_EQ(claves(esp["modelos"].toArray()[0].toObject()),
              (QStringList{"isVisible", "nombre", "rutaAbsoluta", "transparencia"}));
    const QJsonObject analisis = raiz["historialAnalisis"].toArray()[0].toObject();
    EXPECT_EQ(claves(analisis), (QStringList{"fecha", "id", "interferencias", "nombre", "tolerancia"}));
    EXPECT_EQ(claves(analisis["interferencias"].toArray()[0].toObject()),
              (QStringList{"especialidadA", "especialidadB", "estado", "globalIdA", "id", "nombreA", "nombreB", "radio",
                           "vpPosX", "vpPosY", "vpPosZ", "vpTgtX", "vpTgtY", "vpTgtZ"}));

    // The method and the measures are optional keys, written when present.
    ProyectoTESKAL conExacto = p;
    conExacto.historialAnalisis.push_back(analisisExacto());
    const QJsonObject exacto =
        QJsonDocument::fromJson(codificarProyecto(conExacto)).object()["historialAnalisis"].toArray()[1].toObject();
    EXPECT_EQ(claves(exacto), (QStringList{"fecha", "id", "interferencias", "metodo", "nombre", "tolerancia"}));
    EXPECT_EQ(exacto["metodo"].toString(), QStringLiteral("Geometría exacta"));
    EXPECT_EQ(claves(exacto["interferencias"].toArray()[0].toObject()),
              (QStringList{"centroX", "centroY", "centroZ", "distancia", "especialidadA", "especialidadB", "estado",
                           "id", "nombreA", "nombreB", "radio", "vpPosX", "vpPosY", "vpPosZ", "vpTgtX", "vpTgtY",
                           "vpTgtZ"}));
    EXPECT_EQ(std::get<ProyectoTESKAL>(decodificarProyecto(codificarProyecto(conExacto))).historialAnalisis,
              conExacto.historialAnalisis);

    auto vuelta = decodificarProyecto(json);
    ASSERT_TRUE(std::holds_alternative<ProyectoTESKAL>(vuelta)) << std::get<std::string>(vuelta);
    const ProyectoTESKAL& q = std::get<ProyectoTESKAL>(vuelta);
    EXPECT_EQ(q.ordenEspecialidades, p.ordenEspecialidades);
    EXPECT_EQ(q.especialidades, p.especialidades);
    EXPECT_EQ(q.historialAnalisis, p.historialAnalisis);
    // A relative path is written only when there is one, and read back.
    ProyectoTESKAL conRelativa = p;
    conRelativa.especialidades[0].modelos[0].rutaRelativa = "modelos/casa.ifc";
    const auto releido = decodificarProyecto(codificarProyecto(conRelativa));
    EXPECT_EQ(std::get<ProyectoTESKAL>(releido).especialidades, conRelativa.especialidades);
    // UUIDs come back in upper case; a date with an offset is taken in UTC.
    QByteArray minusculas = json;
    minusculas.replace("0B8F1A9C-3D2E-4F60-9A1B-2C3D4E5F6A7B", "0b8f1a9c-3d2e-4f60-9a1b-2c3d4e5f6a7b");
    minusculas.replace("2026-11-23T10:20:30Z", "2026-11-23T07:20:30-03:00");
    const auto decodificado = decodificarProyecto(minusculas);
    const auto& m = std::get<ProyectoTESKAL>(decodificado);
    EXPECT_EQ(m.historialAnalisis[0].id, "0B8F1A9C-3D2E-4F60-9A1B-2C3D4E5F6A7B");
    EXPECT_EQ(m.historialAnalisis[0].fecha, p.historialAnalisis[0].fecha);
}

TEST(DocumentoProyecto, documentosMalFormados) {
    const QByteArray bueno = codificarProyecto(proyectoDePrueba());
    auto error = [](const QByteArray& d) {
        auto r = decodificarProyecto(d);
        return std::holds_alternative<std::string>(r) ? std::get<std::string>(r) : std::string();
    };
    EXPECT_NE(error("no es JSON").find("JSON"), std::string::npos);
    EXPECT_NE(error("[1, 2]").find("objeto"), std::string::npos);
    QByteArray sinHistorial = bueno;
    QJsonObject o = QJsonDocument::fromJson(bueno).object();
    o.remove("historialAnalisis");
    EXPECT_NE(error(QJsonDocument(o).toJson()).find("\"historialAnalisis\""), std::string::npos);
    o = QJsonDocument::fromJson(bueno).object();
    o["version"] = "dos";
    EXPECT_NE(error(QJsonDocument(o).toJson()).find("\"version\""), std::string::npos);
    QByteArray sinColor = bueno;
    sinColor.replace("\"colorR\"", "\"colorX\"");
    EXPECT_NE(error(sinColor).find("\"colorR\""), std::string::npos);
    QByteArray fechaMala = bueno;
    fechaMala.replace("2026-11-23T10:20:30Z", "23/11/2026");
    EXPECT_NE(error(fechaMala).find("\"fecha\""), std::string::npos);

    // A document that can't be read leaves the workspace as it was.
    QTemporaryDir dir;
    const QString ruta = dir.filePath(QStringLiteral("malo.teskal"));
    QFile f(ruta);
    f.open(QIODevice::WriteOnly);
    f.write(sinColor);
    f.close();
    ContentView cv("/no/hay");
    cv.historialAnalisis.push_back({"X", "previo", QDateTime::currentDateTimeUtc(), 0.02, {}});
    cv.abrirProyecto(ruta.toStdString());
    EXPECT_TRUE(cv.showError);
    EXPECT_EQ(cv.errorMessage->rfind("Error al cargar el proyecto: ", 0), 0u);
    EXPECT_EQ(cv.historialAnalisis.size(), 1u);
    EXPECT_EQ(cv.ordenEspecialidades.size(), 6u);
    cv.abrirProyecto(dir.filePath(QStringLiteral("no está.teskal")).toStdString());
    EXPECT_EQ(cv.errorMessage->rfind("Error al cargar el proyecto: ", 0), 0u);
}

TEST(DocumentoProyecto, restauracionEnSuOrden) {
    ContentView cv("/no/hay");
    // Something to clear: a model with properties and a clash marked orange.
    cv.fileName = "viejo.ifc";
    ModeloConvertido m;
    m.modelo = cargarOBJTexto("v 0 0 0\nv 1 1 1\nv 0 1 0\ng Muro\nf 1 2 3\n");
    m.propiedades["Muro"]["__tipoIFC"] = "IFCWALL";
    cv.integrarModelo(std::move(m), "/x.ifc", "/no/existe.obj");
    auto viejo = cv.especialidades.at("ARQ").nodoRaiz;
    Interferencia i;
    i.nodoA = viejo->childNodes()[0]->childNodes()[0];
    i.nodoA->geometry()->firstMaterial()->setEmission(colores::naranja);
    cv.interferencias = {i};

    ProyectoTESKAL p = proyectoDePrueba();
    p.version = 99;
    p.historialAnalisis[0].interferencias[0].estado = "Cerrado"; // unknown: open
    p.especialidades.push_back({"ARQ", "Arquitectura bis", "folder", 1, 0, 0, true, {}}); // repeated key
    p.especialidades.push_back({"OCU", "Oculta", "folder", 0, 0, 1, true, {}});          // not in the order
    p.historialAnalisis.push_back(analisisExacto());
    cv.restaurarProyecto(p, std::nullopt);

    EXPECT_FALSE(viejo->parent());
    EXPECT_TRUE(cv.interferencias.empty());
    EXPECT_EQ(i.nodoA->geometry()->firstMaterial()->emission(), colores::negro);
    EXPECT_TRUE(cv.propiedadesIFC.empty());
    EXPECT_EQ(cv.ordenEspecialidades, (std::vector<std::string>{"ARQ", "EST"}));
    EXPECT_EQ(cv.especialidades.size(), 3u);
    EXPECT_EQ(cv.especialidades.at("ARQ").nombre, "Arquitectura bis");
    EXPECT_FALSE(cv.especialidades.at("EST").isVisible);
    EXPECT_FALSE(cv.especialidades.at("ARQ").nodoRaiz);
    ASSERT_EQ(cv.historialAnalisis.size(), 2u);
    const Interferencia& r = cv.historialAnalisis[0].interferencias[0];
    EXPECT_EQ(r.estado, EstadoClash::abierto);
    // A document without a method holds box analyses; an exact one keeps its
    // method, penetration and contact centre, and saves them again.
    EXPECT_EQ(cv.historialAnalisis[0].metodo, MetodoAnalisis::cajasEnvolventes);
    EXPECT_EQ(r.metodo, MetodoAnalisis::cajasEnvolventes);
    EXPECT_FALSE(r.distancia || r.centroContacto);
    const Interferencia& e = cv.historialAnalisis[1].interferencias[0];
    EXPECT_EQ(e.metodo, MetodoAnalisis::geometriaExacta);
    EXPECT_EQ(e.distancia, 0.125);
    EXPECT_EQ(e.centroContacto, glm::dvec3(4, 5, 6));
    EXPECT_EQ(cv.construirProyecto().historialAnalisis[1], analisisExacto());
    EXPECT_EQ(r.viewpointTarget, glm::dvec3(4, 5, 6));
    EXPECT_FALSE(r.nodoA->geometry());
    EXPECT_FALSE(r.nodoA->parent());
    EXPECT_TRUE(cv.analisisExpandidos.empty());
    // The missing file of "casa.ifc" is listed, and a save keeps it.
    ASSERT_EQ(cv.modelosAusentes.size(), 1u);
    const ProyectoTESKAL guardado = cv.construirProyecto();
    ASSERT_EQ(guardado.especialidades.size(), 2u); // the unlisted key is not saved either
    EXPECT_EQ(guardado.especialidades[0].modelos, p.especialidades[0].modelos);
}

TEST(DocumentoProyecto, seccionesComentariosYTimelineSeConservan) {
    // A document of version 1 without the optional keys: the default timeline.
    ProyectoTESKAL viejo = proyectoDePrueba();
    viejo.version = 1;
    const QByteArray json = codificarProyecto(viejo);
    for (const char* k : {"timeLiner", "secciones", "cotasPorSeccion", "etiquetasPorSeccion", "comentarios"})
        EXPECT_FALSE(json.contains(k)) << k;
    ContentView cv("/no/hay");
    cv.markup.comentarios.push_back({});
    const auto leido = decodificarProyecto(json);
    cv.restaurarProyecto(std::get<ProyectoTESKAL>(leido), std::nullopt);
    EXPECT_TRUE(cv.timeLiner.paquetes.empty());
    EXPECT_EQ(cv.timeLiner.moneda, "USD");
    EXPECT_EQ(cv.timeLiner.fechaInicio.toLocalTime().addMonths(12), cv.timeLiner.fechaFin.toLocalTime());
    EXPECT_TRUE(cv.markup.comentarios.empty());

    // Everything the workspace holds of them comes back after a save and an open.
    cv.seccion.guardadas = {{"5E0C6A1B-0000-4000-8000-000000000001", "Corte A", 1, 2.5}};
    cv.seccion.almacenCotas["Corte A"] = {{"5E0C6A1B-0000-4000-8000-000000000002", {0, 0}, {3.5f, 0}, 0.6f}};
    Etiqueta2D e{};
    e.nombre = "Muro 1";
    e.key = "ARQ";
    e.visible = false;
    e.offsetTexto = {0.5f, -1};
    cv.seccion.almacenEtiquetas["Corte A"] = {e};
    ComentarioMarkup c{};
    c.id = "5E0C6A1B-0000-4000-8000-000000000003";
    c.tag = "MRK-001";
    c.fecha = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC);
    c.autor = "Ana";
    c.imagenJPEG = QByteArray("\xff\xd8\xff", 3);
    c.trazados = {{"5E0C6A1B-0000-4000-8000-000000000004", {{1, 2}, {3, 4}}, 1, 0, 0, 3}};
    cv.markup.comentarios = {c};
    cv.timeLiner.moneda = "CLP";
    const auto segundo = decodificarProyecto(codificarProyecto(cv.construirProyecto()));
    ASSERT_TRUE(std::holds_alternative<ProyectoTESKAL>(segundo)) << std::get<std::string>(segundo);
    ContentView otro("/no/hay");
    otro.restaurarProyecto(std::get<ProyectoTESKAL>(segundo), std::nullopt);
    EXPECT_EQ(otro.seccion.guardadas, cv.seccion.guardadas);
    EXPECT_EQ(otro.seccion.almacenCotas, cv.seccion.almacenCotas);
    EXPECT_EQ(otro.markup.comentarios, cv.markup.comentarios);
    EXPECT_EQ(otro.timeLiner.moneda, "CLP");
    ASSERT_EQ(otro.seccion.almacenEtiquetas["Corte A"].size(), 1u);
    const Etiqueta2D& r = otro.seccion.almacenEtiquetas["Corte A"][0];
    EXPECT_EQ(r.nombre, "Muro 1");
    EXPECT_FALSE(r.visible);
    EXPECT_EQ(r.offsetTexto, e.offsetTexto);
    EXPECT_FALSE(r.id.empty());
}

TEST(Paquete, nombresUnicos) {
    std::vector<std::string> usados;
    EXPECT_EQ(nombreUnicoEnPaquete("modelo.ifc", usados), "modelo.ifc");
    EXPECT_EQ(nombreUnicoEnPaquete("modelo.ifc", usados), "modelo_1.ifc");
    EXPECT_EQ(nombreUnicoEnPaquete("modelo.ifc", usados), "modelo_2.ifc");
    EXPECT_EQ(nombreUnicoEnPaquete("modelo", usados), "modelo");
    EXPECT_EQ(nombreUnicoEnPaquete("modelo", usados), "modelo_1.");
    EXPECT_EQ(nombreUnicoEnPaquete("a.b.ifc", usados), "a.b.ifc");
    EXPECT_EQ(nombreUnicoEnPaquete("a.b.ifc", usados), "a.b_1.ifc");
}

QStringList entradas(const QString& zip) {
    QProcess p;
    p.start(QStringLiteral("/usr/bin/unzip"), {QStringLiteral("-Z1"), zip});
    p.waitForFinished();
    QStringList l = QString::fromUtf8(p.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    l.sort();
    return l;
}

TEST(Paquete, exportarYAbrirConZipUnzipYConversor) {
    if (!QFileInfo::exists(muestras)) GTEST_SKIP() << "sin ../shared/samples";
    QTemporaryDir dir;
    // Two files of one name from two folders, and a project saved first.
    QDir().mkpath(dir.filePath(QStringLiteral("a")));
    QDir().mkpath(dir.filePath(QStringLiteral("b")));
    const QString a = dir.filePath(QStringLiteral("a/modelo.ifc")), b = dir.filePath(QStringLiteral("b/modelo.ifc"));
    QFile::copy(muestras + QStringLiteral("/example.ifc"), a);
    QFile::copy(muestras + QStringLiteral("/IfcOpenHouse_IFC4.ifc"), b);
    const std::string programa = QFileInfo(QStringLiteral(TESKAL_IFCCONVERT)).absolutePath().toStdString();
    ContentView cv(programa);
    for (auto [clave, ruta] : {std::pair{"ARQ", a}, std::pair{"EST", b}}) {
        cv.vincularIFC(clave);
        cv.archivosElegidos({ruta.toStdString()});
        ASSERT_TRUE(esperarHasta([&] { return !cv.isProcessing; }));
        ASSERT_FALSE(cv.showError) << *cv.errorMessage;
    }
    cv.fijarTransparencia("EST", cv.especialidades.at("EST").modelos[0].id, 0.5);
    cv.abrirConfigAnalisis();
    cv.iniciarDeteccion("Paquete", 0.02);
    ASSERT_TRUE(esperarHasta([&] { return !cv.detectando; }));
    const std::size_t choques = cv.historialAnalisis[0].interferencias.size();
    if (choques) cv.cambiarEstado(0, 0, EstadoClash::aprobado);

    // Exported over an existing file, with the extension in capitals kept.
    const QString destino = dir.filePath(QStringLiteral("Envío.TESKALPKG"));
    QFile(destino).open(QIODevice::WriteOnly);
    cv.exportarPaqueteA(destino.toStdString());
    EXPECT_TRUE(cv.isProcessing);
    ASSERT_TRUE(esperarHasta([&] { return !cv.isProcessing; }));
    ASSERT_FALSE(cv.showError) << *cv.errorMessage;
    EXPECT_EQ(cv.paqueteExportado, std::optional<std::string>("Envío.TESKALPKG"));
    EXPECT_EQ(entradas(destino),
              (QStringList{"modelos/", "modelos/modelo.ifc", "modelos/modelo_1.ifc", "proyecto.json"}));

    // Opened in a fresh workspace after one of the sender's files is gone:
    // the file still at its absolute path is taken from there, the other
    // from the package's copy.
    QFile::remove(b);
    ContentView otro(programa);
    otro.abrirPaqueteDe(destino.toStdString());
    ASSERT_TRUE(esperarHasta([&] {
        return !otro.isProcessing && otro.especialidades.count("EST") && !otro.especialidades.at("EST").modelos.empty() &&
               !otro.especialidades.at("ARQ").modelos.empty();
    }));
    ASSERT_FALSE(otro.showError) << *otro.errorMessage;
    EXPECT_FALSE(otro.gestor.urlActual);
    EXPECT_EQ(otro.gestor.nombreProyecto, "Envío");
    const ModeloVinculado& est = otro.especialidades.at("EST").modelos[0];
    EXPECT_EQ(est.nombre, "modelo.ifc");
    EXPECT_DOUBLE_EQ(est.transparencia, 0.5);
    // The extraction folder: "teskalpkg_open_" and an upper-case UUID.
    const std::size_t prefijo = est.rutaOrigen->find("teskalpkg_open_");
    ASSERT_NE(prefijo, std::string::npos);
    const QString uuid = QString::fromStdString(est.rutaOrigen->substr(prefijo + 15, 36));
    EXPECT_FALSE(QUuid::fromString(uuid).isNull()) << uuid.toStdString();
    EXPECT_EQ(uuid, uuid.toUpper());
    EXPECT_NE(est.rutaOrigen->find("modelos/modelo_1.ifc"), std::string::npos);
    EXPECT_EQ(otro.especialidades.at("ARQ").modelos[0].rutaOrigen, std::optional(a.toStdString()));
    EXPECT_FALSE(otro.propiedadesIFC["ARQ"].empty());
    ASSERT_EQ(otro.historialAnalisis.size(), 1u);
    EXPECT_EQ(otro.historialAnalisis[0].interferencias.size(), choques);
    if (choques) {
        EXPECT_EQ(otro.historialAnalisis[0].interferencias[0].estado, EstadoClash::aprobado);
    }
    EXPECT_TRUE(otro.scene.rootNode()->childNodeWithName("_TESKAL_Piso", false));

    // The project saved from there and opened again.
    const QString proyecto = dir.filePath(QStringLiteral("copia.teskal"));
    otro.guardarProyecto(); // no file yet: the save panel is asked for
    EXPECT_TRUE(otro.showSavePicker);
    otro.guardarProyectoComo(proyecto.toStdString());
    EXPECT_EQ(otro.gestor.nombreProyecto, "copia");
    ContentView tercero(programa);
    tercero.abrirProyecto(proyecto.toStdString());
    ASSERT_TRUE(esperarHasta([&] {
        return tercero.especialidades.at("ARQ").modelos.size() == 1 && tercero.especialidades.at("EST").modelos.size() == 1;
    }));
    EXPECT_EQ(tercero.gestor.urlActual, std::optional<std::string>(proyecto.toStdString()));
}

// Builds a zip by hand with Python's zipfile: entries the zip tool won't make.
QString zipAMano(const QTemporaryDir& dir, const QString& nombre, const QString& codigo) {
    const QString ruta = dir.filePath(nombre);
    QProcess p;
    p.start(QStringLiteral("python3"),
            {QStringLiteral("-c"), QStringLiteral("import zipfile, sys\nz = zipfile.ZipFile(sys.argv[1], 'w')\n") + codigo,
             ruta});
    p.waitForFinished();
    EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    return ruta;
}

TEST(Paquete, paquetesHostilesYMalFormados) {
    QTemporaryDir dir;
    const QByteArray json = codificarProyecto(proyectoDePrueba());
    const QString jsonPy = QString::fromUtf8(json.toBase64());
    auto abrir = [](const QString& ruta) {
        auto r = abrirPaquete(ruta.toStdString());
        return std::holds_alternative<std::string>(r) ? std::get<std::string>(r) : std::string();
    };
    const QString fuera = QDir::tempPath() + QStringLiteral("/teskal_fuera_del_paquete.txt");
    QFile::remove(fuera);

    // An entry that climbs out, an absolute one, a symbolic link.
    const QString sube = zipAMano(dir, QStringLiteral("sube.teskalpkg"),
                                  QStringLiteral("z.writestr('../../../../teskal_fuera_del_paquete.txt', 'x')\n"
                                                 "z.writestr('proyecto.json', 'x')\nz.close()"));
    EXPECT_NE(abrir(sube).find("sale de su carpeta"), std::string::npos);
    const QString absoluta = zipAMano(dir, QStringLiteral("absoluta.teskalpkg"),
                                      QStringLiteral("z.writestr('") + fuera + QStringLiteral("', 'x')\nz.close()"));
    EXPECT_NE(abrir(absoluta).find("sale de su carpeta"), std::string::npos);
    const QString enlace = zipAMano(
        dir, QStringLiteral("enlace.teskalpkg"),
        QStringLiteral("i = zipfile.ZipInfo('modelos')\ni.create_system = 3\ni.external_attr = (0o120777 << 16)\n"
                       "z.writestr(i, '/tmp')\nz.writestr('proyecto.json', 'x')\nz.close()"));
    EXPECT_NE(abrir(enlace).find("enlace simbólico"), std::string::npos);
    EXPECT_FALSE(QFileInfo::exists(fuera));

    // Not a zip; the project inside a folder; a project at the root opens.
    const QString texto = dir.filePath(QStringLiteral("texto.teskalpkg"));
    QFile t(texto);
    t.open(QIODevice::WriteOnly);
    t.write("no soy un zip");
    t.close();
    EXPECT_EQ(abrir(texto).rfind("Error al abrir el paquete: ", 0), 0u);
    const QString enCarpeta = zipAMano(dir, QStringLiteral("carpeta.teskalpkg"),
                                       QStringLiteral("import base64\nz.writestr('p/proyecto.json', base64.b64decode('") +
                                           jsonPy + QStringLiteral("'))\nz.close()"));
    EXPECT_EQ(abrir(enCarpeta), "El paquete no contiene un proyecto válido.");
    const QString bueno = zipAMano(dir, QStringLiteral("bueno.teskalpkg"),
                                   QStringLiteral("import base64\nz.writestr('proyecto.json', base64.b64decode('") +
                                       jsonPy + QStringLiteral("'))\nz.close()"));
    auto r = abrirPaquete(bueno.toStdString());
    const bool abierto = std::holds_alternative<std::pair<ProyectoTESKAL, std::string>>(r);
    ASSERT_TRUE(abierto) << std::get<std::string>(r);
    EXPECT_EQ(std::get<0>(r).first.historialAnalisis.size(), 1u);

    // Through the workspace, the message carries its prefix.
    ContentView cv("/no/hay");
    cv.abrirPaqueteDe(enCarpeta.toStdString());
    ASSERT_TRUE(esperarHasta([&] { return !cv.isProcessing; }));
    EXPECT_EQ(*cv.errorMessage, "Error al abrir el paquete: El paquete no contiene un proyecto válido.");
}

} // namespace
