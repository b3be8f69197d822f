// Elements by hand. Text goes in as text: nothing from a log becomes markup.
export type Child = Node | string;

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

export const hint = (text: string): HTMLElement => element("p", { class: "hint" }, [text]);

export function swatch(colour: number): HTMLElement {
  const made = element("span", { class: "swatch", "aria-hidden": "true" });
  made.style.backgroundColor = `#${colour.toString(16).padStart(6, "0")}`;
  return made;
}

export function choice(
  label: string,
  options: [value: string, text: string][],
  value: string,
  choose: (value: string) => void,
): HTMLSelectElement {
  const made = element(
    "select",
    { "aria-label": label },
    options.map(([value, text]) => element("option", { value }, [text])),
  );
  made.value = value;
  made.addEventListener("change", () => choose(made.value));
  return made;
}
