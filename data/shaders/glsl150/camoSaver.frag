#version 150
// Fragment stage of the camouflage bake: the blend the lit programs show,
// written into a copy of the diffuse texture.
// Inputs: TexCoord0. Samplers: diffuseMap0 (the diffuse texture),
//   exclusionMap (r: where paint may go), camoMap (pattern, channels r, g,
//   b, a). Uniforms: camoTiling (xy scale, zw offset of TexCoord0),
//   camoColor0..3 (rgb colour, a strength, 0..1). Defines: none.

in vec2 TexCoord0;

uniform sampler2D diffuseMap0;
uniform sampler2D exclusionMap;
uniform sampler2D camoMap;
uniform vec4 camoTiling;
uniform vec4 camoColor0;
uniform vec4 camoColor1;
uniform vec4 camoColor2;
uniform vec4 camoColor3;

out vec4 fragColor;

void main()
{
    vec4 base = texture(diffuseMap0, TexCoord0);
    vec4 camo = texture(camoMap, TexCoord0 * camoTiling.xy + camoTiling.zw);
    vec3 painted = base.rgb;
    painted = mix(painted, camoColor0.rgb, camo.r * camoColor0.a);
    painted = mix(painted, camoColor1.rgb, camo.g * camoColor1.a);
    painted = mix(painted, camoColor2.rgb, camo.b * camoColor2.a);
    painted = mix(painted, camoColor3.rgb, camo.a * camoColor3.a);
    fragColor = vec4(mix(base.rgb, painted, texture(exclusionMap, TexCoord0).r), base.a);
}
