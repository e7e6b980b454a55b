// The block decoders from arbitrary bytes, one 16-byte block after the
// other: every bit pattern, reserved modes included, must give a defined
// tile without reading past the block.

#include "BptcBlocks.h"
#include "DdsBlocks.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    for (size_t offset = 0; offset + 16 <= size; offset += 16) {
        // A copy of exactly one block, so that ASan sees any read beyond it.
        uchar* block = new uchar[16];
        std::memcpy(block, data + offset, 16);
        uchar rgba[64];
        decodeBc7Block(block, rgba);
        quint16 halves[64];
        decodeBc6hBlock(block, false, halves);
        decodeBc6hBlock(block, true, halves);
        for (int pixel = 0; pixel < 16; ++pixel)
            if (halves[4 * pixel + 3] != 0x3C00)
                __builtin_trap(); // alpha is always 1
        uchar channels[32];
        decodeSignedAlphaBlock(block, channels, 2, 0);
        decodeSignedAlphaBlock(block + 8, channels, 2, 1);
        delete[] block;
    }
    return 0;
}
