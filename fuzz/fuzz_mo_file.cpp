// Message catalogues from arbitrary bytes: loading must reject every bad
// offset, and lookups on a loaded catalogue (keys it holds, their case
// variants and keys it lacks) must stay inside the data and end.

#include "MoFile.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>

namespace {
void lookUp(const MoFile& file, const QString& key)
{
    QString translation;
    if (file.lookup(key, &translation) && file.find(key) < 0)
        __builtin_trap(); // a found key has an index
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool quiet = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    Q_UNUSED(quiet);

    MoFile file;
    if (!file.loadFromBytes(QByteArray(reinterpret_cast<const char*>(data), int(size))))
        return 0;

    lookUp(file, QString());
    lookUp(file, QStringLiteral("nations/ardenia"));
    lookUp(file, QStringLiteral("carousel_tank_filter/all"));
    const int count = qMin<int>(file.keys.size(), 8);
    for (int i = 0; i < count; ++i) {
        lookUp(file, file.keys[i]);
        lookUp(file, file.keys[i].toUpper());
        file.translation(i + 1);
    }
    return 0;
}
