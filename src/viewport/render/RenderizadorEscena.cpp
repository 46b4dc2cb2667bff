#include "viewport/render/RenderizadorEscena.h"

#include "sections/EstadoSeccion.h"
#include "viewport/render/ShadersEscena.h"

#include <QOpenGLShaderProgram>
#include <algorithm>
#include <functional>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/type_ptr.hpp>

namespace teskal {

namespace {

constexpr const char* nombreLuzDir = "_TESKAL_LuzDir";
constexpr const char* nombreLuzAmb = "_TESKAL_LuzAmb";
constexpr const char* nombrePiso = "_TESKAL_Piso";

struct VerticeLote {
    float x, y, z;
    std::uint32_t nodo;
};

int codigoIluminacion(ModeloIluminacion m) {
    switch (m) {
    case ModeloIluminacion::Phong: return 0;
    case ModeloIluminacion::Lambert: return 1;
    case ModeloIluminacion::Constante: return 2;
    }
    return 0;
}

QString conIluminacion(const char* fuente) {
    return QString::fromLatin1(fuente).replace(QStringLiteral("%ILUMINACION%"),
                                               QString::fromLatin1(shaders::iluminacion));
}

std::unique_ptr<QOpenGLShaderProgram> programa(const QString& vertice, const QString& fragmento) {
    auto p = std::make_unique<QOpenGLShaderProgram>();
    p->addShaderFromSourceCode(QOpenGLShader::Vertex, vertice);
    p->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmento);
    p->link();
    return p;
}

// A triangle geometry whose material the batch shader can draw: no texture,
// ordinary depth use and no rendering order of its own.
bool esLoteable(const Geometry& g) {
    const Material* m = g.firstMaterial();
    if (m && (m->diffuseImagen() || !m->readsFromDepthBuffer() || !m->writesToDepthBuffer() ||
              m->renderingOrder() != 0))
        return false;
    for (const auto& e : g.elementos)
        if (e.primitiva != Primitiva::Triangulos) return false;
    return !g.elementos.empty();
}

// Hidden anywhere up the tree, and the product of opacities up to the root.
void estadoHeredado(const Node& n, bool& oculto, float& opacidad) {
    oculto = false;
    opacidad = 1.0f;
    for (const Node* p = &n; p; ) {
        if (p->isHidden()) oculto = true;
        opacidad *= p->opacity();
        const auto padre = p->parent();
        p = padre.get();
    }
}

// The colour and alpha a material and a node give a fragment.
glm::vec4 colorEfectivo(const Material* m, float opacidad, bool oculto) {
    if (oculto) return glm::vec4(0.0f);
    if (!m) return {0.75f, 0.75f, 0.75f, opacidad};
    const Color d = m->diffuse().value_or(Color{1, 1, 1, 1});
    return {d.r, d.g, d.b, d.a * m->transparency() * opacidad};
}

// A helper's model matrix; a billboard keeps its place and size and takes the
// camera's rotation, so that its XY plane faces the view.
glm::mat4 matrizAyudante(const Node& n, const CamaraRender& camara) {
    const glm::mat4 m = n.worldTransform();
    if (!n.billboard()) return m;
    const glm::vec3 escala(glm::length(glm::vec3(m[0])), glm::length(glm::vec3(m[1])), glm::length(glm::vec3(m[2])));
    return glm::translate(glm::mat4(1.0f), glm::vec3(m[3])) * glm::mat4(glm::transpose(glm::mat3(camara.vista))) *
           glm::scale(glm::mat4(1.0f), escala);
}

std::size_t mezclar(std::size_t h, std::size_t v) { return h ^ (v + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2)); }

} // namespace

struct RenderizadorEscena::Lote {
    std::shared_ptr<Node> raiz;
    std::vector<std::shared_ptr<Node>> nodos;
    std::size_t firma = 0;
    std::size_t base = 0; // global index of the first element
    unsigned vao = 0, vbo = 0;
    int vertices = 0;
    glm::vec3 min{0.0f}, max{0.0f}; // box of the vertices, in the batch root's space
    int opacos = 0, transparentes = 0; // elements each pass draws
};

struct RenderizadorEscena::Ayudante {
    std::shared_ptr<Node> nodo;
    std::size_t id = 0;
};

struct RenderizadorEscena::BufferAyudante {
    unsigned vao = 0, vbo = 0, ebo = 0;
    std::size_t vertices = 0;
    std::vector<std::pair<Primitiva, int>> elementos; // primitive and index count, in order
    std::vector<int> desde;                           // first index of each element
};

RenderizadorEscena::RenderizadorEscena() = default;
RenderizadorEscena::~RenderizadorEscena() = default;

void RenderizadorEscena::inicializar() {
    if (inicializado_) return;
    initializeOpenGLFunctions();
    progLote_ = programa(QString::fromLatin1(shaders::loteVertice), conIluminacion(shaders::loteFragmento));
    progAyudante_ =
        programa(QString::fromLatin1(shaders::ayudanteVertice), conIluminacion(shaders::ayudanteFragmento));
    progSombra_ = programa(QString::fromLatin1(shaders::sombraVertice), QString::fromLatin1(shaders::sombraFragmento));
    progId_ = programa(QString::fromLatin1(shaders::idVertice), QString::fromLatin1(shaders::idFragmento));
    progFondo_ = programa(QString::fromLatin1(shaders::fondoVertice), QString::fromLatin1(shaders::fondoFragmento));

    glGenVertexArrays(1, &vaoVacio_);
    glGenBuffers(1, &tboBuffer_);
    glGenTextures(1, &tboTextura_);

    glGenTextures(1, &sombraTextura_);
    glBindTexture(GL_TEXTURE_2D, sombraTextura_);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, ladoSombra_, ladoSombra_, 0, GL_DEPTH_COMPONENT, GL_FLOAT,
                 nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    glGenFramebuffers(1, &sombraFbo_);
    glBindFramebuffer(GL_FRAMEBUFFER, sombraFbo_);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, sombraTextura_, 0);
    glDrawBuffer(GL_NONE);
    glReadBuffer(GL_NONE);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    inicializado_ = true;
}

void RenderizadorEscena::liberar() {
    if (!inicializado_) return;
    for (auto& l : lotes_) {
        glDeleteBuffers(1, &l->vbo);
        glDeleteVertexArrays(1, &l->vao);
    }
    lotes_.clear();
    for (auto& [g, b] : buffersAyudantes_) {
        glDeleteBuffers(1, &b->vbo);
        glDeleteBuffers(1, &b->ebo);
        glDeleteVertexArrays(1, &b->vao);
    }
    buffersAyudantes_.clear();
    for (auto& [img, t] : texturas_) glDeleteTextures(1, &t.first);
    texturas_.clear();
    glDeleteBuffers(1, &tboBuffer_);
    glDeleteTextures(1, &tboTextura_);
    glDeleteTextures(1, &sombraTextura_);
    glDeleteFramebuffers(1, &sombraFbo_);
    glDeleteVertexArrays(1, &vaoVacio_);
    if (idFbo_) {
        glDeleteFramebuffers(1, &idFbo_);
        glDeleteRenderbuffers(1, &idColor_);
        glDeleteRenderbuffers(1, &idProfundidad_);
    }
    progLote_.reset();
    progAyudante_.reset();
    progSombra_.reset();
    progId_.reset();
    progFondo_.reset();
    ayudantes_.clear();
    nodoDeId_.clear();
    escena_ = nullptr;
    raizEscena_.reset();
    inicializado_ = false;
}

void RenderizadorEscena::sincronizar(Scene& escena) {
    // A scene made where a freed one stood has the same address and may have
    // the same counters: its root node tells them apart.
    const bool otraEscena = escena_ != &escena || raizEscena_.lock() != escena.rootNode();
    escena_ = &escena;
    raizEscena_ = escena.rootNode();
    const SceneCounters& c = escena.contadores();
    if (otraEscena || estructura_ != c.estructura) {
        sincronizarEstructura(escena);
        estructura_ = c.estructura;
        apariencia_ = ~0ull;
    }
    if (apariencia_ != c.apariencia) {
        // Changes logged by node since the last sync rewrite those nodes
        // alone; a log of more nodes than half the elements costs more to
        // read than a full pass.
        const auto cambios = apariencia_ == ~0ull ? std::nullopt : c.cambiosDesde(apariencia_);
        if (!cambios || cambios->size() > elementos_ / 2 || !sincronizarAparienciaDe(*cambios))
            sincronizarApariencia();
        apariencia_ = c.apariencia;
    }
}

void RenderizadorEscena::sincronizarEstructura(Scene& escena) {
    // Walk the tree: element geometry goes to the batch of its parent, other
    // drawable nodes become helpers. Batches keep tree order.
    std::vector<std::unique_ptr<Lote>> nuevos;
    std::unordered_map<const Node*, Lote*> porRaiz;
    std::vector<Ayudante> ayudantes;
    std::function<void(const std::shared_ptr<Node>&, int)> visitar = [&](const std::shared_ptr<Node>& n, int nivel) {
        if (n->geometry() && !n->geometry()->vertices.empty()) {
            const auto padre = n->parent();
            if (nivel >= 2 && padre && esLoteable(*n->geometry())) {
                Lote*& lote = porRaiz[padre.get()];
                if (!lote) {
                    nuevos.push_back(std::make_unique<Lote>());
                    lote = nuevos.back().get();
                    lote->raiz = padre;
                }
                lote->nodos.push_back(n);
            } else {
                ayudantes.push_back({n, 0});
            }
        }
        for (const auto& h : n->childNodes()) visitar(h, nivel + 1);
    };
    visitar(escena.rootNode(), 0);

    // Keep the GPU buffers of batches whose content is unchanged.
    std::unordered_map<const Node*, std::unique_ptr<Lote>> viejos;
    for (auto& l : lotes_) viejos[l->raiz.get()] = std::move(l);
    std::size_t base = 0;
    nodoDeId_.clear();
    elementoDeNodo_.clear();
    for (auto& l : nuevos) {
        std::size_t firma = 0;
        for (const auto& n : l->nodos) {
            const Geometry& g = *n->geometry();
            firma = mezclar(firma, reinterpret_cast<std::size_t>(n.get()));
            firma = mezclar(firma, reinterpret_cast<std::size_t>(&g));
            firma = mezclar(firma, g.vertices.size());
            const glm::mat4 t = n->transform();
            for (int i = 0; i < 16; ++i) firma = mezclar(firma, std::hash<float>()(glm::value_ptr(t)[i]));
        }
        l->firma = firma;
        l->base = base;
        base += l->nodos.size();
        for (std::size_t i = 0; i < l->nodos.size(); ++i) {
            nodoDeId_.push_back(l->nodos[i]);
            elementoDeNodo_.emplace(l->nodos[i].get(), std::pair(l.get(), i));
        }
        const auto viejo = viejos.find(l->raiz.get());
        if (viejo != viejos.end() && viejo->second->firma == firma) {
            l->vao = std::exchange(viejo->second->vao, 0);
            l->vbo = std::exchange(viejo->second->vbo, 0);
            l->vertices = viejo->second->vertices;
            l->min = viejo->second->min;
            l->max = viejo->second->max;
        } else {
            subirLote(*l);
        }
    }
    for (auto& [raiz, l] : viejos) {
        if (l->vbo) glDeleteBuffers(1, &l->vbo);
        if (l->vao) glDeleteVertexArrays(1, &l->vao);
    }
    elementos_ = base;
    for (auto& a : ayudantes) {
        a.id = nodoDeId_.size();
        nodoDeId_.push_back(a.nodo);
    }
    lotes_ = std::move(nuevos);
    ayudantes_ = std::move(ayudantes);

    // Helper buffers of geometries that are gone are freed, and textures of
    // images no helper shows any more.
    std::unordered_map<const Geometry*, bool> vivas;
    std::unordered_map<const ImagenRGBA*, bool> imagenes;
    for (const auto& a : ayudantes_) {
        vivas[a.nodo->geometry().get()] = true;
        if (const Material* m = a.nodo->geometry()->firstMaterial(); m && m->diffuseImagen())
            imagenes[m->diffuseImagen().get()] = true;
    }
    for (auto it = texturas_.begin(); it != texturas_.end();) {
        if (imagenes.contains(it->first)) {
            ++it;
            continue;
        }
        glDeleteTextures(1, &it->second.first);
        it = texturas_.erase(it);
    }
    for (auto it = buffersAyudantes_.begin(); it != buffersAyudantes_.end();) {
        if (vivas.contains(it->first)) {
            ++it;
            continue;
        }
        glDeleteBuffers(1, &it->second->vbo);
        glDeleteBuffers(1, &it->second->ebo);
        glDeleteVertexArrays(1, &it->second->vao);
        it = buffersAyudantes_.erase(it);
    }
}

void RenderizadorEscena::subirLote(Lote& lote) {
    std::size_t total = 0;
    for (const auto& n : lote.nodos)
        for (const auto& e : n->geometry()->elementos) total += e.indices.size() / 3 * 3;
    std::vector<VerticeLote> datos;
    datos.reserve(total);
    for (std::size_t i = 0; i < lote.nodos.size(); ++i) {
        const Node& n = *lote.nodos[i];
        const Geometry& g = *n.geometry();
        const glm::mat4 t = n.transform();
        const bool identidad = t == glm::mat4(1.0f);
        const auto nv = static_cast<std::int64_t>(g.vertices.size());
        for (const auto& e : g.elementos) {
            const std::size_t usados = e.indices.size() / 3 * 3;
            for (std::size_t k = 0; k < usados; ++k) {
                const std::int32_t ix = e.indices[k];
                glm::vec3 p = ix >= 0 && ix < nv ? g.vertices[static_cast<std::size_t>(ix)] : glm::vec3(0.0f);
                if (!identidad) p = glm::vec3(t * glm::vec4(p, 1.0f));
                datos.push_back({p.x, p.y, p.z, static_cast<std::uint32_t>(i)});
                if (datos.size() == 1) lote.min = lote.max = p;
                lote.min = glm::min(lote.min, p);
                lote.max = glm::max(lote.max, p);
            }
        }
    }
    if (!lote.vao) glGenVertexArrays(1, &lote.vao);
    if (!lote.vbo) glGenBuffers(1, &lote.vbo);
    glBindVertexArray(lote.vao);
    glBindBuffer(GL_ARRAY_BUFFER, lote.vbo);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(datos.size() * sizeof(VerticeLote)), datos.data(),
                 GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(VerticeLote), nullptr);
    glEnableVertexAttribArray(1);
    glVertexAttribIPointer(1, 1, GL_UNSIGNED_INT, sizeof(VerticeLote),
                           reinterpret_cast<const void*>(offsetof(VerticeLote, nodo)));
    glBindVertexArray(0);
    lote.vertices = static_cast<int>(datos.size());
}

void RenderizadorEscena::escribirEstado(Lote& l, std::size_t i) {
    const Node& n = *l.nodos[i];
    bool oculto;
    float opacidad;
    estadoHeredado(n, oculto, opacidad);
    const Material* m = n.geometry()->firstMaterial();
    const Color e = m ? m->emission() : Color{0, 0, 0, 1};
    const glm::vec4 color = colorEfectivo(m, opacidad, oculto);
    const std::size_t k = l.base + i;
    switch (pase_[k]) {
    case 1: --l.opacos; break;
    case 2: --l.transparentes; break;
    default: break;
    }
    pase_[k] = color.a >= 0.999f ? 1 : color.a > 0.0f ? 2 : 0;
    switch (pase_[k]) {
    case 1: ++l.opacos; break;
    case 2: ++l.transparentes; break;
    default: break;
    }
    estado_[k * 2] = color;
    estado_[k * 2 + 1] = glm::vec4(e.r, e.g, e.b, m ? static_cast<float>(codigoIluminacion(m->lightingModel())) : 0.0f);
}

void RenderizadorEscena::sincronizarApariencia() {
    estado_.assign(std::max<std::size_t>(elementos_, 1) * 2, glm::vec4(0.0f));
    pase_.assign(std::max<std::size_t>(elementos_, 1), 0);
    for (const auto& l : lotes_) {
        l->opacos = l->transparentes = 0;
        for (std::size_t i = 0; i < l->nodos.size(); ++i) escribirEstado(*l, i);
    }
    estadosReescritos_ = elementos_;
    glBindBuffer(GL_TEXTURE_BUFFER, tboBuffer_);
    glBufferData(GL_TEXTURE_BUFFER, static_cast<GLsizeiptr>(estado_.size() * sizeof(glm::vec4)), estado_.data(),
                 GL_DYNAMIC_DRAW);
    glBindTexture(GL_TEXTURE_BUFFER, tboTextura_);
    glTexBuffer(GL_TEXTURE_BUFFER, GL_RGBA32F, tboBuffer_);
    glBindBuffer(GL_TEXTURE_BUFFER, 0);
}

bool RenderizadorEscena::sincronizarAparienciaDe(std::span<const Node* const> nodos) {
    if (estado_.size() != std::max<std::size_t>(elementos_, 1) * 2) return false;
    // Every node must be an element of a batch before anything is written:
    // a helper is drawn from its node at each frame and needs nothing, but a
    // node the batches don't know may be one whose look reaches others.
    // A node changed twice (its opacity and its colour) is written once.
    if (vuelta_.size() != elementos_ || ++vueltas_ == 0) {
        vuelta_.assign(elementos_, 0);
        vueltas_ = 1;
    }
    std::vector<std::pair<Lote*, std::size_t>> elementos;
    elementos.reserve(nodos.size());
    for (const Node* n : nodos) {
        const auto it = elementoDeNodo_.find(n);
        if (it != elementoDeNodo_.end()) {
            auto& vuelta = vuelta_[it->second.first->base + it->second.second];
            if (vuelta != vueltas_) elementos.push_back(it->second);
            vuelta = vueltas_;
            continue;
        }
        const bool ayudante = std::any_of(ayudantes_.begin(), ayudantes_.end(),
                                          [n](const Ayudante& a) { return a.nodo.get() == n; });
        if (!ayudante) return false;
    }
    // One upload of the span between the first and the last changed element.
    std::size_t desde = elementos_, hasta = 0;
    for (const auto& [l, i] : elementos) {
        escribirEstado(*l, i);
        desde = std::min(desde, l->base + i);
        hasta = std::max(hasta, l->base + i + 1);
    }
    estadosReescritos_ = elementos.size();
    if (desde >= hasta) return true;
    glBindBuffer(GL_TEXTURE_BUFFER, tboBuffer_);
    glBufferSubData(GL_TEXTURE_BUFFER, static_cast<GLintptr>(desde * 2 * sizeof(glm::vec4)),
                    static_cast<GLsizeiptr>((hasta - desde) * 2 * sizeof(glm::vec4)), estado_.data() + desde * 2);
    glBindBuffer(GL_TEXTURE_BUFFER, 0);
    return true;
}

RenderizadorEscena::BufferAyudante& RenderizadorEscena::bufferDe(const Geometry& g) {
    auto& b = buffersAyudantes_[&g];
    if (b && b->vertices == g.vertices.size()) return *b;
    if (!b) b = std::make_unique<BufferAyudante>();
    // Positions, then texture coordinates (zeros when the geometry has none).
    std::vector<float> datos;
    datos.reserve(g.vertices.size() * 5);
    for (std::size_t i = 0; i < g.vertices.size(); ++i) {
        const glm::vec3& p = g.vertices[i];
        const glm::vec2 t = i < g.coordenadasTextura.size() ? g.coordenadasTextura[i] : glm::vec2(0.0f);
        datos.insert(datos.end(), {p.x, p.y, p.z, t.x, t.y});
    }
    std::vector<std::uint32_t> indices;
    b->elementos.clear();
    b->desde.clear();
    for (const auto& e : g.elementos) {
        b->desde.push_back(static_cast<int>(indices.size()));
        for (std::int32_t ix : e.indices)
            indices.push_back(ix >= 0 && static_cast<std::size_t>(ix) < g.vertices.size() ? static_cast<std::uint32_t>(ix) : 0u);
        b->elementos.push_back({e.primitiva, static_cast<int>(e.indices.size())});
    }
    if (!b->vao) {
        glGenVertexArrays(1, &b->vao);
        glGenBuffers(1, &b->vbo);
        glGenBuffers(1, &b->ebo);
    }
    glBindVertexArray(b->vao);
    glBindBuffer(GL_ARRAY_BUFFER, b->vbo);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(datos.size() * sizeof(float)), datos.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, b->ebo);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indices.size() * sizeof(std::uint32_t)),
                 indices.data(), GL_STATIC_DRAW);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 5 * sizeof(float), nullptr);
    glEnableVertexAttribArray(2);
    glVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, 5 * sizeof(float), reinterpret_cast<const void*>(3 * sizeof(float)));
    glBindVertexArray(0);
    b->vertices = g.vertices.size();
    return *b;
}

unsigned RenderizadorEscena::texturaDe(const std::shared_ptr<const ImagenRGBA>& referencia) {
    // The entry holds the image, so that no other image takes its address
    // while its texture is kept (labels are replaced at every mouse move).
    auto& [t, sostenida] = texturas_[referencia.get()];
    if (t) return t;
    sostenida = referencia;
    const ImagenRGBA& imagen = *referencia;
    glGenTextures(1, &t);
    glBindTexture(GL_TEXTURE_2D, t);
    // Rows come top down; texture coordinate 0 is the bottom row.
    std::vector<std::uint8_t> filas(imagen.pixeles.size());
    const std::size_t fila = static_cast<std::size_t>(imagen.ancho) * 4;
    for (int y = 0; y < imagen.alto; ++y)
        std::copy_n(imagen.pixeles.data() + static_cast<std::size_t>(imagen.alto - 1 - y) * fila, fila,
                    filas.data() + static_cast<std::size_t>(y) * fila);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, imagen.ancho, imagen.alto, 0, GL_RGBA, GL_UNSIGNED_BYTE, filas.data());
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    return t;
}

void RenderizadorEscena::dibujarSombras(Scene& escena, glm::mat4& luzVP) {
    haySombra_ = false;
    const auto luz = escena.rootNode()->childNodeWithName(nombreLuzDir, false);
    if (!sombras || !luz || !luz->light() || !luz->light()->proyectaSombras || luz->isHidden()) return;
    // An orthographic box around the light's place, along its direction.
    const glm::mat4 mundo = luz->worldTransform();
    const glm::vec3 dir = glm::normalize(glm::vec3(mundo * glm::vec4(0, 0, -1, 0)));
    // The box follows what casts the shadows: centred on the elements, not
    // on the light's place, as the light only gives the direction.
    Box contenido;
    for (const auto& l : lotes_) {
        if (!l->vertices) continue;
        const glm::mat4 t = l->raiz->worldTransform();
        for (int i = 0; i < 8; ++i)
            contenido.incluir(glm::vec3(t * glm::vec4((i & 1) ? l->max.x : l->min.x, (i & 2) ? l->max.y : l->min.y,
                                                      (i & 4) ? l->max.z : l->min.z, 1.0f)));
    }
    const glm::vec3 centro = contenido.vacia ? glm::vec3(mundo[3]) : contenido.centro();
    const float s = std::max(luz->light()->orthographicScale, 1.0f);
    const float fondo = s * 4.0f + 100.0f;
    const glm::vec3 arriba = std::fabs(dir.z) > 0.99f ? glm::vec3(0, 1, 0) : glm::vec3(0, 0, 1);
    const glm::mat4 vista = glm::lookAt(centro - dir * fondo, centro, arriba);
    luzVP = glm::ortho(-s, s, -s, s, 0.0f, fondo * 2.0f) * vista;

    glBindFramebuffer(GL_FRAMEBUFFER, sombraFbo_);
    glViewport(0, 0, ladoSombra_, ladoSombra_);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(2.0f, 4.0f);
    progSombra_->bind();
    progSombra_->setUniformValue("uEstado", 0);
    progSombra_->setUniformValue("uBase", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_BUFFER, tboTextura_);
    glUniformMatrix4fv(progSombra_->uniformLocation("uLuzVP"), 1, GL_FALSE, glm::value_ptr(luzVP));
    for (const auto& l : lotes_) {
        if (!l->vertices) continue;
        glUniformMatrix4fv(progSombra_->uniformLocation("uModelo"), 1, GL_FALSE,
                           glm::value_ptr(l->raiz->worldTransform()));
        progSombra_->setUniformValue("uBase", static_cast<int>(l->base));
        glBindVertexArray(l->vao);
        glDrawArrays(GL_TRIANGLES, 0, l->vertices);
        ++estadisticas_.llamadasDibujo;
    }
    glDisable(GL_POLYGON_OFFSET_FILL);
    haySombra_ = true;
}

void RenderizadorEscena::prepararIluminacion(QOpenGLShaderProgram& p, const CamaraRender& camara,
                                             const glm::mat4& luzVP) {
    float directa = 0, ambiente = 0;
    glm::vec3 haciaLuz(0, 0, 1);
    float oscuridad = 0;
    if (escena_) {
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
    }
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
    glUniformMatrix4fv(p.uniformLocation("uProy"), 1, GL_FALSE, glm::value_ptr(camara.proyeccion));
    glUniformMatrix4fv(p.uniformLocation("uLuzVP"), 1, GL_FALSE, glm::value_ptr(luzVP));
}

void RenderizadorEscena::dibujarLotes(QOpenGLShaderProgram& p, int pase) {
    p.setUniformValue("uPase", pase);
    // Ghosts are all drawn in the transparent pass.
    const bool fantasma = !revelados.empty();
    p.setUniformValue("uFantasma", fantasma);
    for (const auto& l : lotes_) {
        const int aqui = fantasma ? (pase == 0 ? 0 : l->opacos + l->transparentes)
                                          : (pase == 0 ? l->opacos : l->transparentes);
        if (!l->vertices || aqui == 0) continue;
        glUniformMatrix4fv(p.uniformLocation("uModelo"), 1, GL_FALSE, glm::value_ptr(l->raiz->worldTransform()));
        p.setUniformValue("uBase", static_cast<int>(l->base));
        glBindVertexArray(l->vao);
        glDrawArrays(GL_TRIANGLES, 0, l->vertices);
        ++estadisticas_.llamadasDibujo;
    }
}

void RenderizadorEscena::dibujarAyudantes(const CamaraRender& camara, const glm::mat4& luzVP, bool transparentes) {
    // Helpers in rendering order; those that ignore depth come last.
    std::vector<const Ayudante*> orden;
    for (const auto& a : ayudantes_) orden.push_back(&a);
    std::stable_sort(orden.begin(), orden.end(), [](const Ayudante* x, const Ayudante* y) {
        const Material* mx = x->nodo->geometry()->firstMaterial();
        const Material* my = y->nodo->geometry()->firstMaterial();
        return (mx ? mx->renderingOrder() : 0) < (my ? my->renderingOrder() : 0);
    });
    QOpenGLShaderProgram& p = *progAyudante_;
    p.bind();
    prepararIluminacion(p, camara, luzVP);
    p.setUniformValue("uTextura", 2);
    for (const Ayudante* a : orden) {
        const Node& n = *a->nodo;
        const Geometry& g = *n.geometry();
        bool oculto;
        float opacidad;
        estadoHeredado(n, oculto, opacidad);
        const Material* m = g.firstMaterial();
        const glm::vec4 c = colorEfectivo(m, opacidad, oculto);
        if (c.a <= 0.0f) continue;
        const bool conTextura = m && m->diffuseImagen();
        const bool esTransparente = c.a < 0.999f || conTextura;
        if (esTransparente != transparentes) continue;

        BufferAyudante& b = bufferDe(g);
        glUniformMatrix4fv(p.uniformLocation("uModelo"), 1, GL_FALSE, glm::value_ptr(matrizAyudante(n, camara)));
        p.setUniformValue("uDifuso", c.r, c.g, c.b, c.a);
        const Color e = m ? m->emission() : Color{0, 0, 0, 1};
        p.setUniformValue("uEmision", e.r, e.g, e.b);
        p.setUniformValue("uModeloLuz", m ? codigoIluminacion(m->lightingModel()) : 0);
        p.setUniformValue("uConTextura", conTextura);
        if (conTextura) {
            glActiveTexture(GL_TEXTURE2);
            glBindTexture(GL_TEXTURE_2D, texturaDe(m->diffuseImagen()));
            p.setUniformValue("uEscalaTextura", m->escalaContenido().x, m->escalaContenido().y);
        } else {
            p.setUniformValue("uEscalaTextura", 1.0f, 1.0f);
        }
        if (!m || m->isDoubleSided()) glDisable(GL_CULL_FACE);
        else glEnable(GL_CULL_FACE);
        if (m && !m->readsFromDepthBuffer()) glDisable(GL_DEPTH_TEST);
        else glEnable(GL_DEPTH_TEST);
        glDepthMask(!transparentes && (!m || m->writesToDepthBuffer()));
        glBindVertexArray(b.vao);
        for (std::size_t k = 0; k < b.elementos.size(); ++k) {
            const bool linea = b.elementos[k].first == Primitiva::Lineas;
            p.setUniformValue("uEsLinea", linea);
            glDrawElements(linea ? GL_LINES : GL_TRIANGLES, b.elementos[k].second, GL_UNSIGNED_INT,
                           reinterpret_cast<const void*>(static_cast<std::size_t>(b.desde[k]) * sizeof(std::uint32_t)));
            ++estadisticas_.llamadasDibujo;
        }
    }
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}

// The revealed elements of a ghosted focus, drawn one by one as helpers are,
// opaque whatever their own opacity.
void RenderizadorEscena::dibujarRevelados(const CamaraRender& camara, const glm::mat4& luzVP) {
    if (revelados.empty()) return;
    std::vector<Ayudante> propios;
    for (const auto& n : revelados)
        if (n && n->geometry() && n->geometry()->firstMaterial()) propios.push_back({n, 0});
    std::swap(propios, ayudantes_);
    dibujarAyudantes(camara, luzVP, false);
    std::swap(propios, ayudantes_);
}

void RenderizadorEscena::dibujar(Scene& escena, const CamaraRender& camara, int ancho, int alto, unsigned fbo) {
    inicializar();
    estadisticas_ = {};
    sincronizar(escena);
    glm::mat4 luzVP(1.0f);
    dibujarSombras(escena, luzVP);

    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    glViewport(0, 0, ancho, alto);
    glDepthMask(GL_TRUE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    // Background.
    glDisable(GL_DEPTH_TEST);
    progFondo_->bind();
    const Color abajo = fondoLiso.value_or(Color{0.68f, 0.64f, 0.84f, 1});
    const Color arriba = fondoLiso.value_or(Color{0.93f, 0.91f, 0.97f, 1});
    progFondo_->setUniformValue("uAbajo", abajo.r, abajo.g, abajo.b);
    progFondo_->setUniformValue("uArriba", arriba.r, arriba.g, arriba.b);
    glBindVertexArray(vaoVacio_);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    ++estadisticas_.llamadasDibujo;

    // Opaque pass.
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    progLote_->bind();
    prepararIluminacion(*progLote_, camara, luzVP);
    progLote_->setUniformValue("uEstado", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_BUFFER, tboTextura_);
    dibujarLotes(*progLote_, 0);
    dibujarAyudantes(camara, luzVP, false);
    dibujarRevelados(camara, luzVP);

    // Transparent pass: blended, without depth writes.
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    progLote_->bind();
    prepararIluminacion(*progLote_, camara, luzVP);
    progLote_->setUniformValue("uEstado", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_BUFFER, tboTextura_);
    // Ghosts lie a little behind, so that a revealed element wins over its
    // own ghost.
    if (!revelados.empty()) {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.0f, 4.0f);
    }
    dibujarLotes(*progLote_, 1);
    glDisable(GL_POLYGON_OFFSET_FILL);
    dibujarAyudantes(camara, luzVP, true);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glBindVertexArray(0);

    estadisticas_.lotes = static_cast<int>(lotes_.size());
    estadisticas_.ayudantes = static_cast<int>(ayudantes_.size());
    estadisticas_.triangulos = 0;
    estadisticas_.bytesGPU = elementos_ * 2 * sizeof(glm::vec4);
    for (const auto& l : lotes_) {
        estadisticas_.triangulos += static_cast<std::size_t>(l->vertices) / 3;
        estadisticas_.bytesGPU += static_cast<std::size_t>(l->vertices) * sizeof(VerticeLote);
    }
}

std::optional<ResultadoPick> RenderizadorEscena::elegir(Scene& escena, const CamaraRender& camara, int ancho,
                                                        int alto, int x, int y, bool incluirPiso,
                                                        unsigned fboVolver) {
    inicializar();
    sincronizar(escena);
    if (x < 0 || y < 0 || x >= ancho || y >= alto) return std::nullopt;
    if (!idFbo_ || idAncho_ != ancho || idAlto_ != alto) {
        if (!idFbo_) {
            glGenFramebuffers(1, &idFbo_);
            glGenRenderbuffers(1, &idColor_);
            glGenRenderbuffers(1, &idProfundidad_);
        }
        glBindRenderbuffer(GL_RENDERBUFFER, idColor_);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_R32UI, ancho, alto);
        glBindRenderbuffer(GL_RENDERBUFFER, idProfundidad_);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, ancho, alto);
        glBindFramebuffer(GL_FRAMEBUFFER, idFbo_);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, idColor_);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, idProfundidad_);
        idAncho_ = ancho;
        idAlto_ = alto;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, idFbo_);
    glViewport(0, 0, ancho, alto);
    const GLuint cero[4] = {0, 0, 0, 0};
    glClearBufferuiv(GL_COLOR, 0, cero);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    // Only the pixel under the click is needed.
    glEnable(GL_SCISSOR_TEST);
    glScissor(x, alto - 1 - y, 1, 1);

    QOpenGLShaderProgram& p = *progId_;
    p.bind();
    glUniformMatrix4fv(p.uniformLocation("uVista"), 1, GL_FALSE, glm::value_ptr(camara.vista));
    glUniformMatrix4fv(p.uniformLocation("uProy"), 1, GL_FALSE, glm::value_ptr(camara.proyeccion));
    p.setUniformValue("uEstado", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_BUFFER, tboTextura_);
    p.setUniformValue("uUnico", false);
    for (const auto& l : lotes_) {
        if (!l->vertices) continue;
        glUniformMatrix4fv(p.uniformLocation("uModelo"), 1, GL_FALSE, glm::value_ptr(l->raiz->worldTransform()));
        p.setUniformValue("uBase", static_cast<int>(l->base));
        glBindVertexArray(l->vao);
        glDrawArrays(GL_TRIANGLES, 0, l->vertices);
    }
    p.setUniformValue("uUnico", true);
    p.setUniformValue("uBase", 0);
    for (const auto& a : ayudantes_) {
        const Node& n = *a.nodo;
        if (!incluirPiso && n.name() && *n.name() == nombrePiso) continue;
        // The section plane is seen through, never clicked.
        if (n.name() && *n.name() == nombrePlanoSeccion) continue;
        bool oculto;
        float opacidad;
        estadoHeredado(n, oculto, opacidad);
        if (oculto || opacidad <= 0) continue;
        BufferAyudante& b = bufferDe(*n.geometry());
        glUniformMatrix4fv(p.uniformLocation("uModelo"), 1, GL_FALSE, glm::value_ptr(matrizAyudante(n, camara)));
        glUniform1ui(p.uniformLocation("uIdUnico"), static_cast<GLuint>(a.id));
        glBindVertexArray(b.vao);
        for (std::size_t k = 0; k < b.elementos.size(); ++k)
            if (b.elementos[k].first == Primitiva::Triangulos)
                glDrawElements(GL_TRIANGLES, b.elementos[k].second, GL_UNSIGNED_INT,
                               reinterpret_cast<const void*>(static_cast<std::size_t>(b.desde[k]) * sizeof(std::uint32_t)));
    }
    glBindVertexArray(0);
    glDisable(GL_SCISSOR_TEST);

    GLuint id = 0;
    float profundidad = 1.0f;
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glReadPixels(x, alto - 1 - y, 1, 1, GL_RED_INTEGER, GL_UNSIGNED_INT, &id);
    glReadPixels(x, alto - 1 - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &profundidad);
    glBindFramebuffer(GL_FRAMEBUFFER, fboVolver);
    if (id == 0 || id > nodoDeId_.size()) return std::nullopt;
    auto nodo = nodoDeId_[id - 1].lock();
    if (!nodo) return std::nullopt;
    const float ndcX = (static_cast<float>(x) + 0.5f) / static_cast<float>(ancho) * 2.0f - 1.0f;
    const float ndcY = 1.0f - (static_cast<float>(y) + 0.5f) / static_cast<float>(alto) * 2.0f;
    return ResultadoPick{nodo, camara.desproyectar(ndcX, ndcY, profundidad)};
}

} // namespace teskal
