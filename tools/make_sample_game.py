#!/usr/bin/env python3
"""Writes a small but complete installation of the game Gavrel into a folder.

    python3 tools/make_sample_game.py --out DIR [--scale N] [--force] [--with-broken]
    python3 tools/make_sample_game.py --out DIR --hostile [--force]

The default is the showcase, where every vehicle loads and every tool works;
--hostile writes one sound vehicle and one broken vehicle per way a game
folder can fail the program, for the tests and the fuzzers.

The installation is built from the game's file formats alone (plain and
packed XML, zip archives below res/packages/, loose files below res/, gettext
catalogues compiled with GNU msgfmt); nothing here imports or calls Ferrox
code, so Ferrox's readers can be tested against it. The writers live in the
package gavrel_sample beside this script, one module per kind of content.
"""
import sys
from pathlib import Path

# The package lives beside this script; make it importable from any working
# directory.
sys.path.insert(0, str(Path(__file__).resolve().parent))
from gavrel_sample.installation import main  # noqa: E402

if __name__ == "__main__":
    sys.exit(main())
