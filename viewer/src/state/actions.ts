// What can be done, by whatever key, button or pointer. Each changes the state; drawing and panels follow.
import type { Client } from "../load/client";
import type { Finding, Found, Hit, RowOrder, Ticks } from "../worker/protocol";
import { groupOf, labelOf, type AppStore, type TimeRange } from "./state";
import { clamped, lengthOf, lengthText, scaled, timeText } from "./time";

export class Actions {
  private rowsAsked = 0;
  private statsAsked = 0;

  constructor(
    private readonly store: AppStore,
    private readonly client: Client,
  ) {
    store.watch(
      ["recording", "group", "order", "hidesEmpty", "filter", "pins", "folded"],
      () => void this.updateRows(),
    );
    store.watch(["recording", "selection"], () => void this.updateStats());
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
    this.store.set({ group, selection: null, picked: null, shownJob: null, scrollTop: 0 });
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
  pick(hit: Hit | null): void {
    const isSpan = hit && (hit.kind === "run" || hit.kind === "job" || hit.kind === "wait");
    this.store.set({ picked: hit, ...(hit ? { said: hit.title } : {}), ...(isSpan ? { panel: "details" } : {}) });
  }
  clear(): void {
    this.store.set({ selection: null, picked: null, shownJob: null, hit: null });
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
  private arrive(found: Found, task: number | null): void {
    const row = this.store.now.rows.findIndex(row => row.lane === found.lane && row.task === task);
    const isMark = task === null;
    const title = isMark ? `timing issue ${labelOf(this.store.now, found.lane, found.subject)}` : "";
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

  showFinding(finding: Finding): void {
    const { recording } = this.store.now;
    const lane = recording?.lanes.findIndex(lane => lane.name === finding.lane) ?? -1;
    const of = recording?.lanes[lane];
    if (!of) return;
    if (of.group !== this.store.now.group) this.showGroup(of.group);
    const task = of.tasks.findIndex(task => task.name === finding.task);
    const job = { from: BigInt(finding.job.activationTicks), to: BigInt(finding.job.completionTicks) };
    this.store.set({ shownJob: { ...job, lane, task: task < 0 ? null : task }, said: finding.verdict });
    this.showAround(job);
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
  private async updateStats(): Promise<void> {
    const { recording, selection } = this.store.now;
    if (!recording) return this.store.set({ stats: null });
    const asked = ++this.statsAsked;
    const stats = (await this.client.call("stats", selection ?? {})).json;
    if (asked === this.statsAsked) this.store.set({ stats });
  }
}

function toggled(list: string[], item: string): string[] {
  return list.includes(item) ? list.filter(other => other !== item) : [...list, item];
}
