"""Checks the layer rule: an include goes within its own group or to a lower rank.

    check.py ROOT

Prints each include that breaks the rule and exits 1 if there is any.
"""
import pathlib
import re
import sys

# The first pattern that matches a path below include/xel/ or src/ tells its group; the rank orders
# the groups. Groups of one rank do not see each other.
GROUPS = [
    (r"platform/", "platform", 0),
    (r"model/", "model", 1),
    (r"session/XELStreamManager", "manager", 4),
    (r"session/", "requests", 1),
    (r"protocol/XELEnvironmentUtils\.", "environment facts", 1),
    (r"protocol/", "protocol", 2),
    (r"display/XELVideoDisplay\.", "display contract", 1),
    (r"display/", "displays", 2),
    (r"vast/", "vast", 2),
    (r"tracking/", "tracking", 2),
    (r"monitor/", "monitor", 3),
    (r"xel\.h$", "umbrella", 5),
]
# Beside the ranks: these see public headers and their own group; nothing in the ranks sees them.
APART = [
    (r"backends/[^/]+$", "default platform"),
    (r"backends/([^/]+)/", r"\1 backend"),
    (r"simulation/", "simulation"),
]
# Who may include a third party's headers; public headers never do.
THIRD_PARTY = {
    "boost/json": {"platform", "simulation"},
    "libxml/": {"platform"},
    "uriparser/": {"platform"},
    "curl/": {"curl backend"},
}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def group_of(path):
    """The group and the rank (None: apart) of a path below include/xel/ or src/."""
    for pattern, name, rank in GROUPS:
        if re.match(pattern, path):
            return name, rank
    for pattern, name in APART:
        if match := re.match(pattern, path):
            return match.expand(name), None
    return None, None


def fault_of_own(group, rank, public, header):
    """Why a file of the group must not include one of our headers, or None."""
    target_public = header.startswith("xel/")
    target, target_rank = group_of(header.removeprefix("xel/"))
    if target is None:
        return "is in no group"
    if public and not target_public:
        return "is private"
    if target == group:
        return None
    if rank is None:
        if group == "default platform" and target.endswith(" backend"):
            return None
        if not target_public:
            return "is private"
        return "is of the simulation kit" if target == "simulation" else None
    if target_rank is None:
        return f"is apart ({target})"
    if target_rank >= rank:
        return f"is {target} (rank {target_rank}), not below {group} (rank {rank})"
    return None


def fault_of_foreign(group, rank, public, header):
    """Why a file of the group must not include a system's or third party's header, or None."""
    for prefix, allowed in THIRD_PARTY.items():
        if header.startswith(prefix):
            return "is a third party's" if public or group not in allowed else None
    if re.fullmatch(r"[a-z0-9_]+", header):
        return None
    return None if rank is None and not public else "is not of the standard library"


def check_file(path, below, public, text):
    group, rank = group_of(below)
    if group is None:
        return [f"{path}: is in no group"]
    faults = []
    for match in INCLUDE.finditer(text):
        bracket, header = match.groups()
        ours = bracket == '"' or header.startswith("xel/")
        find_fault = fault_of_own if ours else fault_of_foreign
        if fault := find_fault(group, rank, public, header):
            line = text.count("\n", 0, match.start(1)) + 1
            faults.append(f"{path}:{line}: {header} {fault}")
    return faults


def check_outside(path, text):
    """The tool and the examples are hosts: of ours, they see public headers and their own."""
    faults = []
    for match in INCLUDE.finditer(text):
        bracket, header = match.groups()
        if bracket == '"' and not header.startswith("xel/") and not (path.parent / header).exists():
            line = text.count("\n", 0, match.start(1)) + 1
            faults.append(f"{path}:{line}: {header} is neither public nor its own")
    return faults


def check_tree(root):
    """The faults of a source tree, and how many files were read."""
    faults, files = [], 0
    for folder, base in (("include", "include/xel"), ("src", "src"), ("tools", ""), ("examples", "")):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix not in {".h", ".cpp"}:
                continue
            files += 1
            text = path.read_text(encoding="utf-8")
            if base:
                below = path.relative_to(root / base).as_posix()
                faults += check_file(path, below, folder == "include", text)
            else:
                faults += check_outside(path, text)
    return faults, files


def main():
    faults, files = check_tree(pathlib.Path(sys.argv[1]))
    print(*faults, sep="\n", end="\n" if faults else "")
    print(f"{files} files, {len(faults)} includes against the layer rule")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
