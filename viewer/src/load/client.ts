// The page's end of the bridge: typed calls, answered in order of their arrival.
import type { CallName, Calls, FileToOpen, FromWorker, Reply, ToWorker } from "../worker/protocol";

interface Waiting {
  resolve(message: FromWorker & { kind: "answer" }): void;
  reject(error: Error): void;
}

export class Client {
  private readonly worker: Worker;
  private readonly waiting = new Map<number, Waiting>();
  private lastId = 0;
  onWarning: (line: string) => void = () => undefined;

  constructor(script: string, wasm: string) {
    const place = URL.createObjectURL(new Blob([script], { type: "text/javascript" }));
    this.worker = new Worker(place);
    this.worker.onmessage = (event: MessageEvent<FromWorker>) => this.take(event.data);
    this.worker.onerror = event => this.failAll(new Error(event.message || "the worker of this page could not start"));
    this.post({ kind: "start", wasm });
  }

  // Stores files for the next call of "open".
  async store(files: FileToOpen[]): Promise<void> {
    const packed = files.flatMap(file => (file.packed ? [file.packed.buffer] : []));
    await this.request(id => ({ kind: "files", id, files }), packed);
  }

  async call<Name extends CallName>(name: Name, keys: Calls[Name]["keys"]): Promise<Reply<Name>> {
    const answer = await this.ask(name, keys);
    const json = JSON.parse(answer.text) as Calls[Name]["answer"];
    return { json, text: answer.text, ints: answer.ints, floats: answer.floats, pixels: answer.pixels };
  }

  // For answers that are no JSON: CSV.
  async text<Name extends CallName>(name: Name, keys: Calls[Name]["keys"]): Promise<string> {
    return (await this.ask(name, keys)).text;
  }

  private async ask(name: string, keys: object): Promise<FromWorker & { kind: "answer" }> {
    const text = JSON.stringify(keys, (_, value: unknown) => (typeof value === "bigint" ? value.toString() : value));
    const answer = await this.request(id => ({ kind: "call", id, name, keys: text }));
    answer.warnings.forEach(line => this.onWarning(line));
    return answer;
  }

  private request(
    make: (id: number) => ToWorker,
    transfer: Transferable[] = [],
  ): Promise<FromWorker & { kind: "answer" }> {
    const id = ++this.lastId;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, { resolve, reject });
      this.post(make(id), transfer);
    });
  }

  private take(message: FromWorker): void {
    const waiting = this.waiting.get(message.id);
    this.waiting.delete(message.id);
    if (message.kind === "answer") waiting?.resolve(message);
    else waiting?.reject(new Error(message.message));
  }

  private failAll(error: Error): void {
    for (const waiting of this.waiting.values()) waiting.reject(error);
    this.waiting.clear();
  }

  private post(message: ToWorker, transfer: Transferable[] = []): void {
    this.worker.postMessage(message, transfer);
  }
}
