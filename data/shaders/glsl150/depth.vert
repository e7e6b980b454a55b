#version 150
// Vertex stage of the shadow pass (Depth): position only.
// Attributes: iVertPos (0). Uniforms: ModelViewProj (the light's
//   projection * view * model). Defines: none.

in vec3 iVertPos;

uniform mat4 ModelViewProj;

void main()
{
    gl_Position = ModelViewProj * vec4(iVertPos, 1.0);
}
