// The numbers of a "pixels" call, row by row. docs/viewer.md, Pixels, has their order.
import type { Reply } from "../worker/protocol";
import { laneRunsHeight } from "./layout";

export const SliceKind = { run: 0, job: 1, wait: 2, unknown: 3, gap: 4 } as const;
export const MarkKind = { event: 0, testpoint: 1, issue: 2 } as const;
const fadesIn = 1;
const fadesOut = 2;

export interface Slice {
  kind: number;
  task: number;
  begin: number;
  end: number;
  fadesIn: boolean;
  fadesOut: boolean;
  length: string | undefined;
}
export interface Mark {
  kind: number;
  subject: number;
  running: number;
  x: number;
  count: number;
}
export interface FrameRow {
  index: number;
  load: number;
  bars: ImageData | null;
  slices: Slice[];
  marks: Mark[];
}

export function decode(reply: Reply<"pixels">, width: number): FrameRow[] {
  const { ints, floats, pixels, json: lengths } = reply;
  const rows: FrameRow[] = [];
  let at = 0;
  let real = 0;
  const int = (): number => ints[at++] ?? 0;
  const float = (): number => floats[real++] ?? 0;
  const bars = (place: number, height: number): ImageData | null =>
    place < 0
      ? null
      : new ImageData(
          pixels.subarray(4 * place, 4 * (place + width * height)) as Uint8ClampedArray<ArrayBuffer>,
          width,
          height,
        );
  while (at < ints.length) {
    const row: FrameRow = {
      index: int(),
      load: float(),
      bars: bars(int(), Math.min(int(), laneRunsHeight)),
      slices: [],
      marks: [],
    };
    const [slices, marks] = [int(), int()];
    for (let i = 0; i < slices; ++i) {
      const [kind, task, , flags, label] = [int(), int(), int(), int(), int()];
      const [begin, end] = [float(), float()];
      row.slices.push({
        kind,
        task,
        begin,
        end,
        fadesIn: (flags & fadesIn) !== 0,
        fadesOut: (flags & fadesOut) !== 0,
        length: lengths[label],
      });
    }
    for (let i = 0; i < marks; ++i) {
      const [kind, subject, running, , count] = [int(), int(), int(), int(), int()];
      row.marks.push({ kind, subject, running, count, x: float() });
    }
    rows.push(row);
  }
  return rows;
}
