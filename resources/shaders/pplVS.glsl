// Per-pixel lighting, vertex stage: what light 0 and the material have in common for a vertex.
//
// Variants, by what is defined before this text:
//   DIRECT, OMNI, SPOT   the light's type
//   TEXTURED             a texture on unit 0
//   SHADOWED             a shadow map on unit 1; spot lights only
//   SKINNED              skinning.glsl is included before it
//   SKINNED_LIGHT        the light terms use the skinned vertex too

varying vec4 diffuse;
varying vec4 ambient;
varying vec4 ambientGlobal;
varying vec3 normal;
varying vec3 LPos;
#ifdef DIRECT
varying vec3 halfVector;
#else
varying vec3 TPos;
#endif

void main() {
    ambient = gl_FrontMaterial.ambient * gl_LightSource[0].ambient;
    ambientGlobal =
        vec4(gl_LightModel.ambient.rgb, 0.0) * gl_FrontMaterial.ambient + gl_FrontMaterial.emission;
    diffuse = gl_FrontMaterial.diffuse * gl_LightSource[0].diffuse;

#ifdef SKINNED
    vec4 position;
    vec3 skinnedNormal;
    skin(position, skinnedNormal);
    normal = normalize(gl_NormalMatrix * skinnedNormal);
    gl_Position = gl_ModelViewProjectionMatrix * position;
#else
    normal = normalize(gl_NormalMatrix * gl_Normal);
    gl_Position = ftransform();
#endif

#ifdef SKINNED_LIGHT
    vec4 litVertex = position;
#else
    // On purpose: where SKINNED_LIGHT is not defined, a skinned vertex is lit at its unskinned position.
    vec4 litVertex = gl_Vertex;
#endif

#ifdef DIRECT
    LPos = normalize(gl_LightSource[0].position.xyz);
    halfVector = normalize(gl_LightSource[0].halfVector.xyz);
#else
    TPos = vec3(gl_ModelViewMatrix * litVertex);
    LPos = gl_LightSource[0].position.xyz;
#endif

#ifdef TEXTURED
    gl_TexCoord[0] = gl_MultiTexCoord0;
#endif
#ifdef SHADOWED
    // The texture matrix of unit 1 transforms eye space to the light's shadow map.
    vec4 posWorld = gl_ModelViewMatrix * litVertex;
    gl_TexCoord[1] = gl_TextureMatrix[1] * posWorld;
#endif
}
