// DDS files from arbitrary bytes: a parse must refuse every header whose
// sizes do not fit the data, and everything the CPU path does with an
// accepted image must stay inside its buffers.

#include "DdsImage.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    DdsImage image;
    if (!image.parse(QByteArray(reinterpret_cast<const char*>(data), int(size))))
        return 0;
    if (image.dataSize(0, image.mipCount) > image.pixels.size())
        __builtin_trap(); // an accepted image holds every level it claims

    for (int level = 0; level < image.mipCount + 2; ++level)
        image.dataSize(level, 1);
    image.dataSize(0, 1, DdsFormat::RGBA32F);

    image.unpack(); // refuses formats that are not packed
    if (!image.decompress())
        __builtin_trap(); // block data that parsed is always complete
    if (image.toRgba8()) {
        if (image.pixels.size() != image.dataSize(0, image.mipCount))
            __builtin_trap();
    }
    image.swapRedBlue();
    return 0;
}
