"""What the built libraries are hardened with: hardening_test.py OPTIMISED LIBRARY...

Full RELRO, no executable stack, no text relocations, guarded stacks, in optimised builds the checked
calls of the C library, and on x86-64 a landing mark at the start of every exported function."""

import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, capture_output=True, check=True, text=True).stdout


def faults(library, optimised):
    """Yields what is missing in a library."""
    segments, dynamic, symbols = (output("readelf", what, "-W", library) for what in ("-l", "-d", "--dyn-syms"))
    for name, good in (
            ("full RELRO", "GNU_RELRO" in segments and "BIND_NOW" in dynamic),
            ("a stack that cannot be executed", re.search(r"GNU_STACK(?!.*\bRWE\b)", segments)),
            ("code without relocations", "TEXTREL" not in dynamic),
            ("guarded stacks", "__stack_chk_fail" in symbols),
            ("checked calls", not optimised or re.search(r"UND \w+_chk@", symbols))):
        if not good:
            yield name
    if "X86-64" in output("readelf", "-hW", library):
        functions = re.findall(r": ([0-9a-f]+) .*FUNC +(?:GLOBAL|WEAK) +DEFAULT +[0-9]+ (\w+)", symbols)
        marked = re.findall(r"^ *([0-9a-f]+):\tf3 0f 1e fa", output("objdump", "-d", library), re.M)  # endbr64
        marks = {int(address, 16) for address in marked}
        yield from (f"a landing mark at {name}" for address, name in functions or [("0", "any function")]
                    if int(address, 16) not in marks)


missing = [f"{library} lacks {fault}" for library in sys.argv[2:] for fault in faults(library, sys.argv[1] == "1")]
sys.exit("\n".join(missing) or 0)
