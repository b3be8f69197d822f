// Two fingers: they move what lies below them along, and apart.
import { labelWidth, plotHeight, plotWidth, rulerHeight } from "../draw/layout";
import type { Scene } from "../draw/scene";
import type { Actions } from "../state/actions";

interface Finger {
  x: number;
  y: number;
}
const leastDistance = 24; // pixels, across: fingers above each other do not zoom

export class Touch {
  private readonly fingers = new Map<number, Finger>();

  constructor(
    private readonly area: HTMLElement,
    private readonly scene: Scene,
    private readonly actions: Actions,
  ) {}

  // Whether the event belongs to a gesture, and to nobody else.
  take(event: PointerEvent): boolean {
    if (event.pointerType !== "touch") return false;
    const before = [...this.fingers.values()].map(finger => ({ ...finger }));
    const box = this.area.getBoundingClientRect();
    if (event.type === "pointerdown" || this.fingers.has(event.pointerId))
      this.fingers.set(event.pointerId, {
        x: event.clientX - box.left - labelWidth,
        y: event.clientY - box.top - rulerHeight,
      });
    const isGesture = this.fingers.size === 2;
    if (event.type === "pointermove" && isGesture) this.move(before, [...this.fingers.values()]);
    if (event.type === "pointerup" || event.type === "pointercancel") this.fingers.delete(event.pointerId);
    return isGesture;
  }

  private move([a, b]: Finger[], [c, d]: Finger[]): void {
    if (!a || !b || !c || !d) return;
    const width = plotWidth(this.scene.size);
    const [before, after] = [Math.abs(a.x - b.x), Math.abs(c.x - d.x)];
    const middle = (c.x + d.x) / 2;
    this.actions.pan(((a.x + b.x) / 2 - middle) / width);
    this.actions.scroll((a.y + b.y - c.y - d.y) / 2, plotHeight(this.scene.size));
    if (before >= leastDistance && after >= leastDistance)
      this.actions.zoom(before / after, Math.min(Math.max(middle / width, 0), 1));
  }
}
