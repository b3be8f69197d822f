// The worker: the module, and the page's requests to it, one after the other.
import createBridge, { type Bridge } from "bridge";
import { borrow, lend, release } from "./copy";
import { gunzip } from "./gunzip";
import type { FileToOpen, FromWorker, ToWorker } from "./protocol";

// Relative paths are found from here, and so are some "..".
const home = "/l/l/l/l/l/l/l/l";

let bridge: Promise<Bridge>;
let warnings: string[] = [];
let stored: string[] = [];

async function start(wasm: string): Promise<Bridge> {
  const chunks: Uint8Array[] = [];
  await gunzip(wasm, chunk => chunks.push(chunk));
  const wasmBinary = new Uint8Array(await new Blob(chunks as BlobPart[]).arrayBuffer());
  const made = await createBridge({ wasmBinary, printErr: line => warnings.push(line), print: () => undefined });
  made.FS.mkdirTree(home);
  made.FS.chdir(home);
  return made;
}

// As the file system wants it: from its root, without "." and "..".
function folderOf(path: string): string {
  const parts: string[] = [];
  for (const part of `${path.startsWith("/") ? "" : home}/${path}`.split("/").slice(0, -1))
    if (part === "..") parts.pop();
    else if (part !== "" && part !== ".") parts.push(part);
  return `/${parts.join("/")}`;
}

async function store(module: Bridge, file: FileToOpen): Promise<void> {
  module.FS.mkdirTree(folderOf(file.path));
  const stream = module.FS.open(file.path, "w");
  stored.push(file.path);
  module.FS.truncate(file.path, file.size); // at once: a file that grows is copied again and again
  const write = (bytes: Uint8Array): void => void module.FS.write(stream, bytes, 0, bytes.length);
  if (file.packed) {
    unpack(module, file.packed, write);
    release(file.packed);
  }
  if (file.bytes) {
    const reader = file.bytes.stream().getReader();
    for (let part = await reader.read(); !part.done; part = await reader.read()) write(part.value);
  }
  module.FS.close(stream);
}

function remove(module: Bridge, path: string): void {
  const { contents } = module.FS.lookupPath(path).node;
  module.FS.unlink(path);
  if (contents) release(contents); // an empty file has none
}

// Line by line. docs/viewer.md, Packed files.
function unpack(module: Bridge, lines: Uint8Array, use: (bytes: Uint8Array) => void): void {
  const newline = 10;
  module._TaskLogBeginFile();
  for (let at = 0; at < lines.length;) {
    const next = lines.indexOf(newline, at);
    const line = lines.subarray(at, next < 0 ? lines.length : next);
    at += line.length + 1;
    const place = module._malloc(line.length + 1) >>> 0;
    module.HEAPU8.set(line, place);
    const failed = module._TaskLogUnpackLine(place, line.length) !== 0;
    module._free(place);
    if (failed) throw new Error("the recording in this page is damaged: ask for the page again");
    const begin = module._TaskLogUnpacked() >>> 0;
    use(module.HEAPU8.subarray(begin, begin + module._TaskLogUnpackedSize()));
  }
}

// Text for the module; it is freed behind `use`.
function withText<Result>(module: Bridge, texts: string[], use: (places: number[]) => Result): Result {
  const places = texts.map(text => {
    const size = module.lengthBytesUTF8(text) + 1;
    const place = module._malloc(size);
    module.stringToUTF8(text, place, size);
    return place;
  });
  try {
    return use(places);
  } finally {
    places.forEach(place => module._free(place));
  }
}

function textOf(module: Bridge): string {
  const begin = module._TaskLogText() >>> 0;
  return new TextDecoder().decode(module.HEAPU8.subarray(begin, begin + module._TaskLogTextSize()));
}

function call(module: Bridge, id: number, name: string, keys: string, room?: ArrayBuffer): void {
  warnings = [];
  const failed = withText(module, [name, keys], ([a, b]) => module._TaskLogCall(a!, b!)) !== 0;
  if (name === "open") stored.splice(0).forEach(path => remove(module, path)); // all is in the module now
  const text = textOf(module);
  if (failed) return send({ kind: "error", id, message: text });
  const ints = copy(module.HEAP32, module._TaskLogInts(), module._TaskLogIntCount());
  const floats = copy(module.HEAPF32, module._TaskLogFloats(), module._TaskLogFloatCount());
  const pixels = pixelsOf(module, room);
  send({ kind: "answer", id, text, ints, floats, pixels, warnings }, [ints.buffer, floats.buffer, pixels.buffer]);
}

// Fresh memory for each picture would cost more than to fill it.
function pixelsOf(module: Bridge, room?: ArrayBuffer): Uint8ClampedArray<ArrayBuffer> {
  const [begin, size] = [module._TaskLogPixels() >>> 0, 4 * module._TaskLogPixelCount()];
  const pixels = new Uint8ClampedArray(room?.byteLength === size ? room : new ArrayBuffer(size));
  pixels.set(module.HEAPU8.subarray(begin, begin + size));
  return pixels;
}

function copy<Numbers extends Int32Array | Float32Array>(heap: Numbers, place: number, count: number): Numbers {
  const begin = (place >>> 0) / 4;
  return heap.slice(begin, begin + count) as Numbers;
}

function send(message: FromWorker, transfer: Transferable[] = []): void {
  self.postMessage(message, { transfer });
}

async function handle(message: ToWorker): Promise<void> {
  if (message.kind === "start") {
    const { wasm, copyFrom } = message;
    bridge = start(wasm).then(module => (copyFrom ? borrow(module, copyFrom) : module));
    bridge.catch(() => undefined); // told with the first request
    return;
  }
  if (message.kind === "lend")
    return bridge
      .then(module => lend(module, message.port))
      .catch((error: unknown) => message.port.postMessage(`${error}`));
  try {
    const module = await bridge;
    if (message.kind === "call") return call(module, message.id, message.name, message.keys, message.room);
    for (const file of message.files) await store(module, file);
    const nothing = {
      text: "null",
      ints: new Int32Array(),
      floats: new Float32Array(),
      pixels: new Uint8ClampedArray(),
    };
    send({ kind: "answer", id: message.id, ...nothing, warnings: [] });
  } catch (error) {
    send({ kind: "error", id: message.id, message: error instanceof Error ? error.message : String(error) });
  }
}

let last = Promise.resolve();
self.onmessage = (event: MessageEvent<ToWorker>) => {
  last = last.then(() => handle(event.data));
};
