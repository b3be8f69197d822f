// The keys, in a dialog.
import { keys } from "../input/keys";
import { button, element } from "./dom";

export function makeHelp(): () => void {
  const list = element("dl", { class: "keys" });
  for (const key of keys)
    list.append(element("dt", {}, [element("kbd", {}, [key.shown])]), element("dd", {}, [key.help]));
  const pointer =
    "Drag selects. Ctrl and wheel zoom, the wheel scrolls rows, Shift and drag or the middle button pan. A double click on the ruler shows all. A click on a task's name pins it, on a lane's name folds it.";
  const dialog = element("dialog", { "aria-label": "Keys" }, [
    element("h2", {}, ["Keys"]),
    list,
    element("p", {}, [pointer]),
  ]);
  dialog.append(button("Close", () => dialog.close()));
  document.body.append(dialog);
  return () => (dialog.open ? dialog.close() : dialog.showModal());
}
