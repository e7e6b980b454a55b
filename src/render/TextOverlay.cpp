#include "TextOverlay.h"

#include "GlFunctions.h"
#include "ShaderLoader.h"

#include <QCoreApplication>
#include <QOpenGLFunctions_3_2_Core>
#include <QOpenGLShaderProgram>
#include <QPainter>

namespace {

constexpr int textLeft = 10;
constexpr int firstLine = 15;
constexpr int lineStep = 17;
// Where the statistics start when the vehicle block is above them.
constexpr int statisticsBelowTankInfo = 100;
// The image's distance from the top of the target.
constexpr int topMargin = 5;

QString tr(const char* text)
{
    return QCoreApplication::translate("TextOverlay", text);
}

QString statistic(float value)
{
    return QString::number(double(value), 'g', 6);
}

void paintLines(QPainter& painter, const QStringList& lines, int y)
{
    for (const QString& line : lines) {
        painter.drawText(textLeft, y, line);
        y += lineStep;
    }
}

} // namespace

void TextOverlay::init()
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    image = QImage(Side, Side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888);

    gl->glActiveTexture(GL_TEXTURE0);
    gl->glGenTextures(1, &texture);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, Side, Side, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     pixels.constBits());
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glBindTexture(GL_TEXTURE_2D, 0);

    if (ShaderLoader* shaders = ShaderLoader::instance())
        program = shaders->program(Font);

    // Two triangles over the whole of clip space; the viewport places them.
    static const float corners[] = {-1, -1, 0, 1, -1, 0, -1, 1, 0, -1, 1, 0, 1, -1, 0, 1, 1, 0};
    quad.setAttributes({new VertexAttribute{VertexAttribute::Float3, SlotPosition}});
    quad.create(6, corners);
    dirty = true;
}

void TextOverlay::release()
{
    if (texture) {
        if (QOpenGLFunctions_3_2_Core* gl = glFunctions())
            gl->glDeleteTextures(1, &texture);
        texture = 0;
    }
    quad.release();
    image = QImage();
}

bool TextOverlay::paint(const OverlayFacts& facts)
{
    if (!facts.showTankInfo && !facts.showRenderInfo)
        return false;
    // The statistics change every frame.
    if (facts.showRenderInfo)
        dirty = true;
    if (!dirty)
        return true;
    if (image.isNull())
        image = QImage(Side, Side, QImage::Format_ARGB32);

    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setBackgroundMode(Qt::TransparentMode);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.setFont(facts.font);

    int y = firstLine;
    if (facts.showTankInfo) {
        painter.setPen(Qt::white);
        paintLines(painter,
                   {tr("Nation") + QStringLiteral(": ") + facts.nation,
                    tr("Name") + QStringLiteral(": ") + facts.name,
                    tr("Category") + QStringLiteral(": ") + facts.category,
                    tr("Tier") + QStringLiteral(": ") + facts.tier,
                    tr("Hit Points") + QStringLiteral(": ") + QString::number(facts.hitPoints)},
                   y);
        y = statisticsBelowTankInfo;
    }
    if (facts.showRenderInfo) {
        painter.setPen(Qt::yellow);
        paintLines(painter,
                   {tr("Avg FPS: ") + statistic(facts.fpsAverage),
                    tr("Frame Time(ms): ") + statistic(facts.frameTimeMs),
                    tr("Tank Triangle count: ") + QString::number(facts.tankTriangles),
                    tr("Total Scene Triangle count: ") +
                        QString::number(facts.tankTriangles + facts.sceneTriangles)},
                   y);
    }
    return true;
}

void TextOverlay::render(const OverlayFacts& facts, int width, int height)
{
    if (paint(facts))
        draw(width, height);
}

void TextOverlay::draw(int width, int height)
{
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    if (!gl || !program || !texture)
        return;
    gl->glDisable(GL_DEPTH_TEST);
    gl->glEnable(GL_BLEND);
    // The Font program premultiplies the image's straight alpha.
    gl->glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, texture);
    if (dirty)
        upload();

    // The image's own pixels, 1 from the left and 5 from the top.
    gl->glViewport(1, height - Side - topMargin, Side, Side);
    program->program->bind();
    program->program->setUniformValue("diffuseMap0", 0);
    quad.bind();
    gl->glDrawArrays(GL_TRIANGLES, 0, 6);
    quad.unbind();
    program->program->release();
    gl->glBindTexture(GL_TEXTURE_2D, 0);

    gl->glViewport(0, 0, width, height);
    gl->glDisable(GL_BLEND);
    gl->glEnable(GL_DEPTH_TEST);
}

void TextOverlay::upload()
{
    if (image.size() != QSize(Side, Side))
        return;
    // GL wants RGBA bytes with the bottom row first.
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888).mirrored();
    QOpenGLFunctions_3_2_Core* gl = glFunctions();
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, Side, Side, GL_RGBA, GL_UNSIGNED_BYTE,
                        pixels.constBits());
    ++uploads;
    dirty = false;
}
