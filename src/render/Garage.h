#pragma once

#include "Maths.h"

#include <QList>
#include <QObject>
#include <QString>

class QDomElement;
class StaticMesh;

// The placement held by the Position, Rotation and Scale children of
// element: identity, then translated, rotated (axis x y z, angle in degrees)
// and scaled, each step applied on the right. A child with empty text
// leaves its step out.
Matrix garagePlacement(const QDomElement& element);

// The backdrop of the scene: static models from the game's own hangar,
// listed for each garage by name in "../data/garages.cfg". The meshes hold
// GL objects, so loading and clearing need the viewport's context current.
class Garage : public QObject
{
    Q_OBJECT
public:
    Garage(const QString& name, QObject* parent);
    ~Garage() override;

    virtual void load();
    void clear();
    void draw();
    int triangleCount() const;

    QList<StaticMesh*> meshes;
    QString name;

public slots:
    void reload();

private:
    void addArchives(const QDomElement& garage);
    void loadMeshes(const QDomElement& garage, const Matrix& garageMatrix);
    void makeMaterialsDoubleSided();
};

class BasicGarage : public Garage
{
    Q_OBJECT
public:
    explicit BasicGarage(QObject* parent = nullptr);
    void load() override;
};

class PremiumGarage : public Garage
{
    Q_OBJECT
public:
    explicit PremiumGarage(QObject* parent = nullptr);
    void load() override;
};
