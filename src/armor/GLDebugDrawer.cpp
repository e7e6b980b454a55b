#include "GLDebugDrawer.h"

#include "LineBuffer.h"

#include <QColor>

#include <cstdio>

void GLDebugDrawer::drawLine(const btVector3& from, const btVector3& to, const btVector3&)
{
    // Drawn before the viewport exists, a line has nowhere to go.
    if (!lines)
        return;
    lines->addLine({float(from.x()), float(from.y()), float(from.z())},
                   {float(to.x()), float(to.y()), float(to.z())}, QColor(QStringLiteral("white")));
}

void GLDebugDrawer::drawLine(const btVector3& from, const btVector3& to, const btVector3& fromColor,
                             const btVector3&)
{
    drawLine(from, to, fromColor);
}

void GLDebugDrawer::drawSphere(btScalar, const btTransform&, const btVector3&) {}

void GLDebugDrawer::drawTriangle(const btVector3&, const btVector3&, const btVector3&,
                                 const btVector3&, btScalar)
{
}

void GLDebugDrawer::drawContactPoint(const btVector3&, const btVector3&, btScalar, int,
                                     const btVector3&)
{
}

void GLDebugDrawer::reportErrorWarning(const char* text)
{
    std::printf("%s\n", text);
}

void GLDebugDrawer::draw3dText(const btVector3&, const char*) {}
