// Depth of field: from the sharp image to the blurred one with the distance from the focus. The
// blurred image has the coded depth in its alpha.

uniform sampler2D textureSampler0; // sharp
uniform sampler2D textureSampler1; // blurred
uniform float focus;
uniform float range;

void main() {
    vec4 tex0 = texture2D(textureSampler0, gl_TexCoord[0].st);
    vec4 tex1 = texture2D(textureSampler1, gl_TexCoord[0].st);
    float dist = clamp(abs(tex1.a - focus) * range, 0.0, 1.0);
    vec4 mixed = (1.0 - dist) * tex0 + dist * tex1;
    gl_FragColor = vec4(mixed.rgb, 1.0);
}
