// The upper canvas: labels, ruler, texts, marks, selection. Names come from logs: they are drawn, never markup.
import { groupOf, type State, type TimeRange } from "../state/state";
import { lengthText, percentText } from "../state/time";
import type { AxisTick, GroupInfo, Row } from "../worker/protocol";
import { drawFound } from "./found";
import { SliceKind, type FrameRow, type Mark } from "./frame";
import { labelWidth, marksHeight, rulerHeight, runsHeight, runsTop, type Size } from "./layout";
import { drawMarks } from "./marks";
import { drawPins } from "./pins";
import type { Picture } from "./rows";
import { css, font, theme } from "./theme";

type Context = CanvasRenderingContext2D;

// Text that is cut where there is no room.
export function fitted(context: Context, text: string, width: number): string {
  if (context.measureText(text).width <= width) return text;
  let [least, most] = [0, text.length];
  while (least < most) {
    const middle = (least + most + 1) >> 1;
    if (context.measureText(`${text.slice(0, middle)}…`).width <= width) least = middle;
    else most = middle - 1;
  }
  return least === 0 ? "" : `${text.slice(0, least)}…`;
}

const rowNumbers = new WeakMap<Row[], Map<string, number>>();
function numbersOf(rows: Row[]): Map<string, number> {
  let made = rowNumbers.get(rows);
  if (made) return made;
  made = new Map(rows.map((row, index) => [`${row.lane}:${row.task}`, index]));
  rowNumbers.set(rows, made);
  return made;
}

export class Overlay {
  constructor(
    private readonly context: Context,
    private readonly size: Size,
    private readonly state: State,
    private readonly picture: Picture,
    private readonly range: TimeRange,
  ) {}

  draw(axis: AxisTick[]): void {
    const { context, size } = this;
    context.clearRect(0, 0, size.width, size.height);
    context.textBaseline = "middle";
    const group = groupOf(this.state);
    if (!group) return;
    this.clipped(0, rulerHeight, size.width, () => {
      this.drawGrid(axis);
      for (const row of this.picture.frame.rows) this.drawLabel(row);
    });
    this.clipped(labelWidth, rulerHeight, this.picture.width, () => {
      for (const row of this.picture.frame.rows) this.drawTexts(row);
      for (const row of this.picture.frame.rows) this.drawMarks(row);
      this.drawPicked();
    });
    this.drawRuler(axis, group);
    this.clipped(labelWidth, 0, this.picture.width, () => {
      this.drawSelection(group);
      drawPins(context, this.state, size, ticks => this.xOf(ticks));
    });
  }

  private clipped(x: number, y: number, width: number, draw: () => void): void {
    this.context.save();
    this.context.beginPath();
    this.context.rect(x, y, width, this.size.height - y);
    this.context.clip();
    draw();
    this.context.restore();
  }

  private topOf(index: number): number {
    return rulerHeight + (this.picture.rows[index]?.top ?? 0) - this.picture.scrollTop;
  }

  private xOf(ticks: bigint): number {
    const length = Number(this.range.to - this.range.from);
    return labelWidth + (Number(ticks - this.range.from) / length) * this.picture.width;
  }

  // ---- Labels and ruler ----

  private drawLabel(row: FrameRow): void {
    const place = this.picture.rows[row.index];
    const lane = place && this.picture.lanes[place.lane];
    if (!place || !lane) return;
    const { context } = this;
    const look = theme();
    const isLane = place.task === null;
    const middle = this.topOf(row.index) + runsTop + runsHeight(isLane) / 2;
    const right = labelWidth - 14;
    context.textAlign = "right";
    context.fillStyle = look.faint;
    context.font = font(11.5);
    context.fillText(`${isLane && !Number.isNaN(row.load) ? "busy " : ""}${percentText(row.load)}`, right, middle);
    context.textAlign = "left";
    context.fillStyle = look.ink;
    const task = place.task === null ? undefined : lane.tasks[place.task];
    if (!task) {
      context.font = font(13, 650);
      context.fillText(fitted(context, lane.title, right - 96), 14, middle);
      return;
    }
    context.font = font(12.5);
    const isPinned = this.state.pins.includes(`${place.lane}:${place.task}`);
    context.fillText(fitted(context, `${isPinned ? "★ " : ""}${task.label}`, right - 34 - 84), 34, middle);
    context.fillStyle = look.faint;
    context.font = font(11);
    context.textAlign = "right";
    context.fillText(`${task.priority}`, right - 54, middle);
    context.fillStyle = task.isIdle ? look.idle : css(task.colour);
    context.beginPath();
    context.roundRect(16, middle - 5, 10, 10, 2.5);
    context.fill();
  }

  private drawGrid(axis: AxisTick[]): void {
    this.context.fillStyle = theme().ink;
    this.context.globalAlpha = 0.06;
    for (const tick of axis) this.context.fillRect(labelWidth + Math.round(tick.x), rulerHeight, 1, this.size.height);
    this.context.globalAlpha = 1;
  }

  private drawRuler(axis: AxisTick[], group: GroupInfo): void {
    const { context, size } = this;
    const look = theme();
    context.fillStyle = look.paper;
    context.fillRect(0, 0, size.width, rulerHeight);
    context.fillStyle = look.laneLine;
    context.fillRect(0, rulerHeight - 1, size.width, 1);
    context.fillStyle = look.faint;
    context.font = font(11.5);
    context.textAlign = "left";
    context.fillText(group.ticksPerSecond ? "time in seconds" : "time in ticks", 14, rulerHeight / 2);
    context.textAlign = "center";
    for (const tick of axis) {
      const x = labelWidth + tick.x;
      context.fillRect(Math.round(x), rulerHeight - 6, 1, 5);
      const half = context.measureText(tick.label).width / 2;
      if (x - half > labelWidth - 10 && x + half < size.width) context.fillText(tick.label, x, rulerHeight / 2 - 2);
    }
  }

  // ---- Texts in runs and gaps ----

  private drawTexts(row: FrameRow): void {
    const place = this.picture.rows[row.index];
    const lane = place && this.picture.lanes[place.lane];
    if (!place || !lane) return;
    const { context } = this;
    const isLane = place.task === null;
    const middle = this.topOf(row.index) + runsTop + runsHeight(isLane) / 2;
    const ticksPerSecond = groupOf(this.state)?.ticksPerSecond ?? null;
    context.textAlign = "center";
    for (const slice of row.slices) {
      const left = Math.max(slice.begin, 0);
      const right = Math.min(slice.end, this.picture.width);
      const task = lane.tasks[slice.task];
      if (slice.kind === SliceKind.gap && isLane) this.drawGapLabel(left, right, middle);
      if (slice.kind !== SliceKind.run || !task || right - left < 24) continue;
      const text = isLane
        ? fitted(context, task.label, right - left - 8)
        : slice.length
          ? lengthText(BigInt(slice.length), ticksPerSecond)
          : "";
      context.font = font(isLane ? 12 : 11);
      if (text === "" || (!isLane && context.measureText(text).width > right - left - 4)) continue;
      context.fillStyle = task.isIdle ? theme().faint : css(task.ink);
      context.fillText(text, labelWidth + (left + right) / 2, middle + 0.5);
    }
  }

  private drawGapLabel(left: number, right: number, middle: number): void {
    const { context } = this;
    context.font = font(11.5, 600);
    const half = context.measureText("records lost").width / 2 + 6;
    if (right - left < 2 * half) return;
    context.fillStyle = theme().paper;
    context.beginPath();
    context.roundRect(labelWidth + (left + right) / 2 - half, middle - 9, 2 * half, 18, 4);
    context.fill();
    context.fillStyle = theme().lost;
    context.fillText("records lost", labelWidth + (left + right) / 2, middle + 0.5);
  }

  private drawMarks(row: FrameRow): void {
    const place = this.picture.rows[row.index];
    if (!place) return;
    const raisedAt = (mark: Mark): number | null => this.middleOf(this.rowOf(place.lane, mark.running));
    drawMarks(this.context, row.marks, this.topOf(row.index) + marksHeight, this.picture.width, raisedAt);
  }
  private middleOf(index: number): number | null {
    return index < 0 ? null : this.topOf(index) + runsTop + runsHeight(false) / 2;
  }

  // ---- Selection ----

  private drawPicked(): void {
    const { picked, shownJob } = this.state;
    drawFound(
      this.context,
      this.state,
      ticks => this.xOf(ticks),
      (lane, task) => this.placeOf(lane, task),
    );
    if (shownJob) this.outline(shownJob, this.rowOf(shownJob.lane, shownJob.task), 5);
    if (picked && picked.row >= 0) this.outline({ from: BigInt(picked.from), to: BigInt(picked.to) }, picked.row, 1);
  }

  // Of the runs of a row; null where it is not among the rows.
  private placeOf(lane: number, task: number | null): { top: number; height: number } | null {
    const index = this.rowOf(lane, task);
    return index < 0 ? null : { top: this.topOf(index) + runsTop, height: runsHeight(task === null) };
  }

  private rowOf(lane: number, task: number | null): number {
    return numbersOf(this.picture.rows).get(`${lane}:${task}`) ?? -1;
  }

  private outline(range: TimeRange, index: number, below: number): void {
    const place = this.picture.rows[index];
    if (!place) return;
    const top = this.topOf(index) + runsTop;
    const left = this.xOf(range.from);
    this.context.strokeStyle = theme().selectionEdge;
    this.context.lineWidth = 2;
    this.context.strokeRect(
      left - 1,
      top - 1,
      Math.max(this.xOf(range.to) - left, 1) + 2,
      runsHeight(place.task === null) + 1 + below,
    );
  }

  private drawSelection(group: GroupInfo): void {
    const { selection } = this.state;
    if (!selection) return;
    const { context, size } = this;
    const look = theme();
    const [left, right] = [this.xOf(selection.from), this.xOf(selection.to)];
    context.fillStyle = look.selection;
    context.fillRect(left, 0, right - left, size.height);
    context.fillStyle = look.selectionEdge;
    for (const x of [left, right]) context.fillRect(Math.round(x) - 0.5, 0, 1.5, size.height);
    context.font = font(11.5, 600);
    context.textAlign = "center";
    const text = lengthText(selection.to - selection.from, group.ticksPerSecond);
    const half = context.measureText(text).width / 2 + 7;
    const middle = Math.min(Math.max((left + right) / 2, labelWidth + half), size.width - half);
    context.beginPath();
    context.roundRect(middle - half, rulerHeight + 4, 2 * half, 20, 5);
    context.fill();
    context.fillStyle = look.paper;
    context.fillText(text, middle, rulerHeight + 14.5);
  }
}
