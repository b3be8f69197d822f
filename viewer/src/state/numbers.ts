// What is computed of a recording, when somebody looks at it: statistics, findings, the pieces of a job.
import type { Client } from "../load/client";
import type { Description, Stats, Ticks } from "../worker/protocol";
import { beside, lanesOfGroup, type AppStore, type State } from "./state";

type StatsOf = Pick<State, "recording" | "selection" | "compared" | "group">;
const isSame = (a: StatsOf | null, b: StatsOf): boolean =>
  a !== null && (Object.keys(b) as (keyof StatsOf)[]).every(key => a[key] === b[key]);

export const findingsOfLane = 50;
const mostEntriesUnasked = 2_000_000;
const mostEntriesCopied = 10_000_000;

export class Numbers {
  private isAskingStats = false;
  private statsOf: StatsOf | null = null;
  private piecesAsked = 0;
  private lookingIn: Description | null = null;

  constructor(
    private readonly store: AppStore,
    private readonly client: Client,
  ) {
    store.watch(["recording", "selection", "compared", "group", "panel"], () => void this.updateStats());
    store.watch(["picked", "shownJob"], () => void this.updatePieces());
  }

  // In a copy of the recording. Unless `isWanted`, not in a long one; of a very long one there is no second, and no
  // picture comes meanwhile.
  async findWhatWasLate(isWanted: boolean): Promise<void> {
    const { recording } = this.store.now;
    const entries = recording?.lanes.reduce((sum, lane) => sum + lane.entries, 0) ?? 0;
    if (!recording || this.lookingIn === recording || (!isWanted && entries > mostEntriesUnasked)) return;
    this.lookingIn = recording;
    this.store.set({ isLooking: true });
    const keys = { limit: findingsOfLane };
    try {
      const found = await (entries > mostEntriesCopied
        ? this.client.call("explain", keys)
        : this.client.callAside("explain", keys));
      if (found && this.store.now.recording === recording) this.store.set({ findings: found.json });
    } finally {
      if (this.lookingIn === recording) {
        this.lookingIn = null;
        this.store.set({ isLooking: false });
      }
    }
  }
  // Only while they are shown, and at most once at a time: those of a long recording take a while.
  private async updateStats(): Promise<void> {
    while (!this.isAskingStats) {
      const { recording, selection, panel, compared, group } = this.store.now;
      if (!recording) return this.store.set({ stats: null });
      const wanted = { recording, selection, compared, group };
      if (panel !== "statistics" || isSame(this.statsOf, wanted)) return;
      this.statsOf = wanted;
      this.isAskingStats = true;
      const asked = this.statsKeys();
      const parts = await Promise.all(
        asked.map(async keys => (await this.client.call("stats", keys)).json.lanes),
      ).finally(() => (this.isAskingStats = false));
      const stats: Stats = { schema: 1, lanes: parts.flat() };
      this.store.set({ stats, statsLanes: asked.flatMap(keys => keys.lanes.map(Number)) });
    }
  }
  // What to ask for the numbers of the selection, or of all: a call for each picture.
  statsKeys(): { from?: Ticks; to?: Ticks; lanes: string[] }[] {
    const state = this.store.now;
    const { selection, compared, recording } = state;
    const group = recording?.groups[state.group];
    const lanesOf = (index: number): string[] => lanesOfGroup(state, index).map(String);
    const keys = { ...selection, lanes: lanesOf(state.group) };
    const other = compared && recording?.groups[compared.group];
    if (!compared || !other || !group) return [keys];
    const range = selection && {
      from: beside(selection.from, group, other),
      to: beside(selection.to, group, other),
    };
    return [keys, { ...range, lanes: lanesOf(compared.group) }];
  }
  private async updatePieces(): Promise<void> {
    const { picked, shownJob } = this.store.now;
    const asked = ++this.piecesAsked;
    const job = picked?.kind === "job" ? { ...picked, from: BigInt(picked.from), to: BigInt(picked.to) } : shownJob;
    if (!job || job.task === null) return this.store.set({ pieces: null });
    const { lane, task, from, to } = { ...job, task: job.task };
    const list = (await this.client.call("pieces", { lane, task, from, to })).json;
    if (asked === this.piecesAsked) this.store.set({ pieces: { lane, task, list } });
  }
}
