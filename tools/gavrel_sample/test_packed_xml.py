"""The packed XML writer against the reader of test_support."""
import struct
import unittest

from . import packed_xml as packed
from .test_support import PACKED_MAGIC, load_xml, text


def as_encoder_tree(element):
    """A decoded tree in the writer's terms, for round trips."""
    def leaf(kind, value):
        return packed.Floats(value) if kind == 3 else value
    _, kind, value = element.attrib["packed"]
    return packed.Element(None if (kind, value) == (1, "") else leaf(kind, value), [
        (c.tag, as_encoder_tree(c) if c.attrib["packed"][0] else leaf(*c.attrib["packed"][1:]))
        for c in element])


class PackedWriterTest(unittest.TestCase):
    def test_exact_bytes(self):
        nested = bytes.fromhex("01 00 06 00 00 10 01 00 07 00 00 40") + b"shared\x01"
        for tree, expected in (
                ({"a": 5}, "00 61 00 00 01 00 00 00 00 10 00 00 01 00 00 20 05"),
                ({}, "00 00 00 00 00 00 00 10"),
                ({"i": 128}, "00 69 00 00 01 00 00 00 00 10 00 00 02 00 00 20 80 00"),
                ({"i": -2 ** 31}, "00 69 00 00 01 00 00 00 00 10 00 00 04 00 00 20 00 00 00 80"),
                ({"g": packed.Element("shared", {"b": True})},  # own value and children
                 "00 67 00 62 00 00 01 00 00 00 00 10 00 00" + struct.pack("<I", len(nested)).hex()
                 + nested.hex())):
            self.assertEqual(packed.encode(tree), PACKED_MAGIC + bytes.fromhex(expected))
        self.assertEqual(text(load_xml(packed.encode(tree)), "g/b"), "true")
        with self.assertRaises(ValueError):
            packed.encode({"i": 2 ** 31})
