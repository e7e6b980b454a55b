#pragma once

#include "Singleton.h"

#include <QMap>
#include <QObject>
#include <QSize>
#include <QString>

class QIODevice;

// Finds textures by the names materials and data files give them, loads each
// into GL once and hands out the texture name. Two caches: one per vehicle,
// one for the whole run. Needs the viewport's context current.
class TextureLoader : public QObject, public Singleton<TextureLoader>
{
    Q_OBJECT
public:
    explicit TextureLoader(QObject* parent = nullptr);
    ~TextureLoader() override;

    // The cache key of a texture name: ".tga" to ".dds", ".dds" added when
    // there is no dot, blanks trimmed.
    static QString normalisedName(const QString& name);

    unsigned int loadTexture(const QString& name);
    unsigned int loadPermanentTexture(const QString& name);
    unsigned int loadUncached(const QString& name);
    unsigned int textureByName(const QString& name, bool loadIfMissing);
    QString textureName(unsigned int id) const;
    void bindTexture(int unit, unsigned int id);
    void clearTankTextures();
    QSize ddsSize(const QString& name);
    static bool writeDds(const QString& path, const void* pixels, int width, int height,
                         bool generateMipmaps);

    QMap<QString, unsigned int> tankTextures;
    QMap<QString, unsigned int> permanentTextures;
    unsigned int minFilter;
    unsigned int magFilter;
    float anisotropy = 0;
    unsigned int noTexture = 0;
    unsigned int gridTexture = 0;
    unsigned int shadowTexture = 0;
    // Textures come from the archives rather than the mod folder first.
    // TankLoader's texture location choice writes it.
    bool fromArchives = false;

public slots:
    void filterChanged();

private:
    unsigned int loadThroughCache(QMap<QString, unsigned int>& cache, const QString& name);
    // Loads key into a new texture; noTexture (with a warning) on failure.
    unsigned int loadFile(const QString& key);
    QIODevice* openTexture(const QString& key);
    // The high-definition base level a .texformat beside key names, or null.
    QIODevice* openHighDefinition(const QString& key);
    float driverMaxAnisotropy() const;
};
