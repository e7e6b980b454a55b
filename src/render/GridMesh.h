#pragma once

#include "Maths.h"
#include "VertexBuffer.h"

class ShaderProgram;

// The floor grid: size x size cells of 1 unit, centred on the origin, a red
// middle line along z and a blue one along x, the rest dark grey.
class GridMesh
{
public:
    GridMesh() = default;
    GridMesh(const GridMesh&) = delete;
    GridMesh& operator=(const GridMesh&) = delete;

    // Needs a current context and the Grid program.
    void create(int size);
    void draw();
    // Frees the buffer; needs the context current.
    void release();

    VertexBuffer buffer;
    Vector3 offset{0, 0, 0};
    ShaderProgram* program = nullptr;

private:
    void writeVertices(float* out, int size) const;
};
