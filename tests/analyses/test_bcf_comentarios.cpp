// The BCF archive of markup comments, packed by the real /usr/bin/zip, listed
// with /usr/bin/unzip and, in the standard form, read back with bcf-client.
#include "analyses/bcf/BCFComentarios.h"
#include "lector_bcf.h"
#include "lectura_zip.h"

#include <QDir>
#include <QJsonArray>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimeZone>
#include <algorithm>
#include <gtest/gtest.h>

using namespace teskal;
using pruebas::contenido;
using pruebas::entradas;
using pruebas::unzip;

namespace {

// A 1 x 1 PNG, as the window converts a picture.
const QByteArray png = QByteArray::fromBase64(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGNgYGD4DwABBAEAwS2OUAAAAABJRU5ErkJggg==");
const QByteArray jpeg("\xFF\xD8\xFF\xE0 jpeg", 9);

ComentarioMarkup comentario(std::string id, std::string tag, std::string descripcion, bool conFoto) {
    ComentarioMarkup c;
    c.id = std::move(id);
    c.tag = std::move(tag);
    c.descripcion = std::move(descripcion);
    c.autor = "Ana <Coordinación>";
    c.fecha = QDateTime(QDate(2026, 3, 1), QTime(14, 5, 9), QTimeZone::utc());
    if (conFoto) c.imagenJPEG = jpeg;
    return c;
}

const std::string id1 = "6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F", id2 = "5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A";

} // namespace

TEST(BCFComentarios, FormaEstandarQueOtraHerramientaLee) {
    QTemporaryDir d;
    BCFComentarios bcf{{comentario(id1, "MRK-001", "Fisura & junta \"norte\"", true),
                        comentario(id2, "MRK-002", "", false)},
                       {{id1, png}},
                       FormaBCF::estandar};
    // A target without an extension gets ".bcf"; what stood there is replaced.
    const QString destino = destinoBCFComentarios(d.filePath(QStringLiteral("Comentarios")));
    EXPECT_EQ(destino, d.filePath(QStringLiteral("Comentarios.bcf")));
    EXPECT_EQ(destinoBCFComentarios(QStringLiteral("/x/a.zip")), QStringLiteral("/x/a.zip.bcf"));
    QFile viejo(destino);
    ASSERT_TRUE(viejo.open(QIODevice::WriteOnly) && viejo.write("basura") == 6);
    viejo.close();
    const QStringList antes = QDir(QDir::tempPath()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_TRUE(bcf.escribir(destino));
    // The working folder is gone.
    EXPECT_EQ(QDir(QDir::tempPath()).entryList(QDir::Dirs | QDir::NoDotAndDotDot), antes);

    // The comment without a picture has no snapshot and names none.
    EXPECT_EQ(entradas(destino), "5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A/ 5D0E8C1B-7A2F-4E3D-9B6C-0F1E2D3C4B5A/markup.bcf "
                                 "6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F/ 6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F/markup.bcf "
                                 "6B1D7E0A-3C55-4F0B-9D2E-1A2B3C4D5E6F/snapshot.png bcf.version extensions.xsd "
                                 "project.bcfp");
    EXPECT_EQ(QByteArray::fromStdString(contenido(destino, id1 + "/snapshot.png")), png);
    EXPECT_EQ(contenido(destino, id2 + "/markup.bcf").find("Snapshot"), std::string::npos);

    const auto lectura = pruebas::leerConBcfClient(destino);
    ASSERT_TRUE(lectura.error.isEmpty()) << lectura.error.toStdString();
    EXPECT_EQ(lectura.datos["proyecto"].toString(), QStringLiteral("VORNEL Comentarios"));
    EXPECT_EQ(lectura.datos["extensiones"]["tipos"].toArray().first().toString(), QStringLiteral("Comment"));
    const QJsonArray temas = lectura.datos["temas"].toArray();
    ASSERT_EQ(temas.size(), 2);
    const QJsonObject sinFoto = temas[0].toObject(), conFoto = temas[1].toObject();
    // An empty description gives a title with only the tag; values come back unescaped.
    EXPECT_EQ(sinFoto["titulo"].toString(), QStringLiteral("MRK-002"));
    EXPECT_EQ(conFoto["titulo"].toString(), QStringLiteral("MRK-001: Fisura & junta \"norte\""));
    EXPECT_EQ(conFoto["tipo"].toString(), QStringLiteral("Comment"));
    EXPECT_EQ(conFoto["estado"].toString(), QStringLiteral("Open"));
    EXPECT_EQ(conFoto["autor"].toString(), QStringLiteral("Ana <Coordinación>"));
    EXPECT_EQ(conFoto["guid"].toString(), QString::fromStdString(id1));
    EXPECT_TRUE(conFoto["fecha"].toString().startsWith(QStringLiteral("2026-03-01T14:05:09")));
}

TEST(BCFComentarios, FormaLiteralYListaVacia) {
    QTemporaryDir d;
    const QString destino = d.filePath(QStringLiteral("literal.bcf"));
    BCFComentarios bcf{{comentario(id2, "MRK-002", "", false)}, {}, FormaBCF::literalTESKAL};
    ASSERT_TRUE(bcf.escribir(destino));
    // Without a picture there is no snapshot, while the markup still names it.
    EXPECT_EQ(entradas(destino), id2 + "/ " + id2 + "/markup.bcf bcf.version project.bcfp");
    const std::string markup = contenido(destino, id2 + "/markup.bcf");
    const std::string vpGuid = markup.substr(markup.find("<Viewpoints Guid=\"") + 18, 36);
    EXPECT_EQ(markup, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<Markup xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
                      "  <Topic Guid=\"" + id2 + "\" TopicType=\"Comment\" TopicStatus=\"Open\">\n"
                      "    <Title>MRK-002</Title>\n"
                      "    <CreationDate>2026-03-01T14:05:09Z</CreationDate>\n"
                      "    <CreationAuthor>Ana <Coordinación></CreationAuthor>\n"
                      "    <Description></Description>\n"
                      "  </Topic>\n"
                      "  <Viewpoints Guid=\"" + vpGuid + "\">\n"
                      "    <Snapshot>snapshot.png</Snapshot>\n"
                      "  </Viewpoints>\n"
                      "</Markup>");
    EXPECT_EQ(contenido(destino, "bcf.version"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                 "<Version VersionId=\"2.1\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
                                                 "  <DetailedVersion>2.1</DetailedVersion>\n"
                                                 "</Version>");
    const std::string proyecto = contenido(destino, "project.bcfp");
    EXPECT_TRUE(proyecto.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ProjectExtension>\n  <Project ProjectId=\""))
        << proyecto;
    EXPECT_NE(proyecto.find("\">\n    <Name>VORNEL Comentarios</Name>\n  </Project>\n</ProjectExtension>"), std::string::npos);
    // The literal form keeps the JPEG bytes under the PNG name.
    BCFComentarios conFoto{{comentario(id1, "MRK-001", "x", true)}, {}, FormaBCF::literalTESKAL};
    ASSERT_TRUE(conFoto.escribir(destino));
    EXPECT_EQ(QByteArray::fromStdString(contenido(destino, id1 + "/snapshot.png")), jpeg);

    // An empty list: only the top files, in both forms.
    for (const FormaBCF forma : {FormaBCF::literalTESKAL, FormaBCF::estandar}) {
        const QString vacio = d.filePath(QStringLiteral("vacio.bcf"));
        ASSERT_TRUE(BCFComentarios({{}, {}, forma}).escribir(vacio));
        EXPECT_EQ(entradas(vacio), forma == FormaBCF::estandar ? "bcf.version extensions.xsd project.bcfp"
                                                               : "bcf.version project.bcfp");
    }
    // A place that cannot be written fails, and leaves no folder behind.
    const QStringList antes = QDir(QDir::tempPath()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    EXPECT_FALSE(bcf.escribir(d.filePath(QStringLiteral("no/existe/x.bcf"))));
    EXPECT_EQ(QDir(QDir::tempPath()).entryList(QDir::Dirs | QDir::NoDotAndDotDot), antes);
}
