#pragma once

#include <QString>

#include <functional>

class QOpenGLContext;

// The program's one GL context, and the one way into it for GL work that
// starts outside a frame: a slot, an event handler, a dialog, a command.
//
// Under Qt 6 the context current in a slot or an event handler is the one
// that composes the window, not the viewport's. The two share textures and
// buffers but not vertex arrays or framebuffers, so a vertex array made
// there is missing when the viewport draws, and the next array bound in its
// place draws another mesh's triangles with this mesh's textures.
//
// The owner of the context (the viewport, or the off-screen context of the
// command-line tool and the tests) registers it here with the way to make it
// current. Work from outside the frame runs inside a GlContextScope, which
// makes that context current. Every GL call of the program takes its entry
// points from glFunctions(), which, in checking builds, stops the program
// with the caller's name when the owner's context is not the current one.
class GlContext
{
public:
    using MakeCurrent = std::function<void()>;
    using MismatchHandler = std::function<void(const QString& caller)>;

    static void setOwner(QOpenGLContext* context, MakeCurrent makeCurrent);
    // Forgets the owner, if it is still this context.
    static void clearOwner(QOpenGLContext* context);
    static QOpenGLContext* owner();

    // Makes the owner's context current when another one is; false when
    // there is no owner to make current.
    static bool makeOwnerCurrent();

    // True in builds that check the context at every entry-point lookup.
    static bool checking();
    // The check itself: with an owner registered and another context (or
    // none) current, reports caller to the mismatch handler. The default
    // handler logs the caller and aborts, so that a test run fails there.
    static void check(const char* caller);
    static void setMismatchHandler(MismatchHandler handler);
};

// Makes the program's GL context current for the scope's work. Scopes nest;
// a scope opened where the context is current already costs a comparison.
class GlContextScope
{
public:
    GlContextScope() { GlContext::makeOwnerCurrent(); }
    GlContextScope(const GlContextScope&) = delete;
    GlContextScope& operator=(const GlContextScope&) = delete;
};
