#pragma once

struct ToolArguments;

// armor GAME_DIR NAME --from X,Y,Z --to X,Y,Z [--calibre MM]
// [--type AP|APCR|HE|HEAT] [--norm DEG] [--turret NAME] [--gun NAME]
// [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG] [--json]: one shell
// fired as the viewport fires it, in the program's (mirrored) space, and
// the plates it meets as the armour dock reports them.
// armor GAME_DIR NAME --table: the armour tables read for the vehicle.
int armorCommand(const ToolArguments& arguments);
