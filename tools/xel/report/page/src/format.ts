const numbers = new Intl.NumberFormat("en");
const hour = 3600;
const minute = 60;

const padded = (value: number) => String(value).padStart(2, "0");

/** "02:05", or "1:02:05" from an hour on. */
export function clock(seconds: number): string {
  const whole = Math.floor(Math.abs(seconds));
  const minutes = Math.floor((whole % hour) / minute);
  const text = `${padded(minutes)}:${padded(whole % minute)}`;
  const hours = Math.floor(whole / hour);
  return (seconds < 0 ? "-" : "") + (hours > 0 ? `${hours}:${text}` : text);
}

/** "02:05.3": to a tenth, as exact as a player reports. Nothing for nothing. */
export function preciseClock(seconds: number | undefined): string {
  if (seconds === undefined) return "–";
  const tenths = Math.round(Math.abs(seconds) * 10);
  return `${clock((Math.sign(seconds) * tenths) / 10)}.${tenths % 10}`;
}

/** A count with its noun: "1 ping", "12,000 pings". */
export function counted(count: number, noun: string): string {
  return `${number(count)} ${noun}${count === 1 ? "" : "s"}`;
}

export function number(value: number): string {
  return numbers.format(value);
}

export function latency(milliseconds: number | undefined): string {
  if (milliseconds === undefined) return "–";
  return milliseconds < 10
    ? `${milliseconds.toFixed(1)} ms`
    : `${number(Math.round(milliseconds))} ms`;
}

export function percent(part: number, whole: number): string {
  return `${Math.floor((100 * part) / whole)} %`;
}

/** The tracking events as people say them. */
export function eventName(event: string | undefined): string {
  const names: Record<string, string> = {
    creativeview: "creative view",
    firstquartile: "first quartile",
    thirdquartile: "third quartile",
  };
  return names[event ?? ""] ?? event ?? "";
}

/** What a ping's answer was, such as "HTTP 204". */
export function answer(ping: { status?: number; error?: string }): string {
  return ping.status !== undefined ? `HTTP ${ping.status}` : (ping.error ?? "none");
}
