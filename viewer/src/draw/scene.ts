// When what is drawn: a new part of the recording asks the worker for pixels, at most once at a time; a new
// selection draws the upper canvas alone.
import type { Client } from "../load/client";
import type { AppStore, TimeRange } from "../state/state";
import type { AxisTick } from "../worker/protocol";
import { decode } from "./frame";
import { plotHeight, plotWidth, type Size } from "./layout";
import { Overlay } from "./overlay";
import { drawRows, type Picture } from "./rows";
import { darkMode, theme } from "./theme";

interface Shown {
  picture: Picture;
  axis: AxisTick[];
  range: TimeRange;
  size: Size;
}

const labelDistance = 96; // pixels between times of the ruler, at least

export class Scene {
  private shown: Shown | null = null;
  private next: Shown | null = null;
  private isNextScheduled = false;
  private isAsking = false;
  private isStale = false;
  private isScheduled = false;
  private readonly waiting: (() => void)[] = [];
  private readonly spent: ArrayBuffer[] = []; // of pictures that are no longer drawn
  size: Size = { width: 1, height: 1 };

  constructor(
    private readonly store: AppStore,
    private readonly client: Client,
    private readonly area: HTMLElement,
    private readonly lower: HTMLCanvasElement,
    private readonly upper: HTMLCanvasElement,
  ) {
    new ResizeObserver(() => this.resize()).observe(area);
    store.watch(["view", "rows", "scrollTop", "inTicks"], () => void this.refresh());
    store.watch(["selection", "picked", "shownJob", "pieces", "places", "pins", "pinned"], () => this.scheduleUpper());
    darkMode.addEventListener("change", () => this.drawAll());
    this.resize();
  }

  private resize(): void {
    const { clientWidth, clientHeight } = this.area;
    this.size = { width: Math.max(clientWidth, 1), height: Math.max(clientHeight, 1) };
    for (const canvas of [this.lower, this.upper]) {
      canvas.width = Math.round(this.size.width * devicePixelRatio);
      canvas.height = Math.round(this.size.height * devicePixelRatio);
    }
    this.drawAll();
    void this.refresh();
  }

  private async refresh(): Promise<void> {
    this.isStale = true;
    if (this.isAsking) return;
    this.isAsking = true;
    while (this.isStale) {
      this.isStale = false;
      await this.ask().catch((error: unknown) => this.store.set({ said: String(error) }));
    }
    this.isAsking = false;
  }

  private async ask(): Promise<void> {
    const { recording, rows, view, scrollTop, group, inTicks } = this.store.now;
    if (!recording || rows.length === 0) return this.forget();
    const size = this.size;
    const width = plotWidth(size);
    const window = { from: view.from, length: view.to - view.from, width };
    const [pixels, axis] = await Promise.all([
      this.client.call("pixels", { ...window, top: scrollTop, height: plotHeight(size) }, this.spent.pop()),
      this.client.call("axis", { ...window, group, distance: labelDistance, inTicks }),
    ]);
    const picture = { frame: decode(pixels, width), rows, lanes: recording.lanes, scrollTop, width };
    this.spend(this.next);
    this.next = { picture, axis: axis.json, range: view, size };
    this.scheduleNext();
  }

  private spend(what: Shown | null): void {
    if (what) this.spent.push(what.picture.frame.image.data.buffer as ArrayBuffer);
  }

  // The worker goes on with the picture behind it meanwhile.
  private scheduleNext(): void {
    if (this.isNextScheduled) return;
    this.isNextScheduled = true;
    requestAnimationFrame(() => {
      this.isNextScheduled = false;
      if (!this.next) return;
      this.spend(this.shown);
      this.shown = this.next;
      this.next = null;
      this.drawAll();
      this.tell(this.shown.range);
    });
  }

  // For whoever waits for a picture, or for that of a part.
  private tell(view: TimeRange): void {
    const { dataset } = this.area;
    if (!dataset["drawn"]) performance.mark("first picture");
    dataset["drawn"] = String(Number(dataset["drawn"] ?? 0) + 1);
    dataset["view"] = `${view.from}-${view.to}`;
    this.waiting.splice(0).forEach(resolve => resolve());
  }

  // The next picture.
  drawn(): Promise<void> {
    return new Promise(resolve => this.waiting.push(resolve));
  }

  private forget(): void {
    this.shown = this.next = null;
    this.drawAll();
  }

  private context(canvas: HTMLCanvasElement): CanvasRenderingContext2D {
    const context = canvas.getContext("2d", { alpha: canvas === this.upper })!; // the lower one hides what is behind it
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    return context;
  }

  private drawAll(): void {
    const lower = this.context(this.lower);
    if (this.shown) drawRows(lower, this.size, this.shown.picture);
    else clear(lower, this.size);
    this.drawUpper();
  }

  private scheduleUpper(): void {
    if (this.isScheduled) return;
    this.isScheduled = true;
    requestAnimationFrame(() => {
      this.isScheduled = false;
      this.drawUpper();
    });
  }

  private drawUpper(): void {
    const upper = this.context(this.upper);
    if (this.shown)
      new Overlay(upper, this.size, this.store.now, this.shown.picture, this.shown.range).draw(this.shown.axis);
    else upper.clearRect(0, 0, this.size.width, this.size.height);
  }
}

function clear(context: CanvasRenderingContext2D, size: Size): void {
  context.fillStyle = theme().paper;
  context.fillRect(0, 0, size.width, size.height);
}
