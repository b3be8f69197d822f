// Pointer and wheel over the picture: select by dragging, pan with Shift or the middle button, zoom with Ctrl.
import type { Client } from "../load/client";
import type { Scene } from "../draw/scene";
import { labelWidth, plotHeight, plotWidth, rulerHeight } from "../draw/layout";
import type { Actions } from "../state/actions";
import type { AppStore } from "../state/state";
import { lengthOf, scaled } from "../state/time";
import type { Hit } from "../worker/protocol";

const leastDrag = 4; // pixels: less is a click
const lineHeight = 16; // of a wheel that counts in lines

interface Drag {
  x: number;
  y: number;
  isPan: boolean;
  isDrag: boolean;
  from: bigint;
}

export class Pointer {
  private drag: Drag | null = null;
  private x = 0.5; // share of the width
  private hitAsked = 0;

  constructor(
    private readonly area: HTMLElement,
    private readonly scene: Scene,
    private readonly store: AppStore,
    private readonly actions: Actions,
    private readonly client: Client,
  ) {
    area.addEventListener("wheel", event => this.wheel(event), { passive: false });
    area.addEventListener("pointerdown", event => this.down(event));
    area.addEventListener("pointermove", event => this.move(event));
    area.addEventListener("pointerup", event => void this.up(event));
    area.addEventListener("pointerleave", () => this.store.set({ pointer: null, hit: null }));
    area.addEventListener("dblclick", event => this.doubleClick(event));
  }

  share(): number {
    return this.x;
  }

  private place(event: MouseEvent): { x: number; y: number } {
    const box = this.area.getBoundingClientRect();
    return { x: event.clientX - box.left - labelWidth, y: event.clientY - box.top - rulerHeight };
  }
  private shareOf(x: number): number {
    return Math.min(Math.max(x / plotWidth(this.scene.size), 0), 1);
  }
  private tickAt(x: number): bigint {
    const { view } = this.store.now;
    return view.from + scaled(lengthOf(view), this.shareOf(x));
  }

  private wheel(event: WheelEvent): void {
    event.preventDefault();
    const unit = event.deltaMode === 1 ? lineHeight : event.deltaMode === 2 ? plotHeight(this.scene.size) : 1;
    if (event.ctrlKey || event.metaKey) {
      this.actions.zoom(
        Math.exp(Math.max(-200, Math.min(200, event.deltaY * unit)) * 0.004),
        this.shareOf(this.place(event).x),
      );
      return;
    }
    const [across, down] = event.shiftKey && event.deltaX === 0 ? [event.deltaY, 0] : [event.deltaX, event.deltaY];
    if (across !== 0) this.actions.pan((across * unit) / plotWidth(this.scene.size));
    if (down !== 0) this.actions.scroll(down * unit, plotHeight(this.scene.size));
  }

  private down(event: PointerEvent): void {
    const { x, y } = this.place(event);
    if (event.button > 1 || x < 0) return;
    this.area.setPointerCapture(event.pointerId);
    this.drag = { x, y, isPan: event.button === 1 || event.shiftKey, isDrag: false, from: this.tickAt(x) };
  }

  private move(event: PointerEvent): void {
    const { x, y } = this.place(event);
    this.x = this.shareOf(x);
    this.store.set({ pointer: { x, y } });
    if (!this.drag) return void this.hover(x, y);
    if (Math.abs(x - this.drag.x) + Math.abs(y - this.drag.y) >= leastDrag) this.drag.isDrag = true;
    if (!this.drag.isDrag) return;
    if (!this.drag.isPan) return this.store.set({ selection: inOrder(this.drag.from, this.tickAt(x)) });
    this.actions.pan((this.drag.x - x) / plotWidth(this.scene.size));
    this.actions.scroll(this.drag.y - y, plotHeight(this.scene.size));
    Object.assign(this.drag, { x, y });
  }

  private async up(event: PointerEvent): Promise<void> {
    const drag = this.drag;
    this.drag = null;
    const { x, y } = this.place(event);
    if (!drag) return this.clickLabel(y);
    if (drag.isDrag) {
      if (!drag.isPan) this.actions.select(inOrder(drag.from, this.tickAt(x)));
      return;
    }
    const hit = y >= 0 ? await this.hitAt(x, y) : null;
    if (!hit || hit.kind === "nothing") this.actions.clear();
    else this.actions.pick(hit);
  }

  // On the label of a lane: its tasks go or come; on that of a task: it is pinned.
  private clickLabel(y: number): void {
    const below = y + this.store.now.scrollTop;
    const row = this.store.now.rows.find(row => y >= 0 && below >= row.top && below < row.top + row.height);
    if (!row) return;
    if (row.task === null) this.actions.toggleFold(row.lane);
    else this.actions.togglePin(row.lane, row.task);
  }

  private doubleClick(event: MouseEvent): void {
    const { x, y } = this.place(event);
    if (y < 0) return this.actions.showAll();
    void this.hitAt(x, y).then(hit => {
      if (hit && hit.kind !== "nothing") this.actions.showAround({ from: BigInt(hit.from), to: BigInt(hit.to) });
    });
  }

  private async hover(x: number, y: number): Promise<void> {
    const asked = ++this.hitAsked;
    const hit = x >= 0 && y >= 0 ? await this.hitAt(x, y) : null;
    if (asked === this.hitAsked) this.store.set({ hit: hit?.kind === "nothing" ? null : hit });
  }

  private async hitAt(x: number, y: number): Promise<Hit | null> {
    const { view, scrollTop, rows } = this.store.now;
    if (rows.length === 0) return null;
    const window = { from: view.from, length: lengthOf(view), width: plotWidth(this.scene.size) };
    return (await this.client.call("hit", { ...window, x, y: y + scrollTop })).json;
  }
}

function inOrder(a: bigint, b: bigint): { from: bigint; to: bigint } {
  return a < b ? { from: a, to: b } : { from: b, to: a };
}
