#version 150
// Fragment stage of the lit vehicle programs.
// Inputs: TexCoord0, TexCoord1 (DUAL_TEXTURE), ViewPos, ViewNormal,
//   ViewTangent/ViewBinormal (LIGHTING_BUMP), ShadowCoord.
// Samplers: diffuseMap0 (rgb colour, a alpha), diffuseMap1 (DUAL_TEXTURE:
//   second layer laid over the first by its alpha, on TexCoord1),
//   normalMap and specularMap (LIGHTING_BUMP), shadowMap (depth, unit 7),
//   exclusionMap (unit 8), camoMap (unit 9).
// Uniforms: View, lightPos (world space), lightDiffuse, lightAmbient,
//   alphaRef, dxt1NormalMap (1: normal x,y in red,green; 0: x in alpha,
//   y in green; z is rebuilt in both), shadowEnabled, shadowSamples,
//   shadowDivide, camoEnabled, camoTiling (xy scale, zw offset),
//   camoColor0..3 (rgb colour, a strength, 0..1).
// Defines: LIGHTING_BUMP (normal and specular map), LIGHTING_BASIC (vertex
//   normal, no specular), DUAL_TEXTURE, ALPHA_STATIC (alpha test always on,
//   at 0.5 when the material gives no reference).
// The glTF export reads these maps as PbrMapping (src/geometry) says: keep
// the two in step.

in vec2 TexCoord0;
#ifdef DUAL_TEXTURE
in vec2 TexCoord1;
#endif
in vec3 ViewPos;
in vec3 ViewNormal;
#ifdef LIGHTING_BUMP
in vec3 ViewTangent;
in vec3 ViewBinormal;
#endif
in vec4 ShadowCoord;

uniform sampler2D diffuseMap0;
#ifdef DUAL_TEXTURE
uniform sampler2D diffuseMap1;
#endif
#ifdef LIGHTING_BUMP
uniform sampler2D normalMap;
uniform sampler2D specularMap;
uniform int dxt1NormalMap;
#endif
uniform sampler2D shadowMap;
uniform sampler2D exclusionMap;
uniform sampler2D camoMap;

uniform mat4 View;
uniform vec3 lightPos;
uniform vec3 lightDiffuse;
uniform vec3 lightAmbient;
uniform float alphaRef;
uniform int shadowEnabled;
uniform float shadowSamples;
uniform float shadowDivide;
uniform int camoEnabled;
uniform vec4 camoTiling;
uniform vec4 camoColor0;
uniform vec4 camoColor1;
uniform vec4 camoColor2;
uniform vec4 camoColor3;

out vec4 fragColor;

const float specularPower = 32.0;

// Poisson taps on the unit disc; the first ones are spread evenly, so a
// small sample count still covers the disc.
const vec2 poissonDisk[16] = vec2[](
    vec2(-0.94201624, -0.39906216), vec2(0.94558609, -0.76890725),
    vec2(-0.09418410, -0.92938870), vec2(0.34495938, 0.29387760),
    vec2(-0.91588581, 0.45771432), vec2(-0.81544232, -0.87912464),
    vec2(-0.38277543, 0.27676845), vec2(0.97484398, 0.75648379),
    vec2(0.44323325, -0.97511554), vec2(0.53742981, -0.47373420),
    vec2(-0.26496911, -0.41893023), vec2(0.79197514, 0.19090188),
    vec2(-0.24188840, 0.99706507), vec2(-0.81409955, 0.91437590),
    vec2(0.19984126, 0.78641367), vec2(0.14383161, -0.14100790));

// Fraction of the light reaching the fragment: shadowSamples taps within
// a disc of radius 1/shadowDivide (shadow-map texture units).
float shadowFactor(float nDotL)
{
    if (shadowEnabled == 0 || ShadowCoord.w <= 0.0)
        return 1.0;
    vec3 coord = ShadowCoord.xyz / ShadowCoord.w;
    if (any(lessThan(coord, vec3(0.0))) || any(greaterThan(coord, vec3(1.0))))
        return 1.0;
    // Grazing surfaces need more bias against self-shadowing.
    float bias = 0.0002 + 0.0008 * (1.0 - nDotL);
    float spread = 1.0 / max(shadowDivide, 1.0);
    int taps = clamp(int(shadowSamples), 1, 16);
    float lit = 0.0;
    for (int i = 0; i < 16; ++i)
    {
        if (i >= taps)
            break;
        float depth = texture(shadowMap, coord.xy + poissonDisk[i] * spread).r;
        lit += (coord.z - bias <= depth) ? 1.0 : 0.0;
    }
    return lit / float(taps);
}

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

vec4 albedo()
{
    vec4 colour = texture(diffuseMap0, TexCoord0);
#ifdef DUAL_TEXTURE
    vec4 layer = texture(diffuseMap1, TexCoord1);
    colour.rgb = mix(colour.rgb, layer.rgb, layer.a);
#endif
    return colour;
}

void alphaTest(float alpha)
{
#ifdef ALPHA_STATIC
    float reference = alphaRef > 0.0 ? alphaRef : 0.5;
#else
    float reference = alphaRef;
#endif
    if (alpha < reference)
        discard;
}

vec3 surfaceNormal()
{
#ifdef LIGHTING_BUMP
    vec4 texel = texture(normalMap, TexCoord0);
    vec2 xy = (dxt1NormalMap != 0 ? texel.rg : texel.ag) * 2.0 - 1.0;
    float z = sqrt(max(1.0 - dot(xy, xy), 0.0));
    vec3 n = normalize(ViewTangent) * xy.x + normalize(ViewBinormal) * xy.y
             + normalize(ViewNormal) * z;
#else
    vec3 n = ViewNormal;
#endif
    n = normalize(n);
    // Double-sided materials show their back faces lit from the back side.
    return gl_FrontFacing ? n : -n;
}

void main()
{
    vec4 base = albedo();
    alphaTest(base.a);
    vec3 colour = applyCamouflage(base.rgb);

    vec3 n = surfaceNormal();
    vec3 l = normalize((View * vec4(lightPos, 1.0)).xyz - ViewPos);
    float nDotL = max(dot(n, l), 0.0);
    float shadow = shadowFactor(nDotL);

    vec3 lit = colour * (lightAmbient + lightDiffuse * nDotL * shadow);
#ifdef LIGHTING_BUMP
    vec3 h = normalize(l + normalize(-ViewPos));
    float highlight = nDotL > 0.0 ? pow(max(dot(n, h), 0.0), specularPower) : 0.0;
    lit += texture(specularMap, TexCoord0).rgb * lightDiffuse * highlight * shadow;
#endif
    fragColor = vec4(lit, base.a);
}
