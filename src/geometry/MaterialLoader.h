#pragma once

#include "Singleton.h"

#include <QDomNodeList>
#include <QList>
#include <QObject>
#include <QString>

class Material;
struct SceneLight;

// Turns the materials of .visual files into Material pairs on the program's
// own shaders: position 0 lit, position 1 unlit.
class MaterialLoader : public QObject, public Singleton<MaterialLoader>
{
    Q_OBJECT
public:
    explicit MaterialLoader(QObject* parent = nullptr);
    ~MaterialLoader() override;

    void createDefaultMaterials();
    QList<Material*> parseMaterial(const QDomNodeList& nodes, bool perTankTextures);
    QList<Material*> parseCollisionMaterial(const QDomNodeList& nodes);

    // The lit and unlit program of an effect file name; unknown names warn.
    static QPair<int, int> shadersForEffect(const QString& effect);

    int lightingMode = 0;
    SceneLight* light = nullptr;
    QList<Material*> defaultMaterials;
    Material* wireframeMaterial = nullptr;
    Material* depthMaterial = nullptr;
};
