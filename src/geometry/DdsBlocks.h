#pragma once

#include <QtGlobal>

// Decoders of one 4 x 4 block of compressed texture data. Each writes a
// 16-pixel tile, row by row, `channels` bytes to a pixel; a decoder touches
// only the bytes it owns, so the tile may be filled by two of them.

// Eight bytes: two RGB565 end points and sixteen 2-bit indices. Writes
// channels 0 to 2. `threeColourMode` is true for DXT1 data, where c0 <= c1
// selects the mode with a black fourth entry.
void decodeColourBlock(const uchar* block, bool threeColourMode, uchar* tile, int channels);

// Eight bytes of explicit 4-bit alpha, one 16-bit word per row, into one channel.
void decodeExplicitAlphaBlock(const uchar* block, uchar* tile, int channels, int channel);

// Eight bytes: two end points and sixteen 3-bit indices, into one channel.
void decodeAlphaBlock(const uchar* block, uchar* tile, int channels, int channel);

// The same with signed end points (-127 to 127; -128 reads as -127), the
// values mapped from -1..1 onto 0..255.
void decodeSignedAlphaBlock(const uchar* block, uchar* tile, int channels, int channel);
