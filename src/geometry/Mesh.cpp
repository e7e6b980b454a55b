#include "Mesh.h"

#include "GlFunctions.h"
#include "IndexBuffer.h"
#include "Material.h"
#include "MaterialLoader.h"
#include "Maths.h"
#include "MatrixStack.h"
#include "MeshGeometry.h"
#include "ShaderLoader.h"
#include "VertexBuffer.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

namespace {

Matrix product(Matrix left, const Matrix& right)
{
    multiplyMatrix(left, right);
    return left;
}

// The upper-left 3 x 3 of a 4 x 4, both in GL's column order.
std::array<float, 9> upperLeft(const Matrix& m)
{
    return {m[0], m[1], m[2], m[4], m[5], m[6], m[8], m[9], m[10]};
}

// The material of a group in the lighting mode in use; the lit one when the
// pair is shorter than the mode asks.
Material* materialInMode(const GroupMaterials& group)
{
    const MaterialLoader* loader = MaterialLoader::instance();
    const int mode = loader ? loader->lightingMode : 0;
    if (mode >= 0 && mode < group.materials.size())
        return group.materials[mode];
    return group.materials.isEmpty() ? nullptr : group.materials.first();
}

void unbindMaterialTextures(QOpenGLFunctions_3_2_Core* gl, const Material& material)
{
    const int units = int(material.textures.size());
    for (int unit = 0; unit < units; ++unit) {
        gl->glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        gl->glBindTexture(GL_TEXTURE_2D, 0);
    }
}

} // namespace

Mesh::Mesh(Mesh* parentMesh)
    : parent(parentMesh), modelViewProj(identityMatrix()), modelView(identityMatrix()),
      model(identityMatrix())
{
}

Mesh::~Mesh()
{
    deleteGeometries();
}

void Mesh::deleteGeometries()
{
    qDeleteAll(geometries);
    geometries.clear();
}

void Mesh::setMatrixUniforms(ShaderProgram* program, const Matrix& M, bool depthPass)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    const MatrixStack* stack = MatrixStack::instance();
    if (!gl || !stack || !program)
        return;
    // The shadow pass sees the scene from the light and needs no bias.
    modelView = product(depthPass ? stack->depthView : stack->view, M);
    modelViewProj = product(depthPass ? stack->depthProjection : stack->projection, modelView);
    const Matrix depthBias =
        depthPass ? identityMatrix()
                  : product(stack->depthBias,
                            product(product(stack->depthProjection, stack->depthView), M));
    const std::array<float, 9> modelView3 = upperLeft(modelView);

    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("ModelViewProj")), 1, GL_FALSE,
                           modelViewProj.data());
    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("ModelView")), 1, GL_FALSE,
                           modelView.data());
    gl->glUniformMatrix3fv(program->uniformLocation(QStringLiteral("ModelView3")), 1, GL_FALSE,
                           modelView3.data());
    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("Model")), 1, GL_FALSE,
                           M.data());
    gl->glUniformMatrix3fv(program->uniformLocation(QStringLiteral("NormalMatrix")), 1, GL_FALSE,
                           stack->normalMatrix.data());
    gl->glUniformMatrix4fv(program->uniformLocation(QStringLiteral("DepthBias")), 1, GL_FALSE,
                           depthBias.data());
}

void Mesh::drawVisual(const Matrix& M, Material* material, ShaderProgram* shader)
{
    if (!visual)
        return;
    for (const RenderSet* set : visual->renderSets)
        drawRenderSet(*set, M, material, shader);
}

void Mesh::drawRenderSet(const RenderSet& set, const Matrix& M, Material* material,
                         ShaderProgram* shader, GroupDrawSteps* steps)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    for (const RenderGeometry* geometry : set.geometries) {
        if (geometry->vertexBuffer)
            geometry->vertexBuffer->bind();
        if (geometry->indexBuffer->buffer)
            gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, geometry->indexBuffer->buffer->name);

        for (const GroupMaterials* group : geometry->groups) {
            Material* inUse = materialInMode(*group);
            if (!inUse)
                continue;
            if (material) {
                // The stand-in takes the group's culling and name, so
                // wireframe and depth follow each group's sidedness.
                material->doubleSided = inUse->doubleSided;
                material->name = inUse->name;
                inUse = material;
            }
            ShaderProgram* program = shader ? shader : inUse->shader;
            if (steps)
                steps->beforeApply(*inUse);
            inUse->apply();
            if (steps)
                steps->afterApply(*inUse);
            setMatrixUniforms(program, M, steps && steps->depthPass);
            if (geometry->drawable(group->groupIndex))
                geometry->indexBuffer->drawGroup(*geometry->indexBuffer->groups[group->groupIndex]);
            if (steps)
                steps->afterDraw(*inUse);

            gl->glDisable(GL_BLEND);
            gl->glDisable(GL_CULL_FACE);
            unbindMaterialTextures(gl, *inUse);
            if (inUse->shader && inUse->shader->program)
                inUse->shader->program->release();
            gl->glActiveTexture(GL_TEXTURE0);
            gl->glBindTexture(GL_TEXTURE_2D, 0);
        }

        gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
        if (geometry->vertexBuffer)
            geometry->vertexBuffer->unbind();
    }
}
