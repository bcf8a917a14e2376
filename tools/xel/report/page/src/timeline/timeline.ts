import { button, element } from "../dom";
import type { Ping, Report } from "../model";
import { onThemeChange } from "../theme";
import { chartHeight, chartOption, echarts, positionOf } from "./chart";
import { lanesOf, type Description, type Mark } from "./marks";
import { perSecond, placeOf, seriesOfLanes, type View } from "./series";

const help =
  "With the time line in focus: left and right go from mark to mark, up and down from row to " +
  "row, Home and End to the first and the last mark. Plus and minus zoom, 0 shows everything.";
const zoomStep = 2;

/** The session drawn over time, for the pointer and for the keyboard. */
export class Timeline {
  readonly element: HTMLElement;
  private readonly lanes;
  private readonly canvas = element("div", { class: "canvas" });
  private readonly cursor = element("div", { class: "cursor", hidden: "" });
  private readonly frame: HTMLElement;
  private readonly details = element("div", { class: "details", "aria-live": "polite" });
  private chart: echarts.ECharts | undefined;
  /** What is in view, in seconds of the session. */
  private window: [number, number];
  private lane = 0;
  private index = -1;

  /** @param showPing shows a ping in the table of pings. */
  constructor(
    private readonly report: Report,
    private readonly showPing: (ping: Ping) => void,
  ) {
    this.lanes = lanesOf(report);
    this.window = [0, this.duration];
    const helpText = element("p", { id: "timeline-help", class: "hint" }, help);
    this.frame = element(
      "div",
      {
        class: "chart",
        tabindex: "0",
        role: "application",
        "aria-roledescription": "time line",
        "aria-label": "Time line of the session",
        "aria-describedby": helpText.id,
      },
      this.canvas,
      this.cursor,
    );
    this.frame.style.height = `${chartHeight(this.lanes)}px`;
    this.frame.addEventListener("keydown", (event) => this.handleKey(event));
    const buttons = element(
      "div",
      { class: "buttons" },
      button("+", () => this.zoomBy(1 / zoomStep), "Zoom in"),
      button("−", () => this.zoomBy(zoomStep), "Zoom out"),
      button("Show all", () => this.zoomTo(0, this.duration)),
    );
    this.details.append(
      element("p", { class: "hint" }, "Point at a mark to see what is known of it."),
    );
    this.element = element("div", {}, buttons, helpText, this.frame, this.details);
  }

  /** To be called once the element is in the document. */
  start(): void {
    if (this.lanes.length === 0) {
      this.element.replaceChildren(element("p", {}, "Nothing was recorded."));
      return;
    }
    const chart = echarts.init(this.canvas);
    this.chart = chart;
    const draw = () => {
      const tip = (lane: number, index: number) => this.describe(lane, index, true);
      chart.setOption(chartOption(this.report, this.lanes, this.view, tip));
    };
    draw();
    onThemeChange(draw);
    new ResizeObserver(() => {
      chart.resize();
      draw();
      this.placeCursor();
    }).observe(this.canvas);
    chart.on("datazoom", (event) => {
      this.window = windowOf(event as ZoomEvent, this.duration);
      chart.setOption({ series: seriesOfLanes(this.lanes, this.view) });
      this.placeCursor();
    });
    chart.on("mouseover", ({ value }) => {
      const { lane, index } = placeOf(value);
      this.showDetails(lane, index);
    });
    chart.on("click", ({ value }) => {
      const { lane, index } = placeOf(value);
      this.select(lane, index);
    });
  }

  /** Selects the mark of a ping and brings it into view. */
  revealPing(ping: Ping): void {
    this.lanes.forEach((lane, row) => {
      const index = lane.marks.findIndex(
        (mark) => mark.start === ping.time && mark.describe().ping === ping,
      );
      if (index >= 0) this.reveal(row, index);
    });
  }

  /** Brings a moment of the session into view. */
  revealTime(time: number): void {
    this.zoomTo(time - revealedSeconds / 2, time + revealedSeconds / 2);
    this.element.scrollIntoView({ block: "start" });
  }

  private reveal(lane: number, index: number): void {
    const mark = this.lanes[lane]?.marks[index];
    if (!mark) return;
    this.revealTime(mark.start);
    this.select(lane, index);
    this.frame.focus({ preventScroll: true });
  }

  private get duration(): number {
    return Math.max(this.report.session.duration, 1);
  }

  private handleKey(event: KeyboardEvent): void {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const actions: Record<string, () => void> = {
      ArrowRight: () => this.step(1),
      ArrowLeft: () => this.step(-1),
      ArrowDown: () => this.changeLane(1),
      ArrowUp: () => this.changeLane(-1),
      Home: () => this.select(this.lane, 0),
      End: () => this.select(this.lane, (this.lanes[this.lane]?.marks.length ?? 0) - 1),
      "+": () => this.zoomBy(1 / zoomStep),
      "-": () => this.zoomBy(zoomStep),
      "0": () => this.zoomTo(0, this.duration),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }

  private step(by: number): void {
    const last = (this.lanes[this.lane]?.marks.length ?? 0) - 1;
    this.select(this.lane, Math.min(Math.max(this.index + by, 0), last));
  }

  /** Goes to the mark of the next row that is closest in time. */
  private changeLane(by: number): void {
    const lane = Math.min(Math.max(this.lane + by, 0), this.lanes.length - 1);
    const time = this.selected?.start ?? 0;
    const marks = this.lanes[lane]?.marks ?? [];
    const after = marks.findIndex((mark) => mark.start >= time);
    const next = after < 0 ? marks.length - 1 : after;
    const isPreviousCloser =
      next > 0 && time - (marks[next - 1]?.start ?? 0) < (marks[next]?.start ?? 0) - time;
    this.select(lane, isPreviousCloser ? next - 1 : next);
  }

  private get selected(): Mark | undefined {
    return this.lanes[this.lane]?.marks[this.index];
  }

  private select(lane: number, index: number): void {
    this.lane = lane;
    this.index = index;
    this.bringIntoView();
    this.placeCursor();
    this.showDetails(lane, index);
  }

  /** Moves the window over time, where the selected mark stands outside. */
  private bringIntoView(): void {
    const mark = this.selected;
    if (!mark) return;
    const [from, to] = this.window;
    const margin = (to - from) / 20;
    if (mark.start < from) this.zoomTo(mark.start - margin, mark.start - margin + (to - from));
    if (mark.start > to) this.zoomTo(mark.start + margin - (to - from), mark.start + margin);
  }

  private get view(): View {
    const [from, to] = this.window;
    return { from, to, width: this.canvas.clientWidth };
  }

  private zoomBy(factor: number): void {
    const [from, to] = this.window;
    const mark = this.selected;
    const isInView = mark && mark.start >= from && mark.start <= to;
    const centre = isInView ? mark.start : (from + to) / 2;
    this.zoomTo(centre - (centre - from) * factor, centre + (to - centre) * factor);
  }

  private zoomTo(from: number, to: number): void {
    const span = Math.min(to - from, this.duration);
    const start = Math.min(Math.max(from, 0), this.duration - span);
    this.chart?.dispatchAction({
      type: "dataZoom",
      startValue: start * perSecond,
      endValue: (start + span) * perSecond,
    });
  }

  private placeCursor(): void {
    const mark = this.selected;
    this.cursor.hidden = !mark;
    if (!mark || !this.chart) return;
    const [x, y] = positionOf(this.chart, mark, this.lane);
    this.cursor.hidden = x < 0 || x > this.chart.getWidth();
    this.cursor.style.transform = `translate(${x}px, ${y}px)`;
  }

  private showDetails(lane: number, index: number): void {
    const content = this.describe(lane, index, false);
    this.details.replaceChildren(content);
  }

  private describe(lane: number, index: number, isTip: boolean): HTMLElement {
    const mark = this.lanes[lane]?.marks[index];
    if (!mark) return element("div");
    const description = mark.describe();
    const { ping } = description;
    const link =
      ping && !isTip ? button("Show in the table", () => this.showPing(ping)) : undefined;
    return element("div", { class: "description" }, ...descriptionNodes(description, link));
  }
}

/** What the chart says of a zoom: milliseconds or, from the mouse and the slider, per cent. */
type ZoomEvent = {
  batch?: ZoomEvent[];
  startValue?: number;
  endValue?: number;
  start?: number;
  end?: number;
};

function windowOf(event: ZoomEvent, duration: number): [number, number] {
  const { start = 0, end = 100, startValue, endValue } = event.batch?.[0] ?? event;
  if (startValue !== undefined && endValue !== undefined) {
    return [startValue / perSecond, endValue / perSecond];
  }
  return [(start / 100) * duration, (end / 100) * duration];
}

const revealedSeconds = 60;
const longText = 40;

function descriptionNodes({ title, tone, facts }: Description, link?: HTMLElement): HTMLElement[] {
  const list = element("dl");
  // URLs stay texts: following one would send the ping again.
  for (const [name, value] of facts) {
    const isLong = value.length > longText;
    list.append(element("dt", {}, name), element("dd", { class: isLong ? "long" : "" }, value));
  }
  return [element("div", { class: "heading" }, element("h3", { class: tone }, title), link), list];
}
