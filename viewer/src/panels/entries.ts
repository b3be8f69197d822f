// The entries, as `tasklog list` has them: any number, of which only those in sight exist as elements.
import { groupOf, labelOfName } from "../state/state";
import { timeText } from "../state/time";
import type { Entry } from "../worker/protocol";
import { button, choice, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { captionBar } from "./table";

const rowHeight = 24; // pixels; style.css has it, too
const mostHeight = 4_000_000; // browsers have no elements much higher than this
const spare = 8; // entries beyond what is seen

const titles = ["Time", "Type", "Subject", "Ran"];

class EntryList {
  readonly element = element("div", { class: "entries", tabindex: "0", role: "group", "aria-label": "Entries" });
  private readonly body = element("div", { role: "rowgroup" });
  private readonly grid: HTMLElement;
  private readonly spacer = element("div");
  private position = 0; // of the entry at the top; a fraction of it may be hidden
  private expectedTop = 0;
  private asked = 0;
  private all: number;
  private ignored: object | null = null; // the view that a click here made
  private current = ""; // ticks of the entry that was clicked

  constructor(
    private readonly context: PanelContext,
    readonly lane: number,
  ) {
    this.all = context.store.now.recording?.lanes[lane]?.entries ?? 0;
    const header = element(
      "div",
      { role: "row", class: "entry head", "aria-rowindex": "1" },
      titles.map(title => element("span", { role: "columnheader" }, [title])),
    );
    this.grid = element(
      "div",
      { role: "table", class: "grid", "aria-label": "Entries", "aria-rowcount": `${this.all + 1}` },
      [element("div", { role: "rowgroup" }, [header]), this.body],
    );
    this.spacer.style.height = `${Math.min((this.all + 2) * rowHeight, mostHeight)}px`;
    this.spacer.append(this.grid);
    this.element.append(this.spacer);
    this.element.addEventListener("scroll", () => this.scrolled());
    this.element.addEventListener("wheel", event => this.wheel(event), { passive: false });
    this.element.addEventListener("keydown", event => this.key(event));
    new ResizeObserver(() => void this.load()).observe(this.element);
  }

  // To the first entry of what the picture shows.
  async follow(): Promise<void> {
    const { view } = this.context.store.now;
    if (view === this.ignored) return void this.load();
    const asked = ++this.asked;
    const { first } = (await this.context.client.call("entries", { lane: this.lane, count: 0, time: view.from })).json;
    if (asked === this.asked) this.moveTo(first);
  }

  private get visible(): number {
    return Math.max(this.element.clientHeight / rowHeight - 1, 1);
  }
  private get last(): number {
    return Math.max(this.all - Math.floor(this.visible), 0);
  }
  // Pixels of the scroll bar for one entry: fewer than a row is high where there are very many.
  private get scale(): number {
    return this.last === 0 ? rowHeight : (this.spacer.offsetHeight - this.element.clientHeight) / this.last;
  }

  private moveTo(position: number): void {
    this.position = Math.min(Math.max(position, 0), this.last);
    this.element.scrollTop = this.position * this.scale;
    this.expectedTop = this.element.scrollTop;
    void this.load();
  }
  private scrolled(): void {
    if (Math.abs(this.element.scrollTop - this.expectedTop) < 1) return;
    this.expectedTop = this.element.scrollTop;
    this.position = Math.min(this.element.scrollTop / this.scale, this.last);
    void this.load();
  }
  // By rows, whatever the scroll bar's scale is.
  private wheel(event: WheelEvent): void {
    if (event.ctrlKey || event.deltaY === 0) return;
    event.preventDefault();
    this.moveTo(this.position + (event.deltaMode === 1 ? event.deltaY : event.deltaY / rowHeight));
  }
  private key(event: KeyboardEvent): void {
    const page = Math.floor(this.visible);
    const steps: Record<string, number> = {
      ArrowDown: 1,
      ArrowUp: -1,
      PageDown: page,
      PageUp: -page,
      Home: -this.all,
      End: this.all,
    };
    const step = steps[event.key];
    if (step === undefined) return;
    event.preventDefault();
    event.stopPropagation();
    this.moveTo(Math.round(this.position) + step);
  }

  private async load(): Promise<void> {
    const asked = ++this.asked;
    const first = Math.floor(this.position);
    const count = Math.ceil(this.visible) + spare;
    const { entries } = (await this.context.client.call("entries", { lane: this.lane, count, first })).json;
    if (asked !== this.asked || !this.element.isConnected) return;
    this.body.replaceChildren(...entries.map((entry, i) => this.row(entry, first + i)));
  }

  private row(entry: Entry, index: number): HTMLElement {
    const { store } = this.context;
    const group = groupOf(store.now);
    const ticks = BigInt(entry.ticks);
    const { view } = store.now;
    const go = (): void => this.choose(ticks);
    const time = button(group ? timeText(ticks, group) : entry.ticks, go, { class: "link" });
    const isSeen = ticks >= view.from && ticks <= view.to;
    const state = entry.ticks === this.current ? " current" : isSeen ? "" : " outside";
    const cells = [time, entry.type, ...[entry.subject, entry.running].map(n => labelOfName(store.now, this.lane, n))];
    return element(
      "div",
      { role: "row", class: `entry ${entry.type}${state}`, "aria-rowindex": `${index + 2}` },
      cells.map(cell => element("span", { role: "cell" }, [cell])),
    );
  }

  private choose(ticks: bigint): void {
    const { actions, store } = this.context;
    const isKept = document.activeElement?.closest(".entry")?.getAttribute("aria-rowindex");
    this.current = `${ticks}`;
    actions.reveal({ from: ticks, to: ticks });
    actions.pointAt(this.lane, null, [{ from: ticks, to: ticks }]);
    this.ignored = store.now.view;
    void this.load().then(() => {
      if (isKept) this.body.querySelector<HTMLElement>(`[aria-rowindex="${isKept}"] button`)?.focus();
    });
  }
}

let list: EntryList | null = null;

export const entries: Panel = {
  name: "entries",
  title: "Entries",
  watches: ["recording", "group"],
  show(place, context) {
    const { recording, group, picked } = context.store.now;
    const lanes = (recording?.lanes ?? []).map((lane, i) => ({ lane, i })).filter(({ lane }) => lane.group === group);
    const shown = lanes.find(({ i }) => i === (picked?.lane ?? list?.lane)) ?? lanes[0];
    if (!shown) return place.append(hint("Open a recording first."));
    const fill = (lane: number): void => {
      list = new EntryList(context, lane);
      const count = recording!.lanes[lane]!.entries;
      const exported = {
        name: "entries",
        text: () => {
          const { from, to } = context.store.now.view;
          return context.client.text("entriesCsv", { lane, from, to });
        },
      };
      const options = lanes.map(({ lane, i }): [string, string] => [`${i}`, lane.title]);
      place.replaceChildren(
        ...(lanes.length > 1 ? [choice("Lane", options, `${lane}`, value => fill(Number(value)))] : []),
        captionBar(`${count.toLocaleString("en")} entries; the CSV has those in the picture`, exported),
        list.element,
      );
      void list.follow();
    };
    fill(shown.i);
  },
  follows: ["view"],
  follow: () => void list?.follow(),
};
