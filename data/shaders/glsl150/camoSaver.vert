#version 150
// Vertex stage of the camouflage bake: draws in the texture's UV space, so
// each texel of the target is the texel of the same UV in the sources.
// Attributes: iVertPos (0, ignored apart from its slot), iTexCoord0 (1).
// Outputs: TexCoord0. Defines: none.

in vec3 iVertPos;
in vec2 iTexCoord0;

out vec2 TexCoord0;

void main()
{
    TexCoord0 = iTexCoord0;
    gl_Position = vec4(iTexCoord0 * 2.0 - 1.0, 0.0, 1.0);
}
