// Tabs, and below them the panel that is open.
import { button, element } from "./dom";
import { details } from "./details";
import { entries } from "./entries";
import { findings } from "./findings";
import type { Panel, PanelContext } from "./panel";
import { statistics } from "./statistics";

const panels: Panel[] = [findings, statistics, details, entries];

export function makeSidebar(place: HTMLElement, context: PanelContext): void {
  const { store, actions } = context;
  const tabs = element("div", { role: "tablist", "aria-label": "Panels", class: "tabs" });
  const body = element("div", { role: "tabpanel", class: "panel", tabindex: "0", "aria-labelledby": "" });
  const buttons = panels.map(panel =>
    button(panel.title, () => actions.openPanel(panel.name), { role: "tab", id: `tab-${panel.name}` }),
  );
  tabs.append(...buttons);
  tabs.addEventListener("keydown", event => {
    const step = event.key === "ArrowRight" ? 1 : event.key === "ArrowLeft" ? panels.length - 1 : 0;
    const at = panels.findIndex(panel => panel.name === store.now.panel);
    if (step === 0) return;
    const next = (at + step) % panels.length;
    actions.openPanel(panels[next]!.name);
    buttons[next]!.focus();
  });
  place.append(tabs, body);
  let shown = 0;
  const refresh = (name: string): void => {
    const panel = panels.find(one => one.name === store.now.panel);
    if (!panel || panel.name !== name) return;
    const turn = ++shown;
    body.replaceChildren();
    body.setAttribute("aria-labelledby", `tab-${name}`);
    void panel.show(body, context, () => turn === shown);
  };
  store.watch(["panel"], () => {
    panels.forEach((panel, i) => {
      const isOpen = panel.name === store.now.panel;
      buttons[i]!.setAttribute("aria-selected", String(isOpen));
      buttons[i]!.tabIndex = isOpen ? 0 : -1;
    });
    refresh(store.now.panel);
  });
  for (const panel of panels) store.watch(panel.watches, () => refresh(panel.name));
}
