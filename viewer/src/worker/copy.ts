// A second module that goes on where the first one stands: what takes long is computed there, and pictures come
// meanwhile. Between two calls a module is its code and its memory, and nothing else that calls ask for.
import type { Bridge } from "bridge";

const portion = 1 << 24; // bytes

type Part = number | Uint8Array<ArrayBuffer> | string; // the size comes first; a text says what went wrong

export function lend(module: Bridge, port: MessagePort): void {
  const memory = module.HEAPU8;
  port.postMessage(memory.length);
  for (let at = 0; at < memory.length; at += portion) {
    const part = memory.slice(at, at + portion);
    port.postMessage(part, [part.buffer]);
  }
}

// Into a module of the same code.
export function borrow(module: Bridge, port: MessagePort): Promise<Bridge> {
  return new Promise((resolve, reject) => {
    let [size, at] = [0, 0];
    const grow = (to: number): void => {
      size = to;
      if (module._malloc(size) === 0) reject(new Error("there is no memory for a copy of the recording"));
    };
    const take = (part: Uint8Array): void => {
      module.HEAPU8.set(part, at);
      at += part.length;
      release(part);
      if (at === size) resolve(module);
    };
    port.onmessage = ({ data }: MessageEvent<Part>) => {
      if (typeof data === "string") reject(new Error(data));
      else if (typeof data === "number") grow(data);
      else if (size <= module.HEAPU8.length) take(data);
    };
  });
}

// At once, where the browser can: it may not look for what is unused for long.
export function release(bytes: Uint8Array): void {
  (bytes.buffer as ArrayBuffer & { transfer?(size: number): ArrayBuffer }).transfer?.(0);
}
