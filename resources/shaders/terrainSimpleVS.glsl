// Terrain without parallax and normal maps, vertex stage. The normal serves both as a normal and as
// the weights of the blend.

varying vec3 normal;
varying vec3 normalL;
varying vec3 lightDir;

uniform float inv; // -1 mirrors the terrain for the water's reflection, 1 does not

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
    normal = gl_Normal;
    normalL = gl_NormalMatrix * gl_Normal;
    lightDir = gl_LightSource[0].position.xyz - vec3(gl_ModelViewMatrix * gl_Vertex);

    vec4 v = gl_Vertex;
    v.y *= inv;
    gl_ClipVertex = gl_ModelViewMatrix * v;
    gl_Position = gl_ModelViewProjectionMatrix * v;
}
