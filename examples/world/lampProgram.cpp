// The texts of the program, and its use for the materials of the village.

#include "examples/world/lampProgram.h"

#include <ravolt.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace world {

namespace {

constexpr char skinning[] = R"(
attribute vec4 boneIndex;
attribute vec4 boneWeight;
uniform vec4 boneQuat[100];
uniform vec3 boneTrans[100];
vec3 turned(vec4 q, vec3 v) { return v + 2.0 * cross(q.xyz, cross(q.xyz, v) + q.w * v); }
void pose(inout vec3 vertex, inout vec3 direction) {
    vec3 v = vec3(0.0), n = vec3(0.0);
    vec4 indices = boneIndex, weights = boneWeight;
    for (int i = 0; i < 4; i++) {
        int bone = int(indices.x);
        v += (turned(boneQuat[bone], vertex) + boneTrans[bone]) * weights.x;
        n += turned(boneQuat[bone], direction) * weights.x;
        indices = indices.yzwx;
        weights = weights.yzwx;
    }
    vertex = v;
    direction = n;
}
)";
constexpr char rigid[] = "void pose(inout vec3 vertex, inout vec3 direction) {}\n";

constexpr char vertexStage[] = R"(
varying vec3 position, normal;
void main() {
    vec3 vertex = gl_Vertex.xyz, direction = gl_Normal;
    pose(vertex, direction);
    position = vec3(gl_ModelViewMatrix * vec4(vertex, 1.0));
    normal = gl_NormalMatrix * direction;
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_TexCoord[1] = gl_TextureMatrix[1] * vec4(position, 1.0); // from eye space to the shadow map
    gl_Position = gl_ModelViewProjectionMatrix * vec4(vertex, 1.0);
}
)";

constexpr char shadowed[] = R"(
uniform sampler2DShadow textureSampler1;
float lookup(vec2 offset) {
    vec4 at = gl_TexCoord[1];
    return shadow2DProj(textureSampler1, vec4(at.xy + offset * texel * at.w, at.zw)).r;
}
float reached() {
    return 0.25 * (lookup(vec2(-1.5, 0.5)) + lookup(vec2(0.5, 0.5)) + lookup(vec2(-1.5, -1.5)) +
                   lookup(vec2(0.5, -1.5)));
}
)";
constexpr char lit[] = "float reached() { return 1.0; }\n";

constexpr char pixelStage[] = R"(
varying vec3 position, normal;
uniform sampler2D textureSampler0;
vec3 from(gl_LightSourceParameters light, vec3 n) {
    vec3 way = light.position.xyz - position;
    float away = length(way), facing = max(dot(n, way / away), 0.0);
    return light.diffuse.rgb * facing / (light.constantAttenuation +
               light.linearAttenuation * away + light.quadraticAttenuation * away * away);
}
)";
constexpr char byLamps[] = R"(
vec3 received(vec3 n) {
    return reached() * from(gl_LightSource[0], n) + from(gl_LightSource[1], n) +
           from(gl_LightSource[2], n) + from(gl_LightSource[3], n);
}
)";
// Leaves let light through: their sides away from it are not quite dark.
constexpr char byTheSunAlone[] = R"(
vec3 received(vec3 n) {
    float facing = dot(n, normalize(gl_LightSource[0].position.xyz - position));
    return gl_LightSource[0].diffuse.rgb * max(0.75 * facing + 0.25, 0.0);
}
)";
constexpr char result[] = R"(
void main() {
    vec3 light = received(normalize(normal));
    vec3 color = gl_FrontMaterial.emission.rgb +
                 gl_FrontMaterial.ambient.rgb * (gl_LightModel.ambient.rgb + gl_LightSource[0].ambient.rgb) +
                 gl_FrontMaterial.diffuse.rgb * light;
    gl_FragColor = vec4(color, gl_FrontMaterial.diffuse.a) * texture2D(textureSampler0, gl_TexCoord[0].st);
}
)";

RVSHADER *makeProgram(bool skinned, bool shadows, const char *light) {
    RVSHADER *program = new RVSHADER();
    const std::string vertex = std::string(skinned ? skinning : rigid) + vertexStage;
    const std::string texel =
        "const float texel = 1.0 / " + std::to_string(RVSETTINGS::getSDLShadowMapSize()) + ".0;\n";
    const std::string pixel =
        (shadows ? texel + shadowed : std::string(lit)) + pixelStage + light + result;
    if (program->loadVertexShader("lampVS", vertex.c_str()) &&
        program->loadPixelShader("lampPS", pixel.c_str()))
        program->load(nullptr, nullptr, true);
    RVSHADER::disable();
    return program;
}

// For materials without a texture, since the program always reads one.
RVTEXTURE *makeWhite() {
    constexpr unsigned int side = 4;
    RVTEXTURE *white = new RVTEXTURE();
    white->create(side, side, 3);
    std::fill_n(white->getBitmap(), side * side * 3, static_cast<unsigned char>(255));
    white->update();
    return white;
}

// Beyond the cone of the main light, which is round the village.
bool isOutdoors(RVMATERIAL &material) {
    for (const char *prefix : {"nature_", "fish_", "duck_"})
        if (!std::strncmp(material.getName(), prefix, std::strlen(prefix)))
            return true;
    return false;
}

} // namespace

LampProgram::LampProgram() {
    if (!RVSHADER::usePPL())
        return;
    RVTEXTURE *white = makeWhite();
    for (RVMATERIAL *material = RVMATERIAL::getFirst(); material; material = material->getNext()) {
        if (!material->isTextured())
            material->setTexture(0, white);
        last = material;
    }
    for (const bool skinned : {false, true})
        for (const bool shadows : {false, true})
            programs[skinned][shadows] = makeProgram(skinned, shadows, byLamps);
    sunlit = makeProgram(false, false, byTheSunAlone);
}

void LampProgram::apply(bool on, bool shadows) {
    const bool works = last && programs[0][0]->isOperative();
    for (RVMATERIAL *material = RVMATERIAL::getFirst(); works; material = material->getNext()) {
        RVSHADER *program = programs[material->isSkinned()][shadows && RVSHADER::useShadows()];
        if (isOutdoors(*material))
            material->setShader(sunlit);
        else
            material->setShader(on ? program : nullptr);
        if (material == last)
            return;
    }
}

} // namespace world
