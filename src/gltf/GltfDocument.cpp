#include "GltfDocument.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <limits>
#include <sstream>

namespace {

constexpr int ArrayBuffer = TINYGLTF_TARGET_ARRAY_BUFFER;
constexpr int ElementArrayBuffer = TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER;

// Images whose uri is already set stand where the document put them: the
// writer only names them.
bool keepImageUri(const std::string*, const std::string*, const tinygltf::Image* image, bool,
                  std::string* uri, void*)
{
    *uri = image->uri;
    return true;
}

bool saveWhole(const QString& path, const QByteArray& bytes, QString* error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    *error = QStringLiteral("Cannot write %1: %2")
                 .arg(QDir::toNativeSeparators(path), file.errorString());
    return false;
}

// Every view starts on a 4-byte boundary, as float and int accessors need.
int appendView(tinygltf::Model& model, QByteArray& data, const QByteArray& bytes, int target)
{
    data.append(QByteArray((4 - data.size() % 4) % 4, '\0'));
    tinygltf::BufferView view;
    view.buffer = 0;
    view.byteOffset = size_t(data.size());
    view.byteLength = size_t(bytes.size());
    view.target = target;
    data.append(bytes);
    model.bufferViews.push_back(view);
    return int(model.bufferViews.size()) - 1;
}

} // namespace

GltfDocument::GltfDocument()
{
    model.asset.version = "2.0";
    model.asset.generator = "Ferrox";
}

int GltfDocument::addView(const QByteArray& bytes, int target)
{
    return appendView(model, data, bytes, target);
}

int GltfDocument::addFloats(const QVector<float>& values, int components, bool bounds)
{
    tinygltf::Accessor accessor;
    accessor.bufferView = addView(QByteArray(reinterpret_cast<const char*>(values.constData()),
                                             qsizetype(values.size() * sizeof(float))),
                                  ArrayBuffer);
    accessor.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
    accessor.count = size_t(values.size() / components);
    accessor.type = components == 2   ? TINYGLTF_TYPE_VEC2
                    : components == 3 ? TINYGLTF_TYPE_VEC3
                                      : TINYGLTF_TYPE_VEC4;
    if (bounds) {
        accessor.minValues.assign(size_t(components), std::numeric_limits<double>::max());
        accessor.maxValues.assign(size_t(components), std::numeric_limits<double>::lowest());
        for (int i = 0; i < values.size(); ++i) {
            double& low = accessor.minValues[size_t(i % components)];
            double& high = accessor.maxValues[size_t(i % components)];
            low = std::min(low, double(values[i]));
            high = std::max(high, double(values[i]));
        }
    }
    model.accessors.push_back(accessor);
    return int(model.accessors.size()) - 1;
}

int GltfDocument::addIndices(const QVector<quint32>& indices)
{
    const quint32 largest =
        indices.isEmpty() ? 0 : *std::max_element(indices.begin(), indices.end());
    tinygltf::Accessor accessor;
    QByteArray bytes;
    // 65535 is the primitive restart value that glTF forbids as an index.
    if (largest < 65535) {
        QVector<quint16> narrow(indices.begin(), indices.end());
        bytes = QByteArray(reinterpret_cast<const char*>(narrow.constData()),
                           qsizetype(narrow.size() * sizeof(quint16)));
        accessor.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    } else {
        bytes = QByteArray(reinterpret_cast<const char*>(indices.constData()),
                           qsizetype(indices.size() * sizeof(quint32)));
        accessor.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    }
    accessor.bufferView = addView(bytes, ElementArrayBuffer);
    accessor.count = size_t(indices.size());
    accessor.type = TINYGLTF_TYPE_SCALAR;
    model.accessors.push_back(accessor);
    return int(model.accessors.size()) - 1;
}

int GltfDocument::addPngTexture(const QByteArray& png, const QString& name)
{
    // Numbered, so that two textures of one name keep two files.
    QString safe = name;
    safe.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9_-]")), QStringLiteral("_"));
    pngs.append({png, QStringLiteral("%1_%2.png").arg(pngs.size()).arg(safe)});
    tinygltf::Image image;
    image.name = name.toStdString();
    image.mimeType = "image/png";
    model.images.push_back(image);
    if (model.samplers.empty()) {
        tinygltf::Sampler sampler;
        sampler.magFilter = TINYGLTF_TEXTURE_FILTER_LINEAR;
        sampler.minFilter = TINYGLTF_TEXTURE_FILTER_LINEAR_MIPMAP_LINEAR;
        sampler.wrapS = TINYGLTF_TEXTURE_WRAP_REPEAT;
        sampler.wrapT = TINYGLTF_TEXTURE_WRAP_REPEAT;
        model.samplers.push_back(sampler);
    }
    tinygltf::Texture texture;
    texture.sampler = 0;
    texture.source = int(model.images.size()) - 1;
    model.textures.push_back(texture);
    return int(model.textures.size()) - 1;
}

QString GltfDocument::imageFolder(const QString& gltfPath)
{
    const QFileInfo info(gltfPath);
    return info.absoluteDir().filePath(info.completeBaseName());
}

QByteArray GltfDocument::serialised(bool binary, const QString& folderName) const
{
    tinygltf::Model out = model;
    QByteArray bytes = data;
    for (int i = 0; i < pngs.size(); ++i) {
        tinygltf::Image& image = out.images[size_t(i)];
        if (binary) {
            // After the geometry, in the one buffer of the .glb.
            image.bufferView = appendView(out, bytes, pngs[i].bytes, 0);
        } else {
            image.uri = (folderName + QLatin1Char('/') + pngs[i].fileName).toStdString();
            image.mimeType.clear();
        }
    }
    // Everything hidden leaves nodes alone, and glTF has no empty buffer.
    if (!bytes.isEmpty()) {
        tinygltf::Buffer buffer;
        buffer.data.assign(bytes.begin(), bytes.end());
        out.buffers.push_back(std::move(buffer));
    }
    tinygltf::TinyGLTF writer;
    writer.SetImageWriter(keepImageUri, nullptr);
    std::ostringstream stream;
    if (!writer.WriteGltfSceneToStream(&out, stream, !binary, binary))
        return QByteArray();
    const std::string text = stream.str();
    return QByteArray(text.data(), qsizetype(text.size()));
}

bool GltfDocument::write(const QString& path, QString* error) const
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("gltf"))
        return writeLoose(path, error);
    if (suffix != QLatin1String("glb")) {
        *error = QStringLiteral("A glTF file ends in .glb or .gltf: ") + path;
        return false;
    }
    const QByteArray bytes = serialised(true, QString());
    if (bytes.isEmpty()) {
        *error = QStringLiteral("The glTF writer failed for ") + path;
        return false;
    }
    return saveWhole(path, bytes, error);
}

// The images first, each whole; the .gltf last, so that a file that exists
// finds its images. A failure takes away what this write made.
bool GltfDocument::writeLoose(const QString& path, QString* error) const
{
    const QString folder = imageFolder(path);
    const QString folderName = QFileInfo(folder).fileName();
    const bool folderMade = !QFileInfo::exists(folder);
    const QByteArray text = serialised(false, folderName);
    if (text.isEmpty()) {
        *error = QStringLiteral("The glTF writer failed for ") + path;
        return false;
    }
    QStringList written;
    bool ok = pngs.isEmpty() || QDir().mkpath(folder);
    if (!ok)
        *error = QStringLiteral("Cannot make the folder ") + QDir::toNativeSeparators(folder);
    for (int i = 0; ok && i < pngs.size(); ++i) {
        const QString file = QDir(folder).filePath(pngs[i].fileName);
        ok = saveWhole(file, pngs[i].bytes, error);
        if (ok)
            written.append(file);
    }
    ok = ok && saveWhole(path, text, error);
    if (!ok) {
        for (const QString& file : std::as_const(written))
            QFile::remove(file);
        if (folderMade)
            QDir().rmdir(folder);
    }
    return ok;
}
