// What xel report finds in a trace.
import assert from "node:assert/strict";
import test from "node:test";
import { dataOf, report } from "./tool.mjs";
import { manyBreaks, trace } from "./traces.mjs";

const twoBreaks = manyBreaks(2, 2, 60, 15);  // ads at 10, 25 and at 70, 85
const reportOf = (options) =>
  dataOf(report("data", trace({ breaks: twoBreaks, until: 110, ...options })).page);

test("a session without a fault", () => {
  const data = reportOf({});
  assert.equal(data.statement, "All 24 pings were accepted.");
  assert.deepEqual([data.losses, data.findings], [[], []]);
  assert.equal(data.startUp, 0.9);
  assert.deepEqual(data.metadata,
    { events: 20, worst: data.metadata.worst, sum: data.metadata.sum, texts: 0, unknownTexts: 0 });
  assert.ok(data.metadata.worst < 0.25, `late by ${data.metadata.worst} s`);
  assert.deepEqual(data.breaks.map(({ key, position }) => [key, Math.floor(position)]),
    [["break-1", 10], ["break-2", 70]]);
  assert.ok(data.ads.every((ad) => ad.outcome === "completed" && ad.pingsNotSent === 0));
  assert.deepEqual(data.pings.map(({ ad, event }) => `${ad} ${event}`).slice(0, 3),
    ["0 start", "0 creativeview", "0 firstquartile"]);
  assert.equal(data.playhead.flat().length, 2, "a straight path has two points");
});

const losses = [
  ["failed pings, by status and server", { answer: ({ pingEvent }) => ({ status: pingEvent === "midpoint" ? 500 : 200 }) },
    "4 of 24 pings failed.", ["error", "Ping to tracking.example failed", "HTTP 500", 4]],
  ["pings without an answer", { answer: ({ pingEvent }) => pingEvent !== "complete" && { status: 200 } },
    "4 of 24 pings got no answer.",
    ["error", "Ping to tracking.example got no answer", "None had come when the recording ended.", 4]],
  ["a transfer error", { answer: () => ({ error: { description: "Timeout was reached" } }) },
    "24 of 24 pings failed.", ["error", "Ping to tracking.example failed", "Timeout was reached", 24]],
  ["an ad that the viewer left", { seeks: [{ from: 30, to: 60 }] }, "All 21 pings were accepted.",
    ["note", "Ad was cut off", "The viewer left it by a seek to 1:00.0.", 1]],
  ["ads that a seek passed by", { seeks: [{ from: 5, to: 60 }] }, "All 12 pings were accepted.",
    ["note", "Ad did not start", "A seek from 0:04.8 to 1:00.0 passed it by.", 2]],
  ["ads behind the end of watching", { until: 60 }, "All 12 pings were accepted.",
    ["note", "Ad did not start", "Playback did not get that far.", 2]],
  ["ads between two reports", { tick: 3 }, undefined,
    ["error", "Ad did not start", "The player sent no report within its second."]],
  ["documents that were not fetched", { failures: [503, 503] }, "All 24 pings were accepted.",
    ["error", "Document was not fetched", "HTTP 503", 2]],
  ["a recording without its end", { cutOff: true }, "All 24 pings were accepted.",
    ["note", "The end of the recording", "Its last line is incomplete.", 1]],
];
for (const [name, options, statement, [severity, what, why, count]] of losses) {
  test(`is told: ${name}`, () => {
    const data = reportOf(options);
    if (statement) assert.equal(data.statement, statement);
    const loss = data.losses.find((each) => each.what === what && each.why === why);
    assert.ok(loss, JSON.stringify(data.losses));
    assert.equal(loss.severity, severity);
    if (count) assert.equal(loss.count, count);
  });
}

test("pings that an ad did not live to send", () => {
  const left = reportOf({ seeks: [{ from: 30, to: 60 }] }).ads.filter((ad) => ad.pingsNotSent > 0);
  assert.deepEqual(left.map(({ key, reached, pingsNotSent }) => [key, reached, pingsNotSent]),
    [["ad-2", ["start", "firstquartile"], 3]]);
});

test("a live session with a pre-roll", () => {
  const document = JSON.stringify({ ads: { a: { break: "b", vast: "<VAST/>" } }, breaks: {},
    tags: { "a,start": { type: "start", ad: "a" } } });
  const lines = [
    { trace: "xel", version: 1, request: { type: "live", assetKey: "news", attemptPreroll: true } },
    { t: 0, kind: "httpRequest", id: 1, method: "POST", url: "https://s/init", headers: [] },
    { t: 1, kind: "httpResult", id: 1, status: 200, headers: [], ms: 1000,
      body: JSON.stringify({ stream_id: "s", stream_manifest: "https://s/m", preroll_manifest: "https://s/p" }) },
    { t: 1, kind: "httpRequest", id: 2, method: "GET", url: "https://s/tags", headers: [] },
    { t: 1, kind: "httpResult", id: 2, status: 200, headers: [], body: document, ms: 2 },
    { t: 1, kind: "loadURL", url: "https://s/p", subtitles: [] },
    { t: 2, kind: "ready" },
    { t: 2.5, kind: "progress", time: 0 },
    { t: 3, kind: "metadata", metadata: { TXXX: "unknown" } },
    { t: 4, kind: "loadURL", url: "https://s/m", subtitles: [] },
    { t: 5, kind: "progress", time: 900 },
    { t: 6, kind: "pause" },
    { t: 8, kind: "resume" },
    { t: 9, kind: "a kind of later versions" },
    { t: 9, kind: "missed", segments: 2 },
  ].map((line) => JSON.stringify(line) + "\n").join("");
  const data = dataOf(report("live", lines).page);
  assert.deepEqual(data.streams.map(({ isPreroll, start, end }) => [isPreroll ?? false, start, end]),
    [[true, 1, 4], [false, 4, 9]]);
  assert.deepEqual([data.startUp, data.jumps, data.pauses], [2.5, [], [{ start: 6, end: 8 }]]);
  assert.deepEqual([data.metadata.texts, data.metadata.unknownTexts], [1, 1]);
  assert.deepEqual(data.losses.map(({ what, count }) => `${count} ${what}`).sort(), [
    "1 Ad did not start", "1 Text of timed metadata led to no event", "2 Segment was not read"]);
});

test("what is no trace is refused in one line", () => {
  const cases = [["", /empty/], ["{}\n", /does not begin a trace/],
    [trace({ breaks: [], until: 1 }) + "{]\n", /line \d+, is broken/]];
  for (const [text, message] of cases) {
    const { status, stderr } = report("refused", text);
    assert.equal(status, 2);
    assert.match(stderr, message);
    assert.equal(stderr.trim().split("\n").length, 1);
  }
});
