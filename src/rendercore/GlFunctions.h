#pragma once

class QOpenGLFunctions_3_2_Core;

// The 3.2 core entry points of the context current on this thread, or null
// when no context is current or it cannot give them. Every GL object of the
// program is made, used and freed through these with the program's context
// current (see GlContext); in checking builds a lookup with another context
// current stops the program and names the caller, which the compiler fills
// in.
QOpenGLFunctions_3_2_Core* glFunctions(const char* caller = __builtin_FUNCTION());
