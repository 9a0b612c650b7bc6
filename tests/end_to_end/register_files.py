"""Register files of other tools, read by what stands here alone: the tests hold what the program writes against it.

Tables say which elements the standards want where, how many, and what may stand in them; readers make of each format
the same list: registers by absolute address, with their fields.
"""

import csv
import io
import re
import xml.etree.ElementTree as ElementTree
from typing import NamedTuple


class Field(NamedTuple):
    name: str
    lowest: int
    width: int
    access: str              # "r", and one of "w", "s" and "c"
    reset: int | None
    options: tuple           # of (name, value)


class Register(NamedTuple):
    address: int
    width: int
    access: str
    fields: frozenset


# What the standards want ------------------------------------------------------------------------------------------
# An element holds parts in this order: (name or names, least, most). A text holds what its pattern matches.

MANY = 10**9
NUMBER = r"[+]?(0x|0X|#)?[0-9a-fA-F]+[kmgtKMGT]?"
IDENTIFIER = "[_A-Za-z0-9]*"
DIMABLE = (r"(%s|%s[_A-Za-z][_A-Za-z0-9]*|[_A-Za-z][_A-Za-z0-9]*(\[%s\])?|"
           r"[_A-Za-z][_A-Za-z0-9]*(%s)?[_A-Za-z0-9]*)")
ANY = r"[\s\S]+"
ACCESS = "read-only|write-only|read-write|writeOnce|read-writeOnce"
ON_WRITE = "(one|zero)To(Clear|Set|Toggle)|clear|set|modify"
ON_READ = "clear|set|modify|modifyExternal"
DIM = [("dim", 0, 1), ("dimIncrement", 0, 1), ("dimIndex", 0, 1), ("dimName", 0, 1), ("dimArrayIndex", 0, 1)]
PROPERTIES = [("size", 0, 1), ("access", 0, 1), ("protection", 0, 1), ("resetValue", 0, 1), ("resetMask", 0, 1)]

SVD = {
    "device": [("vendor", 0, 1), ("vendorID", 0, 1), ("name", 1, 1), ("series", 0, 1), ("version", 1, 1),
               ("description", 1, 1), ("licenseText", 0, 1), ("cpu", 0, 1), ("headerSystemFilename", 0, 1),
               ("headerDefinitionsPrefix", 0, 1), ("addressUnitBits", 1, 1), ("width", 1, 1), *PROPERTIES,
               ("peripherals", 1, 1), ("vendorExtensions", 0, 1)],
    "peripherals": [("peripheral", 1, MANY)],
    "peripheral": [*DIM, ("name", 1, 1), ("version", 0, 1), ("description", 0, 1), ("alternatePeripheral", 0, 1),
                   ("groupName", 0, 1), ("prependToName", 0, 1), ("appendToName", 0, 1), ("headerStructName", 0, 1),
                   ("disableCondition", 0, 1), ("baseAddress", 1, 1), *PROPERTIES, ("addressBlock", 0, MANY),
                   ("interrupt", 0, MANY), ("registers", 0, 1)],
    "addressBlock": [("offset", 1, 1), ("size", 1, 1), ("usage", 1, 1), ("protection", 0, 1)],
    "interrupt": [("name", 1, 1), ("description", 0, 1), ("value", 1, 1)],
    "registers": [(("cluster", "register"), 1, MANY)],
    "cluster": [*DIM, ("name", 1, 1), ("description", 1, 1), ("alternateCluster", 0, 1), ("headerStructName", 0, 1),
                ("addressOffset", 1, 1), *PROPERTIES, (("cluster", "register"), 1, MANY)],
    "register": [*DIM, ("name", 1, 1), ("displayName", 0, 1), ("description", 0, 1), ("alternateGroup", 0, 1),
                 ("alternateRegister", 0, 1), ("addressOffset", 1, 1), *PROPERTIES, ("dataType", 0, 1),
                 ("modifiedWriteValues", 0, 1), ("writeConstraint", 0, 1), ("readAction", 0, 1), ("fields", 0, 1)],
    "fields": [("field", 1, MANY)],
    "field": [*DIM, ("name", 1, 1), ("description", 0, 1), ("bitOffset", 1, 1), ("bitWidth", 0, 1), ("access", 0, 1),
              ("modifiedWriteValues", 0, 1), ("writeConstraint", 0, 1), ("readAction", 0, 1), ("enumeratedValues", 0, 2)],
    "enumeratedValues": [("name", 0, 1), ("headerEnumName", 0, 1), ("usage", 0, 1), ("enumeratedValue", 1, MANY)],
    "enumeratedValue": [("name", 1, 1), ("description", 0, 1), (("value", "isDefault"), 1, 1)],
}
SVD_TEXTS = {
    "description": ANY, "version": ANY, "headerStructName": DIMABLE, "alternatePeripheral": DIMABLE,
    "groupName": r"[A-Za-z_:][-\w.:]*", "access": ACCESS, "modifiedWriteValues": ON_WRITE, "readAction": ON_READ,
    "dataType": r"u?int(8|16|32|64)_t( \*)?", "usage": "registers|buffer|reserved",
    "value": "[+]?(0[xX][0-9a-fA-F]+|[0-9]+|(#|0b)[01xX]+)",
    **dict.fromkeys(("dim", "dimIncrement", "baseAddress", "addressOffset", "offset", "size", "resetValue", "resetMask",
                     "bitOffset", "bitWidth", "addressUnitBits", "width"), NUMBER),
    "cluster/description": r"[\s\S]*", "interrupt/name": ANY, "interrupt/value": "[0-9]+",
    "device/name": IDENTIFIER, "peripheral/name": DIMABLE, "cluster/name": DIMABLE, "register/name": DIMABLE,
    "field/name": DIMABLE, "enumeratedValues/name": IDENTIFIER, "enumeratedValue/name": IDENTIFIER,
}

NAMES = [("name", 1, 1), ("displayName", 0, 1), ("description", 0, 1)]
PRESENT = [("accessHandles", 0, 1), ("isPresent", 0, 1)]
ENDS = [("parameters", 0, 1), ("vendorExtensions", 0, 1)]
EXPRESSION = r"[0-9]+|[0-9]*'[hH][0-9a-fA-F]+"
NAME = "[A-Za-z_][-A-Za-z0-9_.]*"

IPXACT = {
    "component": [("vendor", 1, 1), ("library", 1, 1), ("name", 1, 1), ("version", 1, 1), ("busInterfaces", 0, 1),
                  ("indirectInterfaces", 0, 1), ("channels", 0, 1), ("remapStates", 0, 1), ("addressSpaces", 0, 1),
                  ("memoryMaps", 0, 1), ("model", 0, 1), ("componentGenerators", 0, 1), ("choices", 0, 1),
                  ("fileSets", 0, 1), ("whiteboxElements", 0, 1), ("cpus", 0, 1), ("otherClockDrivers", 0, 1),
                  ("resetTypes", 0, 1), ("description", 0, 1), ("parameters", 0, 1), ("assertions", 0, 1),
                  ("vendorExtensions", 0, 1)],
    "memoryMaps": [("memoryMap", 1, MANY)],
    "memoryMap": [*NAMES, ("isPresent", 0, 1), (("addressBlock", "bank", "subspaceMap"), 0, MANY),
                  ("memoryRemap", 0, MANY), ("addressUnitBits", 0, 1), ("shared", 0, 1), ("vendorExtensions", 0, 1)],
    "addressBlock": [*NAMES, *PRESENT, ("baseAddress", 1, 1), ("typeIdentifier", 0, 1), ("range", 1, 1),
                     ("width", 1, 1), ("usage", 0, 1), ("volatile", 0, 1), ("access", 0, 1), ("parameters", 0, 1),
                     (("register", "registerFile"), 0, MANY), ("vendorExtensions", 0, 1)],
    "registerFile": [*NAMES, *PRESENT, ("dim", 0, MANY), ("addressOffset", 1, 1), ("typeIdentifier", 0, 1),
                     ("range", 1, 1), (("register", "registerFile"), 1, MANY), *ENDS],
    "register": [*NAMES, *PRESENT, ("dim", 0, MANY), ("addressOffset", 1, 1), ("typeIdentifier", 0, 1), ("size", 1, 1),
                 ("volatile", 0, 1), ("access", 0, 1), ("field", 1, MANY), ("alternateRegisters", 0, 1), *ENDS],
    "field": [*NAMES, *PRESENT, ("bitOffset", 1, 1), ("resets", 0, 1), ("typeIdentifier", 0, 1), ("bitWidth", 1, 1),
              ("volatile", 0, 1), ("access", 0, 1), ("enumeratedValues", 0, 1), ("modifiedWriteValue", 0, 1),
              ("writeValueConstraint", 0, 1), ("readAction", 0, 1), ("testable", 0, 1), ("reserved", 0, 1), *ENDS],
    "resets": [("reset", 1, MANY)],
    "reset": [("value", 1, 1), ("mask", 0, 1)],
    "enumeratedValues": [("enumeratedValue", 1, MANY)],
    "enumeratedValue": [*NAMES, ("value", 1, 1), ("vendorExtensions", 0, 1)],
    "vendorExtensions": [("wholeRegister", 1, 1)],
    "wholeRegister": [],
}
IPXACT_TEXTS = {
    "name": NAME, "vendor": NAME, "library": NAME, "version": r"[-\w.:]+", "description": ANY, "typeIdentifier": NAME,
    "access": ACCESS, "modifiedWriteValue": ON_WRITE, "readAction": "clear|set|modify",
    "usage": "memory|register|reserved",
    **dict.fromkeys(("baseAddress", "range", "width", "dim", "addressOffset", "size", "bitOffset", "bitWidth", "value",
                     "mask", "addressUnitBits"), EXPRESSION),
}


def local(element):
    return element.tag.rsplit("}", 1)[-1]


def faults(element, order, texts, path=""):
    """What is wrong with an element and all below it."""
    name = local(element)
    path = f"{path}/{name}"
    if name not in order:
        pattern = texts.get("/".join(path.split("/")[-2:])) or texts.get(name)
        if not pattern:
            yield f"{path} is unknown"
        elif not re.fullmatch(pattern, element.text or "") or len(element):
            yield f"{path} holds {element.text!r}"
        return
    if (element.text or "").strip():
        yield f"{path} holds a text"
    children = [local(child) for child in element]
    at = 0
    for names, least, most in order[name]:
        wanted = (names,) if isinstance(names, str) else names
        begin = at
        while at < len(children) and children[at] in wanted:
            at += 1
        if not least <= at - begin <= most:
            yield f"{path} has {at - begin} of {names}"
    if at < len(children):
        yield f"{path}: {children[at]} stands where it may not"
    if [child for child in children if child in ("dim", "dimIncrement")] == ["dim"] and order is SVD:
        yield f"{path} has no dimIncrement"
    for child in element:
        yield from faults(child, order, texts, path)


def repeated(element, order):
    """Names that stand twice in one scope."""
    for scope in element.iter():
        if local(scope) in ("memoryMaps", "component", "device", "vendorExtensions"):
            continue
        names = [child.findtext("{*}name") for child in scope if local(child) in order]
        yield from {f"{local(scope)}: {name}" for name in names if name and names.count(name) > 1}


# Readers -----------------------------------------------------------------------------------------------------------

def number(text):
    return int(text.split("'h")[1], 16) if "'h" in text else int(text, 0)


ACCESS_LETTERS = {"read-only": "r", "write-only": "w", "read-write": "rw"}


def field_access(word, on_write):
    letters = ACCESS_LETTERS[word]
    return letters.replace("w", {"oneToSet": "s", "oneToClear": "c"}.get(on_write, "w"))


def options_of(field, tag):
    return tuple((option.findtext(f"{tag}name"), number(option.findtext(f"{tag}value")))
                 for option in field.iter() if local(option) == "enumeratedValue")


def svd_registers(text):
    """Of an SVD file as this program writes it, with values that stand at registers alone."""
    device = ElementTree.fromstring(text)
    peripherals = {each.findtext("name"): each for each in device.iter("peripheral")}
    for each in peripherals.values():
        registers = peripherals[each.get("derivedFrom", each.findtext("name"))].find("registers")
        if registers is not None:
            yield from svd_parts(registers, number(each.findtext("baseAddress")))


def svd_parts(parent, base):
    for part in parent:
        if part.tag not in ("register", "cluster"):
            continue
        for index in range(int(part.findtext("dim") or 1)):
            address = base + number(part.findtext("addressOffset")) + index * number(part.findtext("dimIncrement") or "0")
            if part.tag == "cluster":
                yield from svd_parts(part, address)
            else:
                yield Register(address, int(part.findtext("size")), ACCESS_LETTERS[part.findtext("access")],
                               frozenset(svd_fields(part)))


def svd_fields(register):
    value, mask = (number(register.findtext(name) or "0") for name in ("resetValue", "resetMask"))
    for field in register.iter("field"):
        lowest, width = int(field.findtext("bitOffset")), int(field.findtext("bitWidth"))
        bits = (1 << width) - 1
        access = field_access(field.findtext("access") or register.findtext("access"),
                              field.findtext("modifiedWriteValues"))
        known = mask >> lowest & bits == bits
        yield Field(field.findtext("name"), lowest, width, access, value >> lowest & bits if known else None,
                    options_of(field, ""))


def ipxact_registers(text):
    for block in ElementTree.fromstring(text).iter():
        if local(block) == "addressBlock":
            yield from ipxact_parts(block, number(block.findtext("{*}baseAddress")))


def ipxact_parts(parent, base):
    for part in parent:
        if local(part) not in ("register", "registerFile"):
            continue
        is_register = local(part) == "register"
        step = number(part.findtext("{*}size")) // 8 if is_register else number(part.findtext("{*}range"))
        for index in range(int(part.findtext("{*}dim") or 1)):
            address = base + number(part.findtext("{*}addressOffset")) + index * step
            if is_register:
                yield Register(address, int(part.findtext("{*}size")), ACCESS_LETTERS[part.findtext("{*}access")],
                               frozenset(ipxact_fields(part)))
            else:
                yield from ipxact_parts(part, address)


def ipxact_fields(register):
    for field in register.findall("{*}field"):
        if field.find("{*}vendorExtensions") is not None:     # it stands for the whole register
            continue
        reset = field.findtext("{*}resets/{*}reset/{*}value")
        access = field_access(field.findtext("{*}access") or register.findtext("{*}access"),
                              field.findtext("{*}modifiedWriteValue"))
        yield Field(field.findtext("{*}name"), int(field.findtext("{*}bitOffset")), int(field.findtext("{*}bitWidth")),
                    access, None if reset is None else number(reset), options_of(field, "{*}"))


def access_letters(text):
    return text.replace("-", "")


def json_registers(data):
    for register in (register for block in data["blocks"] for register in block["registers"]):
        yield Register(register["address"], register["width"], access_letters(register["access"]), frozenset(
            Field(field["name"], field["lsb"], field["width"], access_letters(field["access"]), field["reset"],
                  tuple((option["name"], option["value"]) for option in field["options"]))
            for field in register["fields"]))


def csv_registers(text):
    registers = {}
    for row in csv.DictReader(io.StringIO(text, newline="")):
        if not row["kind"] or row["kind"] == "memory":
            continue
        key = (row["register"], int(row["address"], 16), int(row["width"]), access_letters(row["access"]))
        fields = registers.setdefault(key, set())
        if row["field"]:
            options = tuple((name, int(value)) for name, value in
                            (option.split("=") for option in row["options"].split("; ") if option))
            fields.add(Field(row["field"], int(row["lsb"]), int(row["bits"]), access_letters(row["field_access"]),
                             int(row["reset"]) if row["reset"] else None, options))
    for (_, *key), fields in registers.items():
        yield Register(*key, frozenset(fields))


# SystemRDL ---------------------------------------------------------------------------------------------------------

KEYWORDS = set("""abstract accesstype addressingtype addrmap alias all bit boolean bothedge compact component
    componentwidth constraint default encode enum external false field fullalign hw inside internal level longint mem na
    negedge nonsticky number onreadtype onwritetype posedge property r rclr ref reg regalign regfile rset ruser rw rw1
    signal string struct sw this true type unsigned w w1 wclr woclr woset wot wr wset wuser wzc wzs wzt alternate byte
    int precedencetype real shortint shortreal signed with within""".split())
TOKEN = re.compile(r"""\s+ | (?P<string>"(?:\\"|[^"])*") | (?P<sized>\d+'h[0-9A-F]+) | (?P<number>0x[0-9A-Fa-f]+|\d+)
                       | (?P<name>\\?[A-Za-z_]\w*) | (?P<sign>\+=|[{}\[\]();:=@])""", re.X)


class RdlError(Exception):
    """What a compiler would refuse."""


class Rdl:
    """A strict reader of the part of SystemRDL 2.0 that is written: it knows what the language wants beyond grammar."""

    PROPERTIES = {"addrmap": {"desc"}, "regfile": {"desc"}, "reg": {"desc", "regwidth"},
                  "field": {"desc", "sw", "onwrite", "reset", "encode"}, "mem": {"mementries", "memwidth"}}
    PARTS = {"addrmap": {"addrmap", "regfile", "reg", "mem"}, "regfile": {"regfile", "reg"}, "reg": {"field"},
             "field": set(), "mem": set()}

    def __init__(self, text):
        self.tokens = []
        at = 0
        while at < len(text):
            match = TOKEN.match(text, at)
            if not match:
                raise RdlError(f"no token: {text[at:at + 20]!r}")
            at = match.end()
            if match.lastgroup:
                self.tokens.append((match.lastgroup, match[0]))
        self.tokens.append(("end", ""))
        self.at = 0
        self.types = {}
        self.top = None
        while self.peek() != "":
            self.want("addrmap")
            name = self.name()
            if name in self.types:
                raise RdlError(f"{name} is defined twice")
            self.types[name] = self.top = self.body("addrmap")
            self.want(";")

    def peek(self):
        return self.tokens[self.at][1]

    def take(self, kind=None):
        found, text = self.tokens[self.at]
        if kind and found != kind:
            raise RdlError(f"{text!r} is no {kind}")
        self.at += 1
        return text

    def want(self, text):
        if self.take() != text:
            raise RdlError(f"{text!r} is missing: {self.tokens[max(0, self.at - 6):self.at]}")

    def name(self):
        text = self.take("name")
        if text in KEYWORDS:
            raise RdlError(f"{text} is a keyword")
        return text.lstrip("\\")

    def number(self):
        return int(self.take("number"), 0)

    def sized(self):
        width, digits = self.take("sized").split("'h")
        if int(digits, 16) >> int(width):
            raise RdlError("a number does not fit into its width")
        return int(width), int(digits, 16)

    def body(self, kind):
        self.want("{")
        body = {"kind": kind, "parts": [], "enums": {}}
        names = set()
        while self.peek() != "}":
            word = self.peek()
            if word == "enum":
                self.enumeration(body)
            elif word == "external" or word in self.PARTS or word in self.types or word.lstrip("\\") in self.types:
                part = self.component(kind)
                if part["name"] in names:
                    raise RdlError(f"{part['name']} stands twice")
                names.add(part["name"])
                body["parts"].append(part)
            else:
                self.property(kind, body)
        self.want("}")
        if kind != "field" and kind != "mem" and not body["parts"]:
            raise RdlError(f"a {kind} is empty")
        return body

    def property(self, kind, body):
        name = self.take("name")
        if name not in self.PROPERTIES[kind] or name in body:
            raise RdlError(f"{name} may not stand in a {kind}")
        self.want("=")
        if name == "desc":
            body[name] = self.take("string")
        elif name == "reset":
            body[name] = self.sized()
        elif name == "encode":
            body[name] = body["enums"][self.name()]
        elif name in ("sw", "onwrite"):
            body[name] = self.take("name")
        else:
            body[name] = self.number()
        self.want(";")

    def enumeration(self, body):
        self.want("enum")
        entries = body["enums"].setdefault(self.name(), {})
        self.want("{")
        while self.peek() != "}":
            name = self.name()
            self.want("=")
            width, value = self.sized()
            if name in entries or (width, value) in entries.values():
                raise RdlError(f"{name} stands twice in an enum")
            entries[name] = (width, value)
            if self.peek() == "{":
                self.take()
                self.property("regfile", {})
                self.want("}")
            self.want(";")
        self.want("}")
        self.want(";")

    def component(self, parent):
        external = self.peek() == "external"
        if external:
            self.take()
        word = self.take("name")
        type_name = word.lstrip("\\")
        body = self.types[type_name] if type_name in self.types and word not in KEYWORDS else self.body(word)
        if body["kind"] not in self.PARTS[parent] or external != (body["kind"] == "mem"):
            raise RdlError(f"a {body['kind']} in a {parent}")
        part = {"name": self.name(), "body": body, "count": None}
        if self.peek() == "[":
            self.take()
            part["count"] = self.number()
            if self.peek() == ":":
                self.take()
                part["bits"] = (part["count"], self.number())
            self.want("]")
        if body["kind"] == "field":
            part["count"] = None
        else:
            self.want("@")
            part["address"] = self.number()
            if part["count"] is not None:
                self.want("+=")
                part["step"] = self.number()
        self.want(";")
        return part

    def size(self, body):
        if body["kind"] == "reg":
            return body["regwidth"] // 8
        if body["kind"] == "mem":
            return body["mementries"] * body["memwidth"] // 8
        return max(part["address"] + (part["count"] or 1) * part.get("step", self.size(part["body"]))
                   if part["count"] else part["address"] + self.size(part["body"]) for part in body["parts"])

    def check_overlaps(self, body):
        ends = 0
        for part in sorted(body["parts"], key=lambda part: part["address"]):
            if part["address"] < ends:
                raise RdlError(f"{part['name']} lies where another is")
            size = self.size(part["body"])
            if part["count"] and part["step"] < size:
                raise RdlError(f"members of {part['name']} overlap")
            ends = part["address"] + (part["step"] * (part["count"] - 1) if part["count"] else 0) + size

    def registers(self, body=None, base=0):
        body = body or self.top
        self.check_overlaps(body)
        for part in body["parts"]:
            for index in range(part["count"] or 1):
                address = base + part["address"] + index * part.get("step", 0)
                if part["body"]["kind"] == "reg":
                    yield address, part["body"]["regwidth"], frozenset(self.fields(part["body"]))
                elif part["body"]["kind"] != "mem":
                    yield from self.registers(part["body"], address)

    @staticmethod
    def fields(register):
        taken = {"r": 0, "w": 0}
        for part in register["parts"]:
            body = part["body"]
            high, low = part["bits"]
            width = high - low + 1
            if not 0 <= low <= high < register["regwidth"]:
                raise RdlError(f"{part['name']} does not fit into its register")
            for letter in body["sw"]:
                if taken[letter] & ((1 << width) - 1) << low:
                    raise RdlError(f"{part['name']} overlaps another field")
                taken[letter] |= ((1 << width) - 1) << low
            if any(given != width for given, _ in [*body.get("encode", {}).values(), body.get("reset", (width, 0))]):
                raise RdlError(f"a number of {part['name']} has another width")
            access = body["sw"].replace("w", {"woset": "s", "woclr": "c"}.get(body.get("onwrite"), "w"))
            yield Field(part["name"], low, width, access, body["reset"][1] if "reset" in body else None,
                        tuple((name, value) for name, (_, value) in body.get("encode", {}).items()))


# Facts -------------------------------------------------------------------------------------------------------------

def fact_registers(facts):
    """What facts.json says of a chip."""
    types = {kind["name"]: kind for kind in facts["types"]}
    for instance in facts["instances"]:
        for register in types[instance["type"]]["registers"]:
            fields = frozenset(Field(field["name"], field["lsb"], field["width"], field["access"], field["reset"],
                                     tuple(map(tuple, field["options"]))) for field in register["fields"])
            addresses = [instance["address"] + register["offset"]]
            for count, stride in register["dims"]:
                addresses = [address + index * stride for address in addresses for index in range(count)]
            for address in addresses:
                yield instance["name"], Register(address, register["width"], register["access"], fields)


def legal(name):
    """A name as formats take it that begin none with a digit."""
    return f"_{name}" if name[:1].isdigit() else name


def with_legal_names(register):
    return register._replace(fields=frozenset(
        field._replace(name=legal(field.name), options=tuple((legal(name), value) for name, value in field.options))
        for field in register.fields))
