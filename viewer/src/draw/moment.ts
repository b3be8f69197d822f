import { groupOf, type State } from "../state/state";
import { lengthOf, scaled, timeText } from "../state/time";
import { plotWidth, type Size } from "./layout";

// The time at a place of the picture, pixels from the left end of the plot.
export function momentOf(state: State, x: number, size: Size): string {
  const group = groupOf(state);
  return group
    ? timeText(state.view.from + scaled(lengthOf(state.view), Math.min(Math.max(x / plotWidth(size), 0), 1)), group)
    : "";
}
