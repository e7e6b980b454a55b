#pragma once

#include "VertexBuffer.h"

#include <QImage>

class ShaderProgram;

// A picture laid over the whole frame, under the text overlay: set on the
// GUI thread with no GL, uploaded into one texture by the next frame that
// draws it, stretched over the viewport. Transparent pixels leave the
// scene as it is.
class ImageLayer
{
public:
    ImageLayer() = default;
    ImageLayer(const ImageLayer&) = delete;
    ImageLayer& operator=(const ImageLayer&) = delete;

    // Needs a current context and the Font program.
    void init();
    // Frees the texture and the quad; needs the context current.
    void release();

    // A null image hides the layer. Needs no GL.
    void setImage(const QImage& picture);
    const QImage& image() const { return picture; }
    // Draws the picture over a width x height target, if there is one.
    void draw(int width, int height);

private:
    void upload();

    ShaderProgram* program = nullptr;
    unsigned int texture = 0;
    VertexBuffer quad;
    QImage picture;
    bool dirty = false;
};
