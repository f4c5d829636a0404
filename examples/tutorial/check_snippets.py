"""Checks that every ```cpp and ```cmake block of a document is taken verbatim from the given files, so
that the document shows only code that is compiled and run. Usage: check_snippets.py <doc.md> <file>..."""
import pathlib
import re
import sys

doc = pathlib.Path(sys.argv[1])
sources = "\n".join(pathlib.Path(p).read_text() for p in sys.argv[2:])
blocks = re.findall(r"^```(?:cpp|cmake)\n(.*?)^```$", doc.read_text(), re.M | re.S)
stray = [b for b in blocks if b not in sources]
for block in stray:
    print(f"{doc}: this block is in none of {sys.argv[2:]}:\n{block}", file=sys.stderr)
if not blocks:
    print(f"{doc}: no code block found", file=sys.stderr)
sys.exit(1 if stray or not blocks else 0)
