#version 150
// Vertex stage of the collision programs (CollisionLighting,
// CollisionNoLighting).
// Attributes: iVertPos (0); LIGHTING_BASIC adds iNormal (4).
// Uniforms: ModelViewProj; LIGHTING_BASIC adds ModelView, Model and
//   NormalMatrix (view-only normal matrix, so normals go through Model).
// Defines: LIGHTING_BASIC.

in vec3 iVertPos;
uniform mat4 ModelViewProj;

#ifdef LIGHTING_BASIC
in vec3 iNormal;
uniform mat4 ModelView;
uniform mat4 Model;
uniform mat3 NormalMatrix;
out vec3 ViewPos;
out vec3 ViewNormal;
#endif

void main()
{
    vec4 position = vec4(iVertPos, 1.0);
    gl_Position = ModelViewProj * position;
#ifdef LIGHTING_BASIC
    ViewPos = (ModelView * position).xyz;
    ViewNormal = NormalMatrix * (mat3(Model) * iNormal);
#endif
}
