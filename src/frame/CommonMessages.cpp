#include "CommonMessages.h"

CommonMessages* commonMessages = nullptr;

CommonMessages::CommonMessages()
    : selectTank(tr("You must select a tank.")),
      selectModFolder(tr("You must select a mod folder in the application preferences.")),
      createDirectoryFailed(tr("Failed to create directory")),
      directoryExists(tr("Directory already exists.")),
      extractTexturesFailed(tr("Failed to extract textures")), openDirectory(tr("Open Directory")),
      selectFile(tr("Select a file")), update(tr("Update"))
{
    commonMessages = this;
}

CommonMessages::~CommonMessages()
{
    if (commonMessages == this)
        commonMessages = nullptr;
}
