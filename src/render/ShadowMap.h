#pragma once

#include "Maths.h"

#include <functional>

// The depth texture the vehicle casts its shadow into, with the framebuffer
// that renders into it, and the depth pass from the light. Materials bind the
// texture to unit 7 as shadowMap. Everything here needs the frame's context
// current.
class ShadowMap
{
public:
    ShadowMap() = default;
    ShadowMap(const ShadowMap&) = delete;
    ShadowMap& operator=(const ShadowMap&) = delete;

    // A new side x side depth texture; the framebuffer is made only once.
    // The framebuffer bound before is bound again afterwards. An incomplete
    // framebuffer is logged and left as it is.
    void build(int side);
    // Frees the texture and the framebuffer.
    void release();
    // The depth pass: a 45 degree perspective from lightPosition toward the
    // origin goes into MatrixStack's depthProjection and depthView, and
    // drawCasters draws into the map. Afterwards the framebuffer bound before
    // is bound again, with the viewport viewWidth x viewHeight.
    void render(const Vector3& lightPosition, const std::function<void()>& drawCasters,
                int viewWidth, int viewHeight);

    unsigned int framebuffer = 0;
    unsigned int texture = 0;
    int side = 0;
};
