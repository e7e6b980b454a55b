#pragma once

#include "Maths.h"
#include "Visual.h"

#include <QString>
#include <QVector>

class Material;
class PrimitiveParser;
class ShaderProgram;

// What a subclass adds to the shared draw loop around each group: before and
// after Material::apply, and after the draw call. depthPass sends the
// shadow pass's matrices instead of the colour pass's.
struct GroupDrawSteps
{
    virtual ~GroupDrawSteps() = default;
    virtual void beforeApply(Material&) {}
    virtual void afterApply(Material&) {}
    virtual void afterDraw(Material&) {}
    bool depthPass = false;
};

// The abstract drawable model: matrices, path and the CPU copies of its
// geometry.
class Mesh
{
public:
    explicit Mesh(Mesh* parent = nullptr);
    virtual ~Mesh();
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    virtual bool isLoaded() { return false; }
    virtual void update() {}
    virtual void unload() = 0;
    virtual bool exportObj() = 0;
    virtual void draw(bool hidden, int pass, Material* material, ShaderProgram* shader) = 0;
    virtual bool reload() = 0;

    Mesh* parent;
    Vector3 offset{0, 0, 0};
    PrimitiveParser* parser = nullptr;
    Matrix modelViewProj;
    Matrix modelView;
    Matrix model;
    Visual* visual = nullptr;
    QString path;
    QVector<MeshGeometry*> geometries;
    QVector<UvGroup> uvGroups;
    // The chain's matrix the first render set was placed with at the last
    // draw, hidden or not; identity before any draw.
    Matrix placement = identityMatrix();

protected:
    void deleteGeometries();
    // The draw loop every mesh shares: render sets, geometries, groups, with
    // M as the placement of the whole visual.
    void drawVisual(const Matrix& M, Material* material, ShaderProgram* shader);
    // The same loop for one render set, with a subclass's own steps.
    void drawRenderSet(const RenderSet& set, const Matrix& M, Material* material,
                       ShaderProgram* shader, GroupDrawSteps* steps = nullptr);
    // The matrices of the colour pass (or of the depth pass) for placement M,
    // sent through program.
    void setMatrixUniforms(ShaderProgram* program, const Matrix& M, bool depthPass = false);
};
