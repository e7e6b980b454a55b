#pragma once

#include "Maths.h"

#include <QColor>
#include <QVector>

class ShaderProgram;

// A small sphere in one colour at a point: the shell's hit in armour mode.
class MarkerSphere
{
public:
    static constexpr int Steps = 22;
    static constexpr float Radius = 0.04f;

    MarkerSphere() = default;
    MarkerSphere(const MarkerSphere&) = delete;
    MarkerSphere& operator=(const MarkerSphere&) = delete;

    // Needs a current context and the line program.
    void init(const QColor& colour);
    void setPosition(const Vector3& position);
    void draw();
    // Frees the buffer and the array; needs the context current.
    void release();

    ShaderProgram* program = nullptr;
    unsigned int vbo = 0;
    unsigned int vao = 0;
    // Position and colour, six floats a vertex, two triangles a patch.
    QVector<float> vertices;
    Matrix model{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};
