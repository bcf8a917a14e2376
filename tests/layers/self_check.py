"""Checks that check.py finds each kind of violation; the tree itself shows what it allows."""
import pathlib
import tempfile

from check import check_tree

VIOLATIONS = {
    "src/vast/XELAdParser.cpp": '"tracking/XELTrackingPingHandler.h"',
    "include/xel/model/XELAd.h": '"platform/Text.h"',
    "src/platform/Platform.cpp": '"backends/curl/CurlHTTPClient.h"',
    "src/backends/curl/CurlHTTPClient.cpp": '"platform/Text.h"',
    "src/backends/linux/Facts.cpp": '"xel/simulation/VirtualRunLoop.h"',
    "include/xel/platform/JSONValue.h": "<boost/json/value.hpp>",
    "src/monitor/XELStreamMonitor.cpp": "<curl/curl.h>",
    "src/model/XELAd.cpp": "<unistd.h>",
    "src/misc/Helper.cpp": "<string>",
    "tools/xel/Play.cpp": '"platform/Text.h"',
}
for file, header in VIOLATIONS.items():
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, file)
        path.parent.mkdir(parents=True)
        path.write_text(f"#include {header}\n")
        assert len(check_tree(pathlib.Path(folder))[0]) == 1, f"{file} may include {header}"
