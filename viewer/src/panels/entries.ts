// The entries from where the view begins, as `tasklog list` has them.
import { element, table } from "./dom";
import type { Panel } from "./panel";

const count = 60;

interface Entry {
  ticks?: string;
  seconds?: string | number;
  type?: string;
  subject?: string;
  running?: string;
  [key: string]: unknown;
}

const text = (value: unknown): string =>
  value === null || value === undefined ? "" : typeof value === "object" ? JSON.stringify(value) : String(value);

export const entries: Panel = {
  name: "entries",
  title: "Entries",
  watches: ["view", "picked", "recording"],
  async show(place, { store, client }, isCurrent) {
    const { recording, group, picked, view } = store.now;
    const lane = picked?.lane ?? recording?.lanes.findIndex(one => one.group === group) ?? -1;
    const of = recording?.lanes[lane];
    if (!of) return place.append(element("p", { class: "hint" }, ["Open a recording first."]));
    const answer = (await client.call("entries", { lane, count, time: view.from })).json;
    if (!isCurrent()) return;
    const rows = answer.entries as Entry[];
    const keys = Object.keys(rows[0] ?? {}).filter(key => rows.some(row => text(row[key]) !== ""));
    place.append(
      table(
        `${of.name}: from ${answer.first} of ${answer.all}`,
        keys.map(key => ({ title: key, cell: (row: Entry) => text(row[key]) })),
        rows,
      ),
    );
  },
};
