"""Game data: nations and their vehicles, vehicle lists, vehicle files,
camouflage catalogues, the category file and the program's nation list.
Where each file goes (loose below res/ or inside an archive, packed or
plain text) is fixed per nation."""
import hashlib
from dataclasses import dataclass

from . import shells
from .archives import CODENAMES, DEFLATED, STORED, Member
from .models import xml_file
from .packed_xml import Element, Floats, encode
from . import shapes
from .textures import dds_bytes

# the category file and the text catalogues. Where each file goes (loose
# below res/ or inside an archive, packed or plain text) is fixed per nation.

from .shapes import ARTY, HEAVY, LIGHT, MEDIUM, TD
CATEGORIES = [  # key in list.xml tags and item_types.xml, display name
    (LIGHT, "Light Tanks"), (MEDIUM, "Medium Tanks"), (HEAVY, "Heavy Tanks"),
    (TD, "Tank Destroyers"), (ARTY, "Artillery"),
]
CATEGORY_ROLES = {LIGHT: "role_scout", MEDIUM: "role_medium_universal",
                  HEAVY: "role_heavy_assault", TD: "role_ATSPG_support", ARTY: "role_SPG"}
MENU_ALL_KEY = "carousel_tank_filter/all"
MENU_ALL_TEXT = "All"
SEASONS = ("summer", "winter", "desert")

# Where files go. "loose": below res/ as a file; a .pkg name: in that archive.
# "plain": text XML; otherwise packed.
LOOSE = "loose"


@dataclass(frozen=True)
class Vehicle:
    model: str                 # element tag in list.xml, name of the vehicle file
    name: str                  # display name (in the nation's catalogue)
    category: str              # first word of tags
    tier: object = None        # level; None: the element has no level
    folder: str = ""           # model folder below DataPath, when not the tag
    not_in_shop: bool = False
    plain_file: bool = False   # vehicle file as text XML

    @property
    def model_folder(self):
        return self.folder or self.model


@dataclass(frozen=True)
class Nation:
    folder: str                # last folder of ResPath, lower case
    data_name: str             # last folder of DataPath
    display: str               # translation of #menu:nations/<folder>
    vehicles: tuple
    list_place: str = LOOSE    # LOOSE or an archive name
    list_plain: bool = False
    camo_plain: bool = False
    defs_archive: str = ""     # archive of the vehicle files and components/guns.xml
    armor_color: tuple = (90, 96, 70, 255)
    has_camouflage: bool = True  # a customization.xml in its folder

    @property
    def res_path(self):
        return f"scripts/item_defs/vehicles/{self.folder}"

    @property
    def data_path(self):
        return f"vehicles/{self.data_name}"

    @property
    def catalogue(self):
        return f"{self.folder}_vehicles"


# Entries that a vehicle list holds but that are no vehicles of the table.
OBSERVER = Vehicle("Observer", "Observer", LIGHT, 1)
TRAINING_DUMMY = Vehicle("A00_training_dummy", "Training Dummy", LIGHT, 1)

SAMPLE_NATIONS = (
    Nation("ardenia", "Ardenia", "Ardenia", (
        TRAINING_DUMMY,
        Vehicle("A01_Talon", "Talon", LIGHT, 1),
        Vehicle("A03_Kestrels_Wrath", "Kestrel's Wrath", TD, 3),
        Vehicle("A05_Harrow", "Harrow", MEDIUM, 5),
        Vehicle("A06_Corvid", "Corvid", ARTY, 6, not_in_shop=True),
        Vehicle("A07_Bastion", "Bastion", HEAVY, 7),
        Vehicle("A10_Falchion", "Falchion", MEDIUM, 10),
        OBSERVER,
    ), defs_archive="vehicles_level_01.pkg", armor_color=(96, 102, 72, 255)),
    Nation("borvia", "Borvia", "Borvia", (
        Vehicle("B01_Kestrel", "Kestrel", LIGHT, 1),
        Vehicle("B02_Training_Hauler", "Training Hauler", LIGHT, 2),
        Vehicle("B04_Skorpion", "Škorpion", TD, 4),
        Vehicle("B05_Prototype", "Prototype", MEDIUM, None),
        Vehicle("B06_Marauder", "Marauder", MEDIUM, 6),
        Vehicle("B08_Sentinel", "Sentinel", HEAVY, 8),
        Vehicle("B09_Hornet", "Hornet", ARTY, 9),
        OBSERVER,
    ), defs_archive="vehicles_level_01.pkg", armor_color=(84, 92, 88, 255)),
    Nation("caldera", "Caldera", "Caldera", (
        Vehicle("C02_Basilisk", "Basilisk", MEDIUM, 2),
        Vehicle("C03_Wyvern_v2", "Wyvern", LIGHT, 3, folder="C03_Wyvern"),
        Vehicle("C05_Ridgeback", "Ridgeback", HEAVY, 5),
        Vehicle("C07_Cinder", "Cinder", ARTY, 7),
        Vehicle("C08_Pike", "Pike", TD, 8),
        Vehicle("C10_Halberd", "Halberd", HEAVY, 10),
    ), list_place="shared_content.pkg", defs_archive="vehicles_level_02.pkg",
        armor_color=(110, 98, 70, 255)),
    Nation("drevnia", "Drevnia", "Drevnia", (
        Vehicle("D02_Ironmoth", "Ironmoth", MEDIUM, 2, plain_file=True),
        Vehicle("D03_Zhuk", "Жук", LIGHT, 3),
        Vehicle("D04_Gorge", "Gorge", ARTY, 4),
        Vehicle("D07_Sentinel", "Warden", TD, 7),
        Vehicle("D09_Vulture", "Vulture", HEAVY, 9),
        Vehicle("D10_Anvil", "Anvil", TD, 10, plain_file=True),
        Vehicle("D05_Proving_Ground", "Proving Ground", MEDIUM, 5),
    ), list_plain=True, camo_plain=True, defs_archive="vehicles_level_02.pkg",
        armor_color=(78, 88, 64, 255)),
)

# Scale >= 2: extra nations with this many vehicles per unit of scale, in
# nations of at most BULK_VEHICLES_PER_NATION; their vehicle files and their
# camouflage texture go into one more archive, listed last.
BULK_VEHICLES_PER_SCALE = 8
BULK_VEHICLES_PER_NATION = 40
BULK_DEFS_PACKAGE = "bulk_vehicle_defs.pkg"


def bulk_nations(scale):
    if scale < 2:
        return ()
    total = scale * BULK_VEHICLES_PER_SCALE
    count = -(-total // BULK_VEHICLES_PER_NATION)
    categories = [key for key, _ in CATEGORIES]
    nations = []
    for n in range(count):
        vehicles = []
        for number in range(n * BULK_VEHICLES_PER_NATION,
                            min(total, (n + 1) * BULK_VEHICLES_PER_NATION)):
            codename = CODENAMES[number % len(CODENAMES)]
            vehicles.append(Vehicle(f"Z{n:02d}_{number:04d}_{codename}",
                                    f"{codename} {number:04d}",
                                    categories[number % len(categories)],
                                    1 + number % 10))
        nations.append(Nation(f"bulk_nation_{n:02d}", f"Bulk_Nation_{n:02d}",
                              f"Bulk Nation {n:02d}", tuple(vehicles),
                              defs_archive=BULK_DEFS_PACKAGE,
                              armor_color=(60 + n % 40, 80, 60, 255)))
    return tuple(nations)


def all_nations(scale):
    return SAMPLE_NATIONS + bulk_nations(scale)


def is_table_vehicle(vehicle):
    """What the vehicle table keeps: no observer, no lower-case training entry."""
    return vehicle.model != "Observer" and "training" not in vehicle.model


def vehicle_list_tree(nation):
    """list.xml: one child per vehicle, its tag the model name. Keys are
    spelt as in the catalogue: a catalogue's hash table is built over the
    exact bytes of each key, so a key in another case is found only when
    its probe sequence happens to pass the entry."""
    children = []
    for v in nation.vehicles:
        entry = [("userString", f"#{nation.catalogue}:{v.model}"),
                 ("description", f"#{nation.catalogue}:{v.model}_descr")]
        if v.tier is not None:
            entry.append(("level", v.tier))
        entry.append(("tags", f"{v.category} {CATEGORY_ROLES[v.category]}"))
        if v.not_in_shop:
            entry.append(("notInShop", True))
        children.append((v.model, Element(None, entry)))
    return Element(None, children)


def gun_tag(vehicle):
    return f"{vehicle.model}_Gun"


def turret_tag(vehicle):
    return f"{vehicle.model}_Turret"


# The vehicles with model files, and the cases of a vehicle file that each
# carries: turrets0 as (turret tag, part, [(gun tag, part)]). Gun tags ending
# in "_Gun" or "_Gun_3" are "shared" (name and limits from components/guns.xml);
# the others carry their own. The first turret and gun are always Turret_01
# and Gun_01.
MODEL_TURRETS = {
    "A01_Talon": [
        ("A01_Talon_Turret", "Turret_01", [("A01_Talon_Gun", "Gun_01"),
                                           ("A01_Talon_Gun_L2", "Gun_02")]),
        ("A01_Talon_Turret_2", "Turret_02", [("A01_Talon_Gun_L2", "Gun_02"),
                                             ("A01_Talon_Gun_3", "Gun_03")])],
    # two turret elements whose names translate alike: one turret, two guns
    "B01_Kestrel": [
        ("B01_Kestrel_Turret", "Turret_01", [("B01_Kestrel_Gun", "Gun_01")]),
        ("B01_Kestrel_Turret_Early", "Turret_01", [("B01_Kestrel_Gun_Early", "Gun_02")])],
    "C02_Basilisk": [
        ("C02_Basilisk_Turret", "Turret_01", [("C02_Basilisk_Gun", "Gun_01"),
                                              ("C02_Basilisk_Gun_L2", "Gun_02")]),
        ("C02_Basilisk_Turret_2", "Turret_02", [("C02_Basilisk_Gun_3", "Gun_03")])],
    "D02_Ironmoth": [
        ("D02_Ironmoth_Turret", "Turret_01", [("D02_Ironmoth_Gun", "Gun_01")]),
        ("D02_Ironmoth_Turret_2", "Turret_02", [("D02_Ironmoth_Gun_L2", "Gun_02"),
                                                ("D02_Ironmoth_Gun_3", "Gun_03")])],
    "C03_Wyvern_v2": [
        ("C03_Wyvern_v2_Turret", "Turret_01", [("C03_Wyvern_v2_Gun", "Gun_01"),
                                               ("C03_Wyvern_v2_Gun_L2", "Gun_02")])],
    "D05_Proving_Ground": [
        ("D05_Proving_Ground_Turret", "Turret_01", [("D05_Proving_Ground_Gun", "Gun_01"),
                                                    ("D05_Proving_Ground_Gun_L2", "Gun_02")])],
}
BORROWED_MODELS = {"D05_Proving_Ground": "D02_Ironmoth"}
# Its hull is a row of plates at known angles (degrees between the plate's
# normal and the vehicle's forward axis) and thicknesses, with a collision
# model of its own; the other parts are those of the vehicle it borrows.
PROVING_GROUND = "D05_Proving_Ground"
PROVING_GROUND_PLATES = [("plate_45", 100, 45), ("plate_75", 100, 75),
                         ("plate_75_heavy", 200, 75)]
# Translations that differ from "<name> turret" and "<name> gun N".
TURRET_TEXTS = {"B01_Kestrel_Turret_Early": "Kestrel turret",
                "C02_Basilisk_Turret_Mod": "Basilisk turret (mod)"}
EXCLUSION_MASK_VEHICLE = "A01_Talon"   # camouflage/exclusionMask of the vehicle
HULL_MASK_VEHICLE = "B01_Kestrel"      # only hull/camouflage/exclusionMask
MASKED_TURRET = "A01_Talon_Turret_2"   # camouflage mask and tiling of its own
MASKED_GUN = "A01_Talon_Gun_L2"        # mask, tiling, turretYawLimits, extraPitchLimits
# Every vehicle has as many masks as paintable diffuse maps, so the camouflage
# bake takes it. A paint-masked vehicle's first turret takes Turret_CM, its
# second Turret_02_CM, its own (not shared) guns Gun_CM, and, unless it has
# only a hull mask, the vehicle takes Tank_CM. A01_Talon's five maps (the
# hull's with its HD copy, running gear, turret, gun) pair with the
# vehicle's mask, one per turret, and the masks of its first two guns; its
# third gun takes the vehicle's mask. The proving ground, on D02_Ironmoth's
# parts, has a turret with two guns for its four maps.
PAINT_MASK_VEHICLES = ("B01_Kestrel", "C02_Basilisk", "D02_Ironmoth", "C03_Wyvern_v2",
                       "D05_Proving_Ground")
OWN_MASKS = {"A01_Talon_Turret": "Turret_01", "A01_Talon_Gun": "Gun_01",
             "D05_Proving_Ground_Gun": "Gun_01"}
TURRET_MASKS = ("Turret", "Turret_02")
MOD_VEHICLE = "C02_Basilisk"           # a changed copy of its file lies in the mod folder
MOD_HULL_HEALTH = 4321


def is_shared_gun(tag):
    return tag.endswith(("_Gun", "_Gun_3"))


def has_class_shape(vehicle):
    """Vehicles of the table other than those with the standard parts above
    (and the one that borrows them) are shaped for their class."""
    return (is_table_vehicle(vehicle) and vehicle.model not in MODEL_TURRETS
            and vehicle.model not in BORROWED_MODELS)


def vehicle_turrets(vehicle):
    """turrets0 of the vehicle as (turret tag, part, [(gun tag, part)])."""
    default = [(turret_tag(vehicle), "Turret_01", [(gun_tag(vehicle), "Gun_01")])]
    return MODEL_TURRETS.get(vehicle.model, default)


def own_gun_tags(nation):
    return [(v, tag) for v in nation.vehicles for _, _, guns in vehicle_turrets(v)
            for tag, _ in guns if not is_shared_gun(tag)]


def vehicle_tree(nation, vehicle, mod=False):
    """A vehicle file: hull, chassis and turrets with their guns, with model
    paths below DataPath/<model folder>, positions, hit points and armour;
    mod: the changed copy that lies in the mod folder."""
    root = f"{nation.data_path}/{BORROWED_MODELS.get(vehicle.model, vehicle.model_folder)}"
    tier = vehicle.tier or 1

    def models(part):
        return {"undamaged": f"{root}/normal/lod0/{part}.model",
                "destroyed": f"{root}/crash/lod0/{part}.model"}

    def hit_tester(part, path=None):
        return {"collisionModel": path or f"{root}/collision_client/{part}.model"}

    def camouflage(kind, tiling=None):
        mask = {"exclusionMask": f"{root}/{kind}_CM.dds"}
        return {**mask, "tiling": Floats(tiling)} if tiling else mask

    shaped = has_class_shape(vehicle)
    shape = shapes.SHAPES[vehicle.category] if shaped else shapes.STANDARD
    digest = hashlib.sha256(f"{nation.folder}/{vehicle.model}".encode("utf-8")).digest()
    hull = {
        "models": models("Hull"),
        "hitTester": hit_tester("Hull"),
        "maxHealth": MOD_HULL_HEALTH if mod else 120 + 60 * tier,
        "turretPositions": {"turret": Floats(*shapes.turret_position(shape)) if shaped
                            else Floats(0.0, 1.1 + 0.05 * tier, -0.25)},
        "emblemSlots": {"slot": {
            "transform": Floats(1, 0, 0, 0, 1, 0, 0, 0, 1, 0.5, 1.25, 2.0),
            "size": Floats(0.6),
            "hideIfDamaged": True,
        }},
        "fingerprint": digest[:8],
        "armor": Element(None, [
            ("armor_1", 20 + 5 * tier),
            ("armor_2", Floats(15.0 + 4 * tier)),
            # spaced armour: a value of its own and a child element
            ("armor_3", Element(8 + tier, {"vehicleDamageFactor": 0})),
            # spaced, as thick as a regular plate; and the surveying device
            ("armor_4", Element(20 + 5 * tier, {"vehicleDamageFactor": 0})),
            ("surveyingDevice", 5),
        ]),
    }
    if vehicle.model == PROVING_GROUND:
        hull["armor"] = {name: thickness for name, thickness, _ in PROVING_GROUND_PLATES}
        hull["hitTester"] = hit_tester(
            "Hull", f"{nation.data_path}/{vehicle.model}/collision_client/Hull.model")
    if vehicle.model == HULL_MASK_VEHICLE:
        hull["camouflage"] = camouflage("Hull")
    chassis_collision = None
    if vehicle.model == "A01_Talon":  # a doubled slash the reader folds
        chassis_collision = f"{root}//collision_client/Chassis.model"
    chassis = {f"{vehicle.model}_Chassis": {
        "models": models("Chassis"),
        "hitTester": hit_tester("Chassis", chassis_collision),
        "maxHealth": 80 + 20 * tier,
        "hullPosition": Floats(0.0, 0.38, 0.0),
        "armor": {"leftTrack": 10, "rightTrack": 10},
    }}

    def gun(tag, part):
        entry = {"models": models(part), "hitTester": hit_tester(part),
                 "armor": {"gun": 15 + 3 * tier}}
        if shaped:
            entry["camouflage"] = camouflage("Gun")
        elif tag in OWN_MASKS:
            entry["camouflage"] = camouflage(OWN_MASKS[tag])
        own_shots = shells.vehicle_shots(tag, tier, is_shared_gun(tag), vehicle.plain_file)
        if own_shots:
            entry["shots"] = own_shots
        if is_shared_gun(tag):  # takes name and limits from components/guns.xml
            return Element("shared", entry)
        entry["pitchLimits"] = "-25 12"
        if vehicle.model in PAINT_MASK_VEHICLES:
            entry["camouflage"] = camouflage("Gun")
        if tag == MASKED_GUN:
            entry.update(turretYawLimits="-30 30", camouflage=camouflage("Gun", (2, 1, 0, 0)),
                         extraPitchLimits=Element(None, [
                             ("front", "10 -2 0"), ("back", "170 -4 0"), ("side", "90 -3 0")]))
        return entry

    turrets = []
    for number, (tag, part, guns) in enumerate(vehicle_turrets(vehicle)):
        key = "C02_Basilisk_Turret_Mod" if mod and tag == turret_tag(vehicle) else tag
        turret = {
            "userString": f"#{nation.catalogue}:{key}",
            "models": models(part),
            "hitTester": hit_tester(part),
            "maxHealth": 60 + 15 * tier,
            "gunPosition": Floats(*shape.gun_joint) if shaped else Floats(0.0, 0.42, 0.95),
        }
        if guns:
            turret["guns"] = Element(None, [(gun_tag_, gun(gun_tag_, gun_part))
                                            for gun_tag_, gun_part in guns])
        turret["armor"] = {"turret_front": 30 + 6 * tier, "turret_side": 20 + 4 * tier}
        if tag == MASKED_TURRET:
            turret["camouflage"] = camouflage("Turret", (1.5, 1.5, 0, 0))
        if vehicle.model in PAINT_MASK_VEHICLES or shaped:
            turret["camouflage"] = camouflage(TURRET_MASKS[min(number, 1)])
        elif tag in OWN_MASKS:
            turret["camouflage"] = camouflage(OWN_MASKS[tag])
        if shaped and shape.yaw_limits:
            turret["yawLimits"] = shape.yaw_limits
        elif vehicle.category in (TD, ARTY):
            turret["yawLimits"] = "-12 12"
        turrets.append((tag, turret))
    tree = {"hull": hull, "chassis": chassis}
    if vehicle.model == EXCLUSION_MASK_VEHICLE or shaped or (
            vehicle.model in PAINT_MASK_VEHICLES and vehicle.model != HULL_MASK_VEHICLE):
        tree = {"camouflage": camouflage("Tank"), **tree}
    if turrets:
        tree["turrets0"] = Element(None, turrets)
    return tree


def nation_guns(nation):
    """(gun tag, tier) of every gun of the nation's vehicles."""
    return [(tag, v.tier or 1) for v in nation.vehicles
            for _, _, guns in vehicle_turrets(v) for tag, _ in guns]


def guns_tree(nation):
    """components/guns.xml: shared/<gun tag> with name and limits."""
    shared = {}
    for v in nation.vehicles:
        for tag in [gun for _, _, guns in vehicle_turrets(v) for gun, _ in guns
                    if is_shared_gun(gun)]:
            entry = {"userString": f"#{nation.catalogue}:{tag}",
                     "pitchLimits": "-20 8" if v.category != ARTY else "-45 0"}
            if v.category in (TD, ARTY):
                entry["turretYawLimits"] = "-12 12"
            shots = shells.shared_shots(tag, v.tier or 1)
            if shots:
                entry["shots"] = shots
            shared[tag] = entry
    return {"shared": shared}


# Patterns per season; each has a texture of its own.
CAMO_PATTERNS_PER_SEASON = 2
# A comment the plain text catalogue carries among its tilings.
TILING_COMMENT = "<!-- tiling of the nation's first vehicles -->"


def camo_texture_path(nation, season, number=1):
    if nation.defs_archive == BULK_DEFS_PACKAGE:
        return f"vehicles/camouflage/bulk/{season.capitalize()}_{number:02}.dds"
    return f"vehicles/camouflage/{nation.folder}/{season.capitalize()}_{number:02}.dds"


def camo_texture_archive(nation):
    return BULK_DEFS_PACKAGE if nation.defs_archive == BULK_DEFS_PACKAGE else "shared_content.pkg"


def camo_key(nation, season):
    return f"camo/{nation.folder}_{season}"


def has_camouflage(nation):
    return nation.has_camouflage


def camo_pattern_name(nation, season, number):
    return f"{nation.folder}_{season}" + (f"_{number}" if number > 1 else "")


def camo_colors(season_index, number):
    """c0 to c3 of a pattern (red, green, blue, strength), distinct per
    pattern; c3 of the first pattern of a season is switched off."""
    base, shift = 40 * season_index, 30 * (number - 1)
    return {
        "c0": Floats(60 + base, 70 + shift, 40, 255),
        "c1": Floats(110, 100 + base, 60 + shift, 255),
        "c2": Floats(30 + shift, 40, 30 + base, 200),
        "c3": Floats(20, 20 + shift, 20, 0 if number == 1 else 128),
    }


def customization_tree(nation):
    """customization.xml: the nation's base colour and its patterns, two per
    season, with an ignored extra colour and the tiling of the nation's first
    three vehicles (element names in the model's case); the second summer
    pattern has an empty notInShop, which keeps it; an event pattern marked
    notInShop false and a "hidden" one marked "true" are left out by the
    program."""
    patterns = []
    tiled = [v.model for v in nation.vehicles if is_table_vehicle(v)][:3]
    for season_index, season in enumerate(SEASONS):
        for number in range(1, CAMO_PATTERNS_PER_SEASON + 1):
            pattern = {
                "texture": camo_texture_path(nation, season, number),
                "group": season,
                "description": f"#{nation.catalogue}:{camo_key(nation, season)}",
                "colors": {**camo_colors(season_index, number), "c4": Floats(1, 2, 3, 4)},
                "tiling": {model: Floats(1.0 + 0.25 * i, number, 0.0, 0.0)
                           for i, model in enumerate(tiled)},
            }
            if season == "summer" and number == 2:
                pattern = {"notInShop": "", **pattern}
            patterns.append((camo_pattern_name(nation, season, number), pattern))
    patterns.append((f"{nation.folder}_event", {
        "texture": camo_texture_path(nation, "summer"),
        "group": "summer",
        "description": f"#{nation.catalogue}:{camo_key(nation, 'event')}",
        "notInShop": False,
        "colors": {"c0": Floats(200, 20, 20, 255)},
    }))
    patterns.append((f"{nation.folder}_hidden", {
        "texture": camo_texture_path(nation, "winter"),
        "group": "winter",
        "description": f"#{nation.catalogue}:{camo_key(nation, 'event')}",
        "notInShop": "true",
    }))
    return {"armorColor": Floats(nation.armor_color), "camouflages": Element(None, patterns)}


def customization_file(nation):
    data = xml_file("customization.xml", customization_tree(nation), nation.camo_plain)
    if nation.camo_plain:  # a comment the reader skips, before the first tiling
        data = data.replace(b"<tiling>", b"<tiling>" + TILING_COMMENT.encode(), 1)
    return data


def item_types_tree():
    return {"vehicle": {"tags": {key: {"userString": f"#item_types:{key}"}
                                 for key, _ in CATEGORIES}}}


def nation_files(nation):
    """(res-relative name, bytes, place) of one nation's data files; place is
    LOOSE or an archive name."""
    files = [
        (f"{nation.res_path}/list.xml",
         xml_file("list.xml", vehicle_list_tree(nation), nation.list_plain), nation.list_place),
        (f"{nation.res_path}/components/guns.xml",
         encode(guns_tree(nation)), nation.defs_archive),
        (f"{nation.res_path}/components/shells.xml",
         xml_file("shells.xml", shells.shells_tree(nation.catalogue, nation_guns(nation),
                                                   nation.list_plain), nation.list_plain),
         nation.defs_archive),
    ]
    if has_camouflage(nation):
        files.append((f"{nation.res_path}/customization.xml", customization_file(nation), LOOSE))
    for v in nation.vehicles:
        if v.model == "Observer":
            continue
        files.append((f"{nation.res_path}/{v.model}.xml",
                      xml_file(f"{v.model}.xml", vehicle_tree(nation, v), v.plain_file),
                      nation.defs_archive))
    return files


def mod_files(nations):
    """(name, bytes) of the mod folder: the changed vehicle file, under the
    lower-case name the vehicle table keeps."""
    return [(f"{n.res_path}/{v.model}.xml".lower(),
             xml_file(f"{v.model}.xml", vehicle_tree(n, v, mod=True), v.plain_file))
            for n in nations for v in n.vehicles if v.model == MOD_VEHICLE]


def game_data_members(nations, archive):
    """Archive members of the game data that go into archive."""
    members = [Member(name, data, DEFLATED)
               for nation in nations for name, data, place in nation_files(nation)
               if place == archive]
    textures = {camo_texture_path(nation, season, number): None  # ordered, no repeats
                for nation in nations if camo_texture_archive(nation) == archive
                for season in SEASONS for number in range(1, CAMO_PATTERNS_PER_SEASON + 1)}
    members += [Member(path, dds_bytes(path), STORED) for path in textures]
    return members


def write_game_data_files(res, nations):
    """The loose game data below res/: item_types.xml and each nation's
    loose files."""
    path = res / "scripts" / "item_defs" / "item_types.xml"
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(encode(item_types_tree()))
    for nation in nations:
        for name, data, place in nation_files(nation):
            if place == LOOSE:
                target = res / name
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(data)


def write_tank_list(path, nations):
    """The program's list of nations: ResPath and DataPath of each, in order."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             "<!-- The game's nations, in the order the vehicle table is built.",
             "     ResPath: folder of the nation's list.xml and customization.xml below res/;",
             "     DataPath: folder of its models below the archives' root. The list",
             "     follows the installation that is read (the sample installation's",
             "     nations). Every child node of the root is taken as a nation, so no",
             "     comments go inside it. -->",
             "<tank_list.cfg>"]
    for nation in nations:
        lines += [f" <{nation.folder}>",
                  f"  <ResPath>{nation.res_path}</ResPath>",
                  f"  <DataPath>{nation.data_path}</DataPath>",
                  f" </{nation.folder}>"]
    lines += ["</tank_list.cfg>", ""]
    path.write_text("\n".join(lines), encoding="utf-8", newline="\n")

