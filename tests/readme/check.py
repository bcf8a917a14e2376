"""Checks that the first C++ block of a Markdown file is, to the letter, a file that CI compiles.

    check.py MARKDOWN SOURCE
"""
import difflib
import pathlib
import re
import sys

markdown, source = (pathlib.Path(argument) for argument in sys.argv[1:3])
block = re.search(r"^```cpp\n(.*?)^```$", markdown.read_text(encoding="utf-8"), re.M | re.S)
if not block:
    sys.exit(f"{markdown}: no C++ block")
difference = list(difflib.unified_diff(
    block[1].splitlines(True), source.read_text(encoding="utf-8").splitlines(True),
    str(markdown), str(source)))
sys.stdout.writelines(difference)
sys.exit(1 if difference else 0)
