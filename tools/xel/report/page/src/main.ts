import { element, section } from "./dom";
import { clock, counted } from "./format";
import type { Report } from "./model";
import { findingSection, lossSection, sessionSection, tiles } from "./sections";
import { adSection, PingSection } from "./tables";
import { themeSwitch } from "./theme";
import { Timeline } from "./timeline/timeline";

function header({ session }: Report): HTMLElement {
  const kind = session.isLive ? "Live stream" : "On-demand stream";
  const title = `${kind} ${session.stream ?? ""}`;
  document.title = `Session report: ${title}`;
  const recorded = session.recorded?.replace("T", " ").replace("Z", " UTC");
  const facts = [recorded && `Recorded ${recorded}`, `${clock(session.duration)} long`];
  const links = [
    ["timeline", "Time line"],
    ["ads", "Ads"],
    ["pings", "Pings"],
    ["findings", "Findings"],
    ["session", "Session"],
  ].map(([id, name]) => element("a", { href: `#${id}` }, name));
  return element(
    "header",
    {},
    element(
      "div",
      { class: "title" },
      element("h1", {}, title),
      element("p", {}, facts.join(" · ")),
    ),
    element("nav", { "aria-label": "Sections" }, ...links, themeSwitch()),
  );
}

/** The first thing that anybody wants to know. */
function statement(report: Report): HTMLElement {
  const isLossless = report.pings.every((ping) => ping.outcome === "accepted");
  const notSent = report.ads.reduce((sum, ad) => sum + ad.pingsNotSent, 0);
  const cutOff = report.ads.filter((ad) => ad.pingsNotSent > 0).length;
  const more =
    notSent > 0
      ? `${counted(notSent, "more ping")} ${notSent === 1 ? "was" : "were"} never sent: ` +
        `${counted(cutOff, "ad")} did not reach the events.`
      : undefined;
  return element(
    "div",
    { class: `statement ${isLossless ? "accepted" : "failed"}` },
    element("p", { class: "main" }, report.statement),
    more && element("p", {}, more),
  );
}

function showReport(report: Report): void {
  const pings = new PingSection(report, (ping) => timeline.revealPing(ping));
  const timeline = new Timeline(report, (ping) => pings.reveal(ping));
  const reveal = (time: number) => timeline.revealTime(time);
  document.body.append(
    header(report),
    element(
      "main",
      {},
      statement(report),
      tiles(report),
      lossSection(report, reveal),
      section("timeline", "Time line", timeline.element),
      adSection(report, reveal),
      pings.element,
      findingSection(report),
      sessionSection(report),
    ),
  );
  // The texts come first: a day's time line takes a moment to draw.
  requestAnimationFrame(() => setTimeout(() => timeline.start()));
}

showReport(JSON.parse(document.getElementById("data")?.textContent ?? "") as Report);
