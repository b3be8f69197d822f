// The numbers of the selection, or of all: those of `tasklog stats`.
import { groupOf, labelOfName, type State } from "../state/state";
import { lengthText, percentText, timeText } from "../state/time";
import type { LaneStats, Quantity, TaskStats } from "../worker/protocol";
import { button, choice, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { table, type Column } from "./table";

export const quantities: [Quantity, string][] = [
  ["response", "Response time"],
  ["execution", "Execution time"],
  ["startLatency", "Start latency"],
  ["activationInterval", "Activation interval"],
  ["run", "Length of runs"],
];

function columns(lane: LaneStats, index: number, context: PanelContext): Column<TaskStats>[] {
  const { store, actions } = context;
  const { quantity } = store.now;
  const length = (ticks: string | number | null): string =>
    ticks === null ? "–" : lengthText(typeof ticks === "string" ? BigInt(ticks) : ticks, lane.ticksPerSecond);
  const of = (title: string, key: "min" | "mean" | "p50" | "p95" | "p99" | "max"): Column<TaskStats> => ({
    title,
    isNumber: true,
    cell: task => length(task[quantity][key]),
  });
  const tasks = store.now.recording?.lanes[index]?.tasks ?? [];
  const chart = (task: TaskStats): void => {
    actions.chart(
      index,
      tasks.findIndex(one => one.name === task.name),
    );
    actions.openPanel("histogram");
  };
  return [
    {
      title: "Task",
      cell: task =>
        button(labelOfName(store.now, index, task.name), () => chart(task), {
          class: "link",
          title: "Show how its values are spread",
        }),
    },
    { title: "Load", isNumber: true, cell: task => percentText(task.load) },
    { title: "Jobs", isNumber: true, cell: task => `${task.jobs}` },
    of("Min", "min"),
    of("Mean", "mean"),
    of("p50", "p50"),
    of("p95", "p95"),
    of("p99", "p99"),
    of("Max", "max"),
  ];
}

// One text for both pictures: their CSV has the same columns.
async function csvOfAll({ actions, client }: PanelContext): Promise<string> {
  const texts = await Promise.all(
    actions.numbers.statsKeys().map(keys => client.text("stats", { ...keys, format: "csv" })),
  );
  return texts.map((text, i) => (i === 0 ? text : text.slice(text.indexOf("\n") + 1))).join("");
}

export function rangeText(state: State): string {
  const group = groupOf(state);
  const { selection } = state;
  return selection && group
    ? `${timeText(selection.from, group)} to ${timeText(selection.to, group)}`
    : "All of the recording; drag over the picture, or press X, to select a part";
}

export const statistics: Panel = {
  name: "statistics",
  title: "Statistics",
  watches: ["stats", "selection", "quantity"],
  show(place, context) {
    const { stats, statsLanes, quantity, recording } = context.store.now;
    if (!stats || !groupOf(context.store.now)) return place.append(hint("Open a recording first."));
    place.append(
      element("p", { class: "range" }, [rangeText(context.store.now)]),
      choice("What the columns show", quantities, quantity, value => context.actions.setQuantity(value as Quantity)),
    );
    const exported = { name: "stats", text: () => csvOfAll(context) };
    stats.lanes.forEach((lane, i) => {
      const index = statsLanes[i] ?? i;
      const title = recording?.lanes[index]?.title ?? "";
      const caption = `${title}: busy ${percentText(lane.busy)}, coverage ${percentText(lane.coverage)}`;
      place.append(table(caption, columns(lane, index, context), lane.tasks, exported));
    });
  },
};
