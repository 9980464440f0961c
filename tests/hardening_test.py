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
    segments = output("readelf", "-lW", library)
    dynamic = output("readelf", "-dW", library)
    symbols = output("readelf", "--dyn-syms", "-W", library)
    if "GNU_RELRO" not in segments or "BIND_NOW" not in dynamic:
        yield "full RELRO"
    if re.search(r"GNU_STACK.*\bRWE\b", segments) or "GNU_STACK" not in segments:
        yield "a stack that cannot be executed"
    if "TEXTREL" in dynamic:
        yield "code without relocations"
    if "__stack_chk_fail" not in symbols:
        yield "guarded stacks"
    if optimised and not re.search(r"UND \w+_chk@", symbols):
        yield "checked calls"
    if "X86-64" in output("readelf", "-hW", library):
        marked = re.findall(r"^ *([0-9a-f]+):\tf3 0f 1e fa", output("objdump", "-d", library),
                            re.MULTILINE)  # endbr64
        addresses = {int(address, 16) for address in marked}
        functions = re.findall(r": ([0-9a-f]+) .*FUNC +(?:GLOBAL|WEAK) +DEFAULT +[0-9]+ (\w+)",
                               symbols)
        yield from (f"a landing mark at {name}" for address, name in functions
                    if int(address, 16) not in addresses)
        if not functions:
            yield "exported functions"


optimised = sys.argv[1] == "1"
missing = [f"{library} lacks {fault}" for library in sys.argv[2:]
           for fault in faults(library, optimised)]
print("\n".join(missing))
sys.exit(1 if missing else 0)
