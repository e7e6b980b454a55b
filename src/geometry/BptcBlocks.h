#pragma once

#include <QtGlobal>

// Decoders of one 16-byte block of the two BPTC formats, for drivers that
// cannot take them. Each writes a 16-pixel tile, row by row. Reserved modes
// and any other bit pattern give defined output (zeros), never a fault.

// BC7: RGBA, 8 bits each, 64 bytes.
void decodeBc7Block(const uchar* block, uchar* tile);

// BC6H: RGB half floats; writes four 16-bit half floats per pixel (alpha
// 1.0), 128 bytes, in host order. `signedFloats` selects the signed variant.
void decodeBc6hBlock(const uchar* block, bool signedFloats, quint16* tile);
