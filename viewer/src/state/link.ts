// The view in the address, so that a link to a moment can be sent: #from=...&to=... in ticks, and what differs from
// how a page begins.
import type { RowOrder } from "../worker/protocol";
import type { Actions } from "./actions";
import { groupOf, type AppStore, type State } from "./state";

const orders: readonly string[] = ["priority", "load", "name", "first"];
const isTicks = (text: string | null): text is string => text !== null && /^\d{1,20}$/.test(text);

export function hashOf(state: State): string {
  const group = groupOf(state);
  const keys = new URLSearchParams();
  if (group && (`${state.view.from}` !== group.from || `${state.view.to}` !== group.to)) {
    keys.set("from", `${state.view.from}`);
    keys.set("to", `${state.view.to}`);
  }
  if (state.group > 0) keys.set("group", `${state.group}`);
  if (state.order !== "priority") keys.set("sort", state.order);
  if (state.filter !== "") keys.set("filter", state.filter);
  if (!state.hidesEmpty) keys.set("empty", "shown");
  if (state.inTicks) keys.set("time", "ticks");
  return `${keys}`;
}

export class Link {
  private timer = 0;
  private written = "";

  constructor(
    private readonly store: AppStore,
    private readonly actions: Actions,
  ) {
    addEventListener("hashchange", () => {
      if (location.hash.slice(1) !== this.written) this.read();
    });
    store.watch(["view", "group", "order", "filter", "hidesEmpty", "inTicks"], () => this.writeSoon());
  }

  // What it does not say is as a page begins. Nonsense is passed over.
  read(): void {
    const { recording } = this.store.now;
    if (!recording) return;
    const keys = new URLSearchParams(location.hash.slice(1));
    const group = Number(keys.get("group") ?? 0);
    const sort = keys.get("sort") ?? "";
    if (group !== this.store.now.group && recording.groups[group]) this.actions.showGroup(group);
    this.store.set({
      order: (orders.includes(sort) ? sort : "priority") as RowOrder,
      filter: keys.get("filter") ?? "",
      hidesEmpty: keys.get("empty") !== "shown",
      inTicks: keys.get("time") === "ticks",
    });
    const [from, to] = [keys.get("from"), keys.get("to")];
    if (isTicks(from) && isTicks(to) && BigInt(from) < BigInt(to))
      this.actions.show({ from: BigInt(from), to: BigInt(to) });
  }

  // What is opened by hand has no link to it.
  forget(): void {
    this.written = "";
    if (location.hash !== "") history.replaceState(null, "", "#");
  }

  // Browsers refuse addresses that change with each frame.
  private writeSoon(): void {
    clearTimeout(this.timer);
    this.timer = window.setTimeout(() => {
      if (!this.store.now.recording) return;
      const hash = hashOf(this.store.now);
      if (hash === location.hash.slice(1)) return;
      this.written = hash;
      history.replaceState(null, "", `#${hash}`);
    }, 250);
  }
}
