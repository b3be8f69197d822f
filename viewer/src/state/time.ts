// Ticks as people read them, and arithmetic on ranges. Nothing here rounds a tick.
import type { GroupInfo, Ticks } from "../worker/protocol";
import type { TimeRange } from "./state";

export const lengthOf = (range: TimeRange): Ticks => range.to - range.from;

// Ticks times a fraction.
export function scaled(ticks: Ticks, factor: number): Ticks {
  if (ticks < 1n << 50n) return BigInt(Math.round(Number(ticks) * factor));
  return (ticks * BigInt(Math.round(factor * 1e9))) / 1_000_000_000n;
}

export function clamped(range: TimeRange, group: GroupInfo): TimeRange {
  const [first, last] = [
    BigInt(group.from),
    BigInt(group.to) > BigInt(group.from) ? BigInt(group.to) : BigInt(group.from) + 1n,
  ];
  const least = 4n; // ticks
  let length = lengthOf(range) < least ? least : lengthOf(range);
  if (length > last - first) length = last - first;
  let from = range.from < first ? first : range.from;
  if (from + length > last) from = last - length;
  return { from, to: from + length };
}

const units: [string, number][] = [
  ["s", 1],
  ["ms", 1e3],
  ["µs", 1e6],
  ["ns", 1e9],
];

// "1.234 ms"; ticks where the rate is unknown.
export function lengthText(ticks: Ticks | number, ticksPerSecond: number | null): string {
  if (!ticksPerSecond) return `${typeof ticks === "number" ? Math.round(ticks) : ticks} ticks`;
  const seconds = Number(ticks) / ticksPerSecond;
  if (seconds === 0) return "0 s";
  const [unit, factor] = units.find(([, perSecond]) => Math.abs(seconds) * perSecond >= 1) ?? units[3]!;
  return `${(seconds * factor).toPrecision(4)} ${unit}`;
}

// A moment, from where the seconds of the group count: with as many decimals as tell ticks apart.
export function timeText(ticks: Ticks, group: GroupInfo): string {
  if (!group.ticksPerSecond) return `${ticks}`;
  const rate = BigInt(group.ticksPerSecond);
  const distance = ticks - BigInt(group.origin);
  const positive = distance < 0n ? -distance : distance;
  const decimals = Math.max(6, Math.ceil(Math.log10(group.ticksPerSecond)));
  const fraction = ((positive % rate) * 10n ** BigInt(decimals)) / rate;
  return `${distance < 0n ? "-" : ""}${positive / rate}.${fraction.toString().padStart(decimals, "0")} s`;
}

export function percentText(share: number | null): string {
  return share === null || Number.isNaN(share) ? "–" : `${(share * 100).toFixed(share < 0.0995 ? 2 : 1)} %`;
}
