// The keys, one a line: what `?` lists is this table.
import type { Actions } from "../state/actions";

export interface KeyContext {
  actions: Actions;
  pointerShare(): number;
  height(): number;
  search(): void;
  toggleHelp(): void;
}
interface Key {
  keys: string[];
  shown: string;
  help: string;
  run(context: KeyContext): void;
}

const zoomStep = 0.75;
const panStep = 0.15;

export const keys: Key[] = [
  {
    keys: ["w", "+"],
    shown: "W",
    help: "zoom in around the pointer",
    run: c => c.actions.zoom(zoomStep, c.pointerShare()),
  },
  { keys: ["s", "-"], shown: "S", help: "zoom out", run: c => c.actions.zoom(1 / zoomStep, c.pointerShare()) },
  { keys: ["a", "arrowleft"], shown: "A or ←", help: "earlier", run: c => c.actions.pan(-panStep) },
  { keys: ["d", "arrowright"], shown: "D or →", help: "later", run: c => c.actions.pan(panStep) },
  { keys: ["arrowup"], shown: "↑", help: "rows up", run: c => c.actions.scroll(-66, c.height()) },
  { keys: ["arrowdown"], shown: "↓", help: "rows down", run: c => c.actions.scroll(66, c.height()) },
  { keys: ["x"], shown: "X", help: "select what is shown", run: c => c.actions.selectView() },
  { keys: ["f"], shown: "F", help: "fit the selection, or all", run: c => c.actions.fitSelection() },
  { keys: ["0", "home"], shown: "0", help: "show all", run: c => c.actions.showAll() },
  { keys: ["."], shown: ".", help: "next run of the task that was clicked", run: c => void c.actions.stepRun(true) },
  { keys: [","], shown: ",", help: "the run before", run: c => void c.actions.stepRun(false) },
  { keys: ["]"], shown: "]", help: "next timing issue", run: c => void c.actions.stepIssue(true) },
  { keys: ["["], shown: "[", help: "the timing issue before", run: c => void c.actions.stepIssue(false) },
  { keys: ["/"], shown: "/", help: "search tasks, testpoints and timing issues", run: c => c.search() },
  {
    keys: ["m"],
    shown: "M",
    help: "mark A at the pointer, then mark B, with their distance",
    run: c => c.actions.pin(c.pointerShare()),
  },
  { keys: ["escape"], shown: "Esc", help: "clear selection and marks", run: c => c.actions.clear() },
  { keys: ["?"], shown: "?", help: "list the keys", run: c => c.toggleHelp() },
];

export function listenToKeys(context: KeyContext): void {
  document.addEventListener("keydown", event => {
    const target = event.target as HTMLElement;
    if (event.ctrlKey || event.metaKey || event.altKey || target.matches("input, select, textarea")) return;
    if (target.matches("button, summary, [role=tab]") && event.key.startsWith("Arrow")) return;
    const key = keys.find(one => one.keys.includes(event.key.toLowerCase()));
    if (!key) return;
    event.preventDefault();
    key.run(context);
  });
}
