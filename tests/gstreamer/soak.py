"""Plays a live stream of five minutes with `xel play`, in real time and through GStreamer, while
`xel serve --media` lets a poll go wrong every 20 s, each time in another way. Exits 1 unless the server finds
each ping that the documents promise, no error was heard, playback never stood still, and memory and
threads of the player stay where they are. Prints its figures.

    soak.py XEL MEDIA-FOLDER
"""
import json
import subprocess
import sys

from playing import Player, Server, expect

SECONDS = 300
BETWEEN_SAMPLES = 10
SAMPLES_BETWEEN_FAULTS = 2
FAULTS = ["status:503@1", "hang@1", "reset@1-2", "truncate@1", "malformed@1", "wrong-type@1",
          "oversized@1", "redirect-loop@1-17", "slow-drip@1", "delay:2@1"]
STANDSTILL = 1.0
GROWTH = 1.05


def sample(process):
    """Resident memory in MiB, and the number of threads; absent when the process has ended."""
    try:
        with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
            facts = dict(line.split(":", 1) for line in status)
        return int(facts["VmRSS"].split()[0]) / 1024, int(facts["Threads"])
    except (FileNotFoundError, KeyError):
        return None


def watch(server, process):
    """Samples of the process until it ends, and the number of faults that struck."""
    samples, struck = [], 0
    while True:
        try:
            process.wait(timeout=BETWEEN_SAMPLES)
            return samples, struck
        except subprocess.TimeoutExpired:
            samples.append(sample(process))
        if len(samples) % SAMPLES_BETWEEN_FAULTS == 0:
            struck += sum(fault["struck"] > 0 for fault in server.request("/faults"))
            number = len(samples) // SAMPLES_BETWEEN_FAULTS - 1
            server.request("/faults", ["document=" + FAULTS[number % len(FAULTS)]])


def standstills(trace):
    """Seconds that playback stood still, for each time that it did; and how many it went on."""
    ticks = [(line["t"], line["time"]) for line in trace if line.get("kind") == "progress"]
    stood, (moment, position) = [], ticks[0]
    for tick, time in ticks:
        if time <= position:
            continue
        lost = (tick - moment) - (time - position)
        if lost > STANDSTILL:
            stood.append(lost)
        moment, position = tick, time
    return stood, position - ticks[0][1]


def check_flat(what, unit, values):
    third = len(values) // 3
    second, last = values[third:2 * third], values[2 * third:]
    means = [sum(part) / len(part) for part in (second, last)]
    print(f"{what}: {means[0]:.1f}{unit} in the second third, {means[1]:.1f}{unit} in the last, "
          f"{max(values):.1f}{unit} at most")
    expect(means[1] <= means[0] * GROWTH, f"{what} grows: {values}")


def main(xel, media):
    with Server(xel, media, "--live-duration", str(SECONDS), "--assert", "started") as server:
        player = Player(xel, server, "live", "--asset-key", "news")
        samples, struck = watch(server, player.process)
        lines = player.lines()
        with open(player.trace.name, encoding="utf-8") as trace:
            stood, played = standstills([json.loads(line) for line in trace])
        errors = [line for line in lines if line["event"] == "didReceiveError"]
        documents = server.request("/documents")
        pings = server.judged()
    started = sum(line["event"] == "adDidStart" for line in lines)
    print(f"played: {played:.0f} s; {started} ads; {len(errors)} errors; {len(stood)} standstills")
    print(f"polls: {struck} met a fault")
    print(pings.splitlines()[0])
    expect(played > SECONDS - 15, f"only {played:.0f} s were played")
    expect(started == len(documents[0]["document"]["ads"]), f"only {started} ads started")
    expect(struck >= SECONDS // (BETWEEN_SAMPLES * SAMPLES_BETWEEN_FAULTS) - 2, f"only {struck} polls met a fault")
    expect(not errors and not stood, f"errors: {errors}; standstills: {stood}")
    samples = [each for each in samples if each]
    check_flat("resident memory", " MiB", [memory for memory, _ in samples])
    check_flat("threads", "", [threads for _, threads in samples])


main(*sys.argv[1:])
