// Water, vertex stage. SHADOWED: a shadow map on unit 1.

varying vec4 position; // where the reflection and the refraction are to be sampled
varying vec3 eyeVec;   // in the tangent space of the water's plane
varying vec3 lightDir;
varying float time;
varying float camZ;

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
    time = gl_Color.x; // On purpose: the time comes as the colour.

    mat3 TBN_Matrix;
    TBN_Matrix[0] = gl_NormalMatrix * vec3(1.0, 0.0, 0.0); // tangent
    TBN_Matrix[1] = gl_NormalMatrix * vec3(0.0, 0.0, 1.0); // binormal
    TBN_Matrix[2] = gl_NormalMatrix * vec3(0.0, 1.0, 0.0); // normal

    vec4 posWorld = gl_ModelViewMatrix * gl_Vertex;
    vec3 vertex = vec3(posWorld);
    eyeVec = -vertex * TBN_Matrix;
    lightDir = vec3(gl_LightSource[0].position.xyz - vertex) * TBN_Matrix;

    mat4 MReflect = mat4(0.5, 0.0, 0.0, 0.0,
                         0.0, 0.5, 0.0, 0.0,
                         0.0, 0.0, 0.5, 0.0,
                         0.5, 0.5, 0.5, 1.0);
    position = ftransform();
    gl_Position = position;
    gl_ClipVertex = posWorld;
    position = MReflect * position;

    camZ = gl_ModelViewMatrixInverse[3].y; // the camera's height

#ifdef SHADOWED
    gl_TexCoord[1] = gl_TextureMatrix[1] * posWorld;
#endif
}
