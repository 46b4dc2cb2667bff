#pragma once

#include "scene/Color.h"
#include "scene/Node.h"
#include "viewport/render/CamaraRender.h"

#include <QOpenGLFunctions_3_3_Core>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

class QOpenGLShaderProgram;

namespace teskal {

// What a click found: the nearest element node and the world point on it.
struct ResultadoPick {
    std::shared_ptr<Node> nodo;
    glm::vec3 punto{0.0f};
};

// Counts of the last frame, for the benchmarks and the tests.
struct EstadisticasRender {
    int llamadasDibujo = 0;
    int lotes = 0;
    int ayudantes = 0;
    std::size_t triangulos = 0;
    std::size_t bytesGPU = 0;
};

// Draws a scene with OpenGL 3.3 core. Element triangles go in one vertex
// buffer per model root (the parent of the elements), with each element's
// colour, emission, opacity and visibility in a texture buffer that is
// rewritten when the scene's appearance counter moves; geometry is uploaded
// again only when the structure counter moves, and then only for the batches
// whose content changed. Helpers (floor, grid lines, measurement figures and
// their labels) are few and drawn one by one after the batches, in rendering
// order; a billboard helper faces the camera. An opaque pass, then a transparent pass without
// depth writes; shadows from the directional light "_TESKAL_LuzDir".
// All calls need the owner's GL context current.
class RenderizadorEscena : protected QOpenGLFunctions_3_3_Core {
public:
    RenderizadorEscena();
    ~RenderizadorEscena();
    RenderizadorEscena(const RenderizadorEscena&) = delete;
    RenderizadorEscena& operator=(const RenderizadorEscena&) = delete;

    void inicializar();
    // Frees the GL objects; the context must still be current.
    void liberar();

    // Draws a frame into the bound framebuffer `fbo` of the given pixel size.
    void dibujar(Scene& escena, const CamaraRender& camara, int ancho, int alto, unsigned fbo);
    // The element under a pixel (x, y from the top left) and its world point,
    // from an identity pass. The floor takes part only with `incluirPiso`.
    std::optional<ResultadoPick> elegir(Scene& escena, const CamaraRender& camara, int ancho, int alto, int x,
                                        int y, bool incluirPiso, unsigned fboVolver);

    // Background: the view's vertical gradient, or one plain colour.
    std::optional<Color> fondoLiso;
    bool sombras = true;
    // The ghosted focus of a clash: while not empty, these elements are drawn
    // whole and every other element faint and translucent, so that the pair
    // shows through the walls around it.
    std::vector<std::shared_ptr<Node>> revelados;
    const EstadisticasRender& estadisticas() const { return estadisticas_; }
    // The element states the last appearance sync rewrote: every element,
    // or only the nodes whose own look changed.
    std::size_t estadosReescritos() const { return estadosReescritos_; }

private:
    struct Lote;
    struct Ayudante;
    struct BufferAyudante;

    void sincronizar(Scene& escena);
    void sincronizarEstructura(Scene& escena);
    void sincronizarApariencia();
    // Rewrites the state of these element nodes alone; false when one of
    // them is not an element of a batch (then everything is rewritten).
    bool sincronizarAparienciaDe(std::span<const Node* const> nodos);
    // The state of element `i` of a batch into estado_, and its pass counted.
    void escribirEstado(Lote& lote, std::size_t i);
    void subirLote(Lote& lote);
    BufferAyudante& bufferDe(const Geometry& g);
    unsigned texturaDe(const std::shared_ptr<const ImagenRGBA>& imagen);
    void dibujarSombras(Scene& escena, glm::mat4& luzVP);
    void dibujarLotes(QOpenGLShaderProgram& p, int pase);
    void dibujarAyudantes(const CamaraRender& camara, const glm::mat4& luzVP, bool transparentes);
    void dibujarRevelados(const CamaraRender& camara, const glm::mat4& luzVP);
    void prepararIluminacion(QOpenGLShaderProgram& p, const CamaraRender& camara, const glm::mat4& luzVP);

    bool inicializado_ = false;
    const Scene* escena_ = nullptr;
    std::weak_ptr<Node> raizEscena_;
    std::uint64_t estructura_ = ~0ull, apariencia_ = ~0ull;
    std::vector<std::unique_ptr<Lote>> lotes_;
    std::vector<Ayudante> ayudantes_;
    std::unordered_map<const Geometry*, std::unique_ptr<BufferAyudante>> buffersAyudantes_;
    std::unordered_map<const ImagenRGBA*, std::pair<unsigned, std::shared_ptr<const ImagenRGBA>>> texturas_;
    std::vector<std::weak_ptr<Node>> nodoDeId_; // id - 1 to node
    std::size_t elementos_ = 0;
    // The element state as uploaded (two texels per element) and the pass
    // each element is drawn in (0 none, 1 opaque, 2 transparent).
    std::vector<glm::vec4> estado_;
    std::vector<std::uint8_t> pase_;
    std::vector<std::uint32_t> vuelta_; // the partial sync that last wrote each element
    std::uint32_t vueltas_ = 0;
    std::unordered_map<const Node*, std::pair<Lote*, std::size_t>> elementoDeNodo_;
    std::size_t estadosReescritos_ = 0;
    unsigned tboBuffer_ = 0, tboTextura_ = 0;
    unsigned sombraFbo_ = 0, sombraTextura_ = 0;
    int ladoSombra_ = 2048;
    bool haySombra_ = false;
    unsigned vaoVacio_ = 0;
    unsigned idFbo_ = 0, idColor_ = 0, idProfundidad_ = 0;
    int idAncho_ = 0, idAlto_ = 0;
    std::unique_ptr<QOpenGLShaderProgram> progLote_, progAyudante_, progSombra_, progId_, progFondo_;
    EstadisticasRender estadisticas_;
};

} // namespace teskal
