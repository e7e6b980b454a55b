// The program's one GL context: GL work with another context current is
// caught and named, and a scope brings the program's context back.

#include "GlContext.h"
#include "GlFunctions.h"
#include "GlTestContext.h"

#include <gtest/gtest.h>

namespace {

void glWorkInAHandler()
{
    glFunctions();
}

TEST(GlContextTest, WorkInAnotherContextIsNamedAndAScopeBringsTheProgramsBack)
{
    GlTestContext program;
    ASSERT_TRUE(program.valid);
    QStringList callers;
    GlContext::setMismatchHandler([&callers](const QString& caller) { callers.append(caller); });

    // Another context, such as the one current in a slot under Qt 6.
    QOffscreenSurface surface;
    surface.setFormat(program.context.format());
    surface.create();
    QOpenGLContext compositor;
    compositor.setFormat(program.context.format());
    ASSERT_TRUE(compositor.create() && compositor.makeCurrent(&surface));
    glWorkInAHandler();
    if (GlContext::checking())
        EXPECT_EQ(callers, QStringList{"glWorkInAHandler"});

    callers.clear();
    {
        const GlContextScope scope;
        EXPECT_EQ(QOpenGLContext::currentContext(), &program.context);
        glWorkInAHandler();
    }
    // No context at all is a skipped release, not drawing in the wrong one.
    program.context.doneCurrent();
    EXPECT_EQ(glFunctions(), nullptr);
    EXPECT_TRUE(callers.isEmpty());
    GlContext::setMismatchHandler({});
}

} // namespace
