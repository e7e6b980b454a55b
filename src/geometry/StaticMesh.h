#pragma once

#include "Mesh.h"

// A model placed once by a matrix: the garage's pieces.
class StaticMesh : public Mesh
{
public:
    StaticMesh();
    ~StaticMesh() override;

    // Textures go to the permanent cache.
    bool load(const QString& path, const Matrix& where);
    void unload() override;
    bool exportObj() override { return false; }
    void draw(bool hidden, int pass, Material* material, ShaderProgram* shader) override;
    bool reload() override;

private:
    void release();
};
