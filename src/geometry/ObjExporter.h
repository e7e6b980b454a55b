#pragma once

#include "Maths.h"

#include <QByteArray>
#include <QString>

class Mesh;
struct MeshGeometry;

// Writes the geometries of a mesh as Wavefront OBJ files, one file for each
// geometry and no material library, so that a modeller can open a part.
// Coordinates stay in the program's mirrored space; positions and normals
// are placed by the matrix given, texture v is negated.
class ObjExporter
{
public:
    // root: the folder the model's own directories stand under (the mod
    // folder).
    explicit ObjExporter(const QString& root);

    // One file per geometry of mesh, placed by placement; the directories
    // are created. Each file is written whole or not at all; the first that
    // fails stops the export with false. A mesh without geometries writes
    // nothing and succeeds.
    bool exportMesh(const Mesh& mesh, const Matrix& placement);

    // root + the model path without ".model" + "_" + index + ".obj".
    QString fileName(const QString& modelPath, int index) const;
    // The whole text of one file, with "\n" line ends.
    static QByteArray text(const MeshGeometry& geometry, const Matrix& placement);

private:
    static bool writeFile(const QString& path, const QByteArray& content);

    QString root;
};
