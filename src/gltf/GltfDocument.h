#pragma once

#include "Maths.h"

#include <QByteArray>
#include <QString>
#include <QVector>

#include <tiny_gltf.h>

// A glTF asset under construction: the tinygltf model, one binary buffer
// every accessor points into, and the PNG images, which go into that buffer
// for a .glb and into a folder beside the file for a .gltf. Writes the file
// whole or not at all.
class GltfDocument
{
public:
    GltfDocument();

    // An accessor of elements of components floats each (VEC2 to VEC4);
    // with bounds, its min and max (POSITION needs them).
    int addFloats(const QVector<float>& values, int components, bool bounds);
    // An index accessor, unsigned short when every index fits, else int.
    int addIndices(const QVector<quint32>& indices);
    // A texture on the shared sampler showing this PNG; name becomes the
    // image's file name in a .gltf's folder.
    int addPngTexture(const QByteArray& png, const QString& name);

    // The file by its suffix, .glb or .gltf (with its folder); false with
    // the reason in error, and nothing left behind.
    bool write(const QString& path, QString* error) const;
    // The folder a .gltf keeps its images in: the file's name without its
    // suffix, beside it.
    static QString imageFolder(const QString& gltfPath);

    tinygltf::Model model;

private:
    int addView(const QByteArray& bytes, int target);
    QByteArray serialised(bool binary, const QString& folderName) const;
    bool writeLoose(const QString& path, QString* error) const;

    QByteArray data;
    struct Png
    {
        QByteArray bytes;
        QString fileName;
    };
    QVector<Png> pngs;
};
