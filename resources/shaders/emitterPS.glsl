// Particles, pixel stage.

varying vec4 color;

uniform sampler2D textureSampler0;

void main() {
    gl_FragColor = color * texture2D(textureSampler0, gl_TexCoord[0].st);
}
