#pragma once

#include <QList>

// One attribute of an interleaved vertex layout: a kind from the table
// below and the shader's generic attribute slot.
struct VertexAttribute
{
    enum Kind
    {
        Float1 = 0,
        Float2 = 1,
        Float3 = 2,
        Float4 = 3,
        UnsignedByte1 = 4,
        UnsignedInt2101010 = 5,
        Int2101010 = 6
    };
    qint32 kind = Float3;
    qint32 location = 0;

    int components() const;
    // GL type enum of the kind.
    unsigned int glType() const;
    int bytes() const;
};

// Attribute slots as the shaders declare them.
enum AttributeSlot
{
    SlotPosition = 0,  // iVertPos
    SlotTexCoord0 = 1, // iTexCoord0
    SlotTexCoord1 = 2, // iTexCoord1
    SlotNormal = 4,    // iNormal
    SlotBinormal = 5,  // iBinormal
    SlotTangent = 6,   // iTangent
    SlotGeneric0 = 7   // iGeneric0
};

// A GL vertex buffer with its vertex array object. The attribute arrays are
// recorded disabled in the VAO; bind() enables them each time.
class VertexBuffer
{
public:
    VertexBuffer() = default;
    ~VertexBuffer();
    VertexBuffer(const VertexBuffer&) = delete;
    VertexBuffer& operator=(const VertexBuffer&) = delete;

    // Takes the attributes (owned from then on) and computes the stride.
    void setAttributes(const QList<VertexAttribute*>& list);
    // Makes the GL objects and uploads data (null reserves the space).
    void create(quint32 count, const void* data);
    void bind();
    void unbind();
    // Deletes the GL objects; the attribute list stays. Safe to call twice.
    void release();

    quint32 vbo = 0;
    quint32 vao = 0;
    quint32 stride = 0;
    quint32 vertexCount = 0;
    quint32 byteSize = 0;
    QList<VertexAttribute*> attributes;
};
