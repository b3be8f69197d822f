// How the values of a task are spread, as `tasklog stats` counts them; a bar shows where its values are.
import { groupOf, labelOf } from "../state/state";
import { lengthText, timeText } from "../state/time";
import type { Histogram, Place, Quantity, QuantityKeys } from "../worker/protocol";
import { csvOf } from "./csv";
import { button, choice, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { quantities, rangeText } from "./statistics";
import { table } from "./table";

const mostBins = 40;
const mostListed = 200;
const [width, height, floor] = [400, 150, 18]; // of the chart, the last for the texts below

function svg(tag: string, attributes: Record<string, string | number>, text = ""): SVGElement {
  const made = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, `${value}`);
  made.textContent = text;
  return made;
}

// Few values must be seen beside many: heights are by the square root. The table below has the numbers.
function chart(histogram: Histogram, rate: number | null, choose: (bin: number) => void): SVGElement {
  const made = svg("svg", { viewBox: `0 0 ${width} ${height}`, class: "chart", "aria-hidden": "true" });
  const most = Math.max(...histogram.bins.map(bin => bin.count));
  const step = width / histogram.bins.length;
  const length = (ticks: string): string => lengthText(BigInt(ticks), rate);
  histogram.bins.forEach((bin, i) => {
    const high = bin.count === 0 ? 0 : Math.max(Math.sqrt(bin.count / most) * (height - floor - 4), 2);
    const column = svg("g", { class: "column" });
    const title = `${length(bin.fromTicks)} to ${length(bin.toTicks)}: ${bin.count}`;
    column.append(
      svg("title", {}, title),
      svg("rect", { class: "back", x: i * step, y: 0, width: step, height: height - floor }),
      svg("rect", {
        class: "bar",
        x: i * step + 0.5,
        y: height - floor - high,
        width: Math.max(step - 1, 0.5),
        height: high,
        rx: 1.5,
      }),
    );
    if (bin.count > 0) column.addEventListener("click", () => choose(i));
    made.append(column);
  });
  const [first, last] = [histogram.bins[0]!, histogram.bins[histogram.bins.length - 1]!];
  made.append(
    svg("text", { x: 0, y: height - 4 }, length(first.fromTicks)),
    svg("text", { x: width, y: height - 4, "text-anchor": "end" }, length(last.toTicks)),
  );
  return made;
}

// Where the values of a bar are: marks in the picture and a list.
async function showPlaces(
  place: HTMLElement,
  keys: QuantityKeys,
  bin: Histogram["bins"][number],
  context: PanelContext,
) {
  const { store, actions, client } = context;
  const range = { least: BigInt(bin.fromTicks), most: BigInt(bin.toTicks) };
  const found = (await client.call("places", { ...keys, ...range })).json;
  const spans = found.places.map(place => ({ from: BigInt(place.from), to: BigInt(place.to) }));
  actions.pointAt(keys.lane, keys.task, spans);
  const group = groupOf(store.now);
  const rate = group?.ticksPerSecond ?? null;
  const time = (one: Place): string => (group ? timeText(BigInt(one.from), group) : one.from);
  const go = (one: Place): void => actions.showAround({ from: BigInt(one.from), to: BigInt(one.to) });
  const listed = found.places.slice(0, mostListed);
  const more = found.count > listed.length ? `, the first ${listed.length} listed` : "";
  store.set({ said: `${found.count} values from ${lengthText(range.least, rate)} to ${lengthText(range.most, rate)}` });
  place.replaceChildren(
    table<Place>(
      `${found.count} from ${lengthText(range.least, rate)} to ${lengthText(range.most, rate)}${more}`,
      [
        {
          title: "At",
          cell: one => button(time(one), () => go(one), { class: "link" }),
          csv: { title: "from_ticks", cell: one => one.from },
        },
        {
          title: "Value",
          isNumber: true,
          cell: one => lengthText(BigInt(one.ticks), rate),
          csv: { title: "ticks", cell: one => one.ticks },
        },
      ],
      listed,
      { name: "places" },
    ),
  );
}

function binTable(histogram: Histogram, rate: number | null, choose: (bin: number) => void): HTMLElement {
  const bins = histogram.bins.map((bin, i) => ({ ...bin, i })).filter(bin => bin.count > 0);
  const all = histogram.bins.map(bin => [bin.fromTicks, bin.toTicks, `${bin.count}`]);
  return table(
    histogram.logarithmic ? "Bins that grow, without the empty ones" : "Bins of one width, without the empty ones",
    [
      {
        title: "From",
        cell: bin => button(lengthText(BigInt(bin.fromTicks), rate), () => choose(bin.i), { class: "link" }),
      },
      {
        title: "To",
        isNumber: true,
        cell: bin => lengthText(BigInt(bin.toTicks), rate),
      },
      { title: "Count", isNumber: true, cell: bin => `${bin.count}` },
    ],
    bins,
    { name: "histogram", text: () => csvOf([["from_ticks", "to_ticks", "count"], ...all]) },
  );
}

function subject({ store }: PanelContext): { lane: number; task: number } | null {
  const { charted, picked, recording, group } = store.now;
  if (charted) return charted;
  if (picked && picked.task !== null) return { lane: picked.lane, task: picked.task };
  const lane = recording?.lanes.findIndex(lane => lane.group === group && lane.tasks.length > 0) ?? -1;
  return lane < 0 ? null : { lane, task: 0 };
}

function taskChoice(of: { lane: number; task: number }, { store, actions }: PanelContext): HTMLElement {
  const { recording } = store.now;
  const options = (recording?.lanes ?? []).flatMap((lane, i) =>
    lane.tasks.map((task, j): [string, string] => [
      `${i}:${j}`,
      recording!.lanes.length > 1 ? `${task.label} (${lane.title})` : task.label,
    ]),
  );
  return choice("Task", options, `${of.lane}:${of.task}`, value => {
    const [lane, task] = value.split(":").map(Number);
    actions.chart(lane!, task!);
  });
}

export const histogram: Panel = {
  name: "histogram",
  title: "Histogram",
  watches: ["recording", "charted", "quantity", "selection"],
  async show(place, context, isCurrent) {
    const { store, actions, client } = context;
    const of = subject(context);
    if (!of) return place.append(hint("Open a recording first."));
    const { quantity, selection } = store.now;
    place.append(
      element("p", { class: "range" }, [rangeText(store.now)]),
      element("div", { class: "choices" }, [
        taskChoice(of, context),
        choice("What is counted", quantities, quantity, value => actions.setQuantity(value as Quantity)),
      ]),
    );
    const keys: QuantityKeys = { ...of, quantity, ...selection };
    const answer = (await client.call("histogram", { ...keys, bins: mostBins })).json;
    if (!isCurrent()) return;
    const name = labelOf(store.now, of.lane, of.task);
    if (answer.bins.length === 0) return place.append(hint(`${name} has no whole value of this kind here.`));
    const rate = groupOf(store.now)?.ticksPerSecond ?? null;
    const places = element("div");
    const choose = (bin: number): void => void showPlaces(places, keys, answer.bins[bin]!, context);
    place.append(
      chart(answer, rate, choose),
      hint("Heights are by the square root of the counts. A bar, or a bin, shows where its values are."),
      places,
      binTable(answer, rate, choose),
    );
  },
};
