#version 150
// Fragment stage of the shadow pass (Depth). The target has only a depth
// attachment, so nothing is written but the fixed-function depth.
// Inputs: none. Uniforms: none. Defines: none.

void main()
{
}
