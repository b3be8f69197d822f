// What `tasklog explain` finds; a click shows the moment, with the parts of the job marked.
import { findingsOfLane } from "../state/numbers";
import { clockOf, groupOf, labelOfName, lanesOfFindings, type State } from "../state/state";
import { lengthText, timeText } from "../state/time";
import type { Finding } from "../worker/protocol";
import { button, element, hint, swatch } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { table } from "./table";

function colourOf(state: State, lane: number, name: string | null): number | null {
  return state.recording?.lanes[lane]?.tasks.find(task => task.name === name)?.colour ?? null;
}

export function whenText(state: State, finding: Finding, lane: number): string {
  const clock = clockOf(state, lane);
  const times = finding.occurrences.length > 1 ? `${finding.occurrences.length} times, worst` : "once,";
  return clock ? `${times} at ${timeText(BigInt(finding.job.activationTicks), clock)}` : times;
}

export function partsTable(state: State, finding: Finding, lane: number): HTMLElement {
  const rate = groupOf(state)?.ticksPerSecond ?? null;
  type Part = Finding["parts"][number];
  const length = (ticks: string): string => lengthText(BigInt(ticks), rate);
  const ticks = (title: string, csv: string, of: (part: Part) => string) => ({
    title,
    isNumber: true,
    cell: (part: Part) => length(of(part)),
    csv: { title: csv, cell: of },
  });
  return table(
    "Parts of the job",
    [
      { title: "Part", cell: part => part.kind, csv: { title: "kind", cell: part => part.kind } },
      {
        title: "By",
        cell: part => (part.task === finding.task ? "" : labelOfName(state, lane, part.task)),
        csv: { title: "task", cell: part => labelOfName(state, lane, part.task) },
      },
      ticks("Usual", "normal_ticks", part => part.normalTicks),
      ticks("This time", "actual_ticks", part => part.actualTicks),
    ],
    finding.parts,
    { name: "parts" },
  );
}

// The other times that it happened.
function occurrences(finding: Finding, lane: number, { store, actions }: PanelContext): HTMLElement | string {
  const clock = clockOf(store.now, lane);
  if (finding.occurrences.length < 2 || !clock) return "";
  const links = finding.occurrences.map(job =>
    button(timeText(BigInt(job.activationTicks), clock), () => actions.showFinding(finding, lane, job), {
      class: "link",
    }),
  );
  return element("p", { class: "occurrences" }, ["At: ", ...links.flatMap((link, i) => (i ? [", ", link] : [link]))]);
}

// From the direct cause to the root, each where it shows.
function causes(finding: Finding, lane: number, { store, actions }: PanelContext): HTMLElement {
  const links = finding.chain.map(link => {
    const of = link.task === null ? "" : ` of ${labelOfName(store.now, lane, link.task)}`;
    const range = { from: BigInt(link.from), to: BigInt(link.to) };
    return button(`${link.kind}${of}`, () => actions.showAround(range), { class: "link" });
  });
  return element("p", { class: "occurrences" }, [
    "Causes: ",
    ...links.flatMap((link, i) => (i ? [", ", link] : [link])),
  ]);
}

function card(finding: Finding, lane: number, context: PanelContext): HTMLElement {
  const { store, actions } = context;
  const state = store.now;
  const head = button("", () => actions.showFinding(finding, lane), { class: "finding-show" });
  const colour = colourOf(state, lane, finding.task);
  head.append(
    element("span", { class: "finding-head" }, [
      ...(colour === null ? [] : [swatch(colour)]),
      element("strong", {}, [labelOfName(state, lane, finding.task) || state.recording!.lanes[lane]!.title]),
      element("span", { class: "faint" }, [state.recording!.lanes[lane]!.title]),
    ]),
    element("span", { class: "verdict" }, [finding.verdict]),
    element("span", { class: "faint" }, [whenText(state, finding, lane)]),
  );
  const more = element("details", {}, [element("summary", {}, ["Parts and times"])]);
  // Made when it is opened: a job may have as many parts as there are tasks.
  const fill = (): void => {
    if (finding.parts.length > 0) more.append(partsTable(state, finding, lane));
    more.append(causes(finding, lane, context), occurrences(finding, lane, context));
  };
  more.addEventListener("toggle", fill, { once: true });
  const { shownJob } = state;
  const isShown =
    shownJob?.lane === lane && finding.occurrences.some(job => BigInt(job.activationTicks) === shownJob.from);
  const article = element("article", { class: isShown ? "finding shown" : "finding" }, [head, more]);
  more.open = isShown && state.recording!.lanes[lane]!.tasks[shownJob.task ?? -1]?.name === finding.task;
  return article;
}

export const findings: Panel = {
  name: "findings",
  title: "Findings",
  watches: ["findings", "phase", "recording", "shownJob", "isLooking"],
  show(place, context) {
    const { findings, phase, recording, isLooking } = context.store.now;
    if (!recording || phase !== "ready") return place.append(hint("Open a recording first."));
    if (!findings && isLooking) return place.append(hint("Looking for what was late …"));
    if (!findings)
      return place.append(
        hint("This is a long recording: looking takes a while and much memory."),
        button("Look for what was late", () => void context.actions.numbers.findWhatWasLate(true)),
      );
    const lanes = lanesOfFindings(findings, findingsOfLane);
    const told = findings.findings.map((finding, i) => ({ finding, lane: lanes[i] ?? 0 }));
    place.append(
      element("div", { class: "caption" }, [
        element("h2", {}, [`${told.length === 1 ? "1 finding" : `${told.length} findings`}`]),
        button("Print", () => window.print(), { class: "small", title: "Print as a report" }),
      ]),
    );
    if (told.length === 0) place.append(hint("Nothing was late: no finding, by the same rules as the command."));
    const items = told.map(({ finding, lane }) => element("li", {}, [card(finding, lane, context)]));
    place.append(element("ol", { class: "findings" }, items));
  },
};
