// All that the page knows, in one place. Everybody reads it; only actions.ts and load/ change it.
import type { Description, Findings, GroupInfo, Hit, Row, RowOrder, Stats, Ticks } from "../worker/protocol";
import { Store } from "./store";

export interface TimeRange {
  from: Ticks;
  to: Ticks;
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
  pointer: { x: number; y: number } | null; // in the picture
  hit: Hit | null; // below the pointer
  stats: Stats | null; // of the selection, or of all
  findings: Findings | null;
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
    pointer: null,
    hit: null,
    stats: null,
    findings: null,
    panel: "findings",
    said: "",
  });
}

export function groupOf(state: State): GroupInfo | null {
  return state.recording?.groups[state.group] ?? null;
}

// Of a task, testpoint or timing issue.
export function labelOf(state: State, lane: number, subject: number): string {
  const of = state.recording?.lanes[lane];
  return of?.tasks[subject]?.label ?? of?.subjects[subject - of.tasks.length]?.label ?? "nobody known";
}
