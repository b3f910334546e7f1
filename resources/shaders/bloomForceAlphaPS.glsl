// A texture with the caller's alpha in place of its own: the intensity of the overlay.

varying vec4 color;

uniform sampler2D textureSampler0;

void main() {
    gl_FragColor = vec4(texture2D(textureSampler0, gl_TexCoord[0].st).rgb, color.a);
}
