#include "LineBuffer.h"

#include "GlFunctions.h"
#include "Maths.h"
#include "MatrixStack.h"
#include "ShaderLoader.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

namespace {
constexpr int stride = LineBuffer::floatsPerVertex * int(sizeof(float));
} // namespace

void createColouredVertexArrays(unsigned int& vbo, unsigned int& vao)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    gl->glGenBuffers(1, &vbo);
    gl->glGenVertexArrays(1, &vao);
    gl->glBindVertexArray(vao);
    gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
    gl->glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, stride, nullptr);
    gl->glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, stride,
                              reinterpret_cast<const void*>(3 * sizeof(float)));
    gl->glEnableVertexAttribArray(0);
}

void drawColouredVertices(ShaderProgram* program, unsigned int vao, const Matrix& mvp,
                          unsigned int mode, int count)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    program->program->bind();
    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("ModelViewProj")), 1, GL_FALSE,
                           mvp.data());
    gl->glBindVertexArray(vao);
    gl->glEnableVertexAttribArray(0);
    gl->glEnableVertexAttribArray(1);
    gl->glDrawArrays(mode, 0, count);
    program->program->release();
    gl->glDisableVertexAttribArray(0);
    gl->glDisableVertexAttribArray(1);
    gl->glBindVertexArray(0);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void releaseColouredVertexArrays(unsigned int& vbo, unsigned int& vao)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (gl && vbo)
        gl->glDeleteBuffers(1, &vbo);
    if (gl && vao)
        gl->glDeleteVertexArrays(1, &vao);
    vbo = 0;
    vao = 0;
}

void LineBuffer::init()
{
    if (ShaderLoader* shaders = ShaderLoader::instance())
        program = shaders->lineProgram();
    createColouredVertexArrays(vbo, vao);
    // Room for one vertex until the first lines come.
    glFunctions()->glBufferData(GL_ARRAY_BUFFER, stride, nullptr, GL_DYNAMIC_DRAW);
    glFunctions()->glBindVertexArray(0);
    glFunctions()->glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void LineBuffer::addLine(const Vector3& from, const Vector3& to, const QColor& colour)
{
    for (const Vector3& point : {from, to})
        vertices << point[0] << point[1] << point[2] << float(colour.redF())
                 << float(colour.greenF()) << float(colour.blueF());
}

void LineBuffer::clear()
{
    vertices.clear();
}

void LineBuffer::draw()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const MatrixStack* stack = MatrixStack::instance();
    if (vertices.isEmpty() || !gl || !program || !stack || !vbo)
        return;
    gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
    gl->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(float)),
                     vertices.constData(), GL_DYNAMIC_DRAW);
    drawColouredVertices(program, vao, matrixProduct(stack->projection, stack->view), GL_LINES,
                         int(vertices.size() / floatsPerVertex));
}

void LineBuffer::release()
{
    releaseColouredVertexArrays(vbo, vao);
    vertices.clear();
}
