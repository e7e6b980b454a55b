#version 150
// Vertex stage of the line program (shell path, hit marker).
// Attributes: iVertPos (0), iColorPos (1, rgb). Uniforms: ModelViewProj.
// Defines: none.

in vec3 iVertPos;
in vec3 iColorPos;

uniform mat4 ModelViewProj;

out vec3 VertexColour;

void main()
{
    gl_Position = ModelViewProj * vec4(iVertPos, 1.0);
    VertexColour = iColorPos;
}
