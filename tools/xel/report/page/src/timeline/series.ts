import type { CustomSeriesRenderItem, CustomSeriesRenderItemParams } from "echarts";

import type { Report } from "../model";
import { color } from "../theme";
import type { Lane, Tone } from "./marks";

export const laneHeight = 24;
/** Points of one row and tone that are closer than this, in pixels, are drawn as one. */
const closestPoints = 3;
/** The chart counts milliseconds. */
export const perSecond = 1000;

/** Colours alone do not tell outcomes apart: what was lost is larger and has another shape. */
const symbols: Record<Tone, { symbol: string; size: number }> = {
  plain: { symbol: "circle", size: 6 },
  content: { symbol: "circle", size: 6 },
  accepted: { symbol: "circle", size: 7 },
  failed: { symbol: "diamond", size: 13 },
  unanswered: { symbol: "rect", size: 9 },
};

/** Those of points, the most important last, and so on top. */
const pointTones: Tone[] = ["plain", "accepted", "unanswered", "failed"];

/** Where a mark of the chart is found again: its lane and its index there. */
type Place = [start: number, lane: number, index: number, end: number];

/** The mark that an event of the chart is about. */
export function placeOf(value: unknown): { lane: number; index: number } {
  const [, lane, index] = value as Place;
  return { lane, index };
}

/** The part in view of a stretch of time; nothing where none is. */
function visible(params: CustomSeriesRenderItemParams, start: number, end: number) {
  const area = params.coordSys as unknown as {
    x: number;
    y: number;
    width: number;
    height: number;
  };
  const from = Math.max(start, area.x);
  const to = Math.min(Math.max(end, start + 1), area.x + area.width);
  return to > from ? { x: from, width: to - from, area } : undefined;
}

/** The bars of a lane; one that was cut off ends in a thick edge. */
function barRenderer(lanes: Lane[]): CustomSeriesRenderItem {
  const fills = {
    plain: color("bar-plain"),
    content: color("bar-content"),
    accepted: color("bar-accepted"),
    failed: color("bar-failed"),
    unanswered: color("bar-plain"),
  };
  const edgeStyle = { fill: color("failed") };
  const ink = color("ink");
  const height = laneHeight - 7;
  return (params, api) => {
    const lane = api.value(1) as number;
    const mark = lanes[lane]?.marks[api.value(2) as number];
    const [left = 0, middle = 0] = api.coord([api.value(0), lane]);
    const [right = 0] = api.coord([api.value(3), lane]);
    const part = visible(params, left, right);
    if (!mark || !part) return null;
    const shape = { x: part.x, y: middle - height / 2, width: part.width, height };
    const bar = { type: "rect" as const, shape, style: { fill: fills[mark.tone] } };
    const edgeWidth = Math.min(3, part.width);
    const edgeShape = { ...shape, x: part.x + part.width - edgeWidth, width: edgeWidth };
    const edge = { type: "rect" as const, shape: edgeShape, style: edgeStyle };
    const room = part.width - 8;
    const label = {
      type: "text" as const,
      silent: true,
      style: {
        text: mark.label,
        x: part.x + 4,
        y: middle,
        verticalAlign: "middle" as const,
        fill: ink,
        font: "11px system-ui, sans-serif",
        width: room,
        overflow: "truncate" as const,
      },
    };
    const children = [
      bar,
      ...(mark.tone === "failed" ? [edge] : []),
      ...(mark.label && room > 20 ? [label] : []),
    ];
    return { type: "group", children };
  };
}

/** Stretches of the session behind the playhead's path. */
function bands(id: string, stretches: { start: number; end: number }[]) {
  const fill = color(`${id}-band`);
  const renderItem: CustomSeriesRenderItem = (params, api) => {
    const [left = 0] = api.coord([api.value(0), 0]);
    const [right = 0] = api.coord([api.value(1), 0]);
    const part = visible(params, left, right);
    if (!part) return null;
    const shape = { x: part.x, width: part.width, y: part.area.y, height: part.area.height };
    return { type: "rect", shape, style: { fill } };
  };
  return {
    id,
    type: "custom" as const,
    xAxisIndex: 0,
    yAxisIndex: 0,
    silent: true,
    animation: false,
    encode: { x: [0, 1], y: -1 },
    data: stretches.map(({ start, end }) => [start * perSecond, end * perSecond]),
    renderItem,
  };
}

/** The part of the session that is in view, in its seconds, and how wide it is in pixels. */
export interface View {
  from: number;
  to: number;
  width: number;
}

/** What can be told apart in a view: of a day's marks only so many as there is room for. */
function placesInView(lanes: Lane[], { from, to, width }: View) {
  const pixel = (to - from) / width;
  const bars: Place[] = [];
  const points = new Map<Tone, Place[]>(pointTones.map((tone) => [tone, []]));
  lanes.forEach((lane, row) => {
    const drawnUntil = new Map<Tone, number>();
    lane.marks.forEach(({ start, end, tone }, index) => {
      const isBar = end !== undefined;
      const last = end ?? start;
      if (last < from || start > to) return;
      if (last - (drawnUntil.get(tone) ?? -Infinity) < pixel * (isBar ? 1 : closestPoints)) return;
      drawnUntil.set(tone, last);
      (isBar ? bars : points.get(tone))?.push([start * perSecond, row, index, last * perSecond]);
    });
  });
  return { bars, points };
}

/** The rows' marks as far as they are in view. */
export function seriesOfLanes(lanes: Lane[], view: View) {
  const { bars, points } = placesInView(lanes, view);
  const shared = { xAxisIndex: 1, yAxisIndex: 1, animation: false };
  const scatter = pointTones.map((tone, level) => {
    const isHollow = tone === "unanswered";
    return {
      ...shared,
      id: tone,
      type: "scatter" as const,
      data: points.get(tone) ?? [],
      dimensions: ["time", "lane", "index", "end"],
      encode: { x: 0, y: 1 },
      symbol: symbols[tone].symbol,
      symbolSize: symbols[tone].size,
      itemStyle: {
        color: color(isHollow ? "surface" : tone),
        borderColor: color(tone),
        borderWidth: isHollow ? 2 : 0,
        opacity: 1,
      },
      z: 3 + level,
      cursor: "pointer",
    };
  });
  const renderItem = barRenderer(lanes);
  return [
    { ...shared, id: "bars", type: "custom" as const, data: bars, renderItem, clip: true },
    ...scatter,
  ];
}

export function seriesOfPosition(report: Report) {
  const path = report.playhead.flatMap((stretch) => [
    ...stretch.map(([time, position]) => [time * perSecond, position]),
    [null, null],
  ]);
  const jumps = report.jumps.flatMap(({ time, from, to }) => [
    [time * perSecond, from],
    [time * perSecond, to],
    [null, null],
  ]);
  const line = {
    type: "line" as const,
    xAxisIndex: 0,
    yAxisIndex: 0,
    showSymbol: false,
    silent: true,
    animation: false,
  };
  return [
    bands("break", report.breaks),
    bands("pause", report.pauses),
    { ...line, id: "path", data: path, lineStyle: { color: color("position"), width: 2 } },
    {
      ...line,
      id: "jumps",
      data: jumps,
      lineStyle: { color: color("position"), width: 1, type: "dashed" as const },
    },
  ];
}
