#include "StaticMesh.h"

#include "PrimitiveParser.h"

StaticMesh::StaticMesh() : Mesh(nullptr)
{
    parser = new PrimitiveParser;
    visual = new Visual;
}

StaticMesh::~StaticMesh()
{
    // The visual frees GL objects; it goes while the geometries it filled
    // still exist, as in unload().
    delete visual;
    delete parser;
}

bool StaticMesh::load(const QString& modelPath, const Matrix& where)
{
    path = modelPath;
    if (!parser->load(path))
        return false;
    if (!visual->load(parser, path, geometries, uvGroups, false, false))
        return false;
    model = where;
    return true;
}

void StaticMesh::release()
{
    deleteGeometries();
    uvGroups.clear();
    parser->clear();
    visual->unload();
}

void StaticMesh::unload()
{
    release();
    offset = {0, 0, 0};
}

bool StaticMesh::reload()
{
    release();
    return load(path, model);
}

void StaticMesh::draw(bool hidden, int pass, Material* material, ShaderProgram* shader)
{
    // A backdrop is always drawn as in the colour pass.
    (void)hidden;
    (void)pass;
    drawVisual(model, material, shader);
}
