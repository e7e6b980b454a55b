#pragma once

class RenderWidget;

// Makes the CamoLoader when the viewport's GL starts, after the vehicle's
// loader (install this after installVehicleLoader), so that it hooks into
// the vehicle table's rebuild and the vehicle's loads; the widget owns it
// and deletes it with its context current.
void installCamoLoader(RenderWidget& widget);
