#version 150
// Fragment stage of the collision programs: the armour colour, flat or
// with a lambert term.
// Inputs (LIGHTING_BASIC): ViewPos, ViewNormal.
// Uniforms: diffuseColor; LIGHTING_BASIC adds View, lightPos (world space),
//   lightDiffuse, lightAmbient.
// Defines: LIGHTING_BASIC.

uniform vec4 diffuseColor;

#ifdef LIGHTING_BASIC
in vec3 ViewPos;
in vec3 ViewNormal;
uniform mat4 View;
uniform vec3 lightPos;
uniform vec3 lightDiffuse;
uniform vec3 lightAmbient;
#endif

out vec4 fragColor;

void main()
{
#ifdef LIGHTING_BASIC
    vec3 n = normalize(ViewNormal);
    // Collision models are often open shells; light their insides too.
    n = gl_FrontFacing ? n : -n;
    vec3 l = normalize((View * vec4(lightPos, 1.0)).xyz - ViewPos);
    vec3 light = lightAmbient + lightDiffuse * max(dot(n, l), 0.0);
    fragColor = vec4(diffuseColor.rgb * light, diffuseColor.a);
#else
    fragColor = diffuseColor;
#endif
}
