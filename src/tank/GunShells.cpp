#include "GunShells.h"

#include "Log.h"
#include "MoReaderCached.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

const QLatin1String kindAp("ARMOR_PIERCING");
const QLatin1String kindApcr("ARMOR_PIERCING_CR");
const QLatin1String kindAphe("ARMOR_PIERCING_HE");
const QLatin1String kindHeat("HOLLOW_CHARGE");

QString translate(const QString& text)
{
    MoReaderCached* reader = MoReaderCached::instance();
    return reader ? reader->translate(text) : text;
}

void logMalformed(const QString& owner, const QString& field, const QString& text)
{
    Log::log(QStringLiteral("Malformed number in ") + owner + QLatin1Char('/') + field +
                 QStringLiteral(", read as 0: ") + text,
             Log::Warning);
}

// count numbers of the field's text, blank-separated; a missing or empty
// field reads as zeros quietly, a malformed or short one as zeros with one log line.
QVector<float> readNumbers(const QDomElement& parent, const QString& field, int count,
                           const QString& owner)
{
    QVector<float> numbers(count, 0.0f);
    const QString text = parent.firstChildElement(field).text();
    if (text.trimmed().isEmpty())
        return numbers;
    const QStringList parts = text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    bool ok = parts.size() >= count;
    for (int i = 0; ok && i < count; ++i) {
        numbers[i] = parts[i].toFloat(&ok);
        ok = ok && std::isfinite(numbers[i]);
    }
    if (!ok) {
        logMalformed(owner, field, text);
        numbers.fill(0.0f);
    }
    return numbers;
}

float readNumber(const QDomElement& parent, const QString& field, const QString& owner)
{
    return readNumbers(parent, field, 1, owner).first();
}

QVector<QDomElement> childElements(const QDomElement& parent)
{
    QVector<QDomElement> elements;
    for (QDomElement child = parent.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        elements.append(child);
    return elements;
}

} // namespace

int Shell::shellType() const
{
    if (kind == kindAp || kind == kindAphe)
        return 0;
    if (kind == kindApcr)
        return 1;
    if (kind == kindHeat)
        return 3;
    return 2;
}

float Shell::normalization() const
{
    const int type = shellType();
    return type == 2 || type == 3 ? 0.0f : 2.0f;
}

float Shell::penetrationAt(float distance) const
{
    if (maxDistance > 0)
        distance = std::min(distance, maxDistance);
    if (distance <= 100)
        return std::max(piercingPower100, 0.0f);
    const float value =
        piercingPower100 + (piercingPower500 - piercingPower100) * (distance - 100) / 400;
    return std::max(value, 0.0f);
}

QVector<Shell> readShots(const QDomElement& shots, const QString& owner)
{
    QVector<Shell> shells;
    for (const QDomElement& element : childElements(shots)) {
        Shell shell;
        shell.tag = element.tagName();
        shell.name = shell.tag;
        const QString where = owner + QLatin1Char('/') + shell.tag;
        const QVector<float> power =
            readNumbers(element, QStringLiteral("piercingPower"), 2, where);
        shell.piercingPower100 = power[0];
        shell.piercingPower500 = power[1];
        shell.speed = readNumber(element, QStringLiteral("speed"), where);
        shell.maxDistance = readNumber(element, QStringLiteral("maxDistance"), where);
        shell.defaultPortion = readNumber(element, QStringLiteral("defaultPortion"), where);
        shells.append(shell);
    }
    return shells;
}

void describeShells(QVector<Shell>& shells, const QDomElement& shellFileRoot)
{
    for (Shell& shell : shells) {
        const QDomElement element = shellFileRoot.firstChildElement(shell.tag);
        if (element.isNull())
            continue;
        const QString where = QStringLiteral("shells/") + shell.tag;
        shell.kind = element.firstChildElement(QStringLiteral("kind")).text().trimmed();
        shell.userString = element.firstChildElement(QStringLiteral("userString")).text().trimmed();
        if (!shell.userString.isEmpty())
            shell.name = translate(shell.userString);
        shell.calibre = readNumber(element, QStringLiteral("caliber"), where);
        if (shell.kind == kindHeat)
            shell.lossFactorByDistance =
                readNumber(element, QStringLiteral("piercingPowerLossFactorByDistance"), where);
    }
}
