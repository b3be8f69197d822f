// The second picture: another recording below the first, at the same distance from its start.
import { Scene } from "./draw/scene";
import { Pointer } from "./input/pointer";
import type { Client } from "./load/client";
import { element } from "./panels/dom";
import { makeNotes } from "./panels/notes";
import { Actions } from "./state/actions";
import { beside, makeStore, type AppStore, type TimeRange } from "./state/state";
import type { CallName, Calls } from "./worker/protocol";

// The same worker, whose rows of the second picture are apart. Statistics are asked for by the first picture alone.
function secondClient(client: Client): Client {
  const second = Object.create(client) as Client;
  second.call = async <Name extends CallName>(name: Name, keys: Calls[Name]["keys"], room?: ArrayBuffer) => {
    if (name !== "stats") return client.call(name, { ...keys, pane: 1 }, room);
    const nothing = { schema: 1, lanes: [] } as unknown as Calls[Name]["answer"];
    const none = { ints: new Int32Array(), floats: new Float32Array(), pixels: new Uint8ClampedArray() };
    return { json: nothing, text: "", ...none };
  };
  return second;
}

// A range that one store holds, kept the same in the other. What was set here is not taken for a user's choice.
class Mirror {
  private made: TimeRange | null = null;

  constructor(
    private readonly from: () => TimeRange | null,
    private readonly set: (range: TimeRange | null) => TimeRange | null,
  ) {}

  carry(): void {
    const range = this.from();
    if (range !== this.made) this.set(range);
  }
  // What the other direction made.
  note(range: TimeRange | null): TimeRange | null {
    return (this.made = range);
  }
}

export function makeSecondPane(area: HTMLElement, store: AppStore, actions: Actions, client: Client): AppStore {
  const titles = [element("span", { class: "pane-title" }), element("span", { class: "pane-title" })];
  const [lower, upper] = [element("canvas"), element("canvas")];
  area.append(lower, upper, titles[1]!);
  document.getElementById("area")?.append(titles[0]!);
  const second = makeStore();
  const own = secondClient(client);
  const ownActions = new Actions(second, own);
  const scene = new Scene(second, own, area, lower, upper);
  new Pointer(area, scene, second, ownActions, own);
  makeNotes(area, scene, second);

  const translated = (range: TimeRange | null, isDown: boolean): TimeRange | null => {
    const [first, other] = [store.now, second.now].map(state => state.recording?.groups[state.group]);
    if (!range || !first || !other) return null;
    const [from, to] = isDown ? [first, other] : [other, first];
    return { from: beside(range.from, from, to), to: beside(range.to, from, to) };
  };
  const viewUp = new Mirror(
    () => second.now.view,
    range => {
      const view = translated(range, false);
      if (view) actions.show(view);
      return view;
    },
  );
  const selectionUp = new Mirror(
    () => second.now.selection,
    range => {
      const selection = translated(range, false);
      actions.select(selection);
      return selection;
    },
  );

  const isOn = (): boolean => store.now.compared !== null;
  store.watch(["compared", "recording"], () => {
    const { compared, recording } = store.now;
    area.hidden = !compared;
    titles.forEach((title, i) => {
      const argument = compared && (i === 0 ? compared.before : compared.after);
      title.textContent = argument === null ? "" : (recording?.arguments[argument] ?? "");
    });
    second.set({ recording: compared ? recording : null, group: compared?.group ?? 0, phase: "ready" });
  });
  store.watch(["view", "compared", "recording"], () => {
    const view = isOn() ? viewUp.note(translated(store.now.view, true)) : null;
    if (view) second.set({ view });
  });
  store.watch(["selection", "compared"], () => {
    if (isOn()) second.set({ selection: selectionUp.note(translated(store.now.selection, true)) });
  });
  store.watch(["order", "filter", "hidesEmpty"], () => {
    const { order, filter, hidesEmpty } = store.now;
    second.set({ order, filter, hidesEmpty });
  });
  store.watch(["shownJob", "pieces", "places"], () => {
    const { shownJob, pieces, places } = store.now;
    second.set({ shownJob, pieces, places });
  });
  second.watch(["view"], () => isOn() && viewUp.carry());
  second.watch(["selection"], () => isOn() && selectionUp.carry());
  // Panels show what was clicked in either picture; the row is of this one.
  second.watch(["picked"], () => {
    if (isOn() && second.now.picked)
      store.set({ picked: { ...second.now.picked, row: -1 }, panel: "details", said: second.now.picked.title });
  });
  return second;
}
