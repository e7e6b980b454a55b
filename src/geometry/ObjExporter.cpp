#include "ObjExporter.h"

#include "Mesh.h"
#include "MeshGeometry.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {

QByteArray number(float value)
{
    return QString::number(double(value), 'g', 6).toLatin1();
}

QByteArray line(const char* key, std::initializer_list<float> values)
{
    QByteArray out(key);
    for (float value : values)
        out += ' ' + number(value);
    return out + '\n';
}

// M x (x, y, z, w); with w 0 the translation stays out of x, y and z, but
// the w row still takes M's last element, as a direction written with w 1
// would show it.
Vector4 product(const Matrix& M, const Vector3& v, bool withTranslation)
{
    Vector4 out;
    for (int row = 0; row < 4; ++row) {
        const float translation = (withTranslation || row == 3) ? M[12 + row] : 0.0f;
        out[row] = M[row] * v[0] + M[4 + row] * v[1] + M[8 + row] * v[2] + translation;
    }
    return out;
}

} // namespace

ObjExporter::ObjExporter(const QString& rootFolder) : root(rootFolder) {}

QString ObjExporter::fileName(const QString& modelPath, int index) const
{
    QString relative = modelPath;
    relative.remove(QStringLiteral(".model"));
    return QDir::toNativeSeparators(QDir(root).filePath(relative) + QLatin1Char('_') +
                                    QString::number(index) + QStringLiteral(".obj"));
}

QByteArray ObjExporter::text(const MeshGeometry& geometry, const Matrix& M)
{
    QByteArray vertices, normals, coordinates, faces;
    for (const Vector3& p : geometry.positions) {
        const Vector4 v = product(M, p, true);
        vertices += line("v", {v[0], v[1], v[2], v[3]});
    }
    for (const Vector3& n : geometry.normals) {
        const Vector4 v = product(M, n, false);
        normals += line("vn", {v[0], v[1], v[2], v[3]});
    }
    for (const Vector2& uv : geometry.uvs)
        coordinates += line("vt", {uv[0], -uv[1]});
    const QVector<quint16>& indices = geometry.indices16;
    for (int i = 0; i + 2 < indices.size(); i += 3) {
        faces += "f";
        for (int corner = 0; corner < 3; ++corner) {
            const QByteArray index = QByteArray::number(int(indices[i + corner]) + 1);
            faces += ' ' + index + '/' + index + '/' + index;
        }
        faces += '\n';
    }
    return "#Ferrox Obj Exporter\n# Vertices\n" + vertices + "# Normals\n" + normals +
           "# Texture Coords\n" + coordinates + "g " + geometry.name.toUtf8() + "\n# Faces\n" +
           faces;
}

bool ObjExporter::writeFile(const QString& path, const QByteArray& content)
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    file.write(content);
    return file.commit();
}

bool ObjExporter::exportMesh(const Mesh& mesh, const Matrix& placement)
{
    for (int i = 0; i < mesh.geometries.size(); ++i) {
        if (!writeFile(fileName(mesh.path, i), text(*mesh.geometries[i], placement)))
            return false;
    }
    return true;
}
