#version 150
// Fragment stage of the metallic/gloss programs (BumpedPbs, BumpedPbsDual).
// Inputs: TexCoord0, TexCoord1 (DUAL_TEXTURE), ViewPos, ViewNormal,
//   ViewTangent, ViewBinormal, ShadowCoord.
// Samplers: diffuseMap0 (albedo rgb, alpha a), diffuseMap1 (DUAL_TEXTURE:
//   second layer over the first by its alpha, on TexCoord1), normalMap,
//   glossMap (the metallicGlossMap: r metallic, g gloss), detailMap
//   (g: gloss variation around 0.5, r: brightness variation around 0.5),
//   shadowMap (depth, unit 7), exclusionMap (unit 8), camoMap (unit 9).
// Uniforms: View, lightPos (world space), lightDiffuse, lightAmbient,
//   alphaRef, dxt1NormalMap (1: normal x,y in red,green; 0: x in alpha,
//   y in green; z is rebuilt in both), detailMetallic (detail map on/off),
//   detailTile (xy scale, zw offset of TexCoord0), detailPower (0..1,
//   strength; the detail only shows on metallic parts), shadowEnabled,
//   shadowSamples, shadowDivide, camoEnabled, camoTiling (xy scale, zw
//   offset), camoColor0..3 (rgb colour, a strength, 0..1).
// Defines: DUAL_TEXTURE.
// No environment map exists, so the ambient term stands in for it.
// The glTF export reads these maps as PbrMapping (src/geometry) says: keep
// the two in step.

in vec2 TexCoord0;
#ifdef DUAL_TEXTURE
in vec2 TexCoord1;
#endif
in vec3 ViewPos;
in vec3 ViewNormal;
in vec3 ViewTangent;
in vec3 ViewBinormal;
in vec4 ShadowCoord;

uniform sampler2D diffuseMap0;
#ifdef DUAL_TEXTURE
uniform sampler2D diffuseMap1;
#endif
uniform sampler2D normalMap;
uniform sampler2D glossMap;
uniform sampler2D detailMap;
uniform sampler2D shadowMap;
uniform sampler2D exclusionMap;
uniform sampler2D camoMap;

uniform mat4 View;
uniform vec3 lightPos;
uniform vec3 lightDiffuse;
uniform vec3 lightAmbient;
uniform float alphaRef;
uniform int dxt1NormalMap;
uniform int detailMetallic;
uniform vec4 detailTile;
uniform float detailPower;
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

const float PI = 3.14159265;

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
    if (alpha < alphaRef)
        discard;
}

vec3 surfaceNormal()
{
    vec4 texel = texture(normalMap, TexCoord0);
    vec2 xy = (dxt1NormalMap != 0 ? texel.rg : texel.ag) * 2.0 - 1.0;
    float z = sqrt(max(1.0 - dot(xy, xy), 0.0));
    vec3 n = normalize(normalize(ViewTangent) * xy.x + normalize(ViewBinormal) * xy.y
                       + normalize(ViewNormal) * z);
    // Double-sided materials show their back faces lit from the back side.
    return gl_FrontFacing ? n : -n;
}

struct Surface
{
    vec3 albedo;
    float metallic;
    float gloss;
};

// The detail map adds fine wear to the metal: it varies gloss and
// brightness around their map values, weighted by detailPower and metallic.
Surface applyDetail(Surface s)
{
    if (detailMetallic == 0)
        return s;
    vec4 detail = texture(detailMap, TexCoord0 * detailTile.xy + detailTile.zw);
    float weight = clamp(detailPower, 0.0, 1.0) * s.metallic;
    s.gloss = clamp(s.gloss + (detail.g - 0.5) * 2.0 * weight, 0.0, 1.0);
    s.albedo *= 1.0 + (detail.r - 0.5) * weight;
    return s;
}

// Cook-Torrance with GGX distribution, Smith-Schlick geometry and Schlick
// Fresnel; the light is scaled so that a white lambert surface facing it
// shows lightDiffuse.
vec3 directLight(Surface s, vec3 n, vec3 v, vec3 l, vec3 f0)
{
    float nDotL = max(dot(n, l), 0.0);
    if (nDotL <= 0.0)
        return vec3(0.0);
    vec3 h = normalize(l + v);
    float nDotV = max(dot(n, v), 1e-4);
    float nDotH = max(dot(n, h), 0.0);
    float roughness = max(1.0 - s.gloss, 0.04);
    float a2 = roughness * roughness * roughness * roughness;
    float d = a2 / (PI * pow(nDotH * nDotH * (a2 - 1.0) + 1.0, 2.0));
    float k = (roughness + 1.0) * (roughness + 1.0) / 8.0;
    float g = nDotL / (nDotL * (1.0 - k) + k) * nDotV / (nDotV * (1.0 - k) + k);
    vec3 fresnel = f0 + (1.0 - f0) * pow(1.0 - max(dot(h, v), 0.0), 5.0);
    vec3 specular = d * g * fresnel / (4.0 * nDotL * nDotV + 1e-4);
    vec3 diffuse = (1.0 - fresnel) * (1.0 - s.metallic) * s.albedo / PI;
    return (diffuse + specular) * PI * lightDiffuse * nDotL;
}

void main()
{
    vec4 base = albedo();
    alphaTest(base.a);
    vec4 metalGloss = texture(glossMap, TexCoord0);
    Surface s = applyDetail(Surface(applyCamouflage(base.rgb), metalGloss.r, metalGloss.g));

    vec3 n = surfaceNormal();
    vec3 v = normalize(-ViewPos);
    vec3 l = normalize((View * vec4(lightPos, 1.0)).xyz - ViewPos);
    vec3 f0 = mix(vec3(0.04), s.albedo, s.metallic);
    float shadow = shadowFactor(max(dot(n, l), 0.0));

    // Metals keep some ambient through their reflectance, or they turn black.
    vec3 ambientTint = s.albedo * (1.0 - s.metallic) + f0 * mix(0.3, 1.0, s.gloss);
    vec3 colour = lightAmbient * ambientTint + directLight(s, n, v, l, f0) * shadow;
    fragColor = vec4(colour, base.a);
}
