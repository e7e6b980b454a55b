#version 150
// Fragment stage of the line program: the per-vertex colour.
// Inputs: VertexColour. Defines: none.

in vec3 VertexColour;

out vec4 fragColor;

void main()
{
    fragColor = vec4(VertexColour, 1.0);
}
