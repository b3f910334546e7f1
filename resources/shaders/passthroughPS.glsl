// Colour only, pixel stage.

varying vec4 color;

void main() {
    gl_FragColor = color;
}
