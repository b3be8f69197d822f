// All that the page knows, in one place. Everybody reads it; only actions.ts and load/ change it.
import type {
  Description,
  Findings,
  GroupInfo,
  Hit,
  LaneInfo,
  Piece,
  Quantity,
  Row,
  RowOrder,
  Stats,
  Ticks,
} from "../worker/protocol";
import { Store } from "./store";

export interface TimeRange {
  from: Ticks;
  to: Ticks;
}

// Numbers of arguments, and of the group that the second picture shows.
export interface Compared {
  before: number;
  after: number;
  group: number;
}

export interface State {
  phase: "empty" | "loading" | "ready";
  problems: string[]; // what could not be read, in the words of the command
  recording: Description | null;
  group: number; // of lanes on one time axis: the one that is shown
  view: TimeRange; // never empty
  scrollTop: number; // of the rows, pixels
  order: RowOrder;
  hidesEmpty: boolean;
  filter: string;
  pins: string[]; // "lane:task"
  folded: string[]; // lanes without their tasks
  rows: Row[];
  selection: TimeRange | null;
  picked: Hit | null; // the run, job or mark that was clicked
  shownJob: (TimeRange & { lane: number; task: number | null }) | null; // that of a finding
  pieces: { lane: number; task: number; list: Piece[] } | null; // the parts of that job, or of the job that was clicked
  places: { lane: number; task: number | null; spans: TimeRange[] } | null; // what a list or a histogram points at
  quantity: Quantity; // of which statistics and histogram tell
  charted: { lane: number; task: number } | null; // the task of the histogram
  compared: Compared | null; // two recordings side by side
  pointer: { x: number; y: number } | null; // in the picture
  hit: Hit | null; // below the pointer
  stats: Stats | null; // of the selection, or of all
  statsLanes: number[]; // the lanes in them
  findings: Findings | null;
  isLooking: boolean; // for findings
  pinned: Ticks[]; // marks A and B
  inTicks: boolean; // times, not in seconds
  panel: string; // the name of the panel that is open
  said: string; // for the live region
}

export type AppStore = Store<State>;

export function makeStore(): AppStore {
  return new Store<State>({
    phase: "empty",
    problems: [],
    recording: null,
    group: 0,
    view: { from: 0n, to: 1n },
    scrollTop: 0,
    order: "priority",
    hidesEmpty: true,
    filter: "",
    pins: [],
    folded: [],
    rows: [],
    selection: null,
    picked: null,
    shownJob: null,
    pieces: null,
    places: null,
    quantity: "response",
    charted: null,
    compared: null,
    pointer: null,
    hit: null,
    stats: null,
    statsLanes: [],
    findings: null,
    isLooking: false,
    pinned: [],
    inTicks: false,
    panel: "findings",
    said: "",
  });
}

// Without a rate where times are ticks.
export function groupOf(state: State): GroupInfo | null {
  const group = state.recording?.groups[state.group] ?? null;
  return group && state.inTicks ? { ...group, ticksPerSecond: 0 } : group;
}

// Seconds as the command counts them, which are those of one log: from its own start.
export function clockOf(state: State, lane: number): GroupInfo | null {
  const of = state.recording?.lanes[lane];
  const group = of && groupOf({ ...state, group: of.group });
  return group ? { ...group, origin: of.startTicks } : null;
}

// Of a task, testpoint or timing issue.
export function labelOf(state: State, lane: number, subject: number): string {
  const of = state.recording?.lanes[lane];
  return of?.tasks[subject]?.label ?? of?.subjects[subject - of.tasks.length]?.label ?? "nobody known";
}

// Of two of one name the first counts.
const labels = new WeakMap<LaneInfo, Map<string, string>>();
function labelsOf(lane: LaneInfo): Map<string, string> {
  let made = labels.get(lane);
  if (made) return made;
  made = new Map([...lane.tasks, ...lane.subjects].reverse().map(({ name, label }) => [name, label]));
  labels.set(lane, made);
  return made;
}

// As the command shows a name out of its JSON.
export function labelOfName(state: State, lane: number, name: string | null | undefined): string {
  const of = state.recording?.lanes[lane];
  return (of && labelsOf(of).get(name ?? "")) ?? "";
}

export function lanesOfGroup(state: State, group: number): number[] {
  return (state.recording?.lanes ?? []).flatMap((lane, i) => (lane.group === group ? [i] : []));
}

// Findings come lane by lane, and names of lanes may be equal.
export function lanesOfFindings(findings: Findings, limit: number): number[] {
  return findings.lanes.flatMap((lane, i) => Array<number>(Math.min(lane.findings, limit)).fill(i));
}

// A time of the picture above as one of the picture below: as far from where its recording starts.
export function beside(ticks: Ticks, from: GroupInfo, to: GroupInfo): Ticks {
  const distance = ticks - BigInt(from.from);
  const [rate, other] = [BigInt(from.ticksPerSecond || 1), BigInt(to.ticksPerSecond || 1)];
  return BigInt(to.from) + (rate === other ? distance : (distance * other) / rate);
}
