// The shadow map on unit 1, included before a pixel stage that is SHADOWED.

uniform sampler2DShadow textureSampler1;
uniform float width; // of the shadow map, in texels
uniform float height;

vec4 offset_lookup(sampler2DShadow map, vec4 loc, vec2 offset) {
    vec2 texmapscale = vec2(1.0 / width, 1.0 / height);
    return shadow2DProj(map, vec4(loc.xy + offset * texmapscale * loc.ww, loc.z, loc.w));
}

// The part of the light that is not blocked: the mean of four lookups around `loc`.
vec4 lightReaching(vec4 loc) {
    vec4 sum = offset_lookup(textureSampler1, loc, vec2(-1.5, 0.5));
    sum += offset_lookup(textureSampler1, loc, vec2(0.5, 0.5));
    sum += offset_lookup(textureSampler1, loc, vec2(-1.5, -1.5));
    sum += offset_lookup(textureSampler1, loc, vec2(0.5, -1.5));
    return sum * 0.25;
}
