#include "CamoScene.h"

#include "CamoLoader.h"
#include "RenderWidget.h"

void installCamoLoader(RenderWidget& widget)
{
    widget.addSceneLoaderMaker([](RenderWidget& owner) { return new CamoLoader(&owner); });
}
