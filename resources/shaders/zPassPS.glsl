// Depth coding, pixel stage: the depth goes into alpha, and the caller's colour mask decides what is
// kept.

varying vec4 pos; // in eye space

uniform float near;
uniform float far;

void main() {
    // On purpose: eye space looks along -z, so the near plane's distance adds to the depth.
    float i = abs((pos.z - near) / far);
    gl_FragColor = vec4(0.0, 0.0, 0.0, i);
}
