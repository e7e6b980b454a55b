"""Gettext catalogues, compiled by GNU msgfmt from .po sources written to a
temporary folder."""
import shutil
import subprocess
import tempfile
from pathlib import Path

from .game_data import (CATEGORIES, MENU_ALL_KEY, MENU_ALL_TEXT, MOD_VEHICLE, SEASONS,
                        TURRET_TEXTS, camo_key, gun_tag, nation_guns, turret_tag,
                        vehicle_turrets)
from .shells import shell_texts

class GenerationError(Exception):
    pass


MSGFMT_MISSING = ("make_sample_game: 'msgfmt' (GNU gettext) is needed to compile the text "
                  "catalogues but was not found; install the package 'gettext' "
                  "(apt-get install -y gettext, or scripts/install-deps.sh)")


def catalogues(nations):
    """{catalogue name: [(key, text), ...]} of every .mo file to write."""
    menu = [(MENU_ALL_KEY, MENU_ALL_TEXT)]
    menu += [(f"nations/{n.folder}", n.display) for n in nations]
    result = {"menu": menu, "item_types": list(CATEGORIES)}
    for nation in nations:
        entries = []
        for v in nation.vehicles:
            tier = "no tier" if v.tier is None else f"tier {v.tier}"
            category = dict(CATEGORIES)[v.category].lower().rstrip("s")
            entries += [
                (v.model, v.name),
                (f"{v.model}_descr", f"{v.name}: a {category} of {nation.display}, {tier}."),
                (turret_tag(v), f"{v.name} turret"),
                (gun_tag(v), f"{v.name} main gun"),
            ]
            tags = [(tag, [g for g, _ in guns]) for tag, _, guns in vehicle_turrets(v)]
            if v.model == MOD_VEHICLE:
                tags.append((f"{turret_tag(v)}_Mod", []))
            entries += [(tag, TURRET_TEXTS.get(tag, f"{v.name} turret {tag.rsplit('_', 1)[-1]}"))
                        for tag, _ in tags if tag != turret_tag(v)]
            entries += [(gun, f"{v.name} gun {gun.rsplit('_', 1)[-1]}")
                        for gun in dict.fromkeys(g for _, guns in tags for g in guns)
                        if gun != gun_tag(v)]
        entries += shell_texts(nation_guns(nation))
        entries += [(camo_key(nation, season), f"{nation.display} {season} pattern")
                    for season in SEASONS + ("event",)]
        result[nation.catalogue] = entries
    return result


def po_string(text):
    escaped = (text.replace("\\", "\\\\").replace('"', '\\"')
               .replace("\n", "\\n").replace("\t", "\\t"))
    return f'"{escaped}"'


def po_text(entries):
    lines = ['msgid ""', 'msgstr ""',
             '"Project-Id-Version: Ferrox sample installation\\n"',
             '"Language: en\\n"',
             '"MIME-Version: 1.0\\n"',
             '"Content-Type: text/plain; charset=UTF-8\\n"',
             '"Content-Transfer-Encoding: 8bit\\n"', ""]
    for key, text in entries:
        lines += [f"msgid {po_string(key)}", f"msgstr {po_string(text)}", ""]
    return "\n".join(lines)


def write_catalogues(folder, nations):
    """Compiles one .mo per catalogue into folder with msgfmt; the .po sources
    stay in a temporary folder."""
    msgfmt = shutil.which("msgfmt")
    if not msgfmt:
        raise GenerationError(MSGFMT_MISSING)
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="ferrox-po-") as temp:
        for name, entries in catalogues(nations).items():
            source = Path(temp) / f"{name}.po"
            source.write_text(po_text(entries), encoding="utf-8", newline="\n")
            result = subprocess.run([msgfmt, "-o", str(folder / f"{name}.mo"), str(source)],
                                    capture_output=True, text=True)
            if result.returncode != 0:
                raise GenerationError(f"make_sample_game: msgfmt failed on {name}.po:\n"
                                      + result.stderr)

