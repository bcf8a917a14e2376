"""Prints each include below ROOT (the argument) that breaks the layer rule; exits 1 if any does."""
import pathlib
import re
import sys

# The first pattern that matches a path below include/xel/ or src/ tells its group and rank. A group
# sees itself and lower ranks; without a rank, itself and public headers, and no rank sees it.
GROUPS = [
    (r"platform/", "platform", 0),
    (r"model/", "model", 1),
    (r"session/XELStreamManager", "manager", 4),
    (r"session/", "requests", 1),
    (r"(protocol/XELEnvironmentUtils|display/XELVideoDisplay)\.", r"\1", 1),
    (r"(display|protocol|tracking|vast)/", r"\1", 2),
    (r"monitor/", "monitor", 3),
    (r"xel\.h$", "umbrella", 5),
    (r"backends/[^/]+$", "default platform", None),
    (r"backends/([^/]+)/", r"\1 backend", None),
    (r"simulation/", "simulation", None),
    (r"gstreamer/", "gstreamer backend", None),
]
# Who may include a third party's headers; public headers never do.
THIRD_PARTY = {"boost/json": {"platform", "simulation"}, "libxml/": {"platform"},
               "uriparser/": {"platform"}, "curl/": {"curl backend"},
               "gst/": {"gstreamer backend"}, "gio/": {"gstreamer backend"},
               "glib": {"gstreamer backend"}, "taglib/": {"gstreamer backend"}}
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)


def group_of(path):
    for pattern, name, rank in GROUPS:
        if match := re.match(pattern, path):
            return match.expand(name), rank
    return None, None


def is_allowed(group, rank, public, header, ours):
    if not ours:
        for prefix, users in THIRD_PARTY.items():
            if header.startswith(prefix):
                return not public and group in users
        return bool(re.fullmatch(r"[a-z0-9_]+", header)) or (rank is None and not public)
    target, target_rank = group_of(header.removeprefix("xel/"))
    if target is None or (public and not header.startswith("xel/")):
        return False
    if target == group or (group == "default platform" and target.endswith(" backend")):
        return True
    if rank is None:
        return header.startswith("xel/") and target != "simulation"
    return target_rank is not None and target_rank < rank


def faults_of_file(root, path):
    name = path.relative_to(root).as_posix()
    group, rank = group_of(re.sub("^(include/xel|src)/", "", name))
    is_host = name.startswith(("tools/", "examples/"))
    if group is None and not is_host:
        return [f"{name} is in no group"]
    faults = []
    for match in INCLUDE.finditer(path.read_text(encoding="utf-8")):
        header = match[1]
        ours = header.startswith("xel/") or match[0].endswith('"')
        if is_host:  # It sees public headers and its own.
            own = [path.parent / header, root / "tools/xel" / header]
            allowed = not ours or header.startswith("xel/") or any(map(pathlib.Path.exists, own))
        else:
            allowed = is_allowed(group, rank, name.startswith("include/"), header, ours)
        if not allowed:
            faults.append(f"{name}: {group or 'a host'} must not include {header}")
    return faults


def check_tree(root):
    """The faults of a source tree, and how many files were read."""
    files = [path for folder in ("include", "src", "tools", "examples")
             for path in sorted((root / folder).rglob("*")) if path.suffix in {".h", ".cpp"}]
    return [fault for path in files for fault in faults_of_file(root, path)], len(files)


if __name__ == "__main__":
    found, read = check_tree(pathlib.Path(sys.argv[1]))
    print(*found, f"{read} files, {len(found)} faults against the layer rule", sep="\n")
    sys.exit(1 if found or not read else 0)
