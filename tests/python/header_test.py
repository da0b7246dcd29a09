"""The package against the headers, as a C compiler reads them."""
import ctypes
import re
import shutil
import subprocess
from enum import IntEnum
from pathlib import Path

import pytest
import zrv.enums
from zrv import flat

INCLUDE = Path(__file__).resolve().parents[2] / "include"


def text(header):
    return re.sub(r"/\*.*?\*/", "", (INCLUDE / header).read_text(), flags=re.DOTALL)


STRUCTS = dict(re.findall(r"typedef struct (\w+) \{(.*?)\n\}", text("ZRVDefinitions.h"), re.DOTALL))
RECORDS = {flat._record_of(name): name for name in STRUCTS}
C_NAMES = {**RECORDS, None: "void", ctypes.c_bool: "bool", ctypes.c_char: "char", ctypes.c_ubyte: "unsigned char",
           ctypes.c_int: "int", ctypes.c_uint: "unsigned int", ctypes.c_float: "float", ctypes.c_char_p: "char*",
           ctypes.c_void_p: "void*"}


def plain(name):
    return name.replace("_", "").lower()


def c_type(kind):
    """What C calls a declared type; const is left out."""
    kind = kind.pointer if isinstance(kind, flat._Array) else kind
    return C_NAMES[kind] if kind in C_NAMES else c_type(kind._type_) + "*"


def declarations():
    for name in re.findall(r"ZRV_API[^;]*?(ZRV\w+)\(", text("ZRVFlatInterface.h")):
        entry = getattr(zrv.raw, name)
        yield f"{c_type(entry.restype)} {name}({', '.join(map(c_type, entry.argtypes)) or 'void'});"


def layout():
    for record, c in RECORDS.items():
        names = re.findall(r"(\w+)(?:\[\w+\])*(?: ZRV_DEFAULT\(.*?\))?;", STRUCTS[c])
        assert [plain(name) for name in names] == [plain(name) for name, _ in record._fields_], c
        yield f"_Static_assert(sizeof({c}) == {ctypes.sizeof(record)}, \"size of {c}\");"
        twin = type("Twin", (ctypes.Structure,), {"_fields_": record._fields_})  # its fields tell their offsets
        for name, (field, kind) in zip(names, record._fields_):
            dimensions = ""
            while issubclass(kind, ctypes.Array):
                kind, dimensions = kind._type_, dimensions + f"[{kind._length_}]"
            yield (f"_Static_assert(offsetof({c}, {name}) == {getattr(twin, field).offset} && _Generic("
                   f"&(({c}*)0)->{name}, {c_type(kind)}(*){dimensions}: 1, default: 0), \"{c}.{name}\");")


@pytest.mark.skipif(not shutil.which("cc"), reason="needs a C compiler")
def test_functions_and_records_are_those_of_c(tmp_path):
    """Each function is declared a second time, as the package does: C refuses another type."""
    header = re.sub(r"typedef struct (\w+) \1;", r"typedef void \1;", text("ZRVFlatInterface.h"))  # handles are void*
    again = list(declarations())
    assert len(again) == header.count("\nZRV_API ") > 150 and None not in RECORDS
    (tmp_path / "check.c").write_text("\n".join(["#include <stddef.h>", "#define const", header, *again, *layout()]))
    check = subprocess.run(["cc", "-std=c11", "-fsyntax-only", f"-I{INCLUDE}", str(tmp_path / "check.c")],
                           capture_output=True, text=True)
    assert check.returncode == 0, check.stderr


def test_enumerations_are_those_of_c():
    ours = {kind.__name__: kind for kind in vars(zrv.enums).values() if isinstance(kind, type) and kind is not IntEnum}
    theirs = re.findall(r"typedef enum ZRV(\w+) ZRV_ENUM_BASE \{(.*?)\n\}", text("ZRVDefinitions.h"), re.DOTALL)
    assert len(ours) == len(theirs)
    for name, members in theirs:
        expected = re.findall(r"(\w+) = (\d+)", members)
        kind = ours["ErrorCode" if name == "Error" else name]
        assert [int(value) for _, value in expected] == [member.value for member in kind], name
        for (c, _), member in zip(expected, kind):
            assert plain(c).endswith(plain(member.name)), (c, member)
