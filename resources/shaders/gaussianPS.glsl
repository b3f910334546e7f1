// A filter and what it was made from, side by side with a red line between them.

uniform sampler2D textureSampler0;

const float tap = 1.0 / 512.0; // On purpose: constant, whatever the texture's size.

vec4 row(float t, float side, float middle) {
    vec2 coord = gl_TexCoord[0].st + vec2(0.0, t);
    return texture2D(textureSampler0, coord - vec2(tap, 0.0)) * side +
           texture2D(textureSampler0, coord) * middle +
           texture2D(textureSampler0, coord + vec2(tap, 0.0)) * side;
}

void main() {
    if (gl_TexCoord[0].s < 0.495)
        gl_FragColor = (row(-tap, 1.0, 2.0) + row(0.0, 2.0, 4.0) + row(tap, 1.0, 2.0)) / 16.0;
    else if (gl_TexCoord[0].s > 0.505)
        gl_FragColor = texture2D(textureSampler0, gl_TexCoord[0].st);
    else
        gl_FragColor = vec4(1.0, 0.0, 0.0, 1.0);
}
