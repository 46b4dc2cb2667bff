// The BCF archive on disk: written into the test's private temporary folder,
// packed by the real /usr/bin/zip and read back with the real /usr/bin/unzip;
// the copy behind the save panel; the export through the thread pool and back
// on the main thread.
#include "analyses/bcf/BCFExporter.h"
#include "analyses/bcf/TextosBCF.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTimeZone>
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

// A 2 × 2 RGB image, a valid PNG.
const QByteArray
    png("\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x02"
        "\x00\x00\x00\x02\x08\x02\x00\x00\x00\xfd\xd4\x9a\x73\x00\x00\x00\x12\x49\x44\x41"
        "\x54\x78\x9c\x63\xf8\x3f\x95\x41\xae\xe3\x29\x03\x84\x02\x00\x2c\x4b\x06\x3f\x7b"
        "\xcd\xbf\x8a\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82",
        75);

QByteArray ejecutar(const QString& programa, const QStringList& argumentos, int* estado = nullptr) {
    QProcess p;
    p.start(programa, argumentos);
    EXPECT_TRUE(p.waitForStarted(-1)) << programa.toStdString();
    p.waitForFinished(-1);
    if (estado) *estado = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    return p.readAllStandardOutput();
}

std::vector<std::string> entradas(const QString& archivo) {
    int estado = -1;
    const QByteArray lista =
        ejecutar(QStringLiteral("/usr/bin/unzip"), {QStringLiteral("-Z1"), archivo}, &estado);
    EXPECT_EQ(estado, 0);
    std::vector<std::string> r;
    for (const QByteArray& linea : lista.split('\n'))
        if (!linea.isEmpty()) r.push_back(linea.toStdString());
    std::sort(r.begin(), r.end());
    return r;
}

std::string contenido(const QString& archivo, const std::string& entrada) {
    return ejecutar(QStringLiteral("/usr/bin/unzip"),
                    {QStringLiteral("-p"), archivo, QString::fromStdString(entrada)})
        .toStdString();
}

std::string atributo(const std::string& texto, const char* patron) {
    const auto m =
        QRegularExpression(QString::fromUtf8(patron)).match(QString::fromStdString(texto));
    EXPECT_TRUE(m.hasMatch()) << patron;
    return m.captured(1).toStdString();
}

const char* const formaUuid = "^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$";

Interferencia interferencia(std::string id, std::string nombreA, std::string nombreB) {
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

BCFExporter exportador(std::string nombre, std::vector<Interferencia> lista) {
    BCFExporter e;
    e.analisis.id = "A1B2C3D4-0000-4000-8000-000000000001";
    e.analisis.nombre = nombre;
    e.analisis.fecha = QDateTime(QDate(2025, 11, 20), QTime(8, 30, 0), QTimeZone::utc());
    e.analisis.tolerancia = 0.02;
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

template <typename F> bool esperar(F listo) {
    QElapsedTimer reloj;
    reloj.start();
    while (!listo() && reloj.elapsed() < 60000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return listo();
}

bool enHiloPrincipal() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

TEST(ArchivoBCF, entradasYContenidosDeUnAnalisis) {
    BCFExporter e =
        exportador("Fase 2/3: ok?",
                   {
                       interferencia("11111111-AAAA-4BBB-8CCC-000000000001", "A&B<1>", "Losa ↔ 2"),
                       interferencia("22222222-aaaa-4bbb-8ccc-000000000002", "Viga", "Ducto"),
                       interferencia("33333333-AAAA-4BBB-8CCC-000000000003", "Muro", "Tubo"),
                       interferencia("44444444-AAAA-4BBB-8CCC-000000000004", "Puerta", "Bandeja"),
                   });
    e.nombreProyecto = "Proyecto \"Norte\"";
    e.analisis.interferencias[2].estado = EstadoClash::resuelto;
    e.thumbnails["11111111-AAAA-4BBB-8CCC-000000000001"] = png;
    e.thumbnails["33333333-AAAA-4BBB-8CCC-000000000003"] = QByteArray("no es una imagen");
    e.thumbnails["44444444-AAAA-4BBB-8CCC-000000000004"] = QByteArray();
    e.thumbnails["99999999-AAAA-4BBB-8CCC-000000000009"] = png; // of no clash here
    const QStringList antes = carpetasBCF();

    const auto archivo = e.escribirArchivo();
    ASSERT_TRUE(archivo);
    EXPECT_EQ(archivo->nombre, "Fase 23 ok.bcf");
    EXPECT_EQ(archivo->ruta, QDir(QDir::tempPath()).filePath(QStringLiteral("Fase 23 ok.bcf")));

    // Paths from the archive's root, the folder of each clash named by its id
    // in upper case; a snapshot only for the real PNG.
    const std::vector<std::string> esperadas = {
        "11111111-AAAA-4BBB-8CCC-000000000001/",
        "11111111-AAAA-4BBB-8CCC-000000000001/markup.bcf",
        "11111111-AAAA-4BBB-8CCC-000000000001/snapshot.png",
        "11111111-AAAA-4BBB-8CCC-000000000001/viewpoint.bcfv",
        "22222222-AAAA-4BBB-8CCC-000000000002/",
        "22222222-AAAA-4BBB-8CCC-000000000002/markup.bcf",
        "22222222-AAAA-4BBB-8CCC-000000000002/viewpoint.bcfv",
        "33333333-AAAA-4BBB-8CCC-000000000003/",
        "33333333-AAAA-4BBB-8CCC-000000000003/markup.bcf",
        "33333333-AAAA-4BBB-8CCC-000000000003/viewpoint.bcfv",
        "44444444-AAAA-4BBB-8CCC-000000000004/",
        "44444444-AAAA-4BBB-8CCC-000000000004/markup.bcf",
        "44444444-AAAA-4BBB-8CCC-000000000004/viewpoint.bcfv",
        "bcf.version",
        "project.bcfp",
    };
    EXPECT_EQ(entradas(archivo->ruta), esperadas);

    EXPECT_EQ(contenido(archivo->ruta, "bcf.version"), textoVersionBCF());
    const std::string proyecto = contenido(archivo->ruta, "project.bcfp");
    const std::string projectId = atributo(proyecto, "ProjectId=\"([^\"]*)\"");
    EXPECT_TRUE(QRegularExpression(formaUuid).match(QString::fromStdString(projectId)).hasMatch())
        << projectId;
    EXPECT_EQ(proyecto, textoProyectoBCF(projectId, "Proyecto \"Norte\""));

    // Each topic and its viewpoint share one new GUID; no two topics share one.
    std::vector<std::string> guids{projectId};
    for (const Interferencia& i : e.analisis.interferencias) {
        SCOPED_TRACE(i.id);
        const std::string carpeta = guidBCF(i.id) + "/";
        const std::string markup = contenido(archivo->ruta, carpeta + "markup.bcf");
        const std::string viewpoint = contenido(archivo->ruta, carpeta + "viewpoint.bcfv");
        const std::string guid = atributo(markup, "<ViewPoint Guid=\"([^\"]*)\"");
        EXPECT_TRUE(QRegularExpression(formaUuid).match(QString::fromStdString(guid)).hasMatch())
            << guid;
        EXPECT_EQ(markup, textoMarkupBCF(e.analisis, i, guid));
        EXPECT_EQ(viewpoint, textoViewpointBCF(i, guid));
        EXPECT_EQ(std::count(guids.begin(), guids.end(), guid), 0);
        guids.push_back(guid);
    }
    EXPECT_EQ(contenido(archivo->ruta, "11111111-AAAA-4BBB-8CCC-000000000001/snapshot.png"),
              png.toStdString());

    // The folder stays behind beside the archive.
    const QStringList despues = carpetasBCF();
    ASSERT_EQ(despues.size(), antes.size() + 1);
    for (const QString& c : despues)
        if (!antes.contains(c)) {
            EXPECT_TRUE(QRegularExpression(QStringLiteral("^TESKAL_BCF_[0-9A-F-]{36}$"))
                            .match(c)
                            .hasMatch())
                << c.toStdString();
            EXPECT_TRUE(
                QFile::exists(QDir(QDir::tempPath()).filePath(c + QStringLiteral("/bcf.version"))));
        }
}

TEST(ArchivoBCF, sinInterferenciasSoloLosDosDocumentosDeLaRaiz) {
    const BCFExporter conUna =
        exportador("Vacío", {interferencia("55555555-AAAA-4BBB-8CCC-000000000005", "A", "B")});
    const auto primero = conUna.escribirArchivo();
    ASSERT_TRUE(primero);
    EXPECT_EQ(entradas(primero->ruta).size(), 5u);

    // Same name: the earlier archive is replaced, not added to.
    const auto archivo = exportador("Vacío", {}).escribirArchivo();
    ASSERT_TRUE(archivo);
    EXPECT_EQ(archivo->ruta, primero->ruta);
    EXPECT_EQ(entradas(archivo->ruta), (std::vector<std::string>{"bcf.version", "project.bcfp"}));
    EXPECT_EQ(contenido(archivo->ruta, "bcf.version"), textoVersionBCF());
}

TEST(ArchivoBCF, fallaSiNoHayCarpetaOZipFalla) {
    const BCFExporter e =
        exportador("Sin sitio", {interferencia("66666666-AAAA-4BBB-8CCC-000000000006", "A", "B")});
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
    EXPECT_FALSE(QDir(QDir::tempPath()).exists(QStringLiteral("no")));
    // A folder where the archive should go makes zip end with an error status.
    ASSERT_TRUE(QDir(QDir::tempPath()).mkpath(QStringLiteral("Sin sitio.bcf/dentro")));
    EXPECT_FALSE(e.escribirArchivo());
    ASSERT_TRUE(QDir(QDir::tempPath()).rmdir(QStringLiteral("Sin sitio.bcf/dentro")));
    ASSERT_TRUE(QDir(QDir::tempPath()).rmdir(QStringLiteral("Sin sitio.bcf")));
    EXPECT_TRUE(e.escribirArchivo());
}

TEST(CopiaBCF, reemplazaLoQueHayYFallaEnCarpetaInexistente) {
    const QDir tmp(QDir::tempPath());
    const QString origen = tmp.filePath(QStringLiteral("origen_copia.bcf"));
    const QString destino = tmp.filePath(QStringLiteral("destino_copia.bcf"));
    for (const auto& [ruta, datos] :
         {std::pair{origen, QByteArray("archivo nuevo")},
          std::pair{destino, QByteArray("archivo anterior, más largo")}}) {
        QFile f(ruta);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(datos);
    }
    EXPECT_TRUE(copiarArchivoBCF(origen, destino));
    QFile copia(destino);
    ASSERT_TRUE(copia.open(QIODevice::ReadOnly));
    EXPECT_EQ(copia.readAll(), QByteArray("archivo nuevo"));

    EXPECT_FALSE(copiarArchivoBCF(origen, tmp.filePath(QStringLiteral("no_existe/informe.bcf"))));
    EXPECT_FALSE(QFile::exists(tmp.filePath(QStringLiteral("no_existe"))));
    EXPECT_FALSE(copiarArchivoBCF(tmp.filePath(QStringLiteral("no_hay.bcf")), destino));
}

TEST(ExportacionBCF, guardaDesdeElHiloPrincipal) {
    BCFExporter e = exportador(
        "Entrega_final", {interferencia("77777777-AAAA-4BBB-8CCC-000000000007", "Viga", "Ducto")});
    e.thumbnails["77777777-AAAA-4BBB-8CCC-000000000007"] = png;
    const QString destino = QDir(QDir::tempPath()).filePath(QStringLiteral("elegido/entrega.bcf"));
    ASSERT_TRUE(QDir().mkpath(QFileInfo(destino).path()));

    std::string nombreGuardado;
    bool guardarEnPrincipal = false, terminado = false, exito = false,
         completionEnPrincipal = false;
    e.exportar(
        [&](const std::string& nombre, const QString& ruta, BCFExporter::Completion completion) {
            guardarEnPrincipal = enHiloPrincipal();
            nombreGuardado = nombre;
            completion(copiarArchivoBCF(ruta, destino));
        },
        [&](bool ok) {
            completionEnPrincipal = enHiloPrincipal();
            exito = ok;
            terminado = true;
        });
    ASSERT_TRUE(esperar([&] { return terminado; }));
    EXPECT_TRUE(exito);
    EXPECT_TRUE(guardarEnPrincipal);
    EXPECT_TRUE(completionEnPrincipal);
    EXPECT_EQ(nombreGuardado, "Entrega_final.bcf");
    EXPECT_EQ(entradas(destino), (std::vector<std::string>{
                                     "77777777-AAAA-4BBB-8CCC-000000000007/",
                                     "77777777-AAAA-4BBB-8CCC-000000000007/markup.bcf",
                                     "77777777-AAAA-4BBB-8CCC-000000000007/snapshot.png",
                                     "77777777-AAAA-4BBB-8CCC-000000000007/viewpoint.bcfv",
                                     "bcf.version",
                                     "project.bcfp",
                                 }));
}

TEST(ExportacionBCF, unFalloLlegaComoFalsoSinAbrirElPanel) {
    const BCFExporter e =
        exportador("Sin sitio", {interferencia("88888888-AAAA-4BBB-8CCC-000000000008", "A", "B")});
    const QString sinSitio = carpetaSinSitio();
    ASSERT_FALSE(sinSitio.isEmpty());
    OtroTemporal temporal(sinSitio);
    bool guardarLlamado = false, terminado = false, exito = true, enPrincipal = false;
    e.exportar(
        [&](const std::string&, const QString&, BCFExporter::Completion) { guardarLlamado = true; },
        [&](bool ok) {
            enPrincipal = enHiloPrincipal();
            exito = ok;
            terminado = true;
        });
    ASSERT_TRUE(esperar([&] { return terminado; }));
    EXPECT_FALSE(exito);
    EXPECT_TRUE(enPrincipal);
    EXPECT_FALSE(guardarLlamado);
}
