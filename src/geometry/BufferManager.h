#pragma once

#include "Singleton.h"

#include <QList>
#include <QObject>
#include <QString>

class VertexBuffer;
struct MeshGeometry;

// Owns every vertex buffer made from a model file. Created with the early
// singletons; its buffers are made and freed with the viewport's context
// current.
class BufferManager : public QObject, public Singleton<BufferManager>
{
    Q_OBJECT
public:
    explicit BufferManager(QObject* parent = nullptr);
    // Deletes what is left; GL objects only if a context is current.
    ~BufferManager() override;

    // Decodes a vertex chunk into a new GL buffer and into geometry. Always
    // returns a registered buffer; an unsupported format gives one with no
    // attributes and no vertices.
    VertexBuffer* createVertexBuffer(const QString& name, const QByteArray& chunkBytes,
                                     MeshGeometry* geometry, const QByteArray& streamBytes);
    void releaseVertexBuffer(VertexBuffer* buffer);

    struct Entry
    {
        VertexBuffer* buffer = nullptr;
        QString name;
    };
    QList<Entry> buffers;
};
