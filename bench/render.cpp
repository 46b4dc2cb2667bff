// Benchmark render: RenderizadorEscena drawing a federated project of some
// 100,000 element nodes and 2 million triangles, against the same scene drawn
// one node per draw call.
//
// Usage: bench_render [--elementos N] [--fotogramas N] [--fotogramas-base N]
//                     [--fotogramas-sin-sombras N] [--recoloreos N] [--imagenes DIR]
//
// The federation is built in memory, without IFC or converter: three
// disciplines (ARQ, EST, MEP) of three models each, every model a sector of a
// 100 x 100 x 60 m building with N element nodes (12,000 by default). Each
// element has one geometry of unrolled triangles, as the OBJ reader makes
// them (extruded boxes, hexagons and octagons of 12 to 28 triangles), and the
// reader's own material. Models come in through ContentView::integrarModelo,
// so the tree, the colours, the floor and the lights are the workspace's own;
// the camera frames the scene through ContentView::zoomExtents.
//
// Frames are 1280 x 800 with 4 samples, into a framebuffer of an offscreen
// context, each timed up to glFinish. Reported: the upload (geometry and
// element state) and the first frame, the median of the frames after it,
// draw calls and batches, a recolour of every node (ContentView::
// recolorearModelos, then the element state upload the next frame makes), a
// structure change that uploads no geometry, the share of the shadow map,
// and the memory the scene holds: the process's resident set for the scene
// tree (CPU side) and the renderer's buffer bytes (GPU side; Mesa's llvmpipe
// keeps those in process memory too).
//
// On llvmpipe a frame of this scene takes seconds, so the default counts of
// frames are small (the first, then 6 batched, 1 without shadows and 3 of the
// baseline); the whole run stays near three minutes on two busy cores. CPU times are printed beside
// wall-clock times: they include llvmpipe's rasteriser threads.
//
// The baseline draws the same scene with one vertex buffer and one
// glDrawArrays per node and the node's colour in uniforms, with the view's
// own helper shaders, in the same passes (shadow map, opaque, transparent).
// Its list of nodes and matrices is built once at upload, so the ratio counts
// draw calls and state changes, not a tree walk. Both paths must give the
// same image: the benchmark compares them pixel by pixel and stops if they
// differ.

#include "FederacionGenerada.h"
#include "ContextoGL.h"
#include "Medicion.h"
#include "federation/CargaOBJ.h"
#include "federation/ContentView.h"
#include "federation/ConversionIFC.h"
#include "scene/Orientacion.h"
#include "viewport/render/CamaraRender.h"
#include "viewport/render/RenderizadorEscena.h"
#include "viewport/render/ShadersEscena.h"

#include <QGuiApplication>
#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLFunctions_3_3_Core>
#include <QOpenGLShaderProgram>
#include <QSurfaceFormat>
#include <algorithm>
#include <optional>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <glm/gtc/constants.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <malloc.h>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace teskal;
using namespace teskal::bench;

namespace {

constexpr int ancho = 1280, alto = 800, muestras = 4;

// ---------------------------------------------------------------------------
// The baseline: one vertex buffer and one draw call per node.

constexpr const char* sombraIngenuaVertice = R"(#version 330 core
layout(location = 0) in vec3 aPosicion;
uniform mat4 uModelo;
uniform mat4 uLuzVP;
void main() { gl_Position = uLuzVP * uModelo * vec4(aPosicion, 1.0); }
)";

constexpr const char* sombraIngenuaFragmento = R"(#version 330 core
void main() {}
)";

// What a node contributes to a frame, as the renderer reads it.
struct Apariencia {
    glm::vec4 color{0.0f};
    glm::vec3 emision{0.0f};
    int modeloLuz = 0;
    const Material* material = nullptr;
    bool conTextura = false;
};

int codigoIluminacion(ModeloIluminacion m) {
    switch (m) {
    case ModeloIluminacion::Phong:
        return 0;
    case ModeloIluminacion::Lambert:
        return 1;
    case ModeloIluminacion::Constante:
        return 2;
    }
    return 0;
}

Apariencia aparienciaDe(const Node& n, bool oculto, float opacidad) {
    Apariencia a;
    const Material* m = n.geometry()->firstMaterial();
    a.material = m;
    if (oculto) return a;
    if (!m) {
        a.color = {0.75f, 0.75f, 0.75f, opacidad};
        return a;
    }
    const Color d = m->diffuse().value_or(Color{1, 1, 1, 1});
    a.color = {d.r, d.g, d.b, d.a * m->transparency() * opacidad};
    a.emision = {m->emission().r, m->emission().g, m->emission().b};
    a.modeloLuz = codigoIluminacion(m->lightingModel());
    a.conTextura = m->diffuseImagen() != nullptr;
    return a;
}

class DibujoIngenuo : protected QOpenGLFunctions_3_3_Core {
public:
    struct Estadisticas {
        int llamadasDibujo = 0;
        std::size_t bytesGPU = 0;
    };

    void inicializar() {
        initializeOpenGLFunctions();
        auto programa = [](const QString& v, const QString& f) {
            auto p = std::make_unique<QOpenGLShaderProgram>();
            p->addShaderFromSourceCode(QOpenGLShader::Vertex, v);
            p->addShaderFromSourceCode(QOpenGLShader::Fragment, f);
            p->link();
            return p;
        };
        const QString iluminacion = QString::fromLatin1(shaders::iluminacion);
        prog_ = programa(QString::fromLatin1(shaders::ayudanteVertice),
                         QString::fromLatin1(shaders::ayudanteFragmento)
                             .replace(QStringLiteral("%ILUMINACION%"), iluminacion));
        progSombra_ = programa(QString::fromLatin1(sombraIngenuaVertice),
                               QString::fromLatin1(sombraIngenuaFragmento));
        progFondo_ = programa(QString::fromLatin1(shaders::fondoVertice),
                              QString::fromLatin1(shaders::fondoFragmento));
        uModelo_ = prog_->uniformLocation("uModelo");
        uDifuso_ = prog_->uniformLocation("uDifuso");
        uEmision_ = prog_->uniformLocation("uEmision");
        uModeloLuz_ = prog_->uniformLocation("uModeloLuz");
        uConTextura_ = prog_->uniformLocation("uConTextura");
        uEscalaTextura_ = prog_->uniformLocation("uEscalaTextura");
        uEsLinea_ = prog_->uniformLocation("uEsLinea");
        uSombraModelo_ = progSombra_->uniformLocation("uModelo");

        glGenVertexArrays(1, &vaoVacio_);
        glGenTextures(1, &sombraTextura_);
        glBindTexture(GL_TEXTURE_2D, sombraTextura_);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, ladoSombra_, ladoSombra_, 0,
                     GL_DEPTH_COMPONENT, GL_FLOAT, nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
        glGenFramebuffers(1, &sombraFbo_);
        glBindFramebuffer(GL_FRAMEBUFFER, sombraFbo_);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, sombraTextura_,
                               0);
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
    }

    // One buffer per drawable triangle node, in tree order; the world matrix
    // of each is taken now.
    void subir(Scene& escena) {
        escena_ = &escena;
        escena.rootNode()->enumerateChildNodes([&](Node& n, bool&) {
            const Geometry* g = n.geometry().get();
            if (!g || g->vertices.empty() || n.light()) return;
            Registro r;
            r.nodo = &n;
            r.padre = n.parent().get();
            r.ayudante = !r.padre || !r.padre->parent();
            r.mundo = n.worldTransform();
            std::vector<glm::vec3> posiciones;
            std::vector<glm::vec2> texturas;
            const auto nv = static_cast<std::int64_t>(g->vertices.size());
            for (const auto& e : g->elementos) {
                if (e.primitiva != Primitiva::Triangulos) continue;
                const std::size_t usados = e.indices.size() / 3 * 3;
                for (std::size_t k = 0; k < usados; ++k) {
                    const std::int32_t ix = e.indices[k];
                    const bool valido = ix >= 0 && ix < nv;
                    const auto i = static_cast<std::size_t>(ix);
                    posiciones.push_back(valido ? g->vertices[i] : glm::vec3(0.0f));
                    if (!g->coordenadasTextura.empty())
                        texturas.push_back(valido && i < g->coordenadasTextura.size()
                                               ? g->coordenadasTextura[i]
                                               : glm::vec2(0.0f));
                }
            }
            if (posiciones.empty()) return;
            glGenVertexArrays(1, &r.vao);
            glBindVertexArray(r.vao);
            glGenBuffers(1, &r.vbo);
            glBindBuffer(GL_ARRAY_BUFFER, r.vbo);
            glBufferData(GL_ARRAY_BUFFER,
                         static_cast<GLsizeiptr>(posiciones.size() * sizeof(glm::vec3)),
                         posiciones.data(), GL_STATIC_DRAW);
            glEnableVertexAttribArray(0);
            glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(glm::vec3), nullptr);
            estadisticas_.bytesGPU += posiciones.size() * sizeof(glm::vec3);
            if (!texturas.empty()) {
                glGenBuffers(1, &r.vboTextura);
                glBindBuffer(GL_ARRAY_BUFFER, r.vboTextura);
                glBufferData(GL_ARRAY_BUFFER,
                             static_cast<GLsizeiptr>(texturas.size() * sizeof(glm::vec2)),
                             texturas.data(), GL_STATIC_DRAW);
                glEnableVertexAttribArray(2);
                glVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, sizeof(glm::vec2), nullptr);
                estadisticas_.bytesGPU += texturas.size() * sizeof(glm::vec2);
            }
            glBindVertexArray(0);
            r.vertices = static_cast<int>(posiciones.size());
            if (const Material* m = g->firstMaterial(); m && m->diffuseImagen())
                r.textura = textura(*m->diffuseImagen());
            registros_.push_back(r);
        });
    }

    void liberar() {
        for (auto& r : registros_) {
            glDeleteBuffers(1, &r.vbo);
            if (r.vboTextura) glDeleteBuffers(1, &r.vboTextura);
            glDeleteVertexArrays(1, &r.vao);
        }
        registros_.clear();
        for (unsigned t : texturas_) glDeleteTextures(1, &t);
        texturas_.clear();
        glDeleteTextures(1, &sombraTextura_);
        glDeleteFramebuffers(1, &sombraFbo_);
        glDeleteVertexArrays(1, &vaoVacio_);
        prog_.reset();
        progSombra_.reset();
        progFondo_.reset();
    }

    std::size_t nodos() const { return registros_.size(); }
    const Estadisticas& estadisticas() const { return estadisticas_; }

    void dibujar(const CamaraRender& camara, unsigned fbo) {
        estadisticas_.llamadasDibujo = 0;
        // Each node's state as it stands now, inherited down the tree. Nodes
        // of one parent come together, so the parent's line is walked once.
        const Node* padre = nullptr;
        bool padreOculto = false;
        float padreOpacidad = 1.0f;
        for (auto& r : registros_) {
            if (r.padre != padre || !padre) {
                padre = r.padre;
                padreOculto = false;
                padreOpacidad = 1.0f;
                for (auto p = padre ? padre->shared_from_this() : nullptr; p; p = p->parent()) {
                    padreOculto = padreOculto || p->isHidden();
                    padreOpacidad *= p->opacity();
                }
            }
            r.apariencia = aparienciaDe(*r.nodo, padreOculto || r.nodo->isHidden(),
                                        padreOpacidad * r.nodo->opacity());
        }
        const glm::mat4 luzVP = dibujarSombras();

        glBindFramebuffer(GL_FRAMEBUFFER, fbo);
        glViewport(0, 0, ancho, alto);
        glDepthMask(GL_TRUE);
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glDisable(GL_DEPTH_TEST);
        progFondo_->bind();
        progFondo_->setUniformValue("uAbajo", 0.68f, 0.64f, 0.84f);
        progFondo_->setUniformValue("uArriba", 0.93f, 0.91f, 0.97f);
        glBindVertexArray(vaoVacio_);
        glDrawArrays(GL_TRIANGLES, 0, 3);
        ++estadisticas_.llamadasDibujo;

        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glDisable(GL_BLEND);
        prog_->bind();
        iluminacion(camara, luzVP);
        prog_->setUniformValue("uTextura", 2);
        glUniform1i(uEsLinea_, 0);
        dibujarNodos(false);
        glEnable(GL_BLEND);
        glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        dibujarNodos(true);
        glDepthMask(GL_TRUE);
        glDisable(GL_BLEND);
        glDisable(GL_CULL_FACE);
        glBindVertexArray(0);
    }

private:
    struct Registro {
        const Node* nodo = nullptr;
        const Node* padre = nullptr;
        // Right under the scene root (floor, grid lines): a helper, which the
        // renderer leaves out of the shadow map.
        bool ayudante = false;
        glm::mat4 mundo{1.0f};
        unsigned vao = 0, vbo = 0, vboTextura = 0, textura = 0;
        int vertices = 0;
        Apariencia apariencia;
    };

    unsigned textura(const ImagenRGBA& imagen) {
        unsigned t = 0;
        glGenTextures(1, &t);
        glBindTexture(GL_TEXTURE_2D, t);
        std::vector<std::uint8_t> filas(imagen.pixeles.size());
        const std::size_t fila = static_cast<std::size_t>(imagen.ancho) * 4;
        for (int y = 0; y < imagen.alto; ++y)
            std::copy_n(imagen.pixeles.data() +
                            static_cast<std::size_t>(imagen.alto - 1 - y) * fila,
                        fila, filas.data() + static_cast<std::size_t>(y) * fila);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, imagen.ancho, imagen.alto, 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, filas.data());
        glGenerateMipmap(GL_TEXTURE_2D);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        texturas_.push_back(t);
        return t;
    }

    // The directional light's shadow map, one draw per node, with the same
    // box as the renderer: centred on the elements.
    std::optional<glm::vec3> centroContenido_;
    glm::mat4 dibujarSombras() {
        haySombra_ = false;
        const auto luz = escena_->rootNode()->childNodeWithName("_TESKAL_LuzDir", false);
        if (!luz || !luz->light() || !luz->light()->proyectaSombras || luz->isHidden())
            return glm::mat4(1.0f);
        const glm::mat4 mundo = luz->worldTransform();
        const glm::vec3 dir = glm::normalize(glm::vec3(mundo * glm::vec4(0, 0, -1, 0)));
        if (!centroContenido_) {
            Box contenido;
            for (const auto& n : escena_->rootNode()->childNodes())
                if (n->nombreEmpiezaCon("esp_")) contenido.incluir(n->boundingBox());
            centroContenido_ = contenido.vacia ? glm::vec3(mundo[3]) : contenido.centro();
        }
        const glm::vec3 centro = *centroContenido_;
        const float s = std::max(luz->light()->orthographicScale, 1.0f);
        const float fondo = s * 4.0f + 100.0f;
        const glm::vec3 arriba = std::fabs(dir.z) > 0.99f ? glm::vec3(0, 1, 0) : glm::vec3(0, 0, 1);
        const glm::mat4 luzVP = glm::ortho(-s, s, -s, s, 0.0f, fondo * 2.0f) *
                                glm::lookAt(centro - dir * fondo, centro, arriba);

        glBindFramebuffer(GL_FRAMEBUFFER, sombraFbo_);
        glViewport(0, 0, ladoSombra_, ladoSombra_);
        glClear(GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(2.0f, 4.0f);
        progSombra_->bind();
        glUniformMatrix4fv(progSombra_->uniformLocation("uLuzVP"), 1, GL_FALSE,
                           glm::value_ptr(luzVP));
        // The renderer's shadow pass takes element batches only, not helpers.
        for (const auto& r : registros_) {
            if (r.apariencia.color.a <= 0.0f || r.textura || r.ayudante) continue;
            glUniformMatrix4fv(uSombraModelo_, 1, GL_FALSE, glm::value_ptr(r.mundo));
            glBindVertexArray(r.vao);
            glDrawArrays(GL_TRIANGLES, 0, r.vertices);
            ++estadisticas_.llamadasDibujo;
        }
        glDisable(GL_POLYGON_OFFSET_FILL);
        haySombra_ = true;
        return luzVP;
    }

    void iluminacion(const CamaraRender& camara, const glm::mat4& luzVP) {
        float directa = 0, ambiente = 0, oscuridad = 0;
        glm::vec3 haciaLuz(0, 0, 1);
        for (const auto& n : escena_->rootNode()->childNodes()) {
            if (!n->light() || n->isHidden()) continue;
            const Light& l = *n->light();
            if (l.tipo == TipoLuz::Ambiental) ambiente += l.intensidad / 1000.0f;
            if (l.tipo == TipoLuz::Direccional) {
                directa += l.intensidad / 1000.0f;
                haciaLuz = -glm::vec3(n->worldTransform() * glm::vec4(0, 0, -1, 0));
                if (l.proyectaSombras) oscuridad = l.colorSombra.a;
            }
        }
        QOpenGLShaderProgram& p = *prog_;
        p.setUniformValue("uIntDirecta", directa);
        p.setUniformValue("uIntAmbiente", ambiente);
        const glm::vec3 enVista = glm::vec3(camara.vista * glm::vec4(haciaLuz, 0.0f));
        p.setUniformValue("uDirLuzVista", enVista.x, enVista.y, enVista.z);
        p.setUniformValue("uConSombras", haySombra_);
        p.setUniformValue("uOscuridadSombra", oscuridad);
        p.setUniformValue("uTexelSombra", 1.5f / static_cast<float>(ladoSombra_));
        p.setUniformValue("uMapaSombra", 1);
        glActiveTexture(GL_TEXTURE1);
        glBindTexture(GL_TEXTURE_2D, sombraTextura_);
        glUniformMatrix4fv(p.uniformLocation("uVista"), 1, GL_FALSE, glm::value_ptr(camara.vista));
        glUniformMatrix4fv(p.uniformLocation("uProy"), 1, GL_FALSE,
                           glm::value_ptr(camara.proyeccion));
        glUniformMatrix4fv(p.uniformLocation("uLuzVP"), 1, GL_FALSE, glm::value_ptr(luzVP));
    }

    void dibujarNodos(bool transparentes) {
        for (const auto& r : registros_) {
            const Apariencia& a = r.apariencia;
            if (a.color.a <= 0.0f) continue;
            if ((a.color.a < 0.999f || a.conTextura) != transparentes) continue;
            const Material* m = a.material;
            glUniformMatrix4fv(uModelo_, 1, GL_FALSE, glm::value_ptr(r.mundo));
            glUniform4f(uDifuso_, a.color.r, a.color.g, a.color.b, a.color.a);
            glUniform3f(uEmision_, a.emision.x, a.emision.y, a.emision.z);
            glUniform1i(uModeloLuz_, a.modeloLuz);
            glUniform1i(uConTextura_, a.conTextura);
            if (a.conTextura) {
                glActiveTexture(GL_TEXTURE2);
                glBindTexture(GL_TEXTURE_2D, r.textura);
                glUniform2f(uEscalaTextura_, m->escalaContenido().x, m->escalaContenido().y);
            } else {
                glUniform2f(uEscalaTextura_, 1.0f, 1.0f);
            }
            if (!m || m->isDoubleSided())
                glDisable(GL_CULL_FACE);
            else
                glEnable(GL_CULL_FACE);
            glDepthMask(!transparentes && (!m || m->writesToDepthBuffer()));
            glBindVertexArray(r.vao);
            glDrawArrays(GL_TRIANGLES, 0, r.vertices);
            ++estadisticas_.llamadasDibujo;
        }
    }

    Scene* escena_ = nullptr;
    std::vector<Registro> registros_;
    std::vector<unsigned> texturas_;
    std::unique_ptr<QOpenGLShaderProgram> prog_, progSombra_, progFondo_;
    int uModelo_ = -1, uDifuso_ = -1, uEmision_ = -1, uModeloLuz_ = -1, uConTextura_ = -1,
        uEscalaTextura_ = -1, uEsLinea_ = -1, uSombraModelo_ = -1;
    unsigned vaoVacio_ = 0, sombraFbo_ = 0, sombraTextura_ = 0;
    const int ladoSombra_ = 2048;
    bool haySombra_ = false;
    Estadisticas estadisticas_;
};

// ---------------------------------------------------------------------------

// Resident set after handing freed memory back to the system, so that two
// readings differ by what is held.
long long residente() {
    ::malloc_trim(0);
    return memoriaProceso("VmRSS");
}

double ms(double segundos) {
    return segundos * 1e3;
}

// Share of pixels whose channels differ by more than `umbral` out of 255.
double fraccionDistinta(const QImage& a, const QImage& b, int umbral) {
    if (a.size() != b.size()) return 1.0;
    long long distintos = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto* fa = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* fb = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            const int d = std::max({std::abs(qRed(fa[x]) - qRed(fb[x])),
                                    std::abs(qGreen(fa[x]) - qGreen(fb[x])),
                                    std::abs(qBlue(fa[x]) - qBlue(fb[x]))});
            if (d > umbral) ++distintos;
        }
    }
    return static_cast<double>(distintos) / (static_cast<double>(a.width()) * a.height());
}

// Share of pixels that show the building in its discipline colours: lit
// greys (ARQ, EST) and MEP's blue, whose green is well above its red. The
// background and the floor are purples, red above green, never grey.
double fraccionEdificio(const QImage& img) {
    long long n = 0;
    for (int y = 0; y < img.height(); ++y) {
        const auto* f = reinterpret_cast<const QRgb*>(img.constScanLine(y));
        for (int x = 0; x < img.width(); ++x) {
            const int r = qRed(f[x]), g = qGreen(f[x]), b = qBlue(f[x]);
            if (std::max({r, g, b}) - std::min({r, g, b}) < 15 || g > r + 20) ++n;
        }
    }
    return static_cast<double>(n) / (static_cast<double>(img.width()) * img.height());
}

[[noreturn]] void uso() {
    std::fprintf(stderr, "Uso: bench_render [--elementos N] [--fotogramas N] "
                         "[--fotogramas-base N] [--fotogramas-sin-sombras N] [--recoloreos N] "
                         "[--imagenes CARPETA]\n");
    std::exit(2);
}

} // namespace

int main(int argc, char** argv) {
    int elementosPorModelo = 12000;
    int fotogramas = 6;
    int fotogramasBase = 3;
    int fotogramasSinSombras = 1;
    int recoloreos = 5;
    std::string carpetaImagenes;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto entero = [&] { return i + 1 < argc ? std::max(1, std::atoi(argv[++i])) : (uso(), 0); };
        if (a == "--elementos")
            elementosPorModelo = entero();
        else if (a == "--fotogramas")
            fotogramas = entero();
        else if (a == "--fotogramas-base")
            fotogramasBase = entero();
        else if (a == "--recoloreos")
            recoloreos = entero();
        else if (a == "--fotogramas-sin-sombras")
            fotogramasSinSombras = i + 1 < argc ? std::max(0, std::atoi(argv[++i])) : (uso(), 0);
        else if (a == "--imagenes" && i + 1 < argc)
            carpetaImagenes = argv[++i];
        else
            uso();
    }

    QGuiApplication app(argc, argv);
    imprimirCargaMaquina();
    auto cv = std::make_unique<ContentView>("/no/existe");
    ContentView::configurarLuces(cv->scene);

    // The federation, through the workspace's own road for a converted model.
    const long long rssVacio = residente();
    Conteo conteo;
    const Medida generacion = cronometrar([&] {
        construirFederacion(*cv, elementosPorModelo, conteo);
    });
    const long long rssEscena = residente();
    const double tri = static_cast<double>(conteo.triangulos);
    std::printf("render: %zu element nodes, %zu triangles (%.1f per node) in %zu models of 3 "
                "disciplines, built and linked in %.0f ms\n",
                conteo.nodos, conteo.triangulos, tri / static_cast<double>(conteo.nodos),
                static_cast<std::size_t>(modelosPorDisciplina) * 3, ms(generacion.pared));
    for (const char* clave : disciplinas) {
        const auto& e = cv->especialidades.at(clave);
        if (!e.nodoRaiz || e.modelos.size() != modelosPorDisciplina ||
            e.nodoRaiz->parent() != cv->scene.rootNode()) {
            std::fprintf(stderr, "render: discipline %s did not come into the scene\n", clave);
            return 1;
        }
    }
    if (!cv->scene.rootNode()->childNodeWithName("_TESKAL_Piso", false) ||
        !cv->scene.rootNode()->childNodeWithName("_TESKAL_LuzDir", false)) {
        std::fprintf(stderr, "render: the scene has no floor or no lights\n");
        return 1;
    }
    if (elementosPorModelo >= 12000 && (conteo.nodos < 100000 || conteo.triangulos < 2000000)) {
        std::fprintf(stderr, "render: the federation is smaller than 100,000 nodes and 2 million "
                             "triangles\n");
        return 1;
    }

    // The view's camera, framed as the toolbar's zoom extents frames it.
    auto camaraNodo = Node::crear("_TESKAL_Camara");
    camaraNodo->setCamera(Camera{60.0f, 0.1f, 1000.0f, false, 1.0f});
    cv->viewport.vincularPuntoDeVista(camaraNodo);
    cv->zoomExtents();
    cv->viewport.terminarAnimacion();
    const auto encuadre = cv->encuadreEscena();
    const CamaraRender camara =
        CamaraRender::desdeNodo(*camaraNodo, static_cast<float>(ancho) / static_cast<float>(alto));
    std::printf("camera: at (%.0f, %.0f, %.0f) looking at (%.0f, %.0f, %.0f), scene size %.0f m\n",
                camara.posicion.x, camara.posicion.y, camara.posicion.z, encuadre->first.x,
                encuadre->first.y, encuadre->first.z, encuadre->second);

    // An offscreen OpenGL 3.3 context and the view's multisampled framebuffer.
    ContextoGL gl3;
    if (!gl3.crear("render")) return 1;
    QOpenGLContext& contexto = gl3.contexto;
    QOpenGLFunctions* gl = contexto.functions();
    GLint maxTexelsTBO = 0;
    gl->glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &maxTexelsTBO);
    std::printf("OpenGL: %s, %s; texture buffer up to %d texels\n",
                reinterpret_cast<const char*>(gl->glGetString(GL_RENDERER)),
                reinterpret_cast<const char*>(gl->glGetString(GL_VERSION)), maxTexelsTBO);
    QOpenGLFramebufferObjectFormat formatoFbo;
    formatoFbo.setAttachment(QOpenGLFramebufferObject::Depth);
    formatoFbo.setSamples(muestras);
    QOpenGLFramebufferObject multimuestra(QSize(ancho, alto), formatoFbo);
    QOpenGLFramebufferObject resuelto(QSize(ancho, alto));
    auto imagenDe = [&] {
        QOpenGLFramebufferObject::blitFramebuffer(&resuelto, &multimuestra);
        return resuelto.toImage(false).convertToFormat(QImage::Format_RGB32);
    };

    // The batched renderer. Shaders are compiled before the clock starts.
    RenderizadorEscena render;
    render.inicializar();
    auto fotograma = [&] {
        return cronometrar([&] {
            render.dibujar(cv->scene, camara, ancho, alto, multimuestra.handle());
            gl->glFinish();
        });
    };
    // elegir brings the renderer up to date with the scene before it looks at
    // the pixel, and a pixel outside the view ends it there: it times what a
    // frame uploads, without the drawing.
    auto sincronizar = [&] {
        return cronometrar([&] {
            render.elegir(cv->scene, camara, ancho, alto, -1, -1, false, multimuestra.handle());
            gl->glFinish();
        });
    };

    const long long rssAntesSubida = residente();
    const Medida subida = sincronizar();
    const long long rssSubido = residente();
    const Medida primero = fotograma();
    const long long rssPrimerFotograma = residente();
    const QImage imagenInicial = imagenDe();
    std::printf("batched: upload %.0f ms (CPU %.0f ms, %.0f ns per triangle), then the first "
                "frame %.0f ms (CPU %.0f ms)\n",
                ms(subida.pared), ms(subida.cpu), subida.pared * 1e9 / tri, ms(primero.pared),
                ms(primero.cpu));

    // A recolour of every node: new discipline colours, the workspace's
    // recolour, then the upload of the element state that the next frame
    // would make.
    const Color paletas[2][3] = {
        {{0.9f, 0.4f, 0.3f, 1}, {0.4f, 0.8f, 0.4f, 1}, {0.9f, 0.8f, 0.2f, 1}},
        {{0.85f, 0.85f, 0.85f, 1}, {0.6f, 0.6f, 0.6f, 1}, {0.2f, 0.55f, 1.0f, 1}}};
    Tiempos recolor, subidaEstado;
    for (int k = 0; k < recoloreos; ++k) {
        // The last round leaves the first palette on, for the frames below.
        const int paleta = (recoloreos - 1 - k) % 2;
        for (int d = 0; d < 3; ++d)
            cv->especialidades.at(disciplinas[d]).colorOriginal = paletas[paleta][d];
        const auto apariencia = cv->scene.contadores().apariencia;
        recolor.anadir(cronometrar([&] { cv->recolorearModelos(); }));
        if (cv->scene.contadores().apariencia == apariencia) {
            std::fprintf(stderr, "render: the recolour did not move the appearance counter\n");
            return 1;
        }
        subidaEstado.anadir(sincronizar());
    }
    std::printf("recolour of %zu nodes: recolorearModelos %.1f ms (CPU %.1f ms) + element state "
                "upload %.1f ms (CPU %.1f ms) = %.1f ms, median of %d\n",
                conteo.nodos, ms(recolor.mediana()), ms(recolor.medianaCPU()),
                ms(subidaEstado.mediana()), ms(subidaEstado.medianaCPU()),
                ms(recolor.mediana() + subidaEstado.mediana()), recoloreos);

    // A structure change that leaves every batch as it was: the floor is
    // rebuilt, as after every link, and the renderer walks the tree again.
    {
        Tiempos piso, sincronia;
        for (int k = 0; k < 3; ++k) {
            piso.anadir(cronometrar([&] { cv->actualizarPiso(); }));
            sincronia.anadir(sincronizar());
        }
        std::printf("structure change without new geometry: actualizarPiso %.1f ms, then the "
                    "renderer's resync %.1f ms (CPU %.1f ms)\n",
                    ms(piso.mediana()), ms(sincronia.mediana()), ms(sincronia.medianaCPU()));
    }

    // The frames, on the recoloured scene: every element's state came from
    // the recolour, so the comparison with the baseline below checks it too.
    Tiempos lotes;
    for (int i = 0; i < fotogramas; ++i) lotes.anadir(fotograma());
    const QImage imagenRecoloreada = imagenDe();
    const EstadisticasRender est = render.estadisticas();
    std::printf("batched: median %.1f ms per frame (CPU %.1f ms), best %.1f ms, over %d frames\n",
                ms(lotes.mediana()), ms(lotes.medianaCPU()), ms(lotes.mejor()), fotogramas);
    std::printf("batched: %d draw calls per frame, %d batches, %d helpers, %zu triangles in "
                "batches\n",
                est.llamadasDibujo, est.lotes, est.ayudantes, est.triangulos);
    if (est.triangulos != conteo.triangulos) {
        std::fprintf(stderr,
                     "render: the renderer drew %zu triangles in batches, the scene has %zu\n",
                     est.triangulos, conteo.triangulos);
        return 1;
    }
    if (2 * conteo.nodos > static_cast<std::size_t>(maxTexelsTBO))
        std::printf("warning: the element state (%zu texels) exceeds this driver's texture "
                    "buffer size\n",
                    2 * conteo.nodos);

    // Without the shadow map, to tell its share of a frame.
    Tiempos sinSombras;
    if (fotogramasSinSombras > 0) {
        render.sombras = false;
        for (int i = 0; i < fotogramasSinSombras; ++i) sinSombras.anadir(fotograma());
        render.sombras = true;
        std::printf("batched without the shadow map: median %.1f ms (CPU %.1f ms); the shadow "
                    "pass is about %.0f ms of a frame\n",
                    ms(sinSombras.mediana()), ms(sinSombras.medianaCPU()),
                    ms(lotes.mediana() - sinSombras.mediana()));
    }

    // The baseline, on the recoloured scene.
    DibujoIngenuo ingenuo;
    ingenuo.inicializar();
    const Medida subidaIngenua = cronometrar([&] {
        ingenuo.subir(cv->scene);
        gl->glFinish();
    });
    auto fotogramaIngenuo = [&] {
        return cronometrar([&] {
            ingenuo.dibujar(camara, multimuestra.handle());
            gl->glFinish();
        });
    };
    // No separate warm-up: the median leaves out the first frame, which
    // compiles llvmpipe's shader variants.
    Tiempos base;
    for (int i = 0; i < fotogramasBase; ++i) base.anadir(fotogramaIngenuo());
    const QImage imagenIngenua = imagenDe();
    std::printf("one draw per node: upload of %zu buffers %.0f ms; median %.1f ms per frame (CPU "
                "%.1f ms), best %.1f ms, over %d frames; %d draw calls per frame\n",
                ingenuo.nodos(), ms(subidaIngenua.pared), ms(base.mediana()), ms(base.medianaCPU()),
                ms(base.mejor()), fotogramasBase, ingenuo.estadisticas().llamadasDibujo);

    // Both paths must show the same scene, and the recolour must show.
    const double distinta = fraccionDistinta(imagenRecoloreada, imagenIngenua, 24);
    const double edificio = fraccionEdificio(imagenInicial);
    const double cambioRecolor = fraccionDistinta(imagenInicial, imagenRecoloreada, 24);
    std::printf("images: %.2f%% of pixels differ between the two paths; the building covers "
                "%.0f%% of the frame, and %.0f%% changed with the recolour\n",
                distinta * 100, edificio * 100, cambioRecolor * 100);
    if (!carpetaImagenes.empty()) {
        const QString carpeta = QString::fromStdString(carpetaImagenes);
        imagenInicial.save(carpeta + QStringLiteral("/render_lotes.png"));
        imagenRecoloreada.save(carpeta + QStringLiteral("/render_recoloreado.png"));
        imagenIngenua.save(carpeta + QStringLiteral("/render_un_nodo.png"));
        std::printf("images: %s/render_lotes.png, render_recoloreado.png, render_un_nodo.png\n",
                    carpetaImagenes.c_str());
    }
    if (distinta > 0.02 || edificio < 0.1 || cambioRecolor < 0.05) {
        std::fprintf(stderr, "render: the two paths don't draw the same scene, the building is "
                             "not in view, or the recolour did not show\n");
        return 1;
    }

    // Memory: the scene tree on the CPU side, the renderer's buffers.
    const long long rssFinal = residente();
    std::printf("memory, CPU side: the scene tree holds %.0f MiB of resident set, %.1f "
                "bytes/triangle (its vertex and index arrays alone %.1f)\n",
                mebibytes(rssEscena - rssVacio), static_cast<double>(rssEscena - rssVacio) / tri,
                static_cast<double>(conteo.bytesArreglos) / tri);
    std::printf("memory, GPU side: the renderer's buffers hold %.0f MiB, %.1f bytes/triangle "
                "(vertex buffers and element state; one draw per node: %.1f)\n",
                mebibytes(static_cast<long long>(est.bytesGPU)),
                static_cast<double>(est.bytesGPU) / tri,
                static_cast<double>(ingenuo.estadisticas().bytesGPU) / tri);
    std::printf("memory, driver: the upload grew the resident set by %.0f MiB (%.1f "
                "bytes/triangle; llvmpipe keeps buffers in process memory), the first frame by "
                "%.0f MiB more (llvmpipe's binned triangles)\n",
                mebibytes(rssSubido - rssAntesSubida),
                static_cast<double>(rssSubido - rssAntesSubida) / tri,
                mebibytes(rssPrimerFotograma - rssSubido));
    std::printf("resident set: %.0f MiB at the end, peak %.0f MiB\n", mebibytes(rssFinal),
                mebibytes(memoriaProceso("VmHWM")));

    ingenuo.liberar();
    render.liberar();
    contexto.doneCurrent();

    const double razon = base.mediana() / lotes.mediana();
    std::printf("by CPU time: batched %.1f ms, one draw per node %.1f ms, ratio %.2f\n",
                ms(lotes.medianaCPU()), ms(base.medianaCPU()),
                base.medianaCPU() / lotes.medianaCPU());
    imprimirFigura("render", ms(lotes.mediana()), "ms", razon, "one-draw-per-node");
    return 0;
}
