"""The packed XML writer against the reader of test_support."""
import struct
import unittest
import xml.etree.ElementTree as ElementTree

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

    def test_types_and_siblings_after_a_nested_record_round_trip(self):
        data = packed.encode(packed.Element(None, [
            ("e", {"x": 1, "deep": {"y": -300}}), ("f", packed.Floats(1.5, 0, -2)),
            ("m", packed.Floats(range(12))), ("s", "text with blanks"), ("b", False),
            ("blob", b"\x00\xff\x10"), ("e", "a repeated name"), ("i", 32767), ("empty", "")]))
        root = load_xml(data)
        self.assertEqual(text(root, "e/deep/y"), "-300")
        self.assertEqual([(c.tag, c.attrib["packed"][1:]) for c in root][1:], [
            ("f", (3, (1.5, 0.0, -2.0))), ("m", (3, tuple(float(v) for v in range(12)))),
            ("s", (1, "text with blanks")), ("b", (4, False)), ("blob", (5, b"\x00\xff\x10")),
            ("e", (1, "a repeated name")), ("i", (2, 32767)), ("empty", (1, ""))])
        self.assertEqual(packed.encode(as_encoder_tree(root)), data)
        names = data[5:data.index(b"\0\0", 5) + 1].split(b"\0")[:-1]
        self.assertEqual(len(names), len(set(names)))  # each name stored once

    def test_plain_text_of_the_same_tree(self):
        root = ElementTree.fromstring(packed.plain_text("x.xml", {
            "m": packed.Floats(range(12)), "g": packed.Element("shared", {"b": True}),
            "blob": b"ab", "q": "Kestrel's & <co>"}))
        self.assertEqual([root.tag] + [text(root, p) for p in ("m/row3", "g", "g/b", "blob", "q")],
                         ["x.xml", "9 10 11", "shared", "true", "YWI=", "Kestrel's & <co>"])
