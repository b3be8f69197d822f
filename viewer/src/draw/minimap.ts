// The strip below the picture: how busy all of the recording is, and which part is shown. Dragging moves that part.
import type { Client } from "../load/client";
import { groupOf, type AppStore } from "../state/state";
import { lengthOf, scaled } from "../state/time";
import type { Actions } from "../state/actions";
import { labelWidth } from "./layout";
import { darkMode, font, theme } from "./theme";

const [hasGap, hasIssue] = [1, 2];
const leastFrame = 6; // pixels

export class Minimap {
  private readonly still = new OffscreenCanvas(1, 1); // the strip without the part that is shown
  private asked = 0;

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly store: AppStore,
    private readonly actions: Actions,
    private readonly client: Client,
  ) {
    new ResizeObserver(() => void this.refresh()).observe(canvas);
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
    return Math.max(1, Math.floor(this.canvas.clientWidth - labelWidth));
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
    if (!recording || !group || canvas.clientHeight === 0) return;
    const asked = ++this.asked;
    const from = BigInt(group.from);
    const load = await this.client.call("load", { group: index, from, length: BigInt(group.to) - from, width });
    if (asked !== this.asked) return;
    for (const one of [canvas, this.still]) {
      one.width = Math.round(canvas.clientWidth * devicePixelRatio);
      one.height = Math.round(canvas.clientHeight * devicePixelRatio);
    }
    this.drawStill(load.floats, load.ints);
    this.draw();
  }

  private drawStill(busy: Float32Array, notable: Int32Array): void {
    const context = this.still.getContext("2d")!;
    const look = theme();
    const height = this.canvas.clientHeight;
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = look.laneBand;
    context.fillRect(0, 0, this.canvas.clientWidth, height);
    context.fillStyle = look.laneLine;
    context.fillRect(0, 0, this.canvas.clientWidth, 1);
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
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.drawImage(this.still, 0, 0);
    context.setTransform(devicePixelRatio, 0, 0, devicePixelRatio, 0, 0);
    context.fillStyle = look.paper;
    context.globalAlpha = 0.6;
    context.fillRect(labelWidth, 1, left - labelWidth, canvas.clientHeight);
    context.fillRect(left + length, 1, labelWidth + width - left - length, canvas.clientHeight);
    context.globalAlpha = 1;
    context.strokeStyle = look.selectionEdge;
    context.lineWidth = 2;
    context.strokeRect(left + 1, 2, Math.max(length - 2, 1), canvas.clientHeight - 3);
  }
}
