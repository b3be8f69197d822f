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
  const files = [...document.querySelectorAll<HTMLScriptElement>("script[data-path]")].map(element => ({
    path: decodeURIComponent(element.dataset["path"] ?? ""),
    packed: takeBytes(element),
    size: Number(element.dataset["size"] ?? 0),
  }));
  return { ...asked, files };
}

// The browser holds a long text in parts, each of which goes as soon as its bytes are there.
function takeBytes(element: HTMLElement): Uint8Array<ArrayBuffer> {
  element.remove();
  const parts = [...element.childNodes] as Text[];
  const bytes = new Uint8Array(parts.reduce((sum, part) => sum + part.length, 0));
  const encoder = new TextEncoder();
  let at = 0;
  for (const part of parts) {
    at += encoder.encodeInto(part.data, bytes.subarray(at)).written;
    part.data = "";
  }
  return bytes;
}
