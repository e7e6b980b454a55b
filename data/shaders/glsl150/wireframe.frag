#version 150
// Fragment stage of the Wireframe program: one flat colour.
// Uniforms: diffuseColor (all zero, the start value of a material, draws
//   light grey so the lines stay visible). Defines: none.

uniform vec4 diffuseColor;

out vec4 fragColor;

void main()
{
    fragColor = diffuseColor == vec4(0.0) ? vec4(0.85, 0.85, 0.85, 1.0) : diffuseColor;
}
