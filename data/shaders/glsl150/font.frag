#version 150
// Fragment stage of the text overlay (Font).
// Inputs: TexCoord0. Samplers: diffuseMap0 (the overlay image, straight
//   alpha). Defines: none.
// The overlay blends with GL_ONE, GL_ONE_MINUS_SRC_ALPHA, so the colour is
// premultiplied here.

in vec2 TexCoord0;

uniform sampler2D diffuseMap0;

out vec4 fragColor;

void main()
{
    vec4 texel = texture(diffuseMap0, TexCoord0);
    fragColor = vec4(texel.rgb * texel.a, texel.a);
}
