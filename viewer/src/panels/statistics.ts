// The numbers of the selection, or of all: those of `tasklog stats`.
import { groupOf } from "../state/state";
import { lengthText, percentText, timeText } from "../state/time";
import type { LaneStats, Quantity, TaskStats } from "../worker/protocol";
import { element, table, type Column } from "./dom";
import type { Panel } from "./panel";

const quantities: [Quantity, string][] = [
  ["response", "Response time"],
  ["execution", "Execution time"],
  ["startLatency", "Start latency"],
  ["activationInterval", "Activation interval"],
  ["run", "Length of runs"],
];
let quantity: Quantity = "response";

function columns(lane: LaneStats): Column<TaskStats>[] {
  const length = (ticks: string | number | null): string =>
    ticks === null ? "–" : lengthText(typeof ticks === "string" ? BigInt(ticks) : ticks, lane.ticksPerSecond);
  const of = (title: string, key: "min" | "mean" | "p50" | "p95" | "p99" | "max"): Column<TaskStats> => ({
    title,
    isNumber: true,
    cell: task => length(task[quantity][key]),
  });
  return [
    { title: "Task", cell: task => task.name },
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

export const statistics: Panel = {
  name: "statistics",
  title: "Statistics",
  watches: ["stats", "selection"],
  show(place, { store }) {
    const { stats, selection } = store.now;
    const group = groupOf(store.now);
    if (!stats || !group) return place.append(element("p", { class: "hint" }, ["Open a recording first."]));
    const range = selection
      ? `${timeText(selection.from, group)} to ${timeText(selection.to, group)}`
      : "All of the recording; drag over the picture to select a part";
    const choice = element(
      "select",
      { "aria-label": "What the columns show" },
      quantities.map(([name, title]) => element("option", { value: name }, [title])),
    );
    choice.value = quantity;
    const tables = element("div");
    const fill = (): void =>
      tables.replaceChildren(
        ...stats.lanes.map(lane =>
          table(
            `${lane.lane}: busy ${percentText(lane.busy)}, coverage ${percentText(lane.coverage)}`,
            columns(lane),
            lane.tasks,
          ),
        ),
      );
    choice.addEventListener("change", () => {
      quantity = choice.value as Quantity;
      fill();
    });
    fill();
    place.append(element("p", { class: "range" }, [range]), choice, tables);
  },
};
