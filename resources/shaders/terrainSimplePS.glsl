// Terrain without parallax and normal maps, pixel stage: four grounds by the weights of the blend.

varying vec3 normal;
varying vec3 normalL;
varying vec3 lightDir;

uniform sampler2D textureSampler0;
uniform sampler2D textureSampler1; // On purpose: declared, and not read.
uniform sampler2D textureSampler2;
uniform sampler2D textureSampler3;
uniform sampler2D textureSampler4;
uniform int repeat1; // tilings
uniform int repeat2;
uniform int repeat3;
uniform int repeat4;

void main() {
    vec4 diff = texture2D(textureSampler0, gl_TexCoord[0].xy * float(repeat1));
    vec4 diff2 = texture2D(textureSampler2, gl_TexCoord[0].xy * float(repeat2));
    vec4 diff3 = texture2D(textureSampler3, gl_TexCoord[0].xy * float(repeat3));
    vec4 diff4 = texture2D(textureSampler4, gl_TexCoord[0].xy * float(repeat4));
    diff = diff * (1.0 - normal.z) + diff2 * normal.z;
    diff = diff * (1.0 - normal.x) + diff3 * normal.x;
    diff = diff * normal.y + diff4 * (1.0 - normal.y);

    vec3 N = normalize(normalL);
    vec3 L = normalize(lightDir);
    float lambertTerm = max(dot(N, L), 0.0);
    vec3 pixelColor = gl_LightSource[0].ambient.rgb +
                      gl_LightSource[0].diffuse.rgb * lambertTerm * diff.rgb;
    gl_FragColor = vec4(pixelColor, 1.0);
}
