#include "GridMesh.h"

#include "GlErrors.h"
#include "GlFunctions.h"
#include "Log.h"
#include "Maths.h"
#include "MatrixStack.h"
#include "ShaderLoader.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

#include <algorithm>

namespace {

struct Colour
{
    float r, g, b;
};

constexpr Colour middleAlongZ{1.0f, 0.2f, 0.2f};
constexpr Colour middleAlongX{0.3f, 0.3f, 1.0f};
constexpr Colour plainLine{0.1f, 0.1f, 0.1f};
constexpr int floatsPerVertex = 6;
// Just above the floor, so that a model standing on it doesn't hide it.
constexpr float gridHeight = 0.01f;

float* writeVertex(float* out, float x, float z, const Colour& colour)
{
    *out++ = x;
    *out++ = 0.0f;
    *out++ = z;
    *out++ = colour.r;
    *out++ = colour.g;
    *out++ = colour.b;
    return out;
}

} // namespace

void GridMesh::create(int size)
{
    Log::log(QStringLiteral("Creating grid mesh."), Log::Info);
    checkGlErrors(QStringLiteral("Gridmesh A"));
    size = std::max(size, 0);
    QOpenGLFunctions_3_2_Core* gl = glFunctions();

    buffer.setAttributes({new VertexAttribute{VertexAttribute::Float3, SlotPosition},
                          new VertexAttribute{VertexAttribute::Float3, SlotGeneric0}});
    if (ShaderLoader* shaders = ShaderLoader::instance())
        program = shaders->program(Grid);
    buffer.create(quint32(size + 1) * 4, nullptr);

    gl->glBindBuffer(GL_ARRAY_BUFFER, buffer.vbo);
    if (auto* out = static_cast<float*>(gl->glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY))) {
        writeVertices(out, size);
        gl->glUnmapBuffer(GL_ARRAY_BUFFER);
    }
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    checkGlErrors(QStringLiteral("Gridmesh"));
    offset = {-float(size) / 2, gridHeight, -float(size) / 2};
}

void GridMesh::writeVertices(float* out, int size) const
{
    const float middle = float(size) * 0.5f;
    const float extent = float(size);
    for (int i = 0; i <= size; ++i) {
        const float at = float(i);
        const bool isMiddle = at == middle;
        const Colour& a = isMiddle ? middleAlongZ : plainLine;
        const Colour& b = isMiddle ? middleAlongX : plainLine;
        out = writeVertex(out, at, 0, a);
        out = writeVertex(out, at, extent, a);
        out = writeVertex(out, 0, at, b);
        out = writeVertex(out, extent, at, b);
    }
    static_assert(floatsPerVertex * sizeof(float) == 24, "the grid's stride is 24 bytes");
}

void GridMesh::draw()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const MatrixStack* stack = MatrixStack::instance();
    if (!gl || !program || !stack || !buffer.vao)
        return;
    program->program->bind();
    buffer.bind();
    const Matrix mvp =
        matrixProduct(matrixProduct(stack->projection, stack->view), translationMatrix(offset));
    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("mvp")), 1, GL_FALSE,
                           mvp.data());
    gl->glDrawArrays(GL_LINES, 0, GLsizei(buffer.vertexCount));
    buffer.unbind();
    program->program->release();
}

void GridMesh::release()
{
    buffer.release();
}
