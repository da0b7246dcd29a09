"""The flat interface is plain forwards: each hands its parameters, each once and in their order, to the member of its name,
and both headers agree on that order by name. A swapped pair of equal types would compile."""
import re
from pathlib import Path

import pytest

TREE = Path(__file__).resolve().parents[2]

# Members of another name than the function's.
MEMBERS = {
    "ZRVConnectDeviceSocket": "ConnectDevice", "ZRVConnectDeviceAuto": "ConnectDevice", "ZRVSetRGBDataArray": "SetRGBData",
    "ZRVGetDeviceParamAxis": "GetDeviceParam", "ZRVFilterDataSingle": "FilterData",
    "ZRVHersheyGlyphsDataSize": "HersheyDataSize", "ZRVHersheyGlyphsDataStream": "HersheyDataStream",
}
# Not forwards, or of two calls: looked at by other tests.
OTHERS = {
    "ZRVCreateDevice", "ZRVDeleteDevice", "ZRVCreateDataGenerator", "ZRVDeleteDataGenerator", "ZRVFreeText", "ZRVGetErrorText",
    "ZRVLoadDeviceParams", "ZRVGetDeviceParam", "ZRVImageRasterPattern", *(f"ZRVInit{what}Settings" for what in (
        "Scan", "Waveform", "Spirograph", "Lissajous", "Clock", "Signal", "Import", "Text", "Pattern")),
}
# Names of the same thing.
SAME = {"index": "idx", "indexIn": "idxIn", "indexOut": "idxOut", "milliseconds": "mSec", "params": "record",
        "devices": "record", "list": "record", "n": "numSamples"}


def code_of(*names):
    text = "\n".join((TREE / name).read_text() for name in names)
    return re.sub(r"//[^\n]*|/\*.*?\*/", "", text, flags=re.DOTALL)


def closing(text, start):
    """Where the bracket that opens at start is closed."""
    depth = 0
    for at in range(start, len(text)):
        depth += (text[at] in "([{") - (text[at] in ")]}")
        if depth == 0:
            return at
    raise AssertionError(text[start:start + 80])


def split(arguments):
    parts, depth = [""], 0
    for character in arguments:
        depth += (character in "([{<") - (character in ")]}>")
        if character == "," and depth == 0:
            parts.append("")
        else:
            parts[-1] += character
    return [part.strip() for part in parts if part.strip() not in ("", "void")]


def names_of(parameters):
    return [re.findall(r"\w+", part.split("=")[0])[-1] for part in split(parameters)]


def plain(name):
    return SAME.get(name, name)


def declared():
    header = code_of("include/ZRVFlatInterface.h")
    return {found[1]: names_of(header[found.end():closing(header, found.end() - 1)])
            for found in re.finditer(r"ZRV_API [^;()]*?\b(ZRV\w+)\(", header)}


def defined():
    """Of each function its parameters, and the calls of members in its body with their arguments."""
    code = code_of("device/flat_interface.cpp", "device/error_text.cpp", "generator/flat_interface.cpp", "generator/image_raster.cpp")
    functions = {}
    for found in re.finditer(r"^[\w \*]+?\b(ZRV\w+)\(", code, re.MULTILINE):
        end = closing(code, found.end() - 1)
        body = code.index("{", end)
        text = code[body:closing(code, body) + 1]
        calls = [(call[1], split(text[call.end():closing(text, call.end() - 1)]))
                 for call in re.finditer(r"(?:->|ZRV(?:Device|DataGenerator|SerialIO)::)(\w+)\(", text)]
        functions[found[1]] = names_of(code[found.end():end]), calls
    return functions


def members():
    """The parameter lists of each member, by name."""
    header = code_of("include/ZRVDevice.h", "include/ZRVDataGenerator.h", "include/ZRVSerialIO.h")
    lists = {}
    for found in re.finditer(r"\b([A-Za-z]\w+)\(", header):
        end = closing(header, found.end() - 1)
        if re.match(r"\s*(const)?\s*(override)?\s*[;{]", header[end + 1:]):
            lists.setdefault(found[1], []).append(names_of(header[found.end():end]))
    return lists


DECLARED, DEFINED, MEMBER_LISTS = declared(), defined(), members()


def test_each_declared_function_is_defined_once_and_looked_at():
    assert len(DECLARED) >= 167 and set(DEFINED) == set(DECLARED) and OTHERS <= set(DECLARED)


@pytest.mark.parametrize("function", sorted(set(DECLARED) - OTHERS))
def test_forwards_its_parameters_in_order(function):
    own, calls = DEFINED[function]
    member = MEMBERS.get(function, function[3:])
    has_handle = DECLARED[function][:1] in (["device"], ["generator"])
    own, c_names = [[plain(name) for name in names[has_handle:]] for names in (own, DECLARED[function])]
    arguments, = (arguments for name, arguments in calls if name == member)
    used = [list(dict.fromkeys(name for name in map(plain, re.findall(r"\w+", argument)) if name in own))
            for argument in arguments]
    # Each argument is made of one parameter, or is the place for a record to return, or a constant.
    assert [name for names in used for name in names] == own and all(len(names) == 1 for names in used if own[1:])
    assert own == c_names
    assert any([plain(name) for name in names][:len(own)] == own for names in MEMBER_LISTS[member])
