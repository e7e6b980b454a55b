#pragma once

struct ToolArguments;

// weakspots GAME_DIR NAME (--shell NAME | --pen MM [--calibre MM] [--type T])
// [--distance M] --out FILE [--size WxH] [--camera FILE] [--yaw DEG]
// [--turret-yaw DEG] [--gun-pitch DEG] [--json]: the chance to penetrate
// along the view ray of every pixel, as a picture (red 0, yellow, green 1);
// with --json also the share of the silhouette at each verdict.
int weakSpotsCommand(const ToolArguments& arguments);
