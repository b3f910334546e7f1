// A textured quad on the screen, vertex stage. COLORED: passes the colour on too.

#ifdef COLORED
varying vec4 color;
#endif

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
#ifdef COLORED
    color = gl_Color;
#endif
    gl_Position = ftransform();
}
