#pragma once

#include "Maths.h"

#include <QColor>
#include <QVector>

class ShaderProgram;

// Coloured lines in world space, drawn with the line program: the shell's
// path in armour mode. The list is uploaded again each frame it has lines.
class LineBuffer
{
public:
    LineBuffer() = default;
    LineBuffer(const LineBuffer&) = delete;
    LineBuffer& operator=(const LineBuffer&) = delete;

    // Needs a current context and the line program.
    void init();
    void addLine(const Vector3& from, const Vector3& to, const QColor& colour);
    void clear();
    void draw();
    // Frees the buffer and the array; needs the context current.
    void release();
    int lineCount() const { return int(vertices.size() / (2 * floatsPerVertex)); }

    static constexpr int floatsPerVertex = 6;

    ShaderProgram* program = nullptr;
    unsigned int vbo = 0;
    unsigned int vao = 0;
    // Position and colour, six floats a vertex.
    QVector<float> vertices;
};

// The buffer and vertex array of position + colour vertices (stride 24) at
// slots 0 and 1, both left bound; only slot 0 is enabled.
void createColouredVertexArrays(unsigned int& vbo, unsigned int& vao);
// Draws count vertices of vao through program with "ModelViewProj" = mvp,
// and leaves no array, buffer or program bound.
void drawColouredVertices(ShaderProgram* program, unsigned int vao, const Matrix& mvp,
                          unsigned int mode, int count);
void releaseColouredVertexArrays(unsigned int& vbo, unsigned int& vao);
