// One direction of the separable blur: five taps of the same weight, along X with ALONG_X and along
// Y without.

uniform sampler2D textureSampler0;
uniform float width; // of what is blurred, in pixels
uniform float height;

void main() {
#ifdef ALONG_X
    vec2 tap = vec2(1.0 / width, 0.0);
#else
    vec2 tap = vec2(0.0, 1.0 / height);
#endif
    vec4 sum = vec4(0.0);
    for (int i = -2; i <= 2; i++)
        sum += texture2D(textureSampler0, gl_TexCoord[0].st + float(i) * tap) * 0.2;
    gl_FragColor = sum;
}
