#version 150
// Fragment stage of the unlit programs and of the floor grid (GRID).
// Inputs: TexCoord0, TexCoord1 (DUAL_TEXTURE); GRID: LineColour.
// Samplers: diffuseMap0 (rgb colour, a alpha), diffuseMap1 (DUAL_TEXTURE:
//   second layer over the first by its alpha), exclusionMap (unit 8),
//   camoMap (unit 9).
// Uniforms: diffuseColor (tint; all zero, the start value of a material,
//   means no tint), alphaRef, camoEnabled, camoTiling (xy scale, zw
//   offset), camoColor0..3 (rgb colour, a strength, 0..1). GRID: none.
// Defines: DUAL_TEXTURE, ALPHA_STATIC (alpha test always on, at 0.5 when
//   the material gives no reference), GRID (per-vertex line colour).

out vec4 fragColor;

#ifdef GRID
in vec3 LineColour;

void main()
{
    fragColor = vec4(LineColour, 1.0);
}
#else
in vec2 TexCoord0;
#ifdef DUAL_TEXTURE
in vec2 TexCoord1;
uniform sampler2D diffuseMap1;
#endif

uniform sampler2D diffuseMap0;
uniform sampler2D exclusionMap;
uniform sampler2D camoMap;
uniform vec4 diffuseColor;
uniform float alphaRef;
uniform int camoEnabled;
uniform vec4 camoTiling;
uniform vec4 camoColor0;
uniform vec4 camoColor1;
uniform vec4 camoColor2;
uniform vec4 camoColor3;

// The camouflage channels r, g, b, a mixed in turn over the base colour,
// each by its strength (camoColorN.a); exclusionMap.r is where paint may go.
vec3 applyCamouflage(vec3 base)
{
    if (camoEnabled == 0)
        return base;
    vec4 camo = texture(camoMap, TexCoord0 * camoTiling.xy + camoTiling.zw);
    vec3 painted = base;
    painted = mix(painted, camoColor0.rgb, camo.r * camoColor0.a);
    painted = mix(painted, camoColor1.rgb, camo.g * camoColor1.a);
    painted = mix(painted, camoColor2.rgb, camo.b * camoColor2.a);
    painted = mix(painted, camoColor3.rgb, camo.a * camoColor3.a);
    return mix(base, painted, texture(exclusionMap, TexCoord0).r);
}

void main()
{
    vec4 colour = texture(diffuseMap0, TexCoord0);
#ifdef DUAL_TEXTURE
    vec4 layer = texture(diffuseMap1, TexCoord1);
    colour.rgb = mix(colour.rgb, layer.rgb, layer.a);
#endif
#ifdef ALPHA_STATIC
    float reference = alphaRef > 0.0 ? alphaRef : 0.5;
#else
    float reference = alphaRef;
#endif
    if (colour.a < reference)
        discard;
    colour.rgb = applyCamouflage(colour.rgb);
    // Only collision materials write diffuseColor; the rest keep all zero.
    vec4 tint = diffuseColor == vec4(0.0) ? vec4(1.0) : diffuseColor;
    fragColor = colour * tint;
}
#endif
