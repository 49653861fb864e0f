# SPDX-License-Identifier: MIT
"""How gdb shows values: `source kySystem_gdb.py`, or a line of that kind in .gdbinit.

A variant shows its type and value; lists show their elements, maps their keys and values, to any depth. Nothing is called
in the program, so that the views work on core files as well.
"""
import gdb
import gdb.printing

TYPES = {0: "null", 1: "Integer", 2: "Real", 3: "String", 4: "Bool", 5: "Vec2d", 6: "Vec3d", 7: "Vec4d", 9: "StringList",
         10: "Map", 11: "List", 12: "Mat3d", 13: "Mat4d", 14: "DateTime", 15: "UserData"}
NUMBERS = {5: 2, 6: 3, 7: 4, 12: 9, 13: 16}


def payload_as(value, name):
    return value["payload_"]["object"].cast(gdb.lookup_type(name).pointer()).dereference()


class VariantPrinter:
    def __init__(self, value):
        self.value = value
        self.type = int(value["type_"])

    def contained(self):
        payload = self.value["payload_"]
        if self.type in (1, 14):
            return payload["integer"]
        if self.type == 2:
            return payload["real"]
        if self.type == 4:
            return payload["boolean"]
        if self.type == 15:
            return payload["user"]
        if self.type in NUMBERS:
            doubles = gdb.lookup_type("double").array(NUMBERS[self.type] - 1)
            return payload["object"].cast(doubles.pointer()).dereference()
        if self.type == 9:
            return self.texts()
        names = {3: "std::string", 10: "ky::kyVariant::kyVariantMapImpl", 11: "ky::kyVariant::kyVariantListImpl"}
        return payload_as(self.value, names[self.type]) if self.type in names else None

    def texts(self):
        """The vector's three words: the name of its type depends on the standard library's version."""
        string = gdb.lookup_type("std::string")
        first, last, _ = (self.value["payload_"]["object"].cast(string.pointer().pointer())[i] for i in range(3))
        count = int(last - first)
        return first.cast(string.array(count - 1).pointer()).dereference() if count else None

    def to_string(self):
        name = TYPES.get(self.type, f"type {self.type}")
        contained = self.contained()
        if contained is None:
            return name
        return f"{name} {contained.format_string()}"


class ListPrinter:
    def __init__(self, value):
        self.items = value["items_"]

    def bounds(self):
        storage = self.items["_M_impl"]
        return storage["_M_start"], storage["_M_finish"]

    def to_string(self):
        first, last = self.bounds()
        return f"of {int(last - first)}"

    def children(self):
        item, last = self.bounds()
        index = 0
        while item != last:
            yield f"[{index}]", item.dereference()
            item, index = item + 1, index + 1

    def display_hint(self):
        return "array"


class MapPrinter:
    def __init__(self, value):
        self.value = value
        self.key = gdb.lookup_type("std::string")
        # A node is the links, a number made of the key's first bytes, the key and the value; programs that never
        # iterate over a map carry no description of it.
        self.key_offset = value["head_"].type.sizeof + 8

    def to_string(self):
        return f"of {int(self.value['size_'])}"

    @staticmethod
    def at(address, type_):
        return gdb.Value(address).cast(type_.pointer()).dereference()

    def entries(self):
        """In key order, with a stack of our own: trees of programs that went wrong may be deep."""
        links, open_nodes = self.value["head_"]["parent"], []
        while links or open_nodes:
            while links:
                open_nodes.append(links)
                links = links["left"]
            links = open_nodes.pop()
            key = int(links) + self.key_offset
            yield self.at(key, self.key), self.at(key + self.key.sizeof, gdb.lookup_type("ky::kyVariant"))
            links = links["right"]

    def children(self):
        for index, (key, value) in enumerate(self.entries()):
            yield f"key {index}", key
            yield f"value {index}", value

    def display_hint(self):
        return "map"


def printers():
    found = gdb.printing.RegexpCollectionPrettyPrinter("kySystem")
    found.add_printer("kyVariant", "^ky::kyVariant$", VariantPrinter)
    found.add_printer("kyVariantListImpl", "^ky::kyVariant::kyVariantListImpl$", ListPrinter)
    found.add_printer("kyVariantMapImpl", "^ky::kyVariant::kyVariantMapImpl$", MapPrinter)
    return found


gdb.printing.register_pretty_printer(None, printers(), replace=True)
