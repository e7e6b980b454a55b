#pragma once

struct ShellParamaters;
struct ToolArguments;
class TurretGunChooser;

// armor GAME_DIR NAME --from X,Y,Z --to X,Y,Z [--calibre MM]
// [--type AP|APCR|HE|HEAT] [--norm DEG] [--turret NAME] [--gun NAME]
// [--yaw DEG] [--turret-yaw DEG] [--gun-pitch DEG] [--json]: one shell
// fired as the viewport fires it, in the program's (mirrored) space, and
// the plates it meets as the armour dock reports them.
// armor GAME_DIR NAME --table: the armour tables read for the vehicle.
int armorCommand(const ToolArguments& arguments);

// --type, --calibre, --norm and --pen into shell; false, said on standard
// error, for a value that is no number or no type.
bool readShellOptions(const ToolArguments& arguments, ShellParamaters* shell);
// --shell NAME of the fitted gun (with --distance): its type, calibre,
// normalisation and penetration, where not given on their own.
bool chooseGunShell(const ToolArguments& arguments, const TurretGunChooser& chooser,
                    ShellParamaters* shell);
