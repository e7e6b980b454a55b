"""What a vehicle of each class looks like: how far its running gear and
hull stretch, the turret that sits on the hull (a cast or welded turret, a
large heavy turret, the mantlet of a casemate, the gun mount of an
open-topped fighting compartment), its gun, and the plates of its
collision models. Sizes are metres in the game's axes: y up, front +z."""
from dataclasses import dataclass

from . import geometry as gavrel_geometry

LIGHT, MEDIUM, HEAVY, TD, ARTY = "lightTank", "mediumTank", "heavyTank", "AT-SPG", "SPG"


@dataclass(frozen=True)
class Shape:
    body: tuple              # stretch (x, y, z) of running gear and hull
    turret: str              # a key of TURRET_MESHES
    turret_joint: tuple      # on the unstretched hull: where the turret turns
    gun_joint: tuple         # on the turret: where the gun pivots
    gun_length: float
    gun_radius: float
    superstructure: str = ""  # "casemate" or "open": built onto the hull
    yaw_limits: str = ""     # the turret's traverse, when it has limits


# The vehicles whose parts were laid out before classes had shapes keep
# this one: a cast turret amidships on a medium-sized hull.
STANDARD = Shape((1.0, 1.0, 1.0), "cast", (0.0, 1.2, -0.3), (0.0, 0.3, 0.95), 3.0, 0.08)

SHAPES = {
    LIGHT: Shape((0.86, 0.88, 0.8), "small", (0.0, 1.2, -0.5), (0.0, 0.24, 0.76), 2.3, 0.06),
    MEDIUM: Shape((1.0, 1.0, 1.0), "welded", (0.0, 1.2, -0.2), (0.0, 0.3, 0.95), 3.3, 0.08),
    HEAVY: Shape((1.14, 1.1, 1.16), "heavy", (0.0, 1.2, -0.4), (0.0, 0.4, 1.2), 4.0, 0.11),
    TD: Shape((1.04, 1.0, 1.06), "mantlet", (0.0, 1.5, 1.75), (0.0, 0.0, 0.45), 4.3, 0.1,
              "casemate", "-12 12"),
    ARTY: Shape((1.06, 1.0, 1.06), "mount", (0.0, 1.2, -1.25), (0.0, 0.45, 0.55), 3.4, 0.12,
                "open", "-20 20"),
}


def turret_position(shape):
    """The turret's joint on the hull, stretched with the hull."""
    return tuple(c * f for c, f in zip(shape.turret_joint, shape.body))


def scaled_builder(detail, factors):
    return gavrel_geometry.ScaledMeshBuilder(detail, factors)


# ------------------------------------------------------------ hull additions

def casemate(mesh):
    """A sloped, fixed superstructure over the front of the upper hull, the
    gun's embrasure in its front plate."""
    mesh.prism([(-0.7, 1.2), (2.3, 1.2), (1.45, 1.9), (-0.6, 1.9)], -1.25, 1.25)


def open_compartment(mesh):
    """Walls around the rear of the upper hull and no roof: the crew and the
    gun stand in the open."""
    mesh.box((-1.4, 1.2, -2.6), (-1.3, 1.95, 0.2))
    mesh.box((1.3, 1.2, -2.6), (1.4, 1.95, 0.2))
    mesh.box((-1.3, 1.2, -2.6), (1.3, 1.85, -2.5))
    mesh.box((-1.3, 1.2, 0.1), (1.3, 1.5, 0.2))


SUPERSTRUCTURES = {"casemate": casemate, "open": open_compartment}


# ------------------------------------------------------------------- turrets

def cast_turret(mesh):
    """A cast turret narrowing upwards on the ring, a commander's cupola and
    a mantlet block in front."""
    mesh.cylinder("y", (0.0, 0.0, 0.0), 1.05, 0.0, 0.6, segments=20, end_radius=0.85)
    mesh.cylinder("y", (-0.4, 0.0, -0.3), 0.25, 0.6, 0.8, segments=10)
    mesh.box((-0.35, 0.1, 0.8), (0.35, 0.5, 1.15))


def welded_turret(mesh):
    """Welded plates sloped front and back, a bustle and a wider mantlet."""
    mesh.prism([(-1.3, 0.0), (0.9, 0.0), (0.8, 0.62), (-0.9, 0.7), (-1.4, 0.4)], -0.95, 0.95)
    mesh.box((-0.45, 0.08, 0.8), (0.45, 0.55, 1.1))


def small_turret(mesh):
    """A light tank's narrow cone with a low cupola."""
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.78, 0.0, 0.5, segments=16, end_radius=0.6)
    mesh.cylinder("y", (-0.25, 0.0, -0.2), 0.2, 0.5, 0.64, segments=10)
    mesh.box((-0.26, 0.08, 0.62), (0.26, 0.42, 0.9))


def heavy_turret(mesh):
    """A broad, tall turret with a long bustle, a thick mantlet and two
    cupolas."""
    mesh.prism([(-1.7, 0.0), (1.1, 0.0), (1.0, 0.82), (-1.3, 0.9), (-1.8, 0.5)], -1.2, 1.2)
    mesh.box((-0.55, 0.08, 1.0), (0.55, 0.72, 1.35))
    mesh.cylinder("y", (-0.55, 0.0, -0.6), 0.3, 0.85, 1.1, segments=12)
    mesh.cylinder("y", (0.6, 0.0, -0.3), 0.22, 0.88, 1.02, segments=10)


def mantlet(mesh):
    """The gun's armoured ball in the casemate's front plate."""
    mesh.box((-0.38, -0.3, -0.15), (0.38, 0.3, 0.3))
    mesh.cylinder("z", (0.0, 0.0, 0.0), 0.24, 0.3, 0.5, segments=12)


def gun_mount(mesh):
    """A turntable, the cradle and a shield: open above and behind."""
    mesh.cylinder("y", (0.0, 0.0, 0.0), 0.7, 0.0, 0.18, segments=16)
    mesh.box((-0.22, 0.18, -0.4), (0.22, 0.6, 0.6))
    mesh.box((-0.8, 0.18, 0.62), (0.8, 0.95, 0.7))


TURRET_MESHES = {"cast": cast_turret, "welded": welded_turret, "small": small_turret,
                 "heavy": heavy_turret, "mantlet": mantlet, "mount": gun_mount}


def turret_mesh(kind, detail=1):
    mesh = gavrel_geometry.MeshBuilder(detail)
    mesh.begin_group()
    TURRET_MESHES[kind](mesh)
    return mesh


# Collision plates of each turret kind: (side and rear, front) boxes.
TURRET_PLATES = {
    "cast": (((-0.9, 0.0, -1.0), (0.9, 0.6, 0.7)), ((-0.6, 0.05, 0.7), (0.6, 0.55, 1.0))),
    "welded": (((-0.95, 0.0, -1.4), (0.95, 0.7, 0.8)), ((-0.45, 0.08, 0.8), (0.45, 0.55, 1.1))),
    "small": (((-0.7, 0.0, -0.75), (0.7, 0.5, 0.6)), ((-0.3, 0.08, 0.6), (0.3, 0.42, 0.9))),
    "heavy": (((-1.2, 0.0, -1.8), (1.2, 0.9, 1.0)), ((-0.55, 0.08, 1.0), (0.55, 0.72, 1.35))),
    "mantlet": (((-0.38, -0.3, -0.15), (0.38, 0.3, 0.15)), ((-0.38, -0.3, 0.15), (0.38, 0.3, 0.5))),
    "mount": (((-0.7, 0.0, -0.7), (0.7, 0.6, 0.6)), ((-0.8, 0.18, 0.6), (0.8, 0.95, 0.7))),
}
# Plates the superstructures add to the hull's body.
SUPERSTRUCTURE_PLATES = {
    "casemate": [((-1.25, 0.82, -0.7), (1.25, 1.5, 1.8))],
    "open": [((-1.4, 0.82, -2.6), (-1.3, 1.57, 0.2)), ((1.3, 0.82, -2.6), (1.4, 1.57, 0.2))],
}
