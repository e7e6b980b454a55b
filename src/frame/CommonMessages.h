#pragma once

#include <QCoreApplication>
#include <QString>

// Texts that several windows show, translated once after the translator is
// installed.
class CommonMessages
{
    Q_DECLARE_TR_FUNCTIONS(CommonMessages)
public:
    CommonMessages();
    ~CommonMessages();

    const QString selectTank;
    const QString selectModFolder;
    const QString createDirectoryFailed;
    const QString directoryExists;
    const QString extractTexturesFailed;
    const QString openDirectory;
    const QString selectFile;
    const QString update;
};

extern CommonMessages* commonMessages;
