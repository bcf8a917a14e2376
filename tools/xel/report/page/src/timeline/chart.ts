import { CustomChart, LineChart, ScatterChart } from "echarts/charts";
import {
  AxisPointerComponent,
  DataZoomComponent,
  GridComponent,
  TooltipComponent,
} from "echarts/components";
import * as echarts from "echarts/core";
import type { EChartsOption } from "echarts";
import { CanvasRenderer } from "echarts/renderers";

import { clock, preciseClock } from "../format";
import type { Report } from "../model";
import { color } from "../theme";
import type { Lane, Mark } from "./marks";
import {
  laneHeight,
  perSecond,
  placeOf,
  seriesOfLanes,
  seriesOfPosition,
  type View,
} from "./series";

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
const gap = 12;
const sliderHeight = 58;
const narrowWidth = 600;

export function chartHeight(lanes: Lane[]): number {
  return gap + positionHeight + gap + lanes.length * laneHeight + sliderHeight;
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
  const sides = {
    left: view.width < narrowWidth ? 118 : 124,
    right: 14,
    outerBoundsMode: "none" as const,
  };
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
      {
        ...time,
        gridIndex: 0,
        axisLabel: { show: false },
        axisPointer: { show: true, label: { show: false } },
      },
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
      {
        type: "inside",
        xAxisIndex: [0, 1],
        filterMode: "none",
        zoomOnMouseWheel: "ctrl",
        minValueSpan: perSecond,
      },
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
        const { lane, index } = placeOf((Array.isArray(params) ? params[0] : params)?.value);
        return tooltip(lane, index);
      },
    },
    series: [...seriesOfPosition(report), ...seriesOfLanes(lanes, view)],
  };
}

/** Where a mark stands in the chart, in pixels: its middle, or that of the part in view. */
export function positionOf(chart: echarts.ECharts, mark: Mark, lane: number): [number, number] {
  const finder = { xAxisIndex: 1, yAxisIndex: 1 };
  const at = (time: number) => chart.convertToPixel(finder, [time * perSecond, lane]);
  const [left = 0, y = 0] = at(mark.start);
  const [right = 0] = at(mark.end ?? mark.start);
  return [(left + right) / 2, y];
}

export { echarts };
