// The run, job or wait that was clicked: when, how long, who ran before and behind, and the parts of a job.
import { labelOf } from "../state/state";
import type { DetailsOfSpan, Hit, Neighbour, SpanKind } from "../worker/protocol";
import { button, element, table } from "./dom";
import type { Panel, PanelContext } from "./panel";

function neighbour(text: string, other: Neighbour | null, lane: number, context: PanelContext): Node {
  if (!other) return element("p", { class: "faint" }, [`${text}: nobody known`]);
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
  return element("p", {}, [`${text}: `, button(name, go, { class: "link" })]);
}

function fill(place: HTMLElement, hit: Hit, answer: DetailsOfSpan, context: PanelContext): void {
  place.append(element("h3", {}, [answer.title]));
  if (answer.isCut)
    place.append(element("p", { class: "faint" }, ["It is cut by an end of the recording or by a gap."]));
  place.append(
    neighbour("Before it ran", answer.before, hit.lane, context),
    neighbour("Behind it ran", answer.behind, hit.lane, context),
  );
  if (!answer.parts) return;
  place.append(
    table(
      "Where its time went",
      [
        { title: "Part", cell: part => part.kind },
        { title: "By", cell: part => (part.task === null ? "" : labelOf(context.store.now, hit.lane, part.task)) },
        { title: `Length (${answer.unit})`, isNumber: true, cell: part => part.length },
      ],
      answer.parts,
    ),
  );
}

export const details: Panel = {
  name: "details",
  title: "Details",
  watches: ["picked"],
  async show(place, context, isCurrent) {
    const hit = context.store.now.picked;
    if (!hit)
      return place.append(element("p", { class: "hint" }, ["Click a run, a job (the bracket below) or a mark."]));
    const isSpan = hit.task !== null && ["run", "job", "wait"].includes(hit.kind);
    if (!isSpan) return place.append(element("h3", {}, [hit.title]));
    const keys = { lane: hit.lane, task: hit.task!, kind: hit.kind as SpanKind, index: hit.index };
    const answer = (await context.client.call("details", keys)).json;
    if (isCurrent()) fill(place, hit, answer, context);
  },
};
