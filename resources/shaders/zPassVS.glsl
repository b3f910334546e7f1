// Depth coding, vertex stage. SKINNED: skinning.glsl stands in front.

varying vec4 pos;

void main() {
    // On purpose: the coded depth of a skinned vertex is that of the vertex before skinning.
    pos = gl_ModelViewMatrix * gl_Vertex;
#ifdef SKINNED
    vec4 position;
    vec3 unused;
    skin(position, unused);
    gl_ClipVertex = gl_ModelViewMatrix * position;
    gl_Position = gl_ModelViewProjectionMatrix * position;
#else
    gl_ClipVertex = pos;
    gl_Position = ftransform();
#endif
}
