#version 150
// Vertex stage of the lit vehicle programs (Bumped, BumpedDual, LightingOnly,
// LightingOnlyAlpha).
// Attributes: iVertPos (0), iTexCoord0 (1), iNormal (4); DUAL_TEXTURE adds
//   iTexCoord1 (2); LIGHTING_BUMP adds iBinormal (5) and iTangent (6).
// Uniforms: ModelViewProj, ModelView, Model, NormalMatrix (view-only normal
//   matrix, so normals go through Model first), DepthBias (object space to
//   shadow-map texture space).
// Defines: LIGHTING_BUMP (tangent frame for normal mapping), LIGHTING_BASIC
//   (vertex normal only), DUAL_TEXTURE (second UV set).
// The outputs are a superset of what any fragment variant reads, so the
// LIGHTING_BUMP vertex stage also feeds the LIGHTING_BASIC fragment stage.

in vec3 iVertPos;
in vec2 iTexCoord0;
in vec3 iNormal;
#ifdef DUAL_TEXTURE
in vec2 iTexCoord1;
#endif
#ifdef LIGHTING_BUMP
in vec3 iBinormal;
in vec3 iTangent;
#endif

uniform mat4 ModelViewProj;
uniform mat4 ModelView;
uniform mat4 Model;
uniform mat3 NormalMatrix;
uniform mat4 DepthBias;

out vec2 TexCoord0;
#ifdef DUAL_TEXTURE
out vec2 TexCoord1;
#endif
out vec3 ViewPos;
out vec3 ViewNormal;
#ifdef LIGHTING_BUMP
out vec3 ViewTangent;
out vec3 ViewBinormal;
#endif
out vec4 ShadowCoord;

// Object space direction to view space: Model carries the object's
// rotation, NormalMatrix the camera's.
vec3 toView(vec3 direction)
{
    return NormalMatrix * (mat3(Model) * direction);
}

void main()
{
    vec4 position = vec4(iVertPos, 1.0);
    gl_Position = ModelViewProj * position;
    ViewPos = (ModelView * position).xyz;
    ViewNormal = toView(iNormal);
#ifdef LIGHTING_BUMP
    ViewTangent = toView(iTangent);
    ViewBinormal = toView(iBinormal);
#endif
    TexCoord0 = iTexCoord0;
#ifdef DUAL_TEXTURE
    TexCoord1 = iTexCoord1;
#endif
    ShadowCoord = DepthBias * position;
}
