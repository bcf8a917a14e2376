import { element, section } from "./dom";
import { counted, latency, number, percent, preciseClock } from "./format";
import type { Report, Severity } from "./model";
import { DataTable } from "./table";

const severityNames: Record<Severity, string> = {
  error: "Error",
  warning: "Warning",
  note: "Note",
};
const severityOrder: Severity[] = ["error", "warning", "note"];

export function severityMark(severity: Severity): HTMLElement {
  return element("span", { class: `severity ${severity}` }, severityNames[severity]);
}

export function severityRank(severity: Severity): number {
  return severityOrder.indexOf(severity);
}

function tile(name: string, figure: string, ...notes: string[]): HTMLElement {
  return element(
    "div",
    { class: "tile" },
    element("dt", {}, name),
    element("dd", { class: "figure" }, figure),
    ...notes.filter(Boolean).map((note) => element("dd", { class: "note" }, note)),
  );
}

function quantile(sorted: number[], share: number): number | undefined {
  return sorted[Math.min(Math.floor(sorted.length * share), sorted.length - 1)];
}

function pingTiles({ pings, ads }: Report): HTMLElement[] {
  const count = (outcome: string) => pings.filter((ping) => ping.outcome === outcome).length;
  const [accepted, failed, unanswered] = [count("accepted"), count("failed"), count("unanswered")];
  const notSent = ads.reduce((sum, ad) => sum + ad.pingsNotSent, 0);
  const times = pings.flatMap((ping) => ping.milliseconds ?? []).sort((a, b) => a - b);
  return [
    tile(
      "Pings accepted",
      `${number(accepted)} of ${number(pings.length)}`,
      `${number(failed)} failed, ${number(unanswered)} unanswered`,
      notSent > 0 ? `${number(notSent)} never sent, of ads that were cut off` : "",
    ),
    tile(
      "Ping latency",
      latency(quantile(times, 0.5)),
      times.length > 0 ? `median; 95 % within ${latency(quantile(times, 0.95))}` : "",
    ),
  ];
}

function adTiles({ ads, breaks }: Report): HTMLElement[] {
  const started = ads.filter((ad) => ad.outcome !== "notStarted").length;
  const completed = ads.filter((ad) => ad.outcome === "completed").length;
  const missed = ads.length - started;
  return [
    tile(
      "Ads completed",
      `${number(completed)} of ${number(started)}`,
      started > 0 ? `${percent(completed, started)} of those that started` : "",
      missed > 0 ? `${number(missed)} more did not start` : "",
    ),
    tile("Breaks", number(breaks.length)),
  ];
}

function metadataTile({ metadata, session }: Report): HTMLElement {
  if (session.isLive) {
    const known = metadata.texts - metadata.unknownTexts;
    return tile(
      "Metadata",
      `${number(known)} of ${number(metadata.texts)}`,
      "texts led to an event's entry in the document",
    );
  }
  if (metadata.events === 0) return tile("Metadata error", "–", "no ad event was reported");
  const mean = metadata.sum / metadata.events;
  return tile(
    "Metadata error",
    `${mean.toFixed(2)} s`,
    `mean of ${counted(metadata.events, "event")} behind their second; ${metadata.worst.toFixed(2)} s at most`,
  );
}

/** The figures that stand at the top. */
export function tiles(report: Report): HTMLElement {
  return element(
    "dl",
    { class: "tiles" },
    ...pingTiles(report),
    ...adTiles(report),
    tile(
      "Start-up",
      report.startUp === undefined ? "–" : `${report.startUp.toFixed(2)} s`,
      report.startUp === undefined ? "no frame was shown" : "from the request to the first frame",
    ),
    metadataTile(report),
  );
}

/** What was lost, where and why. */
export function lossSection(report: Report, reveal: (time: number) => void): HTMLElement {
  if (report.losses.length === 0) {
    return section("losses", "What was lost", element("p", {}, "Nothing was lost."));
  }
  const table = new DataTable(
    "What was lost",
    [
      {
        name: "Severity",
        text: (loss) => severityNames[loss.severity],
        node: (loss) => severityMark(loss.severity),
        order: (loss) => severityRank(loss.severity),
      },
      { name: "What", text: (loss) => loss.what },
      { name: "Why", text: (loss) => loss.why ?? "", kind: "wide" },
      {
        name: "How often",
        text: (loss) => number(loss.count),
        order: (loss) => loss.count,
        kind: "number",
      },
      {
        name: "First at",
        text: (loss) => preciseClock(loss.time),
        node: (loss) => timeButton(loss.time, reveal),
        order: (loss) => loss.time ?? Infinity,
        kind: "number",
      },
      {
        name: "Stream time",
        text: (loss) => preciseClock(loss.position),
        order: (loss) => loss.position ?? Infinity,
        kind: "number",
      },
    ],
    report.losses,
    "",
  );
  return section("losses", "What was lost", table.element);
}

/** A time of the session that shows itself on the time line. */
export function timeButton(time: number | undefined, reveal: (time: number) => void): Node {
  const text = preciseClock(time);
  if (time === undefined) return document.createTextNode(text);
  const link = element(
    "button",
    { type: "button", class: "link", title: "Show on the time line" },
    text,
  );
  link.addEventListener("click", () => reveal(time));
  return link;
}

/** What inspection says about the documents. */
export function findingSection(report: Report): HTMLElement {
  if (report.findings.length === 0) {
    const text = "Nothing is to be said against the documents of this session.";
    return section("findings", "Findings", element("p", {}, text));
  }
  const table = new DataTable(
    "Findings in the documents",
    [
      {
        name: "Severity",
        text: (finding) => severityNames[finding.severity],
        node: (finding) => severityMark(finding.severity),
        order: (finding) => severityRank(finding.severity),
      },
      { name: "Rule", text: (finding) => finding.rule, kind: "code" },
      { name: "Finding", text: (finding) => finding.text ?? "", kind: "wide" },
      { name: "Remedy", text: (finding) => finding.remedy ?? "", kind: "wide" },
      { name: "Place", text: (finding) => finding.place ?? "", kind: "code" },
      { name: "Document", text: (finding) => finding.document ?? "", kind: "code" },
    ],
    report.findings,
    "",
  );
  return section("findings", "Findings", table.element);
}

/** What the session was asked for, and by whom. */
export function sessionSection({ session, streams }: Report): HTMLElement {
  const list = element("dl", { class: "facts" });
  const add = (name: string, value: string | undefined) => {
    if (value) list.append(element("dt", {}, name), element("dd", {}, value));
  };
  add("Stream", session.stream);
  add("Stream ID", session.streamID);
  for (const { name, value } of session.facts) add(name, value);
  add("Library", session.library && `libxel ${session.library}`);
  add("Exit status", session.exitStatus?.toString());
  for (const stream of streams) add(stream.isPreroll ? "Pre-roll URL" : "Content URL", stream.url);
  return section("session", "Session", list);
}
