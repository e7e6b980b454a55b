"""Puts the sample installation together: the marker, the version file,
the archives in search order, loose files, game data and catalogues, the
program's archive and nation lists, and the stamp that lets a re-run with
the same arguments return at once. Everything is deterministic: the same
arguments give byte-identical files (fixed zip timestamps and attributes,
seeded random numbers, fixed member order)."""
import argparse
import hashlib
import shutil
import sys
from pathlib import Path

from .archives import DEFLATED, STORED, Member, large_table_text, placeholder, text_member
from .archives import hangar_members, png_member, write_package
from .bulk import BULK_MEMBERS_PER_ARCHIVE, bulk_members, bulk_package_name
from .catalogues import MSGFMT_MISSING, GenerationError, write_catalogues
from .game_data import (BULK_DEFS_PACKAGE, BULK_VEHICLES_PER_SCALE, SAMPLE_NATIONS, all_nations,
                        bulk_nations, game_data_members, mod_files, write_game_data_files,
                        write_tank_list)
from .garages import GARAGE_PACKAGES, garage_members, shared_model_members
from .hostile import HOSTILE_NATIONS, generate_hostile
from .vehicles import (CLASS_TANKS, EXTRA_MODEL_FOLDERS, SAMPLE_TANKS, heavy_members,
                       vehicles_level_members)

PACKAGE_DIR = Path(__file__).resolve().parent
ENTRY_POINT = PACKAGE_DIR.parent / "make_sample_game.py"

# Bump when the output changes in a way a stamp digest would not show.
GENERATOR_VERSION = 3
STAMP_NAME = ".ferrox-sample-stamp"
MOD_MARKER_NAME = ".ferrox-sample-mod"  # marks a mod folder as written here

MARKER_NAME = "Gavrel.exe"
RESOURCES_LIST_NAME = "ferrox-resources.cfg"
TANK_LIST_NAME = "ferrox-tank_list.cfg"
GAME_VERSION_TEXT = "\tv.0.9.14 \n #417\t"  # read back simplified: "v.0.9.14 #417"
BROKEN_PACKAGE = "broken_not_a_zip.pkg"


# ------------------------------------------------------ installation files

def write_marker(out):
    """The executable whose presence marks a game folder (content unused)."""
    (out / MARKER_NAME).write_bytes(
        b"MZ" + bytes(62)
        + b"\r\nFerrox sample installation of Gavrel: placeholder executable.\r\n")


def write_version(out):
    (out / "version.xml").write_text(
        f"<version.xml>\n\t<version>{GAME_VERSION_TEXT}</version>\n</version.xml>\n",
        encoding="utf-8", newline="\n")


def write_resources_list(path, packages):
    """The archive list in the program's format: <Zip> elements in search order."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>', "<resources>"]
    lines += [f" <Zip>{name}</Zip>" for name in packages]
    lines += ["</resources>", ""]
    path.write_text("\n".join(lines), encoding="utf-8", newline="\n")


def write_loose_files(res):
    """Files lying directly below res/; one also exists in gui.pkg under the
    same name with other content (the loose file must win)."""
    files = {
        "text/Loose_Note.txt": "a loose note below res/",
        "gui/Loose_Override.txt": "from the loose res folder (overrides gui.pkg)",
        "scripts/Item_Defs/Loose_Items.xml": "a loose definition file",
    }
    for name, note in files.items():
        path = res / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(placeholder("res", name, note))


def write_broken_package(packages_dir):
    """A .pkg that is not a zip at all (only with --with-broken)."""
    line = b"This file is not a zip archive; readers must refuse it.\n"
    (packages_dir / BROKEN_PACKAGE).write_bytes((line * 6)[:300])


def shared_content_members():
    a = "shared_content.pkg"
    return [
        text_member(a, "text/Readme_Shared.txt", "from shared_content", STORED),
        text_member(a, "text/Case_Twin.txt", "case twin from shared_content", STORED),
        Member("text/Empty_Member.txt", b"", STORED),
        Member("text/Large_Deflated_Table.txt", large_table_text(200 * 1024), DEFLATED),
        *shared_model_members(),
        text_member(a, "system/Data/Material_Kinds.xml", compress=DEFLATED),
    ]



def gui_members():
    a = "gui.pkg"
    members = [png_member(a, f"gui/Maps/Icons/vehicle/{nation.lower()}-{tank}.png")  # stored
               for tanks in (*SAMPLE_TANKS.values(), *CLASS_TANKS.values())
               for nation, tank in tanks]
    members += [
        text_member(a, "gui/Loose_Override.txt",
                    "from gui.pkg (the loose res file must win)", STORED),
        text_member(a, "gui/Settings/Gui_Settings.xml", compress=DEFLATED),
        text_member(a, "text/Readme_Shared.txt", "from gui", DEFLATED),
        text_member(a, "text/CASE_TWIN.txt", "case twin from gui", DEFLATED),
        Member("text/Empty_Deflated.txt", b"", DEFLATED),
    ]
    return members


def small_packages():
    """The scale-1 archives in search order, each as (file name, members);
    the game data files of the sample nations follow each archive's own
    members."""
    packages = [
        ("shared_content.pkg", shared_content_members()),
        *[(name, vehicles_level_members(name, tanks + EXTRA_MODEL_FOLDERS.get(name, [])
                                        + CLASS_TANKS[name]))
          for name, tanks in SAMPLE_TANKS.items()],
        ("gui.pkg", gui_members()),
        ("hangar_premium.pkg", hangar_members("hangar_premium.pkg", "Hangar_Premium", 96 * 1024)),
        ("hangar_basic.pkg", hangar_members("hangar_basic.pkg", "Hangar_Basic")),
    ]
    return [(name, members + game_data_members(SAMPLE_NATIONS, name))
            for name, members in packages]


# ------------------------------------------------------------ putting together

def generate(out, scale, with_broken):
    """Writes the whole installation into the (empty) folder out."""
    nations = all_nations(scale)
    write_marker(out)
    write_version(out)
    res = out / "res"
    packages_dir = res / "packages"
    packages_dir.mkdir(parents=True)
    listed = []
    for name, members in small_packages():
        write_package(packages_dir / name, members)
        listed.append(name)
    if scale >= 2:
        for index in range(scale):
            name = bulk_package_name(index)
            write_package(packages_dir / name, bulk_members(index))
            listed.append(name)
        bulk = bulk_nations(scale)
        heavy = bulk[0].vehicles[0]  # its vehicle file names these model files
        write_package(packages_dir / BULK_DEFS_PACKAGE,
                      game_data_members(bulk, BULK_DEFS_PACKAGE)
                      + heavy_members(bulk[0].data_name, heavy.model_folder))
        listed.append(BULK_DEFS_PACKAGE)
    for space, name in GARAGE_PACKAGES.items():
        write_package(packages_dir / name, garage_members(space))
        listed.append(name)
    write_loose_files(res)
    write_game_data_files(res, nations)
    write_catalogues(res / "text" / "LC_MESSAGES", nations)
    if with_broken:
        write_broken_package(packages_dir)
    write_resources_list(out / RESOURCES_LIST_NAME, listed)
    write_tank_list(out / TANK_LIST_NAME, nations)


def write_hostile(out):
    """The hostile installation and the program's lists for it."""
    listed = generate_hostile(out, write_marker, write_version)
    write_resources_list(out / RESOURCES_LIST_NAME, listed)
    write_tank_list(out / TANK_LIST_NAME, HOSTILE_NATIONS)


def write_mod_folder(mod_out):
    """The mod folder beside the game: files that the program finds before
    the game's own."""
    for name, data in mod_files(SAMPLE_NATIONS):
        path = mod_out / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(data)
    (mod_out / MOD_MARKER_NAME).write_text("written by make_sample_game.py\n", encoding="utf-8")


def generator_sources():
    """The files whose bytes decide the output (the self-checks do not)."""
    modules = sorted(p for p in PACKAGE_DIR.glob("*.py") if not p.name.startswith("test_"))
    return [ENTRY_POINT] + modules


def stamp_text(scale, with_broken, hostile=False):
    """Generator version, a digest of this script and the arguments: a stamp
    that matches means the folder already holds exactly this output."""
    digest = hashlib.sha256()
    for source in generator_sources():
        digest.update(source.read_bytes())
    return (f"ferrox sample generator {GENERATOR_VERSION}\n"
            f"script sha256 {digest.hexdigest()}\n"
            f"scale {scale}\n"
            f"with-broken {int(with_broken)}\n"
            f"hostile {int(hostile)}\n")


def clear_folder(out):
    """Removes what is inside out (never out itself, never through a link)."""
    for entry in out.iterdir():
        if entry.is_dir() and not entry.is_symlink():
            shutil.rmtree(entry)
        else:
            entry.unlink()


def positive_int(text):
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError("must be 1 or more")
    return value


def parse_arguments(argv):
    parser = argparse.ArgumentParser(
        description="Writes a sample installation of the game Gavrel into a folder.")
    parser.add_argument("--out", required=True, type=Path, help="folder to write into")
    parser.add_argument("--scale", type=positive_int, default=1,
                        help="1: the small sample (default); N >= 2 adds N bulk "
                             f"archives of {BULK_MEMBERS_PER_ARCHIVE} members each and "
                             f"{BULK_VEHICLES_PER_SCALE} * N vehicles in extra nations")
    parser.add_argument("--mod-out", type=Path,
                        help="also write a mod folder with files that override the game's")
    parser.add_argument("--force", action="store_true",
                        help="rewrite even when the stamp says the folder is up to date")
    parser.add_argument("--hostile", action="store_true",
                        help="write the hostile installation instead: a sound vehicle and "
                             "one vehicle for each way a game folder can be broken")
    parser.add_argument("--with-broken", action="store_true",
                        help=f"also write res/packages/{BROKEN_PACKAGE} (not a zip, not listed)")
    return parser.parse_args(argv)


def main(argv=None):
    args = parse_arguments(argv)
    out = args.out
    stamp_path = out / STAMP_NAME
    mod_out = args.mod_out
    wanted = (stamp_text(args.scale, args.with_broken, args.hostile)
              + f"mod-out {mod_out and mod_out.resolve()}\n")

    if out.exists() and not out.is_dir():
        print(f"make_sample_game: {out} exists and is not a folder", file=sys.stderr)
        return 2
    if out.is_dir():
        has_stamp = stamp_path.is_file()
        if (has_stamp and not args.force and (out / MARKER_NAME).is_file()
                and stamp_path.read_text(encoding="utf-8") == wanted
                and (not mod_out or (mod_out / MOD_MARKER_NAME).is_file())):
            return 0
    for folder, marker in ((out, STAMP_NAME), (mod_out, MOD_MARKER_NAME)):
        if folder and folder.exists() and (not folder.is_dir() or (
                not (folder / marker).is_file() and any(folder.iterdir()))):
            print(f"make_sample_game: {folder} is not an empty folder written by this "
                  "generator; refusing to replace its contents", file=sys.stderr)
            return 2
    if not shutil.which("msgfmt"):  # before anything of an older run goes
        print(MSGFMT_MISSING, file=sys.stderr)
        return 3
    for folder in (out, mod_out):
        if folder and folder.is_dir():
            clear_folder(folder)
    out.mkdir(parents=True, exist_ok=True)

    # A stamp that matches no arguments marks the folder as ours while it is
    # written, so an interrupted run is redone by the next one.
    stamp_path.write_text("incomplete\n", encoding="utf-8")
    try:
        if args.hostile:
            write_hostile(out)
        else:
            generate(out, args.scale, args.with_broken)
        if mod_out:
            mod_out.mkdir(parents=True, exist_ok=True)
            write_mod_folder(mod_out)
    except GenerationError as error:
        print(error, file=sys.stderr)
        return 3
    stamp_path.write_text(wanted, encoding="utf-8", newline="\n")
    return 0
