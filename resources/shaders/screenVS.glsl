// A textured quad on the screen, and the sky, vertex stage. COLORED: passes the colour on too.
// CLIPPED: user clip planes cut it. (While one is on, some drivers draw nothing of a program that
// does not write gl_ClipVertex.)

#ifdef COLORED
varying vec4 color;
#endif

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
#ifdef COLORED
    color = gl_Color;
#endif
#ifdef CLIPPED
    gl_ClipVertex = gl_ModelViewMatrix * gl_Vertex;
#endif
    gl_Position = ftransform();
}
