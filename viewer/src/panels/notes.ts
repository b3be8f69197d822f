// What lies over the picture: a hint below the pointer, messages, and where to drop files.
import { momentOf } from "../draw/moment";
import type { Scene } from "../draw/scene";
import { labelWidth, rulerHeight } from "../draw/layout";
import { groupOf, type AppStore } from "../state/state";
import { lengthOf, lengthText, timeText } from "../state/time";
import { element } from "./dom";

export function makeNotes(area: HTMLElement, scene: Scene, store: AppStore): void {
  const tip = element("div", { class: "tip", hidden: "" });
  const problems = element("div", { class: "problems", role: "alert" });
  const empty = element("div", { class: "empty" });
  area.append(tip, problems, empty);
  const live = document.getElementById("live");
  store.watch(["said"], () => {
    if (live) live.textContent = store.now.said;
  });
  // What is seen is told once it stays.
  let timer = 0;
  store.watch(["view"], () => {
    clearTimeout(timer);
    timer = setTimeout(() => {
      const group = groupOf(store.now);
      const { view } = store.now;
      if (group && live)
        live.textContent = `Shows ${lengthText(lengthOf(view), group.ticksPerSecond)} from ${timeText(view.from, group)}`;
    }, 1500);
  });
  store.watch(["problems"], () =>
    problems.replaceChildren(...store.now.problems.map(line => element("p", {}, [line]))),
  );
  store.watch(["phase"], () => {
    empty.hidden = store.now.phase === "ready";
    const isEmpty = store.now.phase === "empty";
    empty.replaceChildren(
      element("h1", {}, [isEmpty ? "Drop a recording here" : "Reading …"]),
      element("p", {}, [
        isEmpty
          ? "TaskLog files with their metadata, or the folder of a recording. Nothing leaves this page."
          : "The recording is unpacked and analysed in this page.",
      ]),
    );
  });
  store.watch(["hit", "pointer"], () => {
    const { hit, pointer } = store.now;
    const text =
      hit?.title || (pointer && pointer.y < 0 && pointer.x >= 0 ? momentOf(store.now, pointer.x, scene.size) : "");
    tip.hidden = !pointer || text === "";
    tip.textContent = text;
    if (!pointer) return;
    const left = Math.min(pointer.x + labelWidth + 14, scene.size.width - tip.offsetWidth - 8);
    tip.style.transform = `translate(${Math.max(left, 8)}px, ${Math.max(pointer.y + rulerHeight + 18, rulerHeight)}px)`;
  });
}
