#include "MarkerSphere.h"

#include "GlFunctions.h"
#include "LineBuffer.h"
#include "Maths.h"
#include "MatrixStack.h"
#include "ShaderLoader.h"

#include <QOpenGLFunctions_3_2_Core>

#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;

Vector3 spherePoint(double longitude, double latitude)
{
    const double r = MarkerSphere::Radius;
    return {float(r * std::cos(latitude) * std::sin(longitude)), float(r * std::sin(latitude)),
            float(r * std::cos(latitude) * std::cos(longitude))};
}

} // namespace

void MarkerSphere::init(const QColor& colour)
{
    if (ShaderLoader* shaders = ShaderLoader::instance())
        program = shaders->lineProgram();
    model = identityMatrix();

    const float rgb[] = {float(colour.redF()), float(colour.greenF()), float(colour.blueF())};
    auto add = [&](const Vector3& p) {
        vertices << p[0] << p[1] << p[2] << rgb[0] << rgb[1] << rgb[2];
    };
    vertices.clear();
    vertices.reserve(Steps * Steps * 6 * LineBuffer::floatsPerVertex);
    for (int i = 0; i < Steps; ++i) {
        const double a = 2 * pi * i / Steps;
        const double a2 = 2 * pi * (i + 1) / Steps;
        for (int j = -Steps / 2; j < Steps / 2; ++j) {
            const double b = pi * j / Steps;
            const double b2 = pi * (j + 1) / Steps;
            add(spherePoint(a, b));
            add(spherePoint(a2, b));
            add(spherePoint(a2, b2));
            add(spherePoint(a, b));
            add(spherePoint(a2, b2));
            add(spherePoint(a, b2));
        }
    }

    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    createColouredVertexArrays(vbo, vao);
    gl->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(vertices.size() * sizeof(float)),
                     vertices.constData(), GL_STATIC_DRAW);
    gl->glBindVertexArray(0);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void MarkerSphere::setPosition(const Vector3& position)
{
    model = translationMatrix(position);
}

void MarkerSphere::draw()
{
    const MatrixStack* stack = MatrixStack::instance();
    if (!program || !stack || !vao)
        return;
    const Matrix mvp = matrixProduct(matrixProduct(stack->projection, stack->view), model);
    drawColouredVertices(program, vao, mvp, GL_TRIANGLES,
                         int(vertices.size() / LineBuffer::floatsPerVertex));
}

void MarkerSphere::release()
{
    releaseColouredVertexArrays(vbo, vao);
    vertices.clear();
}
