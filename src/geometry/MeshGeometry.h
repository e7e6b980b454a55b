#pragma once

#include "Maths.h"

#include <QString>
#include <QVector>

#include <array>

// The CPU copy of one geometry of a model: what the OBJ export, the UV tool
// the collision code and the glTF export read. Positions, normals,
// tangents and binormals are mirrored on x; triangles have their winding
// reversed. Filled by BufferManager::createVertexBuffer and IndexBuffer.
struct MeshGeometry
{
    QString name;
    QVector<Vector3> boneWeights;               // "xyznuviiiwwtb" only
    QVector<std::array<quint8, 3>> boneIndices; // "xyznuviiiwwtb" only
    QVector<Vector3> positions;
    QVector<Vector3> normals;
    QVector<Vector2> uvs;
    QVector<Vector3> tangents;  // the formats with a tangent frame only
    QVector<Vector3> binormals; // the same
    QVector<Vector2> uv2s;      // "xyznuvtb" with a uv2 stream
    QVector<quint16> indices16; // always, low 16 bits of each index
    QVector<quint32> indices32; // 32-bit index chunks only
    quint32 triangleCount = 0;
};
