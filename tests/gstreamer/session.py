"""Plays an on-demand stream and a live one with a pre-roll with `xel play --json`, in real time and
through GStreamer, from `xel serve --media`. Exits 1 unless each event comes within 0.3 s of its time
in the document, the server finds each ping that the documents promise, and a recording replays.

    session.py XEL MEDIA-FOLDER
"""
import sys

from playing import Player, Server, expect

NAMES = {"start": "adDidStart", "firstquartile": "adDidCrossFirstQuartile",
         "midpoint": "adDidCrossMidpoint", "thirdquartile": "adDidCrossThirdQuartile",
         "complete": "adDidComplete"}
LATEST = 0.3


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
    with Server(xel, media, "--live-duration", "30", "--assert", "complete") as server:
        on_demand = Player(xel, server, "vod", "--content-source-id", "shows", "--video-id", "a")
        live = Player(xel, server, "live", "--asset-key", "news", "--attempt-preroll")
        on_demand_lines, live_lines = on_demand.lines(), live.lines()
        documents = {each["streamType"]: each["document"] for each in server.request("/documents")}
        check_on_demand(on_demand_lines, documents["on_demand"])
        check_live(live_lines, documents["live"])
        server.judged()


main(*sys.argv[1:])
