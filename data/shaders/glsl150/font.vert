#version 150
// Vertex stage of the text overlay (Font): a quad already in clip space.
// Attributes: iVertPos (0, -1..1). Uniforms: none. Defines: none.

in vec3 iVertPos;

out vec2 TexCoord0;

void main()
{
    gl_Position = vec4(iVertPos, 1.0);
    // The overlay image is uploaded bottom row first, so y maps straight.
    TexCoord0 = iVertPos.xy * 0.5 + 0.5;
}
