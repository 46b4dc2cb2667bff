// The BCF archive on disk, packed by the real /usr/bin/zip and read back with
// /usr/bin/unzip and, in the standard form, with bcf-client as another
// coordination tool reads it; the copy behind the save panel; the export of
// both forms through the thread pool and back on the main thread.
#include "analyses/bcf/BCFExporter.h"
#include "analyses/bcf/TextosBCF.h"
#include "espera_eventos.h"
#include "lector_bcf.h"
#include "lectura_zip.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTimeZone>
#include <algorithm>
#include <glm/geometric.hpp>
#include <gtest/gtest.h>
#include <tuple>

using namespace teskal;
using pruebas::contenido;
using pruebas::entradas;
using pruebas::unzip;

namespace {

// Bytes that open with the PNG signature; the signature alone is not a PNG.
const QByteArray png("\x89PNG\r\n\x1a\nimagen", 14);

// The value of the attribute, which must be an upper-case UUID.
std::string guidEn(const std::string& texto, const QString& atributo) {
    const auto m = QRegularExpression(atributo + "=\"([0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})\"")
                       .match(QString::fromStdString(texto));
    EXPECT_TRUE(m.hasMatch()) << texto;
    return m.captured(1).toStdString();
}

Interferencia interferencia(std::string id, std::string nombreA = "A", std::string nombreB = "B") {
    Interferencia i;
    i.id = std::move(id);
    i.especialidadA = "ARQ";
    i.especialidadB = "MEP";
    i.nombreA = std::move(nombreA);
    i.nombreB = std::move(nombreB);
    i.viewpointPos = {3.25, -4.5, 6};
    i.viewpointTarget = {1, 1, 1};
    return i;
}

std::vector<float> vector3(const QJsonValue& v) {
    std::vector<float> r;
    for (const QJsonValue& x : v.toArray()) r.push_back(static_cast<float>(x.toDouble()));
    return r;
}

QStringList textos(const QJsonValue& v) {
    QStringList r;
    for (const QJsonValue& x : v.toArray()) r.push_back(x.toString());
    return r;
}

BCFExporter exportador(std::string nombre, std::vector<Interferencia> lista) {
    BCFExporter e;
    e.analisis.nombre = nombre;
    e.analisis.fecha = QDateTime(QDate(2025, 11, 20), QTime(8, 30, 0), QTimeZone::utc());
    e.analisis.interferencias = std::move(lista);
    e.nombreProyecto = std::move(nombre);
    return e;
}

QStringList carpetasBCF() {
    return QDir(QDir::tempPath()).entryList({QStringLiteral("TESKAL_BCF_*")}, QDir::Dirs);
}

// Points the temporary directory elsewhere for the length of a scope.
class OtroTemporal {
public:
    explicit OtroTemporal(const QString& ruta) : anterior_(qgetenv("TMPDIR")) {
        qputenv("TMPDIR", ruta.toLocal8Bit());
    }
    ~OtroTemporal() { qputenv("TMPDIR", anterior_); }

private:
    QByteArray anterior_;
};

// A folder whose path is so long that no folder with a UUID name can be made
// inside it, whoever runs the test; empty if it could not be made itself.
QString carpetaSinSitio() {
    QString ruta = QDir::tempPath() + QStringLiteral("/largo");
    while (ruta.size() < 4060)
        ruta += QLatin1Char('/') +
                QString(std::min<qsizetype>(200, 4060 - ruta.size()), QLatin1Char('d'));
    return QDir().mkpath(ruta) ? ruta : QString();
}

bool enHiloPrincipal() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

TEST(ArchivoBCF, entradasYContenidosDeUnAnalisis) {
    const std::string id1 = "6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F",
                      id2 = "c0ffee00-1234-4abc-8def-0123456789ab",
                      id3 = "5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A",
                      id4 = "2E4F6A8C-0B1D-4F3E-A5C7-E9F1A3B5C7D9";
    BCFExporter e =
        exportador("Fase 2/3: ok?",
                   {interferencia(id1, "A&B<1>", "Losa ↔ 2"), interferencia(id2, "Viga", "Ducto"),
                    interferencia(id3, "Muro", "Tubo"), interferencia(id4, "Puerta", "Bandeja")});
    e.nombreProyecto = "Proyecto \"Norte\"";
    auto& lista = e.analisis.interferencias;
    lista[2].estado = EstadoClash::resuelto;
    lista[1].especialidadB = "EST";
    lista[0].globalIdA = "2O2Fr$t4X7Zf8NOew3FLOH";
    lista[0].globalIdB = "0K3x_9Jm$1YqWnH7Ze4TbA";
    lista[1].globalIdB = "no es un GlobalId";
    e.thumbnails[id1] = png;
    e.thumbnails[id3] = QByteArray("no es una imagen");
    e.thumbnails[id4] = png.left(8);
    e.thumbnails["ID-9"] = png; // of no clash here

    struct Forma {
        FormaBCF forma;
        QString carpeta; // where the archive lies in the temporary directory
        std::string extensiones;
    };
    for (const Forma& f : {Forma{FormaBCF::estandar, "", "extensions.xsd "},
                           Forma{FormaBCF::literalTESKAL, "BCF literal TESKAL/", ""}}) {
        SCOPED_TRACE(f.extensiones);
        e.forma = f.forma;
        const QStringList antes = carpetasBCF();
        const auto archivo = e.escribirArchivo();
        ASSERT_TRUE(archivo);
        EXPECT_EQ(archivo->nombre, "Fase 23 ok.bcf");
        EXPECT_EQ(archivo->ruta,
                  QDir::temp().filePath(f.carpeta + QStringLiteral("Fase 23 ok.bcf")));

        // Paths from the archive's root, the folder of each clash named by its
        // id in upper case; a snapshot only for PNG bytes.
        const std::string i1 = guidBCF(id1), i2 = guidBCF(id2), i3 = id3, i4 = id4;
        EXPECT_EQ(entradas(archivo->ruta),
                  i4 + "/ " + i4 + "/markup.bcf " + i4 + "/viewpoint.bcfv " + i3 + "/ " + i3 +
                      "/markup.bcf " + i3 + "/viewpoint.bcfv " + i1 + "/ " + i1 + "/markup.bcf " +
                      i1 + "/snapshot.png " + i1 + "/viewpoint.bcfv " + i2 + "/ " + i2 +
                      "/markup.bcf " + i2 + "/viewpoint.bcfv bcf.version " + f.extensiones +
                      "project.bcfp");
        EXPECT_EQ(contenido(archivo->ruta, i1 + "/snapshot.png"), png.toStdString());
        EXPECT_EQ(contenido(archivo->ruta, "bcf.version"), textoVersionBCF());
        const std::string proyecto = contenido(archivo->ruta, "project.bcfp");
        const std::string projectId = guidEn(proyecto, "ProjectId");
        EXPECT_EQ(proyecto, textoProyectoBCF(projectId, "Proyecto \"Norte\"", f.forma));
        if (f.forma == FormaBCF::estandar) {
            EXPECT_EQ(contenido(archivo->ruta, "extensions.xsd"), textoExtensionesBCF(e.analisis));
        }

        // Each topic and its viewpoint share one new GUID; no two topics share one.
        std::vector<std::string> guids{projectId};
        for (const Interferencia& i : lista) {
            SCOPED_TRACE(i.id);
            const std::string carpeta = guidBCF(i.id) + "/";
            const std::string markup = contenido(archivo->ruta, carpeta + "markup.bcf");
            const std::string guid = guidEn(markup, "(?:<Viewpoints|<ViewPoint) Guid");
            EXPECT_EQ(markup, textoMarkupBCF(e.analisis, i, guid, f.forma));
            EXPECT_EQ(contenido(archivo->ruta, carpeta + "viewpoint.bcfv"),
                      textoViewpointBCF(i, guid, f.forma));
            EXPECT_EQ(std::count(guids.begin(), guids.end(), guid), 0);
            guids.push_back(guid);
        }

        // The folder stays behind beside the archive.
        QStringList nuevas = carpetasBCF();
        for (const QString& c : antes) nuevas.removeOne(c);
        ASSERT_EQ(nuevas.size(), 1);
        EXPECT_TRUE(QRegularExpression(QStringLiteral("^TESKAL_BCF_[0-9A-F-]{36}$"))
                        .match(nuevas[0])
                        .hasMatch())
            << nuevas[0].toStdString();
        EXPECT_TRUE(
            QFile::exists(QDir::temp().filePath(nuevas[0] + QStringLiteral("/bcf.version"))));
    }

    // The standard archive as bcf-client reads it: project, the extension
    // schema's lists, and per topic its title, type, status, labels, date,
    // camera (Z up), components with their IfcGuids, and snapshot.
    e.forma = FormaBCF::estandar;
    const auto archivo = e.escribirArchivo();
    ASSERT_TRUE(archivo);
    const pruebas::LecturaBCF leido = pruebas::leerConBcfClient(archivo->ruta);
    ASSERT_TRUE(leido.error.isEmpty()) << leido.error.toStdString();
    const QJsonObject& bcf = leido.datos;
    EXPECT_EQ(bcf["version"].toString(), "2.1");
    EXPECT_EQ(bcf["proyecto"].toString(), "Proyecto \"Norte\"");
    const QJsonObject ext = bcf["extensiones"].toObject();
    EXPECT_EQ(textos(ext["tipos"]), QStringList{"Clash"});
    EXPECT_EQ(textos(ext["estados"]), QStringList({"Open", "InProgress", "Resolved", "Closed"}));
    EXPECT_EQ(textos(ext["etiquetas"]), QStringList({"Clash", "ARQ", "MEP", "EST"}));

    // The camera of every clash here: from (3.25, -4.5, 6) towards (1, 1, 1).
    const glm::vec3 direccion = glm::normalize(glm::vec3(-2.25f, 5.5f, -5.0f));
    const glm::vec3 arriba = glm::normalize(glm::vec3(0, 0, 1) - direccion * direccion.z);
    struct Tema {
        std::string id, titulo, estado;
        QStringList etiquetas;
        QString ifcA, ifcB;
        bool snapshot;
    };
    const Tema temas[] = {
        // Sorted by folder, as the reader lists them.
        {id4, "Puerta ↔ Bandeja", "Open", {"Clash", "ARQ", "MEP"}, "", "", false},
        {id3, "Muro ↔ Tubo", "Closed", {"Clash", "ARQ", "MEP"}, "", "", false},
        {id1,
         "A&B<1> ↔ Losa ↔ 2",
         "Open",
         {"Clash", "ARQ", "MEP"},
         "2O2Fr$t4X7Zf8NOew3FLOH",
         "0K3x_9Jm$1YqWnH7Ze4TbA",
         true},
        {id2, "Viga ↔ Ducto", "Open", {"Clash", "ARQ", "EST"}, "", "", false},
    };
    const QJsonArray leidos = bcf["temas"].toArray();
    ASSERT_EQ(leidos.size(), 4);
    for (int k = 0; k < 4; ++k) {
        const Tema& t = temas[k];
        SCOPED_TRACE(t.id);
        const QJsonObject tema = leidos[k].toObject();
        EXPECT_EQ(tema["guid"].toString().toStdString(), guidBCF(t.id));
        EXPECT_EQ(tema["titulo"].toString().toStdString(), t.titulo);
        EXPECT_EQ(tema["tipo"].toString(), "Clash");
        EXPECT_EQ(tema["estado"].toString().toStdString(), t.estado);
        EXPECT_EQ(textos(tema["etiquetas"]), t.etiquetas);
        EXPECT_EQ(tema["fecha"].toString(), "2025-11-20T08:30:00+00:00");
        const QJsonArray vistas = tema["vistas"].toArray();
        ASSERT_EQ(vistas.size(), 1);
        const QJsonObject vista = vistas[0].toObject();
        EXPECT_EQ(vista["archivo"].toString(), "viewpoint.bcfv");
        const QJsonObject camara = vista["camara"].toObject();
        EXPECT_EQ(vector3(camara["posicion"]), std::vector<float>({3.25f, -4.5f, 6.0f}));
        const std::vector<float> d = vector3(camara["direccion"]), u = vector3(camara["arriba"]);
        ASSERT_EQ(d.size(), 3u);
        ASSERT_EQ(u.size(), 3u);
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(d[c], direccion[c], 2e-6f);
            EXPECT_NEAR(u[c], arriba[c], 2e-6f);
        }
        EXPECT_EQ(camara["campo"].toDouble(), 60.0);
        const QJsonArray componentes = vista["componentes"].toArray();
        ASSERT_EQ(componentes.size(), 2);
        const auto& i = *std::find_if(lista.begin(), lista.end(),
                                      [&](const Interferencia& x) { return x.id == t.id; });
        for (const auto& [n, nombre, ifc] :
             {std::tuple(0, i.nombreA, t.ifcA), std::tuple(1, i.nombreB, t.ifcB)}) {
            const QJsonObject c = componentes[n].toObject();
            EXPECT_EQ(c["ifcGuid"].toString(), ifc); // null, read as "", without one
            EXPECT_EQ(c["sistema"].toString(), "TESKAL");
            EXPECT_EQ(c["herramienta"].toString().toStdString(), nombre);
        }
        EXPECT_EQ(vista["snapshot"].toString(),
                  t.snapshot
                      ? QString(QCryptographicHash::hash(png, QCryptographicHash::Md5).toHex())
                      : QString());
    }

    // Without clashes, under the same name: the earlier archive is replaced,
    // not added to, by one with only the documents of the root.
    const auto vacio = exportador("Fase 2/3: ok?", {}).escribirArchivo();
    ASSERT_TRUE(vacio);
    EXPECT_EQ(vacio->ruta, archivo->ruta);
    EXPECT_EQ(entradas(vacio->ruta), "bcf.version extensions.xsd project.bcfp");
    const pruebas::LecturaBCF vacioLeido = pruebas::leerConBcfClient(vacio->ruta);
    ASSERT_TRUE(vacioLeido.error.isEmpty()) << vacioLeido.error.toStdString();
    EXPECT_TRUE(vacioLeido.datos["temas"].toArray().isEmpty());
}

TEST(ArchivoBCF, fallaSiNoHayCarpetaOZipFalla) {
    const BCFExporter e = exportador("Sin sitio", {interferencia("ID-6")});
    const QString sinSitio = carpetaSinSitio();
    ASSERT_FALSE(sinSitio.isEmpty());
    {
        OtroTemporal temporal(sinSitio);
        EXPECT_FALSE(e.escribirArchivo());
    }
    // A temporary directory that does not exist: nothing is written, neither
    // there nor in the working folder.
    const QStringList enCarpetaActual = QDir::current().entryList({QStringLiteral("TESKAL_BCF_*")});
    {
        OtroTemporal temporal(QDir::tempPath() + QStringLiteral("/no/existe"));
        EXPECT_FALSE(e.escribirArchivo());
    }
    EXPECT_EQ(QDir::current().entryList({QStringLiteral("TESKAL_BCF_*")}), enCarpetaActual);
    EXPECT_FALSE(QDir::temp().exists(QStringLiteral("no")));
    // A folder where the archive should go makes zip end with an error status.
    ASSERT_TRUE(QDir::temp().mkpath(QStringLiteral("Sin sitio.bcf/dentro")));
    EXPECT_FALSE(e.escribirArchivo());
    ASSERT_TRUE(QDir(QDir::temp().filePath(QStringLiteral("Sin sitio.bcf"))).removeRecursively());
    EXPECT_TRUE(e.escribirArchivo());
}

TEST(CopiaBCF, reemplazaLoQueHayYFallaEnCarpetaInexistente) {
    const QDir tmp = QDir::temp();
    const QString origen = tmp.filePath(QStringLiteral("origen_copia.bcf"));
    const QString destino = tmp.filePath(QStringLiteral("destino_copia.bcf"));
    for (const auto& [ruta, datos] : {std::pair{origen, QByteArray("archivo nuevo")},
                                      std::pair{destino, QByteArray("anterior, más largo")}}) {
        QFile f(ruta);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(datos) == datos.size());
    }
    EXPECT_TRUE(copiarArchivoBCF(origen, destino));
    QFile copia(destino);
    ASSERT_TRUE(copia.open(QIODevice::ReadOnly));
    EXPECT_EQ(copia.readAll(), QByteArray("archivo nuevo"));

    EXPECT_FALSE(copiarArchivoBCF(origen, tmp.filePath(QStringLiteral("no_existe/informe.bcf"))));
    EXPECT_FALSE(QFile::exists(tmp.filePath(QStringLiteral("no_existe"))));
    EXPECT_FALSE(copiarArchivoBCF(tmp.filePath(QStringLiteral("no_hay.bcf")), destino));
}

TEST(ExportacionBCF, guardaDesdeElHiloPrincipalOFallaSinAbrirElPanel) {
    // Both callbacks run on the main thread; the save one only when both
    // forms were written, under one name.
    const auto exportar = [](const BCFExporter& e, std::optional<ArchivosBCF>& guardado) {
        std::optional<bool> exito;
        e.exportar(
            [&](const ArchivosBCF& archivos, BCFExporter::Completion fin) {
                EXPECT_TRUE(enHiloPrincipal());
                guardado = archivos;
                fin(true);
            },
            [&](bool ok) {
                EXPECT_TRUE(enHiloPrincipal());
                exito = ok;
            });
        EXPECT_TRUE(pruebas::esperarHasta([&] { return exito.has_value(); }, 60000));
        return exito.value_or(false);
    };
    BCFExporter e = exportador("Entrega_final", {interferencia("ID-7")});
    e.forma = FormaBCF::literalTESKAL; // the export writes both, whatever this says
    e.thumbnails["ID-7"] = png;
    std::optional<ArchivosBCF> guardado;
    {
        OtroTemporal temporal(QDir::tempPath() + QStringLiteral("/no/existe"));
        EXPECT_FALSE(exportar(e, guardado));
        EXPECT_FALSE(guardado);
    }
    ASSERT_TRUE(exportar(e, guardado));
    ASSERT_TRUE(guardado);
    EXPECT_EQ(guardado->nombre, "Entrega_final.bcf");
    const std::string tema = "ID-7/ ID-7/markup.bcf ID-7/snapshot.png ID-7/viewpoint.bcfv ";
    EXPECT_EQ(entradas(guardado->ruta(FormaBCF::estandar)),
              tema + "bcf.version extensions.xsd project.bcfp");
    EXPECT_EQ(entradas(guardado->ruta(FormaBCF::literalTESKAL)), tema + "bcf.version project.bcfp");
    EXPECT_NE(contenido(guardado->ruta(FormaBCF::literalTESKAL), "ID-7/markup.bcf")
                  .find("<ViewPoint Guid="),
              std::string::npos);
}
