#pragma once

// GLSL 3.30 core sources of the scene renderer.
namespace teskal::shaders {

// Batched element triangles: positions in the batch root's space and the
// element's index, whose state (colour, opacity, emission, lighting) is read
// from a texture buffer: two texels per element.
inline constexpr const char* loteVertice = R"(#version 330 core
layout(location = 0) in vec3 aPosicion;
layout(location = 1) in uint aNodo;
uniform mat4 uModelo;
uniform mat4 uVista;
uniform mat4 uProy;
uniform mat4 uLuzVP;
uniform samplerBuffer uEstado;
uniform int uBase;
uniform int uPase; // 0 opaque, 1 transparent
uniform bool uFantasma; // a focused clash: every element is a ghost
out vec3 vPosVista;
out vec4 vPosLuz;
flat out uint vNodo;
void main() {
    // An element that has nothing to draw in this pass is clipped whole.
    float alfa = texelFetch(uEstado, (uBase + int(aNodo)) * 2).a;
    if (uFantasma) alfa = min(alfa, 0.12);
    if (alfa <= 0.0 || (uPase == 0 && alfa < 0.999) || (uPase == 1 && alfa >= 0.999)) {
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
        vPosVista = vec3(0.0);
        vPosLuz = vec4(0.0);
        vNodo = aNodo;
        return;
    }
    vec4 mundo = uModelo * vec4(aPosicion, 1.0);
    vec4 vista = uVista * mundo;
    vPosVista = vista.xyz;
    vPosLuz = uLuzVP * mundo;
    vNodo = aNodo;
    gl_Position = uProy * vista;
}
)";

// Shading shared by batches and helpers: normals derived from the screen-space
// derivatives of the position (the converter's meshes carry none), lit from
// both sides, the directional light's shadow as a soft lookup.
inline constexpr const char* iluminacion = R"(
uniform vec3 uDirLuzVista;     // towards the light, view space
uniform float uIntDirecta;
uniform float uIntAmbiente;
uniform sampler2DShadow uMapaSombra;
uniform bool uConSombras;
uniform float uOscuridadSombra;
uniform float uTexelSombra;

float luzSinSombra(vec4 posLuz) {
    if (!uConSombras) return 1.0;
    vec3 p = posLuz.xyz / posLuz.w * 0.5 + 0.5;
    if (p.x <= 0.0 || p.x >= 1.0 || p.y <= 0.0 || p.y >= 1.0 || p.z >= 1.0) return 1.0;
    float suma = 0.0;
    for (int i = -2; i < 2; ++i)
        for (int j = -2; j < 2; ++j)
            suma += texture(uMapaSombra, vec3(p.xy + (vec2(i, j) + 0.5) * uTexelSombra, p.z - 0.0015));
    return suma / 16.0;
}

vec3 sombrear(vec3 difuso, vec3 emision, int modelo, vec3 posVista, vec4 posLuz) {
    vec3 n = normalize(cross(dFdx(posVista), dFdy(posVista)));
    if (dot(n, -posVista) < 0.0) n = -n;
    vec3 color;
    float sombra = 1.0;
    if (modelo == 2) {
        color = difuso;
    } else {
        float incidencia = dot(n, normalize(uDirLuzVista));
        float directa = max(incidencia, 0.0) * uIntDirecta;
        color = difuso * (uIntAmbiente + directa);
        // A face turned away from the light is unlit already: no shadow on top.
        if (incidencia > 0.0) sombra = mix(1.0, luzSinSombra(posLuz), clamp(incidencia * 8.0, 0.0, 1.0));
    }
    color += emision;
    return color * (1.0 - uOscuridadSombra * (1.0 - sombra));
}
)";

inline constexpr const char* loteFragmento = R"(#version 330 core
in vec3 vPosVista;
in vec4 vPosLuz;
flat in uint vNodo;
uniform samplerBuffer uEstado;
uniform int uBase;
uniform bool uFantasma;
out vec4 fragColor;
%ILUMINACION%
void main() {
    int i = (uBase + int(vNodo)) * 2;
    vec4 a = texelFetch(uEstado, i);
    vec4 b = texelFetch(uEstado, i + 1);
    float alfa = a.a;
    vec3 color = sombrear(a.rgb, b.rgb, int(b.a + 0.5), vPosVista, vPosLuz);
    // A ghost: faint, pale and without its highlight.
    if (uFantasma) {
        alfa = min(alfa, 0.12);
        color = mix(sombrear(a.rgb, vec3(0.0), int(b.a + 0.5), vPosVista, vPosLuz), vec3(0.92), 0.5);
    }
    fragColor = vec4(color, alfa);
}
)";

// Helpers drawn one by one: a material given by uniforms, optional texture.
inline constexpr const char* ayudanteVertice = R"(#version 330 core
layout(location = 0) in vec3 aPosicion;
layout(location = 2) in vec2 aTextura;
uniform mat4 uModelo;
uniform mat4 uVista;
uniform mat4 uProy;
uniform mat4 uLuzVP;
uniform vec2 uEscalaTextura;
out vec3 vPosVista;
out vec4 vPosLuz;
out vec2 vTextura;
void main() {
    vec4 mundo = uModelo * vec4(aPosicion, 1.0);
    vec4 vista = uVista * mundo;
    vPosVista = vista.xyz;
    vPosLuz = uLuzVP * mundo;
    vTextura = aTextura * uEscalaTextura;
    gl_Position = uProy * vista;
}
)";

inline constexpr const char* ayudanteFragmento = R"(#version 330 core
in vec3 vPosVista;
in vec4 vPosLuz;
in vec2 vTextura;
uniform vec4 uDifuso;
uniform vec3 uEmision;
uniform int uModeloLuz;
uniform bool uConTextura;
uniform bool uEsLinea;
uniform sampler2D uTextura;
out vec4 fragColor;
%ILUMINACION%
void main() {
    vec4 difuso = uDifuso;
    if (uConTextura) difuso = texture(uTextura, vTextura);
    if (difuso.a * uDifuso.a <= 0.0) discard;
    vec3 color = uEsLinea ? difuso.rgb + uEmision
                          : sombrear(difuso.rgb, uEmision, uModeloLuz, vPosVista, vPosLuz);
    fragColor = vec4(color, uConTextura ? difuso.a * uDifuso.a : difuso.a);
}
)";

// Depth only, from the light, for the shadow map.
// Hidden elements are sent outside the clip volume from the vertex shader, so
// the fragment shader stays empty and depth-only rendering stays fast.
inline constexpr const char* sombraVertice = R"(#version 330 core
layout(location = 0) in vec3 aPosicion;
layout(location = 1) in uint aNodo;
uniform mat4 uModelo;
uniform mat4 uLuzVP;
uniform samplerBuffer uEstado;
uniform int uBase;
void main() {
    if (texelFetch(uEstado, (uBase + int(aNodo)) * 2).a <= 0.0)
        gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    else
        gl_Position = uLuzVP * uModelo * vec4(aPosicion, 1.0);
}
)";

inline constexpr const char* sombraFragmento = R"(#version 330 core
void main() {}
)";

// Identity pass for picking: each fragment writes its element's id + 1.
inline constexpr const char* idVertice = R"(#version 330 core
layout(location = 0) in vec3 aPosicion;
layout(location = 1) in uint aNodo;
uniform mat4 uModelo;
uniform mat4 uVista;
uniform mat4 uProy;
uniform bool uUnico;
uniform uint uIdUnico;
flat out uint vNodo;
void main() {
    vNodo = uUnico ? uIdUnico : aNodo;
    gl_Position = uProy * uVista * uModelo * vec4(aPosicion, 1.0);
}
)";

inline constexpr const char* idFragmento = R"(#version 330 core
flat in uint vNodo;
uniform samplerBuffer uEstado;
uniform int uBase;
uniform bool uUnico;
out uint fragId;
void main() {
    if (!uUnico && texelFetch(uEstado, (uBase + int(vNodo)) * 2).a <= 0.0) discard;
    fragId = uint(uBase) + vNodo + 1u;
}
)";

// The background: a vertical gradient over the whole view.
inline constexpr const char* fondoVertice = R"(#version 330 core
out float vAltura;
void main() {
    vec2 p = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);
    vAltura = p.y;
    gl_Position = vec4(p * 2.0 - 1.0, 1.0, 1.0);
}
)";

inline constexpr const char* fondoFragmento = R"(#version 330 core
in float vAltura;
uniform vec3 uAbajo;
uniform vec3 uArriba;
out vec4 fragColor;
void main() { fragColor = vec4(mix(uAbajo, uArriba, clamp(vAltura, 0.0, 1.0)), 1.0); }
)";

} // namespace teskal::shaders
