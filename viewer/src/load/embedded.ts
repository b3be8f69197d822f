// What the page itself carries: the module, the worker's script, and the recording if there is one.
import type { FileToOpen } from "../worker/protocol";

export interface Embedded {
  arguments: string[];
  from?: string;
  to?: string;
  files: FileToOpen[];
}

// The text of an element, which is let go: it may be large.
export function takeText(id: string): string {
  const element = document.getElementById(id);
  const text = element?.textContent ?? "";
  element?.remove();
  return text;
}

export function takeRecording(): Embedded | null {
  const text = takeText("recording");
  if (text === "") return null;
  const asked = JSON.parse(text) as Omit<Embedded, "files">;
  const files = [...document.querySelectorAll<HTMLScriptElement>("script[data-path]")].map(element => {
    const file = { path: decodeURIComponent(element.dataset["path"] ?? ""), gzipText: element.textContent ?? "" };
    element.remove();
    return file;
  });
  return { ...asked, files };
}
