"""Checks that check.py finds each kind of violation, and nothing in a tree that keeps the rule."""
import pathlib
import tempfile
import unittest

from check import check_tree

ALLOWED = {
    "include/xel/session/XELStreamManager.h": "xel/monitor/XELStreamMonitorDelegate.h",
    "include/xel/session/XELVODStreamRequest.h": "xel/session/XELStreamRequest.h",
    "src/protocol/XELRequestBuilder.cpp": "protocol/XELEnvironmentUtils.h",
    "src/tracking/XELTrackingPingHandler.cpp": "protocol/XELEnvironmentUtils.h",
    "src/backends/DefaultPlatform.cpp": "backends/curl/CurlHTTPClient.h",
    "src/simulation/ScriptedDisplay.cpp": "xel/simulation/ScriptedDisplay.h",
    "src/platform/JSONValue.cpp": "<boost/json/value.hpp>",
    "src/backends/linux/SystemFacts.cpp": "<sys/utsname.h>",
    "tools/xel/Play.cpp": "xel/simulation/simulation.h",
}
VIOLATIONS = {
    "upwards": ("src/vast/XELAdParser.cpp", "monitor/XELStreamMonitor.h"),
    "across one rank": ("src/vast/XELAdParser.cpp", "tracking/XELTrackingPingHandler.h"),
    "request sees manager": ("include/xel/session/XELStreamRequest.h",
                             "xel/session/XELStreamManager.h"),
    "public sees private": ("include/xel/model/XELAd.h", "platform/Text.h"),
    "core sees backend": ("src/platform/Platform.cpp", "backends/curl/CurlHTTPClient.h"),
    "core sees simulation": ("src/monitor/XELStreamMonitor.cpp", "xel/simulation/VirtualRunLoop.h"),
    "backend sees core": ("src/backends/curl/CurlHTTPClient.cpp", "platform/Text.h"),
    "backend sees backend": ("src/backends/curl/CurlHTTPClient.cpp", "backends/linux/Facts.h"),
    "simulation sees core": ("src/simulation/CannedAdServer.cpp", "vast/XELVastParser.h"),
    "third party in public": ("include/xel/platform/JSONValue.h", "<boost/json/value.hpp>"),
    "third party elsewhere": ("src/monitor/XELStreamMonitor.cpp", "<curl/curl.h>"),
    "system in the core": ("src/model/XELAd.cpp", "<unistd.h>"),
    "file in no group": ("src/misc/Helper.cpp", "<string>"),
    "tool sees private": ("tools/xel/Play.cpp", "platform/Text.h"),
}


def faults_of(file, header):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, file)
        path.parent.mkdir(parents=True)
        path.write_text(f"#include {header if header[0] == '<' else chr(34) + header + chr(34)}\n")
        return check_tree(pathlib.Path(folder))[0]


class LayerRule(unittest.TestCase):
    def test_allows(self):
        for file, header in ALLOWED.items():
            with self.subTest(file=file, header=header):
                self.assertEqual(faults_of(file, header), [])

    def test_finds(self):
        for kind, (file, header) in VIOLATIONS.items():
            with self.subTest(kind):
                self.assertEqual(len(faults_of(file, header)), 1)


if __name__ == "__main__":
    unittest.main()
