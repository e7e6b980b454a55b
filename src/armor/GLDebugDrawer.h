#pragma once

#include <LinearMath/btIDebugDraw.h>

class LineBuffer;

// Bullet's debug drawing onto the viewport's ray lines. The world is not
// given this drawer, so Bullet never calls it on its own; it stands ready
// for looking at the collision models.
class GLDebugDrawer : public btIDebugDraw
{
public:
    void drawLine(const btVector3& from, const btVector3& to, const btVector3& color) override;
    void drawLine(const btVector3& from, const btVector3& to, const btVector3& fromColor,
                  const btVector3& toColor) override;
    void drawSphere(btScalar radius, const btTransform& transform, const btVector3& color) override;
    void drawTriangle(const btVector3& a, const btVector3& b, const btVector3& c,
                      const btVector3& color, btScalar alpha) override;
    void drawContactPoint(const btVector3& point, const btVector3& normal, btScalar distance,
                          int lifeTime, const btVector3& color) override;
    void reportErrorWarning(const char* text) override;
    void draw3dText(const btVector3& location, const char* text) override;
    void setDebugMode(int mode) override { debugMode = mode; }
    int getDebugMode() const override { return debugMode; }

    int debugMode = 0;
    // The viewport's; null until its GL has started.
    LineBuffer* lines = nullptr;
};
