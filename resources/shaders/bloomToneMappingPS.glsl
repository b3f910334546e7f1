// Tone mapping for the adapted luminance of the scene.

uniform sampler2D textureSampler0;
uniform float maxLuminance;
uniform float exposure;

void main() {
    vec4 texel = texture2D(textureSampler0, gl_TexCoord[0].st);
    float luminance = 0.3 * texel.r + 0.59 * texel.g + 0.11 * texel.b;
    float deltaLuminance = (exposure / maxLuminance) * luminance;
    float finalLuminance = (deltaLuminance * (1.0 + deltaLuminance / pow(exposure, 2.0))) /
                           (1.0 + deltaLuminance);
    gl_FragColor = vec4((texel * finalLuminance).rgb, 1.0);
}
