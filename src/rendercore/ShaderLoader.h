#pragma once

#include "Singleton.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class QOpenGLShaderProgram;

// The numbers by which drawables ask for a program.
enum ShaderId
{
    Bumped = 0,
    BumpedDual,
    BumpedPbs,
    BumpedPbsDual,
    Grid,
    LightingOnly,
    LightingOnlyAlpha,
    NoLighting,
    NoLightingDual,
    NoLightingAlpha,
    Wireframe,
    CollisionLighting,
    CollisionNoLighting,
    Depth,
    Font,
    ShaderCount
};

// The display name of an id; empty above Font.
QString shaderName(int id);

// One linked program with its uniform locations.
class ShaderProgram
{
public:
    explicit ShaderProgram(const QString& name);
    ~ShaderProgram();

    // Asks GL for the location of name in the linked program (-1 if unknown).
    void addUniform(const QString& uniformName);
    // The stored location; a name nobody added is entered at location 0.
    int& uniformLocation(const QString& uniformName);
    QString log() const;

    QHash<QString, int> uniforms;
    bool hasGeometryStage = false;
    QString name;
    std::unique_ptr<QOpenGLShaderProgram> program;
};

// Builds the fixed set of programs from the GLSL files of the ShaderDir
// setting. Needs a current GL 3.2 core context.
class ShaderLoader : public QObject, public Singleton<ShaderLoader>
{
    Q_OBJECT
public:
    explicit ShaderLoader(QObject* parent = nullptr);
    ~ShaderLoader() override;

    // False after a failure, which is already logged.
    bool loadShaders();

    ShaderProgram* program(int id) const;
    ShaderProgram* camoSaverProgram() const { return camoSaver.get(); }
    ShaderProgram* lineProgram() const { return line.get(); }

    // Reads a stage's source and inserts the defines after "#version 150".
    static QString stageSource(const QString& path, const QStringList& defines);

private:
    // Compiles, binds the attribute slots, links and resolves the uniforms of
    // one table program; false (already logged) leaves the id out.
    bool buildProgram(int id, const QString& vertexSource, const QString& fragmentSource,
                      const QString& geometrySource);

    QHash<int, ShaderProgram*> programs;
    std::unique_ptr<ShaderProgram> camoSaver;
    std::unique_ptr<ShaderProgram> line;
};
