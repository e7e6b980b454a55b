#include "CamoCatalogue.h"

#include "MoReaderCached.h"
#include "XmlHelpers.h"

#include <QDomElement>
#include <QDomNodeList>

namespace {

// Element children from index first on; comments and text are not patterns.
QVector<QDomElement> elementsFrom(const QDomElement& parent, int first)
{
    QVector<QDomElement> elements;
    const QDomNodeList children = parent.childNodes();
    for (int i = first; i < children.size(); ++i)
        if (children.at(i).isElement())
            elements.append(children.at(i).toElement());
    return elements;
}

QString childText(const QDomElement& element, const char* name)
{
    return element.firstChildElement(QLatin1String(name)).text();
}

QString translated(const QString& key)
{
    MoReaderCached* messages = MoReaderCached::instance();
    return messages ? messages->translate(key) : key;
}

CamoOption readOption(const QDomElement& element, const Vector4& armorColor)
{
    CamoOption option;
    option.name = withoutBlanks(element.tagName());
    option.armorColor = armorColor;
    option.texture = withoutBlanks(childText(element, "texture"));
    option.group = withoutBlanks(childText(element, "group"));
    option.description = translated(withoutBlanks(childText(element, "description")));
    const QDomElement colors = element.firstChildElement(QStringLiteral("colors"));
    for (size_t channel = 0; channel < option.colors.size(); ++channel)
        option.colors[channel] = parseVector4(
            colors.firstChildElement(QLatin1Char('c') + QString::number(channel)).text());
    for (const QDomElement& tank :
         elementsFrom(element.firstChildElement(QStringLiteral("tiling")), 0))
        option.tiling.insert(tank.tagName().toLower(), parseVector4(tank.text()));
    return option;
}

} // namespace

QString withoutBlanks(QString text)
{
    text.remove(QLatin1Char(' '));
    text.remove(QLatin1Char('\t'));
    text.remove(QLatin1Char('\n'));
    text.remove(QLatin1Char('\r'));
    return text;
}

CamoNation readCamoCatalogue(const QDomElement& root, const QString& nation)
{
    CamoNation catalogue;
    catalogue.nation = nation;
    const Vector4 armorColor = parseVector4(childText(root, "armorColor"));
    for (const QDomElement& element :
         elementsFrom(root.firstChildElement(QStringLiteral("camouflages")), 1)) {
        if (!element.firstChildElement(QStringLiteral("notInShop")).text().isEmpty())
            continue;
        catalogue.options.append(readOption(element, armorColor));
    }
    return catalogue;
}
