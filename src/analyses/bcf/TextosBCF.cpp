#include "analyses/bcf/TextosBCF.h"

#include "analyses/bcf/CamaraBCF.h"
#include "federation/Formato.h"
#include "persistence/JsonRegistros.h"

#include <QString>
#include <QTextBoundaryFinder>
#include <cmath>

namespace teskal {

namespace {

constexpr std::string_view xsins = "http://www.w3.org/2001/XMLSchema-instance";

} // namespace

std::string escaparXML(std::string_view texto) {
    std::string r;
    r.reserve(texto.size());
    for (const char c : texto) {
        switch (c) {
        case '&':
            r += "&amp;";
            break;
        case '<':
            r += "&lt;";
            break;
        case '>':
            r += "&gt;";
            break;
        case '"':
            r += "&quot;";
            break;
        default:
            r += c;
        }
    }
    return r;
}

std::string guidBCF(std::string_view id) {
    std::string r(id);
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

std::string textoVersionBCF() {
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<Version VersionId=\"2.1\" xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"version.xsd\">\n";
    t += "    <DetailedVersion>2.1</DetailedVersion>\n";
    t += "</Version>";
    return t;
}

std::string textoProyectoBCF(std::string_view projectId, std::string_view nombreProyecto) {
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<ProjectExtension xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"project.xsd\">\n";
    t += "    <Project ProjectId=\"";
    t += projectId;
    t += "\">\n        <Name>";
    t += escaparXML(nombreProyecto);
    t += "</Name>\n    </Project>\n";
    t += "    <ExtensionSchema>extensions.xsd</ExtensionSchema>\n";
    t += "</ProjectExtension>";
    return t;
}

std::string textoMarkupBCF(const AnalisisInterferencias& analisis, const Interferencia& i,
                           std::string_view viewpointGuid) {
    const std::string fecha = textoFechaJson(analisis.fecha).toStdString();
    const std::string titulo = i.nombreA + " ↔ " + i.nombreB;
    const std::string descripcion = "Interferencia entre " + i.especialidadA + " y " +
                                    i.especialidadB +
                                    ". Tolerancia: " + formato("%.3f", analisis.tolerancia) + " m.";
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<Markup xmlns:xsi=\"";
    t += xsins;
    t += "\" xsi:noNamespaceSchemaLocation=\"markup.xsd\">\n";
    t += "    <Topic Guid=\"";
    t += guidBCF(i.id);
    t += "\" TopicType=\"Clash\" TopicStatus=\"";
    t += estadoBCF(i.estado);
    t += "\">\n        <Title>";
    t += escaparXML(titulo);
    t += "</Title>\n        <CreationDate>";
    t += fecha;
    t += "</CreationDate>\n        <CreationAuthor>TESKAL</CreationAuthor>\n        <ModifiedDate>";
    t += fecha;
    t += "</ModifiedDate>\n        <ModifiedAuthor>TESKAL</ModifiedAuthor>\n        <Description>";
    t += escaparXML(descripcion);
    t += "</Description>\n        <Labels>\n            <Label>Clash</Label>\n            <Label>";
    t += escaparXML(i.especialidadA);
    t += "</Label>\n            <Label>";
    t += escaparXML(i.especialidadB);
    t += "</Label>\n        </Labels>\n    </Topic>\n    <Viewpoints>\n        <ViewPoint Guid=\"";
    t += viewpointGuid;
    t += "\">\n";
    t += "            <Viewpoint>viewpoint.bcfv</Viewpoint>\n";
    t += "            <Snapshot>snapshot.png</Snapshot>\n";
    t += "            <Index>0</Index>\n";
    t += "        </ViewPoint>\n";
    t += "    </Viewpoints>\n";
    t += "</Markup>";
    return t;
}

namespace {

// A coordinate as printf writes it: Qt's formatting drops the sign of a
// negative zero, which printf keeps ("-0.0000").
std::string numero(const char* formatoValor, float valor) {
    std::string r = formato(formatoValor, static_cast<double>(valor));
    if (std::signbit(valor) && r.front() != '-') r.insert(r.begin(), '-');
    return r;
}

// One vector of the camera: <X>, <Y>, <Z> in the given format, each value on
// its own line twelve blanks in.
void anadirVector(std::string& t, const char* formatoValor, const glm::vec3& v) {
    t += "            <X>" + numero(formatoValor, v.x) + "</X>\n";
    t += "            <Y>" + numero(formatoValor, v.y) + "</Y>\n";
    t += "            <Z>" + numero(formatoValor, v.z) + "</Z>\n";
}

void anadirComponente(std::string& t, std::string_view nombre) {
    t += "            <Component>\n";
    t += "                <OriginatingSystem>TESKAL</OriginatingSystem>\n";
    t += "                <AuthoringToolId>";
    t += escaparXML(nombre);
    t += "</AuthoringToolId>\n";
    t += "            </Component>\n";
}

} // namespace

std::string textoViewpointBCF(const Interferencia& i, std::string_view viewpointGuid) {
    const CamaraBCF c = camaraBCF(i.viewpointPos, i.viewpointTarget);
    std::string t;
    t += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    t += "<VisualizationInfo xmlns:xsi=\"";
    t += xsins;
    t += "\" Guid=\"";
    t += viewpointGuid;
    t += "\" xsi:noNamespaceSchemaLocation=\"viewpoint.xsd\">\n";
    t += "    <PerspectiveCamera>\n";
    t += "        <CameraViewPoint>\n";
    anadirVector(t, "%.4f", c.posicion);
    t += "        </CameraViewPoint>\n";
    t += "        <CameraDirection>\n";
    anadirVector(t, "%.6f", c.direccion);
    t += "        </CameraDirection>\n";
    t += "        <CameraUpVector>\n";
    anadirVector(t, "%.6f", c.arriba);
    t += "        </CameraUpVector>\n";
    t += "        <FieldOfView>60.0</FieldOfView>\n";
    t += "    </PerspectiveCamera>\n";
    t += "    <Components>\n";
    t += "        <Selection>\n";
    anadirComponente(t, i.nombreA);
    anadirComponente(t, i.nombreB);
    t += "        </Selection>\n";
    t += "        <Visibility DefaultVisibility=\"true\"/>\n";
    t += "    </Components>\n";
    t += "    <ClippingPlanes/>\n";
    t += "</VisualizationInfo>";
    return t;
}

namespace {

bool caracterPermitido(char32_t c) {
    return QChar::isLetterOrNumber(c) || c == U'-' || c == U'_' || c == U' ';
}

// The first code point of a piece of UTF-16 text, pairing surrogates.
char32_t primerCodigo(QStringView s) {
    if (s.size() >= 2 && s[0].isHighSurrogate() && s[1].isLowSurrogate())
        return QChar::surrogateToUcs4(s[0], s[1]);
    return s.isEmpty() ? U'\0' : s[0].unicode();
}

} // namespace

std::string nombreArchivoBCF(std::string_view nombreAnalisis) {
    const QString nombre =
        QString::fromUtf8(nombreAnalisis.data(), static_cast<qsizetype>(nombreAnalisis.size()));
    QString limpio;
    QTextBoundaryFinder grafemas(QTextBoundaryFinder::Grapheme, nombre);
    qsizetype inicio = 0;
    while (grafemas.toNextBoundary() != -1) {
        const qsizetype fin = grafemas.position();
        const QStringView caracter = QStringView(nombre).mid(inicio, fin - inicio);
        if (caracterPermitido(primerCodigo(caracter))) limpio += caracter;
        inicio = fin;
    }
    return limpio.toStdString() + ".bcf";
}

} // namespace teskal
