#include "VertexBuffer.h"

#include "GlFunctions.h"
#include "Log.h"

#include <QOpenGLFunctions_3_2_Core>

namespace {
struct KindInfo
{
    int components;
    unsigned int glType;
    int bytes;
};

const KindInfo kindTable[] = {
    {1, GL_FLOAT, 4},
    {2, GL_FLOAT, 8},
    {3, GL_FLOAT, 12},
    {4, GL_FLOAT, 16},
    {1, GL_UNSIGNED_BYTE, 1},
    {4, GL_UNSIGNED_INT_2_10_10_10_REV, 4},
    {4, GL_INT_2_10_10_10_REV, 4},
};

// A kind outside the table counts as nothing: no bytes, no components.
const KindInfo* kindInfo(qint32 kind)
{
    if (kind < 0 || kind >= qint32(std::size(kindTable)))
        return nullptr;
    return &kindTable[kind];
}
} // namespace

int VertexAttribute::components() const
{
    const KindInfo* info = kindInfo(kind);
    return info ? info->components : 0;
}

unsigned int VertexAttribute::glType() const
{
    const KindInfo* info = kindInfo(kind);
    return info ? info->glType : GL_FLOAT;
}

int VertexAttribute::bytes() const
{
    const KindInfo* info = kindInfo(kind);
    return info ? info->bytes : 0;
}

VertexBuffer::~VertexBuffer()
{
    release();
    qDeleteAll(attributes);
}

void VertexBuffer::setAttributes(const QList<VertexAttribute*>& list)
{
    for (VertexAttribute* old : std::as_const(attributes)) {
        if (!list.contains(old))
            delete old;
    }
    attributes = list;
    stride = 0;
    for (const VertexAttribute* attribute : attributes)
        stride += quint32(attribute->bytes());
}

void VertexBuffer::create(quint32 count, const void* data)
{
    if (attributes.isEmpty())
        Log::log(
            QStringLiteral("Internal engine problem: No vertex attribute set for vertex buffer"),
            Log::Error);
    const quint64 bytes = quint64(stride) * count;
    if (bytes > 0x7FFFFFFFu) {
        Log::log(QStringLiteral("Vertex buffer of %1 bytes refused").arg(bytes), Log::Error);
        count = 0;
    }
    vertexCount = count;
    byteSize = stride * count;

    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    gl->glGenBuffers(1, &vbo);
    gl->glGenVertexArrays(1, &vao);
    gl->glBindBuffer(GL_ARRAY_BUFFER, vbo);
    gl->glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(byteSize), data, GL_STATIC_DRAW);
    bind();
    quintptr offset = 0;
    for (const VertexAttribute* attribute : std::as_const(attributes)) {
        gl->glVertexAttribPointer(GLuint(attribute->location), attribute->components(),
                                  attribute->glType(), GL_FALSE, GLsizei(stride),
                                  reinterpret_cast<const void*>(offset));
        offset += quintptr(attribute->bytes());
    }
    // The arrays stay recorded as disabled, so bind() enables them each time.
    unbind();
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void VertexBuffer::bind()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    gl->glBindVertexArray(vao);
    for (const VertexAttribute* attribute : std::as_const(attributes))
        gl->glEnableVertexAttribArray(GLuint(attribute->location));
}

void VertexBuffer::unbind()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl)
        return;
    for (const VertexAttribute* attribute : std::as_const(attributes))
        gl->glDisableVertexAttribArray(GLuint(attribute->location));
    gl->glBindVertexArray(0);
}

void VertexBuffer::release()
{
    // Without a current context the names cannot be freed (and a vertex
    // array belongs to one context only); they go with the context.
    if (QOpenGLFunctions_3_2_Core* gl = glFunctions()) {
        if (vbo)
            gl->glDeleteBuffers(1, &vbo);
        if (vao)
            gl->glDeleteVertexArrays(1, &vao);
    }
    vbo = 0;
    vao = 0;
}
