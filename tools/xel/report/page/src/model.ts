// The report as the tool writes it into the page. Times are seconds since the recording began,
// positions seconds of stream time; what is absent or empty is left out.

export type PingOutcome = "accepted" | "failed" | "unanswered";
export type Severity = "error" | "warning" | "note";

export interface Ping {
  time: number;
  position?: number;
  event?: string;
  /** Index into `Report.ads`. */
  ad?: number;
  url?: string;
  outcome: PingOutcome;
  status?: number;
  error?: string;
  milliseconds?: number;
}

export interface Ad {
  key?: string;
  id?: string;
  title?: string;
  system?: string;
  /** Index into `Report.breaks`. */
  break?: number;
  breakKey?: string;
  /** From 1; -1 when the stream does not say. */
  place: number;
  duration: number;
  start?: number;
  end?: number;
  position?: number;
  outcome: "completed" | "cutOff" | "notStarted";
  why?: string;
  /** Whether that is no fault: a seek, say, or the end of watching. */
  isExpected?: boolean;
  reached: string[];
  pingsNotSent: number;
}

export interface Break {
  key?: string;
  start: number;
  end: number;
  position?: number;
  totalAds: number;
  duration: number;
}

export interface Stream {
  isPreroll?: boolean;
  url?: string;
  start: number;
  end: number;
}

export interface Jump {
  time: number;
  from: number;
  to: number;
  isSeek?: boolean;
}

export interface Event {
  time: number;
  position?: number;
  row: "ads" | "player" | "documents";
  name: string;
  detail?: string;
  ad?: number;
  isFailure?: boolean;
  milliseconds?: number;
}

export interface Loss {
  severity: Severity;
  what: string;
  why?: string;
  count: number;
  time?: number;
  position?: number;
}

export interface Finding {
  severity: Severity;
  rule: string;
  document?: string;
  place?: string;
  text?: string;
  remedy?: string;
}

export interface Session {
  library?: string;
  recorded?: string;
  isLive?: boolean;
  stream?: string;
  streamID?: string;
  facts: { name: string; value?: string }[];
  duration: number;
  exitStatus?: number;
  isWhole?: boolean;
}

export interface Report {
  statement: string;
  session: Session;
  startUp?: number;
  metadata: { events: number; worst: number; sum: number; texts: number; unknownTexts: number };
  streams: Stream[];
  playhead: [time: number, position: number][][];
  jumps: Jump[];
  pauses: { start: number; end: number }[];
  breaks: Break[];
  ads: Ad[];
  events: Event[];
  pings: Ping[];
  losses: Loss[];
  findings: Finding[];
}
