// What can be done, by whatever key, button or pointer. Each changes the state; drawing and panels follow.
import type { Client } from "../load/client";
import type {
  Calls,
  Description,
  Finding,
  Found,
  Hit,
  Match,
  Quantity,
  Row,
  RowOrder,
  Ticks,
} from "../worker/protocol";
import { Numbers } from "./numbers";
import { groupOf, labelOf, type AppStore, type TimeRange } from "./state";
import { clamped, lengthOf, lengthText, scaled, timeText } from "./time";

export class Actions {
  private rowsAsked = 0;
  height: () => number = () => 600; // of the picture without its ruler, pixels
  readonly numbers: Numbers;

  constructor(
    private readonly store: AppStore,
    private readonly client: Client,
  ) {
    store.watch(
      ["recording", "group", "order", "hidesEmpty", "filter", "pins", "folded"],
      () => void this.updateRows(),
    );
    this.numbers = new Numbers(store, client);
  }

  // ---- The part that is shown ----

  show(range: TimeRange): void {
    const group = groupOf(this.store.now);
    if (group) this.store.set({ view: clamped(range, group) });
  }
  showAll(): void {
    const group = groupOf(this.store.now);
    if (group) this.show({ from: BigInt(group.from), to: BigInt(group.to) });
  }
  // `at` is a share of the width: what lies there stays there.
  zoom(factor: number, at: number): void {
    const { view } = this.store.now;
    const length = scaled(lengthOf(view), factor);
    const anchor = view.from + scaled(lengthOf(view), at);
    const from = anchor - scaled(length, at);
    this.show({ from, to: from + length });
  }
  // By a share of the width.
  pan(share: number): void {
    const { view } = this.store.now;
    const distance = scaled(lengthOf(view), share);
    this.show({ from: view.from + distance, to: view.to + distance });
  }
  // With as much again around it.
  showAround(range: TimeRange): void {
    const margin = lengthOf(range) > 0n ? lengthOf(range) : lengthOf(this.store.now.view) / 4n;
    this.show({ from: range.from - margin, to: range.to + margin });
  }
  // Keeps the zoom when there is room.
  reveal(range: TimeRange): void {
    const { view } = this.store.now;
    if (range.from >= view.from && range.to <= view.to) return;
    if (lengthOf(range) * 2n > lengthOf(view)) return this.showAround(range);
    const middle = (range.from + range.to) / 2n;
    this.show({ from: middle - lengthOf(view) / 2n, to: middle + lengthOf(view) / 2n });
  }
  fitSelection(): void {
    const { selection } = this.store.now;
    if (selection) this.show(selection);
    else this.showAll();
  }
  scroll(pixels: number, height: number): void {
    const { rows, scrollTop } = this.store.now;
    const last = rows[rows.length - 1];
    const most = Math.max(0, (last ? last.top + last.height : 0) - height);
    this.store.set({ scrollTop: Math.min(Math.max(scrollTop + pixels, 0), most) });
  }

  // ---- Rows ----

  setOrder(order: RowOrder): void {
    this.store.set({ order });
  }
  setFilter(filter: string): void {
    this.store.set({ filter, scrollTop: 0 });
  }
  setHidesEmpty(hidesEmpty: boolean): void {
    this.store.set({ hidesEmpty });
  }
  togglePin(lane: number, task: number): void {
    this.store.set({ pins: toggled(this.store.now.pins, `${lane}:${task}`) });
  }
  toggleFold(lane: number): void {
    this.store.set({ folded: toggled(this.store.now.folded, `${lane}`) });
  }
  showGroup(group: number): void {
    this.store.set({ group, selection: null, picked: null, shownJob: null, places: null, scrollTop: 0 });
    this.showAll();
  }

  // ---- Selection ----

  select(range: TimeRange | null): void {
    const ordered = range && range.from > range.to ? { from: range.to, to: range.from } : range;
    this.store.set({ selection: ordered, ...(ordered ? { panel: "statistics" } : {}) });
    const group = groupOf(this.store.now);
    if (ordered && group)
      this.store.set({
        said: `Selected ${lengthText(lengthOf(ordered), group.ticksPerSecond)} from ${timeText(ordered.from, group)}`,
      });
  }
  // For whoever has no pointer: all that is seen is selected.
  selectView(): void {
    this.select(this.store.now.view);
  }
  pick(hit: Hit | null): void {
    const isSpan = hit && (hit.kind === "run" || hit.kind === "job" || hit.kind === "wait");
    this.store.set({ picked: hit, ...(hit ? { said: hit.title } : {}), ...(isSpan ? { panel: "details" } : {}) });
  }
  clear(): void {
    this.store.set({ selection: null, picked: null, shownJob: null, places: null, hit: null, pinned: [] });
  }
  // Mark A, then B, then A anew. `at` is a share of the width.
  pin(at: number): void {
    const { view, pinned } = this.store.now;
    const group = groupOf(this.store.now);
    if (!group) return;
    const time = view.from + scaled(lengthOf(view), at);
    const next = pinned.length === 1 ? [...pinned, time] : [time];
    const [a, b] = next;
    const distance = b === undefined ? "" : `, ${lengthText(b > a! ? b - a! : a! - b, group.ticksPerSecond)} from A`;
    this.store.set({
      pinned: next,
      said: `Mark ${b === undefined ? "A" : "B"} at ${timeText(time, group)}${distance}`,
    });
  }
  setInTicks(inTicks: boolean): void {
    this.store.set({ inTicks });
  }
  openPanel(panel: string): void {
    this.store.set({ panel });
  }

  // ---- From one to the next ----

  async stepIssue(forward: boolean): Promise<void> {
    const { group, picked, view } = this.store.now;
    const at = picked?.kind === "issue" ? BigInt(picked.from) : (view.from + view.to) / 2n;
    const found = (await this.client.call("step", { group, kind: "issue", at, forward })).json;
    if (found) this.arrive(found, null);
    else this.store.set({ said: forward ? "There is no later timing issue" : "There is no earlier timing issue" });
  }
  // The next run of the task whose run or job is picked.
  async stepRun(forward: boolean): Promise<void> {
    const { group, picked } = this.store.now;
    if (!picked || picked.task === null)
      return this.store.set({ said: "Click a run first: then . and , go from run to run" });
    const kind = picked.kind === "job" ? "job" : "run";
    const keys = { group, kind, at: BigInt(picked.from), forward, lane: picked.lane, task: picked.task } as const;
    const found = (await this.client.call("step", keys)).json;
    if (found) this.arrive(found, picked.task);
  }
  // The next run of a task, or the next place of a testpoint or timing issue; behind the last comes the first.
  async goTo(match: Match, forward: boolean): Promise<void> {
    const of = this.store.now.recording?.lanes[match.lane];
    if (!of) return;
    if (of.group !== this.store.now.group) this.showGroup(of.group);
    const task = match.kind === "task" ? match.subject : null;
    await this.showRow(match.lane, task);
    const { picked, view, group } = this.store.now;
    const isSame = picked?.lane === match.lane && (task === null ? picked.subject : picked.task) === match.subject;
    const { from, to } = groupOf(this.store.now)!;
    const here = isSame ? BigInt(picked.from) : forward ? view.from : view.to;
    const subject = task === null ? { subject: match.subject } : { task };
    const keys = { group, kind: task === null ? match.kind : "run", forward, lane: match.lane, ...subject } as const;
    for (const at of [here, forward ? before(BigInt(from)) : BigInt(to) + 1n]) {
      const found = (await this.client.call("step", { ...keys, at } as Calls["step"]["keys"])).json;
      if (found) return this.arrive(found, task);
    }
    this.store.set({ said: `${match.name} occurs nowhere` });
  }
  private async showRow(lane: number, task: number | null): Promise<void> {
    const find = (): Row | undefined => this.store.now.rows.find(row => row.lane === lane && row.task === task);
    if (!find()) {
      const folded = this.store.now.folded.filter(one => one !== `${lane}`);
      this.store.set({ filter: "", folded, ...(task === null ? {} : { hidesEmpty: false }) });
      await this.updateRows();
    }
    const row = find();
    const { scrollTop } = this.store.now;
    const height = this.height();
    if (row && (row.top < scrollTop || row.top + row.height > scrollTop + height))
      this.scroll(row.top - height / 2 - scrollTop, height);
  }

  private arrive(found: Found, task: number | null): void {
    const row = this.store.now.rows.findIndex(row => row.lane === found.lane && row.task === task);
    const isMark = task === null;
    const kind = found.kind === "issue" ? "timing issue" : found.kind;
    const title = isMark ? `${kind} ${labelOf(this.store.now, found.lane, found.subject)}` : "";
    this.reveal({ from: BigInt(found.from), to: BigInt(found.to) });
    this.pick({
      ...found,
      kind: found.kind as Hit["kind"],
      row,
      task,
      subject: isMark ? found.subject : null,
      count: 1,
      title,
    });
  }

  // `job` is one of the finding's, the worst without it.
  showFinding(finding: Finding, lane: number, job = finding.job): void {
    const of = this.store.now.recording?.lanes[lane];
    if (!of) return;
    if (of.group !== this.store.now.group) this.showGroup(of.group);
    const task = of.tasks.findIndex(task => task.name === finding.task);
    const range = { from: BigInt(job.activationTicks), to: BigInt(job.completionTicks) };
    const shownJob = { ...range, lane, task: task < 0 ? null : task };
    this.store.set({ shownJob, picked: null, said: finding.verdict });
    this.showAround(range);
  }
  // The first run of a task that is seen, or the next behind.
  async pickInView(lane: number, task: number): Promise<void> {
    const { group, view } = this.store.now;
    const at = view.from > 0n ? view.from - 1n : 0n;
    const found = (await this.client.call("step", { group, kind: "run", at, forward: true, lane, task })).json;
    if (found) this.arrive(found, task);
    else this.store.set({ said: "It does not run behind that" });
  }

  // ---- Numbers ----

  setQuantity(quantity: Quantity): void {
    this.store.set({ quantity, places: null });
  }
  chart(lane: number, task: number): void {
    this.store.set({ charted: { lane, task }, places: null });
  }
  pointAt(lane: number, task: number | null, spans: TimeRange[]): void {
    this.store.set({ places: { lane, task, spans } });
  }

  // ---- Two recordings ----

  async compare(before: number, after: number): Promise<void> {
    const recording = (await this.client.call("group", { separately: true })).json;
    const groupOfArgument = (argument: number): number =>
      recording.lanes.find(lane => lane.argument === argument)?.group ?? -1;
    const [group, other] = [groupOfArgument(before), groupOfArgument(after)];
    if (group < 0 || other < 0)
      return this.store.set({ said: "One of these recordings could not be read", recording, compared: null });
    this.regroup(recording, group);
    this.store.set({ compared: { before, after, group: other }, panel: "compare" });
  }
  async stopComparing(): Promise<void> {
    const recording = (await this.client.call("group", { separately: false })).json;
    this.store.set({ compared: null });
    this.regroup(recording, 0);
  }
  private regroup(recording: Description, group: number): void {
    this.store.set({ recording, pins: [], folded: [] });
    this.showGroup(group);
  }

  // ---- What follows from changes ----

  private async updateRows(): Promise<void> {
    const state = this.store.now;
    const group = groupOf(state);
    if (!group) return this.store.set({ rows: [] });
    const asked = ++this.rowsAsked;
    const { order, hidesEmpty, filter, pins, folded } = state;
    const range: { from: Ticks; to: Ticks } = { from: BigInt(group.from), to: BigInt(group.to) };
    const rows = (
      await this.client.call("rows", { group: state.group, order, hidesEmpty, filter, pins, folded, ...range })
    ).json;
    if (asked === this.rowsAsked) this.store.set({ rows });
  }
}

const before = (ticks: Ticks): Ticks => (ticks > 0n ? ticks - 1n : 0n);

function toggled(list: string[], item: string): string[] {
  return list.includes(item) ? list.filter(other => other !== item) : [...list, item];
}
