// Tabs, and below them the panel that is open.
import { compare } from "./compare";
import { details } from "./details";
import { button, element, hint } from "./dom";
import { entries } from "./entries";
import { findings } from "./findings";
import { histogram } from "./histogram";
import type { Panel, PanelContext } from "./panel";
import { rowTable } from "./rowtable";
import { statistics } from "./statistics";

const panels: Panel[] = [findings, statistics, histogram, details, entries, rowTable, compare];

const focusable = (body: HTMLElement): HTMLElement[] => [
  ...body.querySelectorAll<HTMLElement>("button, select, summary, [tabindex]"),
];
const placeOfFocus = (body: HTMLElement): number => focusable(body).indexOf(document.activeElement as HTMLElement);

export function makeSidebar(place: HTMLElement, context: PanelContext): void {
  const { store, actions } = context;
  const tabs = element("div", { role: "tablist", "aria-label": "Panels", class: "tabs" });
  const body = element("div", { role: "tabpanel", id: "panel", class: "panel", tabindex: "0", "aria-labelledby": "" });
  const buttons = panels.map(panel =>
    button(panel.title, () => actions.openPanel(panel.name), {
      role: "tab",
      id: `tab-${panel.name}`,
      "aria-controls": "panel",
    }),
  );
  tabs.append(...buttons);
  tabs.addEventListener("keydown", event => {
    const at = panels.findIndex(panel => panel.name === store.now.panel);
    const places: Record<string, number> = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: -1 };
    const place = places[event.key];
    if (place === undefined) return;
    event.preventDefault();
    event.stopPropagation();
    const next = (place + panels.length) % panels.length;
    actions.openPanel(panels[next]!.name);
    buttons[next]!.focus();
  });
  place.append(tabs, body);
  let shown = 0;
  let busyWith = "";
  let isStale = false;
  const fill = async (panel: Panel): Promise<void> => {
    const turn = ++shown;
    const isKept = body.getAttribute("aria-labelledby") === `tab-${panel.name}`;
    const [place, top] = isKept ? [placeOfFocus(body), body.scrollTop] : [-1, 0];
    body.replaceChildren();
    body.setAttribute("aria-labelledby", `tab-${panel.name}`);
    try {
      await panel.show(body, context, () => turn === shown);
    } catch (error) {
      if (turn === shown) body.append(hint(error instanceof Error ? error.message : String(error)));
    }
    if (turn !== shown || !isKept) return;
    body.scrollTop = top;
    if (place >= 0) focusable(body)[place]?.focus({ preventScroll: true });
  };
  // What changes faster than a panel is made, as a selection does while it is drawn, is shown once at a time.
  const refresh = async (name: string): Promise<void> => {
    const panel = panels.find(one => one.name === store.now.panel);
    if (!panel || panel.name !== name) return;
    isStale = busyWith === name;
    if (isStale) return;
    busyWith = name;
    do {
      isStale = false;
      await fill(panel);
    } while (isStale && store.now.panel === name);
    if (busyWith === name) busyWith = "";
  };
  store.watch(["panel"], () => {
    panels.forEach((panel, i) => {
      const isOpen = panel.name === store.now.panel;
      buttons[i]!.setAttribute("aria-selected", String(isOpen));
      buttons[i]!.tabIndex = isOpen ? 0 : -1;
    });
    void refresh(store.now.panel);
  });
  for (const panel of panels) store.watch(panel.watches, () => void refresh(panel.name));
  for (const panel of panels) {
    const { follows, follow } = panel;
    if (follows && follow) store.watch(follows, () => store.now.panel === panel.name && follow(context));
  }
}
