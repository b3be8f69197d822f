// Two recordings side by side, and what `tasklog diff` says of them.
import { ofChooser } from "../load/chosen";
import { groupOf, labelOfName, type Compared } from "../state/state";
import { lengthText, percentText } from "../state/time";
import type { Change, Difference, OnOneSide } from "../worker/protocol";
import { button, choice, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { quantities } from "./statistics";
import { table, type Column } from "./table";

// Names in the answer are those of JSON; either recording may know them.
function safeName({ store }: PanelContext, name: string | null): string {
  const lanes = store.now.recording?.lanes ?? [];
  for (let i = 0; i < lanes.length; ++i) {
    const label = labelOfName(store.now, i, name);
    if (label !== "") return label;
  }
  return lanes.find(lane => lane.name === name)?.title ?? "";
}

const rise = (before: string | null, after: string | null): string => {
  if (before === null || after === null || before === "0") return "–";
  const share = Number(after) / Number(before) - 1;
  return `${share >= 0 ? "+" : ""}${(share * 100).toFixed(1)} %`;
};

function changeColumns(context: PanelContext): Column<Change>[] {
  const rate = groupOf(context.store.now)?.ticksPerSecond ?? null;
  const length = (ticks: string | null): string => (ticks === null ? "–" : lengthText(BigInt(ticks), rate));
  const pair = (title: string, key: "p50" | "p99" | "max"): Column<Change>[] => [
    { title: `${title} before`, isNumber: true, cell: change => length(change.before[key]) },
    { title: "after", isNumber: true, cell: change => length(change.after[key]) },
    { title: "change", isNumber: true, cell: change => rise(change.before[key], change.after[key]) },
  ];
  return [
    { title: "Task", cell: change => safeName(context, change.task) },
    { title: "Of", cell: change => quantities.find(([name]) => name === change.quantity)?.[1] ?? change.quantity },
    { title: "Chance", cell: change => (change.noise ? "noise" : "") },
    ...pair("p50", "p50"),
    ...pair("Max", "max"),
    ...pair("p99", "p99"),
  ];
}

function onOneSide(text: string, list: OnOneSide[], context: PanelContext): HTMLElement[] {
  if (list.length === 0) return [];
  const names = list.map(one => safeName(context, one.task ?? one.lane)).join(", ");
  return [element("p", {}, [`${text}: ${names}`])];
}

function difference(answer: Difference, compared: Compared, context: PanelContext): HTMLElement[] {
  const { before, after } = compared;
  const exported = { name: "diff", text: () => context.client.text("diff", { before, after, format: "csv" }) };
  return [
    ...onOneSide("Only before", answer.vanished, context),
    ...onOneSide("Only after", answer.appeared, context),
    ...onOneSide("Completes no job any more", answer.stalled, context),
    table("What moved, the most in front", changeColumns(context), answer.changes, exported),
    table(
      "Load",
      [
        { title: "Task", cell: load => safeName(context, load.task) },
        { title: "Before", isNumber: true, cell: load => percentText(load.before) },
        { title: "After", isNumber: true, cell: load => percentText(load.after) },
      ],
      answer.loads,
      exported,
    ),
  ];
}

function chooseSides(place: HTMLElement, context: PanelContext): void {
  const { recording } = context.store.now;
  const names = recording!.arguments;
  const options = names.map((name, i): [string, string] => [`${i}`, name]);
  let [before, after] = [0, names.length - 1];
  place.append(
    element("div", { class: "choices" }, [
      choice("Before", options, `${before}`, value => (before = Number(value))),
      choice("After", options, `${after}`, value => (after = Number(value))),
      button("Side by side", () => void context.actions.compare(before, after)),
    ]),
  );
}

function addButtons(context: PanelContext): HTMLElement {
  const add = (isFolder: boolean): void => {
    const input = element("input", { type: "file", multiple: "", ...(isFolder ? { webkitdirectory: "" } : {}) });
    input.addEventListener("change", () => input.files?.length && void context.add(ofChooser(input.files)));
    input.click();
  };
  return element("p", { class: "choices" }, [
    button("Add files …", () => add(false)),
    button("Add a folder …", () => add(true)),
  ]);
}

export const compare: Panel = {
  name: "compare",
  title: "Compare",
  watches: ["recording", "compared"],
  async show(place, context, isCurrent) {
    const { recording, compared } = context.store.now;
    if (!recording || recording.lanes.length === 0) return place.append(hint("Open a recording first."));
    if (!compared) {
      place.append(
        hint("Two recordings are shown one above the other, from their starts, with what moved between them."),
      );
      if (recording.arguments.length > 1) chooseSides(place, context);
      return place.append(addButtons(context));
    }
    const names = [compared.before, compared.after].map(i => recording.arguments[i] ?? "");
    place.append(
      element("p", { class: "range" }, [`Above, before: ${names[0]}. Below, after: ${names[1]}.`]),
      button("One recording", () => void context.actions.stopComparing()),
    );
    const shown = await context.client
      .call("diff", { before: compared.before, after: compared.after })
      .then(({ json }) => difference(json, compared, context))
      .catch((error: unknown) => [hint(error instanceof Error ? error.message : String(error))]);
    if (isCurrent()) place.append(...shown);
  },
};
