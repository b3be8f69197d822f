// The box of `/`: tasks, testpoints and timing issues by name, and from one place to the next.
import type { Match } from "../worker/protocol";
import { element } from "./dom";
import type { PanelContext } from "./panel";

const most = 40;
const kinds = { task: "task", testpoint: "testpoint", issue: "timing issue" } as const;

export function makeSearch(area: HTMLElement, { store, actions, client }: PanelContext): () => void {
  const input = element("input", {
    type: "search",
    role: "combobox",
    "aria-label": "Search tasks, testpoints and timing issues",
    "aria-controls": "search-matches",
    "aria-expanded": "false",
    "aria-autocomplete": "list",
    placeholder: "Task, testpoint or timing issue",
  });
  const list = element("ul", { id: "search-matches", role: "listbox", "aria-label": "Matches" });
  const box = element("div", { class: "search", role: "search", hidden: "" }, [input, list]);
  area.append(box);
  let matches: Match[] = [];
  let chosen = 0;
  let asked = 0;

  const close = (): void => {
    box.hidden = true;
    input.blur();
  };
  const choose = (index: number): void => {
    chosen = Math.min(Math.max(index, 0), matches.length - 1);
    [...list.children].forEach((item, i) => item.setAttribute("aria-selected", String(i === chosen)));
    list.children[chosen]?.scrollIntoView({ block: "nearest" });
    if (matches.length > 0) input.setAttribute("aria-activedescendant", `search-${chosen}`);
    else input.removeAttribute("aria-activedescendant");
  };
  const go = (forward: boolean): void => {
    const match = matches[chosen];
    if (match) void actions.goTo(match, forward);
  };
  const fill = (): void => {
    list.replaceChildren(
      ...matches.map((match, i) => {
        const lane = store.now.recording?.lanes[match.lane]?.label ?? "";
        const item = element("li", { role: "option", id: `search-${i}` }, [
          element("span", {}, [match.name]),
          element("span", { class: "faint" }, [`${kinds[match.kind]}, ${lane}`]),
        ]);
        item.addEventListener("pointerdown", event => event.preventDefault()); // the box keeps the focus
        item.addEventListener("click", () => {
          choose(i);
          go(true);
        });
        return item;
      }),
    );
    input.setAttribute("aria-expanded", String(matches.length > 0));
    choose(0);
  };
  input.addEventListener("input", () => {
    const turn = ++asked;
    const text = input.value;
    const found = text === "" ? Promise.resolve([]) : client.call("search", { text, limit: most }).then(it => it.json);
    void found.then(list => {
      if (turn !== asked) return;
      matches = list;
      fill();
    });
  });
  input.addEventListener("keydown", event => {
    if (event.key === "Escape") close();
    else if (event.key === "ArrowDown") choose(chosen + 1);
    else if (event.key === "ArrowUp") choose(chosen - 1);
    else if (event.key === "Enter") go(!event.shiftKey);
    else return;
    event.preventDefault();
    event.stopPropagation();
  });
  // It lies over the picture, which must not take its clicks.
  for (const name of ["pointerdown", "pointerup", "pointermove", "wheel", "dblclick"])
    box.addEventListener(name, event => event.stopPropagation());
  return () => {
    box.hidden = false;
    input.focus();
    input.select();
  };
}
