#pragma once

class QOpenGLFunctions_3_2_Core;

// The 3.2 core entry points of the context current on this thread, or null
// when no context is current or it cannot give them. Every GL object of the
// program is made and freed through these with the viewport's context
// current; tests make their own off-screen context current instead.
QOpenGLFunctions_3_2_Core* glFunctions();
