import { element, section } from "./dom";
import { answer, clock, counted, eventName, latency, number, preciseClock } from "./format";
import type { Ad, Ping, PingOutcome, Report } from "./model";
import { timeButton } from "./sections";
import { DataTable } from "./table";
import { adName, adOutcome } from "./timeline/marks";

const shortEvents: Record<string, string> = {
  start: "start",
  firstquartile: "25 %",
  midpoint: "50 %",
  thirdquartile: "75 %",
  complete: "100 %",
};

/** How many pings of each outcome every ad has. */
function pingsOfAds(report: Report): Record<PingOutcome, number>[] {
  const counts = report.ads.map(() => ({ accepted: 0, failed: 0, unanswered: 0 }));
  for (const ping of report.pings) {
    const ofAd = ping.ad === undefined ? undefined : counts[ping.ad];
    if (ofAd) ++ofAd[ping.outcome];
  }
  return counts;
}

function adTone(ad: Ad): string {
  if (ad.outcome === "completed") return "";
  return ad.isExpected ? "expected" : "failed";
}

/** So that on demand an ad that did not start stands where it should have been. */
function inStreamOrder({ ads, session }: Report): Ad[] {
  if (session.isLive) return ads;
  return [...ads].sort((a, b) => (a.position ?? Infinity) - (b.position ?? Infinity));
}

/** Every ad, with what became of it and of its pings. */
export function adSection(report: Report, reveal: (time: number) => void): HTMLElement {
  const counts = new Map(pingsOfAds(report).map((count, index) => [report.ads[index], count]));
  const pingsOf = (ad: Ad) => counts.get(ad) ?? { accepted: 0, failed: 0, unanswered: 0 };
  const sum = (ad: Ad) => pingsOf(ad).accepted + pingsOf(ad).failed + pingsOf(ad).unanswered;
  const table = new DataTable<Ad>(
    "Ads",
    [
      {
        name: "Session time",
        text: (ad) => preciseClock(ad.start),
        node: (ad) => timeButton(ad.start, reveal),
        order: (ad) => ad.start ?? Infinity,
        kind: "number",
      },
      {
        name: "Stream time",
        text: (ad) => preciseClock(ad.position),
        order: (ad) => ad.position ?? Infinity,
        kind: "number",
      },
      { name: "Ad", text: adName, kind: "name" },
      {
        name: "Outcome",
        text: adOutcome,
        node: (ad) => element("span", { class: `nowrap ${adTone(ad)}` }, adOutcome(ad)),
      },
      { name: "Reached", text: (ad) => shortEvents[ad.reached.at(-1) ?? ""] ?? "–" },
      {
        name: "Pings accepted",
        text: (ad) => (sum(ad) === 0 ? "–" : `${pingsOf(ad).accepted} of ${sum(ad)}`),
        order: (ad) => pingsOf(ad).accepted - sum(ad),
        kind: "number",
      },
      {
        name: "Not sent",
        text: (ad) => number(ad.pingsNotSent),
        order: (ad) => ad.pingsNotSent,
        kind: "number",
      },
      { name: "Why", text: (ad) => ad.why ?? "", kind: "wide" },
      { name: "Break", text: (ad) => ad.breakKey ?? "", kind: "name" },
      {
        name: "Place",
        text: (ad) => (ad.place < 0 ? "–" : String(ad.place)),
        order: (ad) => ad.place,
        kind: "number",
      },
      {
        name: "Duration",
        text: (ad) => clock(ad.duration),
        order: (ad) => ad.duration,
        kind: "number",
      },
      { name: "Key", text: (ad) => ad.key ?? "", kind: "code" },
    ],
    inStreamOrder(report),
    "No document of this session had an ad.",
  );
  return section("ads", "Ads", table.element);
}

const outcomes: PingOutcome[] = ["accepted", "failed", "unanswered"];

/** Every ping; with a choice of outcomes and a search. */
export class PingSection {
  readonly element: HTMLElement;
  private readonly table: DataTable<Ping>;
  private readonly search = element("input", { type: "search", "aria-label": "Search the pings" });
  private readonly choices = new Map<PingOutcome, HTMLInputElement>();
  private readonly count = element("output");

  constructor(report: Report, reveal: (ping: Ping) => void) {
    const adNameOf = (ping: Ping) => {
      const ad = ping.ad === undefined ? undefined : report.ads[ping.ad];
      return ad ? adName(ad) : "–";
    };
    this.table = new DataTable<Ping>(
      "Pings",
      [
        {
          name: "Session time",
          text: (ping) => preciseClock(ping.time),
          node: (ping) => timeButton(ping.time, () => reveal(ping)),
          order: (ping) => ping.time,
          kind: "number",
        },
        {
          name: "Stream time",
          text: (ping) => preciseClock(ping.position),
          order: (ping) => ping.position ?? Infinity,
          kind: "number",
        },
        {
          name: "Outcome",
          text: (ping) => ping.outcome,
          node: (ping) => element("span", { class: `outcome ${ping.outcome}` }, ping.outcome),
        },
        { name: "Event", text: (ping) => eventName(ping.event) },
        { name: "Ad", text: (ping) => adNameOf(ping), kind: "name" },
        { name: "Answer", text: answer, kind: "name" },
        {
          name: "Latency",
          text: (ping) => latency(ping.milliseconds),
          order: (ping) => ping.milliseconds ?? Infinity,
          kind: "number",
        },
        { name: "URL", text: (ping) => ping.url ?? "", kind: "code" },
      ],
      report.pings,
      "No ping is like that.",
    );
    this.element = section("pings", "Pings", this.filters(), this.table.element);
    this.applyFilter();
  }

  /** Shows a ping in the table, whatever is being filtered. */
  reveal(ping: Ping): void {
    this.search.value = "";
    for (const choice of this.choices.values()) choice.checked = true;
    this.applyFilter();
    this.table.reveal(ping);
  }

  private filters(): HTMLElement {
    const form = element("form", { class: "filters", role: "search" });
    form.addEventListener("submit", (event) => event.preventDefault());
    form.addEventListener("input", () => this.applyFilter());
    for (const outcome of outcomes) {
      const choice = element("input", { type: "checkbox", name: outcome, checked: "" });
      this.choices.set(outcome, choice);
      form.append(element("label", { class: `outcome ${outcome}` }, choice, outcome));
    }
    this.search.placeholder = "Event, ad, URL, answer";
    form.append(this.search, this.count);
    return form;
  }

  private applyFilter(): void {
    const wanted = this.search.value.trim().toLowerCase();
    const passes = (ping: Ping) =>
      Boolean(this.choices.get(ping.outcome)?.checked) &&
      (wanted === "" || this.table.textOf(ping).includes(wanted));
    this.count.textContent = counted(this.table.setFilter(passes), "ping");
  }
}
