"""Bulk archives (--scale N >= 2): N archives of small members over folder
trees like the game's, each repeating some names of the one before it (a
few in another letter case), for benchmarks of the archive index."""
import random

from .archives import (CODENAMES, DEFLATED, MAP_NAMES, NATIONS, STORED, Member, describe,
                       png_member)


# Bulk archives (--scale N >= 2): N archives after the small ones, each with
# this many file members (directory entries come on top).
BULK_MEMBERS_PER_ARCHIVE = 2000
BULK_EXACT_DUPLICATES = 30       # names repeated from the previous bulk archive
BULK_CASE_DUPLICATES = 10        # ... and names repeated with other letter case
BULK_TANKS_PER_ARCHIVE = 50
BULK_MAPS_PER_ARCHIVE = 2


def bulk_package_name(index):
    return f"bulk_content_{index:03d}.pkg"


def bulk_tanks(index):
    """(nation, tank) pairs of bulk archive index; numbers are unique overall."""
    tanks = []
    for j in range(BULK_TANKS_PER_ARCHIVE):
        number = index * BULK_TANKS_PER_ARCHIVE + j
        nation = NATIONS[number % len(NATIONS)]
        codename = CODENAMES[(number // len(NATIONS)) % len(CODENAMES)]
        tanks.append((nation, f"{nation[0]}{number:04d}_{codename}"))
    return tanks


def bulk_vehicle_names(tanks):
    names = []
    for nation, tank in tanks:
        root = f"vehicles/{nation}/{tank}"
        for lod in ("lod0", "lod1"):
            for part in ("Hull", "Chassis", "Turret_01", "Gun_01"):
                names.append(f"{root}/normal/{lod}/{part}.primitives")
                names.append(f"{root}/normal/{lod}/{part}.visual")
        for part in ("Hull", "Chassis", "Turret_01", "Gun_01"):
            names.append(f"{root}/collision_client/{part}.model")
        names.append(f"{root}/crash/lod0/Hull.primitives")
        names.append(f"{root}/crash/lod0/Turret_01.primitives")
        names.append(f"{root}/Tracks/Track_AM.dds")
        names.append(f"{root}/Tracks/Track_NM.dds")
    return names


def bulk_gui_names(index, tanks):
    names = []
    for folder in ("vehicle", "vehicle/small", "vehicle/contour"):
        for nation, tank in tanks:
            names.append(f"gui/Maps/Icons/{folder}/{nation.lower()}-{tank}.png")
    for i in range(300):
        word = CODENAMES[i % len(CODENAMES)]
        names.append(f"gui/Maps/Icons/Achievement/{word}Medal_{index:03d}_{i:03d}.png")
    return names


def bulk_space_names(index):
    names = []
    for m in range(BULK_MAPS_PER_ARCHIVE):
        number = index * BULK_MAPS_PER_ARCHIVE + m
        root = f"spaces/{number:03d}_{MAP_NAMES[number % len(MAP_NAMES)]}"
        names.append(f"{root}/space.settings")
        names.append(f"{root}/Environments/Default/Environment.xml")
        for x in range(-6, 6):
            for y in range(-6, 6):
                cell = f"{x & 0xFFFF:04x}{y & 0xFFFF:04x}o"
                names.append(f"{root}/{cell}.chunk")
                names.append(f"{root}/{cell}.cdata")
    return names


def bulk_own_names(index):
    """The names that belong to bulk archive index alone, in archive order:
    60 % vehicles, 20 % gui icons, 20 % map chunks. The first bulk archive
    has no predecessor to repeat names from, so all its names are its own."""
    own = BULK_MEMBERS_PER_ARCHIVE
    if index > 0:
        own -= BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES
    vehicles = own * 60 // 100
    gui = own * 20 // 100
    spaces = own - vehicles - gui
    tanks = bulk_tanks(index)
    names = (bulk_vehicle_names(tanks)[:vehicles] + bulk_gui_names(index, tanks)[:gui]
             + bulk_space_names(index)[:spaces])
    assert len(names) == own and len(set(names)) == own
    return names


def other_case(name):
    """The same name with the case of its file name turned over."""
    folder, _, leaf = name.rpartition("/")
    return f"{folder}/{leaf.swapcase()}"


def bulk_names(index):
    """All file names of bulk archive index: its own names, then names that
    bulk archive index - 1 also has (some spelt in another case)."""
    names = bulk_own_names(index)
    if index > 0:
        previous = bulk_own_names(index - 1)
        step = len(previous) // (BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES)
        picked = previous[::step][:BULK_EXACT_DUPLICATES + BULK_CASE_DUPLICATES]
        names += picked[:BULK_EXACT_DUPLICATES]
        names += [other_case(n) for n in picked[BULK_EXACT_DUPLICATES:]]
    return names


def filler_pool(seed, size=16384):
    rng = random.Random(seed)
    words = [w.lower() for w in CODENAMES + MAP_NAMES + NATIONS]
    text = []
    length = 0
    while length < size:
        word = rng.choice(words) + (" " if rng.random() < 0.9 else "\n")
        text.append(word)
        length += len(word)
    return "".join(text).encode("ascii")


def bulk_members(index):
    """Members of one bulk archive: tens of bytes to a few KB each, mostly
    stored; about a quarter of the non-image members deflated."""
    archive = bulk_package_name(index)
    rng = random.Random(1000 + index)
    pool = filler_pool(index)
    members = []
    for name in bulk_names(index):
        if name.lower().endswith(".png"):
            members.append(png_member(archive, name))
            continue
        if name.endswith(".primitives") and rng.random() < 0.5:
            size = rng.randrange(1024, 4096)
        else:
            size = rng.randrange(16, 640)
        start = rng.randrange(0, len(pool) - size)
        data = describe(archive, name) + pool[start:start + size]
        compress = DEFLATED if rng.random() < 0.25 else STORED
        members.append(Member(name, data, compress))
    return members

