// Tables with what copies and saves them as CSV.
import { copy, csvOf, save } from "./csv";
import { button, element, type Child } from "./dom";

export interface Column<Item> {
  title: string;
  isNumber?: boolean;
  cell(item: Item): Child;
  csv?: { title: string; cell(item: Item): string }; // where a program needs another text than a reader
}

// What becomes the CSV, and the name of its file.
export interface Export {
  name: string;
  text(): Promise<string> | string;
}

const say = (text: string): void => {
  const live = document.getElementById("live");
  if (live) live.textContent = text;
};

export function exportButtons(caption: string, { name, text }: Export): HTMLElement {
  const run = (use: (csv: string) => Promise<void> | void, done: string): void =>
    void Promise.resolve(text())
      .then(use)
      .then(
        () => say(done),
        (error: unknown) => say(error instanceof Error ? error.message : String(error)),
      );
  const label = (verb: string): Record<string, string> => ({ class: "small", "aria-label": `${verb}: ${caption}` });
  return element("span", { class: "exports" }, [
    button("Copy", () => run(copy, "Copied as CSV"), label("Copy as CSV")),
    button("Save", () => run(csv => save(csv, name), "Saved as CSV"), label("Save as CSV")),
  ]);
}

export function captionBar(caption: string, exported: Export): HTMLElement {
  return element("div", { class: "caption" }, [element("h2", {}, [caption]), exportButtons(caption, exported)]);
}

function textOf(child: Child): string {
  return typeof child === "string" ? child : (child.textContent ?? "");
}

export function table<Item>(
  caption: string,
  columns: Column<Item>[],
  items: Item[],
  exported: Partial<Export> = {},
): HTMLElement {
  const cell = (
    tag: "td" | "th",
    column: Column<Item>,
    child: Child,
    attributes: Record<string, string> = {},
  ): HTMLElement => element(tag, { ...attributes, ...(column.isNumber ? { class: "number" } : {}) }, [child]);
  const row = (make: (column: Column<Item>) => HTMLElement): HTMLElement => element("tr", {}, columns.map(make));
  const made = element("table", { "aria-label": caption }, [
    element("thead", {}, [row(column => cell("th", column, column.title, { scope: "col" }))]),
    element(
      "tbody",
      {},
      items.map(item => row(column => cell("td", column, column.cell(item)))),
    ),
  ]);
  const text = (): string =>
    csvOf([
      columns.map(column => column.csv?.title ?? column.title),
      ...items.map(item => columns.map(column => column.csv?.cell(item) ?? textOf(column.cell(item)))),
    ]);
  const wide = element("div", { class: "wide", tabindex: "0", role: "group", "aria-label": caption }, [made]);
  return element("section", { class: "table" }, [captionBar(caption, { name: "tasklog", text, ...exported }), wide]);
}
