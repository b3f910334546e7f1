// Colour only, vertex stage. SKINNED: skinning.glsl is included before it.

varying vec4 color;

void main() {
    color = gl_Color;
#ifdef SKINNED
    vec4 position;
    vec3 unused;
    skin(position, unused);
    gl_Position = gl_ModelViewProjectionMatrix * position;
#else
    gl_Position = ftransform();
#endif
}
