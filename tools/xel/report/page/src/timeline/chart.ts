import { CustomChart, LineChart, ScatterChart } from "echarts/charts";
import {
  AxisPointerComponent,
  DataZoomComponent,
  GridComponent,
  TooltipComponent,
} from "echarts/components";
import * as echarts from "echarts/core";
import type { CustomSeriesRenderItem, CustomSeriesRenderItemParams, EChartsOption } from "echarts";
import { CanvasRenderer } from "echarts/renderers";

import { clock, preciseClock } from "../format";
import type { Report } from "../model";
import { color } from "../theme";
import type { Lane, Mark, Tone } from "./marks";

echarts.use([
  AxisPointerComponent,
  CanvasRenderer,
  CustomChart,
  DataZoomComponent,
  GridComponent,
  LineChart,
  ScatterChart,
  TooltipComponent,
]);

const positionHeight = 110;
const laneHeight = 24;
const gap = 12;
const sliderHeight = 58;
const narrowWidth = 600;
/** Points of one row and tone that are closer than this, in pixels, are drawn as one. */
const closestPoints = 3;
// The axis counts milliseconds.
const perSecond = 1000;

export function chartHeight(lanes: Lane[]): number {
  return gap + positionHeight + gap + lanes.length * laneHeight + sliderHeight;
}

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

const laneOf = (value: unknown): Place => value as Place;

/** The part in view of a stretch of time; nothing where none is. */
function visible(params: CustomSeriesRenderItemParams, start: number, end: number) {
  const area = params.coordSys as unknown as { x: number; y: number; width: number; height: number };
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
  return [{ ...shared, id: "bars", type: "custom" as const, data: bars, renderItem, clip: true }, ...scatter];
}

function seriesOfPosition(report: Report) {
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
    { ...line, id: "jumps", data: jumps, lineStyle: { color: color("position"), width: 1, type: "dashed" as const } },
  ];
}

/** The positions' scale: from 0 in at most four steps that clocks have. */
function positionScale(report: Report) {
  let highest = 1;
  for (const path of report.playhead) {
    for (const [, position] of path) highest = Math.max(highest, position);
  }
  const steps = [1, 5, 15, 30, 60, 300, 900, 1800, 3600, 3 * 3600, 6 * 3600];
  const interval = steps.find((step) => highest / step <= 4) ?? 24 * 3600;
  return { min: 0, max: Math.ceil(highest / interval) * interval, interval };
}

/** What the time line looks like in the present colours. */
export function chartOption(
  report: Report,
  lanes: Lane[],
  view: View,
  tooltip: (lane: number, index: number) => HTMLElement,
): EChartsOption {
  const lines = { lineStyle: { color: color("rule") } };
  const labels = { color: color("muted"), fontSize: 11 };
  const sides = { left: view.width < narrowWidth ? 118 : 124, right: 14, outerBoundsMode: "none" as const };
  const time = {
    type: "time" as const,
    min: 0,
    max: Math.max(report.session.duration, 1) * perSecond,
    splitLine: { show: true, ...lines },
    axisLine: lines,
    axisTick: { show: false },
  };
  const timeLabel = (value: number) => clock(value / perSecond);
  const lanesTop = gap + positionHeight + gap;
  return {
    useUTC: true,
    animation: false,
    textStyle: { fontFamily: "system-ui, sans-serif" },
    axisPointer: { link: [{ xAxisIndex: "all" }], lineStyle: { color: color("muted") } },
    grid: [
      { ...sides, top: gap, height: positionHeight },
      { ...sides, top: lanesTop, height: lanes.length * laneHeight },
    ],
    xAxis: [
      { ...time, gridIndex: 0, axisLabel: { show: false }, axisPointer: { show: true, label: { show: false } } },
      {
        ...time,
        gridIndex: 1,
        axisLabel: { ...labels, formatter: timeLabel, hideOverlap: true },
        axisPointer: {
          show: true,
          label: { formatter: ({ value }) => preciseClock(Number(value) / perSecond) },
        },
      },
    ],
    yAxis: [
      {
        type: "value",
        gridIndex: 0,
        ...positionScale(report),
        axisLabel: { ...labels, formatter: clock },
        splitLine: lines,
      },
      {
        type: "category",
        gridIndex: 1,
        inverse: true,
        data: lanes.map((lane) => lane.name),
        axisLabel: { ...labels, color: color("ink"), interval: 0 },
        axisTick: { show: false },
        axisLine: lines,
        splitLine: { show: true, ...lines },
      },
    ],
    dataZoom: [
      { type: "inside", xAxisIndex: [0, 1], filterMode: "none", zoomOnMouseWheel: "ctrl", minValueSpan: perSecond },
      {
        type: "slider",
        xAxisIndex: [0, 1],
        filterMode: "none",
        bottom: 8,
        height: 20,
        showDetail: false,
        showDataShadow: false,
        brushSelect: false,
        borderColor: color("rule"),
        fillerColor: color("slider"),
        handleStyle: { color: color("surface"), borderColor: color("muted") },
        moveHandleStyle: { color: color("rule") },
        backgroundColor: "transparent",
      },
    ],
    tooltip: {
      trigger: "item",
      confine: true,
      className: "tooltip",
      backgroundColor: color("surface"),
      borderColor: color("rule"),
      padding: 0,
      formatter: (params) => {
        const [, lane, index] = laneOf((Array.isArray(params) ? params[0] : params)?.value);
        return tooltip(lane, index);
      },
    },
    series: [...seriesOfPosition(report), ...seriesOfLanes(lanes, view)],
  };
}

/** The mark that an event of the chart is about. */
export function placeOf(value: unknown): { lane: number; index: number } {
  const [, lane, index] = laneOf(value);
  return { lane, index };
}

/** Where a mark stands in the chart, in pixels: its middle, or that of the part in view. */
export function positionOf(chart: echarts.ECharts, mark: Mark, lane: number): [number, number] {
  const finder = { xAxisIndex: 1, yAxisIndex: 1 };
  const at = (time: number) => chart.convertToPixel(finder, [time * perSecond, lane]);
  const [left = 0, y = 0] = at(mark.start);
  const [right = 0] = at(mark.end ?? mark.start);
  return [(left + right) / 2, y];
}

export { echarts, perSecond };
