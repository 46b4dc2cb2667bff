// The BCF archive on disk, packed by the real /usr/bin/zip and read back with
// /usr/bin/unzip; the copy behind the save panel; the export through the
// thread pool and back on the main thread.
#include "analyses/bcf/BCFExporter.h"
#include "analyses/bcf/TextosBCF.h"
#include "espera_eventos.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <QTimeZone>
#include <algorithm>
#include <gtest/gtest.h>

using namespace teskal;

namespace {

// Bytes that open with the PNG signature; the signature alone is not a PNG.
const QByteArray png("\x89PNG\r\n\x1a\nimagen", 14);

// The standard output of /usr/bin/unzip, which must end with status 0.
std::string unzip(const QStringList& argumentos) {
    QProcess p;
    p.start(QStringLiteral("/usr/bin/unzip"), argumentos);
    EXPECT_TRUE(p.waitForFinished(-1));
    EXPECT_TRUE(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
        << argumentos.join(u' ').toStdString();
    return p.readAllStandardOutput().toStdString();
}

// The archive's entries, sorted, a blank between each two.
std::string entradas(const QString& archivo) {
    QList<QByteArray> lineas = QByteArray::fromStdString(unzip({"-Z1", archivo})).split('\n');
    lineas.removeAll(QByteArray());
    std::sort(lineas.begin(), lineas.end());
    return lineas.join(' ').toStdString();
}

std::string contenido(const QString& archivo, const std::string& entrada) {
    return unzip({QStringLiteral("-p"), archivo, QString::fromStdString(entrada)});
}

// The value of the attribute, which must be an upper-case UUID.
std::string guidEn(const std::string& texto, const QString& atributo) {
    const auto m = QRegularExpression(atributo + "=\"([0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12})\"")
                       .match(QString::fromStdString(texto));
    EXPECT_TRUE(m.hasMatch()) << texto;
    return m.captured(1).toStdString();
}

Interferencia interferencia(std::string id, std::string nombreA = "A", std::string nombreB = "B") {
    return {std::move(id), {}, {}, "ARQ", "MEP", std::move(nombreA), std::move(nombreB), {}, {},
            {3.25, -4.5, 6}, {1, 1, 1}};
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
    BCFExporter e = exportador("Fase 2/3: ok?", {interferencia("ID-1", "A&B<1>", "Losa ↔ 2"),
                                                 interferencia("id-2", "Viga", "Ducto"),
                                                 interferencia("ID-3", "Muro", "Tubo"),
                                                 interferencia("ID-4", "Puerta", "Bandeja")});
    e.nombreProyecto = "Proyecto \"Norte\"";
    e.analisis.interferencias[2].estado = EstadoClash::resuelto;
    e.thumbnails["ID-1"] = png;
    e.thumbnails["ID-3"] = QByteArray("no es una imagen");
    e.thumbnails["ID-4"] = png.left(8);
    e.thumbnails["ID-9"] = png; // of no clash here
    const QStringList antes = carpetasBCF();

    const auto archivo = e.escribirArchivo();
    ASSERT_TRUE(archivo);
    EXPECT_EQ(archivo->nombre, "Fase 23 ok.bcf");
    EXPECT_EQ(archivo->ruta, QDir(QDir::tempPath()).filePath(QStringLiteral("Fase 23 ok.bcf")));

    // Paths from the archive's root, the folder of each clash named by its id
    // in upper case; a snapshot only for PNG bytes.
    EXPECT_EQ(entradas(archivo->ruta),
              "ID-1/ ID-1/markup.bcf ID-1/snapshot.png ID-1/viewpoint.bcfv "
              "ID-2/ ID-2/markup.bcf ID-2/viewpoint.bcfv ID-3/ ID-3/markup.bcf ID-3/viewpoint.bcfv "
              "ID-4/ ID-4/markup.bcf ID-4/viewpoint.bcfv bcf.version project.bcfp");
    EXPECT_EQ(contenido(archivo->ruta, "ID-1/snapshot.png"), png.toStdString());
    EXPECT_EQ(contenido(archivo->ruta, "bcf.version"), textoVersionBCF());
    const std::string proyecto = contenido(archivo->ruta, "project.bcfp");
    const std::string projectId = guidEn(proyecto, "ProjectId");
    EXPECT_EQ(proyecto, textoProyectoBCF(projectId, "Proyecto \"Norte\""));

    // Each topic and its viewpoint share one new GUID; no two topics share one.
    std::vector<std::string> guids{projectId};
    for (const Interferencia& i : e.analisis.interferencias) {
        SCOPED_TRACE(i.id);
        const std::string carpeta = guidBCF(i.id) + "/";
        const std::string markup = contenido(archivo->ruta, carpeta + "markup.bcf");
        const std::string guid = guidEn(markup, "<ViewPoint Guid");
        EXPECT_EQ(markup, textoMarkupBCF(e.analisis, i, guid));
        EXPECT_EQ(contenido(archivo->ruta, carpeta + "viewpoint.bcfv"), textoViewpointBCF(i, guid));
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
    EXPECT_TRUE(QFile::exists(QDir::temp().filePath(nuevas[0] + QStringLiteral("/bcf.version"))));

    // Without clashes, under the same name: the earlier archive is replaced,
    // not added to, by one with only the two documents of the root.
    const auto vacio = exportador("Fase 2/3: ok?", {}).escribirArchivo();
    ASSERT_TRUE(vacio);
    EXPECT_EQ(vacio->ruta, archivo->ruta);
    EXPECT_EQ(entradas(vacio->ruta), "bcf.version project.bcfp");
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
    // Both callbacks run on the main thread; the save one only for an archive.
    const auto exportar = [](const BCFExporter& e, const QString& destino, std::string& guardado) {
        std::optional<bool> exito;
        e.exportar(
            [&](const std::string& nombre, const QString& ruta, BCFExporter::Completion fin) {
                EXPECT_TRUE(enHiloPrincipal());
                guardado = nombre;
                fin(copiarArchivoBCF(ruta, destino));
            },
            [&](bool ok) {
                EXPECT_TRUE(enHiloPrincipal());
                exito = ok;
            });
        EXPECT_TRUE(pruebas::esperarHasta([&] { return exito.has_value(); }, 60000));
        return exito.value_or(false);
    };
    const QString destino = QDir::temp().filePath(QStringLiteral("elegido/entrega.bcf"));
    ASSERT_TRUE(QDir().mkpath(QFileInfo(destino).path()));
    BCFExporter e = exportador("Entrega_final", {interferencia("ID-7")});
    e.thumbnails["ID-7"] = png;
    std::string guardado;
    {
        OtroTemporal temporal(QDir::tempPath() + QStringLiteral("/no/existe"));
        EXPECT_FALSE(exportar(e, destino, guardado));
        EXPECT_EQ(guardado, "");
    }
    EXPECT_TRUE(exportar(e, destino, guardado));
    EXPECT_EQ(guardado, "Entrega_final.bcf");
    EXPECT_EQ(entradas(destino), "ID-7/ ID-7/markup.bcf ID-7/snapshot.png ID-7/viewpoint.bcfv "
                                 "bcf.version project.bcfp");
}
