"""The tables of the two DLLs as objdump prints them: exports_test.py OBJDUMP BIN SOURCES

The exports of vxutil.dll against its lists: plain functions have their ordinals and no names, class
members and tables have both, and further names come after the table. The services of vxframework.dll
have their ordinals only. vxutil.dll imports them by ordinal, and the rest from the system alone."""

import re
import subprocess
import sys

objdump, binaries, sources = sys.argv[1:]
SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll"}


def rows(name):
    with open(f"{sources}/{name}", encoding="ascii") as lines:
        return [line.split() for line in lines if line.strip() and not line.startswith("#")]


def tables(library):
    """Returns the ordinals, the names by ordinal and, for each library imported, ordinals and names."""
    text = subprocess.run((objdump, "-p", f"{binaries}/{library}"), capture_output=True, check=True, text=True).stdout
    base = int(re.search(r"Ordinal Base\s+(\d+)", text)[1])
    ordinals = [int(found) for found in re.findall(r"\+base\[ *(\d+)\] +[0-9a-f]+ Export RVA", text)]
    names = {base + int(index): name for index, name in re.findall(r"^\t\[ *(\d+)\](?: \+base\[ *\d+\] +[0-9a-f]+)? (\S+)$", text, re.M)}
    imports = {}
    for library_text in text.split("DLL Name: ")[1:]:
        library_name, *entries = library_text.split("\n\n")[0].splitlines()
        imports[library_name.lower()] = [entry.split()[1:] for entry in entries[1:]]
    return ordinals, names, imports


def expect(what, found, wanted):
    if found != wanted:
        sys.exit(f"{what}: found {found}, expected {wanted}")


listed = {int(ordinal): symbol for ordinal, symbol, *_ in rows("frame/exports.txt")}
further = {symbol for symbol, in rows("frame/abi_symbols.txt")} | {"vxExportAddress"}
ordinals, names, imports = tables("vxutil.dll")
expect("functions without names", len(listed) - len(names) + len(further), 120)
expect("ordinals", ordinals, list(range(100, 496 + len(further))))
expect("names of the table", {n: name for n, name in names.items() if n < 496},
       {n: symbol for n, symbol in listed.items() if symbol.startswith("_Z")})
expect("further names", {name for n, name in names.items() if n > 495}, further)
expect("libraries", set(imports), SYSTEM | {"vxframework.dll"})

ordinals, names, framework_imports = tables("vxframework.dll")
expect("services", ordinals, [int(ordinal) for ordinal, _ in rows("framework/exports.txt")])
expect("names of services", names, {})
expect("imported services", sorted((int(n, 16), name) for n, name in imports["vxframework.dll"]),
       [(n, "<none>") for n in ordinals])
expect("libraries of the framework", set(framework_imports), SYSTEM)
