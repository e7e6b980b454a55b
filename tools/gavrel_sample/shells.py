"""Ammunition: the shells each gun fires (the shots of components/guns.xml
or of the vehicle file's own gun section) and the nation's shell catalogue
components/shells.xml. Plain text files carry their numbers with tabs and
blanks around them, as hand-edited game files do."""
from .packed_xml import Element, Floats

AP, APCR, APHE, HE, HEAT = ("ARMOR_PIERCING", "ARMOR_PIERCING_CR", "ARMOR_PIERCING_HE",
                            "HIGH_EXPLOSIVE", "HOLLOW_CHARGE")
KIND_LABELS = {AP: "AP", APCR: "APCR", APHE: "APHE", HE: "HE", HEAT: "HEAT"}
# A HEAT shell's loss of its remaining penetration per 10 cm of free travel.
HEAT_LOSS = 0.05


class Shell:
    """One shell of the catalogue and the numbers of its shot."""

    def __init__(self, calibre, kind, pen100, pen500, speed, max_distance, portion):
        self.calibre, self.kind = calibre, kind
        self.pen100, self.pen500 = pen100, pen500
        self.speed, self.max_distance, self.portion = speed, max_distance, portion

    @property
    def tag(self):
        return f"_{self.calibre}mm_{KIND_LABELS[self.kind]}"

    @property
    def text(self):
        return f"{self.calibre} mm {KIND_LABELS[self.kind]}"


# The shells of a gun by its class: light guns up to tier 3, medium up to
# tier 6, heavy above; a gun with an "_L2" tag is one class up. The medium
# AP shell is the proving ground's: 140 mm at 100 m, 120 mm at 500 m.
GUN_CLASSES = (
    (Shell(45, AP, 60, 48, 760, 720, 0.8), Shell(45, HE, 23, 23, 760, 720, 0.2)),
    (Shell(88, AP, 140, 120, 810, 720, 0.7), Shell(88, HEAT, 180, 180, 640, 720, 0.2),
     Shell(88, HE, 44, 44, 810, 720, 0.1)),
    (Shell(122, APHE, 175, 160, 780, 720, 0.6), Shell(122, APCR, 230, 210, 980, 720, 0.2),
     Shell(122, HE, 61, 61, 780, 720, 0.2)),
)
# A gun without shots anywhere: the program offers only its custom shell.
GUNS_WITHOUT_SHOTS = ("B01_Kestrel_Gun_Early",)
# A shared gun whose vehicle file lists shots of its own, which stand for
# that vehicle: only the first shell of its class.
OWN_SHOTS_OF_SHARED = ("A01_Talon_Gun",)


def gun_shells(gun_tag, tier):
    if gun_tag in GUNS_WITHOUT_SHOTS:
        return ()
    level = 0 if tier <= 3 else 1 if tier <= 6 else 2
    if "_L2" in gun_tag:
        level = min(level + 1, 2)
    return GUN_CLASSES[level]


def padded(text, plain):
    return f"\t{text} " if plain else text


def shots(shells, plain):
    """The shots element: one child per shell, named as in shells.xml."""
    children = []
    for shell in shells:
        pen = (padded(f"{shell.pen100} {shell.pen500}", True) if plain
               else Floats(shell.pen100, shell.pen500))
        children.append((shell.tag, {
            "defaultPortion": padded(shell.portion, plain) if plain else float(shell.portion),
            "speed": padded(shell.speed, plain) if plain else float(shell.speed),
            "maxDistance": padded(shell.max_distance, plain) if plain else shell.max_distance,
            "piercingPower": pen,
        }))
    return Element(None, children)


def shared_shots(gun_tag, tier):
    """shots of guns.xml's shared/<gun>, or None for a gun without any."""
    shells = gun_shells(gun_tag, tier)
    return shots(shells, False) if shells else None


def vehicle_shots(gun_tag, tier, shared, plain):
    """shots of the vehicle file's gun section, or None: every own gun lists
    its shots there, a shared gun only when it overrides guns.xml."""
    shells = gun_shells(gun_tag, tier)
    if shared:
        shells = shells[:1] if gun_tag in OWN_SHOTS_OF_SHARED else ()
    return shots(shells, plain) if shells else None


def nation_shells(guns):
    """The distinct shells of [(gun tag, tier)], in first-use order."""
    found = {}
    for tag, tier in guns:
        for shell in gun_shells(tag, tier):
            found.setdefault(shell.tag, shell)
    return list(found.values())


def shells_tree(catalogue, guns, plain):
    """components/shells.xml: each shell with its kind, calibre and name."""
    entries = []
    for shell in nation_shells(guns):
        entry = {"userString": f"#{catalogue}:{shell.tag}",
                 "kind": padded(shell.kind, plain),
                 "caliber": padded(shell.calibre, plain) if plain else shell.calibre}
        if shell.kind == HEAT:
            entry["piercingPowerLossFactorByDistance"] = (
                padded(HEAT_LOSS, plain) if plain else float(HEAT_LOSS))
        entries.append((shell.tag, entry))
    return Element(None, entries)


def shell_texts(guns):
    """Catalogue entries of the shells' names."""
    return [(shell.tag, shell.text) for shell in nation_shells(guns)]
