// Terrain with parallax and normal maps, pixel stage: four grounds by the weights of the blend.
// On purpose: no shadow map is read.

varying vec3 normal;
varying vec3 eyeVec;
varying vec3 lightDir;

uniform sampler2D textureSampler0; // colour, and height in alpha
uniform sampler2D textureSampler2;
uniform sampler2D textureSampler3;
uniform sampler2D textureSampler4;
uniform sampler2D textureSampler5; // normal, and gloss in alpha
uniform sampler2D textureSampler6;
uniform sampler2D textureSampler7;
uniform sampler2D textureSampler8;
uniform int repeat1; // tilings
uniform int repeat2;
uniform int repeat3;
uniform int repeat4;

vec4 blend(vec4 a, vec4 b, vec4 c, vec4 d) {
    float m1 = normal.z;
    float m2 = normal.x;
    float m3 = 1.0 - normal.y;
    float m1n = 1.0 - normal.z;
    float m2n = 1.0 - normal.x;
    float m3n = normal.y; // On purpose: the third weight is the other way round.
    vec4 x = a * m1n + b * m1;
    x = x * m2n + c * m2;
    return x * m3n + d * m3;
}

void main() {
    vec2 texUV1 = gl_TexCoord[0].xy * float(repeat1);
    vec2 texUV2 = gl_TexCoord[0].xy * float(repeat2);
    vec2 texUV3 = gl_TexCoord[0].xy * float(repeat3);
    vec2 texUV4 = gl_TexCoord[0].xy * float(repeat4);

    float parallax =
        blend(texture2D(textureSampler0, texUV1), texture2D(textureSampler2, texUV2),
              texture2D(textureSampler3, texUV3), texture2D(textureSampler4, texUV4)).a;
    parallax = parallax * 0.034 - 0.004;
    vec3 eye = normalize(eyeVec);
    vec2 shift = eye.xy * parallax;
    texUV1 += shift;
    texUV2 += shift;
    texUV3 += shift;
    texUV4 += shift;

    vec4 normalGloss =
        blend(texture2D(textureSampler5, texUV1), texture2D(textureSampler6, texUV2),
              texture2D(textureSampler7, texUV3), texture2D(textureSampler8, texUV4));
    vec4 diff = blend(texture2D(textureSampler0, texUV1), texture2D(textureSampler2, texUV2),
                      texture2D(textureSampler3, texUV3), texture2D(textureSampler4, texUV4));

    vec3 pixelColor = gl_LightSource[0].ambient.rgb;
    vec3 N = normalize(normalGloss.rgb * 2.0 - 1.0);
    vec3 L = normalize(lightDir);
    float lambertTerm = dot(N, L);
    if (lambertTerm > 0.0) {
        pixelColor += gl_LightSource[0].diffuse.rgb * lambertTerm * diff.rgb;
        vec3 halfway = normalize(L + eye);
        pixelColor += gl_LightSource[0].specular.rgb * pow(max(dot(N, halfway), 0.0), 60.0) *
                      normalGloss.a;
    }
    gl_FragColor = vec4(pixelColor.rgb, 1.0);
}
