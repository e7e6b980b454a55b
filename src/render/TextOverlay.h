#pragma once

#include "VertexBuffer.h"

#include <QFont>
#include <QImage>
#include <QString>

class ShaderProgram;

// What the overlay reports: the vehicle block and the frame statistics.
struct OverlayFacts
{
    bool showTankInfo = true;
    bool showRenderInfo = false;
    QString nation;
    QString name;
    QString category;
    QString tier;
    int hitPoints = 0;
    float fpsAverage = 0;
    float frameTimeMs = 0;
    int tankTriangles = 0;
    // The garage in use, 0 while the backdrop is hidden.
    int sceneTriangles = 0;
    QFont font;
};

// The text in the top left corner of the viewport: painted by QPainter into
// a 512 x 512 image and drawn through one texture, which is uploaded only
// when the image changed.
class TextOverlay
{
public:
    static constexpr int Side = 512;

    TextOverlay() = default;
    ~TextOverlay() = default;
    TextOverlay(const TextOverlay&) = delete;
    TextOverlay& operator=(const TextOverlay&) = delete;

    // Needs a current context and the Font program.
    void init();
    // Frees the texture and the quad; needs the context current.
    void release();

    // Repaints the image from facts when it is dirty (each call while the
    // statistics are shown). False when neither block is shown: nothing is
    // to be drawn then. Needs no GL.
    bool paint(const OverlayFacts& facts);
    // paint, then draw when there is something to show.
    void render(const OverlayFacts& facts, int width, int height);
    // Draws the image at the top left of a width x height target.
    void draw(int width, int height);

    ShaderProgram* program = nullptr;
    unsigned int texture = 0;
    QImage image;
    bool dirty = true;
    VertexBuffer quad;
    // Texture uploads since init.
    int uploads = 0;

private:
    void upload();
};
