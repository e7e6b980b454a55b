#version 150
// Vertex stage of the Wireframe program.
// Attributes: iVertPos (0). Uniforms: ModelViewProj. Defines: none.

in vec3 iVertPos;

uniform mat4 ModelViewProj;

void main()
{
    gl_Position = ModelViewProj * vec4(iVertPos, 1.0);
}
