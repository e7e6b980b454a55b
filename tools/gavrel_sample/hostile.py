"""The hostile installation: one sound vehicle and, beside it, one vehicle
for each way a game folder can let the program down. Each case is named
after what is wrong with it, so that a test that loads it by name says
what it checks. The program's own lists (ferrox-resources.cfg and
ferrox-tank_list.cfg) lie in the folder, as in the showcase; the run
command never opens this folder, the tests and the fuzzers do."""
import struct
import zlib
from dataclasses import replace

from . import shapes
from .archives import DEFLATED, STORED, Member, write_package
from .catalogues import write_catalogues
from .game_data import (CAMO_PATTERNS_PER_SEASON, MEDIUM, SEASONS, Nation, Vehicle,
                        camo_texture_path, nation_files, vehicle_tree, write_game_data_files)
from .garages import GARAGE_PACKAGES, garage_members
from .models import xml_file
from .textures import dds_bytes
from .vehicles import (collision_model_files, tank_folder, vehicle_model_files, vehicle_parts,
                       vehicle_texture_files)

HOSTILE_PACKAGE = "hostile_vehicles.pkg"


def case(model, name):
    return Vehicle(model, name, MEDIUM, 5)


SOUND = case("H00_Sound_Vehicle", "Sound Vehicle")
NO_TURRET = case("H01_No_Turret", "No Turret")
TURRET_WITHOUT_GUN = case("H02_Turret_Without_Gun", "Turret Without Gun")
EMPTY_DOCUMENT = case("H04_Empty_Document", "Empty Document")
MISSING_MODEL = case("H05_Missing_Model", "Missing Model")
TRUNCATED_MEMBER = case("H06_Truncated_Member", "Truncated Member")
BROKEN_DDS = case("H07_Broken_DDS", "Broken DDS")
NO_VEHICLE_FILE = case("H08_No_Vehicle_File", "No Vehicle File")
MASK_COUNT_MISMATCH = case("H09_Mask_Count_Mismatch", "Mask Count Mismatch")
MISSING_GUN_FILE = case("G01_Missing_Gun_File", "Missing Gun File")
NO_CAMOUFLAGE_CATALOGUE = case("N01_No_Camouflage_Catalogue", "No Camouflage Catalogue")
# Another nation's vehicle under the sound vehicle's display name.
SOUND_TWIN = case("N02_Sound_Vehicle_Twin", "Sound Vehicle")

HOSTILE = Nation("hostile", "Hostile", "Hostile", (
    SOUND, NO_TURRET, TURRET_WITHOUT_GUN, EMPTY_DOCUMENT, MISSING_MODEL, TRUNCATED_MEMBER,
    BROKEN_DDS, NO_VEHICLE_FILE, MASK_COUNT_MISMATCH,
), defs_archive=HOSTILE_PACKAGE)
# A nation whose folder has no components/guns.xml: its vehicle's guns are
# shared, so the loader has nothing to read their names and limits from.
WITHOUT_GUN_FILE = Nation("hostile_guns", "Hostile", "Hostile Without Gun File",
                          (MISSING_GUN_FILE,), defs_archive=HOSTILE_PACKAGE,
                          has_camouflage=False)
# A nation without customization.xml: its sound vehicles have no patterns.
WITHOUT_CATALOGUE = Nation("no_catalogue", "Hostile", "No Catalogue",
                           (NO_CAMOUFLAGE_CATALOGUE, SOUND_TWIN),
                           defs_archive=HOSTILE_PACKAGE, has_camouflage=False)
HOSTILE_NATIONS = (HOSTILE, WITHOUT_GUN_FILE, WITHOUT_CATALOGUE)

# Vehicles whose model files are their own (the others have none, or share
# the sound vehicle's): the broken member or texture lies in their folder.
OWN_MODELS = (SOUND, TRUNCATED_MEMBER, BROKEN_DDS)
SHAPE = shapes.SHAPES[MEDIUM]


def model_folder(vehicle):
    """Where a case's file points: the sound models unless it has its own."""
    if vehicle in OWN_MODELS or vehicle == MISSING_MODEL:
        return vehicle.model
    return SOUND.model


def hostile_vehicle_file(nation, vehicle):
    """The vehicle file of a case, or None when the case has none."""
    if vehicle == NO_VEHICLE_FILE:
        return None
    if vehicle == EMPTY_DOCUMENT:
        return b""
    tree = vehicle_tree(nation, replace(vehicle, folder=model_folder(vehicle)))
    if vehicle == NO_TURRET:
        del tree["turrets0"]
    if vehicle == TURRET_WITHOUT_GUN:
        _, turret = tree["turrets0"].children[0]
        del turret["guns"]
    if vehicle == MASK_COUNT_MISMATCH:  # the vehicle's mask alone, for three paintable maps
        _, turret = tree["turrets0"].children[0]
        del turret["camouflage"]
        gun = turret["guns"].children[0][1]
        gun.children = [child for child in gun.children if child[0] != "camouflage"]
    return xml_file(f"{vehicle.model}.xml", tree, False)


def deflated_third(data):
    """The first third of data's raw deflate stream."""
    compressor = zlib.compressobj(9, zlib.DEFLATED, -15)
    stream = compressor.compress(data) + compressor.flush()
    return stream[:len(stream) // 3]


def cut_member_short(path, name, whole):
    """Turns the stored member name of the archive at path, which holds the
    first third of whole's deflate stream, into a deflated member that
    claims to be whole: method, CRC and size in its local and central
    headers say so, the compressed size is that of the third."""
    data = bytearray(path.read_bytes())
    fields = struct.pack("<H", 8), struct.pack("<II", zlib.crc32(whole), len(whole))
    encoded = name.encode("utf-8")
    local = data.index(b"PK\x03\x04")
    while data[local + 30:local + 30 + len(encoded)] != encoded:
        local = data.index(b"PK\x03\x04", local + 4)
    data[local + 8:local + 10] = fields[0]
    data[local + 14:local + 18] = fields[1][:4]
    data[local + 22:local + 26] = fields[1][4:]
    central = data.index(b"PK\x01\x02")
    while data[central + 46:central + 46 + len(encoded)] != encoded:
        central = data.index(b"PK\x01\x02", central + 4)
    data[central + 10:central + 12] = fields[0]
    data[central + 16:central + 20] = fields[1][:4]
    data[central + 24:central + 28] = fields[1][4:]
    path.write_bytes(bytes(data))


def broken_dds(data):
    """The header of a 128 x 128 DXT1 texture with its mip maps, and a
    fraction of the texels it promises."""
    return data[:128 + 200]


def model_members(vehicle):
    folder = tank_folder(HOSTILE.data_name, vehicle.model)
    files = (vehicle_model_files(HOSTILE.data_name, vehicle.model, 1, SHAPE)
             + vehicle_texture_files(HOSTILE.data_name, vehicle.model)
             + collision_model_files(folder, [p[0] for p in vehicle_parts(vehicle.model, 1, SHAPE)],
                                     1, SHAPE))
    members = []
    for path, data in files:
        compress = DEFLATED if ".primitives" in path else STORED
        if vehicle == BROKEN_DDS and path.endswith("/Hull_AM.dds"):
            data = broken_dds(data)
        if path == truncated_member_name():
            data, compress = deflated_third(data), STORED
        members.append(Member(path, data, compress))
    return members


def hostile_members():
    """The members of the hostile archive: models, then each nation's files."""
    members = []
    for vehicle in OWN_MODELS:
        members += model_members(vehicle)
    members += [Member(path, dds_bytes(path), STORED) for path in dict.fromkeys(
        camo_texture_path(HOSTILE, season, number) for season in SEASONS
        for number in range(1, CAMO_PATTERNS_PER_SEASON + 1))]
    for nation in HOSTILE_NATIONS:
        for name, data, _ in nation_files(nation):
            vehicle = next((v for v in nation.vehicles if name.endswith(f"/{v.model}.xml")), None)
            if vehicle:
                data = hostile_vehicle_file(nation, vehicle)
            elif nation == WITHOUT_GUN_FILE and name.endswith("/components/guns.xml"):
                data = None
            if data is not None:
                members.append(Member(name, data, DEFLATED))
    return members


def truncated_member_name():
    """The member that write_hostile_package cuts short."""
    return f"{tank_folder(HOSTILE.data_name, TRUNCATED_MEMBER.model)}/normal/lod0/Hull.primitives"


def whole_truncated_member():
    return dict(vehicle_model_files(HOSTILE.data_name, TRUNCATED_MEMBER.model, 1, SHAPE))[
        truncated_member_name()]


def write_hostile_package(packages_dir):
    path = packages_dir / HOSTILE_PACKAGE
    write_package(path, hostile_members())
    cut_member_short(path, truncated_member_name(), whole_truncated_member())
    return HOSTILE_PACKAGE


def generate_hostile(out, write_marker, write_version):
    """Writes the hostile installation into the (empty) folder out and
    returns its archives in search order; the marker and version writers
    of every installation come from the caller."""
    write_marker(out)
    write_version(out)
    res = out / "res"
    packages_dir = res / "packages"
    packages_dir.mkdir(parents=True)
    listed = [write_hostile_package(packages_dir)]
    for space, name in GARAGE_PACKAGES.items():
        write_package(packages_dir / name, garage_members(space))
        listed.append(name)
    write_game_data_files(res, HOSTILE_NATIONS)
    write_catalogues(res / "text" / "LC_MESSAGES", HOSTILE_NATIONS)
    return listed
