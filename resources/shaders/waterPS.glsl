// Water, pixel stage. SHADOWED: shadowMap.glsl is included before it.

varying vec4 position;
varying vec3 eyeVec;
varying vec3 lightDir;
varying float time;
varying float camZ;

uniform sampler2D textureSampler0; // reflection
uniform sampler2D textureSampler2; // refraction
uniform sampler2D textureSampler3; // normals
uniform sampler2D textureSampler4; // distortion
uniform int repeat;

void main() {
    vec2 coord = gl_TexCoord[0].xy * float(repeat);
    vec2 texUV = coord + time * vec2(2.0, 3.0);
    vec2 texUV2 = coord + time * vec2(3.0, 1.0);

    vec4 dudv = (texture2D(textureSampler4, texUV2) * 2.0 - 1.0) * 0.019;
    vec3 normal = texture2D(textureSampler3, texUV + dudv.xy).rgb;
    vec2 onScreen = position.xy / position.w + dudv.xy;
    vec3 refraction = texture2D(textureSampler2, onScreen).rgb;
    vec3 reflection = texture2D(textureSampler0, onScreen).rgb;

    vec3 pixelColor = gl_LightSource[0].ambient.rgb;
    vec3 N = normalize(normal * 2.0 - 1.0);
    vec3 L = normalize(lightDir);
    vec3 eye = normalize(eyeVec);

    float fresnelWeight = max(dot(eye, sign(camZ) * N), 0.0);
    vec3 diffuse = reflection * (1.0 - fresnelWeight) + refraction * fresnelWeight;

    float lambertTerm = dot(N, L);
    if (lambertTerm > 0.0) {
        pixelColor += gl_LightSource[0].diffuse.rgb * lambertTerm * diffuse;
        vec3 halfway = normalize(L + eye);
        pixelColor += gl_LightSource[0].specular.rgb * pow(max(dot(N, halfway), 0.0), 60.0);
    }

#ifdef SHADOWED
    vec4 sum = lightReaching(gl_TexCoord[1] + vec4(dudv.xy * 30.0, 0.0, 0.0));
    // On purpose: a shadow darkens the ambient term too.
    gl_FragColor = vec4(pixelColor.rgb * sum.rgb, 1.0);
#else
    gl_FragColor = vec4(pixelColor.rgb, 1.0);
#endif
}
