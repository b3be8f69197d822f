// What commands print as JSON, which calls of the bridge answer letter for letter: what the page reads of it.
// docs/json.md has all keys. Ticks need 64 bits: they are strings of digits.
export type TicksText = string;

// As `tasklog stats --format json`.
export type Quantity = "execution" | "response" | "startLatency" | "activationInterval" | "run";
export interface Summary {
  count: number;
  min: TicksText | null;
  mean: number | null;
  p50: TicksText | null;
  p95: TicksText | null;
  p99: TicksText | null;
  max: TicksText | null;
}
export type TaskStats = { name: string; priority: number; load: number | null; jobs: number } & Record<
  Quantity,
  Summary
>;
export interface LaneStats {
  lane: string;
  file: string;
  ticksPerSecond: number | null;
  coverage: number;
  busy: number | null;
  tasks: TaskStats[];
}
export interface Stats {
  schema: number;
  lanes: LaneStats[];
}

// As `tasklog diff --format json`.
export interface Change {
  lane: string;
  task: string;
  quantity: Quantity;
  noise: boolean;
  before: Summary;
  after: Summary;
}
export interface OnOneSide {
  lane: string;
  task: string | null;
}
export interface Difference {
  schema: number;
  before: LaneStats[];
  after: LaneStats[];
  changes: Change[];
  loads: { lane: string; task: string; before: number | null; after: number | null }[];
  appeared: OnOneSide[];
  vanished: OnOneSide[];
  stalled: OnOneSide[];
}

// An entry as `tasklog list --format json` has it.
export interface Entry {
  ticks: TicksText;
  type: string;
  subject?: string | null;
  running?: string | null;
}

// As `tasklog explain --format json`.
export interface Occurrence {
  activationTicks: TicksText;
  completionTicks: TicksText;
}
export interface Finding {
  task: string | null;
  lane: string;
  verdict: string;
  job: Occurrence;
  excessTicks: TicksText;
  sign: string;
  issue: string | null;
  occurrences: Occurrence[];
  normalTicks: TicksText;
  actualTicks: TicksText;
  parts: { kind: string; task: string | null; normalTicks: TicksText; actualTicks: TicksText }[];
  chain: { kind: string; task: string | null; from: TicksText; to: TicksText; share: number }[];
  confidence: number;
  coverage: number;
}
export interface Findings {
  schema: number;
  lanes: { lane: string; jobs: number; findings: number }[];
  findings: Finding[];
}
