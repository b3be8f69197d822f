// The lower canvas: bars, runs, jobs, waits, gaps.
import type { LaneInfo, Row } from "../worker/protocol";
import { SliceKind, type FrameRow, type Slice } from "./frame";
import { bracketHeight, labelWidth, rulerHeight, runsHeight, runsTop, type Size } from "./layout";
import { css, strong, theme, type Theme } from "./theme";

export interface Picture {
  frame: FrameRow[];
  rows: Row[];
  lanes: LaneInfo[];
  scrollTop: number;
  width: number;
}

const fadeWidth = 16;
const leastBracket = 3;

let hatches: { of: Theme; pattern: CanvasPattern | null } | undefined;
function hatch(context: CanvasRenderingContext2D, look: Theme): CanvasPattern | string {
  if (hatches?.of !== look) {
    const tile = new OffscreenCanvas(8, 8);
    const lines = tile.getContext("2d")!;
    lines.fillStyle = look.hatchPaper;
    lines.fillRect(0, 0, 8, 8);
    lines.strokeStyle = look.hatch;
    lines.lineWidth = 1.2;
    lines.beginPath();
    for (const x of [-8, 0, 8]) {
      lines.moveTo(x, 8);
      lines.lineTo(x + 8, 0);
    }
    lines.stroke();
    hatches = { of: look, pattern: context.createPattern(tile, "repeat") };
  }
  return hatches.pattern ?? look.hatch;
}

let scratch: OffscreenCanvas | undefined;

// Bars come as images as high as the row; one canvas takes them all, and hands them on at the screen's resolution.
function drawBars(context: CanvasRenderingContext2D, picture: Picture): void {
  const withBars = picture.frame.filter(row => row.bars);
  const height = withBars.reduce((sum, row) => sum + row.bars!.height, 0);
  if (height === 0) return;
  if (!scratch || scratch.width !== picture.width || scratch.height < height)
    scratch = new OffscreenCanvas(picture.width, height + 64);
  const images = scratch.getContext("2d", { willReadFrequently: true })!;
  context.imageSmoothingEnabled = false;
  let y = 0;
  for (const { bars } of withBars) {
    images.putImageData(bars!, 0, y);
    y += bars!.height;
  }
  y = 0;
  for (const { bars, index } of withBars) {
    const { width, height: high } = bars!;
    context.drawImage(scratch, 0, y, width, high, labelWidth, topOf(picture, index) + runsTop, width, high);
    y += high;
  }
}

function topOf(picture: Picture, index: number): number {
  return rulerHeight + (picture.rows[index]?.top ?? 0) - picture.scrollTop;
}

function drawFades(
  context: CanvasRenderingContext2D,
  slice: Slice,
  left: number,
  right: number,
  top: number,
  height: number,
): void {
  const width = Math.min(fadeWidth, right - left);
  const { paper } = theme();
  const fade = (from: number, to: number): void => {
    const gradient = context.createLinearGradient(from, 0, to, 0);
    gradient.addColorStop(0, paper);
    gradient.addColorStop(1, `${paper}00`);
    context.fillStyle = gradient;
    context.fillRect(Math.min(from, to), top, width, height);
  };
  if (slice.fadesIn && slice.begin >= 0) fade(left, left + width);
  if (slice.fadesOut) fade(right, right - width);
}

function drawWait(
  context: CanvasRenderingContext2D,
  colour: number,
  left: number,
  right: number,
  top: number,
  height: number,
): void {
  context.fillStyle = theme().paper;
  context.fillRect(left, top, right - left, height);
  context.strokeStyle = strong(colour, 0.3);
  context.setLineDash([2, 2]);
  context.beginPath();
  context.moveTo(left, top + height / 2);
  context.lineTo(right, top + height / 2);
  context.stroke();
  context.setLineDash([]);
}

function drawBracket(
  context: CanvasRenderingContext2D,
  slice: Slice,
  colour: number,
  top: number,
  width: number,
): void {
  const [left, right] = [Math.floor(Math.max(slice.begin, 0)) + 0.5, Math.ceil(Math.min(slice.end, width)) - 0.5];
  if (right - left < leastBracket) return;
  context.strokeStyle = strong(colour, 0.25);
  context.beginPath();
  context.moveTo(labelWidth + left, slice.begin >= 0 && !slice.fadesIn ? top - 3 : top);
  context.lineTo(labelWidth + left, top);
  context.lineTo(labelWidth + right, top);
  if (slice.end <= width && !slice.fadesOut) context.lineTo(labelWidth + right, top - 3);
  context.stroke();
}

function drawRow(context: CanvasRenderingContext2D, picture: Picture, row: FrameRow): void {
  const place = picture.rows[row.index];
  const lane = place && picture.lanes[place.lane];
  if (!place || !lane) return;
  const look = theme();
  const isLane = place.task === null;
  const top = topOf(picture, row.index) + runsTop;
  const height = runsHeight(isLane);
  for (const slice of row.slices) {
    const task = lane.tasks[slice.task];
    const left = labelWidth + Math.max(slice.begin, 0);
    const right = labelWidth + Math.min(slice.end, picture.width);
    const colour = task?.colour ?? 0x888888;
    if (slice.kind === SliceKind.wait) {
      drawWait(context, colour, left, right, top, height);
      continue;
    }
    if (slice.kind === SliceKind.gap) {
      context.fillStyle = hatch(context, look);
      context.fillRect(left, top - runsTop, Math.max(right - left, 1), place.height);
      continue;
    }
    context.globalAlpha = slice.kind === SliceKind.job ? 0.33 : slice.kind === SliceKind.unknown ? 0.2 : 1;
    context.fillStyle = task?.isIdle ? look.idle : css(colour);
    context.fillRect(left, top, right - left, height);
    context.globalAlpha = 1;
    if (slice.fadesIn || slice.fadesOut) drawFades(context, slice, left, right, top, height);
    if (slice.kind === SliceKind.job && !isLane)
      drawBracket(context, slice, colour, top + height + bracketHeight - 1.5, picture.width);
  }
}

export function drawRows(context: CanvasRenderingContext2D, size: Size, picture: Picture): void {
  const look = theme();
  context.fillStyle = look.paper;
  context.fillRect(0, 0, size.width, size.height);
  context.save();
  context.beginPath();
  context.rect(0, rulerHeight, labelWidth + picture.width, size.height - rulerHeight);
  context.clip();
  for (const { index } of picture.frame) {
    const place = picture.rows[index];
    if (!place) continue;
    const y = topOf(picture, index);
    if (place.task === null) {
      context.fillStyle = look.laneBand;
      context.fillRect(0, y, size.width, place.height);
    }
    context.fillStyle = place.task === null ? look.laneLine : look.line;
    context.fillRect(0, y, size.width, 1);
  }
  drawBars(context, picture);
  context.lineWidth = 1;
  for (const row of picture.frame) drawRow(context, picture, row);
  context.restore();
}
