// Merges the four levels of the blur pyramid: their sum (bloom), or their mean with AVERAGED (depth
// of field).

uniform sampler2D textureSampler0;
uniform sampler2D textureSampler1;
uniform sampler2D textureSampler2;
uniform sampler2D textureSampler3;

void main() {
    vec2 coord = gl_TexCoord[0].st;
    vec4 sum = texture2D(textureSampler0, coord) + texture2D(textureSampler1, coord) +
               texture2D(textureSampler2, coord) + texture2D(textureSampler3, coord);
#ifdef AVERAGED
    sum *= 0.25;
#endif
    gl_FragColor = vec4(sum.rgb, 1.0);
}
