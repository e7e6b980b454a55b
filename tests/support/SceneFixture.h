#pragma once

// Everything a model needs to load and draw without a viewport: a private
// application tree (working directory), an off-screen GL context, in-memory
// settings over a game folder, the file manager, and the managers the
// viewport would create, in the viewport's order. Header-only, because only
// suites that link the geometry library can use it.

#include "BufferManager.h"
#include "FileManager.h"
#include "GlTestContext.h"
#include "MaterialLoader.h"
#include "MatrixStack.h"
#include "SceneLight.h"
#include "Settings.h"
#include "ShaderLoader.h"
#include "TestRoot.h"
#include "TextureLoader.h"

#include <memory>

class SceneFixture
{
public:
    // gameDirectory: a game folder; resourcesFile: the archive list to open
    // (empty for the program's own data/resources.cfg of the test tree).
    SceneFixture(const QString& gameDirectory, const QString& resourcesFile = QString())
    {
        root.enter();
        if (!gl.valid)
            return;
        settings = std::make_unique<Settings>(QString());
        settings->gavrelPath = gameDirectory;
        settings->validateGavrelPath(gameDirectory);
        settings->shaderDir = root.dataDirectory() + QStringLiteral("/shaders/glsl150/");
        settings->textureFilter = QStringLiteral("Trilinear");
        files = std::make_unique<FileManager>();
        if (!resourcesFile.isEmpty())
            files->resourcesConfigPath = resourcesFile;
        files->loadZipFiles();
        buffers = std::make_unique<BufferManager>();
        shaders = std::make_unique<ShaderLoader>();
        shadersLoaded = shaders->loadShaders();
        matrices = std::make_unique<MatrixStack>();
        materials = std::make_unique<MaterialLoader>();
        materials->light = &light;
        textures = std::make_unique<TextureLoader>();
        materials->createDefaultMaterials();
    }

    ~SceneFixture()
    {
        if (!gl.valid)
            return;
        gl.context.makeCurrent(&gl.surface);
        materials.reset();
        textures.reset();
        matrices.reset();
        shaders.reset();
        buffers.reset();
        files.reset();
        settings.reset();
    }

    bool ready() const { return gl.valid && shadersLoaded; }

    TestRoot root;
    GlTestContext gl;
    SceneLight light;
    std::unique_ptr<Settings> settings;
    std::unique_ptr<FileManager> files;
    std::unique_ptr<BufferManager> buffers;
    std::unique_ptr<ShaderLoader> shaders;
    std::unique_ptr<MatrixStack> matrices;
    std::unique_ptr<MaterialLoader> materials;
    std::unique_ptr<TextureLoader> textures;
    bool shadersLoaded = false;
};
