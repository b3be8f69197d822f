// The strip below the picture: how busy all of the recording is, and which part is shown. Dragging moves that part.
import type { Client } from "../load/client";
import { groupOf, type AppStore } from "../state/state";
import { lengthOf, scaled } from "../state/time";
import type { Actions } from "../state/actions";
import { labelWidth, plotWidth, type Size } from "./layout";
import { darkMode, font, theme } from "./theme";

const [hasGap, hasIssue] = [1, 2];
const leastFrame = 6; // pixels

export class Minimap {
  private readonly still = new OffscreenCanvas(1, 1); // the strip without the part that is shown
  private asked = 0;
  private size: Size = { width: 1, height: 0 }; // asking the canvas each time would lay out the page anew
  private drawn = ""; // the frame that is there

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly store: AppStore,
    private readonly actions: Actions,
    private readonly client: Client,
  ) {
    new ResizeObserver(([entry]) => {
      this.size = { width: entry!.contentRect.width, height: entry!.contentRect.height };
      void this.refresh();
    }).observe(canvas);
    store.watch(["rows"], () => void this.refresh());
    store.watch(["view"], () => this.draw());
    darkMode.addEventListener("change", () => void this.refresh());
    canvas.addEventListener("pointerdown", event => {
      canvas.setPointerCapture(event.pointerId);
      this.moveTo(event);
    });
    canvas.addEventListener("pointermove", event => {
      if (event.buttons & 1) this.moveTo(event);
    });
  }

  private get width(): number {
    return plotWidth(this.size);
  }

  // What lies at the pointer comes to the middle.
  private moveTo(event: PointerEvent): void {
    const group = groupOf(this.store.now);
    if (!group) return;
    const share = Math.min(Math.max((event.offsetX - labelWidth) / this.width, 0), 1);
    const middle = BigInt(group.from) + scaled(BigInt(group.to) - BigInt(group.from), share);
    const half = lengthOf(this.store.now.view) / 2n;
    this.actions.show({ from: middle - half, to: middle - half + lengthOf(this.store.now.view) });
  }

  private async refresh(): Promise<void> {
    const { recording, group: index } = this.store.now;
    const group = groupOf(this.store.now);
    const { canvas, width } = this;
    canvas.hidden = !group;
    if (!recording || !group || this.size.height === 0) return;
    const asked = ++this.asked;
    const from = BigInt(group.from);
    const load = await this.client.call("load", { group: index, from, length: BigInt(group.to) - from, width });
    if (asked !== this.asked) return;
    for (const one of [canvas, this.still]) {
      one.width = Math.round(this.size.width * devicePixelRatio);
      one.height = Math.round(this.size.height * devicePixelRatio);
    }
    this.drawStill(load.floats, load.ints);
    this.drawn = "";
    this.draw();
  }

  private drawStill(busy: Float32Array, notable: Int32Array): void {
    const context = this.still.getContext("2d")!;
    const look = theme();
    const { width, height } = this.size;
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = look.laneBand;
    context.fillRect(0, 0, width, height);
    context.fillStyle = look.laneLine;
    context.fillRect(0, 0, width, 1);
    context.font = font(11.5);
    context.textBaseline = "middle";
    context.fillStyle = look.faint;
    context.fillText("all: how busy", 14, height / 2);
    for (let x = 0; x < busy.length; ++x) {
      const isGap = (notable[x]! & hasGap) !== 0;
      const high = isGap ? height - 2 : Math.ceil(busy[x]! * (height - 6));
      context.fillStyle = isGap ? look.hatch : look.faint;
      context.fillRect(labelWidth + x, height - high, 1, high);
      if ((notable[x]! & hasIssue) === 0) continue;
      context.fillStyle = look.issue;
      context.fillRect(labelWidth + x - 0.5, 2, 2, 6);
    }
  }

  private draw(): void {
    const group = groupOf(this.store.now);
    const { canvas, width } = this;
    if (!group || this.still.width === 1) return;
    const context = canvas.getContext("2d")!;
    const look = theme();
    const all = Number(BigInt(group.to) - BigInt(group.from)) || 1;
    const { view } = this.store.now;
    const begin = (Number(view.from - BigInt(group.from)) / all) * width;
    const length = Math.max((Number(lengthOf(view)) / all) * width, leastFrame);
    const left = labelWidth + Math.min(begin, width - length);
    const frame = `${Math.round(2 * left)} ${Math.round(2 * length)}`;
    if (this.drawn === frame) return;
    this.drawn = frame;
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.drawImage(this.still, 0, 0);
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = look.paper;
    context.globalAlpha = 0.6;
    context.fillRect(labelWidth, 1, left - labelWidth, this.size.height);
    context.fillRect(left + length, 1, labelWidth + width - left - length, this.size.height);
    context.globalAlpha = 1;
    context.strokeStyle = look.selectionEdge;
    context.lineWidth = 2;
    context.strokeRect(left + 1, 2, Math.max(length - 2, 1), this.size.height - 3);
  }
}
