// The calls of the bridge: what each is asked and answers. docs/viewer.md describes them; viewer/bridge/ makes them.
// Ticks need 64 bits: they are bigint here and strings of digits on the way.
import type { Difference, Entry, Findings, Quantity, Stats, TicksText } from "./commandjson";
export type * from "./commandjson";

export type Ticks = bigint;

// A `label` is safe to show; a `name` is what the JSON of statistics and findings says.
export interface TaskInfo {
  name: string;
  label: string;
  priority: number;
  colour: number;
  ink: number;
  isIdle: boolean;
}
export interface SubjectInfo {
  name: string;
  label: string;
  kind: "issue" | "testpoint";
}
export interface LaneInfo {
  name: string;
  title: string; // the name, safe to show
  label: string; // with its file or folder
  group: number;
  argument: number; // of Description.arguments
  startTicks: TicksText;
  stopTicks: TicksText;
  entries: number;
  coverage: number;
  tasks: TaskInfo[];
  subjects: SubjectInfo[]; // their numbers follow those of the tasks
}
export interface GroupInfo {
  from: TicksText;
  to: TicksText;
  origin: TicksText;
  shownFrom: TicksText;
  shownTo: TicksText; // what --from and --to ask for
  ticksPerSecond: number; // 0: unknown
}
export interface Description {
  arguments: string[];
  lanes: LaneInfo[];
  groups: GroupInfo[];
  problems: string[];
}

// What is seen of a row: a lane has fewer counts.
export interface VisibleRow {
  lane: number;
  task: number | null;
  load: number | null;
  runs?: number;
  jobs?: number;
  events?: number;
  testpoints: number;
  issues: number;
  gaps: number;
}

export type RowOrder = "priority" | "load" | "name" | "first";
export interface Row {
  lane: number;
  task: number | null;
  top: number;
  height: number;
}

export interface WindowKeys {
  from: Ticks;
  length: Ticks;
  width: number;
}
export interface AxisTick {
  x: number;
  label: string;
}

export type SpanKind = "run" | "job" | "wait";
export interface Hit {
  kind: "nothing" | SpanKind | "unknown" | "gap" | "event" | "testpoint" | "issue";
  row: number;
  lane: number;
  task: number | null;
  subject: number | null;
  index: number;
  count: number;
  from: TicksText;
  to: TicksText;
  title: string;
}
export interface Neighbour {
  task: number;
  index: number;
  from: TicksText;
  to: TicksText;
}
export interface Part {
  kind: string;
  task: number | null;
  ticks: TicksText;
  length: string;
}
// A part of a job where it lies in time.
export interface Piece {
  kind: string;
  task: number | null;
  from: TicksText;
  to: TicksText;
}
export interface DetailsOfSpan {
  title: string;
  from: TicksText;
  to: TicksText;
  begin: string;
  length: string;
  unit: string;
  isCut: boolean;
  before: Neighbour | null;
  behind: Neighbour | null;
  parts?: Part[];
}
export interface Found {
  lane: number;
  kind: string;
  subject: number;
  index: number;
  from: TicksText;
  to: TicksText;
}
export interface Match {
  lane: number;
  kind: "task" | "testpoint" | "issue";
  subject: number;
  name: string;
}

export interface Histogram {
  logarithmic: boolean;
  bins: { fromTicks: TicksText; toTicks: TicksText; count: number }[];
}
export interface Place {
  from: TicksText;
  to: TicksText;
  ticks: TicksText;
}
export interface QuantityKeys {
  lane: number;
  task: number;
  quantity: Quantity;
  from?: Ticks;
  to?: Ticks;
}

export interface Calls {
  open: { keys: { arguments: string[]; from?: string; to?: string; adds?: boolean }; answer: Description };
  group: { keys: { separately: boolean }; answer: Description };
  visible: { keys: { from: Ticks; to: Ticks }; answer: VisibleRow[] };
  rows: {
    keys: {
      group: number;
      order: RowOrder;
      from: Ticks;
      to: Ticks;
      hidesEmpty: boolean;
      filter: string;
      pins: string[];
      folded: string[];
    };
    answer: Row[];
  };
  axis: { keys: WindowKeys & { group: number; distance: number; inTicks: boolean }; answer: AxisTick[] };
  pixels: { keys: WindowKeys & { top: number; height: number }; answer: string[] };
  load: { keys: WindowKeys & { group: number }; answer: null };
  hit: { keys: WindowKeys & { x: number; y: number }; answer: Hit | null };
  details: { keys: { lane: number; task: number; kind: SpanKind; index: number }; answer: DetailsOfSpan };
  step: {
    keys: {
      group: number;
      kind: "issue" | "testpoint" | "run" | "job";
      at: Ticks;
      forward: boolean;
      lane?: number;
      task?: number;
      subject?: number;
    };
    answer: Found | null;
  };
  search: { keys: { text: string; limit: number }; answer: Match[] };
  stats: { keys: { from?: Ticks; to?: Ticks; lanes?: string[]; format?: "csv" }; answer: Stats };
  diff: { keys: { before: number; after: number; format?: "csv" }; answer: Difference };
  histogram: { keys: QuantityKeys & { bins: number }; answer: Histogram };
  places: {
    keys: QuantityKeys & { least: Ticks; most: Ticks };
    answer: { count: number; places: Place[] };
  };
  pieces: { keys: { lane: number; task: number; from: Ticks; to: Ticks }; answer: Piece[] };
  explain: { keys: { limit: number }; answer: Findings };
  entries: {
    keys: { lane: number; count: number; first?: number; time?: Ticks };
    answer: { first: number; all: number; entries: Entry[] };
  };
  entriesCsv: { keys: { lane: number; from: Ticks; to: Ticks }; answer: never };
}
export type CallName = keyof Calls;

// Numbers for drawing come beside the JSON.
export interface Reply<Name extends CallName> {
  json: Calls[Name]["answer"];
  text: string;
  ints: Int32Array;
  floats: Float32Array;
  pixels: Uint8ClampedArray;
}

// A file of a recording: its bytes, or as the page carries them, in `size` bytes then.
export interface FileToOpen {
  path: string;
  bytes?: Blob;
  packed?: Uint8Array<ArrayBuffer>;
  size: number;
}

export type ToWorker =
  | { kind: "start"; wasm: string; copyFrom?: MessagePort } // of a worker that is asked to lend
  | { kind: "lend"; port: MessagePort }
  | { kind: "files"; id: number; files: FileToOpen[] }
  | { kind: "call"; id: number; name: string; keys: string; room?: ArrayBuffer }; // for pixels: it may have the size
export type FromWorker =
  | {
      kind: "answer";
      id: number;
      text: string;
      ints: Int32Array;
      floats: Float32Array;
      pixels: Uint8ClampedArray;
      warnings: string[];
    }
  | { kind: "error"; id: number; message: string };
