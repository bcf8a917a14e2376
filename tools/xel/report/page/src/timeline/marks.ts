import { answer, clock, eventName, latency, preciseClock } from "../format";
import type { Ad, Event, Ping, Report } from "../model";

/** How a mark looks: its colour and its shape. */
export type Tone = "plain" | "content" | "accepted" | "failed" | "unanswered";

/** Something on the time line: a point, or, with an end, a bar. */
export interface Mark {
  start: number;
  end?: number;
  tone: Tone;
  /** On a bar that is wide enough. */
  label?: string;
  describe: () => Description;
}

export interface Description {
  title: string;
  tone: Tone;
  facts: [name: string, value: string][];
  ping?: Ping;
}

export interface Lane {
  name: string;
  /** By time. */
  marks: Mark[];
}

export function adName(ad: Ad): string {
  return ad.title ?? ad.id ?? ad.key ?? "untitled ad";
}

const outcomeNames = { completed: "completed", cutOff: "cut off", notStarted: "not started" };

export function adOutcome(ad: Ad): string {
  return outcomeNames[ad.outcome];
}

const times = (start: number, position?: number): [string, string][] => [
  ["Session time", preciseClock(start)],
  ["Stream time", preciseClock(position)],
];

/** Leaves out the facts without a value. */
function present(facts: [string, string | undefined][]): [string, string][] {
  return facts.filter((fact): fact is [string, string] => Boolean(fact[1]));
}

function describeAd(ad: Ad): Description {
  return {
    title: `Ad ${adName(ad)}, ${adOutcome(ad)}`,
    tone: ad.outcome === "completed" ? "accepted" : "failed",
    facts: present([
      ...times(ad.start ?? 0, ad.position),
      ["Duration", clock(ad.duration)],
      ["Break", ad.breakKey],
      ["Place in it", ad.place > 0 ? String(ad.place) : undefined],
      ["Key", ad.key],
      ["Why", ad.why],
    ]),
  };
}

function describePing(ping: Ping, report: Report): Description {
  const ad = ping.ad === undefined ? undefined : report.ads[ping.ad];
  return {
    title: `Ping ${eventName(ping.event)}, ${ping.outcome}`,
    tone: ping.outcome,
    facts: present([
      ...times(ping.time, ping.position),
      ["Ad", ad && adName(ad)],
      ["Answer", answer(ping)],
      ["Latency", latency(ping.milliseconds)],
      ["URL", ping.url],
    ]),
    ping,
  };
}

function describeEvent(event: Event, report: Report): Description {
  const ad = event.ad === undefined ? undefined : report.ads[event.ad];
  return {
    title: event.name,
    tone: event.isFailure ? "failed" : "plain",
    facts: present([
      ...times(event.time, event.position),
      ["Ad", ad && adName(ad)],
      ["Details", event.detail],
      ["Latency", event.milliseconds === undefined ? undefined : latency(event.milliseconds)],
    ]),
  };
}

function streamMarks(report: Report): Mark[] {
  return report.streams.map((stream) => {
    const name = stream.isPreroll ? "Pre-roll" : "Content";
    return {
      start: stream.start,
      end: stream.end,
      tone: stream.isPreroll ? "plain" : "content",
      label: name,
      describe: () => ({
        title: `${name} stream`,
        tone: "plain",
        facts: present([
          ["From", preciseClock(stream.start)],
          ["To", preciseClock(stream.end)],
          ["URL", stream.url],
        ]),
      }),
    };
  });
}

function breakMarks(report: Report): Mark[] {
  return report.breaks.map((adBreak, index) => ({
    start: adBreak.start,
    end: adBreak.end,
    tone: "plain",
    label: adBreak.key ?? "",
    describe: () => ({
      title: `Break ${adBreak.key ?? ""}`,
      tone: "plain",
      facts: present([
        ...times(adBreak.start, adBreak.position),
        ["Duration", clock(adBreak.duration)],
        ["Ads", adBreak.totalAds < 0 ? "not given" : String(adBreak.totalAds)],
        ["Started", String(report.ads.filter((ad) => ad.break === index).length)],
      ]),
    }),
  }));
}

function adMarks(report: Report): Mark[] {
  return report.ads.flatMap((ad) =>
    ad.start === undefined
      ? []
      : {
          start: ad.start,
          end: ad.end ?? ad.start,
          tone: ad.outcome === "completed" ? "accepted" : "failed",
          label: adName(ad),
          describe: () => describeAd(ad),
        },
  );
}

function eventMarks(report: Report, row: Event["row"]): Mark[] {
  return report.events
    .filter((event) => event.row === row)
    .map((event) => ({
      start: event.time,
      tone: event.isFailure ? "failed" : "plain",
      describe: () => describeEvent(event, report),
    }));
}

const pingOrder = [
  "start",
  "creativeview",
  "firstquartile",
  "midpoint",
  "thirdquartile",
  "complete",
];

function pingLanes(report: Report): Lane[] {
  const marksOfEvents = new Map<string, Mark[]>(pingOrder.map((event) => [event, []]));
  for (const ping of report.pings) {
    const event = ping.event ?? "";
    const marks = marksOfEvents.get(event) ?? [];
    marks.push({
      start: ping.time,
      tone: ping.outcome,
      describe: () => describePing(ping, report),
    });
    marksOfEvents.set(event, marks);
  }
  return [...marksOfEvents].map(([event, marks]) => ({ name: `Ping ${eventName(event)}`, marks }));
}

/** The rows of the time line from top to bottom, without those that would be empty. */
export function lanesOf(report: Report): Lane[] {
  const lanes: Lane[] = [
    { name: "Stream", marks: streamMarks(report) },
    { name: "Breaks", marks: breakMarks(report) },
    { name: "Ads", marks: adMarks(report) },
    { name: "Ad events", marks: eventMarks(report, "ads") },
    { name: "Player", marks: eventMarks(report, "player") },
    { name: "Documents", marks: eventMarks(report, "documents") },
    ...pingLanes(report),
  ];
  return lanes.filter((lane) => lane.marks.length > 0);
}
