#version 150
// Vertex stage of the unlit programs (NoLighting, NoLightingDual,
// NoLightingAlpha) and of the floor grid (GRID).
// Attributes: iVertPos (0), iTexCoord0 (1); DUAL_TEXTURE adds iTexCoord1
//   (2); GRID uses iVertPos (0) and iGeneric0 (7, line colour) only.
// Uniforms: ModelViewProj; GRID: mvp, which must stay the only active
//   uniform of the grid program, as the grid addresses it at location 0.
// Defines: DUAL_TEXTURE, GRID.

in vec3 iVertPos;
#ifdef GRID
in vec3 iGeneric0;
uniform mat4 mvp;
out vec3 LineColour;
#else
in vec2 iTexCoord0;
#ifdef DUAL_TEXTURE
in vec2 iTexCoord1;
out vec2 TexCoord1;
#endif
uniform mat4 ModelViewProj;
out vec2 TexCoord0;
#endif

void main()
{
#ifdef GRID
    gl_Position = mvp * vec4(iVertPos, 1.0);
    LineColour = iGeneric0;
#else
    gl_Position = ModelViewProj * vec4(iVertPos, 1.0);
    TexCoord0 = iTexCoord0;
#ifdef DUAL_TEXTURE
    TexCoord1 = iTexCoord1;
#endif
#endif
}
