// Terrain with parallax and normal maps, vertex stage. The normal is no normal here but the weights
// of the blend, and the colour is the tangent.

varying vec3 normal;   // weights of the blend
varying vec3 eyeVec;   // in tangent space
varying vec3 lightDir;

uniform float inv; // -1 mirrors the terrain for the water's reflection, 1 does not

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
    normal = gl_Normal;

    vec3 color = gl_Color.xyz;
    mat3 TBN_Matrix;
    TBN_Matrix[0] = gl_NormalMatrix * color;                // tangent
    TBN_Matrix[1] = gl_NormalMatrix * cross(color, normal); // binormal
    TBN_Matrix[2] = gl_NormalMatrix * normal;

    // On purpose: the light terms take the vertex that is not mirrored.
    vec3 vertex = vec3(gl_ModelViewMatrix * gl_Vertex);
    eyeVec = -vertex * TBN_Matrix;
    lightDir = vec3(gl_LightSource[0].position.xyz - vertex) * TBN_Matrix;

    vec4 v = gl_Vertex;
    v.y *= inv;
    gl_ClipVertex = gl_ModelViewMatrix * v;
    gl_Position = gl_ModelViewProjectionMatrix * v;
}
