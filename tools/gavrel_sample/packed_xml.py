"""Writer of Gavrel's packed (binary) XML, and of the same trees as plain
text XML, for the sample installation. Python 3 standard library only.

A tree is made of Element objects (or dicts, a shorthand for an Element
without a value of its own) whose leaves carry their type:

    str          string (type 1), written as UTF-8 bytes
    bool         boolean (type 4), one byte 1 for true, no bytes for false
    int          integer (type 2), 1, 2 or 4 bytes, the fewest that hold it
    Floats       floats (type 3), 32-bit each; twelve of them are a 4 x 3 matrix
    bytes        blob (type 5)
    Element      nested element record (type 0); it may have a value of its
                 own and children at the same time

Packed layout: magic 45 4E A1 62, one byte 0, the name table (zero-ended
names, closed by an empty name), then the root's element record. A record
is: int16 child count, the own value's descriptor, six bytes per child
(int16 name index, descriptor), then the data block holding the own value
and each child's value in order. A descriptor keeps the value's end offset
in the data block in bits 0-27 and its type in bits 28-31. An element child
is a whole nested record in its parent's data block; its end offset moves
on by the record's size, so the lengths of the siblings after it stay right.
"""
import base64
import struct
from xml.sax.saxutils import escape

MAGIC = b"\x45\x4E\xA1\x62"

TYPE_ELEMENT = 0
TYPE_STRING = 1
TYPE_INT = 2
TYPE_FLOATS = 3
TYPE_BOOL = 4
TYPE_BLOB = 5

MAX_OFFSET = (1 << 28) - 1
MAX_CHILDREN = 0x7FFF


class Floats(tuple):
    """A run of 32-bit floats: a vector, or a 4 x 3 matrix when twelve."""

    def __new__(cls, *values):
        if len(values) == 1 and not isinstance(values[0], (int, float)):
            values = tuple(values[0])
        return super().__new__(cls, (float(v) for v in values))

    def __repr__(self):
        return f"Floats{tuple(self)!r}"


class Element:
    """An element with an optional value of its own and ordered children.
    children: a dict or a sequence of (name, node) pairs; a name may repeat."""

    __slots__ = ("value", "children")

    def __init__(self, value=None, children=()):
        if isinstance(children, dict):
            children = children.items()
        self.value = value
        self.children = [(str(name), node) for name, node in children]

    def __eq__(self, other):
        return (isinstance(other, Element) and self.value == other.value
                and self.children == other.children)

    def __repr__(self):
        return f"Element({self.value!r}, {self.children!r})"


def as_element(node):
    if isinstance(node, Element):
        return node
    if isinstance(node, dict):
        return Element(None, node)
    raise TypeError(f"not an element: {node!r}")


def is_element(node):
    return isinstance(node, (Element, dict))


def encode_leaf(value):
    """(type, bytes) of one leaf value."""
    if value is None:
        return TYPE_STRING, b""
    if isinstance(value, bool):  # before int: bool is an int in Python
        # true is the one byte 1; false has no bytes at all (a stored 0 byte
        # is an error for readers)
        return TYPE_BOOL, b"\x01" if value else b""
    if isinstance(value, int):
        for size, code in ((1, "<b"), (2, "<h"), (4, "<i")):
            low, high = -(1 << (8 * size - 1)), (1 << (8 * size - 1)) - 1
            if low <= value <= high:
                return TYPE_INT, struct.pack(code, value)
        raise ValueError(f"integer {value} does not fit in 32 bits")
    if isinstance(value, Floats):
        return TYPE_FLOATS, struct.pack(f"<{len(value)}f", *value)
    if isinstance(value, str):
        return TYPE_STRING, value.encode("utf-8")
    if isinstance(value, (bytes, bytearray)):
        return TYPE_BLOB, bytes(value)
    if isinstance(value, float):
        return TYPE_FLOATS, struct.pack("<f", value)
    raise TypeError(f"no packed type for {value!r}")


def descriptor(end, kind):
    if not 0 <= end <= MAX_OFFSET:
        raise ValueError(f"value end offset {end} out of the 28-bit range")
    return struct.pack("<I", (kind << 28) | end)


class _Names:
    def __init__(self):
        self.index = {}
        self.order = []

    def __call__(self, name):
        if name not in self.index:
            if not name or "\0" in name:
                raise ValueError(f"element name {name!r} cannot be stored")
            self.index[name] = len(self.order)
            self.order.append(name)
        return self.index[name]


def _collect_names(element, names):
    for name, node in element.children:
        names(name)
    for name, node in element.children:
        if is_element(node):
            _collect_names(as_element(node), names)


def _record(element, names):
    element = as_element(element)
    if len(element.children) > MAX_CHILDREN:
        raise ValueError("too many children for one element record")
    own_type, own_bytes = encode_leaf(element.value)
    if own_type == TYPE_ELEMENT:
        raise TypeError("an element's own value cannot be an element")
    entries = []
    data = [own_bytes]
    end = len(own_bytes)
    for name, node in element.children:
        if is_element(node):
            kind, chunk = TYPE_ELEMENT, _record(node, names)
        else:
            kind, chunk = encode_leaf(node)
        end += len(chunk)
        entries.append(struct.pack("<h", names(name)) + descriptor(end, kind))
        data.append(chunk)
    return (struct.pack("<h", len(element.children)) + descriptor(len(own_bytes), own_type)
            + b"".join(entries) + b"".join(data))


def encode(root):
    """Packed bytes of a document whose root element is root (an Element or
    dict). The root's tag is not stored: readers take it from the file name."""
    root = as_element(root)
    names = _Names()
    _collect_names(root, names)
    record = _record(root, names)
    table = b"".join(name.encode("utf-8") + b"\0" for name in names.order) + b"\0"
    return MAGIC + b"\0" + table + record


# ------------------------------------------------------------ plain text

def format_float(value):
    text = f"{value:.6g}"
    return "0" if text == "-0" else text


def leaf_text(value):
    """The text a leaf value has in plain XML (matrices aside)."""
    if value is None:
        return ""
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return str(value)
    if isinstance(value, Floats):
        return " ".join(format_float(v) for v in value)
    if isinstance(value, float):
        return format_float(value)
    if isinstance(value, str):
        return value
    if isinstance(value, (bytes, bytearray)):
        return base64.b64encode(bytes(value)).decode("ascii")
    raise TypeError(f"no text for {value!r}")


def _plain_lines(tag, node, depth, lines):
    pad = "\t" * depth
    if isinstance(node, Floats) and len(node) == 12:
        node = Element(None, [(f"row{r}", Floats(node[3 * r:3 * r + 3])) for r in range(4)])
    if not is_element(node):
        lines.append(f"{pad}<{tag}>{escape(leaf_text(node))}</{tag}>")
        return
    element = as_element(node)
    text = escape(leaf_text(element.value))
    if not element.children:
        lines.append(f"{pad}<{tag}>{text}</{tag}>")
        return
    lines.append(f"{pad}<{tag}>{text}")
    for name, child in element.children:
        _plain_lines(name, child, depth + 1, lines)
    lines.append(f"{pad}</{tag}>")


def plain_text(root_tag, root):
    """The same tree as text XML (UTF-8, tab indented), root_tag as its root."""
    lines = ['<?xml version="1.0" encoding="UTF-8"?>']
    _plain_lines(root_tag, as_element(root), 0, lines)
    return ("\n".join(lines) + "\n").encode("utf-8")
