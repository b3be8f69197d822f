// The marks A and B that the user sets, with the distance between them.
import { groupOf, type State } from "../state/state";
import { lengthText } from "../state/time";
import { labelWidth, rulerHeight, type Size } from "./layout";
import { font, theme } from "./theme";

const names = ["A", "B"];

export function drawPins(
  context: CanvasRenderingContext2D,
  state: State,
  size: Size,
  xOf: (ticks: bigint) => number,
): void {
  const group = groupOf(state);
  if (!group || state.pinned.length === 0) return;
  const look = theme();
  context.fillStyle = context.strokeStyle = look.ink;
  context.lineWidth = 1.5;
  context.textAlign = "center";
  context.textBaseline = "middle";
  const xs = state.pinned.map(xOf);
  xs.forEach((x, i) => {
    context.setLineDash([5, 3]);
    context.beginPath();
    context.moveTo(Math.round(x), rulerHeight);
    context.lineTo(Math.round(x), size.height);
    context.stroke();
    context.setLineDash([]);
    tag(context, names[i]!, x, rulerHeight - 9, 8);
  });
  const [a, b] = state.pinned;
  if (a === undefined || b === undefined) return;
  const [left, right] = [Math.min(...xs), Math.max(...xs)];
  const y = size.height - 18;
  context.fillRect(left, y - 0.5, right - left, 1);
  const text = lengthText(a < b ? b - a : a - b, group.ticksPerSecond);
  context.font = font(11.5, 600);
  const half = context.measureText(text).width / 2 + 7;
  const middle = Math.min(Math.max((left + right) / 2, labelWidth + half), size.width - half);
  tag(context, text, middle, y, half);
}

function tag(context: CanvasRenderingContext2D, text: string, x: number, y: number, half: number): void {
  const look = theme();
  context.font = font(11.5, 600);
  context.fillStyle = look.ink;
  context.beginPath();
  context.roundRect(x - half, y - 9, 2 * half, 18, 4);
  context.fill();
  context.fillStyle = look.paper;
  context.fillText(text, x, y + 0.5);
  context.fillStyle = look.ink;
}
