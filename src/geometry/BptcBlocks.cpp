#include "BptcBlocks.h"

#include <algorithm>
#include <cstring>

namespace {
// The 128 bits of a block, read from the lowest bit of byte 0 upward.
class BitReader
{
public:
    explicit BitReader(const uchar* bytes) : data(bytes) {}

    int read(int count)
    {
        int value = 0;
        for (int i = 0; i < count; ++i)
            value |= bit() << i;
        return value;
    }
    int bit()
    {
        // Past the end reads zeros: a layout can never run over, but a
        // wrong count must not read beyond the block.
        if (position >= 128)
            return 0;
        const int value = (data[position >> 3] >> (position & 7)) & 1;
        ++position;
        return value;
    }
    void seek(int bit) { position = bit; }

private:
    const uchar* data;
    int position = 0;
};

// Subset of each pixel, two bits a pixel, pixel 0 in the lowest bits; the
// two-subset partitions are shared by both formats (BC6H uses the first 32).
constexpr quint16 twoSubsets[64] = {
    0xCCCC, 0x8888, 0xEEEE, 0xECC8, 0xC880, 0xFEEC, 0xFEC8, 0xEC80, 0xC800, 0xFFEC, 0xFE80,
    0xE800, 0xFFE8, 0xFF00, 0xFFF0, 0xF000, 0xF710, 0x008E, 0x7100, 0x08CE, 0x008C, 0x7310,
    0x3100, 0x8CCE, 0x088C, 0x3110, 0x6666, 0x366C, 0x17E8, 0x0FF0, 0x718E, 0x399C, 0xAAAA,
    0xF0F0, 0x5A5A, 0x33CC, 0x3C3C, 0x55AA, 0x9696, 0xA55A, 0x73CE, 0x13C8, 0x324C, 0x3BDC,
    0x6996, 0xC33C, 0x9966, 0x0660, 0x0272, 0x04E4, 0x4E40, 0x2720, 0xC936, 0x936C, 0x39C6,
    0x639C, 0x9336, 0x9CC6, 0x817E, 0xE718, 0xCCF0, 0x0FCC, 0x7744, 0xEE22};

constexpr quint32 threeSubsets[64] = {
    0xAA685050, 0x6A5A5040, 0x5A5A4200, 0x5450A0A8, 0xA5A50000, 0xA0A05050, 0x5555A0A0, 0x5A5A5050,
    0xAA550000, 0xAA555500, 0xAAAA5500, 0x90909090, 0x94949494, 0xA4A4A4A4, 0xA9A59450, 0x2A0A4250,
    0xA5945040, 0x0A425054, 0xA5A5A500, 0x55A0A0A0, 0xA8A85454, 0x6A6A4040, 0xA4A45000, 0x1A1A0500,
    0x0050A4A4, 0xAAA59090, 0x14696914, 0x69691400, 0xA08585A0, 0xAA821414, 0x50A4A450, 0x6A5A0200,
    0xA9A58000, 0x5090A0A8, 0xA8A09050, 0x24242424, 0x00AA5500, 0x24924924, 0x24499224, 0x50A50A50,
    0x500AA550, 0xAAAA4444, 0x66660000, 0xA5A0A5A0, 0x50A050A0, 0x69286928, 0x44AAAA44, 0x66666600,
    0xAA444444, 0x54A854A8, 0x95809580, 0x96969600, 0xA85454A8, 0x80959580, 0xAA141414, 0x96960000,
    0xAAAA1414, 0xA05050A0, 0xA0A5A5A0, 0x96000000, 0x40804080, 0xA9A8A9A8, 0xAAAAAA44, 0x2A4A5254};

// The pixel of subset 1 (and, of three, subset 2) whose index is one bit
// shorter; subset 0's is always pixel 0.
constexpr uchar anchorOfTwo[64] = {15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15,
                                   15, 2,  8,  2,  2,  8,  8,  15, 2,  8,  2,  2,  8,  8,  2,  2,
                                   15, 15, 6,  8,  2,  8,  15, 15, 2,  8,  2,  2,  2,  15, 15, 6,
                                   6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2,  15};
constexpr uchar secondAnchorOfThree[64] = {
    3,  3,  15, 15, 8, 3,  15, 15, 8,  8,  6, 6,  6, 5,  3, 3,  3,  3,  8,  15, 3,  3,
    6,  10, 5,  8,  8, 6,  8,  5,  15, 15, 8, 15, 3, 5,  6, 10, 8,  15, 15, 3,  15, 5,
    15, 15, 15, 15, 3, 15, 5,  5,  5,  8,  5, 10, 5, 10, 8, 13, 15, 12, 3,  3};
constexpr uchar thirdAnchorOfThree[64] = {
    15, 8, 8, 3,  15, 15, 3,  8,  15, 15, 15, 15, 15, 15, 15, 8,  15, 8,  15, 3,  15, 8,
    15, 8, 3, 15, 6,  10, 15, 15, 10, 8,  15, 3,  15, 10, 10, 8,  9,  10, 6,  15, 8,  15,
    3,  6, 6, 8,  15, 3,  15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3,  15, 15, 8};

constexpr int weights2[4] = {0, 21, 43, 64};
constexpr int weights3[8] = {0, 9, 18, 27, 37, 46, 55, 64};
constexpr int weights4[16] = {0, 4, 9, 13, 17, 21, 26, 30, 34, 38, 43, 47, 51, 55, 60, 64};

const int* weightsFor(int bits)
{
    return bits == 2 ? weights2 : bits == 3 ? weights3 : weights4;
}

int subsetOf(int subsets, int partition, int pixel)
{
    if (subsets == 2)
        return (twoSubsets[partition] >> pixel) & 1;
    if (subsets == 3)
        return int(threeSubsets[partition] >> (2 * pixel)) & 3;
    return 0;
}

bool isAnchor(int subsets, int partition, int pixel)
{
    if (pixel == 0)
        return true;
    if (subsets == 2)
        return pixel == anchorOfTwo[partition];
    if (subsets == 3)
        return pixel == secondAnchorOfThree[partition] || pixel == thirdAnchorOfThree[partition];
    return false;
}

int interpolate(int a, int b, int weight)
{
    return ((64 - weight) * a + weight * b + 32) >> 6;
}

// ------------------------------------------------------------------ BC7

struct Bc7Mode
{
    int subsets;
    int partitionBits;
    int rotationBits;
    int selectorBits;
    int colourBits;
    int alphaBits;
    int endpointPBits; // one p-bit per end point
    int sharedPBits;   // one p-bit per subset
    int indexBits;
    int secondIndexBits;
};

constexpr Bc7Mode bc7Modes[8] = {{3, 4, 0, 0, 4, 0, 1, 0, 3, 0}, {2, 6, 0, 0, 6, 0, 0, 1, 3, 0},
                                 {3, 6, 0, 0, 5, 0, 0, 0, 2, 0}, {2, 6, 0, 0, 7, 0, 1, 0, 2, 0},
                                 {1, 0, 2, 1, 5, 6, 0, 0, 2, 3}, {1, 0, 2, 0, 7, 8, 0, 0, 2, 2},
                                 {1, 0, 0, 0, 7, 7, 1, 0, 4, 0}, {2, 6, 0, 0, 5, 5, 1, 0, 2, 0}};

// A value of `bits` bits widened to 8 by repeating its top bits.
int widen(int value, int bits)
{
    value <<= 8 - bits;
    return value | (value >> bits);
}
} // namespace

void decodeBc7Block(const uchar* block, uchar* tile)
{
    int modeNumber = 0;
    while (modeNumber < 8 && !((block[0] >> modeNumber) & 1))
        ++modeNumber;
    if (modeNumber == 8) {
        std::memset(tile, 0, 64);
        return;
    }
    const Bc7Mode& mode = bc7Modes[modeNumber];
    BitReader bits(block);
    bits.seek(modeNumber + 1);
    const int partition = bits.read(mode.partitionBits);
    const int rotation = bits.read(mode.rotationBits);
    const int selector = bits.read(mode.selectorBits);

    // End points: all reds, then greens, blues and alphas; two per subset.
    int endpoints[6][4];
    const int count = 2 * mode.subsets;
    for (int channel = 0; channel < 3; ++channel)
        for (int e = 0; e < count; ++e)
            endpoints[e][channel] = bits.read(mode.colourBits);
    for (int e = 0; e < count; ++e)
        endpoints[e][3] = mode.alphaBits ? bits.read(mode.alphaBits) : 255;

    int pBits[6] = {};
    if (mode.endpointPBits)
        for (int e = 0; e < count; ++e)
            pBits[e] = bits.bit();
    if (mode.sharedPBits)
        for (int s = 0; s < mode.subsets; ++s)
            pBits[2 * s] = pBits[2 * s + 1] = bits.bit();
    const bool withPBit = mode.endpointPBits || mode.sharedPBits;
    for (int e = 0; e < count; ++e) {
        for (int channel = 0; channel < 3; ++channel) {
            int value = endpoints[e][channel];
            int width = mode.colourBits;
            if (withPBit) {
                value = value << 1 | pBits[e];
                ++width;
            }
            endpoints[e][channel] = widen(value, width);
        }
        if (mode.alphaBits) {
            int value = endpoints[e][3];
            int width = mode.alphaBits;
            if (withPBit) {
                value = value << 1 | pBits[e];
                ++width;
            }
            endpoints[e][3] = widen(value, width);
        }
    }

    int indices[16];
    int secondIndices[16] = {};
    for (int pixel = 0; pixel < 16; ++pixel)
        indices[pixel] =
            bits.read(mode.indexBits - (isAnchor(mode.subsets, partition, pixel) ? 1 : 0));
    if (mode.secondIndexBits)
        for (int pixel = 0; pixel < 16; ++pixel)
            secondIndices[pixel] = bits.read(mode.secondIndexBits - (pixel == 0 ? 1 : 0));

    // With two index sets, the selector says which one the colour takes.
    const int* colourWeights = weightsFor(mode.indexBits);
    const int* alphaWeights =
        weightsFor(mode.secondIndexBits ? mode.secondIndexBits : mode.indexBits);
    for (int pixel = 0; pixel < 16; ++pixel) {
        const int subset = subsetOf(mode.subsets, partition, pixel);
        const int* e0 = endpoints[2 * subset];
        const int* e1 = endpoints[2 * subset + 1];
        int colourWeight = colourWeights[indices[pixel]];
        int alphaWeight = colourWeight;
        if (mode.secondIndexBits) {
            alphaWeight = alphaWeights[secondIndices[pixel]];
            if (selector)
                std::swap(colourWeight, alphaWeight);
        }
        uchar rgba[4];
        for (int channel = 0; channel < 3; ++channel)
            rgba[channel] = uchar(interpolate(e0[channel], e1[channel], colourWeight));
        rgba[3] = uchar(interpolate(e0[3], e1[3], alphaWeight));
        if (rotation)
            std::swap(rgba[3], rgba[rotation - 1]);
        std::memcpy(tile + 4 * pixel, rgba, 4);
    }
}

namespace {
// ----------------------------------------------------------------- BC6H

enum Field
{
    RW,
    GW,
    BW,
    RX,
    GX,
    BX,
    RY,
    GY,
    BY,
    RZ,
    GZ,
    BZ,
    Partition,
    End
};

// Bits of a field in stream order, written as the format's tables write
// them: field[high:low] stores `low` first; a range written backwards
// (field[10:15]) stores its bits in reverse.
struct Segment
{
    Field field;
    int high;
    int low;
};

struct Bc6hMode
{
    int value; // the mode bits as read (2 or 5 of them)
    int modeBits;
    int endpointBits;
    int deltaBits[3];
    bool transformed;
    Segment layout[32];
};

// clang-format off
const Bc6hMode bc6hModes[14] = {
    {0, 2, 10, {5, 5, 5}, true, {{GY,4,4},{BY,4,4},{BZ,4,4},{RW,9,0},{GW,9,0},{BW,9,0},{RX,4,0},
        {GZ,4,4},{GY,3,0},{GX,4,0},{BZ,0,0},{GZ,3,0},{BX,4,0},{BZ,1,1},{BY,3,0},{RY,4,0},{BZ,2,2},
        {RZ,4,0},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {1, 2, 7, {6, 6, 6}, true, {{GY,5,5},{GZ,4,4},{GZ,5,5},{RW,6,0},{BZ,0,0},{BZ,1,1},{BY,4,4},
        {GW,6,0},{BY,5,5},{BZ,2,2},{GY,4,4},{BW,6,0},{BZ,3,3},{BZ,5,5},{BZ,4,4},{RX,5,0},{GY,3,0},
        {GX,5,0},{GZ,3,0},{BX,5,0},{BY,3,0},{RY,5,0},{RZ,5,0},{Partition,4,0},{End,0,0}}},
    {2, 5, 11, {5, 4, 4}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,4,0},{RW,10,10},{GY,3,0},{GX,3,0},
        {GW,10,10},{BZ,0,0},{GZ,3,0},{BX,3,0},{BW,10,10},{BZ,1,1},{BY,3,0},{RY,4,0},{BZ,2,2},
        {RZ,4,0},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {6, 5, 11, {4, 5, 4}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,3,0},{RW,10,10},{GZ,4,4},{GY,3,0},
        {GX,4,0},{GW,10,10},{GZ,3,0},{BX,3,0},{BW,10,10},{BZ,1,1},{BY,3,0},{RY,3,0},{BZ,0,0},
        {BZ,2,2},{RZ,3,0},{GY,4,4},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {10, 5, 11, {4, 4, 5}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,3,0},{RW,10,10},{BY,4,4},{GY,3,0},
        {GX,3,0},{GW,10,10},{BZ,0,0},{GZ,3,0},{BX,4,0},{BW,10,10},{BY,3,0},{RY,3,0},{BZ,1,1},
        {BZ,2,2},{RZ,3,0},{BZ,4,4},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {14, 5, 9, {5, 5, 5}, true, {{RW,8,0},{BY,4,4},{GW,8,0},{GY,4,4},{BW,8,0},{BZ,4,4},{RX,4,0},
        {GZ,4,4},{GY,3,0},{GX,4,0},{BZ,0,0},{GZ,3,0},{BX,4,0},{BZ,1,1},{BY,3,0},{RY,4,0},{BZ,2,2},
        {RZ,4,0},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {18, 5, 8, {6, 5, 5}, true, {{RW,7,0},{GZ,4,4},{BY,4,4},{GW,7,0},{BZ,2,2},{GY,4,4},{BW,7,0},
        {BZ,3,3},{BZ,4,4},{RX,5,0},{GY,3,0},{GX,4,0},{BZ,0,0},{GZ,3,0},{BX,4,0},{BZ,1,1},{BY,3,0},
        {RY,5,0},{RZ,5,0},{Partition,4,0},{End,0,0}}},
    {22, 5, 8, {5, 6, 5}, true, {{RW,7,0},{BZ,0,0},{BY,4,4},{GW,7,0},{GY,5,5},{GY,4,4},{BW,7,0},
        {GZ,5,5},{BZ,4,4},{RX,4,0},{GZ,4,4},{GY,3,0},{GX,5,0},{GZ,3,0},{BX,4,0},{BZ,1,1},{BY,3,0},
        {RY,4,0},{BZ,2,2},{RZ,4,0},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {26, 5, 8, {5, 5, 6}, true, {{RW,7,0},{BZ,1,1},{BY,4,4},{GW,7,0},{BY,5,5},{GY,4,4},{BW,7,0},
        {BZ,5,5},{BZ,4,4},{RX,4,0},{GZ,4,4},{GY,3,0},{GX,4,0},{BZ,0,0},{GZ,3,0},{BX,5,0},{BY,3,0},
        {RY,4,0},{BZ,2,2},{RZ,4,0},{BZ,3,3},{Partition,4,0},{End,0,0}}},
    {30, 5, 6, {6, 6, 6}, false, {{RW,5,0},{GZ,4,4},{BZ,0,0},{BZ,1,1},{BY,4,4},{GW,5,0},{GY,5,5},
        {BY,5,5},{BZ,2,2},{GY,4,4},{BW,5,0},{GZ,5,5},{BZ,3,3},{BZ,5,5},{BZ,4,4},{RX,5,0},{GY,3,0},
        {GX,5,0},{GZ,3,0},{BX,5,0},{BY,3,0},{RY,5,0},{RZ,5,0},{Partition,4,0},{End,0,0}}},
    {3, 5, 10, {10, 10, 10}, false, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,9,0},{GX,9,0},{BX,9,0},
        {End,0,0}}},
    {7, 5, 11, {9, 9, 9}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,8,0},{RW,10,10},{GX,8,0},
        {GW,10,10},{BX,8,0},{BW,10,10},{End,0,0}}},
    {11, 5, 12, {8, 8, 8}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,7,0},{RW,10,11},{GX,7,0},
        {GW,10,11},{BX,7,0},{BW,10,11},{End,0,0}}},
    {15, 5, 16, {4, 4, 4}, true, {{RW,9,0},{GW,9,0},{BW,9,0},{RX,3,0},{RW,10,15},{GX,3,0},
        {GW,10,15},{BX,3,0},{BW,10,15},{End,0,0}}},
};
// clang-format on

const Bc6hMode* bc6hModeOf(int twoBits, int fiveBits)
{
    for (const Bc6hMode& mode : bc6hModes) {
        if (mode.modeBits == 2 && mode.value == twoBits)
            return &mode;
        if (mode.modeBits == 5 && mode.value == fiveBits)
            return &mode;
    }
    return nullptr;
}

int signExtend(int value, int bits)
{
    const int shift = 32 - bits;
    return int(unsigned(value) << shift) >> shift;
}

int unquantize(int value, int bits, bool signedFloats)
{
    if (!signedFloats) {
        if (bits >= 15 || value == 0)
            return value;
        if (value == (1 << bits) - 1)
            return 0xFFFF;
        return ((value << 16) + 0x8000) >> bits;
    }
    if (bits >= 16)
        return value;
    const bool negative = value < 0;
    int magnitude = negative ? -value : value;
    if (magnitude == 0)
        return 0;
    if (magnitude >= (1 << (bits - 1)) - 1)
        magnitude = 0x7FFF;
    else
        magnitude = ((magnitude << 15) + 0x4000) >> (bits - 1);
    return negative ? -magnitude : magnitude;
}

// The interpolated value scaled to a half float's bit pattern.
quint16 finishHalf(int value, bool signedFloats)
{
    if (!signedFloats)
        return quint16((value * 31) >> 6);
    if (value < 0)
        return quint16(0x8000 | (((-value) * 31) >> 5));
    return quint16((value * 31) >> 5);
}
} // namespace

void decodeBc6hBlock(const uchar* block, bool signedFloats, quint16* tile)
{
    const Bc6hMode* mode = bc6hModeOf(block[0] & 3, block[0] & 31);
    if (!mode) {
        // Reserved modes decode to black; alpha stays opaque.
        for (int pixel = 0; pixel < 16; ++pixel) {
            tile[4 * pixel] = tile[4 * pixel + 1] = tile[4 * pixel + 2] = 0;
            tile[4 * pixel + 3] = 0x3C00;
        }
        return;
    }
    BitReader bits(block);
    bits.seek(mode->modeBits);
    int values[End] = {};
    for (const Segment* segment = mode->layout; segment->field != End; ++segment) {
        const int step = segment->high >= segment->low ? 1 : -1;
        for (int bit = segment->low;; bit += step) {
            values[segment->field] |= bits.bit() << bit;
            if (bit == segment->high)
                break;
        }
    }
    // The four modes of one subset end their five mode bits in 11.
    const int subsets = mode->modeBits == 2 || (mode->value & 3) == 2 ? 2 : 1;
    const int partition = values[Partition];
    const int precision = mode->endpointBits;

    // End points w, x (subset 0) and y, z (subset 1); each channel's deltas
    // are relative to w.
    int endpoints[4][3];
    for (int channel = 0; channel < 3; ++channel) {
        int w = values[RW + channel];
        if (signedFloats)
            w = signExtend(w, precision);
        endpoints[0][channel] = w;
        for (int e = 1; e < 2 * subsets; ++e) {
            int value = values[RW + 3 * e + channel];
            if (mode->transformed) {
                value = signExtend(value, mode->deltaBits[channel]);
                value = (w + value) & ((1 << precision) - 1);
                if (signedFloats)
                    value = signExtend(value, precision);
            } else if (signedFloats) {
                value = signExtend(value, precision);
            }
            endpoints[e][channel] = value;
        }
    }
    for (int e = 0; e < 2 * subsets; ++e)
        for (int channel = 0; channel < 3; ++channel)
            endpoints[e][channel] = unquantize(endpoints[e][channel], precision, signedFloats);

    const int indexBits = subsets == 2 ? 3 : 4;
    const int* weights = weightsFor(indexBits);
    bits.seek(subsets == 2 ? 82 : 65);
    for (int pixel = 0; pixel < 16; ++pixel) {
        const int index = bits.read(indexBits - (isAnchor(subsets, partition, pixel) ? 1 : 0));
        const int subset = subsetOf(subsets, partition, pixel);
        for (int channel = 0; channel < 3; ++channel) {
            const int value = interpolate(endpoints[2 * subset][channel],
                                          endpoints[2 * subset + 1][channel], weights[index]);
            tile[4 * pixel + channel] = finishHalf(value, signedFloats);
        }
        tile[4 * pixel + 3] = 0x3C00;
    }
}
