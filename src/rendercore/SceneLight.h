#pragma once

#include "Maths.h"

// The scene's one light, shared with the material code, which reads it when
// it sets the lightPos, lightDiffuse and lightAmbient uniforms. position is
// also the eye of the shadow pass.
struct SceneLight
{
    Vector3 position{2.75f, 7.8f, 16.0f};
    Vector3 diffuse{1.0f, 1.0f, 1.0f};
    // 127 / 255 until the ambient slider says otherwise.
    Vector3 ambient{0.49803922f, 0.49803922f, 0.49803922f};
};
