// The line above the picture: what is open, the order and choice of rows, and the window.
import { groupOf } from "../state/state";
import { lengthOf, lengthText, timeText } from "../state/time";
import type { RowOrder } from "../worker/protocol";
import { button, element } from "./dom";
import type { PanelContext } from "./panel";

const orders: [RowOrder, string][] = [
  ["priority", "By priority"],
  ["load", "By load"],
  ["name", "By name"],
  ["first", "By first run"],
];

export function makeToolbar(
  place: HTMLElement,
  { store, actions }: PanelContext,
  openFiles: () => void,
  help: () => void,
  search: () => void,
): void {
  const title = element("h1", { class: "title" });
  const shown = element("span", { class: "faint shown" });
  const groups = element("select", { "aria-label": "Which lanes" });
  groups.addEventListener("change", () => actions.showGroup(Number(groups.value)));
  const order = element(
    "select",
    { "aria-label": "Order of rows" },
    orders.map(([value, text]) => element("option", { value }, [text])),
  );
  order.addEventListener("change", () => actions.setOrder(order.value as RowOrder));
  const filter = element("input", {
    type: "search",
    placeholder: "Filter tasks",
    "aria-label": "Filter tasks by name",
  });
  filter.addEventListener("input", () => actions.setFilter(filter.value));
  filter.addEventListener("keydown", event => {
    if (event.key === "Escape") filter.blur();
  });
  const empty = element("input", { type: "checkbox" });
  empty.addEventListener("change", () => actions.setHidesEmpty(!empty.checked));
  const unit = element("select", { "aria-label": "Unit of times" }, [
    element("option", { value: "seconds" }, ["Seconds"]),
    element("option", { value: "ticks" }, ["Ticks"]),
  ]);
  unit.addEventListener("change", () => actions.setInTicks(unit.value === "ticks"));
  store.watch(["order", "filter", "hidesEmpty", "inTicks"], () => {
    order.value = store.now.order;
    if (filter.value !== store.now.filter) filter.value = store.now.filter;
    empty.checked = !store.now.hidesEmpty;
    unit.value = store.now.inTicks ? "ticks" : "seconds";
  });
  place.append(
    title,
    groups,
    shown,
    element("span", { class: "spring" }),
    filter,
    order,
    unit,
    element("label", {}, [empty, " Empty rows"]),
    button("Search", search, { title: "Search tasks, testpoints and timing issues ( / )" }),
    button("All", () => actions.showAll(), { title: "Show all (0)" }),
    button("Open …", openFiles),
    button("?", help, { "aria-label": "Keys" }),
  );
  store.watch(["recording", "group"], () => {
    const { recording, group } = store.now;
    const lanes = recording?.lanes ?? [];
    title.textContent = lanes.length === 0 ? "tasklog" : lanes.length === 1 ? lanes[0]!.label : `${lanes.length} lanes`;
    groups.replaceChildren(
      ...(recording?.groups ?? []).map((_, i) =>
        element("option", { value: `${i}` }, [
          lanes
            .filter(lane => lane.group === i)
            .map(lane => lane.label)
            .join(", "),
        ]),
      ),
    );
    groups.value = `${group}`;
    groups.hidden = (recording?.groups.length ?? 0) < 2;
  });
  store.watch(["view", "recording", "group", "inTicks"], () => {
    const group = groupOf(store.now);
    const { view } = store.now;
    shown.textContent = group
      ? `${timeText(view.from, group)} to ${timeText(view.to, group)}, ${lengthText(lengthOf(view), group.ticksPerSecond)}`
      : "";
  });
}
