// Traces of sessions that never took place: as long and as faulty as a test needs them.

const quartiles = ["start", "firstquartile", "midpoint", "thirdquartile", "complete"];
const calls = ["adDidStart", "adDidCrossFirstQuartile", "adDidCrossMidpoint",
  "adDidCrossThirdQuartile", "adDidComplete"];

/**
 * The trace of an on-demand session as text.
 *
 * @param breaks {key, start, ads: [{key, title, duration}]}, times in seconds of stream time
 * @param seeks {from, to}: when the playhead is at `from`, it goes to `to`
 * @param answer gives a ping's result, {status} or {error}; or nothing, for one without
 */
export function trace({ breaks, seeks = [], until, tick = 0.2, answer = () => ({ status: 204 }),
    failures = [], host = "tracking.example", pingsOfEvent = 1, cutOff = false,
    vastOf = undefined }) {
  const lines = [{ trace: "xel", version: 1, library: "1.0.0", recorded: "2026-11-21T15:00:00Z",
    services: { vodHost: "ads.example" }, environment: { applicationIdentifier: "com.example.tv" },
    request: { type: "vod", contentSourceID: "shows", videoID: "pilot" } }];
  let time = 0;
  let id = 0;
  const add = (kind, members = {}) => lines.push({ t: Number(time.toFixed(6)), kind, ...members });
  const fetch = (url, body, status = 200) => {
    add("httpRequest", { id: ++id, method: "GET", url, headers: [] });
    time += 0.05;
    add("httpResult", { id, status, headers: [], body, ms: 50 });
  };

  const durationOf = (list) => list.reduce((sum, { duration }) => sum + duration, 0);
  const vast = (key) => vastOf?.(key) ?? "<VAST><Ad><InLine>" +
    `<Impression>https://${host}/${key}/impression</Impression><Creatives><Creative><Linear><TrackingEvents>` +
    quartiles.map((event) => `<Tracking event="${event}">https://${host}/${key}/${event}/1</Tracking>`)
      .join("") + "</TrackingEvents></Linear></Creative></Creatives></InLine></Ad></VAST>";
  const ads = new Map();
  const times = {};
  for (const { key: adBreak, start, ads: list } of breaks) {
    let adStart = start;
    list.forEach((ad, index) => {
      const entry = { ...ad, adBreak, start: adStart, position: index + 1, total: list.length };
      ads.set(ad.key, entry);
      quartiles.forEach((type, step) => {
        const second = Math.floor(Math.min(adStart + (ad.duration * step) / 4, adStart + ad.duration - 1));
        (times[second] ??= []).push({ type, ad: ad.key });
      });
      adStart += ad.duration;
    });
  }
  const document = {
    ads: Object.fromEntries([...ads].map(([key, { adBreak, position, duration }]) =>
      [key, { break: adBreak, vast: vast(key), position, duration }])),
    breaks: Object.fromEntries(breaks.map(({ key, ads: list }) =>
      [key, { ads: list.length, duration: durationOf(list) }])),
    times,
    cuepoints: breaks.map(({ start, ads: list }) => ({ start, end: start + durationOf(list) })),
  };
  fetch("https://ads.example/init", JSON.stringify({ stream_id: "stream-1",
    stream_manifest: "https://media.example/main.m3u8", stream_type: "on_demand",
    time_events_url: "https://ads.example/times" }));
  add("delegate", { call: "didInitializeStream", streamID: "stream-1" });
  for (const status of failures) fetch("https://ads.example/times", "", status);
  fetch("https://ads.example/times", JSON.stringify(document));
  add("loadURL", { url: "https://media.example/main.m3u8", subtitles: [] });
  time += 0.8;
  add("ready");

  const results = [];
  const ping = (pingEvent, ad, number = 1) => {
    const url = `https://${host}/${ad.key}/${pingEvent}/${number}`;
    add("httpRequest", { id: ++id, method: "GET", url, headers: [], pingEvent });
    const result = answer({ pingEvent, ad, id });
    if (result) results.push({ id, at: time + (result.ms ?? 30) / 1000, result });
    if (number < pingsOfEvent) ping(pingEvent, ad, number + 1);
  };
  const deliver = () => {
    while (results.length > 0 && results[0].at <= time) {
      const { id: of, result } = results.shift();
      add("httpResult", { id: of, ms: 30, ...result });
    }
  };
  const started = new Set();
  let current;
  const report = ({ type, ad: key }) => {
    const ad = ads.get(key);
    if (type === "start" ? started.has(key) : current !== ad) return;
    const adBreakInfo = { adBreakKey: ad.adBreak, totalAds: ad.total, duration: 0 };
    const urls = Object.fromEntries(quartiles.map((event) => [event, [`https://${host}/${key}/${event}/1`]]));
    const adJSON = { adKey: key, adTitle: ad.title, duration: ad.duration,
      adPosition: ad.position, adBreakInfo, creatives: [], trackingURLs: urls, selectedCreative: null };
    if (type === "start") {
      started.add(key);
      current = ad;
      if (ad.position === 1) add("delegate", { call: "adBreakDidStart", adBreakInfo });
    }
    ping(type, ad);
    add("delegate", { call: calls[quartiles.indexOf(type)], ad: adJSON });
    if (type === "start") ping("creativeview", ad);
    if (type !== "complete") return;
    current = undefined;
    if (ad.position === ad.total) add("delegate", { call: "adBreakDidEnd", adBreakInfo });
  };
  const pending = [...seeks];
  let last = -1;
  for (let position = 0; position < until; position += tick, time += tick) {
    if (pending[0] && position >= pending[0].from) {
      position = pending.shift().to;
      add("seek", { to: position });
    }
    deliver();
    add("progress", { time: Number(position.toFixed(3)) });
    if (current && position >= current.start + current.duration + 1) {
      add("delegate", { call: "adBreakDidEnd", adBreakInfo: { adBreakKey: current.adBreak } });
      current = undefined;
    }
    const second = Math.floor(position);
    if (second !== last) for (const event of times[second] ?? []) report(event);
    last = second;
  }
  time += 1;
  deliver();
  if (!cutOff) add("end", { exitStatus: 0 });
  const text = lines.map((line) => JSON.stringify(line) + "\n").join("");
  return cutOff ? `${text}{"t":` : text;
}

/** Breaks of `adsPerBreak` ads each, every `period` seconds. */
export function manyBreaks(count, adsPerBreak, period, duration) {
  return Array.from({ length: count }, (_, index) => ({
    key: `break-${index + 1}`,
    start: 10 + index * period,
    ads: Array.from({ length: adsPerBreak }, (_unused, place) => ({
      key: `ad-${index * adsPerBreak + place + 1}`,
      title: `Spot ${index * adsPerBreak + place + 1}`,
      duration,
    })),
  }));
}
