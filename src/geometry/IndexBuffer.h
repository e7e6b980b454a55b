#pragma once

#include "ReadFailure.h"

#include <QByteArray>
#include <QList>

struct MeshGeometry;

// One draw range of an index chunk, as the file stores it.
struct PrimitiveGroup
{
    qint32 startIndex = 0;
    qint32 primitiveCount = 0;
    qint32 startVertex = 0;
    qint32 vertexCount = 0;
};

// The element buffer of one geometry and its primitive groups.
class IndexBuffer
{
public:
    struct GlBuffer
    {
        quint32 name = 0;
        quint32 byteSize = 0;
    };

    // Decodes the index chunk into geometry (winding reversed) and builds
    // the GL element buffer; needs a current context. A chunk too short for
    // its own counts keeps what fits, with a log line and the closing box.
    IndexBuffer(const QByteArray& chunkBytes, MeshGeometry* geometry);
    ~IndexBuffer();
    IndexBuffer(const IndexBuffer&) = delete;
    IndexBuffer& operator=(const IndexBuffer&) = delete;

    // Frees the GL buffer and the groups; safe to call twice.
    void release();
    // One glDrawElements of the group's triangles.
    void drawGroup(const PrimitiveGroup& group) const;
    // Bytes per index in the GL buffer: 4 or 2.
    int indexWidth() const { return is32Bit ? 4 : 2; }

    GlBuffer* buffer = nullptr;
    QList<PrimitiveGroup*> groups;
    quint32 vertexCount = 0;
    bool is32Bit = false;
};

// The CPU half of an index chunk, with no GL: what IndexBuffer stores in the
// geometry and in its group list. Every count is checked against the bytes
// present; false (with a log line) means the chunk was cut short or its
// header is missing, and what fits is kept; failure then holds the message
// of the first read that came up short.
struct DecodedIndices
{
    bool is32Bit = false;
    ReadFailure failure;
    // The indices in the chunk's own width, winding reversed, ready for GL.
    QByteArray glBytes;
    QList<PrimitiveGroup> groups;
};
bool decodeIndexChunk(const QByteArray& chunkBytes, MeshGeometry& geometry, DecodedIndices& out);
