// What was clicked: when, how long, who ran before and behind, the parts of a job, and the entries around it.
import { groupOf, labelOf, labelOfName } from "../state/state";
import { lengthText, timeText } from "../state/time";
import type { DetailsOfSpan, Entry, Hit, Neighbour, SpanKind } from "../worker/protocol";
import { button, element, hint } from "./dom";
import type { Panel, PanelContext } from "./panel";
import { table } from "./table";

const entriesBefore = 4;
const entriesShown = 14;

function neighbour(other: Neighbour | null, lane: number, context: PanelContext): Node | string {
  if (!other) return "nobody known";
  const name = labelOf(context.store.now, lane, other.task);
  const go = (): void => {
    const row = context.store.now.rows.findIndex(row => row.lane === lane && row.task === other.task);
    const hit: Hit = {
      kind: "run",
      row,
      lane,
      task: other.task,
      subject: null,
      index: other.index,
      count: 1,
      from: other.from,
      to: other.to,
      title: `${name} runs`,
    };
    context.actions.reveal({ from: BigInt(other.from), to: BigInt(other.to) });
    context.actions.pick(hit);
  };
  return button(name, go, { class: "link" });
}

function facts(hit: Hit, answer: DetailsOfSpan, context: PanelContext): HTMLElement {
  const list = element("dl", { class: "facts" });
  const add = (name: string, value: Node | string): void =>
    list.append(element("dt", {}, [name]), element("dd", {}, [value]));
  const group = groupOf(context.store.now);
  if (group) {
    add("Task", labelOf(context.store.now, hit.lane, hit.task!));
    add("From", timeText(BigInt(answer.from), group));
    add("To", timeText(BigInt(answer.to), group));
    add("Length", lengthText(BigInt(answer.to) - BigInt(answer.from), group.ticksPerSecond));
  }
  add("Before it ran", neighbour(answer.before, hit.lane, context));
  add("Behind it ran", neighbour(answer.behind, hit.lane, context));
  return list;
}

function fill(place: HTMLElement, hit: Hit, answer: DetailsOfSpan, context: PanelContext): void {
  place.append(element("h2", {}, [answer.title]), facts(hit, answer, context));
  if (answer.isCut) place.append(hint("It is cut by an end of the recording or by a gap."));
  if (!answer.parts) return;
  place.append(
    table(
      "Where its time went",
      [
        { title: "Part", cell: part => part.kind, csv: { title: "kind", cell: part => part.kind } },
        {
          title: "By",
          cell: part => (part.task === null ? "" : labelOf(context.store.now, hit.lane, part.task)),
        },
        {
          title: `Length (${answer.unit})`,
          isNumber: true,
          cell: part => part.length,
          csv: { title: "ticks", cell: part => part.ticks },
        },
      ],
      answer.parts,
      { name: "parts" },
    ),
  );
}

async function around(hit: Hit, { store, client }: PanelContext): Promise<HTMLElement> {
  const { lane } = hit;
  const { first } = (await client.call("entries", { lane, count: 0, time: BigInt(hit.from) })).json;
  const begin = Math.max(first - entriesBefore, 0);
  const { entries } = (await client.call("entries", { lane, count: entriesShown, first: begin })).json;
  const group = groupOf(store.now);
  const name = (of: (entry: Entry) => string | null | undefined) => (entry: Entry) =>
    labelOfName(store.now, lane, of(entry));
  const isWithin = (entry: Entry): boolean =>
    BigInt(entry.ticks) >= BigInt(hit.from) && BigInt(entry.ticks) <= BigInt(hit.to);
  const time = (entry: Entry): Node => {
    const text = group ? timeText(BigInt(entry.ticks), group) : entry.ticks;
    return element(isWithin(entry) ? "strong" : "span", {}, [text]);
  };
  return table(
    "Entries around it",
    [
      { title: "Time", cell: time, csv: { title: "ticks", cell: entry => entry.ticks } },
      { title: "Type", cell: entry => entry.type },
      { title: "Subject", cell: name(entry => entry.subject) },
      { title: "Ran", cell: name(entry => entry.running) },
    ],
    entries,
    { name: "entries" },
  );
}

export const details: Panel = {
  name: "details",
  title: "Details",
  watches: ["picked"],
  async show(place, context, isCurrent) {
    const hit = context.store.now.picked;
    if (!hit) return place.append(hint("Click a run, a job (the bracket below) or a mark."));
    const isSpan = hit.task !== null && ["run", "job", "wait"].includes(hit.kind);
    const entries = around(hit, context);
    if (isSpan) {
      const keys = { lane: hit.lane, task: hit.task!, kind: hit.kind as SpanKind, index: hit.index };
      const answer = (await context.client.call("details", keys)).json;
      if (isCurrent()) fill(place, hit, answer, context);
    } else place.append(element("h2", {}, [hit.title]));
    const shown = await entries;
    if (isCurrent()) place.append(shown);
  },
};
