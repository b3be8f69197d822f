// The picture as a table: its rows in their order, with what is seen of each. For the keyboard and for readers aloud.
import { groupOf, type State } from "../state/state";
import { lengthOf, lengthText, percentText, timeText } from "../state/time";
import type { VisibleRow } from "../worker/protocol";
import { button, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { table, type Column } from "./table";

const patience = 200; // ms without a move before the numbers follow

const nameOf = (state: State, row: VisibleRow): string => {
  const lane = state.recording?.lanes[row.lane];
  return (row.task === null ? lane?.title : lane?.tasks[row.task]?.label) ?? "";
};

function nameCell(row: VisibleRow, { store, actions }: PanelContext): HTMLElement {
  const name = nameOf(store.now, row);
  const { task, lane } = row;
  if (task === null) {
    const isOpen = !store.now.folded.includes(`${lane}`);
    const label = { class: "link", "aria-expanded": `${isOpen}`, title: "Hide or show its tasks" };
    return element("strong", {}, [button(name, () => actions.toggleFold(lane), label)]);
  }
  const isPinned = store.now.pins.includes(`${lane}:${task}`);
  const pin = { class: "link pin", "aria-pressed": `${isPinned}`, "aria-label": `Pin ${name}` };
  return element("span", {}, [
    button(isPinned ? "★" : "☆", () => actions.togglePin(lane, task), pin),
    button(name, () => void actions.pickInView(lane, task), { class: "link", title: "Go to its run in the picture" }),
  ]);
}

function columns(context: PanelContext): Column<VisibleRow>[] {
  const count = (title: string, of: (row: VisibleRow) => number | undefined): Column<VisibleRow> => ({
    title,
    isNumber: true,
    cell: row => `${of(row) ?? ""}`,
  });
  return [
    {
      title: "Row",
      cell: row => nameCell(row, context),
      csv: { title: "row", cell: row => nameOf(context.store.now, row) },
    },
    {
      title: "Load",
      isNumber: true,
      cell: row => percentText(row.load),
      csv: { title: "load", cell: row => `${row.load ?? ""}` },
    },
    count("Runs", row => row.runs),
    count("Jobs", row => row.jobs),
    count("Events", row => row.events),
    count("Points", row => row.testpoints),
    count("Issues", row => row.issues),
    count("Gaps", row => row.gaps),
  ];
}

const viewText = (state: State): string => {
  const group = groupOf(state);
  const { view } = state;
  return group ? `From ${timeText(view.from, group)}, ${lengthText(lengthOf(view), group.ticksPerSecond)}` : "";
};

let shown: { place: HTMLElement; timer: number } | null = null;

async function refresh(place: HTMLElement, context: PanelContext): Promise<void> {
  const { view } = context.store.now;
  const rows = (await context.client.call("visible", { from: view.from, to: view.to })).json;
  if (shown?.place !== place || !place.isConnected) return;
  const focused = [...place.querySelectorAll("button")].indexOf(document.activeElement as HTMLButtonElement);
  place.replaceChildren(
    element("p", { class: "range" }, [viewText(context.store.now)]),
    table("What the picture shows", columns(context), rows, { name: "rows" }),
  );
  if (focused >= 0) place.querySelectorAll("button")[focused]?.focus();
}

export const rowTable: Panel = {
  name: "rows",
  title: "Rows",
  watches: ["rows", "recording"],
  async show(place, context) {
    if (context.store.now.rows.length === 0) return place.append(hint("No row is shown."));
    const own = element("div");
    place.append(own);
    shown = { place: own, timer: 0 };
    await refresh(own, context);
  },
  follows: ["view"],
  follow(context) {
    if (!shown) return;
    clearTimeout(shown.timer);
    const { place } = shown;
    shown.timer = setTimeout(() => void refresh(place, context), patience);
  },
};
