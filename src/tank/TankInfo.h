#pragma once

#include "Singleton.h"

#include <QDomDocument>
#include <QObject>
#include <QString>
#include <QStringList>

// The texture files a loaded vehicle uses, sorted by kind and state, read
// from the vehicle document and every visual it names. Texture extraction,
// the texture editor and the camouflage bake read the lists directly. All
// lists hold resource paths without duplicates, case ignored.
class TankInfo : public QObject, public Singleton<TankInfo>
{
    Q_OBJECT
public:
    enum Kind
    {
        Diffuse,
        Normal,
        Specular,
        MetallicGloss,
        MetallicDetail,
        Exclusion,
        Texformat
    };

    explicit TankInfo(QObject* parent = nullptr);

    void clear();
    void parse(const QDomDocument& vehicleDocument, int startIndex);
    QStringList allTextures() const;
    // Diffuse textures a camouflage may go on: no tracks, bottoms or equipment.
    QStringList paintableTextures() const;
    // Adds path to the list of its kind (by currentState where a kind has
    // two) and to allTextureFiles; empty paths are dropped.
    void addTexture(Kind kind, const QString& path);

    QStringList diffuseTextures;
    QStringList specularTextures;
    QStringList normalTextures;
    QStringList exclusionTextures;
    QStringList metallicGlossTextures;
    QStringList metallicDetailTextures;
    QStringList texformatFiles;
    QStringList destroyedDiffuseTextures;
    QStringList destroyedSpecularTextures;
    QStringList destroyedNormalTextures;
    QStringList destroyedMetallicGlossTextures;
    QStringList allTextureFiles;
    // The collision state has no textures; the editor finds nothing there.
    QStringList collisionTextures;

    QString currentStateName;
    int currentState = 0;

private:
    void collect(const QDomElement& root, const QString& stateName, bool withMasks, int startIndex);
    void readVisual(const QString& path);
    void readMaterial(const QDomElement& material);
    QString resolveTexformat(const QString& path);
    QStringList& listOf(Kind kind);
};
