"""Plays an on-demand stream and a live one with a pre-roll with `xel play --json`, in real time and
through GStreamer, from `xel serve --media`. Exits 1 unless each event comes within 0.3 s of its time
in the document, the server finds each ping that the documents promise, and a recording replays.

    session.py XEL MEDIA-FOLDER
"""
import json
import ssl
import subprocess
import sys
import tempfile
import urllib.request

NAMES = {"start": "adDidStart", "firstquartile": "adDidCrossFirstQuartile",
         "midpoint": "adDidCrossMidpoint", "thirdquartile": "adDidCrossThirdQuartile",
         "complete": "adDidComplete"}
LATEST = 0.3
APP = "com.example.session"


def expect(condition, message):
    if not condition:
        sys.exit(f"session: {message}")


def play(xel, url, ca_file, *stream):
    """The process, the file of its output (a pipe that nobody reads meanwhile would stop it), and the
    one of its trace."""
    output, trace = tempfile.TemporaryFile("w+"), tempfile.NamedTemporaryFile()
    return subprocess.Popen(
        [xel, "play", *stream, "--player", "gstreamer", "--server", url.removeprefix("https://"),
         "--ca-file", ca_file, "--app-id", APP, "--json", "--record", trace.name, "--redact-urls"],
        stdout=output), output, trace


def lines_of(xel, process, output_file, trace):
    process.wait(timeout=150)
    output_file.seek(0)
    output = output_file.read()
    expect(process.returncode == 0, f"xel play ended with {process.returncode}:\n{output}")
    lines = [json.loads(line) for line in output.splitlines()]
    failed = [line for line in lines if line["event"] == "pingResult" and line.get("error")]
    expect(not failed, f"pings failed: {failed}")
    replay = subprocess.run([xel, "replay", trace.name], capture_output=True, text=True, check=False)
    expect(replay.returncode == 0, f"the replay differs:\n{replay.stdout}{replay.stderr}")
    return lines


def ad_events(lines):
    return [(line["t"], line["event"], line["ad"]["adKey"]) for line in lines
            if line["event"] in NAMES.values()]


def check_on_demand(lines, document):
    due = sorted((int(second), NAMES[entry["type"]], entry["ad"])
                 for second, entries in document["times"].items() for entry in entries)
    seen = ad_events(lines)
    expect(sorted((name, ad) for _, name, ad in seen) == sorted(due_event[1:] for due_event in due),
           f"the events of the on-demand stream are {seen}")
    times = {(name, ad): second for second, name, ad in due}
    lags = [time - times[name, ad] for time, name, ad in seen]
    breaks = [line["t"] for line in lines if line["event"] == "adBreakDidStart"]
    starts = [cuepoint["start"] for cuepoint in document["cuepoints"]]
    expect(len(breaks) == len(starts), f"{len(breaks)} breaks for {len(starts)} cue points")
    lags += [time - start for time, start in zip(breaks, starts)]
    print(f"on demand: {len(lags)} events, {min(lags):.3f} to {max(lags):.3f} s after their times")
    expect(0 <= min(lags) and max(lags) <= LATEST, "an event was early or late")


def check_live(lines, document):
    loads = [line["url"].rsplit("/", 1)[1] for line in lines if line["event"] == "loadURL"]
    expect(loads == ["preroll.m3u8", "main.m3u8"], f"the live stream loaded {loads}")
    breaks = list(document["breaks"])
    for event in ("adBreakDidStart", "adBreakDidEnd"):
        seen = [line["adBreakInfo"]["adBreakKey"] for line in lines if line["event"] == event]
        expect(sorted(seen) == sorted(breaks), f"{event} came for {seen}")
    expect(len(ad_events(lines)) == len(NAMES) * len(document["ads"]),
           f"the events of the live stream are {ad_events(lines)}")
    print(f"live: a pre-roll, then the main stream with {len(breaks) - 1} break(s)")


def main(xel, media):
    server = subprocess.Popen([xel, "serve", "--port", "0", "--media", media, "--live-duration", "30",
                               "--assert", "complete"], stdout=subprocess.PIPE, text=True)
    try:
        url, ca_file = server.stdout.readline().split()
        on_demand = play(xel, url, ca_file, "vod", "--content-source-id", "shows", "--video-id", "a")
        live = play(xel, url, ca_file, "live", "--asset-key", "news", "--attempt-preroll")
        on_demand_lines, live_lines = lines_of(xel, *on_demand), lines_of(xel, *live)
        context = ssl.create_default_context(cafile=ca_file)
        with urllib.request.urlopen(url + "/documents", context=context) as response:
            documents = {each["streamType"]: each["document"] for each in json.load(response)}
        check_on_demand(on_demand_lines, documents["on_demand"])
        check_live(live_lines, documents["live"])
        server.terminate()
        pings = server.stdout.read()
        expect(server.wait() == 0, "the pings differ from what the documents promise:\n" + pings)
    finally:
        server.terminate()
        server.wait()


main(*sys.argv[1:])
