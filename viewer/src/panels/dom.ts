// Elements by hand. Text goes in as text: nothing from a log becomes markup.
type Child = Node | string;

export function element<Tag extends keyof HTMLElementTagNameMap>(
  tag: Tag,
  attributes: Record<string, string> = {},
  children: Child[] = [],
): HTMLElementTagNameMap[Tag] {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  made.append(...children);
  return made;
}

export function button(text: string, act: () => void, attributes: Record<string, string> = {}): HTMLButtonElement {
  const made = element("button", { type: "button", ...attributes }, [text]);
  made.addEventListener("click", act);
  return made;
}

export function swatch(colour: number): HTMLElement {
  const made = element("span", { class: "swatch", "aria-hidden": "true" });
  made.style.backgroundColor = `#${colour.toString(16).padStart(6, "0")}`;
  return made;
}

export interface Column<Item> {
  title: string;
  isNumber?: boolean;
  cell(item: Item): Child;
}

export function table<Item>(caption: string, columns: Column<Item>[], items: Item[]): HTMLTableElement {
  const cell = (
    tag: "td" | "th",
    column: Column<Item>,
    child: Child,
    attributes: Record<string, string> = {},
  ): HTMLElement => element(tag, { ...attributes, ...(column.isNumber ? { class: "number" } : {}) }, [child]);
  return element("table", {}, [
    element("caption", {}, [caption]),
    element("thead", {}, [
      element(
        "tr",
        {},
        columns.map(column => cell("th", column, column.title, { scope: "col" })),
      ),
    ]),
    element(
      "tbody",
      {},
      items.map(item =>
        element(
          "tr",
          {},
          columns.map(column => cell("td", column, column.cell(item))),
        ),
      ),
    ),
  ]);
}
