// The marks of a row: lines for testpoints, flags for timing issues, carets for events.
import { MarkKind, type Mark } from "./frame";
import { labelWidth } from "./layout";
import { font, theme } from "./theme";

type Context = CanvasRenderingContext2D;

const denseDistance = 50; // pixels between the marks of a row: closer ones have no arrows

// `raisedAt` is the height at which the task runs that ran when an event was raised; null where it has no row.
export function drawMarks(
  context: Context,
  marks: Mark[],
  bottom: number,
  width: number,
  raisedAt: (mark: Mark) => number | null,
): void {
  const isDense = marks.length > width / denseDistance;
  for (const mark of marks) {
    const x = labelWidth + mark.x;
    if (mark.kind === MarkKind.testpoint) drawTestpoint(context, x, bottom);
    else if (mark.kind === MarkKind.issue) drawFlag(context, x, bottom);
    else drawEvent(context, x, bottom, mark.count > 1 || isDense ? null : raisedAt(mark));
    if (mark.count > 1 && !isDense) drawCount(context, x, bottom, mark);
  }
}

// How many marks are one here.
function drawCount(context: Context, x: number, bottom: number, mark: Mark): void {
  const isIssue = mark.kind === MarkKind.issue;
  context.font = font(9.5);
  context.textAlign = "left";
  context.fillStyle = isIssue ? theme().issue : theme().faint;
  context.fillText(mark.count > 999 ? "999+" : `${mark.count}`, x + (isIssue ? 9 : 5), bottom - 5);
}

function drawTestpoint(context: Context, x: number, bottom: number): void {
  context.fillStyle = theme().mark;
  context.fillRect(Math.round(x) - 0.5, bottom - 8, 1.2, 8);
}

function drawFlag(context: Context, x: number, bottom: number): void {
  context.fillStyle = theme().issue;
  context.fillRect(x - 0.6, bottom - 9.5, 1.4, 9.5);
  context.beginPath();
  context.moveTo(x, bottom - 9.5);
  context.lineTo(x + 7.5, bottom - 6.8);
  context.lineTo(x, bottom - 4);
  context.fill();
}

// A caret, and a line from the row of the task that ran when it was raised.
function drawEvent(context: Context, x: number, bottom: number, from: number | null): void {
  context.fillStyle = context.strokeStyle = theme().mark;
  if (from !== null) {
    context.globalAlpha = 0.35;
    context.beginPath();
    context.moveTo(Math.round(x) + 0.5, from);
    context.lineTo(Math.round(x) + 0.5, bottom - 3);
    context.stroke();
    context.globalAlpha = 1;
  }
  context.beginPath();
  context.moveTo(x - 4, bottom - 6.5);
  context.lineTo(x + 4, bottom - 6.5);
  context.lineTo(x, bottom - 0.5);
  context.fill();
}
