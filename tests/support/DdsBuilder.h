#pragma once

// Hand-made DDS files for tests: a 128-byte header with the fields a test
// names, followed by the data as given.

#include <QByteArray>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

// Header offsets of the fields the tests set.
enum DdsHeaderField
{
    DepthAt = 24,
    CodeAt = 84,
    BitCountAt = 88,
    RedMaskAt = 92,
    GreenMaskAt = 96,
    BlueMaskAt = 100,
    AlphaMaskAt = 104,
    Caps2At = 112
};
using DdsFields = std::vector<std::pair<int, quint32>>;

// `code` is a four-character code or empty.
inline QByteArray makeDds(int width, int height, int mips, const char* code, const QByteArray& data,
                          const DdsFields& fields = {})
{
    QByteArray file(128, '\0');
    std::memcpy(file.data(), "DDS ", 4);
    if (*code)
        std::memcpy(file.data() + CodeAt, code, 4);
    DdsFields all = {{4, 124}, {12, quint32(height)}, {16, quint32(width)}, {28, quint32(mips)}};
    all.insert(all.end(), fields.begin(), fields.end());
    for (const auto& [offset, value] : all)
        qToLittleEndian(value, file.data() + offset);
    return file + data;
}

// The blocks of a DXT1 chain of `mips` levels, every byte `fill`.
inline QByteArray dxt1Blocks(int width, int height, int mips, char fill = '\x55')
{
    int size = 0;
    for (int level = 0; level < mips; ++level)
        size += std::max(1, (width >> level) / 4) * std::max(1, (height >> level) / 4) * 8;
    return QByteArray(size, fill);
}

// A DXT1 file of width x height with `mips` levels of grey blocks.
inline QByteArray dxt1Dds(int width, int height, int mips = 1)
{
    return makeDds(width, height, mips, "DXT1", dxt1Blocks(width, height, mips));
}
