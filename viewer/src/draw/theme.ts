// Colours of the canvases, light and dark, and their fonts. style.css has those of the rest.
export interface Theme {
  paper: string;
  ink: string;
  faint: string;
  line: string;
  laneLine: string;
  laneBand: string;
  idle: string;
  issue: string;
  mark: string;
  selection: string;
  selectionEdge: string;
  hatch: string;
  hatchPaper: string;
  lost: string;
}
const light: Theme = {
  paper: "#ffffff",
  ink: "#1b1f24",
  faint: "#667080",
  line: "#eef1f4",
  laneLine: "#b9c1cb",
  laneBand: "#f6f8fa",
  idle: "#e3e6ea",
  issue: "#d01c1f",
  mark: "#3f4853",
  selection: "rgba(36, 104, 190, 0.12)",
  selectionEdge: "#2468be",
  hatch: "rgba(155, 44, 44, 0.45)",
  hatchPaper: "rgba(255, 240, 238, 0.92)",
  lost: "#9b2c2c",
};
const dark: Theme = {
  paper: "#14171b",
  ink: "#e6e9ee",
  faint: "#98a2b0",
  line: "#20252b",
  laneLine: "#46505c",
  laneBand: "#1a1e24",
  idle: "#2c323a",
  issue: "#ff6b66",
  mark: "#c3cad4",
  selection: "rgba(106, 169, 255, 0.16)",
  selectionEdge: "#6aa9ff",
  hatch: "rgba(255, 140, 130, 0.4)",
  hatchPaper: "rgba(56, 26, 26, 0.9)",
  lost: "#ff9d95",
};
export const darkMode = matchMedia("(prefers-color-scheme: dark)");
export const theme = (): Theme => (darkMode.matches ? dark : light);

export const family = '"Inter", "Segoe UI", system-ui, "DejaVu Sans", sans-serif';
export const font = (size: number, weight = 400): string => `${weight} ${size}px ${family}`;
export const css = (colour: number): string => `#${colour.toString(16).padStart(6, "0")}`;

// Black or white over a paper of another brightness: lines of a task's colour that must be seen on both.
export function strong(colour: number, by: number): string {
  const towards = darkMode.matches ? 255 : 27;
  const part = (shift: number): number => Math.round(((colour >> shift) & 255) * (1 - by) + towards * by);
  return `rgb(${part(16)}, ${part(8)}, ${part(0)})`;
}
