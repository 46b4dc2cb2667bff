#pragma once

// Helpers shared by the federation model tests: a temporary directory that
// cleans up after itself, and the frame of a STEP file around a DATA section.

#include <filesystem>
#include <fstream>
#include <glm/vec3.hpp>
#include <ostream>
#include <random>
#include <string>
#include <string_view>

namespace glm {
// Lets GoogleTest print a point when a comparison fails.
inline void PrintTo(const vec3& v, std::ostream* os) {
    *os << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}
} // namespace glm

namespace teskal::pruebas {

class DirectorioTemporal {
public:
    DirectorioTemporal() {
        const auto base = std::filesystem::temp_directory_path();
        std::random_device azar;
        do {
            ruta_ = base / ("teskal_federacion_" + std::to_string(azar()));
        } while (!std::filesystem::create_directory(ruta_));
    }
    ~DirectorioTemporal() {
        std::error_code ec;
        std::filesystem::remove_all(ruta_, ec);
    }
    DirectorioTemporal(const DirectorioTemporal&) = delete;
    DirectorioTemporal& operator=(const DirectorioTemporal&) = delete;

    std::string ruta() const { return ruta_.string(); }
    std::string inexistente() const { return (ruta_ / "no_existe.ifc").string(); }

    // Writes the bytes as they are and returns the file's path.
    std::string escribir(const std::string& nombre, std::string_view bytes) const {
        const auto p = ruta_ / nombre;
        std::ofstream f(p, std::ios::binary);
        f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return p.string();
    }

private:
    std::filesystem::path ruta_;
};

// A whole IFC file around the given DATA lines, with the usual header, a
// closing aggregation, and the "ENDSEC;" / "END-ISO-10303-21;" tail on lines of
// their own (which join the closing statement).
inline std::string archivoIFC(std::string_view datos) {
    std::string r = "ISO-10303-21;\n"
                    "HEADER;\n"
                    "FILE_DESCRIPTION(('ViewDefinition [CoordinationView_V2.0]'),'2;1');\n"
                    "FILE_NAME('modelo.ifc','2024-05-14T10:22:31',('Arquitectura'),('TESKAL'),"
                    "'IfcOpenShell 0.7','Revit 2023','');\n"
                    "FILE_SCHEMA(('IFC2X3'));\n"
                    "ENDSEC;\n"
                    "DATA;\n"
                    "#1=IFCPERSON($,'Perez','Ana',$,$,$,$,$);\n"
                    "#5=IFCOWNERHISTORY(#3,#4,$,.ADDED.,$,$,$,1715681000);\n";
    r.append(datos);
    if (!r.empty() && r.back() != '\n') r.push_back('\n');
    r.append("#999999=IFCRELAGGREGATES('2Hq5hLZ8D5Ju7e$JYb0F1x',#5,$,$,#6,(#7));\n"
             "ENDSEC;\nEND-ISO-10303-21;\n");
    return r;
}

// The same text with CRLF line ends.
inline std::string aCRLF(std::string_view texto) {
    std::string r;
    for (const char c : texto) r += c == '\n' ? std::string("\r\n") : std::string(1, c);
    return r;
}

// The property key of a set and a property: blank, U+203A, blank between.
inline std::string clave(std::string_view pset, std::string_view propiedad) {
    return std::string(pset) + " \xE2\x80\xBA " + std::string(propiedad);
}

} // namespace teskal::pruebas
