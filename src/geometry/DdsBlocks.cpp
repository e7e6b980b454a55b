#include "DdsBlocks.h"

#include <algorithm>
#include <cmath>

namespace {
struct Rgb
{
    int r, g, b;
};

// The end points are widened by shifting alone: the low bits stay zero, which
// keeps the palette identical to what the game's own decoder produces.
Rgb expand565(int c)
{
    return {(c >> 11) << 3, ((c >> 5) & 63) << 2, (c & 31) << 3};
}

int readWord(const uchar* p)
{
    return p[0] | (p[1] << 8);
}
} // namespace

void decodeColourBlock(const uchar* block, bool threeColourMode, uchar* tile, int channels)
{
    const int c0 = readWord(block);
    const int c1 = readWord(block + 2);
    Rgb palette[4];
    palette[0] = expand565(c0);
    palette[1] = expand565(c1);
    const Rgb& a = palette[0];
    const Rgb& b = palette[1];
    if (c0 > c1 || !threeColourMode) {
        palette[2] = {(2 * a.r + b.r + 1) / 3, (2 * a.g + b.g + 1) / 3, (2 * a.b + b.b + 1) / 3};
        palette[3] = {(a.r + 2 * b.r + 1) / 3, (a.g + 2 * b.g + 1) / 3, (a.b + 2 * b.b + 1) / 3};
    } else {
        palette[2] = {(a.r + b.r + 1) / 2, (a.g + b.g + 1) / 2, (a.b + b.b + 1) / 2};
        palette[3] = {0, 0, 0};
    }

    for (int y = 0; y < 4; ++y) {
        const int row = block[4 + y];
        for (int x = 0; x < 4; ++x) {
            const Rgb& colour = palette[(row >> (2 * x)) & 3];
            uchar* pixel = tile + (y * 4 + x) * channels;
            pixel[0] = uchar(colour.r);
            pixel[1] = uchar(colour.g);
            pixel[2] = uchar(colour.b);
        }
    }
}

void decodeExplicitAlphaBlock(const uchar* block, uchar* tile, int channels, int channel)
{
    for (int y = 0; y < 4; ++y) {
        const int row = readWord(block + 2 * y);
        for (int x = 0; x < 4; ++x)
            tile[(y * 4 + x) * channels + channel] = uchar(((row >> (4 * x)) & 15) * 17);
    }
}

void decodeAlphaBlock(const uchar* block, uchar* tile, int channels, int channel)
{
    const int a0 = block[0];
    const int a1 = block[1];
    uchar palette[8];
    palette[0] = uchar(a0);
    palette[1] = uchar(a1);
    if (a0 > a1) {
        for (int i = 2; i < 8; ++i)
            palette[i] = uchar(((8 - i) * a0 + (i - 1) * a1) / 7);
    } else {
        for (int i = 2; i < 6; ++i)
            palette[i] = uchar(((6 - i) * a0 + (i - 1) * a1) / 5);
        palette[6] = 0;
        palette[7] = 255;
    }

    quint64 indices = 0;
    for (int i = 0; i < 6; ++i)
        indices |= quint64(block[2 + i]) << (8 * i);
    for (int i = 0; i < 16; ++i)
        tile[i * channels + channel] = palette[(indices >> (3 * i)) & 7];
}

void decodeSignedAlphaBlock(const uchar* block, uchar* tile, int channels, int channel)
{
    const int a0 = std::max(-127, int(qint8(block[0])));
    const int a1 = std::max(-127, int(qint8(block[1])));
    float palette[8];
    palette[0] = float(a0);
    palette[1] = float(a1);
    if (a0 > a1) {
        for (int i = 2; i < 8; ++i)
            palette[i] = float((8 - i) * a0 + (i - 1) * a1) / 7.0f;
    } else {
        for (int i = 2; i < 6; ++i)
            palette[i] = float((6 - i) * a0 + (i - 1) * a1) / 5.0f;
        palette[6] = -127.0f;
        palette[7] = 127.0f;
    }
    uchar bytes[8];
    for (int i = 0; i < 8; ++i)
        bytes[i] = uchar(std::lround((palette[i] + 127.0f) * (255.0f / 254.0f)));

    quint64 indices = 0;
    for (int i = 0; i < 6; ++i)
        indices |= quint64(block[2 + i]) << (8 * i);
    for (int i = 0; i < 16; ++i)
        tile[i * channels + channel] = bytes[(indices >> (3 * i)) & 7];
}
