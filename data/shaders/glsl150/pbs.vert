#version 150
// Vertex stage of the metallic/gloss programs (BumpedPbs, BumpedPbsDual).
// Attributes: iVertPos (0), iTexCoord0 (1), iNormal (4), iBinormal (5),
//   iTangent (6); DUAL_TEXTURE adds iTexCoord1 (2).
// Uniforms: ModelViewProj, ModelView, Model, NormalMatrix (view-only normal
//   matrix, so directions go through Model first), DepthBias (object space
//   to shadow-map texture space).
// Defines: DUAL_TEXTURE (second UV set).

in vec3 iVertPos;
in vec2 iTexCoord0;
in vec3 iNormal;
in vec3 iBinormal;
in vec3 iTangent;
#ifdef DUAL_TEXTURE
in vec2 iTexCoord1;
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
out vec3 ViewTangent;
out vec3 ViewBinormal;
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
    ViewTangent = toView(iTangent);
    ViewBinormal = toView(iBinormal);
    TexCoord0 = iTexCoord0;
#ifdef DUAL_TEXTURE
    TexCoord1 = iTexCoord1;
#endif
    ShadowCoord = DepthBias * position;
}
