#include "XmlCommands.h"

#include "BinaryReader.h"
#include "FileManager.h"
#include "PackedXmlReader.h"
#include "ReadFailure.h"
#include "ToolContext.h"

#include <QBuffer>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <memory>

namespace {
// Reads the document, prints it, and gives the exit code.
int printDocument(QIODevice& device, const QString& name)
{
    BinaryReader binary(&device);
    PackedXmlReader reader(&binary);
    ReadFailure failure;
    const QDomDocument document = reader.read(name, failure);

    // What was read before a fault is still worth seeing.
    const QByteArray text = document.toString(1).toUtf8();
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout);

    // Ferrox would close on the failure, so the command fails.
    if (failure.failed()) {
        printError(failure.message());
        return 1;
    }
    if (document.documentElement().isNull()) {
        printError(QStringLiteral("Not a readable XML document: ") + name);
        return 1;
    }
    return 0;
}
} // namespace

int xmlCommand(const ToolArguments& arguments)
{
    if (arguments.positional.size() < 1 || arguments.positional.size() > 2) {
        printError(QStringLiteral(
            "usage: ferrox-tool xml FILE_OR_NAME [GAME_DIR] [--mod DIR] [--resources FILE]"));
        return 2;
    }
    const QString name = arguments.positional[0];
    QByteArray bytes;
    if (!readFileOrResource(name, arguments.positional.value(1), arguments, bytes))
        return 1;
    QBuffer device(&bytes);
    device.open(QIODevice::ReadOnly);
    return printDocument(device, name);
}
