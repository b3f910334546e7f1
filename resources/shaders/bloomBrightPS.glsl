// Bright pass: only values above 1 glow, which a floating-point target can store.

uniform sampler2D textureSampler0;

void main() {
    vec4 texel = texture2D(textureSampler0, gl_TexCoord[0].st);
    float lum = 0.30 * texel.r + 0.59 * texel.g + 0.11 * texel.b;
    if (lum > 1.0)
        gl_FragColor = vec4((texel * lum).rgb, 1.0);
    else
        gl_FragColor = vec4(0.0, 0.0, 0.0, 1.0);
}
