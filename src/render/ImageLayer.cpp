#include "ImageLayer.h"

#include "GlFunctions.h"
#include "ShaderLoader.h"

#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>

void ImageLayer::init()
{
    if (ShaderLoader* shaders = ShaderLoader::instance())
        program = shaders->program(Font);
    // Two triangles over the whole of clip space.
    static const float corners[] = {-1, -1, 0, 1, -1, 0, -1, 1, 0, -1, 1, 0, 1, -1, 0, 1, 1, 0};
    quad.setAttributes({new VertexAttribute{VertexAttribute::Float3, SlotPosition}});
    quad.create(6, corners);
    dirty = !picture.isNull();
}

void ImageLayer::release()
{
    if (texture) {
        if (QOpenGLFunctions_3_2_Core* gl = glFunctions())
            gl->glDeleteTextures(1, &texture);
        texture = 0;
    }
    quad.release();
    program = nullptr;
}

void ImageLayer::setImage(const QImage& image)
{
    picture = image;
    dirty = !picture.isNull();
}

void ImageLayer::draw(int width, int height)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || !program || picture.isNull())
        return;
    gl->glActiveTexture(GL_TEXTURE0);
    if (!texture) {
        gl->glGenTextures(1, &texture);
        dirty = true;
    }
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    if (dirty)
        upload();
    gl->glDisable(GL_DEPTH_TEST);
    gl->glEnable(GL_BLEND);
    // The Font program premultiplies the image's straight alpha.
    gl->glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl->glViewport(0, 0, width, height);
    program->program->bind();
    program->program->setUniformValue("diffuseMap0", 0);
    quad.bind();
    gl->glDrawArrays(GL_TRIANGLES, 0, 6);
    quad.unbind();
    program->program->release();
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    gl->glDisable(GL_BLEND);
    gl->glEnable(GL_DEPTH_TEST);
}

void ImageLayer::upload()
{
    // GL wants RGBA bytes with the bottom row first.
    const QImage pixels = picture.convertToFormat(QImage::Format_RGBA8888).mirrored();
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, pixels.width(), pixels.height(), 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, pixels.constBits());
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    dirty = false;
}
