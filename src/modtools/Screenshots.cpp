#include "Screenshots.h"

#include <QDir>
#include <QFileInfo>
#include <QImageWriter>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>

namespace {
// Not the 8192 of the GPUs: the boxes allow a few pixels more.
constexpr int SizeBoxLimit = 8196;
constexpr int MaxPresetSide = 8000;
} // namespace

const QVector<Screenshots::Preset>& Screenshots::presets()
{
    static const QVector<Preset> table = {
        {QStringLiteral("720p"), 1280, 720},   {QStringLiteral("1080p"), 1920, 1080},
        {QStringLiteral("2000p"), 2048, 1536}, {QStringLiteral("2160p"), 3840, 2160},
        {QStringLiteral("2540p"), 4520, 2540}, {QStringLiteral("4000p"), 4096, 3072},
        {QStringLiteral("4320p"), 7680, 4320}, {QStringLiteral("Max"), 0, 0},
    };
    return table;
}

int Screenshots::sizeLimit(int maxImageSize)
{
    return maxImageSize < 1 ? 0 : std::min(maxImageSize, SizeBoxLimit);
}

QSize Screenshots::presetSize(int index, int maxImageSize)
{
    if (index < 0 || index >= presets().size())
        return QSize();
    const Preset& preset = presets()[index];
    const int limit = sizeLimit(maxImageSize);
    if (preset.width == 0) {
        const int side = std::min(std::min(maxImageSize, MaxPresetSide), limit);
        return QSize(side, side);
    }
    return QSize(std::min(preset.width, limit), std::min(preset.height, limit));
}

QString Screenshots::safeName(const QString& tankName)
{
    QString name = tankName;
    for (const QChar c : QStringLiteral("/*<>:|?\\\""))
        name.replace(c, QLatin1Char('_'));
    return name;
}

QString Screenshots::fileName(const QString& directory, const QString& tankName, bool timeStamp,
                              const QTime& time)
{
    QString file = directory + QDir::separator() + safeName(tankName);
    if (timeStamp)
        file += QStringLiteral("_%1-%2-%3").arg(time.hour()).arg(time.minute()).arg(time.second());
    return QDir::toNativeSeparators(file + QStringLiteral(".png"));
}

QString Screenshots::withFormatSuffix(const QString& file, const QString& nameFilter)
{
    if (file.isEmpty() || !QFileInfo(file).suffix().isEmpty())
        return file;
    static const QRegularExpression pattern(QStringLiteral("\\*\\.(\\w+)"));
    const QRegularExpressionMatch match = pattern.match(nameFilter);
    return file + QLatin1Char('.') + (match.hasMatch() ? match.captured(1) : QStringLiteral("png"));
}

bool Screenshots::save(const QImage& image, const QString& file, int quality, QString* error)
{
    QSaveFile out(file);
    const QByteArray suffix = QFileInfo(file).suffix().toLower().toLatin1();
    QImageWriter writer(&out, suffix.isEmpty() ? QByteArray("png") : suffix);
    writer.setQuality(quality);
    QString reason;
    if (!out.open(QIODevice::WriteOnly))
        reason = out.errorString();
    else if (!writer.write(image))
        reason = writer.errorString();
    else if (!out.commit())
        reason = out.errorString();
    if (!reason.isEmpty() || out.isOpen())
        out.cancelWriting();
    if (error)
        *error = reason;
    return reason.isEmpty();
}
