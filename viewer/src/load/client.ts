// The page's end of the bridge: typed calls, answered in order of their arrival.
import type { CallName, Calls, FileToOpen, FromWorker, Reply, ToWorker } from "../worker/protocol";

type Answer = FromWorker & { kind: "answer" };
interface Waiting {
  resolve(message: Answer): void;
  reject(error: Error): void;
}

// A worker, and who waits for its answers.
class WorkerEnd {
  private readonly worker: Worker;
  private readonly waiting = new Map<number, Waiting>();
  private lastId = 0;

  constructor(place: string) {
    this.worker = new Worker(place);
    this.worker.onmessage = (event: MessageEvent<FromWorker>) => this.take(event.data);
    this.worker.onerror = event => this.failAll(new Error(event.message || "the worker of this page could not start"));
  }

  post(message: ToWorker, transfer: Transferable[] = []): void {
    this.worker.postMessage(message, transfer);
  }

  request(make: (id: number) => ToWorker, transfer: Transferable[] = []): Promise<Answer> {
    const id = ++this.lastId;
    return new Promise((resolve, reject) => {
      this.waiting.set(id, { resolve, reject });
      this.post(make(id), transfer);
    });
  }

  // With its memory.
  stop(): void {
    this.worker.terminate();
    this.failAll(new Error("stopped"));
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
}

export class Client {
  private readonly place: string;
  private readonly worker: WorkerEnd;
  private copy: WorkerEnd | null = null;
  onWarning: (line: string) => void = () => undefined;

  constructor(
    script: string,
    private readonly wasm: string,
  ) {
    this.place = URL.createObjectURL(new Blob([script], { type: "text/javascript" }));
    this.worker = new WorkerEnd(this.place);
    this.worker.post({ kind: "start", wasm });
  }

  // Stores files for the next call of "open".
  async store(files: FileToOpen[]): Promise<void> {
    const packed = files.flatMap(file => (file.packed ? [file.packed.buffer] : []));
    await this.worker.request(id => ({ kind: "files", id, files }), packed);
  }

  // `room`, the memory of an older picture, goes to the new one.
  async call<Name extends CallName>(name: Name, keys: Calls[Name]["keys"], room?: ArrayBuffer): Promise<Reply<Name>> {
    return replyOf(await this.ask(this.worker, name, keys, room));
  }

  // In a copy of the worker, which goes with its memory: pictures come meanwhile. The next call of this kind takes
  // the place of one that is under way, which is then answered by null.
  async callAside<Name extends CallName>(name: Name, keys: Calls[Name]["keys"]): Promise<Reply<Name> | null> {
    this.copy?.stop();
    const copy = (this.copy = new WorkerEnd(this.place));
    const { port1, port2 } = new MessageChannel();
    copy.post({ kind: "start", wasm: this.wasm, copyFrom: port1 }, [port1]);
    this.worker.post({ kind: "lend", port: port2 }, [port2]);
    try {
      return replyOf(await this.ask(copy, name, keys));
    } catch (error) {
      if (this.copy !== copy) return null;
      throw error;
    } finally {
      copy.stop();
    }
  }

  // For answers that are no JSON: CSV.
  async text<Name extends CallName>(name: Name, keys: Calls[Name]["keys"]): Promise<string> {
    return (await this.ask(this.worker, name, keys)).text;
  }

  private async ask(worker: WorkerEnd, name: string, keys: object, room?: ArrayBuffer): Promise<Answer> {
    const text = JSON.stringify(keys, (_, value: unknown) => (typeof value === "bigint" ? value.toString() : value));
    const transfer = room ? [room] : [];
    const answer = await worker.request(
      id => ({ kind: "call", id, name, keys: text, ...(room ? { room } : {}) }),
      transfer,
    );
    answer.warnings.forEach(line => this.onWarning(line));
    return answer;
  }
}

function replyOf<Name extends CallName>(answer: Answer): Reply<Name> {
  const json = JSON.parse(answer.text) as Calls[Name]["answer"];
  return { json, text: answer.text, ints: answer.ints, floats: answer.floats, pixels: answer.pixels };
}
