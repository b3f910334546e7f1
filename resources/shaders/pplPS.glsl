// Per-pixel lighting, pixel stage: light 0 on the material, times a texture, under a shadow. The
// variants are those of the vertex stage, but for skinning, which makes no difference here; with
// SHADOWED, shadowMap.glsl is included before it.

varying vec4 diffuse;
varying vec4 ambient;
varying vec4 ambientGlobal;
varying vec3 normal;
varying vec3 LPos;
#ifdef DIRECT
varying vec3 halfVector;
#else
varying vec3 TPos;
#endif

#ifdef TEXTURED
uniform sampler2D textureSampler0;
#endif

vec4 specularTerm(float NdotHV) {
    return gl_FrontMaterial.specular * gl_LightSource[0].specular *
           pow(NdotHV, gl_FrontMaterial.shininess);
}

#ifdef DIRECT

vec4 litColor() {
    vec3 n = normalize(normal);
    vec3 lightDirection = normalize(LPos);
    vec4 color = ambientGlobal + ambient;
    float NdotL = max(dot(n, lightDirection), 0.0);
    if (NdotL > 0.0) {
        color += diffuse * NdotL;
        vec3 halfV = normalize(halfVector);
        float NdotHV = max(dot(n, halfV), 0.0);
        color += specularTerm(NdotHV);
    }
    return color;
}

#else

float attenuation(float lightDistance) {
    return 1.0 / (gl_LightSource[0].constantAttenuation +
                  gl_LightSource[0].linearAttenuation * lightDistance +
                  gl_LightSource[0].quadraticAttenuation * lightDistance * lightDistance);
}

#endif

#ifdef OMNI

vec4 litColor() {
    vec3 n = normalize(normal);
    vec3 aux = LPos - TPos;
    vec3 lightDirection = normalize(aux);
    float att = attenuation(length(aux));
    vec4 color = ambientGlobal;
    color += att * ambient;
    vec3 H = normalize(-TPos);
    vec3 reflected = normalize(H + lightDirection);
    float NdotL = max(dot(n, lightDirection), 0.0);
    if (NdotL > 0.0) {
        color += att * (diffuse * NdotL);
        float NdotHV = max(dot(n, reflected), 0.0);
        color += att * specularTerm(NdotHV);
    }
    return color;
}

#endif

#ifdef SPOT

// What the cone adds for a pixel that faces the light.
vec4 coneColor(vec3 n, vec3 aux, float NdotL) {
    vec3 lightDirection = normalize(aux);
    float spotEffect =
        dot(normalize(gl_LightSource[0].spotDirection), normalize(-lightDirection));
    if (spotEffect <= gl_LightSource[0].spotCosCutoff)
        return vec4(0.0);
    vec3 H = normalize(-TPos);
    vec3 reflected = normalize(H + lightDirection);
    spotEffect = pow(spotEffect, gl_LightSource[0].spotExponent);
    float satt = spotEffect * attenuation(length(aux));
    float NdotHV = max(dot(n, reflected), 0.0);
    // On purpose: inside the cone the ambient term is added a second time.
    return satt * (diffuse * NdotL + ambient) + satt * specularTerm(NdotHV);
}

#endif

#ifdef SHADOWED

void main() {
    vec3 n = normalize(normal);
    vec3 aux = LPos - TPos;
    float NdotL = max(dot(n, normalize(aux)), 0.0);
    vec4 sum = lightReaching(gl_TexCoord[1]);
    vec4 color = vec4(0.0);
    if (NdotL > 0.0 && sum.r > 0.0)
        color += coneColor(n, aux, NdotL);
#ifdef TEXTURED
    vec4 texel = texture2D(textureSampler0, gl_TexCoord[0].st);
    gl_FragColor = (ambient + ambientGlobal) * texel + sum * texel * color;
#else
    gl_FragColor = (ambient + ambientGlobal) + sum * color;
#endif
}

#else

#ifdef SPOT

vec4 litColor() {
    vec3 n = normalize(normal);
    vec3 aux = LPos - TPos;
    float NdotL = max(dot(n, normalize(aux)), 0.0);
    // On purpose: unlike an omni light's, the ambient term here does not fade with the distance.
    vec4 color = ambientGlobal + ambient;
    if (NdotL > 0.0)
        color += coneColor(n, aux, NdotL);
    return color;
}

#endif

void main() {
#ifdef TEXTURED
    gl_FragColor = litColor() * texture2D(textureSampler0, gl_TexCoord[0].st);
#else
    gl_FragColor = litColor();
#endif
}

#endif
