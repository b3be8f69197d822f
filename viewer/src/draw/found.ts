// What a list or a chart points at: the parts of a job, and places of values.
import type { State } from "../state/state";
import { css, theme } from "./theme";

export interface Place {
  top: number;
  height: number;
}
type PlaceOf = (lane: number, task: number | null) => Place | null;
type XOf = (ticks: bigint) => number;

const stripHeight = 6; // pixels, below the runs of the job's own row
const leastFrame = 5; // pixels: what is narrower has a line above it, or frames would cover all

// A strip below the job says who had the processor; runs that kept it waiting are framed in their own rows.
function drawPieces(context: CanvasRenderingContext2D, state: State, xOf: XOf, placeOf: PlaceOf): void {
  const { pieces, recording } = state;
  const lane = pieces && recording?.lanes[pieces.lane];
  const own = pieces && placeOf(pieces.lane, pieces.task);
  if (!pieces || !lane) return;
  const look = theme();
  for (const piece of pieces.list) {
    const left = xOf(BigInt(piece.from));
    const width = Math.max(xOf(BigInt(piece.to)) - left, 1);
    const task = piece.task === null ? undefined : lane.tasks[piece.task];
    if (own) {
      context.fillStyle = task && piece.kind !== "waiting" ? css(task.colour) : look.faint;
      context.globalAlpha = piece.kind === "waiting" ? 0.45 : 1;
      context.fillRect(left, own.top + own.height + 1, width, stripHeight);
      context.globalAlpha = 1;
    }
    const other = piece.task === null || piece.task === pieces.task ? null : placeOf(pieces.lane, piece.task);
    if (!other) continue;
    context.strokeStyle = context.fillStyle = look.issue;
    context.lineWidth = 2;
    if (width >= leastFrame) context.strokeRect(left - 1, other.top - 1, width + 2, other.height + 2);
    else context.fillRect(left, other.top - 2, width, 2);
  }
}

function drawPlaces(context: CanvasRenderingContext2D, state: State, xOf: XOf, placeOf: PlaceOf): void {
  const { places } = state;
  const row = places && placeOf(places.lane, places.task);
  if (!places || !row) return;
  const look = theme();
  for (const span of places.spans) {
    const left = xOf(span.from);
    const width = Math.max(xOf(span.to) - left, 2);
    context.fillStyle = look.selection;
    context.fillRect(left, row.top, width, row.height);
    context.fillStyle = look.selectionEdge;
    context.fillRect(left, row.top + row.height + 1, width, 4);
    context.beginPath();
    context.moveTo(left - 4, row.top - 9);
    context.lineTo(left + 4, row.top - 9);
    context.lineTo(left, row.top - 2);
    context.fill();
  }
}

export function drawFound(context: CanvasRenderingContext2D, state: State, xOf: XOf, placeOf: PlaceOf): void {
  drawPieces(context, state, xOf, placeOf);
  drawPlaces(context, state, xOf, placeOf);
}
